// The window of a combo box with images.
#pragma once

#include "oak/framework/StdCtrls.h"
#include "oak/framework/win32/WindowPeer.h"

namespace oak {

class TComboPeer final : public TWindowPeer, public IComboPeer {
 public:
  explicit TComboPeer(TCustomComboBoxEx& combo);
  void Create();

  void SetVisible(bool visible) override;
  void SetBounds(const TRect& bounds) override;
  void SetText(const TString& text) override;
  void ColorsChanged() override;
  bool SetFocus() override;
  void ItemsChanged() override;
  void SetItemIndex(int index) override;
  void SetDroppedDown(bool dropped) override;
  bool GetDroppedDown() const override;
  TString GetText() const override;
  void SelectText(int start, int end) override;
  void ImagesChanged() override;
  HWND GetEditHandle() const override;

  void HandleCommand(WORD code) override;

 protected:
  void Initialize() override;
  LRESULT WindowProc(UINT message, WPARAM wParam, LPARAM lParam) override;
  LRESULT InnerProc(HWND window, UINT message, WPARAM wParam, LPARAM lParam) override;
  bool HasSystemContextMenu() const override { return true; }
  LPCWSTR GetThemeName(bool dark) const override;

 private:
  HWND GetInnerCombo() const;
  int DroppedHeight() const;
  void FillItems();
  void ShowEditImage();
  void TextTyped();
  bool MovesInList(HWND window, UINT message, WPARAM key) const;

  TCustomComboBoxEx& fCombo;
  bool fChanging = false;    // the control changes the window, not the user
  bool fSelecting = false;   // an entry is being selected
  bool fForwarding = false;  // a key that was reported already goes to the list
};

}  // namespace oak
