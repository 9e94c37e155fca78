// The drawing of Windows against the library's own, and pictures that pass between both.
#include <gtest/gtest.h>

#include <random>

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

TEST_F(Gdi, BothCanvasesPaintTheSame) {
  const TBitmap disc = Disc(31);
  TBitmap opaque(10, 10);
  opaque.GetCanvas().GradientFill({0, 0, 10, 10}, clRed, clBlue, true);
  const TRect box(3, 5, 20, 30);
  const TRect large(2, 3, 32, 33);
  const TPoint star[] = {{20, 2}, {31, 36}, {2, 15}, {38, 15}, {9, 36}};
  const struct {
    const char* Name;
    std::function<void(TCanvas&)> Draw;
    int Tolerance;  ///< Of a colour; 255: of the pixels at the edges
  } cases[] = {
      {"fill", [](TCanvas& c) { c.FillRect(TRect(-3, 5, 20, 100)); }, 0},
      {"frame", [&](TCanvas& c) { c.FrameRect(box); }, 0},
      {"rectangle", [&](TCanvas& c) { c.Rectangle(box); }, 0},
      {"no brush", [&](TCanvas& c) { c.GetBrush().SetStyle(bsClear), c.Rectangle(box); }, 0},
      {"no pen", [&](TCanvas& c) { c.GetPen().SetStyle(psClear), c.Rectangle(box); }, 0},
      {"thick pen", [&](TCanvas& c) { c.GetPen().SetWidth(3), c.Rectangle(box); }, 0},
      {"line", [](TCanvas& c) { c.MoveTo(30, 20), c.LineTo(12, 38), c.LineTo(12, 5); }, 0},
      {"clips",
       [&](TCanvas& c) {
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
      {"stretched", [&](TCanvas& c) { c.StretchDraw(TRect(-5, 2, 25, 60), disc); }, 1},
      {"copied", [&](TCanvas& c) { c.CopyRect(large, opaque, TRect(-5, 5, 5, 15)); }, 0},
      {"gradient", [&](TCanvas& c) { c.GradientFill(large, clRed, clLime, true); }, 9},
      {"focus", [&](TCanvas& c) { c.DrawFocusRect(large); }, 255},
      {"star", [&](TCanvas& c) { c.GetPen().SetStyle(psClear), c.Polygon(star); }, 255},
  };
  for (const auto& c : cases) {
    SCOPED_TRACE(c.Name);
    auto paint = [&](TCanvas& canvas) {
      canvas.GetPen().SetColor(RgbColor(255, 200, 0));
      canvas.GetBrush().SetColor(RgbColor(10, 100, 200));
      c.Draw(canvas);
    };
    const TBitmap gdi = PaintedByGdi({40, 40}, paint);
    const TBitmap ours = PaintedByUs({40, 40}, paint);
    EXPECT_LE(Difference(gdi, ours), c.Tolerance);
    EXPECT_LE(DifferentPixels(gdi, ours), c.Tolerance == 255 ? 130 : 1600);
    EXPECT_GT(DifferentPixels(ours, PaintedByUs({40, 40}, [](TCanvas&) {})), 0);
  }
}

TEST_F(Gdi, ACanvasGivesItsContextBackAsItWas) {
  TDibSection section(20, 20);
  const HDC dc = section.GetDC();
  const HGDIOBJ font = ::GetCurrentObject(dc, OBJ_FONT);
  const HGDIOBJ pen = ::GetCurrentObject(dc, OBJ_PEN);
  {
    TCanvasWin32 canvas(dc);
    canvas.GetFont().SetName(u"Courier New");
    canvas.GetPen().SetWidth(4);
    canvas.Rectangle({1, 1, 9, 9});
    canvas.PushClip({2, 2, 3, 3});
    canvas.TextOut(0, 0, u"x");
  }
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
  EXPECT_GE(size.Height, 16);
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
  EXPECT_TRUE(TBitmap::AdoptHandle(disc.CreateHandle()).SameContents(disc));

  TBitmap opaque(7, 3);
  opaque.GetCanvas().GradientFill({0, 0, 7, 3}, clRed, clBlue, false);
  const HBITMAP handle = opaque.CreateHandle();
  EXPECT_TRUE(TBitmap::FromHandle(handle).SameContents(opaque));
  EXPECT_TRUE(::DeleteObject(handle)) << "the handle stayed the caller's";
  EXPECT_TRUE(TBitmap::AdoptHandle(reinterpret_cast<HBITMAP>(0x1234)).IsEmpty());

  // Straight alpha, as picture files give it, is multiplied.
  TDibSection straight(2, 1);
  straight.ScanLine(0)[0] = 0x80FF8000;
  straight.ScanLine(0)[1] = 0;
  EXPECT_EQ(TBitmap::FromHandle(straight.GetHandle()).ScanLine(0)[0], 0x80804000u);

  // Two colours, bottom up, width not a multiple of anything.
  const BYTE bits[] = {0x40, 0, 0xA0, 0};
  const TBitmap read = TBitmap::AdoptHandle(::CreateBitmap(3, 2, 1, 1, bits));
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

TEST_F(Gdi, NativeListsShowTheImagesOfTheModel) {
  TBitmap images[] = {Disc(20), Disc(13), TBitmap(20, 20)};
  images[2].Fill(clLime);
  TImageList list(nullptr, 20, 20);
  const HIMAGELIST handle = list.GetHandle();
  std::mt19937 random(7);
  for (int step = 0; step < 150; ++step) {
    const int count = list.GetCount();
    const TBitmap& image = images[random() % 3];
    const int index = count ? static_cast<int>(random() % static_cast<unsigned>(count)) : 0;
    const auto deed = count ? random() % 6 : 0;
    if (deed == 0) list.Add(image);
    if (deed == 1) list.Insert(index, image);
    if (deed == 2) list.Replace(index, image);
    if (deed == 3) list.Delete(index);
    if (deed == 4) list.Overlay(index, static_cast<int>(random() % 15) + 1);
    if (deed == 5 && step % 20 == 0) list.Clear();
    ASSERT_EQ(ImageListCalls().GetImageCount(handle), list.GetCount()) << step;
    // Wine draws no overlays on images with alpha.
    const int overlay = win32::IsWine() ? 0 : static_cast<int>(random() % 16);
    for (int i = 0; i < list.GetCount(); ++i)
      ASSERT_LE(Difference(DrawnByList(list, i, overlay), DrawnByModel(list, i, overlay)), 3)
          << step << ": deed " << deed << " at " << index << " of " << count << ", image " << i;
  }
  list.SetSize(32, 32);
  // Not in the walk: Wine's lists mix up which images have alpha when such a one is deleted.
  list.Add(TBitmap(32, 32, afPremultiplied));
  list.Add(Disc(32));
  EXPECT_EQ(list.GetHandle(), handle) << "controls keep their handle";
  for (const int i : {0, 1})
    EXPECT_LE(Difference(DrawnByList(list, i, 0), DrawnByModel(list, i, 0)), 3) << i;
}

TEST_F(Gdi, AFormerListLivesUntilItsUsersKnowTheNewOne) {
  /// Lets go of the images as a control does it.
  struct TUser : TComponent {
    explicit TUser(TImageList& images) : Images(images) { FreeNotification(&images); }
    void Notification(TComponent* component, TOperation operation) override {
      TComponent::Notification(component, operation);
      if (component == &Images) Seen = ImageListCalls().GetImageCount(Images.GetHandle());
    }
    TImageList& Images;
    int Seen = -1;
  };
  auto list = std::make_unique<TImageList>(nullptr, 16, 16);
  list->Add(Disc(16));
  const HIMAGELIST former = list->GetHandle();
  HIMAGELIST current = former;
  TChangeLink link;
  link.OnChange = [&](TObject*) {
    EXPECT_EQ(ImageListCalls().GetImageCount(former), 1) << "still alive";
    current = list->GetHandle();
  };
  list->RegisterChanges(&link);
  list->SetColorDepth(cd24Bit);
  EXPECT_NE(current, former);
  EXPECT_FALSE(ImageListCalls().Destroy(former)) << "gone when all have heard";
  const TUser user(*list);
  list.reset();
  EXPECT_EQ(user.Seen, 1) << "whole until then";
  EXPECT_FALSE(ImageListCalls().Destroy(current));
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
    const auto paint = [&](TCanvas& canvas) { list.Draw(canvas, 0, 0, info.iIcon); };
    const TBitmap ours = PaintedByUs(image.GetSize(), paint);
    EXPECT_LE(Difference(PaintedByGdi(image.GetSize(), paint), ours), 3);
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
