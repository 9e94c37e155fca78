#include "oak/platform/windows/WindowsHeaders.h"
// The system's header leans on others.
#include <uxtheme.h>

#include "oak/base/Exceptions.h"
#include "oak/framework/win32/System.h"
#include "oak/platform/Api.h"

namespace oak::win32 {
namespace {

constexpr int StandardDensity = 96;
constexpr DWORD FirstDarkTitleBuild = 17763;
constexpr DWORD FirstNamedDarkTitleBuild = 18985;
constexpr DWORD FirstDarkMenuBuild = 18362;
constexpr WORD NumberOfAppMode = 135;
constexpr WORD NumberOfMenuFlush = 136;

HMODULE SystemLibrary(LPCWSTR name) {
  const HMODULE module = ::LoadLibraryExW(name, nullptr, LOAD_LIBRARY_SEARCH_SYSTEM32);
  return module ? module : ::LoadLibraryW(name);
}

template <class T>
bool Bind(T& function, HMODULE library, const char* name) {
  const FARPROC address = library ? ::GetProcAddress(library, name) : nullptr;
  if (address) function = reinterpret_cast<T>(reinterpret_cast<void*>(address));
  return address != nullptr;
}

template <class T>
void BindNameOrNumber(T& function, HMODULE library, const char* name, WORD number) {
  if (!Bind(function, library, name)) Bind(function, library, MAKEINTRESOURCEA(number));
}

DWORD SystemBuild() {
  static const DWORD build = [] {
    OSVERSIONINFOW version{};
    version.dwOSVersionInfoSize = sizeof version;
    return Api().RtlGetVersion && Api().RtlGetVersion(&version) == 0 ? version.dwBuildNumber : 0;
  }();
  return build;
}

TLateFunctions BindFunctions() {
  TLateFunctions late;
  const HMODULE user = SystemLibrary(L"user32.dll");
  Bind(late.GetDpiForWindow, user, "GetDpiForWindow");
  Bind(late.GetDpiForSystem, user, "GetDpiForSystem");
  Bind(late.GetSystemMetricsForDpi, user, "GetSystemMetricsForDpi");
  Bind(late.SetProcessDpiAwarenessContext, user, "SetProcessDpiAwarenessContext");
  Bind(late.GetDpiForMonitor, SystemLibrary(L"shcore.dll"), "GetDpiForMonitor");
  Bind(late.DwmSetWindowAttribute, SystemLibrary(L"dwmapi.dll"), "DwmSetWindowAttribute");
  if (SystemBuild() >= FirstDarkMenuBuild && !IsWine()) {
    const HMODULE themes = SystemLibrary(L"uxtheme.dll");
    Bind(late.SetPreferredAppMode, themes, MAKEINTRESOURCEA(NumberOfAppMode));
    Bind(late.FlushMenuThemes, themes, MAKEINTRESOURCEA(NumberOfMenuFlush));
  }

  const TCommonControlsScope version6;
  const HMODULE controls = ::LoadLibraryW(L"comctl32.dll");
  Bind(late.TaskDialogIndirect, controls, "TaskDialogIndirect");
  BindNameOrNumber(late.SetWindowSubclass, controls, "SetWindowSubclass", 410);
  BindNameOrNumber(late.RemoveWindowSubclass, controls, "RemoveWindowSubclass", 412);
  BindNameOrNumber(late.DefSubclassProc, controls, "DefSubclassProc", 413);
  return late;
}

bool LibraryIsVersion6(HMODULE controls) {
  DLLGETVERSIONPROC getVersion = nullptr;
  DLLVERSIONINFO version{};
  version.cbSize = sizeof version;
  return Bind(getVersion, controls, "DllGetVersion") && SUCCEEDED(getVersion(&version)) &&
         version.dwMajorVersion >= 6;
}

bool ProcessHasVersion6() {
  static const bool has = [] {
    const HMODULE controls = ::LoadLibraryW(L"comctl32.dll");
    return controls && LibraryIsVersion6(controls);
  }();
  return has;
}

constexpr char ManifestText[] =
    "<?xml version=\"1.0\" encoding=\"UTF-8\" standalone=\"yes\"?>"
    "<assembly xmlns=\"urn:schemas-microsoft-com:asm.v1\" manifestVersion=\"1.0\">"
    "<dependency><dependentAssembly><assemblyIdentity type=\"win32\" "
    "name=\"Microsoft.Windows.Common-Controls\" version=\"6.0.0.0\" processorArchitecture=\"*\" "
    "publicKeyToken=\"6595b64144ccf1df\" language=\"*\"/></dependentAssembly></dependency>"
    "</assembly>";

/// A file name that nobody else uses; empty if there is no folder for such files.
TString TemporaryName() {
  TString folder(::GetTempPathW(0, nullptr), u'\0');
  if (folder.empty()) return folder;
  folder.resize(::GetTempPathW(static_cast<DWORD>(folder.size()), WBuffer(folder)));
  return folder + u"oak-" + IntToHex(::GetCurrentProcessId(), 8) +
         IntToHex(reinterpret_cast<std::uintptr_t>(&ManifestText), 16) + u".manifest";
}

bool WriteManifest(const TString& path) {
  const HANDLE file = ::CreateFileW(W(path), GENERIC_WRITE, 0, nullptr, CREATE_ALWAYS,
                                    FILE_ATTRIBUTE_TEMPORARY, nullptr);
  if (file == INVALID_HANDLE_VALUE) return false;
  DWORD written = 0;
  const BOOL complete = ::WriteFile(file, ManifestText, sizeof ManifestText - 1, &written, nullptr);
  ::CloseHandle(file);
  return complete != FALSE;
}

/// Contexts are made from files only, so the manifest is written to one for a moment.
HANDLE MakeContext() {
  const TString path = TemporaryName();
  if (path.empty()) return INVALID_HANDLE_VALUE;
  ACTCTXW description{};
  description.cbSize = sizeof description;
  description.lpSource = W(path);
  const HANDLE context = WriteManifest(path) ? ::CreateActCtxW(&description) : INVALID_HANDLE_VALUE;
  ::DeleteFileW(W(path));
  return context;
}

/// Made once, kept: windows refer to it as long as they live.
HANDLE CommonControlsContext() {
  static const HANDLE context = ProcessHasVersion6() ? INVALID_HANDLE_VALUE : MakeContext();
  return context;
}

bool HighContrastIsOn() {
  HIGHCONTRASTW contrast{};
  contrast.cbSize = sizeof contrast;
  return ::SystemParametersInfoW(SPI_GETHIGHCONTRAST, sizeof contrast, &contrast, 0) &&
         (contrast.dwFlags & HCF_HIGHCONTRASTON);
}

/// The user's choice as the settings store it; true where they don't.
bool AppsUseLightTheme() {
  DWORD value = 1;
  DWORD size = sizeof value;
  const LSTATUS status = ::RegGetValueW(
      HKEY_CURRENT_USER, L"Software\\Microsoft\\Windows\\CurrentVersion\\Themes\\Personalize",
      L"AppsUseLightTheme", RRF_RT_REG_DWORD, nullptr, &value, &size);
  return status != ERROR_SUCCESS || value != 0;
}

}  // namespace

const TLateFunctions& Late() {
  static const TLateFunctions late = BindFunctions();
  return late;
}

TCommonControlsScope::TCommonControlsScope() {
  const HANDLE context = CommonControlsContext();
  fActive = context != INVALID_HANDLE_VALUE && ::ActivateActCtx(context, &fCookie);
}

TCommonControlsScope::~TCommonControlsScope() {
  if (fActive) ::DeactivateActCtx(0, fCookie);
}

HINSTANCE OwnModule() {
  HMODULE module = nullptr;
  ::GetModuleHandleExW(
      GET_MODULE_HANDLE_EX_FLAG_FROM_ADDRESS | GET_MODULE_HANDLE_EX_FLAG_UNCHANGED_REFCOUNT,
      reinterpret_cast<LPCWSTR>(reinterpret_cast<void*>(&OwnModule)), &module);
  return module;
}

TString RegisterOwnClass(TStringView kind, WNDPROC procedure, UINT style, bool icon) {
  const HINSTANCE module = OwnModule();
  TString name =
      u"Oak." + TString(kind) + u"." + IntToHex(reinterpret_cast<std::uintptr_t>(module), 16);
  WNDCLASSEXW description{};
  description.cbSize = sizeof description;
  description.style = style;
  description.lpfnWndProc = procedure;
  description.hInstance = module;
  description.lpszClassName = W(name);
  // Without one the system keeps the cursor of the window before.
  description.hCursor = ::LoadCursorW(nullptr, MAKEINTRESOURCEW(32512));
  if (icon) description.hIcon = ::LoadIconW(nullptr, MAKEINTRESOURCEW(32512));
  // What a module left here that was unloaded would call into nothing.
  ::UnregisterClassW(W(name), module);
  if (!::RegisterClassExW(&description)) RaiseLastError(u"A window class could not be registered");
  return name;
}

bool HasCommonControls6() {
  return ProcessHasVersion6() || CommonControlsContext() != INVALID_HANDLE_VALUE;
}

void MakeDensityAware() {
  if (const auto set = Late().SetProcessDpiAwarenessContext) {
    const auto perMonitor2 = reinterpret_cast<HANDLE>(static_cast<INT_PTR>(-4));
    const auto perMonitor = reinterpret_cast<HANDLE>(static_cast<INT_PTR>(-3));
    if (set(perMonitor2) || ::GetLastError() == ERROR_ACCESS_DENIED || set(perMonitor)) return;
  }
  ::SetProcessDPIAware();
}

bool IsWine() {
  static const bool wine =
      ::GetProcAddress(::GetModuleHandleW(L"ntdll.dll"), "wine_get_version") != nullptr;
  return wine;
}

int DensityOfWindow(HWND window) {
  if (window && Late().GetDpiForWindow) {
    const UINT density = Late().GetDpiForWindow(window);
    if (density != 0) return static_cast<int>(density);
  }
  if (Late().GetDpiForSystem) return static_cast<int>(Late().GetDpiForSystem());
  const HDC screen = ::GetDC(nullptr);
  const int density = screen ? ::GetDeviceCaps(screen, LOGPIXELSY) : StandardDensity;
  if (screen) ::ReleaseDC(nullptr, screen);
  return density;
}

int DensityOfMonitor(HMONITOR monitor) {
  UINT x = 0;
  UINT y = 0;
  constexpr int effective = 0;
  if (Late().GetDpiForMonitor && SUCCEEDED(Late().GetDpiForMonitor(monitor, effective, &x, &y)))
    return static_cast<int>(y);
  return DensityOfWindow(nullptr);
}

int SystemMetric(int index, int pixelsPerInch) {
  if (Late().GetSystemMetricsForDpi)
    return Late().GetSystemMetricsForDpi(index, static_cast<UINT>(pixelsPerInch));
  return ::GetSystemMetrics(index);
}

bool SystemIsDark() {
  if (HighContrastIsOn()) return false;
  if (Api().ShouldAppsUseDarkMode) return Api().ShouldAppsUseDarkMode();
  return SystemBuild() >= FirstDarkTitleBuild && !AppsUseLightTheme();
}

bool IsDarkColor(TColor rgb) {
  // Weights of the eye, in thousandths.
  return 299 * RedOf(rgb) + 587 * GreenOf(rgb) + 114 * BlueOf(rgb) < 128 * 1000;
}

bool HasDarkThemes() { return SystemBuild() >= FirstDarkTitleBuild && !IsWine(); }

void SetDarkTitleBar(HWND window, bool dark) {
  if (!Late().DwmSetWindowAttribute || SystemBuild() < FirstDarkTitleBuild) return;
  const DWORD attribute = SystemBuild() >= FirstNamedDarkTitleBuild ? 20 : 19;
  const BOOL value = dark;
  Late().DwmSetWindowAttribute(window, attribute, &value, sizeof value);
}

void AllowDarkWindow(HWND window, bool dark) {
  if (Api().AllowDarkModeForWindow && !IsWine()) Api().AllowDarkModeForWindow(window, dark);
}

void SetDarkMenus(bool dark) {
  constexpr int ofSystem = 0;
  constexpr int alwaysDark = 2;
  if (!Late().SetPreferredAppMode || !Late().FlushMenuThemes) return;
  Late().SetPreferredAppMode(dark ? alwaysDark : ofSystem);
  Late().FlushMenuThemes();
}

bool ThemeIsActive() { return HasCommonControls6() && ::IsAppThemed() && ::IsThemeActive(); }

TString TextOfWindow(HWND window) {
  const int length = ::GetWindowTextLengthW(window);
  TString text(static_cast<std::size_t>(length) + 1, u'\0');
  const int copied = ::GetWindowTextW(window, WBuffer(text), length + 1);
  text.resize(static_cast<std::size_t>(copied));
  return text;
}

void RaiseLastError(TStringView what) {
  const DWORD code = ::GetLastError();
  throw EOSError(code, TString(what) + u": " + ErrorText(code));
}

}  // namespace oak::win32
