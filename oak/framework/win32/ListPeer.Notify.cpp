// What the system's list control asks and reports.
#include <algorithm>

#include "oak/framework/Bitmap.h"
#include "oak/framework/ImageList.h"
#include "oak/framework/win32/ImageListWin32.h"
#include "oak/framework/win32/Input.h"
#include "oak/framework/win32/ListPeer.h"
#include "oak/framework/win32/PeerScopes.h"
#include "oak/framework/win32/System.h"

namespace oak {

bool TListPeer::HandleNotify(NMHDR& notification, LRESULT& result) {
  const TPeerCount running(fNotifications, *this);
  return Notified(notification, result);
}

bool TListPeer::Notified(NMHDR& notification, LRESULT& result) {
  result = 0;
  switch (notification.code) {
    case LVN_GETDISPINFOW:
      GiveDisplayInfo(reinterpret_cast<NMLVDISPINFOW&>(notification));
      return true;
    case NM_CUSTOMDRAW:
      result = CustomDraw(reinterpret_cast<NMLVCUSTOMDRAW&>(notification));
      return true;
    case LVN_ITEMCHANGED: {
      const auto& change = reinterpret_cast<const NMLISTVIEW&>(notification);
      const int last = change.iItem < 0 ? fView.Items().GetCount() - 1 : change.iItem;
      if (change.uChanged & LVIF_STATE)
        StateReported(std::max(0, change.iItem), last, change.uOldState, change.uNewState);
      return true;
    }
    case LVN_ODSTATECHANGED: {
      const auto& change = reinterpret_cast<const NMLVODSTATECHANGE&>(notification);
      StateReported(change.iFrom, change.iTo, change.uOldState, change.uNewState);
      return true;
    }
    case LVN_COLUMNCLICK:
      fView.HandleColumnClick(ModelColumn(reinterpret_cast<NMLISTVIEW&>(notification).iSubItem));
      return true;
    case LVN_ODFINDITEMW: {
      const auto& find = reinterpret_cast<const NMLVFINDITEMW&>(notification);
      result = -1;
      if ((find.lvfi.flags & (LVFI_STRING | LVFI_PARTIAL)) && find.lvfi.psz)
        result = fView.HandleIncrementalSearch(FromW(find.lvfi.psz), find.iStart);
      return true;
    }
    case LVN_BEGINDRAG:
    case LVN_BEGINRDRAG:
      fView.HandleBeginDrag(notification.code == LVN_BEGINDRAG ? mbLeft : mbRight);
      return true;
    case LVN_BEGINLABELEDITW:
      result =
          !fView.HandleBeginEdit(reinterpret_cast<const NMLVDISPINFOW&>(notification).item.iItem);
      if (result == 0) AttachInner(GetEditHandle());
      return true;
    case LVN_ENDLABELEDITW:
      EndLabelEdit(reinterpret_cast<const NMLVDISPINFOW&>(notification));
      return true;
    case LVN_KEYDOWN:
      if (reinterpret_cast<const NMLVKEYDOWN&>(notification).wVKey == VK_SPACE && HasOwnChecks() &&
          fView.GetItemFocused())
        fView.HandleToggleCheck(fView.GetItemFocused()->GetIndex());
      return true;
    case LVN_ENDSCROLL:
      // The picture behind the rows stands still.
      if (fView.GetBackgroundBitmap()) Invalidate(nullptr);
      return true;
    case NM_CLICK:
    case NM_RCLICK:
      FinishClick(notification.code == NM_CLICK ? mbLeft : mbRight);
      return true;
    default:
      return TWindowPeer::HandleNotify(notification, result);
  }
}

// The native list may wait for the release of a button in a loop of its own, in which the message
// never gets to the window.
void TListPeer::FinishClick(TMouseButton button) {
  if (button != mbLeft || !fView.GetControlState().Contains(csLButtonDown)) return;
  POINT point{};
  ::GetCursorPos(&point);
  ::ScreenToClient(GetHandle(), &point);
  TMouseEvent event;
  event.Action = TMouseAction::Up;
  event.Button = button;
  event.Shift = win32::CurrentShift();
  event.Position = TPoint(point);
  fView.HandleMouse(event);
}

void TListPeer::StateReported(int first, int last, UINT was, UINT is) {
  if (fPushing || IsCreating() || last >= fView.Items().GetCount()) return;
  const TPeerGuard guard(*this);
  if ((is ^ was) & LVIS_FOCUSED) {
    fRowFocused = true;
    if (is & LVIS_FOCUSED) fView.HandleFocusItem(first);
    if (!guard.IsAlive() || last >= fView.Items().GetCount()) return;
  }
  if ((is ^ was) & LVIS_SELECTED) fView.HandleSelectRange(first, last, (is & LVIS_SELECTED) != 0);
}

void TListPeer::EndLabelEdit(const NMLVDISPINFOW& info) {
  std::optional<TString> text;
  if (info.item.pszText && !fCancelling) text = FromW(info.item.pszText);
  const TPeerGuard guard(*this);
  fView.HandleEndEdit(std::move(text));
  if (guard.IsAlive()) Invalidate(nullptr);
}

// --- drawing ------------------------------------------------------------------------------------

UINT TListPeer::StateOf(const TListItem& item) const {
  UINT state = 0;
  if (item.GetCut()) state |= LVIS_CUT;
  if (item.GetDropTarget()) state |= LVIS_DROPHILITED;
  if (item.GetOverlayIndex() >= 0)
    state |= INDEXTOOVERLAYMASK(static_cast<UINT>(item.GetOverlayIndex() + 1));
  if (fView.GetStateImages()) {
    // State images of the native list count from 1.
    const int image = item.GetStateIndex();
    if (image >= 0) state |= INDEXTOSTATEIMAGEMASK(static_cast<UINT>(image + 1));
  } else if (fView.GetCheckboxes()) {
    state |= INDEXTOSTATEIMAGEMASK(item.GetChecked() ? 2u : 1u);
  }
  return state;
}

void TListPeer::GiveDisplayInfo(NMLVDISPINFOW& info) {
  LVITEMW& wanted = info.item;
  const int index = wanted.iItem;
  const auto item = [&] { return fView.Items().GetItem(index); };
  const TPeerGuard guard(*this);
  if (wanted.mask & LVIF_TEXT) {
    const int column = fModelOf.empty() ? 0 : ModelColumn(wanted.iSubItem);
    TString text = column >= 0 && item() ? fView.HandleGetText(index, column) : TString();
    if (!guard.IsAlive()) return;
    TString& kept = fTexts[fNextText++ % fTexts.size()];
    kept = std::move(text);
    wanted.pszText = WBuffer(kept);
  }
  if (wanted.iSubItem != 0 || !item()) return;
  if (wanted.mask & LVIF_IMAGE) {
    const int image = fView.HandleGetImage(index);
    if (!guard.IsAlive()) return;
    wanted.iImage = image;
  }
  // The shell's lists grow as its icons and overlays are asked for.
  if (wanted.mask & (LVIF_IMAGE | LVIF_STATE))
    AddLateImages(fView.GetViewStyle() == vsIcon ? fView.GetLargeImages() : fView.GetSmallImages());
  const TListItem* row = item();
  if (!row) return;
  if (wanted.mask & LVIF_STATE) wanted.state = StateOf(*row);
  if (wanted.mask & LVIF_INDENT) wanted.iIndent = row->GetIndent();
}

LRESULT TListPeer::CustomDraw(NMLVCUSTOMDRAW& draw) {
  switch (draw.nmcd.dwDrawStage) {
    case CDDS_PREPAINT:
    case CDDS_POSTPAINT:
      return DrawControl(draw);
    case CDDS_ITEMPREPAINT:
    case CDDS_ITEMPOSTPAINT:
      return DrawItem(draw);
    case CDDS_ITEMPREPAINT | CDDS_SUBITEM:
    case CDDS_ITEMPOSTPAINT | CDDS_SUBITEM:
      return DrawSubItem(draw);
    default:
      return CDRF_DODEFAULT;
  }
}

void TListPeer::DrawBackground(TCanvas& canvas) const {
  const TBitmap* picture = fView.GetBackgroundBitmap();
  if (!picture) return;
  const TRect area = GetClientRect();
  const TSize size{picture->GetWidth(), picture->GetHeight()};
  if (!fView.IsBackgroundTiled()) {
    const TPoint percent = fView.GetBackgroundOffset();
    canvas.Draw(MulDiv(area.Width() - size.Width, percent.X, 100),
                MulDiv(area.Height() - size.Height, percent.Y, 100), *picture);
    return;
  }
  for (int y = 0; y < area.Bottom; y += std::max(1, size.Height))
    for (int x = 0; x < area.Right; x += std::max(1, size.Width)) canvas.Draw(x, y, *picture);
}

LRESULT TListPeer::DrawControl(NMLVCUSTOMDRAW& draw) {
  const bool before = draw.nmcd.dwDrawStage == CDDS_PREPAINT;
  TCanvasWin32 canvas(draw.nmcd.hdc, fView.GetCurrentPPI());
  canvas.SetFont(fView.GetFont());
  if (before) DrawBackground(canvas);
  const bool standard =
      fView.HandleCustomDraw(canvas, GetClientRect(), before ? cdPrePaint : cdPostPaint);
  if (!standard) return CDRF_SKIPDEFAULT;
  return before ? CDRF_NOTIFYITEMDRAW | CDRF_NOTIFYPOSTPAINT : CDRF_DODEFAULT;
}

TCustomDrawState TListPeer::DrawStateOf(const NMLVCUSTOMDRAW& draw) const {
  TCustomDrawState state;
  const auto index = static_cast<int>(draw.nmcd.dwItemSpec);
  const TItemStates states = fView.HandleGetStates(index);
  // The native list says "selected" of every row with the option that shows it without focus.
  if (states.Contains(isSelected)) state.Include(cdsSelected);
  if (states.Contains(isFocused) && HasFocus()) state.Include(cdsFocused);
  if (draw.nmcd.uItemState & CDIS_HOT) state.Include(cdsHot);
  if (!fView.GetEnabled()) state.Include(cdsDisabled);
  return state;
}

// Font and colours that the program has set on the canvas become those of the row.
void TListPeer::TakeLook(const TCanvas& canvas, NMLVCUSTOMDRAW& draw) {
  draw.clrText = ColorToRGB(canvas.GetFont().GetColor());
  if (canvas.GetBrush().GetStyle() == bsSolid)
    draw.clrTextBk = ColorToRGB(canvas.GetBrush().GetColor());
  fItemFont = FontHandleOf(canvas.GetFont());
}

// Wine marks no more than the text of a row whose background is left to the window.
void TListPeer::FillMark(NMLVCUSTOMDRAW& draw) const {
  if (draw.clrTextBk != CLR_NONE || !fView.GetRowSelect() || !win32::IsWine()) return;
  const TItemStates states = fView.HandleGetStates(static_cast<int>(draw.nmcd.dwItemSpec));
  if (!states.Contains(isSelected) || (fView.GetHideSelection() && !HasFocus())) return;
  draw.clrTextBk = ColorToRGB(HasFocus() ? clHighlight : clBtnFace);
  // Else the system's colours are taken, which may not be those of the style.
  if (!HasFocus()) draw.nmcd.uItemState &= ~static_cast<UINT>(CDIS_SELECTED);
}

LRESULT TListPeer::DrawItem(NMLVCUSTOMDRAW& draw) {
  const auto index = static_cast<int>(draw.nmcd.dwItemSpec);
  if (index >= fView.Items().GetCount()) return CDRF_DODEFAULT;
  const bool before = draw.nmcd.dwDrawStage == CDDS_ITEMPREPAINT;
  const TPeerGuard guard(*this);
  bool standard = true;
  {
    TCanvasWin32 canvas(draw.nmcd.hdc, fView.GetCurrentPPI());
    canvas.SetFont(fView.GetFont());
    canvas.GetBrush().SetStyle(bsClear);
    canvas.GetFont().SetColor(fView.HandleTextColor(index, GetTextColor()));
    standard = guard.IsAlive() && fView.HandleCustomDrawItem(canvas, index, DrawStateOf(draw),
                                                             before ? cdPrePaint : cdPostPaint);
    if (!guard.IsAlive()) return CDRF_SKIPDEFAULT;
    if (before) TakeLook(canvas, draw);
    if (before) FillMark(draw);
  }
  if (!standard) return CDRF_SKIPDEFAULT;
  if (!before) return CDRF_DODEFAULT;
  if (fItemFont) ::SelectObject(draw.nmcd.hdc, fItemFont->Get());
  return CDRF_NEWFONT | CDRF_NOTIFYPOSTPAINT | CDRF_NOTIFYSUBITEMDRAW;
}

LRESULT TListPeer::DrawSubItem(NMLVCUSTOMDRAW& draw) {
  const auto index = static_cast<int>(draw.nmcd.dwItemSpec);
  const int column = ModelColumn(draw.iSubItem);
  if (draw.iSubItem == 0 || column < 0 || index >= fView.Items().GetCount()) return CDRF_DODEFAULT;
  const bool before = (draw.nmcd.dwDrawStage & CDDS_ITEMPREPAINT) == CDDS_ITEMPREPAINT;
  const TPeerGuard guard(*this);
  TCanvasWin32 canvas(draw.nmcd.hdc, fView.GetCurrentPPI());
  canvas.SetFont(fView.GetFont());
  canvas.GetBrush().SetStyle(bsClear);
  const bool standard = fView.HandleCustomDrawSubItem(canvas, index, column, DrawStateOf(draw),
                                                      before ? cdPrePaint : cdPostPaint);
  if (!guard.IsAlive() || !standard) return CDRF_SKIPDEFAULT;
  if (before) FillMark(draw);
  return before ? CDRF_NOTIFYPOSTPAINT : CDRF_DODEFAULT;
}

}  // namespace oak
