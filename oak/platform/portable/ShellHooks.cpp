#include "oak/platform/portable/ShellHooks.h"

#include <mutex>

namespace oak {
namespace {

struct THookState {
  std::mutex Lock;
  std::shared_ptr<const TShellHooks> Hooks = std::make_shared<TShellHooks>();
  TString Report;
};

THookState& HookState() {
  static auto* state = new THookState;  // commands may run until the very end
  return *state;
}

}  // namespace

void SetShellHooks(TShellHooks hooks) {
  auto fresh = std::make_shared<const TShellHooks>(std::move(hooks));
  THookState& state = HookState();
  const std::lock_guard lock(state.Lock);
  state.Hooks.swap(fresh);
}

std::shared_ptr<const TShellHooks> ShellHooks() {
  THookState& state = HookState();
  const std::lock_guard lock(state.Lock);
  return state.Hooks;
}

TString LastPropertyReport() {
  THookState& state = HookState();
  const std::lock_guard lock(state.Lock);
  return state.Report;
}

void ShowProperties(const TString& title, const TString& report) {
  {
    THookState& state = HookState();
    const std::lock_guard lock(state.Lock);
    state.Report = report;
  }
  const auto hooks = ShellHooks();
  if (hooks->OnProperties) hooks->OnProperties(title, report);
}

}  // namespace oak
