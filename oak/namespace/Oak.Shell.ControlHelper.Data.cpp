// Files as data for drag and clipboard, and the icons of their types.
#include "oak/namespace/Oak.Shell.ControlHelper.h"
#include "oak/namespace/Oak.Shell.ItemIdListCollection.h"
#include "oak/namespace/Oak.Shell.SystemImageList.h"
#include "oak/namespace/OakItemIdList.h"
#include "oak/namespace/Shell_Win32.Clipboard.h"
#include "oak/platform/Api.h"
#include "oak/platform/shell_api_drag.h"

namespace oak {
namespace {

/// Data that an object of the clipboard gave.
class TMedium {
 public:
  TMedium() = default;
  ~TMedium() {
    if (fMedium.tymed != TYMED_NULL) Api().ReleaseStgMedium(&fMedium);
  }
  TMedium(const TMedium&) = delete;
  TMedium& operator=(const TMedium&) = delete;

  /// A global block of that format, null if the object has none.
  HGLOBAL Get(IDataObject& pData, UINT pFormat) {
    FORMATETC format = HDropFormatEtc;
    format.cfFormat = static_cast<CLIPFORMAT>(pFormat);
    if (pFormat == 0 || FAILED(pData.GetData(&format, &fMedium))) return nullptr;
    return fMedium.tymed == TYMED_HGLOBAL ? fMedium.hGlobal : nullptr;
  }

 private:
  STGMEDIUM fMedium{};
};

TStringArray NamesInData(IDataObject& pData) {
  const struct {
    UINT Format;
    TStringArray (*Read)(HGLOBAL pBlock);
  } readers[] = {{CF_HDROP, [](HGLOBAL pBlock) { return GetFilenamesFromHandle(pBlock); }},
                 {CF_FILEDESCRIPTORW(), &GetFilenamesFromFileDescriptorW},
                 {CF_FILEDESCRIPTORA(), &GetFilenamesFromFileDescriptorA}};
  for (const auto& reader : readers) {
    TMedium medium;
    const HGLOBAL block = medium.Get(pData, reader.Format);
    TStringArray names = block ? reader.Read(block) : TStringArray();
    if (!names.empty()) return names;
  }
  return {};
}

}  // namespace

Ref<IDropTargetHelper> TShellControlHelper::CreateDragHelper() {
  Ref<IDropTargetHelper> helper;
  if (FAILED(Api().CoCreateInstance(CLSID_DragDropHelper, nullptr, CLSCTX_INPROC_SERVER,
                                    IidOf<IDropTargetHelper>(), helper.PutVoid())))
    return nullptr;
  return helper;
}

Ref<IDataObject> TShellControlHelper::GetDataObjectForMultiFiles(const TStringArray& pFileNames) {
  const auto files = MakeRef<TItemIdListCollection>();
  for (const TString& name : pFileNames) {
    const Ref<IItemIdList> item = TOakItemIdList::Create(name);
    if (!item->IsInvalid()) files->Add(item);
  }
  if (files->Count() == 0) return nullptr;
  try {
    return files->GetUIObject(IidOf<IDataObject>()).As<IDataObject>();
  } catch (const Exception&) {
    return nullptr;
  }
}

TStringArray TShellControlHelper::GetFilenamesFromClipboard() {
  Ref<IDataObject> data;
  if (!Api().OleGetClipboard || FAILED(Api().OleGetClipboard(data.Put())) || !data) return {};
  return NamesInData(*data.Get());
}

bool TShellControlHelper::AssociateIconWithExtension(TStringView pExtension,
                                                     TStringView pIconFile) {
  if (pExtension.empty() || pExtension == u".")
    throw EArgumentException(u"pExtension must not be empty.");
  if (!pIconFile.empty() && TOakSystemImageList::GetIndexFromPath(pIconFile) < 0) return false;
  TOakSystemImageList::SetIconFile(pExtension, pIconFile);
  return true;
}

}  // namespace oak
