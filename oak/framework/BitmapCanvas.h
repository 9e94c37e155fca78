// TBitmapCanvas: drawing on the pixels of a bitmap.
#pragma once

#include <vector>

#include "oak/framework/Canvas.h"
#include "oak/framework/GraphicsSystem.h"

namespace oak {

/// Draws in software, the same pixels on every system. Text comes from the graphics system: on
/// Windows its letters are drawn; headless there are none, sizes are answered and nothing appears.
/// A thread may draw on a bitmap that it has for itself.
class TBitmapCanvas : public TCanvas {
 public:
  /// `bitmap` must outlive the canvas.
  explicit TBitmapCanvas(TBitmap& bitmap, int pixelsPerInch = 96)
      : fBitmap(bitmap), fPixelsPerInch(pixelsPerInch) {}

  int GetPixelsPerInch() const override { return fPixelsPerInch; }
  void SetPixelsPerInch(int value) noexcept { fPixelsPerInch = value; }
  void FillRect(const TRect& rect) override;
  void FrameRect(const TRect& rect) override;
  void Rectangle(const TRect& rect) override;
  void Polygon(std::span<const TPoint> points) override;
  void DrawFocusRect(const TRect& rect) override;
  void GradientFill(const TRect& rect, TColor from, TColor to, bool vertical) override;
  void Draw(int x, int y, const TBitmap& bitmap, int opacity = 255) override;
  void StretchDraw(const TRect& dest, const TBitmap& bitmap, int opacity = 255) override;
  void CopyRect(const TRect& dest, const TBitmap& source, const TRect& sourceRect) override;
  void TextOut(int x, int y, TStringView text) override;
  void DrawText(const TRect& rect, TStringView text, TTextFormat format) override;
  TRect GetClipRect() const override;
  void PushClip(const TRect& rect) override;
  void PopClip() override;

 protected:
  void DrawLine(TPoint from, TPoint to) override;

 private:
  void Fill(const TRect& rect, TColor color);
  void PlotPen(int x, int y, TColor color, int step);

  TBitmap& fBitmap;
  int fPixelsPerInch;
  std::vector<TRect> fClips;
};

/// A check box of lines and a check mark, for systems that draw none.
void DrawPlainCheckBox(TBitmap& bitmap, const TRect& rect, TCheckBoxImage image, bool enabled,
                       int pixelsPerInch);

}  // namespace oak
