// Small guards that the sources of the controls share. Not for users.
#pragma once

#include "oak/framework/Control.h"

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

}  // namespace oak
