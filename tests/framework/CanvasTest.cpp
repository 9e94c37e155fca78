#include "oak/framework/Canvas.h"

#include <gtest/gtest.h>

#include "oak/base/Exceptions.h"
#include "oak/framework/Bitmap.h"
#include "oak/framework/BitmapCanvas.h"
#include "oak/framework/GraphicsSystem.h"
#include "oak/framework/ImageList.h"
#include "oak/framework/headless/CanvasHeadless.h"
#include "oak/framework/headless/TextLayout.h"

namespace oak::tests {
namespace {

/// The bitmap as rows of characters: '.' for black, '#' for white, '+' for anything else.
std::vector<std::string> RowsOf(const TBitmap& bitmap) {
  std::vector<std::string> rows;
  for (int y = 0; y < bitmap.GetHeight(); ++y) {
    rows.emplace_back();
    for (int x = 0; x < bitmap.GetWidth(); ++x) {
      const TColor color = bitmap.GetPixel(x, y);
      rows.back() += color == clBlack ? '.' : color == clWhite ? '#' : '+';
    }
  }
  return rows;
}

/// Keeps the graphics system and the style's colours for the span of a test.
class TScopedGraphics {
 public:
  explicit TScopedGraphics(TGraphicsSystem& system) : fFormer(SetGraphicsSystem(&system)) {}
  ~TScopedGraphics() {
    SetGraphicsSystem(fFormer);
    SetSystemColorProvider(nullptr);
  }

 private:
  TGraphicsSystem* fFormer;
};

TEST(Canvas, SystemColoursAreResolvedWhenDrawn) {
  const TScopedGraphics scope(HeadlessGraphicsSystem());
  EXPECT_EQ(ColorToRGB(clWindow), clWhite);
  EXPECT_EQ(ColorToRGB(RgbColor(1, 2, 3)), 0x030201u);
  EXPECT_EQ(ColorToRGB(clNone), clBlack);
  EXPECT_EQ(ColorToRGB(SystemColor(200)), clBlack) << "an index that no system has";
  TBitmap bitmap(1, 1);
  bitmap.GetCanvas().GetBrush().SetColor(clWindow);
  SetSystemColorProvider([](int index) { return index == 5 ? 0xFF202020u : 0u; });
  bitmap.GetCanvas().FillRect({0, 0, 1, 1});
  EXPECT_EQ(bitmap.GetPixel(0, 0), 0x202020u);
  EXPECT_EQ(BlendColors(clBlack, clWhite, 50), RgbColor(128, 128, 128));
  EXPECT_EQ(BlendColors(RgbColor(200, 0, 9), RgbColor(100, 50, 9), 100), RgbColor(100, 50, 9));
}

TEST(Canvas, FontsKeepTheirPointsOverDensities) {
  TFont font;
  EXPECT_EQ(font.GetSize(), 9);
  int changes = 0;
  font.OnChange = [&](TObject*) { ++changes; };
  font.ChangeScale(192);
  EXPECT_EQ(font.GetHeight(), -24);
  EXPECT_EQ(font.GetSize(), 9);
  font.ChangeScale(0);
  font.SetHeight(-24);
  EXPECT_EQ(changes, 1) << "no change, no event";
  font.SetSize(12);
  EXPECT_EQ(font.GetHeight(), -32);
  TFont other;
  other.OnChange = [&](TObject*) { changes += 10; };
  other.Assign(&font);
  EXPECT_EQ(other, font);
  EXPECT_EQ(changes, 12) << "the event is the copy's own";
  other.Assign(&font);
  EXPECT_EQ(changes, 12);
  TPen pen;
  EXPECT_THROW(font.Assign(&pen), EConvertError);
  TBrush brush;
  brush.SetStyle(bsClear);
  brush.SetColor(clWhite);
  EXPECT_EQ(brush.GetStyle(), bsSolid) << "who sets a colour wants to see it";
}

TEST(Canvas, FiguresOnBitmaps) {
  TBitmap bitmap(8, 6);
  TCanvas& canvas = bitmap.GetCanvas();
  canvas.GetPen().SetColor(clWhite);
  canvas.GetBrush().SetColor(clGray);
  canvas.Rectangle({1, 1, 7, 5});
  EXPECT_EQ(RowsOf(bitmap), (std::vector<std::string>{"........", ".######.", ".#++++#.",
                                                      ".#++++#.", ".######.", "........"}));
  bitmap.Fill(clBlack);
  canvas.GetPen().SetStyle(psClear);
  canvas.Rectangle({1, 1, 7, 3});
  EXPECT_EQ(RowsOf(bitmap)[1], ".++++++.") << "without a pen the brush fills all";
  bitmap.Fill(clBlack);
  canvas.GetPen().SetStyle(psDot);
  canvas.GetBrush().SetStyle(bsClear);
  canvas.Rectangle({0, 0, 8, 6});
  EXPECT_EQ(RowsOf(bitmap)[0], "#.#.#.##");
  EXPECT_EQ(RowsOf(bitmap)[2], ".......#");
  EXPECT_EQ(RowsOf(bitmap)[3], "#.......") << "the sides are drawn around, each from a dot";
  bitmap.Fill(clBlack);
  canvas.GetBrush().SetColor(clWhite);
  canvas.FrameRect({2, 2, 3, 3});
  canvas.FrameRect({5, 5, 5, 9});
  EXPECT_EQ(RowsOf(bitmap)[2], "..#.....");
  EXPECT_EQ(RowsOf(bitmap)[5], "........");
}

TEST(Canvas, LinesAreClippedNotWalked) {
  TBitmap bitmap(5, 5);
  TCanvas& canvas = bitmap.GetCanvas();
  canvas.GetPen().SetColor(clWhite);
  canvas.MoveTo(-1000000, -1000000);
  canvas.LineTo(1000000, 1000000);
  for (int i = 0; i < 5; ++i) EXPECT_EQ(bitmap.GetPixel(i, i), clWhite);
  canvas.MoveTo(INT32_MIN, 3);
  canvas.LineTo(INT32_MAX, 3);
  EXPECT_EQ(RowsOf(bitmap)[3], "#####");
  bitmap.Fill(clBlack);
  canvas.MoveTo(1, 1);
  canvas.LineTo(1, 1);
  canvas.MoveTo(0, 2);
  canvas.LineTo(3, 2);
  EXPECT_EQ(RowsOf(bitmap), (std::vector<std::string>{".....", ".....", "###..", ".....", "....."}))
      << "the last point is not drawn";
  bitmap.Fill(clBlack);
  canvas.GetPen().SetWidth(3);
  canvas.MoveTo(2, 2);
  canvas.LineTo(3, 2);
  EXPECT_EQ(RowsOf(bitmap),
            (std::vector<std::string>{".....", ".###.", ".###.", ".###.", "....."}));
}

TEST(Canvas, PolygonsAreFilledEvenOdd) {
  TBitmap bitmap(9, 9);
  TCanvas& canvas = bitmap.GetCanvas();
  canvas.GetPen().SetStyle(psClear);
  canvas.GetBrush().SetColor(clWhite);
  // A square with a square hole in it, as one figure.
  const TPoint ring[] = {{1, 1}, {8, 1}, {8, 8}, {1, 8}, {1, 1},
                         {3, 3}, {3, 6}, {6, 6}, {6, 3}, {3, 3}};
  canvas.Polygon(ring);
  for (int y = 0; y < 9; ++y)
    for (int x = 0; x < 9; ++x) {
      const bool isIn = TRect(1, 1, 8, 8).Contains({x, y}) && !TRect(3, 3, 6, 6).Contains({x, y});
      ASSERT_EQ(bitmap.GetPixel(x, y), isIn ? clWhite : clBlack) << x << "," << y;
    }
  // A triangle: its area is that of the pixels, within its outline.
  TBitmap large(200, 200);
  large.GetCanvas().GetPen().SetStyle(psClear);
  large.GetCanvas().GetBrush().SetColor(clWhite);
  const TPoint triangle[] = {{10, 10}, {190, 60}, {40, 180}};
  large.GetCanvas().Polygon(triangle);
  int area = 0;
  for (int y = 0; y < 200; ++y)
    for (int x = 0; x < 200; ++x) area += large.GetPixel(x, y) == clWhite;
  EXPECT_NEAR(area, (180 * 170 - 30 * 50) / 2, 200);
}

TEST(Canvas, ClipsNestAndEndInOrder) {
  TBitmap bitmap(6, 1);
  TCanvas& canvas = bitmap.GetCanvas();
  canvas.GetBrush().SetColor(clWhite);
  {
    const TClipScope outer(canvas, {1, 0, 5, 1});
    {
      const TClipScope inner(canvas, {0, 0, 3, 9});
      EXPECT_EQ(canvas.GetClipRect(), (TRect{1, 0, 3, 1}));
      canvas.FillRect({0, 0, 6, 1});
      EXPECT_EQ(RowsOf(bitmap)[0], ".##...");
      bitmap.SetSize(2, 1);
      EXPECT_EQ(canvas.GetClipRect(), (TRect{1, 0, 2, 1})) << "a shrunk bitmap is not overrun";
      bitmap.SetSize(6, 1);
    }
    canvas.FillRect({0, 0, 6, 1});
    EXPECT_EQ(RowsOf(bitmap)[0], ".####.");
  }
  canvas.PopClip();
  EXPECT_EQ(canvas.GetClipRect(), bitmap.GetRect());
}

TEST(Canvas, GradientsAndFocus) {
  TBitmap bitmap(11, 4);
  TCanvas& canvas = bitmap.GetCanvas();
  canvas.GradientFill(bitmap.GetRect(), clBlack, RgbColor(100, 200, 50), false);
  EXPECT_EQ(bitmap.GetPixel(0, 2), clBlack);
  EXPECT_EQ(bitmap.GetPixel(5, 0), RgbColor(50, 100, 25));
  EXPECT_EQ(bitmap.GetPixel(10, 3), RgbColor(100, 200, 50));
  TBitmap before;
  before.Assign(&bitmap);
  canvas.DrawFocusRect({1, 1, 9, 9});
  EXPECT_FALSE(bitmap.SameContents(before));
  canvas.DrawFocusRect({1, 1, 9, 9});
  EXPECT_TRUE(bitmap.SameContents(before)) << "drawn twice it is gone";
}

TEST(TextLayout, CellsOfCharacters) {
  const struct {
    TStringView Text;
    int Cells;
  } cases[] = {
      {u"", 0},
      {u"abc", 3},
      {u"日本語", 6},
      {u"e\u0301", 1},
      {u"\U0001F600", 2},
      {u"ä\u0308", 1},
      {u"\xD800", 1},
      {u"a\xDC00z", 3},
      {u"ｆ", 2},
      {u"ｶ", 1},
      {u"한국", 4},
      {u"a\u200Bb", 2},
      {u"\U0001F44D\U0001F3FD", 2},
  };
  for (const auto& c : cases) EXPECT_EQ(CellsOf(c.Text), c.Cells) << ToUtf8(c.Text);
  EXPECT_EQ(FitCells(u"e\u0301日x", 1), u"e\u0301");
  EXPECT_EQ(FitCells(u"e\u0301日x", 2), u"e\u0301") << "half of a wide character does not fit";
  EXPECT_EQ(FitCells(u"e\u0301日x", 3), u"e\u0301日");
}

TEST(TextLayout, SizesFollowFontAndDensity) {
  TFont font;
  EXPECT_EQ(CellExtent(font, u"four"), (TSize{28, 15}));
  EXPECT_EQ(CellExtent(font, u""), (TSize{0, 15}));
  font.ChangeScale(144);
  EXPECT_EQ(CellExtent(font, u"four"), (TSize{42, 23}));
  font.ChangeScale(192);
  EXPECT_EQ(CellExtent(font, u"four"), (TSize{56, 30}));
  font.SetHeight(30);
  EXPECT_EQ(CellExtent(font, u"four"), (TSize{56, 30})) << "a positive height is that of the line";
}

TEST(TextLayout, LinesWrapAlignAndEnd) {
  const TFont font;
  const TRect box(10, 100, 80, 200);  // ten cells
  const struct {
    TStringView Text;
    TTextFormat Format;
    std::vector<TString> Lines;
    TRect Rect;
  } cases[] = {
      {u"&Open && go", {}, {u"Open & go"}, {10, 100, 73, 115}},
      {u"&Open", {tfNoPrefix}, {u"&Open"}, {10, 100, 45, 115}},
      {u"tail&", {}, {u"tail"}, {10, 100, 38, 115}},
      {u"ab\r\ncd\ne", {}, {u"ab", u"cd", u"e"}, {10, 100, 24, 145}},
      {u"ab\r\ncd", {tfSingleLine}, {u"ab cd"}, {10, 100, 45, 115}},
      {u"one two three", {tfWordBreak}, {u"one two", u"three"}, {10, 100, 59, 130}},
      {u"a verylongwordindeed b",
       {tfWordBreak},
       {u"a", u"verylongwordindeed", u"b"},
       {10, 100, 136, 145}},
      {u"", {tfWordBreak}, {u""}, {10, 100, 10, 115}},
      {u"0123456789", {tfEndEllipsis}, {u"0123456789"}, {10, 100, 80, 115}},
      {u"0123456789A", {tfEndEllipsis}, {u"0123456..."}, {10, 100, 80, 115}},
      {u"日本語日本語", {tfEndEllipsis}, {u"日本語..."}, {10, 100, 73, 115}},
      {u"mid", {tfCenter, tfVerticalCenter, tfSingleLine}, {u"mid"}, {34, 142, 55, 157}},
      {u"end", {tfRight, tfBottom, tfSingleLine}, {u"end"}, {59, 185, 80, 200}},
      {u"end", {tfRight, tfBottom}, {u"end"}, {59, 100, 80, 115}},
  };
  for (const auto& c : cases) {
    const TTextLayout layout = LayoutText(font, box, c.Text, c.Format);
    EXPECT_EQ(layout.Lines, c.Lines) << ToUtf8(c.Text);
    EXPECT_EQ(layout.Rect, c.Rect) << ToUtf8(c.Text);
  }
}

TEST(TextLayout, ShortenedTextNeverTearsACharacterApart) {
  const TScopedGraphics scope(HeadlessGraphicsSystem());
  const TFont font;
  const TString text = u"ab\U0001F600\U0001F600cd";
  for (int width = 0; width <= 70; ++width) {
    const TString shortened = EllipsizeText(font, text, width);
    if (TextWidth(font, text) <= width) {
      EXPECT_EQ(shortened, text);
      continue;
    }
    ASSERT_TRUE(EndsWith(shortened, u"..."));
    EXPECT_TRUE(width < 21 || TextWidth(font, shortened) <= width) << width;
    EXPECT_EQ(FromUtf8(ToUtf8(shortened)), shortened) << "a half pair would not survive";
  }
}

TEST(CanvasHeadless, KeepsWhatCanBeSeen) {
  const TScopedGraphics scope(HeadlessGraphicsSystem());
  TCanvasHeadless canvas({0, 0, 100, 50});
  canvas.GetBrush().SetColor(clHighlight);
  canvas.GetFont().SetColor(clHighlightText);
  canvas.FillRect({-10, -10, 10, 10});
  canvas.FillRect({200, 0, 300, 10});
  canvas.TextOut(5, 20, u"&shown");
  {
    const TClipScope clip(canvas, {0, 0, 100, 20});
    canvas.TextOut(5, 20, u"below the clip");
    canvas.DrawText({0, 5, 40, 20}, u"&A long text", {tfSingleLine, tfEndEllipsis});
  }
  canvas.GetBrush().SetStyle(bsClear);
  canvas.FillRect({0, 0, 100, 50});
  EXPECT_EQ(canvas.GetTexts(), (std::vector<TString>{u"&shown", u"A ..."}));
  const std::vector<TDrawOperation> operations = canvas.TakeOperations();
  ASSERT_EQ(operations.size(), 3u);
  EXPECT_EQ(operations[0].Rect, (TRect{-10, -10, 10, 10}));
  EXPECT_EQ(operations[0].Color, ColorToRGB(clHighlight));
  EXPECT_EQ(operations[1].Rect, (TRect{5, 20, 47, 35}));
  EXPECT_EQ(operations[1].PenColor, clWhite);
  EXPECT_EQ(operations[2].Bounds, (TRect{0, 5, 40, 20}));
  EXPECT_EQ(operations[2].Clip, (TRect{0, 5, 40, 20}));
  EXPECT_TRUE(canvas.GetOperations().empty());
}

TEST(CanvasHeadless, MeasuringDrawsNothing) {
  TCanvasHeadless canvas({0, 0, 100, 50});
  TRect rect(10, 10, 45, 12);
  canvas.TextRect(rect, u"one two", {tfWordBreak, tfCalcRect, tfCenter});
  EXPECT_EQ(rect, (TRect{10, 10, 31, 40}));
  EXPECT_TRUE(canvas.GetOperations().empty());
}

TEST(CanvasHeadless, ImagesAreKeptByIndex) {
  TImageList images;
  images.Add(TBitmap(32, 16));
  TCanvasHeadless canvas({0, 0, 100, 50});
  images.Draw(canvas, 3, 4, 1, 2, TImageState::Ghosted);
  images.Draw(canvas, 3, 4, 2);
  images.Draw(canvas, 3, 4, -1);
  ASSERT_EQ(canvas.GetOperations().size(), 1u);
  const TDrawOperation& operation = canvas.GetOperations().front();
  EXPECT_EQ(operation.Rect, (TRect{3, 4, 19, 20}));
  EXPECT_EQ(operation.ImageIndex, 1);
  EXPECT_EQ(operation.Overlay, 2);
  EXPECT_EQ(operation.State, TImageState::Ghosted);
  EXPECT_EQ(operation.Images, &images);
}

}  // namespace
}  // namespace oak::tests
