#include "oak/framework/StringList.h"

#include <algorithm>
#include <memory>
#include <numeric>

namespace oak {

TStringList::~TStringList() { FreeObjects(fItems); }

// --- one text ------------------------------------------------------------------

void TStringList::CheckUnsorted() const {
  if (fSorted) throw EStringListError(u"The order of a sorted list can't be changed.");
}

void TStringList::RaiseDuplicate(TStringView text) {
  throw EStringListError(u"The list has \"" + TString(text) + u"\" already.");
}

void TStringList::Put(int index, TStringView text) {
  CheckUnsorted();
  TString value(text);  // may be a part of the list
  At(index);
  Changing();
  At(index).Text = std::move(value);
  Changed();
}

void TStringList::SetObjects(int index, TObject* object) {
  At(index);
  Changing();
  TItems replaced(1);
  replaced.front().Object = std::exchange(At(index).Object, object);
  if (replaced.front().Object != object) FreeObjects(replaced);
  Changed();
}

int TStringList::AddObject(TStringView text, TObject* object) {
  int index = GetCount();
  if (fSorted && Locate(text, index)) {
    if (fDuplicates == dupIgnore) return index;
    if (fDuplicates == dupError) RaiseDuplicate(text);
  }
  InsertItem(index, text, object);
  return index;
}

void TStringList::InsertObject(int index, TStringView text, TObject* object) {
  CheckUnsorted();
  if (index < 0 || index > GetCount()) RaiseIndex(index, GetCount());
  InsertItem(index, text, object);
}

void TStringList::InsertItem(int index, TStringView text, TObject* object) {
  TItem item{TString(text), object};
  Changing();
  fItems.insert(fItems.begin() + std::min(index, GetCount()), std::move(item));
  Changed();
}

void TStringList::Delete(int index) {
  At(index);
  Changing();
  TItems removed;
  removed.push_back(std::move(At(index)));
  fItems.erase(fItems.begin() + index);
  FreeObjects(removed);
  Changed();
}

void TStringList::Clear() {
  if (fItems.empty()) return;
  Changing();
  TItems removed;
  removed.swap(fItems);
  FreeObjects(removed);
  Changed();
}

void TStringList::FreeObjects(TItems& items) {
  if (!fOwnsObjects) return;
  for (TItem& item : items) delete std::exchange(item.Object, nullptr);
}

void TStringList::Exchange(int index1, int index2) {
  CheckUnsorted();
  At(index1);
  At(index2);
  Changing();
  std::swap(At(index1), At(index2));
  Changed();
}

void TStringList::Move(int from, int to) {
  CheckUnsorted();
  At(from);
  At(to);
  if (from == to) return;
  Changing();
  At(std::max(from, to));  // a handler may have taken it
  const auto first = fItems.begin();
  if (from < to)
    std::rotate(first + from, first + from + 1, first + to + 1);
  else
    std::rotate(first + to, first + from, first + from + 1);
  Changed();
}

// --- many ------------------------------------------------------------------------

void TStringList::AddStrings(const TStrings& strings) {
  const int count = strings.GetCount();
  TItems items;
  items.reserve(static_cast<std::size_t>(count));
  for (int i = 0; i < count; ++i) items.push_back({strings.Get(i), strings.GetObjects(i)});
  AddItems(std::move(items));
}

void TStringList::AddStrings(const TStringArray& strings) {
  TItems items;
  items.reserve(strings.size());
  for (const TString& text : strings) items.push_back({text, nullptr});
  AddItems(std::move(items));
}

void TStringList::SetStrings(TStringArray strings) {
  TItems items;
  items.reserve(strings.size());
  for (TString& text : strings) items.push_back({std::move(text), nullptr});
  WithinUpdate([&] {
    Clear();
    AddItems(std::move(items));
  });
}

void TStringList::AddItems(TItems items) {
  if (fSorted) PrepareMerge(items);
  if (items.empty()) return;
  Changing();
  if (fSorted)
    MergeSorted(std::move(items));
  else if (fItems.empty())
    fItems = std::move(items);
  else
    fItems.insert(fItems.end(), std::make_move_iterator(items.begin()),
                  std::make_move_iterator(items.end()));
  Changed();
}

// Sorts what is to be added and applies the rule for duplicates.
void TStringList::PrepareMerge(TItems& items) const {
  const auto less = Less();
  const auto isSame = [&](const TItem& a, const TItem& b) { return !less(a, b); };  // once sorted
  const auto isPresent = [&](const TItem& item) {
    return std::binary_search(fItems.begin(), fItems.end(), item, less);
  };
  std::stable_sort(items.begin(), items.end(), less);
  if (fDuplicates == dupIgnore) {
    items.erase(std::unique(items.begin(), items.end(), isSame), items.end());
    items.erase(std::remove_if(items.begin(), items.end(), isPresent), items.end());
  } else if (fDuplicates == dupError) {
    const auto twice = std::adjacent_find(items.begin(), items.end(), isSame);
    const auto culprit = std::min(twice, std::find_if(items.begin(), items.end(), isPresent));
    if (culprit != items.end()) RaiseDuplicate(culprit->Text);
  }
}

void TStringList::MergeSorted(TItems items) {
  TItems merged;
  merged.reserve(fItems.size() + items.size());
  std::merge(std::make_move_iterator(fItems.begin()), std::make_move_iterator(fItems.end()),
             std::make_move_iterator(items.begin()), std::make_move_iterator(items.end()),
             std::back_inserter(merged), Less());
  fItems.swap(merged);
}

// --- searching -----------------------------------------------------------------------

int TStringList::CompareStrings(TStringView a, TStringView b) const {
  return fCaseSensitive ? a.compare(b) : CompareText(a, b);
}

bool TStringList::Locate(TStringView text, int& index) const {
  const auto found = std::lower_bound(
      fItems.begin(), fItems.end(), text,
      [&](const TItem& item, TStringView value) { return CompareStrings(item.Text, value) < 0; });
  index = static_cast<int>(found - fItems.begin());
  return found != fItems.end() && CompareStrings(found->Text, text) == 0;
}

bool TStringList::Find(TStringView text, int& index) const {
  if (!fSorted) throw EStringListError(u"Find needs a sorted list.");
  return Locate(text, index);
}

int TStringList::IndexOf(TStringView text) const {
  if (fSorted) {
    int index = 0;
    return Locate(text, index) ? index : -1;
  }
  for (std::size_t i = 0; i < fItems.size(); ++i)
    if (CompareStrings(fItems[i].Text, text) == 0) return static_cast<int>(i);
  return -1;
}

// --- order ----------------------------------------------------------------------------

void TStringList::SortItems() {
  Changing();
  std::stable_sort(fItems.begin(), fItems.end(), Less());
  Changed();
}

void TStringList::Sort() {
  if (!fSorted && fItems.size() > 1) SortItems();
}

void TStringList::CustomSort(const TCompare& compare) {
  CheckUnsorted();
  if (fItems.size() < 2) return;
  std::vector<int> order(fItems.size());
  std::iota(order.begin(), order.end(), 0);
  std::stable_sort(order.begin(), order.end(),
                   [&](int a, int b) { return compare(*this, a, b) < 0; });
  Changing();
  TItems sorted;
  sorted.reserve(fItems.size());
  for (const int index : order) sorted.push_back(std::move(At(index)));
  fItems.swap(sorted);
  Changed();
}

void TStringList::SetSorted(bool value) {
  if (fSorted == value) return;
  if (value) SortItems();
  fSorted = value;
}

void TStringList::SetCaseSensitive(bool value) {
  if (fCaseSensitive == value) return;
  fCaseSensitive = value;
  if (fSorted) SortItems();
}

// --- events ------------------------------------------------------------------------------

void TStringList::Changing() {
  if (IsUpdating() || !OnChanging) return;
  const TNotifyEvent handler = OnChanging;  // may set another one
  handler(this);
}

void TStringList::Changed() {
  if (IsUpdating() || !OnChange) return;
  const TNotifyEvent handler = OnChange;
  handler(this);
}

void TStringList::SetUpdateState(bool isUpdating) {
  if (isUpdating)
    Changing();
  else
    Changed();
}

}  // namespace oak
