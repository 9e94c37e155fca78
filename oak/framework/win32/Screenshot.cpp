#include "oak/framework/win32/Screenshot.h"

#include "oak/framework/Geometry.h"
#include "oak/framework/win32/DibWin32.h"
#include "oak/framework/win32/System.h"

namespace oak {
namespace {

constexpr UINT PrintAll = 2;  // PW_RENDERFULLCONTENT

}  // namespace

TBitmap TakeScreenshot(HWND window) {
  RECT rect{};
  if (!::GetWindowRect(window, &rect)) return {};
  const TSize size = TRect(rect).Size();
  if (size.Width <= 0 || size.Height <= 0) return {};
  ::RedrawWindow(window, nullptr, nullptr, RDW_UPDATENOW | RDW_ALLCHILDREN);
  TDibSection picture(size.Width, size.Height);
  // The system paints even what other windows cover; where it can't, what is on the screen counts.
  if (win32::IsWine() || !::PrintWindow(window, picture.GetDC(), PrintAll)) {
    const HDC dc = ::GetWindowDC(window);
    ::BitBlt(picture.GetDC(), 0, 0, size.Width, size.Height, dc, 0, 0, SRCCOPY);
    ::ReleaseDC(window, dc);
  }
  return picture.ToBitmap();
}

}  // namespace oak
