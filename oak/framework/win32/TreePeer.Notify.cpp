// What the system's tree control asks and reports.
#include "oak/framework/win32/TreePeer.h"

#include <utility>

#include "oak/framework/win32/ImageListWin32.h"
#include "oak/framework/win32/Input.h"
#include "oak/framework/win32/PeerScopes.h"
#include "oak/framework/win32/System.h"

namespace oak {

bool TTreePeer::HandleNotify(NMHDR& notification, LRESULT& result) {
  const TPeerCount running(fNotifications, *this);
  return Notified(notification, result);
}

bool TTreePeer::Notified(NMHDR& notification, LRESULT& result) {
  result = 0;
  auto& change = reinterpret_cast<NMTREEVIEWW&>(notification);
  auto& info = reinterpret_cast<NMTVDISPINFOW&>(notification);
  switch (notification.code) {
    case TVN_GETDISPINFOW:
      GiveDisplayInfo(info);
      return true;
    case NM_CUSTOMDRAW:
      result = CustomDraw(reinterpret_cast<NMTVCUSTOMDRAW&>(notification));
      return true;
    case TVN_ITEMEXPANDINGW:
      result = HandleExpanding(change) ? FALSE : TRUE;
      return true;
    case TVN_ITEMEXPANDEDW:
      HandleExpanded(change);
      return true;
    case TVN_SELCHANGINGW:
      if (!fPushing) result = !fView.HandleSelecting(NodeOf(change.itemNew.hItem));
      return true;
    case TVN_SELCHANGEDW:
      if (!fPushing) fView.HandleSelected(NodeOf(change.itemNew.hItem));
      return true;
    case TVN_BEGINDRAGW:
    case TVN_BEGINRDRAGW:
      if (TTreeNode* node = NodeOf(change.itemNew.hItem))
        fView.HandleBeginDrag(node, notification.code == TVN_BEGINDRAGW ? mbLeft : mbRight);
      return true;
    case TVN_BEGINLABELEDITW: {
      TTreeNode* node = NodeOf(info.item.hItem);
      result = !node || !fView.HandleBeginEdit(node);
      if (result == 0) AttachInner(GetEditHandle());
      return true;
    }
    case TVN_ENDLABELEDITW:
      EndLabelEdit(info);
      return true;
    case NM_CLICK:
      FinishClick();
      return true;
    case NM_RCLICK:
      // The native tree has kept the release of the button; Wine's asks for no menu then.
      ::SendMessageW(GetHandle(), WM_CONTEXTMENU, reinterpret_cast<WPARAM>(GetHandle()),
                     static_cast<LPARAM>(::GetMessagePos()));
      result = TRUE;
      return true;
    default:
      return TWindowPeer::HandleNotify(notification, result);
  }
}

LRESULT TTreePeer::WindowProc(UINT message, WPARAM wParam, LPARAM lParam) {
  const TPeerGuard guard(*this);
  LRESULT result = 0;
  {
    const TPeerCount running(fProcedures, *this);
    if (message == WM_RBUTTONDOWN && fView.GetRightClickSelect())
      SelectForMenu({static_cast<short>(LOWORD(lParam)), static_cast<short>(HIWORD(lParam))});
    if (guard.IsAlive())
      result = message == WM_SYSKEYDOWN ? SystemKey(wParam, lParam)
                                        : TWindowPeer::WindowProc(message, wParam, lParam);
  }
  if (guard.IsAlive() && fProcedures == 0 && !fDoomed.empty()) DeleteDoomed();
  return result;
}

// Keys with Alt and F10 are those of menus and of the program. Wine's tree would take them for its
// own: it goes up with Alt and Up, and asks for no menu with Shift and F10.
LRESULT TTreePeer::SystemKey(WPARAM key, LPARAM lParam) {
  const HWND window = GetHandle();
  return ReportKey(WM_SYSKEYDOWN, key) ? 0 : ::DefWindowProcW(window, WM_SYSKEYDOWN, key, lParam);
}

LRESULT TTreePeer::InnerProc(HWND window, UINT message, WPARAM wParam, LPARAM lParam) {
  return IsInputOfPart(message) ? DefaultProcOf(window, message, wParam, lParam)
                                : TWindowPeer::InnerProc(window, message, wParam, lParam);
}

// The right button selects at once, so that the menu that follows is that of the node.
void TTreePeer::SelectForMenu(TPoint point) {
  const TTreeHitTest hit = HitTest(point);
  if (hit.Node && (hit.Flags.Contains(htOnLabel) || hit.Flags.Contains(htOnIcon)))
    Send(TVM_SELECTITEM, TVGN_CARET, reinterpret_cast<LPARAM>(EntryOf(hit.Node)));
}

// The native tree waits for the release of a button in a loop of its own, in which the message may
// never get to the window.
void TTreePeer::FinishClick() {
  if (!fView.GetControlState().Contains(csLButtonDown)) return;
  POINT point{};
  ::GetCursorPos(&point);
  ::ScreenToClient(GetHandle(), &point);
  TMouseEvent event;
  event.Action = TMouseAction::Up;
  event.Shift = win32::CurrentShift();
  event.Position = TPoint(point);
  fView.HandleMouse(event);
}

// --- expansion ----------------------------------------------------------------------------------

bool TTreePeer::HandleExpanding(const NMTREEVIEWW& change) {
  if (fPushing) return true;
  TTreeNode* node = NodeOf(change.itemNew.hItem);
  if (!node) return false;
  if ((change.action & TVE_EXPAND) == 0) {
    const TPeerGuard guard(*this);
    const bool allowed = fView.HandleCanCollapse(node);
    if (guard.IsAlive()) fKeptOpen = allowed ? nullptr : change.itemNew.hItem;
    return allowed;
  }
  const TPeerGuard guard(*this);
  const TTreeNodeWatch watch(fView, node);
  if (node->GetExpanded()) {
    // It waits for its children: the native one is still closed.
    if (fView.HandleCanCollapse(node) && guard.IsAlive()) fView.HandleCollapsed(node);
    return false;
  }
  if (!fView.HandleCanExpand(node) || !guard.IsAlive() || !watch.Exists()) return false;
  if (node->GetFirstChild()) return true;
  // Children are on their way: the node counts as open, the native one opens with the first.
  fView.HandleExpanded(node);
  return false;
}

void TTreePeer::HandleExpanded(const NMTREEVIEWW& change) {
  TTreeNode* node = fPushing ? nullptr : NodeOf(change.itemNew.hItem);
  if (!node) return;
  if (change.action & TVE_EXPAND)
    fView.HandleExpanded(node);
  else if (change.itemNew.hItem == std::exchange(fKeptOpen, nullptr))
    PushExpansion(node);  // Wine's tree closes what it was asked to keep open
  else
    fView.HandleCollapsed(node);
}

// --- texts, images and editing ------------------------------------------------------------------

void TTreePeer::GiveDisplayInfo(NMTVDISPINFOW& info) {
  TTreeNode* node = reinterpret_cast<TTreeNode*>(info.item.lParam);
  if (!node) return;
  const TPeerGuard guard(*this);
  const TTreeNodeWatch watch(fView, node);
  if (info.item.mask & TVIF_TEXT) {
    TString text = fView.HandleGetText(node);
    if (!guard.IsAlive()) return;
    TString& kept = fTexts[fNextText++ % fTexts.size()];
    kept = std::move(text);
    info.item.pszText = WBuffer(kept);
  }
  if ((info.item.mask & TVIF_IMAGE) && watch.Exists())
    info.item.iImage = fView.HandleGetImage(node, false);
  if ((info.item.mask & TVIF_SELECTEDIMAGE) && watch.Exists())
    info.item.iSelectedImage = fView.HandleGetImage(node, true);
  // The shell's lists grow as its icons are asked for.
  if ((info.item.mask & (TVIF_IMAGE | TVIF_SELECTEDIMAGE)) && guard.IsAlive())
    AddLateImages(fView.GetImages());
}

void TTreePeer::EndLabelEdit(const NMTVDISPINFOW& info) {
  std::optional<TString> text;
  if (info.item.pszText) text = FromW(info.item.pszText);
  const TPeerGuard guard(*this);
  fView.HandleEndEdit(std::move(text));
  if (guard.IsAlive()) Invalidate(nullptr);
}

// --- drawing ------------------------------------------------------------------------------------

LRESULT TTreePeer::CustomDraw(NMTVCUSTOMDRAW& draw) {
  switch (draw.nmcd.dwDrawStage) {
    case CDDS_PREPAINT:
      return CDRF_NOTIFYITEMDRAW;
    case CDDS_ITEMPREPAINT:
    case CDDS_ITEMPOSTPAINT:
      return DrawNode(draw);
    default:
      return CDRF_DODEFAULT;
  }
}

LRESULT TTreePeer::DrawNode(NMTVCUSTOMDRAW& draw) {
  TTreeNode* node = reinterpret_cast<TTreeNode*>(draw.nmcd.lItemlParam);
  if (!node) return CDRF_DODEFAULT;
  const bool before = draw.nmcd.dwDrawStage == CDDS_ITEMPREPAINT;
  TCustomDrawState state;
  if (node->GetSelected()) state.Include(cdsSelected);
  if (draw.nmcd.uItemState & CDIS_FOCUS) state.Include(cdsFocused);
  if (draw.nmcd.uItemState & CDIS_HOT) state.Include(cdsHot);
  if (!node->GetEnabled() || !fView.GetEnabled()) state.Include(cdsDisabled);
  const TPeerGuard guard(*this);
  bool standard = true;
  {
    TCanvasWin32 canvas(draw.nmcd.hdc, fView.GetCurrentPPI());
    canvas.SetFont(fView.GetFont());
    const TColor usual = node->GetEnabled() ? GetTextColor() : ColorToRGB(clGrayText);
    const bool marked = (draw.nmcd.uItemState & CDIS_SELECTED) != 0 || node->GetDropTarget();
    canvas.GetFont().SetColor(fView.HandleTextColor(node, usual));
    canvas.GetBrush().SetStyle(bsClear);
    standard = guard.IsAlive() &&
               fView.HandleCustomDrawItem(canvas, node, state, before ? cdPrePaint : cdPostPaint);
    if (!guard.IsAlive()) return CDRF_SKIPDEFAULT;
    if (before && !marked) draw.clrText = ColorToRGB(canvas.GetFont().GetColor());
    // Without a theme the mark of a tree without the keyboard is as bright as the text on it.
    if (before && marked && !HasFocus() && !node->GetDropTarget() && !win32::HasDarkThemes()) {
      draw.clrText = GetTextColor();
      draw.clrTextBk = ColorToRGB(clBtnFace);
    }
    if (before && canvas.GetBrush().GetStyle() == bsSolid)
      draw.clrTextBk = ColorToRGB(canvas.GetBrush().GetColor());
    fNodeFont = FontHandleOf(canvas.GetFont());
  }
  if (!standard) return CDRF_SKIPDEFAULT;
  if (!before) return CDRF_DODEFAULT;
  if (fNodeFont) ::SelectObject(draw.nmcd.hdc, fNodeFont->Get());
  return CDRF_NEWFONT | CDRF_NOTIFYPOSTPAINT;
}

}  // namespace oak
