// Points, sizes and rectangles in device pixels.
#pragma once

#include <algorithm>

#include "oak/platform/shell_api_types.h"

namespace oak {

/// A place in pixels: of the client area, of the screen or of a bitmap, as the operation says.
struct TPoint {
  int X = 0;
  int Y = 0;

  constexpr TPoint() = default;
  constexpr TPoint(int x, int y) : X(x), Y(y) {}
  explicit TPoint(const POINT& point) : X(point.x), Y(point.y) {}
  operator POINT() const { return {X, Y}; }
  constexpr TPoint operator+(const TPoint& other) const { return {X + other.X, Y + other.Y}; }
  constexpr TPoint operator-(const TPoint& other) const { return {X - other.X, Y - other.Y}; }
  friend constexpr bool operator==(const TPoint&, const TPoint&) = default;
};

/// A width and a height in pixels.
struct TSize {
  int Width = 0;
  int Height = 0;

  friend constexpr bool operator==(const TSize&, const TSize&) = default;
};

/// A rectangle in pixels; the right and the bottom edge do not belong to it.
struct TRect {
  int Left = 0;
  int Top = 0;
  int Right = 0;
  int Bottom = 0;

  constexpr TRect() = default;
  constexpr TRect(int left, int top, int right, int bottom)
      : Left(left), Top(top), Right(right), Bottom(bottom) {}
  constexpr TRect(TPoint corner, TSize size)
      : TRect(corner.X, corner.Y, corner.X + size.Width, corner.Y + size.Height) {}
  explicit TRect(const RECT& rect) : TRect(rect.left, rect.top, rect.right, rect.bottom) {}
  operator RECT() const { return {Left, Top, Right, Bottom}; }

  constexpr int Width() const { return Right - Left; }
  constexpr int Height() const { return Bottom - Top; }
  constexpr TPoint TopLeft() const { return {Left, Top}; }
  constexpr TPoint BottomRight() const { return {Right, Bottom}; }
  constexpr TSize Size() const { return {Width(), Height()}; }
  constexpr TPoint Center() const { return {Left + Width() / 2, Top + Height() / 2}; }
  constexpr bool IsEmpty() const { return Right <= Left || Bottom <= Top; }
  constexpr bool Contains(TPoint point) const {
    return point.X >= Left && point.X < Right && point.Y >= Top && point.Y < Bottom;
  }
  constexpr TRect Moved(int dx, int dy) const {
    return {Left + dx, Top + dy, Right + dx, Bottom + dy};
  }
  /// Larger by `dx` and `dy` on each side; negative values shrink it.
  constexpr TRect Inflated(int dx, int dy) const {
    return {Left - dx, Top - dy, Right + dx, Bottom + dy};
  }
  /// The common part; empty where there is none.
  constexpr TRect Intersected(const TRect& other) const {
    return {std::max(Left, other.Left), std::max(Top, other.Top), std::min(Right, other.Right),
            std::min(Bottom, other.Bottom)};
  }
  /// The smallest rectangle around both; an empty one counts for nothing.
  constexpr TRect United(const TRect& other) const {
    if (IsEmpty()) return other;
    if (other.IsEmpty()) return *this;
    return {std::min(Left, other.Left), std::min(Top, other.Top), std::max(Right, other.Right),
            std::max(Bottom, other.Bottom)};
  }
  constexpr bool Intersects(const TRect& other) const { return !Intersected(other).IsEmpty(); }
  friend constexpr bool operator==(const TRect&, const TRect&) = default;
};

#if defined(_WIN32)
// The system's own: a second one would make the name ambiguous where both are visible.
using ::MulDiv;
#else
/// a * b / c, rounded to the nearest, halves away from zero; -1 if c is 0.
constexpr int MulDiv(int a, int b, int c) {
  if (c == 0) return -1;
  const long long product = static_cast<long long>(a) * b;
  const long long half = (c < 0 ? -static_cast<long long>(c) : c) / 2;
  return static_cast<int>((product >= 0 ? product + half : product - half) / c);
}
#endif

}  // namespace oak
