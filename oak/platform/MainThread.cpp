#include "oak/platform/MainThread.h"

#include <atomic>

#include "oak/platform/Api.h"

namespace oak {
namespace {

std::atomic<DWORD> gMainThread{0};

// Runs while the program is loaded, on the thread that loads it.
const DWORD gLoader = [] {
  SetMainThread();
  return MainThreadId();
}();

DWORD AskThreadId() noexcept {
  // The bare function: an observer must not see what is no work for the caller.
  if (const auto function = Api().GetCurrentThreadId.Function()) return function();
  static std::atomic<DWORD> next{0};
  return next.fetch_add(1) + 1;
}

}  // namespace

DWORD CurrentThreadId() noexcept {
  thread_local DWORD id = 0;
  if (id == 0) [[unlikely]]
    id = AskThreadId();
  return id;
}

DWORD MainThreadId() noexcept { return gMainThread.load(std::memory_order_relaxed); }

bool IsMainThread() noexcept { return CurrentThreadId() == MainThreadId(); }

void SetMainThread() noexcept { gMainThread.store(CurrentThreadId(), std::memory_order_relaxed); }

}  // namespace oak
