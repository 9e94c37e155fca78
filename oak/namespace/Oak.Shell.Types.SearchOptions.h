// TOakSearchOptions: which files a search finds.
#pragma once

#include "oak/base/DateTime.h"
#include "oak/framework/Component.h"
#include "oak/namespace/Oak.Shell.Types.Enums.h"
#include "oak/platform/shell_api.h"

namespace oak {

/// The settings of a search for files. One thread at a time; work that runs
/// elsewhere takes a copy by Assign.
///
/// Dates are local times; 0 means no limit. Sizes are bytes.
class TOakSearchOptions : public TPersistent {
 public:
  TOakSearchOptions();

  /// Sets every property to its default.
  void Reset();
  /// From other search options through the setters; any other source as TPersistent.
  void Assign(const TPersistent* source) override;

  /// Whether a file in `pFolderPath` (with its trailing delimiter) is found.
  bool Matches(const WIN32_FIND_DATAW& pWin32FindData, TStringView pFolderPath) const;
  /// Whether attributes pass FilesAndFolders.
  bool MatchesFilesAndFolders(DWORD pAttributes) const noexcept;
  /// Whether the three times pass the date limits.
  bool MatchDateTimeValues(const WIN32_FIND_DATAW& pWin32FindData) const noexcept;
  /// The settings as a query of the system's search. Dates follow the locale.
  TString ToAQS() const;

  /// -1 (default): no limit.
  std::int64_t GetMaxFileSize() const noexcept { return fMaxFileSize; }
  void SetMaxFileSize(std::int64_t pValue) noexcept { fMaxFileSize = pValue; }
  std::int64_t GetMinFileSize() const noexcept { return fMinFileSize; }
  void SetMinFileSize(std::int64_t pValue) noexcept { fMinFileSize = pValue; }
  /// Default true.
  bool GetRecursiveSearch() const noexcept { return fRecursiveSearch; }
  void SetRecursiveSearch(bool pValue) noexcept { fRecursiveSearch = pValue; }

  TDateTime GetCreationDateMax() const noexcept { return fCreationDateMax; }
  void SetCreationDateMax(TDateTime pValue);
  TDateTime GetCreationDateMin() const noexcept { return fCreationDateMin; }
  void SetCreationDateMin(TDateTime pValue);
  TDateTime GetAccessDateMax() const noexcept { return fAccessDateMax; }
  void SetAccessDateMax(TDateTime pValue);
  TDateTime GetAccessDateMin() const noexcept { return fAccessDateMin; }
  void SetAccessDateMin(TDateTime pValue);
  TDateTime GetLastWriteDateMax() const noexcept { return fLastWriteDateMax; }
  void SetLastWriteDateMax(TDateTime pValue);
  TDateTime GetLastWriteDateMin() const noexcept { return fLastWriteDateMin; }
  void SetLastWriteDateMin(TDateTime pValue);
  // The dates in UTC, written by the setters.
  const FILETIME& GetCreationDateMax_FileTime() const noexcept { return fCreationDateMax_FileTime; }
  const FILETIME& GetCreationDateMin_FileTime() const noexcept { return fCreationDateMin_FileTime; }
  const FILETIME& GetAccessDateMax_FileTime() const noexcept { return fAccessDateMax_FileTime; }
  const FILETIME& GetAccessDateMin_FileTime() const noexcept { return fAccessDateMin_FileTime; }
  const FILETIME& GetLastWriteDateMax_FileTime() const noexcept {
    return fLastWriteDateMax_FileTime;
  }
  const FILETIME& GetLastWriteDateMin_FileTime() const noexcept {
    return fLastWriteDateMin_FileTime;
  }

  /// Default ffFilesAndFolders.
  TFilesFolders GetFilesAndFolders() const noexcept { return fFilesAndFolders; }
  void SetFilesAndFolders(TFilesFolders pValue) noexcept { fFilesAndFolders = pValue; }
  /// Patterns with ";" between them; default "*". The empty text stores "*" and
  /// leaves the present list of patterns in force.
  const TString& GetFilter() const noexcept { return fFilter; }
  void SetFilter(TStringView pValue);
  /// Default false: hidden objects are not found.
  bool GetIncludeHidden() const noexcept { return fIncludeHidden; }
  void SetIncludeHidden(bool pValue) noexcept { fIncludeHidden = pValue; }
  /// Default true: "x" without wildcards means "*x*". Setting it splits the
  /// filter again; patterns of the former mode stay in the list.
  bool GetAutoWildcard() const noexcept { return fAutoWildcard; }
  void SetAutoWildcard(bool pValue);
  /// Default false. True: a pattern may match folder path and name together, too.
  bool GetUseFullPathWhenComparing() const noexcept { return fUseFullPathWhenComparing; }
  void SetUseFullPathWhenComparing(bool pValue) noexcept { fUseFullPathWhenComparing = pValue; }
  /// The patterns, sorted, each once ignoring case. No pattern lets all names pass.
  const TStringArray& GetFilterList() const noexcept { return fSplittedFilter; }

 private:
  void SplitFilter();
  void ApplyAutoWildcard();
  void AddPattern(TString pPattern);
  bool MatchesFilter(TStringView pName, TStringView pFolderPath) const;

  std::int64_t fMaxFileSize = -1;
  std::int64_t fMinFileSize = 0;
  bool fRecursiveSearch = true;
  TDateTime fCreationDateMax{};
  FILETIME fCreationDateMax_FileTime{};
  TDateTime fCreationDateMin{};
  FILETIME fCreationDateMin_FileTime{};
  TDateTime fAccessDateMax{};
  FILETIME fAccessDateMax_FileTime{};
  TDateTime fAccessDateMin{};
  FILETIME fAccessDateMin_FileTime{};
  TDateTime fLastWriteDateMax{};
  FILETIME fLastWriteDateMax_FileTime{};
  TDateTime fLastWriteDateMin{};
  FILETIME fLastWriteDateMin_FileTime{};
  TFilesFolders fFilesAndFolders = ffFilesAndFolders;
  bool fIncludeHidden = false;
  TString fFilter;
  bool fAutoWildcard = true;
  bool fUseFullPathWhenComparing = false;
  TStringArray fSplittedFilter;
};

}  // namespace oak
