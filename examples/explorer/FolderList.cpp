#include "FolderList.h"

#include <unordered_map>

#include "Pictures.h"
#include "oak/base/LogicalOrder.h"
#include "oak/namespace/Oak.Shell.Types.ColumnInfo.h"
#include "oak/namespace/OakItemIdList.h"

using namespace oak;

namespace {

/// Opens the focused row after the handler of the double click has returned: until then the list
/// still deals with the row under the mouse, which must not be one of another folder.
constexpr UINT OpenMessage = FirstPrivateMessage;

}  // namespace

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
  SetReadOnly(true);
  fCursor.SetShowErrorMessages(false);
}

void TFolderList::ShowFolder(const Ref<IItemIdList>& folder) {
  TFolderTrek probe;  // what can't be read must not empty the list
  probe.SetShowErrorMessages(false);
  probe.SetFolderIdList(folder);
  probe.GetShellFolder();
  fCursor.SetFolderIdList(folder);
  fSortColumn = 0;
  fDescending = false;
  MakeColumns();
  Items().BeginUpdate();
  Items().Clear();
  const TOakShellShowOptions shown{soShowFiles, soShowNethood, soShowRecycleBin};
  while (fCursor.Next()) {
    if (!fCursor.ShowObjectAccordingShowOptions(shown)) continue;
    auto row = std::make_unique<TFolderRow>(&Items(), fCursor.GetItemIdList(), fCursor.IsFolder());
    row->SetCaption(fCursor.GetShellObjectName(true));
    row->SetImageIndex(!row->IsFolder() ? pcFile : fCursor.IsDrive() ? pcDrive : pcFolder);
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
  for (int number = 0; number < mostColumns; ++number) {
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

Ref<IItemIdList> TFolderList::AbsoluteOf(const TFolderRow& row) const {
  return GetFolder()->Concat(row.GetItem());
}

void TFolderList::SelectObject(const Ref<IItemIdList>& item) {
  for (TListItem* const row : Items()) {
    if (!AbsoluteOf(static_cast<const TFolderRow&>(*row))->Equals(item, ilcDisplay)) continue;
    SetSelected(row);
    row->MakeVisible(false);
    return;
  }
}

void TFolderList::OpenFocused() {
  const auto* row = static_cast<const TFolderRow*>(GetSelected());
  if (row && OnOpen) OnOpen(*row);
}

void TFolderList::DblClick() {
  const TLifeGuard guard = GetLifeGuard();
  TCustomListView::DblClick();
  if (guard.IsAlive()) PostMessage(OpenMessage);
}

void TFolderList::WndProc(TMessage& message) {
  if (message.Msg == OpenMessage) return OpenFocused();
  TCustomListView::WndProc(message);
}

void TFolderList::KeyDown(std::uint16_t& key, TShiftState shift) {
  if (key == vkReturn && shift.IsEmpty()) {
    key = 0;
    return OpenFocused();
  }
  TCustomListView::KeyDown(key, shift);
}
