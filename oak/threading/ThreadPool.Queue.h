// The queue of a pool, and the place where a worker keeps what it runs.
#pragma once

#include <atomic>
#include <deque>

#include "oak/threading/Oak.Threading.Types.h"
#include "oak/threading/QuickLock.h"

namespace oak {

/// Whether an object has an interface.
bool Supports(IUnknown& pObject, const GUID& pInterfaceID);

/// Holds the item that a worker runs, where others may look at it. Any thread.
class TWorkItemSlot {
 public:
  /// The item, with a reference of the caller's own; nil if there is none.
  Ref<IWorkItem> Get() const noexcept;
  bool IsEmpty() const noexcept { return fIsEmpty.load(std::memory_order_acquire); }
  /// For the worker, while nobody can take the item out.
  IWorkItem* Held() const noexcept { return fWorkItem.Get(); }
  /// Into an empty slot; for the worker.
  void Put(Ref<IWorkItem>&& pWorkItem) noexcept;
  /// Takes the item out, for the caller to release: never under a lock.
  [[nodiscard]] Ref<IWorkItem> Take() noexcept;

 private:
  mutable TQuickLock fLock;          ///< For taking out, and for copies.
  std::atomic<bool> fIsEmpty{true};  ///< Set and cleared behind fWorkItem.
  Ref<IWorkItem> fWorkItem;
};

/// Items that wait for a worker. They are taken from the end: Highest ones join there,
/// Normal ones at the other side. Any thread. Nothing is called back under the lock,
/// and no item is released under it.
class TWorkItemsQueue {
 public:
  /// Sets the item's status to WaitingToRun and queues it; pAtEnd makes it the next.
  void Add(Ref<IWorkItem> pWorkItem, bool pAtEnd);
  /// Several at once, in their order; each has its status already.
  void AddRange(const IWorkItems& pWorkItems, bool pAtEnd);
  /// Nil if the queue is empty; that costs no lock.
  bool Dequeue(Ref<IWorkItem>& pWorkItem);
  /// Moves the next item into the slot, so that it is in one of both at any time. Not
  /// while pHeld is above 0. False if nothing was moved.
  bool Dequeue(TWorkItemSlot& pSlot, const std::atomic<int>& pHeld);
  /// Drops all items and tells how many there were. Their status stays.
  int Clear();
  int Count() const noexcept { return fCount.load(); }
  /// Items that were ever added.
  std::uint64_t Added() const noexcept { return fAdded.load(std::memory_order_acquire); }
  /// Whether an item waits that has this tag (0: any) and this class.
  bool ContainsWorkItem(int pTag, TWorkItemClass pClass = {}) const;
  bool ContainsWorkItem(const GUID& pInterfaceID) const;

 private:
  using TItems = std::deque<Ref<IWorkItem>>;
  template <class TTest>
  bool Contains(const TTest& pTest) const;
  void Put(Ref<IWorkItem>&& pWorkItem, bool pAtEnd);

  mutable TQuickLock fLock;
  std::atomic<int> fCount{0};
  std::atomic<std::uint64_t> fAdded{0};
  TItems fList;
};

}  // namespace oak
