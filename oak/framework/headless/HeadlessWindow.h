// A window of the headless desktop: place, order, focus, invalid area, scroll bars, messages.
#pragma once

#include <array>
#include <cstdint>
#include <memory>
#include <utility>
#include <vector>

#include "oak/base/Ref.h"
#include "oak/framework/Control.h"
#include "oak/framework/WidgetSet.h"
#include "oak/framework/headless/CanvasHeadless.h"
#include "oak/platform/shell_api.h"

namespace oak {

class THeadlessDesktop;

/// One scroll bar. It is shown when `Range` exceeds `Page`; positions go from 0 to Range - Page.
struct THeadlessScroll {
  int Position = 0;
  int Page = 0;
  int Range = 0;
  int Line = 1;  ///< Step of an arrow or of a notch of the wheel, a third of it.
  bool IsShown() const { return Range > Page && Page >= 0; }
  int MaxPosition() const { return Range > Page ? Range - Page : 0; }
  friend bool operator==(const THeadlessScroll&, const THeadlessScroll&) = default;
};

/// How a window stands among the others.
enum class THeadlessKind : std::uint8_t {
  Child,     ///< Within the client area of its parent.
  TopLevel,  ///< Has a frame of its own and can be active.
  Popup      ///< Top-level, above all others, never active: lists of combos, hints.
};

/// A window. It has no truth about the control behind it; a class that has no control (an in-place
/// edit, a dropped list) derives from this one, peers of controls from THeadlessPeer. The object is
/// the window: its destructor takes it and its children's places off the desktop, and what was
/// queued for it is dropped. Main thread.
///
/// Any hook may run code of the program, which may destroy the window: take Guard() before a call
/// out, test it afterwards.
class THeadlessWindow : public virtual IControlPeer {
 public:
  /// `parent` is nil for top-level windows. New windows are invisible.
  THeadlessWindow(THeadlessDesktop& desktop, THeadlessKind kind, THeadlessWindow* parent,
                  const TRect& bounds);
  ~THeadlessWindow() override;
  THeadlessWindow(const THeadlessWindow&) = delete;
  THeadlessWindow& operator=(const THeadlessWindow&) = delete;

  // --- IControlPeer ----------------------------------------------------------
  HWND GetHandle() const override { return fHandle; }
  void SetBounds(const TRect& bounds) override;
  TRect GetClientRect() const override;
  TPoint ClientToScreen(TPoint point) const override;
  TPoint ScreenToClient(TPoint point) const override;
  int GetPixelsPerInch() const override { return GetWindowPPI(); }
  void SetVisible(bool visible) override;
  void SetEnabled(bool enabled) override;
  void SetText(const TString& text) override;
  void SetFont(const TFont& font) override;
  void ColorsChanged() override { Invalidate(nullptr); }
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

  // --- the window on the desktop ---------------------------------------------
  THeadlessDesktop& GetDesktop() const noexcept { return fDesktop; }
  THeadlessKind GetKind() const noexcept { return fKind; }
  /// nil for top-level windows and for those whose parent has gone.
  THeadlessWindow* GetParentWindow() const noexcept { return fParent; }
  /// Bottom first.
  const std::vector<THeadlessWindow*>& GetChildWindows() const noexcept { return fChildren; }
  /// The top-level window that it stands in; itself if it is one.
  THeadlessWindow* GetRootWindow();
  /// The control behind it; nil for parts of other windows and foreign ones.
  virtual TWinControl* GetControlOrNil() const { return nullptr; }
  /// With its frame, in client pixels of the parent, of the screen for top-level windows.
  const TRect& GetBounds() const noexcept { return fBounds; }
  TRect GetScreenRect() const;
  bool GetVisible() const noexcept { return fVisible; }
  /// Visible with all its parents, and no part of a minimised form.
  bool IsShowing() const;
  bool GetEnabled() const noexcept { return fEnabled; }
  virtual bool IsMinimized() const { return false; }
  /// Enabled with all its parents.
  bool IsUsable() const;
  const TString& GetWindowText() const noexcept { return fText; }
  const TFont& GetFont() const noexcept { return fFont; }
  TCursor GetCursor() const noexcept { return fCursor; }
  IDropTarget* GetDropTarget() const noexcept { return fDropTarget.Get(); }
  /// Density of the monitor of its top-level window.
  virtual int GetWindowPPI() const;
  /// A length for 96 pixels per inch, in the window's pixels.
  int Scaled(int value) const { return MulDiv(value, GetWindowPPI(), 96); }
  /// Height of a line of the window's font.
  int GetLineHeight() const;
  TLifeGuard Guard() const { return TLifeGuard(fLife); }

  /// What waits to be painted, in client pixels; empty if nothing.
  const TRect& GetInvalidRect() const noexcept { return fInvalid; }
  /// Asks for a paint of the window and of all in it.
  void InvalidateAll();
  /// How often the window was painted, and what it drew last.
  int GetPaintCount() const noexcept { return fPaintCount; }
  const std::vector<TDrawOperation>& GetDrawing() const noexcept { return fDrawing; }
  /// Paints the window, not its children, if something is invalid. The desktop calls it.
  void PaintNow();

  const THeadlessScroll& GetScrollInfo(TScrollBarKind kind) const {
    return fScroll[static_cast<std::size_t>(kind)];
  }
  /// Where a bar stands, in pixels of the window with its frame; empty if not shown.
  TRect GetScrollBarRect(TScrollBarKind kind) const;
  /// Ends of the thumb of a bar that stands there, in the same pixels.
  std::pair<int, int> ThumbOf(TScrollBarKind kind, const TRect& bar) const;

  // --- hooks: overridden by kinds of windows ---------------------------------
  /// Draws the client area, in client pixels; nothing is kept from what was drawn there before.
  virtual void Paint(TCanvas& canvas, const TRect& clip);
  /// The window's own behaviour for a mouse event; a control's handlers had their turn and have not
  /// set Handled. Positions are client pixels (screen pixels for the wheel).
  virtual void OnMouse(TMouseEvent& event);
  /// Likewise for keys; Handled is set if it did something.
  virtual void OnKey(TKeyEvent& event);
  /// After the size or place changed, and after the density changed. Layout only, no call out.
  virtual void OnBoundsChanged() {}
  /// Font, visibility or enabled state changed. Layout only, no call out.
  virtual void OnStateChanged() {}
  virtual void OnFocusChanged(bool focused);
  /// The user ended the capture otherwise, or another window took it.
  virtual void OnCaptureLost() {}
  /// The window became or ceased to be the active one.
  virtual void OnActivated(bool /*active*/) {}
  /// A mouse event on the frame; `inWindow` counts from its corner.
  virtual void OnFrameMouse(const TMouseEvent& /*event*/, TPoint /*inWindow*/) {}
  /// The user wants the window to close.
  virtual void OnCloseRequest() {}
  /// The user moved a scroll bar to `position`, already within the range. The root sets it.
  virtual void OnScroll(TScrollBarKind kind, int position);
  /// A timer of StartTimer is due.
  virtual void OnTimerTick(int id);
  /// A message of Post or Send.
  virtual void OnMessage(TMessage& message);
  /// Pixels of the frame around the client area, without scroll bars: left, top, right, bottom.
  virtual TRect GetFrame() const { return {}; }
  /// The pointer's shape at a client point.
  virtual TCursor CursorAt(TPoint point) const;
  /// Gives a place in client pixels for the context menu that the keyboard asks for.
  virtual void RequestContextMenu(TPoint screen);

  // --- the way of input: the desktop calls these -----------------------------
  /// First the control's handlers, then the window's own behaviour.
  virtual void DispatchMouse(TMouseEvent& event);
  /// True unless the control took the key: a character may follow.
  virtual bool DispatchKey(TKeyEvent& event);

 protected:
  /// Sets a bar's state, limits the position and repaints. The client area may change its size by
  /// it: OnBoundsChanged is not called.
  void SetScrollInfo(TScrollBarKind kind, THeadlessScroll info);
  /// Moves a bar to a position as the user would: limits it and calls OnScroll if it changed.
  void ScrollTo(TScrollBarKind kind, int position);
  /// Starts or restarts a timer of the window, 1 or more milliseconds; it ticks until it is
  /// stopped.
  void StartTimer(int id, unsigned milliseconds);
  void StopTimer(int id);
  bool HoldsThumb() const noexcept { return fThumbGrip >= 0; }
  /// Place and size as the desktop knows them, without telling anybody.
  void PlaceQuietly(const TRect& bounds) noexcept { fBounds = bounds; }
  /// The new place was set; tells the control.
  virtual void BoundsMoved(bool sizeChanged);

 private:
  friend class THeadlessDesktop;
  /// Whether the event belongs to a scroll bar; `inWindow` counts from the frame's corner.
  bool ScrollBarMouse(const TMouseEvent& event, TPoint inWindow);
  void PressScrollBar(TScrollBarKind kind, const TRect& bar, TPoint point);
  void DragThumb(TPoint point);
  void KeepDrawing(std::vector<TDrawOperation> drawn, const TRect& clip, bool all);

  THeadlessDesktop& fDesktop;
  HWND fHandle;
  THeadlessKind fKind;
  THeadlessWindow* fParent = nullptr;
  HWND fLastFocus = nullptr;  // which window in it had the focus when it ceased to be active
  std::vector<THeadlessWindow*> fChildren;
  TRect fBounds;
  TRect fInvalid;
  TString fText;
  TFont fFont;
  TCursor fCursor = crDefault;
  bool fVisible = false;
  bool fEnabled = true;
  bool fPainting = false;
  int fPaintCount = 0;
  int fThumbGrip = -1;  // where the thumb is held, from its start; -1: it isn't
  TScrollBarKind fThumbKind = sbVertical;
  std::size_t fFullSize = 0;  // operations of the last full paint
  std::array<THeadlessScroll, 2> fScroll;
  Ref<IDropTarget> fDropTarget;
  std::vector<TDrawOperation> fDrawing;
  std::shared_ptr<const bool> fLife = std::make_shared<const bool>(true);
};

}  // namespace oak
