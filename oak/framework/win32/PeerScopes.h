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

}  // namespace oak
