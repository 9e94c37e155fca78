// Label, button, panel.
#include "oak/framework/StdCtrls.h"
#include "oak/framework/Canvas.h"
#include "oak/framework/Events.h"
#include "oak/framework/Forms.h"

namespace oak {
namespace {

constexpr int DefaultLabelWidth = 65;
constexpr int DefaultLabelHeight = 17;
constexpr int DefaultButtonWidth = 75;
constexpr int DefaultButtonHeight = 25;
constexpr int DefaultPanelWidth = 185;
constexpr int DefaultPanelHeight = 41;
constexpr int FocusInset = 3;

TTextFormat LineFormat(TAlignment alignment, bool ellipsis) {
  TTextFormat format{tfSingleLine, tfVerticalCenter};
  if (ellipsis) format.Include(tfEndEllipsis);
  if (alignment == taCenter) format.Include(tfCenter);
  if (alignment == taRightJustify) format.Include(tfRight);
  return format;
}

/// Text on the background of its control, in gray when that is disabled.
void DrawCaption(TCanvas& canvas, const TWinControl& control, const TRect& rect,
                 TTextFormat format) {
  canvas.GetBrush().SetStyle(bsClear);
  canvas.SetFont(control.GetFont());
  if (!control.GetEnabled()) canvas.GetFont().SetColor(clGrayText);
  canvas.DrawText(rect, control.GetText(), format);
}

/// The character after "&", in capitals; 0 without one.
char16_t MnemonicOf(const TString& caption) {
  for (std::size_t i = 0; i + 1 < caption.size(); ++i) {
    if (caption[i] != u'&') continue;
    if (caption[i + 1] != u'&') return UpperCase(TStringView(caption).substr(i + 1, 1))[0];
    ++i;
  }
  return 0;
}

bool IsMnemonic(const TControl& control, std::uint16_t key, TShiftState shift) {
  return shift == TShiftState{ssAlt} && key != 0 && key == MnemonicOf(control.GetText());
}

}  // namespace

// --- TLabel ----------------------------------------------------------------------
TLabel::TLabel(TComponent* owner) : TCustomControl(owner) {
  TWinControl::SetBounds(0, 0, DefaultLabelWidth, DefaultLabelHeight);
}

void TLabel::SetAlignment(TAlignment value) {
  fAlignment = value;
  Invalidate();
}

void TLabel::SetEllipsis(bool value) {
  fEllipsis = value;
  Invalidate();
}

void TLabel::TextChanged() { Invalidate(); }

bool TLabel::DialogKey(std::uint16_t key, TShiftState shift) {
  if (!IsMnemonic(*this, key, shift) || !GetParent()) return TCustomControl::DialogKey(key, shift);
  TWinControl* named = GetParent()->FindNextControl(this, true, false);
  if (named) named->SetFocus();
  return named != nullptr;
}

void TLabel::Paint(TCanvas& canvas, const TRect& clip) {
  DrawCaption(canvas, *this, GetClientRect(), LineFormat(fAlignment, fEllipsis));
  TCustomControl::Paint(canvas, clip);
}

// --- TButton ---------------------------------------------------------------------
TButton::TButton(TComponent* owner) : TCustomControl(owner) {
  SetTabStop(true);
  TWinControl::SetBounds(0, 0, DefaultButtonWidth, DefaultButtonHeight);
}

void TButton::SetDefault(bool value) {
  if (value == fDefault) return;
  fDefault = value;
  Invalidate();
}

void TButton::PerformClick() {
  if (CanFocus()) Click();
}

void TButton::Click() {
  if (TCustomForm* form = GetParentForm(); form && fModalResult != 0)
    form->SetModalResult(static_cast<TModalResult>(fModalResult));
  TCustomControl::Click();
}

bool TButton::DialogKey(std::uint16_t key, TShiftState shift) {
  const bool isPlain =
      !shift.Contains(ssShift) && !shift.Contains(ssCtrl) && !shift.Contains(ssAlt);
  bool isMine = IsMnemonic(*this, key, shift);
  if (isPlain && key == vkReturn) {
    const TCustomForm* form = GetParentForm();
    const bool otherHasKeys = form && dynamic_cast<TButton*>(form->GetActiveControl());
    isMine = Focused() || (fDefault && !otherHasKeys);
  } else if (isPlain && key == vkEscape) {
    isMine = fCancel;
  }
  if (!isMine || !CanFocus()) return TCustomControl::DialogKey(key, shift);
  Click();
  return true;
}

void TButton::KeyDown(std::uint16_t& key, TShiftState shift) {
  const TLifeGuard guard = GetLifeGuard();
  TCustomControl::KeyDown(key, shift);
  if (!guard.IsAlive() || key != vkSpace || shift.Contains(ssAlt)) return;
  key = 0;
  fSpaceDown = true;
  SetDown(true);
}

void TButton::KeyUp(std::uint16_t& key, TShiftState shift) {
  const TLifeGuard guard = GetLifeGuard();
  TCustomControl::KeyUp(key, shift);
  if (!guard.IsAlive() || key != vkSpace || !fSpaceDown) return;
  key = 0;
  fSpaceDown = false;
  SetDown(false);
  Click();
}

void TButton::WMSetFocus() { Invalidate(); }

void TButton::WMKillFocus() {
  fSpaceDown = false;
  SetDown(false);
  Invalidate();
}

void TButton::MouseDown(TMouseButton button, TShiftState shift, int x, int y) {
  const TLifeGuard guard = GetLifeGuard();
  if (button == mbLeft) {
    SetDown(true);
    if (CanFocus()) SetFocus();
  }
  if (guard.IsAlive()) TCustomControl::MouseDown(button, shift, x, y);
}

void TButton::MouseMove(TShiftState shift, int x, int y) {
  if (GetControlState().Contains(csLButtonDown)) SetDown(GetClientRect().Contains({x, y}));
  TCustomControl::MouseMove(shift, x, y);
}

void TButton::MouseUp(TMouseButton button, TShiftState shift, int x, int y) {
  if (button == mbLeft) SetDown(false);
  TCustomControl::MouseUp(button, shift, x, y);
}

void TButton::CaptureLost() {
  SetDown(false);
  TCustomControl::CaptureLost();
}

void TButton::TextChanged() { Invalidate(); }

void TButton::SetDown(bool value) {
  if (value == fDown) return;
  fDown = value;
  Invalidate();
}

void TButton::Paint(TCanvas& canvas, const TRect& clip) {
  const TRect rect = GetClientRect();
  const bool isFocused = Focused();
  canvas.GetBrush().SetColor(fDown ? clBtnShadow : clBtnFace);
  canvas.GetPen().SetColor(isFocused || fDefault ? clHighlight : clWindowFrame);
  canvas.Rectangle(rect);
  DrawCaption(canvas, *this, fDown ? rect.Moved(1, 1) : rect, LineFormat(taCenter, true));
  if (isFocused)
    canvas.DrawFocusRect(rect.Inflated(-ScaledPixels(FocusInset), -ScaledPixels(FocusInset)));
  TCustomControl::Paint(canvas, clip);
}

// --- TCustomPanel ------------------------------------------------------------------
TCustomPanel::TCustomPanel(TComponent* owner) : TCustomControl(owner) {
  TWinControl::SetBounds(0, 0, DefaultPanelWidth, DefaultPanelHeight);
}

void TCustomPanel::SetAlignment(TAlignment value) {
  fAlignment = value;
  Invalidate();
}

void TCustomPanel::TextChanged() { Invalidate(); }

void TCustomPanel::Paint(TCanvas& canvas, const TRect& clip) {
  if (!GetText().empty()) DrawCaption(canvas, *this, GetClientRect(), LineFormat(fAlignment, true));
  TCustomControl::Paint(canvas, clip);
}

}  // namespace oak
