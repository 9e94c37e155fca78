#include "oak/framework/win32/WindowProcs.h"

#include <unordered_map>

#include "oak/framework/Application.h"
#include "oak/framework/win32/System.h"

namespace oak {
namespace {

constexpr UINT_PTR ChainId = 1;
constexpr UINT_PTR ForeignId = 2;

using TLinks = std::unordered_map<HWND, std::shared_ptr<TWindowLink>>;

/// Never destroyed: windows may send messages while the program ends.
TLinks& Links() {
  static TLinks* links = new TLinks;
  return *links;
}

std::unordered_map<HWND, int>& HookedParents() {
  static auto* parents = new std::unordered_map<HWND, int>;
  return *parents;
}

std::shared_ptr<TWindowLink>& LinkBeingBorn() {
  static auto* link = new std::shared_ptr<TWindowLink>;
  return *link;
}

/// Counts a procedure of the window as running, and ends the window if it has waited for that.
class TRunning {
 public:
  explicit TRunning(const std::shared_ptr<TWindowLink>& link) : fLink(link) { ++link->Depth; }
  ~TRunning() {
    if (--fLink->Depth == 0 && fLink->Doomed && !fLink->Dying) ::DestroyWindow(fLink->Handle);
  }
  TRunning(const TRunning&) = delete;
  TRunning& operator=(const TRunning&) = delete;

 private:
  std::shared_ptr<TWindowLink> fLink;
};

/// The child that a message to its parent speaks of, or null.
HWND SenderOf(UINT message, WPARAM wParam, LPARAM lParam) {
  switch (message) {
    case WM_NOTIFY:
      return reinterpret_cast<const NMHDR*>(lParam)->hwndFrom;
    case WM_COMMAND:
    case WM_CTLCOLOREDIT:
    case WM_CTLCOLORSTATIC:
    case WM_CTLCOLORLISTBOX:
    case WM_CTLCOLORBTN:
    case WM_CTLCOLORSCROLLBAR:
    case WM_HSCROLL:
    case WM_VSCROLL:
      return reinterpret_cast<HWND>(lParam);
    case WM_DRAWITEM:
      return wParam ? reinterpret_cast<const DRAWITEMSTRUCT*>(lParam)->hwndItem : nullptr;
    case WM_DELETEITEM:
      return reinterpret_cast<const DELETEITEMSTRUCT*>(lParam)->hwndItem;
    case WM_COMPAREITEM:
      return reinterpret_cast<const COMPAREITEMSTRUCT*>(lParam)->hwndItem;
    default:
      return nullptr;
  }
}

bool IsControlColor(UINT message) {
  return message >= WM_CTLCOLORMSGBOX && message <= WM_CTLCOLORSTATIC;
}

}  // namespace

TWindowProcs::TBirth::TBirth(const std::shared_ptr<TWindowLink>& link) : fFormer(LinkBeingBorn()) {
  LinkBeingBorn() = link;
}

TWindowProcs::TBirth::~TBirth() { LinkBeingBorn() = std::move(fFormer); }

LPCWSTR TWindowProcs::PaintedClass() {
  static const TString name =
      win32::RegisterOwnClass(u"Control", &OwnProc, CS_DBLCLKS | CS_HREDRAW | CS_VREDRAW, false);
  return W(name);
}

LPCWSTR TWindowProcs::FormClass() {
  static const TString name = win32::RegisterOwnClass(u"Form", &OwnProc, CS_DBLCLKS, true);
  return W(name);
}

UINT TWindowProcs::PostedMessage() {
  static const UINT message = ::RegisterWindowMessageW(L"Oak.Posted");
  return message;
}

std::shared_ptr<TWindowLink> TWindowProcs::FindLink(HWND window) {
  const auto found = Links().find(window);
  return found == Links().end() ? nullptr : found->second;
}

void TWindowProcs::Remember(const std::shared_ptr<TWindowLink>& link) {
  Links()[link->Handle] = link;
}

void TWindowProcs::Forget(HWND window) { Links().erase(window); }

bool TWindowProcs::Subclass(HWND window) {
  return win32::Late().SetWindowSubclass &&
         win32::Late().SetWindowSubclass(window, &ChainedProc, ChainId, 0);
}

LRESULT TWindowProcs::DefaultProc(HWND window, UINT message, WPARAM wParam, LPARAM lParam) {
  const std::shared_ptr<TWindowLink> link = FindLink(window);
  if (link && link->Subclassed)
    return win32::Late().DefSubclassProc(window, message, wParam, lParam);
  return ::DefWindowProcW(window, message, wParam, lParam);
}

LRESULT TWindowProcs::RunPeer(TWindowLink& link, UINT message, WPARAM wParam, LPARAM lParam) {
  try {
    return link.Inner ? link.Peer->InnerProc(link.Handle, message, wParam, lParam)
                      : link.Peer->WindowProc(message, wParam, lParam);
  } catch (...) {
    Application().HandleException(nullptr);
    return 0;
  }
}

LRESULT TWindowProcs::Run(const std::shared_ptr<TWindowLink>& link, UINT message, WPARAM wParam,
                          LPARAM lParam) {
  const TRunning running(link);
  if (message == WM_DESTROY) {
    link->Dying = true;
    ParkBusyChildren(link->Handle);
  }
  if (message == WM_NCDESTROY && link->Subclassed && win32::Late().RemoveWindowSubclass) {
    // What follows goes to the former procedure, which frees what it keeps for the window.
    const LRESULT result = win32::Late().DefSubclassProc(link->Handle, message, wParam, lParam);
    win32::Late().RemoveWindowSubclass(link->Handle, &ChainedProc, ChainId);
    if (link->Peer && !link->Inner) link->Peer->fHandle = nullptr;
    Forget(link->Handle);
    return result;
  }
  const LRESULT result = link->Peer ? RunPeer(*link, message, wParam, lParam)
                                    : DefaultProc(link->Handle, message, wParam, lParam);
  if (message == WM_NCDESTROY) Forget(link->Handle);
  return result;
}

LRESULT CALLBACK TWindowProcs::OwnProc(HWND window, UINT message, WPARAM wParam, LPARAM lParam) {
  std::shared_ptr<TWindowLink> link = FindLink(window);
  if (!link && LinkBeingBorn() && !LinkBeingBorn()->Handle) {
    link = LinkBeingBorn();
    link->Handle = window;
    if (link->Peer) link->Peer->fHandle = window;
    Remember(link);
  }
  return link ? Run(link, message, wParam, lParam)
              : ::DefWindowProcW(window, message, wParam, lParam);
}

LRESULT CALLBACK TWindowProcs::ChainedProc(HWND window, UINT message, WPARAM wParam, LPARAM lParam,
                                           UINT_PTR, DWORD_PTR) {
  const std::shared_ptr<TWindowLink> link = FindLink(window);
  return link ? Run(link, message, wParam, lParam)
              : win32::Late().DefSubclassProc(window, message, wParam, lParam);
}

LRESULT CALLBACK TWindowProcs::ForeignProc(HWND window, UINT message, WPARAM wParam, LPARAM lParam,
                                           UINT_PTR, DWORD_PTR) {
  LRESULT result = 0;
  try {
    if (message == WM_DESTROY) ParkBusyChildren(window);
    if (Reflect(nullptr, message, wParam, lParam, result)) return result;
  } catch (...) {
    Application().HandleException(nullptr);
  }
  if (message == WM_NCDESTROY) {
    HookedParents().erase(window);
    win32::Late().RemoveWindowSubclass(window, &ForeignProc, ForeignId);
  }
  return win32::Late().DefSubclassProc(window, message, wParam, lParam);
}

bool TWindowProcs::Reflect(TWindowPeer* receiver, UINT message, WPARAM wParam, LPARAM lParam,
                           LRESULT& result) {
  const HWND sender = SenderOf(message, wParam, lParam);
  const std::shared_ptr<TWindowLink> link = sender ? FindLink(sender) : nullptr;
  if (!link) {
    // Headers and tips of common controls that are not attached one by one.
    return message == WM_NOTIFY && receiver && sender &&
           receiver->HandleInnerNotify(*reinterpret_cast<NMHDR*>(lParam), result);
  }
  TWindowPeer* peer = link->Peer;
  // A window that waits for its end asks in vain.
  if (!peer) return message == WM_NOTIFY || message == WM_COMMAND;
  if (message == WM_NOTIFY) {
    auto& notification = *reinterpret_cast<NMHDR*>(lParam);
    return peer == receiver ? peer->HandleInnerNotify(notification, result)
                            : peer->HandleNotify(notification, result);
  }
  if (peer == receiver || link->Inner) return false;
  if (message == WM_COMMAND) {
    peer->HandleCommand(HIWORD(wParam));
    result = 0;
    return true;
  }
  if (IsControlColor(message)) {
    const HBRUSH brush = peer->HandleControlColor(reinterpret_cast<HDC>(wParam), message);
    result = reinterpret_cast<LRESULT>(brush);
    return brush != nullptr;
  }
  return peer->HandleReflected(message, wParam, lParam, result);
}

void TWindowProcs::HookParent(HWND parent) {
  if (++HookedParents()[parent] > 1) return;
  // A window of another thread can't be hooked: its children do without notifications.
  if (win32::Late().SetWindowSubclass)
    win32::Late().SetWindowSubclass(parent, &ForeignProc, ForeignId, 0);
}

void TWindowProcs::UnhookParent(HWND parent) {
  const auto found = HookedParents().find(parent);
  if (found == HookedParents().end() || --found->second > 0) return;
  HookedParents().erase(found);
  win32::Late().RemoveWindowSubclass(parent, &ForeignProc, ForeignId);
}

void TWindowProcs::ParkBusyChildren(HWND window) {
  for (const auto& [handle, link] : Links()) {
    if (link->Depth > 0 && !link->Inner && !link->Dying && ::IsChild(window, handle)) {
      ::ShowWindow(handle, SW_HIDE);
      ::SetParent(handle, HWND_MESSAGE);
      link->Doomed = link->Doomed || !link->Peer;
      return ParkBusyChildren(window);  // the calls may have changed the table
    }
  }
}

void TWindowProcs::Dispose(const std::shared_ptr<TWindowLink>& link) {
  if (link->Dying || !link->Handle) return;
  if (link->Depth == 0) {
    ::DestroyWindow(link->Handle);
    return;
  }
  link->Doomed = true;
  ::ShowWindow(link->Handle, SW_HIDE);
  // Out of the reach of the parent, which may be destroyed before the procedure returns.
  if (::GetWindowLongPtrW(link->Handle, GWL_STYLE) & WS_CHILD)
    ::SetParent(link->Handle, HWND_MESSAGE);
}

}  // namespace oak
