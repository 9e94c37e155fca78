// TOakBaseComponent: what components without a window have in common.
#pragma once

#include "oak/framework/Component.h"

namespace oak {

/// Base of the components that are not controls. Main thread only.
class TOakBaseComponent : public TComponent {
 public:
  explicit TOakBaseComponent(TComponent* AOwner = nullptr) : TComponent(AOwner) {}

  /// Default true. What a component does not do while it is disabled is said there.
  virtual bool GetEnabled() const { return fEnabled; }
  virtual void SetEnabled(bool pValue) { fEnabled = pValue; }
  /// Of the library, as "major.minor.patch".
  TString GetVersion() const;

 private:
  bool fEnabled = true;
};

}  // namespace oak
