#include "oak/threading/ThreadPool.Queue.h"

#include <algorithm>
#include <mutex>

namespace oak {

bool Supports(IUnknown& pObject, const GUID& pInterfaceID) {
  Ref<IUnknown> found;
  return SUCCEEDED(pObject.QueryInterface(pInterfaceID, found.PutVoid())) && found;
}

Ref<IWorkItem> TWorkItemSlot::Get() const noexcept {
  if (IsEmpty()) return nullptr;
  const std::lock_guard guard(fLock);
  // Again: what was seen may have gone, and the next item is put in without the lock.
  return IsEmpty() ? nullptr : fWorkItem;
}

void TWorkItemSlot::Put(Ref<IWorkItem>&& pWorkItem) noexcept {
  fWorkItem = std::move(pWorkItem);
  fIsEmpty.store(false, std::memory_order_release);
}

Ref<IWorkItem> TWorkItemSlot::Take() noexcept {
  const std::lock_guard guard(fLock);
  fIsEmpty.store(true, std::memory_order_release);
  return std::move(fWorkItem);
}

void TWorkItemsQueue::Add(Ref<IWorkItem> pWorkItem, bool pAtEnd) {
  pWorkItem->SetStatus(TTaskStatus::WaitingToRun);
  const std::lock_guard guard(fLock);
  Put(std::move(pWorkItem), pAtEnd);
}

void TWorkItemsQueue::AddRange(const IWorkItems& pWorkItems, bool pAtEnd) {
  const std::lock_guard guard(fLock);
  const std::size_t before = fList.size();
  const std::uint64_t added = fAdded.load(std::memory_order_relaxed);
  try {
    for (const Ref<IWorkItem>& item : pWorkItems) Put(Ref<IWorkItem>(item), pAtEnd);
  } catch (...) {
    // All or none; the caller still holds those that are taken back.
    while (fList.size() > before) pAtEnd ? fList.pop_back() : fList.pop_front();
    fAdded.store(added, std::memory_order_release);
    fCount.store(static_cast<int>(before));
    throw;
  }
}

// The lock is held. When this raises, the caller still has the item.
void TWorkItemsQueue::Put(Ref<IWorkItem>&& pWorkItem, bool pAtEnd) {
  if (pAtEnd)
    fList.push_back(std::move(pWorkItem));
  else
    fList.push_front(std::move(pWorkItem));
  fAdded.store(fAdded.load(std::memory_order_relaxed) + 1, std::memory_order_release);
  fCount.store(static_cast<int>(fList.size()));
}

bool TWorkItemsQueue::Dequeue(Ref<IWorkItem>& pWorkItem) {
  pWorkItem.Reset();
  if (Count() == 0) return false;
  const std::lock_guard guard(fLock);
  if (fList.empty()) return false;
  pWorkItem.Swap(fList.back());
  fList.pop_back();
  fCount.store(static_cast<int>(fList.size()), std::memory_order_release);
  return true;
}

bool TWorkItemsQueue::Dequeue(TWorkItemSlot& pSlot, const std::atomic<int>& pHeld) {
  if (Count() == 0) return false;
  const std::lock_guard guard(fLock);
  // Asked under the lock: what is added while the queue is held stays in it.
  if (fList.empty() || pHeld.load() > 0) return false;
  pSlot.Put(std::move(fList.back()));
  fList.pop_back();
  fCount.store(static_cast<int>(fList.size()), std::memory_order_release);
  return true;
}

int TWorkItemsQueue::Clear() {
  TItems dropped;
  {
    const std::lock_guard guard(fLock);
    dropped.swap(fList);
    fCount.store(0);
  }
  return static_cast<int>(dropped.size());
}

template <class TTest>
bool TWorkItemsQueue::Contains(const TTest& pTest) const {
  if (Count() == 0) return false;
  TItems items;
  {
    const std::lock_guard guard(fLock);
    items = fList;
  }
  return std::any_of(items.rbegin(), items.rend(), pTest);
}

bool TWorkItemsQueue::ContainsWorkItem(int pTag, TWorkItemClass pClass) const {
  return Contains([&](const Ref<IWorkItem>& item) {
    return (pTag == 0 || item->GetTag() == pTag) && pClass.IsBaseOf(*item);
  });
}

bool TWorkItemsQueue::ContainsWorkItem(const GUID& pInterfaceID) const {
  return Contains([&](const Ref<IWorkItem>& item) { return Supports(*item, pInterfaceID); });
}

}  // namespace oak
