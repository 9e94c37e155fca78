// Drawing of icons: shapes with soft edges on a square of pixels.
#pragma once

#include <cstdint>
#include <initializer_list>
#include <vector>

namespace oak {

/// A point on a grid of 16 by 16 units, whatever the size of the icon in pixels.
struct TIconPoint {
  double X = 0;
  double Y = 0;
};

/// Outlines that are filled together. All run the same way round but for the holes.
class TIconShape {
 public:
  TIconShape& Polygon(std::vector<TIconPoint> points) { return Add(std::move(points), false); }
  /// With round corners.
  TIconShape& Rect(double left, double top, double right, double bottom, double radius = 0);
  TIconShape& Ellipse(double x, double y, double radiusX, double radiusY);
  TIconShape& Circle(double x, double y, double radius) { return Ellipse(x, y, radius, radius); }
  /// A line through the points, with round ends and corners.
  TIconShape& Line(const std::vector<TIconPoint>& points, double width);
  /// The outline that was added last becomes a hole.
  TIconShape& AsHole();

  const std::vector<std::vector<TIconPoint>>& Outlines() const { return fOutlines; }

 private:
  TIconShape& Add(std::vector<TIconPoint> points, bool hole);

  std::vector<std::vector<TIconPoint>> fOutlines;
};

/// 0xAARRGGBB, not multiplied by alpha; from the upper to the lower end of what is filled.
struct TIconPaint {
  std::uint32_t Top;
  std::uint32_t Bottom;
  constexpr TIconPaint(std::uint32_t color) : Top(color), Bottom(color) {}
  constexpr TIconPaint(std::uint32_t top, std::uint32_t bottom) : Top(top), Bottom(bottom) {}
};

/// The icon in work. One thread at a time.
class TIconCanvas {
 public:
  /// Transparent, `side` by `side` pixels.
  explicit TIconCanvas(int side);

  void Fill(const TIconShape& shape, TIconPaint paint);
  void Rect(double left, double top, double right, double bottom, TIconPaint paint,
            double radius = 0);
  void Polygon(std::vector<TIconPoint> points, TIconPaint paint);
  void Circle(double x, double y, double radius, TIconPaint paint);
  void Line(const std::vector<TIconPoint>& points, double width, TIconPaint paint);

  /// What is drawn next lies in a part of the grid: (x, y) and everything `scale` times as large.
  void SetPlace(double x, double y, double scale);
  /// Width in units of a line that is one pixel wide on small icons and grows slowly.
  double Hair() const;
  /// Whether there is room for what would be dirt on a small icon.
  bool HasDetail() const { return fSide >= 32; }

  /// Rows from the top, 0xAARRGGBB, colours multiplied by alpha.
  std::vector<std::uint32_t> Take() { return std::move(fPixels); }

 private:
  struct TEdge {
    double X;  ///< At Y0.
    double Y0;
    double Y1;
    double Slope;
    int Direction;
  };
  struct TCrossing {
    double X;
    int Direction;
  };

  std::vector<TEdge> EdgesOf(const TIconShape& shape) const;
  void AddSpan(double from, double to, double weight);
  void Blend(std::uint32_t& pixel, std::uint32_t color, double coverage) const;

  int fSide;
  double fOriginX = 0;
  double fOriginY = 0;
  double fScale = 1;
  std::vector<std::uint32_t> fPixels;
  std::vector<double> fCoverage;  ///< Of the row in work.
};

}  // namespace oak
