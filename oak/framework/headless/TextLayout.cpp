#include "oak/framework/headless/TextLayout.h"

#include <algorithm>
#include <iterator>

#include "oak/framework/Geometry.h"

namespace oak {
namespace {

struct TCharacterRange {
  char32_t First;
  char32_t Last;
};

// What combines with the character before it, and marks without a width. Sorted.
constexpr TCharacterRange ZeroWidth[] = {
    {0x0000, 0x001F},   {0x007F, 0x009F}, {0x0300, 0x036F}, {0x0483, 0x0489}, {0x0591, 0x05BD},
    {0x05BF, 0x05BF},   {0x05C1, 0x05C2}, {0x05C4, 0x05C5}, {0x0610, 0x061A}, {0x064B, 0x065F},
    {0x0670, 0x0670},   {0x06D6, 0x06DC}, {0x06DF, 0x06E4}, {0x06E7, 0x06E8}, {0x06EA, 0x06ED},
    {0x0900, 0x0902},   {0x093C, 0x093C}, {0x0941, 0x0948}, {0x094D, 0x094D}, {0x0E31, 0x0E31},
    {0x0E34, 0x0E3A},   {0x0E47, 0x0E4E}, {0x1AB0, 0x1AFF}, {0x1DC0, 0x1DFF}, {0x200B, 0x200F},
    {0x202A, 0x202E},   {0x2060, 0x2064}, {0x2066, 0x206F}, {0x20D0, 0x20F0}, {0x302A, 0x302D},
    {0x3099, 0x309A},   {0xFE00, 0xFE0F}, {0xFE20, 0xFE2F}, {0xFEFF, 0xFEFF}, {0x1F3FB, 0x1F3FF},
    {0xE0001, 0xE01EF},
};

// East Asian wide and full-width characters, and pictographs. Sorted.
constexpr TCharacterRange DoubleWidth[] = {
    {0x1100, 0x115F},   {0x231A, 0x231B},   {0x2329, 0x232A},   {0x23E9, 0x23EC},
    {0x2614, 0x2615},   {0x26AA, 0x26AB},   {0x2E80, 0x303E},   {0x3041, 0x33FF},
    {0x3400, 0x4DBF},   {0x4E00, 0x9FFF},   {0xA000, 0xA4CF},   {0xA960, 0xA97F},
    {0xAC00, 0xD7A3},   {0xF900, 0xFAFF},   {0xFE30, 0xFE6F},   {0xFF01, 0xFF60},
    {0xFFE0, 0xFFE6},   {0x17000, 0x18AFF}, {0x1B000, 0x1B2FF}, {0x1F200, 0x1F265},
    {0x1F300, 0x1F64F}, {0x1F680, 0x1F6FF}, {0x1F900, 0x1FAFF}, {0x20000, 0x3FFFD},
};

template <std::size_t N>
bool IsIn(const TCharacterRange (&ranges)[N], char32_t c) noexcept {
  const auto* next =
      std::upper_bound(std::begin(ranges), std::end(ranges), c,
                       [](char32_t value, const TCharacterRange& r) { return value < r.First; });
  return next != std::begin(ranges) && c <= std::prev(next)->Last;
}

/// The character at `position`, which moves behind it.
char32_t NextCharacter(TStringView text, std::size_t& position) noexcept {
  const char16_t first = text[position++];
  if ((first & 0xFC00) != 0xD800 || position == text.size()) return first;
  const char16_t second = text[position];
  if ((second & 0xFC00) != 0xDC00) return first;
  ++position;
  return 0x10000u + ((static_cast<char32_t>(first) & 0x3FF) << 10 | (second & 0x3FFu));
}

TString WithoutPrefixMarks(TStringView text) {
  TString result;
  for (std::size_t i = 0; i < text.size(); ++i) {
    if (text[i] == u'&' && i + 1 < text.size())
      ++i;
    else if (text[i] == u'&')
      break;
    result += text[i];
  }
  return result;
}

/// The text's own lines, or one with blanks in place of line ends.
std::vector<TString> SplitLines(TStringView text, bool singleLine) {
  std::vector<TString> lines(1);
  for (std::size_t i = 0; i < text.size(); ++i) {
    const bool isEnd = text[i] == u'\r' || text[i] == u'\n';
    if (text[i] == u'\r' && i + 1 < text.size() && text[i + 1] == u'\n') ++i;
    if (!isEnd)
      lines.back() += text[i];
    else if (singleLine)
      lines.back() += u' ';
    else
      lines.emplace_back();
  }
  return lines;
}

/// Breaks a line at blanks; a word that is wider than the room keeps a line for itself.
void WrapLine(const TFont& font, TStringView line, int width, std::vector<TString>& lines) {
  std::size_t start = 0;
  std::size_t end = 0;  // of what fits
  for (std::size_t at = 0; at <= line.size(); ++at) {
    if (at < line.size() && line[at] != u' ') continue;
    const bool fits = CellExtent(font, line.substr(start, at - start)).Width <= width;
    if (!fits && end > start) {
      lines.emplace_back(line.substr(start, end - start));
      start = end;
      while (start < line.size() && line[start] == u' ') ++start;
    }
    end = at;
  }
  lines.emplace_back(line.substr(std::min(start, line.size())));
}

int WidestLine(const TFont& font, const std::vector<TString>& lines) {
  int width = 0;
  for (const TString& line : lines) width = std::max(width, CellExtent(font, line).Width);
  return width;
}

TString ShortenLine(const TFont& font, const TString& line, int width) {
  if (CellExtent(font, line).Width <= width) return line;
  const int cells = width * 12 / (7 * font.GetEmHeight());
  TString result(FitCells(line, std::max(1, cells - 3)));
  return result.append(u"...");
}

}  // namespace

int CellsOf(char32_t character) noexcept {
  if (character >= 0x20 && character < 0x7F) return 1;
  if (IsIn(ZeroWidth, character)) return 0;
  return IsIn(DoubleWidth, character) ? 2 : 1;
}

int CellsOf(TStringView text) noexcept {
  int cells = 0;
  for (std::size_t position = 0; position < text.size();)
    cells += CellsOf(NextCharacter(text, position));
  return cells;
}

TStringView FitCells(TStringView text, int cells) noexcept {
  std::size_t position = 0;
  while (position < text.size()) {
    std::size_t next = position;
    cells -= CellsOf(NextCharacter(text, next));
    if (cells < 0) break;
    position = next;
  }
  return text.substr(0, position);
}

TFontMetrics CellMetrics(const TFont& font) noexcept {
  const int em = font.GetEmHeight();
  return {std::max(1, MulDiv(15, em, 12)), em, std::max(1, MulDiv(7, em, 12))};
}

TSize CellExtent(const TFont& font, TStringView text) noexcept {
  return {MulDiv(7 * CellsOf(text), font.GetEmHeight(), 12), CellMetrics(font).Height};
}

TTextLayout LayoutText(const TFont& font, const TRect& rect, TStringView text, TTextFormat format) {
  const TString visible = format.Contains(tfNoPrefix) ? TString(text) : WithoutPrefixMarks(text);
  const bool isSingle = format.Contains(tfSingleLine);
  TTextLayout layout;
  for (const TString& line : SplitLines(visible, isSingle)) {
    if (format.Contains(tfWordBreak) && !isSingle)
      WrapLine(font, line, rect.Width(), layout.Lines);
    else
      layout.Lines.push_back(line);
  }
  if (format.Contains(tfEndEllipsis) && !format.Contains(tfCalcRect))
    for (TString& line : layout.Lines) line = ShortenLine(font, line, rect.Width());
  const int lines = static_cast<int>(layout.Lines.size());
  const TSize size{WidestLine(font, layout.Lines), lines * CellMetrics(font).Height};
  layout.Rect = AlignText(rect, size, format);
  return layout;
}

}  // namespace oak
