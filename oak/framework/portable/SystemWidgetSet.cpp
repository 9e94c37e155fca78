#include "oak/framework/headless/HeadlessClipboard.h"
#include "oak/framework/headless/HeadlessDesktop.h"
#include "oak/platform/Api.h"
#include "oak/platform/portable/PortableMemory.h"

namespace oak {

std::unique_ptr<TWidgetSet> CreateSystemWidgetSet() { return CreateHeadlessWidgetSet(); }

bool HasProcessClipboard() { return true; }

Ref<IDataObject> ProcessClipboard() {
  Ref<IDataObject> data;
  if (Api().OleGetClipboard(data.Put()) != S_OK) return nullptr;
  return data;
}

Ref<IDataObject> SetProcessClipboardText(const TString& text) {
  Ref<IDataObject> data = MakeTextData(text);
  return data && SUCCEEDED(Api().OleSetClipboard(data.Get())) ? data : nullptr;
}

void ClearProcessClipboard(const Ref<IDataObject>& data) {
  if (Api().OleIsCurrentClipboard(data.Get()) == S_OK)
    static_cast<void>(Api().OleSetClipboard(nullptr));
}

}  // namespace oak
