// Reading folders entry by entry, and the walk over all files of a selection.
#pragma once

#include <functional>
#include <vector>

#include "oak/base/Handles.h"
#include "oak/base/Text.h"
#include "oak/platform/Api.h"

namespace oak {

struct TFindTraits {
  using Type = HANDLE;
  static Type Invalid() noexcept { return INVALID_HANDLE_VALUE; }
  static void Close(Type handle) noexcept { Api().FindClose(handle); }
};
/// A search of the file system that is open.
using TFindHandle = TUniqueHandle<TFindTraits>;

/// Begins a search; nothing is owned if there is no hit. Takes paths of any length.
TFindHandle OpenFind(TStringView pPattern, WIN32_FIND_DATAW& pFindData);
/// Name of what was found.
TStringView FoundName(const WIN32_FIND_DATAW& pFindData);
/// "." and "..".
bool IsFolderToIgnore(TStringView name) noexcept;
/// Shows the entries of a folder, without "." and "..", until `visit` gives false. False if the
/// folder could not be read to its end or to where the visit ended.
bool ForEachEntry(TStringView pFolder, const std::function<bool(const WIN32_FIND_DATAW&)>& visit);

/// The open searches of a walk, the innermost on top. Closes what is left in the end.
class TOakStack {
 public:
  /// Takes the handle over. The path is the folder that the search looks into.
  void Push(TFindHandle Handle, TString Path);
  /// Gives the handle of the top to the caller. Not on an empty stack.
  TFindHandle Pop();
  /// INVALID_HANDLE_VALUE of an empty stack.
  HANDLE Top() const noexcept;
  bool IsEmpty() const noexcept { return fEntries.empty(); }
  void Clear() noexcept { fEntries.clear(); }
  /// Folder of the top, empty without one.
  TStringView GetCurrentPath() const noexcept;

  /// What the search on top has found last.
  WIN32_FIND_DATAW Win32FindData{};

 private:
  struct TEntry {
    TFindHandle Handle;
    TString Path;
  };
  std::vector<TEntry> fEntries;
};

/// Goes through all files that the entries of a selection stand for. One thread at a time.
class TSelectionWalk {
 public:
  /// Below the folders of the entries, links to folders are entered only if wanted.
  TSelectionWalk(TStringArray pEntries, bool pFollowReparsePoint);
  /// Path of the next file, empty at the end.
  TString Next();
  /// Gives the files and folders that could not be found or read since the last call. The walk goes
  /// on behind them.
  TStringArray TakeUnreadable() { return std::exchange(fUnreadable, {}); }

 private:
  bool Advance();
  bool BeginEntry();
  void EnterFolder(TString pPath);

  TStringArray fEntries;
  bool fFollowReparsePoint;
  TStringArray fUnreadable;
  std::size_t fSelectedFilesCounter = 0;  ///< Entries that were begun.
  TOakStack fStackList;
  bool fIsFresh = false;  ///< The top's find data was not looked at yet.
};

}  // namespace oak
