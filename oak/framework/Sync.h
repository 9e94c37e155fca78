// Locks and events.
#pragma once

#include <cstdint>
#include <mutex>

#include "oak/platform/Parking.h"
#include "oak/platform/WaitClock.h"
#include "oak/platform/shell_api_system.h"

namespace oak {

/// A lock that its owner may take again. Any thread.
class TCriticalSection {
 public:
  TCriticalSection() = default;
  TCriticalSection(const TCriticalSection&) = delete;
  TCriticalSection& operator=(const TCriticalSection&) = delete;
  void Enter() { fMutex.lock(); }
  void Leave() noexcept { fMutex.unlock(); }
  /// Takes the lock if nobody else has it.
  bool TryEnter() { return fMutex.try_lock(); }

 private:
  std::recursive_mutex fMutex;
};

/// Holds a critical section for the span of a block, or until Leave.
class TLock {
 public:
  explicit TLock(TCriticalSection& section) : fSection(&section) { section.Enter(); }
  ~TLock() { Leave(); }
  TLock(const TLock&) = delete;
  TLock& operator=(const TLock&) = delete;
  /// Gives the lock back before the block's end.
  void Leave() noexcept {
    if (fSection) fSection->Leave();
    fSection = nullptr;
  }

 private:
  TCriticalSection* fSection;
};

/// How a wait ended.
enum TWaitResult : std::uint8_t {
  wrSignaled,   ///< The event was signalled; one of auto-reset is not any more.
  wrTimeout,    ///< The time has passed.
  wrAbandoned,  ///< Who should have signalled it never will. Events don't give it.
  wrError       ///< The wait could not take place. Events don't give it.
};

/// A flag that threads wait for. Any thread, up to 65,535 of them at a time.
///
/// Setting costs one atomic operation; the system is called only when a thread sleeps
/// that is to wake. All that a thread did before it set the event is seen by the one
/// whose wait it ended. Waits go through IWaitClock, so that a test can let their time
/// pass (TVirtualClock). The published event functions are not used: with a handle to
/// look up at each call, setting an event would cost more than the work it announces.
class TEvent {
 public:
  /// With manualReset the event stays signalled until ResetEvent, else until one
  /// wait has ended by it.
  explicit TEvent(bool manualReset = false, bool initialState = false) noexcept;
  /// No thread may be in an operation of the event by then.
  ~TEvent() = default;
  TEvent(const TEvent&) = delete;
  TEvent& operator=(const TEvent&) = delete;

  /// Lets one waiting thread go on, or if none waits the next one that does. With
  /// manual reset all go on.
  void SetEvent() noexcept { SetEventFor(1); }
  /// As `count` calls of SetEvent, but wakes the threads in one call of the system.
  void SetEventFor(std::uint32_t count) noexcept;
  void ResetEvent() noexcept;
  /// Waits for the signal, at most so many milliseconds (INFINITE: without end; 0
  /// only looks). Signalled already, it returns without a call of the system.
  TWaitResult WaitFor(DWORD milliseconds = INFINITE) noexcept;
  /// Whether it is signalled, without taking the signal.
  bool IsSet() const noexcept { return SignalsOf(fParking.Word().load()) != 0; }
  /// Threads that wait now: a number for diagnostics, old as soon as it is told.
  std::uint32_t GetWaiting() const noexcept { return WaitingOf(fParking.Word().load()); }

 private:
  struct TWait;
  static constexpr std::uint32_t OneWaiting = 0x10000;
  static constexpr std::uint32_t WaitingOf(std::uint32_t word) { return word >> 16; }
  static constexpr std::uint32_t SignalsOf(std::uint32_t word) { return word & 0xFFFF; }
  bool Take(std::uint32_t waiting) noexcept;
  bool TakeOrGiveUp() noexcept;
  bool WaitReal(DWORD milliseconds) noexcept;

  /// High half: threads that wait. Low half: signals that are there to be taken, never
  /// more than one above the number of those threads.
  TParking fParking;
  const bool fManualReset;
};

}  // namespace oak
