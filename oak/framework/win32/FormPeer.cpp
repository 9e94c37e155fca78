#include "oak/framework/win32/FormPeer.h"

#include "oak/framework/Application.h"
#include "oak/framework/Bitmap.h"
#include "oak/framework/Menus.h"
#include "oak/framework/win32/MenusWin32.h"
#include "oak/framework/win32/Peers.h"
#include "oak/framework/win32/System.h"
#include "oak/framework/win32/WindowProcs.h"

namespace oak {
namespace {

constexpr UINT MessageOfDensity = 0x02E0;

DWORD StyleOf(const TCustomForm& form) {
  if (form.GetParent() || form.GetParentWindow()) return WS_CHILD;
  switch (form.GetFormBorderStyle()) {
    case bsFormNone:
      return WS_POPUP;
    case bsDialog:
      return WS_POPUP | WS_CAPTION | WS_SYSMENU;
    case bsToolWindow:
      return WS_POPUP | WS_CAPTION | WS_SYSMENU;
    default:
      return WS_OVERLAPPEDWINDOW;
  }
}

DWORD ExStyleOf(const TCustomForm& form) {
  if (form.GetParent() || form.GetParentWindow()) return WS_EX_CONTROLPARENT;
  switch (form.GetFormBorderStyle()) {
    case bsDialog:
      return WS_EX_CONTROLPARENT | WS_EX_DLGMODALFRAME;
    case bsToolWindow:
      return WS_EX_CONTROLPARENT | WS_EX_TOOLWINDOW;
    default:
      return WS_EX_CONTROLPARENT | WS_EX_APPWINDOW;
  }
}

int ShowCommand(TWindowState state) {
  switch (state) {
    case wsMinimized:
      return SW_SHOWMINIMIZED;
    case wsMaximized:
      return SW_SHOWMAXIMIZED;
    default:
      return SW_SHOWNORMAL;
  }
}

TWindowState StateOf(HWND window) {
  if (::IsIconic(window)) return wsMinimized;
  return ::IsZoomed(window) ? wsMaximized : wsNormal;
}

/// The other windows of the thread don't take input as long as this lives.
class TModalScope {
 public:
  explicit TModalScope(HWND window) : fWindow(window) {
    ::EnumThreadWindows(::GetCurrentThreadId(), &Visit, reinterpret_cast<LPARAM>(this));
    // Above the window that it was called from: the uppermost of the others.
    if (!fDisabled.empty())
      ::SetWindowLongPtrW(window, GWLP_HWNDPARENT, reinterpret_cast<LONG_PTR>(fDisabled.front()));
  }
  ~TModalScope() {
    for (const HWND window : fDisabled)
      if (::IsWindow(window)) ::EnableWindow(window, TRUE);
    if (::IsWindow(fWindow)) ::SetWindowLongPtrW(fWindow, GWLP_HWNDPARENT, 0);
  }
  TModalScope(const TModalScope&) = delete;
  TModalScope& operator=(const TModalScope&) = delete;

 private:
  static BOOL CALLBACK Visit(HWND window, LPARAM parameter) {
    auto& scope = *reinterpret_cast<TModalScope*>(parameter);
    if (window == scope.fWindow || !::IsWindowVisible(window) || !::IsWindowEnabled(window))
      return TRUE;
    ::EnableWindow(window, FALSE);
    scope.fDisabled.push_back(window);
    return TRUE;
  }

  HWND fWindow;
  std::vector<HWND> fDisabled;
};

/// Straight alpha, as icons have it.
TPixel WithoutPremultiplication(TPixel pixel) {
  const TPixel alpha = pixel >> 24;
  if (alpha == 0 || alpha == 255) return pixel;
  const auto part = [&](int shift) {
    return std::min<TPixel>((((pixel >> shift) & 0xFF) * 255 + alpha / 2) / alpha, 255) << shift;
  };
  return alpha << 24 | part(16) | part(8) | part(0);
}

TOwnedIcon MakeIcon(const TBitmap& picture) {
  TBitmap straight;
  straight.Assign(&picture);
  for (int y = 0; y < straight.GetHeight(); ++y)
    for (TPixel *at = straight.ScanLine(y), *end = at + straight.GetWidth(); at < end; ++at)
      *at = WithoutPremultiplication(*at);
  const TOwnedBitmap color = TOwnedBitmap::Adopt(straight.CreateHandle());
  const TOwnedBitmap mask =
      TOwnedBitmap::Adopt(::CreateBitmap(picture.GetWidth(), picture.GetHeight(), 1, 1, nullptr));
  ICONINFO info{TRUE, 0, 0, mask.Get(), color.Get()};
  return TOwnedIcon::Adopt(::CreateIconIndirect(&info));
}

/// Common controls keep colours of their own and hear of changes from us.
void TellCommonControls(HWND form, UINT message) {
  const auto tell = [](HWND window, LPARAM parameter) -> BOOL {
    ::SendMessageW(window, static_cast<UINT>(parameter), 0, 0);
    return TRUE;
  };
  ::EnumChildWindows(form, tell, static_cast<LPARAM>(message));
}

}  // namespace

TFormPeer::TFormPeer(TCustomForm& form) : TWindowPeer(form), fForm(form) {}

TFormPeer::~TFormPeer() {
  // The menu belongs to the application and must not end with the window.
  if (GetHandle() && ::GetMenu(GetHandle())) ::SetMenu(GetHandle(), nullptr);
}

void TFormPeer::Create() {
  TWindowParams params = MakeParams();
  const DWORD kept = params.Style & (WS_DISABLED | WS_CLIPCHILDREN | WS_CLIPSIBLINGS);
  params.ClassName = TWindowProcs::FormClass();
  params.Style = kept | StyleOf(fForm);
  params.ExStyle = ExStyleOf(fForm);
  CreateHandle(params);
}

void TFormPeer::Initialize() {
  win32::SetDarkTitleBar(GetHandle(), win32::IsDarkColor(GetBackColor()));
}

void TFormPeer::SetVisible(bool visible) {
  ::ShowWindow(GetHandle(), visible ? ShowCommand(fForm.GetWindowState()) : SW_HIDE);
}

void TFormPeer::SetBounds(const TRect& bounds) {
  if (StateOf(GetHandle()) == wsNormal) {
    TWindowPeer::SetBounds(bounds);
    return;
  }
  // The place to go back to.
  WINDOWPLACEMENT placement{};
  placement.length = sizeof placement;
  if (!::GetWindowPlacement(GetHandle(), &placement)) return;
  placement.rcNormalPosition = bounds;
  ::SetWindowPlacement(GetHandle(), &placement);
}

void TFormPeer::ColorsChanged() {
  win32::SetDarkTitleBar(GetHandle(), win32::IsDarkColor(GetBackColor()));
  TWindowPeer::ColorsChanged();
}

void TFormPeer::SetWindowState(TWindowState state) {
  if (!::IsWindowVisible(GetHandle()) || StateOf(GetHandle()) == state) return;
  ::ShowWindow(GetHandle(), state == wsNormal ? SW_RESTORE : ShowCommand(state));
}

void TFormPeer::SetIcon(const TBitmap* icon) {
  TOwnedIcon made = icon && !icon->IsEmpty() ? MakeIcon(*icon) : TOwnedIcon();
  const auto handle = reinterpret_cast<LPARAM>(made.Get());
  ::SendMessageW(GetHandle(), WM_SETICON, ICON_BIG, handle);
  ::SendMessageW(GetHandle(), WM_SETICON, ICON_SMALL, handle);
  fIcon = std::move(made);
}

void TFormPeer::Activate() {
  if (::IsIconic(GetHandle())) ::ShowWindow(GetHandle(), SW_RESTORE);
  ::SetForegroundWindow(GetHandle());
  ::SetActiveWindow(GetHandle());
}

void TFormPeer::SetMenu(TMenu* menu) {
  ::SetMenu(GetHandle(), menu ? menu->GetHandle() : nullptr);
  ::DrawMenuBar(GetHandle());
  ReportBounds();
}

void TFormPeer::RunModal(const std::function<bool()>& until) {
  const TModalScope modal(GetHandle());
  const TPeerGuard guard(*this);
  while (guard.IsAlive() && !until())
    if (!win32::RunMessage()) win32::WaitForMessage();
}

void TFormPeer::HandleActivate(bool active) {
  if (!IsCreating()) fForm.HandleActivate(active);
}

void TFormPeer::HandleSize(WPARAM kind) {
  if (IsCreating() || !::IsWindowVisible(GetHandle())) return;
  if (kind != SIZE_MINIMIZED && kind != SIZE_MAXIMIZED && kind != SIZE_RESTORED) return;
  const TWindowState state = StateOf(GetHandle());
  if (state != fForm.GetWindowState()) fForm.HandleWindowState(state);
}

void TFormPeer::HandleDensityChange(int density, const RECT& suggested) {
  if (!fForm.GetScaled()) return;
  const TRect bounds(suggested);
  const TPeerGuard guard(*this);
  fForm.HandlePixelsPerInch(density);
  if (guard.IsAlive() && GetHandle())
    ::SetWindowPos(GetHandle(), nullptr, bounds.Left, bounds.Top, bounds.Width(), bounds.Height(),
                   SWP_NOZORDER | SWP_NOACTIVATE);
}

void TFormPeer::HandleSettings(UINT message, LPARAM lParam) {
  if (message == WM_SETTINGCHANGE) {
    const auto area = reinterpret_cast<LPCWSTR>(lParam);
    if (!area || FromW(area) != u"ImmersiveColorSet") return;
  }
  if (message == WM_SYSCOLORCHANGE) TellCommonControls(GetHandle(), message);
  fForm.HandleSystemColors();
}

bool TFormPeer::HandleFormMessage(UINT message, WPARAM wParam, LPARAM lParam, LRESULT& result) {
  result = 0;
  if (win32::IsMenuMessage(message, wParam))
    return win32::HandleMenuMessage(&fForm, message, wParam, lParam, result);
  switch (message) {
    case WM_CLOSE:
      fForm.HandleCloseRequest();
      return true;
    case WM_COMMAND:
      if (lParam) return false;
      fForm.HandleMenuCommand(LOWORD(wParam));
      return true;
    case MessageOfDensity:
      HandleDensityChange(HIWORD(wParam), *reinterpret_cast<const RECT*>(lParam));
      return true;
    default:
      return false;
  }
}

LRESULT TFormPeer::WindowProc(UINT message, WPARAM wParam, LPARAM lParam) {
  LRESULT result = 0;
  if (!IsCreating() && HandleFormMessage(message, wParam, lParam, result)) return result;
  const TPeerGuard guard(*this);
  result = TWindowPeer::WindowProc(message, wParam, lParam);
  if (!guard.IsAlive() || !GetHandle() || IsCreating()) return result;
  switch (message) {
    case WM_ACTIVATE:
      HandleActivate(LOWORD(wParam) != WA_INACTIVE);
      break;
    case WM_SIZE:
      HandleSize(wParam);
      break;
    case WM_SYSCOLORCHANGE:
    case WM_THEMECHANGED:
    case WM_SETTINGCHANGE:
      HandleSettings(message, lParam);
      break;
    default:
      break;
  }
  return result;
}

namespace win32 {

std::unique_ptr<IFormPeer> MakeFormPeer(TCustomForm& form) {
  auto peer = std::make_unique<TFormPeer>(form);
  peer->Create();
  return peer;
}

}  // namespace win32

}  // namespace oak
