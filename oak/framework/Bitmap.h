// TBitmap: a picture in memory.
#pragma once

#include <cstdint>
#include <memory>
#include <vector>

#include "oak/framework/Component.h"
#include "oak/framework/Geometry.h"
#include "oak/framework/Graphics.h"

namespace oak {

class TCanvas;

/// 0xAARRGGBB: in memory the bytes blue, green, red, alpha.
using TPixel = std::uint32_t;

enum TAlphaFormat : std::uint8_t {
  afIgnored,       ///< Opaque; every operation leaves the alpha bytes at 255.
  afPremultiplied  ///< The colours are multiplied by alpha already.
};

/// How pixels are found when the size changes.
enum class TStretchFilter : std::uint8_t {
  Nearest,  ///< Copies one pixel; hard edges.
  Smooth    ///< Mean of all pixels that are covered when shrinking, linear when enlarging.
};

/// A picture of 32-bit pixels that is independent of any device, rows from top to bottom. Usable on
/// any thread, by one at a time: a worker makes it and hands it over. Copying is explicit, by
/// Assign; who holds a result owns it.
class TBitmap : public TPersistent {
 public:
  /// No longer side than this, and no more pixels than 2^26.
  static constexpr int MaxSide = 32767;
  static constexpr long long MaxPixels = 1LL << 26;

  TBitmap();
  /// Opaque black, or fully transparent with alpha. Raises EInvalidArgument like SetSize.
  TBitmap(int width, int height, TAlphaFormat alphaFormat = afIgnored);
  ~TBitmap() override;
  /// Moves the pixels; the source is empty afterwards.
  TBitmap(TBitmap&& other) noexcept;
  TBitmap& operator=(TBitmap&& other) noexcept;
  /// Copies pixels, size and alpha format of a TBitmap.
  void Assign(const TPersistent* source) override;

  int GetWidth() const noexcept { return fWidth; }
  int GetHeight() const noexcept { return fHeight; }
  TSize GetSize() const noexcept { return {fWidth, fHeight}; }
  TRect GetRect() const noexcept { return {0, 0, fWidth, fHeight}; }
  /// Without a pixel.
  bool IsEmpty() const noexcept { return fPixels.empty(); }
  /// What lies in both sizes stays where it is, new pixels are as those of a new bitmap. Negative
  /// or too large sizes raise EInvalidArgument; then and when memory is lacking nothing has
  /// changed.
  void SetSize(int width, int height);
  void SetWidth(int value) { SetSize(value, fHeight); }
  void SetHeight(int value) { SetSize(fWidth, value); }
  /// Gives all memory back.
  void Clear() noexcept;

  TAlphaFormat GetAlphaFormat() const noexcept { return fAlphaFormat; }
  /// To afIgnored makes each pixel opaque, without change of its colour bytes; to afPremultiplied
  /// changes nothing.
  void SetAlphaFormat(TAlphaFormat value);

  /// Row `y`, GetWidth() pixels. `y` lies in the bitmap.
  TPixel* ScanLine(int y) noexcept;
  const TPixel* ScanLine(int y) const noexcept;
  /// Colour of a pixel without alpha; clNone outside.
  TColor GetPixel(int x, int y) const noexcept;
  /// Sets an opaque pixel; outside nothing happens.
  void SetPixel(int x, int y, TColor color);

  /// All pixels of one colour, opaque; clNone makes them transparent (black where alpha is
  /// ignored).
  void Fill(TColor color);
  /// The part of `rect` that lies in the bitmap.
  void FillRect(const TRect& rect, TColor color);
  /// Copies pixels with their alpha, stretched where the sizes differ (no smoothing). The bitmap
  /// may be its own source. Parts outside either bitmap stay as they are.
  void CopyRect(const TRect& dest, const TBitmap& source, const TRect& sourceRect);
  /// Lays a picture over this one, with its alpha and that of the whole (255: as it is).
  void Draw(int x, int y, const TBitmap& source, int opacity = 255);
  /// The same, stretched to `dest`.
  void StretchDraw(const TRect& dest, const TBitmap& source,
                   TStretchFilter filter = TStretchFilter::Smooth, int opacity = 255);
  /// This picture in another size, at least 1 by 1 pixel unless it is empty.
  TBitmap Resized(int width, int height, TStretchFilter filter = TStretchFilter::Smooth) const;
  /// The largest size of the same proportions that fits in `box`; it never enlarges.
  TSize FitSize(TSize box) const noexcept;

  /// Same size and, where alpha counts in both, same pixels; else same colours.
  bool SameContents(const TBitmap& other) const noexcept;

  /// Draws on this bitmap, in software on every system (see TBitmapCanvas). Lives as long as the
  /// bitmap and stays with it when its pixels are moved away.
  TCanvas& GetCanvas();

  /// Copies a system bitmap, which stays the caller's. Pictures without alpha become afIgnored,
  /// those with one afPremultiplied. Empty if `handle` is null, no bitmap, or where the system has
  /// none.
  static TBitmap FromHandle(HBITMAP handle);
  /// Like FromHandle, and deletes the handle, on failure too.
  static TBitmap AdoptHandle(HBITMAP handle);
  /// A new 32-bit device-independent system bitmap with these pixels, which the caller deletes;
  /// null when empty or where the system has none.
  HBITMAP CreateHandle() const;

 private:
  friend class TBitmapBlend;

  TPixel NewPixel() const noexcept { return fAlphaFormat == afIgnored ? 0xFF000000u : 0u; }

  int fWidth = 0;
  int fHeight = 0;
  TAlphaFormat fAlphaFormat = afIgnored;
  std::vector<TPixel> fPixels;
  std::unique_ptr<TCanvas> fCanvas;
};

/// A pixel of a colour, opaque. The colour is resolved.
TPixel PixelOf(TColor color);

}  // namespace oak
