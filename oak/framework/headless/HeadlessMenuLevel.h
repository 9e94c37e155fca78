// The window of one open menu on the headless desktop.
#pragma once

#include <vector>

#include "oak/framework/headless/HeadlessWindow.h"
#include "oak/platform/MenuTable.h"

namespace oak {

/// Shows the entries that the menu has when the window is made.
class THeadlessMenuLevel final : public THeadlessWindow {
 public:
  /// `owner` is the window that is asked about entries that draw themselves; may be gone.
  THeadlessMenuLevel(THeadlessDesktop& desktop, HMENU menu, TPoint screen, HWND owner);

  TRect GetFrame() const override { return {1, 1, 1, 1}; }
  int GetWindowPPI() const override { return fPixelsPerInch; }
  void Paint(TCanvas& canvas, const TRect& clip) override;

  TRect EntryRect(int index) const;
  /// -1 for none.
  int EntryAt(TPoint screen) const;
  void SetHot(int index);

  const HMENU Menu;
  int Hot = -1;

 private:
  TSize MeasureEntry(const TMenuEntry& entry);
  bool MeasureOwnerDrawn(const TMenuEntry& entry, TSize& size);
  void PaintEntry(TCanvas& canvas, const TMenuEntry& entry, int index);
  bool PaintOwnerDrawn(TCanvas& canvas, const TMenuEntry& entry, const TRect& rect, bool hot);

  HWND fOwner;
  int fPixelsPerInch = 96;
  std::vector<int> fHeights;
};

}  // namespace oak
