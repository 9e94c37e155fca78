// TTimer: an event at intervals.
#pragma once

#include <memory>

#include "oak/framework/Component.h"

namespace oak {

class ITimerPeer;

/// Fires on the main thread, from the message loop. Disabled, changed or destroyed at any moment,
/// inside its own event too, it doesn't fire any more for what was due before.
class TTimer : public TComponent {
 public:
  explicit TTimer(TComponent* owner = nullptr);
  ~TTimer() override;
  bool GetEnabled() const noexcept { return fEnabled; }
  void SetEnabled(bool value);
  /// Milliseconds, default 1000; 0 never fires. A change starts the interval anew.
  unsigned GetInterval() const noexcept { return fInterval; }
  void SetInterval(unsigned value);
  /// Starts the interval anew if enabled.
  void Restart();

  TNotifyEvent OnTimer;

 protected:
  virtual void Timer();

 private:
  void Update();
  void Tick() noexcept;
  std::unique_ptr<ITimerPeer> fPeer;
  std::shared_ptr<const bool> fToken;
  unsigned fInterval = 1000;
  bool fEnabled = true;
};

}  // namespace oak
