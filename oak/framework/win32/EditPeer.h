// The windows of edit controls: a line, a text, a text with formats.
#pragma once

#include <span>

#include "oak/framework/StdCtrls.h"
#include "oak/framework/win32/WindowPeer.h"

namespace oak {

class TEditPeer final : public TWindowPeer, public IEditPeer {
 public:
  explicit TEditPeer(TCustomEdit& edit);
  void Create();

  void SetText(const TString& text) override;
  void SetFont(const TFont& font) override;
  void ColorsChanged() override;
  TString GetText() const override;
  void GetSelection(int* start, int* end) const override;
  void SetSelection(int start, int end) override;
  void StyleChanged() override;
  bool LoadRichText(const std::vector<std::uint8_t>& data) override;

  void HandleCommand(WORD code) override;

 protected:
  LRESULT WindowProc(UINT message, WPARAM wParam, LPARAM lParam) override;
  void Initialize() override;
  bool HasSystemContextMenu() const override { return !fRich; }
  LPCWSTR GetThemeName(bool dark) const override;

 private:
  void ApplyRichColors();
  bool StreamIn(std::span<const std::uint8_t> data, WPARAM format);
  void NarrowToLine(RECT& client);
  void PaintBands();
  LRESULT HandleFrame(UINT message, WPARAM wParam, LPARAM lParam);

  TCustomEdit& fEdit;
  bool fRich = false;  // the window understands formats
  bool fSettingText = false;
  int fAbove = 0;  // pixels between edge and line
  int fBelow = 0;
};

}  // namespace oak
