// The graphics system of the headless widget set.
#pragma once

#include "oak/framework/GraphicsSystem.h"

namespace oak {

/// Answers that are the same everywhere and always: light colours, text in cells, no letters on
/// bitmaps. Any thread.
class TGraphicsHeadless : public TGraphicsSystem {
 public:
  TColor GetSystemColor(int index) const override;
  void GetSystemFont(TSystemFont kind, int pixelsPerInch, TFont& font) const override;
  TFontMetrics GetFontMetrics(const TFont& font) const override;
  TSize GetTextExtent(const TFont& font, TStringView text) const override;
  TRect MeasureText(const TFont& font, const TRect& rect, TStringView text,
                    TTextFormat format) const override;
  bool DrawTextOnBitmap(TBitmap& bitmap, const TRect& clip, const TFont& font, const TRect& rect,
                        TStringView text, TTextFormat format) const override;
  void DrawCheckBox(TBitmap& bitmap, const TRect& rect, TCheckBoxImage image, bool enabled,
                    int pixelsPerInch) const override;
  std::shared_ptr<const IImageSource> GetImageSource(HIMAGELIST handle, bool share) const override;
  std::unique_ptr<TNativeImageList> CreateImageList(int width, int height, int bits) const override;
  TBitmap GetIconBitmap(HICON icon) const override;
};

}  // namespace oak
