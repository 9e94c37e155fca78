#include "oak/coordination/SelectionEntries.h"

#include <algorithm>

#include "oak/namespace/FolderTrek.Paths.h"
#include "oak/namespace/Oak.Shell.PathUtils.h"

namespace oak {
namespace {

constexpr TStringView kFolderMark = u"*";

/// Whether a drive path or a UNC path stands somewhere behind the first character, as in
/// "\\?\C:\folder".
bool IsOdd(TStringView pKey) {
  return pKey.find(u":\\", 2) != TStringView::npos || pKey.find(u"\\\\", 1) != TStringView::npos;
}

bool IsPlainStart(TStringView pKey) {
  return pKey.starts_with(u"\\\\") ||
         (TPathUtils::StartsWithDriveLetter(pKey) && pKey.size() > 2 && pKey[2] == PathDelim);
}

/// Where texts with this prefix end in the order of names.
TString EndOf(TStringView pPrefix) {
  TString end(pPrefix);
  ++end.back();  // a delimiter, never the last character of all
  return end;
}

}  // namespace

TStringView TSelectionEntries::PathOf(TStringView pEntry) noexcept {
  if (pEntry.ends_with(kFolderMark)) pEntry.remove_suffix(kFolderMark.size());
  if (pEntry.ends_with(PathDelim)) pEntry.remove_suffix(1);
  return pEntry;
}

TString TSelectionEntries::ParentOf(TStringView pEntry) {
  const TStringView path = PathOf(pEntry);
  if (path.empty() || IsDrive(path)) return {};
  TString parent = ExtractFilePath(path);
  return parent.size() < path.size() ? parent : TString();
}

// --- questions -----------------------------------------------------------------

TStringArray TSelectionEntries::ToArray() const {
  std::vector<const TEntry*> entries;
  entries.reserve(fEntries.size());
  for (const auto& [key, entry] : fEntries) entries.push_back(&entry);
  std::sort(entries.begin(), entries.end(),
            [](const TEntry* a, const TEntry* b) { return a->Order < b->Order; });
  TStringArray paths;
  paths.reserve(entries.size());
  for (const TEntry* entry : entries) paths.push_back(entry->Path);
  return paths;
}

bool TSelectionEntries::Contains(TStringView pEntry) const {
  return fEntries.find(UpperCase(pEntry)) != fEntries.end();
}

bool TSelectionEntries::Covers(TStringView pEntry) const {
  if (fEntries.empty()) return false;
  for (TString key = UpperCase(pEntry);;) {
    if (fEntries.find(key) != fEntries.end()) return true;
    TString parent = ParentOf(key);
    if (parent.empty()) return false;
    parent.append(kFolderMark);
    if (parent == key) return false;
    key = std::move(parent);
  }
}

bool TSelectionEntries::Occurs(TStringView pEntry) const {
  const TString wanted = IncludeTrailingPathDelimiter(UpperCase(PathOf(pEntry)));
  const auto found = fEntries.lower_bound(wanted);
  if (found != fEntries.end() && found->first.starts_with(wanted)) return true;
  if (fOddCount == 0 && IsPlainStart(wanted)) return false;
  return std::any_of(fEntries.begin(), fEntries.end(),
                     [&](const auto& entry) { return oak::Contains(entry.first, wanted); });
}

bool TSelectionEntries::HasUncPath() const { return CountOfUncPaths() > 0; }

std::size_t TSelectionEntries::CountOfUncPaths() const {
  // The long form of a local path begins with two delimiters too.
  std::size_t count = 0;
  const auto end = fEntries.lower_bound(EndOf(u"\\\\"));
  for (auto entry = fEntries.lower_bound(u"\\\\"); entry != end; ++entry)
    count += !entry->first.starts_with(TPathUtils::LongPathPrefix) ||
                     entry->first.starts_with(TPathUtils::LongUncPathPrefix)
                 ? 1
                 : 0;
  return count;
}

bool TSelectionEntries::HasDifferentDrives() const {
  if (fEntries.size() < 2) return false;
  const TString drive = ExtractFileDrive(fEntries.begin()->first);
  return std::any_of(fEntries.begin(), fEntries.end(),
                     [&](const auto& entry) { return ExtractFileDrive(entry.first) != drive; });
}

TStringArray TSelectionEntries::ListBelow(TStringView pFolder) const {
  const TString prefix = IncludeTrailingPathDelimiter(UpperCase(PathOf(pFolder)));
  std::vector<const TEntry*> entries;
  const auto end = fEntries.lower_bound(EndOf(prefix));
  for (auto entry = fEntries.upper_bound(prefix); entry != end; ++entry)
    entries.push_back(&entry->second);
  std::sort(entries.begin(), entries.end(),
            [](const TEntry* a, const TEntry* b) { return a->Order > b->Order; });
  TStringArray paths;
  for (const TEntry* entry : entries) paths.push_back(entry->Path);
  return paths;
}

// --- changes ---------------------------------------------------------------------

bool TSelectionEntries::Add(TStringView pEntry) { return AddAt(pEntry, fNextOrder++); }

bool TSelectionEntries::AddAt(TStringView pEntry, std::uint64_t pOrder) {
  const auto [place, isNew] =
      fEntries.try_emplace(UpperCase(pEntry), TEntry{TString(pEntry), pOrder});
  if (isNew && IsOdd(place->first)) ++fOddCount;
  return isNew;
}

bool TSelectionEntries::Remove(TStringView pEntry) {
  const auto place = fEntries.find(UpperCase(pEntry));
  if (place == fEntries.end()) return false;
  if (IsOdd(place->first)) --fOddCount;
  fEntries.erase(place);
  return true;
}

bool TSelectionEntries::Rename(TStringView pOldPath, TStringView pNewPath) {
  const TString oldPath = ExcludeTrailingPathDelimiter(pOldPath);
  const TString newPath = ExcludeTrailingPathDelimiter(pNewPath);
  if (oldPath.empty() || newPath.empty()) return false;
  std::vector<TEntry> renamed;
  const auto take = [&](TEntries::iterator place) {
    renamed.push_back(std::move(place->second));
    if (IsOdd(place->first)) --fOddCount;
    return fEntries.erase(place);
  };
  const TString key = UpperCase(oldPath);
  if (const auto file = fEntries.find(key); file != fEntries.end()) take(file);
  const TString prefix = key + PathDelim;
  const TString last = EndOf(prefix);
  for (auto below = fEntries.lower_bound(prefix); below != fEntries.end() && below->first < last;)
    below = take(below);
  for (TEntry& entry : renamed) AddAt(newPath + entry.Path.substr(oldPath.size()), entry.Order);
  return !renamed.empty();
}

void TSelectionEntries::Clear() noexcept {
  fEntries.clear();
  fOddCount = 0;
}

}  // namespace oak
