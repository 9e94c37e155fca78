// What the widget set takes from newer systems, bound when it runs; and the state of the process
// that windows need: common controls of version 6, pixel density, OLE.
#pragma once

#include "oak/framework/Geometry.h"
#include "oak/framework/Graphics.h"
#include "oak/platform/shell_api.h"

struct _TASKDIALOGCONFIG;

namespace oak::win32 {

using TSubclassProc = LRESULT(CALLBACK*)(HWND, UINT, WPARAM, LPARAM, UINT_PTR, DWORD_PTR);

/// Functions that the running system may lack: null then.
struct TLateFunctions {
  UINT(WINAPI* GetDpiForWindow)(HWND) = nullptr;
  UINT(WINAPI* GetDpiForSystem)() = nullptr;
  int(WINAPI* GetSystemMetricsForDpi)(int, UINT) = nullptr;
  BOOL(WINAPI* SetProcessDpiAwarenessContext)(HANDLE) = nullptr;
  HRESULT(WINAPI* GetDpiForMonitor)(HMONITOR, int, UINT*, UINT*) = nullptr;
  HRESULT(WINAPI* DwmSetWindowAttribute)(HWND, DWORD, LPCVOID, DWORD) = nullptr;
  /// Exported by number only, bound where its meaning is known: which menus the process has.
  int(WINAPI* SetPreferredAppMode)(int) = nullptr;
  void(WINAPI* FlushMenuThemes)() = nullptr;
  /// Of version 6 only.
  HRESULT(WINAPI* TaskDialogIndirect)(const _TASKDIALOGCONFIG*, int*, int*, BOOL*) = nullptr;
  // Exported by number in older versions.
  BOOL(WINAPI* SetWindowSubclass)(HWND, TSubclassProc, UINT_PTR, DWORD_PTR) = nullptr;
  BOOL(WINAPI* RemoveWindowSubclass)(HWND, TSubclassProc, UINT_PTR) = nullptr;
  LRESULT(WINAPI* DefSubclassProc)(HWND, UINT, WPARAM, LPARAM) = nullptr;
};

const TLateFunctions& Late();

/// Version 6 of the common controls for the span of a block. Programs whose manifest asks for it
/// have it anyway; for the others an activation context is made from a manifest of ours.
class TCommonControlsScope {
 public:
  TCommonControlsScope();
  ~TCommonControlsScope();
  TCommonControlsScope(const TCommonControlsScope&) = delete;
  TCommonControlsScope& operator=(const TCommonControlsScope&) = delete;

 private:
  ULONG_PTR fCookie = 0;
  bool fActive = false;
};

/// Whether windows get common controls of version 6.
bool HasCommonControls6();
/// Declares the process aware of the density of each monitor unless manifest or program did so.
void MakeDensityAware();
bool IsWine();

int DensityOfWindow(HWND window);
int DensityOfMonitor(HMONITOR monitor);
/// Thickness of things in the system at a density: SM_... values.
int SystemMetric(int index, int pixelsPerInch);

/// Whether the user has chosen dark applications. Never with high contrast.
bool SystemIsDark();
/// Whether light text stands well on the colour.
bool IsDarkColor(TColor rgb);
/// Whether common controls have dark themes, with marks that stand well on them.
bool HasDarkThemes();
/// Dark or light title bar, where the system has dark ones.
void SetDarkTitleBar(HWND window, bool dark);
/// Lets the parts that the system draws in a window be dark, where it can.
void AllowDarkWindow(HWND window, bool dark);
/// Dark menus for the whole process, or those of the system's choice; where it has dark ones.
void SetDarkMenus(bool dark);
/// Whether the system draws common controls by a theme.
bool ThemeIsActive();

/// The program or library that this code is a part of.
HINSTANCE OwnModule();
/// Registers a window class and gives its name, which bears the address of this module: two modules
/// with the library in one process stay apart. Raises EOSError.
TString RegisterOwnClass(TStringView kind, WNDPROC procedure, UINT style = 0, bool icon = false);

/// The text of any window; empty for null.
TString TextOfWindow(HWND window);

/// Raises EOSError for the last error: what failed, and the system's text.
[[noreturn]] void RaiseLastError(TStringView what);

}  // namespace oak::win32
