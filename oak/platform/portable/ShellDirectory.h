// The contents of a directory whose place may change while the program runs.
#pragma once

#include <functional>
#include <mutex>

#include "oak/platform/portable/PortableShell.h"

namespace oak {

/// Passes everything on to the file-system source of the directory that `place`
/// names now; an empty place has no objects. Listing, parsing and creating ask for
/// the place anew, describing objects does so when the configuration was replaced.
class TDirectorySource : public TFolderSource {
 public:
  using TPlace = std::function<TString()>;
  TDirectorySource(TPlace place, GUID classId) : fPlace(std::move(place)), fClassId(classId) {}

  HRESULT Enumerate(DWORD flags, Ref<IFolderCursor>& cursor) override;
  HRESULT GetName(PCUITEMID_CHILD element, TNameForm form, TString& name) override;
  HRESULT GetAttributes(PCUITEMID_CHILD element, DWORD mask, DWORD& attributes) override;
  HRESULT ParseName(TStringView name, const TParseOptions& options, TPidl& element) override;
  HRESULT Open(PCUITEMID_CHILD element, Ref<IFolderSource>& child) override;
  GUID GetClassId() override { return fClassId; }
  HRESULT Compare(LPARAM what, PCUITEMID_CHILD a, PCUITEMID_CHILD b, int& order) override;
  HRESULT Create(TStringView name, bool folder, bool replace, TPidl& element) override;
  HRESULT Rename(PCUITEMID_CHILD element, TStringView name, TNameForm form,
                 TPidl& renamed) override;
  HRESULT Destroy(PCUITEMID_CHILD element) override;
  HRESULT OpenStream(PCUITEMID_CHILD element, DWORD mode, IStream** stream) override;
  HRESULT GetProperty(PCUITEMID_CHILD element, REFPROPERTYKEY key, PROPVARIANT* value) override;
  HRESULT SetProperty(PCUITEMID_CHILD element, REFPROPERTYKEY key, REFPROPVARIANT value) override;
  std::vector<PROPERTYKEY> GetPropertyKeys(PCUITEMID_CHILD element) override;
  HRESULT GetTypeName(PCUITEMID_CHILD element, TString& name) override;
  HRESULT GetInfoTip(PCUITEMID_CHILD element, TString& tip) override;
  HRESULT GetOverlayIndex(PCUITEMID_CHILD element, int& index) override;
  HRESULT GetIconIndex(PCUITEMID_CHILD element, bool open, int& index) override;
  HRESULT GetUIObject(std::span<const PCUITEMID_CHILD> elements, REFIID iid,
                      void** object) override;
  HRESULT GetLinkTarget(PCUITEMID_CHILD element, TPidl& target) override;
  HRESULT Refresh(PCUITEMID_CHILD element, TPidl& fresh) override;
  std::span<const TFolderColumn> GetColumns() override;

 private:
  /// Never nil.
  Ref<IFolderSource> Inner(bool ask = false);

  const TPlace fPlace;
  const GUID fClassId;
  std::mutex fLock;
  std::uint64_t fConfig = 0;
  TString fPath;
  Ref<IFolderSource> fInner;
};

/// A folder without objects.
Ref<IFolderSource> MakeEmptySource(GUID classId);

}  // namespace oak
