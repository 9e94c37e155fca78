// The threads of pools.
#pragma once

#include <atomic>
#include <optional>

#include "oak/base/Ref.h"
#include "oak/framework/Cancellation.h"
#include "oak/framework/ComApartment.h"
#include "oak/framework/Thread.h"
#include "oak/threading/Oak.Threading.Procedures.h"
#include "oak/threading/ThreadPool.Queue.h"

namespace oak {

class TCustomThreadPool;
class TWorkerThreadPool;

/// A thread with a state of life that a pool may own: it can be paused, and frees
/// itself in the end. A created thread waits for Start; a pool that it is added to
/// starts it.
class TOakThread : public TThread {
 public:
  /// The indicator, if any, counts as termination.
  explicit TOakThread(Ref<ICancellationIndicator> pCancellationIndicator = nullptr);
  ~TOakThread() override;

  /// WaitingToRun: created. Running. Paused. Completed: its execution is over.
  /// Canceled: given up by its pool. Any thread.
  TTaskStatus GetStatus() const noexcept { return fStatus.load(std::memory_order_acquire); }
  bool IsFinished() const noexcept { return GetStatus() == TTaskStatus::Completed; }
  /// Nil before the thread is added to a pool and after that has given it up.
  TCustomThreadPool* GetThreadPool() const noexcept { return fThreadPool; }
  bool GetPaused() const noexcept { return GetStatus() == TTaskStatus::Paused; }
  /// Pauses a thread that waits or runs, resumes a paused one; it stops at its next
  /// look at Terminated.
  virtual void SetPaused(bool pPaused);
  /// Lowers or restores the priority of the calling thread, in all that it does.
  void SetBackgroundMode(bool pBackgroundMode);
  bool GetBackgroundMode() const noexcept { return fBackgroundMode; }

  /// Whether the thread is to end. Does not return while it is paused (looks every
  /// 100 ms).
  bool GetTerminated();
  /// Sleeps for so many milliseconds or until the thread is to end.
  void Delay(DWORD pMilliseconds);
  /// Lets the thread run; its status is Running then. As TThread::Start.
  void Start();
  /// As TThread::StartIfSuspended.
  bool StartIfSuspended();

 protected:
  void DoTerminate() override;
  /// Tells the pool of the end.
  virtual void NotifyThreadPool();

  /// Runs code of others, during which the pool may give the thread up. False if it
  /// did: the pool is not to be touched any more. What the code throws comes out.
  template <class TBody>
  bool CallOut(const TBody& pBody);

 private:
  friend class TCustomThreadPool;
  friend class TWorkerThreadPool;
  friend class TWorkerThread;

  // Where the thread is. Inside: it uses the pool, which must stay. Outside: it runs
  // code of others for as long as that takes. Doomed: its pool is giving it up and
  // still looks at this object. Orphaned: it has no pool.
  enum class TPlace : std::uint8_t { Inside, Outside, Doomed, Orphaned };

  void GoOutside() noexcept { fPlace.store(TPlace::Outside, std::memory_order_release); }
  bool ComeInside() noexcept;
  /// For the pool, which then has to end it by ForceTerminate or ReleaseDoomed. False
  /// if the thread is inside.
  bool TryDoom() noexcept;
  void ReleaseDoomed() noexcept;
  bool Replace(TTaskStatus pFrom, TTaskStatus pTo) noexcept;

  std::atomic<TTaskStatus> fStatus{TTaskStatus::WaitingToRun};
  std::atomic<bool> fBackgroundMode{false};
  const Ref<ICancellationIndicator> fCancellationIndicator;
  std::atomic<TCustomThreadPool*> fThreadPool{nullptr};
  std::atomic<TPlace> fPlace{TPlace::Outside};
  bool fInNotification = false;  // counted among the users of the pool
};

/// A thread that runs the work items of its pool until it is told to end or has had
/// nothing to do for too long.
class TWorkerThread : public TOakThread {
 public:
  explicit TWorkerThread(TWorkerThreadPool& pPool);
  ~TWorkerThread() override;

  /// The item that the thread has taken; nil if none.
  Ref<IWorkItem> GetWorkItem() const noexcept { return fWorkItem.Get(); }
  /// Its item goes with it.
  void SetPaused(bool pPaused) override;
  /// Cancels what the thread runs; false if that is nothing.
  bool TerminateWorkItem();

 protected:
  void Execute() override;
  /// Cancels what the thread runs.
  void TerminatedSet() override;

 private:
  friend class TWorkerThreadPool;
  friend class TCustomThreadPool;

  bool RunWorkItem();
  void Process(IWorkItem& pWorkItem);
  void SetRunning(IWorkItem& pWorkItem);

  TWorkerThreadPool& fPool;
  TWorkItemSlot fWorkItem;
  std::optional<TComApartment>* fApartment = nullptr;  // on the thread's own stack
  bool fHasWork = false;                               // one of the pool's items is its own
  bool fInDoneEvent = false;
  bool fIsScout = false;  // see TWorkerThreadPool::fScouts
};

/// Collects what is cancelled while a pool's lock is held, and cancels it in the end:
/// cancellation calls code of others. To be made before the lock is taken. One thread.
class TCancelLater {
 public:
  TCancelLater() noexcept;
  ~TCancelLater();
  TCancelLater(const TCancelLater&) = delete;
  TCancelLater& operator=(const TCancelLater&) = delete;
  /// Cancels the item, later if the calling thread has such an object.
  static void Cancel(Ref<IWorkItem> pWorkItem);

 private:
  TCancelLater* const fBefore;
  IWorkItems fWorkItems;
};

/// One call in a thread and an apartment of its own.
class TCOMThread : public TThread {
 public:
  /// Not started. The object to keep alive, if any, is released when the thread's
  /// object goes. With pFreeThreaded the apartment is the multi-threaded one.
  TCOMThread(TThreadProcedure pExecute, Ref<IUnknown> pComObjectToKeepAlive, bool pFreeThreaded,
             bool pFreeOnTerminate);
  ~TCOMThread() override { Finish(); }
  /// Makes and starts one that frees itself; it may be gone when this returns.
  static TCOMThread* Run(TThreadProcedure pExecute, Ref<IUnknown> pComObjectToKeepAlive = nullptr,
                         bool pFreeThreaded = false);

 protected:
  void Execute() override;

 private:
  const Ref<IUnknown> fComObjectToKeepAlive;
  const bool fFreeThreaded;
  const TThreadProcedure fExecute;
};

template <class TBody>
bool TOakThread::CallOut(const TBody& pBody) {
  GoOutside();
  try {
    pBody();
  } catch (...) {
    if (!ComeInside()) return false;
    throw;
  }
  return ComeInside();
}

}  // namespace oak
