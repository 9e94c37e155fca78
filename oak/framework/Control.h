// TControl: what all visible components have in common.
#pragma once

#include <memory>

#include "oak/framework/Component.h"
#include "oak/framework/ControlTypes.h"
#include "oak/framework/Graphics.h"

namespace oak {

class TWinControl;
class TPopupMenu;
class TCustomForm;

/// Tells whether a control still lives, after code that may have destroyed it. Cheap to copy.
class TLifeGuard {
 public:
  TLifeGuard() = default;
  explicit TLifeGuard(std::weak_ptr<const bool> life) : fLife(std::move(life)) {}
  bool IsAlive() const { return !fLife.expired(); }

 private:
  std::weak_ptr<const bool> fLife;
};

/// A component with a place, a look and a mouse. It lives in a parent control, which destroys it
/// with itself unless its owner did so before. Main thread only. Pixels are those of the monitor
/// that the control is shown on; GetCurrentPPI tells their density.
class TControl : public TComponent {
 public:
  explicit TControl(TComponent* owner = nullptr);
  ~TControl() override;

  TWinControl* GetParent() const noexcept { return fParent; }
  /// Moves the control into another parent; nil takes it off the screen.
  virtual void SetParent(TWinControl* parent);

  const TRect& GetBoundsRect() const noexcept { return fBounds; }
  int GetLeft() const noexcept { return fBounds.Left; }
  int GetTop() const noexcept { return fBounds.Top; }
  int GetWidth() const noexcept { return fBounds.Width(); }
  int GetHeight() const noexcept { return fBounds.Height(); }
  void SetLeft(int value) { SetBounds(value, GetTop(), GetWidth(), GetHeight()); }
  void SetTop(int value) { SetBounds(GetLeft(), value, GetWidth(), GetHeight()); }
  void SetWidth(int value) { SetBounds(GetLeft(), GetTop(), value, GetHeight()); }
  void SetHeight(int value) { SetBounds(GetLeft(), GetTop(), GetWidth(), value); }
  /// Moves and sizes in one step; the parent lays out its other children. Negative sizes are 0.
  virtual void SetBounds(int left, int top, int width, int height);
  virtual TRect GetClientRect() const;
  TPoint ClientToScreen(TPoint point) const;
  TPoint ScreenToClient(TPoint point) const;

  TAlign GetAlign() const noexcept { return fAlign; }
  virtual void SetAlign(TAlign value);
  TAnchors GetAnchors() const noexcept { return fAnchors; }
  void SetAnchors(TAnchors value);

  bool GetVisible() const noexcept { return fVisible; }
  virtual void SetVisible(bool value);
  void Show() { SetVisible(true); }
  void Hide() { SetVisible(false); }
  bool GetEnabled() const noexcept { return fEnabled; }
  virtual void SetEnabled(bool value);

  /// Caption or text of the control.
  virtual TString GetText() const { return fText; }
  virtual void SetText(const TString& value);
  TString GetCaption() const { return GetText(); }
  void SetCaption(const TString& value) { SetText(value); }

  /// The font; changing it ends ParentFont.
  TFont& GetFont() noexcept { return fFont; }
  const TFont& GetFont() const noexcept { return fFont; }
  void SetFont(const TFont& value);
  bool GetParentFont() const noexcept { return fParentFont; }
  virtual void SetParentFont(bool value);
  TColor GetColor() const noexcept { return fColor; }
  /// Background; ends ParentColor.
  virtual void SetColor(TColor value);
  bool GetParentColor() const noexcept { return fParentColor; }
  void SetParentColor(bool value);

  const TString& GetHint() const noexcept { return fHint; }
  void SetHint(const TString& value);
  bool GetShowHint() const noexcept { return fShowHint; }
  void SetShowHint(bool value);
  TCursor GetCursor() const noexcept { return fCursor; }
  void SetCursor(TCursor value);
  TPopupMenu* GetPopupMenu() const noexcept { return fPopupMenu; }
  void SetPopupMenu(TPopupMenu* value);
  TControlState GetControlState() const noexcept { return fControlState; }
  /// What an application style may change; default all.
  TStyleElements GetStyleElements() const noexcept { return fStyleElements; }
  void SetStyleElements(TStyleElements value);

  /// Pixels per inch of the window that the control lives in; 96 without one.
  int GetCurrentPPI() const noexcept { return fCurrentPPI; }
  /// A length given for 96 pixels per inch, in the control's pixels; and back.
  int ScaledPixels(int value) const { return MulDiv(value, fCurrentPPI, 96); }
  int UnScaledPixels(int value) const { return MulDiv(value, 96, fCurrentPPI); }
  /// Sizes become m/d of what they were: the window moved to a monitor of another density.
  /// GetCurrentPPI has the new value already. An override calls its ancestor.
  virtual void ChangeScale(int m, int d);

  /// Asks for a paint, later.
  virtual void Invalidate();
  virtual void Update();
  void Repaint();
  void BringToFront();
  void SendToBack();

  /// The form that the control stands on, or nil.
  TCustomForm* GetParentForm() const;
  TLifeGuard GetLifeGuard() const { return TLifeGuard(fLife); }

  /// Free for the application.
  std::intptr_t Tag = 0;

  TNotifyEvent OnClick;
  TNotifyEvent OnDblClick;
  TMouseHandler OnMouseDown;
  TMouseHandler OnMouseUp;
  TMouseMoveHandler OnMouseMove;
  TNotifyEvent OnMouseEnter;
  TNotifyEvent OnMouseLeave;
  /// Handled keeps the wheel from the parent and from the window's own scrolling.
  TMouseWheelHandler OnMouseWheel;
  /// Asks for a context menu; (-1, -1) with the keyboard. Handled keeps the own menu away.
  TContextPopupHandler OnContextPopup;
  TNotifyEvent OnResize;

 protected:
  friend class TWinControl;
  friend class TCustomForm;

  // What the user did. An override calls its ancestor, which fires the event.
  virtual void Click();
  virtual void DblClick();
  virtual void MouseDown(TMouseButton button, TShiftState shift, int x, int y);
  virtual void MouseUp(TMouseButton button, TShiftState shift, int x, int y);
  virtual void MouseMove(TShiftState shift, int x, int y);
  virtual void MouseEnter();
  virtual void MouseLeave();
  /// True if the wheel was used up.
  virtual bool DoMouseWheel(TShiftState shift, int delta, TPoint screen);
  virtual void DoContextPopup(TPoint point, bool& handled);
  virtual void Resize();

  // Something of the control or of its parent has changed.
  virtual void FontChanged();
  virtual void ColorChanged();
  virtual void VisibleChanging() {}
  virtual void TextChanged() {}
  virtual void EnabledChanged();
  virtual void ParentFontChanged();
  virtual void ParentColorChanged();
  /// The application's style or the system's colours changed: ask for colours anew.
  virtual void StyleChanged();
  virtual void UpdateStyleElements();
  virtual void RequestAlign();
  void Notification(TComponent* component, TOperation operation) override;

  /// The place was changed, by whomever: lays out and fires OnResize if the size differs.
  void BoundsChanged(const TRect& former);
  void IncludeState(TControlStateFlag flag) { fControlState.Include(flag); }
  void ExcludeState(TControlStateFlag flag) { fControlState.Exclude(flag); }
  void SetCurrentPPI(int value) { fCurrentPPI = value; }
  bool IsDestroying() const { return GetComponentState().Contains(csDestroying); }

 private:
  /// The client area has another size.
  virtual void ClientChanged() {}
  /// Whether a foreign window holds the control, and sizes it.
  virtual bool IsPlacedByHost() const { return false; }
  bool IsBeingAligned() const;
  void InheritFont();
  void RememberAnchors();
  TRect AnchoredBounds(TSize parentSize) const;
  void RankByPlace();

  TWinControl* fParent = nullptr;
  TRect fBounds;
  TRect fAnchorBase;        // bounds, and the parent's client size, when they were last set
  TSize fAnchorParentSize;  // by the program
  TString fText;
  TString fHint;
  TFont fFont;
  TColor fColor = clBtnFace;
  int fCurrentPPI = 96;
  int fAlignRank = 0;  // place among the siblings of the same alignment
  TControlState fControlState;
  TPopupMenu* fPopupMenu = nullptr;
  std::shared_ptr<const bool> fLife = std::make_shared<const bool>(true);
  TStyleElements fStyleElements{seFont, seClient, seBorder};
  TAnchors fAnchors{akLeft, akTop};
  TCursor fCursor = crDefault;
  TAlign fAlign = alNone;
  bool fVisible = true;
  bool fEnabled = true;
  bool fParentFont = true;
  bool fParentColor = true;
  bool fAdapting = false;  // font and size follow the parent or the density, not the program
  bool fShowHint = false;
};

}  // namespace oak
