#include "oak/framework/ListColumns.h"

#include <algorithm>

#include "oak/framework/ListView.h"

namespace oak {
namespace {

TCustomListView* ViewOfColumns(const TCollection* columns) {
  const auto* of = dynamic_cast<const TListColumns*>(columns);
  return of ? of->GetOwnerView() : nullptr;
}

}  // namespace

// --- TListColumn -------------------------------------------------------------------

TListColumn::TListColumn(TCollection*) {}

template <class T>
void TListColumn::Set(T& field, T value) {
  if (field == value) return;
  field = std::move(value);
  Changed(false);
}

int TListColumn::Limited(int width) const noexcept {
  if (fMaxWidth > 0) width = std::min(width, fMaxWidth);
  return std::max({0, width, fMinWidth});
}

void TListColumn::SetCaption(TString value) { Set(fCaption, std::move(value)); }
void TListColumn::SetAlignment(TAlignment value) { Set(fAlignment, value); }
void TListColumn::SetImageIndex(int value) { Set(fImageIndex, value); }
void TListColumn::SetSortMark(TListSortMark value) { Set(fSortMark, value); }
void TListColumn::SetTextIndex(int value) { Set(fTextIndex, std::max(0, value)); }

void TListColumn::SetWidth(int value) {
  TCustomListView* const view = ViewOfColumns(GetCollection());
  if (value < 0 && view && view->GetListPeer() && view->GetViewStyle() == vsReport)
    return view->FitColumn(GetIndex(), value != FitTexts);
  const int width = value < 0 ? std::max(value, FitTextsAndCaption + 0) : Limited(value);
  if (width == fWidth) return;
  fWidth = width;
  if (view && !GetCollection()->IsUpdating())
    view->ColumnWidthChanged(GetIndex());
  else
    Changed(false);
}

void TListColumn::SetMinWidth(int value) {
  fMinWidth = std::max(0, value);
  if (fWidth >= 0) SetWidth(fWidth);
}

void TListColumn::SetMaxWidth(int value) {
  fMaxWidth = std::max(0, value);
  if (fWidth >= 0) SetWidth(fWidth);
}

void TListColumn::Assign(const TPersistent* source) {
  const auto* other = dynamic_cast<const TListColumn*>(source);
  if (!other) return TCollectionItem::Assign(source);
  fCaption = other->fCaption;
  fWidth = other->fWidth;
  fMinWidth = other->fMinWidth;
  fMaxWidth = other->fMaxWidth;
  fImageIndex = other->fImageIndex;
  fAlignment = other->fAlignment;
  fSortMark = other->fSortMark;
  Changed(false);
}

// --- TListColumns ------------------------------------------------------------------

TListColumns::TListColumns(TCustomListView* owner) : fOwner(owner) {}
TListColumns::~TListColumns() = default;
TPersistent* TListColumns::GetOwner() const { return fOwner; }

std::unique_ptr<TCollectionItem> TListColumns::CreateItem() { return fOwner->CreateListColumn(); }

int TListColumns::GetLabelColumn() const noexcept {
  for (int i = 0; i < GetCount(); ++i)
    if (GetColumn(i)->fTextIndex == 0) return i;
  return 0;
}

void TListColumns::Update(TCollectionItem*) { fOwner->ColumnsChanged(); }

void TListColumns::Notify(TCollectionItem* item, TCollectionNotification action) {
  auto* const column = static_cast<TListColumn*>(item);
  if (action == cnAdded) {
    column->fTextIndex = GetCount() - 1;
    return;
  }
  for (int i = 0; i < GetCount(); ++i) {
    TListColumn* const other = GetColumn(i);
    if (other->fTextIndex > column->fTextIndex) --other->fTextIndex;
  }
}

}  // namespace oak
