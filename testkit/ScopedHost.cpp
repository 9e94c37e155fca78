#include "testkit/ScopedHost.h"

#include <utility>

namespace oak::testkit {

TScopedHost::TScopedHost() : fBefore(std::exchange(Host(), THost())) {
  Host().SetWaitCursor = [this](bool on) {
    fWaitCursorDepth += on ? 1 : -1;
    if (on) ++fWaitCursorCount;
  };
}

TScopedHost::~TScopedHost() { Host() = std::move(fBefore); }

}  // namespace oak::testkit
