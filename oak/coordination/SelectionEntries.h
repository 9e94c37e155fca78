// The entries of a selection list, found by name.
#pragma once

#include <cstdint>
#include <map>
#include <vector>

#include "oak/base/Text.h"

namespace oak {

/// What is selected, in the order in which it came. An entry is the path of a file, or that of a
/// folder with a delimiter and "*" for all that lies below it. Names are compared ignoring case.
/// One thread at a time.
///
/// Kept in the order of names, so that what lies below a folder stands together: questions cost the
/// logarithm of the number of entries, and not one comparison with each.
class TSelectionEntries {
 public:
  bool IsEmpty() const noexcept { return fEntries.empty(); }
  int GetCount() const noexcept { return static_cast<int>(fEntries.size()); }
  TStringArray ToArray() const;

  bool Contains(TStringView pEntry) const;
  /// Whether it is an entry itself or lies below one.
  bool Covers(TStringView pEntry) const;
  /// Whether the path, with a delimiter behind it, occurs in an entry.
  bool Occurs(TStringView pEntry) const;
  bool HasUncPath() const;
  bool HasLocalPath() const { return fEntries.size() > CountOfUncPaths(); }
  /// Whether the entries lie on more than one drive or share.
  bool HasDifferentDrives() const;

  /// False if it is there already.
  bool Add(TStringView pEntry);
  bool Remove(TStringView pEntry);
  /// Gives the entries that lie below a folder, the last one that came first.
  TStringArray ListBelow(TStringView pFolder) const;
  /// The entries of a renamed object, and of all below it, get its new name. False if there are
  /// none.
  bool Rename(TStringView pOldPath, TStringView pNewPath);
  void Clear() noexcept;

  /// Path of the folder that an entry or path lies in, with a delimiter; empty for roots.
  static TString ParentOf(TStringView pEntry);
  /// Without what marks a folder.
  static TStringView PathOf(TStringView pEntry) noexcept;

 private:
  struct TEntry {
    TString Path;
    std::uint64_t Order;
  };
  using TEntries = std::map<TString, TEntry, std::less<>>;  // by upper-case path

  bool AddAt(TStringView pEntry, std::uint64_t pOrder);
  std::size_t CountOfUncPaths() const;

  TEntries fEntries;
  std::uint64_t fNextOrder = 0;
  std::size_t fOddCount = 0;  ///< Entries that can hold another path behind their first character.
};

}  // namespace oak
