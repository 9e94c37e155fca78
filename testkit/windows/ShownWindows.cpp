// What the windows of the system show.
#include <algorithm>

#include "oak/framework/win32/System.h"
#include "testkit/windows/WindowsScreenDriver.h"

namespace oak::testkit {
namespace {

int CountTopWindow(HWND window) {
  int count = 0;
  const auto one = [](HWND, LPARAM counter) -> BOOL {
    ++*reinterpret_cast<int*>(counter);
    return TRUE;
  };
  DWORD process = 0;
  ::GetWindowThreadProcessId(window, &process);
  if (process != ::GetCurrentProcessId()) return 0;
  ::EnumChildWindows(window, one, reinterpret_cast<LPARAM>(&count));
  return count + 1;
}

// Bits of a row or node; the places of overlay and state image are the same in both.
TShownImages ImagesOf(UINT state, int image) {
  TShownImages images;
  images.Image = image;
  if (image < 0) return images;
  images.Overlay = static_cast<int>((state & LVIS_OVERLAYMASK) >> 8) - 1;
  images.Cut = (state & LVIS_CUT) != 0;
  return images;
}

}  // namespace

TString TWindowsScreenDriver::TextOf(const TWinControl& control) {
  const HWND window = control.GetPeer()->GetHandle();
  if (const auto* combo = dynamic_cast<const TCustomComboBoxEx*>(&control))
    if (const HWND edit = combo->GetEditHandle()) return win32::TextOfWindow(edit);
  return win32::TextOfWindow(window);
}

TWinControl* TWindowsScreenDriver::Focused() {
  for (HWND window = ::GetFocus(); window; window = ::GetAncestor(window, GA_PARENT))
    if (TWinControl* const control = WidgetSet().ControlOf(window)) return control;
  return nullptr;
}

bool TWindowsScreenDriver::IsShown(const TWinControl& control) {
  if (!control.GetPeer()) return false;
  const HWND window = control.GetPeer()->GetHandle();
  return ::IsWindowVisible(window) && !::IsIconic(::GetAncestor(window, GA_ROOT));
}

TRect TWindowsScreenDriver::BoundsOf(const TWinControl& control) {
  const HWND window = control.GetPeer()->GetHandle();
  RECT rect{};
  ::GetWindowRect(window, &rect);
  if (::GetWindowLongPtrW(window, GWL_STYLE) & WS_CHILD)
    ::MapWindowPoints(nullptr, ::GetAncestor(window, GA_PARENT), reinterpret_cast<POINT*>(&rect),
                      2);
  return TRect(rect);
}

void TWindowsScreenDriver::Paint() {
  const auto paint = [](HWND window, LPARAM) -> BOOL {
    ::RedrawWindow(window, nullptr, nullptr, RDW_UPDATENOW | RDW_ALLCHILDREN);
    return TRUE;
  };
  ::EnumThreadWindows(::GetCurrentThreadId(), paint, 0);
}

TShownRow TWindowsScreenDriver::RowOf(TCustomListView& list, int index) {
  const HWND window = list.GetHandle();
  const bool report = list.GetViewStyle() == vsReport;
  TShownRow row;
  const int columns = report ? list.Columns().GetCount() : 1;
  std::vector<int> order(static_cast<std::size_t>(columns));
  if (report)
    ::SendMessageW(window, LVM_GETCOLUMNORDERARRAY, order.size(),
                   reinterpret_cast<LPARAM>(order.data()));
  for (const int native : order) {
    TString text(512, u'\0');
    LVITEMW item{};
    item.iSubItem = native;
    item.pszText = WBuffer(text);
    item.cchTextMax = 512;
    const auto length = ::SendMessageW(window, LVM_GETITEMTEXTW, static_cast<WPARAM>(index),
                                       reinterpret_cast<LPARAM>(&item));
    row.Cells.push_back(text.substr(0, static_cast<std::size_t>(length)));
  }
  const auto state = ::SendMessageW(window, LVM_GETITEMSTATE, static_cast<WPARAM>(index),
                                    LVIS_SELECTED | LVIS_DROPHILITED | LVIS_FOCUSED);
  const bool focused = ::GetFocus() == window || ::IsChild(window, ::GetFocus());
  row.Marked = ((state & LVIS_SELECTED) && (focused || !list.GetHideSelection())) ||
               (state & LVIS_DROPHILITED);
  row.Focused = (state & LVIS_FOCUSED) && ::GetFocus() == window;
  LVITEMW item{};
  item.mask = LVIF_IMAGE | LVIF_STATE;
  item.iItem = index;
  item.stateMask = LVIS_CUT | LVIS_OVERLAYMASK | LVIS_STATEIMAGEMASK;
  ::SendMessageW(window, LVM_GETITEMW, 0, reinterpret_cast<LPARAM>(&item));
  const bool icons = list.GetViewStyle() == vsIcon;
  const bool has = icons ? list.GetLargeImages() : list.GetSmallImages();
  row.Images = ImagesOf(item.state, has ? item.iImage : -1);
  const int mark = static_cast<int>((item.state & LVIS_STATEIMAGEMASK) >> 12);
  row.Checked = list.GetCheckboxes() && !list.GetStateImages() && mark == 2;
  if (list.GetStateImages()) row.Images.State = mark - 1;
  return row;
}

std::vector<TShownColumn> TWindowsScreenDriver::ColumnsOf(TCustomListView& list) {
  const HWND header = list.GetHeaderHandle();
  const auto count = ::SendMessageW(header, HDM_GETITEMCOUNT, 0, 0);
  std::vector<TShownColumn> columns;
  for (WPARAM place = 0; place < static_cast<WPARAM>(count); ++place) {
    const auto index = ::SendMessageW(header, HDM_ORDERTOINDEX, place, 0);
    TString text(256, u'\0');
    HDITEMW item{};
    item.mask = HDI_TEXT | HDI_WIDTH | HDI_FORMAT;
    item.pszText = WBuffer(text);
    item.cchTextMax = 256;
    ::SendMessageW(header, HDM_GETITEMW, static_cast<WPARAM>(index),
                   reinterpret_cast<LPARAM>(&item));
    TShownColumn column;
    column.Caption = text.c_str();
    column.Width = item.cxy;
    if (item.fmt & HDF_SORTUP) column.Mark = TListSortMark::Up;
    if (item.fmt & HDF_SORTDOWN) column.Mark = TListSortMark::Down;
    columns.push_back(std::move(column));
  }
  return columns;
}

std::vector<TShownNode> TWindowsScreenDriver::NodesOf(TCustomTreeView& tree) {
  const HWND window = tree.GetHandle();
  const auto ask = [&](WPARAM what, LRESULT entry) {
    return ::SendMessageW(window, TVM_GETNEXTITEM, what, static_cast<LPARAM>(entry));
  };
  RECT client{};
  ::GetClientRect(window, &client);
  std::vector<TShownNode> nodes;
  for (LRESULT entry = ask(TVGN_FIRSTVISIBLE, 0); entry; entry = ask(TVGN_NEXTVISIBLE, entry)) {
    RECT rect{};
    *reinterpret_cast<LRESULT*>(&rect) = entry;
    if (!::SendMessageW(window, TVM_GETITEMRECT, FALSE, reinterpret_cast<LPARAM>(&rect)) ||
        rect.bottom > client.bottom)
      break;
    TString text(512, u'\0');
    TVITEMW item{};
    item.mask =
        TVIF_TEXT | TVIF_STATE | TVIF_CHILDREN | TVIF_HANDLE | TVIF_IMAGE | TVIF_SELECTEDIMAGE;
    item.hItem = reinterpret_cast<HTREEITEM>(entry);
    item.stateMask = TVIS_EXPANDED | TVIS_SELECTED | TVIS_DROPHILITED | TVIS_CUT |
                     TVIS_OVERLAYMASK | TVIS_STATEIMAGEMASK;
    item.pszText = WBuffer(text);
    item.cchTextMax = 512;
    ::SendMessageW(window, TVM_GETITEMW, 0, reinterpret_cast<LPARAM>(&item));
    TShownNode node;
    node.Text = FromW(item.pszText);
    node.HasButton = item.cChildren != 0 && tree.GetShowButtons();
    node.Expanded = node.HasButton && (item.state & TVIS_EXPANDED);
    const bool focused = ::GetFocus() == window || ::IsChild(window, ::GetFocus());
    node.Marked = ((item.state & TVIS_SELECTED) && (focused || !tree.GetHideSelection())) ||
                  (item.state & TVIS_DROPHILITED);
    const bool selected = (item.state & TVIS_SELECTED) != 0;
    const int image = selected ? item.iSelectedImage : item.iImage;
    node.Images = ImagesOf(item.state, tree.GetImages() ? image : -1);
    const int mark = static_cast<int>((item.state & TVIS_STATEIMAGEMASK) >> 12);
    if (tree.GetStateImages() && mark > 0) node.Images.State = mark;
    for (LRESULT up = ask(TVGN_PARENT, entry); up; up = ask(TVGN_PARENT, up)) ++node.Level;
    nodes.push_back(std::move(node));
  }
  return nodes;
}

int TWindowsScreenDriver::ImageOf(TCustomComboBoxEx& combo) {
  const HWND window = combo.GetHandle();
  COMBOBOXEXITEMW item{};
  item.mask = CBEIF_IMAGE;
  // Of the field itself while nothing is selected.
  item.iItem = static_cast<INT_PTR>(::SendMessageW(window, CB_GETCURSEL, 0, 0));
  ::SendMessageW(window, CBEM_GETITEMW, 0, reinterpret_cast<LPARAM>(&item));
  return std::max(item.iImage, -1);
}

int TWindowsScreenDriver::CountWindows() {
  int count = 0;
  const auto visit = [](HWND window, LPARAM counter) -> BOOL {
    *reinterpret_cast<int*>(counter) += CountTopWindow(window);
    return TRUE;
  };
  ::EnumWindows(visit, reinterpret_cast<LPARAM>(&count));
  HWND window = nullptr;
  while ((window = ::FindWindowExW(HWND_MESSAGE, window, nullptr, nullptr)))
    count += CountTopWindow(window);
  return count;
}

}  // namespace oak::testkit
