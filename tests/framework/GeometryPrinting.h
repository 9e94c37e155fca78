// How failures show rectangles and sizes.
#pragma once

#include <ostream>

#include "oak/framework/Geometry.h"

namespace oak {

inline void PrintTo(const TRect& rect, std::ostream* out) {
  *out << rect.Left << "," << rect.Top << "-" << rect.Right << "," << rect.Bottom;
}
inline void PrintTo(const TSize& size, std::ostream* out) {
  *out << size.Width << "x" << size.Height;
}

}  // namespace oak
