#include "PlaceTree.h"

#include "Pictures.h"
#include "oak/base/LogicalOrder.h"
#include "oak/namespace/OakItemIdList.h"

using namespace oak;

TPlaceTree::TPlaceTree(TComponent* owner) : TCustomTreeView(owner) {
  SetReadOnly(true);
  SetHideSelection(false);
  SetShowLines(false);
}

void TPlaceTree::AddRoot(const Ref<IItemIdList>& item) {
  auto node = std::make_unique<TPlaceNode>(&Items(), item);
  node->SetText(item->DisplayName(dnfInFolder));
  node->SetImageIndex(pcPlace);
  node->SetHasChildren(true);
  Items().AddNode(std::move(node), nullptr, naAdd);
}

void TPlaceTree::AddPlace(TTreeNode* parent, TFolderTrek& cursor) {
  auto node = std::make_unique<TPlaceNode>(&Items(), cursor.GetAbsoluteItemIdList());
  node->SetText(cursor.GetShellObjectName(true));
  node->SetImageIndex(cursor.IsDrive() ? pcDrive : pcFolder);
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

void TPlaceTree::Change(TTreeNode* node) {
  TCustomTreeView::Change(node);
  if (node && !fFollowing && OnGoTo) OnGoTo(static_cast<TPlaceNode*>(node)->GetItem());
}

void TPlaceTree::SelectPlace(const Ref<IItemIdList>& item) {
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
  fFollowing = true;
  SetSelected(found);
  fFollowing = false;
}
