#include "oak/threading/ThreadPool.Threads.h"

#include <thread>

#include "oak/framework/Application.h"
#include "oak/platform/Api.h"
#include "oak/threading/ThreadPool.Worker.h"

namespace oak {
namespace {

constexpr DWORD ThreadPauseMs = 100;
constexpr DWORD ThreadDelaySliceMs = 5;

}  // namespace

// --- TOakThread -----------------------------------------------------------------

TOakThread::TOakThread(Ref<ICancellationIndicator> pCancellationIndicator)
    : fCancellationIndicator(std::move(pCancellationIndicator)) {
  SetFreeOnTerminate(true);
}

TOakThread::~TOakThread() = default;

bool TOakThread::Replace(TTaskStatus pFrom, TTaskStatus pTo) noexcept {
  return fStatus.compare_exchange_strong(pFrom, pTo);
}

void TOakThread::SetPaused(bool pPaused) {
  if (!pPaused)
    Replace(TTaskStatus::Paused, TTaskStatus::Running);
  else if (!Replace(TTaskStatus::Running, TTaskStatus::Paused) &&
           !Replace(TTaskStatus::WaitingToRun, TTaskStatus::Paused))
    Replace(TTaskStatus::Running, TTaskStatus::Paused);  // started in between
}

void TOakThread::SetBackgroundMode(bool pBackgroundMode) {
  if (fBackgroundMode.exchange(pBackgroundMode) == pBackgroundMode) return;
  Api().SetThreadPriority(Api().GetCurrentThread(), pBackgroundMode ? THREAD_MODE_BACKGROUND_BEGIN
                                                                    : THREAD_MODE_BACKGROUND_END);
}

bool TOakThread::GetTerminated() {
  while (GetPaused() && !TThread::GetTerminated()) Api().Sleep(ThreadPauseMs);
  return TThread::GetTerminated() ||
         (fCancellationIndicator && fCancellationIndicator->IsCancellationRequested());
}

void TOakThread::Delay(DWORD pMilliseconds) {
  const std::uint64_t start = Api().GetTickCount64();
  while (!GetTerminated() && Api().GetTickCount64() - start < pMilliseconds)
    Api().Sleep(ThreadDelaySliceMs);
}

void TOakThread::Start() {
  // Before the thread runs, which may find its pool paused.
  const bool waited = Replace(TTaskStatus::WaitingToRun, TTaskStatus::Running);
  try {
    TThread::Start();
  } catch (...) {
    if (waited && GetSuspended()) Replace(TTaskStatus::Running, TTaskStatus::WaitingToRun);
    throw;
  }
}

bool TOakThread::StartIfSuspended() {
  if (!GetSuspended()) return false;
  const bool waited = Replace(TTaskStatus::WaitingToRun, TTaskStatus::Running);
  try {
    return TThread::StartIfSuspended();
  } catch (...) {
    if (waited) Replace(TTaskStatus::Running, TTaskStatus::WaitingToRun);
    throw;
  }
}

void TOakThread::DoTerminate() {
  TTaskStatus status = GetStatus();
  while (status != TTaskStatus::Canceled &&
         !fStatus.compare_exchange_weak(status, TTaskStatus::Completed)) {
  }
  try {
    TThread::DoTerminate();
  } catch (...) {
    // An event that fails does not keep the thread in its pool.
    Application().HandleException(nullptr);
  }
  if (GetThreadPool() && ComeInside()) NotifyThreadPool();
}

void TOakThread::NotifyThreadPool() { GetThreadPool()->ThreadHasTerminated(*this); }

bool TOakThread::ComeInside() noexcept {
  for (;;) {
    TPlace place = TPlace::Outside;
    if (fPlace.compare_exchange_strong(place, TPlace::Inside)) return true;
    if (place == TPlace::Orphaned) return false;
    std::this_thread::yield();
  }
}

bool TOakThread::TryDoom() noexcept {
  TPlace place = TPlace::Outside;
  return fPlace.compare_exchange_strong(place, TPlace::Doomed);
}

void TOakThread::ReleaseDoomed() noexcept {
  fThreadPool = nullptr;
  fPlace.store(TPlace::Orphaned);
}

// --- TWorkerThread --------------------------------------------------------------

TWorkerThread::TWorkerThread(TWorkerThreadPool& pPool) : fPool(pPool) {}

TWorkerThread::~TWorkerThread() = default;

void TWorkerThread::SetPaused(bool pPaused) {
  TOakThread::SetPaused(pPaused);
  if (const Ref<IWorkItem> item = fWorkItem.Get())
    item->SetStatus(pPaused ? TTaskStatus::Paused : TTaskStatus::Running);
}

bool TWorkerThread::TerminateWorkItem() {
  const Ref<IWorkItem> item = fWorkItem.Get();
  if (item) TCancelLater::Cancel(item);
  StartIfSuspended();
  return static_cast<bool>(item);
}

void TWorkerThread::TerminatedSet() {
  TOakThread::TerminatedSet();
  TerminateWorkItem();
}

void TWorkerThread::Execute() {
  if (!ComeInside()) return;
  // Not a member: if the thread is killed, nobody else may leave its apartment.
  std::optional<TComApartment> apartment;
  fApartment = &apartment;
  bool mine = fPool.PrepareThread(*this);
  while (mine && !GetTerminated()) mine = !fPool.GetWorkItem(*this) || RunWorkItem();
  if (mine) {
    fPool.StopScouting(*this);
    GoOutside();
  }
}

// False if the pool has given the thread up meanwhile.
bool TWorkerThread::RunWorkItem() {
  GoOutside();
  Process(*fWorkItem.Held());
  if (!ComeInside()) return false;
  // The last reference runs code of others too, and may be the one that holds the pool.
  Ref<IWorkItem> item = fWorkItem.Take();
  GoOutside();
  item.Reset();
  return ComeInside() && fPool.WorkItemDone(*this);
}

void TWorkerThread::Process(IWorkItem& pWorkItem) {
  try {
    if (pWorkItem.GetStatus() == TTaskStatus::Canceled) return;
    SetRunning(pWorkItem);
    try {
      pWorkItem.DoWork();
    } catch (...) {
      pWorkItem.SetStatus(TTaskStatus::Canceled);
      Application().HandleException(this);
    }
    if (pWorkItem.GetStatus() != TTaskStatus::Canceled) pWorkItem.SetStatus(TTaskStatus::Completed);
    pWorkItem.Finished();
  } catch (...) {
    Application().HandleException(this);
  }
}

// A pause that comes meanwhile finds the item here, but may be overtaken by Running.
void TWorkerThread::SetRunning(IWorkItem& pWorkItem) {
  bool paused = GetPaused();
  for (;;) {
    pWorkItem.SetStatus(paused ? TTaskStatus::Paused : TTaskStatus::Running);
    const bool now = GetPaused();
    if (now == paused) return;
    paused = now;
  }
}

// --- TCancelLater ---------------------------------------------------------------

namespace {
thread_local TCancelLater* tCancelLater = nullptr;
}  // namespace

TCancelLater::TCancelLater() noexcept : fBefore(tCancelLater) { tCancelLater = this; }

TCancelLater::~TCancelLater() {
  tCancelLater = fBefore;
  for (Ref<IWorkItem>& item : fWorkItems) {
    try {
      Cancel(std::move(item));
    } catch (...) {
      Application().HandleException(nullptr);
    }
  }
}

void TCancelLater::Cancel(Ref<IWorkItem> pWorkItem) {
  if (tCancelLater)
    tCancelLater->fWorkItems.push_back(std::move(pWorkItem));
  else
    pWorkItem->Cancel();
}

// --- TCOMThread -----------------------------------------------------------------

TCOMThread::TCOMThread(TThreadProcedure pExecute, Ref<IUnknown> pComObjectToKeepAlive,
                       bool pFreeThreaded, bool pFreeOnTerminate)
    : fComObjectToKeepAlive(std::move(pComObjectToKeepAlive)),
      fFreeThreaded(pFreeThreaded),
      fExecute(std::move(pExecute)) {
  SetFreeOnTerminate(pFreeOnTerminate);
}

TCOMThread* TCOMThread::Run(TThreadProcedure pExecute, Ref<IUnknown> pComObjectToKeepAlive,
                            bool pFreeThreaded) {
  return StartNew<TCOMThread>(std::move(pExecute), std::move(pComObjectToKeepAlive), pFreeThreaded,
                              true);
}

void TCOMThread::Execute() {
  const TComApartment apartment(COINIT_SPEED_OVER_MEMORY |
                                (fFreeThreaded ? COINIT_MULTITHREADED : COINIT_APARTMENTTHREADED));
  fExecute();
}

}  // namespace oak
