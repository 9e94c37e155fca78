// TOakSelectionList: files and folders.
#include "oak/coordination/OakSelectionList.h"
#include "oak/namespace/ErrorMode.h"
#include "oak/namespace/FolderTrek.Paths.h"
#include "oak/namespace/Oak.Shell.PathUtils.h"
#include "oak/namespace/Shell_Win32.h"

namespace oak {
namespace {

constexpr std::size_t kShortestPath = 3;

struct TNewFileTraits {
  using Type = HANDLE;
  static Type Invalid() noexcept { return INVALID_HANDLE_VALUE; }
  static void Close(Type handle) noexcept { Api().CloseHandle(handle); }
};

bool IsDirectory(DWORD pAttributes) { return (pAttributes & FILE_ATTRIBUTE_DIRECTORY) != 0; }

bool MakeFolders(TStringView pPath) {
  if (pPath.size() < kShortestPath || TOakSelectionList::IsFolder(pPath))
    return TOakSelectionList::IsFolder(pPath);
  const TString parent = TOakSelectionList::GetParentPathFromPath(pPath);
  if (!parent.empty() && parent.size() < pPath.size())
    MakeFolders(IsDrive(parent) ? parent : ExcludeTrailingPathDelimiter(parent));
  const TString path = TOakSelectionList::GetUnicodeAPICallPath(pPath);
  // Another thread or program may have been faster.
  return Api().CreateDirectoryW(W(path), nullptr) || TOakSelectionList::IsFolder(pPath);
}

}  // namespace

bool TOakSelectionList::FormatSelectionPath(TString& path) {
  TStringView plain = path;
  if (plain.ends_with(u'*')) plain.remove_suffix(1);
  if (plain.empty() || oak::IsFolderToIgnore(plain)) return false;
  if (IsFile(plain)) {
    path = TString(plain);
    return true;
  }
  if (!IsFolder(plain)) return false;
  path = IncludeTrailingPathDelimiter(plain) + u"*";
  return true;
}

TString TOakSelectionList::GetUnicodeAPICallPath(TStringView pPath) {
  return TPathUtils::GetUnicodeAPICallPath(pPath, true, false);
}

TString TOakSelectionList::GetParentPathFromPath(TStringView Path) {
  return TSelectionEntries::ParentOf(Path);
}

TFindHandle TOakSelectionList::FindFirstFile(TStringView pPath, WIN32_FIND_DATAW& pFindData) {
  return OpenFind(pPath, pFindData);
}

bool TOakSelectionList::IsFile(TStringView path) {
  WIN32_FIND_DATAW found{};
  if (!OpenFind(path, found) || IsDirectory(found.dwFileAttributes)) return false;
  // Where names may hold them, wildcards find others.
  const TString name = ExtractFileName(path);
  return name.find_first_of(u"*?") == TString::npos || name == FoundName(found);
}

bool TOakSelectionList::IsFolder(TStringView path) {
  if (IsDrive(path)) return true;
  if (path.size() >= TPathUtils::ClassicPathLimit) {
    WIN32_FIND_DATAW found{};
    return OpenFind(ExcludeTrailingPathDelimiter(path), found) &&
           IsDirectory(found.dwFileAttributes);
  }
  const TErrorMode quiet;
  const TWow64RedirectionOff direct;
  WIN32_FILE_ATTRIBUTE_DATA attributes{};
  return Api().GetFileAttributesExW(W(TString(path)), GetFileExInfoStandard, &attributes) &&
         IsDirectory(attributes.dwFileAttributes);
}

bool TOakSelectionList::ForceDirectories(TStringView pFullPath) {
  if (pFullPath.empty())
    throw EInvalidOperation(u"OakForceDirectories() cannot be called with an empty path.");
  const TErrorMode quiet;
  const TWow64RedirectionOff direct;
  return MakeFolders(pFullPath);
}

bool TOakSelectionList::CreateFile(TStringView pFullPath) {
  const TString parent = GetParentPathFromPath(pFullPath);
  if (parent.empty() || !ForceDirectories(parent)) return false;
  const TErrorMode quiet;
  const TWow64RedirectionOff direct;
  const TString path = GetUnicodeAPICallPath(pFullPath);
  return static_cast<bool>(TUniqueHandle<TNewFileTraits>::Adopt(Api().CreateFileW(
      W(path), GENERIC_WRITE, 0, nullptr, CREATE_NEW, FILE_ATTRIBUTE_NORMAL, nullptr)));
}

bool OakForceDirectories(TStringView pFullPath) {
  return TOakSelectionList::ForceDirectories(pFullPath);
}

}  // namespace oak
