// What the peer asks and reports, and what the list does about it unless a descendant knows better.
#include <utility>

#include "oak/framework/Bitmap.h"
#include "oak/framework/Events.h"
#include "oak/framework/ImageList.h"
#include "oak/framework/ListView.h"

namespace oak {

// --- what to draw -------------------------------------------------------------------------

TString TCustomListView::HandleGetText(int index, int column) {
  TListItem* const item = Items().GetItem(index);
  if (!item) return {};
  return fViewStyle == vsReport ? GetColumnText(item, column) : item->GetCaption();
}

TString TCustomListView::GetColumnText(TListItem* item, int column) {
  const bool known = column >= 0 && column < Columns().GetCount();
  const int text = known ? Columns().GetColumn(column)->GetTextIndex() : column;
  return text <= 0 ? item->GetCaption() : item->GetSubItems().Get(text - 1);
}

int TCustomListView::HandleGetImage(int index) {
  TListItem* const item = Items().GetItem(index);
  if (!item) return -1;
  const TLifeGuard guard = GetLifeGuard();
  const unsigned version = fItems->fVersion;
  const TListItem* const former = std::exchange(fImageRequest, item);
  try {
    GetImageIndex(item);
  } catch (...) {
    if (guard.IsAlive()) fImageRequest = nullptr;
    throw;
  }
  if (!guard.IsAlive()) return -1;
  const bool held = fItems->Holds(item, version);
  fImageRequest = held ? former : nullptr;
  return held ? item->GetImageIndex() : -1;
}

void TCustomListView::GetImageIndex(TListItem* item) { FireEvent(OnGetImageIndex, this, item); }

TItemStates TCustomListView::HandleGetStates(int index) const {
  TItemStates states;
  const TListItem* const item = Items().GetItem(index);
  if (!item) return states;
  if (item->GetSelected()) states.Include(isSelected);
  if (item->GetCut()) states.Include(isCut);
  if (item->GetDropTarget()) states.Include(isDropHilited);
  if (item == fItemFocused) states.Include(isFocused);
  return states;
}

TColor TCustomListView::HandleTextColor(int index, TColor standard) {
  TListItem* const item = Items().GetItem(index);
  return item ? GetItemTextColor(item, standard) : standard;
}

// --- selection and focus --------------------------------------------------------------------

void TCustomListView::HandleSelectRange(int first, int last, bool selected) {
  first = std::max(0, first);
  last = std::min(last, Items().GetCount() - 1);
  if (first > last) return;
  RunFenced(*this, [&] {
    TRange changed;
    if (selected && !fMultiSelect)
      MarkOnly(last, last, changed);
    else
      MarkRange(first, last, selected, changed);
    SelectionMarked(changed, false);
  });
}

void TCustomListView::HandleSelectOnly(int first, int last) {
  first = std::max(0, first);
  last = std::min(last, Items().GetCount() - 1);
  RunFenced(*this, [&] {
    TRange changed;
    if (first > last)
      MarkRange(0, Items().GetCount() - 1, false, changed);
    else
      MarkOnly(fMultiSelect ? first : last, last, changed);
    SelectionMarked(changed, false);
  });
}

void TCustomListView::HandleFocusItem(int index) {
  RunFenced(*this, [&] { FocusItem(Items().GetItem(index), false); });
}

void TCustomListView::Change(TListItem* item, TItemChange change) {
  FireEvent(OnChange, this, item, change);
}

void TCustomListView::DoSelectItem(TListItem* item, bool selected) {
  FireEvent(OnSelectItem, this, item, selected);
}

void TCustomListView::InsertItem(TListItem* item) { FireEvent(OnInsert, this, item); }

void TCustomListView::DeleteItem(TListItem* item) { FireEvent(OnDeletion, this, item); }

void TCustomListView::HandleToggleCheck(int index) {
  TListItem* const item = Items().GetItem(index);
  if (!item || !fCheckboxes || GetStateImages()) return;
  RunFenced(*this, [&] { item->SetChecked(!item->GetChecked()); });
}

int TCustomListView::HandleIncrementalSearch(const TString& text, int start) {
  const TLifeGuard guard = GetLifeGuard();
  const int found =
      RunFenced(*this, -1, [&] { return IncrementalSearch(text, std::max(0, start)); });
  return guard.IsAlive() && Items().GetItem(found) ? found : -1;
}

int TCustomListView::IncrementalSearch(const TString& text, int start) {
  const TListItem* const found = FindCaption(start, text, true, true, true);
  return found ? found->GetIndex() : -1;
}

// --- columns --------------------------------------------------------------------------------

namespace {

TListColumn* ColumnOrNil(TListColumns& columns, int index) {
  return index >= 0 && index < columns.GetCount() ? columns.GetColumn(index) : nullptr;
}

}  // namespace

void TCustomListView::HandleColumnClick(int column) {
  TListColumn* const clicked = ColumnOrNil(Columns(), column);
  if (clicked && fColumnClick) RunFenced(*this, [&] { ColClick(clicked); });
}

void TCustomListView::ColClick(TListColumn* column) { FireEvent(OnColumnClick, this, column); }

void TCustomListView::HandleColumnRightClick(int column, TPoint point) {
  RunFenced(*this, [&] { ColRightClick(ColumnOrNil(Columns(), column), point); });
}

void TCustomListView::ColRightClick(TListColumn* column, TPoint point) {
  FireEvent(OnColumnRightClick, this, column, point);
}

void TCustomListView::HandleColumnWidth(int column, int width, bool finished) {
  TListColumn* const sized = ColumnOrNil(Columns(), column);
  if (!sized) return;
  sized->fWidth = sized->Limited(width);
  RunFenced(*this, [&] { ColResized(column, finished); });
}

void TCustomListView::ColResized(int, bool) {}

bool TCustomListView::HandleColumnDragging(int from, int to, int x) {
  return fFullDrag && ColumnOrNil(Columns(), from) && ColumnOrNil(Columns(), to) &&
         RunFenced(*this, false, [&] { return CanDragColumn(from, to, x); });
}

bool TCustomListView::CanDragColumn(int, int, int) { return true; }

void TCustomListView::HandleColumnDragged(int from, int to) {
  TListColumn* const dragged = ColumnOrNil(Columns(), from);
  if (!dragged || !ColumnOrNil(Columns(), to)) return;
  const TLifeGuard guard = GetLifeGuard();
  dragged->SetIndex(to);
  if (guard.IsAlive()) RunFenced(*this, [&] { ColDragged(from, to); });
}

void TCustomListView::ColDragged(int, int) { FireEvent(OnColumnDragged, this); }

// --- editing ----------------------------------------------------------------------------------

bool TCustomListView::HandleBeginEdit(int index) {
  TListItem* const item = Items().GetItem(index);
  if (!item || fEdited) return false;
  const TLifeGuard guard = GetLifeGuard();
  const unsigned version = fItems->fVersion;
  const bool allowed = RunFenced(*this, false, [&] { return CanEdit(item); });
  if (!allowed || !guard.IsAlive() || !fItems->Holds(item, version)) return false;
  fEdited = item;
  return true;
}

bool TCustomListView::CanEdit(TListItem* item) {
  bool allow = !GetReadOnly();
  if (allow) FireEvent(OnEditing, this, item, allow);
  return allow;
}

bool TCustomListView::HandleEndEdit(std::optional<TString> text) {
  TListItem* const item = std::exchange(fEdited, nullptr);
  if (!item) return false;
  const TLifeGuard guard = GetLifeGuard();
  const unsigned version = fItems->fVersion;
  RunFenced(*this, [&] { text ? Edit(item, *text) : CancelEdit(item); });
  if (!text) return false;
  return guard.IsAlive() && fItems->Holds(item, version);
}

void TCustomListView::Edit(TListItem* item, const TString& text) {
  TString value = text;
  if (OnEdited) {
    const TLifeGuard guard = GetLifeGuard();
    const unsigned version = fItems->fVersion;
    FireEvent(OnEdited, this, item, value);
    if (!guard.IsAlive() || !fItems->Holds(item, version)) return;
  }
  item->SetCaption(std::move(value));
}

void TCustomListView::CancelEdit(TListItem*) {}

// --- drag -------------------------------------------------------------------------------------

void TCustomListView::HandleBeginDrag(TMouseButton button) {
  const TLifeGuard guard = GetLifeGuard();
  RunFenced(*this, [&] { DoBeginDrag(button); });
  if (!guard.IsAlive()) return;
  // The release of the button went to the drag, or is no click.
  ExcludeState(csLButtonDown);
  ExcludeState(csClicked);
}

void TCustomListView::DoBeginDrag(TMouseButton) {}

std::unique_ptr<TBitmap> TCustomListView::GetDragImage(TPoint& hotSpot) {
  const TImageList* const images = fViewStyle == vsIcon ? GetLargeImages() : GetSmallImages();
  TListItem* item = GetItemFocused();
  if (!item || !item->GetSelected()) item = GetSelected();
  if (!images || !item) return nullptr;
  auto bitmap = std::make_unique<TBitmap>();
  if (!images->GetRendered(item->GetImageIndex(), item->GetOverlayIndex() + 1, TImageState::Ghosted,
                           *bitmap))
    return nullptr;
  hotSpot = {bitmap->GetWidth() / 2, bitmap->GetHeight() / 2};
  return bitmap;
}

// --- custom drawing -----------------------------------------------------------------------------

bool TCustomListView::HandleCustomDraw(TCanvas& canvas, const TRect& rect, TCustomDrawStage stage) {
  return !IsCustomDrawn(dtControl, stage) || CustomDraw(canvas, rect, stage);
}

bool TCustomListView::HandleCustomDrawItem(TCanvas& canvas, int index, TCustomDrawState state,
                                           TCustomDrawStage stage) {
  if (!IsCustomDrawn(dtItem, stage)) return true;
  TListItem* const item = Items().GetItem(index);
  return !item || CustomDrawItem(canvas, item, state, stage);
}

bool TCustomListView::HandleCustomDrawSubItem(TCanvas& canvas, int index, int column,
                                              TCustomDrawState state, TCustomDrawStage stage) {
  if (!IsCustomDrawn(dtSubItem, stage)) return true;
  TListItem* const item = Items().GetItem(index);
  return !item || CustomDrawSubItem(canvas, item, column, state, stage);
}

bool TCustomListView::IsCustomDrawn(TCustomDrawTarget target, TCustomDrawStage stage) {
  return target == dtItem && (stage == cdPrePaint || stage == cdPostPaint) &&
         OnAdvancedCustomDrawItem;
}

bool TCustomListView::CustomDraw(TCanvas&, const TRect&, TCustomDrawStage) { return true; }

bool TCustomListView::CustomDrawItem(TCanvas& canvas, TListItem* item, TCustomDrawState state,
                                     TCustomDrawStage stage) {
  bool defaultDraw = true;
  FireEvent(OnAdvancedCustomDrawItem, this, item, state, stage, canvas, defaultDraw);
  return defaultDraw;
}

bool TCustomListView::CustomDrawSubItem(TCanvas&, TListItem*, int, TCustomDrawState,
                                        TCustomDrawStage) {
  return true;
}

}  // namespace oak
