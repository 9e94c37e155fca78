#include "testkit/FaultInjection.h"

#include <algorithm>
#include <string_view>

namespace oak::testkit {
namespace {

constexpr std::string_view NeverFailing[] = {
    "CoTaskMemFree", "CoUninitialize", "DestroyMenu",    "FindClose",       "FindVolumeClose",
    "FreeLibrary",   "GetLastError",   "GetTickCount64", "GetCurrentThreadId", "GetCurrentProcess",
    "GlobalUnlock",  "ILFree",         "ILGetNext",      "ILGetSize",       "LocalFree",
    "OleUninitialize", "OutputDebugStringW", "RegCloseKey", "ReleaseStgMedium", "SetErrorMode",
    "SetLastError",  "Sleep"};

bool CanFail(std::string_view name) {
  return std::find(std::begin(NeverFailing), std::end(NeverFailing), name) ==
         std::end(NeverFailing);
}

}  // namespace

TFaultInjector::TFaultInjector(int failingCall, DWORD code, std::string only)
    : fBefore(SetApiObserver(this)), fLeft(failingCall), fCode(code), fOnly(std::move(only)) {}

bool TFaultInjector::BeforeCall(const char* name) {
  if (fOnly.empty() ? !CanFail(name) : fOnly != name) return true;
  if (--fLeft != 0) return true;
  fFailedName = name;
  return false;
}

int SweepFaults(const std::function<void()>& scenario,
                const std::function<void(const std::string& failed)>& check, DWORD code) {
  for (int failing = 1;; ++failing) {
    std::string failed;
    {
      TFaultInjector injector(failing, code);
      scenario();
      failed = injector.FailedName();
    }
    if (failed.empty()) return failing - 1;
    if (check) check(failed);
  }
}

}  // namespace oak::testkit
