// Mouse and keys of a headless list.
#include <algorithm>
#include <cstdlib>
#include <utility>

#include "oak/framework/headless/HeadlessListPeer.h"
#include "oak/platform/Api.h"

namespace oak {
namespace {

constexpr int ListDragStart = 4;             // pixels at 96 per inch until a press becomes a drag
constexpr int EditTimer = 1;                 // opens the editor after a click on a selected label
constexpr unsigned EditDelay = 500;          // milliseconds: no second click may follow
constexpr std::uint64_t SearchPause = 1000;  // milliseconds after which typing begins anew

bool IsOneLetter(const TString& text) {
  return std::all_of(text.begin(), text.end(),
                     [&](char16_t c) { return UpCase(c) == UpCase(text.front()); });
}

}  // namespace

class THeadlessListPeer::TStateWatch {
 public:
  explicit TStateWatch(THeadlessListPeer& peer) : fPeer(peer), fGuard(peer.Guard()) {
    for (const int index : peer.IndexesIn(peer.GetClientRect()))
      fRows.push_back({index, peer.fView.HandleGetStates(index)});
  }
  ~TStateWatch() {
    if (!fGuard.IsAlive()) return;
    for (const auto& [index, states] : fRows)
      if (fPeer.fView.HandleGetStates(index) != states) fPeer.InvalidateRows(index, index);
  }
  TStateWatch(const TStateWatch&) = delete;
  TStateWatch& operator=(const TStateWatch&) = delete;

 private:
  THeadlessListPeer& fPeer;
  TLifeGuard fGuard;
  std::vector<std::pair<int, TItemStates>> fRows;
};

void THeadlessListPeer::OnFocusChanged(bool focused) {
  // Selected rows and the focused one look different.
  Invalidate(nullptr);
  THeadlessPeer::OnFocusChanged(focused);
}

int THeadlessListPeer::GetFocusIndex() const {
  return fView.Items().IndexOf(fView.GetItemFocused());
}

// --- selecting

// Gives a row the focus and selects as the keys say. False if the window is gone.
bool THeadlessListPeer::SelectTo(int index, TShiftState shift) {
  const TLifeGuard guard = Guard();
  const TStateWatch watch(*this);
  const bool range = shift.Contains(ssShift) && fView.GetMultiSelect();
  if (range && fAnchor < 0) fAnchor = std::max(0, GetFocusIndex());
  fView.HandleFocusItem(index);
  if (!guard.IsAlive()) return false;
  if (range) {
    const int first = std::min(fAnchor, index);
    const int last = std::max(fAnchor, index);
    if (shift.Contains(ssCtrl))
      fView.HandleSelectRange(first, last, true);
    else
      fView.HandleSelectOnly(first, last);
    return guard.IsAlive();
  }
  if (shift.Contains(ssCtrl)) return true;
  fAnchor = index;
  fView.HandleSelectOnly(index, index);
  return guard.IsAlive();
}

// --- mouse

void THeadlessListPeer::OnMouse(TMouseEvent& event) {
  switch (event.Action) {
    case TMouseAction::Down:
      return MouseDown(event);
    case TMouseAction::Move:
      return MouseMove(event);
    case TMouseAction::Up:
      return MouseUp(event);
    case TMouseAction::Wheel:
      return Wheel(event);
    default:
      return THeadlessPeer::OnMouse(event);
  }
}

// There is nothing to scroll down in vsList.
void THeadlessListPeer::Wheel(TMouseEvent& event) {
  TMouseEvent turned = event;
  if (fView.GetViewStyle() == vsList) {
    turned.Action = TMouseAction::WheelSide;
    turned.WheelDelta = -event.WheelDelta;
  }
  THeadlessPeer::OnMouse(turned);
  event.Handled = turned.Handled;
}

void THeadlessListPeer::MouseDown(TMouseEvent& event) {
  if (event.Button == mbMiddle) return;
  const TLifeGuard guard = Guard();
  StopEditTimer();
  const bool hadFocus = HasFocus();
  if (!hadFocus) SetFocus();
  if (!guard.IsAlive()) return;
  EndEdit(false);
  if (!guard.IsAlive()) return;
  const TListHitTest hit = HitTest(event.Position);
  if (!guard.IsAlive()) return;
  fPress = {};
  fRightDragged = false;
  if (hit.Flags.Contains(htOnStateIcon)) {
    if (event.Button == mbLeft) fView.HandleToggleCheck(hit.Index);
    return;
  }
  if (hit.Index >= 0 && !hit.Flags.Contains(htNowhere)) {
    fPress.Index = hit.Index;
    fPress.Button = event.Button;
    fPress.Start = event.Position;
    SetCapture(true);
    return MouseSelect(hit.Index, event, hit.Flags.Contains(htOnLabel), hadFocus);
  }
  const TStateWatch watch(*this);
  if (!event.Shift.Contains(ssCtrl) && !event.Shift.Contains(ssShift))
    fView.HandleSelectOnly(0, -1);
}

void THeadlessListPeer::MouseSelect(int index, const TMouseEvent& event, bool onLabel,
                                    bool hadFocus) {
  const TItemStates states = fView.HandleGetStates(index);
  const bool ctrl = event.Shift.Contains(ssCtrl);
  const bool shift = event.Shift.Contains(ssShift);
  const bool left = event.Button == mbLeft;
  if (states.Contains(isSelected) && !shift && (!ctrl || !left)) {
    // The others stay selected for a drag, and for the menu of the right button.
    const bool alone = fView.GetSelCount() == 1;
    fPress.SelectOnUp = left && !alone;
    fPress.EditOnUp = left && alone && onLabel && hadFocus && states.Contains(isFocused) &&
                      !event.Shift.Contains(ssDouble);
    const TStateWatch watch(*this);
    return fView.HandleFocusItem(index);
  }
  if (!left || !ctrl || shift || !fView.GetMultiSelect()) {
    SelectTo(index, left && fView.GetMultiSelect() ? event.Shift : TShiftState());
    return;
  }
  const TLifeGuard guard = Guard();
  const TStateWatch watch(*this);
  fView.HandleFocusItem(index);
  if (!guard.IsAlive()) return;
  fAnchor = index;
  fView.HandleSelectRange(index, index, !states.Contains(isSelected));
}

void THeadlessListPeer::MouseMove(const TMouseEvent& event) {
  if (fPress.Index < 0) return;
  const TPoint way = event.Position - fPress.Start;
  if (std::max(std::abs(way.X), std::abs(way.Y)) <= Scaled(ListDragStart)) return;
  const TMouseButton button = std::exchange(fPress, {}).Button;
  fRightDragged = button == mbRight;
  const TLifeGuard guard = Guard();
  SetCapture(false);
  if (guard.IsAlive()) fView.HandleBeginDrag(button);
}

void THeadlessListPeer::MouseUp(TMouseEvent& event) {
  const TPress press = fPress;
  if (event.Button == mbRight && std::exchange(fRightDragged, false)) event.Handled = true;
  if (press.Index < 0 || press.Button != event.Button) return;
  const TLifeGuard guard = Guard();
  fPress = {};
  SetCapture(false);
  if (!guard.IsAlive()) return;
  if (press.SelectOnUp) {
    fAnchor = press.Index;
    const TStateWatch watch(*this);
    fView.HandleSelectOnly(press.Index, press.Index);
  } else if (press.EditOnUp && !fView.GetReadOnly()) {
    StartTimer(EditTimer, EditDelay);
  }
}

void THeadlessListPeer::OnTimerTick(int id) {
  if (id != EditTimer) return THeadlessPeer::OnTimerTick(id);
  StopEditTimer();
  if (HasFocus() && fView.GetSelCount() == 1) BeginEdit(GetFocusIndex());
}

void THeadlessListPeer::StopEditTimer() { StopTimer(EditTimer); }

// --- keys

void THeadlessListPeer::OnKey(TKeyEvent& event) {
  if (event.Action == TKeyAction::Down) {
    StopEditTimer();
    event.Handled = KeyDown(event);
  } else if (event.Action == TKeyAction::Char && event.Char >= u' ' &&
             !event.Shift.Contains(ssCtrl) && !event.Shift.Contains(ssAlt)) {
    event.Handled = true;
    if (event.Char != u' ' || IsSearching()) TypeChar(event.Char);
  }
}

bool THeadlessListPeer::KeyDown(const TKeyEvent& event) {
  if (event.Shift.Contains(ssAlt)) return false;
  if (const int target = GetKeyTarget(event.Key); target >= 0) {
    GoTo(target, event.Shift);
    return true;
  }
  switch (event.Key) {
    case vkLeft:
    case vkRight:
      ScrollLines(sbHorizontal, event.Key == vkLeft ? -1 : 1);
      return true;
    case vkSpace:
      if (!IsSearching()) PressSpace(event.Shift);
      return true;
    case vkAdd:
      if (!event.Shift.Contains(ssCtrl)) return false;
      fView.SizeColumnsToFit();
      return true;
    default:
      return false;
  }
}

// The row that an arrow or page key leads to from the focused one; -1 for other keys.
int THeadlessListPeer::GetKeyTarget(std::uint16_t key) const {
  const int last = fView.Items().GetCount() - 1;
  if (last < 0) return -1;
  const int from = GetFocusIndex();
  const TGrid grid = GetGrid();
  const int page = std::max(1, GetVisibleRowCount() - (IsReport() ? 1 : 0));
  int step = 0;
  switch (key) {
    case vkUp:
      step = grid.Down ? -1 : -grid.PerLine;
      break;
    case vkDown:
      step = grid.Down ? 1 : grid.PerLine;
      break;
    case vkLeft:
    case vkRight:
      if (IsReport()) return -1;
      step = grid.Down ? grid.PerLine : 1;
      if (key == vkLeft) step = -step;
      break;
    case vkHome:
      return 0;
    case vkEnd:
      return last;
    case vkPrior:
      step = -page;
      break;
    case vkNext:
      step = page;
      break;
    default:
      return -1;
  }
  if (from < 0) return 0;
  const bool paging = key == vkPrior || key == vkNext;
  const int target = from + step;
  if (target >= 0 && target <= last) return target;
  // Pages stop at the ends, and so does a step within a line; there is no half line further on.
  if (paging || std::abs(step) == 1) return std::clamp(target, 0, last);
  return from;
}

void THeadlessListPeer::GoTo(int index, TShiftState shift) {
  const TLifeGuard guard = Guard();
  MakeVisible(index, false);
  if (guard.IsAlive() && index < fView.Items().GetCount()) SelectTo(index, shift);
}

void THeadlessListPeer::PressSpace(TShiftState shift) {
  const int index = GetFocusIndex();
  if (index < 0) return;
  if (fView.GetCheckboxes() && !fView.GetStateImages() && !shift.Contains(ssCtrl))
    return fView.HandleToggleCheck(index);
  const TStateWatch watch(*this);
  const bool selected = fView.HandleGetStates(index).Contains(isSelected);
  fAnchor = index;
  if (shift.Contains(ssCtrl))
    fView.HandleSelectRange(index, index, !selected);
  else
    fView.HandleSelectOnly(index, index);
}

// --- typing

bool THeadlessListPeer::IsSearching() const {
  return !fSearch.empty() && Api().GetTickCount64() - fSearchTicks <= SearchPause;
}

// One letter again and again goes from row to row, a longer text stays where it fits.
void THeadlessListPeer::TypeChar(char16_t character) {
  if (!IsSearching()) fSearch.clear();
  fSearchTicks = Api().GetTickCount64();
  fSearch += character;
  const bool oneLetter = IsOneLetter(fSearch);
  const int from = GetFocusIndex();
  const int start = oneLetter ? from + 1 : std::max(0, from);
  const TLifeGuard guard = Guard();
  const int found =
      fView.HandleIncrementalSearch(oneLetter ? fSearch.substr(0, 1) : fSearch, start);
  if (guard.IsAlive() && found >= 0) GoTo(found, {});
}

}  // namespace oak
