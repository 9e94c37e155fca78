#include "oak/framework/ImageList.h"

#include <gtest/gtest.h>

#include <random>

#include "oak/base/Exceptions.h"
#include "oak/framework/GraphicsSystem.h"
#include "oak/framework/headless/GraphicsHeadless.h"

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

/// What a system's list would hold, and how many such lists live.
struct TFakeNative : TNativeImageList {
  explicit TFakeNative(int& alive) : Alive(alive) { ++Alive; }
  ~TFakeNative() override { --Alive; }
  HIMAGELIST GetHandle() const override {
    return reinterpret_cast<HIMAGELIST>(const_cast<TFakeNative*>(this));
  }
  static const TFakeNative& Of(HIMAGELIST handle) {
    return *reinterpret_cast<const TFakeNative*>(handle);
  }
  void Add(const TBitmap& image) override { Colours.push_back(ColourOf(image)); }
  void Replace(int index, const TBitmap& image) override {
    Colours.at(static_cast<std::size_t>(index)) = ColourOf(image);
  }
  void Delete(int index) override { Colours.erase(Colours.begin() + index); }
  void Clear() override { Colours.clear(); }
  int GetCount() const override { return static_cast<int>(Colours.size()); }
  void SetSize(int, int) override { Colours.clear(); }
  void SetOverlay(int imageIndex, int overlay) override {
    Overlays.at(static_cast<std::size_t>(overlay)) = imageIndex;
  }
  void SetBkColor(TColor color) override { BkColor = color; }
  static TColor ColourOf(const TBitmap& image) {
    return image.ScanLine(0)[0] >> 24 ? image.GetPixel(0, 0) : clNone;
  }

  int& Alive;
  std::vector<TColor> Colours;
  std::vector<int> Overlays = std::vector<int>(16, -1);
  TColor BkColor = clNone;
};

/// A graphics system whose lists can be looked into.
class TFakeGraphics : public TGraphicsHeadless {
 public:
  TFakeGraphics() : fFormer(SetGraphicsSystem(this)) {}
  ~TFakeGraphics() override { SetGraphicsSystem(fFormer); }
  std::unique_ptr<TNativeImageList> CreateImageList(int, int, int) const override {
    return std::make_unique<TFakeNative>(Alive);
  }
  mutable int Alive = 0;

 private:
  TGraphicsSystem* fFormer;
};

/// Images made when they are asked for, as a shell's icons are.
class TCountingSource : public IImageSource {
 public:
  int GetCount() const override { return Count; }
  TSize GetImageSize() const override { return {8, 8}; }
  bool GetImage(int index, TBitmap& image) const override {
    ++Asked;
    if (index == 1) return false;
    image = TBitmap(8, 8, afPremultiplied);
    image.FillRect({0, 0, 4, 8}, Colours[index]);
    return true;
  }
  int GetOverlayImage(int overlay) const override { return overlay == 2 ? 0 : -1; }
  int Count = 3;
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
  EXPECT_EQ(image.GetSize(), (TSize{4, 4}));
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
  list.SetMasked(false);
  list.Replace(5, SolidImage(clLime), &mask);
  list.GetBitmap(5, image);
  EXPECT_EQ(image.ScanLine(0)[1], 0xFF00FF00u) << "masks are not heeded";
}

TEST(ImageList, WrongIndexesRaiseAndChangeNothing) {
  TImageList list(nullptr, 4, 4);
  list.Add(ColourStrip(2));
  const TBitmap image = SolidImage(clBlue);
  for (const int index : {-1, 2, INT32_MAX}) {
    EXPECT_THROW(list.Replace(index, image), EArgumentException);
    EXPECT_THROW(list.Delete(index), EArgumentException);
  }
  EXPECT_THROW(list.Insert(-1, image), EArgumentException);
  EXPECT_THROW(list.Insert(3, image), EArgumentException);
  EXPECT_THROW(list.Overlay(2, 1), EArgumentException);
  EXPECT_THROW(list.Overlay(0, 0), EArgumentException);
  EXPECT_THROW(list.Overlay(0, 16), EArgumentException);
  EXPECT_THROW(list.SetSize(0, 4), EInvalidArgument);
  EXPECT_THROW(list.SetSize(4, 1025), EInvalidArgument);
  EXPECT_EQ(ColoursOf(list), (std::vector<TColor>{clRed, clLime}));
  TBitmap kept = SolidImage(clAqua);
  EXPECT_FALSE(list.GetBitmap(2, kept));
  EXPECT_FALSE(list.GetRendered(-1, 0, TImageState::Normal, kept));
  EXPECT_TRUE(kept.SameContents(SolidImage(clAqua)));
}

TEST(ImageList, OverlaysFollowTheirImages) {
  TImageList list(nullptr, 4, 4);
  list.Add(ColourStrip(4));
  list.Overlay(2, 1);
  list.Overlay(3, 15);
  list.Insert(0, SolidImage(clWhite));
  EXPECT_EQ(list.GetOverlayImage(1), 3);
  list.Delete(1);
  EXPECT_EQ(list.GetOverlayImage(1), 2);
  list.Delete(2);
  EXPECT_EQ(list.GetOverlayImage(1), -1);
  EXPECT_EQ(list.GetOverlayImage(15), 2);
  EXPECT_EQ(list.GetOverlayImage(0), -1);
  EXPECT_EQ(list.GetOverlayImage(16), -1);
  list.SetSize(5, 5);
  EXPECT_EQ(list.GetCount(), 0);
  EXPECT_EQ(list.GetOverlayImage(15), -1);
}

TEST(ImageList, RenderingOverlaysAndStates) {
  const TFakeGraphics graphics;
  TImageList list(nullptr, 2, 1);
  TBitmap corner(2, 1, afPremultiplied);
  corner.SetPixel(0, 0, clBlue);
  list.Add(SolidImage(clRed, 2));
  list.Add(corner);
  list.Overlay(1, 3);
  const TPixel red = PixelOf(clRed);
  const TPixel selected = PixelOf(BlendColors(clRed, clHighlight, 50));
  const struct {
    int Index;
    int Overlay;
    TImageState State;
    TPixel Left;
    TPixel Right;
  } cases[] = {
      {0, 0, TImageState::Normal, red, red},
      {0, 3, TImageState::Normal, PixelOf(clBlue), red},
      {0, 4, TImageState::Normal, red, red},
      {0, 0, TImageState::Selected, selected, selected},
      {0, 0, TImageState::Ghosted, 0x80800000, 0x80800000},
      {0, 0, TImageState::Disabled, 0x80262626, 0x80262626},
      {1, 0, TImageState::Selected, PixelOf(BlendColors(clBlue, clHighlight, 50)), 0},
      {1, 0, TImageState::Ghosted, 0x80000080, 0},
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
  list.GetRendered(1, 0, TImageState::Normal, image);
  EXPECT_EQ(image.ScanLine(0)[1], 0u) << "a background needs the style for it";
  list.SetDrawingStyle(dsNormal);
  list.GetRendered(1, 0, TImageState::Normal, image);
  EXPECT_EQ(image.ScanLine(0)[1], PixelOf(clLime));
}

TEST(ImageList, LinksHearOfChangesOnce) {
  TImageList list(nullptr, 4, 4);
  int told = 0;
  TChangeLink link;
  link.OnChange = [&](TObject* sender) {
    EXPECT_EQ(sender, &list);
    ++told;
  };
  list.RegisterChanges(&link);
  list.RegisterChanges(&link);
  list.Add(ColourStrip(3));
  EXPECT_EQ(told, 1);
  list.BeginUpdate();
  list.BeginUpdate();
  list.Add(ColourStrip(3));
  list.Delete(0);
  list.EndUpdate();
  EXPECT_EQ(told, 1);
  list.EndUpdate();
  EXPECT_EQ(told, 2);
  list.BeginUpdate();
  list.EndUpdate();
  list.EndUpdate();
  list.SetBkColor(clNone);
  EXPECT_EQ(told, 2) << "nothing has changed";

  TImageList other;
  other.RegisterChanges(&link);
  list.Clear();
  EXPECT_EQ(told, 2);
  EXPECT_EQ(link.GetImages(), &other);
  list.UnRegisterChanges(&link);
  EXPECT_EQ(link.GetImages(), &other);
}

TEST(ImageList, EitherSideOfALinkMayEndFirstAndInAnEvent) {
  auto list = std::make_unique<TImageList>(nullptr, 4, 4);
  TChangeLink survivor;
  list->RegisterChanges(&survivor);
  {
    TChangeLink link;
    list->RegisterChanges(&link);
  }
  list->Add(ColourStrip(1));

  // A handler that ends its own link and another one.
  int told = 0;
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
  EXPECT_EQ(told, 1);

  // A handler that ends the list: nobody is told after that.
  survivor.OnChange = [&](TObject*) { list.reset(); };
  TChangeLink last;
  last.OnChange = [&](TObject*) { told += 100; };
  list->RegisterChanges(&last);
  list->OnChange = [&](TObject*) { told += 1000; };
  list->Add(ColourStrip(1));
  EXPECT_EQ(list, nullptr);
  EXPECT_EQ(survivor.GetImages(), nullptr);
  EXPECT_EQ(last.GetImages(), nullptr);
  EXPECT_EQ(told, 1);
}

TEST(ImageList, WhoeverShowsAListLetsGoWhileItIsWhole) {
  /// As a control does it.
  class TUser : public TComponent {
   public:
    explicit TUser(TImageList& images) : fImages(&images) { FreeNotification(&images); }
    std::vector<TColor> Seen;

   protected:
    void Notification(TComponent* component, TOperation operation) override {
      TComponent::Notification(component, operation);
      if (operation != opRemove || component != fImages) return;
      Seen = TFakeNative::Of(fImages->GetHandle()).Colours;
      fImages = nullptr;
    }

   private:
    TImageList* fImages;
  };
  TFakeGraphics graphics;
  auto list = std::make_unique<TImageList>(nullptr, 4, 4);
  list->Add(ColourStrip(2));
  list->GetHandle();
  TUser user(*list);
  list.reset();
  EXPECT_EQ(user.Seen, (std::vector<TColor>{clRed, clLime}));
  EXPECT_EQ(graphics.Alive, 0);
}

TEST(ImageList, TheSystemsListIsKeptInStep) {
  TFakeGraphics graphics;
  TImageList list(nullptr, 4, 4);
  list.Add(ColourStrip(2));
  EXPECT_FALSE(list.HandleAllocated());
  EXPECT_EQ(graphics.Alive, 0) << "made when it is asked for";
  const TFakeNative& native = TFakeNative::Of(list.GetHandle());
  std::mt19937 random(7);
  for (int step = 0; step < 500; ++step) {
    const int count = list.GetCount();
    const TBitmap image = SolidImage(Colours[random() % 6]);
    const int index = count ? static_cast<int>(random() % static_cast<unsigned>(count)) : 0;
    switch (count ? random() % 6 : 0) {
      case 0:
        list.Add(ColourStrip(static_cast<int>(random() % 3) + 1));
        break;
      case 1:
        list.Insert(index, image);
        break;
      case 2:
        list.Replace(index, image);
        break;
      case 3:
        list.Delete(index);
        break;
      case 4:
        list.Overlay(index, static_cast<int>(random() % 15) + 1);
        break;
      default:
        if (step % 20 == 0) list.Clear();
    }
    ASSERT_EQ(native.Colours, ColoursOf(list)) << step;
    for (int overlay = 1; overlay <= 15; ++overlay) {
      const int image = list.GetOverlayImage(overlay);
      const int mirrored = native.Overlays[static_cast<std::size_t>(overlay)];
      ASSERT_EQ(image >= 0 ? mirrored : -1, image) << step;
    }
  }
  EXPECT_EQ(&native, &TFakeNative::Of(list.GetHandle())) << "the handle stayed the same";
  list.SetBkColor(clAqua);
  EXPECT_EQ(native.BkColor, clAqua);
}

TEST(ImageList, AFormerHandleLivesUntilItsUsersKnowTheNewOne) {
  TFakeGraphics graphics;
  TImageList list(nullptr, 4, 4);
  list.Add(ColourStrip(2));
  const HIMAGELIST former = list.GetHandle();
  TChangeLink link;
  HIMAGELIST current = former;
  link.OnChange = [&](TObject*) {
    EXPECT_EQ(TFakeNative::Of(former).Colours.size(), 2u) << "still alive";
    current = list.GetHandle();
    EXPECT_EQ(graphics.Alive, 2);
  };
  list.RegisterChanges(&link);
  list.BeginUpdate();
  list.SetColorDepth(cd24Bit);
  EXPECT_EQ(graphics.Alive, 1);
  list.EndUpdate();
  EXPECT_NE(current, former);
  EXPECT_EQ(graphics.Alive, 1) << "and gone when all have heard";
}

TEST(ImageList, SourcesAreAskedForWhatIsDrawn) {
  const auto source = std::make_shared<TCountingSource>();
  TImageList list(nullptr, 4, 4);
  list.Add(ColourStrip(1));
  list.SetSource(source);
  EXPECT_EQ(list.GetWidth(), 8);
  EXPECT_EQ(list.GetCount(), 3);
  EXPECT_EQ(source->Asked, 0);
  TBitmap image = SolidImage(clAqua);
  EXPECT_TRUE(list.GetBitmap(2, image));
  EXPECT_EQ(image.GetPixel(0, 0), clBlue);
  EXPECT_FALSE(list.GetBitmap(1, image)) << "what the source can't give";
  EXPECT_FALSE(list.GetBitmap(3, image));
  EXPECT_EQ(source->Asked, 2);
  EXPECT_TRUE(list.GetRendered(2, 2, TImageState::Normal, image));
  EXPECT_EQ(image.GetPixel(0, 0), clRed) << "with the source's overlay";

  EXPECT_THROW(list.Add(ColourStrip(1)), EInvalidOperation);
  EXPECT_THROW(list.Delete(0), EInvalidOperation);
  EXPECT_THROW(list.Clear(), EInvalidOperation);
  EXPECT_THROW(list.SetSize(4, 4), EInvalidOperation);
  EXPECT_EQ(list.GetCount(), 3);
  list.SetSource(nullptr);
  EXPECT_EQ(list.GetCount(), 0);
  EXPECT_EQ(list.GetWidth(), 4);
  list.Add(ColourStrip(1));
}

TEST(ImageList, AGrowingSourceReachesTheSystemsList) {
  const TFakeGraphics graphics;
  const auto source = std::make_shared<TCountingSource>();
  TImageList list;
  list.SetSource(source);
  const TFakeNative& native = TFakeNative::Of(list.GetHandle());
  EXPECT_EQ(native.Colours, (std::vector<TColor>{clRed, clNone, clBlue}));
  EXPECT_EQ(native.Overlays[2], 0);
  source->Count = 5;
  list.GetHandle();
  EXPECT_EQ(native.Colours.size(), 5u);
  EXPECT_EQ(native.Colours[4], clAqua);
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
  EXPECT_THROW(scaled.AssignScaled(list, 0, 7), EInvalidArgument);
  EXPECT_EQ(scaled.GetWidth(), 9);
  list.AssignScaled(list, 2, 2);
  EXPECT_EQ(ColoursOf(list), ColoursOf(scaled));
  list.Assign(&list);
  EXPECT_EQ(list.GetCount(), 3);

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
  EXPECT_EQ(image.ScanLine(0)[12], 0u);
  EXPECT_EQ(source->Asked, 1);
  TBitmap bitmap;
  EXPECT_THROW(scaled.Assign(&bitmap), EConvertError);
}

}  // namespace
}  // namespace oak::tests
