#include "oak/framework/headless/HeadlessTextField.h"

#include <algorithm>

#include "oak/framework/Canvas.h"
#include "oak/framework/headless/HeadlessDesktop.h"

namespace oak {
namespace {

constexpr TTextFormat PlainLine{tfSingleLine, tfNoPrefix};

bool IsLow(char16_t unit) { return unit >= 0xDC00 && unit <= 0xDFFF; }
bool IsHigh(char16_t unit) { return unit >= 0xD800 && unit <= 0xDBFF; }
bool IsBlank(char16_t unit) { return unit == u' ' || unit == u'\t'; }

}  // namespace

void THeadlessTextField::SetText(TString text) {
  fText = std::move(text);
  fAnchor = fCaret = fTopLine = fLeft = 0;
}

TString THeadlessTextField::GetSelectedText() const {
  return fText.substr(static_cast<std::size_t>(GetStart()),
                      static_cast<std::size_t>(GetEnd() - GetStart()));
}

void THeadlessTextField::Select(int start, int end) {
  const int size = static_cast<int>(fText.size());
  fAnchor = std::clamp(start, 0, size);
  fCaret = end < fAnchor ? size : std::min(end, size);
}

void THeadlessTextField::MoveCaret(int position, bool extend) {
  fCaret = std::clamp(position, 0, static_cast<int>(fText.size()));
  if (!extend) fAnchor = fCaret;
}

// --- places in the text ------------------------------------------------------

int THeadlessTextField::Before(int position) const {
  if (position <= 0) return 0;
  const auto at = [&](int i) { return fText[static_cast<std::size_t>(i)]; };
  const bool pair = position > 1 && ((IsLow(at(position - 1)) && IsHigh(at(position - 2))) ||
                                     (at(position - 1) == u'\n' && at(position - 2) == u'\r'));
  return position - (pair ? 2 : 1);
}

int THeadlessTextField::After(int position) const {
  const int size = static_cast<int>(fText.size());
  if (position >= size) return size;
  return Before(std::min(position + 2, size)) == position ? std::min(position + 2, size)
                                                          : position + 1;
}

int THeadlessTextField::WordStart(int position) const {
  const auto at = [&](int i) { return fText[static_cast<std::size_t>(i)]; };
  while (position > 0 && IsBlank(at(position - 1))) --position;
  while (position > 0 && !IsBlank(at(position - 1)) && at(position - 1) != u'\n') --position;
  return position;
}

int THeadlessTextField::WordEnd(int position) const {
  const int size = static_cast<int>(fText.size());
  const auto at = [&](int i) { return fText[static_cast<std::size_t>(i)]; };
  while (position < size && !IsBlank(at(position)) && at(position) != u'\r') ++position;
  while (position < size && IsBlank(at(position))) ++position;
  return position;
}

int THeadlessTextField::LineStart(int position) const {
  if (!MultiLine || position == 0) return 0;
  const std::size_t found = fText.rfind(u'\n', static_cast<std::size_t>(position - 1));
  return found == TString::npos ? 0 : static_cast<int>(found + 1);
}

int THeadlessTextField::LineEnd(int position) const {
  const std::size_t found =
      MultiLine ? fText.find(u'\n', static_cast<std::size_t>(position)) : TString::npos;
  if (found == TString::npos) return static_cast<int>(fText.size());
  return static_cast<int>(found > 0 && fText[found - 1] == u'\r' ? found - 1 : found);
}

int THeadlessTextField::LineDown(int lines) const {
  int start = LineStart(fCaret);
  const int column = fCaret - start;
  for (; lines > 0; --lines) {
    const int next = After(LineEnd(start));
    if (LineEnd(start) >= static_cast<int>(fText.size())) break;
    start = next;
  }
  for (; lines < 0 && start > 0; ++lines) start = LineStart(Before(start));
  return std::min(start + column, LineEnd(start));
}

int THeadlessTextField::GetLineCount() const {
  return MultiLine ? 1 + static_cast<int>(std::count(fText.begin(), fText.end(), u'\n')) : 1;
}

int THeadlessTextField::GetLineOf(int position) const {
  return MultiLine ? static_cast<int>(std::count(fText.begin(), fText.begin() + position, u'\n'))
                   : 0;
}

// --- keys --------------------------------------------------------------------

bool THeadlessTextField::Replace(TStringView text) {
  if (ReadOnly) return false;
  TString wanted(text);
  if (!MultiLine) wanted.erase(std::min(wanted.find_first_of(u"\r\n"), wanted.size()));
  const int start = GetStart(), selected = GetEnd() - start;
  if (MaxLength > 0) {
    const int room = std::max(MaxLength - (static_cast<int>(fText.size()) - selected), 0);
    wanted.erase(std::min(wanted.size(), static_cast<std::size_t>(room)));
    if (!wanted.empty() && IsHigh(wanted.back())) wanted.pop_back();
  }
  if (wanted.empty() && (selected == 0 || !text.empty())) return false;
  fText.replace(static_cast<std::size_t>(start), static_cast<std::size_t>(selected), wanted);
  fAnchor = fCaret = start + static_cast<int>(wanted.size());
  return true;
}

THeadlessTextField::TResult THeadlessTextField::MoveKey(int position, bool extend) {
  MoveCaret(position, extend);
  return {true, false};
}

THeadlessTextField::TResult THeadlessTextField::Clipboard(std::uint16_t key,
                                                          THeadlessDesktop& desktop) {
  if (key == u'A') {
    Select(0, -1);
    return {true, false};
  }
  if (key == u'V') {
    TString text;
    return {true, desktop.GetClipboardText(&text) && Replace(text)};
  }
  if (GetStart() < GetEnd()) desktop.SetClipboardText(GetSelectedText());
  return {true, key == u'X' && Replace({})};
}

THeadlessTextField::TResult THeadlessTextField::KeyDown(std::uint16_t key, TShiftState shift,
                                                        THeadlessDesktop& desktop) {
  const bool ctrl = shift.Contains(ssCtrl), extend = shift.Contains(ssShift);
  if (shift.Contains(ssAlt)) return {};
  switch (key) {
    case vkLeft:
      return MoveKey(ctrl ? WordStart(fCaret) : Before(fCaret), extend);
    case vkRight:
      return MoveKey(ctrl ? WordEnd(fCaret) : After(fCaret), extend);
    case vkHome:
      return MoveKey(ctrl ? 0 : LineStart(fCaret), extend);
    case vkEnd:
      return MoveKey(ctrl ? static_cast<int>(fText.size()) : LineEnd(fCaret), extend);
    case vkUp:
    case vkDown:
      if (!MultiLine) return MoveKey(key == vkUp ? Before(fCaret) : After(fCaret), extend);
      return MoveKey(LineDown(key == vkUp ? -1 : 1), extend);
    case vkDelete:
      if (extend) return Clipboard(u'X', desktop);
      if (fAnchor == fCaret) fAnchor = ctrl ? WordEnd(fCaret) : After(fCaret);
      return {true, Replace({})};
    case vkInsert:
      if (ctrl || extend) return Clipboard(ctrl ? u'C' : u'V', desktop);
      return {};
    default:
      if (ctrl && (key == u'A' || key == u'C' || key == u'V' || key == u'X'))
        return Clipboard(key, desktop);
      return {};
  }
}

THeadlessTextField::TResult THeadlessTextField::KeyChar(char16_t character, THeadlessDesktop&) {
  constexpr char16_t back = 8, backWord = 127;
  if (character == back || character == backWord) {
    if (fAnchor == fCaret) fAnchor = character == back ? Before(fCaret) : WordStart(fCaret);
    return {true, Replace({})};
  }
  if (character == u'\r' || character == u'\n')
    return MultiLine ? TResult{true, Replace(u"\r\n")} : TResult{};
  if (character < u' ' && !(character == u'\t' && MultiLine)) return {};
  return {true, Replace(TStringView(&character, 1))};
}

// --- picture -----------------------------------------------------------------

void THeadlessTextField::ShowCaret(const TRect& rect, const TFont& font) {
  const int line = GetLineOf(fCaret);
  const int height = std::max(TextHeight(font), 1);
  const int shown = std::max(rect.Height() / height, 1);
  fTopLine = std::clamp(fTopLine, std::max(line - shown + 1, 0), line);
  const int start = LineStart(fCaret);
  const TStringView before = TStringView(fText).substr(static_cast<std::size_t>(start),
                                                       static_cast<std::size_t>(fCaret - start));
  const int x = TextWidth(font, before);
  if (x < fLeft) fLeft = x;
  if (x - fLeft >= rect.Width()) fLeft = x - std::max(rect.Width() - 1, 0);
}

void THeadlessTextField::DrawLineOf(TCanvas& canvas, int from, int to, TPoint corner, bool focused,
                                    TColor textColor) {
  const int cuts[] = {from, std::clamp(GetStart(), from, to), std::clamp(GetEnd(), from, to), to};
  int x = corner.X;
  for (int part = 0; part < 3; ++part) {
    const TStringView piece =
        TStringView(fText).substr(static_cast<std::size_t>(cuts[part]),
                                  static_cast<std::size_t>(cuts[part + 1] - cuts[part]));
    if (piece.empty()) continue;
    const TSize size = canvas.TextExtent(piece);
    const TRect rect({x, corner.Y}, size);
    const bool selected = part == 1 && focused;
    if (selected) {
      canvas.GetBrush().SetColor(clHighlight);
      canvas.FillRect(rect);
    }
    canvas.GetBrush().SetStyle(bsClear);
    canvas.GetFont().SetColor(selected ? clHighlightText : textColor);
    canvas.DrawText(rect, piece, PlainLine);
    x += size.Width;
  }
}

void THeadlessTextField::Paint(TCanvas& canvas, const TRect& rect, bool focused, TColor textColor,
                               TStringView hint) {
  const TClipScope clip(canvas, rect);
  ShowCaret(rect, canvas.GetFont());
  canvas.GetBrush().SetStyle(bsClear);
  if (fText.empty() && !hint.empty()) {
    canvas.GetFont().SetColor(clGrayText);
    canvas.DrawText(rect, hint, PlainLine);
  }
  const int height = std::max(canvas.TextHeight(), 1);
  int from = 0;
  for (int line = 0; line < GetLineCount(); ++line) {
    const int to = LineEnd(from);
    const int y = rect.Top + (line - fTopLine) * height;
    if (line >= fTopLine && y < rect.Bottom)
      DrawLineOf(canvas, from, to, {rect.Left - fLeft, y}, focused, textColor);
    if (focused && GetLineOf(fCaret) == line && fAnchor == fCaret) {
      const int x = rect.Left - fLeft +
                    canvas.TextWidth(TStringView(fText).substr(
                        static_cast<std::size_t>(from), static_cast<std::size_t>(fCaret - from)));
      canvas.GetPen().SetColor(textColor);
      canvas.MoveTo(x, y);
      canvas.LineTo(x, y + height);
    }
    from = After(to);
  }
}

int THeadlessTextField::PositionAt(TPoint point, const TRect& rect, const TFont& font) const {
  const int height = std::max(TextHeight(font), 1);
  int line = std::max((point.Y - rect.Top) / height + fTopLine, 0);
  int from = 0;
  for (; line > 0 && MultiLine && LineEnd(from) < static_cast<int>(fText.size()); --line)
    from = After(LineEnd(from));
  const int to = LineEnd(from), x = point.X - rect.Left + fLeft;
  int best = from, former = 0;
  for (int at = from; at < to; at = After(at)) {
    const int width =
        TextWidth(font, TStringView(fText).substr(static_cast<std::size_t>(from),
                                                  static_cast<std::size_t>(After(at) - from)));
    if (x < (former + width) / 2) break;
    best = After(at);
    former = width;
  }
  return best;
}

}  // namespace oak
