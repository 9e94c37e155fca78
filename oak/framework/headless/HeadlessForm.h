// A top-level window of the headless desktop.
#pragma once

#include "oak/framework/Forms.h"
#include "oak/framework/headless/HeadlessPeer.h"

namespace oak {

/// The window of a form: a frame with caption, a menu bar if the form has a menu, states, a modal
/// loop. A form with a parent is a plain child without a frame.
class THeadlessForm final : public THeadlessPeer, public IFormPeer {
 public:
  THeadlessForm(THeadlessDesktop& desktop, TCustomForm& form);

  void SetVisible(bool visible) override;
  void SetWindowState(TWindowState state) override;
  void SetCaption(const TString& caption) override { SetText(caption); }
  void SetIcon(const TBitmap*) override {}
  void Activate() override;
  void SetMenu(TMenu* menu) override;
  void RunModal(const std::function<bool()>& until) override;
  int GetPixelsPerInch() const override { return fPixelsPerInch; }

  TCustomForm& GetForm() const noexcept { return fForm; }
  TWindowState GetWindowState() const noexcept { return fState; }
  /// The user minimises, maximises or restores the window.
  void UserWindowState(TWindowState state);
  /// Tells the form if the monitor that it is on has another density than before.
  void CheckDensity();
  TMenu* GetMenu() const noexcept { return fMenu; }
  /// Rectangle of an entry of the menu bar, in pixels of the window.
  TRect GetMenuBarRect(int entry) const;

  TRect GetFrame() const override;
  bool IsMinimized() const override { return fState == wsMinimized; }
  int GetWindowPPI() const override;
  void OnActivated(bool active) override;
  void OnCloseRequest() override { fForm.HandleCloseRequest(); }
  void OnFrameMouse(const TMouseEvent& event, TPoint inWindow) override;

 protected:
  void BoundsMoved(bool sizeChanged) override;

 private:
  bool HasFrame() const;
  int GetMenuBarHeight() const;

  TCustomForm& fForm;
  TWindowState fState = wsNormal;
  TRect fRestored;  // bounds of wsNormal while the state is another
  TMenu* fMenu = nullptr;
  int fPixelsPerInch;
  bool fTellingDensity = false;
};

}  // namespace oak
