// What the headless windows of lists and trees have in common: a label that is edited in place.
#pragma once

#include <algorithm>
#include <memory>
#include <optional>
#include <utility>

#include "oak/framework/headless/HeadlessEdit.h"
#include "oak/framework/headless/HeadlessPeer.h"

namespace oak {

/// A window of rows, one of whose texts may be open in a box. `TItemsPeer` is the interface of the
/// rows, `TView` the control: it is told the text when the box closes (HandleEndEdit).
template <class TItemsPeer, class TView>
class THeadlessLabelPeer : public THeadlessPeer, public TItemsPeer {
 public:
  ~THeadlessLabelPeer() override {
    if (fEdit) fEdit->OnFinish = nullptr;
  }

  void EndEdit(bool cancel) override {
    if (!fEdit) return;
    const std::unique_ptr<THeadlessEditBox> box = std::move(fEdit);
    box->OnFinish = nullptr;
    std::optional<TString> text;
    if (!cancel) text = box->GetEditText();
    const auto guard = Guard();
    Invalidate(&box->GetBounds());
    if (box->HasFocus()) SetFocus();
    if (guard.IsAlive()) fView.HandleEndEdit(std::move(text));
  }

  HWND GetEditHandle() const override { return fEdit ? fEdit->GetHandle() : nullptr; }
  TString GetEditText() const override { return fEdit ? fEdit->GetEditText() : TString(); }
  void SetEditText(const TString& text) override {
    if (fEdit) fEdit->SetEditText(text);
  }
  void SelectEditText(int start, int end) override {
    if (fEdit) fEdit->SelectText(start, end);
  }

  /// The box that is open, or nil. For tests.
  THeadlessEditBox* GetEdit() const noexcept { return fEdit.get(); }

 protected:
  THeadlessLabelPeer(THeadlessDesktop& desktop, TView& view)
      : THeadlessPeer(desktop, view), fView(view) {}

  /// Opens the box over `label`, in client pixels. Getting the keyboard calls out: `isWanted` is
  /// asked afterwards, and only if the window still lives. False if nothing is edited then.
  template <class TIsWanted>
  bool OpenEdit(const TRect& label, const TString& text, const TIsWanted& isWanted) {
    const auto guard = Guard();
    TRect bounds = label;
    bounds.Right = std::max(bounds.Right, bounds.Left + Scaled(60));
    auto box = std::make_unique<THeadlessEditBox>(*this, bounds, text);
    if (!guard.IsAlive()) return false;
    fEdit = std::move(box);
    fEdit->OnFinish = [this](bool cancel) { EndEdit(cancel); };
    if (isWanted()) return true;
    EndEdit(true);
    return false;
  }

  TView& fView;
  std::unique_ptr<THeadlessEditBox> fEdit;
};

}  // namespace oak
