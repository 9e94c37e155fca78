#include "oak/platform/Parking.h"

#include <linux/futex.h>
#include <sys/syscall.h>
#include <time.h>
#include <unistd.h>

#include "oak/platform/shell_api_system.h"

namespace oak {
namespace {

static_assert(sizeof(std::atomic<std::uint32_t>) == sizeof(std::uint32_t));

}  // namespace

void TParking::Park(std::uint32_t whileValue, DWORD milliseconds) noexcept {
  const timespec time{static_cast<time_t>(milliseconds / 1000),
                      static_cast<long>(milliseconds % 1000) * 1'000'000};
  syscall(SYS_futex, &fWord, FUTEX_WAIT_PRIVATE, whileValue,
          milliseconds == INFINITE ? nullptr : &time, nullptr, 0);
}

void TParking::Wake(std::uint32_t count) noexcept {
  const auto most = static_cast<int>(count < 0x7FFFFFFFu ? count : 0x7FFFFFFFu);
  syscall(SYS_futex, &fWord, FUTEX_WAKE_PRIVATE, most, nullptr, nullptr, 0);
}

}  // namespace oak
