// What the tree's window asks and reports, and the events that come of it.
#include "oak/framework/TreeView.h"

namespace oak {

// --- drawing ----------------------------------------------------------------------------------

TString TCustomTreeView::HandleGetText(TTreeNode* node) { return node->GetText(); }

int TCustomTreeView::HandleGetImage(TTreeNode* node, bool selected) {
  const TTreeNodeWatch watch(*this, node);
  GetImageIndex(node);
  if (!watch.Exists()) return -1;
  if (!selected) return node->GetImageIndex();
  GetSelectedIndex(node);
  if (!watch.Exists()) return -1;
  return node->GetSelectedIndex() >= 0 ? node->GetSelectedIndex() : node->GetImageIndex();
}

TColor TCustomTreeView::HandleTextColor(TTreeNode* node, TColor standard) {
  return GetNodeTextColor(node, standard);
}

bool TCustomTreeView::HandleCustomDrawItem(TCanvas& canvas, TTreeNode* node, TCustomDrawState state,
                                           TCustomDrawStage stage) {
  return !IsCustomDrawn(dtItem, stage) || CustomDrawItem(canvas, node, state, stage);
}

void TCustomTreeView::GetImageIndex(TTreeNode* node) {
  if (OnGetImageIndex) OnGetImageIndex(this, node);
}

void TCustomTreeView::GetSelectedIndex(TTreeNode*) {}

bool TCustomTreeView::IsCustomDrawn(TCustomDrawTarget target, TCustomDrawStage) {
  return target == dtItem && OnAdvancedCustomDrawItem;
}

bool TCustomTreeView::CustomDrawItem(TCanvas& canvas, TTreeNode* node, TCustomDrawState state,
                                     TCustomDrawStage stage) {
  bool defaultDraw = true;
  if (OnAdvancedCustomDrawItem)
    OnAdvancedCustomDrawItem(this, node, state, stage, canvas, defaultDraw);
  return defaultDraw;
}

// --- expansion --------------------------------------------------------------------------------

bool TCustomTreeView::HandleCanExpand(TTreeNode* node) {
  if (!node->GetHasChildren() && !node->GetFirstChild()) return false;
  const TTreeNodeWatch watch(*this, node);
  return CanExpand(node) && watch.Exists() && (node->GetFirstChild() || node->GetHasChildren());
}

void TCustomTreeView::HandleExpanded(TTreeNode* node) {
  if (node->SetFlag(TTreeNode::FlagExpanded, true)) Expanded(node);
}

bool TCustomTreeView::HandleCanCollapse(TTreeNode* node) {
  const TTreeNodeWatch watch(*this, node);
  return CanCollapse(node) && watch.Exists();
}

void TCustomTreeView::HandleCollapsed(TTreeNode* node) {
  if (!node->SetFlag(TTreeNode::FlagExpanded, false)) return;
  const TTreeNodeWatch watch(*this, node);
  if (fSelected && fSelected->HasAsParent(node)) SetSelected(node);
  if (watch.Exists()) Collapsed(node);
}

bool TCustomTreeView::CanExpand(TTreeNode* node) {
  bool allow = true;
  if (OnExpanding) OnExpanding(this, node, allow);
  return allow;
}

void TCustomTreeView::Expanded(TTreeNode* node) {
  if (OnExpanded) OnExpanded(this, node);
}

bool TCustomTreeView::CanCollapse(TTreeNode* node) {
  bool allow = true;
  if (OnCollapsing) OnCollapsing(this, node, allow);
  return allow;
}

void TCustomTreeView::Collapsed(TTreeNode* node) {
  if (OnCollapsed) OnCollapsed(this, node);
}

// --- selection --------------------------------------------------------------------------------

bool TCustomTreeView::HandleSelecting(TTreeNode* node) {
  const TTreeNodeWatch watch(*this, node);
  return CanChange(node) && (!node || watch.Exists());
}

void TCustomTreeView::HandleSelected(TTreeNode* node) {
  if (std::exchange(fSelected, node) != node) SelectionHasChanged();
}

bool TCustomTreeView::CanChange(TTreeNode* node) {
  bool allow = true;
  if (OnChanging) OnChanging(this, node, allow);
  return allow;
}

void TCustomTreeView::Change(TTreeNode* node) {
  if (OnChange) OnChange(this, node);
}

// --- editing ----------------------------------------------------------------------------------

bool TCustomTreeView::HandleBeginEdit(TTreeNode* node) {
  const TTreeNodeWatch watch(*this, node);
  if (fReadOnly || !CanEdit(node) || !watch.Exists()) return false;
  fEdited = node;
  return true;
}

bool TCustomTreeView::HandleEndEdit(std::optional<TString> text) {
  TTreeNode* node = std::exchange(fEdited, nullptr);
  if (!node) return false;
  if (!text) {
    CancelEdit(node);
    return false;
  }
  const TTreeNodeWatch watch(*this, node);
  Edit(node, *text);
  return watch.Exists() && node->GetText() == *text;
}

bool TCustomTreeView::CanEdit(TTreeNode* node) {
  bool allow = true;
  if (OnEditing) OnEditing(this, node, allow);
  return allow;
}

void TCustomTreeView::Edit(TTreeNode* node, const TString& text) {
  TString accepted = text;
  const TTreeNodeWatch watch(*this, node);
  if (OnEdited) OnEdited(this, node, accepted);
  if (watch.Exists()) node->SetText(std::move(accepted));
}

void TCustomTreeView::CancelEdit(TTreeNode*) {}

// --- life of nodes ----------------------------------------------------------------------------

std::unique_ptr<TTreeNode> TCustomTreeView::CreateNode() {
  if (OnCreateNode) {
    if (std::unique_ptr<TTreeNode> node = OnCreateNode(this)) return node;
  }
  return std::make_unique<TTreeNode>(fItems.get());
}

void TCustomTreeView::Added(TTreeNode* node) {
  if (OnAddition) OnAddition(this, node);
}

void TCustomTreeView::Delete(TTreeNode* node) {
  if (OnDeletion) OnDeletion(this, node);
}

void TCustomTreeView::HandleBeginDrag(TTreeNode* node, TMouseButton button) {
  DoBeginDrag(node, button);
}

void TCustomTreeView::DoBeginDrag(TTreeNode*, TMouseButton) {}

}  // namespace oak
