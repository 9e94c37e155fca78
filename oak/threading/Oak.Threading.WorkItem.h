// TBasicWorkItem: base of all work items.
#pragma once

#include <atomic>

#include "oak/threading/Oak.Threading.Types.h"

namespace oak {

/// A piece of work: compute in DoWork, hand over in WorkDone.
///
///   class TSizeItem : public TBasicWorkItem {
///    public:
///     TSizeItem(TString path, ISizeViewer* viewer, Ref<ICancellationIndicator> token);
///    protected:
///     void DoWork() override { while (...) if (Terminated()) return; }
///     void WorkDone() override { if (auto* viewer = fViewer.load()) viewer->SetSize(fSize); }
///     void Terminate() override { TBasicWorkItem::Terminate(); fViewer = nullptr; }
///   };
///
/// DoWork runs on a worker, in its apartment, and never touches a control. WorkDone and
/// OnWorkDone follow on the main thread (or, if fFireOnWorkDoneSynchronized is off, on
/// the worker), unless the item was cancelled: that is tested once more there. They
/// never overlap with DoWork.
///
/// A status is left by compare-and-exchange, so that no late Running or Completed hides
/// a cancellation. Any thread may ask and cancel, at any time.
class TBasicWorkItem : public TInterfacedObject<IWorkItem, ICancellationIndicator> {
 public:
  explicit TBasicWorkItem(Ref<ICancellationIndicator> pCancellationToken = nullptr,
                          TWorkDoneEvent pOnWorkDone = nullptr);

  TWorkDoneEvent GetOnWorkDone() override { return fOnWorkDone; }
  void SetOnWorkDone(TWorkDoneEvent pOnWorkDone) override;
  int GetTag() override { return fTag; }
  /// Before the item is queued.
  void SetTag(int pTag) { fTag = pTag; }
  void Finished() final;
  void SetStatus(TTaskStatus pStatus) override;
  const std::type_info& ClassType() override { return typeid(*this); }
  TTaskStatus GetStatus() final;
  void Wait() final;
  /// Ends the item: calls Terminate.
  void Cancel() final { Terminate(); }

  /// The item as indicator for work that it starts in turn. An item without a token is
  /// asked for its status alone.
  bool IsCancellationRequested() override;

 protected:
  /// Hands the result over.
  virtual void WorkDone() {}
  /// Notes the end. Override it to cut the reference to whoever waits for the result;
  /// call the inherited one first. Any thread, while DoWork or WorkDone runs too, and
  /// perhaps more than once.
  virtual void Terminate();

  /// Whether DoWork is to return. To be asked in its loops; returns late while the item
  /// is paused (looks every 100 ms).
  bool Terminated();

  /// The status as noted, without a look at the token.
  TTaskStatus Status() const noexcept { return fStatus.load(std::memory_order_acquire); }

  TWorkDoneEvent fOnWorkDone;
  int fTag = 0;
  std::atomic<TTaskStatus> fStatus{TTaskStatus::Created};
  /// Whether completion is delivered on the main thread. Set by a constructor.
  bool fFireOnWorkDoneSynchronized = true;
  Ref<ICancellationIndicator> fCancellationToken;

 private:
  void Deliver();
};

}  // namespace oak
