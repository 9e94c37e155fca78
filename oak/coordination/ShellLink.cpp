#include "oak/coordination/ShellLink.h"

#include <algorithm>

#include "oak/base/Version.h"
#include "oak/coordination/OakSelectionList.h"
#include "oak/framework/Events.h"

namespace oak {

TString TOakBaseComponent::GetVersion() const { return TString(LibraryVersion); }

/// One walk over the controls. Lives on the stack of an operation of the hub, which tells it of
/// controls that leave and of its own end.
class TOakShellLink::TBroadcast {
 public:
  TBroadcast(TOakShellLink& pLink, IOakShellControl* pSender)
      : fLink(&pLink),
        fControls(pLink.fOakShellControlList),
        fSender(pSender),
        fOuter(pLink.fBroadcasts) {
    pLink.fBroadcasts = this;
  }
  ~TBroadcast() {
    if (fLink) fLink->fBroadcasts = fOuter;
  }
  TBroadcast(const TBroadcast&) = delete;
  TBroadcast& operator=(const TBroadcast&) = delete;

  /// The next control that is still there; nil at the end and when the hub has gone.
  IOakShellControl* Next() {
    while (fLink && fNext < fControls.size()) {
      IOakShellControl* const control = fControls[fNext++];
      if (control && control != fSender) return control;
    }
    return nullptr;
  }
  bool LinkIsAlive() const { return fLink != nullptr; }
  /// Nil if the sender left meanwhile.
  IOakShellControl* Sender() const { return fSender; }

  void Forget(IOakShellControl* pControl) {
    if (fOuter) fOuter->Forget(pControl);
    std::replace(fControls.begin(), fControls.end(), pControl,
                 static_cast<IOakShellControl*>(nullptr));
    if (fSender == pControl) fSender = nullptr;
  }
  void LinkEnds() {
    if (fOuter) fOuter->LinkEnds();
    fLink = nullptr;
  }

 private:
  TOakShellLink* fLink;
  std::vector<IOakShellControl*> fControls;
  std::size_t fNext = 0;
  IOakShellControl* fSender;
  TBroadcast* const fOuter;
};

/// The hub's history for those who hold it by reference.
class TOakShellLink::THistoryView : public TInterfacedObject<IOakShellHistory> {
 public:
  explicit THistoryView(TOakShellLink& pLink) : fLink(&pLink) {}
  void LinkEnds() { fLink = nullptr; }

  Ref<IItemIdList> GetCurrentFolderItemIDList() override {
    return fLink ? fLink->GetCurrentFolderItemIDList() : nullptr;
  }
  int GetCount() override { return fLink ? fLink->GetCount() : 0; }
  int GetPosition() override { return fLink ? fLink->GetPosition() : -1; }
  void SetPosition(int pPosition) override {
    if (fLink) fLink->SetPosition(pPosition);
  }
  void Add(const Ref<IItemIdList>& pItemIdList) override {
    if (fLink) fLink->Add(pItemIdList);
  }
  void Clear() override {
    if (fLink) fLink->Clear();
  }
  bool IsMovePossible(int pDelta) override { return fLink && fLink->IsMovePossible(pDelta); }
  void MoveBack(std::uint8_t pSteps) override {
    if (fLink) fLink->MoveBack(pSteps);
  }
  void MoveForward(std::uint8_t pSteps) override {
    if (fLink) fLink->MoveForward(pSteps);
  }

 private:
  TOakShellLink* fLink;
};

TOakShellLink::TOakShellLink(TComponent* AOwner)
    : TOakBaseComponent(AOwner), fHistory(MakeRef<TPidlHistory>()) {
  SetSelectionList(std::make_unique<TOakSelectionList>());
}

TOakShellLink::~TOakShellLink() {
  Destroying();
  DetachControls();
  NotifyOfEnd();
  if (fBroadcasts) fBroadcasts->LinkEnds();
  if (fHistoryView) fHistoryView->LinkEnds();
  SetSelectionList(nullptr);
}

void TOakShellLink::DetachControls() {
  while (!fOakShellControlList.empty()) {
    IOakShellControl* const control = fOakShellControlList.back();
    try {
      control->setShellLink(nullptr);
    } catch (...) {
      Application().HandleException(this);
    }
    UnregisterShellControl(control);
  }
}

void TOakShellLink::Notification(TComponent* pComponent, TOperation pOperation) {
  TOakBaseComponent::Notification(pComponent, pOperation);
  if (pOperation == opRemove && pComponent == fSelectionList) fSelectionList = nullptr;
}

void TOakShellLink::SetSelectionList(std::unique_ptr<TOakSelectionList> pList) {
  delete std::exchange(fSelectionList, nullptr);
  if (!pList) return;
  InsertComponent(pList.get());
  fSelectionList = pList.release();
}

// --- controls ------------------------------------------------------------------

void TOakShellLink::RegisterShellControl(IOakShellControl* ShellControl) {
  auto& list = fOakShellControlList;
  if (ShellControl && std::find(list.begin(), list.end(), ShellControl) == list.end())
    list.push_back(ShellControl);
}

void TOakShellLink::UnregisterShellControl(IOakShellControl* ShellControl) {
  auto& list = fOakShellControlList;
  list.erase(std::remove(list.begin(), list.end(), ShellControl), list.end());
  if (fBroadcasts && ShellControl) fBroadcasts->Forget(ShellControl);
}

// --- broadcasts ----------------------------------------------------------------

bool TOakShellLink::CanNavigate(TObject* Sender, const Ref<IItemIdList>& pItemIdList) {
  if (!OnNavigating) return true;
  if (fLastCheckedFolder && fLastCheckedFolder->Equals(pItemIdList, ilcDisplay))
    return fLastAccessCheckResult;
  const Ref<IItemIdList> folder = pItemIdList;
  const TBroadcast watch(*this, nullptr);
  bool isCancelled = false;
  FireEvent(OnNavigating, Sender, folder, isCancelled);
  if (!watch.LinkIsAlive()) return false;
  fLastCheckedFolder = folder;
  fLastAccessCheckResult = !isCancelled;
  return fLastAccessCheckResult;
}

bool TOakShellLink::IsElsewhere(const Ref<IItemIdList>& pItemIdList) const {
  if (!fCurrentFolderItemIdList) return pItemIdList != nullptr;
  return !fCurrentFolderItemIdList->Equals(pItemIdList, ilcExact);
}

void TOakShellLink::PathChanged(IOakShellControl* Sender, const Ref<IItemIdList>& pItemIdList) {
  if (!GetEnabled()) return;
  const Ref<IItemIdList> folder = pItemIdList;  // The caller's own field may change on the way.
  TBroadcast broadcast(*this, Sender);
  if (!CanNavigate(dynamic_cast<TObject*>(Sender), folder) || !broadcast.LinkIsAlive()) return;
  const bool wasEnabled = GetEnabled();
  SetEnabled(false);
  if (IsElsewhere(folder)) {
    fCurrentFolderItemIdList = folder;
    if (!fIsMoving) fHistory->Add(folder);
    while (IOakShellControl* const control = broadcast.Next()) control->PathChanged(folder);
    if (!broadcast.LinkIsAlive()) return;
  }
  SetEnabled(wasEnabled);
  FireEvent(OnChange, this, Ref<IItemIdList>(fCurrentFolderItemIdList));
}

void TOakShellLink::FileChanged(IOakShellControl* Sender, const Ref<IItemIdList>& FolderPIDL,
                                const Ref<IItemIdList>& FilePIDL) {
  if (!GetEnabled()) return;
  const Ref<IItemIdList> folder = FolderPIDL;
  const Ref<IItemIdList> file = FilePIDL;
  const Ref<IItemIdList> full = folder && file ? folder->Concat(file) : nullptr;
  const bool wasEnabled = GetEnabled();
  SetEnabled(false);
  const bool isOther =
      fCurrentFileItemIdList ? !fCurrentFileItemIdList->Equals(full, ilcDisplay) : full != nullptr;
  if (isOther) {
    TBroadcast broadcast(*this, Sender);
    fCurrentFileItemIdList = full;
    while (IOakShellControl* const control = broadcast.Next()) control->FileChanged(folder, file);
    if (!broadcast.LinkIsAlive()) return;
    FireEvent(OnSelectionChanged, this, Ref<IItemIdList>(fCurrentFileItemIdList));
    if (!broadcast.LinkIsAlive()) return;
  }
  SetEnabled(wasEnabled);
}

void TOakShellLink::FilterChanged(IOakShellControl* Sender, TStringView Filter) {
  const TString filter(Filter);
  const bool wasEnabled = GetEnabled();
  SetEnabled(false);
  TBroadcast broadcast(*this, Sender);
  while (IOakShellControl* const control = broadcast.Next())
    if (auto* const filtered = dynamic_cast<IOakSupportsFilter*>(control))
      filtered->SetFilter(filter);
  if (broadcast.LinkIsAlive()) SetEnabled(wasEnabled);
}

void TOakShellLink::SelectAll(IOakShellControl* Sender) {
  if (!GetEnabled()) return;
  TBroadcast broadcast(*this, Sender);
  while (IOakShellControl* const control = broadcast.Next()) control->SelectAll();
}

void TOakShellLink::Refresh(IOakShellControl* Sender, TRefreshLevel pRefreshLevel,
                            const Ref<IItemIdList>& pItemIdList) {
  if (!GetEnabled()) return;
  const Ref<IItemIdList> item = pItemIdList;
  TBroadcast broadcast(*this, Sender);
  while (IOakShellControl* const control = broadcast.Next()) control->Refresh(pRefreshLevel, item);
}

void TOakShellLink::GoUp(IOakShellControl* Sender) {
  if (!GetEnabled()) return;
  TBroadcast broadcast(*this, Sender);
  while (IOakShellControl* const control = broadcast.Next())
    if (control->GoUp()) return;
  if (broadcast.LinkIsAlive() && broadcast.Sender()) broadcast.Sender()->GoUp();
}

// --- history -------------------------------------------------------------------

Ref<IItemIdList> TOakShellLink::GetCurrentFolderItemIDList() const {
  return fHistory->GetCurrentFolderItemIDList();
}

int TOakShellLink::GetCount() const { return fHistory->GetCount(); }

int TOakShellLink::GetPosition() const { return fHistory->GetPosition(); }

void TOakShellLink::SetPosition(int pPosition) {
  if (pPosition >= 0) fHistory->SetPosition(pPosition);
}

void TOakShellLink::Add(const Ref<IItemIdList>& pItemIdList) {
  if (!fIsMoving) fHistory->Add(pItemIdList);
}

void TOakShellLink::Clear() {
  const Ref<IItemIdList> current = fHistory->GetCurrentFolderItemIDList();
  fHistory->Clear();
  fHistory->Add(current);
}

bool TOakShellLink::IsMovePossible(int pDelta) const {
  if (pDelta < 0 && GetPosition() < 1) return false;
  return fHistory->IsMovePossible(pDelta);
}

void TOakShellLink::MoveBack(std::uint8_t pSteps) { MoveInHistory(-1, pSteps); }

void TOakShellLink::MoveForward(std::uint8_t pSteps) { MoveInHistory(1, pSteps); }

void TOakShellLink::MoveInHistory(int pDirection, std::uint8_t pSteps) {
  if (!IsMovePossible(pDirection)) return;
  const TBroadcast watch(*this, nullptr);
  fIsMoving = true;
  if (pDirection < 0)
    fHistory->MoveBack(pSteps);
  else
    fHistory->MoveForward(pSteps);
  PathChanged(nullptr, fHistory->GetCurrentFolderItemIDList());
  if (watch.LinkIsAlive()) fIsMoving = false;
}

Ref<IOakShellHistory> TOakShellLink::GetHistory() {
  if (!fHistoryView) fHistoryView = MakeRef<THistoryView>(*this);
  return fHistoryView;
}

}  // namespace oak
