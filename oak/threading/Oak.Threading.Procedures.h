// Ready-made work items: run a procedure, now or later.
#pragma once

#include <functional>

#include "oak/threading/Oak.Threading.WorkItem.h"

namespace oak {

using TProc = std::function<void()>;
using TThreadProcedure = std::function<void()>;

/// Runs a procedure on a worker.
class TAsyncProcedure : public TBasicWorkItem {
 public:
  /// pOnWorkDone is called on the main thread behind the procedure.
  TAsyncProcedure(TProc pMethod, Ref<ICancellationIndicator> pCancellationToken = nullptr,
                  TProc pOnWorkDone = nullptr);

  /// Makes the item for a pool of the caller's choice. No completion is reported:
  /// pOnWorkDone is taken and dropped. Assign OnWorkDone for that.
  static Ref<IWorkItem> CreateNoAdd(TProc pMethod, Ref<ICancellationIndicator> pCancellationToken,
                                    TWorkDoneEvent pOnWorkDone, int pTag);
  /// Makes the item and hands it to the global pool.
  static Ref<IWorkItem> CreateAndQueue(TProc pMethod,
                                       Ref<ICancellationIndicator> pCancellationToken = nullptr,
                                       TProc pOnWorkDone = nullptr);

  void DoWork() override;

 protected:
  void WorkDone() override;

 private:
  TProc fProcedure;
  TProc fWorkDone;
};

/// Runs a procedure after a delay, on a worker or on the main thread. It holds a
/// worker during its delay, of which a pool has more than the machine has processors.
class TDelayedProcedure : public TBasicWorkItem {
 public:
  /// The wait takes pDelay and 50 milliseconds more; with 0 or less there is none.
  /// Cancellation is seen every 50 milliseconds. With pExecuteAsynchronous the
  /// procedure runs on the worker, else on the main thread, which tests for
  /// cancellation once more.
  TDelayedProcedure(TThreadProcedure pMethod, int pDelay, bool pExecuteAsynchronous,
                    Ref<ICancellationIndicator> pCancellationToken);

  static Ref<IWorkItem> CreateAndQueue(TThreadProcedure pMethod, int pDelay,
                                       bool pExecuteAsynchronous,
                                       Ref<ICancellationIndicator> pCancellationToken);
  /// At once, on a worker.
  static Ref<IWorkItem> CreateAndQueue(TThreadProcedure pMethod,
                                       Ref<ICancellationIndicator> pCancellationToken);

  void DoWork() override;

 private:
  bool SleepThrough();

  const int fDelay;
  const TThreadProcedure fMethod;
  const bool fExecuteAsynchronous;
};

}  // namespace oak
