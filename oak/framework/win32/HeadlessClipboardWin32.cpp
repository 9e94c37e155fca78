#include "oak/framework/headless/HeadlessClipboard.h"

namespace oak {

Ref<IDataObject> ProcessClipboard() { return nullptr; }

}  // namespace oak
