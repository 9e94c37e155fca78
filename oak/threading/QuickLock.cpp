#include "oak/threading/QuickLock.h"

#include "oak/platform/shell_api_system.h"

#if defined(__x86_64__) || defined(_M_X64)
#include <immintrin.h>
#endif

namespace oak {

void RelaxProcessor() noexcept {
#if defined(__x86_64__) || defined(_M_X64)
  _mm_pause();
#elif defined(__aarch64__)
  __asm__ __volatile__("isb");
#endif
}

void TQuickLock::LockSlowly() noexcept {
  constexpr int looks = 40;
  std::atomic<std::uint32_t>& word = fParking.Word();
  for (int i = 0; i < looks; ++i) {
    std::uint32_t expected = Free;
    if (word.load(std::memory_order_relaxed) == Free &&
        word.compare_exchange_weak(expected, Taken, std::memory_order_acquire))
      return;
    RelaxProcessor();
  }
  while (word.exchange(Awaited, std::memory_order_acquire) != Free)
    fParking.Park(Awaited, INFINITE);
}

}  // namespace oak
