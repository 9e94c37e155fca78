// The hint that appears when the mouse rests on a control.
#pragma once

#include "oak/base/Text.h"
#include "oak/framework/Geometry.h"
#include "oak/platform/shell_api.h"

namespace oak {
class TWindowPeer;
}

namespace oak::win32 {

/// One tip for all windows: the text is asked for when it is due, so it may depend on the place.
/// Main thread.
class THints {
 public:
  static THints& Instance();

  /// The mouse is at a client point of the peer's window.
  void MouseMoved(TWindowPeer& peer, TPoint client);
  /// A press, a key, or the mouse has left: no hint until the mouse moves again.
  void Cancel();
  /// The peer is about to go.
  void Forget(const TWindowPeer& peer);
  void HintChanged(const TWindowPeer& peer);
  /// Destroys the tip's window.
  void Close();

 private:
  static void CALLBACK TimerProc(HWND window, UINT message, UINT_PTR id, DWORD time);
  void Due();
  void Show(const TString& text);
  void Hide();
  void StartTimer(UINT milliseconds);
  void StopTimer();

  TWindowPeer* fPeer = nullptr;  // on which the mouse rests
  TPoint fPoint;
  TRect fArea;  // the part of the window that the shown text holds for
  HWND fWindow = nullptr;
  UINT_PTR fTimer = 0;
  bool fShown = false;
  TString fText;
};

}  // namespace oak::win32
