// Messages to windows where the system has none.
#pragma once

#include "oak/platform/shell_api.h"

namespace oak {

/// The desktop that takes posted messages. Any thread; called under a lock, so it calls nobody.
class IWindowPost {
 public:
  /// False if the message cannot be queued. A window that is gone by then drops it.
  virtual bool PostToWindow(HWND window, UINT message, WPARAM wParam, LPARAM lParam) noexcept = 0;

 protected:
  ~IWindowPost() = default;
};

/// Installs a desktop, nil for none, and gives the former one. When it returns no thread is inside
/// of that one any more. The portable shell's PostMessageW goes there.
IWindowPost* SetWindowPost(IWindowPost* post) noexcept;
/// False without a desktop.
bool PostToWindow(HWND window, UINT message, WPARAM wParam, LPARAM lParam) noexcept;

}  // namespace oak
