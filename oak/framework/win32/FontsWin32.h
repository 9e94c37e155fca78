// Fonts of GDI for fonts of ours, and how text formats are said to it.
#pragma once

#include <memory>

#include "oak/framework/Geometry.h"
#include "oak/framework/Graphics.h"
#include "oak/framework/win32/GdiHandles.h"

namespace oak {

/// A font handle that lives as long as anybody holds it.
using TSharedFont = std::shared_ptr<const TOwnedFont>;

/// The GDI font of a font; equal fonts share one. `antialiased` forces grey edges in place of those
/// of the screen. Any thread. May hold a null handle if the system is out of them.
TSharedFont FontHandleOf(const TFont& font, bool antialiased = false);

/// Name, height and style of a font of the system, at a density.
void FontFromLogFont(const LOGFONTW& log, int pixelsPerInch, TFont& font);

/// Flags of DrawTextW, without DT_CALCRECT.
UINT DrawTextFlags(TTextFormat format) noexcept;

/// A memory context of the calling thread for measuring.
HDC MeasuringDC();

/// The rectangle of a text with the font that is selected in `dc`; see TCanvas::MeasureText.
TRect MeasureTextOn(HDC dc, const TRect& rect, TStringView text, TTextFormat format);
TSize TextExtentOn(HDC dc, TStringView text);

}  // namespace oak
