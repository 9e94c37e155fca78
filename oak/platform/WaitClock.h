// The seam for waiting: who decides when the time of a wait has passed.
#pragma once

#include <atomic>

#include "oak/base/abi.h"

namespace oak {

/// What a thread can wait for.
class IWaitable {
 public:
  /// Whether a wait would end at once. Any thread; takes no lock.
  virtual bool IsSignaled() const noexcept = 0;
  /// As IsSignaled, and takes what only one wait may have. Any thread; no lock.
  virtual bool TryTake() noexcept = 0;

 protected:
  ~IWaitable() = default;
};

/// Takes over all waits of the library: a clock that a test moves. Without one, which
/// is the normal case, waits are those of the system and this costs one load.
class IWaitClock {
 public:
  /// The calling thread waits until it could take `waitable` (true) or so many
  /// milliseconds have passed (false); INFINITE: without end. Nil waits for the
  /// time alone.
  virtual bool Wait(IWaitable* waitable, DWORD milliseconds) = 0;
  /// Something that a thread may be waiting for has been signalled, or a thread has
  /// begun or ended. Any thread, maybe under a caller's lock: calls nobody back.
  virtual void Changed() noexcept = 0;

 protected:
  ~IWaitClock() = default;
};

namespace detail {
extern std::atomic<IWaitClock*> gWaitClock;
}  // namespace detail

/// Installs a clock; nil gives the waits back to the system. Returns the one before
/// when no thread is inside of it any more: the caller lets waiting threads go first.
IWaitClock* SetWaitClock(IWaitClock* clock) noexcept;

/// The clock for the span of one use; it can't be taken away in between.
class TWaitClockUse {
 public:
  TWaitClockUse() noexcept {
    if (detail::gWaitClock.load(std::memory_order_relaxed)) [[unlikely]]
      Enter();
  }
  ~TWaitClockUse() {
    if (fClock) [[unlikely]]
      Leave();
  }
  TWaitClockUse(const TWaitClockUse&) = delete;
  TWaitClockUse& operator=(const TWaitClockUse&) = delete;
  explicit operator bool() const noexcept { return fClock != nullptr; }
  IWaitClock* operator->() const noexcept { return fClock; }

 private:
  void Enter() noexcept;
  void Leave() noexcept;
  IWaitClock* fClock = nullptr;
};

}  // namespace oak
