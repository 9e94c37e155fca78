#include "oak/platform/portable/IconCanvas.h"

#include <algorithm>
#include <cmath>

namespace oak {
namespace {

constexpr double Grid = 16;
constexpr double Pi = 3.14159265358979323846;

double SignedArea(const std::vector<TIconPoint>& points) {
  double area = 0;
  for (std::size_t i = 0; i < points.size(); ++i) {
    const TIconPoint& a = points[i];
    const TIconPoint& b = points[(i + 1) % points.size()];
    area += a.X * b.Y - b.X * a.Y;
  }
  return area;
}

void AddArc(std::vector<TIconPoint>& points, TIconPoint centre, double radiusX, double radiusY,
            double from, double to) {
  constexpr int StepsOfCircle = 64;
  const int steps = std::max(2, static_cast<int>(StepsOfCircle * (to - from) / (2 * Pi)));
  for (int i = 0; i <= steps; ++i) {
    const double angle = from + (to - from) * i / steps;
    points.push_back({centre.X + radiusX * std::cos(angle), centre.Y + radiusY * std::sin(angle)});
  }
}

std::uint32_t Channel(std::uint32_t color, int shift) { return color >> shift & 0xFF; }

/// The colour of a gradient; `part` lies in 0..1.
std::uint32_t Mix(TIconPaint paint, double part) {
  std::uint32_t result = 0;
  for (int shift = 0; shift <= 24; shift += 8) {
    const double value =
        Channel(paint.Top, shift) * (1 - part) + Channel(paint.Bottom, shift) * part;
    result |= static_cast<std::uint32_t>(std::lround(value)) << shift;
  }
  return result;
}

}  // namespace

// --- shapes ------------------------------------------------------------------------
TIconShape& TIconShape::Add(std::vector<TIconPoint> points, bool hole) {
  // One direction for all: overlapping parts of a shape add up instead of cutting holes.
  if ((SignedArea(points) < 0) != hole) std::reverse(points.begin(), points.end());
  fOutlines.push_back(std::move(points));
  return *this;
}

TIconShape& TIconShape::AsHole() {
  std::vector<TIconPoint> last = std::move(fOutlines.back());
  fOutlines.pop_back();
  return Add(std::move(last), true);
}

TIconShape& TIconShape::Rect(double left, double top, double right, double bottom, double radius) {
  if (radius <= 0) return Polygon({{left, top}, {right, top}, {right, bottom}, {left, bottom}});
  const double r = std::min({radius, (right - left) / 2, (bottom - top) / 2});
  std::vector<TIconPoint> points;
  AddArc(points, {right - r, bottom - r}, r, r, 0, Pi / 2);
  AddArc(points, {left + r, bottom - r}, r, r, Pi / 2, Pi);
  AddArc(points, {left + r, top + r}, r, r, Pi, Pi * 3 / 2);
  AddArc(points, {right - r, top + r}, r, r, Pi * 3 / 2, Pi * 2);
  return Polygon(std::move(points));
}

TIconShape& TIconShape::Ellipse(double x, double y, double radiusX, double radiusY) {
  std::vector<TIconPoint> points;
  AddArc(points, {x, y}, radiusX, radiusY, 0, Pi * 2);
  return Polygon(std::move(points));
}

TIconShape& TIconShape::Line(const std::vector<TIconPoint>& points, double width) {
  for (const TIconPoint& point : points) Circle(point.X, point.Y, width / 2);
  for (std::size_t i = 1; i < points.size(); ++i) {
    const TIconPoint a = points[i - 1], b = points[i];
    const double length = std::hypot(b.X - a.X, b.Y - a.Y);
    if (length == 0) continue;
    const double dx = (b.Y - a.Y) / length * width / 2, dy = (a.X - b.X) / length * width / 2;
    Polygon(
        {{a.X + dx, a.Y + dy}, {b.X + dx, b.Y + dy}, {b.X - dx, b.Y - dy}, {a.X - dx, a.Y - dy}});
  }
  return *this;
}

// --- filling -------------------------------------------------------------------------
TIconCanvas::TIconCanvas(int side)
    : fSide(side),
      fPixels(static_cast<std::size_t>(side) * static_cast<std::size_t>(side)),
      fCoverage(static_cast<std::size_t>(side)) {
  SetPlace(0, 0, 1);
}

void TIconCanvas::SetPlace(double x, double y, double scale) {
  fOriginX = x * fSide / Grid;
  fOriginY = y * fSide / Grid;
  fScale = scale * fSide / Grid;
}

double TIconCanvas::Hair() const { return std::max(1, fSide / 40) / fScale; }

std::vector<TIconCanvas::TEdge> TIconCanvas::EdgesOf(const TIconShape& shape) const {
  std::vector<TEdge> edges;
  for (const auto& points : shape.Outlines()) {
    for (std::size_t i = 0; i < points.size(); ++i) {
      const TIconPoint& from = points[i];
      const TIconPoint& to = points[(i + 1) % points.size()];
      const double y0 = fOriginY + from.Y * fScale, y1 = fOriginY + to.Y * fScale;
      const double x0 = fOriginX + from.X * fScale, x1 = fOriginX + to.X * fScale;
      if (y0 == y1) continue;
      const double slope = (x1 - x0) / (y1 - y0);
      edges.push_back(y0 < y1 ? TEdge{x0, y0, y1, slope, 1} : TEdge{x1, y1, y0, slope, -1});
    }
  }
  std::sort(edges.begin(), edges.end(), [](const TEdge& a, const TEdge& b) { return a.Y0 < b.Y0; });
  return edges;
}

void TIconCanvas::AddSpan(double from, double to, double weight) {
  from = std::max(from, 0.0);
  to = std::min(to, static_cast<double>(fSide));
  for (int x = static_cast<int>(from); x < to; ++x)
    fCoverage[static_cast<std::size_t>(x)] +=
        weight * (std::min(to, x + 1.0) - std::max(from, static_cast<double>(x)));
}

void TIconCanvas::Blend(std::uint32_t& pixel, std::uint32_t color, double coverage) const {
  const double alpha = std::min(coverage, 1.0) * Channel(color, 24) / 255;
  std::uint32_t result = 0;
  for (int shift = 0; shift <= 24; shift += 8) {
    const double over = shift == 24 ? 255 : Channel(color, shift);
    const double value = over * alpha + Channel(pixel, shift) * (1 - alpha);
    result |= static_cast<std::uint32_t>(std::lround(value)) << shift;
  }
  pixel = result;
}

void TIconCanvas::Fill(const TIconShape& shape, TIconPaint paint) {
  const std::vector<TEdge> edges = EdgesOf(shape);
  if (edges.empty()) return;
  double end = edges.front().Y1;
  for (const TEdge& edge : edges) end = std::max(end, edge.Y1);
  const double start = edges.front().Y0;
  const int first = std::max(0, static_cast<int>(std::floor(start)));
  const int last = std::min(fSide, static_cast<int>(std::ceil(end)));
  // Across a pixel the coverage is exact, down it is taken at so many lines.
  const int lines = fSide > 64 ? 4 : 16;

  std::vector<TCrossing> crossings;
  for (int y = first; y < last; ++y) {
    std::fill(fCoverage.begin(), fCoverage.end(), 0.0);
    for (int line = 0; line < lines; ++line) {
      const double at = y + (line + 0.5) / lines;
      crossings.clear();
      for (const TEdge& edge : edges) {
        if (edge.Y0 > at) break;
        if (at < edge.Y1)
          crossings.push_back({edge.X + (at - edge.Y0) * edge.Slope, edge.Direction});
      }
      std::sort(crossings.begin(), crossings.end(),
                [](const TCrossing& a, const TCrossing& b) { return a.X < b.X; });
      int winding = 0;
      for (std::size_t i = 0; i + 1 < crossings.size(); ++i) {
        winding += crossings[i].Direction;
        if (winding != 0) AddSpan(crossings[i].X, crossings[i + 1].X, 1.0 / lines);
      }
    }
    const double part = end > start ? std::clamp((y + 0.5 - start) / (end - start), 0.0, 1.0) : 0.0;
    const std::uint32_t color = Mix(paint, part);
    std::uint32_t* row =
        fPixels.data() + static_cast<std::size_t>(y) * static_cast<std::size_t>(fSide);
    for (std::size_t x = 0; x < fCoverage.size(); ++x)
      if (fCoverage[x] > 0) Blend(row[x], color, fCoverage[x]);
  }
}

void TIconCanvas::Rect(double left, double top, double right, double bottom, TIconPaint paint,
                       double radius) {
  Fill(TIconShape().Rect(left, top, right, bottom, radius), paint);
}

void TIconCanvas::Polygon(std::vector<TIconPoint> points, TIconPaint paint) {
  Fill(TIconShape().Polygon(std::move(points)), paint);
}

void TIconCanvas::Circle(double x, double y, double radius, TIconPaint paint) {
  Fill(TIconShape().Circle(x, y, radius), paint);
}

void TIconCanvas::Line(const std::vector<TIconPoint>& points, double width, TIconPaint paint) {
  Fill(TIconShape().Line(points, width), paint);
}

}  // namespace oak
