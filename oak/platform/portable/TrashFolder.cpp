// The recycle bin: the freedesktop trash of the user.
#include <filesystem>
#include <fstream>
#include <iterator>

#include "oak/base/DateTime.h"
#include "oak/base/Guid.h"
#include "oak/base/Variant.h"
#include "oak/platform/Api.h"
#include "oak/platform/portable/FileProperties.h"
#include "oak/platform/portable/FileStream.h"
#include "oak/platform/portable/FileSystemSource.h"
#include "oak/platform/portable/PortableConfig.h"
#include "oak/platform/portable/PortableFiles.h"
#include "oak/platform/portable/PortableShell.h"
#include "oak/platform/portable/TrashCan.h"
#include "oak/platform/portable/TrashInfo.h"

namespace oak {
namespace {

namespace fs = std::filesystem;

constexpr BYTE TrashVersion = 1;
constexpr DWORD FolderFlag = 1;
/// Between the name in the trash and the name that is shown; no name holds it.
constexpr char16_t NameSeparator = u'/';
constexpr PROPERTYKEY DeletedFrom{FMTID_Displaced, 2};
constexpr PROPERTYKEY DateDeleted{FMTID_Displaced, 3};

std::string InfoFile(const TString& trashName) {
  return JoinNative(JoinNative(PortableConfig()->Trash, "info"),
                    NameToNative(trashName) + ".trashinfo");
}

std::string DataFile(const TString& trashName) {
  return JoinNative(TrashFilesDirectory(), NameToNative(trashName));
}

std::optional<TTrashInfo> LoadInfo(const TString& trashName) {
  std::ifstream file(InfoFile(trashName), std::ios::binary);
  if (!file) return std::nullopt;
  return ReadTrashInfo(std::string(std::istreambuf_iterator<char>(file), {}));
}

/// One deleted object as its element tells it.
struct TDeleted {
  TString TrashName;    ///< In the trash, unique.
  TString DisplayName;  ///< As it was called before.
  bool IsFolder = false;
};

bool ReadElement(PCUITEMID_CHILD element, TDeleted& deleted) {
  DWORD flags = 0;
  TString names;
  if (!ReadNameElement(element, ekTrash, TrashVersion, flags, names)) return false;
  const std::size_t separator = names.find(NameSeparator);
  if (separator == TString::npos || separator == 0 || !IsValidFileName(names.substr(0, separator)))
    return false;
  deleted = {names.substr(0, separator), names.substr(separator + 1), (flags & FolderFlag) != 0};
  return true;
}

TPidl MakeDeletedElement(const TString& trashName, bool isFolder) {
  const std::optional<TTrashInfo> info = LoadInfo(trashName);
  TString shown = trashName;
  if (info) {
    const std::size_t slash = info->OriginalPath.rfind('/');
    const std::string name =
        slash == std::string::npos ? info->OriginalPath : info->OriginalPath.substr(slash + 1);
    if (!name.empty()) shown = NameFromNative(name);
  }
  return MakeNameElement(ekTrash, TrashVersion, isFolder ? FolderFlag : 0,
                         trashName + NameSeparator + shown);
}

DWORD AttributesOf(bool isFolder) {
  const DWORD always = SFGAO_FILESYSTEM | SFGAO_CANMOVE | SFGAO_CANDELETE | SFGAO_HASPROPSHEET;
  return always | (isFolder ? SFGAO_FOLDER : SFGAO_STREAM);
}

/// Shows the deleted objects in the order in which the directory gives them.
class TTrashCursor final : public TInterfacedObject<IFolderCursor> {
 public:
  TTrashCursor(TNativeDirectory directory, DWORD flags)
      : fDirectory(std::move(directory)), fFlags(flags) {}

  HRESULT Next(PCUITEMID_CHILD* element) override {
    *element = nullptr;
    while (const char* name = fDirectory.Next()) {
      if (std::string_view(name) == "." || std::string_view(name) == "..") continue;
      const std::optional<TFileInfo> info = GetFileInfoAt(fDirectory.Descriptor(), name);
      const bool isFolder = info && info->IsDirectory();
      if (!PassesEnumeration(fFlags, AttributesOf(isFolder))) continue;
      fElement = MakeDeletedElement(NameFromNative(name), isFolder);
      *element = fElement.Get();
      return S_OK;
    }
    return fDirectory.Error() ? HRESULT_FROM_WIN32(fDirectory.Error()) : S_FALSE;
  }

 private:
  TNativeDirectory fDirectory;
  DWORD fFlags;
  TPidl fElement;
};

class TTrashSource final : public TFolderSource {
 public:
  HRESULT Enumerate(DWORD flags, Ref<IFolderCursor>& cursor) override {
    DWORD error = 0;
    std::optional<TNativeDirectory> directory =
        TNativeDirectory::Open(TrashFilesDirectory(), &error);
    if (directory)
      cursor = MakeRef<TTrashCursor>(std::move(*directory), flags);
    else if (error == ERROR_FILE_NOT_FOUND || error == ERROR_PATH_NOT_FOUND)
      cursor = MakeListCursor({});  // Nothing was ever deleted.
    else
      return HRESULT_FROM_WIN32(error);
    return S_OK;
  }
  HRESULT GetName(PCUITEMID_CHILD element, TNameForm form, TString& name) override {
    TDeleted deleted;
    if (!ReadElement(element, deleted)) return E_INVALIDARG;
    switch (form) {
      case TNameForm::Parsing:
        name = deleted.TrashName;
        return S_OK;
      case TNameForm::AbsoluteParsing:
      case TNameForm::FileSystemPath:
        name = WindowsPath(DataFile(deleted.TrashName));
        return name.empty() ? S_FALSE : S_OK;
      case TNameForm::AbsoluteEditing:
        return S_FALSE;
      default:
        name = deleted.DisplayName;
        return S_OK;
    }
  }
  HRESULT GetAttributes(PCUITEMID_CHILD element, DWORD mask, DWORD& attributes) override {
    TDeleted deleted;
    if (!ReadElement(element, deleted)) return E_INVALIDARG;
    if ((mask & SFGAO_VALIDATE) && !GetFileInfo(DataFile(deleted.TrashName)))
      return HRESULT_FROM_WIN32(ERROR_FILE_NOT_FOUND);
    attributes = AttributesOf(deleted.IsFolder);
    return S_OK;
  }
  HRESULT ParseName(TStringView name, const TParseOptions& options, TPidl& element) override {
    const TString trashName(name);
    if (!IsValidFileName(trashName)) return HRESULT_FROM_WIN32(ERROR_INVALID_NAME);
    if (const std::optional<TFileInfo> info = GetFileInfo(DataFile(trashName))) {
      element = MakeDeletedElement(trashName, info->IsDirectory());
      return S_OK;
    }
    return TFolderSource::ParseName(name, options, element);
  }
  HRESULT Open(PCUITEMID_CHILD element, Ref<IFolderSource>& child) override {
    TDeleted deleted;
    if (!ReadElement(element, deleted) || !deleted.IsFolder) return E_INVALIDARG;
    const TString path = WindowsPath(DataFile(deleted.TrashName));
    if (path.empty()) return HRESULT_FROM_WIN32(ERROR_PATH_NOT_FOUND);
    child = MakeFileSystemFolder(path);
    return S_OK;
  }
  GUID GetClassId() override { return RecycleBinClassId; }
  HRESULT Destroy(PCUITEMID_CHILD element) override {
    TDeleted deleted;
    if (!ReadElement(element, deleted)) return E_INVALIDARG;
    const int error = RemoveFromTrash(DataFile(deleted.TrashName), {});
    return error == 0 ? S_OK : HRESULT_FROM_WIN32(Win32FromErrno(error));
  }
  HRESULT OpenStream(PCUITEMID_CHILD element, DWORD mode, IStream** stream) override {
    TDeleted deleted;
    if (!ReadElement(element, deleted) || deleted.IsFolder) return E_INVALIDARG;
    return OpenFileStream(DataFile(deleted.TrashName), W(deleted.DisplayName), mode, stream);
  }
  HRESULT GetProperty(PCUITEMID_CHILD element, REFPROPERTYKEY key, PROPVARIANT* value) override {
    TDeleted deleted;
    if (!ReadElement(element, deleted)) return E_INVALIDARG;
    const TPropertyKeyEqual equal;
    if (equal(key, DeletedFrom) || equal(key, DateDeleted))
      return GetOwnProperty(deleted, equal(key, DateDeleted), value);
    return GetFileProperty(FileOf(deleted), key, value);
  }
  std::vector<PROPERTYKEY> GetPropertyKeys(PCUITEMID_CHILD element) override {
    TDeleted deleted;
    if (!ReadElement(element, deleted)) return {};
    std::vector<PROPERTYKEY> keys = FilePropertyKeys(FileOf(deleted));
    keys.insert(keys.end(), {DeletedFrom, DateDeleted});
    return keys;
  }
  std::span<const TFolderColumn> GetColumns() override {
    static const auto* columns = new std::vector<TFolderColumn>(
        ColumnsOf({PKEY_ItemNameDisplay, DeletedFrom, DateDeleted, PKEY_Size, PKEY_ItemTypeText,
                   PKEY_DateModified, PKEY_DateCreated, PKEY_FileAttributes}));
    return *columns;
  }
  HRESULT GetTypeName(PCUITEMID_CHILD element, TString& name) override {
    TDeleted deleted;
    if (!ReadElement(element, deleted)) return E_INVALIDARG;
    name = FileTypeName(deleted.DisplayName, deleted.IsFolder);
    return S_OK;
  }

 private:
  static TFileObject FileOf(const TDeleted& deleted) {
    return {deleted.DisplayName, DataFile(deleted.TrashName), deleted.IsFolder};
  }
  // Empty if the trash has noted nothing.
  static HRESULT GetOwnProperty(const TDeleted& deleted, bool date, PROPVARIANT* value) {
    const std::optional<TTrashInfo> info = LoadInfo(deleted.TrashName);
    if (!info) return S_OK;
    if (!date) {
      const fs::path original(info->OriginalPath);
      *value = TPropVariant::From(WindowsPath(original.parent_path().string())).Detach();
    } else if (FileTimeToTicks(info->Deleted) != 0) {
      TIME_ZONE_INFORMATION zone{};
      Api().GetTimeZoneInformation(&zone);
      *value = TPropVariant::From(ZoneToUtc(zone, info->Deleted)).Detach();
    }
    return S_OK;
  }
};

}  // namespace

void MountRecycleBin() {
  TFolderMount mount;
  mount.Name = u"Recycle Bin";
  mount.ClassId = RecycleBinClassId;
  mount.Attributes = SFGAO_FOLDER | SFGAO_CANLINK | SFGAO_CANRENAME | SFGAO_DROPTARGET |
                     SFGAO_HASPROPSHEET | SFGAO_BROWSABLE;
  mount.Order = 70;
  mount.Source = MakeRef<TTrashSource>();
  MountFolder(std::move(mount));
}

}  // namespace oak
