// How events are fired, and how code that the system calls is fenced.
#pragma once

#include <functional>
#include <utility>

#include "oak/framework/Application.h"
#include "oak/framework/Control.h"

namespace oak {

/// Calls a handler, if there is one. It runs from a copy, since it may destroy the object that the
/// event is a member of, or assign another handler.
template <class... P, class... A>
void FireEvent(const std::function<void(P...)>& event, A&&... arguments) {
  if (!event) return;
  const std::function<void(P...)> handler = event;
  handler(std::forward<A>(arguments)...);
}

/// A handler of a control runs: its form is not released before the end of the block.
class THandlerScope {
 public:
  explicit THandlerScope(TControl& control);
  ~THandlerScope();
  THandlerScope(const THandlerScope&) = delete;
  THandlerScope& operator=(const THandlerScope&) = delete;

 private:
  TCustomForm* fForm;
  TLifeGuard fGuard;
};

/// Runs what the window of a control asked for. What it throws is reported; nothing leaves.
template <class Body>
void RunFenced(TControl& sender, Body&& body) noexcept {
  const TLifeGuard guard = sender.GetLifeGuard();
  TControl* const control = &sender;
  try {
    const THandlerScope scope(sender);
    body();
  } catch (...) {
    Application().HandleException(guard.IsAlive() ? control : nullptr);
  }
}

/// The same with a result: `fallback` if something was thrown.
template <class TResult, class Body>
TResult RunFenced(TControl& sender, TResult fallback, Body&& body) noexcept {
  RunFenced(sender, [&] { fallback = body(); });
  return fallback;
}

}  // namespace oak
