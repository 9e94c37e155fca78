// Input for windows of the own thread, without the user's mouse and keyboard.
#pragma once

#include "oak/framework/ControlTypes.h"
#include "oak/framework/Geometry.h"
#include "oak/platform/shell_api.h"

// What is posted arrives with the thread's next messages.

inline void PostClick(HWND window, oak::TPoint at, UINT press = WM_LBUTTONDOWN) {
  const LPARAM place = MAKELPARAM(at.X, at.Y);
  ::PostMessageW(window, press, MK_LBUTTON, place);
  ::PostMessageW(window, WM_LBUTTONUP, 0, place);
}

inline void PostDoubleClick(HWND window, oak::TPoint at) {
  PostClick(window, at);
  PostClick(window, at, WM_LBUTTONDBLCLK);
}

inline void PostKey(HWND window, std::uint16_t key, bool alt = false) {
  constexpr LPARAM once = 1;
  constexpr LPARAM withAlt = 1 << 29;
  constexpr LPARAM released = static_cast<LPARAM>(0xC0000000);
  const LPARAM flags = alt ? once | withAlt : once;
  ::PostMessageW(window, alt ? WM_SYSKEYDOWN : WM_KEYDOWN, key, flags);
  ::PostMessageW(window, alt ? WM_SYSKEYUP : WM_KEYUP, key, flags | released);
}

/// Keys that the thread believes to be held, for the span of a block.
class THeldKeys {
 public:
  explicit THeldKeys(oak::TShiftState shift) {
    ::GetKeyboardState(fFormer);
    BYTE keys[256];
    ::GetKeyboardState(keys);
    constexpr BYTE held = 0x80;
    if (shift.Contains(oak::ssShift)) keys[VK_SHIFT] = held;
    if (shift.Contains(oak::ssCtrl)) keys[VK_CONTROL] = held;
    if (shift.Contains(oak::ssAlt)) keys[VK_MENU] = held;
    ::SetKeyboardState(keys);
  }
  ~THeldKeys() { ::SetKeyboardState(fFormer); }
  THeldKeys(const THeldKeys&) = delete;
  THeldKeys& operator=(const THeldKeys&) = delete;

 private:
  BYTE fFormer[256];
};
