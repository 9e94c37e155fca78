#include "oak/namespace/FolderTrek.Paths.h"

#include <algorithm>
#include <atomic>

#include "oak/namespace/ErrorMode.h"
#include "oak/namespace/Oak.Shell.PathUtils.h"
#include "oak/namespace/OakItemIdList.h"
#include "oak/namespace/Shell_Win32.h"
#include "oak/platform/Api.h"
#include "oak/platform/MainThread.h"

namespace oak {

bool IsDrive(TStringView pPath) {
  if (pPath.ends_with(PathDelim)) pPath.remove_suffix(1);
  return !pPath.empty() && ExtractFileDrive(pPath) == pPath;
}

bool IsAbsolutePath(TStringView pText) {
  return TPathUtils::StartsWithDriveLetter(pText) || IsUNCPath(pText) || IsUncServer(pText);
}

bool IsProtocolPath(TStringView pText) {
  const std::size_t colon = pText.find(u':');
  if (colon == TStringView::npos || colon < 2) return false;
  const TStringView scheme = pText.substr(0, colon);
  return scheme.size() - static_cast<std::size_t>(std::count(scheme.begin(), scheme.end(), u'"')) >=
         3;
}

bool IsSearchFolderPath(TStringView pText) {
  const TString text = TrimLeft(ReplaceAll(pText, u"'", u""));
  return StartsText(u"search-ms:", text);
}

bool IsUNCPath(TStringView pText) {
  if (StartsText(u"\\\\?\\UNC\\", pText)) return true;
  return pText.starts_with(u"\\\\") && pText.find(PathDelim, 2) != TStringView::npos;
}

bool IsUncServer(TStringView pText) {
  return pText.size() > 2 && pText.starts_with(u"\\\\") &&
         pText.find_first_of(u"\\*?", 2) == TStringView::npos;
}

bool HasFileExtension(TStringView pPath, TStringView pExtension) {
  const TString own = ExtractFileExt(ExcludeTrailingPathDelimiter(pPath));
  if (pExtension.starts_with(u'.')) return SameText(own, pExtension);
  return SameText(own, u"." + TString(pExtension));
}

TString ExcludeTrailingDelimiter(TStringView pText) { return ExcludeTrailingPathDelimiter(pText); }

bool SamePath(TStringView pPath1, TStringView pPath2) {
  if (pPath1.ends_with(PathDelim)) pPath1.remove_suffix(1);
  if (pPath2.ends_with(PathDelim)) pPath2.remove_suffix(1);
  return SameText(pPath1, pPath2);
}

bool IsSubPathOf(TStringView pParent, TStringView pChild) {
  if (pParent.empty()) return false;
  const TString parent = IncludeTrailingPathDelimiter(pParent);
  return pChild.size() > parent.size() && StartsText(parent, pChild);
}

bool IsFolderClassId(TStringView pText) { return pText.starts_with(u"::{"); }

bool IsUSBDevicePath(TStringView pText) { return StartsText(u"\\\\?\\usb#vid", pText); }

int CompareFilenames(TStringView pName1, TStringView pName2) {
  return Api().StrCmpLogicalW(W(TString(pName1)), W(TString(pName2)));
}

bool IsNetworkPath(TStringView pPath) {
  if (IsUNCPath(pPath)) return true;
  const TString drive = ExtractFileDrive(pPath);
  if (!drive.empty() && Api().GetDriveTypeW(W(IncludeTrailingPathDelimiter(drive))) == DRIVE_REMOTE)
    return true;
  return IsUncServer(pPath);
}

bool FileOrFolderExists(TStringView pPath) {
  if (IsDrive(pPath)) return IsDriveReady(pPath, IsMainThread());
  const TErrorMode quiet;
  WIN32_FIND_DATAW data;
  const HANDLE found = Api().FindFirstFileW(W(ExcludeTrailingPathDelimiter(pPath)), &data);
  if (found == INVALID_HANDLE_VALUE) return false;
  Api().FindClose(found);
  return true;
}

bool IsInSearchFolder(const Ref<IItemIdList>& pItemIdList, bool pIncludeItself) {
  if (!pItemIdList) return false;
  if (pIncludeItself && (dynamic_cast<TOakSearchFolder*>(pItemIdList.Get()) != nullptr ||
                         IsSearchFolderPath(pItemIdList->DisplayPath())))
    return true;
  if (pItemIdList->Depth() == 0) return false;
  return IsSearchFolderPath(pItemIdList->GetStartItemIdList(1)->DisplayPath());
}

TString GetPathFromSpecialFolder(TOakShellFolder pSpecialFolder) {
  const Ref<IItemIdList> item = TOakItemIdList::CreateForSpecialFolder(pSpecialFolder, true);
  TString path = item ? item->Path() : TString();
  if (!path.empty()) return path;
  switch (pSpecialFolder) {
    case SF_PROGRAM_FILESX86:
      return GetPathFromSpecialFolder(SF_PROGRAM_FILES);
    case SF_PROGRAM_FILES_COMMONX86:
      return GetPathFromSpecialFolder(SF_PROGRAM_FILES_COMMON);
    case SF_SYSTEMX86:
      return GetPathFromSpecialFolder(SF_SYSTEM);
    default:
      return path;
  }
}

namespace {
std::atomic<bool> gCorrectSystemProfilePath{false};
}

void SetCorrectSystemProfilePath(bool pEnabled) { gCorrectSystemProfilePath = pEnabled; }

TString GetUserProfilePath() {
  TString path = GetPathFromSpecialFolder(SF_PROFILE);
  if (!gCorrectSystemProfilePath || !IsWOW64()) return path;
  return ReplaceAllText(path, u"\\System32\\config\\systemprofile",
                        u"\\SysWOW64\\config\\systemprofile");
}

TString OakGetWindowsPath() {
  TString buffer(MAX_PATH, u'\0');
  const UINT length = Api().GetWindowsDirectoryW(WBuffer(buffer), static_cast<UINT>(buffer.size()));
  if (length == 0 || length >= buffer.size()) return u"C:\\Windows";
  buffer.resize(length);
  return buffer;
}

TString GetFriendlyName(TStringView pPath) {
  TString text(pPath);
  const Ref<IShellFolder> desktop = Desktop();
  TPidl pidl;
  if (FAILED(
          desktop->ParseDisplayName(nullptr, nullptr, WBuffer(text), nullptr, pidl.Put(), nullptr)))
    return TString(pPath);
  return TOakItemIdList::Create(std::move(pidl))->Path();
}

namespace {
TString ExpandVariables(TStringView pText) {
  const TString source(pText);
  const DWORD needed = Api().ExpandEnvironmentStringsW(W(source), nullptr, 0);
  if (needed == 0) return source;
  TString buffer(needed, u'\0');
  const DWORD written = Api().ExpandEnvironmentStringsW(W(source), WBuffer(buffer), needed);
  if (written == 0 || written > needed) return source;
  buffer.resize(written - 1);
  return buffer;
}

TString TwoDigits(WORD value) {
  const TString digits = IntToStr(value);
  return digits.size() < 2 ? u"0" + digits : digits;
}
}  // namespace

TString OakExpandEnvironmentStrings(TStringView pText) {
  TString text = ExpandVariables(pText);
  if (!Contains(text, u"%")) return text;
  SYSTEMTIME now;
  Api().GetLocalTime(&now);
  text = ReplaceAllText(
      text, u"%DATE%",
      IntToStr(now.wYear) + u"-" + TwoDigits(now.wMonth) + u"-" + TwoDigits(now.wDay));
  text = ReplaceAllText(
      text, u"%TIME%",
      TwoDigits(now.wHour) + u"-" + TwoDigits(now.wMinute) + u"-" + TwoDigits(now.wSecond));
  if (ContainsText(text, u"%MYDOCUMENTS%"))
    text = ReplaceAllText(text, u"%MYDOCUMENTS%", GetPathFromSpecialFolder(SF_PERSONAL));
  return text;
}

std::int64_t GetFileSize64(const WIN32_FIND_DATAW& pFindData) {
  return static_cast<std::int64_t>((static_cast<std::uint64_t>(pFindData.nFileSizeHigh) << 32) |
                                   pFindData.nFileSizeLow);
}

std::int64_t GetFileSize(TStringView pPath) {
  const TErrorMode quiet;
  WIN32_FIND_DATAW data;
  const HANDLE found = Api().FindFirstFileW(W(ExcludeTrailingPathDelimiter(pPath)), &data);
  if (found == INVALID_HANDLE_VALUE) return -1;
  Api().FindClose(found);
  return GetFileSize64(data);
}

TString FormatByteSize(std::int64_t pSize) {
  TString buffer(64, u'\0');
  if (Api().StrFormatByteSizeW &&
      Api().StrFormatByteSizeW(pSize, WBuffer(buffer), static_cast<UINT>(buffer.size())))
    return buffer.c_str();
  return IntToStr(pSize);
}

bool OakGetDiskFreeSpace(TStringView pPath, std::uint64_t& pFree, std::uint64_t& pTotal) {
  const TErrorMode quiet;
  ULARGE_INTEGER free{}, total{};
  const TString path = IncludeTrailingPathDelimiter(pPath);
  if (!Api().GetDiskFreeSpaceExW(W(path), &free, &total, nullptr)) return false;
  pFree = free.QuadPart;
  pTotal = total.QuadPart;
  return true;
}

bool IsWOW64() {
  BOOL answer = FALSE;
  return Api().IsWow64Process && Api().IsWow64Process(Api().GetCurrentProcess(), &answer) && answer;
}

TString GetLinkTarget(TStringView pPath) {
  const Ref<IItemIdList> target = TShellLinkHelper::Resolve(pPath);
  return target ? target->Path() : TString();
}

}  // namespace oak
