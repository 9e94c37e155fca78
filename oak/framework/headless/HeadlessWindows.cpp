// Order, activation, focus, capture and pointer of the headless desktop.
#include <algorithm>
#include <utility>

#include "oak/framework/WinControl.h"
#include "oak/framework/headless/HeadlessDesktop.h"
#include "oak/framework/headless/HeadlessHint.h"

namespace oak {
namespace {

bool IsWithin(const THeadlessWindow* window, const THeadlessWindow& tree) {
  while (window && window != &tree) window = window->GetParentWindow();
  return window != nullptr;
}

}  // namespace

HWND THeadlessDesktop::Register(THeadlessWindow& window) {
  constexpr std::uintptr_t step = 2;  // handles are even, as those of the system
  fLastHandle += step;
  const HWND handle = reinterpret_cast<HWND>(fLastHandle);
  fWindows.emplace(handle, &window);
  if (!window.GetParentWindow()) EnterTop(window);
  return handle;
}

void THeadlessDesktop::Unregister(THeadlessWindow& window) {
  fWindows.erase(window.GetHandle());
  StopWindowTimers(window.GetHandle());
  THeadlessWindow* const root = window.GetRootWindow();
  LeaveTop(window);
  if (fCapture == &window) fCapture = nullptr;
  if (fHover == &window) {
    fHover = nullptr;
    StopHint();
  }
  // Keys go to the form then. Nobody is told: whoever destroys windows isn't finished.
  if (fFocus == &window) fFocus = root == &window ? nullptr : root;
  if (fActive != &window) return;
  fActive = nullptr;
  fActivationDue = true;
}

void THeadlessDesktop::EnterTop(THeadlessWindow& window) {
  fTops.push_back(&window);
  OrderTop(window, true);
}

void THeadlessDesktop::LeaveTop(THeadlessWindow& window) { std::erase(fTops, &window); }

void THeadlessDesktop::OrderTop(THeadlessWindow& window, bool top) {
  LeaveTop(window);
  const auto isPopup = [](const THeadlessWindow* other) {
    return other->GetKind() == THeadlessKind::Popup;
  };
  auto place = std::find_if(fTops.begin(), fTops.end(), isPopup);
  if (isPopup(&window))
    place = top ? fTops.end() : place;
  else if (!top)
    place = fTops.begin();
  fTops.insert(place, &window);
}

// --- activation and focus ----------------------------------------------------

THeadlessWindow* THeadlessDesktop::NextToActivate() const {
  const auto found = std::find_if(fTops.rbegin(), fTops.rend(), [](const THeadlessWindow* window) {
    return window->GetKind() == THeadlessKind::TopLevel && window->IsShowing() &&
           window->GetEnabled() && !window->IsMinimized();
  });
  return found == fTops.rend() ? nullptr : *found;
}

bool THeadlessDesktop::RunActivation() {
  if (!fActivationDue) return false;
  fActivationDue = false;
  if (!fActive) Activate(NextToActivate());
  return true;
}

void THeadlessDesktop::Activate(THeadlessWindow* window) {
  if (window == fActive) return;
  if (window && (window->GetKind() != THeadlessKind::TopLevel || !window->IsShowing() ||
                 !window->GetEnabled()))
    return;
  const HWND handle = window ? window->GetHandle() : nullptr;
  THeadlessWindow* const former = fActive;
  if (former) former->fLastFocus = IsWithin(fFocus, *former) ? GetFocusedWindow() : nullptr;
  fActive = window;
  if (window) OrderTop(*window, true);
  if (former) former->OnActivated(false);
  const auto isStill = [&] { return fActive == window && FindWindow(handle) == window; };
  if (!isStill()) return;
  if (!window) {
    SetFocusTo(nullptr);
    return;
  }
  window->OnActivated(true);
  if (!isStill() || IsWithin(fFocus, *window)) return;
  THeadlessWindow* const last = FindWindow(window->fLastFocus);
  if (!last || !IsWithin(last, *window) || !SetFocusTo(last)) {
    if (isStill() && !IsWithin(fFocus, *window)) SetFocusTo(window);
  }
}

bool THeadlessDesktop::SetFocusTo(THeadlessWindow* window) {
  if (window == fFocus) return true;
  const HWND handle = window ? window->GetHandle() : nullptr;
  if (window) {
    if (!window->IsShowing() || !window->IsUsable()) return false;
    THeadlessWindow* const root = window->GetRootWindow();
    if (root->GetKind() == THeadlessKind::TopLevel && root != fActive) {
      root->fLastFocus = handle;
      Activate(root);
      if (FindWindow(handle) != window || fActive != window->GetRootWindow()) return false;
      if (fFocus == window) return true;
    }
  }
  THeadlessWindow* const former = fFocus;
  fFocus = window;
  if (former) former->OnFocusChanged(false);
  if (fFocus != window || FindWindow(handle) != window) return false;
  if (window) window->OnFocusChanged(true);
  return fFocus == window;
}

void THeadlessDesktop::SetCaptureTo(THeadlessWindow* window) {
  if (fCapture == window) return;
  THeadlessWindow* const former = fCapture;
  fCapture = window;
  if (former && window) former->OnCaptureLost();
}

void THeadlessDesktop::EndCapture() {
  if (THeadlessWindow* const captured = std::exchange(fCapture, nullptr)) captured->OnCaptureLost();
}

void THeadlessDesktop::WindowHidden(THeadlessWindow& window) {
  if (fHover && IsWithin(fHover, window)) {
    fHover = nullptr;
    StopHint();
  }
  const TLifeGuard guard = window.Guard();
  if (fCapture && IsWithin(fCapture, window)) EndCapture();
  if (!guard.IsAlive()) return;
  if (fActive == &window && (!window.IsShowing() || window.IsMinimized())) {
    Activate(NextToActivate());
    return;
  }
  if (!fFocus || !IsWithin(fFocus, window) || (fFocus->IsShowing() && fFocus->IsUsable())) return;
  THeadlessWindow* const root = window.GetRootWindow();
  const THeadlessWindow* const hidden = fFocus;
  SetFocusTo(root != &window ? root : nullptr);  // which may pass it on at once
  if (fFocus == hidden) SetFocusTo(nullptr);
}

// --- the pointer -------------------------------------------------------------

THeadlessWindow* THeadlessDesktop::WindowAt(TPoint screen) const {
  for (auto i = fTops.rbegin(); i != fTops.rend(); ++i) {
    THeadlessWindow* const top = *i;
    if (!top->IsShowing() || top->IsMinimized() || !top->GetScreenRect().Contains(screen)) continue;
    if (top->GetEnabled()) return ChildAt(*top, screen);
    if (top->GetKind() != THeadlessKind::Popup) return nullptr;  // hints let the mouse through
  }
  return nullptr;
}

THeadlessWindow* THeadlessDesktop::ChildAt(THeadlessWindow& window, TPoint screen) const {
  if (!window.GetClientRect().Contains(window.ScreenToClient(screen))) return &window;
  const auto& children = window.GetChildWindows();
  for (auto i = children.rbegin(); i != children.rend(); ++i)
    if ((*i)->GetVisible() && (*i)->GetEnabled() && (*i)->GetScreenRect().Contains(screen))
      return ChildAt(**i, screen);
  return &window;
}

TCursor THeadlessDesktop::GetCursorShape() const {
  if (fGlobalCursor != crDefault) return fGlobalCursor;
  const THeadlessWindow* const window = fCapture ? fCapture : WindowAt(fCursorPos);
  const TCursor cursor = window ? window->CursorAt(window->ScreenToClient(fCursorPos)) : crDefault;
  return cursor == crDefault ? crArrow : cursor;
}

void THeadlessDesktop::HoverOver(THeadlessWindow* window) {
  if (fHover == window) return;
  THeadlessWindow* const former = fHover;
  fHover = window;
  StopHint();
  if (!former) return;
  TMouseEvent event;
  event.Action = TMouseAction::Leave;
  event.Shift = GetShiftState();
  event.Position = former->ScreenToClient(fCursorPos);
  former->DispatchMouse(event);
}

// --- painting ----------------------------------------------------------------

namespace {

THeadlessWindow* FirstInvalid(THeadlessWindow& window) {
  if (!window.GetVisible() || window.IsMinimized()) return nullptr;
  if (!window.GetInvalidRect().Intersected(window.GetClientRect()).IsEmpty()) return &window;
  for (THeadlessWindow* const child : window.GetChildWindows())
    if (THeadlessWindow* const found = FirstInvalid(*child)) return found;
  return nullptr;
}

}  // namespace

THeadlessWindow* THeadlessDesktop::NextToPaint() const {
  for (THeadlessWindow* const top : fTops)
    if (THeadlessWindow* const found = FirstInvalid(*top)) return found;
  return nullptr;
}

bool THeadlessDesktop::PaintNext() {
  THeadlessWindow* const window = NextToPaint();
  if (!window) return false;
  window->PaintNow();
  return true;
}

void THeadlessDesktop::Paint() {
  // A window that asks for a paint in its paint gets it the next time.
  std::size_t rounds = GetWindowCount() * 4 + 4;
  while (rounds-- > 0 && PaintNext()) {
  }
}

}  // namespace oak
