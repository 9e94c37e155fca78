// The image lists that the shell's icon numbers refer to.
#pragma once

#include "oak/platform/shell_api_types.h"

namespace oak {

// Numbers under which the lists know their overlays.
inline constexpr int ShareOverlayNumber = 1;
inline constexpr int LinkOverlayNumber = 2;

/// The system's list of a size (SHIL_), which as everywhere is its IImageList itself; null for
/// another size. It is not counted and never ends.
HIMAGELIST SystemImageListHandle(int size);

}  // namespace oak
