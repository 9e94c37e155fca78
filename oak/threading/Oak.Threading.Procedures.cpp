#include "oak/threading/Oak.Threading.Procedures.h"

#include "oak/framework/Thread.h"
#include "oak/platform/Api.h"
#include "oak/threading/Oak.Threading.Pool.h"

namespace oak {
namespace {

constexpr int DelaySliceMs = 50;

Ref<IWorkItem> Queued(Ref<IWorkItem> pWorkItem) {
  TWorkerPool::GlobalInstance()->AddWorkItem(pWorkItem, TPriority::Normal);
  return pWorkItem;
}

}  // namespace

TAsyncProcedure::TAsyncProcedure(TProc pMethod, Ref<ICancellationIndicator> pCancellationToken,
                                 TProc pOnWorkDone)
    : TBasicWorkItem(std::move(pCancellationToken)),
      fProcedure(std::move(pMethod)),
      fWorkDone(std::move(pOnWorkDone)) {}

Ref<IWorkItem> TAsyncProcedure::CreateNoAdd(TProc pMethod,
                                            Ref<ICancellationIndicator> pCancellationToken,
                                            TWorkDoneEvent, int pTag) {
  const auto item = MakeRef<TAsyncProcedure>(std::move(pMethod), std::move(pCancellationToken));
  item->SetTag(pTag);
  return item;
}

Ref<IWorkItem> TAsyncProcedure::CreateAndQueue(TProc pMethod,
                                               Ref<ICancellationIndicator> pCancellationToken,
                                               TProc pOnWorkDone) {
  return Queued(MakeRef<TAsyncProcedure>(std::move(pMethod), std::move(pCancellationToken),
                                         std::move(pOnWorkDone)));
}

void TAsyncProcedure::DoWork() {
  if (!Terminated()) fProcedure();
}

void TAsyncProcedure::WorkDone() {
  if (fWorkDone) fWorkDone();
}

TDelayedProcedure::TDelayedProcedure(TThreadProcedure pMethod, int pDelay,
                                     bool pExecuteAsynchronous,
                                     Ref<ICancellationIndicator> pCancellationToken)
    : TBasicWorkItem(std::move(pCancellationToken)),
      fDelay(pDelay),
      fMethod(std::move(pMethod)),
      fExecuteAsynchronous(pExecuteAsynchronous) {
  fFireOnWorkDoneSynchronized = false;
}

Ref<IWorkItem> TDelayedProcedure::CreateAndQueue(TThreadProcedure pMethod, int pDelay,
                                                 bool pExecuteAsynchronous,
                                                 Ref<ICancellationIndicator> pCancellationToken) {
  return Queued(MakeRef<TDelayedProcedure>(std::move(pMethod), pDelay, pExecuteAsynchronous,
                                           std::move(pCancellationToken)));
}

Ref<IWorkItem> TDelayedProcedure::CreateAndQueue(TThreadProcedure pMethod,
                                                 Ref<ICancellationIndicator> pCancellationToken) {
  return CreateAndQueue(std::move(pMethod), 0, true, std::move(pCancellationToken));
}

void TDelayedProcedure::DoWork() {
  if (!SleepThrough()) return;
  if (fExecuteAsynchronous) {
    if (!Terminated()) fMethod();
    return;
  }
  TThread::Queue(nullptr, [self = Ref<TDelayedProcedure>::Share(this)] {
    // A pause must not hold up the main thread, so only the end is tested here.
    if (self->GetStatus() != TTaskStatus::Canceled) self->fMethod();
  });
}

// False if the item was cancelled meanwhile.
bool TDelayedProcedure::SleepThrough() {
  if (fDelay <= 0) return true;
  for (int slices = fDelay / DelaySliceMs + 1; slices > 0; --slices) {
    Api().Sleep(DelaySliceMs);
    if (Terminated()) return false;
  }
  Api().Sleep(static_cast<DWORD>(fDelay % DelaySliceMs));
  return true;
}

}  // namespace oak
