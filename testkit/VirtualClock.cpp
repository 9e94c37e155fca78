#include "testkit/VirtualClock.h"

#include "oak/base/DateTime.h"

namespace oak::testkit {

TVirtualClock::TVirtualClock(std::uint64_t ticks, std::uint64_t systemTimeMs)
    : fStartTicks(ticks),
      fStartSystemTime(systemTimeMs),
      fGetTickCount64(Api().GetTickCount64, [this] { return fStartTicks + Look(); }),
      fGetSystemTimeAsFileTime(Api().GetSystemTimeAsFileTime,
                               [this](FILETIME* time) { *time = SystemTime(); }),
      fGetSystemTime(Api().GetSystemTime,
                     [this](SYSTEMTIME* time) { FileTimeToSystem(SystemTime(), *time); }),
      fGetLocalTime(Api().GetLocalTime,
                    [this](SYSTEMTIME* time) { FileTimeToSystem(SystemTime(), *time); }),
      fSleep(Api().Sleep, [this](DWORD milliseconds) {
        fSlept += milliseconds;
        Advance(milliseconds);
      }) {}

FILETIME TVirtualClock::SystemTime() {
  constexpr std::uint64_t stepsPerMs = 10'000;
  return TicksToFileTime((fStartSystemTime + Look()) * stepsPerMs);
}

std::uint64_t TVirtualClock::Look() { return fElapsed += fCostOfLook; }

}  // namespace oak::testkit
