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
}

TEST(Bitmap, ImpossibleSizesRaiseAndLoseNothing) {
  TBitmap bitmap = PatternOf(4, 3);
  for (const TSize& size :
       {TSize{-1, 3}, {TBitmap::MaxSide + 1, 1}, {20000, 20000}, {1 << 30, 1 << 30}}) {
    EXPECT_THROW(bitmap.SetSize(size.Width, size.Height), EInvalidArgument);
    EXPECT_THROW(bitmap.Resized(size.Width, size.Height), EInvalidArgument);
    EXPECT_TRUE(bitmap.SameContents(PatternOf(4, 3)));
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
  TBitmap other = CopyOfBitmap(first);
  other.SetPixel(0, 0, clRed);
  EXPECT_EQ(first.GetPixel(0, 0), clWhite) << "the copy has pixels of its own";
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
  TBitmap target(4, 4);
  target.Fill(clRed);
  target.CopyRect(target.GetRect(), PatternOf(2, 2), {-1, -1, 3, 3});
  EXPECT_EQ(target.GetPixel(0, 1), clRed);
  EXPECT_EQ(target.GetPixel(1, 3), clRed);
  EXPECT_EQ(PixelAt(target, 1, 1), PixelAt(PatternOf(2, 2), 0, 0));
  EXPECT_EQ(PixelAt(target, 2, 2), PixelAt(PatternOf(2, 2), 1, 1));

  // Stretching takes whole pixels.
  TBitmap wide(8, 2);
  wide.CopyRect(wide.GetRect(), before, {0, 0, 2, 1});
  for (int x = 0; x < 8; ++x) EXPECT_EQ(PixelAt(wide, x, 1), PixelAt(before, x / 4, 0));
}

TEST(Bitmap, SmoothShrinkingIsTheMeanOfWhatIsCovered) {
  TBitmap board(64, 64);
  for (int y = 0; y < 64; ++y)
    for (int x = 0; x < 64; ++x) board.SetPixel(x, y, (x + y) & 1 ? clWhite : clBlack);
  for (const int side : {32, 1}) {
    const TBitmap small = board.Resized(side, side);
    for (int x = 0; x < side; ++x) ASSERT_NEAR(RedOf(small.GetPixel(x, x)), 128, 1);
  }
  TBitmap white(3001, 7);  // thousands in one lose nothing
  white.Fill(clWhite);
  EXPECT_EQ(white.Resized(7, 3).GetPixel(6, 1), clWhite);
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
  const std::pair<TSize, TSize> cases[] = {{{4000, 3000}, {96, 72}},
                                           {{3000, 4000}, {72, 96}},
                                           {{50, 20}, {50, 20}},
                                           {{5000, 2}, {96, 1}}};
  for (const auto& [size, result] : cases)
    EXPECT_EQ(TBitmap(size.Width, size.Height).FitSize({96, 96}), result) << size.Width;
}

TEST(Bitmap, PixelsOutsideAreNeitherReadNorWritten) {
  TBitmap bitmap(2, 2);
  for (const TPoint& p : {TPoint{-1, 0}, {0, -1}, {2, 0}, {0, 2}}) {
    bitmap.SetPixel(p.X, p.Y, clWhite);
    EXPECT_EQ(bitmap.GetPixel(p.X, p.Y), clNone);
  }
  bitmap.FillRect({-100, -100, 100, 1}, RgbColor(1, 2, 3));
  EXPECT_EQ(PixelAt(bitmap, 0, 0), 0xFF010203u) << "blue is the lowest byte";
  EXPECT_EQ(bitmap.GetPixel(1, 1), clBlack);
}

}  // namespace
}  // namespace oak::tests
