#include "oak/framework/headless/HeadlessForm.h"

#include <algorithm>
#include <vector>

#include "oak/framework/Menus.h"
#include "oak/framework/TextMetrics.h"
#include "oak/framework/headless/HeadlessDesktop.h"
#include "oak/framework/headless/HeadlessMenu.h"

namespace oak {
namespace {

constexpr int MetricCaption = 4;
constexpr int MetricMenu = 15;
constexpr int MetricSizeFrame = 33;
constexpr int MetricPadding = 92;
constexpr int MenuBarMargin = 8;  // left and right of a caption, at 96 pixels per inch

THeadlessKind HeadlessKindOf(const TCustomForm& form) {
  return form.GetParent() || form.GetParentWindow() ? THeadlessKind::Child
                                                    : THeadlessKind::TopLevel;
}

/// Tells controls that live in a window by its handle alone; others have followed their form.
void TellGuests(THeadlessWindow& window, int pixelsPerInch) {
  THeadlessDesktop& desktop = window.GetDesktop();
  std::vector<HWND> children;
  for (const THeadlessWindow* child : window.GetChildWindows())
    children.push_back(child->GetHandle());
  for (const HWND handle : children) {
    THeadlessWindow* const child = desktop.FindWindow(handle);
    TWinControl* const control = child ? child->GetControlOrNil() : nullptr;
    if (control) control->HandlePixelsPerInch(pixelsPerInch);
    if (THeadlessWindow* const left = desktop.FindWindow(handle)) TellGuests(*left, pixelsPerInch);
  }
}

/// Keeps the other windows of the program from the user for the span of a block.
class THeadlessModalScope {
 public:
  THeadlessModalScope(THeadlessDesktop& desktop, const THeadlessWindow& except)
      : fDesktop(desktop) {
    for (const THeadlessWindow* window : desktop.GetTopWindows())
      if (window != &except && window->GetKind() == THeadlessKind::TopLevel && window->GetEnabled())
        fDisabled.push_back(window->GetHandle());
    Enable(false);
  }
  ~THeadlessModalScope() { Enable(true); }
  THeadlessModalScope(const THeadlessModalScope&) = delete;
  THeadlessModalScope& operator=(const THeadlessModalScope&) = delete;

 private:
  void Enable(bool enabled) {
    for (const HWND handle : fDisabled)
      if (THeadlessWindow* const window = fDesktop.FindWindow(handle)) window->SetEnabled(enabled);
  }
  THeadlessDesktop& fDesktop;
  std::vector<HWND> fDisabled;
};

}  // namespace

THeadlessForm::THeadlessForm(THeadlessDesktop& desktop, TCustomForm& form)
    : THeadlessPeer(desktop, form, HeadlessKindOf(form)), fForm(form), fPixelsPerInch(96) {
  fPixelsPerInch = THeadlessPeer::GetWindowPPI();
}

bool THeadlessForm::HasFrame() const {
  return GetKind() == THeadlessKind::TopLevel && fForm.GetFormBorderStyle() != bsFormNone;
}

int THeadlessForm::GetWindowPPI() const {
  return GetKind() == THeadlessKind::TopLevel ? fPixelsPerInch : THeadlessPeer::GetWindowPPI();
}

int THeadlessForm::GetMenuBarHeight() const {
  if (!fMenu || fMenu->Items().GetCount() == 0) return 0;
  return GetDesktop().GetSystemMetric(MetricMenu, GetWindowPPI());
}

TRect THeadlessForm::GetFrame() const {
  if (!HasFrame()) return {0, GetMenuBarHeight(), 0, 0};
  const THeadlessDesktop& desktop = GetDesktop();
  const int ppi = GetWindowPPI();
  const int edge =
      desktop.GetSystemMetric(MetricSizeFrame, ppi) + desktop.GetSystemMetric(MetricPadding, ppi);
  const int caption = desktop.GetSystemMetric(MetricCaption, ppi);
  return {edge, edge + caption + GetMenuBarHeight(), edge, edge};
}

void THeadlessForm::SetVisible(bool visible) {
  const TLifeGuard guard = Guard();
  THeadlessPeer::SetVisible(visible);
  if (guard.IsAlive() && visible && fState != wsMinimized) Activate();
}

void THeadlessForm::Activate() { GetDesktop().Activate(this); }

void THeadlessForm::OnActivated(bool active) { fForm.HandleActivate(active); }

void THeadlessForm::SetWindowState(TWindowState state) {
  if (state == fState) return;
  if (fState == wsNormal) fRestored = GetBounds();
  fState = state;
  const TLifeGuard guard = Guard();
  if (state == wsMinimized) {
    GetDesktop().WindowHidden(*this);
    return;
  }
  const std::vector<TMonitorInfo> monitors = GetDesktop().GetMonitors();
  const int monitor = GetDesktop().MonitorOf(fRestored);
  const TRect area = monitors[static_cast<std::size_t>(monitor)].WorkArea;
  SetBounds(state == wsMaximized ? area : fRestored);
  if (!guard.IsAlive()) return;
  Invalidate(nullptr);
  if (GetVisible()) Activate();
}

void THeadlessForm::UserWindowState(TWindowState state) {
  if (state == fState) return;
  const TLifeGuard guard = Guard();
  SetWindowState(state);
  if (guard.IsAlive()) fForm.HandleWindowState(state);
}

void THeadlessForm::BoundsMoved(bool sizeChanged) {
  const TLifeGuard guard = Guard();
  THeadlessPeer::BoundsMoved(sizeChanged);
  if (guard.IsAlive()) CheckDensity();
}

void THeadlessForm::CheckDensity() {
  const int ppi = THeadlessPeer::GetWindowPPI();
  if (fTellingDensity || ppi == fPixelsPerInch || GetKind() != THeadlessKind::TopLevel) return;
  const int former = fPixelsPerInch;
  fPixelsPerInch = ppi;
  fTellingDensity = true;
  const TLifeGuard guard = Guard();
  const TRect bounds = GetBounds();
  fForm.HandlePixelsPerInch(ppi);
  if (!guard.IsAlive()) return;
  TellGuests(*this, ppi);
  if (!guard.IsAlive()) return;
  if (GetBounds() == bounds && fForm.GetScaled() && fState == wsNormal)
    SetBounds({bounds.TopLeft(),
               {MulDiv(bounds.Width(), ppi, former), MulDiv(bounds.Height(), ppi, former)}});
  if (!guard.IsAlive()) return;
  fTellingDensity = false;
  InvalidateAll();
}

void THeadlessForm::SetMenu(TMenu* menu) {
  fMenu = menu;
  Invalidate(nullptr);
  BoundsMoved(true);
}

TRect THeadlessForm::GetMenuBarRect(int entry) const {
  const TRect frame = GetFrame();
  const int height = GetMenuBarHeight();
  int left = frame.Left;
  for (int i = 0; height > 0 && i < fMenu->Items().GetCount(); ++i) {
    const TMenuItem& item = *fMenu->Items().GetItem(i);
    if (!item.GetVisible()) continue;
    const int width =
        TextWidth(GetFont(), MenuCaption(item.GetCaption())) + 2 * Scaled(MenuBarMargin);
    if (i == entry) return {left, frame.Top - height, left + width, frame.Top};
    left += width;
  }
  return {};
}

void THeadlessForm::OnFrameMouse(const TMouseEvent& event, TPoint inWindow) {
  if (!fMenu || event.Action != TMouseAction::Down || event.Button != mbLeft) return;
  for (int i = 0; i < fMenu->Items().GetCount(); ++i) {
    const TRect rect = GetMenuBarRect(i);
    if (!rect.Contains(inWindow) || !fMenu->Items().GetItem(i)->GetEnabled()) continue;
    const TLifeGuard guard = Guard();
    const TPoint below = GetScreenRect().TopLeft() + TPoint(rect.Left, rect.Bottom);
    const UINT command = TrackMenuBar(*this, i, below);
    if (command != 0 && guard.IsAlive()) fForm.HandleMenuCommand(command);
    return;
  }
}

void THeadlessForm::RunModal(const std::function<bool()>& until) {
  THeadlessDesktop& desktop = GetDesktop();
  const TString what = u"The modal form \"" + GetWindowText() + u"\"";
  Activate();
  const THeadlessModalScope scope(desktop, *this);
  desktop.RunLoop(until, what);  // the form may be gone after it
}

}  // namespace oak
