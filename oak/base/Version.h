// The version of the library.
#pragma once

#include "oak/base/Text.h"

namespace oak {

/// Major, minor and patch; the build reads it from here.
inline constexpr TStringView LibraryVersion = u"0.1.0";

}  // namespace oak
