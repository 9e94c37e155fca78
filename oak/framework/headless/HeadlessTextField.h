// Text with a caret and a selection: what all edit fields of the headless desktop share.
#pragma once

#include "oak/base/Text.h"
#include "oak/framework/ControlTypes.h"
#include "oak/framework/Graphics.h"

namespace oak {

class TCanvas;
class THeadlessDesktop;

/// The state and the keys of an edit field. Positions count code units of the text; the caret
/// never stands within a surrogate pair or a line end of two characters.
class THeadlessTextField {
 public:
  /// What a key did.
  struct TResult {
    bool Handled = false;
    bool Changed = false;  ///< The text is another one.
  };

  const TString& GetText() const noexcept { return fText; }
  /// Replaces all and puts the caret to the beginning.
  void SetText(TString text);
  int GetStart() const noexcept { return fAnchor < fCaret ? fAnchor : fCaret; }
  int GetEnd() const noexcept { return fAnchor < fCaret ? fCaret : fAnchor; }
  int GetCaret() const noexcept { return fCaret; }
  TString GetSelectedText() const;
  /// Limits both to the text; an `end` below `start`, -1 for instance, is the end of the text.
  void Select(int start, int end);
  /// Puts the caret there, keeping the other end of the selection if asked to.
  void MoveCaret(int position, bool extend);

  bool ReadOnly = false;
  bool MultiLine = false;
  int MaxLength = 0;  ///< 0: no limit.

  TResult KeyDown(std::uint16_t key, TShiftState shift, THeadlessDesktop& desktop);
  TResult KeyChar(char16_t character, THeadlessDesktop& desktop);
  /// Puts text in the place of the selection, as far as it fits.
  bool Replace(TStringView text);

  /// Draws text, selection and caret; scrolls so far that the caret is seen. `hint` stands in gray
  /// while the text is empty.
  void Paint(TCanvas& canvas, const TRect& rect, bool focused, TColor textColor, TStringView hint);
  /// Position in the text at a point of `rect`, as it was drawn last.
  int PositionAt(TPoint point, const TRect& rect, const TFont& font) const;
  int GetLineCount() const;
  int GetLineOf(int position) const;
  int GetTopLine() const noexcept { return fTopLine; }
  void SetTopLine(int line) { fTopLine = line; }

 private:
  int Before(int position) const;
  int After(int position) const;
  int WordStart(int position) const;
  int WordEnd(int position) const;
  int LineStart(int position) const;
  int LineEnd(int position) const;
  int LineDown(int lines) const;
  TResult MoveKey(int position, bool extend);
  TResult Clipboard(std::uint16_t key, THeadlessDesktop& desktop);
  void DrawLineOf(TCanvas& canvas, int from, int to, TPoint corner, bool focused, TColor textColor);
  void ShowCaret(const TRect& rect, const TFont& font);

  TString fText;
  int fAnchor = 0;
  int fCaret = 0;
  int fTopLine = 0;
  int fLeft = 0;  // pixels that are scrolled out
};

}  // namespace oak
