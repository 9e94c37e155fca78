// Threads that sleep until a word of memory changes.
#pragma once

#include <atomic>
#include <cstdint>

#include "oak/base/abi.h"

namespace oak {

/// A word that threads sleep on: what TEvent is made of. The system is entered only to
/// sleep and to wake, never to change the word. Any thread.
///
/// Not in the function table, since a sleep is nothing that fails or is missing, and
/// waking is on the path of every job that is begun. The seam for the time of waits is
/// IWaitClock, which TEvent asks before it comes here.
class TParking {
 public:
  TParking() = default;
  TParking(const TParking&) = delete;
  TParking& operator=(const TParking&) = delete;

  std::atomic<std::uint32_t>& Word() noexcept { return fWord; }
  const std::atomic<std::uint32_t>& Word() const noexcept { return fWord; }
  /// Sleeps while the word has this value, at most so many milliseconds (INFINITE:
  /// without end). May return early without a cause.
  void Park(std::uint32_t whileValue, DWORD milliseconds) noexcept;
  /// Wakes up to `count` sleepers. The caller has changed the word before.
  void Wake(std::uint32_t count) noexcept;

 private:
  std::atomic<std::uint32_t> fWord{0};
  void* fLock = nullptr;  ///< What the system needs besides, zero at first.
  void* fCondition = nullptr;
};

}  // namespace oak
