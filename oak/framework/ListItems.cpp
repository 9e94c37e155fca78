#include "oak/framework/ListItems.h"

#include <algorithm>

#include "oak/base/Exceptions.h"
#include "oak/framework/ListView.h"

namespace oak {
namespace {

// How far a search for a row may be turned into numbers for all rows on its way.
constexpr int NearRows = 256;

std::ptrdiff_t RowOffset(int index) noexcept { return static_cast<std::ptrdiff_t>(index); }

}  // namespace

// --- TListSubItems ---------------------------------------------------------------

const TString& TListSubItems::Get(int index) const noexcept {
  static const TString none;
  return Has(index) ? fItems[static_cast<std::size_t>(index)] : none;
}

void TListSubItems::Put(int index, TString text) {
  if (Has(index)) fItems[static_cast<std::size_t>(index)] = std::move(text);
}

int TListSubItems::Add(TString text) {
  fItems.push_back(std::move(text));
  return GetCount() - 1;
}

void TListSubItems::Insert(int index, TString text) {
  if (index < 0 || index > GetCount())
    throw EArgumentException(u"There is no sub item " + IntToStr(index) + u".");
  fItems.insert(fItems.begin() + RowOffset(index), std::move(text));
}

void TListSubItems::Delete(int index) {
  if (Has(index)) fItems.erase(fItems.begin() + RowOffset(index));
}

void TListSubItems::Clear() noexcept { std::vector<TString>().swap(fItems); }

int TListSubItems::IndexOf(TStringView text) const noexcept {
  const auto found = std::find(fItems.begin(), fItems.end(), text);
  return found == fItems.end() ? -1 : static_cast<int>(found - fItems.begin());
}

// --- TListItem ---------------------------------------------------------------------

TListItem::~TListItem() {
  if (IsInList()) fOwner->Forget(this);
}

TCustomListView* TListItem::GetListView() const noexcept { return fOwner->GetOwner(); }
int TListItem::GetIndex() const { return fOwner->IndexOf(this); }
void TListItem::Delete() { fOwner->Delete(GetIndex()); }

void TListItem::SetCaption(TString value) {
  if (value == fCaption) return;
  fCaption = std::move(value);
  GetListView()->ItemChanged(this, ctText);
}

void TListItem::SubItemsChanged() { GetListView()->ItemChanged(this, ctText); }

void TListItem::SetImageIndex(int value) {
  if (value == fImageIndex) return;
  fImageIndex = value;
  GetListView()->ItemChanged(this, ctImage);
}

void TListItem::SetSmall(std::int16_t& field, int value) {
  const auto narrow = static_cast<std::int16_t>(std::clamp(value, -1, INT16_MAX + 0));
  if (narrow == field) return;
  field = narrow;
  GetListView()->ItemChanged(this, ctImage);
}

void TListItem::SetOverlayIndex(int value) { SetSmall(fOverlayIndex, value); }
void TListItem::SetStateIndex(int value) { SetSmall(fStateIndex, value); }
void TListItem::SetIndent(int value) { SetSmall(fIndent, std::max(0, value)); }

void TListItem::SetSelected(bool value) { GetListView()->SetItemSelected(this, value); }
bool TListItem::GetFocused() const noexcept { return GetListView()->GetItemFocused() == this; }

void TListItem::SetFocused(bool value) {
  if (value)
    GetListView()->SetItemFocused(this);
  else if (GetFocused())
    GetListView()->SetItemFocused(nullptr);
}

void TListItem::SetCut(bool value) { GetListView()->SetItemState(this, StateCut, value); }
void TListItem::SetDropTarget(bool value) {
  GetListView()->SetItemState(this, StateDropTarget, value);
}
void TListItem::SetChecked(bool value) { GetListView()->SetItemState(this, StateChecked, value); }

TRect TListItem::DisplayRect(TDisplayCode code) const {
  IListViewPeer* const peer = GetListView()->GetListPeer();
  const int index = GetIndex();
  return peer && index >= 0 ? peer->GetItemRect(index, code) : TRect();
}

void TListItem::MakeVisible(bool partialOk) {
  IListViewPeer* const peer = GetListView()->GetListPeer();
  const int index = GetIndex();
  if (peer && index >= 0) peer->MakeVisible(index, partialOk);
}

bool TListItem::EditCaption() {
  TCustomListView* const view = GetListView();
  const TLifeGuard guard = view->GetLifeGuard();
  const TListItems* const items = fOwner;
  const unsigned version = items->fVersion;
  if (!view->GetListPeer() || !IsInList()) return false;
  if (view->CanFocus()) view->SetFocus();
  if (!guard.IsAlive() || !view->GetListPeer() || !items->Holds(this, version)) return false;
  return view->GetListPeer()->BeginEdit(GetIndex());
}

void TListItem::CancelEdit() {
  if (GetListView()->GetEditedItem() == this) GetListView()->EndEditing(true);
}

void TListItem::Update() { GetListView()->LookChanged(this); }

void TListItem::Assign(const TPersistent* source) {
  const auto* other = dynamic_cast<const TListItem*>(source);
  if (!other) return TPersistent::Assign(source);
  if (other == this) return;
  fCaption = other->fCaption;
  fSubItems = other->fSubItems;
  fImageIndex = other->fImageIndex;
  fOverlayIndex = other->fOverlayIndex;
  fStateIndex = other->fStateIndex;
  fIndent = other->fIndent;
  fStates = static_cast<std::uint8_t>((fStates & ~StateChecked) | (other->fStates & StateChecked));
  Data = other->Data;
  GetListView()->ItemChanged(this, ctText);
}

// --- TListRows -----------------------------------------------------------------------

void TListRows::MoveGap(int index) noexcept {
  const auto at = [this](int slot) { return fSlots.begin() + RowOffset(slot); };
  if (index < fGap)
    std::move_backward(at(index), at(fGap), at(fGap + fGapLength));
  else
    std::move(at(fGap + fGapLength), at(index + fGapLength), at(fGap));
  fGap = index;
}

void TListRows::Reserve(int count) {
  const int missing = count - static_cast<int>(fSlots.size());
  if (missing <= 0) return;
  MoveGap(GetCount());
  fSlots.resize(static_cast<std::size_t>(count));
  fGapLength += missing;
}

void TListRows::Insert(int index, TListItem* item) {
  constexpr int fewest = 16;
  if (fGapLength == 0) Reserve(std::max(fewest, GetCount() + GetCount() / 2));
  MoveGap(index);
  fSlots[static_cast<std::size_t>(fGap++)] = item;
  --fGapLength;
}

TListItem* TListRows::Remove(int index) noexcept {
  MoveGap(index);
  TListItem* const item = At(index);
  ++fGapLength;
  return item;
}

void TListRows::Truncate(int count) noexcept {
  MoveGap(GetCount());
  fGapLength += fGap - count;
  fGap = count;
}

int TListRows::Find(const TListItem* item, int from) const noexcept {
  const auto search = [&](int first, int last, int skipped) {
    const auto begin = fSlots.begin() + RowOffset(first + skipped);
    const auto end = fSlots.begin() + RowOffset(last + skipped);
    const auto found = std::find(begin, end, item);
    return found == end ? -1 : first + static_cast<int>(found - begin);
  };
  const int before = from < fGap ? search(from, fGap, 0) : -1;
  return before >= 0 ? before : search(std::max(from, fGap), GetCount(), fGapLength);
}

// --- TListItems: adding -------------------------------------------------------------

TListItems::~TListItems() {
  for (TListItem* const item : *this) {
    item->fIndex = -1;
    delete item;
  }
}

TListItem* TListItems::Insert(int index) {
  const TLifeGuard guard = fOwner->GetLifeGuard();
  auto item = fOwner->CreateListItem();
  return guard.IsAlive() ? AddItem(std::move(item), index) : nullptr;
}

TListItem* TListItems::AddItem(std::unique_ptr<TListItem> item, int index) {
  if (!item || item->fOwner != this)
    throw EInvalidArgument(u"A row can only be added to the list that it was made for.");
  if (index < -1) throw EArgumentException(u"There is no row " + IntToStr(index) + u".");
  if (index == -1 || index > GetCount()) index = GetCount();
  fItems.Insert(index, item.get());
  TListItem* const added = item.release();
  added->fIndex = index;
  const bool appended = index == GetCount() - 1 && fNumbered == index;
  Moved(index);
  if (appended) fNumbered = GetCount();

  const unsigned version = fVersion;
  const TLifeGuard guard = fOwner->GetLifeGuard();
  fOwner->ItemAdded(added, index);
  return guard.IsAlive() && Holds(added, version) ? added : nullptr;
}

// --- TListItems: places -------------------------------------------------------------

void TListItems::Moved(int index) noexcept {
  ++fVersion;
  fMissed = false;
  fNumbered = std::min(fNumbered, index);
}

void TListItems::Renumber(int end) const noexcept {
  for (; fNumbered < end; ++fNumbered) At(fNumbered)->fIndex = fNumbered;
}

// Rows before fNumbered know their place, others have a guess. A wrong guess costs a look through
// the pointers, no more than the change that moved the row did. What lies on a short way gets its
// number, so rows that are asked for in their order are found at once; the second long search
// without a change between numbers all.
int TListItems::IndexOf(const TListItem* item) const {
  if (!item || item->fOwner != this || !item->IsInList()) return -1;
  if (GetItem(item->fIndex) == item) return item->fIndex;
  const int index = fItems.Find(item, fNumbered);
  if (index < 0) return -1;
  if (fMissed) {
    Renumber(GetCount());
  } else if (index - fNumbered <= NearRows) {
    Renumber(index + 1);
  } else {
    fMissed = true;
    item->fIndex = index;
  }
  return index;
}

// --- TListItems: removing -----------------------------------------------------------

void TListItems::Delete(int index) {
  TListItem* const item = GetItem(index);
  if (!item || item->GetDeleting()) return;
  const TLifeGuard guard = fOwner->GetLifeGuard();
  const unsigned version = fVersion;
  if ((item->fStates & TListItem::StateDoomed) != 0) --fDoomedUntold;
  item->fStates |= TListItem::StateDeleting;
  try {
    fOwner->DeleteItem(item);
  } catch (...) {
    if (guard.IsAlive() && Holds(item, version))
      item->fStates &=
          static_cast<std::uint8_t>(~(TListItem::StateDeleting | TListItem::StateDoomed));
    throw;
  }
  if (!guard.IsAlive()) return;
  const int place = fVersion == version ? index : fItems.Find(item, 0);
  if (place >= 0) Erase(place);
}

void TListItems::Erase(int index) {
  const std::unique_ptr<TListItem> leaving(fItems.Remove(index));
  Moved(index);
  leaving->fIndex = -1;
  fOwner->Forget(leaving.get(), index);
  fOwner->ItemsLeft(index, 1, true);
}

int TListItems::DeleteIf(const std::function<bool(TListItem&)>& test) {
  const TLifeGuard guard = fOwner->GetLifeGuard();
  ++fDeleteIfDepth;
  try {
    MarkDoomed(test);
    // Within another one's handlers the marks are enough: the outer call does the rest.
    if (guard.IsAlive() && fDeleteIfDepth == 1) TellDoomed();
  } catch (...) {
    if (guard.IsAlive() && --fDeleteIfDepth == 0) {
      EraseDoomed();
      ClearDoomed();
    }
    throw;
  }
  if (!guard.IsAlive()) return 0;
  return --fDeleteIfDepth == 0 ? EraseDoomed() : 0;
}

void TListItems::MarkDoomed(const std::function<bool(TListItem&)>& test) {
  const TLifeGuard guard = fOwner->GetLifeGuard();
  for (int i = 0; i < GetCount(); ++i) {
    TListItem* const item = At(i);
    if ((item->fStates & (TListItem::StateDeleting | TListItem::StateDoomed)) != 0) continue;
    const bool accepted = test(*item);
    if (!guard.IsAlive()) return;
    if (!accepted || GetItem(i) != item) continue;
    item->fStates |= TListItem::StateDoomed;
    ++fDoomedUntold;
  }
}

void TListItems::TellDoomed() {
  const TLifeGuard guard = fOwner->GetLifeGuard();
  while (fDoomedUntold > 0) {
    for (int i = 0; i < GetCount() && fDoomedUntold > 0; ++i) {
      TListItem* const item = At(i);
      constexpr auto both = TListItem::StateDeleting | TListItem::StateDoomed;
      if ((item->fStates & both) != TListItem::StateDoomed) continue;
      item->fStates |= TListItem::StateDeleting;
      --fDoomedUntold;
      fOwner->DeleteItem(item);
      if (!guard.IsAlive()) return;
    }
  }
}

int TListItems::EraseDoomed() {
  constexpr auto both = TListItem::StateDeleting | TListItem::StateDoomed;
  std::vector<std::unique_ptr<TListItem>> leaving;
  int kept = 0;
  int first = -1;
  int last = -1;
  int focusPlace = 0;
  leaving.reserve(static_cast<std::size_t>(GetCount()));
  for (int i = 0; i < GetCount(); ++i) {
    TListItem* const item = At(i);
    if ((item->fStates & both) != both) {
      fItems.Put(kept++, item);
      continue;
    }
    if (first < 0) first = i;
    last = i;
    if (item == fOwner->fItemFocused) focusPlace = kept;
    item->fIndex = -1;
    leaving.emplace_back(item);
  }
  if (leaving.empty()) return 0;
  fItems.Truncate(kept);
  Moved(first);
  const int count = static_cast<int>(leaving.size());
  for (const auto& item : leaving) fOwner->Forget(item.get(), focusPlace);
  fOwner->ItemsLeft(first, count, last - first + 1 == count);
  return count;
}

void TListItems::ClearDoomed() noexcept {
  for (TListItem* const item : *this)
    item->fStates &= static_cast<std::uint8_t>(~TListItem::StateDoomed);
  fDoomedUntold = 0;
}

void TListItems::Clear() {
  DeleteIf([](TListItem&) { return true; });
}

// The row's destructor runs: it must not be destroyed a second time.
void TListItems::Forget(TListItem* item) noexcept {
  const int index = fItems.Find(item, 0);
  item->fIndex = -1;
  if (index < 0) return;
  fItems.Remove(index);
  Moved(index);
  if ((item->fStates & (TListItem::StateDeleting | TListItem::StateDoomed)) ==
      TListItem::StateDoomed)
    --fDoomedUntold;
  fOwner->Forget(item, index);
  try {
    fOwner->ItemsLeft(index, 1, true);
  } catch (...) {
    // The end can't be refused.
  }
}

// --- TListItems: updates ------------------------------------------------------------

void TListItems::BeginUpdate() {
  if (fUpdateCount++ == 0) fOwner->UpdateBegun();
}

void TListItems::EndUpdate() {
  if (fUpdateCount > 0 && --fUpdateCount == 0) fOwner->UpdateEnded();
}

}  // namespace oak
