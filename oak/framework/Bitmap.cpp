#include "oak/framework/Bitmap.h"

#include <algorithm>
#include <utility>

#include "oak/base/Exceptions.h"
#include "oak/framework/BitmapCanvas.h"
#include "oak/framework/BitmapPixels.h"

namespace oak {
namespace {

constexpr TPixel Opaque = 0xFF000000u;

void CheckBitmapSize(int width, int height) {
  const bool isSide =
      width >= 0 && height >= 0 && width <= TBitmap::MaxSide && height <= TBitmap::MaxSide;
  if (isSide && static_cast<long long>(width) * height <= TBitmap::MaxPixels) return;
  throw EInvalidArgument(u"A bitmap of " + IntToStr(width) + u" by " + IntToStr(height) +
                         u" pixels cannot be made.");
}

std::size_t PixelCount(int width, int height) {
  return static_cast<std::size_t>(width) * static_cast<std::size_t>(height);
}

}  // namespace

TPixel PixelOf(TColor color) {
  const TColor rgb = ColorToRGB(color);
  return Opaque | static_cast<TPixel>(RedOf(rgb)) << 16 | (rgb & 0xFF00) |
         static_cast<TPixel>(BlueOf(rgb));
}

TBitmap::TBitmap() = default;

TBitmap::TBitmap(int width, int height, TAlphaFormat alphaFormat) : fAlphaFormat(alphaFormat) {
  SetSize(width, height);
}

TBitmap::~TBitmap() = default;

TBitmap::TBitmap(TBitmap&& other) noexcept
    : TPersistent(),
      fWidth(std::exchange(other.fWidth, 0)),
      fHeight(std::exchange(other.fHeight, 0)),
      fAlphaFormat(other.fAlphaFormat),
      fPixels(std::exchange(other.fPixels, {})) {}

TBitmap& TBitmap::operator=(TBitmap&& other) noexcept {
  if (this == &other) return *this;
  fWidth = std::exchange(other.fWidth, 0);
  fHeight = std::exchange(other.fHeight, 0);
  fAlphaFormat = other.fAlphaFormat;
  fPixels = std::exchange(other.fPixels, {});
  return *this;
}

void TBitmap::Assign(const TPersistent* source) {
  auto* bitmap = dynamic_cast<const TBitmap*>(source);
  if (!bitmap) return TPersistent::Assign(source);
  if (bitmap == this) return;
  std::vector<TPixel> pixels = bitmap->fPixels;
  fPixels = std::move(pixels);
  fWidth = bitmap->fWidth;
  fHeight = bitmap->fHeight;
  fAlphaFormat = bitmap->fAlphaFormat;
}

void TBitmap::SetSize(int width, int height) {
  CheckBitmapSize(width, height);
  if (width == fWidth && height == fHeight) return;
  // A side of zero is kept, so that setting width and then height works.
  std::vector<TPixel> pixels(PixelCount(width, height), NewPixel());
  const int rows = std::min(height, fHeight);
  const auto columns = static_cast<std::size_t>(std::min(width, fWidth));
  for (int y = 0; y < rows && columns > 0; ++y)
    std::copy_n(ScanLine(y), columns, pixels.data() + PixelCount(width, y));
  fPixels = std::move(pixels);
  fWidth = width;
  fHeight = height;
}

void TBitmap::Clear() noexcept {
  fWidth = fHeight = 0;
  fPixels = {};
}

void TBitmap::SetAlphaFormat(TAlphaFormat value) {
  fAlphaFormat = value;
  if (value == afIgnored)
    for (TPixel& pixel : fPixels) pixel |= Opaque;
}

TPixel* TBitmap::ScanLine(int y) noexcept { return fPixels.data() + PixelCount(fWidth, y); }

const TPixel* TBitmap::ScanLine(int y) const noexcept {
  return fPixels.data() + PixelCount(fWidth, y);
}

TColor TBitmap::GetPixel(int x, int y) const noexcept {
  if (!GetRect().Contains({x, y})) return clNone;
  const TPixel pixel = ScanLine(y)[x];
  return (pixel >> 16 & 0xFF) | (pixel & 0xFF00) | (pixel & 0xFF) << 16;
}

void TBitmap::SetPixel(int x, int y, TColor color) {
  if (GetRect().Contains({x, y})) ScanLine(y)[x] = color == clNone ? NewPixel() : PixelOf(color);
}

void TBitmap::Fill(TColor color) { FillRect(GetRect(), color); }

void TBitmap::FillRect(const TRect& rect, TColor color) {
  const TRect part = rect.Intersected(GetRect());
  if (part.IsEmpty()) return;
  const TPixel pixel = color == clNone ? NewPixel() : PixelOf(color);
  for (int y = part.Top; y < part.Bottom; ++y)
    std::fill_n(ScanLine(y) + part.Left, part.Width(), pixel);
}

void TBitmap::CopyRect(const TRect& dest, const TBitmap& source, const TRect& sourceRect) {
  CopyPixels(*this, GetRect(), dest, source, sourceRect);
}

void TBitmap::Draw(int x, int y, const TBitmap& source, int opacity) {
  BlendBitmap(*this, GetRect(), {x, y}, source, opacity);
}

void TBitmap::StretchDraw(const TRect& dest, const TBitmap& source, TStretchFilter filter,
                          int opacity) {
  const TRect part = dest.Intersected(GetRect());
  if (part.IsEmpty() || source.IsEmpty()) return;
  const TRect window = part.Moved(-dest.Left, -dest.Top);
  BlendBitmap(*this, part, part.TopLeft(), ResampleBitmap(source, dest.Size(), window, filter),
              opacity);
}

TBitmap TBitmap::Resized(int width, int height, TStretchFilter filter) const {
  if (IsEmpty()) return TBitmap(0, 0, fAlphaFormat);
  CheckBitmapSize(width, height);
  const TSize size{std::max(1, width), std::max(1, height)};
  return ResampleBitmap(*this, size, {{}, size}, filter);
}

TSize TBitmap::FitSize(TSize box) const noexcept {
  if (IsEmpty() || box.Width <= 0 || box.Height <= 0) return {};
  TSize size = GetSize();
  if (size.Width > box.Width) size = {box.Width, std::max(1, MulDiv(fHeight, box.Width, fWidth))};
  if (size.Height > box.Height)
    size = {std::max(1, MulDiv(fWidth, box.Height, fHeight)), box.Height};
  return size;
}

bool TBitmap::SameContents(const TBitmap& other) const noexcept {
  if (GetSize() != other.GetSize()) return false;
  const bool isAlpha = fAlphaFormat == afPremultiplied && other.fAlphaFormat == afPremultiplied;
  const TPixel mask = isAlpha ? 0xFFFFFFFFu : 0xFFFFFFu;
  return std::equal(fPixels.begin(), fPixels.end(), other.fPixels.begin(),
                    [mask](TPixel a, TPixel b) { return ((a ^ b) & mask) == 0; });
}

TCanvas& TBitmap::GetCanvas() {
  if (!fCanvas) fCanvas = std::make_unique<TBitmapCanvas>(*this);
  return *fCanvas;
}

}  // namespace oak
