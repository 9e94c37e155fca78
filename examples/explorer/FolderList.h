// The rows of one folder.
#pragma once

#include <functional>

#include "oak/framework/ListView.h"
#include "oak/namespace/FolderTrek.h"

/// An object of the folder. Its name is there from the start, the other texts are fetched when the
/// row is first drawn.
class TFolderRow : public oak::TListItem {
 public:
  TFolderRow(oak::TListItems* owner, oak::Ref<oak::IItemIdList> item, bool isFolder)
      : TListItem(owner), fItem(std::move(item)), fIsFolder(isFolder) {}

  /// Relative to the list's folder.
  const oak::Ref<oak::IItemIdList>& GetItem() const { return fItem; }
  bool IsFolder() const { return fIsFolder; }
  oak::TListSubItems& GetSubItems() override;

 private:
  oak::Ref<oak::IItemIdList> fItem;
  bool fIsFolder;
  bool fIsFilled = false;
};

/// Shows a folder with the columns that it has by default.
class TFolderList : public oak::TCustomListView {
 public:
  explicit TFolderList(oak::TComponent* owner);

  /// Reads the folder. Raises EFolderTrekError and keeps what was shown.
  void ShowFolder(const oak::Ref<oak::IItemIdList>& folder);
  oak::Ref<oak::IItemIdList> GetFolder() const { return fCursor.GetFolderIdList(); }
  /// The object of a row, from the root of the namespace on.
  oak::Ref<oak::IItemIdList> AbsoluteOf(const TFolderRow& row) const;
  /// Sorts by a column, folders first; the other way round if it is sorted so already.
  void SortBy(int column);
  /// Selects the row of an object of this folder and shows it.
  void SelectObject(const oak::Ref<oak::IItemIdList>& item);

  /// A row was opened by double click or return key.
  std::function<void(const TFolderRow& row)> OnOpen;

 protected:
  void DblClick() override;
  void WndProc(oak::TMessage& message) override;
  void KeyDown(std::uint16_t& key, oak::TShiftState shift) override;
  void ColClick(oak::TListColumn* column) override { SortBy(column->GetIndex()); }

 private:
  friend class TFolderRow;
  void FillSubItems(const TFolderRow& row, oak::TListSubItems& texts);
  void MakeColumns();
  void Sort();
  void OpenFocused();

  oak::TFolderTrek fCursor;
  std::vector<int> fNumbers;  // the folder's column number by our column
  int fSortColumn = 0;
  bool fDescending = false;
};
