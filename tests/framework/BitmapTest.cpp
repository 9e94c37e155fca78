#include "oak/framework/Bitmap.h"

#include <gtest/gtest.h>

#include "oak/base/Exceptions.h"
#include "oak/framework/BitmapPixels.h"
#include "oak/framework/Canvas.h"

namespace oak::tests {
namespace {

/// A picture in which no two pixels are alike; with alpha, premultiplied.
TBitmap PatternOf(int width, int height, TAlphaFormat format = afIgnored) {
  TBitmap bitmap(width, height, format);
  for (int y = 0; y < height; ++y) {
    for (int x = 0; x < width; ++x) {
      const auto n = static_cast<TPixel>(y * width + x);
      const TPixel color = (n * 2654435761u) & 0xFFFFFF;
      bitmap.ScanLine(y)[x] =
          format == afIgnored ? 0xFF000000u | color : Premultiply((n * 37 % 256) << 24 | color);
    }
  }
  return bitmap;
}

TBitmap CopyOfBitmap(const TBitmap& source) {
  TBitmap result;
  result.Assign(&source);
  return result;
}

TPixel PixelAt(const TBitmap& bitmap, int x, int y) { return bitmap.ScanLine(y)[x]; }

TEST(Bitmap, NewSizesKeepWhatLiesInBoth) {
  for (const TAlphaFormat format : {afIgnored, afPremultiplied}) {
    const TBitmap original = PatternOf(7, 5, format);
    for (const TSize size : {TSize{9, 8}, {3, 8}, {9, 2}, {3, 2}, {7, 5}, {1, 1}}) {
      TBitmap bitmap = CopyOfBitmap(original);
      bitmap.SetSize(size.Width, size.Height);
      for (int y = 0; y < size.Height; ++y)
        for (int x = 0; x < size.Width; ++x)
          ASSERT_EQ(PixelAt(bitmap, x, y), x < 7 && y < 5        ? PixelAt(original, x, y)
                                           : format == afIgnored ? 0xFF000000u
                                                                 : 0u)
              << size.Width << "x" << size.Height << " at " << x << "," << y;
    }
  }
  TBitmap grown;
  grown.SetWidth(3);
  EXPECT_TRUE(grown.IsEmpty());
  grown.SetHeight(2);
  EXPECT_EQ(grown.GetSize(), (TSize{3, 2}));
}

TEST(Bitmap, ImpossibleSizesRaiseAndLoseNothing) {
  TBitmap bitmap = PatternOf(4, 3);
  const TBitmap before = CopyOfBitmap(bitmap);
  const TSize sizes[] = {{-1, 3},
                         {4, -1},
                         {TBitmap::MaxSide + 1, 1},
                         {20000, 20000},
                         {1 << 30, 1 << 30},
                         {INT32_MIN, INT32_MIN}};
  for (const TSize& size : sizes) {
    EXPECT_THROW(bitmap.SetSize(size.Width, size.Height), EInvalidArgument);
    EXPECT_THROW(bitmap.Resized(size.Width, size.Height), EInvalidArgument);
    EXPECT_THROW(TBitmap(size.Width, size.Height), EInvalidArgument);
    EXPECT_TRUE(bitmap.SameContents(before));
  }
}

TEST(Bitmap, MovingEmptiesTheSourceAndLeavesItsCanvas) {
  TBitmap first = PatternOf(4, 4);
  TCanvas& canvas = first.GetCanvas();
  TBitmap second = std::move(first);
  EXPECT_TRUE(first.IsEmpty());
  EXPECT_TRUE(second.SameContents(PatternOf(4, 4)));
  // The canvas of the emptied bitmap draws into it, not into what was moved away.
  canvas.FillRect({0, 0, 4, 4});
  EXPECT_TRUE(second.SameContents(PatternOf(4, 4)));
  first.SetSize(2, 2);
  canvas.FillRect({0, 0, 4, 4});
  EXPECT_EQ(first.GetPixel(1, 1), clWhite);
  second = std::move(first);
  EXPECT_EQ(second.GetSize(), (TSize{2, 2}));

  TBitmap other;
  TPersistent* someone = &canvas;
  EXPECT_THROW(other.Assign(someone), EConvertError);
  other.Assign(&second);
  other.SetPixel(0, 0, clRed);
  EXPECT_EQ(second.GetPixel(0, 0), clWhite) << "the copy has pixels of its own";
}

TEST(Bitmap, BlendingByAlphaAndOpacity) {
  const struct {
    TPixel Under;
    TPixel Over;
    int Opacity;
    TPixel Result;
  } cases[] = {
      {0xFF102030, 0x00000000, 255, 0xFF102030}, {0xFF102030, 0xFFAABBCC, 255, 0xFFAABBCC},
      {0xFF000000, 0x80800000, 255, 0xFF800000}, {0xFFFFFFFF, 0x80000000, 255, 0xFF7F7F7F},
      {0xFFFFFFFF, 0xFF000000, 128, 0xFF7F7F7F}, {0x00000000, 0x40404040, 255, 0x40404040},
      {0x80808080, 0x80808080, 255, 0xC0C0C0C0}, {0xFF102030, 0xFFAABBCC, 0, 0xFF102030},
      {0xFFFFFFFF, 0xFFFFFFFF, 77, 0xFFFFFFFF},  {0xFF102030, 0xFFAABBCC, 999, 0xFFAABBCC},
  };
  for (const auto& c : cases) {
    TBitmap under(1, 1, afPremultiplied);
    TBitmap over(1, 1, afPremultiplied);
    under.ScanLine(0)[0] = c.Under;
    over.ScanLine(0)[0] = c.Over;
    under.Draw(0, 0, over, c.Opacity);
    EXPECT_EQ(PixelAt(under, 0, 0), c.Result) << std::hex << c.Under << " " << c.Over;
  }
  // A source without alpha is opaque whatever its alpha bytes say.
  TBitmap opaque(1, 1);
  opaque.ScanLine(0)[0] = 0x00445566;
  TBitmap under(1, 1, afPremultiplied);
  under.Draw(0, 0, opaque);
  EXPECT_EQ(PixelAt(under, 0, 0), 0xFF445566u);
}

TEST(Bitmap, NoBlendOverflowsWhateverTheAlpha) {
  for (std::uint32_t a = 0; a < 256; ++a)
    for (std::uint32_t b = 0; b < 256; ++b) {
      const TPixel result = BlendPixel(b * 0x01010101u, a * 0x01010101u);
      const TPixel part = result & 0xFF;
      ASSERT_EQ(result, part * 0x01010101u) << a << " over " << b;
      ASSERT_GE(part, std::max(a, b));
    }
}

TEST(Bitmap, PicturesAreClippedOnAllSides) {
  const TBitmap source = PatternOf(5, 4);
  for (int dy = -6; dy <= 6; ++dy) {
    for (int dx = -6; dx <= 6; ++dx) {
      TBitmap drawn(6, 5);
      drawn.Draw(dx, dy, source);
      TBitmap copied(6, 5);
      copied.CopyRect({dx, dy, dx + 5, dy + 4}, source, source.GetRect());
      for (int y = 0; y < 5; ++y)
        for (int x = 0; x < 6; ++x) {
          const bool isIn = source.GetRect().Contains({x - dx, y - dy});
          ASSERT_EQ(PixelAt(drawn, x, y), isIn ? PixelAt(source, x - dx, y - dy) : 0xFF000000u);
        }
      ASSERT_TRUE(copied.SameContents(drawn)) << dx << "," << dy;
    }
  }
}

TEST(Bitmap, CopyingFromItselfAndFromOutside) {
  TBitmap bitmap = PatternOf(8, 1);
  const TBitmap before = CopyOfBitmap(bitmap);
  bitmap.CopyRect({2, 0, 8, 1}, bitmap, {0, 0, 6, 1});
  for (int x = 0; x < 8; ++x)
    EXPECT_EQ(PixelAt(bitmap, x, 0), PixelAt(before, x < 2 ? x : x - 2, 0));

  // A source rectangle that reaches out of the source writes only what is there.
  TBitmap target(4, 1);
  target.Fill(clRed);
  target.CopyRect({0, 0, 4, 1}, before, {-2, 0, 2, 1});
  EXPECT_EQ(target.GetPixel(1, 0), clRed);
  EXPECT_EQ(PixelAt(target, 2, 0), PixelAt(before, 0, 0));
  EXPECT_EQ(PixelAt(target, 3, 0), PixelAt(before, 1, 0));

  TBitmap column(1, 4);
  column.Fill(clRed);
  column.CopyRect({0, 0, 1, 4}, PatternOf(1, 2), {0, -1, 1, 3});
  EXPECT_EQ(column.GetPixel(0, 0), clRed);
  EXPECT_EQ(PixelAt(column, 0, 1), PixelAt(PatternOf(1, 2), 0, 0));
  EXPECT_EQ(PixelAt(column, 0, 2), PixelAt(PatternOf(1, 2), 0, 1));
  EXPECT_EQ(column.GetPixel(0, 3), clRed);

  // Stretching takes whole pixels.
  TBitmap wide(8, 2);
  wide.CopyRect(wide.GetRect(), before, {0, 0, 2, 1});
  for (int x = 0; x < 8; ++x) EXPECT_EQ(PixelAt(wide, x, 1), PixelAt(before, x / 4, 0));
}

TEST(Bitmap, SmoothShrinkingIsTheMeanOfWhatIsCovered) {
  TBitmap board(64, 64);
  for (int y = 0; y < 64; ++y)
    for (int x = 0; x < 64; ++x) board.SetPixel(x, y, (x + y) & 1 ? clWhite : clBlack);
  for (const int side : {32, 16, 1}) {
    const TBitmap small = board.Resized(side, side);
    for (int y = 0; y < side; ++y)
      for (int x = 0; x < side; ++x) ASSERT_NEAR(RedOf(small.GetPixel(x, y)), 128, 1);
  }
  // Three pixels into two: each takes one and a half.
  TBitmap three(3, 1);
  three.SetPixel(0, 0, RgbColor(30, 0, 0));
  three.SetPixel(1, 0, RgbColor(90, 0, 0));
  three.SetPixel(2, 0, RgbColor(240, 0, 0));
  const TBitmap two = three.Resized(2, 1);
  EXPECT_EQ(RedOf(two.GetPixel(0, 0)), 50);
  EXPECT_EQ(RedOf(two.GetPixel(1, 0)), 190);
}

TEST(Bitmap, StretchingInventsNoColours) {
  const TSize sizes[] = {{1, 1}, {3, 200}, {96, 96}, {97, 31}, {255, 2}, {33, 34}};
  for (const TStretchFilter filter : {TStretchFilter::Nearest, TStretchFilter::Smooth}) {
    for (const TSize& size : sizes) {
      TBitmap flat(33, 57, afPremultiplied);
      for (int y = 0; y < 57; ++y) std::fill_n(flat.ScanLine(y), 33, 0xC8A05010u);
      const TBitmap stretched = flat.Resized(size.Width, size.Height, filter);
      const TBitmap mixed =
          PatternOf(33, 57, afPremultiplied).Resized(size.Width, size.Height, filter);
      for (int y = 0; y < size.Height; ++y)
        for (int x = 0; x < size.Width; ++x) {
          ASSERT_EQ(PixelAt(stretched, x, y), 0xC8A05010u) << size.Width << "x" << size.Height;
          // No colour exceeds its alpha, or blending would overflow.
          const TPixel pixel = PixelAt(mixed, x, y);
          for (int shift = 0; shift < 24; shift += 8)
            ASSERT_LE(pixel >> shift & 0xFF, AlphaOf(pixel));
        }
    }
  }
}

TEST(Bitmap, ThousandsOfPixelsInOneLoseNothing) {
  TBitmap white(3001, 7);
  white.Fill(clWhite);
  for (const int width : {1, 2, 7, 96})
    for (int x = 0; x < width; ++x)
      ASSERT_EQ(white.Resized(width, 3).GetPixel(x, 1), clWhite) << width;
}

TEST(Bitmap, StretchDrawingShowsThePartThatIsSeen) {
  const TBitmap source = PatternOf(10, 10);
  for (const TSize& size : {TSize{25, 17}, {6, 4}}) {
    const TBitmap whole = source.Resized(size.Width, size.Height);
    for (const TPoint& at : {TPoint{0, 0}, {-5, -3}, {4, 6}, {-20, 2}}) {
      TBitmap expected(12, 9);
      expected.Draw(at.X, at.Y, whole);
      TBitmap drawn(12, 9);
      drawn.StretchDraw({at, size}, source);
      ASSERT_TRUE(drawn.SameContents(expected)) << size.Width << " at " << at.X << "," << at.Y;
    }
  }
  // A picture enlarged beyond all bounds costs what is seen of it.
  TBitmap dot(1, 1);
  dot.Fill(clRed);
  TBitmap screen(4, 4);
  screen.StretchDraw({-1000000000, -1000000000, 1000000000, 1000000000}, dot);
  EXPECT_EQ(screen.GetPixel(3, 3), clRed);
}

TEST(Bitmap, FittingKeepsProportionsAndNeverEnlarges) {
  const struct {
    TSize Size;
    TSize Box;
    TSize Result;
  } cases[] = {
      {{4000, 3000}, {96, 96}, {96, 72}}, {{3000, 4000}, {96, 96}, {72, 96}},
      {{50, 20}, {96, 96}, {50, 20}},     {{5000, 2}, {96, 96}, {96, 1}},
      {{96, 96}, {96, 96}, {96, 96}},     {{100, 50}, {200, 10}, {20, 10}},
      {{10, 10}, {0, 5}, {0, 0}},
  };
  for (const auto& c : cases)
    EXPECT_EQ(TBitmap(c.Size.Width, c.Size.Height).FitSize(c.Box), c.Result)
        << c.Size.Width << "x" << c.Size.Height;
}

TEST(Bitmap, AlphaCountsWhereBothHaveIt) {
  TBitmap a(1, 1, afPremultiplied);
  TBitmap b(1, 1, afPremultiplied);
  a.ScanLine(0)[0] = 0x80000000;
  b.ScanLine(0)[0] = 0x40000000;
  EXPECT_FALSE(a.SameContents(b));
  b.SetAlphaFormat(afIgnored);
  EXPECT_TRUE(a.SameContents(b));
  EXPECT_EQ(AlphaOf(PixelAt(b, 0, 0)), 255u);
  EXPECT_FALSE(a.SameContents(TBitmap(1, 2)));
}

TEST(Bitmap, PixelsOutsideAreNeitherReadNorWritten) {
  TBitmap bitmap(2, 2);
  for (const TPoint& p : {TPoint{-1, 0}, {0, -1}, {2, 0}, {0, 2}}) {
    bitmap.SetPixel(p.X, p.Y, clWhite);
    EXPECT_EQ(bitmap.GetPixel(p.X, p.Y), clNone);
  }
  bitmap.FillRect({-100, -100, 100, 1}, RgbColor(1, 2, 3));
  EXPECT_EQ(bitmap.GetPixel(1, 0), RgbColor(1, 2, 3));
  EXPECT_EQ(bitmap.GetPixel(1, 1), clBlack);
  EXPECT_EQ(PixelAt(bitmap, 0, 0), 0xFF010203u) << "blue is the lowest byte";
}

}  // namespace
}  // namespace oak::tests
