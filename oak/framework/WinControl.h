// TWinControl: a control with a window of its own; TCustomControl paints itself.
#pragma once

#include <memory>
#include <vector>

#include "oak/base/Ref.h"
#include "oak/framework/Control.h"

struct IDropTarget;

namespace oak {

class IControlPeer;
class TCanvas;
struct TGuardedControl;

/// A control with a window, which is made when it is first needed and may be made anew at any time
/// without loss: all that matters lives in the control.
class TWinControl : public TControl {
 public:
  explicit TWinControl(TComponent* owner = nullptr);
  ~TWinControl() override;

  // --- the window ---------------------------------------------------------------------------
  bool HandleAllocated() const noexcept { return fPeer != nullptr; }
  /// The window, made now if there is none. Raises EInvalidOperation without a parent window.
  HWND GetHandle();
  void HandleNeeded();
  /// Destroys the window and makes it anew if it was there; children follow.
  void RecreateWnd();
  /// A window of a foreign program part in which the control is to live; used without Parent.
  HWND GetParentWindow() const noexcept { return fParentWindow; }
  void SetParentWindow(HWND value);
  IControlPeer* GetPeer() const noexcept { return fPeer.get(); }

  void SetParent(TWinControl* parent) override;
  void SetBounds(int left, int top, int width, int height) override;
  TRect GetClientRect() const override;
  TSize GetClientSize() const { return GetClientRect().Size(); }
  void SetVisible(bool value) override;
  void SetEnabled(bool value) override;
  void SetText(const TString& value) override;
  void Invalidate() override;
  void InvalidateRect(const TRect& rect);
  void Update() override;
  /// Whether the control and all its parents are visible and it has a window.
  bool IsShowing() const;

  // --- children ------------------------------------------------------------------------------
  int GetControlCount() const noexcept { return static_cast<int>(fControls.size()); }
  TControl* GetControl(int index) const;
  /// True for the control itself and all that lives in it.
  bool ContainsControl(const TControl* control) const;
  /// Child at a point of the client area, topmost first; nil if none.
  TControl* ControlAtPos(TPoint point) const;
  void DisableAlign() { ++fAlignLevel; }
  void EnableAlign();
  /// Lays out the children by Align and Anchors.
  void Realign();

  // --- focus and keyboard --------------------------------------------------------------------
  bool CanFocus() const;
  /// Gives the keyboard to the control. Raises EInvalidOperation if it can't have it.
  virtual void SetFocus();
  bool Focused() const;
  /// -1 without a parent.
  int GetTabOrder() const noexcept { return fTabOrder; }
  /// Place among the windowed controls of the parent, 0 first; the others make room.
  void SetTabOrder(int value);
  bool GetTabStop() const noexcept { return fTabStop; }
  void SetTabStop(bool value) { fTabStop = value; }
  /// The next control in tab order after `current`, by tab stops only if so asked.
  TWinControl* FindNextControl(TWinControl* current, bool forward, bool tabStopsOnly) const;
  void SelectNext(TWinControl* current, bool forward);
  bool GetMouseCapture() const;
  void SetMouseCapture(bool value);

  // --- messages ------------------------------------------------------------------------------
  /// Queues a message that reaches WndProc after the present handler; dropped if the window dies.
  /// Without a window nothing happens and the result is false.
  bool PostMessage(UINT message, WPARAM wParam = 0, LPARAM lParam = 0);
  /// Runs a message through WndProc at once.
  LRESULT Perform(UINT message, WPARAM wParam = 0, LPARAM lParam = 0);

  bool GetDoubleBuffered() const noexcept { return fDoubleBuffered; }
  virtual void SetDoubleBuffered(bool value);
  TBorderStyle GetBorderStyle() const noexcept { return fBorderStyle; }
  virtual void SetBorderStyle(TBorderStyle value);

  /// Makes the window a target of OLE drag and drop, also when it is made anew; nil ends it. The
  /// target is counted until then, or until BeginDestroy.
  void SetDropTarget(IDropTarget* target);

  void ChangeScale(int m, int d) override;

  TKeyHandler OnKeyDown;
  TKeyHandler OnKeyUp;
  TKeyPressHandler OnKeyPress;
  TNotifyEvent OnEnter;
  TNotifyEvent OnExit;

  // --- for peers only ------------------------------------------------------------------------
  // Each may end with the control destroyed; see TLifeGuard.
  void HandleMouse(TMouseEvent& event);
  void HandleKey(TKeyEvent& event);
  void HandleFocus(bool focused);
  /// The window lost the mouse otherwise than by SetMouseCapture or the release of the button.
  void HandleCaptureLost();
  /// The window has this place now, whoever moved it.
  void HandleBounds(const TRect& bounds);
  void HandlePaint(TCanvas& canvas, const TRect& clip);
  /// A request for a context menu at a screen point; (-1, -1) with the keyboard.
  void HandleContextMenu(TPoint screen);
  void HandleMessage(TMessage& message);
  /// The text that a hint shows at a client point; empty for none. May narrow `area` to the part of
  /// the window that it holds for.
  TString HandleHint(TPoint point, TRect& area);
  /// The window is about to go though the control did not ask for it.
  void HandleWindowLost();
  /// The window moved to pixels of another density. Ignored by controls in others, which follow.
  virtual void HandlePixelsPerInch(int value);
  void HandleSystemColors();

 protected:
  /// Makes the peer of the control's kind; overrides don't call the ancestor.
  virtual std::unique_ptr<IControlPeer> CreatePeer();
  /// Makes the window and pushes the state to it. An override calls its ancestor first.
  virtual void CreateWnd();
  /// Takes the state out of the window and destroys it. An override calls its ancestor last.
  virtual void DestroyWnd();
  /// The window is being destroyed; called from DestroyWnd and when the system does it.
  virtual void WMDestroy() {}
  /// Destroys the window, those of the children first; nothing without one.
  void DestroyHandle();
  /// Starts the end of the control: csDestroying, the window goes, the parent lets go. A class that
  /// overrides CreatePeer, DestroyWnd or WMDestroy calls it first in its destructor, since later
  /// the overrides are out of reach. More calls do nothing.
  void BeginDestroy() noexcept;
  /// Messages of PostMessage and Perform pass here, and those of the system that a widget set hands
  /// on (menus of the shell). The root ignores them.
  virtual void WndProc(TMessage& message);

  virtual void KeyDown(std::uint16_t& key, TShiftState shift);
  virtual void KeyUp(std::uint16_t& key, TShiftState shift);
  virtual void KeyPress(char16_t& key);
  /// Whether the control takes the tab, return or escape key itself, before form navigation.
  virtual bool WantsKey(std::uint16_t key, TShiftState shift);
  /// Tab, Return, Escape or Alt with a letter, which the focused control does not want, before its
  /// KeyDown: first to the form, from there down to every control until one gives true. For default
  /// buttons and the like.
  virtual bool DialogKey(std::uint16_t key, TShiftState shift);
  virtual void DoEnter();
  virtual void DoExit();
  /// The window itself got or lost the keyboard, also when the user went to another program.
  virtual void WMSetFocus() {}
  virtual void WMKillFocus() {}
  /// The mouse was taken away in the middle of a press: end what it had begun.
  virtual void CaptureLost() {}
  /// Whether a press of the left button keeps the mouse until its release. For controls whose
  /// window does not see to it: TCustomControl.
  virtual bool CapturesMouse() const { return false; }
  /// Default: DoContextPopup, then the popup menu, then the parent's.
  virtual void WMContextMenu(TPoint screen);
  /// A side button of the mouse: -1 back, 1 forward. True if used.
  virtual bool WMXButtonDown(int direction);
  virtual void WMWindowPosChanging(TRect& bounds);
  virtual void Paint(TCanvas& canvas, const TRect& clip);
  virtual TString GetHintText(TPoint point, TRect& area);
  virtual void AlignControls();

  void SetVisibleFlagOnly(bool value);
  void FontChanged() override;
  void ColorChanged() override;
  void EnabledChanged() override;
  void UpdateStyleElements() override;
  void StyleChanged() override;
  /// Whether the window is made anew at this moment.
  bool IsRecreating() const { return GetControlState().Contains(csRecreating); }

 private:
  friend class TControl;
  friend class TCustomForm;

  void InsertControl(TControl* control);
  void RemoveControl(TControl* control);
  std::vector<TGuardedControl> GuardedChildren() const;
  /// For the children at this moment that still live when their turn comes; ends with the control.
  template <class TAction>
  void ForEachChild(const TAction& action);
  template <class TAction>
  void ForEachWindow(const TAction& action);
  void SetZOrder(TControl* control, bool top);

  bool MayShow() const;
  void UpdateShowing();
  void PushState();
  void RestackWindow();
  void MarkRecreating(bool value);
  void PresetDensity(int value);
  void TakeHostDensity();

  bool IsRoot() const;
  void AlignOne(TControl& control, TRect& rest);
  std::vector<TGuardedControl> ChildrenByAlign() const;
  void ClientChanged() override;
  bool IsPlacedByHost() const override { return fParentWindow && !GetParent(); }

  void RemoveFocus();
  void CollectTabOrder(std::vector<TWinControl*>& list) const;
  std::vector<TWinControl*> TabList() const;
  void RenumberTabs(const std::vector<TWinControl*>& list);

  void ShowPopupMenu(TPopupMenu& menu, TPoint screen);
  void MousePressed(TMouseEvent& event);
  void MouseReleased(TMouseEvent& event);
  void MouseMoved(const TMouseEvent& event);
  void MouseLeft();
  void MouseWheel(TMouseEvent& event);
  void KeyPressedDown(TKeyEvent& event);
  bool RunShortCut(std::uint16_t key, TShiftState shift);
  bool RunDialogKey(std::uint16_t key, TShiftState shift);

  std::unique_ptr<IControlPeer> fPeer;
  std::vector<TControl*> fControls;  // in z-order, topmost last
  HWND fParentWindow = nullptr;
  Ref<IDropTarget> fDropTarget;
  std::shared_ptr<void> fStyleWatch;   // of a control in a foreign window
  TSize fAlignedSize;                  // client size at the last layout
  const TControl* fAligned = nullptr;  // the child that is being laid out
  int fAlignLevel = 0;
  int fNextAlignRank = 0;
  int fTabOrder = -1;
  bool fTabStop = false;
  bool fDoubleBuffered = false;
  bool fAligning = false;
  bool fAlignPending = false;
  bool fShown = false;  // what the window was told
  bool fMouseInside = false;
  bool fChangingCapture = false;
  TBorderStyle fBorderStyle = bsNone;
};

/// A control that paints itself.
class TCustomControl : public TWinControl {
 public:
  using TWinControl::TWinControl;
  /// Fired by Paint.
  std::function<void(TObject* Sender, TCanvas& Canvas, const TRect& Clip)> OnPaint;

 protected:
  bool CapturesMouse() const override { return true; }
  void Paint(TCanvas& canvas, const TRect& clip) override;
};

/// A control that holds others, with an optional caption and edge.
class TCustomPanel : public TCustomControl {
 public:
  explicit TCustomPanel(TComponent* owner = nullptr);
  TAlignment GetAlignment() const noexcept { return fAlignment; }
  void SetAlignment(TAlignment value);

 protected:
  void TextChanged() override;
  void Paint(TCanvas& canvas, const TRect& clip) override;

 private:
  TAlignment fAlignment = taCenter;
};
using TPanel = TCustomPanel;

}  // namespace oak
