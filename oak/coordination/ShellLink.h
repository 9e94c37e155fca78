// TOakShellLink: the hub that keeps shell controls in step.
#pragma once

#include <memory>
#include <vector>

#include "oak/coordination/BaseComponent.h"
#include "oak/namespace/Oak.Shell.History.h"
#include "oak/namespace/Oak.Shell.Types.Interfaces.h"

namespace oak {

class TOakSelectionList;
class TOakShellLink;

/// How much a control reloads.
enum TRefreshLevel : std::uint8_t {
  rfFull,       ///< Everything is read again.
  rfSmart,      ///< What changed is found out and brought up to date.
  rfCheckboxes  ///< The check boxes alone.
};

/// A control as the hub knows it. Not counted: a control lives as long as its owner wants and tells
/// the hub of its end. The hub compares controls by the address of this interface, so that a
/// control registers and calls with one and the same. Main thread.
///
/// An operation that raises leaves the hub disabled: a control must not let an exception out.
class IOakShellControl {
 public:
  /// Attaches to a hub; nil detaches. The control registers and unregisters itself there.
  virtual void setShellLink(TOakShellLink* pLink) = 0;
  virtual TOakShellLink* getShellLink() = 0;
  /// The current folder is now this one; nil if there is none.
  virtual void PathChanged(const Ref<IItemIdList>& pItemIdList) = 0;
  /// The current file is now this one; both nil if there is none.
  virtual void FileChanged(const Ref<IItemIdList>& FolderPIDL,
                           const Ref<IItemIdList>& FilePIDL) = 0;
  virtual void SelectAll() = 0;
  /// Reloads, wholly or for one item (nil: wholly).
  virtual void Refresh(TRefreshLevel pRefreshLevel, const Ref<IItemIdList>& pItemIdList) = 0;
  /// Goes to the parent folder; true if this control did it.
  virtual bool GoUp() = 0;

 protected:
  ~IOakShellControl() = default;
};

/// A control in which several objects can be chosen.
class IOakMultiSelectShellControl : public IOakShellControl {
 public:
  virtual Ref<IItemIdListCollection> GetSelectedElements() = 0;

 protected:
  ~IOakMultiSelectShellControl() = default;
};

/// A control that can show a part of its objects. Looked for by dynamic_cast.
class IOakSupportsFilter {
 public:
  /// Wildcard patterns with ";" between them.
  virtual void SetFilter(TStringView pFilter) = 0;

 protected:
  ~IOakSupportsFilter() = default;
};

/// Asks whether a folder may become the current one. Sender is the control that wants to go there,
/// or nil.
using TNavigationPendingEvent =
    std::function<void(TObject* Sender, const Ref<IItemIdList>& pFolder, bool& pCancel)>;

/// Ties shell controls together: what the user does in one of them, all others follow. Keeps the
/// current folder, the current file, the history and the selection list that they share. Main
/// thread only.
///
/// While the hub passes something on it is disabled, so that what the controls report in turn stops
/// there. Disabled by the user it passes nothing on but filters. Controls may come and go, and the
/// hub may be destroyed, in any handler.
///
/// The history counts as the hub's own operations here; GetHistory gives it as an object.
class TOakShellLink : public TOakBaseComponent {
 public:
  explicit TOakShellLink(TComponent* AOwner = nullptr);
  /// Detaches all controls, the last first.
  ~TOakShellLink() override;

  // --- controls --------------------------------------------------------------
  /// Appends a control that is not registered yet.
  void RegisterShellControl(IOakShellControl* ShellControl);
  void UnregisterShellControl(IOakShellControl* ShellControl);

  // --- broadcasts: to all controls but the sender, the first registered first. A
  // --- sender of nil leaves out nobody.
  /// Whether OnNavigating lets the folder be entered. The answer for the folder last asked is
  /// remembered, and the event not fired for it again. It fires before the answer is kept: a
  /// handler must not navigate to the folder that it is asked for.
  bool CanNavigate(TObject* Sender, const Ref<IItemIdList>& pItemIdList);
  /// The sender stands on a folder now. If OnNavigating forbids it nothing happens: the sender sees
  /// to its own going back.
  void PathChanged(IOakShellControl* Sender, const Ref<IItemIdList>& pItemIdList);
  /// The sender has selected a file; nil for none.
  void FileChanged(IOakShellControl* Sender, const Ref<IItemIdList>& FolderPIDL,
                   const Ref<IItemIdList>& FilePIDL);
  /// Also while the hub is disabled.
  void FilterChanged(IOakShellControl* Sender, TStringView Filter);
  void SelectAll(IOakShellControl* Sender);
  void SelectAll() { SelectAll(nullptr); }
  void Refresh(IOakShellControl* Sender, TRefreshLevel pRefreshLevel,
               const Ref<IItemIdList>& pItemIdList);
  void Refresh(TRefreshLevel pRefreshLevel) { Refresh(nullptr, pRefreshLevel, nullptr); }
  /// Asks one control after the other, the sender last, until one has gone up.
  void GoUp(IOakShellControl* Sender);
  void GoUp() { GoUp(nullptr); }

  // --- history -----------------------------------------------------------------
  Ref<IItemIdList> GetCurrentFolderItemIDList() const;
  int GetCount() const;
  /// -1 for an empty history.
  int GetPosition() const;
  /// Negative values are ignored, others not held within the entries. No control hears of it.
  void SetPosition(int pPosition);
  /// Ignored during a move through the history.
  void Add(const Ref<IItemIdList>& pItemIdList);
  /// The current entry stays.
  void Clear();
  bool IsMovePossible(int pDelta) const;
  /// Goes through the history and takes the controls along. If OnNavigating forbids the place, or
  /// the hub is disabled, the history has moved and the controls have not.
  void MoveBack(std::uint8_t pSteps);
  void MoveForward(std::uint8_t pSteps);
  /// The same operations as a counted object, which may outlive the hub and is empty then.
  Ref<IOakShellHistory> GetHistory();

  // --- properties ----------------------------------------------------------------
  /// Owned by the hub. Nil only after nil was set.
  TOakSelectionList* GetSelectionList() const noexcept { return fSelectionList; }
  /// Frees the present list.
  void SetSelectionList(std::unique_ptr<TOakSelectionList> pList);
  /// Whether lists show an entry for the parent folder. Default true. The hub only keeps it.
  bool GetShowParentFolderItem() const noexcept { return fShowParentFolderItem; }
  void SetShowParentFolderItem(bool pValue) noexcept { fShowParentFolderItem = pValue; }
  /// Where the history stands.
  Ref<IItemIdList> GetCurrentFolderItemIdList() const { return GetCurrentFolderItemIDList(); }
  /// Nil without a current file.
  Ref<IItemIdList> GetCurrentFileItemIdList() const { return fCurrentFileItemIdList; }

  /// After the controls, with the hub enabled again; also if the folder was the current one.
  TItemIdListEvent OnChange;
  /// After the controls, with the hub still disabled; only for another file.
  TItemIdListEvent OnSelectionChanged;
  /// Before anything else. Setting pCancel leaves everything where it is.
  TNavigationPendingEvent OnNavigating;

 protected:
  void Notification(TComponent* pComponent, TOperation pOperation) override;

 private:
  class TBroadcast;
  class THistoryView;

  bool IsElsewhere(const Ref<IItemIdList>& pItemIdList) const;
  void MoveInHistory(int pDirection, std::uint8_t pSteps);
  void DetachControls();

  std::vector<IOakShellControl*> fOakShellControlList;
  TOakSelectionList* fSelectionList = nullptr;
  bool fShowParentFolderItem = true;
  Ref<IItemIdList> fCurrentFileItemIdList;
  Ref<IItemIdList> fCurrentFolderItemIdList;
  Ref<IItemIdList> fLastCheckedFolder;
  bool fLastAccessCheckResult = true;
  Ref<IOakShellHistory> fHistory;
  bool fIsMoving = false;
  TBroadcast* fBroadcasts = nullptr;  ///< Those under way, the innermost first.
  Ref<THistoryView> fHistoryView;
};

}  // namespace oak
