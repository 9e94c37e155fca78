#include "oak/framework/win32/HintWindow.h"

#include "oak/framework/Application.h"
#include "oak/framework/WinControl.h"
#include "oak/framework/win32/System.h"
#include "oak/framework/win32/WindowPeer.h"

namespace oak::win32 {
namespace {

constexpr UINT_PTR HintToolId = 1;
/// Milliseconds of rest before a hint that follows another.
constexpr UINT HintShortPause = 50;
/// At 96 pixels per inch; longer texts are broken.
constexpr int HintMaxWidth = 480;

TTTOOLINFOW HintTool(HWND window, LPWSTR text) {
  TTTOOLINFOW tool{};
  // The size that version 5 knows as well.
  tool.cbSize = TTTOOLINFOW_V2_SIZE;
  tool.uFlags = TTF_TRACK | TTF_ABSOLUTE | TTF_TRANSPARENT;
  tool.hwnd = window;
  tool.uId = HintToolId;
  tool.lpszText = text;
  return tool;
}

}  // namespace

THints& THints::Instance() {
  static auto& hints = *new THints;
  return hints;
}

void THints::MouseMoved(TWindowPeer& peer, TPoint client) {
  // The system repeats the last move whenever windows change.
  if (fPeer == &peer && fPoint == client) return;
  const bool sameWindow = fPeer == &peer;
  fPeer = &peer;
  fPoint = client;
  if (fShown && sameWindow && fArea.Contains(client)) return;
  const bool follows = fShown;
  Hide();
  StartTimer(follows ? HintShortPause : static_cast<UINT>(Application().GetHintPause()));
}

void THints::Cancel() {
  StopTimer();
  Hide();
}

void THints::Forget(const TWindowPeer& peer) {
  if (fPeer != &peer) return;
  Cancel();
  fPeer = nullptr;
}

void THints::HintChanged(const TWindowPeer& peer) {
  if (fPeer != &peer || !fShown) return;
  Hide();
  StartTimer(HintShortPause);
}

void THints::Close() {
  Cancel();
  fPeer = nullptr;
  if (fWindow) ::DestroyWindow(fWindow);
  fWindow = nullptr;
}

void CALLBACK THints::TimerProc(HWND, UINT, UINT_PTR id, DWORD) {
  THints& hints = Instance();
  // A tick of a timer that was stopped meanwhile may still have been on its way.
  if (id != hints.fTimer) return;
  try {
    hints.Due();
  } catch (...) {
    Application().HandleException(nullptr);
  }
}

void THints::Due() {
  StopTimer();
  if (fShown) {
    Hide();
    return;
  }
  POINT at{};
  if (!fPeer || !::GetCursorPos(&at)) return;
  if (TWindowPeer::Find(::WindowFromPoint(at)) != fPeer) return;
  TWindowPeer* peer = fPeer;
  const TPeerGuard guard(*peer);
  TRect area = peer->GetClientRect();
  const TString text = peer->GetControl().HandleHint(fPoint, area);
  if (!guard.IsAlive() || fPeer != peer || text.empty()) return;
  fArea = area;
  Show(text);
}

void THints::Show(const TString& text) {
  const TCommonControlsScope version6;
  if (!fWindow)
    fWindow = ::CreateWindowExW(WS_EX_TOPMOST | WS_EX_TRANSPARENT, TOOLTIPS_CLASSW, nullptr,
                                WS_POPUP | TTS_NOPREFIX | TTS_ALWAYSTIP, 0, 0, 0, 0, nullptr,
                                nullptr, OwnModule(), nullptr);
  if (!fWindow) return;
  fText = text;
  TTTOOLINFOW tool = HintTool(fWindow, WBuffer(fText));
  const auto toolParam = reinterpret_cast<LPARAM>(&tool);
  ::SendMessageW(fWindow, TTM_DELTOOLW, 0, toolParam);
  ::SendMessageW(fWindow, TTM_ADDTOOLW, 0, toolParam);
  const int density = DensityOfWindow(fPeer->GetHandle());
  // Several lines need a width to break at.
  ::SendMessageW(fWindow, TTM_SETMAXTIPWIDTH, 0, MulDiv(HintMaxWidth, density, 96));
  POINT at{};
  ::GetCursorPos(&at);
  const int below = SystemMetric(SM_CYCURSOR, density) * 2 / 3;
  ::SendMessageW(fWindow, TTM_TRACKPOSITION, 0, MAKELPARAM(at.x, at.y + below));
  ::SendMessageW(fWindow, TTM_TRACKACTIVATE, TRUE, toolParam);
  fShown = true;
  StartTimer(static_cast<UINT>(Application().GetHintHidePause()));
}

void THints::Hide() {
  if (!fShown) return;
  fShown = false;
  TTTOOLINFOW tool = HintTool(fWindow, WBuffer(fText));
  ::SendMessageW(fWindow, TTM_TRACKACTIVATE, FALSE, reinterpret_cast<LPARAM>(&tool));
}

void THints::StartTimer(UINT milliseconds) {
  StopTimer();
  fTimer = ::SetTimer(nullptr, 0, milliseconds, &TimerProc);
}

void THints::StopTimer() {
  if (fTimer) ::KillTimer(nullptr, fTimer);
  fTimer = 0;
}

}  // namespace oak::win32
