#include "oak/platform/WaitClock.h"

#include <thread>

namespace oak {
namespace detail {

std::atomic<IWaitClock*> gWaitClock{nullptr};

}  // namespace detail
namespace {

std::atomic<int> gWaitClockUsers{0};

}  // namespace

IWaitClock* SetWaitClock(IWaitClock* clock) noexcept {
  IWaitClock* const before = detail::gWaitClock.exchange(clock);
  // A thread that still saw the former clock has announced itself before it looked.
  while (before && gWaitClockUsers.load() != 0) std::this_thread::yield();
  return before;
}

void TWaitClockUse::Enter() noexcept {
  gWaitClockUsers.fetch_add(1);
  fClock = detail::gWaitClock.load();
  if (!fClock) gWaitClockUsers.fetch_sub(1);
}

void TWaitClockUse::Leave() noexcept { gWaitClockUsers.fetch_sub(1); }

}  // namespace oak
