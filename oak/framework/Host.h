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
  /// Turns the hourglass cursor on and off; calls nest.
  std::function<void(bool on)> SetWaitCursor;
  /// Runs a procedure on another thread, soon, in a single-threaded apartment.
  /// Without it each procedure gets a thread of its own.
  std::function<void(std::function<void()>)> RunInBackground;
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

/// Host().RunInBackground, or a thread of its own with an apartment around it.
/// What the procedure throws is dropped.
void RunInBackground(std::function<void()> procedure);

}  // namespace oak
