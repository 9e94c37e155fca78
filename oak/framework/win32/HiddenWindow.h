// Windows that are never shown and only take messages.
#pragma once

#include <functional>

#include "oak/framework/ControlTypes.h"

namespace oak::win32 {

/// See TWidgetSet.
HWND CreateHiddenWindow(std::function<void(TMessage&)> procedure);
void DestroyHiddenWindow(HWND window);

}  // namespace oak::win32
