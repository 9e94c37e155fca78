#include "oak/framework/win32/HiddenWindow.h"

#include <memory>
#include <unordered_map>

#include "oak/framework/Events.h"
#include "oak/framework/win32/System.h"

namespace oak::win32 {
namespace {

using TProcedure = std::function<void(TMessage&)>;

/// Kept for messages that arrive while the program ends.
std::unordered_map<HWND, TProcedure>& HiddenWindows() {
  static auto* windows = new std::unordered_map<HWND, TProcedure>;
  return *windows;
}

LRESULT CALLBACK HiddenWindowProc(HWND window, UINT message, WPARAM wParam, LPARAM lParam) {
  const auto found = HiddenWindows().find(window);
  if (found == HiddenWindows().end()) return ::DefWindowProcW(window, message, wParam, lParam);
  TMessage record{message, wParam, lParam, 0};
  try {
    FireEvent(found->second, record);  // it may destroy the window
  } catch (...) {
    Application().HandleException(nullptr);
  }
  return record.Result;
}

}  // namespace

HWND CreateHiddenWindow(TProcedure procedure) {
  static const TString name = RegisterOwnClass(u"Hidden", &HiddenWindowProc);
  const HWND window = ::CreateWindowExW(WS_EX_TOOLWINDOW, W(name), nullptr, WS_POPUP, 0, 0, 0, 0,
                                        nullptr, nullptr, OwnModule(), nullptr);
  if (!window) RaiseLastError(u"A window could not be created");
  HiddenWindows()[window] = std::move(procedure);
  return window;
}

void DestroyHiddenWindow(HWND window) {
  if (HiddenWindows().erase(window) != 0) ::DestroyWindow(window);
}

}  // namespace oak::win32
