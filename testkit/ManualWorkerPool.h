// A pool whose work is run by hand.
#pragma once

#include <deque>

#include "oak/threading/Oak.Threading.h"

namespace oak::testkit {

/// Work waits in a queue until the test runs it, item by item, on the test's own thread
/// or on another one: for tests of controls that let the global pool work for them. Items
/// pass through the same states as in a real pool, and are taken in the same order. Used
/// by the test's thread, and by the items that it runs.
///
///   TScopedWorkerPool pool;                  // takes the place of the global pool
///   list.FullRefresh();
///   EXPECT_TRUE(pool->ContainsWorkItem(IIconWorkItem::Iid));
///   pool->RunAll();                          // on the main thread: delivered at once
///   pool->RunNext(TManualWorkerPool::OnWorker);  // delivered by TMainQueue::Run
class TManualWorkerPool : public TInterfacedObject<IWorkerThreadPool> {
 public:
  enum TWhere { OnThisThread, OnWorker };

  void AddWorkItem(Ref<IWorkItem> pWorkItem, TPriority pPriority) override;
  void AddWorkItems(const IWorkItems& pWorkItems, TPriority pPriority) override;
  /// Looks at what waits and at the item that is being run.
  bool ContainsWorkItem(const GUID& pInterfaceID) override;
  bool ContainsWorkItem(int tag);
  /// Drops what waits, without a change of status, and cancels what runs.
  void Dispose() override;

  std::size_t GetPending() const { return fItems.size(); }
  /// The item that is run after so many others, for a look at it; nil behind the last.
  Ref<IWorkItem> GetWorkItem(std::size_t index = 0) const;
  template <class T>
  std::size_t CountOf() const;

  /// Runs the next item: a cancelled one is only taken out. False if none waits. On a
  /// worker, which lives as long as the item runs, the delivery goes through the main
  /// thread's queue, so that the test may cancel in between.
  bool RunNext(TWhere where = OnThisThread);
  /// Runs all, those that they add included; tells how many.
  int RunAll(TWhere where = OnThisThread);
  /// Runs work where and when it is added, on the thread that adds it.
  void SetInline(bool value) { fInline = value; }

 private:
  void Run(const Ref<IWorkItem>& item);

  std::deque<Ref<IWorkItem>> fItems;  // consumed from the front
  IWorkItems fRunning;                // one inside of the other
  bool fInline = false;
};

/// Puts a manual pool in the place of the global one for the span of a block. What still
/// waits in the end is dropped.
class TScopedWorkerPool {
 public:
  TScopedWorkerPool() : fBefore(TWorkerPool::SetGlobalInstance(fPool)) {}
  ~TScopedWorkerPool() {
    TWorkerPool::SetGlobalInstance(fBefore);
    fPool->Dispose();
  }
  TScopedWorkerPool(const TScopedWorkerPool&) = delete;
  TScopedWorkerPool& operator=(const TScopedWorkerPool&) = delete;
  TManualWorkerPool* operator->() const noexcept { return fPool.Get(); }
  TManualWorkerPool& operator*() const noexcept { return *fPool; }

 private:
  Ref<TManualWorkerPool> fPool = MakeRef<TManualWorkerPool>();
  Ref<IWorkerThreadPool> fBefore;
};

template <class T>
std::size_t TManualWorkerPool::CountOf() const {
  std::size_t count = 0;
  for (const Ref<IWorkItem>& item : fItems) count += dynamic_cast<T*>(item.Get()) ? 1 : 0;
  return count;
}

}  // namespace oak::testkit
