#include "oak/framework/headless/GraphicsHeadless.h"

#include <algorithm>
#include <iterator>

#include "oak/framework/Bitmap.h"
#include "oak/framework/BitmapCanvas.h"
#include "oak/framework/ImageList.h"
#include "oak/framework/headless/TextLayout.h"

namespace oak {
namespace {

// In the order of the platform's indexes, those of a plain light desktop.
constexpr TColor LightColors[] = {
    RgbColor(200, 200, 200),  // scroll bar
    RgbColor(0, 78, 152),     // desktop
    RgbColor(153, 180, 209),  // active caption
    RgbColor(191, 205, 219),  // inactive caption
    RgbColor(240, 240, 240),  // menu
    RgbColor(255, 255, 255),  // window
    RgbColor(100, 100, 100),  // window frame
    RgbColor(0, 0, 0),        // menu text
    RgbColor(0, 0, 0),        // window text
    RgbColor(0, 0, 0),        // caption text
    RgbColor(180, 180, 180),  // active border
    RgbColor(244, 247, 252),  // inactive border
    RgbColor(171, 171, 171),  // application workspace
    RgbColor(0, 120, 215),    // highlight
    RgbColor(255, 255, 255),  // highlight text
    RgbColor(240, 240, 240),  // button face
    RgbColor(160, 160, 160),  // button shadow
    RgbColor(109, 109, 109),  // gray text
    RgbColor(0, 0, 0),        // button text
    RgbColor(0, 0, 0),        // inactive caption text
    RgbColor(255, 255, 255),  // button highlight
    RgbColor(105, 105, 105),  // dark shadow
    RgbColor(227, 227, 227),  // light edge
    RgbColor(0, 0, 0),        // info text
    RgbColor(255, 255, 225),  // info background
    RgbColor(0, 0, 0),        // unused
    RgbColor(0, 102, 204),    // hot light
    RgbColor(185, 209, 234),  // gradient of the active caption
    RgbColor(215, 228, 242),  // gradient of the inactive caption
    RgbColor(0, 120, 215),    // menu highlight
    RgbColor(240, 240, 240),  // menu bar
};

}  // namespace

TColor TGraphicsHeadless::GetSystemColor(int index) const {
  const bool isKnown = index >= 0 && index < static_cast<int>(std::size(LightColors));
  return isKnown ? LightColors[index] : clBlack;
}

void TGraphicsHeadless::GetSystemFont(TSystemFont, int pixelsPerInch, TFont& font) const {
  TFont result;
  result.ChangeScale(pixelsPerInch);
  font = result;
}

TFontMetrics TGraphicsHeadless::GetFontMetrics(const TFont& font) const {
  return CellMetrics(font);
}

TSize TGraphicsHeadless::GetTextExtent(const TFont& font, TStringView text) const {
  return CellExtent(font, text);
}

TRect TGraphicsHeadless::MeasureText(const TFont& font, const TRect& rect, TStringView text,
                                     TTextFormat format) const {
  return {rect.TopLeft(), LayoutText(font, rect, text, format + tfCalcRect).Rect.Size()};
}

bool TGraphicsHeadless::DrawTextOnBitmap(TBitmap&, const TRect&, const TFont&, const TRect&,
                                         TStringView, TTextFormat) const {
  return false;
}

void TGraphicsHeadless::DrawCheckBox(TBitmap& bitmap, const TRect& rect, TCheckBoxImage image,
                                     bool enabled, int pixelsPerInch) const {
  DrawPlainCheckBox(bitmap, rect, image, enabled, pixelsPerInch);
}

std::shared_ptr<const IImageSource> TGraphicsHeadless::GetImageSource(HIMAGELIST, bool) const {
  return nullptr;
}

std::unique_ptr<TNativeImageList> TGraphicsHeadless::CreateImageList(int, int, int) const {
  return nullptr;
}

TBitmap TGraphicsHeadless::GetIconBitmap(HICON) const { return {}; }

TGraphicsSystem& HeadlessGraphicsSystem() noexcept {
  static TGraphicsHeadless system;
  return system;
}

}  // namespace oak
