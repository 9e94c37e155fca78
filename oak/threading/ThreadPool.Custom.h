// Pools of threads: what all have in common, and the pool of ready-made threads.
#pragma once

#include <atomic>
#include <functional>
#include <vector>

#include "oak/framework/Component.h"
#include "oak/framework/Sync.h"
#include "oak/threading/Oak.Threading.Types.h"
#include "oak/threading/ThreadPool.Threads.h"

namespace oak {

/// A list of threads with limits, a lock, and a way to end that does not fail. Threads
/// free themselves; the pool only lists them. Any thread may call; a pool is destroyed
/// by one that is not inside of it. Not counted: AddRef and Release do nothing and
/// return -1.
class TCustomThreadPool : public TObject, public IPausable {
 public:
  using TThreadEvent = std::function<void(TOakThread& thread)>;
  using TPoolEvent = std::function<void(TCustomThreadPool& pool)>;

  TCustomThreadPool();
  /// Ends all threads: asks them to, and gives those up that have not ended within
  /// MaxTimeUntilHardTerminate. On the main thread it calls CheckSynchronize meanwhile.
  ~TCustomThreadPool() override;
  TCustomThreadPool(const TCustomThreadPool&) = delete;
  TCustomThreadPool& operator=(const TCustomThreadPool&) = delete;

  HRESULT STDMETHODCALLTYPE QueryInterface(REFIID iid, void** out) override;
  ULONG STDMETHODCALLTYPE AddRef() override { return static_cast<ULONG>(-1); }
  ULONG STDMETHODCALLTYPE Release() override { return static_cast<ULONG>(-1); }

  /// Three for each processor, and two.
  static int DefaultMaxRunningThreads();

  /// Takes a thread that was not started, gives it the pool's priority, and starts it
  /// unless there are MaxRunningThreads before it. The thread frees itself in the end.
  virtual void Add(TOakThread* pThread);
  /// Takes a thread that is over out of the list; any other is ended the hard way.
  virtual void Remove(TOakThread* pThread);
  /// Asks all threads to end. With pForce it also waits until they have, and gives those
  /// up that don't in time. The pool can be used again afterwards. With
  /// FreeOnLastThreadTermination the pool may be gone when this returns.
  virtual void TerminateAllThreads(bool pForce);
  /// Ends one thread: asks it to, waits MaxTimeUntilHardTerminate, and then gives it
  /// up. What the system has no force for (Linux) goes on, without a pool, and frees
  /// itself when it ends after all.
  void TerminateThreadSecure(TOakThread* pThread);

  int GetCount() const noexcept { return fCount.load(); }
  bool ThreadsActive() const noexcept { return GetCount() > 0; }
  int ThreadsNotTerminated() const;
  /// Threads that were started and are not over.
  int RunningThreadCount() const;
  /// Whether all threads have been asked to end and the last one has not left.
  bool GetTerminated() const noexcept { return fTerminated; }

  int GetMaxRunningThreads() const noexcept { return fMaxRunningThreads; }
  /// Threads above the limit are asked to end; below it waiting ones are started, one
  /// more than the limit included.
  virtual void SetMaxRunningThreads(int pValue);
  bool GetPaused() override { return fPaused; }
  /// Pauses or resumes all threads, and those that come. Paused work stops at its next
  /// look at Terminated.
  void SetPaused(bool pPaused) override;
  /// tpNormal by default. Of all threads, and those that come.
  TThreadPriority GetPriority() const noexcept { return fPriority; }
  void SetPriority(TThreadPriority pPriority);
  /// How long a thread may take to end, in milliseconds; 3000 by default.
  DWORD GetMaxTimeUntilHardTerminate() const noexcept { return fMaxTimeUntilHardTerminate; }
  void SetMaxTimeUntilHardTerminate(DWORD pMilliseconds) {
    fMaxTimeUntilHardTerminate = pMilliseconds;
  }
  /// Whether the pool destroys itself when the last thread leaves, or when it is
  /// terminated without having one. Default False; only for a pool made by new.
  bool GetFreeOnLastThreadTermination() const noexcept { return fFreeOnLastThreadTermination; }
  void SetFreeOnLastThreadTermination(bool pValue) { fFreeOnLastThreadTermination = pValue; }

  /// A thread has ended; on the main thread, while that thread waits. To be set before
  /// threads are added, like the next one.
  TThreadEvent OnThreadTerminated;
  /// The last thread has ended; on that thread. Not the place to destroy the pool: see
  /// FreeOnLastThreadTermination.
  TPoolEvent OnAllThreadsTerminated;

 protected:
  using TThreads = std::vector<TOakThread*>;

  /// What the destructor does. The destructor of each derived class calls it first: until
  /// the threads are gone they call virtual operations.
  void Shutdown() noexcept;
  /// The list has changed; under the lock. The first: a thread was added.
  virtual void NotifyAdded(TOakThread& pThread);
  virtual void NotifyDeleted() {}
  virtual void DoAllThreadsTerminated();
  /// Threads have been asked to end: those that sleep are to see it.
  virtual void WakeAll() noexcept {}
  /// The pool is empty and may be used again.
  virtual void Reopened() noexcept {}
  /// A thread has been given up, with its work item or in the event that the pool has no
  /// more of them. Not under the lock.
  virtual void WorkerLost(bool /*pHadWork*/, bool /*pWasInDoneEvent*/) {}
  /// Whether threads are being ended for good, so that none may be added.
  bool IsEnding() const noexcept { return fEnding.load() > 0; }
  bool IsListed(const TOakThread* pThread) const;
  /// Adds to the list and takes back if that raises. Under the lock.
  void List(TOakThread* pThread);
  bool StartFirstSuspendedThread();
  /// Calls CheckSynchronize on the main thread; elsewhere false. With pSwallow what it
  /// throws is dropped.
  static bool CheckSynchronize(bool pSwallow);
  /// Waits for a thread to leave, at most so long; the main thread looks after its queue.
  void AwaitChange(DWORD pMilliseconds);
  void AwaitEmpty(DWORD pMilliseconds);

  /// Somebody is inside of the pool, which therefore does not free itself yet.
  class TUse {
   public:
    explicit TUse(TCustomThreadPool& pPool) noexcept : fPool(pPool) { fPool.fUses.fetch_add(1); }
    ~TUse() { fPool.LeaveUse(); }
    TUse(const TUse&) = delete;
    TUse& operator=(const TUse&) = delete;

   private:
    TCustomThreadPool& fPool;
  };
  /// Destroys the pool when the last use ends. Within a use.
  void FreeWhenUnused() noexcept { fUses.fetch_or(FreeWhenLeft); }
  bool IsBeingFreed() const noexcept { return (fUses.load() & FreeWhenLeft) != 0; }

  mutable TCriticalSection fLock;  ///< Taken before the queue's, never behind it.
  TThreads fThreads;               ///< Guarded by fLock.
  std::atomic<int> fMaxRunningThreads;
  std::atomic<bool> fPaused{false};
  std::atomic<TThreadPriority> fPriority{tpNormal};
  std::atomic<DWORD> fMaxTimeUntilHardTerminate{3000};
  std::atomic<bool> fFreeOnLastThreadTermination{false};
  std::atomic<bool> fTerminated{false};
  std::atomic<bool> fDestryoing{false};

 private:
  friend class TOakThread;
  friend class TWorkerThread;
  static constexpr std::uint32_t FreeWhenLeft = 0x80000000u;

  void ThreadHasTerminated(TOakThread& pThread);
  bool DoThreadTerminated(TOakThread& pThread);
  void AskToEnd(TOakThread& pThread);
  void AskAllToEnd();
  void EndAll();
  TOakThread* FirstOther() const;
  bool GiveUp(TOakThread* pThread);
  void ReportKill(TOakThread& pThread, const Ref<IWorkItem>& pWorkItem);
  void OrphanCurrent();
  bool Unlist(TOakThread* pThread) noexcept;
  void LastHasLeft();
  void LeaveUse() noexcept;

  std::atomic<int> fCount{0};  ///< Size of fThreads.
  std::atomic<int> fEnding{0};
  std::atomic<std::uint32_t> fUses{0};
  TEvent fChanged;  ///< Set when a thread leaves.
};

/// A pool of ready-made threads: those above the limit wait until others have ended.
class TThreadPool : public TCustomThreadPool {
 public:
  ~TThreadPool() override { Shutdown(); }
  /// A thread that comes while the pool is terminating is asked to end at once.
  void Add(TOakThread* pThread) override;

 protected:
  void NotifyAdded(TOakThread& pThread) override;
  void NotifyDeleted() override;
};

}  // namespace oak
