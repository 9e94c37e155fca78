#include "oak/framework/headless/HeadlessDesktop.h"

namespace oak {

std::unique_ptr<TWidgetSet> CreateSystemWidgetSet() { return CreateHeadlessWidgetSet(); }

}  // namespace oak
