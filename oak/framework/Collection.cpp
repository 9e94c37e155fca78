#include "oak/framework/Collection.h"

#include <algorithm>

namespace oak {
namespace {
void CheckCollectionIndex(int index, int count) {
  if (index < 0 || index >= count)
    throw EListError(u"Collection index out of bounds (" + IntToStr(index) + u" of " +
                     IntToStr(count) + u").");
}
}  // namespace

// --- TCollectionItem ---------------------------------------------------------------

TCollectionItem::~TCollectionItem() {
  if (fCollection) fCollection->Forget(this);
}

void TCollectionItem::SetCollection(TCollection* value) {
  if (value == fCollection || !fCollection) return;
  if (!value) return fCollection->Delete(fIndex);
  value->Adopt(fCollection->Extract(fIndex));
}

void TCollectionItem::SetIndex(int value) {
  if (fCollection && value != fIndex) fCollection->MoveItem(fIndex, value);
}

TString TCollectionItem::GetDisplayName() const { return IntToStr(fIndex); }

void TCollectionItem::Changed(bool allItems) {
  if (fCollection) fCollection->ItemChanged(allItems ? nullptr : this);
}

// --- TCollection -------------------------------------------------------------------

TCollection::~TCollection() {
  ++fUpdateCount;  // nobody is left to be told
  while (!fItems.empty()) TakeOut(GetCount() - 1);
}

TCollectionItem* TCollection::GetItem(int index) const {
  CheckCollectionIndex(index, GetCount());
  return fItems[static_cast<std::size_t>(index)].get();
}

TCollectionItem* TCollection::FindItemID(int id) const noexcept {
  for (const auto& item : fItems)
    if (item->fID == id) return item.get();
  return nullptr;
}

std::unique_ptr<TCollectionItem> TCollection::CreateItem() {
  auto item = fFactory ? fFactory(this) : nullptr;
  if (!item) throw EInvalidOperation(u"The collection does not know how to make an item.");
  return item;
}

TCollectionItem* TCollection::Add() { return Join(CreateItem(), GetCount()); }

TCollectionItem* TCollection::Insert(int index) {
  CheckCollectionIndex(index, GetCount() + 1);
  return Join(CreateItem(), index);
}

TCollectionItem* TCollection::Adopt(std::unique_ptr<TCollectionItem> item) {
  return item ? Join(std::move(item), GetCount()) : nullptr;
}

TCollectionItem* TCollection::Join(std::unique_ptr<TCollectionItem> item, int index) {
  TCollectionItem* const joined = item.get();
  const int place = std::min(index, GetCount());  // making the item may have changed the count
  fItems.insert(fItems.begin() + place, std::move(item));
  joined->fCollection = this;
  joined->fID = fNextID++;
  Renumber(place, GetCount());
  Notify(joined, cnAdded);
  Changed();
  return joined;
}

void TCollection::Delete(int index) {
  CheckCollectionIndex(index, GetCount());
  Leave(index, cnDeleting).reset();
  Changed();
}

std::unique_ptr<TCollectionItem> TCollection::Extract(int index) {
  CheckCollectionIndex(index, GetCount());
  auto item = Leave(index, cnExtracting);
  Changed();
  return item;
}

std::unique_ptr<TCollectionItem> TCollection::Leave(int index, TCollectionNotification action) {
  TCollectionItem* const leaving = GetItem(index);
  Notify(leaving, action);
  return TakeOut(leaving->fIndex);
}

std::unique_ptr<TCollectionItem> TCollection::TakeOut(int index) noexcept {
  const auto place = fItems.begin() + index;
  std::unique_ptr<TCollectionItem> item = std::move(*place);
  fItems.erase(place);
  Renumber(index, GetCount());
  item->fCollection = nullptr;
  item->fIndex = item->fID = -1;
  return item;
}

// Its destructor runs: the item must not be destroyed a second time.
void TCollection::Forget(TCollectionItem* item) noexcept {
  TakeOut(item->fIndex).release();
  try {
    Changed();
  } catch (...) {
    // The end can't be refused.
  }
}

void TCollection::Clear() {
  if (fItems.empty()) return;
  WithinUpdate([&] {
    while (!fItems.empty()) Delete(GetCount() - 1);
  });
}

void TCollection::Assign(const TPersistent* source) {
  const auto* other = dynamic_cast<const TCollection*>(source);
  if (!other) return TPersistent::Assign(source);
  if (other == this) return;
  WithinUpdate([&] {
    Clear();
    for (int i = 0; i < other->GetCount(); ++i) Add()->Assign(other->GetItem(i));
  });
}

void TCollection::MoveItem(int from, int to) {
  CheckCollectionIndex(to, GetCount());
  const auto first = fItems.begin();
  if (from < to)
    std::rotate(first + from, first + from + 1, first + to + 1);
  else
    std::rotate(first + to, first + from, first + from + 1);
  Renumber(std::min(from, to), std::max(from, to) + 1);
  Changed();
}

void TCollection::Renumber(int from, int to) noexcept {
  for (int i = from; i < to; ++i) fItems[static_cast<std::size_t>(i)]->fIndex = i;
}

void TCollection::BeginUpdate() { ++fUpdateCount; }

void TCollection::EndUpdate() {
  if (fUpdateCount == 0 || --fUpdateCount > 0) return;
  Update(nullptr);
}

void TCollection::AbandonUpdate() noexcept {
  try {
    EndUpdate();
  } catch (...) {
    // The exception that ended the update is the one to report.
  }
}

void TCollection::Changed() { ItemChanged(nullptr); }

void TCollection::ItemChanged(TCollectionItem* item) {
  if (fUpdateCount == 0) Update(item);
}

void TCollection::Update(TCollectionItem*) {}

void TCollection::Notify(TCollectionItem*, TCollectionNotification) {}

}  // namespace oak
