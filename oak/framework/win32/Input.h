// Mouse, keyboard and cursor of the Win32 widget set.
#pragma once

#include "oak/framework/ControlTypes.h"

namespace oak::win32 {

/// What is down at the message that is being handled.
TShiftState CurrentShift();
/// The system's cursor; null for crNone. Shared, never destroyed.
HCURSOR CursorHandle(TCursor cursor);
/// All windows of the program show it; crDefault: each its own.
void SetGlobalCursor(TCursor cursor);

}  // namespace oak::win32
