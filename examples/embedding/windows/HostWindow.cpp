#include "examples/embedding/windows/HostWindow.h"

#include <stdexcept>

#include "oak/platform/shell_api.h"

using namespace oak;

namespace {

constexpr wchar_t ClassName[] = L"EmbeddingExample";
constexpr int StatusHeight = 22;  // at 96 pixels per inch

}  // namespace

THostWindow::THostWindow(const TString& folder) {
  WNDCLASSEXW description{};
  description.cbSize = sizeof description;
  description.lpfnWndProc = &Procedure;
  description.hInstance = ::GetModuleHandleW(nullptr);
  description.hCursor = ::LoadCursorW(nullptr, MAKEINTRESOURCEW(32512));
  description.hbrBackground = reinterpret_cast<HBRUSH>(COLOR_BTNFACE + 1);
  description.lpszClassName = ClassName;
  ::RegisterClassExW(&description);  // fails from the second window on, which does no harm
  const HWND window =
      ::CreateWindowExW(0, ClassName, L"A plain window", WS_OVERLAPPEDWINDOW, 40, 40, 720, 420,
                        nullptr, nullptr, description.hInstance, this);
  if (!window) throw std::runtime_error("the window could not be created");
  fStatus = ::CreateWindowExW(0, L"STATIC", L"", WS_CHILD | WS_VISIBLE, 0, 0, 0, 0, window, nullptr,
                              description.hInstance, nullptr);
  ShowFolder(folder);
}

THostWindow::~THostWindow() {
  fBrowser.reset();
  if (fHandle) ::DestroyWindow(fHandle);
}

void THostWindow::ShowFolder(const TString& folder) {
  fBrowser = std::make_unique<TBrowser>(fHandle, folder);
  fBrowser->GetList().OnSelectItem = [this](TObject*, TListItem*, bool) {
    const auto count = static_cast<unsigned>(fBrowser->GetList().GetSelCount());
    ::SetWindowTextW(fStatus, W(IntToStr(count) + u" selected"));
  };
  LayOut();
}

void THostWindow::HideFolder() {
  fBrowser.reset();
  ::SetWindowTextW(fStatus, L"nothing shown");
}

void THostWindow::LayOut() {
  if (!fBrowser) return;
  RECT area{};
  ::GetClientRect(fHandle, &area);
  const int status = ::MulDiv(StatusHeight, fBrowser->GetPixelsPerInch(), 96);
  area.bottom -= status;
  ::MoveWindow(fStatus, 0, area.bottom, area.right, status, TRUE);
  fBrowser->SetBounds(area);
}

LRESULT THostWindow::Handle(UINT message, WPARAM wParam, LPARAM lParam) {
  switch (message) {
    case WM_SIZE:
      LayOut();
      return 0;
    case WM_SETFOCUS:
      if (fBrowser) fBrowser->SetFocus();
      return 0;
    case WM_DPICHANGED: {
      const RECT& place = *reinterpret_cast<const RECT*>(lParam);
      ::SetWindowPos(fHandle, nullptr, place.left, place.top, place.right - place.left,
                     place.bottom - place.top, SWP_NOZORDER | SWP_NOACTIVATE);
      return 0;
    }
    case WM_DESTROY:
      ::PostQuitMessage(0);
      return 0;
    case WM_NCDESTROY:
      // The controls lost their windows with this one; they end with their owner.
      fHandle = nullptr;
      return 0;
    default:
      return ::DefWindowProcW(fHandle, message, wParam, lParam);
  }
}

LRESULT CALLBACK THostWindow::Procedure(HWND window, UINT message, WPARAM wParam, LPARAM lParam) {
  auto* host = reinterpret_cast<THostWindow*>(::GetWindowLongPtrW(window, GWLP_USERDATA));
  if (message == WM_NCCREATE) {
    host = static_cast<THostWindow*>(reinterpret_cast<CREATESTRUCTW*>(lParam)->lpCreateParams);
    ::SetWindowLongPtrW(window, GWLP_USERDATA, reinterpret_cast<LONG_PTR>(host));
    host->fHandle = window;
  }
  if (!host) return ::DefWindowProcW(window, message, wParam, lParam);
  try {
    return host->Handle(message, wParam, lParam);
  } catch (...) {
    return 0;  // nothing is thrown through the system
  }
}
