#include "oak/framework/headless/HeadlessClipboard.h"
#include "oak/framework/headless/HeadlessDesktop.h"
#include "oak/platform/Api.h"

namespace oak {

std::unique_ptr<TWidgetSet> CreateSystemWidgetSet() { return CreateHeadlessWidgetSet(); }

Ref<IDataObject> ProcessClipboard() {
  Ref<IDataObject> data;
  if (Api().OleGetClipboard(data.Put()) != S_OK) return nullptr;
  return data;
}

}  // namespace oak
