// Sorting of rows.
#include "oak/framework/ListView.h"
#include "oak/base/LogicalOrder.h"
#include "oak/framework/Events.h"
#include "oak/framework/MergeSort.h"

namespace oak {
std::vector<TListItem*> TCustomListView::SortedByCaption() const {
  struct TEntry {
    TLogicalKey Key;
    TListItem* Item;
  };
  std::vector<TEntry> entries;
  entries.reserve(static_cast<std::size_t>(fItems->GetCount()));
  for (TListItem* const item : *fItems)
    entries.push_back({MakeLogicalKey(item->GetCaption()), item});
  std::stable_sort(entries.begin(), entries.end(),
                   [](const TEntry& a, const TEntry& b) { return a.Key < b.Key; });
  std::vector<TListItem*> order;
  order.reserve(entries.size());
  for (const TEntry& entry : entries) order.push_back(entry.Item);
  return order;
}

bool TCustomListView::CustomSort(const TLVCompare& compare, LPARAM data) {
  const TLifeGuard guard = GetLifeGuard();
  const unsigned version = Items().fVersion;
  if (!compare && !OnCompare) return ApplyOrder(SortedByCaption());

  std::vector<TListItem*> order;
  order.reserve(static_cast<std::size_t>(fItems->GetCount()));
  for (TListItem* const item : *fItems) order.push_back(item);
  const auto unchanged = [&] { return guard.IsAlive() && fItems->fVersion == version; };
  MergeSort(order, [&](TListItem* a, TListItem* b) {
    if (!unchanged()) return false;
    if (compare) return compare(a, b, data) > 0;
    int result = 0;
    FireEvent(OnCompare, this, a, b, data, result);
    return result > 0;
  });
  return unchanged() && ApplyOrder(order);
}

bool TCustomListView::ApplyOrder(const std::vector<TListItem*>& order) {
  bool moved = false;
  int index = 0;
  for (TListItem* const item : order) {
    moved = moved || fItems->At(index) != item;
    fItems->fItems.Put(index, item);
    item->fIndex = index++;
  }
  if (!moved) return true;
  fItems->Moved(0);
  fItems->fNumbered = fItems->GetCount();
  fNoneBefore = 0;
  RowsReset();
  return true;
}

}  // namespace oak
