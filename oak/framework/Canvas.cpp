#include "oak/framework/Canvas.h"

#include "oak/framework/Bitmap.h"
#include "oak/framework/ImageList.h"

namespace oak {

TCanvas::~TCanvas() = default;

void TCanvas::LineTo(int x, int y) {
  const TPoint from = fPenPos;
  fPenPos = {x, y};
  DrawLine(from, fPenPos);
}

void TCanvas::DrawImage(const TImageList& images, int index, int x, int y, int overlay,
                        TImageState state) {
  TBitmap image;
  if (images.GetRendered(index, overlay, state, image)) Draw(x, y, image);
}

TSize TCanvas::TextExtent(TStringView text) const { return oak::TextExtent(fFont, text); }

TRect TCanvas::MeasureText(const TRect& rect, TStringView text, TTextFormat format) const {
  return oak::MeasureText(fFont, rect, text, format);
}

void TCanvas::TextRect(TRect& rect, TStringView text, TTextFormat format) {
  if (format.Contains(tfCalcRect))
    rect = MeasureText(rect, text, format);
  else
    DrawText(rect, text, format);
}

}  // namespace oak
