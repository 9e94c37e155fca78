#include "oak/framework/Timer.h"

#include <utility>

#include "oak/framework/Events.h"
#include "oak/framework/WidgetSet.h"

namespace oak {

TTimer::TTimer(TComponent* owner) : TComponent(owner) { Update(); }

TTimer::~TTimer() = default;

void TTimer::SetEnabled(bool value) {
  if (value == fEnabled) return;
  fEnabled = value;
  Update();
}

void TTimer::SetInterval(unsigned value) {
  if (value == fInterval) return;
  fInterval = value;
  Update();
}

void TTimer::Restart() { Update(); }

// Every interval has a token of its own: a tick that was under way when it ended finds none.
void TTimer::Update() {
  fPeer.reset();
  fToken.reset();
  if (!fEnabled || fInterval == 0) return;
  fToken = std::make_shared<const bool>(true);
  fPeer = WidgetSet().CreateTimer(fInterval, [this, token = std::weak_ptr(fToken)] {
    if (!token.expired()) Tick();
  });
}

void TTimer::Tick() noexcept {
  try {
    Timer();
  } catch (...) {
    Application().HandleException(nullptr);
  }
}

void TTimer::Timer() { FireEvent(OnTimer, this); }

}  // namespace oak
