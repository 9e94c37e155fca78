#include "oak/threading/ThreadPool.Custom.h"

#include <algorithm>
#include <cassert>
#include <memory>
#include <thread>

#include "oak/base/TypeName.h"
#include "oak/framework/Application.h"
#include "oak/framework/MainThreadQueue.h"
#include "oak/platform/Api.h"
#include "oak/platform/MainThread.h"
#include "oak/threading/ThreadPool.Cpu.h"

namespace oak {
namespace {

constexpr DWORD EndSliceMs = 10;
constexpr DWORD ForcedGraceMs = 20;

/// Waits for the main thread: created, or paused because there are too many.
bool IsHeldBack(const TOakThread& pThread, bool pPoolIsPaused) {
  return pThread.GetSuspended() || (pThread.GetPaused() && !pPoolIsPaused);
}

}  // namespace

TCustomThreadPool::TCustomThreadPool() : fMaxRunningThreads(DefaultMaxRunningThreads()) {}

TCustomThreadPool::~TCustomThreadPool() { Shutdown(); }

void TCustomThreadPool::Shutdown() noexcept {
  if (fDestryoing) return;
  fFreeOnLastThreadTermination = false;
  fUses.fetch_and(~FreeWhenLeft);  // It is being done.
  ++fEnding;
  try {
    TerminateAllThreads(true);
  } catch (...) {
    Application().HandleException(nullptr);
  }
  OrphanCurrent();
  {
    const TLock lock(fLock);
    fDestryoing = true;
  }
  // A thread that has left the list may still be on its way out.
  for (int looks = 0; (fUses.load() & ~FreeWhenLeft) != 0; ++looks) {
    constexpr int quickLooks = 1000;
    if (looks < quickLooks)
      std::this_thread::yield();
    else
      AwaitChange(1);
  }
}

HRESULT STDMETHODCALLTYPE TCustomThreadPool::QueryInterface(REFIID iid, void** out) {
  if (!out) return E_POINTER;
  *out = iid == IID_IUnknown || iid == IPausable::Iid ? static_cast<IPausable*>(this) : nullptr;
  return *out ? S_OK : E_NOINTERFACE;
}

int TCustomThreadPool::DefaultMaxRunningThreads() { return GetCPUCount() * 3 + 2; }

// --- the list ---------------------------------------------------------------------

bool TCustomThreadPool::IsListed(const TOakThread* pThread) const {
  return std::find(fThreads.begin(), fThreads.end(), pThread) != fThreads.end();
}

void TCustomThreadPool::Add(TOakThread* pThread) {
  const TLock lock(fLock);
  List(pThread);
}

void TCustomThreadPool::List(TOakThread* pThread) {
  fThreads.push_back(pThread);
  fCount.fetch_add(1);
  try {
    NotifyAdded(*pThread);
  } catch (...) {
    pThread->fThreadPool = nullptr;
    Unlist(pThread);
    throw;
  }
}

// The lock is held. False if the thread was not in the list.
bool TCustomThreadPool::Unlist(TOakThread* pThread) noexcept {
  const auto found = std::find(fThreads.begin(), fThreads.end(), pThread);
  if (found == fThreads.end()) return false;
  fThreads.erase(found);
  fCount.fetch_sub(1);
  fChanged.SetEvent();
  TMainThreadQueue::Instance().Poke();
  return true;
}

void TCustomThreadPool::NotifyAdded(TOakThread& pThread) {
  pThread.fThreadPool = this;
  if (fPriority != tpNormal) pThread.SetPriority(fPriority);
  if (GetCount() <= fMaxRunningThreads) pThread.StartIfSuspended();
}

void TCustomThreadPool::Remove(TOakThread* pThread) {
  if (!pThread->IsFinished()) {
    TerminateThreadSecure(pThread);
    return;
  }
  const TUse use(*this);
  bool isLast = false;
  {
    const TLock lock(fLock);
    if (Unlist(pThread)) {
      isLast = fThreads.empty();
      NotifyDeleted();
    }
  }
  if (isLast) LastHasLeft();
}

void TCustomThreadPool::LastHasLeft() {
  DoAllThreadsTerminated();
  {
    const TLock lock(fLock);
    if (fThreads.empty()) fTerminated = false;
  }
  if (!IsBeingFreed() && !IsEnding()) Reopened();
}

void TCustomThreadPool::DoAllThreadsTerminated() {
  try {
    if (OnAllThreadsTerminated) OnAllThreadsTerminated(*this);
  } catch (...) {
    Application().HandleException(nullptr);
  }
  if (fFreeOnLastThreadTermination) FreeWhenUnused();
}

void TCustomThreadPool::LeaveUse() noexcept {
  if (fUses.fetch_sub(1) == (FreeWhenLeft | 1)) delete this;
}

// --- the end of threads -------------------------------------------------------------

// On the thread, which is inside.
void TCustomThreadPool::ThreadHasTerminated(TOakThread& pThread) {
  fUses.fetch_add(1);
  pThread.fInNotification = true;
  if (!DoThreadTerminated(pThread)) return;  // Whoever gave it up has ended its use.
  Remove(&pThread);
  LeaveUse();
}

bool TCustomThreadPool::DoThreadTerminated(TOakThread& pThread) {
  if (!OnThreadTerminated) return true;
  try {
    return pThread.CallOut([&] {
      TThread::Synchronize(&pThread, [event = OnThreadTerminated, &pThread] { event(pThread); });
    });
  } catch (const EThread&) {
    return true;  // The main thread takes no calls any more.
  } catch (...) {
    Application().HandleException(nullptr);
    return true;
  }
}

// The lock is held. A thread that the system does not let run is dropped.
void TCustomThreadPool::AskToEnd(TOakThread& pThread) {
  try {
    pThread.Terminate();
    pThread.StartIfSuspended();
  } catch (const EThread&) {
    const std::unique_ptr<TOakThread> unstarted(&pThread);
    Unlist(&pThread);
  }
}

void TCustomThreadPool::AskAllToEnd() {
  const TCancelLater later;
  const TLock lock(fLock);
  for (std::size_t i = fThreads.size(); i-- > 0;) AskToEnd(*fThreads[i]);
  WakeAll();
}

void TCustomThreadPool::TerminateAllThreads(bool pForce) {
  const TUse use(*this);
  {
    const TLock lock(fLock);
    if (fThreads.empty()) {
      if (fFreeOnLastThreadTermination) FreeWhenUnused();
      return;
    }
    fTerminated = true;
  }
  AskAllToEnd();
  if (pForce) EndAll();
  AwaitEmpty(1);
  CheckSynchronize(true);
}

void TCustomThreadPool::EndAll() {
  // Work that is added meanwhile brings no new threads.
  struct TEnding {
    explicit TEnding(TCustomThreadPool& pPool) : Pool(pPool) { ++Pool.fEnding; }
    ~TEnding() {
      if (--Pool.fEnding == 0 && Pool.GetCount() == 0 && !Pool.IsBeingFreed()) Pool.Reopened();
    }
    TCustomThreadPool& Pool;
  };
  const TEnding ending(*this);
  AwaitEmpty(ForcedGraceMs);
  CheckSynchronize(true);
  while (TOakThread* thread = FirstOther()) TerminateThreadSecure(thread);
}

// A thread can't wait for its own end.
TOakThread* TCustomThreadPool::FirstOther() const {
  const TLock lock(fLock);
  const TThread* const current = TThread::Current();
  const auto found = std::find_if(fThreads.begin(), fThreads.end(),
                                  [&](const TOakThread* thread) { return thread != current; });
  return found == fThreads.end() ? nullptr : *found;
}

void TCustomThreadPool::TerminateThreadSecure(TOakThread* pThread) {
  const TUse use(*this);
  bool isFinished = false;
  {
    const TCancelLater later;
    const TLock lock(fLock);
    if (!IsListed(pThread)) return;
    isFinished = pThread->IsFinished();
    AskToEnd(*pThread);
    WakeAll();
  }
  if (pThread == TThread::Current()) return;
  if (isFinished) CheckSynchronize(false);

  std::uint64_t start = Api().GetTickCount64();
  for (;;) {
    {
      const TLock lock(fLock);
      if (!IsListed(pThread)) return;
    }
    const std::uint64_t now = Api().GetTickCount64();
    start = std::min(start, now);  // The clock may have been set back.
    if (now - start >= fMaxTimeUntilHardTerminate) break;
    AwaitChange(EndSliceMs);
  }
  while (!GiveUp(pThread)) AwaitChange(1);
}

// False if the thread is inside of the pool, which it leaves soon by itself.
bool TCustomThreadPool::GiveUp(TOakThread* pThread) {
  std::unique_ptr<TOakThread> killed;
  Ref<IWorkItem> item;
  bool isLast = false, hadWork = false, wasInDoneEvent = false;
  {
    const TLock lock(fLock);
    if (!IsListed(pThread)) return true;
    if (!pThread->TryDoom()) return false;
    auto* const worker = dynamic_cast<TWorkerThread*>(pThread);
    if (worker) item = worker->GetWorkItem();
    hadWork = worker && worker->fHasWork;
    wasInDoneEvent = worker && worker->fInDoneEvent;
    ReportKill(*pThread, item);
    pThread->fStatus = TTaskStatus::Canceled;
    Unlist(pThread);
    isLast = fThreads.empty();
    NotifyDeleted();
    if (pThread->fInNotification) fUses.fetch_sub(1);  // This caller still is a user.
    if (pThread->ForceTerminate()) {
      killed.reset(pThread);
      if (worker) item = worker->fWorkItem.Take();  // The thread never will.
    } else {
      pThread->ReleaseDoomed();
    }
  }
  WorkerLost(hadWork, wasInDoneEvent);
  if (isLast) LastHasLeft();
  return true;
}

void TCustomThreadPool::ReportKill(TOakThread& pThread, const Ref<IWorkItem>& pWorkItem) {
  TString text;
  if (pWorkItem) {
    text = u"Terminating worker Thread with work item" + TypeName(pWorkItem->ClassType()) +
           u" the hard way.";
  } else {
    const auto handle = reinterpret_cast<std::uintptr_t>(pThread.GetHandle());
    text = u"Terminating Thread " + pThread.ClassName() + u" the hard way. Thread ID: " +
           IntToStr(static_cast<std::int64_t>(handle));
  }
  Api().OutputDebugStringW(W(text));
}

// The pool is being destroyed by one of its own threads, in code of others: the thread
// goes on without it.
void TCustomThreadPool::OrphanCurrent() {
  const TLock lock(fLock);
  const TThread* const current = TThread::Current();
  for (TOakThread* thread : fThreads) {
    if (thread != current) continue;
    Unlist(thread);
    const bool doomed = thread->TryDoom();
    assert(doomed && "a pool must not be destroyed by an operation of its own");
    if (!doomed) return;
    if (thread->fInNotification) fUses.fetch_sub(1);
    thread->ReleaseDoomed();
    return;
  }
}

// --- waiting ------------------------------------------------------------------------

bool TCustomThreadPool::CheckSynchronize(bool pSwallow) {
  if (!IsMainThread()) return false;
  try {
    return TThread::CheckSynchronize();
  } catch (...) {
    if (!pSwallow) throw;
    return false;
  }
}

void TCustomThreadPool::AwaitChange(DWORD pMilliseconds) {
  if (IsMainThread()) {
    TMainThreadQueue::Instance().Wait(pMilliseconds);
    CheckSynchronize(false);
  } else {
    fChanged.WaitFor(pMilliseconds);
  }
}

void TCustomThreadPool::AwaitEmpty(DWORD pMilliseconds) {
  const std::uint64_t start = Api().GetTickCount64();
  while (FirstOther() && Api().GetTickCount64() - start < pMilliseconds) AwaitChange(pMilliseconds);
}

// --- settings and queries -------------------------------------------------------------

int TCustomThreadPool::ThreadsNotTerminated() const {
  const TLock lock(fLock);
  return static_cast<int>(std::count_if(fThreads.begin(), fThreads.end(), [](TOakThread* thread) {
    return !thread->TThread::GetTerminated();
  }));
}

int TCustomThreadPool::RunningThreadCount() const {
  const TLock lock(fLock);
  return static_cast<int>(std::count_if(fThreads.begin(), fThreads.end(), [&](TOakThread* thread) {
    return !IsHeldBack(*thread, fPaused) && !thread->IsFinished();
  }));
}

bool TCustomThreadPool::StartFirstSuspendedThread() {
  const TLock lock(fLock);
  for (TOakThread* thread : fThreads) {
    if (!IsHeldBack(*thread, fPaused) || thread->IsFinished()) continue;
    try {
      if (!thread->StartIfSuspended()) thread->SetPaused(false);
      return true;
    } catch (const EThread&) {
      return false;
    }
  }
  return false;
}

void TCustomThreadPool::SetMaxRunningThreads(int pValue) {
  if (fMaxRunningThreads.exchange(pValue) == pValue) return;
  const TCancelLater later;
  const TLock lock(fLock);
  int active = 0;
  for (TOakThread* thread : fThreads)
    if (!thread->GetSuspended() && ++active > pValue) thread->Terminate();
  WakeAll();
  while (RunningThreadCount() <= pValue && StartFirstSuspendedThread()) {
  }
}

void TCustomThreadPool::SetPaused(bool pPaused) {
  const TLock lock(fLock);
  if (fPaused == pPaused) return;
  for (TOakThread* thread : fThreads) thread->SetPaused(pPaused);
  fPaused = pPaused;
}

void TCustomThreadPool::SetPriority(TThreadPriority pPriority) {
  if (fPriority == pPriority) return;
  const TLock lock(fLock);
  for (TOakThread* thread : fThreads) thread->SetPriority(pPriority);
  fPriority = pPriority;
}

// --- TThreadPool --------------------------------------------------------------------

void TThreadPool::Add(TOakThread* pThread) {
  const TCancelLater later;
  const TLock lock(fLock);
  if (fTerminated) pThread->Terminate();
  List(pThread);
}

void TThreadPool::NotifyAdded(TOakThread& pThread) {
  TCustomThreadPool::NotifyAdded(pThread);
  if (GetCount() > fMaxRunningThreads && !pThread.GetSuspended()) pThread.SetPaused(true);
}

void TThreadPool::NotifyDeleted() {
  if (RunningThreadCount() < fMaxRunningThreads) StartFirstSuspendedThread();
}

}  // namespace oak
