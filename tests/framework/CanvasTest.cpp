#include "oak/framework/Canvas.h"

#include <gtest/gtest.h>

#include "oak/base/Exceptions.h"
#include "oak/framework/Bitmap.h"
#include "oak/framework/BitmapCanvas.h"
#include "oak/framework/GraphicsSystem.h"
#include "oak/framework/headless/CanvasHeadless.h"
#include "oak/framework/headless/TextLayout.h"

namespace oak::tests {
namespace {

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
  EXPECT_EQ(ColorToRGB(clNone), clBlack);
  EXPECT_EQ(ColorToRGB(SystemColor(200)), clBlack) << "an index that no system has";
  TBitmap bitmap(1, 1);
  bitmap.GetCanvas().GetBrush().SetColor(clWindow);
  SetSystemColorProvider([](int index) { return index == 5 ? 0xFF202020u : 0u; });
  bitmap.GetCanvas().FillRect({0, 0, 1, 1});
  EXPECT_EQ(bitmap.GetPixel(0, 0), 0x202020u);
}

TEST(Canvas, FontsKeepTheirPointsOverDensities) {
  TFont font;
  EXPECT_EQ(font.GetSize(), 9);
  int changes = 0;
  font.OnChange = [&](TObject*) { ++changes; };
  font.ChangeScale(192);
  EXPECT_EQ(font.GetHeight(), -24);
  EXPECT_EQ(font.GetSize(), 9);
  font.SetHeight(-24);
  EXPECT_EQ(changes, 1) << "no change, no event";
  font.SetSize(12);
  TFont other;
  other.OnChange = [&](TObject*) { changes += 10; };
  other.Assign(&font);
  EXPECT_EQ(other, font);
  EXPECT_EQ(changes, 12) << "the event is the copy's own";
  TPen pen;
  EXPECT_THROW(font.Assign(&pen), EConvertError);
}

// How figures look is compared with GDI on Windows.
TEST(Canvas, FiguresStayInTheirBounds) {
  TBitmap bitmap(20, 20);
  TCanvas& canvas = bitmap.GetCanvas();
  const TRect bounds(3, 4, 17, 15);
  const TPoint star[] = {{10, 4}, {14, 14}, {3, 8}, {16, 8}, {6, 14}};
  const std::pair<const char*, std::function<void()>> figures[] = {
      {"rectangle", [&] { canvas.Rectangle(bounds); }},
      {"frame", [&] { canvas.FrameRect(bounds); }},
      {"star", [&] { canvas.Polygon(star); }},
      {"gradient", [&] { canvas.GradientFill(bounds, clYellow, clRed, false); }},
      {"focus", [&] { canvas.DrawFocusRect(bounds); }},
  };
  canvas.GetPen().SetColor(clYellow);
  canvas.GetBrush().SetColor(clWhite);
  for (const auto& [name, draw] : figures) {
    SCOPED_TRACE(name);
    bitmap.Fill(clBlack);
    draw();
    TRect used;
    for (int y = 0; y < 20; ++y)
      for (int x = 0; x < 20; ++x)
        if (bitmap.GetPixel(x, y) != clBlack) used = used.United({x, y, x + 1, y + 1});
    EXPECT_EQ(used, bounds);
  }
  canvas.DrawFocusRect(bounds);
  EXPECT_TRUE(bitmap.SameContents(TBitmap(20, 20))) << "drawn twice it is gone";
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
  EXPECT_EQ(bitmap.GetPixel(4, 3), clWhite);
}

TEST(Canvas, ClipsNestAndEndInOrder) {
  TBitmap bitmap(6, 1);
  TCanvas& canvas = bitmap.GetCanvas();
  {
    const TClipScope outer(canvas, {1, 0, 5, 1});
    {
      const TClipScope inner(canvas, {0, 0, 3, 9});
      EXPECT_EQ(canvas.GetClipRect(), (TRect{1, 0, 3, 1}));
      bitmap.SetSize(2, 1);
      EXPECT_EQ(canvas.GetClipRect(), (TRect{1, 0, 2, 1})) << "a shrunk bitmap is not overrun";
      bitmap.SetSize(6, 1);
    }
    EXPECT_EQ(canvas.GetClipRect(), (TRect{1, 0, 5, 1}));
  }
  canvas.PopClip();
  EXPECT_EQ(canvas.GetClipRect(), bitmap.GetRect());
}

TEST(TextLayout, CellsOfCharacters) {
  const std::pair<TStringView, int> cases[] = {
      {u"", 0},       {u"日本語", 6}, {u"e\u0301", 1},  {u"\U0001F600", 2},
      {u"\xD800", 1}, {u"ｆｶ", 3},    {u"a\u200Bb", 2}, {u"\U0001F44D\U0001F3FD", 2},
  };
  for (const auto& [text, cells] : cases) EXPECT_EQ(CellsOf(text), cells) << ToUtf8(text);
  EXPECT_EQ(FitCells(u"e\u0301日x", 2), u"e\u0301") << "half of a wide character does not fit";
  EXPECT_EQ(FitCells(u"e\u0301日x", 3), u"e\u0301日");
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
      {u"tail&", {}, {u"tail"}, {10, 100, 38, 115}},
      {u"ab\r\ncd\ne", {}, {u"ab", u"cd", u"e"}, {10, 100, 24, 145}},
      {u"ab\r\ncd", {tfSingleLine}, {u"ab cd"}, {10, 100, 45, 115}},
      {u"one two three", {tfWordBreak}, {u"one two", u"three"}, {10, 100, 59, 130}},
      {u"a verylongwordindeed b",
       {tfWordBreak},
       {u"a", u"verylongwordindeed", u"b"},
       {10, 100, 136, 145}},
      {u"日本語日本語", {tfEndEllipsis}, {u"日本語..."}, {10, 100, 73, 115}},
      {u"mid", {tfCenter, tfVerticalCenter, tfSingleLine}, {u"mid"}, {34, 142, 55, 157}},
      {u"end", {tfRight, tfBottom, tfSingleLine}, {u"end"}, {59, 185, 80, 200}},
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
  canvas.FillRect({200, 0, 300, 10});
  canvas.TextOut(5, 20, u"&shown");
  {
    const TClipScope clip(canvas, {0, 0, 100, 20});
    canvas.TextOut(5, 20, u"below the clip");
    canvas.DrawText({0, 5, 40, 20}, u"&A long text", {tfSingleLine, tfEndEllipsis});
  }
  TRect measured(10, 10, 45, 12);
  canvas.TextRect(measured, u"one two", {tfWordBreak, tfCalcRect, tfCenter});
  EXPECT_EQ(measured, (TRect{10, 10, 31, 40}));
  EXPECT_EQ(canvas.GetTexts(), (std::vector<TString>{u"&shown", u"A ..."}));
  EXPECT_EQ(canvas.GetOperations().size(), 2u);
}

}  // namespace
}  // namespace oak::tests
