// The namespace as a tree of folders.
#pragma once

#include "Linked.h"
#include "ObjectDrop.h"
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
class TPlaceTree : public oak::TCustomTreeView, public TLinkedControl, public IDropPlaces {
 public:
  explicit TPlaceTree(oak::TComponent* owner);
  ~TPlaceTree() override {
    fDrop->Forget();
    BeginDestroy();
  }

  void AddRoot(const oak::Ref<oak::IItemIdList>& item);

  // --- the hub's calls -----------------------------------------------------------
  void PathChanged(const oak::Ref<oak::IItemIdList>& folder) override;
  /// Reads the children of the selected place again.
  void Refresh(oak::TRefreshLevel level, const oak::Ref<oak::IItemIdList>& item) override;
  oak::Ref<oak::IItemIdListCollection> GetSelectedElements() override;

 protected:
  bool CanExpand(oak::TTreeNode* node) override;
  void Change(oak::TTreeNode* node) override;
  void GetImageIndex(oak::TTreeNode* node) override;
  void DoContextPopup(oak::TPoint point, bool& handled) override;
  void DoBeginDrag(oak::TTreeNode* node, oak::TMouseButton button) override;
  void WndProc(oak::TMessage& message) override;

 private:
  // --- what is dropped here --------------------------------------------------------
  oak::Ref<oak::IItemIdList> MarkPlace(oak::TPoint screen) override;
  oak::Ref<IDropTarget> TargetOf(const oak::Ref<oak::IItemIdList>& place) override;
  void EndDrag(bool dropped) override;

  void AddPlace(oak::TTreeNode* parent, oak::TFolderTrek& cursor);
  /// Expands the way to a place and selects it; the nearest folder above if the place isn't there.
  void SelectPlace(const oak::Ref<oak::IItemIdList>& item);
  const oak::Ref<TObjectDrop> fDrop = oak::MakeRef<TObjectDrop>(*this);
  bool fFollowing = false;  // the selection follows the others, not the user
};
