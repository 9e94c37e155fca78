// Drawing with GDI.
#pragma once

#include <optional>
#include <vector>

#include "oak/framework/Canvas.h"
#include "oak/framework/win32/FontsWin32.h"
#include "oak/framework/win32/GdiHandles.h"

namespace oak {

/// Draws on a device context, which stays the caller's and gets back the objects, colours and
/// clipping that it had. Main thread.
class TCanvasWin32 : public TCanvas {
 public:
  explicit TCanvasWin32(HDC dc, int pixelsPerInch = 96);
  ~TCanvasWin32() override;

  int GetPixelsPerInch() const override { return fPixelsPerInch; }
  HDC GetHandle() override;
  void FillRect(const TRect& rect) override;
  void FrameRect(const TRect& rect) override;
  void Rectangle(const TRect& rect) override;
  void Polygon(std::span<const TPoint> points) override;
  void DrawFocusRect(const TRect& rect) override;
  void GradientFill(const TRect& rect, TColor from, TColor to, bool vertical) override;
  void Draw(int x, int y, const TBitmap& bitmap, int opacity = 255) override;
  void StretchDraw(const TRect& dest, const TBitmap& bitmap, int opacity = 255) override;
  void CopyRect(const TRect& dest, const TBitmap& source, const TRect& sourceRect) override;
  /// Lists of the system draw themselves, others like everywhere.
  void DrawImage(const TImageList& images, int index, int x, int y, int overlay = 0,
                 TImageState state = TImageState::Normal) override;
  TSize TextExtent(TStringView text) const override;
  void TextOut(int x, int y, TStringView text) override;
  void DrawText(const TRect& rect, TStringView text, TTextFormat format) override;
  TRect MeasureText(const TRect& rect, TStringView text, TTextFormat format) const override;
  TRect GetClipRect() const override;
  void PushClip(const TRect& rect) override;
  void PopClip() override;

 protected:
  void DrawLine(TPoint from, TPoint to) override;

 private:
  HBRUSH SolidBrush(TColor color) const;
  void SelectPen();
  void SelectFont() const;
  void SelectBrush();
  void SelectTextColors();

  HDC fDC;
  int fPixelsPerInch;
  int fSaved;
  mutable TSharedFont fFontHandle;
  mutable std::optional<TFont> fSelectedFont;
  TOwnedPen fPenHandle;
  std::vector<TOwnedRegion> fClips;
};

/// A picture of a part of a device context to draw on, which then appears at once. It has the
/// coordinates of its target.
class TDoubleBufferWin32 {
 public:
  /// If the system lacks memory for it, drawing goes to the target itself.
  TDoubleBufferWin32(HDC target, const TRect& rect);
  /// Shows what was drawn.
  ~TDoubleBufferWin32();
  TDoubleBufferWin32(const TDoubleBufferWin32&) = delete;
  TDoubleBufferWin32& operator=(const TDoubleBufferWin32&) = delete;
  HDC GetDC() const noexcept { return fDC ? fDC.Get() : fTarget; }

 private:
  HDC fTarget;
  TRect fRect;
  TMemoryDC fDC;
  TOwnedBitmap fBitmap;
  HGDIOBJ fFormer = nullptr;
};

}  // namespace oak
