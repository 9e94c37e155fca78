// TOakSelectionList: what is selected.
#include "oak/coordination/OakSelectionList.h"

#include "oak/framework/Events.h"
#include "oak/namespace/FolderTrek.Paths.h"

namespace oak {
namespace {

constexpr TStringView kFolderEntryEnd = u"\\*";

bool IsFolderEntry(TStringView pEntry) { return pEntry.ends_with(kFolderEntryEnd); }

TString EntryOf(TStringView pFolder, const WIN32_FIND_DATAW& pFound) {
  TString entry = IncludeTrailingPathDelimiter(pFolder).append(FoundName(pFound));
  if (pFound.dwFileAttributes & FILE_ATTRIBUTE_DIRECTORY) entry.append(kFolderEntryEnd);
  return entry;
}

TString FolderShortcutIn(TStringView pFolder) {
  return IncludeTrailingPathDelimiter(TSelectionEntries::PathOf(pFolder)) + u"target.lnk";
}

}  // namespace

TFolderSizeJob& FolderSizeJob() {
  static TFolderSizeJob job;
  return job;
}

TOakSelectionList::~TOakSelectionList() { fCancellationToken.Cancel(); }

std::unique_ptr<TOakSelectionList> TOakSelectionList::CreateCopy(
    const TOakSelectionList& aSelectionList) {
  auto copy = std::make_unique<TOakSelectionList>();
  copy->Assign(&aSelectionList);
  return copy;
}

void TOakSelectionList::Assign(const TPersistent* pSelectionList) {
  if (pSelectionList == this) return;
  Modify([&] {
    if (const auto* other = dynamic_cast<const TOakSelectionList*>(pSelectionList)) {
      AbortSizeCalculation();
      fHandleShellLinks = other->fHandleShellLinks.load();
      fCalculateSelectedFiles = other->fCalculateSelectedFiles;
      fFollowReparsePoint = other->fFollowReparsePoint;
      fRemoveInvalidPaths = other->fRemoveInvalidPaths;
    }
    TOakBaseSelectionList::Assign(pSelectionList);
  });
}

// --- questions -------------------------------------------------------------------

bool TOakSelectionList::IsLinkedPath(TStringView pPath) { return IsFile(FolderShortcutIn(pPath)); }

/// What a folder that is a link leads to; any other path as it is.
TString TOakSelectionList::Resolved(TStringView pPath) const {
  if (fHandleShellLinks && IsLinkedPath(pPath)) {
    TString target = TOakPathList::GetShortcutTarget(FolderShortcutIn(pPath));
    if (!target.empty()) return target;
  }
  return TString(pPath);
}

TOakSelectionState TOakSelectionList::PathSelected(TStringView path, bool& bIsSubItemOf) const {
  bIsSubItemOf = false;
  if (path.empty() || (IsDrive(path) && !IsDriveReady(path, false))) return ssDisabled;
  TString entry(path);
  if (!FormatSelectionPath(entry)) return ssDisabled;
  if (IsFolderEntry(entry) && IsLinkedPath(entry)) {
    if (!fHandleShellLinks) return ssDisabled;
    entry = Resolved(entry);
    if (!FormatSelectionPath(entry)) return ssDisabled;
  }
  return IsItemSelected(entry, bIsSubItemOf);
}

TOakSelectionState TOakSelectionList::IsPathSelected(TStringView Path) const {
  bool isSubItem = false;
  return PathSelected(Path, isSubItem);
}

TOakSelectionState TOakSelectionList::IsItemSelected(TStringView pEntry, bool& bIsSubItemOf) const {
  return Ask([&](const TSelectionEntries& entries) {
    if (entries.Covers(pEntry)) {
      bIsSubItemOf = !entries.Contains(pEntry);
      return ssChecked;
    }
    bIsSubItemOf = false;
    return !pEntry.empty() && entries.Occurs(pEntry) ? ssGrayed : ssUnChecked;
  });
}

TOakSelectionState TOakSelectionList::IsPIDLSelected(const Ref<IItemIdList>& PIDL,
                                                     bool& bIsSubItemOf) const {
  bIsSubItemOf = false;
  if (!PIDL) return ssDisabled;
  if (PIDL->IsSpecialFolder(SF_NETWORK)) return IsUNCPathSelected() ? ssGrayed : ssDisabled;
  if (PIDL->IsSpecialFolder(SF_DRIVES)) return IsLocalPathSelected() ? ssGrayed : ssDisabled;
  return PathSelected(PIDL->Path(), bIsSubItemOf);
}

bool TOakSelectionList::GetDifferentDrives() const {
  return Ask([](const TSelectionEntries& entries) { return entries.HasDifferentDrives(); });
}

bool TOakSelectionList::IsLocalPathSelected() const {
  return Ask([](const TSelectionEntries& entries) { return entries.HasLocalPath(); });
}

bool TOakSelectionList::IsUNCPathSelected() const {
  return Ask([](const TSelectionEntries& entries) { return entries.HasUncPath(); });
}

TString TOakSelectionList::ToString() const {
  return Join(Ask([](const TSelectionEntries& entries) { return entries.ToArray(); }), u"\r\n");
}

// --- folding -----------------------------------------------------------------------

/// Whether everything in a folder is selected, but for one child that counts as if it were. False
/// for a folder that is empty or can't be read: nothing is folded that was not seen.
bool TOakSelectionList::AreAllChildrenSelected(TStringView pFolder, TStringView pExcluded) const {
  bool areSelected = true;
  bool hasAny = false;
  const bool isRead = ForEachEntry(pFolder, [&](const WIN32_FIND_DATAW& found) {
    hasAny = true;
    const TString child = EntryOf(pFolder, found);
    areSelected = SameText(TSelectionEntries::PathOf(child), pExcluded) ||
                  Ask([&](const TSelectionEntries& entries) { return entries.Covers(child); });
    return areSelected;
  });
  return isRead && hasAny && areSelected;
}

/// The highest folder, from one upwards, with everything in it selected; empty if not even the
/// first one is.
TString TOakSelectionList::HighestComplete(TString pFolder, TStringView pExcluded) const {
  TString highest;
  TString excluded(pExcluded);
  for (TString folder = std::move(pFolder);
       !folder.empty() && AreAllChildrenSelected(folder, excluded);) {
    highest = folder;
    excluded = TSelectionEntries::PathOf(folder);
    folder = TSelectionEntries::ParentOf(folder);
  }
  return highest;
}

TString TOakSelectionList::CompletePathSelected(TStringView sFQPath) const {
  const TString path(TSelectionEntries::PathOf(sFQPath));
  const TString highest = HighestComplete(TSelectionEntries::ParentOf(path), path);
  if (!highest.empty()) return IsDrive(highest) ? highest : ExcludeTrailingPathDelimiter(highest);
  return TSelectionEntries::ParentOf(path).empty() ? IncludeTrailingPathDelimiter(path) : path;
}

TString TOakSelectionList::CompletePIDLSelected(const Ref<IItemIdList>& PIDL) const {
  return PIDL ? CompletePathSelected(PIDL->Path()) : TString();
}

// --- all files -----------------------------------------------------------------------

TString TOakSelectionList::FindNext() {
  if (!fWalk) fWalk = std::make_unique<TSelectionWalk>(GetPaths().ToArray(), fFollowReparsePoint);
  TString file = fWalk->Next();
  NoteUnreadable(*fWalk);
  return file;
}

void TOakSelectionList::NoteUnreadable(TSelectionWalk& pWalk) {
  const TStringArray unreadable = pWalk.TakeUnreadable();
  if (unreadable.empty()) return;
  Modify([&] {
    for (const TString& path : unreadable) NoteInvalidPath(path);
  });
}

void TOakSelectionList::ResetFindNext() { fWalk.reset(); }

TStringArray TOakSelectionList::GetListOfAllFiles() {
  TStringArray files;
  TSelectionWalk walk(GetPaths().ToArray(), fFollowReparsePoint);
  for (TString file = walk.Next(); !file.empty(); file = walk.Next())
    files.push_back(std::move(file));
  NoteUnreadable(walk);
  return files;
}

}  // namespace oak
