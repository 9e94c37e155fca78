// Mouse and keys of a headless tree.
#include <algorithm>
#include <cstdlib>
#include <utility>

#include "oak/framework/headless/HeadlessTreePeer.h"
#include "oak/platform/Api.h"

namespace oak {
namespace {

constexpr int TreeDragStart = 4;                 // pixels at 96 per inch
constexpr int TreeEditTimer = 1;                 // opens the editor after a click on the selection
constexpr unsigned TreeEditDelay = 500;          // milliseconds: no second click may follow
constexpr std::uint64_t TreeSearchPause = 1000;  // milliseconds after which typing begins anew

}  // namespace

void THeadlessTreePeer::OnFocusChanged(bool focused) {
  Invalidate(nullptr);
  const TLifeGuard guard = Guard();
  THeadlessPeer::OnFocusChanged(focused);
  // The keyboard needs a node to start from, as in the system's tree.
  if (guard.IsAlive() && focused && !fView.GetSelected())
    if (TTreeNode* const top = GetTopNode()) Select(top);
}

// True if the node is selected now; false also if the window is gone.
bool THeadlessTreePeer::Select(TTreeNode* node) {
  if (node == fView.GetSelected()) return true;
  const TLifeGuard guard = Guard();
  TCustomTreeView& view = fView;  // which may get another window meanwhile
  const TTreeNodeWatch watch(view, node);
  if (!view.HandleSelecting(node) || !watch.Exists()) return false;
  if (guard.IsAlive()) Invalidate(nullptr);
  view.HandleSelected(node);
  if (!guard.IsAlive() || !watch.Exists() || fView.GetSelected() != node) return false;
  MakeVisible(node);
  return guard.IsAlive() && watch.Exists();
}

void THeadlessTreePeer::Toggle(TTreeNode* node, bool expand) {
  const TLifeGuard guard = Guard();
  TCustomTreeView& view = fView;
  const TTreeNodeWatch watch(view, node);
  if (expand ? !view.HandleCanExpand(node) : !view.HandleCanCollapse(node)) return;
  if (!watch.Exists()) return;
  if (expand)
    view.HandleExpanded(node);
  else
    view.HandleCollapsed(node);
  if (guard.IsAlive()) RowsChanged();
}

// --- mouse --------------------------------------------------------------------------------------

void THeadlessTreePeer::OnMouse(TMouseEvent& event) {
  switch (event.Action) {
    case TMouseAction::Down:
      return MouseDown(event);
    case TMouseAction::Move:
      return MouseMove(event);
    case TMouseAction::Up:
      return MouseUp(event);
    default:
      return THeadlessPeer::OnMouse(event);
  }
}

void THeadlessTreePeer::MouseDown(TMouseEvent& event) {
  if (event.Button == mbMiddle) return;
  const TLifeGuard guard = Guard();
  StopTimer(TreeEditTimer);
  const bool hadFocus = HasFocus();
  if (!hadFocus) SetFocus();
  if (!guard.IsAlive()) return;
  EndEdit(false);
  if (!guard.IsAlive()) return;
  const TTreeHitTest hit = HitTest(event.Position);
  fPress = {};
  if (!hit.Node || !guard.IsAlive()) return;
  const bool left = event.Button == mbLeft;
  const bool onItem = hit.Flags.Contains(htOnIcon) || hit.Flags.Contains(htOnLabel) ||
                      (fView.GetRowSelect() && !hit.Flags.Contains(htOnButton));
  if (left && (hit.Flags.Contains(htOnButton) || (onItem && event.Shift.Contains(ssDouble))))
    return Toggle(hit.Node, !hit.Node->GetExpanded());
  if (!onItem) return;
  const bool wasSelected = hit.Node->GetSelected();
  const TTreeNodeWatch watch(fView, hit.Node);
  if ((left || fView.GetRightClickSelect()) && !Select(hit.Node)) return;
  if (!watch.Exists()) return;
  fPress = {hit.Node, event.Button, event.Position,
            left && wasSelected && hadFocus && hit.Flags.Contains(htOnLabel)};
  SetCapture(true);
}

void THeadlessTreePeer::MouseMove(const TMouseEvent& event) {
  if (!fPress.Node) return;
  const TPoint way = event.Position - fPress.Start;
  if (std::max(std::abs(way.X), std::abs(way.Y)) <= Scaled(TreeDragStart)) return;
  const TPress press = std::exchange(fPress, {});
  const TLifeGuard guard = Guard();
  const TTreeNodeWatch watch(fView, press.Node);
  SetCapture(false);
  if (guard.IsAlive() && watch.Exists()) fView.HandleBeginDrag(press.Node, press.Button);
}

void THeadlessTreePeer::MouseUp(const TMouseEvent& event) {
  if (!fPress.Node || fPress.Button != event.Button) return;
  const TPress press = std::exchange(fPress, {});
  const TLifeGuard guard = Guard();
  SetCapture(false);
  if (guard.IsAlive() && press.EditOnUp && !fView.GetReadOnly())
    StartTimer(TreeEditTimer, TreeEditDelay);
}

void THeadlessTreePeer::OnTimerTick(int id) {
  if (id != TreeEditTimer) return THeadlessPeer::OnTimerTick(id);
  StopTimer(TreeEditTimer);
  if (HasFocus() && fView.GetSelected()) BeginEdit(fView.GetSelected());
}

// --- keys ---------------------------------------------------------------------------------------

void THeadlessTreePeer::OnKey(TKeyEvent& event) {
  if (event.Action == TKeyAction::Down) {
    StopTimer(TreeEditTimer);
    event.Handled = KeyDown(event);
  } else if (event.Action == TKeyAction::Char && event.Char >= u' ' &&
             !event.Shift.Contains(ssCtrl) && !event.Shift.Contains(ssAlt)) {
    event.Handled = true;
    TypeChar(event.Char);
  }
}

bool THeadlessTreePeer::KeyDown(const TKeyEvent& event) {
  if (event.Shift.Contains(ssAlt) || event.Shift.Contains(ssCtrl)) return false;
  TTreeNode* const selected = fView.GetSelected();
  switch (event.Key) {
    case vkLeft:
    case vkRight:
      return GoLeftOrRight(event.Key == vkLeft);
    case vkAdd:
    case vkSubtract:
      if (selected && selected->GetExpanded() != (event.Key == vkAdd))
        Toggle(selected, event.Key == vkAdd);
      return true;
    case vkMultiply:
      if (selected) selected->Expand(true);
      return true;
    default:
      break;
  }
  TTreeNode* const target = GetKeyTarget(event.Key);
  if (target) Select(target);
  return target != nullptr;
}

bool THeadlessTreePeer::GoLeftOrRight(bool left) {
  TTreeNode* const node = fView.GetSelected();
  if (!node) return true;
  if (left) {
    if (node->GetExpanded() && node->GetFirstChild())
      Toggle(node, false);
    else if (node->GetParent())
      Select(node->GetParent());
  } else if (!node->GetExpanded()) {
    Toggle(node, true);
  } else if (node->GetFirstChild()) {
    Select(node->GetFirstChild());
  }
  return true;
}

// The node that an arrow or page key leads to; nil for other keys and for an empty tree.
TTreeNode* THeadlessTreePeer::GetKeyTarget(std::uint16_t key) const {
  const int last = static_cast<int>(Rows().size()) - 1;
  if (last < 0) return nullptr;
  const int from = RowOf(fView.GetSelected());
  const int page = std::max(1, GetVisibleRowCount() - 1);
  int target = from;
  switch (key) {
    case vkUp:
      target = from - 1;
      break;
    case vkDown:
      target = from + 1;
      break;
    case vkPrior:
      target = from - page;
      break;
    case vkNext:
      target = from + page;
      break;
    case vkHome:
      target = 0;
      break;
    case vkEnd:
      target = last;
      break;
    default:
      return nullptr;
  }
  return Rows()[static_cast<std::size_t>(std::clamp(target, 0, last))];
}

// One letter again and again goes from node to node, a longer text stays where it fits.
void THeadlessTreePeer::TypeChar(char16_t character) {
  const std::uint64_t now = Api().GetTickCount64();
  if (now - fSearchTicks > TreeSearchPause) fSearch.clear();
  fSearchTicks = now;
  fSearch += character;
  const bool oneLetter = fSearch.find_first_not_of(fSearch.front()) == TString::npos;
  const TString wanted = oneLetter ? fSearch.substr(0, 1) : fSearch;
  const int count = static_cast<int>(Rows().size());
  const int from = std::max(0, RowOf(fView.GetSelected()));
  const TLifeGuard guard = Guard();
  for (int step = oneLetter ? 1 : 0; step < count + (oneLetter ? 1 : 0); ++step) {
    TTreeNode* const node = Rows()[static_cast<std::size_t>((from + step) % count)];
    const TTreeNodeWatch watch(fView, node);
    const TString text = AskText(node);
    if (!watch.Exists() || static_cast<int>(Rows().size()) != count) return;
    if (!SameText(TStringView(text).substr(0, wanted.size()), wanted)) continue;
    Select(node);
    return;
  }
}

}  // namespace oak
