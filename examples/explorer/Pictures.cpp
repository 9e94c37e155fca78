#include "Pictures.h"

using namespace oak;

namespace {

constexpr TColor Rgb(int red, int green, int blue) {
  return static_cast<TColor>(red | green << 8 | blue << 16);
}

/// A bitmap that is laid out on a grid of 16 by 16 fields.
class TSketch {
 public:
  explicit TSketch(int pixels) : fBitmap(pixels, pixels, afPremultiplied), fPixels(pixels) {
    fBitmap.Fill(clNone);
  }
  void Block(int left, int top, int right, int bottom, TColor color) {
    fBitmap.FillRect({At(left), At(top), At(right), At(bottom)}, color);
  }
  const TBitmap& Get() const { return fBitmap; }

 private:
  int At(int field) const { return MulDiv(field, fPixels, 16); }
  TBitmap fBitmap;
  int fPixels;
};

TSketch SketchFolder(int pixels) {
  TSketch sketch(pixels);
  sketch.Block(1, 2, 7, 4, Rgb(201, 150, 41));
  sketch.Block(1, 4, 15, 14, Rgb(226, 174, 62));
  sketch.Block(1, 6, 15, 14, Rgb(247, 208, 107));
  return sketch;
}

TSketch SketchFile(int pixels) {
  TSketch sketch(pixels);
  sketch.Block(3, 1, 13, 15, Rgb(142, 154, 168));
  sketch.Block(4, 2, 12, 14, Rgb(255, 255, 255));
  for (int line = 4; line < 13; line += 2) sketch.Block(5, line, 11, line + 1, Rgb(176, 190, 205));
  return sketch;
}

TSketch SketchDrive(int pixels) {
  TSketch sketch(pixels);
  sketch.Block(1, 5, 15, 13, Rgb(128, 138, 150));
  sketch.Block(2, 6, 14, 9, Rgb(214, 220, 227));
  sketch.Block(2, 9, 14, 12, Rgb(176, 184, 194));
  sketch.Block(11, 10, 13, 11, Rgb(70, 190, 90));
  return sketch;
}

TSketch SketchPlace(int pixels) {
  TSketch sketch(pixels);
  sketch.Block(1, 2, 15, 11, Rgb(62, 98, 150));
  sketch.Block(2, 3, 14, 10, Rgb(126, 180, 234));
  sketch.Block(6, 11, 10, 13, Rgb(128, 138, 150));
  sketch.Block(4, 13, 12, 14, Rgb(128, 138, 150));
  return sketch;
}

}  // namespace

void FillPictures(TImageList& images, int pixels) {
  images.BeginUpdate();
  images.SetSize(pixels, pixels);
  images.Clear();
  for (const TSketch& sketch :
       {SketchFolder(pixels), SketchFile(pixels), SketchDrive(pixels), SketchPlace(pixels)})
    images.Add(sketch.Get());
  images.EndUpdate();
}
