// Windows that are never shown and only take messages.
#pragma once

#include <functional>

#include "oak/framework/ControlTypes.h"

namespace oak {

/// Takes the messages of a hidden window. What it does not answer itself it gives to
/// DefaultWindowProc. An exception that leaves it is reported by the application.
using TWindowMethod = std::function<void(TMessage& Message)>;

/// Makes a window of the current widget set that is never shown; what is posted or sent to it goes
/// to the procedure. To be freed with DeallocateHWnd, which the procedure itself may do. Raises
/// EOSError if the system makes none. Main thread.
HWND AllocateHWnd(TWindowMethod procedure);
/// Nothing for null or a window that has gone.
void DeallocateHWnd(HWND window);
/// What the system answers to a message that a hidden window's procedure does not want.
LRESULT DefaultWindowProc(HWND window, const TMessage& message);

/// A hidden window for the span of a block.
class THiddenWindow {
 public:
  explicit THiddenWindow(TWindowMethod procedure) : fHandle(AllocateHWnd(std::move(procedure))) {}
  ~THiddenWindow() { DeallocateHWnd(fHandle); }
  THiddenWindow(const THiddenWindow&) = delete;
  THiddenWindow& operator=(const THiddenWindow&) = delete;
  HWND GetHandle() const noexcept { return fHandle; }

 private:
  HWND fHandle;
};

}  // namespace oak
