// What the window of a control reports: mouse, keys, menus, paint, messages.
#include "oak/framework/Application.h"
#include "oak/framework/Canvas.h"
#include "oak/framework/ControlScopes.h"
#include "oak/framework/Events.h"
#include "oak/framework/Forms.h"
#include "oak/framework/Menus.h"
#include "oak/framework/Styles.h"
#include "oak/framework/WidgetSet.h"

namespace oak {

// --- mouse -------------------------------------------------------------------
void TWinControl::HandleMouse(TMouseEvent& event) {
  if (IsDestroying()) return;
  RunFenced(*this, [&] {
    switch (event.Action) {
      case TMouseAction::Down:
        return MousePressed(event);
      case TMouseAction::Up:
        return MouseReleased(event);
      case TMouseAction::Move:
        return MouseMoved(event);
      case TMouseAction::Wheel:
      case TMouseAction::WheelSide:
        return MouseWheel(event);
      case TMouseAction::ExtraDown:
        if (WMXButtonDown(event.WheelDelta == 1 ? -1 : 1)) event.Handled = true;
        return;
      case TMouseAction::Leave:
        return MouseLeft();
    }
  });
}

void TWinControl::MousePressed(TMouseEvent& event) {
  const TLifeGuard guard = GetLifeGuard();
  if (event.Button == mbLeft) {
    if (CapturesMouse()) SetMouseCapture(true);
    IncludeState(csLButtonDown);
    if (event.Shift.Contains(ssDouble))
      DblClick();
    else
      IncludeState(csClicked);
  }
  if (guard.IsAlive()) MouseDown(event.Button, event.Shift, event.Position.X, event.Position.Y);
  if (!guard.IsAlive()) event.Handled = true;
}

void TWinControl::MouseReleased(TMouseEvent& event) {
  const TLifeGuard guard = GetLifeGuard();
  if (event.Button == mbLeft) {
    const bool isClick = GetControlState().Contains(csClicked);
    ExcludeState(csLButtonDown);
    ExcludeState(csClicked);
    if (CapturesMouse()) SetMouseCapture(false);
    if (isClick && GetClientRect().Contains(event.Position)) Click();
  }
  if (guard.IsAlive()) MouseUp(event.Button, event.Shift, event.Position.X, event.Position.Y);
  if (!guard.IsAlive()) event.Handled = true;
}

void TWinControl::MouseMoved(const TMouseEvent& event) {
  const TLifeGuard guard = GetLifeGuard();
  if (!fMouseInside) {
    fMouseInside = true;
    Application().HintEnters(*this);
    if (guard.IsAlive()) MouseEnter();
  }
  if (guard.IsAlive()) MouseMove(event.Shift, event.Position.X, event.Position.Y);
}

void TWinControl::MouseLeft() {
  const TLifeGuard guard = GetLifeGuard();
  fMouseInside = false;
  Application().HintLeaves();
  if (guard.IsAlive()) MouseLeave();
}

// The windows themselves pass an unused wheel on to their parents.
void TWinControl::MouseWheel(TMouseEvent& event) {
  const TLifeGuard guard = GetLifeGuard();
  event.Handled = DoMouseWheel(event.Shift, event.WheelDelta, event.Position);
  if (!guard.IsAlive()) event.Handled = true;
}

bool TWinControl::WMXButtonDown(int direction) {
  return GetParent() && GetParent()->WMXButtonDown(direction);
}

bool TWinControl::GetMouseCapture() const { return fPeer && fPeer->HasCapture(); }

void TWinControl::SetMouseCapture(bool value) {
  if (!fPeer || value == fPeer->HasCapture()) return;
  const TMemberScope changing(*this, fChangingCapture, true);
  fPeer->SetCapture(value);
}

void TWinControl::HandleCaptureLost() {
  if (IsDestroying() || fChangingCapture) return;
  RunFenced(*this, [this] {
    ExcludeState(csLButtonDown);
    ExcludeState(csClicked);
    CaptureLost();
  });
}

// --- keys --------------------------------------------------------------------
void TWinControl::HandleKey(TKeyEvent& event) {
  if (IsDestroying()) return;
  const TLifeGuard guard = GetLifeGuard();
  RunFenced(*this, [&] {
    TCustomForm* form = GetParentForm();
    TWinControl* preview = form && form != this && form->GetKeyPreview() ? form : nullptr;
    auto offer = [&](auto&& handler) {
      if (preview && !event.Handled) handler(*preview);
      if (guard.IsAlive() && !event.Handled) handler(*this);
    };
    switch (event.Action) {
      case TKeyAction::Down:
        if (RunShortCut(event.Key, event.Shift) || !guard.IsAlive() ||
            RunDialogKey(event.Key, event.Shift) || !guard.IsAlive()) {
          event.Handled = true;
          return;
        }
        return offer([&](TWinControl& control) {
          std::uint16_t key = event.Key;
          control.KeyDown(key, event.Shift);
          event.Handled = key == 0;
        });
      case TKeyAction::Up:
        return offer([&](TWinControl& control) {
          std::uint16_t key = event.Key;
          control.KeyUp(key, event.Shift);
          event.Handled = key == 0;
        });
      case TKeyAction::Char:
        return offer([&](TWinControl& control) {
          control.KeyPress(event.Char);
          event.Handled = event.Char == 0;
        });
    }
  });
  if (!guard.IsAlive()) event.Handled = true;
}

// Menus of the control and of those around it, the innermost first, then that of the form.
bool TWinControl::RunShortCut(std::uint16_t key, TShiftState shift) {
  const TLifeGuard guard = GetLifeGuard();
  for (TWinControl* control = this; control; control = control->GetParent()) {
    TPopupMenu* menu = control->GetPopupMenu();
    if (menu && menu->IsShortCut(key, shift)) return true;
    if (!guard.IsAlive()) return true;
  }
  TCustomForm* form = GetParentForm();
  return form && form->GetMenu() && form->GetMenu()->IsShortCut(key, shift);
}

bool TWinControl::RunDialogKey(std::uint16_t key, TShiftState shift) {
  const bool isLetter = (key >= u'A' && key <= u'Z') || (key >= u'0' && key <= u'9');
  const bool isMnemonic = isLetter && shift == TShiftState{ssAlt};
  if (key != vkTab && key != vkReturn && key != vkEscape && !isMnemonic) return false;
  if (WantsKey(key, shift)) return false;
  TWinControl* root = this;
  while (root->GetParent()) root = root->GetParent();
  return root->DialogKey(key, shift);
}

bool TWinControl::WantsKey(std::uint16_t, TShiftState) { return false; }

bool TWinControl::DialogKey(std::uint16_t key, TShiftState shift) {
  // In a foreign window the program part has its own round of tab stops.
  const bool isPlainTab = key == vkTab && !shift.Contains(ssCtrl) && !shift.Contains(ssAlt);
  if (isPlainTab && IsPlacedByHost()) {
    TWinControl* current = WidgetSet().ControlOf(WidgetSet().GetFocusedWindow());
    TWinControl* next = FindNextControl(current, !shift.Contains(ssShift), true);
    if (next) next->SetFocus();
    return next != nullptr;
  }
  bool taken = false;
  ForEachWindow([&](TWinControl& child) {
    if (!taken && child.GetVisible()) taken = child.DialogKey(key, shift);
  });
  return taken;
}

void TWinControl::KeyDown(std::uint16_t& key, TShiftState shift) {
  FireEvent(OnKeyDown, this, key, shift);
}

void TWinControl::KeyUp(std::uint16_t& key, TShiftState shift) {
  FireEvent(OnKeyUp, this, key, shift);
}

void TWinControl::KeyPress(char16_t& key) { FireEvent(OnKeyPress, this, key); }

// --- context menu ------------------------------------------------------------
void TWinControl::HandleContextMenu(TPoint screen) {
  if (IsDestroying()) return;
  RunFenced(*this, [&] { WMContextMenu(screen); });
}

void TWinControl::WMContextMenu(TPoint screen) {
  const TLifeGuard guard = GetLifeGuard();
  const bool byKeyboard = screen == TPoint(-1, -1);
  bool handled = false;
  DoContextPopup(byKeyboard ? screen : ScreenToClient(screen), handled);
  if (handled || !guard.IsAlive()) return;
  if (TPopupMenu* menu = GetPopupMenu(); menu && menu->GetAutoPopup())
    ShowPopupMenu(*menu, byKeyboard ? ClientToScreen({}) : screen);
  else if (GetParent())
    GetParent()->WMContextMenu(screen);
}

void TWinControl::ShowPopupMenu(TPopupMenu& menu, TPoint screen) {
  menu.SetPopupComponent(this);
  menu.Popup(screen.X, screen.Y);
}

// --- paint, hints, messages --------------------------------------------------
void TWinControl::HandlePaint(TCanvas& canvas, const TRect& clip) {
  if (IsDestroying()) return;
  RunFenced(*this, [&] {
    canvas.SetFont(GetFont());
    Paint(canvas, clip);
  });
}

void TWinControl::Paint(TCanvas&, const TRect&) {}

void TCustomControl::Paint(TCanvas& canvas, const TRect& clip) {
  FireEvent(OnPaint, this, canvas, clip);
}

TString TWinControl::HandleHint(TPoint point, TRect& area) {
  TString text;
  area = GetClientRect();
  if (IsDestroying() || !GetShowHint() || !Application().GetShowHint()) return text;
  RunFenced(*this, [&] { text = GetHintText(point, area); });
  return text;
}

TString TWinControl::GetHintText(TPoint, TRect&) { return GetShortHint(GetHint()); }

void TWinControl::HandleMessage(TMessage& message) {
  if (IsDestroying()) return;
  RunFenced(*this, [&] {
    const TLifeGuard guard = GetLifeGuard();
    bool handled = false;
    FireEvent(Application().OnMessage, this, message, handled);
    if (!handled && guard.IsAlive()) WndProc(message);
  });
}

void TWinControl::HandleWindowLost() {
  if (IsDestroying()) return;
  RunFenced(*this, [this] { DestroyHandle(); });
}

void TWinControl::HandleSystemColors() {
  RunFenced(*this, [] { TStyleManager::NotifyChange(); });
}

}  // namespace oak
