// Messages of a window: what the user does becomes events of the control.

#include "oak/framework/WinControl.h"
#include "oak/framework/win32/HintWindow.h"
#include "oak/framework/win32/Input.h"
#include "oak/framework/win32/System.h"
#include "oak/framework/win32/WindowPeer.h"
#include "oak/framework/win32/WindowProcs.h"

namespace oak {
namespace {

constexpr UINT MessageOfDensityAfterParent = 0x02E3;

int XOf(LPARAM lParam) { return static_cast<short>(LOWORD(lParam)); }
int YOf(LPARAM lParam) { return static_cast<short>(HIWORD(lParam)); }

bool IsMouseMessage(UINT message) { return message >= WM_MOUSEFIRST && message <= WM_MOUSEHWHEEL; }
bool IsKeyMessage(UINT message) { return message >= WM_KEYFIRST && message <= WM_KEYLAST; }

TMouseButton ButtonOf(UINT message) {
  if (message >= WM_MBUTTONDOWN && message <= WM_MBUTTONDBLCLK) return mbMiddle;
  if (message >= WM_RBUTTONDOWN && message <= WM_RBUTTONDBLCLK) return mbRight;
  return mbLeft;
}

TMouseAction ActionOf(UINT message) {
  switch (message) {
    case WM_MOUSEMOVE:
      return TMouseAction::Move;
    case WM_MOUSEWHEEL:
      return TMouseAction::Wheel;
    case WM_MOUSEHWHEEL:
      return TMouseAction::WheelSide;
    case WM_LBUTTONUP:
    case WM_RBUTTONUP:
    case WM_MBUTTONUP:
      return TMouseAction::Up;
    case WM_XBUTTONDOWN:
    case WM_XBUTTONDBLCLK:
      return TMouseAction::ExtraDown;
    default:
      return TMouseAction::Down;
  }
}

bool IsDoubleClick(UINT message) {
  return message == WM_LBUTTONDBLCLK || message == WM_RBUTTONDBLCLK || message == WM_MBUTTONDBLCLK;
}

TShiftState ShiftOfMouse(WPARAM wParam, bool twice) {
  const WORD keys = LOWORD(wParam);
  TShiftState shift;
  if (keys & MK_SHIFT) shift.Include(ssShift);
  if (keys & MK_CONTROL) shift.Include(ssCtrl);
  if (keys & MK_LBUTTON) shift.Include(ssLeft);
  if (keys & MK_RBUTTON) shift.Include(ssRight);
  if (keys & MK_MBUTTON) shift.Include(ssMiddle);
  if (::GetKeyState(VK_MENU) < 0) shift.Include(ssAlt);
  if (twice) shift.Include(ssDouble);
  return shift;
}

TMouseEvent MouseEventOf(UINT message, WPARAM wParam, LPARAM lParam) {
  TMouseEvent event;
  event.Action = ActionOf(message);
  event.Button = ButtonOf(message);
  event.Shift = ShiftOfMouse(wParam, IsDoubleClick(message));
  event.Position = {XOf(lParam), YOf(lParam)};
  if (event.Action == TMouseAction::Wheel || event.Action == TMouseAction::WheelSide)
    event.WheelDelta = GET_WHEEL_DELTA_WPARAM(wParam);
  if (event.Action == TMouseAction::ExtraDown)
    event.WheelDelta = GET_XBUTTON_WPARAM(wParam) == XBUTTON1 ? 1 : 2;
  return event;
}

/// The characters of a key press wait behind it already.
void DropCharacters(HWND window) {
  MSG dropped;
  while (::PeekMessageW(&dropped, window, WM_CHAR, WM_DEADCHAR, PM_REMOVE)) {
  }
  while (::PeekMessageW(&dropped, window, WM_SYSCHAR, WM_SYSDEADCHAR, PM_REMOVE)) {
  }
}

void AskForLeave(HWND window) {
  TRACKMOUSEEVENT request{};
  request.cbSize = sizeof request;
  request.dwFlags = TME_LEAVE;
  request.hwndTrack = window;
  ::TrackMouseEvent(&request);
}

/// Whether the control or one of its parents answers a request for a context menu.
bool AnswersContextMenu(const TWinControl& control) {
  for (const TWinControl* at = &control; at; at = at->GetParent())
    if (at->GetPopupMenu() || at->OnContextPopup) return true;
  return false;
}

}  // namespace

namespace win32 {

TShiftState CurrentShift() {
  TShiftState shift;
  if (::GetKeyState(VK_SHIFT) < 0) shift.Include(ssShift);
  if (::GetKeyState(VK_CONTROL) < 0) shift.Include(ssCtrl);
  if (::GetKeyState(VK_MENU) < 0) shift.Include(ssAlt);
  if (::GetKeyState(VK_LBUTTON) < 0) shift.Include(ssLeft);
  if (::GetKeyState(VK_RBUTTON) < 0) shift.Include(ssRight);
  if (::GetKeyState(VK_MBUTTON) < 0) shift.Include(ssMiddle);
  return shift;
}

namespace {
TCursor gGlobalCursor = crDefault;
}

HCURSOR CursorHandle(TCursor cursor) {
  switch (cursor) {
    case crNone:
      return nullptr;
    case crIBeam:
      return ::LoadCursorW(nullptr, MAKEINTRESOURCEW(32513));
    case crSizeWE:
      return ::LoadCursorW(nullptr, MAKEINTRESOURCEW(32644));
    case crSizeNS:
      return ::LoadCursorW(nullptr, MAKEINTRESOURCEW(32645));
    case crHourGlass:
      return ::LoadCursorW(nullptr, MAKEINTRESOURCEW(32514));
    case crNo:
      return ::LoadCursorW(nullptr, MAKEINTRESOURCEW(32648));
    case crAppStart:
      return ::LoadCursorW(nullptr, MAKEINTRESOURCEW(32650));
    case crHandPoint:
      return ::LoadCursorW(nullptr, MAKEINTRESOURCEW(32649));
    default:
      return ::LoadCursorW(nullptr, MAKEINTRESOURCEW(32512));
  }
}

void SetGlobalCursor(TCursor cursor) {
  gGlobalCursor = cursor;
  POINT at{};
  if (cursor != crDefault) {
    ::SetCursor(CursorHandle(cursor));
  } else if (::GetCursorPos(&at)) {
    // The window under the mouse shows its own again.
    const HWND window = ::WindowFromPoint(at);
    if (window && TWindowPeer::Find(window))
      ::SendMessageW(window, WM_SETCURSOR, reinterpret_cast<WPARAM>(window),
                     MAKELPARAM(HTCLIENT, WM_MOUSEMOVE));
  }
}

}  // namespace win32

bool TWindowPeer::HandleSetCursor(WPARAM wParam, LPARAM lParam) {
  if (LOWORD(lParam) != HTCLIENT) return false;
  TCursor cursor = win32::gGlobalCursor;
  if (cursor == crDefault && reinterpret_cast<HWND>(wParam) == fHandle) cursor = fCursor;
  if (cursor == crDefault) return false;
  ::SetCursor(win32::CursorHandle(cursor));
  return true;
}

bool TWindowPeer::ReportMouse(UINT message, WPARAM wParam, LPARAM lParam, HWND inner) {
  // Side buttons count when they go down; their release stays with the system.
  if (message == WM_XBUTTONUP || fCreating) return false;
  TMouseEvent event = MouseEventOf(message, wParam, lParam);
  const bool wheel = message == WM_MOUSEWHEEL || message == WM_MOUSEHWHEEL;
  if (inner && !wheel) {
    POINT point = event.Position;
    ::MapWindowPoints(inner, fHandle, &point, 1);
    event.Position = TPoint(point);
  }
  if (message == WM_MOUSEMOVE) {
    if (!fTracksLeave) AskForLeave(inner ? inner : fHandle);
    fTracksLeave = true;
    win32::THints::Instance().MouseMoved(*this, event.Position);
  } else {
    win32::THints::Instance().Cancel();
  }
  const TPeerGuard guard(*this);
  fControl.HandleMouse(event);
  return !guard.IsAlive() || event.Handled;
}

bool TWindowPeer::ReportKey(UINT message, WPARAM& wParam, HWND inner) {
  if (fCreating) return false;
  TKeyEvent event;
  switch (message) {
    case WM_KEYDOWN:
    case WM_SYSKEYDOWN:
      event.Action = TKeyAction::Down;
      break;
    case WM_KEYUP:
    case WM_SYSKEYUP:
      event.Action = TKeyAction::Up;
      break;
    case WM_CHAR:
      event.Action = TKeyAction::Char;
      break;
    default:
      return false;
  }
  if (event.Action == TKeyAction::Char)
    event.Char = static_cast<char16_t>(wParam);
  else
    event.Key = static_cast<std::uint16_t>(wParam);
  event.Shift = win32::CurrentShift();
  win32::THints::Instance().Cancel();
  const HWND window = inner ? inner : fHandle;
  const TPeerGuard guard(*this);
  fControl.HandleKey(event);
  if (event.Handled && event.Action == TKeyAction::Down) DropCharacters(window);
  // The program may have put another character in the place of the typed one.
  if (event.Action == TKeyAction::Char) wParam = event.Char;
  return !guard.IsAlive() || event.Handled;
}

bool TWindowPeer::ReportFocus(bool focused, HWND other) {
  if (fCreating || (other && Find(other) == this)) return false;
  const TPeerGuard guard(*this);
  fControl.HandleFocus(focused);
  return !guard.IsAlive();
}

bool TWindowPeer::ReportContextMenu(LPARAM lParam) {
  if (HasSystemContextMenu() && !AnswersContextMenu(fControl)) return false;
  const TPoint screen = lParam == -1 ? TPoint(-1, -1) : TPoint(XOf(lParam), YOf(lParam));
  win32::THints::Instance().Cancel();
  fControl.HandleContextMenu(screen);
  return true;
}

bool TWindowPeer::HandleUserInput(UINT message, WPARAM& wParam, LPARAM lParam, LRESULT& result,
                                  HWND inner) {
  result = 0;
  if (IsMouseMessage(message)) return ReportMouse(message, wParam, lParam, inner);
  if (IsKeyMessage(message)) return ReportKey(message, wParam, inner);
  switch (message) {
    case WM_MOUSELEAVE: {
      fTracksLeave = false;
      win32::THints::Instance().Cancel();
      TMouseEvent event;
      event.Action = TMouseAction::Leave;
      const TPeerGuard guard(*this);
      fControl.HandleMouse(event);
      return !guard.IsAlive();
    }
    case WM_CONTEXTMENU:
      return ReportContextMenu(lParam);
    default:
      return false;
  }
}

LRESULT TWindowPeer::WindowProc(UINT message, WPARAM wParam, LPARAM lParam) {
  const HWND window = fHandle;
  LRESULT result = 0;
  if (TWindowProcs::Reflect(this, message, wParam, lParam, result)) return result;
  if (HandleUserInput(message, wParam, lParam, result, nullptr)) return result;
  if (HandleOwnPaint(message, wParam, result)) return result;
  if (message == TWindowProcs::PostedMessage()) {
    DeliverPosted();
    return 0;
  }
  if (IsPrivateMessage(message) && !fCreating && ReportMessage(message, wParam, lParam, result))
    return result;

  const TPeerGuard guard(*this);
  switch (message) {
    case WM_SETCURSOR:
      if (HandleSetCursor(wParam, lParam)) return TRUE;
      break;
    case WM_SETFOCUS:
    case WM_KILLFOCUS:
      // The common control first: what the program does then finds it in its new state.
      result = DefaultProc(message, wParam, lParam);
      if (guard.IsAlive()) ReportFocus(message == WM_SETFOCUS, reinterpret_cast<HWND>(wParam));
      return result;
    case WM_NCPAINT:
      result = DefaultProc(message, wParam, lParam);
      if (fSubclassed) PaintDarkEdge();
      return result;
    case WM_CAPTURECHANGED:
      result = DefaultProc(message, wParam, lParam);
      if (guard.IsAlive() && !fCreating && reinterpret_cast<HWND>(lParam) != fHandle)
        fControl.HandleCaptureLost();
      return result;
    case WM_WINDOWPOSCHANGED:
      result = DefaultProc(message, wParam, lParam);
      if (guard.IsAlive()) ReportBounds();
      return result;
    case MessageOfDensityAfterParent:
      result = DefaultProc(message, wParam, lParam);
      if (guard.IsAlive()) HandleDensity();
      return result;
    case WM_THEMECHANGED:
      // Forms hear of it themselves; in a foreign window nobody else tells.
      result = DefaultProc(message, wParam, lParam);
      if (guard.IsAlive() && !fCreating && fControl.GetParentWindow())
        fControl.HandleSystemColors();
      return result;
    case WM_GETDLGCODE:
      if (!fSubclassed) return DLGC_WANTALLKEYS;
      break;
    case WM_DESTROY:
      WindowDestroyed();
      return DefaultProcOf(window, message, wParam, lParam);
    case WM_NCDESTROY:
      // Whoever kept the peer though its window was lost must not use a number given anew.
      fHandle = nullptr;
      break;
    default:
      break;
  }
  return guard.IsAlive() ? DefaultProcOf(window, message, wParam, lParam) : 0;
}

LRESULT TWindowPeer::InnerProc(HWND window, UINT message, WPARAM wParam, LPARAM lParam) {
  LRESULT result = 0;
  if (HandleUserInput(message, wParam, lParam, result, window)) return result;
  if (message == WM_SETCURSOR && HandleSetCursor(wParam, lParam)) return TRUE;
  const TPeerGuard guard(*this);
  result = DefaultProcOf(window, message, wParam, lParam);
  if ((message == WM_SETFOCUS || message == WM_KILLFOCUS) && guard.IsAlive())
    ReportFocus(message == WM_SETFOCUS, reinterpret_cast<HWND>(wParam));
  return result;
}

}  // namespace oak
