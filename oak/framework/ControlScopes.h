// Small guards that the sources of the controls share. Not for users.
#pragma once

#include <vector>

#include "oak/framework/WinControl.h"

namespace oak {

/// A child with the means to see whether it still lives.
struct TGuardedControl {
  explicit TGuardedControl(TControl& control) : Control(&control), Guard(control.GetLifeGuard()) {}
  TControl* Control;
  TLifeGuard Guard;
};

/// Sets a variable of a control for the span of a block, if the control outlives it.
template <class T>
class TMemberScope {
 public:
  TMemberScope(const TControl& owner, T& member, T value)
      : fGuard(owner.GetLifeGuard()), fMember(member), fFormer(member) {
    fMember = value;
  }
  ~TMemberScope() {
    if (fGuard.IsAlive()) fMember = fFormer;
  }
  TMemberScope(const TMemberScope&) = delete;
  TMemberScope& operator=(const TMemberScope&) = delete;

 private:
  TLifeGuard fGuard;
  T& fMember;
  T fFormer;
};

template <class TAction>
void TWinControl::ForEachChild(const TAction& action) {
  const TLifeGuard guard = GetLifeGuard();
  for (const TGuardedControl& child : GuardedChildren()) {
    if (child.Guard.IsAlive()) action(*child.Control);
    if (!guard.IsAlive()) return;
  }
}

template <class TAction>
void TWinControl::ForEachWindow(const TAction& action) {
  ForEachChild([&action](TControl& control) {
    if (auto* window = dynamic_cast<TWinControl*>(&control)) action(*window);
  });
}

}  // namespace oak
