#include "oak/framework/win32/GraphicsWin32.h"

#include <uxtheme.h>
#include <vssym32.h>

#include <algorithm>

#include "oak/framework/BitmapCanvas.h"
#include "oak/framework/BitmapPixels.h"
#include "oak/framework/ImageList.h"
#include "oak/framework/win32/DibWin32.h"
#include "oak/framework/win32/FontsWin32.h"
#include "oak/framework/win32/ImageListWin32.h"
#include "oak/framework/win32/System.h"

namespace oak {
namespace {

template <class Function>
Function UserFunction(const char* name) {
  return reinterpret_cast<Function>(
      reinterpret_cast<void*>(::GetProcAddress(::GetModuleHandleW(L"user32"), name)));
}

/// SystemParametersInfoW at a density; older systems give the values of the main screen.
bool ReadParameter(UINT action, UINT size, void* value, int pixelsPerInch, int* valueDensity) {
  using TForDpi = BOOL(WINAPI*)(UINT, UINT, PVOID, UINT, UINT);
  static const auto forDpi = UserFunction<TForDpi>("SystemParametersInfoForDpi");
  if (forDpi && forDpi(action, size, value, 0, static_cast<UINT>(pixelsPerInch))) {
    *valueDensity = pixelsPerInch;
    return true;
  }
  *valueDensity = ::GetDeviceCaps(MeasuringDC(), LOGPIXELSY);
  return ::SystemParametersInfoW(action, size, value, 0) != FALSE;
}

/// Draws one of the system's check boxes in a rectangle.
class TCheckBoxDrawing {
 public:
  TCheckBoxDrawing(TCheckBoxImage image, bool enabled) : fImage(image), fEnabled(enabled) {
    const win32::TCommonControlsScope version6;
    if (::IsAppThemed()) fTheme = ::OpenThemeData(nullptr, L"BUTTON");
  }
  ~TCheckBoxDrawing() {
    if (fTheme) ::CloseThemeData(fTheme);
  }
  TCheckBoxDrawing(const TCheckBoxDrawing&) = delete;
  TCheckBoxDrawing& operator=(const TCheckBoxDrawing&) = delete;

  void operator()(HDC dc, TSize size) const {
    RECT rect = TRect({}, size);
    if (fTheme &&
        SUCCEEDED(::DrawThemeBackground(fTheme, dc, BP_CHECKBOX, ThemeState(), &rect, nullptr)))
      return;
    UINT state = DFCS_BUTTONCHECK | DFCS_FLAT;
    if (fImage == TCheckBoxImage::Checked) state |= DFCS_CHECKED;
    if (fImage == TCheckBoxImage::Grayed) state = DFCS_BUTTON3STATE | DFCS_CHECKED | DFCS_FLAT;
    ::DrawFrameControl(dc, &rect, DFC_BUTTON, fEnabled ? state : state | DFCS_INACTIVE);
  }

 private:
  int ThemeState() const noexcept {
    const int first = fImage == TCheckBoxImage::Checked  ? CBS_CHECKEDNORMAL
                      : fImage == TCheckBoxImage::Grayed ? CBS_MIXEDNORMAL
                                                         : CBS_UNCHECKEDNORMAL;
    return fEnabled ? first : first + (CBS_UNCHECKEDDISABLED - CBS_UNCHECKEDNORMAL);
  }

  TCheckBoxImage fImage;
  bool fEnabled;
  HTHEME fTheme = nullptr;
};

class TGraphicsWin32 : public TGraphicsSystem {
 public:
  TColor GetSystemColor(int index) const override { return ::GetSysColor(index); }
  void GetSystemFont(TSystemFont kind, int pixelsPerInch, TFont& font) const override;
  TFontMetrics GetFontMetrics(const TFont& font) const override;
  TSize GetTextExtent(const TFont& font, TStringView text) const override;
  TRect MeasureText(const TFont& font, const TRect& rect, TStringView text,
                    TTextFormat format) const override;
  bool DrawTextOnBitmap(TBitmap& bitmap, const TRect& clip, const TFont& font, const TRect& rect,
                        TStringView text, TTextFormat format) const override;
  void DrawCheckBox(TBitmap& bitmap, const TRect& rect, TCheckBoxImage image, bool enabled,
                    int pixelsPerInch) const override;
  std::shared_ptr<const IImageSource> GetImageSource(HIMAGELIST handle, bool share) const override {
    return MakeImageSource(handle, share);
  }
  std::unique_ptr<TNativeImageList> CreateImageList(int width, int height,
                                                    int bits) const override {
    return MakeNativeImageList(width, height, bits);
  }
  TBitmap GetIconBitmap(HICON icon) const override { return BitmapOfIcon(icon); }
};

void TGraphicsWin32::GetSystemFont(TSystemFont kind, int pixelsPerInch, TFont& font) const {
  LOGFONTW log{};
  NONCLIENTMETRICSW metrics{};
  metrics.cbSize = sizeof metrics;
  int density = pixelsPerInch;
  if (kind == TSystemFont::IconTitle) {
    if (!ReadParameter(SPI_GETICONTITLELOGFONT, sizeof log, &log, pixelsPerInch, &density)) return;
  } else {
    if (!ReadParameter(SPI_GETNONCLIENTMETRICS, sizeof metrics, &metrics, pixelsPerInch, &density))
      return;
    log = kind == TSystemFont::Menu      ? metrics.lfMenuFont
          : kind == TSystemFont::Caption ? metrics.lfCaptionFont
          : kind == TSystemFont::Status  ? metrics.lfStatusFont
                                         : metrics.lfMessageFont;
  }
  TFont result;
  FontFromLogFont(log, density, result);
  result.ChangeScale(pixelsPerInch);
  font = result;
}

TFontMetrics TGraphicsWin32::GetFontMetrics(const TFont& font) const {
  const TSharedFont handle = FontHandleOf(font);
  const TGdiSelection selection(MeasuringDC(), handle->Get());
  TEXTMETRICW metrics{};
  ::GetTextMetricsW(MeasuringDC(), &metrics);
  return {static_cast<int>(metrics.tmHeight), static_cast<int>(metrics.tmAscent),
          static_cast<int>(metrics.tmAveCharWidth)};
}

TSize TGraphicsWin32::GetTextExtent(const TFont& font, TStringView text) const {
  const TSharedFont handle = FontHandleOf(font);
  const TGdiSelection selection(MeasuringDC(), handle->Get());
  return TextExtentOn(MeasuringDC(), text);
}

TRect TGraphicsWin32::MeasureText(const TFont& font, const TRect& rect, TStringView text,
                                  TTextFormat format) const {
  const TSharedFont handle = FontHandleOf(font);
  const TGdiSelection selection(MeasuringDC(), handle->Get());
  return MeasureTextOn(MeasuringDC(), rect, text, format);
}

bool TGraphicsWin32::DrawTextOnBitmap(TBitmap& bitmap, const TRect& clip, const TFont& font,
                                      const TRect& rect, TStringView text,
                                      TTextFormat format) const {
  const TRect part = clip.Intersected(bitmap.GetRect());
  if (part.IsEmpty() || text.empty()) return true;
  // White letters on black: how bright a pixel is tells how much of it the letter covers.
  TDibSection letters(part.Width(), part.Height());
  const TSharedFont handle = FontHandleOf(font, true);
  const TGdiSelection selection(letters.GetDC(), handle->Get());
  ::SetBkMode(letters.GetDC(), TRANSPARENT);
  ::SetTextColor(letters.GetDC(), RGB(255, 255, 255));
  RECT place = rect.Moved(-part.Left, -part.Top);
  ::DrawTextW(letters.GetDC(), reinterpret_cast<LPCWSTR>(text.data()),
              static_cast<int>(text.size()), &place, DrawTextFlags(format));
  const TPixel ink = PixelOf(font.GetColor());
  for (int y = 0; y < part.Height(); ++y) {
    const TPixel* cover = letters.ScanLine(y);
    TPixel* row = bitmap.ScanLine(part.Top + y) + part.Left;
    for (int x = 0; x < part.Width(); ++x)
      row[x] = BlendPixel(row[x], ScalePixel(ink, cover[x] >> 8 & 0xFF));
  }
  return true;
}

void TGraphicsWin32::DrawCheckBox(TBitmap& bitmap, const TRect& rect, TCheckBoxImage image,
                                  bool enabled, int pixelsPerInch) const {
  const int side = std::min({MulDiv(13, pixelsPerInch, 96), rect.Width(), rect.Height()});
  if (side < 5) return;
  const TSize size{side, side};
  const TCheckBoxDrawing draw(image, enabled);
  const TBitmap box = CaptureWithAlpha(size, [&](HDC dc) { draw(dc, size); });
  bitmap.Draw(rect.Left + (rect.Width() - side) / 2, rect.Top + (rect.Height() - side) / 2, box);
}

}  // namespace

TGraphicsSystem& Win32GraphicsSystem() noexcept {
  static TGraphicsWin32 system;
  return system;
}

}  // namespace oak
