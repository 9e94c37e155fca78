// What belongs to a desktop: the explorer's options, input. There is no
// screen here; a set of controls that has one puts its own functions in place.
#include "oak/platform/WindowPost.h"
#include "oak/platform/portable/PortableRegistry.h"
#include "oak/platform/portable/SystemBinding.h"
#include "oak/platform/portable/SystemHandles.h"

namespace oak {
namespace {

constexpr DWORD ErrorInvalidWindowHandle = 1400;
constexpr TStringView AdvancedKey =
    u"Software\\Microsoft\\Windows\\CurrentVersion\\Explorer\\Advanced";

// --- options of the explorer -------------------------------------------------

// One option: its bit in a request, its value in the registry with the number
// that means "on" and the number that means "off", and its place in the state.
struct TOption {
  DWORD Mask;
  TStringView Value;
  DWORD On;
  DWORD Off;
  bool Default;
  void (*Put)(SHELLSTATEW& state, bool on);
  bool (*Get)(const SHELLSTATEW& state);
};

#define OPTION(mask, value, on, off, standard, field)                     \
  {                                                                       \
    mask, value, on, off, standard,                                       \
        [](SHELLSTATEW& state, bool set) { state.field = set ? -1 : 0; }, \
        [](const SHELLSTATEW& state) { return state.field != 0; }         \
  }

constexpr TOption Options[] = {
    OPTION(SSF_SHOWALLOBJECTS, u"Hidden", 1, 2, false, fShowAllObjects),
    OPTION(SSF_SHOWEXTENSIONS, u"HideFileExt", 0, 1, true, fShowExtensions),
    OPTION(SSF_SHOWSUPERHIDDEN, u"ShowSuperHidden", 1, 0, false, fShowSuperHidden),
    OPTION(SSF_SHOWCOMPCOLOR, u"ShowCompColor", 1, 0, true, fShowCompColor),
    OPTION(SSF_SHOWINFOTIP, u"ShowInfoTip", 1, 0, true, fShowInfoTip),
    OPTION(SSF_NOCONFIRMRECYCLE, u"NoConfirmRecycle", 1, 0, true, fNoConfirmRecycle),
    OPTION(SSF_DOUBLECLICKINWEBVIEW, u"DoubleClick", 1, 0, true, fDoubleClickInWebView),
    OPTION(SSF_WEBVIEW, u"WebView", 1, 0, true, fWebView),
    OPTION(SSF_HIDEICONS, u"HideIcons", 1, 0, false, fHideIcons),
    OPTION(SSF_AUTOCHECKSELECT, u"AutoCheckSelect", 1, 0, false, fAutoCheckSelect),
    OPTION(SSF_ICONSONLY, u"IconsOnly", 1, 0, false, fIconsOnly),
    OPTION(SSF_SHOWTYPEOVERLAY, u"ShowTypeOverlay", 1, 0, true, fShowTypeOverlay),
    OPTION(SSF_SHOWSTATUSBAR, u"ShowStatusBar", 1, 0, true, fShowStatusBar),
};
#undef OPTION

void STDAPICALLTYPE SHGetSetSettings(SHELLSTATEW* state, DWORD mask, BOOL set) {
  if (!state) return;
  SystemCall<bool>(false, [&] {
    for (const TOption& option : Options) {
      if ((mask & option.Mask) == 0) continue;
      if (set) {
        SetRegistryNumber(HKEY_CURRENT_USER, AdvancedKey, option.Value,
                          option.Get(*state) ? option.On : option.Off);
      } else {
        const auto stored = GetRegistryNumber(HKEY_CURRENT_USER, AdvancedKey, option.Value);
        option.Put(*state, stored ? *stored == option.On : option.Default);
      }
    }
    return true;
  });
}

// --- input: nobody is there to receive it ----------------------------------------

void STDAPICALLTYPE keybd_event(BYTE, BYTE, DWORD, ULONG_PTR) {}
UINT STDAPICALLTYPE MapVirtualKeyW(UINT, UINT) { return 0; }
BOOL STDAPICALLTYPE PostMessageW(HWND window, UINT message, WPARAM wParam, LPARAM lParam) {
  if (window && PostToWindow(window, message, wParam, lParam)) return TRUE;
  return FailWith(ErrorInvalidWindowHandle, FALSE);
}

// --- themes and messages of native controls: there are none ------------------------

LRESULT STDAPICALLTYPE SendMessageW(HWND, UINT, WPARAM, LPARAM) {
  return FailWith<LRESULT>(ErrorInvalidWindowHandle, 0);
}
HRESULT STDAPICALLTYPE SetWindowTheme(HWND, LPCWSTR, LPCWSTR) { return S_OK; }
HRESULT STDAPICALLTYPE SHAutoComplete(HWND, DWORD) { return S_OK; }

}  // namespace

#define BIND(Name) api.Name.SetFunction(&Name)
void BindSystemDesktop(TApi& api) {
  BIND(SHGetSetSettings);
  BIND(keybd_event);
  BIND(MapVirtualKeyW);
  BIND(PostMessageW);
  BIND(SendMessageW);
  BIND(SetWindowTheme);
  BIND(SHAutoComplete);
}
#undef BIND

}  // namespace oak
