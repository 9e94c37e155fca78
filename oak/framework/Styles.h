// Styles: whose colours the controls are drawn in.
#pragma once

#include <functional>
#include <memory>
#include <vector>

#include "oak/framework/ControlTypes.h"
#include "oak/framework/Graphics.h"

namespace oak {

enum TStyleColor : std::uint8_t {
  scBorder,
  scEdit,
  scListView,
  scTreeView,
  scPanel,
  scWindow,
  scHeader,
  scCount
};

/// A set of colours with a name. The system's style takes them from the system.
class TStyle {
 public:
  TStyle(TString name, bool dark) : fName(std::move(name)), fDark(dark) {}
  virtual ~TStyle() = default;
  const TString& GetName() const noexcept { return fName; }
  virtual bool IsSystemStyle() const { return false; }
  virtual bool IsDark() const { return fDark; }
  /// The style's value of a system colour such as clWindow, as 0x00BBGGRR.
  virtual TColor GetSystemColor(TColor color) const = 0;
  /// Background of a kind of control.
  virtual TColor GetStyleColor(TStyleColor color) const = 0;

 private:
  TString fName;
  bool fDark;
};

/// Keeps the active style. Main thread.
class TStyleManager {
 public:
  static TStyle& ActiveStyle();
  static TStyle& SystemStyle();
  /// Makes a registered style the active one and lets all forms redraw; false if there is none of
  /// that name.
  static bool TrySetStyle(TStringView name);
  static void RegisterStyle(std::unique_ptr<TStyle> style);
  /// The built-in light and dark styles of the library: u"Light", u"Dark".
  static std::vector<TString> GetStyleNames();
  /// Whether the system draws themed controls.
  static bool IsThemed();
  /// Handlers run after a change of the style or of the system's colours; the result takes the
  /// handler away again when destroyed.
  static std::shared_ptr<void> OnChange(std::function<void()> handler);
  static void NotifyChange();
};

}  // namespace oak
