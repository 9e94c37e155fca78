#include "oak/framework/win32/WindowPeer.h"

#include "oak/base/Exceptions.h"
#include "oak/framework/Application.h"
#include "oak/framework/WinControl.h"
#include "oak/framework/win32/HintWindow.h"
#include "oak/framework/win32/System.h"
#include "oak/framework/win32/WindowProcs.h"

namespace oak {
namespace {

/// Beyond the numbers of the common controls, CCM_LAST included.
constexpr UINT FirstFreeMessage = 0x2200;
constexpr UINT FirstRegisteredMessage = 0xC000;

HWND ParentHandle(const TWinControl& control) {
  if (TWinControl* parent = control.GetParent())
    return parent->GetPeer() ? parent->GetPeer()->GetHandle() : nullptr;
  return control.GetParentWindow();
}

}  // namespace

TPeerGuard::TPeerGuard(const TWindowPeer& peer) : fLife(peer.fLife) {}

TWindowPeer::TWindowPeer(TWinControl& control) : fControl(control) {}

TWindowPeer::~TWindowPeer() {
  fLife.reset();
  Detach();
}

TWindowPeer* TWindowPeer::Find(HWND window) {
  const std::shared_ptr<TWindowLink> link = TWindowProcs::FindLink(window);
  return link ? link->Peer : nullptr;
}

// --- birth and end -------------------------------------------------------------------------------

TWindowParams TWindowPeer::MakeParams() const {
  TWindowParams params;
  params.Bounds = fControl.GetBoundsRect();
  params.Parent = ParentHandle(fControl);
  params.Text = fControl.GetText();
  if (!fControl.GetEnabled()) params.Style |= WS_DISABLED;
  if (fControl.GetTabStop()) params.Style |= WS_TABSTOP;
  if (fControl.GetBorderStyle() == bsSingle) params.Style |= WS_BORDER;
  return params;
}

void TWindowPeer::CreateHandle(const TWindowParams& params) {
  const win32::TCommonControlsScope version6;
  fLink = std::make_shared<TWindowLink>();
  fLink->Peer = this;
  fSubclassed = params.ClassName && params.ClassName != TWindowProcs::FormClass();
  const LPCWSTR className = params.ClassName ? params.ClassName : TWindowProcs::PaintedClass();
  HWND window = nullptr;
  {
    const TWindowProcs::TBirth birth(fSubclassed ? nullptr : fLink);
    window = ::CreateWindowExW(params.ExStyle, className, W(params.Text), params.Style,
                               params.Bounds.Left, params.Bounds.Top, params.Bounds.Width(),
                               params.Bounds.Height(), params.Parent, nullptr, win32::OwnModule(),
                               nullptr);
  }
  if (!window) win32::RaiseLastError(u"A window could not be created");
  fHandle = window;
  if (fSubclassed) Attach(window, true);
  HookParent(params.Parent);
  fAskedBounds = params.Bounds;
  fCursor = fControl.GetCursor();
  SetFont(fControl.GetFont());
  ApplyTheme();
  Initialize();
  fCreating = false;
}

void TWindowPeer::Attach(HWND window, bool subclass) {
  fLink->Handle = window;
  TWindowProcs::Remember(fLink);
  fLink->Subclassed = subclass && TWindowProcs::Subclass(window);
  if (subclass && !fLink->Subclassed) win32::RaiseLastError(u"A window could not be subclassed");
}

void TWindowPeer::AttachInner(HWND window) {
  if (!window || TWindowProcs::FindLink(window)) return;
  auto link = std::make_shared<TWindowLink>();
  link->Handle = window;
  link->Peer = this;
  link->Inner = true;
  TWindowProcs::Remember(link);
  link->Subclassed = TWindowProcs::Subclass(window);
  std::erase_if(fInner, [](const auto& other) { return other->Dying; });
  fInner.push_back(std::move(link));
}

void TWindowPeer::Detach() {
  win32::THints::Instance().Forget(*this);
  RevokeDropTarget();
  for (const auto& inner : fInner) inner->Peer = nullptr;
  fInner.clear();
  fHandle = nullptr;
  if (const std::shared_ptr<TWindowLink> link = std::move(fLink)) {
    link->Peer = nullptr;
    TWindowProcs::Dispose(link);
  }
  // Last: what the window says at its end is nothing for the foreign one.
  UnhookParent();
}

void TWindowPeer::WindowDestroyed() {
  RevokeDropTarget();
  // Only when the system or a foreign program ends the window: our own way parts the two before.
  fControl.HandleWindowLost();
}

void TWindowPeer::HookParent(HWND parent) {
  if (!fSubclassed || !parent || Find(parent)) return;
  TWindowProcs::HookParent(parent);
  fHookedParent = parent;
}

void TWindowPeer::UnhookParent() {
  if (fHookedParent) TWindowProcs::UnhookParent(fHookedParent);
  fHookedParent = nullptr;
}

// --- the interface -------------------------------------------------------------------------------

void TWindowPeer::SetBounds(const TRect& bounds) {
  const TPeerGuard guard(*this);
  fAskedBounds = bounds;
  fSettingBounds = true;
  ::SetWindowPos(fHandle, nullptr, bounds.Left, bounds.Top, bounds.Width(), bounds.Height(),
                 SWP_NOZORDER | SWP_NOACTIVATE | SWP_NOOWNERZORDER);
  if (guard.IsAlive()) fSettingBounds = false;
}

TRect TWindowPeer::GetClientRect() const {
  RECT rect{};
  ::GetClientRect(fHandle, &rect);
  return TRect(rect);
}

TPoint TWindowPeer::ClientToScreen(TPoint point) const {
  POINT native = point;
  ::ClientToScreen(fHandle, &native);
  return TPoint(native);
}

TPoint TWindowPeer::ScreenToClient(TPoint point) const {
  POINT native = point;
  ::ScreenToClient(fHandle, &native);
  return TPoint(native);
}

TRect TWindowPeer::GetWindowBounds() const {
  RECT rect{};
  ::GetWindowRect(fHandle, &rect);
  if (::GetWindowLongPtrW(fHandle, GWL_STYLE) & WS_CHILD)
    ::MapWindowPoints(nullptr, ::GetAncestor(fHandle, GA_PARENT), reinterpret_cast<POINT*>(&rect),
                      2);
  return TRect(rect);
}

void TWindowPeer::SetVisible(bool visible) {
  fIsShown = visible;
  ::ShowWindow(fHandle, visible ? SW_SHOWNA : SW_HIDE);
}

void TWindowPeer::PausePainting() {
  if (fPaintPauses++ > 0) return;
  fIsShown = (::GetWindowLongPtrW(fHandle, GWL_STYLE) & WS_VISIBLE) != 0;
  Send(WM_SETREDRAW, FALSE, 0);
}

void TWindowPeer::ResumePainting() {
  if (fPaintPauses == 0 || --fPaintPauses > 0) return;
  Send(WM_SETREDRAW, TRUE, 0);
  // The system does both by the same bit: what may paint is visible.
  if (!fIsShown) ::ShowWindow(fHandle, SW_HIDE);
  ::RedrawWindow(fHandle, nullptr, nullptr, RDW_INVALIDATE | RDW_FRAME | RDW_ALLCHILDREN);
}

void TWindowPeer::SetEnabled(bool enabled) { ::EnableWindow(fHandle, enabled); }

void TWindowPeer::SetText(const TString& text) { ::SetWindowTextW(fHandle, W(text)); }

void TWindowPeer::SetFont(const TFont& font) {
  // The former one lives until the window has the new one.
  const TSharedFont former = std::exchange(fLink->Font, FontHandleOf(font));
  if (fSubclassed)
    ::SendMessageW(fHandle, WM_SETFONT, reinterpret_cast<WPARAM>(GetFontHandle()), TRUE);
  else
    Invalidate(nullptr);
}

void TWindowPeer::ColorsChanged() {
  ApplyTheme();
  Invalidate(nullptr);
}

void TWindowPeer::SetCursor(TCursor cursor) {
  fCursor = cursor;
  POINT at{};
  if (::GetCursorPos(&at) && ::WindowFromPoint(at) == fHandle)
    ::SendMessageW(fHandle, WM_SETCURSOR, reinterpret_cast<WPARAM>(fHandle),
                   MAKELPARAM(HTCLIENT, WM_MOUSEMOVE));
}

void TWindowPeer::SetHint(const TString&) { win32::THints::Instance().HintChanged(*this); }

void TWindowPeer::SetParent(HWND parent) {
  UnhookParent();
  const bool child = (::GetWindowLongPtrW(fHandle, GWL_STYLE) & WS_CHILD) != 0;
  if (child && !parent) ::ShowWindow(fHandle, SW_HIDE);
  ::SetParent(fHandle, child && !parent ? HWND_MESSAGE : parent);
  HookParent(parent);
}

void TWindowPeer::SetZOrder(bool top) {
  ::SetWindowPos(fHandle, top ? HWND_TOP : HWND_BOTTOM, 0, 0, 0, 0,
                 SWP_NOMOVE | SWP_NOSIZE | SWP_NOACTIVATE | SWP_NOOWNERZORDER);
}

void TWindowPeer::Invalidate(const TRect* rect) {
  RECT native{};
  if (rect) native = *rect;
  ::InvalidateRect(fHandle, rect ? &native : nullptr, fSubclassed);
}

void TWindowPeer::Update() { ::UpdateWindow(fHandle); }

bool TWindowPeer::SetFocus() {
  const TPeerGuard guard(*this);
  ::SetFocus(fHandle);
  return guard.IsAlive() && HasFocus();
}

bool TWindowPeer::HasFocus() const {
  const HWND focus = ::GetFocus();
  return focus && Find(focus) == this;
}

void TWindowPeer::SetCapture(bool capture) {
  if (capture)
    ::SetCapture(fHandle);
  else if (HasCapture())
    ::ReleaseCapture();
}

bool TWindowPeer::HasCapture() const { return ::GetCapture() == fHandle; }

void TWindowPeer::Post(UINT message, WPARAM wParam, LPARAM lParam) {
  fLink->Posted.push_back({message, wParam, lParam, 0});
  if (!::PostMessageW(fHandle, TWindowProcs::PostedMessage(), 0, 0)) fLink->Posted.pop_back();
}

LRESULT TWindowPeer::Send(UINT message, WPARAM wParam, LPARAM lParam) {
  return ::SendMessageW(fHandle, message, wParam, lParam);
}

HRESULT TWindowPeer::SetDropTarget(IDropTarget* target) {
  RevokeDropTarget();
  if (!target) return S_OK;
  const HRESULT result = ::RegisterDragDrop(fHandle, target);
  if (SUCCEEDED(result)) fDropTarget = target;
  return result;
}

void TWindowPeer::RevokeDropTarget() {
  if (fDropTarget && fHandle) ::RevokeDragDrop(fHandle);
  fDropTarget = nullptr;
}

bool TWindowPeer::GetScroll(TScrollBarKind kind, int* position, int* page, int* range) const {
  SCROLLINFO info{};
  info.cbSize = sizeof info;
  info.fMask = SIF_ALL;
  const auto style = ::GetWindowLongPtrW(fHandle, GWL_STYLE);
  if (!(style & (kind == sbHorizontal ? WS_HSCROLL : WS_VSCROLL))) return false;
  if (!::GetScrollInfo(fHandle, kind == sbHorizontal ? SB_HORZ : SB_VERT, &info)) return false;
  if (position) *position = info.nPos;
  if (page) *page = static_cast<int>(info.nPage);
  if (range) *range = info.nMax - info.nMin + 1;
  return true;
}

void TWindowPeer::ScrollLines(TScrollBarKind kind, int lines) {
  const UINT message = kind == sbHorizontal ? WM_HSCROLL : WM_VSCROLL;
  const WPARAM step = lines < 0 ? SB_LINEUP : SB_LINEDOWN;
  const TPeerGuard guard(*this);
  for (int left = std::abs(lines); left > 0 && guard.IsAlive(); --left)
    ::SendMessageW(fHandle, message, step, 0);
}

// --- reflection ----------------------------------------------------------------------------------

bool TWindowPeer::HandleNotify(NMHDR&, LRESULT&) { return false; }

bool TWindowPeer::HandleInnerNotify(NMHDR&, LRESULT&) { return false; }

void TWindowPeer::HandleCommand(WORD) {}

bool TWindowPeer::HandleReflected(UINT, WPARAM, LPARAM, LRESULT&) { return false; }

HBRUSH TWindowPeer::HandleControlColor(HDC dc, UINT) {
  ::SetTextColor(dc, GetTextColor());
  ::SetBkColor(dc, GetBackColor());
  return GetColorBrush();
}

bool TWindowPeer::IsPrivateMessage(UINT message) const {
  return message >= FirstRegisteredMessage || message >= (fSubclassed ? FirstFreeMessage : WM_USER);
}

bool TWindowPeer::ReportMessage(UINT message, WPARAM wParam, LPARAM lParam, LRESULT& result) {
  TMessage neutral{message, wParam, lParam, 0};
  const TPeerGuard guard(*this);
  fControl.HandleMessage(neutral);
  result = neutral.Result;
  return !guard.IsAlive() || result != 0;
}

void TWindowPeer::DeliverPosted() {
  if (fLink->Posted.empty()) return;
  TMessage message = fLink->Posted.front();
  fLink->Posted.pop_front();
  fControl.HandleMessage(message);
}

bool TWindowPeer::ReportBounds() {
  // A minimised form keeps the place that it goes back to.
  if (::IsIconic(fHandle)) return false;
  const TRect bounds = GetWindowBounds();
  if (fCreating || (fSettingBounds && bounds == fAskedBounds)) return false;
  const TPeerGuard guard(*this);
  fControl.HandleBounds(bounds);
  return !guard.IsAlive();
}

void TWindowPeer::HandleDensity() {
  // Windows of a parent of ours are told by their form.
  if (fControl.GetParent()) return;
  fControl.HandlePixelsPerInch(GetPixelsPerInch());
}

int TWindowPeer::GetPixelsPerInch() const { return win32::DensityOfWindow(fHandle); }

LRESULT TWindowPeer::DefaultProc(UINT message, WPARAM wParam, LPARAM lParam) {
  return TWindowProcs::DefaultProc(fHandle, message, wParam, lParam);
}

LRESULT TWindowPeer::DefaultProcOf(HWND window, UINT message, WPARAM wParam, LPARAM lParam) {
  return TWindowProcs::DefaultProc(window, message, wParam, lParam);
}

void TWindowPeer::ChangeStyle(DWORD remove, DWORD add) {
  const auto style = static_cast<DWORD>(::GetWindowLongPtrW(fHandle, GWL_STYLE));
  const DWORD wanted = (style & ~remove) | add;
  if (style == wanted) return;
  ::SetWindowLongPtrW(fHandle, GWL_STYLE, static_cast<LONG_PTR>(wanted));
  FrameChanged();
}

void TWindowPeer::FrameChanged() {
  ::SetWindowPos(fHandle, nullptr, 0, 0, 0, 0,
                 SWP_NOMOVE | SWP_NOSIZE | SWP_NOZORDER | SWP_NOACTIVATE | SWP_FRAMECHANGED);
}

void TPaintedPeer::Create() {
  TWindowParams params = MakeParams();
  CreateHandle(params);
}

}  // namespace oak
