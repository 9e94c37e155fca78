// The pool that runs work items.
#pragma once

#include <atomic>
#include <functional>

#include "oak/threading/Oak.Threading.Pool.h"
#include "oak/threading/ThreadPool.Custom.h"
#include "oak/threading/ThreadPool.Queue.h"

namespace oak {

/// A pool that sizes itself. It begins without threads; it adds one when work waits, at
/// once below MinWorkerThreads, above that while the machine is less busy than
/// MaxCpuUsage and one each 400 ms at most, up to MaxRunningThreads. A worker without
/// work for longer than MaxIdleTime goes, whatever the minimum says.
///
/// Any thread may call. What workers run may call the pool too, and release the last
/// reference to it.
class TWorkerThreadPool : public TCustomThreadPool, public IWorkerThreadPool {
 public:
  using TNewThreadEvent = std::function<void(TWorkerThreadPool& Sender, TOakThread& Thread)>;

  /// With aInitializeCOM each worker enters a single-threaded apartment.
  explicit TWorkerThreadPool(bool aInitializeCOM);
  ~TWorkerThreadPool() override { Shutdown(); }

  HRESULT STDMETHODCALLTYPE QueryInterface(REFIID iid, void** out) override;
  ULONG STDMETHODCALLTYPE AddRef() override { return TCustomThreadPool::AddRef(); }
  ULONG STDMETHODCALLTYPE Release() override { return TCustomThreadPool::Release(); }

  /// The process's pool, made at first use: workers with apartments, at least two for
  /// each processor (one in a library) and at most four; fewer than four processors
  /// count as four.
  static Ref<IWorkerThreadPool> Instance();
  /// Ends the process's pool; FinalizeShell does. The next use makes a new one. In a
  /// library, where threads can't end normally while it is unloaded, each has 40 ms.
  static void FinalizeInstance();
  /// How busy the machine is, in percent.
  static int GetCPUUsage();

  // --- work ---------------------------------------------------------------------------
  /// With priority Normal, or Highest if UseLIFO is set.
  void AddWorkItem(Ref<IWorkItem> pWorkItem);
  /// Raises EArgumentException for nil, EInvalidOperation if the pool is being destroyed,
  /// EThread if it has no thread and the system gives none; the item then stays in the
  /// queue for the next time.
  void AddWorkItem(Ref<IWorkItem> pWorkItem, TPriority pPriority) override;
  void AddWorkItems(const IWorkItems& pWorkItems, TPriority pPriority) override;
  /// Whether an item with this tag waits or runs.
  bool ContainsWorkItem(int pTag);
  bool ContainsWorkItem(const GUID& pInterfaceID) override;
  /// Drops what waits, without a change of status, and cancels what runs. Returns how
  /// many items that were. What is added by the single AddWorkItem meanwhile is dropped.
  virtual int TerminateWorkItems();
  void TerminateThreads(bool pForce) { TerminateAllThreads(pForce); }
  void TerminateAllThreads(bool pForce) override;
  /// TerminateAllThreads(False).
  void Dispose() override { TerminateAllThreads(false); }
  void Remove(TOakThread* pThread) override;

  // --- queries ------------------------------------------------------------------------
  int QueueLength() const noexcept { return fWorkerItemsQueue.Count(); }
  /// Items that wait or run.
  int GetWorkItemsCount() const noexcept {
    const std::uint64_t ended = fEndedItems.load();
    return static_cast<int>(fWorkerItemsQueue.Added() - ended);
  }
  /// Whether there are any. Raises EInvalidOperation if there are but no thread is.
  bool WorkItemsActive() const;
  /// Threads that have an item.
  int ActiveThreadCount() const;
  /// The threads and what they run, a line each, for diagnosis.
  TString Dump() const;

  // --- settings -----------------------------------------------------------------------
  /// Also lowers a minimum that is above the old limit.
  void SetMaxRunningThreads(int pValue) override;
  int GetMinWorkerThreads() const noexcept { return fMinWorkerThreads; }
  /// A minimum above MaxRunningThreads raises that. Default 1.
  void SetMinWorkerThreads(int pValue);
  int GetMaxCpuUsage() const noexcept { return fMaxCpuUsage; }
  /// 0..100; default 80.
  void SetMaxCpuUsage(int pValue);
  DWORD GetMaxIdleTime() const noexcept { return fMaxIdleTime; }
  /// In milliseconds; default 60000.
  void SetMaxIdleTime(DWORD pMilliseconds) { fMaxIdleTime = pMilliseconds; }
  bool GetUseLIFO() const noexcept { return fUseLIFO; }
  void SetUseLIFO(bool pValue) { fUseLIFO = pValue; }

  /// The number of items has become 0. Called on a worker (in TerminateWorkItems on its
  /// caller's thread); no work is handed out before it returns. To be set before work is
  /// added, like the next one.
  TAllWorkItemsFinished OnAllWorkItemsDone;
  /// On each new worker, before its first item.
  TNewThreadEvent OnNewThread;

 protected:
  /// Prepares the calling thread, a new worker.
  virtual void DoNewThread(TOakThread& pThread);
  void WakeAll() noexcept override;
  void Reopened() noexcept override;
  void WorkerLost(bool pHadWork, bool pWasInDoneEvent) override;

 private:
  friend class TWorkerThread;

  // For workers. Those that return bool: false if the thread has no pool any more.
  bool PrepareThread(TWorkerThread& pThread);
  bool WorkItemDone(TWorkerThread& pThread);
  bool GetWorkItem(TWorkerThread& pThread);
  bool AwaitWorkItem(TWorkerThread& pThread);
  bool Dequeue(TWorkerThread& pThread);
  bool Scout(TWorkerThread& pThread);
  void StopScouting(TWorkerThread& pThread) noexcept;
  void WakeWorker() noexcept;
  bool HasWork() const noexcept;

  void CheckAddNewWorkerThread();
  bool MayGrow() const;
  void AddWorker();
  bool TriggerAllWorkItemsDoneEvent(TWorkerThread* pThread);
  void LeaveDoneEvent() noexcept;
  bool EndItems(int pCount) noexcept;
  void CheckNotDestroying() const;
  std::vector<Ref<IWorkItem>> RunningItems() const;

  // What each add and each worker writes has a cache line of its own; what they only read
  // lies in the lines before.
  static constexpr std::size_t CacheLine = 64;
  std::atomic<int> fMinWorkerThreads{1};
  std::atomic<bool> fUseLIFO{false};
  std::atomic<int> fIsTerminatingAllWorkitems{0};  ///< Calls of TerminateWorkItems.
  std::atomic<int> fAllWorkItemsDoneEventCount{0};
  std::atomic<DWORD> fMaxIdleTime{60000};
  std::atomic<std::uint64_t> fLastCheckAddNewWorkerThread{0};
  const bool fInitializeCOM;
  std::atomic<int> fMaxCpuUsage{80};
  alignas(CacheLine) TWorkItemsQueue fWorkerItemsQueue;
  /// Of all that were added. Workers alone write it, and look at the number of those that
  /// were added only when the queue is empty.
  alignas(CacheLine) std::atomic<std::uint64_t> fEndedItems{0};
  /// 1 while a worker has been woken or looks for work: it will see what is added, so
  /// nobody else needs to be woken. It wakes the next one if it leaves work behind.
  alignas(CacheLine) std::atomic<int> fScouts{0};
  TEvent fNewWorkItemEvent;
};

/// A pool that lives as long as somebody holds a reference.
class TWorkerThreadPoolRefCounted : public TWorkerThreadPool {
 public:
  /// With apartments; starts with one count, which MakeRef adopts.
  TWorkerThreadPoolRefCounted() : TWorkerThreadPool(true) {}
  explicit TWorkerThreadPoolRefCounted(const TWorkerPoolConfig& pWorkerPoolConfig);
  ~TWorkerThreadPoolRefCounted() override { Shutdown(); }

  ULONG STDMETHODCALLTYPE AddRef() override { return fRefCount.fetch_add(1) + 1; }
  ULONG STDMETHODCALLTYPE Release() override;

 private:
  std::atomic<ULONG> fRefCount{1};
};

}  // namespace oak
