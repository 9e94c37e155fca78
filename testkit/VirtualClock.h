// Time that passes only when a test says so.
#pragma once

#include <atomic>
#include <condition_variable>
#include <cstdint>
#include <functional>
#include <mutex>
#include <thread>
#include <vector>

#include "oak/platform/WaitClock.h"
#include "testkit/ScopedApi.h"

namespace oak::testkit {

/// Replaces the clock of the platform: ticks, system time, local time (which is
/// UTC then) and Sleep. Any thread may read and advance it. Made and destroyed while no
/// other thread uses the library.
///
/// At first Sleep, on whatever thread, advances the clock and returns at once, and
/// events are waited for in real time: for code that runs on the test's thread.
///
/// After HoldThreads the clock moves real threads. Sleep and TEvent::WaitFor on other
/// threads block until the virtual time has come or the event is set; on the test's
/// thread they let time pass. Time passes only while all threads of the library wait,
/// and it stops at each moment at which one of them is due until they all wait again.
/// So what a thread sees depends on the test alone and not on how busy the machine is:
///
///   TVirtualClock clock;
///   clock.HoldThreads();
///   thread->Start();            // { event.WaitFor(500); ... Api().Sleep(50); ... }
///   clock.Advance(499);         // the thread waits still
///   clock.Advance(1);           // it goes on, and sleeps 50 ms by the return of this
class TVirtualClock final : private IWaitClock {
 public:
  /// Milliseconds since the system's start, and since 1601 in UTC.
  explicit TVirtualClock(std::uint64_t ticks = 1'000'000,
                         std::uint64_t systemTimeMs = 13'350'000'000'000);
  /// Lets threads go that still wait, as if their time had come.
  ~TVirtualClock();
  TVirtualClock(const TVirtualClock&) = delete;
  TVirtualClock& operator=(const TVirtualClock&) = delete;

  /// Lets time pass. With held threads, on the test's thread: false if threads did not
  /// come to wait within the limit of Settle; time has passed all the same.
  bool Advance(std::uint64_t milliseconds);
  /// Lets every look at the clock take this long: ends loops that wait for time
  /// to pass without anybody advancing the clock. Not with held threads.
  void SetCostOfLook(std::uint64_t milliseconds) { fCostOfLook = milliseconds; }
  /// The ticks fall back by so much; waits that are under way are not affected.
  void JumpBack(std::uint64_t milliseconds) { fFallenBack += milliseconds; }
  std::uint64_t GetTicks() const { return fStartTicks + fElapsed - fFallenBack; }
  /// Time spent in Sleep so far, all threads together.
  std::uint64_t GetSlept() const { return fSlept; }

  // --- held threads ---------------------------------------------------------------
  /// Makes the calling thread the test's one and holds all others; see above.
  void HoldThreads();
  /// Waits in real time until every started TThread waits in the clock or is over. False
  /// if that takes longer than the limit, which GetOverran then tells.
  bool Settle();
  /// Waits in real time until so many threads wait in the clock and nothing has come
  /// that they wait for. False if that takes longer than the limit.
  bool AwaitSleepers(std::size_t count);
  /// Threads that wait in the clock, except those that are about to go on.
  std::size_t GetSleepers() const;
  /// Threads that never come to wait in the clock (they hang elsewhere, as the test
  /// wants): Settle does without them. Default 0.
  void SetBusyThreads(int count);
  /// Real milliseconds; default 20,000. It is a safety net: a test that reaches it has
  /// failed.
  void SetLimit(std::uint64_t milliseconds) { fLimit = milliseconds; }
  bool GetOverran() const { return fOverran; }

 private:
  struct TSleeper {
    IWaitable* Waitable;
    std::uint64_t Deadline;
    bool IsOurs;  ///< A TThread's, which Settle counts.
  };
  using TGuard = std::unique_lock<std::mutex>;

  bool Wait(IWaitable* waitable, DWORD milliseconds) override;
  void Changed() noexcept override;
  void SleepFor(DWORD milliseconds);
  bool WaitOnThread(IWaitable* waitable, std::uint64_t deadline);
  bool WaitOnTestThread(IWaitable* waitable, std::uint64_t deadline);
  bool IsOnTestThread() const { return std::this_thread::get_id() == fTestThread; }
  std::uint64_t DeadlineAfter(DWORD milliseconds) const;
  bool IsDue(const TSleeper& sleeper) const;
  std::size_t CountSleepers() const;
  bool IsSettled() const;
  bool AwaitReal(TGuard& guard, const std::function<bool()>& condition);
  void StepTo(TGuard& guard, std::uint64_t moment);
  std::uint64_t NextDeadline() const;
  std::uint64_t Look();
  FILETIME SystemTime();

  const std::uint64_t fStartTicks;
  const std::uint64_t fStartSystemTime;
  std::atomic<std::uint64_t> fElapsed{0};
  std::atomic<std::uint64_t> fCostOfLook{0};
  std::atomic<std::uint64_t> fFallenBack{0};
  std::atomic<std::uint64_t> fSlept{0};

  mutable std::mutex fLock;
  std::condition_variable fStirred;
  std::vector<TSleeper*> fSleepers;
  std::thread::id fTestThread;
  std::atomic<bool> fHolding{false};
  std::atomic<std::uint64_t> fLimit{20'000};
  std::atomic<bool> fOverran{false};
  int fBusyThreads = 0;
  bool fClosing = false;

  TScopedApi<decltype(TApi::GetTickCount64)> fGetTickCount64;
  TScopedApi<decltype(TApi::GetSystemTimeAsFileTime)> fGetSystemTimeAsFileTime;
  TScopedApi<decltype(TApi::GetSystemTime)> fGetSystemTime;
  TScopedApi<decltype(TApi::GetLocalTime)> fGetLocalTime;
  TScopedApi<decltype(TApi::Sleep)> fSleep;
};

}  // namespace oak::testkit
