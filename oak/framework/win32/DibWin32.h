// Pixels that GDI can draw on.
#pragma once

#include <functional>

#include "oak/framework/Bitmap.h"
#include "oak/framework/win32/GdiHandles.h"

namespace oak {

/// Header of a 32-bit picture with rows from top to bottom.
BITMAPINFO DibHeader(int width, int height) noexcept;

/// A 32-bit DIB section, selected into a memory context of its own, black at first. Any thread, by
/// one at a time.
class TDibSection {
 public:
  /// At least one pixel each way. Raises EOSError if the system has no memory left for it.
  TDibSection(int width, int height);
  ~TDibSection();
  TDibSection(const TDibSection&) = delete;
  TDibSection& operator=(const TDibSection&) = delete;

  HDC GetDC() const noexcept { return fDC.Get(); }
  HBITMAP GetHandle() const noexcept { return fBitmap.Get(); }
  int GetWidth() const noexcept { return fWidth; }
  int GetHeight() const noexcept { return fHeight; }
  /// Row `y`; what GDI drew before is there.
  TPixel* ScanLine(int y) noexcept;
  void Fill(TPixel pixel) noexcept;
  /// Copies `source` to the upper left corner, as far as it goes.
  void Load(const TBitmap& source) noexcept;
  /// A copy without alpha, for screenshots and tests.
  TBitmap ToBitmap();
  /// Gives the bitmap away; the object can't be used any more.
  [[nodiscard]] HBITMAP Detach() noexcept;

 private:
  int fWidth;
  int fHeight;
  TMemoryDC fDC;
  TOwnedBitmap fBitmap;
  HGDIOBJ fFormer = nullptr;
  TPixel* fPixels = nullptr;
};

/// What `draw` paints, with the alpha that follows from painting it on black and on white: for
/// themes, icons and frame controls, which leave the alpha bytes as they please.
TBitmap CaptureWithAlpha(TSize size, const std::function<void(HDC dc)>& draw);

/// Pixels of a system bitmap as they are; false if it is none. `depth` gets its bits per pixel.
bool ReadBitmapPixels(HBITMAP handle, TBitmap& bitmap, int* depth);

/// Takes the alpha bytes for what they are: none (all 0 or all 255), premultiplied, or straight.
void SettleAlpha(TBitmap& bitmap);

/// Pixels of an icon or cursor; empty if it is none.
TBitmap BitmapOfIcon(HICON icon);

}  // namespace oak
