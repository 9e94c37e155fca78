#include "oak/platform/portable/FileSystemSource.h"

#include <dirent.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>

#include "oak/platform/portable/PortableConfig.h"
#include "oak/platform/portable/PortableFiles.h"
#include "oak/platform/portable/PropertyTable.h"
#include "oak/platform/portable/ShellNode.h"

namespace oak {
namespace {

constexpr BYTE kFileVersion = 1;
constexpr TStringView kLinkExtension = u".lnk";

constexpr DWORD kEveryObject = SFGAO_CANCOPY | SFGAO_CANMOVE | SFGAO_CANLINK | SFGAO_CANRENAME |
                               SFGAO_CANDELETE | SFGAO_HASPROPSHEET | SFGAO_FILESYSTEM;
constexpr DWORD kEveryFolder =
    SFGAO_FOLDER | SFGAO_FILESYSANCESTOR | SFGAO_STORAGE | SFGAO_STORAGEANCESTOR | SFGAO_DROPTARGET;
constexpr DWORD kByKind = kEveryFolder | SFGAO_STREAM | SFGAO_LINK | SFGAO_HASSUBFOLDER;

bool IsDots(TStringView name) { return name == u"." || name == u".."; }

bool IsHiddenName(TStringView name) { return name.starts_with(u'.'); }

// Hidden folders don't count: a tree that does not show them would offer an
// expansion that leads nowhere.
bool HasSubfolder(const std::string& native) {
  auto directory = TNativeDirectory::Open(native);
  if (!directory) return false;
  while (const char* name = directory->Next()) {
    if (name[0] == '.') continue;
    if (directory->EntryType() == DT_DIR) return true;
    if (directory->EntryType() != DT_LNK && directory->EntryType() != DT_UNKNOWN) continue;
    const auto info = GetFileInfoAt(directory->Descriptor(), name, true);
    if (info && info->IsDirectory()) return true;
  }
  return false;
}

bool IsReadOnly(const std::string& native, bool folder) {
  if (folder) return ::access(native.c_str(), W_OK) != 0 && (errno == EACCES || errno == EROFS);
  const auto info = GetFileInfo(native, true);
  return info && (info->Attributes & FILE_ATTRIBUTE_READONLY);
}

}  // namespace

TString ShownDirectory(const TFolderNode& folder) {
  TString path;
  if (SUCCEEDED(folder.GetFolderName(TNameForm::FileSystemPath, path)) && !path.empty())
    return path;
  const auto* directory = dynamic_cast<const TFileSystemFolder*>(&folder.Contents());
  return directory ? directory->GetPath() : TString();
}

// --- elements ----------------------------------------------------------------

bool ReadFileElement(PCUITEMID_CHILD element, TFileElement& result) {
  return ReadNameElement(element, ekFileSystem, kFileVersion, result.Flags, result.Name) &&
         std::none_of(result.Name.begin(), result.Name.end(),
                      [](char16_t c) { return c == u'\\' || c == u'/'; }) &&
         !IsDots(result.Name);
}

TPidl MakeFileElement(DWORD flags, TStringView name) {
  return MakeNameElement(ekFileSystem, kFileVersion, flags, name);
}

DWORD FileElementFlags(unsigned char entryType) noexcept {
  switch (entryType) {
    case DT_DIR:
      return feFolder;
    case DT_LNK:
      return feSymlink;
    case DT_REG:
      return 0;
    default:
      return feSpecial;
  }
}

bool IsLinkName(TStringView name) noexcept {
  return name.size() > kLinkExtension.size() && EndsText(kLinkExtension, name);
}

HRESULT ResultFromErrno(int error) noexcept { return HRESULT_FROM_WIN32(Win32FromErrno(error)); }

Ref<IFolderSource> MakeFileSystemFolder(TStringView path) {
  return MakeRef<TFileSystemFolder>(path);
}

// --- the folder ----------------------------------------------------------------

TFileSystemFolder::TFileSystemFolder(TStringView path)
    : fPath(IncludeTrailingPathDelimiter(path)) {}

const std::string& TFileSystemFolder::Native() {
  std::call_once(fNativeOnce, [this] { fNative = NativePath(fPath).value_or(std::string()); });
  return fNative;
}

std::string TFileSystemFolder::NativeChild(TStringView name) {
  const std::string& directory = Native();
  const std::string native = NameToNative(name);
  if (directory.empty() || native.empty()) return {};
  return JoinNative(directory, native);
}

HRESULT TFileSystemFolder::Enumerate(DWORD flags, Ref<IFolderCursor>& cursor) {
  if (Native().empty()) return HRESULT_FROM_WIN32(ERROR_PATH_NOT_FOUND);
  return OpenDirectoryCursor(fNative, flags, cursor);
}

HRESULT TFileSystemFolder::GetName(PCUITEMID_CHILD element, TNameForm form, TString& name) {
  TFileElement file;
  if (!ReadFileElement(element, file)) return E_INVALIDARG;
  switch (form) {
    case TNameForm::Parsing:
      name = std::move(file.Name);
      return S_OK;
    case TNameForm::AbsoluteParsing:
    case TNameForm::AbsoluteEditing:
    case TNameForm::FileSystemPath:
      name = PathOf(file.Name);
      return S_OK;
    default:
      if (!(file.Flags & feFolder) && IsLinkName(file.Name))
        file.Name.resize(file.Name.size() - kLinkExtension.size());
      name = std::move(file.Name);
      return S_OK;
  }
}

// A link that leads nowhere is a file.
bool TFileSystemFolder::IsFolder(const TFileElement& element) {
  if (element.Flags & feFolder) return true;
  if (!(element.Flags & feSymlink)) return false;
  const auto info = GetFileInfo(NativeChild(element.Name), true);
  return info && info->IsDirectory();
}

DWORD TFileSystemFolder::DriveAttributes(DWORD mask) const {
  if (!(mask & (SFGAO_REMOVABLE | SFGAO_ISSLOW))) return 0;
  if (fPath.starts_with(u"\\\\")) return SFGAO_ISSLOW;
  const auto config = PortableConfig();
  const TPortableDrive* drive = config->FindDrive(fPath[0]);
  if (!drive) return 0;
  switch (drive->Kind) {
    case TPortableDriveKind::Network:
      return SFGAO_ISSLOW;
    case TPortableDriveKind::Removable:
    case TPortableDriveKind::CdRom:
      return SFGAO_REMOVABLE;
    default:
      return 0;
  }
}

DWORD TFileSystemFolder::KindAttributes(const TFileElement& element) {
  if (IsFolder(element)) return kEveryFolder;
  DWORD attributes = 0;
  if (!(element.Flags & feSpecial)) attributes |= SFGAO_STREAM;
  if (IsLinkName(element.Name)) attributes |= SFGAO_LINK;
  return attributes;
}

// What only the system knows.
DWORD TFileSystemFolder::AskedAttributes(const TFileElement& element, DWORD mask, DWORD known) {
  DWORD attributes = DriveAttributes(mask);
  const bool folder = (known & SFGAO_FOLDER) != 0;
  if ((mask & SFGAO_READONLY) && IsReadOnly(NativeChild(element.Name), folder))
    attributes |= SFGAO_READONLY;
  if ((mask & SFGAO_HASSUBFOLDER) && folder && HasSubfolder(NativeChild(element.Name)))
    attributes |= SFGAO_HASSUBFOLDER;
  return attributes;
}

HRESULT TFileSystemFolder::GetAttributes(PCUITEMID_CHILD element, DWORD mask, DWORD& attributes) {
  attributes = 0;
  TFileElement file;
  if (!ReadFileElement(element, file)) return E_INVALIDARG;
  if (mask & SFGAO_VALIDATE) {
    DWORD error = 0;
    if (!GetFileInfo(NativeChild(file.Name), false, &error)) return HRESULT_FROM_WIN32(error);
  }
  attributes = kEveryObject;
  if (IsHiddenName(file.Name)) attributes |= SFGAO_HIDDEN | SFGAO_GHOSTED;
  if (file.Flags & feSpecial) attributes |= SFGAO_SYSTEM;
  if ((mask & (kByKind | SFGAO_READONLY)) || !(file.Flags & feSymlink))
    attributes |= KindAttributes(file);
  attributes |= AskedAttributes(file, mask, attributes);
  return S_OK;
}

// --- parsing -------------------------------------------------------------------

HRESULT TFileSystemFolder::ElementOf(const std::string& native, TStringView name, TPidl& element) {
  DWORD error = 0;
  const auto info = GetFileInfo(native, false, &error);
  if (!info) return HRESULT_FROM_WIN32(error);
  DWORD flags = feSpecial;
  if (info->IsSymlink())
    flags = feSymlink;
  else if (info->IsDirectory())
    flags = feFolder;
  else if (S_ISREG(info->Mode))
    flags = 0;
  element = MakeFileElement(flags, name);
  return S_OK;
}

HRESULT TFileSystemFolder::ParseName(TStringView name, const TParseOptions& options,
                                     TPidl& element) {
  if (IsDots(name) || NameToNative(name).empty()) return HRESULT_FROM_WIN32(ERROR_INVALID_NAME);
  if (const WIN32_FIND_DATAW* data = options.FindData) {
    const TString given = FromW(data->cFileName);
    const bool folder = options.HasRest || (data->dwFileAttributes & FILE_ATTRIBUTE_DIRECTORY);
    element =
        MakeFileElement(folder ? DWORD{feFolder} : 0, given.empty() ? name : TStringView(given));
    return S_OK;
  }
  const HRESULT missing =
      HRESULT_FROM_WIN32(options.HasRest ? ERROR_PATH_NOT_FOUND : ERROR_FILE_NOT_FOUND);
  if (Native().empty()) return HRESULT_FROM_WIN32(ERROR_PATH_NOT_FOUND);
  const std::string wanted = NativeChild(name);
  HRESULT result = ElementOf(wanted, name, element);
  if (result != HRESULT_FROM_WIN32(ERROR_FILE_NOT_FOUND)) return result;
  const std::string found = FindNativeChild(fNative, NameToNative(name));
  if (found == wanted) return missing;
  result = ElementOf(found, NameFromNative(found.substr(found.find_last_of('/') + 1)), element);
  return result == HRESULT_FROM_WIN32(ERROR_FILE_NOT_FOUND) ? missing : result;
}

HRESULT TFileSystemFolder::Open(PCUITEMID_CHILD element, Ref<IFolderSource>& child) {
  TFileElement file;
  if (!ReadFileElement(element, file)) return E_INVALIDARG;
  if (!(file.Flags & (feFolder | feSymlink))) return HRESULT_FROM_WIN32(ERROR_DIRECTORY);
  child = MakeFileSystemFolder(PathOf(file.Name));
  return S_OK;
}

GUID TFileSystemFolder::GetClassId() { return FileSystemFolderClassId; }

// Names that differ in case alone, or in a hidden extension, are different objects.
HRESULT TFileSystemFolder::Compare(LPARAM what, PCUITEMID_CHILD a, PCUITEMID_CHILD b, int& order) {
  order = 0;
  TFileElement first, second;
  if (!ReadFileElement(a, first) || !ReadFileElement(b, second)) return E_INVALIDARG;
  if (first.Name == second.Name) return S_OK;
  if (!(static_cast<DWORD>(what) & (SHCIDS_ALLFIELDS | SHCIDS_CANONICALONLY))) {
    const HRESULT result = TFolderSource::Compare(what, a, b, order);
    if (FAILED(result) || order != 0) return result;
  }
  order = first.Name.compare(second.Name);
  return S_OK;
}

HRESULT TFileSystemFolder::Refresh(PCUITEMID_CHILD element, TPidl& fresh) {
  TFileElement file;
  if (!ReadFileElement(element, file)) return E_INVALIDARG;
  const std::string native = NativeChild(file.Name);
  if (native.empty()) return HRESULT_FROM_WIN32(ERROR_PATH_NOT_FOUND);
  TPidl now;
  const HRESULT result = ElementOf(native, file.Name, now);
  if (FAILED(result)) return result;
  TFileElement seen;
  ReadFileElement(now.Get(), seen);
  if (seen.Flags == file.Flags) return S_FALSE;
  fresh = std::move(now);
  return S_OK;
}

}  // namespace oak
