// A desktop for one test process.
#pragma once

#include <string>

#include "oak/framework/win32/System.h"
#include "oak/platform/windows/WindowsHeaders.h"

namespace oak::tests {

/// Moves the calling thread to a desktop of this process alone, so that mouse, keys, focus and
/// foreground of tests that run at the same time don't meet. Before the thread's first window:
/// later it changes nothing, and neither on Windows, where input reaches only the desktop that the
/// user sees. More calls do nothing.
inline void EnterOwnDesktop() {
  static const bool entered = [] {
    if (!win32::IsWine()) return false;
    const std::wstring name = L"OakTest" + std::to_wstring(::GetCurrentProcessId());
    // Open until the process ends.
    const HDESK desktop = ::CreateDesktopW(name.c_str(), nullptr, nullptr, 0, GENERIC_ALL, nullptr);
    return desktop && ::SetThreadDesktop(desktop);
  }();
  static_cast<void>(entered);
}

}  // namespace oak::tests
