#include "oak/framework/win32/DibWin32.h"

#include <algorithm>

#include "oak/base/Exceptions.h"
#include "oak/framework/BitmapPixels.h"

namespace oak {
namespace {

bool HasAlpha(TBitmap& bitmap, bool* isPremultiplied) {
  bool isSeen = false;
  bool isHole = false;
  *isPremultiplied = true;
  for (int y = 0; y < bitmap.GetHeight(); ++y) {
    const TPixel* row = bitmap.ScanLine(y);
    for (int x = 0; x < bitmap.GetWidth(); ++x) {
      const TPixel pixel = row[x];
      const std::uint32_t alpha = AlphaOf(pixel);
      isSeen |= alpha != 0;
      isHole |= alpha != 255;
      if ((pixel & 0xFF) > alpha || (pixel >> 8 & 0xFF) > alpha || (pixel >> 16 & 0xFF) > alpha)
        *isPremultiplied = false;
    }
  }
  return isSeen && isHole;
}

/// The mask's white pixels become holes; `mask` stands `offset` rows above in its bitmap.
void CutByMask(TBitmap& image, const TBitmap& mask) {
  const int height = std::min(image.GetHeight(), mask.GetHeight());
  const int width = std::min(image.GetWidth(), mask.GetWidth());
  image.SetAlphaFormat(afIgnored);
  image.SetAlphaFormat(afPremultiplied);
  for (int y = 0; y < height; ++y)
    for (int x = 0; x < width; ++x)
      if (mask.ScanLine(y)[x] & 0xFFFFFF) image.ScanLine(y)[x] = 0;
}

}  // namespace

BITMAPINFO DibHeader(int width, int height) noexcept {
  BITMAPINFO info{};
  info.bmiHeader.biSize = sizeof info.bmiHeader;
  info.bmiHeader.biWidth = width;
  info.bmiHeader.biHeight = -height;
  info.bmiHeader.biPlanes = 1;
  info.bmiHeader.biBitCount = 32;
  info.bmiHeader.biCompression = BI_RGB;
  return info;
}

TDibSection::TDibSection(int width, int height)
    : fWidth(std::max(1, width)),
      fHeight(std::max(1, height)),
      fDC(TMemoryDC::Adopt(::CreateCompatibleDC(nullptr))) {
  const BITMAPINFO info = DibHeader(fWidth, fHeight);
  void* pixels = nullptr;
  fBitmap = TOwnedBitmap::Adopt(
      ::CreateDIBSection(fDC.Get(), &info, DIB_RGB_COLORS, &pixels, nullptr, 0));
  if (!fDC || !fBitmap) throw EOSError(ERROR_NOT_ENOUGH_MEMORY, ErrorText(ERROR_NOT_ENOUGH_MEMORY));
  fPixels = static_cast<TPixel*>(pixels);
  fFormer = ::SelectObject(fDC.Get(), fBitmap.Get());
}

TDibSection::~TDibSection() {
  if (fFormer) ::SelectObject(fDC.Get(), fFormer);
}

TPixel* TDibSection::ScanLine(int y) noexcept {
  ::GdiFlush();
  return fPixels + static_cast<std::ptrdiff_t>(y) * fWidth;
}

void TDibSection::Fill(TPixel pixel) noexcept {
  std::fill_n(ScanLine(0), static_cast<std::ptrdiff_t>(fWidth) * fHeight, pixel);
}

void TDibSection::Load(const TBitmap& source) noexcept {
  const int height = std::min(fHeight, source.GetHeight());
  for (int y = 0; y < height; ++y)
    std::copy_n(source.ScanLine(y), std::min(fWidth, source.GetWidth()), ScanLine(y));
}

TBitmap TDibSection::ToBitmap() {
  TBitmap result(fWidth, fHeight);
  for (int y = 0; y < fHeight; ++y) std::copy_n(ScanLine(y), fWidth, result.ScanLine(y));
  result.SetAlphaFormat(afIgnored);
  return result;
}

HBITMAP TDibSection::Detach() noexcept {
  ::GdiFlush();
  ::SelectObject(fDC.Get(), fFormer);
  fFormer = nullptr;
  return fBitmap.Detach();
}

TBitmap CaptureWithAlpha(TSize size, const std::function<void(HDC dc)>& draw) {
  TBitmap result(size.Width, size.Height, afPremultiplied);
  if (result.IsEmpty()) return result;
  TDibSection black(size.Width, size.Height);
  TDibSection white(size.Width, size.Height);
  white.Fill(0xFFFFFFFFu);
  draw(black.GetDC());
  draw(white.GetDC());
  for (int y = 0; y < size.Height; ++y) {
    const TPixel* onBlack = black.ScanLine(y);
    const TPixel* onWhite = white.ScanLine(y);
    TPixel* out = result.ScanLine(y);
    for (int x = 0; x < size.Width; ++x) {
      // What shines through is what both differ by; green is the finest part of all displays.
      const int through =
          static_cast<int>(onWhite[x] >> 8 & 0xFF) - static_cast<int>(onBlack[x] >> 8 & 0xFF);
      const auto alpha = static_cast<std::uint32_t>(std::clamp(255 - through, 0, 255));
      TPixel pixel = alpha << 24;
      for (unsigned shift = 0; shift < 24; shift += 8)
        pixel |= std::min(alpha, onBlack[x] >> shift & 0xFF) << shift;
      out[x] = pixel;
    }
  }
  return result;
}

bool ReadBitmapPixels(HBITMAP handle, TBitmap& bitmap, int* depth) {
  BITMAP header{};
  if (!handle || ::GetObjectW(handle, sizeof header, &header) != sizeof header) return false;
  const int height = header.bmHeight < 0 ? -header.bmHeight : header.bmHeight;
  TBitmap result(header.bmWidth, height);
  if (result.IsEmpty()) return false;
  BITMAPINFO info = DibHeader(header.bmWidth, height);
  const TMemoryDC dc = TMemoryDC::Adopt(::CreateCompatibleDC(nullptr));
  if (!::GetDIBits(dc.Get(), handle, 0, static_cast<UINT>(height), result.ScanLine(0), &info,
                   DIB_RGB_COLORS))
    return false;
  bitmap = std::move(result);
  *depth = header.bmBitsPixel;
  return true;
}

void SettleAlpha(TBitmap& bitmap) {
  bool isPremultiplied = true;
  if (!HasAlpha(bitmap, &isPremultiplied)) {
    bitmap.SetAlphaFormat(afIgnored);
    return;
  }
  bitmap.SetAlphaFormat(afPremultiplied);
  if (isPremultiplied) return;
  for (int y = 0; y < bitmap.GetHeight(); ++y) {
    TPixel* row = bitmap.ScanLine(y);
    std::transform(row, row + bitmap.GetWidth(), row, Premultiply);
  }
}

TBitmap BitmapOfIcon(HICON icon) {
  TBitmap result;
  ICONINFO info{};
  if (!icon || !::GetIconInfo(icon, &info)) return result;
  const TOwnedBitmap color = TOwnedBitmap::Adopt(info.hbmColor);
  const TOwnedBitmap maskBits = TOwnedBitmap::Adopt(info.hbmMask);
  TBitmap mask;
  int depth = 0;
  if (!ReadBitmapPixels(maskBits.Get(), mask, &depth)) mask.Clear();
  if (ReadBitmapPixels(color.Get(), result, &depth)) {
    bool isPremultiplied = true;
    // Icons keep their alpha straight, so only a mixture of values says that there is one.
    if (depth == 32 && HasAlpha(result, &isPremultiplied)) {
      result.SetAlphaFormat(afPremultiplied);
      for (int y = 0; y < result.GetHeight(); ++y) {
        TPixel* row = result.ScanLine(y);
        std::transform(row, row + result.GetWidth(), row, Premultiply);
      }
    } else {
      CutByMask(result, mask);
    }
  } else if (!mask.IsEmpty()) {
    // Without colours the mask holds two pictures: what to cut above what to draw.
    const int height = mask.GetHeight() / 2;
    result.SetSize(mask.GetWidth(), height);
    result.CopyRect(result.GetRect(), mask, {0, height, mask.GetWidth(), 2 * height});
    mask.SetHeight(height);
    CutByMask(result, mask);
  }
  return result;
}

}  // namespace oak
