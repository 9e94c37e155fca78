#include "oak/platform/portable/ShellDirectory.h"

#include "oak/platform/portable/PortableConfig.h"

namespace oak {

namespace {

class TEmptySource : public TFolderSource {
 public:
  explicit TEmptySource(GUID classId) : fClassId(classId) {}
  HRESULT Enumerate(DWORD, Ref<IFolderCursor>& cursor) override {
    cursor = MakeListCursor({});
    return S_OK;
  }
  HRESULT GetName(PCUITEMID_CHILD, TNameForm, TString&) override { return E_INVALIDARG; }
  HRESULT GetAttributes(PCUITEMID_CHILD, DWORD, DWORD&) override { return E_INVALIDARG; }
  GUID GetClassId() override { return fClassId; }

 private:
  const GUID fClassId;
};

}  // namespace

Ref<IFolderSource> MakeEmptySource(GUID classId) { return MakeRef<TEmptySource>(classId); }

Ref<IFolderSource> TDirectorySource::Inner(bool ask) {
  const std::uint64_t config = PortableConfigGeneration();
  {
    const std::lock_guard lock(fLock);
    if (fInner && !ask && fConfig == config) return fInner;
  }
  TString path = fPlace();
  Ref<IFolderSource> former;  // released without the lock
  const std::lock_guard lock(fLock);
  if (!fInner || path != fPath || fConfig != config) {
    former = fInner;
    fInner = path.empty() ? MakeEmptySource(fClassId) : MakeFileSystemFolder(path);
  }
  fPath = std::move(path);
  fConfig = config;
  return fInner;
}

HRESULT TDirectorySource::Enumerate(DWORD flags, Ref<IFolderCursor>& cursor) {
  const HRESULT result = Inner(true)->Enumerate(flags, cursor);
  if (result != HRESULT_FROM_WIN32(ERROR_PATH_NOT_FOUND) &&
      result != HRESULT_FROM_WIN32(ERROR_FILE_NOT_FOUND))
    return result;
  // A user without the directory still has what else is shown in the folder.
  cursor = MakeListCursor({});
  return S_OK;
}
HRESULT TDirectorySource::GetName(PCUITEMID_CHILD element, TNameForm form, TString& name) {
  return Inner()->GetName(element, form, name);
}
HRESULT TDirectorySource::GetAttributes(PCUITEMID_CHILD element, DWORD mask, DWORD& attributes) {
  return Inner()->GetAttributes(element, mask, attributes);
}
HRESULT TDirectorySource::ParseName(TStringView name, const TParseOptions& options,
                                    TPidl& element) {
  return Inner(true)->ParseName(name, options, element);
}
HRESULT TDirectorySource::Open(PCUITEMID_CHILD element, Ref<IFolderSource>& child) {
  return Inner()->Open(element, child);
}
HRESULT TDirectorySource::Compare(LPARAM what, PCUITEMID_CHILD a, PCUITEMID_CHILD b, int& order) {
  return Inner()->Compare(what, a, b, order);
}
HRESULT TDirectorySource::Create(TStringView name, bool folder, bool replace, TPidl& element) {
  return Inner(true)->Create(name, folder, replace, element);
}
HRESULT TDirectorySource::Rename(PCUITEMID_CHILD element, TStringView name, TNameForm form,
                                 TPidl& renamed) {
  return Inner()->Rename(element, name, form, renamed);
}
HRESULT TDirectorySource::Destroy(PCUITEMID_CHILD element) { return Inner()->Destroy(element); }
HRESULT TDirectorySource::OpenStream(PCUITEMID_CHILD element, DWORD mode, IStream** stream) {
  return Inner()->OpenStream(element, mode, stream);
}
HRESULT TDirectorySource::GetProperty(PCUITEMID_CHILD element, REFPROPERTYKEY key,
                                      PROPVARIANT* value) {
  return Inner()->GetProperty(element, key, value);
}
HRESULT TDirectorySource::SetProperty(PCUITEMID_CHILD element, REFPROPERTYKEY key,
                                      REFPROPVARIANT value) {
  return Inner()->SetProperty(element, key, value);
}
std::vector<PROPERTYKEY> TDirectorySource::GetPropertyKeys(PCUITEMID_CHILD element) {
  return Inner()->GetPropertyKeys(element);
}
HRESULT TDirectorySource::GetTypeName(PCUITEMID_CHILD element, TString& name) {
  return Inner()->GetTypeName(element, name);
}
HRESULT TDirectorySource::GetInfoTip(PCUITEMID_CHILD element, TString& tip) {
  return Inner()->GetInfoTip(element, tip);
}
HRESULT TDirectorySource::GetOverlayIndex(PCUITEMID_CHILD element, int& index) {
  return Inner()->GetOverlayIndex(element, index);
}
HRESULT TDirectorySource::GetIconIndex(PCUITEMID_CHILD element, bool open, int& index) {
  return Inner()->GetIconIndex(element, open, index);
}
HRESULT TDirectorySource::GetUIObject(std::span<const PCUITEMID_CHILD> elements, REFIID iid,
                                      void** object) {
  return Inner()->GetUIObject(elements, iid, object);
}
HRESULT TDirectorySource::GetLinkTarget(PCUITEMID_CHILD element, TPidl& target) {
  return Inner()->GetLinkTarget(element, target);
}
HRESULT TDirectorySource::Refresh(PCUITEMID_CHILD element, TPidl& fresh) {
  return Inner()->Refresh(element, fresh);
}
std::span<const TFolderColumn> TDirectorySource::GetColumns() { return Inner()->GetColumns(); }

}  // namespace oak
