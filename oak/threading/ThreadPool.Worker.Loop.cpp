// The worker pool as its threads see it: taking work, waiting for it, retiring.
#include <thread>

#include "oak/framework/Application.h"
#include "oak/platform/Api.h"
#include "oak/threading/ThreadPool.Global.h"
#include "oak/threading/ThreadPool.Worker.h"

namespace oak {
namespace {

constexpr DWORD IdlePollMs = 500;

// How often a worker looks at the queue before it sleeps: some microseconds, what waking
// it would cost. With one processor nobody could add anything meanwhile.
int ScoutingLooks() {
  constexpr int looks = 100;
  static const int result = std::thread::hardware_concurrency() > 1 ? looks : 0;
  return result;
}

}  // namespace

bool TWorkerThreadPool::PrepareThread(TWorkerThread& pThread) {
  {
    // Under the lock, which SetPaused holds: it finds the thread before or behind this.
    const TLock lock(fLock);
    pThread.Replace(TTaskStatus::WaitingToRun, TTaskStatus::Running);
    if (fPaused) pThread.Replace(TTaskStatus::Running, TTaskStatus::Paused);
  }
  TThread::NameThreadForDebugging(IsGlobalPool(*this) ? u"TWorkerThread in GlobalThreadPool"
                                                      : pThread.ClassName());
  return pThread.CallOut([&] {
    try {
      DoNewThread(pThread);
    } catch (...) {
      Application().HandleException(&pThread);
    }
  });
}

void TWorkerThreadPool::DoNewThread(TOakThread& pThread) {
  auto* const worker = dynamic_cast<TWorkerThread*>(&pThread);
  if (fInitializeCOM && worker)
    worker->fApartment->emplace(COINIT_APARTMENTTHREADED | COINIT_SPEED_OVER_MEMORY);
  if (OnNewThread) OnNewThread(*this, pThread);
}

// True if the thread holds an item now.
bool TWorkerThreadPool::GetWorkItem(TWorkerThread& pThread) {
  if (pThread.GetTerminated()) return false;
  if (!Dequeue(pThread) && !AwaitWorkItem(pThread)) return false;
  CheckAddNewWorkerThread();
  return true;
}

bool TWorkerThreadPool::AwaitWorkItem(TWorkerThread& pThread) {
  const std::uint64_t idleSince = Api().GetTickCount64();
  for (;;) {
    if (Scout(pThread)) return true;
    const std::uint64_t now = Api().GetTickCount64();
    if (now < idleSince || now - idleSince > fMaxIdleTime) {
      pThread.Terminate();
      return false;
    }
    const TWaitResult result = fNewWorkItemEvent.WaitFor(IdlePollMs);
    if (result == wrSignaled)
      pThread.fIsScout = true;
    else if (result != wrTimeout)
      return false;
    if (pThread.GetPaused()) StopScouting(pThread);  // others may not be
    if (pThread.GetTerminated()) return false;
    if (Dequeue(pThread)) return true;
  }
}

bool TWorkerThreadPool::HasWork() const noexcept {
  return QueueLength() > 0 && fAllWorkItemsDoneEventCount.load() == 0;
}

bool TWorkerThreadPool::Dequeue(TWorkerThread& pThread) {
  if (!fWorkerItemsQueue.Dequeue(pThread.fWorkItem, fAllWorkItemsDoneEventCount)) return false;
  pThread.fHasWork = true;
  StopScouting(pThread);
  return true;
}

// Looks at the empty queue for a while, unless another one does.
bool TWorkerThreadPool::Scout(TWorkerThread& pThread) {
  int none = 0;
  if (!pThread.fIsScout && !fScouts.compare_exchange_strong(none, 1)) return false;
  pThread.fIsScout = true;
  for (int looks = ScoutingLooks(); looks > 0 && !pThread.TThread::GetTerminated(); --looks) {
    if (HasWork() && Dequeue(pThread)) return true;
    RelaxProcessor();
  }
  // Who adds something from here on wakes somebody; what came just before is seen here.
  pThread.fIsScout = false;
  fScouts.store(0);
  return HasWork() && Dequeue(pThread);
}

void TWorkerThreadPool::StopScouting(TWorkerThread& pThread) noexcept {
  if (!pThread.fIsScout) return;
  pThread.fIsScout = false;
  fScouts.store(0);
  if (HasWork()) WakeWorker();
}

void TWorkerThreadPool::WakeWorker() noexcept {
  int none = 0;
  if (fScouts.load() == 0 && fScouts.compare_exchange_strong(none, 1)) fNewWorkItemEvent.SetEvent();
}

bool TWorkerThreadPool::WorkItemDone(TWorkerThread& pThread) {
  pThread.fHasWork = false;
  return !EndItems(1) || TriggerAllWorkItemsDoneEvent(&pThread);
}

}  // namespace oak
