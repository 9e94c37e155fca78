#include "FolderList.h"

#include <algorithm>
#include <unordered_map>
#include <unordered_set>

#include "oak/base/LogicalOrder.h"
#include "oak/namespace/Oak.Shell.Types.ColumnInfo.h"
#include "oak/namespace/OakItemIdList.h"

using namespace oak;

TListSubItems& TFolderRow::GetSubItems() {
  TListSubItems& texts = GetExistingSubItems();
  auto* list = static_cast<TFolderList*>(GetListView());
  if (!fIsFilled && list) {
    fIsFilled = true;
    list->FillSubItems(*this, texts);
  }
  return texts;
}

TFolderList::TFolderList(TComponent* owner) : TCustomListView(owner) {
  SetViewStyle(vsReport);
  SetRowSelect(true);
  SetMultiSelect(true);
  fCursor.SetShowErrorMessages(false);
  fCursor.SetAsyncContextMenuOperations(false);  // the list reads the folder again when they end
  SetDropTarget(fDrop.Get());
  fCursor.OnRename = [this](TObject*) { EditFocused(); };
}

// --- navigation --------------------------------------------------------------------

void TFolderList::Open(const Ref<IItemIdList>& folder) {
  if (!fLink || !fLink->CanNavigate(this, folder)) return;
  const TLifeGuard guard = GetLifeGuard();
  PathChanged(folder);
  if (guard.IsAlive() && fLink) fLink->PathChanged(this, folder);
}

void TFolderList::PathChanged(const Ref<IItemIdList>& folder) {
  const Ref<IItemIdList> before = GetFolder();
  try {
    fCursor.SetFolderIdList(folder);
    fSortColumn = 0;
    fDescending = false;
    MakeColumns();
    ReadRows();
  } catch (const Exception& error) {
    return Report(error);
  }
  // Up: the folder that was left is where the user goes on.
  if (before && folder && folder->IsParentOf(before, false, ilcDisplay)) SelectObject(before);
}

bool TFolderList::GoUp() {
  const Ref<IItemIdList> folder = GetFolder();
  if (!folder || folder->Depth() == 0) return false;
  Open(folder->GetParent());
  return true;
}

void TFolderList::Refresh(TRefreshLevel level, const Ref<IItemIdList>&) {
  if (level == rfCheckboxes || !GetFolder() || fIsRefreshing) return;
  fIsRefreshing = true;
  ReadRowsAnew();
  fIsRefreshing = false;
  if (OnRefreshed) OnRefreshed();
}

/// Those that were selected are so again, and the focus stays: on its object, else on its place.
void TFolderList::ReadRowsAnew() {
  const TListItem* const focused = GetItemFocused();
  const int place = focused ? focused->GetIndex() : 0;
  const TString name = focused ? focused->GetStoredCaption() : TString();
  std::unordered_set<TString> selected;
  for (TListItem* const row : Items())
    if (row->GetSelected()) selected.insert(row->GetStoredCaption());
  try {
    fCursor.SetFolderIdList(GetFolder());  // starts over
    ReadRows();
  } catch (const Exception& error) {
    return Report(error);
  }
  for (TListItem* const row : Items())
    if (selected.count(row->GetStoredCaption()) > 0) row->SetSelected(true);
  if (name.empty() || Items().GetCount() == 0) return;
  TListItem* row = FindCaption(0, name, false, true, false);
  if (!row) row = Items()[std::min(place, Items().GetCount() - 1)];
  SetItemFocused(row);
  row->MakeVisible(false);
}

void TFolderList::OpenFocused() {
  const auto* row = static_cast<const TFolderRow*>(GetSelected());
  if (!row) return;
  if (row->IsFolder()) return Open(AbsoluteOf(*row));
  Run(saDefault);
}

// --- rows --------------------------------------------------------------------------

void TFolderList::ReadRows() {
  Items().BeginUpdate();
  Items().Clear();
  const TOakShellShowOptions shown{soShowFiles, soShowNethood, soShowRecycleBin};
  while (GetFolder() && fCursor.Next()) {
    if (!fCursor.ShowObjectAccordingShowOptions(shown)) continue;
    auto row = std::make_unique<TFolderRow>(&Items(), fCursor.GetItemIdList(), fCursor.IsFolder());
    row->SetCaption(fCursor.GetShellObjectName(true));
    Items().AddItem(std::move(row));
  }
  Sort();
  Items().EndUpdate();
}

void TFolderList::MakeColumns() {
  Columns().BeginUpdate();
  Columns().Clear();
  fNumbers.clear();
  constexpr int mostColumns = 40;
  for (int number = 0; GetFolder() && number < mostColumns; ++number) {
    if (!fCursor.GetShColumnIdFromColumnNumber(number).IsValid()) break;
    TColumnInfo info;
    fCursor.GetColumnInfo(number, info);
    if (!info.fVisibleByDefault) continue;
    TListColumn* column = Columns().Add();
    column->SetCaption(info.fTitle);
    column->SetWidth(ScaledPixels(info.fWidth));
    column->SetAlignment(AlignmentOfFormat(info.fAlignment));
    fNumbers.push_back(number);
  }
  Columns().EndUpdate();
}

void TFolderList::FillSubItems(const TFolderRow& row, TListSubItems& texts) {
  fCursor.SetItemIdList(row.GetItem());
  for (std::size_t column = 1; column < fNumbers.size(); ++column)
    texts.Add(fCursor.GetColumnText(fNumbers[column], false));
}

void TFolderList::GetImageIndex(TListItem* item) {
  auto& row = static_cast<TFolderRow&>(*item);
  if (row.fHasIcon) return;
  row.fHasIcon = true;
  fCursor.SetItemIdList(row.GetItem());
  row.SetImageIndex(fCursor.GetIconNumber());
  row.SetOverlayIndex(fCursor.GetOverlayIndex());
}

Ref<IItemIdList> TFolderList::AbsoluteOf(const TFolderRow& row) const {
  return GetFolder()->Concat(row.GetItem());
}

TListItem* TFolderList::SelectObject(const Ref<IItemIdList>& item) {
  for (TListItem* const row : Items()) {
    if (!AbsoluteOf(static_cast<const TFolderRow&>(*row))->Equals(item, ilcDisplay)) continue;
    SetSelected(row);
    SetItemFocused(row);
    row->MakeVisible(false);
    return row;
  }
  return nullptr;
}

Ref<IItemIdListCollection> TFolderList::GetSelectedElements() {
  TakeSelection();
  return fCursor.GetMultiObjects();
}

// --- order -------------------------------------------------------------------------

void TFolderList::SortBy(int column) {
  fDescending = column == fSortColumn && !fDescending;
  fSortColumn = column;
  Sort();
}

// The values are fetched once and compared often.
void TFolderList::Sort() {
  if (Columns().GetCount() == 0) return;
  std::unordered_map<const TListItem*, TVariant> values;
  if (fSortColumn > 0) {
    const int number = fNumbers[static_cast<std::size_t>(fSortColumn)];
    const TShellColumnId id = fCursor.GetShColumnIdFromColumnNumber(number);
    for (TListItem* const item : Items()) {
      fCursor.SetItemIdList(static_cast<const TFolderRow&>(*item).GetItem());
      values.emplace(item, fCursor.GetColumnValue(id));
    }
  }
  CustomSort(
      [&](TListItem* a, TListItem* b, LPARAM) {
        const auto& first = static_cast<const TFolderRow&>(*a);
        const auto& second = static_cast<const TFolderRow&>(*b);
        if (first.IsFolder() != second.IsFolder()) return first.IsFolder() ? -1 : 1;
        int order = fSortColumn > 0 ? CompareVariants(values[a], values[b]) : 0;
        if (order == 0) order = CompareLogical(a->GetStoredCaption(), b->GetStoredCaption());
        return fDescending ? -order : order;
      },
      0);
  for (int column = 0; column < Columns().GetCount(); ++column)
    Columns()[column]->SetSortMark(column != fSortColumn ? TListSortMark::None
                                   : fDescending         ? TListSortMark::Down
                                                         : TListSortMark::Up);
}
