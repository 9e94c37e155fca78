// TOakSelectionList: ticking and unticking.
#include "oak/coordination/OakSelectionList.h"
#include "oak/framework/Events.h"
#include "oak/namespace/FolderTrek.Paths.h"

namespace oak {

// --- adding ----------------------------------------------------------------------

void TOakSelectionList::AddPathToSelection(TStringView sFQPath) {
  if (sFQPath.empty()) return;
  const TString path(sFQPath);  // may be a part of the list
  Modify([&] { Select(path); });
}

void TOakSelectionList::AddPIDLToSelection(const Ref<IItemIdList>& PIDL) {
  if (PIDL) AddPathToSelection(PIDL->Path());
}

void TOakSelectionList::Select(TStringView pPath) {
  const TString path = Resolved(pPath);
  TString entry = path;
  if (!FormatSelectionPath(entry)) {
    NoteInvalidPath(path);
    // With its mark, if it has one: of a folder that is away for now that must not get lost.
    if (!fRemoveInvalidPaths) AddEntry(IsDrive(path) ? path : ExcludeTrailingPathDelimiter(path));
    return;
  }
  bool isSubItem = false;
  const TOakSelectionState state = IsItemSelected(entry, isSubItem);
  if (state == ssChecked) return;
  if (state == ssGrayed) RemoveSubFolders(entry);
  AddFormatted(entry);
  const TString folder = TSelectionEntries::ParentOf(entry);
  if (!folder.empty()) fFoldCandidates.insert(folder);
}

void TOakSelectionList::AddFormatted(const TString& pEntry) {
  if (fCalculateSelectedFiles && !pEntry.ends_with(u'*')) {
    FSize += std::max<std::int64_t>(GetFileSize(pEntry), 0);
    ++FFileCount;
    NoteCompletedCalculateFiles();
  } else {
    PerformSizeCalculation(pEntry, false);
  }
  AddEntry(pEntry);
}

// Once for all that was ticked between BeginUpdate and EndUpdate: ticking the files of a big folder
// one by one must not read the folder each time.
void TOakSelectionList::BeforeUpdateEnds() {
  const std::set<TString> folders = std::exchange(fFoldCandidates, {});
  // A folder stands behind those above it.
  for (auto folder = folders.rbegin(); folder != folders.rend(); ++folder) {
    const bool isCovered = Ask([&](const TSelectionEntries& entries) {
      return entries.IsEmpty() || entries.Covers(*folder + u"*");
    });
    const TString highest = isCovered ? TString() : HighestComplete(*folder, {});
    if (highest.empty()) continue;
    RemoveSubFolders(highest);
    AddFormatted(highest + u"*");
  }
}

// --- removing ----------------------------------------------------------------------

void TOakSelectionList::RemovePathFromSelection(TStringView sFQPath) {
  if (sFQPath.empty()) return;
  const TString path(sFQPath);
  Modify([&] {
    Deselect(path);
    if (!IsEmpty()) return;
    AbortSizeCalculation();
    ClearTotals();
  });
}

void TOakSelectionList::RemovePIDLFromSelection(const Ref<IItemIdList>& PIDL) {
  if (PIDL) RemovePathFromSelection(PIDL->Path());
}

void TOakSelectionList::Deselect(TStringView pPath) {
  const TString path = Resolved(pPath);
  bool isSubItem = false;
  const TOakSelectionState state = PathSelected(path, isSubItem);
  TString entry = path;
  FormatSelectionPath(entry);
  if (state == ssGrayed) {
    RemoveSubFolders(entry);
  } else if (state == ssDisabled) {
    // What is gone or can't be told can still be taken from the list by its name.
    if (!DeleteEntry(entry, true)) DeleteEntry(IncludeTrailingPathDelimiter(path) + u"*", true);
  } else if (state == ssChecked && !isSubItem) {
    DeleteEntry(entry, true);
  } else if (state == ssChecked && AddAllExclude(entry) && fCalculateSelectedFiles) {
    --FFolderCount;
    PerformSizeCalculation(entry, true);
  }
}

/// Replaces the entry that covers another one by entries for all else that it covered. False, and
/// nothing changed, if one of the folders can't be read.
bool TOakSelectionList::AddAllExclude(const TString& pEntry) {
  TStringArray siblings;
  TStringArray unfolded;
  TString excluded(TSelectionEntries::PathOf(pEntry));
  for (TString folder = TSelectionEntries::ParentOf(pEntry); !folder.empty();) {
    const bool isRead = ForEachEntry(folder, [&](const WIN32_FIND_DATAW& found) {
      TString child = folder;
      child.append(FoundName(found));
      if (SameText(child, excluded)) return true;
      if (found.dwFileAttributes & FILE_ATTRIBUTE_DIRECTORY) child.append(u"\\*");
      siblings.push_back(std::move(child));
      return true;
    });
    if (!isRead) {
      NoteInvalidPath(folder);
      return false;
    }
    unfolded.push_back(folder + u"*");
    excluded = TSelectionEntries::PathOf(folder);
    folder = TSelectionEntries::ParentOf(folder);
    const bool isCovered = !folder.empty() && Ask([&](const TSelectionEntries& entries) {
      return entries.Covers(folder + u"*");
    });
    if (!isCovered) break;
  }
  for (const TString& sibling : siblings) AddEntry(sibling);
  for (const TString& folder : unfolded) RemoveEntry(folder);
  return true;
}

void TOakSelectionList::RemoveSubFolders(TStringView pEntry) {
  const TStringArray below =
      Ask([&](const TSelectionEntries& entries) { return entries.ListBelow(pEntry); });
  for (const TString& entry : below) DeleteEntry(entry, true);
}

bool TOakSelectionList::DeleteEntry(TStringView pEntry, bool pRecalculate) {
  if (!RemoveEntry(pEntry)) return false;
  if (pRecalculate) PerformSizeCalculation(pEntry, true);
  return true;
}

void TOakSelectionList::PathWasRenamed(TStringView pOldPath, TStringView pNewPath) {
  Modify([&] { RenameEntries(pOldPath, pNewPath); });
}

void TOakSelectionList::Clear() {
  Modify([this] {
    AbortSizeCalculation();
    fFoldCandidates.clear();
    TOakBaseSelectionList::Clear();
  });
}

// --- totals --------------------------------------------------------------------------

void TOakSelectionList::SetCalculateSelectedFiles(bool pValue) {
  if (pValue && !FolderSizeJob())
    throw EInvalidOperation(u"Counting files in the background is not part of this program.");
  fCalculateSelectedFiles = pValue;
}

void TOakSelectionList::PerformSizeCalculation(TStringView pEntry, bool pSubtract) {
  if (!fCalculateSelectedFiles || !FolderSizeJob()) return;
  TFolderSizeRequest request;
  request.Path = TSelectionEntries::PathOf(pEntry);
  request.FollowReparsePoint = fFollowReparsePoint;
  request.Token = fCancellationToken;
  const int factor = pSubtract ? -1 : 1;
  request.OnWorkDone = [this, life = std::weak_ptr<const bool>(fLife),
                        factor](const TFolderSizeRequest::TResult& result) {
    if (!life.expired()) CompletedFolderSize(result, factor);
  };
  fSizeRequests.push_back(std::move(request));
}

void TOakSelectionList::AfterChange() {
  const TLifeGuard guard{fLife};
  std::vector<TFolderSizeRequest> requests = std::exchange(fSizeRequests, {});
  for (TFolderSizeRequest& request : requests)
    if (guard.IsAlive() && FolderSizeJob()) FolderSizeJob()(std::move(request));
}

void TOakSelectionList::CompletedFolderSize(const TFolderSizeRequest::TResult& pResult,
                                            int pFactor) {
  if (!pResult.IsCanceled) {
    FSize += pFactor * static_cast<std::int64_t>(pResult.Size);
    FFileCount += pFactor * pResult.FileCount;
    FFolderCount += pFactor * pResult.FolderCount;
    if (IsEmpty()) ClearTotals();
  }
  DoCompletedCalculateFiles();
}

void TOakSelectionList::AbortSizeCalculation() {
  if (!fCalculateSelectedFiles) return;
  fCancellationToken.Reset();
  NoteCompletedCalculateFiles();
}

void TOakSelectionList::DoCompletedCalculateFiles() { FireEvent(OnCompletedCalculateFiles, this); }

}  // namespace oak
