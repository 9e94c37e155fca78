// The widget set over the system's windows and common controls.
#pragma once

#include "oak/framework/WidgetSet.h"
#include "oak/framework/win32/Services.h"

namespace oak {

/// Windows, menus and dialogs of the running Windows. Serves any message loop and lives in any
/// parent window. Common controls are of version 6: a program embeds the manifest of
/// oak/framework/win32/Oak.manifest (see docs/windows.md); without one they are had by an
/// activation context, but the program draws its own dialogs in the old look.
class TWin32WidgetSet final : public TWidgetSet {
 public:
  TWin32WidgetSet();
  ~TWin32WidgetSet() override;

  std::unique_ptr<IControlPeer> CreateControl(TWinControl& control) override;
  std::unique_ptr<IFormPeer> CreateForm(TCustomForm& form) override;
  std::unique_ptr<IListViewPeer> CreateListView(TCustomListView& view) override;
  std::unique_ptr<ITreeViewPeer> CreateTreeView(TCustomTreeView& view) override;
  std::unique_ptr<IEditPeer> CreateEdit(TCustomEdit& edit) override;
  std::unique_ptr<IComboPeer> CreateCombo(TCustomComboBoxEx& combo) override;
  std::unique_ptr<ITimerPeer> CreateTimer(unsigned milliseconds,
                                          std::function<void()> tick) override;

  bool ProcessMessage() override;
  void WaitMessage() override;
  void WakeUp() override;

  std::vector<TMonitorInfo> GetMonitors() const override;
  TPoint GetCursorPos() const override;
  void SetCursorPos(TPoint point) override;
  void SetGlobalCursor(TCursor cursor) override;
  TShiftState GetShiftState() const override;
  bool IsKeyDown(std::uint16_t key) const override;
  int GetSystemMetric(int index, int pixelsPerInch) const override;
  TColor GetSysColor(TColor systemColor) const override;
  bool IsDarkMode() const override;
  bool IsThemed() const override;
  TFont GetSystemFont(int pixelsPerInch) const override;
  TSize MeasureText(const TFont& font, int pixelsPerInch, TStringView text) const override;
  TWinControl* ControlOf(HWND window) const override;
  HWND GetFocusedWindow() const override;
  bool IsWindow(HWND window) const override;

  HMENU CreateMenu(const TMenuItem& root) override;
  void DestroyMenu(HMENU menu) override;
  UINT TrackMenu(HMENU menu, TPoint screen, TWinControl* owner, HWND ownerWindow) override;
  HWND CreateHiddenWindow(std::function<void(TMessage&)> procedure) override;
  void DestroyHiddenWindow(HWND window) override;
  LRESULT DefaultProc(HWND window, const TMessage& message) override;
  int ShowDialog(const TMessageDialog& dialog) override;

  bool GetClipboardText(TString* text) override;
  bool SetClipboardText(const TString& text) override;

  HRESULT DoDragDrop(TWinControl& control, IDataObject* data, IDropSource* source, DWORD allowed,
                     DWORD* effect) override;

 private:
  win32::TServiceWindow fServices;
  bool fOle = false;
  std::shared_ptr<void> fStyleWatch;
};

}  // namespace oak
