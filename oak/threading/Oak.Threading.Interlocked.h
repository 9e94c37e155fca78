// Operations on values that threads share.
#pragma once

#include <atomic>
#include <cstdint>

namespace oak {

struct TOakInterlocked {
  /// Raises a shared value to pNewValue if it is below that. True if it was, and has
  /// been replaced. No lock.
  static bool SetEqualOrHigher(std::atomic<std::int64_t>& pVar, std::int64_t pNewValue) noexcept {
    std::int64_t value = pVar.load(std::memory_order_relaxed);
    while (value < pNewValue)
      if (pVar.compare_exchange_weak(value, pNewValue, std::memory_order_acq_rel)) return true;
    return false;
  }
};

}  // namespace oak
