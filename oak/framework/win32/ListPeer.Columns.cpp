// Columns and header of the system's list control.
#include <algorithm>

#include "oak/framework/win32/ListPeer.h"
#include "oak/framework/win32/PeerScopes.h"

namespace oak {
namespace {

/// Brings a dropped column to the control after the header is done with its drag.
constexpr UINT ColumnDroppedMessage = 0x2FF1;

int FormatOf(TAlignment alignment) {
  if (alignment == taRightJustify) return LVCFMT_RIGHT;
  return alignment == taCenter ? LVCFMT_CENTER : LVCFMT_LEFT;
}

TPoint CursorIn(HWND window) {
  POINT point{};
  ::GetCursorPos(&point);
  ::ScreenToClient(window, &point);
  return TPoint(point);
}

}  // namespace

// --- numbers ------------------------------------------------------------------------------------

void TListPeer::MapColumns() {
  const int count = fView.Columns().GetCount();
  const int label = count > 0 ? fView.Columns().GetLabelColumn() : 0;
  fNativeOf.assign(static_cast<std::size_t>(count), 0);
  fModelOf.clear();
  if (count > 0) fModelOf.push_back(label);
  for (int column = 0; column < count; ++column) {
    if (column == label) continue;
    fNativeOf[static_cast<std::size_t>(column)] = static_cast<int>(fModelOf.size());
    fModelOf.push_back(column);
  }
}

int TListPeer::NativeColumn(int column) const {
  return column >= 0 && column < static_cast<int>(fNativeOf.size())
             ? fNativeOf[static_cast<std::size_t>(column)]
             : -1;
}

int TListPeer::ModelColumn(int native) const {
  return native >= 0 && native < static_cast<int>(fModelOf.size())
             ? fModelOf[static_cast<std::size_t>(native)]
             : -1;
}

// --- pushing ------------------------------------------------------------------------------------

void TListPeer::ColumnsChanged() {
  const TPeerFlag pushing(fPushing, *this);
  MapColumns();
  const int count = fView.Columns().GetCount();
  int there = 0;
  LVCOLUMNW probe{};
  probe.mask = LVCF_WIDTH;
  while (Send(LVM_GETCOLUMNW, static_cast<WPARAM>(there), reinterpret_cast<LPARAM>(&probe)))
    ++there;
  for (; there > count; --there) Send(LVM_DELETECOLUMN, static_cast<WPARAM>(there - 1), 0);
  for (; there < count; ++there) {
    LVCOLUMNW column{};
    column.mask = LVCF_SUBITEM;
    column.iSubItem = there;
    Send(LVM_INSERTCOLUMNW, static_cast<WPARAM>(there), reinterpret_cast<LPARAM>(&column));
  }
  AttachInner(GetHeaderHandle());
  for (int column = 0; column < count; ++column) PushColumn(column);
  PushColumnOrder();
  Invalidate(nullptr);
}

void TListPeer::PushColumn(int index) {
  const TListColumn& column = *fView.Columns()[index];
  TString caption = column.GetCaption();
  LVCOLUMNW native{};
  native.mask = LVCF_TEXT | LVCF_WIDTH | LVCF_FMT;
  native.fmt = FormatOf(column.GetAlignment());
  native.cx = std::max(0, column.GetWidth());
  native.pszText = WBuffer(caption);
  if (column.GetImageIndex() >= 0) {
    native.mask |= LVCF_IMAGE;
    native.fmt |= LVCFMT_IMAGE;
    native.iImage = column.GetImageIndex();
  }
  Send(LVM_SETCOLUMNW, static_cast<WPARAM>(NativeColumn(index)), reinterpret_cast<LPARAM>(&native));
  PushSortMark(index);
}

void TListPeer::PushSortMark(int column) {
  const HWND header = GetHeaderHandle();
  HDITEMW item{};
  item.mask = HDI_FORMAT;
  const auto native = static_cast<WPARAM>(NativeColumn(column));
  if (!header || !::SendMessageW(header, HDM_GETITEMW, native, reinterpret_cast<LPARAM>(&item)))
    return;
  item.fmt &= ~(HDF_SORTUP | HDF_SORTDOWN);
  const TListSortMark mark = fView.Columns()[column]->GetSortMark();
  if (mark == TListSortMark::Up) item.fmt |= HDF_SORTUP;
  if (mark == TListSortMark::Down) item.fmt |= HDF_SORTDOWN;
  ::SendMessageW(header, HDM_SETITEMW, native, reinterpret_cast<LPARAM>(&item));
}

// The model's columns stand in the order of the screen.
void TListPeer::PushColumnOrder() {
  if (fNativeOf.empty()) return;
  std::vector<int> order = fNativeOf;
  Send(LVM_SETCOLUMNORDERARRAY, order.size(), reinterpret_cast<LPARAM>(order.data()));
}

void TListPeer::ColumnWidthChanged(int column) {
  const TPeerFlag pushing(fPushing, *this);
  const int native = NativeColumn(column);
  if (native < 0) return ColumnsChanged();
  Send(LVM_SETCOLUMNWIDTH, static_cast<WPARAM>(native),
       MAKELPARAM(std::max(0, fView.Columns()[column]->GetWidth()), 0));
}

// --- the header ---------------------------------------------------------------------------------

HWND TListPeer::GetHeaderHandle() const {
  return reinterpret_cast<HWND>(::SendMessageW(GetHandle(), LVM_GETHEADER, 0, 0));
}

TRect TListPeer::GetHeaderRect() const {
  const HWND header = GetHeaderHandle();
  if (!header || fView.GetViewStyle() != vsReport || !fView.GetShowColumnHeaders()) return {};
  RECT rect{};
  ::GetWindowRect(header, &rect);
  ::MapWindowPoints(nullptr, GetHandle(), reinterpret_cast<POINT*>(&rect), 2);
  return TRect(rect);
}

int TListPeer::HeaderHitTest(TPoint point) const {
  if (!GetHeaderRect().Contains(point)) return -1;
  const HWND header = GetHeaderHandle();
  HDHITTESTINFO info{};
  info.pt = point;
  ::MapWindowPoints(GetHandle(), header, &info.pt, 1);
  const auto native =
      static_cast<int>(::SendMessageW(header, HDM_HITTEST, 0, reinterpret_cast<LPARAM>(&info)));
  return ModelColumn(native);
}

void TListPeer::HandleHeaderRightClick() {
  const HWND header = GetHeaderHandle();
  const TPoint point = CursorIn(header);
  HDHITTESTINFO info{};
  info.pt = point;
  const auto native =
      static_cast<int>(::SendMessageW(header, HDM_HITTEST, 0, reinterpret_cast<LPARAM>(&info)));
  fView.HandleColumnRightClick(ModelColumn(native), point);
}

bool TListPeer::HandleInnerNotify(NMHDR& notification, LRESULT& result) {
  if (notification.hwndFrom != GetHeaderHandle() || fPushing) return false;
  if (notification.code == NM_RCLICK) {
    HandleHeaderRightClick();
    result = 1;
    return true;
  }
  if (notification.code <= HDN_FIRST && notification.code >= HDN_LAST)
    return HandleHeader(reinterpret_cast<NMHEADERW&>(notification), result);
  return false;
}

bool TListPeer::HandleHeader(NMHEADERW& header, LRESULT& result) {
  const int column = ModelColumn(header.iItem);
  const TPeerGuard guard(*this);
  switch (header.hdr.code) {
    case HDN_ITEMCHANGEDW:
    case HDN_ENDTRACKW:
      if (column < 0 || !header.pitem || !(header.pitem->mask & HDI_WIDTH)) return false;
      fView.HandleColumnWidth(column, header.pitem->cxy, header.hdr.code == HDN_ENDTRACKW);
      if (!guard.IsAlive()) return true;
      // The model keeps the width within its limits.
      if (column < fView.Columns().GetCount() &&
          fView.Columns()[column]->GetWidth() != header.pitem->cxy)
        ColumnWidthChanged(column);
      return false;
    case HDN_DIVIDERDBLCLICKW:
      if (column < 0) return false;
      fView.Columns()[column]->SetWidth(TListColumn::FitTexts);
      result = 0;
      return true;
    case HDN_ENDDRAG: {
      // The model moves the column and tells the header: both stay in one order.
      result = TRUE;
      const int to = header.pitem ? header.pitem->iOrder : -1;
      if (column < 0 || to < 0 || to == column) return true;
      const int x = CursorIn(header.hdr.hwndFrom).X;
      if (fView.HandleColumnDragging(column, to, x) && guard.IsAlive())
        ::PostMessageW(GetHandle(), ColumnDroppedMessage, static_cast<WPARAM>(column), to);
      return true;
    }
    default:
      return false;
  }
}

LRESULT TListPeer::InnerProc(HWND window, UINT message, WPARAM wParam, LPARAM lParam) {
  return IsInputOfPart(message) ? DefaultProcOf(window, message, wParam, lParam)
                                : TWindowPeer::InnerProc(window, message, wParam, lParam);
}

LRESULT TListPeer::WindowProc(UINT message, WPARAM wParam, LPARAM lParam) {
  const TPeerGuard guard(*this);
  LRESULT result = 0;
  {
    const TPeerCount running(fProcedures, *this);
    result = ListProc(message, wParam, lParam);
  }
  if (guard.IsAlive() && fProcedures == 0 && fCountDue) PushDueCount();
  return result;
}

LRESULT TListPeer::ListProc(UINT message, WPARAM wParam, LPARAM lParam) {
  if (message == ColumnDroppedMessage) {
    const int from = static_cast<int>(wParam);
    const int to = static_cast<int>(lParam);
    if (std::max(from, to) < fView.Columns().GetCount()) fView.HandleColumnDragged(from, to);
    return 0;
  }
  if (message == WM_KEYDOWN && wParam == VK_ADD && ::GetKeyState(VK_CONTROL) < 0) {
    // The native list would show hidden columns.
    if (!ReportKey(message, wParam)) fView.SizeColumnsToFit();
    return 0;
  }
  if ((message == WM_LBUTTONDOWN || message == WM_LBUTTONDBLCLK) && HasOwnChecks()) {
    const TListHitTest hit =
        HitTest({static_cast<short>(LOWORD(lParam)), static_cast<short>(HIWORD(lParam))});
    if (hit.Flags.Contains(htOnStateIcon) && hit.Index >= 0) {
      // The native list keeps no ticks: it must not change what it draws by itself.
      const TPeerGuard guard(*this);
      ::SetFocus(GetHandle());
      if (guard.IsAlive() && !ReportMouse(message, wParam, lParam))
        fView.HandleToggleCheck(hit.Index);
      return 0;
    }
  }
  return TWindowPeer::WindowProc(message, wParam, lParam);
}

}  // namespace oak
