// The graphics system of Windows.
#pragma once

#include "oak/framework/GraphicsSystem.h"

namespace oak {

/// Colours, fonts and pictures of the running Windows. Any thread.
TGraphicsSystem& Win32GraphicsSystem() noexcept;

}  // namespace oak
