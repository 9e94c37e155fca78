#include "testkit/windows/OwnDesktop.h"

#include <string>

#include "oak/framework/win32/System.h"
#include "oak/platform/windows/WindowsHeaders.h"

namespace oak::testkit {

void EnterOwnDesktop() {
  static const bool entered = [] {
    if (!win32::IsWine()) return false;
    const std::wstring name = L"OakTest" + std::to_wstring(::GetCurrentProcessId());
    // Open until the process ends.
    const HDESK desktop = ::CreateDesktopW(name.c_str(), nullptr, nullptr, 0, GENERIC_ALL, nullptr);
    return desktop && ::SetThreadDesktop(desktop);
  }();
  static_cast<void>(entered);
}

}  // namespace oak::testkit
