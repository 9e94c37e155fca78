// TWindowPeer: what all windows of the Win32 widget set have in common.
//
// A peer belongs to a control and owns one system window: of a class of ours, which the control
// paints, or of a common control, whose procedure is chained before. Messages arrive in
// TWindowPeer::WindowProc; what the user did is told to the control there. Notifications that a
// common control sends to its parent come back to the control's own peer, whoever the parent is.
//
// Any call into the control may end with the peer destroyed. A procedure that goes on afterwards
// takes a TPeerGuard first. The window itself is safe: while one of its procedures is on the stack
// it is only hidden, parted from the peer and put aside, and destroyed when the last one returns,
// since common controls do not survive their end in the middle of a notification.
#pragma once

#include <deque>
#include <memory>
#include <vector>

#include "oak/framework/Control.h"
#include "oak/framework/WidgetSet.h"
#include "oak/framework/win32/FontsWin32.h"
#include "oak/framework/win32/GdiHandles.h"
#include "oak/platform/shell_api.h"

namespace oak {

class TWindowPeer;

/// How a window is to be made.
struct TWindowParams {
  /// Class of a common control, or null for a window that the control paints itself.
  LPCWSTR ClassName = nullptr;
  DWORD Style = WS_CHILD | WS_CLIPSIBLINGS | WS_CLIPCHILDREN;
  DWORD ExStyle = 0;
  TRect Bounds;           ///< In the parent's client area, or on the screen.
  HWND Parent = nullptr;  ///< Owner for windows without WS_CHILD.
  TString Text;
};

/// What the window procedures know of a window. It outlives the peer as long as a procedure runs.
struct TWindowLink {
  HWND Handle = nullptr;
  TWindowPeer* Peer = nullptr;  ///< Null once the peer is gone.
  bool Inner = false;           ///< A part of the peer's window: a header, an edit field.
  bool Subclassed = false;
  bool Doomed = false;  ///< To be destroyed when the last procedure returns.
  bool Dying = false;   ///< The system destroys it.
  int Depth = 0;        ///< Procedures of the window on the stack.
  TSharedFont Font;     ///< A common control draws with it to its last moment.
  std::deque<TMessage> Posted;
};

/// Tells whether a peer still lives.
class TPeerGuard {
 public:
  explicit TPeerGuard(const TWindowPeer& peer);
  bool IsAlive() const noexcept { return !fLife.expired(); }

 private:
  std::weak_ptr<const bool> fLife;
};

class TWindowPeer : public virtual IControlPeer {
 public:
  explicit TWindowPeer(TWinControl& control);
  /// Destroys the window, or puts it aside while its procedure runs.
  ~TWindowPeer() override;
  TWindowPeer(const TWindowPeer&) = delete;
  TWindowPeer& operator=(const TWindowPeer&) = delete;

  TWinControl& GetControl() const noexcept { return fControl; }
  /// The peer that owns a window, also for its inner windows; nil for windows of others.
  static TWindowPeer* Find(HWND window);

  HWND GetHandle() const override { return fHandle; }
  void SetBounds(const TRect& bounds) override;
  TRect GetClientRect() const override;
  TPoint ClientToScreen(TPoint point) const override;
  TPoint ScreenToClient(TPoint point) const override;
  int GetPixelsPerInch() const override;
  void SetVisible(bool visible) override;
  void SetEnabled(bool enabled) override;
  void SetText(const TString& text) override;
  void SetFont(const TFont& font) override;
  void ColorsChanged() override;
  void SetCursor(TCursor cursor) override;
  void SetHint(const TString& hint) override;
  void SetParent(HWND parent) override;
  void SetZOrder(bool top) override;
  void Invalidate(const TRect* rect) override;
  void Update() override;
  bool SetFocus() override;
  bool HasFocus() const override;
  void SetCapture(bool capture) override;
  bool HasCapture() const override;
  void Post(UINT message, WPARAM wParam, LPARAM lParam) override;
  LRESULT Send(UINT message, WPARAM wParam, LPARAM lParam) override;
  HRESULT SetDropTarget(IDropTarget* target) override;
  bool GetScroll(TScrollBarKind kind, int* position, int* page, int* range) const override;
  void ScrollLines(TScrollBarKind kind, int lines) override;

  // --- reflection: called by the window procedure of whatever window is the parent -------------

  /// A WM_NOTIFY of this peer's window. True if `result` is the answer; else the system's default
  /// follows. Custom draw comes here too.
  virtual bool HandleNotify(NMHDR& notification, LRESULT& result);
  /// A WM_COMMAND of this peer's window.
  virtual void HandleCommand(WORD code);
  /// A WM_CTLCOLOR... of this peer's window: sets the colours of the context and gives the brush of
  /// the background; null: the system's default. Root: font colour and colour of the control.
  virtual HBRUSH HandleControlColor(HDC dc, UINT message);
  /// WM_DRAWITEM, WM_MEASUREITEM, WM_DELETEITEM, WM_COMPAREITEM, WM_HSCROLL, WM_VSCROLL of this
  /// peer's window.
  virtual bool HandleReflected(UINT message, WPARAM wParam, LPARAM lParam, LRESULT& result);

 protected:
  friend class TPeerGuard;
  friend class TWindowProcs;

  /// Place, parent and state of the control as parameters.
  TWindowParams MakeParams() const;
  /// Makes the window and attaches it; raises EOSError. To be called once, by the one who makes
  /// the peer, after construction: messages arrive in overridden procedures at once.
  void CreateHandle(const TWindowParams& params);
  /// Gives the new window what it takes from the control. What it sends meanwhile is not reported.
  virtual void Initialize() {}
  /// Lets messages of an inner window (made by the common control) pass through InnerProc.
  void AttachInner(HWND window);
  /// Nothing is painted until as many calls of ResumePainting; the last one asks for a whole paint.
  void PausePainting();
  void ResumePainting();

  /// All messages of the window. An override handles its own and gives the others to its ancestor.
  virtual LRESULT WindowProc(UINT message, WPARAM wParam, LPARAM lParam);
  /// All messages of an inner window. Root: keys, focus, mouse wheel and context menu count as
  /// those of the control; the rest goes to the inner window's own procedure.
  virtual LRESULT InnerProc(HWND window, UINT message, WPARAM wParam, LPARAM lParam);
  /// A WM_NOTIFY that an inner window sent to this window, before the common control sees it.
  virtual bool HandleInnerNotify(NMHDR& notification, LRESULT& result);
  /// The procedure of the common control, or the system's.
  LRESULT DefaultProc(UINT message, WPARAM wParam, LPARAM lParam);
  static LRESULT DefaultProcOf(HWND window, UINT message, WPARAM wParam, LPARAM lParam);

  /// Whether a message that came from elsewhere is one for TWinControl::HandleMessage. Root: all
  /// from WM_USER on for windows of our class; for common controls those beyond their own numbers.
  virtual bool IsPrivateMessage(UINT message) const;
  /// Whether the common control has a menu of its own, for when the program has none: edit fields.
  virtual bool HasSystemContextMenu() const { return false; }
  /// Whether the control paints the window.
  bool IsOwnClass() const noexcept { return !fSubclassed; }
  /// Whether the window is being made: nothing is reported to the control yet.
  bool IsCreating() const noexcept { return fCreating; }

  // --- conversion; each gives true if the window's own behaviour must not follow --------------
  // After false the peer lives. After true nothing may be assumed.

  /// Any mouse message, of this window or of an inner one.
  bool ReportMouse(UINT message, WPARAM wParam, LPARAM lParam, HWND inner = nullptr);
  /// Any key or character message. Takes away the characters of a key press that was handled;
  /// `wParam` becomes the character that the program puts in the place of a typed one.
  bool ReportKey(UINT message, WPARAM& wParam, HWND inner = nullptr);
  /// `other` is the window that loses or gets the keyboard: if it is one of this peer's, nothing
  /// is reported.
  bool ReportFocus(bool focused, HWND other);
  bool ReportContextMenu(LPARAM lParam);
  /// Tells the control where the window is.
  bool ReportBounds();
  bool ReportMessage(UINT message, WPARAM wParam, LPARAM lParam, LRESULT& result);

  /// Lets the control paint `clip` on a context, on a background of its colour.
  void PaintTo(HDC dc, const TRect& clip);
  /// The control's font as the system's; belongs to the peer.
  HFONT GetFontHandle() const noexcept {
    return fLink && fLink->Font ? fLink->Font->Get() : nullptr;
  }
  /// Brush of the control's colour; belongs to the peer, anew after ColorsChanged.
  HBRUSH GetColorBrush();
  /// 0x00BBGGRR of the control's text and background as they are now.
  TColor GetTextColor() const;
  TColor GetBackColor() const;
  /// The window in its parent's client area, or on the screen.
  TRect GetWindowBounds() const;
  /// What the system's theme is called that suits the colours: null is the plain one.
  virtual LPCWSTR GetThemeName(bool dark) const;
  /// Gives the window its theme, light or dark. Called after creation and when colours change.
  void ApplyTheme();
  /// Changes style bits and lets the frame follow.
  void ChangeStyle(DWORD remove, DWORD add);
  /// Lets the system ask for the size of the frame again.
  void FrameChanged();

 private:
  void Attach(HWND window, bool subclass);
  void Detach();
  bool HandleOwnPaint(UINT message, WPARAM wParam, LRESULT& result);
  void PaintInvalid();
  void PaintDarkEdge();
  bool HandleUserInput(UINT message, WPARAM& wParam, LPARAM lParam, LRESULT& result, HWND inner);
  bool HandleSetCursor(WPARAM wParam, LPARAM lParam);
  void HandleDensity();
  void DeliverPosted();
  void WindowDestroyed();
  void RevokeDropTarget();
  void HookParent(HWND parent);
  void UnhookParent();

  TWinControl& fControl;
  HWND fHandle = nullptr;
  std::shared_ptr<TWindowLink> fLink;
  std::vector<std::shared_ptr<TWindowLink>> fInner;
  HWND fHookedParent = nullptr;  // a foreign window that sends us notifications
  TUniqueHandle<TGdiObjectTraits<HBRUSH>> fBrush;
  TColor fBrushColor = 0;
  TCursor fCursor = crDefault;
  IDropTarget* fDropTarget = nullptr;
  TRect fAskedBounds;
  bool fSubclassed = false;
  bool fCreating = true;
  bool fSettingBounds = false;
  bool fTracksLeave = false;
  bool fDarkTheme = false;
  bool fIsShown = false;  // while painting pauses
  int fPaintPauses = 0;
  std::shared_ptr<const bool> fLife = std::make_shared<const bool>(true);
};

/// Peer of a control that paints itself.
class TPaintedPeer : public TWindowPeer {
 public:
  using TWindowPeer::TWindowPeer;
  void Create();
};

}  // namespace oak
