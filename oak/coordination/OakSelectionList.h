// TOakSelectionList: which parts of a file tree the user has ticked.
#pragma once

#include <algorithm>
#include <atomic>
#include <memory>
#include <set>
#include <vector>

#include "oak/coordination/BaseComponent.h"
#include "oak/coordination/FindFiles.h"
#include "oak/coordination/OakPathList.h"
#include "oak/coordination/OakSelectionState.h"
#include "oak/coordination/SelectionEntries.h"
#include "oak/framework/Sync.h"
#include "oak/namespace/Oak.Shell.Types.Interfaces.h"
#include "oak/threading/Oak.Threading.Token.h"

namespace oak {

class TOakBaseSelectionList;

/// A path was to be selected or read that is not there or can't be read.
using TInvalidPathEvent = std::function<void(TOakBaseSelectionList* Sender, TStringView Path)>;

/// Entries of a selection, with events and a place in an ini file.
///
/// Entries are changed by one thread at a time, the main thread as a rule; any thread may ask. What
/// a change reports is fired on the thread of the change once the change is complete and no lock is
/// held: a handler may change the list again, or destroy it.
class TOakBaseSelectionList : public TOakBaseComponent {
 public:
  explicit TOakBaseSelectionList(TComponent* AOwner = nullptr);
  ~TOakBaseSelectionList() override;

  virtual void AddPathToSelection(TStringView sFQPath) = 0;
  virtual void RemovePathFromSelection(TStringView sFQPath) = 0;

  /// Replaces the section of an ini file by one key for each entry, in the order of the list.
  /// Raises EFileError, and EArgumentException for a path that no ini file can hold; the file is as
  /// it was then.
  void SaveToIniFile(const TString& sFileName, TStringView section);
  /// The list becomes the keys of a section. Raises EFileError; the list is as it was then.
  void LoadFromIniFile(const TString& sFileName, TStringView section);
  /// Takes over the entries of another list as they are.
  void Assign(const TPersistent* pSelectionList) override;
  virtual void Clear();
  bool IsEmpty() const;
  int GetCount() const;
  /// Empty outside 0..Count-1. Owner thread.
  TString GetListItem(int index) const;

  /// The entries in the order in which they came. Valid until the next change; owner thread.
  const TOakPathList& GetPaths() const;
  /// Empties the list, then selects each path.
  void SetPaths(const TStrings& pPaths);
  /// Bytes, files and folders that are selected, as far as they were counted; see
  /// TOakSelectionList::SetCalculateSelectedFiles. Owner thread.
  std::uint64_t GetSize() const noexcept {
    return FSize > 0 ? static_cast<std::uint64_t>(FSize) : 0;
  }
  int GetFileCount() const noexcept { return std::max(FFileCount, 0); }
  int GetFolderCount() const noexcept { return std::max(FFolderCount, 0); }
  /// The control that the list belongs to; a reference of the application.
  TComponent* GetParent() const noexcept { return fParent; }
  void SetParent(TComponent* pParent);

  /// Holds OnChange back, and the folding of folders, until the last EndUpdate. Nests.
  void BeginUpdate();
  void EndUpdate();

  TInvalidPathEvent OnInvalidPath;
  /// The entries have changed; once for each operation.
  TNotifyEvent OnChange;

 protected:
  void Notification(TComponent* pComponent, TOperation pOperation) override;
  /// Runs a change with the list to itself and fires afterwards what it has noted. Nests.
  void Modify(const std::function<void()>& pBody);
  /// The outermost change ends outside of an update bracket.
  virtual void BeforeUpdateEnds() {}
  /// The outermost change has ended, and no lock is held. Events follow.
  virtual void AfterChange() {}
  virtual void DoCompletedCalculateFiles() {}
  // To be called in a change:
  void Changed() noexcept { fIsChanged = true; }
  void NoteInvalidPath(TStringView pPath);
  void NoteCompletedCalculateFiles() noexcept { fIsCompleted = true; }
  bool AddEntry(TStringView pEntry);
  bool RemoveEntry(TStringView pEntry);
  bool RenameEntries(TStringView pOldPath, TStringView pNewPath);
  void ClearEntries();
  void ClearTotals() noexcept;

  /// Runs a question over the entries. Any thread; short, nothing of the system is asked in it.
  template <class TQuestion>
  auto Ask(TQuestion&& pQuestion) const {
    const TLock lock(fLockObj);
    return pQuestion(fEntries);
  }

  // Sums of what was counted, in the order in which counts end: below zero while something is taken
  // off that has not been added yet.
  std::int64_t FSize = 0;
  int FFileCount = 0;
  int FFolderCount = 0;
  /// Dies with the list.
  std::shared_ptr<const bool> fLife = std::make_shared<const bool>(true);

 private:
  void FireNoted();

  TComponent* fParent = nullptr;
  TCriticalSection fChangeLock;       ///< Held for the whole of a change, files included.
  mutable TCriticalSection fLockObj;  ///< Guards the entries; taken behind fChangeLock.
  TSelectionEntries fEntries;
  mutable TOakPathList fList;  ///< The entries as a list; made when asked for.
  mutable bool fIsListValid = true;
  int fChangeDepth = 0;
  int fUpdateCount = 0;
  bool fIsChanged = false;
  bool fIsCompleted = false;
  TStringArray fInvalidPaths;
};

/// A count of what lies below a path, to be made in the background.
struct TFolderSizeRequest {
  struct TResult {
    bool IsCanceled = false;
    std::uint64_t Size = 0;
    int FileCount = 0;
    int FolderCount = 0;
  };
  TString Path;  ///< A file, or a folder with all below it.
  bool FollowReparsePoint = false;
  Ref<ICancellationToken> Token;
  std::function<void(const TResult& pResult)> OnWorkDone;  ///< To be called on the main thread.
};

/// Makes such counts for all selection lists. Empty in a program without it.
using TFolderSizeJob = std::function<void(TFolderSizeRequest pRequest)>;
TFolderSizeJob& FolderSizeJob();

/// Records what is ticked in a file tree, compactly: a ticked folder is one entry and stands for
/// all below it. Unticking something below it puts entries for its other children in its place, all
/// the way down; ticking the last child of a folder folds them into one again.
///
/// What changes a selection reads folders: those that an entry is unfolded in, and those that might
/// fold. Questions make a few look-ups for the path that they ask for.
class TOakSelectionList : public TOakBaseSelectionList {
 public:
  explicit TOakSelectionList(TComponent* aOwner = nullptr) : TOakBaseSelectionList(aOwner) {}
  /// A list with the entries and settings of another one.
  static std::unique_ptr<TOakSelectionList> CreateCopy(const TOakSelectionList& aSelectionList);
  ~TOakSelectionList() override;

  // --- questions: any thread -------------------------------------------------------
  /// How much of the object is selected; whether it is by the entry of a folder above it.
  TOakSelectionState PathSelected(TStringView path, bool& bIsSubItemOf) const;
  TOakSelectionState IsPathSelected(TStringView Path) const;
  /// The computer and the network are grayed while something local or remote is selected.
  TOakSelectionState IsPIDLSelected(const Ref<IItemIdList>& PIDL, bool& bIsSubItemOf) const;
  /// The highest folder whose contents are selected as a whole once the path is; the path itself
  /// without one. Reads folders.
  TString CompletePathSelected(TStringView sFQPath) const;
  TString CompletePIDLSelected(const Ref<IItemIdList>& PIDL) const;
  bool GetDifferentDrives() const;
  bool IsLocalPathSelected() const;
  bool IsUNCPathSelected() const;

  // --- changes -----------------------------------------------------------------------
  /// An object that does not exist is reported by OnInvalidPath, and stored all the same unless
  /// RemoveInvalidPaths is set.
  void AddPathToSelection(TStringView sFQPath) override;
  /// If a folder on the way can't be read, that is reported by OnInvalidPath and nothing changes.
  void RemovePathFromSelection(TStringView sFQPath) override;
  /// Objects without a path are ignored.
  void AddPIDLToSelection(const Ref<IItemIdList>& PIDL);
  void RemovePIDLFromSelection(const Ref<IItemIdList>& PIDL);
  void PathWasRenamed(TStringView pOldPath, TStringView pNewPath);
  void Assign(const TPersistent* pSelectionList) override;
  void Clear() override;

  // --- all files: owner thread ---------------------------------------------------------
  /// Path of the next selected file, empty at the end. Entries are those of the first call since
  /// ResetFindNext. What can't be read is reported by OnInvalidPath and left out.
  TString FindNext();
  void ResetFindNext();
  TStringArray GetListOfAllFiles();
  /// The entries, one a line.
  TString ToString() const;

  // --- properties ------------------------------------------------------------------------
  /// Whether folders that are links stand for what they lead to. Default false: their state can't
  /// be told then.
  bool GetHandleShellLinks() const noexcept { return fHandleShellLinks; }
  void SetHandleShellLinks(bool pValue) noexcept { fHandleShellLinks = pValue; }
  /// Whether Size, FileCount and FolderCount are kept, by counts in the background. Default false.
  /// Raises EInvalidOperation in a program that can't count.
  bool GetCalculateSelectedFiles() const noexcept { return fCalculateSelectedFiles; }
  void SetCalculateSelectedFiles(bool pValue);
  /// Whether links to folders are entered below selected ones. Default false.
  bool GetFollowReparsePoint() const noexcept { return fFollowReparsePoint; }
  void SetFollowReparsePoint(bool pValue) noexcept { fFollowReparsePoint = pValue; }
  /// Whether what does not exist is not stored. Default false: it may come back.
  bool GetRemoveInvalidPaths() const noexcept { return fRemoveInvalidPaths; }
  void SetRemoveInvalidPaths(bool pValue) noexcept { fRemoveInvalidPaths = pValue; }

  /// A count has ended or all were given up.
  TNotifyEvent OnCompletedCalculateFiles;

  // --- files and folders -------------------------------------------------------------------
  /// Turns a path into an entry: that of a file, or that of a folder. False, and the path as it
  /// was, if there is neither.
  static bool FormatSelectionPath(TString& path);
  /// The form that the system takes at any length; short paths stay as they are.
  static TString GetUnicodeAPICallPath(TStringView pPath);
  /// With a delimiter; empty for roots. Takes entries, too.
  static TString GetParentPathFromPath(TStringView Path);
  static TFindHandle FindFirstFile(TStringView pPath, WIN32_FIND_DATAW& pFindData);
  static bool IsFile(TStringView path);
  /// A drive counts as a folder, whether it is ready or not.
  static bool IsFolder(TStringView path);
  /// Makes a folder and those above it. False if the last step failed. Raises EInvalidOperation for
  /// an empty path.
  static bool ForceDirectories(TStringView pFullPath);
  /// Makes an empty file, and the folders above it. False if there is such a file or it can't be
  /// made.
  static bool CreateFile(TStringView pFullPath);
  static bool IsFolderToIgnore(TStringView name) { return oak::IsFolderToIgnore(name); }

 protected:
  void BeforeUpdateEnds() override;
  void AfterChange() override;
  void DoCompletedCalculateFiles() override;

 private:
  static bool IsLinkedPath(TStringView pPath);
  TString Resolved(TStringView pPath) const;
  TOakSelectionState IsItemSelected(TStringView pEntry, bool& bIsSubItemOf) const;
  bool AreAllChildrenSelected(TStringView pFolder, TStringView pExcluded) const;
  TString HighestComplete(TString pFolder, TStringView pExcluded) const;
  void Select(TStringView pPath);
  void AddFormatted(const TString& pEntry);
  void Deselect(TStringView pPath);
  bool AddAllExclude(const TString& pEntry);
  void RemoveSubFolders(TStringView pEntry);
  bool DeleteEntry(TStringView pEntry, bool pRecalculate);
  void PerformSizeCalculation(TStringView pEntry, bool pSubtract);
  void CompletedFolderSize(const TFolderSizeRequest::TResult& pResult, int pFactor);
  void AbortSizeCalculation();
  void NoteUnreadable(TSelectionWalk& pWalk);

  std::unique_ptr<TSelectionWalk> fWalk;
  std::atomic<bool> fHandleShellLinks{false};
  bool fCalculateSelectedFiles = false;
  bool fFollowReparsePoint = false;
  bool fRemoveInvalidPaths = false;
  CancellationToken fCancellationToken;
  std::vector<TFolderSizeRequest> fSizeRequests;  ///< Those of the change under way.
  std::set<TString> fFoldCandidates;  ///< Folders, with a delimiter, in which something was ticked.
};

/// See TOakSelectionList::ForceDirectories.
bool OakForceDirectories(TStringView pFullPath);

}  // namespace oak
