#include "oak/framework/win32/ComboPeer.h"

#include "oak/framework/ImageList.h"
#include "oak/framework/win32/PeerScopes.h"
#include "oak/framework/win32/Peers.h"
#include "oak/framework/win32/System.h"

namespace oak {
namespace {

constexpr UINT MessageOfVisibleItems = 0x1701;  // CB_SETMINVISIBLE
constexpr DWORD DroppedLists = WS_VSCROLL | CBS_AUTOHSCROLL;

/// For the system -1 is the wish to be asked at each paint.
int ImageOrNone(int image) { return image >= 0 ? image : I_IMAGENONE; }

bool IsListColor(UINT message) {
  return message == WM_CTLCOLOREDIT || message == WM_CTLCOLORLISTBOX ||
         message == WM_CTLCOLORSTATIC;
}

}  // namespace

TComboPeer::TComboPeer(TCustomComboBoxEx& combo) : TWindowPeer(combo), fCombo(combo) {}

void TComboPeer::Create() {
  TWindowParams params = MakeParams();
  params.ClassName = WC_COMBOBOXEXW;
  params.Style &= ~static_cast<DWORD>(WS_BORDER);
  params.Style |= DroppedLists | (fCombo.GetReadOnly() ? CBS_DROPDOWNLIST : CBS_DROPDOWN);
  // The height of such a window is that with its list; it takes its own from the font.
  params.Bounds.Bottom += DroppedHeight();
  params.Text.clear();
  CreateHandle(params);
}

void TComboPeer::Initialize() {
  // For the inner combo box first: in it the edit field is made.
  AttachInner(GetInnerCombo());
  AttachInner(GetEditHandle());
  Send(CBEM_SETEXTENDEDSTYLE, CBES_EX_PATHWORDBREAKPROC, CBES_EX_PATHWORDBREAKPROC);
  ImagesChanged();
  ItemsChanged();
}

HWND TComboPeer::GetInnerCombo() const {
  return reinterpret_cast<HWND>(::SendMessageW(GetHandle(), CBEM_GETCOMBOCONTROL, 0, 0));
}

HWND TComboPeer::GetEditHandle() const {
  return reinterpret_cast<HWND>(::SendMessageW(GetHandle(), CBEM_GETEDITCONTROL, 0, 0));
}

int TComboPeer::DroppedHeight() const {
  constexpr int rowHeight = 18;
  return fCombo.ScaledPixels(rowHeight) * std::max(fCombo.GetDropDownCount(), 1);
}

LPCWSTR TComboPeer::GetThemeName(bool dark) const { return dark ? L"DarkMode_CFD" : nullptr; }

void TComboPeer::SetVisible(bool visible) {
  const TPeerGuard guard(*this);
  TWindowPeer::SetVisible(visible);
  // The height that the font asked for is not that of the control yet.
  if (guard.IsAlive() && visible) ReportBounds();
}

void TComboPeer::SetBounds(const TRect& bounds) {
  TRect dropped = bounds;
  dropped.Bottom += DroppedHeight();
  TWindowPeer::SetBounds(dropped);
}

void TComboPeer::ColorsChanged() {
  TWindowPeer::ColorsChanged();
  ::InvalidateRect(GetInnerCombo(), nullptr, TRUE);
}

bool TComboPeer::SetFocus() {
  const TPeerGuard guard(*this);
  const HWND edit = GetEditHandle();
  ::SetFocus(edit ? edit : GetInnerCombo());
  return guard.IsAlive() && HasFocus();
}

void TComboPeer::SetText(const TString& text) {
  const TPeerFlag changing(fChanging, *this);
  if (const HWND edit = GetEditHandle()) ::SetWindowTextW(edit, W(text));
}

TString TComboPeer::GetText() const {
  const HWND edit = GetEditHandle();
  return edit ? win32::TextOfWindow(edit) : fCombo.TControl::GetText();
}

void TComboPeer::ItemsChanged() {
  const TPeerFlag changing(fChanging, *this);
  const HWND inner = GetInnerCombo();
  ::SendMessageW(inner, WM_SETREDRAW, FALSE, 0);
  Send(CB_RESETCONTENT, 0, 0);
  FillItems();
  SetItemIndex(fCombo.GetItemIndex());
  ::SendMessageW(inner, WM_SETREDRAW, TRUE, 0);
  ::SendMessageW(inner, MessageOfVisibleItems,
                 static_cast<WPARAM>(std::max(fCombo.GetDropDownCount(), 1)), 0);
  ::InvalidateRect(inner, nullptr, TRUE);
  if (!fCombo.GetReadOnly()) SetText(fCombo.TControl::GetText());
}

void TComboPeer::FillItems() {
  for (int i = 0; i < fCombo.GetItemCount(); ++i) {
    const TComboExItem& entry = fCombo.GetItem(i);
    TString caption = entry.Caption;
    COMBOBOXEXITEMW item{};
    item.mask = CBEIF_TEXT | CBEIF_IMAGE | CBEIF_SELECTEDIMAGE | CBEIF_INDENT;
    item.iItem = i;
    item.pszText = WBuffer(caption);
    item.iImage = ImageOrNone(entry.ImageIndex);
    item.iSelectedImage =
        ImageOrNone(entry.SelectedImageIndex >= 0 ? entry.SelectedImageIndex : entry.ImageIndex);
    item.iIndent = entry.Indent;
    Send(CBEM_INSERTITEMW, 0, reinterpret_cast<LPARAM>(&item));
  }
}

void TComboPeer::SetItemIndex(int index) {
  const TPeerFlag changing(fChanging, *this);
  Send(CB_SETCURSEL, static_cast<WPARAM>(index), 0);
  ShowEditImage();
}

void TComboPeer::SetDroppedDown(bool dropped) { Send(CB_SHOWDROPDOWN, dropped, 0); }

bool TComboPeer::GetDroppedDown() const {
  return ::SendMessageW(GetHandle(), CB_GETDROPPEDSTATE, 0, 0) != 0;
}

void TComboPeer::SelectText(int start, int end) {
  if (const HWND edit = GetEditHandle())
    ::SendMessageW(edit, EM_SETSEL, static_cast<WPARAM>(start), end);
}

void TComboPeer::ImagesChanged() {
  const HIMAGELIST images = fCombo.GetImages() ? fCombo.GetImages()->GetHandle() : nullptr;
  Send(CBEM_SETIMAGELIST, 0, reinterpret_cast<LPARAM>(images));
  ShowEditImage();
}

// The image of the field itself hides that of a selected entry.
void TComboPeer::ShowEditImage() {
  if (fCombo.GetItemIndex() >= 0) return;
  COMBOBOXEXITEMW field{};
  field.mask = CBEIF_IMAGE | CBEIF_SELECTEDIMAGE;
  field.iItem = -1;
  field.iImage = field.iSelectedImage = ImageOrNone(fCombo.GetEditImageIndex());
  Send(CBEM_SETITEMW, 0, reinterpret_cast<LPARAM>(&field));
  ::InvalidateRect(GetInnerCombo(), nullptr, TRUE);
}

void TComboPeer::HandleCommand(WORD code) {
  if (fChanging || IsCreating()) return;
  switch (code) {
    case CBN_EDITCHANGE:
      return fSelecting ? void() : TextTyped();
    case CBN_SELCHANGE:
      return fCombo.HandleSelected(static_cast<int>(Send(CB_GETCURSEL, 0, 0)));
    case CBN_DROPDOWN:
      return fCombo.HandleDropDown(true);
    case CBN_CLOSEUP:
      return fCombo.HandleDropDown(false);
    default:
      return;
  }
}

void TComboPeer::TextTyped() {
  const TPeerGuard guard(*this);
  fCombo.HandleTextChanged(GetText());
  if (!guard.IsAlive() || fCombo.GetItemIndex() >= 0) return;
  // The list holds on to the entry that was selected before.
  ::SendMessageW(GetInnerCombo(), CB_SETCURSEL, static_cast<WPARAM>(-1), 0);
  ShowEditImage();
}

// The edit field of such a window does not know of the list.
bool TComboPeer::MovesInList(HWND window, UINT message, WPARAM key) const {
  if (message != WM_KEYDOWN || window != GetEditHandle()) return false;
  return key == VK_UP || key == VK_DOWN || key == VK_PRIOR || key == VK_NEXT;
}

// The window puts the caption of a selected entry into its edit field: nobody has typed it.
LRESULT TComboPeer::WindowProc(UINT message, WPARAM wParam, LPARAM lParam) {
  if (message != WM_COMMAND || HIWORD(wParam) != CBN_SELCHANGE)
    return TWindowPeer::WindowProc(message, wParam, lParam);
  const TPeerFlag selecting(fSelecting, *this);
  return TWindowPeer::WindowProc(message, wParam, lParam);
}

LRESULT TComboPeer::InnerProc(HWND window, UINT message, WPARAM wParam, LPARAM lParam) {
  if (fForwarding && message == WM_KEYDOWN) return DefaultProcOf(window, message, wParam, lParam);
  // The inner combo box is the parent of edit field and list.
  if (IsListColor(message)) {
    const HBRUSH brush = HandleControlColor(reinterpret_cast<HDC>(wParam), message);
    if (brush) return reinterpret_cast<LRESULT>(brush);
  }
  const bool command = wParam == VK_RETURN || wParam == VK_TAB || wParam == VK_ESCAPE;
  if (message == WM_CHAR && command) {
    ReportKey(message, wParam, window);  // the edit field would beep
    return 0;
  }
  if (MovesInList(window, message, wParam)) {
    if (ReportKey(message, wParam, window)) return 0;
    const TPeerFlag forwarding(fForwarding, *this);
    return ::SendMessageW(GetInnerCombo(), WM_KEYDOWN, wParam, lParam);
  }
  return TWindowPeer::InnerProc(window, message, wParam, lParam);
}

namespace win32 {

std::unique_ptr<IComboPeer> MakeComboPeer(TCustomComboBoxEx& combo) {
  auto peer = std::make_unique<TComboPeer>(combo);
  peer->Create();
  return peer;
}

}  // namespace win32

}  // namespace oak
