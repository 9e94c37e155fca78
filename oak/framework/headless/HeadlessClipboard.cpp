#include "oak/framework/headless/HeadlessClipboard.h"

#include "oak/framework/headless/HeadlessDesktop.h"
#include "oak/platform/Api.h"

namespace oak {

bool TextOfData(IDataObject& data, TString* text) {
  FORMATETC format{};
  format.cfFormat = CF_UNICODETEXT;
  format.dwAspect = 1;  // DVASPECT_CONTENT
  format.lindex = -1;
  format.tymed = TYMED_HGLOBAL;
  STGMEDIUM medium{};
  if (data.GetData(&format, &medium) != S_OK) return false;
  const auto* const units = static_cast<const WCHAR*>(Api().GlobalLock(medium.hGlobal));
  if (units) {
    const std::size_t most = Api().GlobalSize(medium.hGlobal) / sizeof(WCHAR);
    std::size_t size = 0;
    while (size < most && units[size] != 0) ++size;
    text->assign(reinterpret_cast<const char16_t*>(units), size);
    Api().GlobalUnlock(medium.hGlobal);
  }
  Api().ReleaseStgMedium(&medium);
  return units != nullptr;
}

bool THeadlessDesktop::GetClipboardText(TString* text) {
  TString found;
  if (HasProcessClipboard()) {
    const Ref<IDataObject> data = ProcessClipboard();
    if (!data || !TextOfData(*data, &found)) return false;
  } else {
    if (!fHasClipboard) return false;
    found = fClipboard;
  }
  if (text) *text = std::move(found);
  return true;
}

bool THeadlessDesktop::SetClipboardText(const TString& text) {
  if (HasProcessClipboard()) {
    fClipboardData = SetProcessClipboardText(text);
    return static_cast<bool>(fClipboardData);
  }
  fClipboard = text;
  fHasClipboard = true;
  return true;
}

}  // namespace oak
