#include "oak/base/Exceptions.h"
#include "oak/framework/Forms.h"
#include "oak/framework/WidgetSet.h"

namespace oak {

TScreen& Screen() {
  static auto& screen = *new TScreen;  // forms of static life end late
  return screen;
}

int TScreen::GetMonitorCount() const { return static_cast<int>(WidgetSet().GetMonitors().size()); }

TMonitorInfo TScreen::GetMonitor(int index) const {
  const std::vector<TMonitorInfo> monitors = WidgetSet().GetMonitors();
  if (index < 0 || index >= static_cast<int>(monitors.size()))
    throw EArgumentException(u"index: there is no such monitor.");
  return monitors[static_cast<std::size_t>(index)];
}

namespace {

TMonitorInfo PrimaryMonitor(const std::vector<TMonitorInfo>& monitors) {
  for (const TMonitorInfo& monitor : monitors)
    if (monitor.Primary) return monitor;
  return monitors.empty() ? TMonitorInfo() : monitors.front();
}

}  // namespace

TMonitorInfo TScreen::MonitorFromPoint(TPoint point) const {
  const std::vector<TMonitorInfo> monitors = WidgetSet().GetMonitors();
  for (const TMonitorInfo& monitor : monitors)
    if (monitor.Bounds.Contains(point)) return monitor;
  return PrimaryMonitor(monitors);
}

int TScreen::GetPixelsPerInch() const {
  return PrimaryMonitor(WidgetSet().GetMonitors()).PixelsPerInch;
}

TRect TScreen::GetWorkArea() const { return PrimaryMonitor(WidgetSet().GetMonitors()).WorkArea; }

void TScreen::SetCursor(TCursor value) {
  if (value == fCursor) return;
  fCursor = value;
  WidgetSet().SetGlobalCursor(value);
}

TCustomForm* TScreen::GetForm(int index) const {
  return index >= 0 && index < GetFormCount() ? fForms[static_cast<std::size_t>(index)] : nullptr;
}

TWinControl* TScreen::GetActiveControl() const noexcept {
  return fActiveForm ? fActiveForm->GetActiveControl() : nullptr;
}

TPoint TScreen::GetMousePos() const { return WidgetSet().GetCursorPos(); }

}  // namespace oak
