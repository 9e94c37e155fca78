#include "testkit/VirtualClock.h"

namespace oak::testkit {

TVirtualClock::TVirtualClock(std::uint64_t ticks, std::uint64_t systemTimeMs)
    : fStartTicks(ticks),
      fStartSystemTime(systemTimeMs),
      fGetTickCount64(Api().GetTickCount64, [this] { return fStartTicks + Look(); }),
      fGetSystemTimeAsFileTime(Api().GetSystemTimeAsFileTime,
                               [this](FILETIME* time) {
                                 const std::uint64_t now = (fStartSystemTime + Look()) * 10'000;
                                 time->dwLowDateTime = static_cast<DWORD>(now);
                                 time->dwHighDateTime = static_cast<DWORD>(now >> 32);
                               }),
      fSleep(Api().Sleep, [this](DWORD milliseconds) {
        fSlept += milliseconds;
        Advance(milliseconds);
      }) {}

std::uint64_t TVirtualClock::Look() { return fElapsed += fCostOfLook; }

}  // namespace oak::testkit
