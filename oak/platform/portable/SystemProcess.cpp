// The process: errors, identity, version.
#include <sys/syscall.h>
#include <unistd.h>

#include <algorithm>
#include <atomic>
#include <cstdio>
#include <cstdlib>

#include "oak/platform/portable/PortableConfig.h"
#include "oak/platform/portable/SystemBinding.h"

namespace oak {
namespace {

DWORD STDAPICALLTYPE GetLastError() { return detail::GetLastErrorDirect(); }
void STDAPICALLTYPE SetLastError(DWORD code) { detail::SetLastErrorDirect(code); }

UINT STDAPICALLTYPE SetErrorMode(UINT mode) {
  static std::atomic<UINT> present{0};  // of the process, as on the platform
  return present.exchange(mode);
}

void STDAPICALLTYPE OutputDebugStringW(LPCWSTR text) {
  static const bool wanted = std::getenv("OAK_DEBUG_OUTPUT") != nullptr;
  if (!wanted || !text) return;
  try {
    std::string line = ToUtf8(text);
    if (line.empty() || line.back() != '\n') line += '\n';
    std::fwrite(line.data(), 1, line.size(), stderr);
  } catch (...) {
    // A debug line is not worth a failure.
  }
}

DWORD STDAPICALLTYPE GetCurrentThreadId() { return static_cast<DWORD>(syscall(SYS_gettid)); }
DWORD STDAPICALLTYPE GetCurrentProcessId() { return static_cast<DWORD>(getpid()); }
HANDLE STDAPICALLTYPE GetCurrentProcess() { return INVALID_HANDLE_VALUE; }  // the published value

BOOL STDAPICALLTYPE IsUserAnAdmin() {
  return SystemCall<BOOL>(FALSE, [] { return PortableConfig()->IsAdmin ? TRUE : FALSE; });
}

NTSTATUS STDAPICALLTYPE RtlGetVersion(OSVERSIONINFOW* version) {
  constexpr NTSTATUS invalidParameter = static_cast<NTSTATUS>(0xC000000Du);
  if (!version) return invalidParameter;
  return SystemCall<NTSTATUS>(invalidParameter, [&]() -> NTSTATUS {
    const auto config = PortableConfig();
    version->dwMajorVersion = config->MajorVersion;
    version->dwMinorVersion = config->MinorVersion;
    version->dwBuildNumber = config->BuildNumber;
    version->dwPlatformId = 2;  // VER_PLATFORM_WIN32_NT
    std::fill_n(version->szCSDVersion, std::size(version->szCSDVersion), WCHAR{0});
    if (version->dwOSVersionInfoSize >= sizeof(OSVERSIONINFOEXW)) {
      auto& more = *reinterpret_cast<OSVERSIONINFOEXW*>(version);
      more.wServicePackMajor = more.wServicePackMinor = more.wSuiteMask = 0;
      more.wProductType = 1;  // a workstation
      more.wReserved = 0;
    }
    return 0;
  });
}

// --- file redirection of 32-bit processes: there is none ---------------------

BOOL STDAPICALLTYPE Wow64DisableWow64FsRedirection(PVOID* old) {
  if (old) *old = nullptr;
  return FailWith(ERROR_INVALID_FUNCTION, FALSE);
}

BOOL STDAPICALLTYPE Wow64RevertWow64FsRedirection(PVOID) {
  return FailWith(ERROR_INVALID_FUNCTION, FALSE);
}

BOOL STDAPICALLTYPE IsWow64Process(HANDLE process, BOOL* isWow64) {
  if (process != GetCurrentProcess()) return FailWith(ERROR_INVALID_HANDLE, FALSE);
  if (!isWow64) return FailWith(ERROR_INVALID_PARAMETER, FALSE);
  *isWow64 = FALSE;
  return TRUE;
}

}  // namespace

#define BIND(Name) api.Name.SetFunction(&Name)
void BindSystemProcess(TApi& api) {
  BIND(GetLastError);
  BIND(SetLastError);
  BIND(SetErrorMode);
  BIND(OutputDebugStringW);
  BIND(GetCurrentThreadId);
  BIND(GetCurrentProcessId);
  BIND(GetCurrentProcess);
  BIND(IsUserAnAdmin);
  BIND(RtlGetVersion);
  BIND(Wow64DisableWow64FsRedirection);
  BIND(Wow64RevertWow64FsRedirection);
  BIND(IsWow64Process);
}
#undef BIND

}  // namespace oak
