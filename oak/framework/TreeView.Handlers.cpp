// What the tree's window asks and reports, and the events that come of it.
#include "oak/framework/TreeView.h"
#include "oak/framework/Events.h"

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

void TCustomTreeView::GetImageIndex(TTreeNode* node) { FireEvent(OnGetImageIndex, this, node); }

void TCustomTreeView::GetSelectedIndex(TTreeNode*) {}

bool TCustomTreeView::IsCustomDrawn(TCustomDrawTarget target, TCustomDrawStage) {
  return target == dtItem && OnAdvancedCustomDrawItem;
}

bool TCustomTreeView::CustomDrawItem(TCanvas& canvas, TTreeNode* node, TCustomDrawState state,
                                     TCustomDrawStage stage) {
  bool defaultDraw = true;
  FireEvent(OnAdvancedCustomDrawItem, this, node, state, stage, canvas, defaultDraw);
  return defaultDraw;
}

// --- expansion --------------------------------------------------------------------------------

bool TCustomTreeView::HandleCanExpand(TTreeNode* node) {
  if (!node->GetHasChildren() && !node->GetFirstChild()) return false;
  const TTreeNodeWatch watch(*this, node);
  const bool allowed = RunFenced(*this, false, [&] { return CanExpand(node); });
  return allowed && watch.Exists() && (node->GetFirstChild() || node->GetHasChildren());
}

void TCustomTreeView::HandleExpanded(TTreeNode* node) {
  if (!node->SetFlag(TTreeNode::FlagExpanded, true)) return;
  RunFenced(*this, [&] { Expanded(node); });
}

bool TCustomTreeView::HandleCanCollapse(TTreeNode* node) {
  const TTreeNodeWatch watch(*this, node);
  return RunFenced(*this, false, [&] { return CanCollapse(node); }) && watch.Exists();
}

void TCustomTreeView::HandleCollapsed(TTreeNode* node) {
  if (!node->SetFlag(TTreeNode::FlagExpanded, false)) return;
  RunFenced(*this, [&] {
    const TTreeNodeWatch watch(*this, node);
    if (!EndEditBelow(node)) return;
    if (fSelected && fSelected->HasAsParent(node)) SetSelected(node);
    if (watch.Exists()) Collapsed(node);
  });
}

bool TCustomTreeView::CanExpand(TTreeNode* node) {
  bool allow = true;
  FireEvent(OnExpanding, this, node, allow);
  return allow;
}

void TCustomTreeView::Expanded(TTreeNode* node) { FireEvent(OnExpanded, this, node); }

bool TCustomTreeView::CanCollapse(TTreeNode* node) {
  bool allow = true;
  FireEvent(OnCollapsing, this, node, allow);
  return allow;
}

void TCustomTreeView::Collapsed(TTreeNode* node) { FireEvent(OnCollapsed, this, node); }

// --- selection --------------------------------------------------------------------------------

bool TCustomTreeView::HandleSelecting(TTreeNode* node) {
  const TTreeNodeWatch watch(*this, node);
  return RunFenced(*this, false, [&] { return CanChange(node); }) && (!node || watch.Exists());
}

void TCustomTreeView::HandleSelected(TTreeNode* node) {
  if (std::exchange(fSelected, node) == node) return;
  RunFenced(*this, [&] { SelectionHasChanged(); });
}

bool TCustomTreeView::CanChange(TTreeNode* node) {
  bool allow = true;
  FireEvent(OnChanging, this, node, allow);
  return allow;
}

void TCustomTreeView::Change(TTreeNode* node) { FireEvent(OnChange, this, node); }

// --- editing ----------------------------------------------------------------------------------

bool TCustomTreeView::HandleBeginEdit(TTreeNode* node) {
  const TTreeNodeWatch watch(*this, node);
  if (fReadOnly || !RunFenced(*this, false, [&] { return CanEdit(node); }) || !watch.Exists())
    return false;
  fEdited = node;
  return true;
}

bool TCustomTreeView::HandleEndEdit(std::optional<TString> text) {
  TTreeNode* node = std::exchange(fEdited, nullptr);
  if (!node) return false;
  const TTreeNodeWatch watch(*this, node);
  RunFenced(*this, [&] { text ? Edit(node, *text) : CancelEdit(node); });
  return text && watch.Exists() && node->GetText() == *text;
}

bool TCustomTreeView::CanEdit(TTreeNode* node) {
  bool allow = true;
  FireEvent(OnEditing, this, node, allow);
  return allow;
}

void TCustomTreeView::Edit(TTreeNode* node, const TString& text) {
  TString accepted = text;
  const TTreeNodeWatch watch(*this, node);
  FireEvent(OnEdited, this, node, accepted);
  if (watch.Exists()) node->SetText(std::move(accepted));
}

void TCustomTreeView::CancelEdit(TTreeNode*) {}

// --- life of nodes ----------------------------------------------------------------------------

std::unique_ptr<TTreeNode> TCustomTreeView::CreateNode() {
  const auto create = OnCreateNode;  // a copy: it may destroy the tree
  if (std::unique_ptr<TTreeNode> node = create ? create(this) : nullptr) return node;
  return std::make_unique<TTreeNode>(fItems.get());
}

void TCustomTreeView::Added(TTreeNode* node) { FireEvent(OnAddition, this, node); }

void TCustomTreeView::Delete(TTreeNode* node) { FireEvent(OnDeletion, this, node); }

void TCustomTreeView::HandleBeginDrag(TTreeNode* node, TMouseButton button) {
  const TLifeGuard guard = GetLifeGuard();
  RunFenced(*this, [&] { DoBeginDrag(node, button); });
  if (!guard.IsAlive()) return;
  // The release of the button went to the drag, or is no click.
  ExcludeState(csLButtonDown);
  ExcludeState(csClicked);
}

void TCustomTreeView::DoBeginDrag(TTreeNode*, TMouseButton) {}

}  // namespace oak
