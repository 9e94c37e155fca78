#include "oak/namespace/Oak.Shell.Types.SearchOptions.h"

#include <algorithm>
#include <iterator>

#include "oak/namespace/Oak.Shell.ShellColumns.h"
#include "oak/namespace/Oak.Shell.Types.PropertyValue.h"
#include "oak/namespace/Shell_Win32.h"
#include "oak/platform/Api.h"

namespace oak {
namespace {

constexpr TStringView DefaultFilter = u"*";
/// Longest rest of a filter that is looked at behind a delimiter, in characters.
constexpr std::size_t LongestFilterRest = 10000;
/// A date up to this value is none.
constexpr TDateTime NoDateLimit = 1.0;

bool HasWildcard(TStringView pPattern) {
  return pPattern.find_first_of(u"*?") != TStringView::npos;
}

FILETIME LocalDateToFileTime(TDateTime pDate) {
  return DateTimeToFileTime(LocalToUtcDateTime(pDate));
}

/// The name, which need not be terminated.
TStringView FoundName(const WIN32_FIND_DATAW& pFindData) {
  const auto* begin = reinterpret_cast<const char16_t*>(pFindData.cFileName);
  return {begin, static_cast<std::size_t>(
                     std::find(begin, begin + std::size(pFindData.cFileName), u'\0') - begin)};
}

std::int64_t FoundSize(const WIN32_FIND_DATAW& pFindData) {
  return static_cast<std::int64_t>((std::uint64_t{pFindData.nFileSizeHigh} << 32) |
                                   pFindData.nFileSizeLow);
}

/// The short form of the user's locale.
TString DateToStr(TDateTime pDate) {
  SYSTEMTIME date{};
  WCHAR text[128];
  if (Api().GetDateFormatW && DateTimeToSystem(pDate, date)) {
    const int length = Api().GetDateFormatW(LOCALE_USER_DEFAULT, DATE_SHORTDATE, &date, nullptr,
                                            text, static_cast<int>(std::size(text)));
    if (length > 1) return FromW(text, static_cast<std::size_t>(length) - 1);
  }
  return FormatDateTime(u"yyyy-mm-dd", pDate);
}

/// Conditions of a query, each followed by "& ".
class TQueryText {
 public:
  void AddNumber(const TShellColumnId& pColumn, TStringView pOperator, std::int64_t pValue) {
    Add(pColumn, pOperator, IntToStr(pValue));
  }
  void AddDate(const TShellColumnId& pColumn, TStringView pOperator, TDateTime pValue) {
    if (pValue != 0) Add(pColumn, pOperator, DateToStr(pValue));
  }
  /// The conditions, a blank behind the last one; empty without any.
  TString Finish() && {
    if (!fText.empty()) fText.resize(fText.size() - 2);
    return std::move(fText);
  }

 private:
  void Add(const TShellColumnId& pColumn, TStringView pOperator, TStringView pValue) {
    fText.append(pColumn.ToString()).append(pOperator).append(pValue).append(u" & ");
  }
  TString fText;
};

}  // namespace

TOakSearchOptions::TOakSearchOptions() { Reset(); }

void TOakSearchOptions::Reset() {
  SetMaxFileSize(-1);
  SetMinFileSize(0);
  SetRecursiveSearch(true);
  SetCreationDateMax(0);
  SetCreationDateMin(0);
  SetAccessDateMax(0);
  SetAccessDateMin(0);
  SetLastWriteDateMax(0);
  SetLastWriteDateMin(0);
  SetFilesAndFolders(ffFilesAndFolders);
  SetIncludeHidden(false);
  SetUseFullPathWhenComparing(false);
  // The filter comes last: setting it clears what the change of mode left.
  SetAutoWildcard(true);
  SetFilter(DefaultFilter);
}

void TOakSearchOptions::Assign(const TPersistent* source) {
  const auto* other = dynamic_cast<const TOakSearchOptions*>(source);
  if (!other) {
    TPersistent::Assign(source);
    return;
  }
  if (other == this) return;
  SetMaxFileSize(other->fMaxFileSize);
  SetMinFileSize(other->fMinFileSize);
  SetRecursiveSearch(other->fRecursiveSearch);
  SetCreationDateMax(other->fCreationDateMax);
  SetCreationDateMin(other->fCreationDateMin);
  SetAccessDateMax(other->fAccessDateMax);
  SetAccessDateMin(other->fAccessDateMin);
  SetLastWriteDateMax(other->fLastWriteDateMax);
  SetLastWriteDateMin(other->fLastWriteDateMin);
  SetFilesAndFolders(other->fFilesAndFolders);
  SetIncludeHidden(other->fIncludeHidden);
  SetUseFullPathWhenComparing(other->fUseFullPathWhenComparing);
  SetAutoWildcard(other->fAutoWildcard);
  SetFilter(other->fFilter);
}

void TOakSearchOptions::SetCreationDateMax(TDateTime pValue) {
  fCreationDateMax = pValue;
  fCreationDateMax_FileTime = LocalDateToFileTime(pValue);
}

void TOakSearchOptions::SetCreationDateMin(TDateTime pValue) {
  fCreationDateMin = pValue;
  fCreationDateMin_FileTime = LocalDateToFileTime(pValue);
}

void TOakSearchOptions::SetAccessDateMax(TDateTime pValue) {
  fAccessDateMax = pValue;
  fAccessDateMax_FileTime = LocalDateToFileTime(pValue);
}

void TOakSearchOptions::SetAccessDateMin(TDateTime pValue) {
  fAccessDateMin = pValue;
  fAccessDateMin_FileTime = LocalDateToFileTime(pValue);
}

void TOakSearchOptions::SetLastWriteDateMax(TDateTime pValue) {
  fLastWriteDateMax = pValue;
  fLastWriteDateMax_FileTime = LocalDateToFileTime(pValue);
}

void TOakSearchOptions::SetLastWriteDateMin(TDateTime pValue) {
  fLastWriteDateMin = pValue;
  fLastWriteDateMin_FileTime = LocalDateToFileTime(pValue);
}

void TOakSearchOptions::SetFilter(TStringView pValue) {
  if (pValue.empty()) {
    fFilter = DefaultFilter;
    return;
  }
  fFilter = pValue;
  fSplittedFilter.clear();
  SplitFilter();
}

void TOakSearchOptions::SetAutoWildcard(bool pValue) {
  fAutoWildcard = pValue;
  SplitFilter();
}

void TOakSearchOptions::SplitFilter() {
  TStringView rest = fFilter;
  while (!rest.empty()) {
    const std::size_t end = rest.find(u';');
    AddPattern(Trim(rest.substr(0, end)));
    if (end == TStringView::npos) break;
    rest = rest.substr(end + 1, LongestFilterRest);
  }
  if (fAutoWildcard) ApplyAutoWildcard();
}

void TOakSearchOptions::ApplyAutoWildcard() {
  for (TString& pattern : std::exchange(fSplittedFilter, {}))
    AddPattern(HasWildcard(pattern) ? std::move(pattern) : u"*" + pattern + u"*");
}

void TOakSearchOptions::AddPattern(TString pPattern) {
  if (pPattern.empty()) return;
  const auto place =
      std::lower_bound(fSplittedFilter.begin(), fSplittedFilter.end(), pPattern,
                       [](const TString& a, const TString& b) { return CompareText(a, b) < 0; });
  if (place == fSplittedFilter.end() || !SameText(*place, pPattern))
    fSplittedFilter.insert(place, std::move(pPattern));
}

bool TOakSearchOptions::Matches(const WIN32_FIND_DATAW& pWin32FindData,
                                TStringView pFolderPath) const {
  const TStringView name = FoundName(pWin32FindData);
  if (name == u"." || name == u"..") return false;
  if (!MatchesFilesAndFolders(pWin32FindData.dwFileAttributes)) return false;
  if (!MatchesFilter(name, pFolderPath)) return false;
  const std::int64_t size = FoundSize(pWin32FindData);
  if (size < fMinFileSize || (fMaxFileSize >= 0 && size > fMaxFileSize)) return false;
  if ((pWin32FindData.dwFileAttributes & FILE_ATTRIBUTE_HIDDEN) != 0 && !fIncludeHidden)
    return false;
  return MatchDateTimeValues(pWin32FindData);
}

bool TOakSearchOptions::MatchesFilter(TStringView pName, TStringView pFolderPath) const {
  if (fSplittedFilter.empty()) return true;
  const TString path = fUseFullPathWhenComparing ? TString(pFolderPath).append(pName) : TString();
  return std::any_of(fSplittedFilter.begin(), fSplittedFilter.end(), [&](const TString& pattern) {
    return MatchPattern(pName, pattern) ||
           (fUseFullPathWhenComparing && MatchPattern(path, pattern));
  });
}

bool TOakSearchOptions::MatchesFilesAndFolders(DWORD pAttributes) const noexcept {
  const bool isFolder = (pAttributes & FILE_ATTRIBUTE_DIRECTORY) != 0;
  switch (fFilesAndFolders) {
    case ffFilesOnly:
      return !isFolder;
    case ffFoldersOnly:
      return isFolder;
    case ffFilesAndFolders:
      break;
  }
  return true;
}

bool TOakSearchOptions::MatchDateTimeValues(const WIN32_FIND_DATAW& pWin32FindData) const noexcept {
  const auto isWithin = [](const FILETIME& time, TDateTime max, const FILETIME& maxTime,
                           TDateTime min, const FILETIME& minTime) {
    if (max > NoDateLimit && CompareFileTimes(time, maxTime) > 0) return false;
    return !(min > NoDateLimit && CompareFileTimes(time, minTime) < 0);
  };
  return isWithin(pWin32FindData.ftCreationTime, fCreationDateMax, fCreationDateMax_FileTime,
                  fCreationDateMin, fCreationDateMin_FileTime) &&
         isWithin(pWin32FindData.ftLastAccessTime, fAccessDateMax, fAccessDateMax_FileTime,
                  fAccessDateMin, fAccessDateMin_FileTime) &&
         isWithin(pWin32FindData.ftLastWriteTime, fLastWriteDateMax, fLastWriteDateMax_FileTime,
                  fLastWriteDateMin, fLastWriteDateMin_FileTime);
}

TString TOakSearchOptions::ToAQS() const {
  constexpr TStringView atLeast = u":>=";
  constexpr TStringView atMost = u":<=";
  TQueryText query;
  if (fMinFileSize > 0) query.AddNumber(TShellColumns::Size(), atLeast, fMinFileSize);
  if (fMaxFileSize >= 0) query.AddNumber(TShellColumns::Size(), atMost, fMaxFileSize);
  query.AddDate(TShellColumns::CreateTime(), atLeast, fCreationDateMin);
  query.AddDate(TShellColumns::CreateTime(), atMost, fCreationDateMax);
  query.AddDate(TShellColumns::AccessTime(), atLeast, fAccessDateMin);
  query.AddDate(TShellColumns::AccessTime(), atMost, fAccessDateMax);
  query.AddDate(TShellColumns::WriteTime(), atLeast, fLastWriteDateMin);
  query.AddDate(TShellColumns::WriteTime(), atMost, fLastWriteDateMax);
  return std::move(query).Finish() + fFilter;
}

}  // namespace oak
