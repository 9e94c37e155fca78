// What the widget set does besides windows: dialogs, clipboard, drag and drop, timers.
#pragma once

#include <functional>
#include <memory>

#include "oak/framework/WidgetSet.h"

namespace oak::win32 {

/// See TWidgetSet::ShowDialog.
int ShowMessageDialog(const TMessageDialog& dialog);

bool ReadClipboardText(TString* text);
/// Tries for a while if another program has the clipboard open. `owner` is a window of ours.
bool WriteClipboardText(HWND owner, const TString& text);

/// See TWidgetSet::DoDragDrop.
HRESULT DragData(HWND window, IDataObject* data, IDropSource* source, DWORD allowed, DWORD* effect);

/// A hidden window for what belongs to no other: timers, and waking the message loop. Main thread,
/// but for Wake.
class TServiceWindow {
 public:
  TServiceWindow();
  ~TServiceWindow();
  TServiceWindow(const TServiceWindow&) = delete;
  TServiceWindow& operator=(const TServiceWindow&) = delete;

  HWND GetHandle() const noexcept { return fHandle; }
  /// Lets a wait for messages return. Any thread.
  void Wake() const noexcept;

 private:
  HWND fHandle = nullptr;
};

std::unique_ptr<ITimerPeer> MakeTimer(HWND window, unsigned milliseconds,
                                      std::function<void()> tick);

}  // namespace oak::win32
