#include "oak/framework/headless/HeadlessClipboard.h"

namespace oak {

bool HasProcessClipboard() { return false; }
Ref<IDataObject> ProcessClipboard() { return nullptr; }
Ref<IDataObject> SetProcessClipboardText(const TString&) { return nullptr; }
void ClearProcessClipboard(const Ref<IDataObject>&) {}

}  // namespace oak
