// Keys for a menu that waits for the user.
#pragma once

#include <vector>

#include "oak/framework/Timer.h"
#include "oak/platform/windows/WindowsHeaders.h"

namespace oak::tests {

/// Posts keys to the menu that is open, one after the other.
class TKeySender {
 public:
  explicit TKeySender(std::vector<WPARAM> keys) : fKeys(std::move(keys)) {
    fTimer.SetInterval(20);
    fTimer.OnTimer = [this](TObject*) {
      GUITHREADINFO info{};
      info.cbSize = sizeof info;
      ::GetGUIThreadInfo(::GetCurrentThreadId(), &info);
      if (!(info.flags & GUI_INMENUMODE) || fNext >= fKeys.size()) return;
      ::PostMessageW(info.hwndMenuOwner ? info.hwndMenuOwner : info.hwndFocus, WM_KEYDOWN,
                     fKeys[fNext++], 1);
    };
  }

 private:
  std::vector<WPARAM> fKeys;
  std::size_t fNext = 0;
  TTimer fTimer;
};

}  // namespace oak::tests
