#include "oak/framework/headless/HeadlessPeer.h"

#include "oak/framework/Canvas.h"
#include "oak/framework/headless/HeadlessDesktop.h"

namespace oak {
namespace {

THeadlessWindow* ParentWindowOf(THeadlessDesktop& desktop, TWinControl& control,
                                THeadlessKind kind) {
  if (kind != THeadlessKind::Child && !control.GetParent() && !control.GetParentWindow())
    return nullptr;
  if (TWinControl* const parent = control.GetParent())
    return desktop.FindWindow(parent->GetHandle());
  return desktop.FindWindow(control.GetParentWindow());
}

}  // namespace

THeadlessPeer::THeadlessPeer(THeadlessDesktop& desktop, TWinControl& control, THeadlessKind kind)
    : THeadlessWindow(desktop, kind, ParentWindowOf(desktop, control, kind),
                      control.GetBoundsRect()),
      fControl(control) {
  THeadlessWindow::SetText(control.GetText());
  THeadlessWindow::SetFont(control.GetFont());
  THeadlessWindow::SetCursor(control.GetCursor());
  THeadlessWindow::SetEnabled(control.GetEnabled());
}

TColor THeadlessPeer::BackgroundColor(TColor fallback) const {
  const TColor color = fControl.GetColor();
  return color == clDefault || color == clNone ? fallback : color;
}

void THeadlessPeer::Paint(TCanvas& canvas, const TRect& clip) {
  canvas.GetBrush().SetColor(BackgroundColor(clBtnFace));
  canvas.FillRect(clip);
  fControl.HandlePaint(canvas, clip);
}

TRect THeadlessPeer::GetFrame() const {
  if (fControl.GetBorderStyle() == bsNone) return {};
  const int width = Scaled(2);
  return {width, width, width, width};
}

void THeadlessPeer::OnFocusChanged(bool focused) { fControl.HandleFocus(focused); }
void THeadlessPeer::OnMessage(TMessage& message) { fControl.HandleMessage(message); }
void THeadlessPeer::RequestContextMenu(TPoint screen) { fControl.HandleContextMenu(screen); }
void THeadlessPeer::OnCaptureLost() { fControl.HandleCaptureLost(); }
void THeadlessPeer::BoundsMoved(bool) { fControl.HandleBounds(GetBounds()); }

void THeadlessPeer::DispatchMouse(TMouseEvent& event) {
  const TLifeGuard guard = Guard();
  fControl.HandleMouse(event);
  if (guard.IsAlive() && !event.Handled) THeadlessWindow::DispatchMouse(event);
}

bool THeadlessPeer::DispatchKey(TKeyEvent& event) {
  const TLifeGuard guard = Guard();
  fControl.HandleKey(event);
  if (!guard.IsAlive()) return false;
  if (event.Handled) return false;
  return THeadlessWindow::DispatchKey(event);
}

}  // namespace oak
