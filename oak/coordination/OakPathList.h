// TOakPathList: a list of paths, and tests and splittings of path texts.
#pragma once

#include <functional>

#include "oak/base/Ref.h"
#include "oak/framework/StringList.h"

namespace oak {

/// Builds a buffer of texts, each ended by a zero character: the form in which the shell's file
/// operations take lists. One thread at a time.
class TWideStringBuilder {
 public:
  void Append(TStringView pText);
  void Append(const TStrings& pTexts);
  void Clear() noexcept { fString.clear(); }
  /// The buffer; valid until the next operation.
  LPCWSTR GetStringPointer() const;
  /// Bytes of the buffer, all zero characters included.
  std::size_t GetSize() const noexcept;
  /// Whether one more zero character ends the list. Default true.
  bool GetIncludeTrailingZeroCharacter() const noexcept { return fIncludeTrailingZeroCharacter; }
  void SetIncludeTrailingZeroCharacter(bool pValue) noexcept {
    fIncludeTrailingZeroCharacter = pValue;
  }

 private:
  TString fString;
  bool fIncludeTrailingZeroCharacter = true;
};

/// A path was added at that place, or removed from it.
using TOakPathListOperation = std::function<void(TStringView aPath, int Index)>;

/// Paths, in one form each: without a trailing delimiter but for roots. Compares ignoring case. One
/// thread at a time.
class TOakPathList : public TStringList {
 public:
  TOakPathList() = default;
  explicit TOakPathList(const TStringArray& pPaths) { AddStrings(pPaths); }

  // --- the list ----------------------------------------------------------------
  /// -1, and nothing added, for a path that AllowAdd refuses.
  int AddObject(TStringView pPath, TObject* pObject) override;
  void InsertObject(int pIndex, TStringView pPath, TObject* pObject) override;
  void Put(int pIndex, TStringView pPath) override;
  void Delete(int pIndex) override;
  void Clear() override;
  using TStringList::AddStrings;
  void AddStrings(const TStrings& pPaths) override;
  void AddStrings(const TStringArray& pPaths) override;
  /// Appends the paths of another list from one index to another, both included; indexes outside
  /// of it are left out.
  void AddRange(const TStrings& pSource, int pFromIndex, int pToIndex);
  /// Ignoring case and a trailing delimiter; -1 if there is none.
  int IndexOfPath(TStringView pPath) const;
  bool ContainsPath(TStringView pPath) const { return IndexOfPath(pPath) >= 0; }
  /// False if there is none.
  bool Remove(TStringView pPath);
  /// How many there were.
  int Remove(const TStrings& pPaths);
  /// Whether every path lies below that one; false for an empty list.
  bool AllItemsSubpathOf(TStringView aPath) const;

  /// The paths as shell file operations take them, ended by two zero characters. Valid until the
  /// next call or change.
  LPCWSTR GetStringPointer();
  /// Whether only what exists is added; asks the system at each addition. Default false.
  bool GetCheckIfExists() const noexcept { return fCheckIfExists; }
  void SetCheckIfExists(bool pValue) noexcept { fCheckIfExists = pValue; }
  /// Whether one of the paths leads to the network.
  bool GetContainsNetworkPath() const;

  /// After the change. A list that is cleared tells of its last path first.
  TOakPathListOperation OnAdd;
  TOakPathListOperation OnRemove;

  // --- judged by the text alone --------------------------------------------------
  /// Whether the second path lies below the first, ignoring case.
  static bool IsSubPathOf(TStringView p_SuperiorPath, TStringView p_PossibleSubPath);
  /// Whether all paths begin with the same drive or share; true for fewer than two.
  static bool ShareSameRoot(const TStrings& pPaths);
  /// The folder of a path, and the name of the file in it.
  static TString SplitPath(TStringView pFullPath, TString& pFilePath);
  /// The pieces between delimiters, without the empty one behind the last delimiter.
  static TStringArray SplitPathByDelimiter(TStringView pFullPath, char16_t pDelimiter);
  static bool IsUNCPath(TStringView pFullPath);
  static bool IsUncServer(TStringView pPath);
  static bool StartsWithDriveLetter(TStringView pPath);
  static bool IsFolderClassId(TStringView pName);
  static bool IsUSBDevicePath(TStringView pName);

  // --- asking the system -----------------------------------------------------------
  /// Path that a shortcut file leads to; empty if it leads nowhere.
  static TString GetShortcutTarget(TStringView filepath);
  /// In a 32-bit process on a 64-bit system: a path below the folder of 32-bit programs that does
  /// not exist there is looked for among the 64-bit ones, and replaced if it is there.
  static void AdaptPathOnWow64Systems(TString& pFullPath);

 protected:
  /// The one form of a path.
  virtual TString UnifyPath(TStringView pPath) const;
  /// Whether the path may enter the list: not empty and, if that is wanted, there.
  virtual bool AllowAdd(TStringView pPath) const;
  void InsertItem(int pIndex, TStringView pPath, TObject* pObject) override;
  void SetStrings(TStringArray pPaths) override;
  void Changed() override;

 private:
  enum TNetworkAnswer : std::uint8_t { naUnknown, naNo, naYes };

  void Tell(const TOakPathListOperation& pEvent, TStringView pPath, int pIndex) const;

  TWideStringBuilder fWideStringBuilder;
  bool fCheckIfExists = false;
  mutable TNetworkAnswer fContainsNetworkPath = naUnknown;
  bool fSkipEvents = false;
};

}  // namespace oak
