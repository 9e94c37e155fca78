#include "PlaceTree.h"

#include "oak/namespace/Oak.Shell.ItemIdListCollection.h"
#include "oak/namespace/Oak.Shell.SystemImageList.h"
#include "oak/namespace/OakItemIdList.h"

using namespace oak;

namespace {

// After a drag: until its handlers have returned the tree still deals with its nodes.
constexpr UINT TreeRefreshMessage = FirstPrivateMessage;

}  // namespace

TPlaceTree::TPlaceTree(TComponent* owner) : TCustomTreeView(owner) {
  SetReadOnly(true);
  SetHideSelection(false);
  SetShowLines(false);
  SetDropTarget(fDrop.Get());
}

// --- nodes -------------------------------------------------------------------------

void TPlaceTree::AddRoot(const Ref<IItemIdList>& item) {
  auto node = std::make_unique<TPlaceNode>(&Items(), item);
  node->SetText(item->DisplayName(dnfInFolder));
  node->SetHasChildren(true);
  Items().AddNode(std::move(node), nullptr, naAdd);
}

void TPlaceTree::AddPlace(TTreeNode* parent, TFolderTrek& cursor) {
  auto node = std::make_unique<TPlaceNode>(&Items(), cursor.GetAbsoluteItemIdList());
  node->SetText(cursor.GetShellObjectName(true));
  node->SetHasChildren(cursor.HasSubFolders());
  Items().AddNode(std::move(node), parent, naAddChild);
}

bool TPlaceTree::CanExpand(TTreeNode* node) {
  if (!TCustomTreeView::CanExpand(node) || node->GetFirstChild()) return node->GetFirstChild();
  TFolderTrek cursor;
  cursor.SetShowErrorMessages(false);
  cursor.SetForNavigation(true);
  Items().BeginUpdate();
  try {
    cursor.SetFolderIdList(static_cast<TPlaceNode*>(node)->GetItem());
    while (cursor.Next()) {
      if (cursor.IsFolder() && !cursor.IsHidden()) AddPlace(node, cursor);
    }
  } catch (const EFolderTrekError&) {
    // What can't be read has no children here; the list tells why when the place is opened.
  }
  node->SetHasChildren(node->GetFirstChild() != nullptr);
  if (node->GetLevel() > 0) node->CustomSort(nullptr, 0);
  Items().EndUpdate();
  return node->GetFirstChild() != nullptr;
}

void TPlaceTree::GetImageIndex(TTreeNode* node) {
  if (node->GetImageIndex() >= 0) return;
  const Ref<IItemIdList>& item = static_cast<TPlaceNode*>(node)->GetItem();
  node->SetImageIndex(TOakSystemImageList::GetIndexFromItemIdList(item, si_Small, false));
  node->SetSelectedIndex(TOakSystemImageList::GetIndexFromItemIdList(item, si_Small, true));
}

// --- navigation --------------------------------------------------------------------

void TPlaceTree::Change(TTreeNode* node) {
  const TLifeGuard guard = GetLifeGuard();
  TCustomTreeView::Change(node);
  if (!guard.IsAlive() || !node || fFollowing || !fLink) return;
  const Ref<IItemIdList> place = static_cast<TPlaceNode*>(node)->GetItem();
  fLink->PathChanged(this, place);
  // Refused: back to where all others stand.
  if (guard.IsAlive() && CurrentFolder() && !CurrentFolder()->Equals(place, ilcDisplay))
    SelectPlace(CurrentFolder());
}

void TPlaceTree::PathChanged(const Ref<IItemIdList>& folder) {
  if (folder) SelectPlace(folder);
}

void TPlaceTree::SelectPlace(const Ref<IItemIdList>& item) {
  const bool before = std::exchange(fFollowing, true);
  TTreeNode* found = nullptr;
  for (TTreeNode* node = Items().GetFirstNode(); node;) {
    const Ref<IItemIdList> place = static_cast<TPlaceNode*>(node)->GetItem();
    if (!place->IsParentOf(item, true, ilcDisplay)) {
      node = node->GetNextSibling();
      continue;
    }
    found = node;
    if (place->Equals(item, ilcDisplay)) break;
    node->Expand(false);
    node = node->GetFirstChild();
  }
  SetSelected(found);
  if (found) found->MakeVisible();
  fFollowing = before;
}

void TPlaceTree::Refresh(TRefreshLevel level, const Ref<IItemIdList>&) {
  TTreeNode* const node = GetSelected();
  if (level == rfCheckboxes || !node) return;
  const bool before = std::exchange(fFollowing, true);
  const bool wasExpanded = node->GetExpanded();
  Items().BeginUpdate();
  node->DeleteChildren();
  node->SetHasChildren(true);
  if (wasExpanded || !static_cast<TPlaceNode*>(node)->GetItem()->HasAttributes(SFGAO_HASSUBFOLDER))
    node->Expand(false);
  Items().EndUpdate();
  fFollowing = before;
}

// --- commands ----------------------------------------------------------------------

Ref<IItemIdListCollection> TPlaceTree::GetSelectedElements() {
  auto objects = MakeRef<TItemIdListCollection>();
  if (GetSelected()) objects->Add(static_cast<TPlaceNode*>(GetSelected())->GetItem());
  return objects;
}

void TPlaceTree::DoContextPopup(TPoint point, bool& handled) {
  handled = true;
  const bool byKey = point == TPoint(-1, -1);
  TTreeNode* const node = byKey ? GetSelected() : GetNodeAt(point.X, point.Y);
  if (!node) return;
  if (byKey) point = node->DisplayRect(true).Center();
  const TLifeGuard guard = GetLifeGuard();
  try {
    TFolderTrek cursor(static_cast<TPlaceNode*>(node)->GetItem());
    cursor.ShowContextMenu(ClientToScreen(point), nullptr);
  } catch (const Exception& error) {
    if (guard.IsAlive()) Report(error);
  }
  if (guard.IsAlive() && fLink) fLink->Refresh(rfSmart);
}

// --- dragging ----------------------------------------------------------------------

void TPlaceTree::DoBeginDrag(TTreeNode* node, TMouseButton) {
  const TLifeGuard guard = GetLifeGuard();
  try {
    TFolderTrek cursor(static_cast<TPlaceNode*>(node)->GetItem());
    DragOut(*this, cursor.GetUIObject(IidOf<IDataObject>()));
  } catch (const Exception& error) {
    if (guard.IsAlive()) Report(error);
  }
  if (guard.IsAlive()) PostMessage(TreeRefreshMessage);
}

Ref<IItemIdList> TPlaceTree::MarkPlace(TPoint screen) {
  const TPoint point = ScreenToClient(screen);
  TTreeNode* const node = GetNodeAt(point.X, point.Y);
  SetDropTargetNode(node);
  return node ? static_cast<TPlaceNode*>(node)->GetItem() : nullptr;
}

Ref<IDropTarget> TPlaceTree::TargetOf(const Ref<IItemIdList>& place) {
  if (!place) return nullptr;
  TFolderTrek cursor;
  cursor.SetShowErrorMessages(false);
  cursor.SetFolderIdList(place);
  return DropTargetOfFolder(cursor.GetShellFolder());
}

void TPlaceTree::EndDrag(bool dropped) {
  SetDropTargetNode(nullptr);
  if (dropped) PostMessage(TreeRefreshMessage);
}

void TPlaceTree::WndProc(TMessage& message) {
  if (message.Msg != TreeRefreshMessage) return TCustomTreeView::WndProc(message);
  if (fLink) fLink->Refresh(rfSmart);
}
