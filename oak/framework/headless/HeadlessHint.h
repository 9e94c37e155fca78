// The small window that tells what the pointer stands on.
#pragma once

#include "oak/framework/headless/HeadlessWindow.h"

namespace oak {

/// A hint: lets the mouse through and goes when the pointer leaves the area that it belongs to.
class THeadlessHint final : public THeadlessWindow {
 public:
  /// `area` is in client pixels of `owner`, `pointer` in screen pixels.
  THeadlessHint(THeadlessDesktop& desktop, THeadlessWindow& owner, const TRect& area, TString text,
                TPoint pointer);

  /// Whether the hint still holds when the pointer is there.
  bool Holds(const THeadlessWindow* owner, TPoint pointer) const;
  void Paint(TCanvas& canvas, const TRect& clip) override;

 private:
  const THeadlessWindow* fOwner;  // compared only
  TRect fArea;                    // in screen pixels
};

}  // namespace oak
