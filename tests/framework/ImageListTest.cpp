#include "oak/framework/ImageList.h"

#include <gtest/gtest.h>

#include "oak/base/Exceptions.h"

namespace oak::tests {
namespace {

constexpr TColor Colours[] = {clRed, clLime, clBlue, clYellow, clAqua, clWhite};

/// A strip of images of one colour each.
TBitmap ColourStrip(int count, int side = 4) {
  TBitmap strip(count * side, side);
  for (int i = 0; i < count; ++i) strip.FillRect({i * side, 0, (i + 1) * side, side}, Colours[i]);
  return strip;
}

TBitmap SolidImage(TColor color, int side = 4) {
  TBitmap bitmap(side, side);
  bitmap.Fill(color);
  return bitmap;
}

/// The colours of all images, at their upper left corner; clNone where it is transparent.
std::vector<TColor> ColoursOf(const TImageList& list) {
  std::vector<TColor> colours;
  TBitmap image;
  for (int i = 0; i < list.GetCount(); ++i) {
    EXPECT_TRUE(list.GetBitmap(i, image));
    colours.push_back(image.ScanLine(0)[0] >> 24 ? image.GetPixel(0, 0) : clNone);
  }
  return colours;
}

/// Images made when they are asked for, as a shell's icons are.
class TCountingSource : public IImageSource {
 public:
  int GetCount() const override { return 3; }
  TSize GetImageSize() const override { return {8, 8}; }
  bool GetImage(int index, TBitmap& image) const override {
    ++Asked;
    if (index == 1) return false;
    image = TBitmap(8, 8, afPremultiplied);
    image.FillRect({0, 0, 4, 8}, Colours[index]);
    return true;
  }
  int GetOverlayImage(int overlay) const override { return overlay == 2 ? 0 : -1; }
  mutable int Asked = 0;
};

TEST(ImageList, StripsMasksAndColours) {
  TImageList list(nullptr, 4, 4);
  EXPECT_EQ(list.Add(TBitmap()), -1);
  EXPECT_EQ(list.Add(ColourStrip(3)), 0);
  EXPECT_EQ(list.Add(SolidImage(clAqua, 2)), 3);
  EXPECT_EQ(ColoursOf(list), (std::vector<TColor>{clRed, clLime, clBlue, clAqua}));
  TBitmap image;
  ASSERT_TRUE(list.GetBitmap(3, image));
  EXPECT_EQ(image.ScanLine(3)[3], 0u) << "what a small image does not cover is transparent";

  // White in the mask is transparent; the second of two masked images has its own part of it.
  TBitmap mask(8, 4);
  mask.FillRect({5, 0, 8, 4}, clWhite);
  EXPECT_EQ(list.Add(ColourStrip(2), &mask), 4);
  list.GetBitmap(4, image);
  EXPECT_EQ(image.ScanLine(0)[3], 0xFFFF0000u);
  list.GetBitmap(5, image);
  EXPECT_EQ(image.ScanLine(0)[0], 0xFF00FF00u);
  EXPECT_EQ(image.ScanLine(0)[1], 0u);

  TBitmap masked = SolidImage(clRed);
  masked.SetPixel(0, 3, clFuchsia);
  list.ReplaceMasked(0, masked, clDefault);
  list.GetBitmap(0, image);
  EXPECT_EQ(image.ScanLine(3)[0], 0u);
  EXPECT_EQ(image.ScanLine(0)[0], 0xFFFF0000u);
}

TEST(ImageList, OverlaysFollowTheirImages) {
  TImageList list(nullptr, 4, 4);
  list.Add(ColourStrip(4));
  list.Overlay(2, 1);
  list.Overlay(3, 15);
  list.Insert(0, SolidImage(clWhite));
  EXPECT_EQ(list.GetOverlayImage(1), 3);
  list.Delete(3);
  EXPECT_EQ(list.GetOverlayImage(1), -1);
  EXPECT_EQ(list.GetOverlayImage(15), 3);
}

TEST(ImageList, RenderingOverlaysAndStates) {
  TImageList list(nullptr, 2, 1);
  TBitmap corner(2, 1, afPremultiplied);
  corner.SetPixel(0, 0, clBlue);
  list.Add(SolidImage(clRed, 2));
  list.Add(corner);
  list.Overlay(1, 3);
  const TPixel red = PixelOf(clRed);
  const TPixel selected = PixelOf(BlendColors(clRed, clHighlight, 50));
  const TPixel left = PixelOf(BlendColors(clBlue, clHighlight, 50));
  const struct {
    int Index;
    int Overlay;
    TImageState State;
    TPixel Left;
    TPixel Right;
  } cases[] = {
      {0, 0, TImageState::Normal, red, red},
      {0, 3, TImageState::Normal, PixelOf(clBlue), red},
      {0, 0, TImageState::Selected, selected, selected},
      {0, 0, TImageState::Ghosted, 0x80800000, 0x80800000},
      {0, 0, TImageState::Disabled, 0x80262626, 0x80262626},
      {1, 0, TImageState::Selected, left, 0},
  };
  TBitmap image;
  for (const auto& c : cases) {
    ASSERT_TRUE(list.GetRendered(c.Index, c.Overlay, c.State, image));
    for (unsigned shift = 0; shift < 32; shift += 8) {
      EXPECT_NEAR(image.ScanLine(0)[0] >> shift & 0xFF, c.Left >> shift & 0xFF, 1);
      EXPECT_NEAR(image.ScanLine(0)[1] >> shift & 0xFF, c.Right >> shift & 0xFF, 1);
    }
  }
  list.SetBkColor(clLime);
  list.SetDrawingStyle(dsNormal);
  list.GetRendered(1, 0, TImageState::Normal, image);
  EXPECT_EQ(image.ScanLine(0)[1], PixelOf(clLime));
}

TEST(ImageList, LinksHearOfChangesOnce) {
  TImageList list(nullptr, 4, 4);
  TImageList other;
  int told = 0;
  TChangeLink link;
  link.OnChange = [&](TObject* sender) { told += sender == &list ? 1 : 100; };
  list.RegisterChanges(&link);
  list.RegisterChanges(&link);
  list.Add(ColourStrip(3));
  EXPECT_EQ(told, 1);
  list.BeginUpdate();
  list.Add(ColourStrip(3));
  list.Delete(0);
  list.EndUpdate();
  EXPECT_EQ(told, 2);
  other.RegisterChanges(&link);
  list.Clear();
  EXPECT_EQ(told, 2);
  EXPECT_EQ(link.GetImages(), &other);
}

TEST(ImageList, EitherSideOfALinkMayEndFirstAndInAnEvent) {
  auto list = std::make_unique<TImageList>(nullptr, 4, 4);
  int told = 0;
  // A handler that ends its own link and another one.
  auto first = std::make_unique<TChangeLink>();
  auto second = std::make_unique<TChangeLink>();
  first->OnChange = [&](TObject*) {
    ++told;
    second.reset();
    first.reset();
  };
  second->OnChange = [&](TObject*) { told += 10; };
  list->RegisterChanges(first.get());
  list->RegisterChanges(second.get());
  list->Add(ColourStrip(1));

  // A handler that ends the list: nobody is told after that.
  TChangeLink survivor;
  TChangeLink last;
  survivor.OnChange = [&](TObject*) { list.reset(); };
  last.OnChange = [&](TObject*) { told += 100; };
  list->RegisterChanges(&survivor);
  list->RegisterChanges(&last);
  list->OnChange = [&](TObject*) { told += 1000; };
  list->Add(ColourStrip(1));
  EXPECT_EQ(list, nullptr);
  EXPECT_EQ(survivor.GetImages(), nullptr);
  EXPECT_EQ(last.GetImages(), nullptr);
  EXPECT_EQ(told, 1);
}

TEST(ImageList, SourcesAreAskedForWhatIsDrawn) {
  const auto source = std::make_shared<TCountingSource>();
  TImageList list(nullptr, 4, 4);
  list.Add(ColourStrip(1));
  list.SetSource(source);
  EXPECT_EQ(list.GetWidth(), 8);
  EXPECT_EQ(list.GetCount(), 3);
  TBitmap image = SolidImage(clAqua);
  EXPECT_TRUE(list.GetBitmap(2, image));
  EXPECT_EQ(image.GetPixel(0, 0), clBlue);
  EXPECT_FALSE(list.GetBitmap(1, image)) << "what the source can't give";
  EXPECT_EQ(source->Asked, 2);
  EXPECT_TRUE(list.GetRendered(2, 2, TImageState::Normal, image));
  EXPECT_EQ(image.GetPixel(0, 0), clRed) << "with the source's overlay";

  EXPECT_THROW(list.Add(ColourStrip(1)), EInvalidOperation);
  list.SetSource(nullptr);
  EXPECT_EQ(list.GetCount(), 0);
  EXPECT_EQ(list.GetWidth(), 4);
}

TEST(ImageList, OtherSizesForOtherDensities) {
  TImageList list(nullptr, 4, 4);
  list.Add(ColourStrip(3));
  list.Overlay(2, 1);
  list.SetBkColor(clAqua);
  TImageList scaled;
  scaled.AssignScaled(list, 9, 7);
  EXPECT_EQ(scaled.GetWidth(), 9);
  EXPECT_EQ(scaled.GetHeight(), 7);
  EXPECT_EQ(ColoursOf(scaled), ColoursOf(list));
  EXPECT_EQ(scaled.GetOverlayImage(1), 2);
  EXPECT_EQ(scaled.GetBkColor(), clAqua);

  // A source is scaled image by image, and what is not drawn is not asked for.
  const auto source = std::make_shared<TCountingSource>();
  list.SetSource(source);
  scaled.AssignScaled(list, 16, 16);
  EXPECT_EQ(scaled.GetCount(), 3);
  EXPECT_EQ(source->Asked, 0);
  TBitmap image;
  ASSERT_TRUE(scaled.GetBitmap(0, image));
  EXPECT_EQ(image.GetSize(), (TSize{16, 16}));
  EXPECT_EQ(image.GetPixel(5, 15), clRed);
  EXPECT_EQ(source->Asked, 1);
}

}  // namespace
}  // namespace oak::tests
