// The drawing of Windows against the library's own, and pictures that pass between both.
#include <gtest/gtest.h>

#include "oak/framework/Bitmap.h"
#include "oak/framework/BitmapCanvas.h"
#include "oak/framework/GraphicsSystem.h"
#include "oak/framework/ImageList.h"
#include "oak/framework/win32/CanvasWin32.h"
#include "oak/framework/win32/DibWin32.h"
#include "oak/framework/win32/GraphicsWin32.h"
#include "oak/framework/win32/ImageListWin32.h"
#include "oak/framework/win32/System.h"
#include "tests/framework/windows/HandleCount.h"

namespace oak::tests {
namespace {

class Gdi : public testing::Test {
 protected:
  void SetUp() override { fFormer = SetGraphicsSystem(&Win32GraphicsSystem()); }
  void TearDown() override { SetGraphicsSystem(fFormer); }

 private:
  TGraphicsSystem* fFormer = nullptr;
};

/// A soft-edged, half-transparent disc.
TBitmap Disc(int side) {
  TBitmap disc(side, side, afPremultiplied);
  const int middle = side / 2;
  for (int y = 0; y < side; ++y)
    for (int x = 0; x < side; ++x) {
      const int distance = (x - middle) * (x - middle) + (y - middle) * (y - middle);
      const int alpha = std::max(0, 255 - distance * 255 / (middle * middle));
      const auto a = static_cast<TPixel>(alpha);
      disc.ScanLine(y)[x] = a << 24 | a << 16 | (a / 2) << 8 | a / 4;
    }
  return disc;
}

/// What `draw` paints with GDI on grey.
template <class Function>
TBitmap PaintedByGdi(TSize size, Function draw) {
  TDibSection section(size.Width, size.Height);
  section.Fill(0xFF404040u);
  {
    TCanvasWin32 canvas(section.GetDC());
    draw(canvas);
  }
  return section.ToBitmap();
}

template <class Function>
TBitmap PaintedByUs(TSize size, Function draw) {
  TBitmap bitmap(size.Width, size.Height);
  bitmap.Fill(0x404040);
  draw(bitmap.GetCanvas());
  return bitmap;
}

/// Largest difference of any part of any pixel.
int Difference(const TBitmap& a, const TBitmap& b) {
  int difference = a.GetSize() == b.GetSize() ? 0 : 1000;
  for (int y = 0; y < a.GetHeight() && difference < 1000; ++y)
    for (int x = 0; x < a.GetWidth(); ++x)
      for (int part : {0, 8, 16}) {
        const int left = static_cast<int>(a.ScanLine(y)[x] >> part & 0xFF);
        const int right = static_cast<int>(b.ScanLine(y)[x] >> part & 0xFF);
        difference = std::max(difference, std::abs(left - right));
      }
  return difference;
}

int DifferentPixels(const TBitmap& a, const TBitmap& b) {
  int count = 0;
  for (int y = 0; y < a.GetHeight(); ++y)
    for (int x = 0; x < a.GetWidth(); ++x) count += a.GetPixel(x, y) != b.GetPixel(x, y);
  return count;
}

void SetColours(TCanvas& canvas) {
  canvas.GetPen().SetColor(RgbColor(255, 200, 0));
  canvas.GetBrush().SetColor(RgbColor(10, 100, 200));
}

TEST_F(Gdi, BothCanvasesPaintTheSame) {
  using TDraw = std::function<void(TCanvas&)>;
  const TBitmap disc = Disc(31);
  TBitmap opaque(10, 10);
  opaque.GetCanvas().GradientFill({0, 0, 10, 10}, clRed, clBlue, true);
  const struct {
    const char* Name;
    TDraw Draw;
    int Tolerance;
  } cases[] = {
      {"fill",
       [](TCanvas& c) {
         c.FillRect({-3, 5, 20, 100});
       },
       0},
      {"frame",
       [](TCanvas& c) {
         c.FrameRect({3, 5, 20, 30});
       },
       0},
      {"rectangle",
       [](TCanvas& c) {
         c.Rectangle({3, 5, 20, 30});
       },
       0},
      {"rectangle without brush",
       [](TCanvas& c) {
         c.GetBrush().SetStyle(bsClear);
         c.Rectangle({3, 5, 20, 30});
         c.FillRect({0, 0, 9, 9});
       },
       0},
      {"rectangle without pen",
       [](TCanvas& c) {
         c.GetPen().SetStyle(psClear);
         c.Rectangle({3, 5, 20, 30});
       },
       0},
      {"thick rectangle",
       [](TCanvas& c) {
         c.GetPen().SetWidth(3);
         c.Rectangle({3, 5, 20, 30});
       },
       0},
      {"lines",
       [](TCanvas& c) {
         c.MoveTo(2, 2);
         c.LineTo(30, 2);
         c.LineTo(30, 20);
         c.LineTo(12, 38);
         c.LineTo(12, 5);
       },
       0},
      {"clips",
       [](TCanvas& c) {
         const TClipScope outer(c, {5, 5, 30, 30});
         {
           const TClipScope inner(c, {0, 10, 15, 60});
           c.FillRect({0, 0, 40, 40});
         }
         c.FrameRect({4, 6, 40, 40});
       },
       0},
      {"alpha", [&](TCanvas& c) { c.Draw(4, -3, disc); }, 1},
      {"alpha and opacity", [&](TCanvas& c) { c.Draw(-4, 3, disc, 100); }, 2},
      {"opaque", [&](TCanvas& c) { c.Draw(35, 3, opaque); }, 0},
      {"opaque with opacity", [&](TCanvas& c) { c.Draw(7, 30, opaque, 128); }, 1},
      {"stretched",
       [&](TCanvas& c) {
         c.StretchDraw({-5, 2, 25, 60}, disc);
       },
       1},
      {"copied",
       [&](TCanvas& c) {
         c.CopyRect({2, 3, 12, 13}, opaque, {0, 0, 10, 10});
       },
       0},
      {"copied in part and larger",
       [&](TCanvas& c) {
         c.CopyRect({2, 3, 32, 33}, opaque, {-5, 5, 5, 15});
       },
       0},
      {"gradient",
       [](TCanvas& c) {
         c.GradientFill({2, 3, 32, 33}, clRed, clLime, true);
       },
       9},
      {"focus",
       [](TCanvas& c) {
         c.DrawFocusRect({2, 3, 33, 34});
       },
       255},
  };
  for (const auto& c : cases) {
    auto paint = [&](TCanvas& canvas) {
      SetColours(canvas);
      c.Draw(canvas);
    };
    const TBitmap gdi = PaintedByGdi({40, 40}, paint);
    const TBitmap ours = PaintedByUs({40, 40}, paint);
    EXPECT_LE(Difference(gdi, ours), c.Tolerance) << c.Name;
    EXPECT_GT(DifferentPixels(ours, PaintedByUs({40, 40}, [](TCanvas&) {})), 0) << c.Name;
  }
}

TEST_F(Gdi, PolygonsDifferAtTheirEdgesAtMost) {
  auto paint = [](TCanvas& canvas) {
    SetColours(canvas);
    canvas.GetPen().SetStyle(psClear);
    const TPoint star[] = {{50, 5}, {78, 90}, {5, 38}, {95, 38}, {22, 90}};
    canvas.Polygon(star);
  };
  EXPECT_LT(DifferentPixels(PaintedByGdi({100, 100}, paint), PaintedByUs({100, 100}, paint)), 160);
}

TEST_F(Gdi, ACanvasGivesItsContextBackAsItWas) {
  TDibSection section(20, 20);
  const HDC dc = section.GetDC();
  ::SetTextColor(dc, RGB(1, 2, 3));
  const HGDIOBJ font = ::GetCurrentObject(dc, OBJ_FONT);
  const HGDIOBJ pen = ::GetCurrentObject(dc, OBJ_PEN);
  {
    TCanvasWin32 canvas(dc);
    canvas.GetFont().SetName(u"Courier New");
    canvas.GetPen().SetWidth(4);
    canvas.Rectangle({1, 1, 9, 9});
    canvas.PushClip({2, 2, 3, 3});
    canvas.TextOut(0, 0, u"x");
    EXPECT_EQ(canvas.GetClipRect(), (TRect{2, 2, 3, 3}));
  }
  EXPECT_EQ(::GetTextColor(dc), static_cast<COLORREF>(RGB(1, 2, 3)));
  EXPECT_EQ(::GetCurrentObject(dc, OBJ_FONT), font);
  EXPECT_EQ(::GetCurrentObject(dc, OBJ_PEN), pen);
  RECT clip{};
  ::GetClipBox(dc, &clip);
  EXPECT_EQ(TRect(clip), (TRect{0, 0, 20, 20}));
}

TEST_F(Gdi, TextLiesWhereItWasMeasured) {
  TFont font;
  font.SetHeight(-16);
  const TString text = u"Äy Mg";
  const TSize size = TextExtent(font, text);
  EXPECT_GT(size.Width, 16);
  EXPECT_GE(size.Height, 16);
  EXPECT_EQ(TextExtent(font, u"").Height, size.Height);
  EXPECT_GT(TextExtent(font, text + text).Width, size.Width);
  const TRect box(10, 10, 150, 60);
  auto paint = [&](TCanvas& canvas) {
    canvas.SetFont(font);
    canvas.GetFont().SetColor(clRed);
    canvas.GetBrush().SetStyle(bsClear);
    canvas.DrawText(box, text, {tfRight, tfBottom, tfSingleLine});
  };
  const TRect place(box.Right - size.Width - 2, box.Bottom - size.Height, box.Right + 2,
                    box.Bottom);
  for (const TBitmap& bitmap : {PaintedByGdi({200, 80}, paint), PaintedByUs({200, 80}, paint)}) {
    int inside = 0;
    int outside = 0;
    for (int y = 0; y < 80; ++y)
      for (int x = 0; x < 200; ++x)
        if (bitmap.GetPixel(x, y) != 0x404040) ++(place.Contains({x, y}) ? inside : outside);
    EXPECT_GT(inside, 40);
    EXPECT_EQ(outside, 0);
  }
  const TRect wrapped =
      MeasureText(font, {5, 5, 5 + size.Width, 6}, text + u" " + text, {tfWordBreak});
  EXPECT_EQ(wrapped.TopLeft(), (TPoint{5, 5}));
  EXPECT_GE(wrapped.Height(), 2 * size.Height);
}

TEST_F(Gdi, TextOnTransparentBitmapsCarriesAlpha) {
  TBitmap bitmap(60, 30, afPremultiplied);
  bitmap.GetCanvas().GetFont().SetColor(clLime);
  bitmap.GetCanvas().GetBrush().SetStyle(bsClear);
  bitmap.GetCanvas().TextOut(2, 2, u"Text");
  int letters = 0;
  for (int y = 0; y < 30; ++y)
    for (int x = 0; x < 60; ++x) {
      const TPixel pixel = bitmap.ScanLine(y)[x];
      letters += pixel != 0;
      // Green with its alpha and nothing else.
      ASSERT_EQ(pixel & 0xFF00FF, 0u);
      ASSERT_EQ(pixel >> 24, pixel >> 8 & 0xFF);
    }
  EXPECT_GT(letters, 20);
}

TEST_F(Gdi, BitmapsPassThroughHandles) {
  const TBitmap disc = Disc(21);
  const TBitmap same = TBitmap::AdoptHandle(disc.CreateHandle());
  EXPECT_EQ(same.GetAlphaFormat(), afPremultiplied);
  EXPECT_TRUE(same.SameContents(disc));

  TBitmap opaque(7, 3);
  opaque.GetCanvas().GradientFill({0, 0, 7, 3}, clRed, clBlue, false);
  const HBITMAP handle = opaque.CreateHandle();
  const TBitmap copy = TBitmap::FromHandle(handle);
  EXPECT_EQ(copy.GetAlphaFormat(), afIgnored);
  EXPECT_TRUE(copy.SameContents(opaque));
  EXPECT_TRUE(::DeleteObject(handle)) << "the handle stayed the caller's";
  EXPECT_EQ(TBitmap().CreateHandle(), nullptr);
  EXPECT_TRUE(TBitmap::FromHandle(nullptr).IsEmpty());
  EXPECT_TRUE(TBitmap::AdoptHandle(reinterpret_cast<HBITMAP>(0x1234)).IsEmpty());

  // Straight alpha, as picture files give it, is multiplied.
  TDibSection straight(2, 1);
  straight.ScanLine(0)[0] = 0x80FF8000;
  straight.ScanLine(0)[1] = 0;
  const TBitmap multiplied = TBitmap::FromHandle(straight.GetHandle());
  EXPECT_EQ(multiplied.ScanLine(0)[0], 0x80804000u);

  // Two colours, bottom up, width not a multiple of anything.
  const BYTE bits[] = {0x40, 0, 0xA0, 0};
  const HBITMAP mono = ::CreateBitmap(3, 2, 1, 1, bits);
  const TBitmap read = TBitmap::AdoptHandle(mono);
  EXPECT_EQ(read.GetPixel(0, 0), clBlack);
  EXPECT_EQ(read.GetPixel(1, 0), clWhite);
  EXPECT_EQ(read.GetPixel(2, 1), clWhite);
}

TEST_F(Gdi, WhatIsPaintedTwiceGivesItsAlpha) {
  const TBitmap disc = Disc(21);
  const TBitmap seen = CaptureWithAlpha({21, 21}, [&](HDC dc) {
    TCanvasWin32 canvas(dc);
    canvas.Draw(0, 0, disc);
  });
  for (int y = 0; y < 21; ++y)
    for (int x = 0; x < 21; ++x)
      for (unsigned part : {0u, 8u, 16u, 24u})
        ASSERT_NEAR(seen.ScanLine(y)[x] >> part & 0xFF, disc.ScanLine(y)[x] >> part & 0xFF, 2);
}

/// The native list drawn on grey, for comparison with what the model renders.
TBitmap DrawnByList(const TImageList& list, int index, int overlay) {
  const TSize size{list.GetWidth(), list.GetHeight()};
  TDibSection section(size.Width, size.Height);
  section.Fill(0xFF404040u);
  IMAGELISTDRAWPARAMS draw{};
  draw.cbSize = sizeof draw;
  draw.himl = list.GetHandle();
  draw.i = index;
  draw.hdcDst = section.GetDC();
  draw.rgbBk = CLR_NONE;
  draw.fStyle = ILD_TRANSPARENT | static_cast<UINT>(INDEXTOOVERLAYMASK(overlay));
  ImageListCalls().DrawIndirect(&draw);
  return section.ToBitmap();
}

TBitmap DrawnByModel(const TImageList& list, int index, int overlay) {
  return PaintedByUs({list.GetWidth(), list.GetHeight()},
                     [&](TCanvas& canvas) { list.Draw(canvas, 0, 0, index, overlay); });
}

/// Half transparent, opaque and wholly transparent images, and an overlay as the last.
void FillList(TImageList& list) {
  list.SetSize(20, 20);
  list.Add(Disc(20));
  list.GetHandle();
  TBitmap colours(40, 20);
  colours.FillRect({0, 0, 20, 20}, clRed);
  colours.FillRect({20, 0, 40, 20}, clLime);
  list.Add(colours);
  list.Add(TBitmap(20, 20, afPremultiplied));
  TBitmap corner(20, 20, afPremultiplied);
  corner.FillRect({0, 15, 5, 20}, clBlue);
  list.Add(corner);
  list.Overlay(4, 1);
}

TEST_F(Gdi, NativeListsShowTheImagesOfTheModel) {
  TImageList list;
  FillList(list);
  list.Insert(1, Disc(13));
  list.Delete(2);
  list.Replace(0, Disc(17));
  const HIMAGELIST handle = list.GetHandle();
  ASSERT_EQ(ImageListCalls().GetImageCount(handle), list.GetCount());
  for (int i = 0; i < list.GetCount(); ++i)
    EXPECT_LE(Difference(DrawnByList(list, i, 0), DrawnByModel(list, i, 0)), 3) << i;
  list.SetSize(32, 32);
  list.Add(Disc(32));
  EXPECT_EQ(list.GetHandle(), handle) << "controls keep their handle";
  int width = 0;
  int height = 0;
  ImageListCalls().GetIconSize(handle, &width, &height);
  EXPECT_EQ(width, 32);
  EXPECT_EQ(ImageListCalls().GetImageCount(handle), 1);
}

TEST_F(Gdi, NativeListsShowTheOverlaysOfTheModel) {
  if (win32::IsWine()) GTEST_SKIP() << "Wine draws no overlays on images with alpha";
  TImageList list;
  FillList(list);
  for (int i = 0; i < list.GetCount(); ++i)
    EXPECT_LE(Difference(DrawnByList(list, i, 1), DrawnByModel(list, i, 1)), 3) << i;
}

TEST_F(Gdi, ListsOfTheSystemAreShownAndLent) {
  SHFILEINFOW info{};
  const auto system = reinterpret_cast<HIMAGELIST>(
      ::SHGetFileInfoW(L"C:\\", FILE_ATTRIBUTE_DIRECTORY, &info, sizeof info,
                       SHGFI_SYSICONINDEX | SHGFI_SMALLICON | SHGFI_USEFILEATTRIBUTES));
  ASSERT_NE(system, nullptr);
  TBitmap image;
  {
    TImageList list;
    list.SetShareImages(true);
    list.SetHandle(system);
    EXPECT_EQ(list.GetHandle(), system);
    ASSERT_GT(list.GetCount(), info.iIcon);
    ASSERT_TRUE(list.GetBitmap(info.iIcon, image));
    EXPECT_EQ(image.GetSize(), (TSize{list.GetWidth(), list.GetHeight()}));
    TDibSection section(list.GetWidth(), list.GetHeight());
    section.Fill(0xFF404040u);
    {
      TCanvasWin32 canvas(section.GetDC());
      list.Draw(canvas, 0, 0, info.iIcon);
    }
    TBitmap ours(list.GetWidth(), list.GetHeight());
    ours.Fill(0x404040);
    list.Draw(ours.GetCanvas(), 0, 0, info.iIcon);
    EXPECT_LE(Difference(section.ToBitmap(), ours), 3);
    EXPECT_GT(DifferentPixels(ours, PaintedByUs(ours.GetSize(), [](TCanvas&) {})), 20);
  }
  EXPECT_GT(ImageListCalls().GetImageCount(system), 0) << "borrowed, so it lives on";

  const HIMAGELIST own = ImageListCalls().Create(16, 16, ILC_COLOR32 | ILC_MASK, 1, 1);
  {
    TImageList list;
    list.SetHandle(own);
    EXPECT_EQ(list.GetCount(), 0);
  }
  EXPECT_FALSE(ImageListCalls().Destroy(own)) << "owned, so it went with the list";
}

TEST_F(Gdi, IconsKeepTheirShape) {
  // Masked only: the lower half of the picture is cut away.
  BYTE cut[32] = {};
  std::fill(cut + 16, cut + 32, BYTE{0xFF});
  TBitmap red(16, 16);
  red.Fill(clRed);
  const TOwnedBitmap colours = TOwnedBitmap::Adopt(red.CreateHandle());
  const TOwnedBitmap mask = TOwnedBitmap::Adopt(::CreateBitmap(16, 16, 1, 1, cut));
  ICONINFO parts{TRUE, 0, 0, mask.Get(), colours.Get()};
  const TOwnedIcon icon = TOwnedIcon::Adopt(::CreateIconIndirect(&parts));
  ASSERT_TRUE(icon);
  const TBitmap bitmap = GraphicsSystem().GetIconBitmap(icon.Get());
  ASSERT_EQ(bitmap.GetSize(), (TSize{16, 16}));
  EXPECT_EQ(bitmap.ScanLine(2)[3], 0xFFFF0000u);
  EXPECT_EQ(bitmap.ScanLine(12)[3], 0u);
  EXPECT_TRUE(GraphicsSystem().GetIconBitmap(nullptr).IsEmpty());
}

TEST_F(Gdi, CheckBoxesDifferByStateAndHaveAnOutline) {
  std::vector<TBitmap> boxes;
  for (const TCheckBoxImage image :
       {TCheckBoxImage::Unchecked, TCheckBoxImage::Checked, TCheckBoxImage::Grayed}) {
    boxes.emplace_back(20, 20, afPremultiplied);
    GraphicsSystem().DrawCheckBox(boxes.back(), {0, 0, 20, 20}, image, true, 96);
    EXPECT_EQ(boxes.back().ScanLine(0)[0], 0u) << "around the box nothing is painted";
  }
  EXPECT_GT(DifferentPixels(boxes[0], boxes[1]), 5);
  EXPECT_GT(DifferentPixels(boxes[1], boxes[2]), 5);
  EXPECT_GT(DifferentPixels(boxes[0], TBitmap(20, 20, afPremultiplied)), 20);
}

TEST_F(Gdi, SystemFontsFollowTheDensity) {
  for (const TSystemFont kind : {TSystemFont::Message, TSystemFont::IconTitle, TSystemFont::Menu}) {
    TFont font;
    TFont large;
    GraphicsSystem().GetSystemFont(kind, 96, font);
    GraphicsSystem().GetSystemFont(kind, 192, large);
    EXPECT_EQ(large.GetPixelsPerInch(), 192);
    EXPECT_NEAR(large.GetHeight(), 2 * font.GetHeight(), 2);
    EXPECT_FALSE(font.GetName().empty());
  }
}

TEST_F(Gdi, DoubleBuffersAppearAtTheEnd) {
  TDibSection target(30, 30);
  target.Fill(0xFF404040u);
  {
    const TDoubleBufferWin32 buffer(target.GetDC(), {5, 5, 15, 15});
    TCanvasWin32 canvas(buffer.GetDC());
    canvas.GetBrush().SetColor(clRed);
    canvas.FillRect({0, 0, 30, 30});
    EXPECT_EQ(target.ScanLine(7)[7], 0xFF404040u);
  }
  const TBitmap shown = target.ToBitmap();
  EXPECT_EQ(shown.GetPixel(5, 14), clRed);
  EXPECT_EQ(shown.GetPixel(4, 14), 0x404040u);
  EXPECT_EQ(shown.GetPixel(15, 14), 0x404040u);
}

TEST_F(Gdi, ManyRoundsLeaveNoHandles) {
  auto round = [](int i) {
    TBitmap bitmap = Disc(16);
    TBitmap::AdoptHandle(bitmap.CreateHandle());
    TImageList list(nullptr, 16, 16);
    list.Add(bitmap);
    list.GetHandle();
    list.SetColorDepth(cd24Bit);
    list.GetHandle();
    TDibSection section(20, 20);
    TCanvasWin32 canvas(section.GetDC());
    canvas.GetPen().SetWidth(2 + i % 3);
    canvas.GetFont().SetHeight(-8 - i % 200);
    canvas.Rectangle({1, 1, 9, 9});
    const TClipScope clip(canvas, {0, 0, 9, 9});
    canvas.TextOut(0, 0, u"text");
    canvas.Draw(0, 0, bitmap);
    bitmap.GetCanvas().TextOut(0, 0, u"text");
    const TDoubleBufferWin32 buffer(section.GetDC(), {0, 0, 5, 5});
  };
  // The cache of fonts fills up first.
  for (int i = 0; i < 300; ++i) round(i);
  const int before = CountGdiHandles();
  for (int i = 0; i < 1000; ++i) round(i);
  const int after = CountGdiHandles();
  if (before == 0) GTEST_SKIP() << "the system does not count its handles";
  EXPECT_LE(after, before + 64) << "the cache of fonts may differ by what it holds";
}

}  // namespace
}  // namespace oak::tests
