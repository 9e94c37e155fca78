#include "oak/framework/win32/Win32WidgetSet.h"

#include "oak/framework/Application.h"
#include "oak/framework/GraphicsSystem.h"
#include "oak/framework/Styles.h"
#include "oak/framework/WinControl.h"
#include "oak/framework/win32/GraphicsWin32.h"
#include "oak/framework/win32/HiddenWindow.h"
#include "oak/framework/win32/HintWindow.h"
#include "oak/framework/win32/Input.h"
#include "oak/framework/win32/MenusWin32.h"
#include "oak/framework/win32/Peers.h"
#include "oak/framework/win32/System.h"
#include "oak/framework/win32/WindowPeer.h"
#include "oak/platform/Api.h"

namespace oak {
namespace {

BOOL CALLBACK AddMonitor(HMONITOR monitor, HDC, LPRECT, LPARAM parameter) {
  MONITORINFO info{};
  info.cbSize = sizeof info;
  if (!::GetMonitorInfoW(monitor, &info)) return TRUE;
  reinterpret_cast<std::vector<TMonitorInfo>*>(parameter)->push_back(
      {TRect(info.rcMonitor), TRect(info.rcWork), win32::DensityOfMonitor(monitor),
       (info.dwFlags & MONITORINFOF_PRIMARY) != 0});
  return TRUE;
}

void InitCommonControls() {
  const win32::TCommonControlsScope version6;
  INITCOMMONCONTROLSEX request{};
  request.dwSize = sizeof request;
  request.dwICC = ICC_LISTVIEW_CLASSES | ICC_TREEVIEW_CLASSES | ICC_BAR_CLASSES |
                  ICC_USEREX_CLASSES | ICC_STANDARD_CLASSES | ICC_WIN95_CLASSES;
  ::InitCommonControlsEx(&request);
}

}  // namespace

TWin32WidgetSet::TWin32WidgetSet() {
  // A library leaves the program that it is loaded into as it is.
  if (!Application().GetIsLibrary()) {
    win32::MakeDensityAware();
    fStyleWatch = TStyleManager::OnChange(
        [] { win32::SetDarkMenus(win32::IsDarkColor(ColorToRGB(clMenu))); });
  }
  InitCommonControls();
  fOle = SUCCEEDED(Api().OleInitialize(nullptr));
}

TWin32WidgetSet::~TWin32WidgetSet() {
  win32::THints::Instance().Close();
  if (fOle) Api().OleUninitialize();
}

// --- peers ---------------------------------------------------------------------------------------

std::unique_ptr<IControlPeer> TWin32WidgetSet::CreateControl(TWinControl& control) {
  auto peer = std::make_unique<TPaintedPeer>(control);
  peer->Create();
  return peer;
}

std::unique_ptr<IFormPeer> TWin32WidgetSet::CreateForm(TCustomForm& form) {
  return win32::MakeFormPeer(form);
}

std::unique_ptr<IListViewPeer> TWin32WidgetSet::CreateListView(TCustomListView& view) {
  return win32::MakeListPeer(view);
}

std::unique_ptr<ITreeViewPeer> TWin32WidgetSet::CreateTreeView(TCustomTreeView& view) {
  return win32::MakeTreePeer(view);
}

std::unique_ptr<IEditPeer> TWin32WidgetSet::CreateEdit(TCustomEdit& edit) {
  return win32::MakeEditPeer(edit);
}

std::unique_ptr<IComboPeer> TWin32WidgetSet::CreateCombo(TCustomComboBoxEx& combo) {
  return win32::MakeComboPeer(combo);
}

std::unique_ptr<ITimerPeer> TWin32WidgetSet::CreateTimer(unsigned milliseconds,
                                                         std::function<void()> tick) {
  return win32::MakeTimer(fServices.GetHandle(), milliseconds, std::move(tick));
}

// --- messages ------------------------------------------------------------------------------------

bool win32::RunMessage() {
  MSG message;
  if (!::PeekMessageW(&message, nullptr, 0, 0, PM_REMOVE)) return false;
  if (message.message == WM_QUIT) {
    Application().Terminate();
    return true;
  }
  ::TranslateMessage(&message);
  ::DispatchMessageW(&message);
  return true;
}

void win32::WaitForMessage() {
  // Returns as well when a message has been looked at already but not been taken.
  ::MsgWaitForMultipleObjectsEx(0, nullptr, INFINITE, QS_ALLINPUT, MWMO_INPUTAVAILABLE);
}

bool TWin32WidgetSet::ProcessMessage() { return win32::RunMessage(); }

void TWin32WidgetSet::WaitMessage() { win32::WaitForMessage(); }

void TWin32WidgetSet::WakeUp() { fServices.Wake(); }

// --- the system ----------------------------------------------------------------------------------

std::vector<TMonitorInfo> TWin32WidgetSet::GetMonitors() const {
  std::vector<TMonitorInfo> monitors;
  ::EnumDisplayMonitors(nullptr, nullptr, &AddMonitor, reinterpret_cast<LPARAM>(&monitors));
  return monitors;
}

TPoint TWin32WidgetSet::GetCursorPos() const {
  POINT point{};
  ::GetCursorPos(&point);
  return TPoint(point);
}

void TWin32WidgetSet::SetCursorPos(TPoint point) { ::SetCursorPos(point.X, point.Y); }

void TWin32WidgetSet::SetGlobalCursor(TCursor cursor) { win32::SetGlobalCursor(cursor); }

TShiftState TWin32WidgetSet::GetShiftState() const { return win32::CurrentShift(); }

bool TWin32WidgetSet::IsKeyDown(std::uint16_t key) const { return ::GetKeyState(key) < 0; }

int TWin32WidgetSet::GetSystemMetric(int index, int pixelsPerInch) const {
  return win32::SystemMetric(index, pixelsPerInch);
}

TColor TWin32WidgetSet::GetSysColor(TColor systemColor) const {
  return Win32GraphicsSystem().GetSystemColor(static_cast<int>(systemColor & 0xFF));
}

bool TWin32WidgetSet::IsDarkMode() const { return win32::SystemIsDark(); }

bool TWin32WidgetSet::IsThemed() const { return win32::ThemeIsActive(); }

TFont TWin32WidgetSet::GetSystemFont(int pixelsPerInch) const {
  TFont font;
  Win32GraphicsSystem().GetSystemFont(TSystemFont::IconTitle, pixelsPerInch, font);
  return font;
}

TSize TWin32WidgetSet::MeasureText(const TFont& font, int pixelsPerInch, TStringView text) const {
  TFont scaled = font;
  scaled.ChangeScale(pixelsPerInch);
  return Win32GraphicsSystem().GetTextExtent(scaled, text);
}

TWinControl* TWin32WidgetSet::ControlOf(HWND window) const {
  TWindowPeer* peer = TWindowPeer::Find(window);
  return peer ? &peer->GetControl() : nullptr;
}

HWND TWin32WidgetSet::GetFocusedWindow() const { return ::GetFocus(); }

bool TWin32WidgetSet::IsWindow(HWND window) const { return ::IsWindow(window) != FALSE; }

// --- menus, dialogs, clipboard, dragging ---------------------------------------------------------

HMENU TWin32WidgetSet::CreateMenu(const TMenuItem& root) { return win32::MakeMenu(root); }

void TWin32WidgetSet::DestroyMenu(HMENU menu) { win32::DestroyMenu(menu); }

UINT TWin32WidgetSet::TrackMenu(HMENU menu, TPoint screen, TWinControl* owner, HWND ownerWindow) {
  win32::THints::Instance().Cancel();
  return win32::TrackMenu(menu, screen, owner, ownerWindow);
}

HWND TWin32WidgetSet::CreateHiddenWindow(std::function<void(TMessage&)> procedure) {
  return win32::CreateHiddenWindow(std::move(procedure));
}

void TWin32WidgetSet::DestroyHiddenWindow(HWND window) { win32::DestroyHiddenWindow(window); }

LRESULT TWin32WidgetSet::DefaultProc(HWND window, const TMessage& message) {
  return ::DefWindowProcW(window, message.Msg, message.WParam, message.LParam);
}

int TWin32WidgetSet::ShowDialog(const TMessageDialog& dialog) {
  win32::THints::Instance().Cancel();
  return win32::ShowMessageDialog(dialog);
}

bool TWin32WidgetSet::GetClipboardText(TString* text) { return win32::ReadClipboardText(text); }

bool TWin32WidgetSet::SetClipboardText(const TString& text) {
  return win32::WriteClipboardText(fServices.GetHandle(), text);
}

HRESULT TWin32WidgetSet::DoDragDrop(TWinControl& control, IDataObject* data, IDropSource* source,
                                    DWORD allowed, DWORD* effect) {
  win32::THints::Instance().Cancel();
  return win32::DragData(control.GetHandle(), data, source, allowed, effect);
}

std::unique_ptr<TWidgetSet> CreateSystemWidgetSet() { return std::make_unique<TWin32WidgetSet>(); }

}  // namespace oak
