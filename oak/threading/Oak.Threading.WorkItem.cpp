#include "oak/threading/Oak.Threading.WorkItem.h"

#include "oak/framework/Thread.h"
#include "oak/platform/Api.h"
#include "oak/platform/MainThread.h"

namespace oak {
namespace {

constexpr DWORD WaitSliceMs = 1;
constexpr DWORD PauseSliceMs = 100;

/// Whether a status may follow another. Paused and Running come late now and then,
/// from a pool that is paused or resumed while the item ends.
bool MayFollow(TTaskStatus pBefore, TTaskStatus pNext) noexcept {
  if (pBefore == TTaskStatus::Canceled) return false;
  return pBefore != TTaskStatus::Completed || pNext == TTaskStatus::WaitingToRun;
}

}  // namespace

TBasicWorkItem::TBasicWorkItem(Ref<ICancellationIndicator> pCancellationToken,
                               TWorkDoneEvent pOnWorkDone)
    : fOnWorkDone(std::move(pOnWorkDone)), fCancellationToken(std::move(pCancellationToken)) {}

void TBasicWorkItem::SetOnWorkDone(TWorkDoneEvent pOnWorkDone) {
  fOnWorkDone = std::move(pOnWorkDone);
}

TTaskStatus TBasicWorkItem::GetStatus() {
  if (fCancellationToken && fCancellationToken->IsCancellationRequested())
    SetStatus(TTaskStatus::Canceled);
  return Status();
}

void TBasicWorkItem::SetStatus(TTaskStatus pStatus) {
  if (pStatus == TTaskStatus::Canceled) {
    // Whoever makes the change calls Terminate, once, however many threads find the
    // token cancelled.
    if (Status() == TTaskStatus::Canceled) return;
    if (fStatus.exchange(TTaskStatus::Canceled, std::memory_order_acq_rel) != TTaskStatus::Canceled)
      Terminate();
    return;
  }
  TTaskStatus before = Status();
  while (MayFollow(before, pStatus))
    if (fStatus.compare_exchange_weak(before, pStatus)) return;
}

void TBasicWorkItem::Terminate() {
  fStatus.store(TTaskStatus::Canceled, std::memory_order_release);
}

bool TBasicWorkItem::IsCancellationRequested() {
  return Status() == TTaskStatus::Canceled ||
         (fCancellationToken && fCancellationToken->IsCancellationRequested());
}

bool TBasicWorkItem::Terminated() {
  TTaskStatus status = GetStatus();
  while (status == TTaskStatus::Paused) {
    Api().Sleep(PauseSliceMs);
    status = GetStatus();
  }
  return status == TTaskStatus::Canceled;
}

void TBasicWorkItem::Wait() {
  while (GetStatus() < TTaskStatus::Completed) Api().Sleep(WaitSliceMs);
}

void WaitForAll(const IWorkItems& pWorkItems) {
  for (const Ref<IWorkItem>& item : pWorkItems)
    if (item) item->Wait();
}

void TBasicWorkItem::Finished() {
  if (GetStatus() == TTaskStatus::Canceled) return;
  if (!fFireOnWorkDoneSynchronized || IsMainThread()) {
    Deliver();
    return;
  }
  TThread::Queue(nullptr, [self = Ref<TBasicWorkItem>::Share(this)] { self->Finished(); });
}

void TBasicWorkItem::Deliver() {
  WorkDone();
  if (const TWorkDoneEvent onWorkDone = GetOnWorkDone()) onWorkDone(Ref<IWorkItem>::Share(this));
}

}  // namespace oak
