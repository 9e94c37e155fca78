// Arithmetic on pixels: blending, resampling. Pure functions.
#pragma once

#include "oak/framework/Bitmap.h"

namespace oak {

constexpr std::uint32_t AlphaOf(TPixel pixel) { return pixel >> 24; }

/// value / 255 for 0..65025, rounded.
constexpr std::uint32_t DivideBy255(std::uint32_t value) {
  value += 128;
  return (value + (value >> 8)) >> 8;
}

/// All four parts times `factor` / 255.
constexpr TPixel ScalePixel(TPixel pixel, std::uint32_t factor) {
  return DivideBy255((pixel & 0xFF) * factor) | DivideBy255((pixel >> 8 & 0xFF) * factor) << 8 |
         DivideBy255((pixel >> 16 & 0xFF) * factor) << 16 |
         DivideBy255((pixel >> 24) * factor) << 24;
}

/// A premultiplied pixel over another one. No part overflows: each colour is at most its alpha.
constexpr TPixel BlendPixel(TPixel under, TPixel over) {
  const std::uint32_t alpha = AlphaOf(over);
  if (alpha == 255) return over;
  return over + ScalePixel(under, 255 - alpha);
}

/// Multiplies the colours by alpha.
constexpr TPixel Premultiply(TPixel pixel) {
  return (ScalePixel(pixel, AlphaOf(pixel)) & 0xFFFFFF) | (pixel & 0xFF000000u);
}
/// Undoes that as far as rounding lets it.
TPixel Unpremultiply(TPixel pixel) noexcept;

/// Lays the part of `source` that falls into `clip` over `dest`; `clip` may reach out of it.
void BlendBitmap(TBitmap& dest, const TRect& clip, TPoint at, const TBitmap& source, int opacity);

/// The part `window` of what `source` looks like at the size `size`. Only that part is computed, so
/// a large size costs no more than what is seen of it.
TBitmap ResampleBitmap(const TBitmap& source, TSize size, const TRect& window,
                       TStretchFilter filter);

/// Copies pixels, nearest where sizes differ, into the part of `dest` in `clip`.
void CopyPixels(TBitmap& dest, const TRect& clip, const TRect& destRect, const TBitmap& source,
                const TRect& sourceRect);

}  // namespace oak
