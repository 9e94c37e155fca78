#include "oak/framework/ImageSources.h"

#include "oak/framework/BitmapPixels.h"

namespace oak {
namespace {

constexpr TPixel RgbMask = 0xFFFFFF;

template <class Function>
void ForEachPixel(TBitmap& image, Function function) {
  for (int y = 0; y < image.GetHeight(); ++y) {
    TPixel* row = image.ScanLine(y);
    for (int x = 0; x < image.GetWidth(); ++x) row[x] = function(row[x]);
  }
}

TPixel GrayOf(TPixel pixel) {
  const std::uint32_t red = pixel >> 16 & 0xFF;
  const std::uint32_t green = pixel >> 8 & 0xFF;
  const std::uint32_t blue = pixel & 0xFF;
  const std::uint32_t gray = (77 * red + 150 * green + 29 * blue) >> 8;
  return (pixel & ~RgbMask) | gray << 16 | gray << 8 | gray;
}

/// Half way to `color`, with the pixel's own alpha.
TPixel Tinted(TPixel pixel, TPixel color) {
  const TPixel half = ScalePixel(color, DivideBy255(AlphaOf(pixel) * 127));
  return (pixel & ~RgbMask) | ((ScalePixel(pixel, 128) + half) & RgbMask);
}

}  // namespace

TBitmap CutImage(const TBitmap& strip, const TBitmap* mask, int index, TSize size) {
  TBitmap image(size.Width, size.Height, afPremultiplied);
  const TRect cell({index * size.Width, 0}, size);
  image.CopyRect({{}, size}, strip, cell);
  if (!mask) return image;
  const TRect masked = cell.Intersected(mask->GetRect());
  for (int y = masked.Top; y < masked.Bottom; ++y) {
    const TPixel* row = mask->ScanLine(y);
    for (int x = masked.Left; x < masked.Right; ++x)
      if ((row[x] & RgbMask) == RgbMask) image.ScanLine(y)[x - cell.Left] = 0;
  }
  return image;
}

TBitmap MaskByColor(const TBitmap& image, TColor maskColor) {
  TBitmap result(image.GetWidth(), image.GetHeight(), afPremultiplied);
  result.CopyRect(image.GetRect(), image, image.GetRect());
  if (maskColor == clNone || result.IsEmpty()) return result;
  const TPixel hole =
      maskColor == clDefault ? result.ScanLine(result.GetHeight() - 1)[0] : PixelOf(maskColor);
  ForEachPixel(result,
               [hole](TPixel pixel) { return ((pixel ^ hole) & RgbMask) == 0 ? 0 : pixel; });
  return result;
}

void ApplyImageState(TBitmap& image, TImageState state) {
  if (state == TImageState::Normal) return;
  if (image.GetAlphaFormat() == afIgnored) image.SetAlphaFormat(afPremultiplied);
  const TPixel highlight = state == TImageState::Selected ? PixelOf(clHighlight) : 0;
  ForEachPixel(image, [state, highlight](TPixel pixel) {
    if (state == TImageState::Selected) return Tinted(pixel, highlight);
    return ScalePixel(state == TImageState::Disabled ? GrayOf(pixel) : pixel, 128);
  });
}

bool TScaledImageSource::GetImage(int index, TBitmap& image) const {
  TBitmap original;
  if (!fSource->GetImage(index, original)) return false;
  image = original.Resized(fSize.Width, fSize.Height);
  return true;
}

}  // namespace oak
