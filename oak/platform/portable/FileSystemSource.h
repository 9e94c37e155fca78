// The contents of a native directory as a folder of the shell.
#pragma once

#include <initializer_list>
#include <mutex>
#include <string>

#include "oak/platform/portable/FileProperties.h"
#include "oak/platform/portable/PortableShell.h"

namespace oak {

class TFolderNode;

/// What an element of the file system says of its object. A symbolic link is kept
/// as such, since what it leads to may change or be slow to reach.
enum TFileElementFlags : DWORD {
  feFolder = 1,
  feSymlink = 2,
  feSpecial = 4  ///< neither file nor folder: pipe, socket, device
};

/// An element read: flags and Windows name.
struct TFileElement {
  DWORD Flags = 0;
  TString Name;
};

/// False for bytes that are none of ours or hold a name that leads elsewhere.
bool ReadFileElement(PCUITEMID_CHILD element, TFileElement& result);
TPidl MakeFileElement(DWORD flags, TStringView name);
/// TFileElementFlags for a native entry type (DT_DIR, ...).
DWORD FileElementFlags(unsigned char entryType) noexcept;
/// Whether a file of this name is a link of the shell, by its extension.
bool IsLinkName(TStringView name) noexcept;
/// A walk over a directory; S_OK or a failure. Sees the SHCONTF_ flags.
HRESULT OpenDirectoryCursor(const std::string& native, DWORD flags, Ref<IFolderCursor>& cursor);
/// Columns of known properties as the table of properties has them.
std::vector<TFolderColumn> ColumnsOf(std::initializer_list<PROPERTYKEY> keys);
/// The failure that stands for a native error number.
HRESULT ResultFromErrno(int error) noexcept;

/// Windows path of the directory whose objects a folder shows; empty if it shows none. The folder
/// need not have a path of its own: a library shows where it saves.
TString ShownDirectory(const TFolderNode& folder);

/// A directory. Immutable; several threads may use it at the same time.
class TFileSystemFolder : public TFolderSource {
 public:
  /// By Windows path. The native one is looked for when first needed.
  explicit TFileSystemFolder(TStringView path);
  /// With trailing delimiter.
  const TString& GetPath() const { return fPath; }

  HRESULT Enumerate(DWORD flags, Ref<IFolderCursor>& cursor) override;
  HRESULT GetName(PCUITEMID_CHILD element, TNameForm form, TString& name) override;
  HRESULT GetAttributes(PCUITEMID_CHILD element, DWORD mask, DWORD& attributes) override;
  HRESULT ParseName(TStringView name, const TParseOptions& options, TPidl& element) override;
  HRESULT Open(PCUITEMID_CHILD element, Ref<IFolderSource>& child) override;
  GUID GetClassId() override;
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
  HRESULT GetUIObject(std::span<const PCUITEMID_CHILD> elements, REFIID iid,
                      void** object) override;
  HRESULT GetLinkTarget(PCUITEMID_CHILD element, TPidl& target) override;
  HRESULT Refresh(PCUITEMID_CHILD element, TPidl& fresh) override;
  std::span<const TFolderColumn> GetColumns() override;

 private:
  const std::string& Native();
  /// Empty if no file can be meant.
  std::string NativeChild(TStringView name);
  TString PathOf(TStringView name) const { return fPath + TString(name); }
  bool IsFolder(const TFileElement& element);
  DWORD DriveAttributes(DWORD mask) const;
  DWORD KindAttributes(const TFileElement& element);
  DWORD AskedAttributes(const TFileElement& element, DWORD mask, DWORD known);
  HRESULT Describe(PCUITEMID_CHILD element, TFileObject& object);
  HRESULT ElementOf(const std::string& native, TStringView name, TPidl& element);
  HRESULT LoadLink(PCUITEMID_CHILD element, REFIID iid, void** object);
  HRESULT GetLinkPath(PCUITEMID_CHILD element, PROPVARIANT* value);

  TString fPath;  // with trailing delimiter
  std::once_flag fNativeOnce;
  std::string fNative;
};

}  // namespace oak
