// Sizes of text without a canvas.
#pragma once

#include "oak/framework/Geometry.h"
#include "oak/framework/Graphics.h"

namespace oak {

/// Sizes of a font, in pixels.
struct TFontMetrics {
  int Height = 0;        ///< A line, without the space between lines.
  int Ascent = 0;        ///< From the top of the line to the base line.
  int AverageWidth = 0;  ///< Of a character.
};

/// Sizes of a font. Any thread.
TFontMetrics MetricsOf(const TFont& font);
/// Size of a single line; an empty text has the height of a line. Any thread.
TSize TextExtent(const TFont& font, TStringView text);
inline int TextWidth(const TFont& font, TStringView text) { return TextExtent(font, text).Width; }
inline int TextHeight(const TFont& font) { return MetricsOf(font).Height; }
/// The rectangle that text takes in a rectangle; see TCanvas::MeasureText.
TRect MeasureText(const TFont& font, const TRect& rect, TStringView text, TTextFormat format);
/// Where a text of that size stands in a rectangle.
TRect AlignText(const TRect& rect, TSize size, TTextFormat format);
/// The text, or as much of its beginning as fits `width` pixels together with "...".
TString EllipsizeText(const TFont& font, TStringView text, int width);

}  // namespace oak
