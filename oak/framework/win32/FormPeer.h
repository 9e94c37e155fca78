// The top-level window of a form.
#pragma once

#include "oak/framework/Forms.h"
#include "oak/framework/win32/WindowPeer.h"

namespace oak {

class TFormPeer final : public TWindowPeer, public IFormPeer {
 public:
  explicit TFormPeer(TCustomForm& form);
  ~TFormPeer() override;
  void Create();

  void SetVisible(bool visible) override;
  void SetBounds(const TRect& bounds) override;
  void ColorsChanged() override;
  void SetWindowState(TWindowState state) override;
  void SetCaption(const TString& caption) override { SetText(caption); }
  void SetIcon(const TBitmap* icon) override;
  void Activate() override;
  void SetMenu(TMenu* menu) override;
  void RunModal(const std::function<bool()>& until) override;

 protected:
  LRESULT WindowProc(UINT message, WPARAM wParam, LPARAM lParam) override;
  void Initialize() override;

 private:
  bool HandleFormMessage(UINT message, WPARAM wParam, LPARAM lParam, LRESULT& result);
  void HandleActivate(bool active);
  void HandleSize(WPARAM kind);
  void HandleDensityChange(int density, const RECT& suggested);
  void HandleSettings(UINT message, LPARAM lParam);

  TCustomForm& fForm;
  TOwnedIcon fIcon;
};

}  // namespace oak
