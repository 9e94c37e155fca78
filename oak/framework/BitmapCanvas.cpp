#include "oak/framework/BitmapCanvas.h"

#include <algorithm>
#include <cstdlib>
#include <utility>

#include "oak/framework/Bitmap.h"
#include "oak/framework/BitmapPixels.h"

namespace oak {
namespace {

/// Far enough outside of any bitmap, and small enough to be multiplied.
TPoint Clamped(TPoint point) {
  constexpr int Limit = 1 << 28;
  return {std::clamp(point.X, -Limit, Limit), std::clamp(point.Y, -Limit, Limit)};
}

/// Where a horizontal line through the middle of row `y` crosses the sides of a figure, sorted.
std::vector<int> Crossings(std::span<const TPoint> points, int y) {
  std::vector<int> result;
  for (std::size_t i = 0; i < points.size(); ++i) {
    TPoint a = Clamped(points[i]);
    TPoint b = Clamped(points[(i + 1) % points.size()]);
    // Always downwards, so that a side gives the same pixel whichever way it is walked.
    if (a.Y > b.Y) std::swap(a, b);
    if (y < a.Y || y >= b.Y) continue;
    const long long rise = 4LL * (b.Y - a.Y);
    const long long run = 2 * (2LL * (y - a.Y) + 1) * (b.X - a.X) - rise / 2;
    // The first pixel whose middle lies to the right.
    const long long pixels = run > 0 ? (run + rise - 1) / rise : -(-run / rise);
    result.push_back(a.X + static_cast<int>(pixels));
  }
  std::sort(result.begin(), result.end());
  return result;
}

TRect PenRect(int x, int y, int width) {
  const int left = x - (width - 1) / 2;
  const int top = y - (width - 1) / 2;
  return {left, top, left + width, top + width};
}

}  // namespace

void TBitmapCanvas::Fill(const TRect& rect, TColor color) {
  fBitmap.FillRect(rect.Intersected(GetClipRect()), color);
}

void TBitmapCanvas::FillRect(const TRect& rect) {
  if (GetBrush().GetStyle() == bsSolid) Fill(rect, GetBrush().GetColor());
}

void TBitmapCanvas::FrameRect(const TRect& rect) {
  if (GetBrush().GetStyle() == bsClear || rect.IsEmpty()) return;
  const TColor color = GetBrush().GetColor();
  Fill({rect.Left, rect.Top, rect.Right, rect.Top + 1}, color);
  Fill({rect.Left, rect.Bottom - 1, rect.Right, rect.Bottom}, color);
  Fill({rect.Left, rect.Top, rect.Left + 1, rect.Bottom}, color);
  Fill({rect.Right - 1, rect.Top, rect.Right, rect.Bottom}, color);
}

void TBitmapCanvas::Rectangle(const TRect& rect) {
  if (rect.IsEmpty()) return;
  if (GetPen().GetStyle() == psClear) return FillRect(rect);
  const int right = rect.Right - 1;
  const int bottom = rect.Bottom - 1;
  const TPoint corners[] = {
      {rect.Left, rect.Top}, {right, rect.Top}, {right, bottom}, {rect.Left, bottom}};
  FillRect(rect.Inflated(-1, -1));
  for (std::size_t i = 0; i < 4; ++i) DrawLine(corners[i], corners[(i + 1) % 4]);
}

void TBitmapCanvas::Polygon(std::span<const TPoint> points) {
  if (points.size() < 2) return;
  const auto [top, bottom] = std::minmax_element(
      points.begin(), points.end(), [](const TPoint& a, const TPoint& b) { return a.Y < b.Y; });
  if (GetBrush().GetStyle() == bsSolid) {
    const TRect clip = GetClipRect();
    const int last = std::min(bottom->Y, clip.Bottom);
    for (int y = std::max(top->Y, clip.Top); y < last; ++y) {
      const std::vector<int> at = Crossings(points, y);
      for (std::size_t i = 0; i + 1 < at.size(); i += 2)
        Fill({at[i], y, at[i + 1], y + 1}, GetBrush().GetColor());
    }
  }
  for (std::size_t i = 0; i < points.size(); ++i)
    DrawLine(points[i], points[(i + 1) % points.size()]);
}

void TBitmapCanvas::DrawFocusRect(const TRect& rect) {
  const TRect clip = GetClipRect();
  auto invert = [&](int x, int y) {
    if (clip.Contains({x, y}) && ((x + y) & 1) == 0) fBitmap.ScanLine(y)[x] ^= 0xFFFFFF;
  };
  for (int x = rect.Left; x < rect.Right; ++x) {
    invert(x, rect.Top);
    if (rect.Height() > 1) invert(x, rect.Bottom - 1);
  }
  for (int y = rect.Top + 1; y < rect.Bottom - 1; ++y) {
    invert(rect.Left, y);
    if (rect.Width() > 1) invert(rect.Right - 1, y);
  }
}

void TBitmapCanvas::GradientFill(const TRect& rect, TColor from, TColor to, bool vertical) {
  const int length = vertical ? rect.Height() : rect.Width();
  const TColor a = ColorToRGB(from);
  const TColor b = ColorToRGB(to);
  const TRect seen = rect.Intersected(GetClipRect());
  const int start = vertical ? seen.Top - rect.Top : seen.Left - rect.Left;
  const int end = vertical ? seen.Bottom - rect.Top : seen.Right - rect.Left;
  if (seen.IsEmpty()) return;
  for (int i = start; i < end; ++i) {
    auto mix = [&](int first, int last) {
      return length > 1 ? first + MulDiv(last - first, i, length - 1) : first;
    };
    const TColor color =
        RgbColor(mix(RedOf(a), RedOf(b)), mix(GreenOf(a), GreenOf(b)), mix(BlueOf(a), BlueOf(b)));
    if (vertical)
      Fill({rect.Left, rect.Top + i, rect.Right, rect.Top + i + 1}, color);
    else
      Fill({rect.Left + i, rect.Top, rect.Left + i + 1, rect.Bottom}, color);
  }
}

void TBitmapCanvas::PlotPen(int x, int y, TColor color, int step) {
  if (GetPen().GetStyle() == psDot && (step & 1) != 0) return;
  Fill(PenRect(x, y, GetPen().GetWidth()), color);
}

void TBitmapCanvas::DrawLine(TPoint from, TPoint to) {
  if (GetPen().GetStyle() == psClear) return;
  const TColor color = ColorToRGB(GetPen().GetColor());
  from = Clamped(from);
  to = Clamped(to);
  const long long dx = static_cast<long long>(to.X) - from.X;
  const long long dy = static_cast<long long>(to.Y) - from.Y;
  const long long steps = std::max(std::abs(dx), std::abs(dy));
  // Only what can be seen is walked: coordinates may be far outside.
  const TRect seen = GetClipRect().Inflated(GetPen().GetWidth(), GetPen().GetWidth());
  long long first = 0;
  long long last = steps;
  auto narrow = [&](long long start, long long delta, long long low, long long high) {
    if (delta == 0) return;
    const long long a = ((delta > 0 ? low : high) - start) * steps / delta;
    const long long b = ((delta > 0 ? high : low) - start) * steps / delta;
    first = std::max(first, a - 1);
    last = std::min(last, b + 2);
  };
  narrow(from.X, dx, seen.Left, seen.Right);
  narrow(from.Y, dy, seen.Top, seen.Bottom);
  auto along = [steps](long long delta, long long i) {
    const long long product = 2 * delta * i + (delta >= 0 ? steps : -steps);
    return static_cast<int>(product / (2 * steps));
  };
  for (long long i = first; i < last; ++i)
    PlotPen(from.X + along(dx, i), from.Y + along(dy, i), color, static_cast<int>(i & 1));
}

void TBitmapCanvas::Draw(int x, int y, const TBitmap& bitmap, int opacity) {
  BlendBitmap(fBitmap, GetClipRect(), {x, y}, bitmap, opacity);
}

void TBitmapCanvas::StretchDraw(const TRect& dest, const TBitmap& bitmap, int opacity) {
  const TRect part = dest.Intersected(GetClipRect());
  if (part.IsEmpty() || bitmap.IsEmpty()) return;
  const TRect window = part.Moved(-dest.Left, -dest.Top);
  const TBitmap stretched = ResampleBitmap(bitmap, dest.Size(), window, TStretchFilter::Smooth);
  BlendBitmap(fBitmap, part, part.TopLeft(), stretched, opacity);
}

void TBitmapCanvas::CopyRect(const TRect& dest, const TBitmap& source, const TRect& sourceRect) {
  CopyPixels(fBitmap, GetClipRect(), dest, source, sourceRect);
}

void TBitmapCanvas::TextOut(int x, int y, TStringView text) {
  const TRect rect({x, y}, TextExtent(text));
  FillRect(rect);
  GraphicsSystem().DrawTextOnBitmap(fBitmap, GetClipRect(), GetFont(), rect, text,
                                    {tfSingleLine, tfNoPrefix, tfNoClip});
}

void TBitmapCanvas::DrawText(const TRect& rect, TStringView text, TTextFormat format) {
  // The size is only asked for where something lies behind the text.
  if (GetBrush().GetStyle() == bsSolid)
    FillRect(AlignText(rect, MeasureText(rect, text, format).Size(), format).Intersected(rect));
  const TRect clip = format.Contains(tfNoClip) ? GetClipRect() : rect.Intersected(GetClipRect());
  GraphicsSystem().DrawTextOnBitmap(fBitmap, clip, GetFont(), rect, text, format);
}

TRect TBitmapCanvas::GetClipRect() const {
  // The bitmap may have shrunk since a clip was set.
  return fClips.empty() ? fBitmap.GetRect() : fClips.back().Intersected(fBitmap.GetRect());
}

void TBitmapCanvas::PushClip(const TRect& rect) {
  fClips.push_back(rect.Intersected(GetClipRect()));
}

void TBitmapCanvas::PopClip() {
  if (!fClips.empty()) fClips.pop_back();
}

void DrawPlainCheckBox(TBitmap& bitmap, const TRect& rect, TCheckBoxImage image, bool enabled,
                       int pixelsPerInch) {
  const int side = std::min({MulDiv(13, pixelsPerInch, 96), rect.Width(), rect.Height()});
  if (side < 5) return;
  const TPoint corner{rect.Left + (rect.Width() - side) / 2, rect.Top + (rect.Height() - side) / 2};
  const TRect box(corner, TSize{side, side});
  const TColor ink = enabled ? clWindowText : clGrayText;
  TBitmapCanvas canvas(bitmap, pixelsPerInch);
  canvas.GetPen().SetColor(ink);
  canvas.GetBrush().SetColor(enabled ? clWindow : clBtnFace);
  canvas.Rectangle(box);
  if (image == TCheckBoxImage::Grayed) {
    canvas.GetBrush().SetColor(ink);
    canvas.FillRect(box.Inflated(-side / 4, -side / 4));
  } else if (image == TCheckBoxImage::Checked) {
    canvas.GetPen().SetWidth(std::max(2, side / 6));
    canvas.MoveTo(box.Left + side / 4, box.Top + side / 2);
    canvas.LineTo(box.Left + side * 2 / 5, box.Top + side * 2 / 3);
    canvas.LineTo(box.Left + side * 3 / 4, box.Top + side / 4);
  }
}

}  // namespace oak
