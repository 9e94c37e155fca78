// What background work consists of: its states and the interfaces between work,
// pool and owner. Nothing here knows a thread.
#pragma once

#include <cstdint>
#include <functional>
#include <typeinfo>
#include <vector>

#include "oak/base/InterfacedObject.h"
#include "oak/framework/Cancellation.h"

namespace oak {

/// State of a work item or of a thread of a pool. The order counts: from Completed
/// upward the state is final.
enum class TTaskStatus : std::uint8_t {
  Created,
  WaitingToRun,
  Running,
  Paused,
  Completed,
  Canceled
};

/// Place of an item in the queue. Highest: in front of all others, the newest
/// first. Normal: behind all others.
enum class TPriority : std::uint8_t { Highest, Normal };

/// Tells a job from outside that it is to end. Any thread.
struct ICancellationToken : ICancellationIndicator {
  static constexpr GUID Iid{
      0x2E0C7B54, 0x4F1A, 0x4D3E, {0x8B, 0x66, 0x0D, 0x9A, 0xF3, 0x57, 0xC1, 0x28}};
  /// From now on the indicator says yes, for good.
  virtual void Cancel() = 0;
};
template <>
struct TInterfaceAncestors<ICancellationToken> {
  using Types = TInterfaceList<ICancellationIndicator>;
};

/// What can be ended before its time. Any thread.
struct ITerminatable : IUnknown {
  static constexpr GUID Iid{
      0x83B7D0E1, 0x6C2F, 0x4895, {0xAE, 0x13, 0x74, 0xC8, 0x2B, 0x90, 0x5F, 0xD6}};
  virtual void Cancel() = 0;
};

struct IWorkItem;

/// Called with an item whose work is done; see TBasicWorkItem for the thread.
using TWorkDoneEvent = std::function<void(const Ref<IWorkItem>& item)>;
/// Called when a pool has no more work; tells whether the pool is terminating.
using TAllWorkItemsFinished = std::function<void(bool terminated)>;

/// A piece of work for a pool. Counted: whoever made it, the queue and the worker
/// hold a reference each, so it outlives its creator. Derive from TBasicWorkItem
/// rather than from this.
struct IWorkItem : ITerminatable {
  static constexpr GUID Iid{
      0xF4516A09, 0x0B8D, 0x4C72, {0x9F, 0x2E, 0xD1, 0x3C, 0x85, 0x47, 0xE0, 0xBA}};
  virtual TWorkDoneEvent GetOnWorkDone() = 0;
  /// Before the item is queued.
  virtual void SetOnWorkDone(TWorkDoneEvent pOnWorkDone) = 0;
  /// The caller's key, by which a pool can be asked for the item.
  virtual int GetTag() = 0;
  /// The work itself. Called by a worker, once. What it throws ends the item as
  /// Canceled and is reported to the application.
  virtual void DoWork() = 0;
  /// Hands the result over; called by the worker behind DoWork.
  virtual void Finished() = 0;
  /// Canceled stays; Completed gives way only to Canceled and to WaitingToRun.
  /// Paused and Running may come while the pool's lock is held.
  virtual void SetStatus(TTaskStatus pStatus) = 0;
  /// The class of the object.
  virtual const std::type_info& ClassType() = 0;
  /// Looks at the token too, and ends the item if that asks for it.
  virtual TTaskStatus GetStatus() = 0;
  /// Returns when the item is Completed or Canceled; looks every millisecond. An
  /// item that was dropped from a queue ends only by cancellation. Does not pump
  /// the main thread's queue.
  virtual void Wait() = 0;
};
template <>
struct TInterfaceAncestors<IWorkItem> {
  using Types = TInterfaceList<ITerminatable>;
};

using IWorkItems = std::vector<Ref<IWorkItem>>;

/// Waits for each item, from first to last. An empty reference is passed over.
void WaitForAll(const IWorkItems& pWorkItems);

/// Asks whether the object of a work item is of a class or of one that inherits
/// from it.
///
///   pool.ContainsWorkItem(0, WorkItemClass<TThumbnailWorkItem>());
class TWorkItemClass {
 public:
  /// Any class.
  TWorkItemClass() = default;
  bool IsBaseOf(IWorkItem& pWorkItem) const { return !fTest || fTest(pWorkItem); }

 private:
  template <class T>
  friend TWorkItemClass WorkItemClass();
  bool (*fTest)(IWorkItem&) = nullptr;
};

template <class T>
TWorkItemClass WorkItemClass() {
  TWorkItemClass result;
  result.fTest = [](IWorkItem& item) { return dynamic_cast<T*>(&item) != nullptr; };
  return result;
}

/// What can be held up for a while. Any thread.
struct IPausable : IUnknown {
  static constexpr GUID Iid{
      0x1A9E64F8, 0x7D05, 0x4B3C, {0xB5, 0x80, 0xE6, 0x29, 0x4C, 0x1F, 0x73, 0x0D}};
  virtual bool GetPaused() = 0;
  virtual void SetPaused(bool pPaused) = 0;
};

/// Marks work that must not be interrupted. It has no operations.
struct INonInterruptable : IUnknown {
  static constexpr GUID Iid{
      0xC05D8F37, 0x92B4, 0x4E61, {0x86, 0xFA, 0x3B, 0x7E, 0x10, 0xD4, 0xA9, 0x52}};
};

/// Where work is handed in. Any thread.
struct IWorkerThreadPool : IUnknown {
  static constexpr GUID Iid{
      0x6E23B1C5, 0xD849, 0x4F07, {0xA0, 0x5D, 0x18, 0xF6, 0x93, 0x2A, 0xBC, 0x7E}};
  /// Raises EInvalidOperation if the pool is being destroyed. Dropped silently
  /// while the pool is dropping its work.
  virtual void AddWorkItem(Ref<IWorkItem> pWorkItem, TPriority pPriority) = 0;
  /// The same for many items at once, in their order; never dropped.
  virtual void AddWorkItems(const IWorkItems& pWorkItems, TPriority pPriority) = 0;
  /// Whether an item that has the interface waits or runs.
  virtual bool ContainsWorkItem(const GUID& pInterfaceID) = 0;
  /// Asks all threads to end and cancels what they run; does not wait for them.
  virtual void Dispose() = 0;
};

}  // namespace oak
