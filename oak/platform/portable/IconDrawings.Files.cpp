// Icons of files by type.
#include <cmath>

#include "oak/platform/portable/IconCanvas.h"
#include "oak/platform/portable/IconDrawings.h"

namespace oak {
namespace {

constexpr std::uint32_t PageEdge = 0xFF93A3B5;
constexpr TIconPaint PagePaper{0xFFFFFFFF, 0xFFEEF2F7};
constexpr std::uint32_t Ink = 0xFF5B7FA6;
constexpr std::uint32_t PaleInk = 0xFFA9B8C8;

/// Lines of writing on a page, from one grid line to another.
void DrawWriting(TIconCanvas& canvas, double from, double to, std::uint32_t ink) {
  bool isLast = false;
  for (double y = from; y < to && !isLast; y += 2) {
    isLast = y + 2 >= to;
    canvas.Rect(5, y, isLast ? 9 : 11, y + 1, ink);
  }
}

}  // namespace

void DrawPage(TIconCanvas& canvas) {
  const double hair = canvas.Hair();
  canvas.Polygon({{3, 1}, {10, 1}, {13, 4}, {13, 15}, {3, 15}}, PageEdge);
  canvas.Polygon({{3 + hair, 1 + hair},
                  {10 - hair / 2, 1 + hair},
                  {13 - hair, 4 + hair / 2},
                  {13 - hair, 15 - hair},
                  {3 + hair, 15 - hair}},
                 PagePaper);
  canvas.Polygon({{10, 1}, {13, 4}, {10, 4}}, TIconPaint(0xFFD3DCE6, 0xFFB4C1D0));
}

void DrawText(TIconCanvas& canvas) {
  DrawPage(canvas);
  DrawWriting(canvas, 5, 13, PaleInk);
}

void DrawDocument(TIconCanvas& canvas) {
  DrawPage(canvas);
  canvas.Rect(5, 4, 9, 6, TIconPaint(0xFF3E8FE0, 0xFF2B72C4));
  DrawWriting(canvas, 7, 13, Ink);
}

void DrawImage(TIconCanvas& canvas) {
  const double hair = canvas.Hair();
  canvas.Rect(1, 2, 15, 14, PageEdge, 0.6);
  canvas.Rect(1 + hair, 2 + hair, 15 - hair, 14 - hair, 0xFFFFFFFF);
  canvas.Rect(3, 4, 13, 12, TIconPaint(0xFF6FB9F2, 0xFFD3ECFB));
  canvas.Circle(10.5, 6.5, 1.4, TIconPaint(0xFFFFE070, 0xFFF7BE2E));
  canvas.Polygon({{7, 12}, {10.5, 8}, {13, 10.7}, {13, 12}}, TIconPaint(0xFF6FAE5B, 0xFF4F9142));
  canvas.Polygon({{3, 10.6}, {5.6, 7.4}, {9.8, 12}, {3, 12}}, TIconPaint(0xFF4C9A4A, 0xFF357A38));
}

void DrawAudio(TIconCanvas& canvas) {
  DrawPage(canvas);
  constexpr TIconPaint note(0xFFB04FC8, 0xFF8A2FA6);
  canvas.Fill(TIconShape()
                  .Ellipse(6.2, 12, 1.6, 1.2)
                  .Ellipse(10.2, 11, 1.6, 1.2)
                  .Rect(7, 6, 7.8, 12)
                  .Rect(11, 5, 11.8, 11)
                  .Polygon({{7, 6}, {11.8, 5}, {11.8, 6.8}, {7, 7.8}}),
              note);
}

void DrawVideo(TIconCanvas& canvas) {
  canvas.Rect(1, 3, 15, 13, TIconPaint(0xFF53606F, 0xFF39434F), 0.8);
  for (int hole = 0; hole < 4; ++hole) {
    canvas.Rect(2, 4 + 2 * hole, 3, 5 + 2 * hole, 0xFFDDE5EE);
    canvas.Rect(13, 4 + 2 * hole, 14, 5 + 2 * hole, 0xFFDDE5EE);
  }
  canvas.Rect(4, 4, 12, 12, TIconPaint(0xFF5BB4EE, 0xFF2C7FC9));
  canvas.Polygon({{6.5, 5.5}, {10.7, 8}, {6.5, 10.5}}, 0xFFFFFFFF);
}

void DrawArchive(TIconCanvas& canvas) {
  canvas.Rect(1, 3, 15, 14, TIconPaint(0xFFDDA75D, 0xFFC0853A), 1);
  canvas.Rect(1, 3, 15, 6, TIconPaint(0xFFEDC384, 0xFFDDA75D), 1);
  if (canvas.HasDetail()) canvas.Rect(1, 5.75, 15, 6, 0x60805020);
  // The zip, tooth by tooth, and its slider.
  canvas.Rect(7, 3, 9, 14, 0xFFF3E7D3);
  for (int y = 3; y < 9; ++y) {
    canvas.Rect(y % 2 ? 7 : 8, y, y % 2 ? 8 : 9, y + 1, 0xFF7C6547);
  }
  canvas.Rect(6, 9, 10, 13, TIconPaint(0xFFE7ECF2, 0xFFA9B5C2), 0.7);
  canvas.Rect(7, 11, 9, 12, 0xFF66727F);
}

void DrawProgram(TIconCanvas& canvas) {
  const double hair = canvas.Hair();
  canvas.Rect(1, 2, 15, 14, 0xFF6C7B8C, 1);
  canvas.Rect(1 + hair, 4, 15 - hair, 14 - hair, TIconPaint(0xFFFFFFFF, 0xFFE6ECF3));
  canvas.Rect(1, 2, 15, 5, TIconPaint(0xFF4C9BE8, 0xFF2F78C8), 1);
  canvas.Rect(1, 4, 15, 5, 0xFF2F78C8);
  canvas.Rect(12, 3, 13, 4, 0xFFFFFFFF);
  canvas.Rect(10, 3, 11, 4, 0xC0FFFFFF);
  canvas.Line({{4, 7.5}, {6, 9.5}, {4, 11.5}}, 1.1, 0xFF3F9B57);
  canvas.Rect(7, 11, 12, 12, 0xFF8FA0B2);
}

void DrawGear(TIconCanvas& canvas, double x, double y, double radius) {
  TIconShape gear;
  gear.Circle(x, y, radius * 0.76);
  constexpr int Teeth = 8;
  for (int tooth = 0; tooth < Teeth; ++tooth) {
    const double angle = tooth * 3.14159265358979 * 2 / Teeth;
    const double c = std::cos(angle), s = std::sin(angle);
    const auto at = [&](double out, double side) {
      return TIconPoint{x + c * out - s * side, y + s * out + c * side};
    };
    const double half = radius * 0.2;
    gear.Polygon({at(radius * 0.6, half * 1.25), at(radius, half), at(radius, -half),
                  at(radius * 0.6, -half * 1.25)});
  }
  gear.Circle(x, y, radius * 0.34).AsHole();
  canvas.Fill(gear, TIconPaint(0xFF8797A8, 0xFF56657A));
}

void DrawSystemFile(TIconCanvas& canvas) {
  DrawPage(canvas);
  DrawGear(canvas, 8, 9, 3.6);
}

void DrawMail(TIconCanvas& canvas) {
  const double hair = canvas.Hair();
  canvas.Rect(1, 3, 15, 13, PageEdge, 0.8);
  canvas.Rect(1 + hair, 3 + hair, 15 - hair, 13 - hair, TIconPaint(0xFFFFFFFF, 0xFFE3EAF2));
  const double line = canvas.HasDetail() ? 0.7 : 1;
  canvas.Line({{1.6, 12.4}, {6, 8}}, line, 0xFFB9C6D4);
  canvas.Line({{14.4, 12.4}, {10, 8}}, line, 0xFFB9C6D4);
  canvas.Line({{1.6, 3.8}, {8, 9.3}, {14.4, 3.8}}, line, 0xFF4A8FD6);
}

void DrawContact(TIconCanvas& canvas) {
  const double hair = canvas.Hair();
  canvas.Rect(1, 3, 15, 13, PageEdge, 0.8);
  canvas.Rect(1 + hair, 3 + hair, 15 - hair, 13 - hair, TIconPaint(0xFFFFFFFF, 0xFFE9EFF6));
  constexpr TIconPaint person(0xFF58A6EA, 0xFF2F78C8);
  canvas.Circle(5, 6.3, 1.5, person);
  canvas.Rect(2.8, 8.2, 7.2, 11.2, person, 1.6);
  for (int y = 6; y <= 10; y += 2) canvas.Rect(9, y, y == 10 ? 11 : 13, y + 1, PaleInk);
}

void DrawCalendar(TIconCanvas& canvas) {
  const double hair = canvas.Hair();
  canvas.Rect(2, 2, 14, 15, PageEdge, 1);
  canvas.Rect(2 + hair, 5, 14 - hair, 15 - hair, PagePaper);
  canvas.Rect(2, 2, 14, 6, TIconPaint(0xFFEA6A5A, 0xFFCC4336), 1);
  canvas.Rect(2, 5, 14, 6, 0xFFCC4336);
  canvas.Rect(5, 1, 6, 4, 0xFF5C6875);
  canvas.Rect(10, 1, 11, 4, 0xFF5C6875);
  for (int y = 8; y <= 12; y += 2)
    for (int x = 4; x <= 11; x += 2)
      canvas.Rect(x, y, x + 1, y + 1, x == 8 && y == 10 ? 0xFFCC4336 : PaleInk);
}

void DrawLink(TIconCanvas& canvas) {
  DrawPage(canvas);
  canvas.Line({{6, 11}, {10, 7}}, 1.3, Ink);
  canvas.Polygon({{10.9, 6.1}, {10.9, 10}, {7, 6.1}}, Ink);
}

}  // namespace oak
