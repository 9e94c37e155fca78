#include "oak/coordination/FindFiles.h"

#include "oak/namespace/ErrorMode.h"
#include "oak/namespace/Oak.Shell.PathUtils.h"
#include "oak/namespace/Shell_Win32.h"

namespace oak {

TFindHandle OpenFind(TStringView pPattern, WIN32_FIND_DATAW& pFindData) {
  const TErrorMode quiet;
  const TWow64RedirectionOff direct;
  const TString pattern = TPathUtils::GetUnicodeAPICallPath(pPattern, true, false);
  return TFindHandle::Adopt(Api().FindFirstFileW(W(pattern), &pFindData));
}

TStringView FoundName(const WIN32_FIND_DATAW& pFindData) {
  return TStringView(reinterpret_cast<const char16_t*>(pFindData.cFileName));
}

bool IsFolderToIgnore(TStringView name) noexcept { return name == u"." || name == u".."; }

bool ForEachEntry(TStringView pFolder, const std::function<bool(const WIN32_FIND_DATAW&)>& visit) {
  WIN32_FIND_DATAW data{};
  const TFindHandle find = OpenFind(IncludeTrailingPathDelimiter(pFolder) + u"*", data);
  // The root of an empty drive has not even "." in it.
  if (!find) return Api().GetLastError() == ERROR_FILE_NOT_FOUND;
  do {
    if (!IsFolderToIgnore(FoundName(data)) && !visit(data)) return true;
  } while (Api().FindNextFileW(find.Get(), &data));
  return Api().GetLastError() == ERROR_NO_MORE_FILES;
}

// --- TOakStack -------------------------------------------------------------------

void TOakStack::Push(TFindHandle Handle, TString Path) {
  fEntries.push_back({std::move(Handle), std::move(Path)});
}

TFindHandle TOakStack::Pop() {
  TFindHandle handle = std::move(fEntries.back().Handle);
  fEntries.pop_back();
  return handle;
}

HANDLE TOakStack::Top() const noexcept {
  return fEntries.empty() ? INVALID_HANDLE_VALUE : fEntries.back().Handle.Get();
}

TStringView TOakStack::GetCurrentPath() const noexcept {
  return fEntries.empty() ? TStringView() : TStringView(fEntries.back().Path);
}

// --- TSelectionWalk ----------------------------------------------------------------

TSelectionWalk::TSelectionWalk(TStringArray pEntries, bool pFollowReparsePoint)
    : fEntries(std::move(pEntries)), fFollowReparsePoint(pFollowReparsePoint) {}

TString TSelectionWalk::Next() {
  while (Advance()) {
    const WIN32_FIND_DATAW& data = fStackList.Win32FindData;
    const TStringView name = FoundName(data);
    const TString path = TString(fStackList.GetCurrentPath()).append(name);
    if (!(data.dwFileAttributes & FILE_ATTRIBUTE_DIRECTORY)) return path;
    if (IsFolderToIgnore(name)) continue;
    if (fFollowReparsePoint || !IsReparsePoint(data.dwFileAttributes)) EnterFolder(path);
  }
  return {};
}

/// Moves to the next thing that was found; false at the end of the walk.
bool TSelectionWalk::Advance() {
  for (;;) {
    if (std::exchange(fIsFresh, false)) return true;
    if (fStackList.IsEmpty()) {
      if (!BeginEntry()) return false;
    } else if (!Api().FindNextFileW(fStackList.Top(), &fStackList.Win32FindData)) {
      const bool isWhole = Api().GetLastError() == ERROR_NO_MORE_FILES;
      const TString folder(fStackList.GetCurrentPath());
      fStackList.Pop().Reset();
      if (!isWhole) fUnreadable.push_back(folder);
    } else {
      return true;
    }
  }
}

/// Opens the next entry of the selection; false if there is none.
bool TSelectionWalk::BeginEntry() {
  if (fSelectedFilesCounter >= fEntries.size()) return false;
  const TString& entry = fEntries[fSelectedFilesCounter++];
  if (entry.ends_with(u"\\*")) {
    EnterFolder(entry.substr(0, entry.size() - 2));
    return true;
  }
  TFindHandle find = OpenFind(entry, fStackList.Win32FindData);
  const bool isFile =
      find && !(fStackList.Win32FindData.dwFileAttributes & FILE_ATTRIBUTE_DIRECTORY);
  if (!isFile) {
    fUnreadable.push_back(entry);
    return true;
  }
  fStackList.Push(std::move(find), ExtractFilePath(entry));
  fIsFresh = true;
  return true;
}

void TSelectionWalk::EnterFolder(TString pPath) {
  TString folder = IncludeTrailingPathDelimiter(pPath);
  TFindHandle find = OpenFind(folder + u"*", fStackList.Win32FindData);
  if (!find) {
    if (Api().GetLastError() != ERROR_FILE_NOT_FOUND) fUnreadable.push_back(pPath);
    return;
  }
  fStackList.Push(std::move(find), std::move(folder));
  fIsFresh = true;
}

}  // namespace oak
