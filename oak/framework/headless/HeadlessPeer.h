// The headless window of a control.
#pragma once

#include "oak/framework/WinControl.h"
#include "oak/framework/headless/HeadlessWindow.h"

namespace oak {

/// Base of the peers of controls: a window that passes what happens to its control first and does
/// its own part then. Lists and trees override the hooks of THeadlessWindow; Paint, OnMouse, OnKey,
/// OnBoundsChanged and OnScroll are the usual ones. A window that wants the keyboard when it is
/// clicked calls SetFocus in its OnMouse. What has no words on a canvas is drawn as text, so that
/// it is seen in text pictures too: ">" and "v" for buttons that expand and collapse, "[x]", "[ ]"
/// and
/// "[-]" for check boxes; a selected row is filled with clHighlight (clBtnFace without the focus).
///
///     class THeadlessListPeer final : public THeadlessPeer, public IListViewPeer { ... };
class THeadlessPeer : public THeadlessWindow {
 public:
  /// Takes bounds, text, font, cursor and enabled state over from the control, whose parent (or
  /// parent window) has its window. The window is invisible until SetVisible.
  THeadlessPeer(THeadlessDesktop& desktop, TWinControl& control,
                THeadlessKind kind = THeadlessKind::Child);

  TWinControl* GetControlOrNil() const override { return &fControl; }
  TWinControl& GetControl() const noexcept { return fControl; }

  /// Fills with the control's colour and lets the control paint.
  void Paint(TCanvas& canvas, const TRect& clip) override;
  /// Two pixels if the control's BorderStyle is bsSingle.
  TRect GetFrame() const override;
  void OnFocusChanged(bool focused) override;
  void OnCaptureLost() override;
  void OnMessage(TMessage& message) override;
  void RequestContextMenu(TPoint screen) override;
  void DispatchMouse(TMouseEvent& event) override;
  bool DispatchKey(TKeyEvent& event) override;

 protected:
  void BoundsMoved(bool sizeChanged) override;
  /// The control's colour, or `fallback` if it is clDefault or clNone.
  TColor BackgroundColor(TColor fallback = clWindow) const;

 private:
  TWinControl& fControl;
};

/// Made by the files of the list and of the tree.
std::unique_ptr<IListViewPeer> CreateHeadlessListPeer(THeadlessDesktop& desktop,
                                                      TCustomListView& view);
std::unique_ptr<ITreeViewPeer> CreateHeadlessTreePeer(THeadlessDesktop& desktop,
                                                      TCustomTreeView& view);

}  // namespace oak
