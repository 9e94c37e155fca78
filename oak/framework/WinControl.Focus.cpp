// The keyboard's way: which control has it, and which is next.
#include <algorithm>

#include "oak/base/Exceptions.h"
#include "oak/framework/ControlScopes.h"
#include "oak/framework/Events.h"
#include "oak/framework/Forms.h"
#include "oak/framework/WidgetSet.h"

namespace oak {

// --- controls ----------------------------------------------------------------
bool TWinControl::CanFocus() const {
  const TWinControl* control = this;
  for (; control; control = control->GetParent()) {
    if (!control->GetVisible() || !control->GetEnabled() || control->IsDestroying()) return false;
    if (!control->GetParent()) return control->IsRoot();
  }
  return false;
}

bool TWinControl::Focused() const { return fPeer && fPeer->HasFocus(); }

void TWinControl::SetFocus() {
  if (!CanFocus()) throw EInvalidOperation(u"Cannot focus a disabled or invisible window.");
  if (TCustomForm* form = GetParentForm()) {
    form->FocusControl(*this);
    return;
  }
  HandleNeeded();
  fPeer->SetFocus();
}

void TWinControl::HandleFocus(bool focused) {
  if (IsDestroying()) return;
  RunFenced(*this, [&] {
    const TLifeGuard guard = GetLifeGuard();
    focused ? WMSetFocus() : WMKillFocus();
    if (!guard.IsAlive()) return;
    if (TCustomForm* form = GetParentForm()) {
      if (focused) form->ControlFocused(*this);
    } else if (!IsRecreating()) {
      focused ? DoEnter() : DoExit();
    }
  });
}

void TWinControl::DoEnter() { FireEvent(OnEnter, this); }

void TWinControl::DoExit() { FireEvent(OnExit, this); }

void TWinControl::RemoveFocus() {
  TCustomForm* form = GetParentForm();
  if (form && form != this) form->ControlLeaves(*this);
}

// --- tab order ---------------------------------------------------------------
std::vector<TWinControl*> TWinControl::TabList() const {
  std::vector<TWinControl*> result;
  for (TControl* control : fControls)
    if (auto* window = dynamic_cast<TWinControl*>(control)) result.push_back(window);
  std::stable_sort(result.begin(), result.end(), [](const TWinControl* a, const TWinControl* b) {
    return a->fTabOrder < b->fTabOrder;
  });
  return result;
}

void TWinControl::SetTabOrder(int value) {
  if (!GetParent()) return;
  std::vector<TWinControl*> list = GetParent()->TabList();
  list.erase(std::find(list.begin(), list.end(), this));
  list.insert(list.begin() + std::clamp(value, 0, static_cast<int>(list.size())), this);
  int order = 0;
  for (TWinControl* control : list) control->fTabOrder = order++;
}

void TWinControl::CollectTabOrder(std::vector<TWinControl*>& list) const {
  for (TWinControl* control : TabList()) {
    list.push_back(control);
    control->CollectTabOrder(list);
  }
}

TWinControl* TWinControl::FindNextControl(TWinControl* current, bool forward,
                                          bool tabStopsOnly) const {
  std::vector<TWinControl*> list;
  CollectTabOrder(list);
  if (!forward) std::reverse(list.begin(), list.end());
  const auto place = std::find(list.begin(), list.end(), current);
  if (place != list.end()) std::rotate(list.begin(), place + 1, list.end());
  for (TWinControl* control : list)
    if (control != current && (control->GetTabStop() || !tabStopsOnly) && control->CanFocus())
      return control;
  return nullptr;
}

void TWinControl::SelectNext(TWinControl* current, bool forward) {
  if (TWinControl* next = FindNextControl(current, forward, true)) next->SetFocus();
}

// --- forms -------------------------------------------------------------------
void TCustomForm::SetActiveControl(TWinControl* value) {
  if (value == this) value = nullptr;
  if (value && !ContainsControl(value))
    throw EInvalidOperation(u"Control '" + value->GetName() + u"' is not on the form.");
  fActiveControl = value;
  if (fActive) FocusActiveControl();
}

void TCustomForm::FocusControl(TWinControl& control) {
  const TLifeGuard guard = GetLifeGuard();
  const TLifeGuard controlGuard = control.GetLifeGuard();
  fActiveControl = &control == this ? nullptr : &control;
  control.HandleNeeded();
  if (guard.IsAlive() && controlGuard.IsAlive() && control.fPeer) control.fPeer->SetFocus();
}

// Gives the keyboard to the active control, or to the first that can have it.
void TCustomForm::FocusActiveControl() {
  auto mayHave = [this](TWinControl* control) {
    return control && control->CanFocus() && !(fLeaving && fLeaving->ContainsControl(control));
  };
  TWinControl* target = fActiveControl;
  if (!mayHave(target)) {
    target = FindNextControl(fLeaving, true, true);
    for (TWinControl* first = target; target && !mayHave(target);) {
      target = FindNextControl(target, true, true);
      if (target == first) target = nullptr;
    }
  }
  if (!target) {
    MoveFocus(nullptr);
    return;
  }
  fActiveControl = target;
  if (target->fPeer && !target->Focused()) target->fPeer->SetFocus();
}

void TCustomForm::ControlFocused(TWinControl& control) {
  if (&control == this)
    FocusActiveControl();
  else
    MoveFocus(&control);
}

// Fires OnExit from the former control upwards and OnEnter down to the next, for all containers
// that hold but one of them. A handler that moves the keyboard again ends the round.
void TCustomForm::MoveFocus(TWinControl* next) {
  if (next == fFocused) return;
  TWinControl* former = fFocused;
  fFocused = next;
  if (next) fActiveControl = next;
  std::vector<TGuardedControl> left, entered;
  for (TWinControl* c = former; c && c != this && !c->ContainsControl(next); c = c->GetParent())
    left.emplace_back(*c);
  for (TWinControl* c = next; c && c != this && !c->ContainsControl(former); c = c->GetParent())
    entered.emplace(entered.begin(), *c);
  const TLifeGuard guard = GetLifeGuard();
  auto tell = [&](const TGuardedControl& item, auto&& handler) {
    if (!guard.IsAlive() || fFocused != next || !item.Guard.IsAlive()) return;
    auto* control = static_cast<TWinControl*>(item.Control);
    if (!control->IsDestroying()) handler(*control);
  };
  for (const auto& item : left) tell(item, [](TWinControl& control) { control.DoExit(); });
  for (const auto& item : entered) tell(item, [](TWinControl& control) { control.DoEnter(); });
}

// A control is hidden, disabled, moved elsewhere or destroyed.
void TCustomForm::ControlLeaves(TWinControl& control) {
  if (IsDestroying()) return;
  if (!control.ContainsControl(fActiveControl) && !control.ContainsControl(fFocused)) return;
  const TLifeGuard guard = GetLifeGuard();
  const TMemberScope leaving(*this, fLeaving, &control);
  if (control.ContainsControl(fActiveControl)) fActiveControl = nullptr;
  if (fActive && !IsRecreating()) FocusActiveControl();
  if (!guard.IsAlive()) return;
  if (control.ContainsControl(fFocused)) MoveFocus(nullptr);
  if (guard.IsAlive() && control.ContainsControl(fActiveControl)) fActiveControl = nullptr;
}

bool TCustomForm::DialogKey(std::uint16_t key, TShiftState shift) {
  if (key == vkTab && !shift.Contains(ssCtrl) && !shift.Contains(ssAlt)) {
    SelectNext(fActiveControl, !shift.Contains(ssShift));
    return true;
  }
  return TWinControl::DialogKey(key, shift);
}

}  // namespace oak
