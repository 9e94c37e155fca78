// Children of a control: their order, their place, their density.
#include <algorithm>

#include "oak/framework/ControlScopes.h"
#include "oak/framework/Events.h"
#include "oak/framework/WidgetSet.h"
#include "oak/framework/WinControl.h"

namespace oak {
namespace {

/// Rounds of one layout: handlers of OnResize may ask for another, but not forever.
constexpr int MaxAlignRounds = 4;

/// The part that a control of a height and width takes from what is left, along one edge.
TRect TakeEdge(TAlign align, int width, int height, TRect& rest) {
  TRect result = rest;
  switch (align) {
    case alTop:
      rest.Top = result.Bottom = rest.Top + height;
      break;
    case alBottom:
      rest.Bottom = result.Top = rest.Bottom - height;
      break;
    case alLeft:
      rest.Left = result.Right = rest.Left + width;
      break;
    case alRight:
      rest.Right = result.Left = rest.Right - width;
      break;
    default:
      break;
  }
  return result;
}

}  // namespace

// --- the list of children ----------------------------------------------------
void TWinControl::InsertControl(TControl* control) {
  const TLifeGuard guard = GetLifeGuard();
  const TLifeGuard childGuard = control->GetLifeGuard();
  auto* window = dynamic_cast<TWinControl*>(control);
  if (window) window->fTabOrder = static_cast<int>(TabList().size());
  fControls.push_back(control);
  control->fParent = this;
  control->fAlignRank = fNextAlignRank++;
  const int density = control->GetCurrentPPI();
  if (density != GetCurrentPPI()) {
    window ? window->PresetDensity(GetCurrentPPI()) : control->SetCurrentPPI(GetCurrentPPI());
    control->ChangeScale(GetCurrentPPI(), density);
  }
  control->RememberAnchors();
  control->ParentFontChanged();
  control->ParentColorChanged();
  if (!guard.IsAlive() || !childGuard.IsAlive() || control->GetParent() != this) return;
  if (window && window->fPeer && fPeer) window->fPeer->SetParent(fPeer->GetHandle());
  control->RequestAlign();
  if (window && childGuard.IsAlive()) window->UpdateShowing();
}

void TWinControl::RemoveControl(TControl* control) {
  const auto place = std::find(fControls.begin(), fControls.end(), control);
  if (place == fControls.end()) return;
  fControls.erase(place);
  control->fParent = nullptr;
  if (auto* window = dynamic_cast<TWinControl*>(control)) window->fTabOrder = -1;
  if (!IsDestroying() && control->GetAlign() != alNone && control->GetVisible())
    RunFenced(*this, [this] { Realign(); });
}

void TWinControl::SetParent(TWinControl* parent) {
  if (parent == GetParent()) return;
  if (parent && ContainsControl(parent)) {
    TControl::SetParent(parent);  // refuses it
    return;
  }
  const TLifeGuard guard = GetLifeGuard();
  RemoveFocus();
  const bool keepsWindow = parent && parent->fPeer;
  if (guard.IsAlive() && !keepsWindow) DestroyHandle();
  if (guard.IsAlive()) TControl::SetParent(parent);
}

TControl* TWinControl::GetControl(int index) const {
  return index >= 0 && index < GetControlCount() ? fControls[static_cast<std::size_t>(index)]
                                                 : nullptr;
}

bool TWinControl::ContainsControl(const TControl* control) const {
  while (control && control != this) control = control->GetParent();
  return control != nullptr;
}

TControl* TWinControl::ControlAtPos(TPoint point) const {
  for (auto control = fControls.rbegin(); control != fControls.rend(); ++control)
    if ((*control)->GetVisible() && (*control)->GetBoundsRect().Contains(point)) return *control;
  return nullptr;
}

std::vector<TGuardedControl> TWinControl::GuardedChildren() const {
  std::vector<TGuardedControl> result;
  result.reserve(fControls.size());
  for (TControl* control : fControls) result.emplace_back(*control);
  return result;
}

void TWinControl::SetZOrder(TControl* control, bool top) {
  const auto place = std::find(fControls.begin(), fControls.end(), control);
  if (place == fControls.end()) return;
  if (top)
    std::rotate(place, place + 1, fControls.end());
  else
    std::rotate(fControls.begin(), place, place + 1);
  auto* window = dynamic_cast<TWinControl*>(control);
  if (window && window->fPeer)
    window->fPeer->SetZOrder(top);
  else
    control->Invalidate();
}

// --- layout ------------------------------------------------------------------
void TWinControl::EnableAlign() {
  if (fAlignLevel > 0 && --fAlignLevel == 0 && fAlignPending) Realign();
}

void TWinControl::Realign() {
  if (fAlignLevel > 0 || fAligning || IsDestroying()) {
    fAlignPending = true;
    return;
  }
  const TLifeGuard guard = GetLifeGuard();
  const TMemberScope busy(*this, fAligning, true);
  for (int round = 0; round < MaxAlignRounds; ++round) {
    fAlignPending = false;
    fAlignedSize = GetClientSize();
    AlignControls();
    if (!guard.IsAlive() || !fAlignPending || fAlignLevel > 0) return;
  }
}

// Visible ones, the edges first, each edge from the outside in.
std::vector<TGuardedControl> TWinControl::ChildrenByAlign() const {
  std::vector<TGuardedControl> result;
  for (TControl* control : fControls)
    if (control->GetVisible()) result.emplace_back(*control);
  auto stage = [](TAlign align) {
    return align == alNone ? alClient + 1 : static_cast<int>(align);
  };
  std::stable_sort(
      result.begin(), result.end(), [&](const TGuardedControl& a, const TGuardedControl& b) {
        const int first = stage(a.Control->GetAlign());
        const int second = stage(b.Control->GetAlign());
        return first != second ? first < second : a.Control->fAlignRank < b.Control->fAlignRank;
      });
  return result;
}

void TWinControl::AlignControls() {
  const TLifeGuard guard = GetLifeGuard();
  TRect rest = GetClientRect();
  for (const TGuardedControl& child : ChildrenByAlign()) {
    if (child.Guard.IsAlive() && child.Control->GetParent() == this) AlignOne(*child.Control, rest);
    if (!guard.IsAlive()) return;
  }
}

void TWinControl::AlignOne(TControl& control, TRect& rest) {
  const TMemberScope<const TControl*> aligned(*this, fAligned, &control);
  const TLifeGuard guard = GetLifeGuard();
  const TLifeGuard childGuard = control.GetLifeGuard();
  const TAlign align = control.GetAlign();
  auto place = [&control](const TRect& bounds) {
    control.SetBounds(bounds.Left, bounds.Top, bounds.Width(), bounds.Height());
  };
  if (align == alNone) {
    // A parent that had no size yet says nothing about distances.
    if (control.fAnchorParentSize == TSize{}) control.RememberAnchors();
    if (control.fAnchors != TAnchors{akLeft, akTop}) place(control.AnchoredBounds(fAlignedSize));
    return;
  }
  TRect unused = rest;
  place(TakeEdge(align, control.GetWidth(), control.GetHeight(), unused));
  // A control may insist on a size of its own.
  if (guard.IsAlive() && childGuard.IsAlive())
    TakeEdge(align, control.GetWidth(), control.GetHeight(), rest);
}

void TWinControl::SetBounds(int left, int top, int width, int height) {
  const TLifeGuard guard = GetLifeGuard();
  TRect value({left, top}, {std::max(width, 0), std::max(height, 0)});
  if (value == fBounds) return;
  if (fPeer) WMWindowPosChanging(value);
  if (!guard.IsAlive() || value == fBounds) return;
  const TRect former = fBounds;
  fBounds = value;
  if (fPeer) fPeer->SetBounds(value);
  if (guard.IsAlive()) BoundsChanged(former);
}

void TWinControl::HandleBounds(const TRect& bounds) {
  if (IsDestroying()) return;
  RunFenced(*this, [&] {
    if (bounds == fBounds) {
      if (GetClientSize() != fAlignedSize) Realign();
      return;
    }
    const TLifeGuard guard = GetLifeGuard();
    TRect value = bounds;
    WMWindowPosChanging(value);
    if (!guard.IsAlive()) return;
    const TRect former = fBounds;
    fBounds = bounds;
    BoundsChanged(former);
  });
}

void TWinControl::WMWindowPosChanging(TRect&) {}

void TWinControl::ClientChanged() { Realign(); }

TRect TWinControl::GetClientRect() const {
  return fPeer ? fPeer->GetClientRect() : TControl::GetClientRect();
}

// --- density -----------------------------------------------------------------
// All know the new density before the first of them scales.
void TWinControl::PresetDensity(int value) {
  SetCurrentPPI(value);
  ForEachChild([value](TControl& child) { child.SetCurrentPPI(value); });
  ForEachWindow([value](TWinControl& child) { child.PresetDensity(value); });
}

void TWinControl::ChangeScale(int m, int d) {
  if (m == d) return;
  const TLifeGuard guard = GetLifeGuard();
  DisableAlign();
  TControl::ChangeScale(m, d);
  if (guard.IsAlive()) ForEachChild([=](TControl& child) { child.ChangeScale(m, d); });
  if (!guard.IsAlive()) return;
  fAlignPending = true;
  EnableAlign();
}

void TWinControl::HandlePixelsPerInch(int value) {
  const int former = GetCurrentPPI();
  if (value < 1 || value == former || IsDestroying() || !IsRoot()) return;
  RunFenced(*this, [&] {
    PresetDensity(value);
    ChangeScale(value, former);
  });
}

}  // namespace oak
