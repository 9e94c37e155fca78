#include "oak/framework/headless/HeadlessCombo.h"

#include <algorithm>

#include "oak/framework/Canvas.h"
#include "oak/framework/ImageList.h"
#include "oak/framework/headless/HeadlessDesktop.h"

namespace oak {
namespace {

constexpr int ComboRowPadding = 2;  // above and below the text, at 96 pixels per inch
constexpr int ComboMargin = 3;
constexpr int ComboIndent = 10;  // of one step of an entry's indent
constexpr int MetricScroll = 2;

}  // namespace

// --- the list ----------------------------------------------------------------

/// What drops down.
class THeadlessCombo::TList final : public THeadlessWindow {
 public:
  TList(THeadlessCombo& owner)
      : THeadlessWindow(owner.GetDesktop(), THeadlessKind::Popup, nullptr, owner.GetScreenRect()),
        fOwner(owner),
        Hot(owner.fCombo.GetItemIndex()) {
    THeadlessWindow::SetFont(owner.GetFont());
    Layout();
  }

  int GetWindowPPI() const override { return fOwner.GetWindowPPI(); }
  TRect GetFrame() const override { return {1, 1, 1, 1}; }
  int RowHeight() const {
    const TImageList* const images = fOwner.fCombo.GetImages();
    return std::max(GetLineHeight(), images ? images->GetHeight() : 0) +
           2 * Scaled(ComboRowPadding);
  }

  void Layout() {
    const int count = fOwner.fCombo.GetItemCount();
    const int rows = std::clamp(count, 1, std::max(fOwner.fCombo.GetDropDownCount(), 1));
    const TRect field = fOwner.GetScreenRect();
    THeadlessWindow::SetBounds(
        {{field.Left, field.Bottom}, {field.Width(), rows * RowHeight() + 2}});
    SetScrollInfo(sbVertical, {GetScrollInfo(sbVertical).Position, rows, count, 1});
    Invalidate(nullptr);
  }

  void SetHot(int index) {
    const int count = fOwner.fCombo.GetItemCount();
    Hot = count == 0 ? -1 : std::clamp(index, 0, count - 1);
    THeadlessScroll info = GetScrollInfo(sbVertical);
    if (Hot >= 0) info.Position = std::clamp(info.Position, Hot - info.Page + 1, Hot);
    SetScrollInfo(sbVertical, info);
    Invalidate(nullptr);
  }

  TRect RowRect(int index) const {
    const int top = (index - GetScrollInfo(sbVertical).Position) * RowHeight();
    return {0, top, GetClientRect().Right, top + RowHeight()};
  }

  int RowAt(TPoint screen) const {
    const TPoint point = ScreenToClient(screen);
    if (!GetClientRect().Contains(point)) return -1;
    const int index = point.Y / RowHeight() + GetScrollInfo(sbVertical).Position;
    return index < fOwner.fCombo.GetItemCount() ? index : -1;
  }

  void Paint(TCanvas& canvas, const TRect& clip) override {
    canvas.GetBrush().SetColor(clWindow);
    canvas.FillRect(clip);
    const THeadlessScroll& info = GetScrollInfo(sbVertical);
    const int last = std::min(info.Position + info.Page, fOwner.fCombo.GetItemCount());
    for (int i = info.Position; i < last; ++i) PaintRow(canvas, i);
  }

 private:
  void PaintRow(TCanvas& canvas, int index) {
    const TComboExItem& item = fOwner.fCombo.GetItem(index);
    TRect rect = RowRect(index);
    const bool hot = index == Hot;
    if (hot) {
      canvas.GetBrush().SetColor(clHighlight);
      canvas.FillRect(rect);
    }
    rect.Left += Scaled(ComboMargin) + Scaled(ComboIndent) * item.Indent;
    if (const TImageList* const images = fOwner.fCombo.GetImages()) {
      const int image =
          hot && item.SelectedImageIndex >= 0 ? item.SelectedImageIndex : item.ImageIndex;
      canvas.DrawImage(*images, image, rect.Left,
                       rect.Top + (rect.Height() - images->GetHeight()) / 2);
      rect.Left += images->GetWidth() + Scaled(ComboMargin);
    }
    canvas.GetBrush().SetStyle(bsClear);
    canvas.GetFont().SetColor(hot ? clHighlightText : clWindowText);
    canvas.DrawText(rect, item.Caption,
                    {tfSingleLine, tfVerticalCenter, tfNoPrefix, tfEndEllipsis});
  }

  THeadlessCombo& fOwner;

 public:
  int Hot;
};

// --- the field ---------------------------------------------------------------

THeadlessCombo::THeadlessCombo(THeadlessDesktop& desktop, TCustomComboBoxEx& combo)
    : THeadlessPeer(desktop, combo), fCombo(combo) {
  fField.SetText(GetWindowText());
}

THeadlessCombo::~THeadlessCombo() = default;

void THeadlessCombo::SetText(const TString& text) {
  if (text == fField.GetText()) return;
  fField.SetText(text);
  Invalidate(nullptr);
}

void THeadlessCombo::ItemsChanged() {
  if (fList) fList->Layout();
  Invalidate(nullptr);
}

void THeadlessCombo::SetItemIndex(int index) {
  if (index >= 0 && index < fCombo.GetItemCount()) SetText(fCombo.GetItem(index).Caption);
  if (fList) fList->SetHot(index);
  Invalidate(nullptr);
}

void THeadlessCombo::SelectText(int start, int end) {
  fField.Select(start, end);
  Invalidate(nullptr);
}

void THeadlessCombo::SetDroppedDown(bool dropped) { dropped ? Drop() : CloseUp(); }

void THeadlessCombo::Drop() {
  if (fList || !IsShowing()) return;
  const TLifeGuard guard = Guard();
  fCombo.HandleDropDown(true);  // entries may be added now
  if (!guard.IsAlive() || fList) return;
  fList = std::make_unique<TList>(*this);
  fList->SetVisible(true);
  SetCapture(true);
}

void THeadlessCombo::CloseUp() {
  if (!fList) return;
  fList.reset();
  SetCapture(false);
  fCombo.HandleDropDown(false);
}

void THeadlessCombo::OnCaptureLost() {
  const TLifeGuard guard = Guard();
  THeadlessPeer::OnCaptureLost();
  if (guard.IsAlive()) CloseUp();
}

void THeadlessCombo::OnStateChanged() {
  if (!GetVisible()) fList.reset();
}

void THeadlessCombo::Choose(int index) {
  if (index < 0 || index >= fCombo.GetItemCount()) return;
  fField.SetText(fCombo.GetItem(index).Caption);
  fField.Select(0, -1);
  Invalidate(nullptr);
  fCombo.HandleSelected(index);
}

THeadlessWindow* THeadlessCombo::GetList() const { return fList.get(); }

TRect THeadlessCombo::GetListRowRect(int index) const {
  if (!fList) return {};
  const TRect row = fList->RowRect(index);
  return {fList->ClientToScreen(row.TopLeft()), row.Size()};
}

TRect THeadlessCombo::GetButtonRect() const {
  const TRect client = GetClientRect();
  const int width = GetDesktop().GetSystemMetric(MetricScroll, GetWindowPPI());
  return {std::max(client.Right - width, client.Left), client.Top, client.Right, client.Bottom};
}

TRect THeadlessCombo::TextRect() const {
  TRect rect = GetClientRect();
  rect.Right = GetButtonRect().Left;
  rect.Left += Scaled(ComboMargin);
  if (const TImageList* const images = fCombo.GetImages())
    rect.Left += images->GetWidth() + Scaled(ComboMargin);
  rect.Top += std::max((rect.Height() - GetLineHeight()) / 2, 0);
  rect.Bottom = std::min(rect.Top + GetLineHeight(), GetClientRect().Bottom);
  return rect;
}

void THeadlessCombo::Paint(TCanvas& canvas, const TRect& clip) {
  canvas.GetBrush().SetColor(IsUsable() ? BackgroundColor() : clBtnFace);
  canvas.FillRect(clip);
  const TRect text = TextRect();
  const int index = fCombo.GetItemIndex();
  const TImageList* const images = fCombo.GetImages();
  const bool isEntry = index >= 0 && index < fCombo.GetItemCount();
  const int image = isEntry ? fCombo.GetItem(index).ImageIndex : fCombo.GetEditImageIndex();
  if (images && image >= 0)
    canvas.DrawImage(*images, image, GetClientRect().Left + Scaled(ComboMargin),
                     (GetClientRect().Height() - images->GetHeight()) / 2);
  const TColor color = IsUsable() ? GetFont().GetColor() : clGrayText;
  fField.Paint(canvas, text, HasFocus(), color, {});
  const TRect button = GetButtonRect();
  canvas.GetBrush().SetColor(clBtnFace);
  canvas.FillRect(button);
  canvas.GetFont().SetColor(clBtnText);
  canvas.GetBrush().SetStyle(bsClear);
  canvas.DrawText(button, u"v", {tfCenter, tfSingleLine, tfVerticalCenter, tfNoPrefix});
}

// --- the user ----------------------------------------------------------------

void THeadlessCombo::OnMouse(TMouseEvent& event) {
  if (fList) return ListMouse(event);
  if (event.Action == TMouseAction::Wheel) {
    event.Handled = true;
    const int index = fCombo.GetItemIndex() - (event.WheelDelta > 0 ? 1 : -1);
    if (HasFocus()) Choose(index);
    return;
  }
  if (event.Action != TMouseAction::Down || event.Button != mbLeft) return;
  const TLifeGuard guard = Guard();
  if (!SetFocus() || !guard.IsAlive()) return;
  event.Handled = true;
  if (fCombo.GetReadOnly() || GetButtonRect().Contains(event.Position)) return Drop();
  fField.MoveCaret(fField.PositionAt(event.Position, TextRect(), GetFont()),
                   event.Shift.Contains(ssShift));
  Invalidate(nullptr);
}

void THeadlessCombo::ListMouse(TMouseEvent& event) {
  const TPoint screen = GetDesktop().GetCursorPos();
  const int row = fList->RowAt(screen);
  const bool inList = fList->GetScreenRect().Contains(screen);
  event.Handled = true;
  switch (event.Action) {
    case TMouseAction::Move:
      if (row >= 0) fList->SetHot(row);
      return;
    case TMouseAction::Wheel:
      return fList->ScrollLines(sbVertical, -event.WheelDelta / 120);
    case TMouseAction::Down:
      if (!inList) CloseUp();
      return;
    case TMouseAction::Up: {
      if (row < 0) return;
      const TLifeGuard guard = Guard();
      CloseUp();
      if (guard.IsAlive()) Choose(row);
      return;
    }
    default:
      return;
  }
}

void THeadlessCombo::ListKey(TKeyEvent& event) {
  const int hot = fList->Hot, page = fList->GetScrollInfo(sbVertical).Page;
  event.Handled = true;
  switch (event.Key) {
    case vkUp:
      return fList->SetHot(hot - 1);
    case vkDown:
      return fList->SetHot(hot + 1);
    case vkPrior:
      return fList->SetHot(hot - page);
    case vkNext:
      return fList->SetHot(hot + page);
    case vkEscape:
      return CloseUp();
    case vkReturn: {
      const TLifeGuard guard = Guard();
      CloseUp();
      if (guard.IsAlive()) Choose(hot);
      return;
    }
    default:
      event.Handled = false;
  }
}

void THeadlessCombo::OnKey(TKeyEvent& event) {
  const bool down = event.Action == TKeyAction::Down;
  const bool toggles = down && (event.Key == vkF4 || ((event.Key == vkDown || event.Key == vkUp) &&
                                                      event.Shift.Contains(ssAlt)));
  if (toggles && !(event.Key == vkF4 && event.Shift.Contains(ssAlt))) {
    event.Handled = true;
    return SetDroppedDown(!fList);
  }
  if (down && fList) {
    ListKey(event);
    if (event.Handled) return;
  }
  if (down && (event.Key == vkUp || event.Key == vkDown)) {
    event.Handled = true;
    return Choose(fCombo.GetItemIndex() + (event.Key == vkUp ? -1 : 1));
  }
  if (event.Action == TKeyAction::Up || fCombo.GetReadOnly()) return;
  const THeadlessTextField::TResult result =
      down ? fField.KeyDown(event.Key, event.Shift, GetDesktop())
           : fField.KeyChar(event.Char, GetDesktop());
  event.Handled = result.Handled;
  if (result.Handled) Invalidate(nullptr);
  if (result.Changed) fCombo.HandleTextChanged(fField.GetText());
}

void THeadlessCombo::OnFocusChanged(bool focused) {
  Invalidate(nullptr);
  const TLifeGuard guard = Guard();
  if (!focused) CloseUp();
  if (guard.IsAlive()) THeadlessPeer::OnFocusChanged(focused);
}

}  // namespace oak
