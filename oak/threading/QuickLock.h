// A lock for a handful of instructions.
#pragma once

#include <atomic>
#include <cstdint>

#include "oak/platform/Parking.h"

namespace oak {

/// Not recursive. Who finds it taken looks again for about a microsecond, which is how
/// long it is held, and sleeps then. For std::lock_guard. Any thread.
class TQuickLock {
 public:
  void lock() noexcept {
    std::uint32_t expected = Free;
    if (!fParking.Word().compare_exchange_strong(expected, Taken, std::memory_order_acquire))
        [[unlikely]]
      LockSlowly();
  }
  void unlock() noexcept {
    if (fParking.Word().exchange(Free, std::memory_order_release) == Awaited) [[unlikely]]
      fParking.Wake(1);
  }

 private:
  static constexpr std::uint32_t Free = 0;
  static constexpr std::uint32_t Taken = 1;
  static constexpr std::uint32_t Awaited = 2;  ///< Taken, and somebody may sleep.

  void LockSlowly() noexcept;

  TParking fParking;
};

/// Tells the processor that the thread looks at memory again and again.
void RelaxProcessor() noexcept;

}  // namespace oak
