// TCanvas: where controls and custom draw handlers draw.
#pragma once

#include <span>

#include "oak/framework/Geometry.h"
#include "oak/framework/Graphics.h"
#include "oak/framework/TextMetrics.h"

namespace oak {

class TBitmap;
class TImageList;

/// In which state an image of a list is shown.
enum class TImageState : std::uint8_t {
  Normal,
  Selected,  ///< Half way to the colour of selections.
  Ghosted,   ///< Half transparent: cut or hidden.
  Disabled   ///< Without colours, half transparent.
};

/// Something to draw on, in pixels. Colours are resolved when a drawing operation runs. The brush
/// fills areas and lies behind text unless it is clear; the pen draws lines and outlines; text has
/// the font's colour. Main thread, but for a canvas on a bitmap that a thread has for itself.
class TCanvas : public TPersistent {
 public:
  ~TCanvas() override;
  TCanvas(const TCanvas&) = delete;
  TCanvas& operator=(const TCanvas&) = delete;

  TFont& GetFont() noexcept { return fFont; }
  const TFont& GetFont() const noexcept { return fFont; }
  void SetFont(const TFont& value) { fFont = value; }
  TPen& GetPen() noexcept { return fPen; }
  const TPen& GetPen() const noexcept { return fPen; }
  void SetPen(const TPen& value) { fPen = value; }
  TBrush& GetBrush() noexcept { return fBrush; }
  const TBrush& GetBrush() const noexcept { return fBrush; }
  void SetBrush(const TBrush& value) { fBrush = value; }

  /// Density of what is drawn on.
  virtual int GetPixelsPerInch() const = 0;
  /// The system's device context, where this canvas has one; it stays the canvas's. Else null.
  virtual HDC GetHandle() { return nullptr; }

  /// Fills with the brush; no outline.
  virtual void FillRect(const TRect& rect) = 0;
  /// One pixel wide outline in the colour of the brush.
  virtual void FrameRect(const TRect& rect) = 0;
  /// Outline by the pen, inside by the brush; with a clear pen all by the brush.
  virtual void Rectangle(const TRect& rect) = 0;
  /// A closed figure: outline by the pen, inside by the brush (even-odd).
  virtual void Polygon(std::span<const TPoint> points) = 0;
  /// The dotted outline of what has the focus.
  virtual void DrawFocusRect(const TRect& rect) = 0;
  /// From one colour to another, downwards or to the right.
  virtual void GradientFill(const TRect& rect, TColor from, TColor to, bool vertical) = 0;

  TPoint GetPenPos() const noexcept { return fPenPos; }
  void MoveTo(int x, int y) noexcept { fPenPos = {x, y}; }
  /// A line from the pen's place; its last point is not drawn and is the new place.
  void LineTo(int x, int y);

  /// Lays a picture over, with its alpha and that of the whole (255: as it is).
  virtual void Draw(int x, int y, const TBitmap& bitmap, int opacity = 255) = 0;
  virtual void StretchDraw(const TRect& dest, const TBitmap& bitmap, int opacity = 255) = 0;
  /// Copies a part of a picture without blending, stretched where the sizes differ.
  virtual void CopyRect(const TRect& dest, const TBitmap& source, const TRect& sourceRect) = 0;
  /// Draws an image of a list; see TImageList::Draw for the meaning of the arguments. An
  /// index outside the list draws nothing.
  virtual void DrawImage(const TImageList& images, int index, int x, int y, int overlay = 0,
                         TImageState state = TImageState::Normal);

  /// Size of a single line in the canvas's font.
  virtual TSize TextExtent(TStringView text) const;
  int TextWidth(TStringView text) const { return TextExtent(text).Width; }
  int TextHeight(TStringView text = u"Mg") const { return TextExtent(text).Height; }
  /// Draws a line of text with its upper left corner at the point.
  virtual void TextOut(int x, int y, TStringView text) = 0;
  /// Draws text in a rectangle.
  virtual void DrawText(const TRect& rect, TStringView text, TTextFormat format) = 0;
  /// The rectangle that the text takes: left and top as given, and with tfWordBreak no wider than
  /// `rect` unless a single word is.
  virtual TRect MeasureText(const TRect& rect, TStringView text, TTextFormat format) const;
  /// DrawText, or with tfCalcRect MeasureText into `rect`.
  void TextRect(TRect& rect, TStringView text, TTextFormat format);

  /// Nothing is drawn outside; everything when none was set.
  virtual TRect GetClipRect() const = 0;
  /// Narrows the clipping rectangle until the matching PopClip.
  virtual void PushClip(const TRect& rect) = 0;
  virtual void PopClip() = 0;

 protected:
  TCanvas() = default;
  /// The line of LineTo.
  virtual void DrawLine(TPoint from, TPoint to) = 0;

 private:
  TFont fFont;
  TPen fPen;
  TBrush fBrush;
  TPoint fPenPos;
};

/// Clips for the span of a block.
class TClipScope {
 public:
  TClipScope(TCanvas& canvas, const TRect& rect) : fCanvas(canvas) { canvas.PushClip(rect); }
  ~TClipScope() { fCanvas.PopClip(); }
  TClipScope(const TClipScope&) = delete;
  TClipScope& operator=(const TClipScope&) = delete;

 private:
  TCanvas& fCanvas;
};

}  // namespace oak
