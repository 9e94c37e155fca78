#include "oak/framework/WinControl.h"

#include <algorithm>
#include <utility>

#include "oak/base/Exceptions.h"
#include "oak/framework/Application.h"
#include "oak/framework/ControlScopes.h"
#include "oak/framework/Forms.h"
#include "oak/framework/Styles.h"
#include "oak/framework/WidgetSet.h"
#include "oak/platform/shell_api.h"

namespace oak {
namespace {

/// A state flag of a control for the span of a block.
class TStateScope {
 public:
  using TChange = void (*)(TWinControl&, bool);
  TStateScope(TWinControl& control, TChange change)
      : fControl(control), fGuard(control.GetLifeGuard()), fChange(change) {
    fChange(fControl, true);
  }
  ~TStateScope() {
    if (fGuard.IsAlive()) fChange(fControl, false);
  }
  TStateScope(const TStateScope&) = delete;
  TStateScope& operator=(const TStateScope&) = delete;

 private:
  TWinControl& fControl;
  TLifeGuard fGuard;
  TChange fChange;
};

}  // namespace

TWinControl::TWinControl(TComponent* owner) : TControl(owner) {}

TWinControl::~TWinControl() {
  BeginDestroy();
  while (!fControls.empty()) delete fControls.back();
}

void TWinControl::BeginDestroy() noexcept {
  Destroying();
  try {
    RemoveFocus();
    DestroyHandle();
  } catch (...) {
    Application().HandleException(nullptr);
  }
  fPeer.reset();
  fDropTarget.Reset();
  fStyleWatch.reset();
  if (GetParent()) GetParent()->RemoveControl(this);
}

// --- the window --------------------------------------------------------------
HWND TWinControl::GetHandle() {
  HandleNeeded();
  return fPeer->GetHandle();
}

bool TWinControl::IsRoot() const {
  return !GetParent() && (fParentWindow || dynamic_cast<const TCustomForm*>(this));
}

void TWinControl::HandleNeeded() {
  if (fPeer) return;
  if (IsDestroying() || GetControlState().Contains(csCreating))
    throw EInvalidOperation(u"The window of control '" + GetName() + u"' is not available now.");
  if (GetParent())
    GetParent()->HandleNeeded();
  else if (!IsRoot())
    throw EInvalidOperation(u"Control '" + GetName() + u"' has no parent window.");
  if (fPeer) return;
  const TStateScope creating(*this, [](TWinControl& control, bool value) {
    value ? control.IncludeState(csCreating) : control.ExcludeState(csCreating);
  });
  const TLifeGuard guard = GetLifeGuard();
  CreateWnd();
  if (guard.IsAlive()) TakeHostDensity();
  // The window's frame may leave the children less room than was thought.
  if (guard.IsAlive() && fPeer && GetClientSize() != fAlignedSize) Realign();
}

std::unique_ptr<IControlPeer> TWinControl::CreatePeer() { return WidgetSet().CreateControl(*this); }

void TWinControl::CreateWnd() {
  fPeer = CreatePeer();
  PushState();
  RestackWindow();
}

// What a new window does not take over by itself.
void TWinControl::PushState() {
  if (GetCursor() != crDefault) fPeer->SetCursor(GetCursor());
  if (!fText.empty()) fPeer->SetText(fText);
  if (!GetHint().empty()) fPeer->SetHint(GetHint());
  if (fDropTarget) fPeer->SetDropTarget(fDropTarget.Get());
}

// New windows are on top: those of the siblings above have to be so again.
void TWinControl::RestackWindow() {
  if (!GetParent()) return;
  const auto& siblings = GetParent()->fControls;
  auto above = std::find(siblings.begin(), siblings.end(), this);
  for (; above != siblings.end(); ++above) {
    auto* window = dynamic_cast<TWinControl*>(*above);
    if (window && window != this && window->fPeer) window->fPeer->SetZOrder(true);
  }
}

void TWinControl::DestroyWnd() {
  const TLifeGuard guard = GetLifeGuard();
  WMDestroy();
  if (!guard.IsAlive()) return;
  fShown = false;
  const bool wasUnderMouse = std::exchange(fMouseInside, false);
  fPeer.reset();
  if (wasUnderMouse) Application().HintLeaves();
}

void TWinControl::DestroyHandle() {
  if (!fPeer || GetControlState().Contains(csDestroyingHandle)) return;
  const TLifeGuard guard = GetLifeGuard();
  const TStateScope destroying(*this, [](TWinControl& control, bool value) {
    value ? control.IncludeState(csDestroyingHandle) : control.ExcludeState(csDestroyingHandle);
  });
  ForEachWindow([](TWinControl& child) { child.DestroyHandle(); });
  if (guard.IsAlive() && fPeer) DestroyWnd();
}

void TWinControl::RecreateWnd() {
  if (!fPeer || IsRecreating() || GetControlState().Contains(csDestroyingHandle)) return;
  const TLifeGuard guard = GetLifeGuard();
  TCustomForm* form = GetParentForm();
  TWinControl* focused = form ? form->GetActiveControl() : this;
  if (!focused || !ContainsControl(focused) || !focused->Focused()) focused = nullptr;
  const TLifeGuard focusGuard = focused ? focused->GetLifeGuard() : TLifeGuard();
  {
    const TStateScope recreating(
        *this, [](TWinControl& control, bool value) { control.MarkRecreating(value); });
    DestroyHandle();
    if (!guard.IsAlive()) return;
    MayShow() ? UpdateShowing() : HandleNeeded();
  }
  if (focused && focusGuard.IsAlive() && focused->fPeer) focused->fPeer->SetFocus();
}

void TWinControl::MarkRecreating(bool value) {
  value ? IncludeState(csRecreating) : ExcludeState(csRecreating);
  ForEachWindow([value](TWinControl& child) { child.MarkRecreating(value); });
}

void TWinControl::SetParentWindow(HWND value) {
  if (value == fParentWindow) return;
  fParentWindow = value;
  fStyleWatch = value ? TStyleManager::OnChange([this] { StyleChanged(); }) : nullptr;
  if (GetParent()) return;
  if (!value) {
    DestroyHandle();
  } else if (fPeer) {
    fPeer->SetParent(value);
    TakeHostDensity();
  } else {
    UpdateShowing();
  }
}

// Forms look for themselves, and other controls follow their parents.
void TWinControl::TakeHostDensity() {
  if (fPeer && IsPlacedByHost()) HandlePixelsPerInch(fPeer->GetPixelsPerInch());
}

void TWinControl::SetDropTarget(IDropTarget* target) {
  fDropTarget = Ref<IDropTarget>::Share(target);
  if (fPeer) fPeer->SetDropTarget(target);
}

void TWinControl::SetDoubleBuffered(bool value) {
  if (value == fDoubleBuffered) return;
  fDoubleBuffered = value;
  Invalidate();
}

void TWinControl::SetBorderStyle(TBorderStyle value) {
  if (value == fBorderStyle) return;
  fBorderStyle = value;
  RecreateWnd();
}

// --- visibility --------------------------------------------------------------
bool TWinControl::MayShow() const {
  if (!GetVisible() || IsDestroying()) return false;
  return GetParent() ? GetParent()->fPeer && GetParent()->MayShow() : IsRoot();
}

bool TWinControl::IsShowing() const {
  for (const TWinControl* control = this; control; control = control->GetParent())
    if (!control->fShown || !control->fPeer || !control->GetVisible()) return false;
  return true;
}

// Makes the windows that are needed now, the children's before their parent appears.
void TWinControl::UpdateShowing() {
  if (GetControlState().Contains(csCreating)) return;
  if (!GetVisible() && fPeer && fShown) {
    fShown = false;
    fPeer->SetVisible(false);
    return;
  }
  if (!MayShow()) return;
  const TLifeGuard guard = GetLifeGuard();
  HandleNeeded();
  if (guard.IsAlive()) ForEachWindow([](TWinControl& child) { child.UpdateShowing(); });
  if (!guard.IsAlive() || !fPeer || fShown || !GetVisible()) return;
  fShown = true;
  fPeer->SetVisible(true);
}

void TWinControl::SetVisible(bool value) {
  if (value == GetVisible()) return;
  const TLifeGuard guard = GetLifeGuard();
  VisibleChanging();
  if (!guard.IsAlive()) return;
  SetVisibleFlagOnly(value);
  if (!value) RemoveFocus();
  if (!value && guard.IsAlive()) UpdateShowing();
  if (guard.IsAlive()) RequestAlign();
  if (guard.IsAlive() && value) UpdateShowing();
}

void TWinControl::SetVisibleFlagOnly(bool value) { fVisible = value; }

void TWinControl::SetEnabled(bool value) {
  const TLifeGuard guard = GetLifeGuard();
  TControl::SetEnabled(value);
  if (!value && guard.IsAlive()) RemoveFocus();
}

void TWinControl::EnabledChanged() {
  if (fPeer) fPeer->SetEnabled(GetEnabled());
  TControl::EnabledChanged();
}

void TWinControl::SetText(const TString& value) {
  if (value == TControl::GetText()) return;
  const TLifeGuard guard = GetLifeGuard();
  fText = value;
  if (fPeer) fPeer->SetText(value);
  if (guard.IsAlive()) TextChanged();
}

void TWinControl::Invalidate() {
  if (fPeer) fPeer->Invalidate(nullptr);
}

void TWinControl::InvalidateRect(const TRect& rect) {
  if (fPeer && !rect.IsEmpty()) fPeer->Invalidate(&rect);
}

void TWinControl::Update() {
  if (fPeer) fPeer->Update();
}

// --- look --------------------------------------------------------------------
void TWinControl::FontChanged() {
  const TLifeGuard guard = GetLifeGuard();
  if (fPeer) fPeer->SetFont(GetFont());
  ForEachChild([](TControl& child) { child.ParentFontChanged(); });
  if (guard.IsAlive()) TControl::FontChanged();
}

void TWinControl::ColorChanged() {
  const TLifeGuard guard = GetLifeGuard();
  if (fPeer) fPeer->ColorsChanged();
  ForEachChild([](TControl& child) { child.ParentColorChanged(); });
  if (guard.IsAlive()) TControl::ColorChanged();
}

void TWinControl::StyleChanged() {
  const TLifeGuard guard = GetLifeGuard();
  if (fPeer) fPeer->ColorsChanged();
  ForEachChild([](TControl& child) { child.StyleChanged(); });
  if (guard.IsAlive()) TControl::StyleChanged();
}

void TWinControl::UpdateStyleElements() {
  if (fPeer) fPeer->ColorsChanged();
  TControl::UpdateStyleElements();
}

// --- messages ----------------------------------------------------------------
bool TWinControl::PostMessage(UINT message, WPARAM wParam, LPARAM lParam) {
  if (!fPeer) return false;
  fPeer->Post(message, wParam, lParam);
  return true;
}

LRESULT TWinControl::Perform(UINT message, WPARAM wParam, LPARAM lParam) {
  TMessage record{message, wParam, lParam, 0};
  WndProc(record);
  return record.Result;
}

void TWinControl::WndProc(TMessage&) {}

}  // namespace oak
