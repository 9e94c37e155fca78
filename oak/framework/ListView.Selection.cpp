// Selection, focus and the other states of rows; finding rows by state or text.
#include <utility>

#include "oak/framework/ControlScopes.h"
#include "oak/framework/ListView.h"

namespace oak {

// --- marking: states only, nobody is told ---------------------------------------------

void TCustomListView::Mark(int index, bool selected, TRange& changed) {
  TListItem* const item = fItems->At(index);
  if (item->GetSelected() == selected) return;
  item->fStates ^= TListItem::StateSelected;
  if (selected)
    fNoneBefore = fSelCount++ == 0 ? index : std::min(fNoneBefore, index);
  else
    --fSelCount;
  if ((item->fStates & TListItem::StateUntold) == 0) {
    item->fStates |= TListItem::StateUntold;
    ++fUntold;
  }
  changed.Add(index, index);
}

void TCustomListView::MarkRange(int first, int last, bool selected, TRange& changed) {
  first = std::max(first, selected ? 0 : fNoneBefore);
  last = std::min(last, fItems->GetCount() - 1);
  for (int i = first; i <= last && (selected || fSelCount > 0); ++i) Mark(i, selected, changed);
}

void TCustomListView::MarkOnly(int first, int last, TRange& changed) {
  int inside = 0;
  for (int i = first; i <= last; ++i) inside += fItems->At(i)->GetSelected() ? 1 : 0;
  const int count = fItems->GetCount();
  for (int i = fNoneBefore; i < count && fSelCount > inside; ++i) {
    if (i >= first && i <= last) i = last + 1;
    if (i < count) Mark(i, false, changed);
  }
  MarkRange(first, last, true, changed);
}

// --- telling --------------------------------------------------------------------------

void TCustomListView::SelectionMarked(const TRange& changed, bool tellPeer) {
  if (changed.IsEmpty()) return;
  const TLifeGuard guard = GetLifeGuard();
  if (tellPeer) StatesChanged(changed.First, changed.Last);
  if (guard.IsAlive()) TellSelection(changed);
}

// Handlers may remove, add and sort rows, change the selection and destroy the list. The marks are
// in the rows: whatever becomes of these, each that still is there is told of its last state. What
// a handler changes is told by the loop that called it.
void TCustomListView::TellSelection(TRange range) {
  if (fTelling) return;
  const TMemberScope telling(*this, fTelling, true);
  while (fUntold > 0) {
    unsigned version = fItems->fVersion;
    int count = fItems->GetCount();
    range.Last = std::min(range.Last, count - 1);
    for (int i = range.First; i <= range.Last && fUntold > 0; ++i) {
      TListItem* const item = fItems->At(i);
      if ((item->fStates & TListItem::StateUntold) == 0) continue;
      if (!TellRow(item)) return;
      if (fItems->fVersion == version) continue;
      version = fItems->fVersion;
      i = std::max(-1, i - std::max(0, count - fItems->GetCount()));
      count = fItems->GetCount();
      range.Last = count - 1;
    }
    range = {};
    range.Add(0, fItems->GetCount() - 1);
  }
}

// False if the list is gone.
bool TCustomListView::TellRow(TListItem* item) {
  item->fStates &= static_cast<std::uint8_t>(~TListItem::StateUntold);
  --fUntold;
  if (GetComponentState().Contains(csDestroying)) return true;
  const TLifeGuard guard = GetLifeGuard();
  const unsigned version = fItems->fVersion;
  Change(item, ctState);
  if (!guard.IsAlive()) return false;
  if (fItems->Holds(item, version)) DoSelectItem(item, item->GetSelected());
  return guard.IsAlive();
}

// --- rows -------------------------------------------------------------------------------

void TCustomListView::SetItemSelected(TListItem* item, bool value) {
  if (item->GetSelected() == value) return;
  if (!item->IsInList()) {
    item->fStates ^= TListItem::StateSelected;
    return;
  }
  const int index = item->GetIndex();
  TRange changed;
  if (value && !fMultiSelect)
    MarkOnly(index, index, changed);
  else
    Mark(index, value, changed);
  SelectionMarked(changed, true);
}

void TCustomListView::SetItemState(TListItem* item, std::uint8_t flag, bool value) {
  if (((item->fStates & flag) != 0) == value) return;
  item->fStates ^= flag;
  if (!item->IsInList()) return;
  TListItem* former = nullptr;
  if (flag == TListItem::StateDropTarget) {
    // There is one at a time.
    former = std::exchange(fDropTarget, value ? item : nullptr);
    if (former == item) former = nullptr;
    if (former) former->fStates ^= flag;
  }
  for (const TListItem* row : {former, item}) {
    if (!row || !fListPeer || fPending.Reset) continue;
    const int index = row->GetIndex();
    StatesChanged(index, index);
  }
  const TLifeGuard guard = GetLifeGuard();
  const unsigned version = fItems->fVersion;
  if (former) Change(former, ctState);
  if (guard.IsAlive() && fItems->Holds(item, version)) Change(item, ctState);
}

void TCustomListView::FocusItem(TListItem* item, bool tellPeer) {
  if (item == fItemFocused) return;
  TListItem* const former = std::exchange(fItemFocused, item);
  if (tellPeer && fListPeer && !fPending.Reset) {
    for (const TListItem* row : {former, item}) {
      const int index = row ? row->GetIndex() : -1;
      if (index >= 0) StatesChanged(index, index);
    }
  }
  const TLifeGuard guard = GetLifeGuard();
  const unsigned version = fItems->fVersion;
  if (former) Change(former, ctState);
  if (item && guard.IsAlive() && fItems->Holds(item, version)) Change(item, ctState);
}

// --- the list ---------------------------------------------------------------------------

TListItem* TCustomListView::GetSelected() const {
  if (fSelCount == 0) return nullptr;
  while (!fItems->At(fNoneBefore)->GetSelected()) ++fNoneBefore;
  return fItems->At(fNoneBefore);
}

void TCustomListView::SetSelected(TListItem* value) {
  if (!value) return ClearSelection();
  if (Items().IndexOf(value) < 0) return;
  const TLifeGuard guard = GetLifeGuard();
  const unsigned version = fItems->fVersion;
  FocusItem(value, true);
  if (!guard.IsAlive() || !fItems->Holds(value, version)) return;
  TRange changed;
  const int place = value->GetIndex();
  MarkOnly(place, place, changed);
  SelectionMarked(changed, true);
}

void TCustomListView::SetItemFocused(TListItem* value) {
  if (!value || Items().IndexOf(value) >= 0) FocusItem(value, true);
}

void TCustomListView::SelectAll() {
  if (!fMultiSelect) return;
  TRange changed;
  MarkRange(0, Items().GetCount() - 1, true, changed);
  SelectionMarked(changed, true);
}

void TCustomListView::ClearSelection() {
  TRange changed;
  MarkRange(0, Items().GetCount() - 1, false, changed);
  SelectionMarked(changed, true);
}

void TCustomListView::DeleteSelected() {
  if (fSelCount > 0) Items().DeleteIf([](const TListItem& item) { return item.GetSelected(); });
}

// --- finding ----------------------------------------------------------------------------

namespace {

bool HasStates(const TListItem& item, TItemStates states) {
  return (!states.Contains(isSelected) || item.GetSelected()) &&
         (!states.Contains(isCut) || item.GetCut()) &&
         (!states.Contains(isDropHilited) || item.GetDropTarget()) &&
         (!states.Contains(isFocused) || item.GetFocused());
}

}  // namespace

TListItem* TCustomListView::GetNextItem(TListItem* start, TSearchDirection direction,
                                        TItemStates states) const {
  const TListItems& items = Items();
  const bool backwards = direction == sdAbove || direction == sdLeft;
  if (states.Contains(isSelected) && fSelCount == 0) return nullptr;
  const int from = start ? items.IndexOf(start) : -1;
  if (backwards) {
    for (int i = (start ? from : items.GetCount()) - 1; i >= 0; --i)
      if (HasStates(*items.At(i), states)) return items.At(i);
    return nullptr;
  }
  const int skipped = states.Contains(isSelected) ? fNoneBefore : 0;
  for (int i = std::max(from + 1, skipped); i < items.GetCount(); ++i)
    if (HasStates(*items.At(i), states)) return items.At(i);
  return nullptr;
}

TListItem* TCustomListView::FindCaption(int startIndex, const TString& value, bool partial,
                                        bool inclusive, bool wrap) {
  const auto matches = [&](const TListItem& item) {
    const TString caption = item.GetCaption();
    return partial ? StartsText(value, caption) : SameText(value, caption);
  };
  const int start = std::max(-1, inclusive ? startIndex - 1 : startIndex);
  const TListItems& items = Items();
  for (int i = start + 1; i < items.GetCount(); ++i)
    if (matches(*items.At(i))) return items.At(i);
  for (int i = 0; wrap && i < std::min(start, items.GetCount()); ++i)
    if (matches(*items.At(i))) return items.At(i);
  return nullptr;
}

}  // namespace oak
