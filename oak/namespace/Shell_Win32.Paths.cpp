// Patterns, and paths that name special folders.
#include <limits>

#include "oak/namespace/Oak.Shell.PathUtils.h"
#include "oak/namespace/Oak.Shell.Types.h"
#include "oak/namespace/OakItemIdList.h"
#include "oak/namespace/Shell_Win32.h"
#include "oak/platform/Api.h"

namespace oak {
namespace {

constexpr TStringView AnyNameWithDot = u"*.*";

bool MatchBySystem(TStringView pName, TStringView pPattern) {
  if (pPattern.empty()) return false;
  const TString name(pName);
  const TString pattern(pPattern);
  return Api().PathMatchSpecW(W(name), W(pattern)) != 0;
}

TString Placeholder(TOakShellFolder pFolder) {
  return u"%" + TString(TOakShellFolderHelper::ToIdentifier(pFolder)) + u"%";
}

TString FolderPath(TOakShellFolder pFolder) {
  const Ref<IItemIdList> item = TOakItemIdList::CreateForSpecialFolder(pFolder, true);
  return item ? item->Path() : TString();
}

}  // namespace

bool MatchPattern(TStringView pName, TStringView pPattern) {
  if (pPattern == u"*." && pName.find(u'.') == TStringView::npos) return true;
  if (Contains(pPattern, AnyNameWithDot))
    return MatchBySystem(pName, ConvertToWindowsPattern(pPattern));
  return MatchBySystem(pName, pPattern);
}

TString ConvertToWindowsPattern(TStringView pPattern) {
  TString pattern(pPattern);
  if (EndsWith(pPattern, AnyNameWithDot)) pattern += u".*";
  return pattern;
}

int OakPosEx(TStringView pSub, TStringView pText, int pStart) {
  if (pSub.empty() || pStart < 1) return 0;
  const std::size_t found = pText.find(pSub, static_cast<std::size_t>(pStart) - 1);
  if (found == TStringView::npos || found >= std::size_t{std::numeric_limits<int>::max()}) return 0;
  return static_cast<int>(found) + 1;
}

TString OakGetTempPath() {
  TString buffer(MAX_PATH + 1, u'\0');
  DWORD length = Api().GetTempPathW(static_cast<DWORD>(buffer.size()), WBuffer(buffer));
  if (length >= buffer.size()) {
    buffer.assign(length + std::size_t{1}, u'\0');
    length = Api().GetTempPathW(static_cast<DWORD>(buffer.size()), WBuffer(buffer));
  }
  return length < buffer.size() ? buffer.substr(0, length) : TString();
}

TString ExpandSpecialFolderPath(TStringView pPath) {
  TString path(pPath);
  if (!Contains(path, u"%")) return path;
  for (int i = 0; i < OakShellFolderCount; ++i) {
    const auto folder = static_cast<TOakShellFolder>(i);
    const TString placeholder = Placeholder(folder);
    if (ContainsText(path, placeholder))
      path = ReplaceAllText(path, placeholder, FolderPath(folder));
  }
  return path;
}

TString NormalizeSpecialFolderPath(TStringView pPath) {
  // Of paths that all begin the same text the last in sort order is the longest.
  TString longest;
  TOakShellFolder found = SF_INVALID;
  for (int i = 0; i < OakShellFolderCount; ++i) {
    const auto folder = static_cast<TOakShellFolder>(i);
    TString path = FolderPath(folder);
    if (path.size() > longest.size() && StartsText(path, pPath)) {
      longest = std::move(path);
      found = folder;
    }
  }
  if (longest.empty()) return TString(pPath);
  return Placeholder(found).append(pPath.substr(longest.size()));
}

bool IsReparsePoint(DWORD pAttributes) noexcept {
  return pAttributes != INVALID_FILE_ATTRIBUTES &&
         (pAttributes & FILE_ATTRIBUTE_REPARSE_POINT) != 0;
}

bool IsReparsePoint(TStringView pPath) { return TPathUtils::IsReparsePoint(pPath); }

}  // namespace oak
