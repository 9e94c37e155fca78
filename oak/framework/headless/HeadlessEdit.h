// Edit fields of the headless desktop.
#pragma once

#include <functional>

#include "oak/framework/StdCtrls.h"
#include "oak/framework/headless/HeadlessPeer.h"
#include "oak/framework/headless/HeadlessTextField.h"

namespace oak {

/// The window of an edit control, a memo or a rich edit (which shows its text without formats).
class THeadlessEdit final : public THeadlessPeer, public IEditPeer {
 public:
  THeadlessEdit(THeadlessDesktop& desktop, TCustomEdit& edit);

  TString GetText() const override { return fField.GetText(); }
  void SetText(const TString& text) override;
  void GetSelection(int* start, int* end) const override;
  void SetSelection(int start, int end) override;
  void StyleChanged() override;
  bool LoadRichText(const std::vector<std::uint8_t>& data) override;

  void Paint(TCanvas& canvas, const TRect& clip) override;
  void OnMouse(TMouseEvent& event) override;
  void OnKey(TKeyEvent& event) override;
  void OnBoundsChanged() override { UpdateScroll(); }
  void OnScroll(TScrollBarKind kind, int position) override;
  void OnFocusChanged(bool focused) override;
  TCursor CursorAt(TPoint point) const override;

 private:
  void Changed();
  void UpdateScroll();
  TRect TextRect() const;

  TCustomEdit& fEdit;
  THeadlessTextField fField;
  bool fSelecting = false;
};

/// A small edit field within another window: the text of a row or node that is being renamed. It
/// tells its owner when the user is done with it; the owner destroys it then, in OnFinish or later.
class THeadlessEditBox final : public THeadlessWindow {
 public:
  /// Shown at once, with the keyboard and all of the text selected. `bounds` is in client pixels of
  /// `owner`. The keys go to the box first.
  THeadlessEditBox(THeadlessWindow& owner, const TRect& bounds, const TString& text);

  /// The user pressed Return (false), or Escape (true), or the keyboard went elsewhere (false).
  /// Called once; may destroy the box.
  std::function<void(bool cancel)> OnFinish;

  const TString& GetEditText() const noexcept { return fField.GetText(); }
  void SetEditText(const TString& text);
  /// -1 as the end: the end of the text.
  void SelectText(int start, int end);

  TRect GetFrame() const override { return {1, 1, 1, 1}; }
  void Paint(TCanvas& canvas, const TRect& clip) override;
  void OnMouse(TMouseEvent& event) override;
  void OnKey(TKeyEvent& event) override;
  void OnFocusChanged(bool focused) override;
  LRESULT Send(UINT message, WPARAM wParam, LPARAM lParam) override;

 private:
  void Finish(bool cancel);

  THeadlessTextField fField;
  bool fFinished = false;
};

}  // namespace oak
