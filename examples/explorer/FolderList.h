// The rows of one folder.
#pragma once

#include <functional>
#include <optional>
#include <vector>

#include "Linked.h"
#include "ObjectDrop.h"
#include "oak/framework/ListView.h"
#include "oak/namespace/FolderTrek.h"
#include "oak/namespace/Oak.Shell.Types.Commands.h"

/// An object of the folder. Its name is there from the start, the other texts and the icon are
/// fetched when the row is first drawn.
class TFolderRow : public oak::TListItem {
 public:
  TFolderRow(oak::TListItems* owner, oak::Ref<oak::IItemIdList> item, bool isFolder)
      : TListItem(owner), fItem(std::move(item)), fIsFolder(isFolder) {}

  /// Relative to the list's folder.
  const oak::Ref<oak::IItemIdList>& GetItem() const { return fItem; }
  bool IsFolder() const { return fIsFolder; }
  oak::TListSubItems& GetSubItems() override;

 private:
  friend class TFolderList;

  oak::Ref<oak::IItemIdList> fItem;
  bool fIsFolder;
  bool fIsFilled = false;
  bool fHasIcon = false;
};

/// Shows a folder with the columns that it has by default, and acts on its objects. Its
/// image lists are to be of the system.
class TFolderList : public oak::TCustomListView, public TLinkedControl, public IDropPlaces {
 public:
  explicit TFolderList(oak::TComponent* owner);
  ~TFolderList() override {
    fDrop->Forget();
    BeginDestroy();
  }

  /// The object of a row, from the root of the namespace on.
  oak::Ref<oak::IItemIdList> AbsoluteOf(const TFolderRow& row) const;
  oak::Ref<oak::IItemIdList> GetFolder() const { return fCursor.GetFolderIdList(); }
  /// Sorts by a column, folders first; the other way round if it is sorted so already.
  void SortBy(int column);
  /// Selects the row of an object of this folder and shows it; nil if it has none.
  oak::TListItem* SelectObject(const oak::Ref<oak::IItemIdList>& item);
  /// Carries out a command on the selected objects; paste, and properties without a selection, are
  /// for the folder.
  void Run(oak::TShellAction action);
  /// Makes a folder and lets the user name it.
  void MakeNewFolder();

  /// The rows have been read anew. Meanwhile rows are selected that the user did not choose.
  std::function<void()> OnRefreshed;
  bool IsRefreshing() const { return fIsRefreshing; }

  // --- the hub's calls -----------------------------------------------------------
  void PathChanged(const oak::Ref<oak::IItemIdList>& folder) override;
  void SelectAll() override { TCustomListView::SelectAll(); }
  void Refresh(oak::TRefreshLevel level, const oak::Ref<oak::IItemIdList>& item) override;
  bool GoUp() override;
  oak::Ref<oak::IItemIdListCollection> GetSelectedElements() override;

 protected:
  void DblClick() override;
  void WndProc(oak::TMessage& message) override;
  void KeyDown(std::uint16_t& key, oak::TShiftState shift) override;
  void DoContextPopup(oak::TPoint point, bool& handled) override;
  void ColClick(oak::TListColumn* column) override { SortBy(column->GetIndex()); }
  void DoBeginDrag(oak::TMouseButton button) override;
  void GetImageIndex(oak::TListItem* item) override;
  bool CanEdit(oak::TListItem* item) override;
  void Edit(oak::TListItem* item, const oak::TString& text) override;

 private:
  friend class TFolderRow;
  void Open(const oak::Ref<oak::IItemIdList>& folder);
  void OpenFocused();
  void ReadRows();
  void ReadRowsAnew();
  void MakeColumns();
  void Sort();
  void FillSubItems(const TFolderRow& row, oak::TListSubItems& texts);
  void TakeSelection();
  void EditFocused();
  bool RunKey(std::uint16_t key, oak::TShiftState shift);

  // --- what is dropped here --------------------------------------------------------
  oak::Ref<oak::IItemIdList> MarkPlace(oak::TPoint screen) override;
  oak::Ref<IDropTarget> TargetOf(const oak::Ref<oak::IItemIdList>& place) override;
  void EndDrag(bool dropped) override;

  const oak::Ref<TObjectDrop> fDrop = oak::MakeRef<TObjectDrop>(*this);
  bool fIsDragging = false;
  oak::TFolderTrek fCursor;
  std::vector<int> fNumbers;  // the folder's column number by our column
  int fSortColumn = 0;
  bool fDescending = false;
  bool fIsRefreshing = false;
};
