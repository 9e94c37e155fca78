// Pictures of windows.
#pragma once

#include "oak/framework/Bitmap.h"
#include "oak/platform/shell_api.h"

namespace oak {

/// What a window shows, with frame and children; empty if there is no such window. It need not be
/// uppermost, but visible. Windows of this thread are painted first. Main thread.
TBitmap TakeScreenshot(HWND window);

}  // namespace oak
