#include "oak/framework/win32/ListPeer.h"

#include <algorithm>
#include <utility>

#include "oak/framework/ImageList.h"
#include "oak/framework/win32/PeerScopes.h"
#include "oak/framework/win32/Peers.h"
#include "oak/framework/win32/System.h"

namespace oak {
namespace {

constexpr DWORD ChangingListStyles = LVS_TYPEMASK | LVS_EDITLABELS | LVS_SINGLESEL |
                                     LVS_SHOWSELALWAYS | LVS_NOCOLUMNHEADER | LVS_NOSORTHEADER |
                                     LVS_AUTOARRANGE;

DWORD StyleOfView(TViewStyle style) {
  switch (style) {
    case vsSmallIcon:
      return LVS_SMALLICON;
    case vsList:
      return LVS_LIST;
    case vsReport:
      return LVS_REPORT;
    default:
      return LVS_ICON;
  }
}

int RectCodeOf(TDisplayCode code) {
  switch (code) {
    case drIcon:
      return LVIR_ICON;
    case drLabel:
      return LVIR_LABEL;
    case drSelectBounds:
      return LVIR_SELECTBOUNDS;
    default:
      return LVIR_BOUNDS;
  }
}

THitTests HitsOf(UINT flags) {
  THitTests hits;
  if (flags & LVHT_NOWHERE) hits.Include(htNowhere);
  if (flags & LVHT_ONITEMICON) hits.Include(htOnIcon);
  if (flags & LVHT_ONITEMLABEL) hits.Include(htOnLabel);
  // The value is that of "above" outside the client area.
  if ((flags & LVHT_ONITEMSTATEICON) && !(flags & (LVHT_BELOW | LVHT_TORIGHT | LVHT_TOLEFT)))
    hits.Include(htOnStateIcon);
  if (flags & LVHT_BELOW) hits.Include(htBelow);
  if (flags & LVHT_TOLEFT) hits.Include(htToLeft);
  if (flags & LVHT_TORIGHT) hits.Include(htToRight);
  return hits;
}

}  // namespace

TListPeer::TListPeer(TCustomListView& view) : TWindowPeer(view), fView(view) {}

void TListPeer::Create() {
  TWindowParams params = MakeParams();
  params.ClassName = WC_LISTVIEWW;
  if (params.Style & WS_BORDER) {
    params.Style &= ~static_cast<DWORD>(WS_BORDER);
    params.ExStyle |= WS_EX_CLIENTEDGE;
  }
  params.Style |= LVS_OWNERDATA | LVS_SHAREIMAGELISTS | StyleBits();
  params.Text.clear();
  CreateHandle(params);
}

DWORD TListPeer::StyleBits() const {
  DWORD style = StyleOfView(fView.GetViewStyle());
  if (!fView.GetReadOnly()) style |= LVS_EDITLABELS;
  if (!fView.GetMultiSelect()) style |= LVS_SINGLESEL;
  if (!fView.GetHideSelection()) style |= LVS_SHOWSELALWAYS;
  if (!fView.GetShowColumnHeaders()) style |= LVS_NOCOLUMNHEADER;
  if (!fView.GetColumnClick()) style |= LVS_NOSORTHEADER;
  if (fView.GetAutoArrange()) style |= LVS_AUTOARRANGE;
  return style;
}

DWORD TListPeer::ExtendedStyleBits() const {
  DWORD style = LVS_EX_DOUBLEBUFFER;
  if (fView.GetRowSelect()) style |= LVS_EX_FULLROWSELECT;
  if (fView.GetGridLines()) style |= LVS_EX_GRIDLINES;
  if (fView.GetFullDrag()) style |= LVS_EX_HEADERDRAGDROP;
  if (fView.GetHotTrack()) style |= LVS_EX_TRACKSELECT;
  if (HasOwnChecks()) style |= LVS_EX_CHECKBOXES;
  return style;
}

TListPeer::~TListPeer() {
  if (GetHandle() && fChecks) Send(LVM_SETIMAGELIST, LVSIL_STATE, 0);
  if (fChecks) ::ImageList_Destroy(fChecks);
}

// Lists of pictures are shared with the native list; so it leaves its check boxes to us as well.
void TListPeer::PushExtendedStyle() {
  Send(LVM_SETEXTENDEDLISTVIEWSTYLE, 0, static_cast<LPARAM>(ExtendedStyleBits()));
  if (HasOwnChecks() == (fChecks != nullptr)) return;
  if (fChecks)
    ::ImageList_Destroy(std::exchange(fChecks, nullptr));
  else
    fChecks = reinterpret_cast<HIMAGELIST>(Send(LVM_GETIMAGELIST, LVSIL_STATE, 0));
}

void TListPeer::Initialize() {
  Send(LVM_SETCALLBACKMASK, LVIS_CUT | LVIS_DROPHILITED | LVIS_OVERLAYMASK | LVIS_STATEIMAGEMASK,
       0);
  PushExtendedStyle();
  AttachInner(GetHeaderHandle());
  ColorsChanged();
}

LPCWSTR TListPeer::GetThemeName(bool dark) const { return dark ? L"DarkMode_Explorer" : nullptr; }

void TListPeer::ColorsChanged() {
  TWindowPeer::ColorsChanged();
  // Rows leave the background to the window, which may have a picture.
  Send(LVM_SETBKCOLOR, 0, static_cast<LPARAM>(GetBackColor()));
  Send(LVM_SETTEXTBKCOLOR, 0, static_cast<LPARAM>(CLR_NONE));
  Send(LVM_SETTEXTCOLOR, 0, static_cast<LPARAM>(GetTextColor()));
}

void TListPeer::SetViewStyle() {
  EndEdit(true);
  ChangeStyle(ChangingListStyles, StyleBits());
  PushExtendedStyle();
  AttachInner(GetHeaderHandle());  // made with the first vsReport
  Invalidate(nullptr);
}

void TListPeer::ImagesChanged(TListImages which) {
  const TImageList* images = nullptr;
  WPARAM kind = LVSIL_STATE;
  if (which == TListImages::Large) {
    images = fView.GetLargeImages();
    kind = LVSIL_NORMAL;
  } else if (which == TListImages::Small) {
    images = fView.GetSmallImages();
    kind = LVSIL_SMALL;
  } else {
    images = fView.GetStateImages();
    PushExtendedStyle();
    if (!images && HasOwnChecks()) return;  // the native list has just made its own
  }
  Send(LVM_SETIMAGELIST, kind, reinterpret_cast<LPARAM>(images ? images->GetHandle() : nullptr));
  Invalidate(nullptr);
}

void TListPeer::SetIconSpacing(int width, int height) {
  Send(LVM_SETICONSPACING, 0, width < 0 ? -1 : MAKELPARAM(width, height));
}

void TListPeer::SetDefaultColumnWidth(int width) {
  if (fView.GetViewStyle() == vsList && width >= 0) Send(LVM_SETCOLUMNWIDTH, 0, width);
}

void TListPeer::Arrange() { Send(LVM_ARRANGE, LVA_DEFAULT, 0); }

// --- rows ---------------------------------------------------------------------------------------

// The native list does not survive the loss of rows in the middle of a notification of its own:
// they go when the window's procedure returns, and have no content until then.
void TListPeer::PushCount(bool keepView) {
  const auto shown = static_cast<int>(::SendMessageW(GetHandle(), LVM_GETITEMCOUNT, 0, 0));
  fCountDue = fNotifications > 0 && fView.Items().GetCount() < shown;
  if (fCountDue) return;
  const TPeerFlag pushing(fPushing, *this);
  const LPARAM flags = keepView ? LVSICF_NOINVALIDATEALL | LVSICF_NOSCROLL : LVSICF_NOSCROLL;
  Send(LVM_SETITEMCOUNT, static_cast<WPARAM>(fView.Items().GetCount()), flags);
}

void TListPeer::PushDueCount() {
  PushCount(false);
  PushAllStates();
  Invalidate(nullptr);
}

void TListPeer::ItemsInserted(int index, int count) {
  const bool atEnd = index + count >= fView.Items().GetCount();
  PushCount(atEnd);
  // The native list marks places, the model rows: those behind have moved.
  if (!atEnd || fView.GetSelCount() > 0) PushStates(index, fView.Items().GetCount() - 1);
}

void TListPeer::ItemsDeleted(int index, int) {
  PushCount(false);
  PushStates(index, fView.Items().GetCount() - 1);
}

void TListPeer::ItemsReset() {
  PushCount(false);
  PushAllStates();
  Invalidate(nullptr);
}

void TListPeer::ItemsChanged(int first, int last) {
  constexpr int many = 200;  // more than fit a window; the list invalidates each by itself
  if (last - first >= many) return Invalidate(nullptr);
  Send(LVM_REDRAWITEMS, static_cast<WPARAM>(first), last);
}

void TListPeer::ItemStatesChanged(int first, int last) {
  PushStates(first, last);
  ItemsChanged(first, last);
}

// --- selection ----------------------------------------------------------------------------------

void TListPeer::PushState(int index, UINT state, UINT mask) {
  LVITEMW item{};
  item.state = state;
  item.stateMask = mask;
  Send(LVM_SETITEMSTATE, static_cast<WPARAM>(index), reinterpret_cast<LPARAM>(&item));
}

int TListPeer::NextWithState(int index, UINT state) const {
  return static_cast<int>(::SendMessageW(GetHandle(), LVM_GETNEXTITEM, static_cast<WPARAM>(index),
                                         static_cast<LPARAM>(state)));
}

UINT TListPeer::ShownState(int index, UINT mask) const {
  return static_cast<UINT>(
      ::SendMessageW(GetHandle(), LVM_GETITEMSTATE, static_cast<WPARAM>(index), mask));
}

void TListPeer::PushStates(int first, int last) {
  constexpr int few = 8;
  if (first == 0 && last + 1 >= fView.Items().GetCount()) return PushAllStates();
  const TPeerFlag pushing(fPushing, *this);
  const auto wanted = [this](int index) {
    const TListItem* const item = fView.Items().GetItem(index);
    return item && item->GetSelected() ? UINT{LVIS_SELECTED} : 0;
  };
  // The search for the next selected row may be long, many single questions are too.
  const bool search = last - first >= few;
  for (int index = search ? NextWithState(first - 1, LVNI_SELECTED) : first;
       index >= 0 && index <= last;
       index = search ? NextWithState(index, LVNI_SELECTED) : index + 1)
    if (!wanted(index) && ShownState(index, LVIS_SELECTED)) PushState(index, 0, LVIS_SELECTED);
  for (int index = first; index <= last && fView.GetSelCount() > 0; ++index)
    if (wanted(index) && !ShownState(index, LVIS_SELECTED))
      PushState(index, LVIS_SELECTED, LVIS_SELECTED);
  PushFocus();
}

// All rows at once first, then those that differ: a hundred thousand selected rows are one message.
void TListPeer::PushAllStates() {
  const TPeerFlag pushing(fPushing, *this);
  const int count = fView.Items().GetCount();
  const bool most = fView.GetSelCount() > count / 2;
  PausePainting();  // each changed row would ask for its paint
  PushState(-1, most ? LVIS_SELECTED : 0, LVIS_SELECTED);
  int others = most ? count - fView.GetSelCount() : fView.GetSelCount();
  for (int index = 0; index < count && others > 0; ++index) {
    if (fView.Items().GetItem(index)->GetSelected() == most) continue;
    PushState(index, most ? 0 : LVIS_SELECTED, LVIS_SELECTED);
    --others;
  }
  ResumePainting();
  PushFocus();
}

void TListPeer::PushFocus() {
  const TListItem* const item = fView.GetItemFocused();
  if (!item && !fRowFocused) return;
  fRowFocused = item != nullptr;
  const int index = item ? item->GetIndex() : NextWithState(-1, LVNI_FOCUSED);
  const UINT wanted = item ? LVIS_FOCUSED : 0;
  if (index >= 0 && ShownState(index, LVIS_FOCUSED) != wanted)
    PushState(index, wanted, LVIS_FOCUSED);
}

// --- geometry -----------------------------------------------------------------------------------

TRect TListPeer::GetItemRect(int index, TDisplayCode code) const {
  RECT rect{};
  rect.left = RectCodeOf(code);
  if (!::SendMessageW(GetHandle(), LVM_GETITEMRECT, static_cast<WPARAM>(index),
                      reinterpret_cast<LPARAM>(&rect)))
    return {};
  return TRect(rect);
}

TRect TListPeer::GetSubItemRect(int index, int column) const {
  const int native = NativeColumn(column);
  if (native < 0) return {};
  RECT rect{};
  rect.top = native;
  rect.left = native == 0 ? LVIR_LABEL : LVIR_BOUNDS;  // the bounds of column 0 are the whole row
  if (!::SendMessageW(GetHandle(), LVM_GETSUBITEMRECT, static_cast<WPARAM>(index),
                      reinterpret_cast<LPARAM>(&rect)))
    return {};
  return TRect(rect);
}

TListHitTest TListPeer::HitTest(TPoint point) const {
  LVHITTESTINFO info{};
  info.pt = point;
  TListHitTest hit;
  hit.Index = static_cast<int>(
      ::SendMessageW(GetHandle(), LVM_SUBITEMHITTEST, 0, reinterpret_cast<LPARAM>(&info)));
  hit.Flags = HitsOf(info.flags);
  hit.SubItem = hit.Index < 0 ? 0 : std::max(0, ModelColumn(info.iSubItem));
  // The row's own parts are meant: the text of another cell is one of them with row select only.
  if (hit.Index >= 0 && info.iSubItem != 0 && !fView.GetRowSelect()) hit.Flags = htNowhere;
  return hit;
}

int TListPeer::GetTopIndex() const {
  return static_cast<int>(::SendMessageW(GetHandle(), LVM_GETTOPINDEX, 0, 0));
}

int TListPeer::GetVisibleRowCount() const {
  return static_cast<int>(::SendMessageW(GetHandle(), LVM_GETCOUNTPERPAGE, 0, 0));
}

void TListPeer::MakeVisible(int index, bool partialOk) {
  Send(LVM_ENSUREVISIBLE, static_cast<WPARAM>(index), partialOk);
}

void TListPeer::Scroll(int dx, int dy) { Send(LVM_SCROLL, static_cast<WPARAM>(dx), dy); }

int TListPeer::GetStringWidth(const TString& text) const {
  return static_cast<int>(
      ::SendMessageW(GetHandle(), LVM_GETSTRINGWIDTHW, 0, reinterpret_cast<LPARAM>(W(text))));
}

// --- editing ------------------------------------------------------------------------------------

bool TListPeer::BeginEdit(int index) {
  const TPeerGuard guard(*this);
  ::SetFocus(GetHandle());  // the native list edits nothing without the keyboard
  if (!guard.IsAlive()) return false;
  const LRESULT edit = Send(LVM_EDITLABELW, static_cast<WPARAM>(index), 0);
  return guard.IsAlive() && edit != 0;
}

void TListPeer::EndEdit(bool cancel) {
  const HWND edit = GetEditHandle();
  if (!edit) return;
  if (!cancel) {
    ::SendMessageW(edit, WM_KEYDOWN, VK_RETURN, 0);
    return;
  }
  // Wine's list reports the text all the same.
  const TPeerFlag cancelling(fCancelling, *this);
  Send(LVM_CANCELEDITLABEL, 0, 0);
}

HWND TListPeer::GetEditHandle() const {
  return reinterpret_cast<HWND>(::SendMessageW(GetHandle(), LVM_GETEDITCONTROL, 0, 0));
}

TString TListPeer::GetEditText() const { return win32::TextOfWindow(GetEditHandle()); }

void TListPeer::SetEditText(const TString& text) {
  if (const HWND edit = GetEditHandle()) ::SetWindowTextW(edit, W(text));
}

void TListPeer::SelectEditText(int start, int end) {
  if (const HWND edit = GetEditHandle())
    ::SendMessageW(edit, EM_SETSEL, static_cast<WPARAM>(start), end);
}

namespace win32 {

std::unique_ptr<IListViewPeer> MakeListPeer(TCustomListView& view) {
  auto peer = std::make_unique<TListPeer>(view);
  peer->Create();
  return peer;
}

}  // namespace win32

}  // namespace oak
