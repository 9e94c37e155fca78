// A canvas that keeps what is drawn as a list.
#pragma once

#include <vector>

#include "oak/framework/Canvas.h"

namespace oak {

enum class TDrawKind : std::uint8_t {
  FillRect,
  FrameRect,
  Rectangle,
  Polygon,
  Line,
  FocusRect,
  Gradient,
  Text,
  Bitmap,
  Image
};

/// One drawing operation, as it would be seen: nothing is kept of what lies outside the clipping
/// rectangle. Colours are resolved; clNone where nothing was filled or outlined.
struct TDrawOperation {
  TDrawKind Kind = TDrawKind::FillRect;
  TRect Rect;                    ///< What is covered; text: where the letters stand.
  TRect Bounds;                  ///< Text: the rectangle that was asked for.
  TRect Clip;                    ///< The clipping rectangle of that moment.
  TString Text;                  ///< As it appears: without marks, shortened; lines end in U+000A.
  TTextFormat Format;            ///< Text.
  TFontStyles FontStyle;         ///< Text.
  TColor Color = clNone;         ///< Fill; behind text; start of a gradient.
  TColor PenColor = clNone;      ///< Outline, line or letters; end of a gradient.
  TPenStyle PenStyle = psSolid;  ///< Outline or line.
  bool Vertical = false;         ///< Gradient.
  std::vector<TPoint> Points;    ///< Polygon; both ends of a line.
  int ImageIndex = -1;           ///< Image.
  int Overlay = 0;               ///< Image.
  TImageState State = TImageState::Normal;  ///< Image.
  const TImageList* Images = nullptr;       ///< Image; not owned, for comparing.
};

/// Records instead of drawing. Sizes of text are those of cells, the same on every system.
class TCanvasHeadless : public TCanvas {
 public:
  /// `bounds` is the first clipping rectangle.
  explicit TCanvasHeadless(const TRect& bounds, int pixelsPerInch = 96);

  const std::vector<TDrawOperation>& GetOperations() const noexcept { return fOperations; }
  /// Gives the operations away and begins anew.
  std::vector<TDrawOperation> TakeOperations();
  /// All texts in the order in which they were drawn.
  std::vector<TString> GetTexts() const;
  /// The last operation of that kind, or nil.
  const TDrawOperation* FindLast(TDrawKind kind) const noexcept;

  int GetPixelsPerInch() const override { return fPixelsPerInch; }
  void FillRect(const TRect& rect) override;
  void FrameRect(const TRect& rect) override;
  void Rectangle(const TRect& rect) override;
  void Polygon(std::span<const TPoint> points) override;
  void DrawFocusRect(const TRect& rect) override;
  void GradientFill(const TRect& rect, TColor from, TColor to, bool vertical) override;
  void Draw(int x, int y, const TBitmap& bitmap, int opacity = 255) override;
  void StretchDraw(const TRect& dest, const TBitmap& bitmap, int opacity = 255) override;
  void CopyRect(const TRect& dest, const TBitmap& source, const TRect& sourceRect) override;
  void DrawImage(const TImageList& images, int index, int x, int y, int overlay = 0,
                 TImageState state = TImageState::Normal) override;
  TSize TextExtent(TStringView text) const override;
  void TextOut(int x, int y, TStringView text) override;
  void DrawText(const TRect& rect, TStringView text, TTextFormat format) override;
  TRect MeasureText(const TRect& rect, TStringView text, TTextFormat format) const override;
  TRect GetClipRect() const override { return fClips.back(); }
  void PushClip(const TRect& rect) override;
  void PopClip() override;

 protected:
  void DrawLine(TPoint from, TPoint to) override;

 private:
  TDrawOperation Begin(TDrawKind kind, const TRect& rect) const;
  void SetOutline(TDrawOperation& operation) const;
  void SetFill(TDrawOperation& operation) const;
  void Keep(TDrawOperation operation);

  int fPixelsPerInch;
  std::vector<TRect> fClips;
  std::vector<TDrawOperation> fOperations;
};

}  // namespace oak
