// Text in cells: what a desktop without letters takes for their size.
#pragma once

#include <vector>

#include "oak/framework/Graphics.h"
#include "oak/framework/TextMetrics.h"

namespace oak {

/// Cells that a character takes: 2 for wide East Asian ones and pictographs, 0 for what combines
/// with the character before it and for controls, else 1.
int CellsOf(char32_t character) noexcept;
/// Cells of a line; halves of broken surrogate pairs take one each.
int CellsOf(TStringView text) noexcept;
/// The beginning of a text that fits a number of cells; a combining mark stays with its base.
TStringView FitCells(TStringView text, int cells) noexcept;

/// At 12 pixels of character height, which is 9 points at 96 pixels per inch, a cell is 7 pixels
/// wide and a line 15 high; other heights are in proportion.
TFontMetrics CellMetrics(const TFont& font) noexcept;
/// Width of a text, rounded once for the whole and not for each character.
TSize CellExtent(const TFont& font, TStringView text) noexcept;

/// Text broken into lines and placed.
struct TTextLayout {
  std::vector<TString>
      Lines;   ///< As they appear: mnemonic marks taken out, ends replaced by "...".
  TRect Rect;  ///< Around the lines where they stand.
};
TTextLayout LayoutText(const TFont& font, const TRect& rect, TStringView text, TTextFormat format);

}  // namespace oak
