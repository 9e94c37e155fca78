#include "oak/platform/WindowPost.h"

#include <mutex>
#include <utility>

namespace oak {
namespace {

std::mutex& WindowPostLock() {
  static auto& lock = *new std::mutex;  // threads may post at any late time
  return lock;
}

IWindowPost* gWindowPost = nullptr;

}  // namespace

IWindowPost* SetWindowPost(IWindowPost* post) noexcept {
  const std::lock_guard lock(WindowPostLock());
  return std::exchange(gWindowPost, post);
}

bool PostToWindow(HWND window, UINT message, WPARAM wParam, LPARAM lParam) noexcept {
  const std::lock_guard lock(WindowPostLock());
  return gWindowPost && gWindowPost->PostToWindow(window, message, wParam, lParam);
}

}  // namespace oak
