#include "oak/namespace/Shell_Win32.h"

#include <atomic>
#include <thread>

#include "oak/base/Exceptions.h"
#include "oak/platform/Api.h"

namespace oak {
namespace {

/// The shared desktop; the variable holds one count.
std::atomic<IShellFolder*> gDesktop{nullptr};

/// Codes of the internet functions: the system's table doesn't know them.
constexpr std::uint32_t FirstInternetError = 12000;
constexpr std::uint32_t EndOfInternetErrors = 12175;

/// Errors of the library speak the system's language as soon as this unit is part
/// of the program.
[[maybe_unused]] const bool gErrorTextsInstalled = [] {
  SetErrorTextProvider(&GetErrorMessageText);
  return true;
}();

/// Runs in an apartment of its own: a desktop made there belongs to no thread of
/// the user's.
Ref<IShellFolder> MakeDesktop() {
  Ref<IShellFolder> desktop;
  try {
    std::thread([&desktop] {
      try {
        const HRESULT entered = Api().CoInitializeEx(nullptr, COINIT_APARTMENTTHREADED);
        if (FAILED(Api().SHGetDesktopFolder(desktop.Put()))) desktop = nullptr;
        if (SUCCEEDED(entered)) Api().CoUninitialize();
      } catch (...) {
        desktop = nullptr;
      }
    }).join();
  } catch (const std::system_error&) {
    // No thread to be had; told below.
  }
  if (!desktop)
    throw EFolderTrekError(TStringView(u"FolderTrek Components: Cannot open Shell!"), nullptr);
  return desktop;
}

RTL_OSVERSIONINFOW SystemVersion() {
  RTL_OSVERSIONINFOW version{};
  version.dwOSVersionInfoSize = sizeof(version);
  if (!Api().RtlGetVersion || Api().RtlGetVersion(&version) != 0) return {};
  return version;
}

/// One of the system's constants -2, -3, -4 for contexts.
DPI_AWARENESS_CONTEXT DpiContext(std::intptr_t value) {
  return reinterpret_cast<DPI_AWARENESS_CONTEXT>(value);
}

}  // namespace

Ref<IShellFolder> Desktop() {
  if (IShellFolder* present = gDesktop.load(std::memory_order_acquire))
    return Ref<IShellFolder>::Share(present);
  Ref<IShellFolder> made = MakeDesktop();
  IShellFolder* expected = nullptr;
  if (gDesktop.compare_exchange_strong(expected, made.Get(), std::memory_order_acq_rel)) {
    // The variable's own count.
    return Ref<IShellFolder>::Share(made.Detach());
  }
  return Ref<IShellFolder>::Share(expected);
}

namespace detail {
void DropDesktop() noexcept { Ref<IShellFolder>::Adopt(gDesktop.exchange(nullptr)).Reset(); }
}  // namespace detail

TString GetErrorMessageText(std::uint32_t pCode) {
  TString text;
  const bool isInternetError = pCode >= FirstInternetError && pCode < EndOfInternetErrors;
  if (!isInternetError) {
    TString buffer(32768, u'\0');
    const DWORD length =
        Api().FormatMessageW(FORMAT_MESSAGE_FROM_SYSTEM | FORMAT_MESSAGE_IGNORE_INSERTS, nullptr,
                             pCode, 0, WBuffer(buffer), static_cast<DWORD>(buffer.size()), nullptr);
    text = Trim(TStringView(buffer).substr(0, length));
  }
  return text.empty() ? u"Error Code 0x" + IntToHex(pCode, 8) : text;
}

bool IsWindows8OrLater() {
  const RTL_OSVERSIONINFOW version = SystemVersion();
  return version.dwMajorVersion > 6 || (version.dwMajorVersion == 6 && version.dwMinorVersion >= 2);
}

bool IsWindows10OrLater() { return SystemVersion().dwMajorVersion >= 10; }

DWORD GetWindowsBuildNumber() { return SystemVersion().dwBuildNumber; }

bool IsDarkModeSupported() {
  const RTL_OSVERSIONINFOW version = SystemVersion();
  return version.dwMajorVersion >= 10 && version.dwBuildNumber > 17134;
}

int GetDpiAwareness() {
  if (Api().GetThreadDpiAwarenessContext && Api().AreDpiAwarenessContextsEqual) {
    const DPI_AWARENESS_CONTEXT present = Api().GetThreadDpiAwarenessContext();
    constexpr struct {
      std::intptr_t Context;
      int Result;
    } known[] = {{-4, 3}, {-3, 2}, {-2, 1}};
    for (const auto& row : known)
      if (Api().AreDpiAwarenessContextsEqual(present, DpiContext(row.Context))) return row.Result;
    return 0;
  }
  PROCESS_DPI_AWARENESS awareness{};
  if (!Api().GetProcessDpiAwareness || FAILED(Api().GetProcessDpiAwareness(nullptr, &awareness)))
    return 0;
  return static_cast<int>(awareness);
}

bool DisableWow64FsRedirection(void*& pOldValue) {
  pOldValue = nullptr;
  return Api().Wow64DisableWow64FsRedirection && Api().Wow64DisableWow64FsRedirection(&pOldValue);
}

void RevertWow64FsRedirection(void* pOldValue) {
  if (Api().Wow64RevertWow64FsRedirection) Api().Wow64RevertWow64FsRedirection(pOldValue);
}

}  // namespace oak
