#include "oak/framework/TextMetrics.h"

#include "oak/framework/GraphicsSystem.h"

namespace oak {
namespace {

/// The end of a prefix must not tear a surrogate pair apart.
std::size_t WholeCharacters(TStringView text, std::size_t length) {
  const bool isTorn = length > 0 && length < text.size() && (text[length - 1] & 0xFC00) == 0xD800;
  return isTorn ? length - 1 : length;
}

}  // namespace

TFontMetrics MetricsOf(const TFont& font) { return GraphicsSystem().GetFontMetrics(font); }

TSize TextExtent(const TFont& font, TStringView text) {
  return GraphicsSystem().GetTextExtent(font, text);
}

TRect MeasureText(const TFont& font, const TRect& rect, TStringView text, TTextFormat format) {
  return GraphicsSystem().MeasureText(font, rect, text, format);
}

TRect AlignText(const TRect& rect, TSize size, TTextFormat format) {
  TPoint at = rect.TopLeft();
  if (format.Contains(tfRight)) at.X = rect.Right - size.Width;
  if (format.Contains(tfCenter)) at.X = rect.Left + (rect.Width() - size.Width) / 2;
  if (format.Contains(tfSingleLine)) {
    if (format.Contains(tfBottom)) at.Y = rect.Bottom - size.Height;
    if (format.Contains(tfVerticalCenter)) at.Y = rect.Top + (rect.Height() - size.Height) / 2;
  }
  return {at, size};
}

TString EllipsizeText(const TFont& font, TStringView text, int width) {
  if (TextWidth(font, text) <= width) return TString(text);
  const TStringView dots = u"...";
  const int room = width - TextWidth(font, dots);
  std::size_t fits = 0;
  std::size_t tooLong = text.size();
  while (fits + 1 < tooLong) {
    const std::size_t middle = fits + (tooLong - fits) / 2;
    if (TextWidth(font, text.substr(0, middle)) <= room)
      fits = middle;
    else
      tooLong = middle;
  }
  return TString(text.substr(0, WholeCharacters(text, fits))).append(dots);
}

}  // namespace oak
