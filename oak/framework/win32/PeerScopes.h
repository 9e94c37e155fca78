// Small helpers of peers.
#pragma once

#include "oak/framework/win32/WindowPeer.h"

namespace oak {

/// A flag of a peer for the span of a block, which the peer may not outlive.
class TPeerFlag {
 public:
  TPeerFlag(bool& flag, const TWindowPeer& peer) : fFlag(flag), fFormer(flag), fGuard(peer) {
    fFlag = true;
  }
  ~TPeerFlag() {
    if (fGuard.IsAlive()) fFlag = fFormer;
  }
  TPeerFlag(const TPeerFlag&) = delete;
  TPeerFlag& operator=(const TPeerFlag&) = delete;

 private:
  bool& fFlag;
  bool fFormer;
  TPeerGuard fGuard;
};

/// Mouse and keys that a part of a control keeps to itself: headers, fields for labels. The wheel
/// counts as the control's.
inline bool IsInputOfPart(UINT message) {
  const bool wheel = message == WM_MOUSEWHEEL || message == WM_MOUSEHWHEEL;
  return (message >= WM_KEYFIRST && message <= WM_KEYLAST) || message == WM_CONTEXTMENU ||
         (message >= WM_MOUSEFIRST && message <= WM_MOUSELAST && !wheel);
}

/// Counts what runs of a peer, which may not outlive it.
class TPeerCount {
 public:
  TPeerCount(int& count, const TWindowPeer& peer) : fCount(count), fGuard(peer) { ++fCount; }
  ~TPeerCount() {
    if (fGuard.IsAlive()) --fCount;
  }
  TPeerCount(const TPeerCount&) = delete;
  TPeerCount& operator=(const TPeerCount&) = delete;

 private:
  int& fCount;
  TPeerGuard fGuard;
};

}  // namespace oak
