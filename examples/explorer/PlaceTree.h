// The namespace as a tree of folders.
#pragma once

#include "oak/framework/TreeView.h"
#include "oak/namespace/FolderTrek.h"

class TPlaceNode : public oak::TTreeNode {
 public:
  TPlaceNode(oak::TTreeNodes* owner, oak::Ref<oak::IItemIdList> item)
      : TTreeNode(owner), fItem(std::move(item)) {}
  /// From the root of the namespace on.
  const oak::Ref<oak::IItemIdList>& GetItem() const { return fItem; }

 private:
  oak::Ref<oak::IItemIdList> fItem;
};

/// Folders only; children are read when a node is first expanded.
class TPlaceTree : public oak::TCustomTreeView {
 public:
  explicit TPlaceTree(oak::TComponent* owner);

  void AddRoot(const oak::Ref<oak::IItemIdList>& item);
  /// Expands the way to a place and selects it; the nearest folder above if the place isn't there.
  void SelectPlace(const oak::Ref<oak::IItemIdList>& item);

  /// The user went to a place.
  std::function<void(const oak::Ref<oak::IItemIdList>& item)> OnGoTo;

 protected:
  bool CanExpand(oak::TTreeNode* node) override;
  void Change(oak::TTreeNode* node) override;

 private:
  void AddPlace(oak::TTreeNode* parent, oak::TFolderTrek& cursor);
  bool fFollowing = false;  // the selection follows the list, not the user
};
