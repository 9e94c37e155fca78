// The list view itself: properties, window, geometry, and what rows and columns report.
#include "oak/framework/ListView.h"

#include <utility>

#include "oak/base/Exceptions.h"
#include "oak/framework/Bitmap.h"
#include "oak/framework/ImageList.h"

namespace oak {
namespace {

std::size_t ImagesAt(TListImages which) { return static_cast<std::size_t>(which); }

// Between a text and the edges of its cell, both sides together, at 96 pixels per inch.
constexpr int CellPadding = 12;
constexpr int SortMarkWidth = 14;

}  // namespace

TCustomListView::TCustomListView(TComponent* owner) : TWinControl(owner) {
  SetBounds(0, 0, 250, 150);
  SetTabStop(true);
  SetBorderStyle(bsSingle);
  SetParentColor(false);
  SetColor(clWindow);
}

TCustomListView::~TCustomListView() {
  BeginDestroy();
  fItems.reset();
  fColumns.reset();
}

// --- collections -----------------------------------------------------------------

TListItems& TCustomListView::MakeItems() { return *(fItems = CreateListItems()); }
TListColumns& TCustomListView::MakeColumns() { return *(fColumns = CreateListColumns()); }

std::unique_ptr<TListItems> TCustomListView::CreateListItems() {
  return std::make_unique<TListItems>(this);
}

std::unique_ptr<TListColumns> TCustomListView::CreateListColumns() {
  return std::make_unique<TListColumns>(this);
}

std::unique_ptr<TListItem> TCustomListView::CreateListItem() {
  TListItems* const items = &Items();
  const auto create = OnCreateItem;  // a copy: it may destroy the list
  std::unique_ptr<TListItem> item = create ? create(this) : nullptr;
  return item ? std::move(item) : std::make_unique<TListItem>(items);
}

std::unique_ptr<TListColumn> TCustomListView::CreateListColumn() {
  return std::make_unique<TListColumn>(&Columns());
}

// --- properties ------------------------------------------------------------------

template <class T>
void TCustomListView::SetStyleFlag(T& field, T value) {
  if (field == value) return;
  field = value;
  if (fListPeer) fListPeer->SetViewStyle();
}

void TCustomListView::SetViewStyle(TViewStyle value) {
  SetStyleFlag(fViewStyle, value);
  if (fListPeer && fViewStyle == vsReport) FitWaitingColumns();
}

void TCustomListView::SetMultiSelect(bool value) {
  if (value == fMultiSelect) return;
  const TLifeGuard guard = GetLifeGuard();
  TListItem* const first = GetSelected();
  if (!value && fSelCount > 1) {
    TRange changed;
    const int index = first->GetIndex();
    MarkOnly(index, index, changed);
    SelectionMarked(changed, true);
  }
  if (guard.IsAlive()) SetStyleFlag(fMultiSelect, value);
}

void TCustomListView::SetReadOnly(bool value) { SetStyleFlag(fReadOnly, value); }
void TCustomListView::SetCheckboxes(bool value) { SetStyleFlag(fCheckboxes, value); }
void TCustomListView::SetRowSelect(bool value) { SetStyleFlag(fRowSelect, value); }
void TCustomListView::SetGridLines(bool value) { SetStyleFlag(fGridLines, value); }
void TCustomListView::SetHideSelection(bool value) { SetStyleFlag(fHideSelection, value); }
void TCustomListView::SetColumnClick(bool value) { SetStyleFlag(fColumnClick, value); }
void TCustomListView::SetFullDrag(bool value) { SetStyleFlag(fFullDrag, value); }
void TCustomListView::SetShowColumnHeaders(bool value) { SetStyleFlag(fShowColumnHeaders, value); }
void TCustomListView::SetHotTrack(bool value) { SetStyleFlag(fHotTrack, value); }
void TCustomListView::SetAutoArrange(bool value) { SetStyleFlag(fAutoArrange, value); }

void TCustomListView::SetImages(TListImages which, TImageList* value) {
  TImageList*& field = fImages[ImagesAt(which)];
  if (field == value) return;
  TImageList* const former = std::exchange(field, value);
  auto& link = fImageLinks[ImagesAt(which)];
  link.reset();
  if (former && std::find(fImages.begin(), fImages.end(), former) == fImages.end())
    former->RemoveFreeNotification(this);
  if (value) {
    value->FreeNotification(this);
    link = std::make_unique<TChangeLink>();
    link->OnChange = [this, which](TObject*) {
      if (fListPeer) fListPeer->ImagesChanged(which);
    };
    value->RegisterChanges(link.get());
  }
  if (fListPeer) fListPeer->ImagesChanged(which);
}

void TCustomListView::SetSmallImages(TImageList* value) { SetImages(TListImages::Small, value); }
void TCustomListView::SetLargeImages(TImageList* value) { SetImages(TListImages::Large, value); }
void TCustomListView::SetStateImages(TImageList* value) { SetImages(TListImages::State, value); }

void TCustomListView::Notification(TComponent* component, TOperation operation) {
  TWinControl::Notification(component, operation);
  if (operation != opRemove) return;
  for (std::size_t i = 0; i < fImages.size(); ++i)
    if (fImages[i] == component) SetImages(static_cast<TListImages>(i), nullptr);
}

void TCustomListView::SetIconSpacingPixels(int width, int height) {
  if (width < 0 || height < 0) width = height = -1;
  fIconSpacing = {width, height};
  if (fListPeer) fListPeer->SetIconSpacing(width, height);
}

void TCustomListView::SetDefaultColumnWidthPixels(int width) {
  fDefaultColumnWidth = std::max(-1, width);
  if (fListPeer) fListPeer->SetDefaultColumnWidth(fDefaultColumnWidth);
}

void TCustomListView::SetBackgroundBitmap(const TBitmap* bitmap, bool tiled, int xPercent,
                                          int yPercent) {
  std::unique_ptr<TBitmap> copy;
  if (bitmap && !bitmap->IsEmpty()) {
    copy = std::make_unique<TBitmap>();
    copy->Assign(bitmap);
  }
  fBackground = std::move(copy);
  fBackgroundTiled = tiled;
  fBackgroundOffset = {std::clamp(xPercent, 0, 100), std::clamp(yPercent, 0, 100)};
  if (fListPeer) fListPeer->SetBackground();
}

void TCustomListView::ChangeScale(int m, int d) {
  TWinControl::ChangeScale(m, d);
  if (m == d || d == 0) return;
  if (fColumns) {
    fColumns->BeginUpdate();
    for (int i = 0; i < fColumns->GetCount(); ++i) {
      TListColumn& column = *fColumns->GetColumn(i);
      column.fMinWidth = MulDiv(column.fMinWidth, m, d);
      // A limit of one pixel keeps a hidden column closed.
      if (column.fMaxWidth > 1) column.fMaxWidth = MulDiv(column.fMaxWidth, m, d);
      if (column.fWidth > 0) column.SetWidth(MulDiv(column.fWidth, m, d));
    }
    fColumns->EndUpdate();
  }
  if (fIconSpacing.Width > 0)
    SetIconSpacingPixels(MulDiv(fIconSpacing.Width, m, d), MulDiv(fIconSpacing.Height, m, d));
  if (fDefaultColumnWidth > 0) SetDefaultColumnWidthPixels(MulDiv(fDefaultColumnWidth, m, d));
}

// --- the window ------------------------------------------------------------------

std::unique_ptr<IControlPeer> TCustomListView::CreatePeer() {
  return WidgetSet().CreateListView(*this);
}

void TCustomListView::CreateWnd() {
  const TLifeGuard guard = GetLifeGuard();
  TWinControl::CreateWnd();
  if (!guard.IsAlive()) return;
  fListPeer = dynamic_cast<IListViewPeer*>(GetPeer());
  if (!fListPeer) return;
  PushStateToPeer();
  FitWaitingColumns();
}

void TCustomListView::PushStateToPeer() {
  fPending = {};
  fListPeer->SetViewStyle();
  for (const auto which : {TListImages::Large, TListImages::Small, TListImages::State})
    if (fImages[ImagesAt(which)]) fListPeer->ImagesChanged(which);
  if (fIconSpacing.Width >= 0) fListPeer->SetIconSpacing(fIconSpacing.Width, fIconSpacing.Height);
  if (fDefaultColumnWidth >= 0) fListPeer->SetDefaultColumnWidth(fDefaultColumnWidth);
  if (fBackground) fListPeer->SetBackground();
  fListPeer->ColumnsChanged();
  if (Items().GetCount() > 0) fListPeer->ItemsReset();
  if (Items().IsUpdating()) fListPeer->BeginUpdate();
  // Down to the end and up again puts the row to the top.
  const int top = std::min(std::exchange(fTopIndex, 0), Items().GetCount() - 1);
  if (top > 0) {
    fListPeer->MakeVisible(Items().GetCount() - 1, false);
    fListPeer->MakeVisible(top, false);
  }
}

void TCustomListView::DestroyWnd() {
  if (fListPeer) {
    fTopIndex = fListPeer->GetTopIndex();
    fListPeer = nullptr;
    if (TListItem* const edited = std::exchange(fEdited, nullptr)) {
      const TLifeGuard guard = GetLifeGuard();
      if (!GetComponentState().Contains(csDestroying)) CancelEdit(edited);
      if (!guard.IsAlive()) return;
    }
  }
  fPending = {};
  TWinControl::DestroyWnd();
}

bool TCustomListView::WantsKey(std::uint16_t key, TShiftState shift) {
  if (IsEditing()) return true;
  return (key >= vkLeft && key <= vkDown) || TWinControl::WantsKey(key, shift);
}

// --- what rows and columns report --------------------------------------------------

void TCustomListView::ItemAdded(TListItem* item, int index) {
  item->fStates &= static_cast<std::uint8_t>(~(TListItem::StateUntold | TListItem::StateDoomed));
  if (item->GetSelected()) {
    fNoneBefore = fSelCount++ == 0 ? index : std::min(fNoneBefore, index);
  }
  if (item->GetDropTarget()) {
    if (fDropTarget) fDropTarget->fStates ^= TListItem::StateDropTarget;
    fDropTarget = item;
  }
  if (fListPeer && fItems->IsUpdating()) fPending.Reset = true;
  if (fListPeer && !fItems->IsUpdating()) {
    const TLifeGuard guard = GetLifeGuard();
    const unsigned version = fItems->fVersion;
    fListPeer->ItemsInserted(index, 1);
    if (!guard.IsAlive() || !fItems->Holds(item, version)) return;
  }
  InsertItem(item);
}

// A row is out of the list: nothing may refer to it any more.
void TCustomListView::Forget(TListItem* item, int nextFocus) noexcept {
  if (item->GetSelected()) --fSelCount;
  if ((item->fStates & TListItem::StateUntold) != 0) --fUntold;
  if (fItemFocused == item)
    fItemFocused = fItems->GetItem(std::min(nextFocus, fItems->GetCount() - 1));
  if (fDropTarget == item) fDropTarget = nullptr;
  if (fEdited == item) fEdited = nullptr;
  if (fImageRequest == item) fImageRequest = nullptr;
}

// Removed were `count` rows from `index` on: one after the other if `together`.
void TCustomListView::ItemsLeft(int index, int count, bool together) {
  if (index < fNoneBefore) fNoneBefore = together && count == 1 ? fNoneBefore - 1 : index;
  if (!fListPeer) return;
  const TLifeGuard guard = GetLifeGuard();
  if (!fEdited && IsEditing()) fListPeer->EndEdit(true);
  if (!guard.IsAlive() || !fListPeer) return;
  if (fItems->IsUpdating())
    fPending.Reset = true;
  else if (together)
    fListPeer->ItemsDeleted(index, count);
  else
    fListPeer->ItemsReset();
}

void TCustomListView::ItemChanged(TListItem* item, TItemChange change) {
  if (!item->IsInList() || item == fImageRequest) return;
  LookChanged(item);
  Change(item, change);
}

void TCustomListView::LookChanged(const TListItem* item) {
  if (!fListPeer || fPending.Reset) return;
  const int index = item->GetIndex();
  if (index >= 0) RowsChanged(index, index);
}

void TCustomListView::RowsReset() {
  if (!fListPeer) return;
  if (fItems->IsUpdating())
    fPending.Reset = true;
  else
    fListPeer->ItemsReset();
}

void TCustomListView::RowsChanged(int first, int last) {
  if (!fListPeer) return;
  if (Items().IsUpdating())
    fPending.Rows.Add(first, last);
  else
    fListPeer->ItemsChanged(first, last);
}

void TCustomListView::StatesChanged(int first, int last) {
  if (!fListPeer) return;
  if (Items().IsUpdating())
    fPending.States.Add(first, last);
  else
    fListPeer->ItemStatesChanged(first, last);
}

void TCustomListView::UpdateBegun() {
  if (fListPeer) fListPeer->BeginUpdate();
}

void TCustomListView::UpdateEnded() {
  const TPending pending = std::exchange(fPending, {});
  const TLifeGuard guard = GetLifeGuard();
  const auto shown = [&] { return guard.IsAlive() && fListPeer; };
  if (shown() && pending.Reset) fListPeer->ItemsReset();
  if (shown() && !pending.Reset && !pending.Rows.IsEmpty())
    fListPeer->ItemsChanged(pending.Rows.First, pending.Rows.Last);
  if (shown() && !pending.Reset && !pending.States.IsEmpty())
    fListPeer->ItemStatesChanged(pending.States.First, pending.States.Last);
  if (shown()) fListPeer->EndUpdate();
}

void TCustomListView::ColumnsChanged() {
  if (!fListPeer) return;
  fListPeer->ColumnsChanged();
  FitWaitingColumns();
}

void TCustomListView::ColumnWidthChanged(int column) {
  if (fListPeer) fListPeer->ColumnWidthChanged(column);
}

// --- geometry --------------------------------------------------------------------

TListItem* TCustomListView::GetItemAt(int x, int y) const {
  const TListHitTest hit = GetHitTest(x, y);
  return hit.Flags.Contains(htNowhere) ? nullptr : Items().GetItem(hit.Index);
}

TListHitTest TCustomListView::GetHitTest(int x, int y) const {
  return fListPeer ? fListPeer->HitTest({x, y}) : TListHitTest();
}

TListItem* TCustomListView::GetTopItem() const {
  return fListPeer ? Items().GetItem(fListPeer->GetTopIndex()) : nullptr;
}

int TCustomListView::GetVisibleRowCount() const {
  return fListPeer ? fListPeer->GetVisibleRowCount() : 0;
}

void TCustomListView::Scroll(int dx, int dy) {
  if (fListPeer) fListPeer->Scroll(dx, dy);
}

void TCustomListView::UpdateItems(int first, int last) {
  first = std::max(0, first);
  last = std::min(last, Items().GetCount() - 1);
  if (first <= last) RowsChanged(first, last);
}

void TCustomListView::Arrange(TListArrangement) {
  if (fListPeer) fListPeer->Arrange();
}

int TCustomListView::GetStringWidth(const TString& text) const {
  return fListPeer ? fListPeer->GetStringWidth(text) : 0;
}

HWND TCustomListView::GetHeaderHandle() const {
  return fListPeer ? fListPeer->GetHeaderHandle() : nullptr;
}

TRect TCustomListView::GetHeaderRect() const {
  return fListPeer ? fListPeer->GetHeaderRect() : TRect();
}

// The texts of the visible rows are asked for, which may change anything.
void TCustomListView::FitColumn(int column, bool withCaption) {
  const TLifeGuard guard = GetLifeGuard();
  const TListColumn* const fitted = Columns().GetColumn(column);
  const bool label = column == Columns().GetLabelColumn();
  const TImageList* const images = GetSmallImages();
  const TImageList* const states = GetStateImages();
  const int padding = ScaledPixels(CellPadding);
  const int image = images ? images->GetWidth() : 0;
  int state = states ? states->GetWidth() : 0;
  if (!states && fCheckboxes) state = ScaledPixels(16);
  const int before = label ? image + state : 0;

  int width = withCaption ? fListPeer->GetStringWidth(fitted->GetCaption()) + padding : 0;
  if (withCaption && fitted->GetSortMark() != TListSortMark::None)
    width += ScaledPixels(SortMarkWidth);
  const int top = fListPeer->GetTopIndex();
  const int end = top + fListPeer->GetVisibleRowCount() + 1;
  for (int row = std::max(0, top); row < end && row < Items().GetCount(); ++row) {
    const TString text = HandleGetText(row, column);
    if (!guard.IsAlive() || !fListPeer) return;
    const TListItem* const item = Items().GetItem(row);
    const int indent = label && item ? item->GetIndent() * image : 0;
    width = std::max(width, fListPeer->GetStringWidth(text) + padding + before + indent);
  }
  if (column < Columns().GetCount() && Columns().GetColumn(column) == fitted)
    Columns().GetColumn(column)->SetWidth(width);
}

// Columns whose width was to be measured before there was a window.
void TCustomListView::FitWaitingColumns() {
  const TLifeGuard guard = GetLifeGuard();
  for (int i = 0; guard.IsAlive() && fListPeer && fViewStyle == vsReport; ++i) {
    if (i >= Columns().GetCount()) return;
    const int width = Columns().GetColumn(i)->GetWidth();
    if (width < 0) FitColumn(i, width != TListColumn::FitTexts);
  }
}

void TCustomListView::SizeColumnsToFit() {
  const TLifeGuard guard = GetLifeGuard();
  for (int i = 0; guard.IsAlive() && fListPeer && fViewStyle == vsReport; ++i) {
    if (i >= Columns().GetCount()) return;
    if (Columns().GetColumn(i)->GetWidth() != 0) FitColumn(i, true);
  }
}

// --- editing -----------------------------------------------------------------------

bool TCustomListView::IsEditing() const { return GetEditControl() != nullptr; }

HWND TCustomListView::GetEditControl() const {
  return fListPeer ? fListPeer->GetEditHandle() : nullptr;
}

TString TCustomListView::GetEditText() const {
  return fListPeer ? fListPeer->GetEditText() : TString();
}

void TCustomListView::SetEditText(const TString& text) {
  if (fListPeer) fListPeer->SetEditText(text);
}

void TCustomListView::SelectEditText(int start, int end) {
  if (fListPeer) fListPeer->SelectEditText(start, end);
}

void TCustomListView::EndEditing(bool cancel) {
  if (fListPeer) fListPeer->EndEdit(cancel);
}

}  // namespace oak
