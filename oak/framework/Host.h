// What the library needs to know of the application that it runs in.
//
// The component framework fills these; an application without it may set them
// itself. Each member may be empty: the library then behaves as in a program
// without user interface. To be set at start-up, before other threads run.
#pragma once

#include <functional>

#include "oak/base/abi.h"

namespace oak {

class TComponent;

struct THost {
  /// Window that owns dialogs when no control does.
  std::function<HWND()> ApplicationWindow;
  /// Window of a component that is a control with an allocated handle, else nil.
  std::function<HWND(TComponent* component)> WindowOf;
  /// Whether a user can be asked: the application has forms on the screen.
  std::function<bool()> IsInteractive;
  /// Pixels per inch of the active form, or of the screen without one; 96 if empty.
  std::function<int()> PixelsPerInch;
  /// Turns the hourglass cursor on and off; calls nest.
  std::function<void(bool on)> SetWaitCursor;
};

THost& Host();

/// Hourglass cursor for the span of a block. Main thread.
class TWaitCursor {
 public:
  TWaitCursor() {
    if (Host().SetWaitCursor) Host().SetWaitCursor(true);
  }
  ~TWaitCursor() {
    if (Host().SetWaitCursor) Host().SetWaitCursor(false);
  }
  TWaitCursor(const TWaitCursor&) = delete;
  TWaitCursor& operator=(const TWaitCursor&) = delete;
};

}  // namespace oak
