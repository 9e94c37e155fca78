#include "oak/framework/headless/HeadlessEdit.h"

#include <algorithm>

#include "oak/framework/Canvas.h"
#include "oak/framework/RichText.h"
#include "oak/framework/TextMetrics.h"
#include "oak/framework/headless/HeadlessDesktop.h"

namespace oak {
namespace {

constexpr int EditMargin = 2;               // left and right of the text, at 96 pixels per inch
constexpr UINT MessageSetSelection = 0xB1;  // EM_SETSEL
constexpr UINT MessageGetSelection = 0xB0;  // EM_GETSEL

}  // namespace

// --- edit controls -----------------------------------------------------------

THeadlessEdit::THeadlessEdit(THeadlessDesktop& desktop, TCustomEdit& edit)
    : THeadlessPeer(desktop, edit), fEdit(edit) {
  fField.SetText(GetWindowText());
  THeadlessEdit::StyleChanged();
}

void THeadlessEdit::SetText(const TString& text) {
  if (text == fField.GetText()) return;
  fField.SetText(text);
  THeadlessPeer::SetText(text);
  UpdateScroll();
}

void THeadlessEdit::GetSelection(int* start, int* end) const {
  if (start) *start = fField.GetStart();
  if (end) *end = fField.GetEnd();
}

void THeadlessEdit::SetSelection(int start, int end) {
  fField.Select(start, end);
  Invalidate(nullptr);
}

void THeadlessEdit::StyleChanged() {
  fField.ReadOnly = fEdit.GetReadOnly();
  fField.MaxLength = fEdit.GetMaxLength();
  fField.MultiLine = fEdit.IsMultiLine() || fEdit.IsRich();
  UpdateScroll();
  Invalidate(nullptr);
}

bool THeadlessEdit::LoadRichText(const std::vector<std::uint8_t>& data) {
  TString text;
  if (!fEdit.IsRich() || !PlainTextOfRtf(data, &text)) return false;
  SetText(text);
  return true;
}

TRect THeadlessEdit::TextRect() const {
  TRect rect = GetClientRect().Inflated(-Scaled(EditMargin), 0);
  if (!fField.MultiLine) {
    rect.Top += std::max((rect.Height() - GetLineHeight()) / 2, 0);
    rect.Bottom = std::min(rect.Bottom, rect.Top + GetLineHeight());
  }
  return rect;
}

void THeadlessEdit::UpdateScroll() {
  if (!fField.MultiLine) return;
  const TRect frame = GetFrame();
  const int height = GetBounds().Height() - frame.Top - frame.Bottom;
  SetScrollInfo(sbVertical, {fField.GetTopLine(), std::max(height / GetLineHeight(), 1),
                             fField.GetLineCount(), 1});
}

void THeadlessEdit::OnScroll(TScrollBarKind kind, int position) {
  if (kind == sbVertical) fField.SetTopLine(position);
  THeadlessPeer::OnScroll(kind, position);
}

void THeadlessEdit::Changed() {
  THeadlessPeer::SetText(fField.GetText());
  UpdateScroll();
  fEdit.HandleTextChanged(fField.GetText());
}

void THeadlessEdit::Paint(TCanvas& canvas, const TRect& clip) {
  canvas.GetBrush().SetColor(IsUsable() ? BackgroundColor() : clBtnFace);
  canvas.FillRect(clip);
  const TColor color = IsUsable() ? GetFont().GetColor() : clGrayText;
  const bool scrolls = GetScrollInfo(sbVertical).IsShown() && !HasFocus();
  const int top = fField.GetTopLine();
  fField.Paint(canvas, TextRect(), HasFocus(), color, fEdit.GetTextHint());
  if (scrolls) fField.SetTopLine(top);
}

void THeadlessEdit::OnMouse(TMouseEvent& event) {
  if (event.Action == TMouseAction::Down && event.Button == mbLeft) {
    const TLifeGuard guard = Guard();
    if (!SetFocus() || !guard.IsAlive()) return;
    if (event.Shift.Contains(ssDouble)) {
      fField.Select(0, -1);
    } else {
      fField.MoveCaret(fField.PositionAt(event.Position, TextRect(), GetFont()),
                       event.Shift.Contains(ssShift));
      fSelecting = true;
      SetCapture(true);
    }
    Invalidate(nullptr);
  } else if (event.Action == TMouseAction::Move && fSelecting) {
    fField.MoveCaret(fField.PositionAt(event.Position, TextRect(), GetFont()), true);
    Invalidate(nullptr);
  } else if (event.Action == TMouseAction::Up && fSelecting) {
    fSelecting = false;
    SetCapture(false);
  } else {
    THeadlessPeer::OnMouse(event);
  }
}

void THeadlessEdit::OnKey(TKeyEvent& event) {
  THeadlessTextField::TResult result;
  if (event.Action == TKeyAction::Down)
    result = fField.KeyDown(event.Key, event.Shift, GetDesktop());
  else if (event.Action == TKeyAction::Char)
    result = fField.KeyChar(event.Char, GetDesktop());
  if (!result.Handled) return;
  event.Handled = true;
  Invalidate(nullptr);
  if (result.Changed) Changed();
}

void THeadlessEdit::OnFocusChanged(bool focused) {
  Invalidate(nullptr);
  THeadlessPeer::OnFocusChanged(focused);
}

TCursor THeadlessEdit::CursorAt(TPoint point) const {
  const TCursor cursor = THeadlessPeer::CursorAt(point);
  return cursor == crDefault ? crIBeam : cursor;
}

// --- in-place edits ----------------------------------------------------------

THeadlessEditBox::THeadlessEditBox(THeadlessWindow& owner, const TRect& bounds, const TString& text)
    : THeadlessWindow(owner.GetDesktop(), THeadlessKind::Child, &owner, bounds) {
  THeadlessWindow::SetFont(owner.GetFont());
  fField.SetText(text);
  fField.Select(0, -1);
  THeadlessWindow::SetVisible(true);
  THeadlessWindow::SetFocus();
}

void THeadlessEditBox::SetEditText(const TString& text) {
  fField.SetText(text);
  Invalidate(nullptr);
}

void THeadlessEditBox::SelectText(int start, int end) {
  fField.Select(start, end);
  Invalidate(nullptr);
}

void THeadlessEditBox::Paint(TCanvas& canvas, const TRect& clip) {
  canvas.GetBrush().SetColor(clWindow);
  canvas.FillRect(clip);
  fField.Paint(canvas, GetClientRect().Inflated(-1, 0), HasFocus(), clWindowText, {});
}

void THeadlessEditBox::OnMouse(TMouseEvent& event) {
  if (event.Action != TMouseAction::Down || event.Button != mbLeft) return;
  fField.MoveCaret(fField.PositionAt(event.Position, GetClientRect(), GetFont()),
                   event.Shift.Contains(ssShift));
  event.Handled = true;
  Invalidate(nullptr);
}

void THeadlessEditBox::OnKey(TKeyEvent& event) {
  const bool down = event.Action == TKeyAction::Down;
  if (down && (event.Key == vkReturn || event.Key == vkEscape)) {
    event.Handled = true;
    return Finish(event.Key == vkEscape);
  }
  if (event.Action == TKeyAction::Up) return;
  const THeadlessTextField::TResult result =
      down ? fField.KeyDown(event.Key, event.Shift, GetDesktop())
           : fField.KeyChar(event.Char, GetDesktop());
  event.Handled = result.Handled;
  if (result.Handled) Invalidate(nullptr);
}

void THeadlessEditBox::OnFocusChanged(bool focused) {
  Invalidate(nullptr);
  if (!focused) Finish(false);
}

LRESULT THeadlessEditBox::Send(UINT message, WPARAM wParam, LPARAM lParam) {
  if (message == MessageSetSelection) {
    SelectText(static_cast<int>(wParam), static_cast<int>(lParam));
    return 1;
  }
  if (message == MessageGetSelection)
    return static_cast<LRESULT>(fField.GetStart() | fField.GetEnd() << 16);
  return THeadlessWindow::Send(message, wParam, lParam);
}

void THeadlessEditBox::Finish(bool cancel) {
  if (fFinished) return;
  fFinished = true;
  if (const auto finish = OnFinish) finish(cancel);  // a copy: the box may be gone within
}

}  // namespace oak
