#include "oak/framework/Sync.h"

#include <algorithm>
#include <chrono>

namespace oak {
namespace {

using TSteady = std::chrono::steady_clock;  // not of the seam: a clock there takes the whole wait

/// What is left until a moment, in whole milliseconds and not too early.
DWORD MillisecondsUntil(TSteady::time_point end) noexcept {
  const auto left = std::chrono::ceil<std::chrono::milliseconds>(end - TSteady::now()).count();
  return left > 0 ? static_cast<DWORD>(left) : 0;
}

}  // namespace

/// One wait, as a clock sees it.
struct TEvent::TWait final : IWaitable {
  explicit TWait(TEvent& event) : Event(event) {}
  bool IsSignaled() const noexcept override { return Event.IsSet(); }
  bool TryTake() noexcept override { return Event.Take(OneWaiting); }
  TEvent& Event;
};

TEvent::TEvent(bool manualReset, bool initialState) noexcept : fManualReset(manualReset) {
  fParking.Word().store(initialState ? 1 : 0);
}

void TEvent::SetEventFor(std::uint32_t count) noexcept {
  if (count == 0) return;
  std::atomic<std::uint32_t>& word = fParking.Word();
  std::uint32_t before = word.load(std::memory_order_relaxed);
  std::uint32_t signals = 0;
  // Also exchanged when nothing changes, so that what this thread did before is seen by
  // whoever takes the signal that is there.
  do {
    const std::uint32_t most = fManualReset ? 1 : WaitingOf(before) + 1;
    signals = SignalsOf(before) + std::min(count, most - SignalsOf(before));
  } while (!word.compare_exchange_weak(before, (before & ~0xFFFFu) | signals));

  const std::uint32_t awaited = WaitingOf(before), had = SignalsOf(before);
  // The threads that wait for a signal which was not there before.
  const std::uint32_t wake =
      fManualReset ? (had == 0 ? awaited : 0) : std::min(signals, awaited) - std::min(had, awaited);
  if (wake == 0) return;
  fParking.Wake(wake);
  if (const TWaitClockUse clock; clock) clock->Changed();
}

void TEvent::ResetEvent() noexcept { fParking.Word().fetch_and(~0xFFFFu); }

bool TEvent::Take(std::uint32_t waiting) noexcept {
  std::atomic<std::uint32_t>& word = fParking.Word();
  std::uint32_t before = word.load();
  const std::uint32_t taken = waiting + (fManualReset ? 0 : 1);
  while (SignalsOf(before) != 0)
    if (word.compare_exchange_weak(before, before - taken)) return true;
  return false;
}

bool TEvent::TakeOrGiveUp() noexcept {
  std::atomic<std::uint32_t>& word = fParking.Word();
  for (;;) {
    if (Take(OneWaiting)) return true;
    std::uint32_t before = word.load();
    if (SignalsOf(before) == 0 && word.compare_exchange_weak(before, before - OneWaiting))
      return false;
  }
}

bool TEvent::WaitReal(DWORD milliseconds) noexcept {
  const TSteady::time_point end = TSteady::now() + std::chrono::milliseconds(milliseconds);
  DWORD left = milliseconds;
  while (left > 0) {
    if (Take(OneWaiting)) return true;
    const std::uint32_t seen = fParking.Word().load();
    if (SignalsOf(seen) == 0) fParking.Park(seen, left);
    if (milliseconds != INFINITE) left = MillisecondsUntil(end);
  }
  return TakeOrGiveUp();
}

TWaitResult TEvent::WaitFor(DWORD milliseconds) noexcept {
  if (Take(0)) return wrSignaled;
  if (milliseconds == 0) return wrTimeout;
  fParking.Word().fetch_add(OneWaiting);
  if (const TWaitClockUse clock; clock) {
    TWait wait(*this);
    return clock->Wait(&wait, milliseconds) || TakeOrGiveUp() ? wrSignaled : wrTimeout;
  }
  return WaitReal(milliseconds) ? wrSignaled : wrTimeout;
}

}  // namespace oak
