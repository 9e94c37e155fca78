// Painting and colours of a window.
#include "oak/platform/windows/WindowsHeaders.h"
// The system's header leans on others.
#include <uxtheme.h>

#include "oak/framework/WinControl.h"
#include "oak/framework/win32/CanvasWin32.h"
#include "oak/framework/win32/System.h"
#include "oak/framework/win32/WindowPeer.h"

namespace oak {
namespace {

class TPaintSession {
 public:
  explicit TPaintSession(HWND window) : fWindow(window) { ::BeginPaint(window, &fPaint); }
  ~TPaintSession() { ::EndPaint(fWindow, &fPaint); }
  TPaintSession(const TPaintSession&) = delete;
  TPaintSession& operator=(const TPaintSession&) = delete;
  HDC GetDC() const noexcept { return fPaint.hdc; }
  TRect GetClip() const noexcept { return TRect(fPaint.rcPaint); }

 private:
  HWND fWindow;
  PAINTSTRUCT fPaint{};
};

}  // namespace

bool TWindowPeer::HandleOwnPaint(UINT message, WPARAM wParam, LRESULT& result) {
  if (fSubclassed) return false;
  switch (message) {
    case WM_ERASEBKGND:
      // Painting covers all, from a buffer.
      result = 1;
      return true;
    case WM_PAINT:
      result = 0;
      if (fCreating) return false;
      PaintInvalid();
      return true;
    case WM_PRINTCLIENT:
      result = 0;
      if (fCreating) return false;
      PaintTo(reinterpret_cast<HDC>(wParam), GetClientRect());
      return true;
    default:
      return false;
  }
}

void TWindowPeer::PaintInvalid() {
  const TPaintSession session(fHandle);
  if (session.GetClip().IsEmpty()) return;
  const TDoubleBufferWin32 buffer(session.GetDC(), session.GetClip());
  PaintTo(buffer.GetDC(), session.GetClip());
}

void TWindowPeer::PaintTo(HDC dc, const TRect& clip) {
  TCanvasWin32 canvas(dc, fControl.GetCurrentPPI());
  canvas.GetBrush().SetColor(GetBackColor());
  canvas.FillRect(clip);
  canvas.SetFont(fControl.GetFont());
  fControl.HandlePaint(canvas, clip);
}

TColor TWindowPeer::GetTextColor() const { return ColorToRGB(fControl.GetFont().GetColor()); }

TColor TWindowPeer::GetBackColor() const {
  const TColor color = fControl.GetColor();
  if (color == clDefault || color == clNone) return ColorToRGB(fSubclassed ? clWindow : clBtnFace);
  return ColorToRGB(color);
}

HBRUSH TWindowPeer::GetColorBrush() {
  const TColor color = GetBackColor();
  if (!fBrush || fBrushColor != color) {
    fBrush = decltype(fBrush)::Adopt(::CreateSolidBrush(color));
    fBrushColor = color;
  }
  return fBrush.Get();
}

// Not every system has a dark theme, and a bright edge around a dark field hurts the eye.
void TWindowPeer::PaintDarkEdge() {
  if (!fDarkTheme || !(::GetWindowLongPtrW(fHandle, GWL_EXSTYLE) & WS_EX_CLIENTEDGE)) return;
  RECT rect{};
  ::GetWindowRect(fHandle, &rect);
  const HDC dc = ::GetWindowDC(fHandle);
  {
    TCanvasWin32 canvas(dc);
    constexpr int edgePercent = 30;
    TRect edge(0, 0, TRect(rect).Width(), TRect(rect).Height());
    canvas.GetBrush().SetColor(BlendColors(GetBackColor(), GetTextColor(), edgePercent));
    canvas.FrameRect(edge);
    canvas.GetBrush().SetColor(GetBackColor());
    canvas.FrameRect(edge.Inflated(-1, -1));
  }
  ::ReleaseDC(fHandle, dc);
}

LPCWSTR TWindowPeer::GetThemeName(bool dark) const { return dark ? L"DarkMode_Explorer" : nullptr; }

void TWindowPeer::ApplyTheme() {
  const bool dark = win32::IsDarkColor(GetBackColor());
  const bool first = fCreating && GetThemeName(dark);
  if (dark == fDarkTheme && !first) return;
  fDarkTheme = dark;
  win32::AllowDarkWindow(fHandle, dark);
  if (fSubclassed) ::SetWindowTheme(fHandle, GetThemeName(dark), nullptr);
  // The edge is drawn by us where the system has no dark one.
  if (!fCreating) ::RedrawWindow(fHandle, nullptr, nullptr, RDW_INVALIDATE | RDW_FRAME);
}

}  // namespace oak
