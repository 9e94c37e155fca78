// Time that passes only when a test says so.
#pragma once

#include <atomic>
#include <cstdint>

#include "testkit/ScopedApi.h"

namespace oak::testkit {

/// Replaces the clock of the platform: ticks, system time, local time (which is
/// UTC then) and Sleep, which advances the clock and returns at once. Any thread may
/// read and advance it.
class TVirtualClock {
 public:
  /// Milliseconds since the system's start, and since 1601 in UTC.
  explicit TVirtualClock(std::uint64_t ticks = 1'000'000,
                         std::uint64_t systemTimeMs = 13'350'000'000'000);
  void Advance(std::uint64_t milliseconds) { fElapsed += milliseconds; }
  /// Lets every look at the clock take this long: ends loops that wait for time
  /// to pass without anybody advancing the clock.
  void SetCostOfLook(std::uint64_t milliseconds) { fCostOfLook = milliseconds; }
  std::uint64_t GetTicks() const { return fStartTicks + fElapsed; }
  /// Time spent in Sleep so far.
  std::uint64_t GetSlept() const { return fSlept; }

 private:
  std::uint64_t Look();
  FILETIME SystemTime();

  const std::uint64_t fStartTicks;
  const std::uint64_t fStartSystemTime;
  std::atomic<std::uint64_t> fElapsed{0};
  std::atomic<std::uint64_t> fCostOfLook{0};
  std::atomic<std::uint64_t> fSlept{0};
  TScopedApi<decltype(TApi::GetTickCount64)> fGetTickCount64;
  TScopedApi<decltype(TApi::GetSystemTimeAsFileTime)> fGetSystemTimeAsFileTime;
  TScopedApi<decltype(TApi::GetSystemTime)> fGetSystemTime;
  TScopedApi<decltype(TApi::GetLocalTime)> fGetLocalTime;
  TScopedApi<decltype(TApi::Sleep)> fSleep;
};

}  // namespace oak::testkit
