#include "oak/threading/ThreadPool.Worker.h"

#include <algorithm>
#include <memory>
#include <new>

#include "oak/base/TypeName.h"
#include "oak/framework/Application.h"
#include "oak/platform/Api.h"
#include "oak/threading/ThreadPool.Cpu.h"

namespace oak {
namespace {

constexpr std::uint64_t GrowthIntervalMs = 400;

}  // namespace

TWorkerThreadPool::TWorkerThreadPool(bool aInitializeCOM) : fInitializeCOM(aInitializeCOM) {}

HRESULT STDMETHODCALLTYPE TWorkerThreadPool::QueryInterface(REFIID iid, void** out) {
  if (!out) return E_POINTER;
  if (iid == IWorkerThreadPool::Iid) {
    *out = static_cast<IWorkerThreadPool*>(this);
    AddRef();
    return S_OK;
  }
  const HRESULT result = TCustomThreadPool::QueryInterface(iid, out);
  if (SUCCEEDED(result)) AddRef();
  return result;
}

int TWorkerThreadPool::GetCPUUsage() { return oak::GetCPUUsage(); }

// --- adding -------------------------------------------------------------------------

void TWorkerThreadPool::CheckNotDestroying() const {
  if (fDestryoing)
    throw EInvalidOperation(u"New workitems cannot be added to a threadpool that is destroying.");
}

void TWorkerThreadPool::AddWorkItem(Ref<IWorkItem> pWorkItem) {
  AddWorkItem(std::move(pWorkItem), fUseLIFO ? TPriority::Highest : TPriority::Normal);
}

void TWorkerThreadPool::AddWorkItem(Ref<IWorkItem> pWorkItem, TPriority pPriority) {
  if (!pWorkItem) throw EArgumentException(u"pWorkItem must not be nil.");
  CheckNotDestroying();
  if (fIsTerminatingAllWorkitems > 0) return;
  fWorkerItemsQueue.Add(std::move(pWorkItem), pPriority == TPriority::Highest);
  WakeWorker();
  CheckAddNewWorkerThread();
}

void TWorkerThreadPool::AddWorkItems(const IWorkItems& pWorkItems, TPriority pPriority) {
  if (std::find(pWorkItems.begin(), pWorkItems.end(), nullptr) != pWorkItems.end())
    throw EArgumentException(u"pWorkItems must not contain nil.");
  CheckNotDestroying();
  for (const Ref<IWorkItem>& item : pWorkItems) item->SetStatus(TTaskStatus::WaitingToRun);
  {
    const TLock lock(fLock);
    CheckNotDestroying();
    fWorkerItemsQueue.AddRange(pWorkItems, pPriority == TPriority::Highest);
  }
  if (!pWorkItems.empty()) WakeWorker();
  CheckAddNewWorkerThread();
}

// --- growth -------------------------------------------------------------------------

// On the path of each add: without a lock unless there is a thread to be made.
void TWorkerThreadPool::CheckAddNewWorkerThread() {
  const std::uint64_t now = Api().GetTickCount64();
  const std::uint64_t last = fLastCheckAddNewWorkerThread.load(std::memory_order_relaxed);
  const int count = GetCount();
  if (last + GrowthIntervalMs > now && count > fMinWorkerThreads) return;
  if (!MayGrow()) {
    // Written only if it changes: all that add and work read the same memory.
    if (last != now) fLastCheckAddNewWorkerThread.store(now, std::memory_order_relaxed);
    return;
  }
  const TLock lock(fLock);
  fLastCheckAddNewWorkerThread.store(now, std::memory_order_relaxed);
  // Of several that came here at once the first one grows the pool above its minimum.
  const bool cameSecond = GetCount() > count && GetCount() > fMinWorkerThreads;
  if (!cameSecond && MayGrow()) AddWorker();
}

bool TWorkerThreadPool::MayGrow() const {
  const int count = GetCount();
  if (count >= fMaxRunningThreads || QueueLength() == 0 || fTerminated || IsEnding()) return false;
  return count < fMinWorkerThreads || oak::GetCPUUsage() < fMaxCpuUsage;
}

// The lock is held. Without any thread the queue would never run, so only then the
// failure matters.
void TWorkerThreadPool::AddWorker() {
  try {
    auto thread = std::make_unique<TWorkerThread>(*this);
    Add(thread.get());
    (void)thread.release();  // It frees itself, maybe already.
  } catch (const EThread&) {
    if (GetCount() == 0) throw;
  } catch (const std::bad_alloc&) {
    if (GetCount() == 0) throw;
  }
}

void TWorkerThreadPool::Remove(TOakThread* pThread) {
  if (QueueLength() > 0) CheckAddNewWorkerThread();
  TCustomThreadPool::Remove(pThread);
}

void TWorkerThreadPool::Reopened() noexcept {
  try {
    if (QueueLength() > 0) CheckAddNewWorkerThread();
  } catch (...) {
    // The next item that is added tries again, and tells its caller.
  }
}

// --- the end --------------------------------------------------------------------------

int TWorkerThreadPool::TerminateWorkItems() {
  if (GetWorkItemsCount() == 0) return 0;
  const TUse use(*this);
  struct TTerminating {
    explicit TTerminating(std::atomic<int>& pCalls) : Calls(pCalls) { ++Calls; }
    ~TTerminating() { --Calls; }
    std::atomic<int>& Calls;
  };
  const TTerminating terminating(fIsTerminatingAllWorkitems);

  const int dropped = fWorkerItemsQueue.Clear();
  if (dropped > 0 && EndItems(dropped)) {
    TriggerAllWorkItemsDoneEvent(nullptr);
    return dropped;
  }
  int canceled = 0;
  const TCancelLater later;
  const TLock lock(fLock);
  for (std::size_t i = fThreads.size(); i-- > 0;)
    if (auto* worker = dynamic_cast<TWorkerThread*>(fThreads[i]))
      if (worker->TerminateWorkItem()) ++canceled;
  return dropped + canceled;
}

void TWorkerThreadPool::TerminateAllThreads(bool pForce) {
  const TUse use(*this);
  TCustomThreadPool::TerminateAllThreads(false);
  if (IsBeingFreed()) return;
  TerminateWorkItems();
  TCustomThreadPool::TerminateAllThreads(pForce);
  if (pForce) {
    const int dropped = fWorkerItemsQueue.Clear();
    if (dropped > 0 && EndItems(dropped)) TriggerAllWorkItemsDoneEvent(nullptr);
  }
  CheckSynchronize(true);
}

// Their next poll may be half a second away.
void TWorkerThreadPool::WakeAll() noexcept {
  fNewWorkItemEvent.SetEventFor(static_cast<std::uint32_t>(GetCount()));
}

// True for the one call by which none is left.
bool TWorkerThreadPool::EndItems(int pCount) noexcept {
  const auto count = static_cast<std::uint64_t>(pCount);
  const std::uint64_t ended = fEndedItems.fetch_add(count) + count;
  return QueueLength() == 0 && ended == fWorkerItemsQueue.Added();
}

// False if the thread was given up while it was in the event.
bool TWorkerThreadPool::TriggerAllWorkItemsDoneEvent(TWorkerThread* pThread) {
  if (!OnAllWorkItemsDone) return true;
  if (fAllWorkItemsDoneEventCount.fetch_add(1) == 0) {
    const auto call = [event = OnAllWorkItemsDone, terminated = GetTerminated()] {
      try {
        event(terminated);
      } catch (...) {
        Application().HandleException(nullptr);
      }
    };
    if (!pThread) {
      call();
    } else {
      pThread->fInDoneEvent = true;
      if (!pThread->CallOut(call)) return false;
      pThread->fInDoneEvent = false;
    }
  }
  LeaveDoneEvent();
  return true;
}

// What was added during the event has waited for this.
void TWorkerThreadPool::LeaveDoneEvent() noexcept {
  fAllWorkItemsDoneEventCount.fetch_sub(1);
  if (HasWork()) WakeWorker();
}

void TWorkerThreadPool::WorkerLost(bool pHadWork, bool pWasInDoneEvent) {
  if (pWasInDoneEvent) LeaveDoneEvent();
  if (pHadWork && EndItems(1)) TriggerAllWorkItemsDoneEvent(nullptr);
}

// --- settings -------------------------------------------------------------------------

void TWorkerThreadPool::SetMaxRunningThreads(int pValue) {
  // The limit that is replaced counts here, not the new one.
  const int before = GetMaxRunningThreads();
  if (before < fMinWorkerThreads) fMinWorkerThreads = std::max(before - 1, 1);
  TCustomThreadPool::SetMaxRunningThreads(pValue);
}

void TWorkerThreadPool::SetMinWorkerThreads(int pValue) {
  fMinWorkerThreads = pValue;
  if (pValue > GetMaxRunningThreads()) SetMaxRunningThreads(pValue);
  CheckAddNewWorkerThread();
}

void TWorkerThreadPool::SetMaxCpuUsage(int pValue) { fMaxCpuUsage = std::clamp(pValue, 0, 100); }

// --- queries --------------------------------------------------------------------------

bool TWorkerThreadPool::WorkItemsActive() const {
  if (GetWorkItemsCount() == 0) return false;
  if (GetCount() == 0)
    throw EInvalidOperation(TypeNameOf(*this) +
                            u" should have worker threads in case it has worker items.");
  return true;
}

int TWorkerThreadPool::ActiveThreadCount() const {
  const TLock lock(fLock);
  return static_cast<int>(std::count_if(fThreads.begin(), fThreads.end(), [](TOakThread* thread) {
    const auto* const worker = dynamic_cast<TWorkerThread*>(thread);
    return worker && !worker->fWorkItem.IsEmpty();
  }));
}

// What the threads run, from the last to the first.
std::vector<Ref<IWorkItem>> TWorkerThreadPool::RunningItems() const {
  std::vector<Ref<IWorkItem>> items;
  const TLock lock(fLock);
  for (std::size_t i = fThreads.size(); i-- > 0;)
    if (const auto* worker = dynamic_cast<TWorkerThread*>(fThreads[i]))
      if (Ref<IWorkItem> item = worker->GetWorkItem()) items.push_back(std::move(item));
  return items;
}

bool TWorkerThreadPool::ContainsWorkItem(int pTag) {
  if (fWorkerItemsQueue.ContainsWorkItem(pTag)) return true;
  const auto items = RunningItems();
  return std::any_of(items.begin(), items.end(),
                     [&](const Ref<IWorkItem>& item) { return item->GetTag() == pTag; });
}

bool TWorkerThreadPool::ContainsWorkItem(const GUID& pInterfaceID) {
  if (fWorkerItemsQueue.ContainsWorkItem(pInterfaceID)) return true;
  const auto items = RunningItems();
  return std::any_of(items.begin(), items.end(),
                     [&](const Ref<IWorkItem>& item) { return Supports(*item, pInterfaceID); });
}

}  // namespace oak
