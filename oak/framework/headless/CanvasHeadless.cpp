#include "oak/framework/headless/CanvasHeadless.h"

#include <algorithm>
#include <utility>

#include "oak/framework/Bitmap.h"
#include "oak/framework/ImageList.h"
#include "oak/framework/headless/TextLayout.h"

namespace oak {
namespace {

/// The rectangle around points, with the pixels that they stand for.
TRect RectAround(std::span<const TPoint> points) {
  TRect rect;
  for (const TPoint& point : points) rect = rect.United({point, TSize{1, 1}});
  return rect;
}

TString JoinLines(const std::vector<TString>& lines) {
  TString text;
  for (const TString& line : lines) {
    if (&line != &lines.front()) text += u'\n';
    text += line;
  }
  return text;
}

}  // namespace

TCanvasHeadless::TCanvasHeadless(const TRect& bounds, int pixelsPerInch)
    : fPixelsPerInch(pixelsPerInch), fClips{bounds} {}

std::vector<TDrawOperation> TCanvasHeadless::TakeOperations() {
  return std::exchange(fOperations, {});
}

std::vector<TString> TCanvasHeadless::GetTexts() const {
  std::vector<TString> texts;
  for (const TDrawOperation& operation : fOperations)
    if (operation.Kind == TDrawKind::Text) texts.push_back(operation.Text);
  return texts;
}

const TDrawOperation* TCanvasHeadless::FindLast(TDrawKind kind) const noexcept {
  const auto found =
      std::find_if(fOperations.rbegin(), fOperations.rend(),
                   [kind](const TDrawOperation& operation) { return operation.Kind == kind; });
  return found == fOperations.rend() ? nullptr : &*found;
}

TDrawOperation TCanvasHeadless::Begin(TDrawKind kind, const TRect& rect) const {
  TDrawOperation operation;
  operation.Kind = kind;
  operation.Rect = rect;
  operation.Clip = GetClipRect();
  return operation;
}

void TCanvasHeadless::SetOutline(TDrawOperation& operation) const {
  operation.PenStyle = GetPen().GetStyle();
  if (operation.PenStyle != psClear) operation.PenColor = ColorToRGB(GetPen().GetColor());
}

void TCanvasHeadless::SetFill(TDrawOperation& operation) const {
  if (GetBrush().GetStyle() == bsSolid) operation.Color = ColorToRGB(GetBrush().GetColor());
}

void TCanvasHeadless::Keep(TDrawOperation operation) {
  if (operation.Rect.Intersects(operation.Clip)) fOperations.push_back(std::move(operation));
}

void TCanvasHeadless::FillRect(const TRect& rect) {
  TDrawOperation operation = Begin(TDrawKind::FillRect, rect);
  SetFill(operation);
  if (operation.Color != clNone) Keep(std::move(operation));
}

void TCanvasHeadless::FrameRect(const TRect& rect) {
  if (GetBrush().GetStyle() == bsClear) return;
  TDrawOperation operation = Begin(TDrawKind::FrameRect, rect);
  operation.PenColor = ColorToRGB(GetBrush().GetColor());
  Keep(std::move(operation));
}

void TCanvasHeadless::Rectangle(const TRect& rect) {
  TDrawOperation operation = Begin(TDrawKind::Rectangle, rect);
  SetOutline(operation);
  SetFill(operation);
  Keep(std::move(operation));
}

void TCanvasHeadless::Polygon(std::span<const TPoint> points) {
  TDrawOperation operation = Begin(TDrawKind::Polygon, RectAround(points));
  SetOutline(operation);
  SetFill(operation);
  operation.Points.assign(points.begin(), points.end());
  Keep(std::move(operation));
}

void TCanvasHeadless::DrawLine(TPoint from, TPoint to) {
  if (GetPen().GetStyle() == psClear) return;
  const TPoint ends[] = {from, to};
  TDrawOperation operation = Begin(TDrawKind::Line, RectAround(ends));
  SetOutline(operation);
  operation.Points.assign(std::begin(ends), std::end(ends));
  Keep(std::move(operation));
}

void TCanvasHeadless::DrawFocusRect(const TRect& rect) { Keep(Begin(TDrawKind::FocusRect, rect)); }

void TCanvasHeadless::GradientFill(const TRect& rect, TColor from, TColor to, bool vertical) {
  TDrawOperation operation = Begin(TDrawKind::Gradient, rect);
  operation.Color = ColorToRGB(from);
  operation.PenColor = ColorToRGB(to);
  operation.Vertical = vertical;
  Keep(std::move(operation));
}

void TCanvasHeadless::Draw(int x, int y, const TBitmap& bitmap, int) {
  Keep(Begin(TDrawKind::Bitmap, TRect({x, y}, bitmap.GetSize())));
}

void TCanvasHeadless::StretchDraw(const TRect& dest, const TBitmap& bitmap, int) {
  if (!bitmap.IsEmpty()) Keep(Begin(TDrawKind::Bitmap, dest));
}

void TCanvasHeadless::CopyRect(const TRect& dest, const TBitmap& source, const TRect& sourceRect) {
  if (sourceRect.Intersects(source.GetRect())) Keep(Begin(TDrawKind::Bitmap, dest));
}

void TCanvasHeadless::DrawImage(const TImageList& images, int index, int x, int y, int overlay,
                                TImageState state) {
  if (index < 0 || index >= images.GetCount()) return;
  const TSize size{images.GetWidth(), images.GetHeight()};
  TDrawOperation operation = Begin(TDrawKind::Image, TRect({x, y}, size));
  operation.ImageIndex = index;
  operation.Overlay = overlay;
  operation.State = state;
  operation.Images = &images;
  Keep(std::move(operation));
}

TSize TCanvasHeadless::TextExtent(TStringView text) const { return CellExtent(GetFont(), text); }

TRect TCanvasHeadless::MeasureText(const TRect& rect, TStringView text, TTextFormat format) const {
  return {rect.TopLeft(), LayoutText(GetFont(), rect, text, format + tfCalcRect).Rect.Size()};
}

void TCanvasHeadless::TextOut(int x, int y, TStringView text) {
  DrawText(TRect({x, y}, TextExtent(text)), text, {tfSingleLine, tfNoPrefix, tfNoClip});
}

void TCanvasHeadless::DrawText(const TRect& rect, TStringView text, TTextFormat format) {
  const TTextLayout layout = LayoutText(GetFont(), rect, text, format);
  TDrawOperation operation = Begin(TDrawKind::Text, layout.Rect);
  if (!format.Contains(tfNoClip)) operation.Clip = operation.Clip.Intersected(rect);
  operation.Bounds = rect;
  operation.Text = JoinLines(layout.Lines);
  operation.Format = format;
  operation.FontStyle = GetFont().GetStyle();
  operation.PenColor = ColorToRGB(GetFont().GetColor());
  SetFill(operation);
  Keep(std::move(operation));
}

void TCanvasHeadless::PushClip(const TRect& rect) {
  fClips.push_back(rect.Intersected(fClips.back()));
}

void TCanvasHeadless::PopClip() {
  if (fClips.size() > 1) fClips.pop_back();
}

}  // namespace oak
