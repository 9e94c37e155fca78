#include "oak/framework/TreeView.h"

namespace oak {

// A node is destroyed by its tree alone, after it was taken out of it.
TTreeNode::~TTreeNode() = default;

TCustomTreeView* TTreeNode::GetTreeView() const noexcept {
  return fOwner ? fOwner->GetOwner() : nullptr;
}

TTreeNode* TTreeNode::GetNext() const noexcept {
  if (fFirstChild) return fFirstChild;
  for (const TTreeNode* node = this; node; node = node->fParent) {
    if (node->fNextSibling) return node->fNextSibling;
  }
  return nullptr;
}

TTreeNode* TTreeNode::GetNextVisible() const noexcept {
  if (fFirstChild && GetExpanded()) return fFirstChild;
  for (const TTreeNode* node = this; node; node = node->fParent) {
    if (node->fNextSibling) return node->fNextSibling;
  }
  return nullptr;
}

TTreeNode* TTreeNode::GetPrevVisible() const noexcept {
  if (!fPrevSibling) return fParent;
  TTreeNode* node = fPrevSibling;
  while (node->GetExpanded() && node->fLastChild) node = node->fLastChild;
  return node;
}

int TTreeNode::GetLevel() const noexcept {
  int level = 0;
  for (const TTreeNode* node = fParent; node; node = node->fParent) ++level;
  return level;
}

int TTreeNode::GetIndex() const noexcept {
  int index = 0;
  for (const TTreeNode* node = fPrevSibling; node; node = node->fPrevSibling) ++index;
  return index;
}

bool TTreeNode::HasAsParent(const TTreeNode* node) const noexcept {
  for (const TTreeNode* parent = fParent; parent; parent = parent->fParent) {
    if (parent == node) return true;
  }
  return false;
}

bool TTreeNode::SetFlag(std::uint8_t flag, bool value) {
  if (((fFlags & flag) != 0) == value) return false;
  fFlags = static_cast<std::uint8_t>(value ? fFlags | flag : fFlags & ~flag);
  return true;
}

void TTreeNode::Update() {
  TCustomTreeView* view = GetTreeView();
  if (view && view->fTreePeer && !GetDeleting()) view->fTreePeer->NodeChanged(this);
}

void TTreeNode::SetText(TString value) {
  if (fText == value) return;
  fText = std::move(value);
  Update();
}

void TTreeNode::SetImageIndex(int value) {
  if (std::exchange(fImageIndex, value) != value) Update();
}

void TTreeNode::SetSelectedIndex(int value) {
  if (std::exchange(fSelectedIndex, value) != value) Update();
}

void TTreeNode::SetOverlayIndex(int value) {
  const auto index = static_cast<std::int16_t>(value);
  if (std::exchange(fOverlayIndex, index) != index) Update();
}

void TTreeNode::SetStateIndex(int value) {
  const auto index = static_cast<std::int16_t>(value);
  if (std::exchange(fStateIndex, index) != index) Update();
}

void TTreeNode::SetHasChildren(bool value) {
  if (SetFlag(FlagHasChildren, value)) Update();
}

void TTreeNode::SetCut(bool value) {
  if (SetFlag(FlagCut, value)) Update();
}

void TTreeNode::SetEnabled(bool value) {
  if (SetFlag(FlagDisabled, !value)) Update();
}

bool TTreeNode::GetSelected() const noexcept {
  const TCustomTreeView* view = GetTreeView();
  return view && view->GetSelected() == this;
}

void TTreeNode::SetSelected(bool value) {
  TCustomTreeView* view = GetTreeView();
  if (!view || GetSelected() == value) return;
  view->SetSelected(value ? this : nullptr);
}

bool TTreeNode::GetDropTarget() const noexcept {
  const TCustomTreeView* view = GetTreeView();
  return view && view->GetDropTargetNode() == this;
}

void TTreeNode::SetDropTarget(bool value) {
  TCustomTreeView* view = GetTreeView();
  if (!view || GetDropTarget() == value) return;
  view->SetDropTargetNode(value ? this : nullptr);
}

void TTreeNode::SetExpanded(bool value) {
  if (value)
    Expand(false);
  else
    Collapse(false);
}

// Children may still be on their way when CanExpand returns: a node that keeps its mark is open,
// and shows them as they come.
void TTreeNode::ExpandAlone() {
  TCustomTreeView* view = GetTreeView();
  if (!view || GetDeleting() || GetExpanded() || (!fFirstChild && !GetHasChildren())) return;
  const TTreeNodeWatch watch(*view, this);
  if (!view->CanExpand(this) || !watch.Exists()) return;
  if (GetExpanded() || (!fFirstChild && !GetHasChildren())) return;
  SetFlag(FlagExpanded, true);
  if (view->fTreePeer) view->fTreePeer->NodeExpanded(this);
  view->Expanded(this);
}

void TTreeNode::Expand(bool recursive) {
  TCustomTreeView* view = GetTreeView();
  if (!view) return;
  const TTreeNodeWatch watch(*view, this);
  ExpandAlone();
  if (!recursive || !watch.Exists()) return;
  for (TTreeNode* node = fFirstChild; watch.Exists() && node;) {
    const TTreeNodeWatch child(*view, node);
    node->Expand(true);
    if (!child.Exists()) return;
    node = node->GetNextSibling();
  }
}

void TTreeNode::Collapse(bool recursive) {
  TCustomTreeView* view = GetTreeView();
  if (!view || GetDeleting()) return;
  const TTreeNodeWatch watch(*view, this);
  if (GetExpanded()) {
    if (!view->CanCollapse(this) || !watch.Exists() || !view->EndEditBelow(this)) return;
    if (!SetFlag(FlagExpanded, false)) return;
    if (view->fTreePeer) view->fTreePeer->NodeExpanded(this);
    // What is hidden can't stay selected.
    if (view->fSelected && view->fSelected->HasAsParent(this)) view->SetSelected(this);
    if (!watch.Exists()) return;
    view->Collapsed(this);
  }
  if (!recursive || !watch.Exists()) return;
  for (TTreeNode* node = fFirstChild; watch.Exists() && node;) {
    const TTreeNodeWatch child(*view, node);
    node->Collapse(true);
    if (!child.Exists()) return;
    node = node->GetNextSibling();
  }
}

void TTreeNode::Delete() {
  if (fOwner) fOwner->Delete(this);
}

void TTreeNode::DeleteChildren() {
  TCustomTreeView* view = GetTreeView();
  if (!view || GetDeleting()) return;
  const TTreeNodeWatch watch(*view, this);
  // From the end: a selected child then hands the selection on as seldom as possible.
  if (view->fSelected && view->fSelected->HasAsParent(this)) view->SetSelected(this);
  while (watch.Exists() && fLastChild) fLastChild->Delete();
  if (!watch.Exists()) return;
  if (SetFlag(FlagExpanded, false) && view->fTreePeer) view->fTreePeer->NodeExpanded(this);
  SetHasChildren(false);
}

void TTreeNode::MoveTo(TTreeNode* destination, TNodeAttachMode mode) {
  if (!fOwner || destination == this || GetDeleting()) return;
  if (destination && destination->GetDeleting()) return;
  if (destination && destination->HasAsParent(this))
    throw EInvalidOperation(u"A node can't be moved into its own branch.");
  if (destination && destination->fOwner != fOwner)
    throw EInvalidOperation(u"A node can't be moved into another tree.");
  fOwner->Move(this, destination, mode);
}

bool TTreeNode::CustomSort(const TTVCompare& compare, LPARAM data, bool recursive) {
  if (!fOwner || !fFirstChild) return false;
  fOwner->SortBranch(this, compare, data, recursive);
  return true;
}

void TTreeNode::MakeVisible() {
  TCustomTreeView* view = GetTreeView();
  if (!view || GetDeleting()) return;
  const TTreeNodeWatch watch(*view, this);
  view->ExpandParents(this);
  if (watch.Exists() && view->fTreePeer) view->fTreePeer->MakeVisible(this);
}

bool TTreeNode::IsNodeVisible() const noexcept {
  for (const TTreeNode* parent = fParent; parent; parent = parent->fParent) {
    if (!parent->GetExpanded()) return false;
  }
  return true;
}

TRect TTreeNode::DisplayRect(bool textOnly) const {
  const TCustomTreeView* view = GetTreeView();
  if (!view || !view->fTreePeer || !IsNodeVisible()) return {};
  return view->fTreePeer->GetNodeRect(const_cast<TTreeNode*>(this), textOnly);
}

bool TTreeNode::EditText() {
  TCustomTreeView* view = GetTreeView();
  if (!view || GetDeleting()) return false;
  view->HandleNeeded();
  return view->fTreePeer && view->fTreePeer->BeginEdit(this);
}

void TTreeNode::EndEdit(bool cancel) {
  TCustomTreeView* view = GetTreeView();
  if (view && view->fTreePeer) view->fTreePeer->EndEdit(cancel);
}

}  // namespace oak
