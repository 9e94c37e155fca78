// Combo boxes of the headless desktop.
#pragma once

#include <memory>

#include "oak/framework/StdCtrls.h"
#include "oak/framework/headless/HeadlessPeer.h"
#include "oak/framework/headless/HeadlessTextField.h"

namespace oak {

/// The window of a combo box: a field that is typed in, or that only shows the choice if the
/// control is read-only, a button, and a list that drops below.
class THeadlessCombo final : public THeadlessPeer, public IComboPeer {
 public:
  THeadlessCombo(THeadlessDesktop& desktop, TCustomComboBoxEx& combo);
  ~THeadlessCombo() override;

  void ItemsChanged() override;
  void SetItemIndex(int index) override;
  void SetDroppedDown(bool dropped) override;
  bool GetDroppedDown() const override { return fList != nullptr; }
  TString GetText() const override { return fField.GetText(); }
  void SetText(const TString& text) override;
  void SelectText(int start, int end) override;
  void ImagesChanged() override { Invalidate(nullptr); }
  HWND GetEditHandle() const override { return fCombo.GetReadOnly() ? nullptr : GetHandle(); }

  TCustomComboBoxEx& GetCombo() const noexcept { return fCombo; }
  /// Rectangle of the button, in client pixels.
  TRect GetButtonRect() const;
  /// The dropped list, or nil, and a row of it in screen pixels.
  THeadlessWindow* GetList() const;
  TRect GetListRowRect(int index) const;

  TRect GetFrame() const override { return {1, 1, 1, 1}; }
  void Paint(TCanvas& canvas, const TRect& clip) override;
  void OnMouse(TMouseEvent& event) override;
  void OnKey(TKeyEvent& event) override;
  void OnFocusChanged(bool focused) override;
  void OnCaptureLost() override;
  void OnStateChanged() override;

 private:
  class TList;
  void Drop();
  void CloseUp();
  void Choose(int index);
  void ListKey(TKeyEvent& event);
  void ListMouse(TMouseEvent& event);
  TRect TextRect() const;

  TCustomComboBoxEx& fCombo;
  THeadlessTextField fField;
  std::unique_ptr<TList> fList;
};

}  // namespace oak
