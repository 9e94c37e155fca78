#include "oak/framework/TreeView.h"

namespace oak {

TTreeNodeWatch::TTreeNodeWatch(TCustomTreeView& view, TTreeNode* node)
    : fView(view), fGuard(view.GetLifeGuard()), fNode(node), fOuter(view.fWatches) {
  fView.fWatches = this;
}

TTreeNodeWatch::~TTreeNodeWatch() {
  if (fGuard.IsAlive()) fView.fWatches = fOuter;
}

TCustomTreeView::TCustomTreeView(TComponent* owner)
    : TWinControl(owner), fItems(std::make_unique<TTreeNodes>(this)) {
  SetTabStop(true);
  SetBorderStyle(bsSingle);
  SetParentColor(false);
  SetColor(clWindow);
  fImagesLink.OnChange = [this](TObject*) {
    if (fTreePeer) fTreePeer->ImagesChanged(TListImages::Small);
  };
  fStateImagesLink.OnChange = [this](TObject*) {
    if (fTreePeer) fTreePeer->ImagesChanged(TListImages::State);
  };
  fChangeTimer.SetEnabled(false);
  fChangeTimer.OnTimer = [this](TObject*) {
    fChangeTimer.SetEnabled(false);
    Change(fSelected);
  };
}

TCustomTreeView::~TCustomTreeView() {
  BeginDestroy();
  fChangeTimer.SetEnabled(false);
  fItems.reset();
}

// --- the window -------------------------------------------------------------------------------

std::unique_ptr<IControlPeer> TCustomTreeView::CreatePeer() {
  std::unique_ptr<ITreeViewPeer> peer = WidgetSet().CreateTreeView(*this);
  fTreePeer = peer.get();
  return peer;
}

// A new peer shows the nodes that are there; the ancestor has made it by CreatePeer.
void TCustomTreeView::CreateWnd() {
  TWinControl::CreateWnd();
  if (!fTreePeer) return;
  fTreePeer->BeginUpdate();
  fTreePeer->StyleChanged();
  fTreePeer->SetIndent(fIndent);
  fTreePeer->ImagesChanged(TListImages::Small);
  fTreePeer->ImagesChanged(TListImages::State);
  for (TTreeNode* node = fItems->GetFirstNode(); node; node = node->GetNext())
    fTreePeer->NodeInserted(node);
  for (TTreeNode* node = fItems->GetFirstNode(); node; node = node->GetNext()) {
    if (node->GetExpanded()) fTreePeer->NodeExpanded(node);
  }
  if (fDropTarget) fTreePeer->NodeChanged(fDropTarget);
  fTreePeer->SelectionChanged();
  if (!fItems->IsUpdating()) fTreePeer->EndUpdate();
  if (TTreeNode* const top = std::exchange(fTop, nullptr)) fTreePeer->SetTopNode(top);
}

void TCustomTreeView::DestroyWnd() {
  if (fTreePeer) {
    if (!GetComponentState().Contains(csDestroying)) fTop = fTreePeer->GetTopNode();
    fTreePeer = nullptr;
    if (TTreeNode* const edited = std::exchange(fEdited, nullptr)) {
      const TLifeGuard guard = GetLifeGuard();
      if (!GetComponentState().Contains(csDestroying)) CancelEdit(edited);
      if (!guard.IsAlive()) return;
    }
  }
  TWinControl::DestroyWnd();
}

void TCustomTreeView::ChangeScale(int m, int d) {
  SetIndent(MulDiv(fIndent, m, d));
  TWinControl::ChangeScale(m, d);
}

void TCustomTreeView::Notification(TComponent* component, TOperation operation) {
  TWinControl::Notification(component, operation);
  if (operation != opRemove) return;
  if (component == fImages) SetImages(nullptr);
  if (component == fStateImages) SetStateImages(nullptr);
}

// --- selection --------------------------------------------------------------------------------

void TCustomTreeView::SetSelected(TTreeNode* value) {
  if (value == fSelected) return;
  if (value && (value->GetDeleting() || value->GetOwner() != fItems.get())) return;
  const TLifeGuard guard = GetLifeGuard();
  const TTreeNodeWatch watch(*this, value);
  if (!CanChange(value) || !guard.IsAlive() || (value && !watch.Exists())) return;
  if (value) ExpandParents(value);
  if (!guard.IsAlive() || (value && !watch.Exists())) return;
  TTreeNode* before = std::exchange(fSelected, value);
  if (before) before->Update();
  if (fTreePeer) fTreePeer->SelectionChanged();
  SelectionHasChanged();
}

void TCustomTreeView::SelectionHasChanged() {
  if (fChangeDelay <= 0) {
    Change(fSelected);
    return;
  }
  fChangeTimer.SetInterval(static_cast<unsigned>(fChangeDelay));
  fChangeTimer.SetEnabled(true);
  fChangeTimer.Restart();
}

void TCustomTreeView::SetChangeDelay(int value) {
  fChangeDelay = value;
  if (value > 0 || !fChangeTimer.GetEnabled()) return;
  fChangeTimer.SetEnabled(false);
  Change(fSelected);
}

void TCustomTreeView::ExpandParents(TTreeNode* node) {
  const TTreeNodeWatch watch(*this, node);
  while (watch.Exists()) {
    TTreeNode* closed = nullptr;
    for (TTreeNode* parent = node->GetParent(); parent; parent = parent->GetParent()) {
      if (!parent->GetExpanded()) closed = parent;
    }
    if (!closed) return;
    closed->ExpandAlone();
    if (!watch.Exists() || !closed->GetExpanded()) return;  // refused: the node stays hidden
  }
}

void TCustomTreeView::SetDropTargetNode(TTreeNode* value) {
  if (value == fDropTarget) return;
  if (value && (value->GetDeleting() || value->GetOwner() != fItems.get())) return;
  TTreeNode* before = std::exchange(fDropTarget, value);
  if (before) before->Update();
  if (value) value->Update();
}

// The selection goes to the next node at hand before its own goes.
void TCustomTreeView::ForgetBranch(TTreeNode* node) {
  const auto inBranch = [node](const TTreeNode* other) {
    return other && (other == node || other->HasAsParent(node));
  };
  if (inBranch(fDropTarget)) fDropTarget = nullptr;
  const TTreeNodeWatch watch(*this, node);
  if (inBranch(fEdited)) {
    fEdited = nullptr;
    if (fTreePeer) fTreePeer->EndEdit(true);
  }
  if (!watch.Exists() || !inBranch(fSelected)) return;
  TTreeNode* next = node->GetNextSibling()   ? node->GetNextSibling()
                    : node->GetPrevSibling() ? node->GetPrevSibling()
                                             : node->GetParent();
  SetSelected(next);
  if (watch.Exists() && inBranch(fSelected)) fSelected = nullptr;  // the change was refused
}

// Ends the editing of what is about to be hidden. False if the node is gone afterwards.
bool TCustomTreeView::EndEditBelow(TTreeNode* node) {
  const TTreeNodeWatch watch(*this, node);
  if (fEdited && fEdited->HasAsParent(node) && fTreePeer) fTreePeer->EndEdit(true);
  return watch.Exists();
}

// What is hidden can't stay selected: a node that closes takes the selection.
void TCustomTreeView::SelectVisible() {
  TTreeNode* visible = fSelected;
  for (TTreeNode* node = fSelected; node; node = node->GetParent())
    if (node->GetParent() && !node->GetParent()->GetExpanded()) visible = node->GetParent();
  SetSelected(visible);
}

void TCustomTreeView::EndNode(TTreeNode* node) {
  for (TTreeNodeWatch* watch = fWatches; watch; watch = watch->fOuter) {
    if (watch->fNode == node) watch->fNode = nullptr;
  }
  if (fSelected == node) fSelected = nullptr;
  if (fDropTarget == node) fDropTarget = nullptr;
  if (fEdited == node) fEdited = nullptr;
  if (fTop == node) fTop = nullptr;
  Delete(node);
}

// --- looks ------------------------------------------------------------------------------------

void TCustomTreeView::SetImageField(TImageList*& field, TChangeLink& link, TImageList* value,
                                    TListImages which) {
  if (field == value) return;
  if (field) {
    field->UnRegisterChanges(&link);
    if (fImages != fStateImages) RemoveFreeNotification(field);
  }
  field = value;
  if (value) {
    value->RegisterChanges(&link);
    FreeNotification(value);
  }
  if (fTreePeer) fTreePeer->ImagesChanged(which);
}

void TCustomTreeView::SetImages(TImageList* value) {
  SetImageField(fImages, fImagesLink, value, TListImages::Small);
}

void TCustomTreeView::SetStateImages(TImageList* value) {
  SetImageField(fStateImages, fStateImagesLink, value, TListImages::State);
}

void TCustomTreeView::SetIndent(int value) {
  if (std::exchange(fIndent, value) != value && fTreePeer) fTreePeer->SetIndent(value);
}

void TCustomTreeView::SetStyleFlag(bool& field, bool value) {
  if (std::exchange(field, value) != value && fTreePeer) fTreePeer->StyleChanged();
}

void TCustomTreeView::SetShowButtons(bool value) { SetStyleFlag(fShowButtons, value); }
void TCustomTreeView::SetShowLines(bool value) { SetStyleFlag(fShowLines, value); }
void TCustomTreeView::SetShowRoot(bool value) { SetStyleFlag(fShowRoot, value); }
void TCustomTreeView::SetHideSelection(bool value) { SetStyleFlag(fHideSelection, value); }
void TCustomTreeView::SetRowSelect(bool value) { SetStyleFlag(fRowSelect, value); }
void TCustomTreeView::SetReadOnly(bool value) { SetStyleFlag(fReadOnly, value); }
void TCustomTreeView::SetHotTrack(bool value) { SetStyleFlag(fHotTrack, value); }
void TCustomTreeView::SetToolTips(bool value) { SetStyleFlag(fToolTips, value); }

// --- geometry and editing ---------------------------------------------------------------------

TTreeNode* TCustomTreeView::GetTopItem() const {
  return fTreePeer ? fTreePeer->GetTopNode() : fItems->GetFirstNode();
}

void TCustomTreeView::SetTopItem(TTreeNode* value) {
  if (fTreePeer && value) fTreePeer->SetTopNode(value);
}

TTreeHitTest TCustomTreeView::GetHitTest(int x, int y) const {
  return fTreePeer ? fTreePeer->HitTest({x, y}) : TTreeHitTest{};
}

TTreeNode* TCustomTreeView::GetNodeAt(int x, int y) const { return GetHitTest(x, y).Node; }

int TCustomTreeView::GetVisibleRowCount() const {
  return fTreePeer ? fTreePeer->GetVisibleRowCount() : 0;
}

bool TCustomTreeView::IsEditing() const { return GetEditControl() != nullptr; }

HWND TCustomTreeView::GetEditControl() const {
  return fTreePeer ? fTreePeer->GetEditHandle() : nullptr;
}

TString TCustomTreeView::GetEditText() const {
  return fTreePeer ? fTreePeer->GetEditText() : TString();
}

void TCustomTreeView::SetEditText(const TString& text) {
  if (IsEditing()) fTreePeer->SetEditText(text);
}

void TCustomTreeView::SelectEditText(int start, int end) {
  if (IsEditing()) fTreePeer->SelectEditText(start, end);
}

void TCustomTreeView::FullExpand() {
  for (TTreeNode* node = fItems->GetFirstNode(); node;) {
    const TTreeNodeWatch watch(*this, node);
    node->Expand(true);
    if (!watch.Exists()) return;
    node = node->GetNextSibling();
  }
}

void TCustomTreeView::FullCollapse() {
  for (TTreeNode* node = fItems->GetFirstNode(); node;) {
    const TTreeNodeWatch watch(*this, node);
    node->Collapse(true);
    if (!watch.Exists()) return;
    node = node->GetNextSibling();
  }
}

bool TCustomTreeView::CustomSort(const TTVCompare& compare, LPARAM data, bool recursive) {
  if (!fItems->GetFirstNode()) return false;
  fItems->SortBranch(nullptr, compare, data, recursive);
  return true;
}

}  // namespace oak
