#include "testkit/HandPumpedHost.h"

#include <utility>

namespace oak::testkit {

THandPumpedHost::THandPumpedHost() : fBefore(std::exchange(Host(), THost())) {
  Host().RunInBackground = [this](std::function<void()> procedure) {
    if (fInline)
      procedure();
    else
      fQueue.push_back(std::move(procedure));
  };
  Host().SetWaitCursor = [this](bool on) {
    fWaitCursorDepth += on ? 1 : -1;
    if (on) ++fWaitCursorCount;
  };
}

THandPumpedHost::~THandPumpedHost() { Host() = std::move(fBefore); }

bool THandPumpedHost::RunNext() {
  if (fQueue.empty()) return false;
  const std::function<void()> procedure = std::move(fQueue.front());
  fQueue.pop_front();
  procedure();
  return true;
}

void THandPumpedHost::RunAll() {
  while (RunNext()) {
  }
}

}  // namespace oak::testkit
