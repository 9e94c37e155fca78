// The window of a plain program: a class, a procedure and a child of its own.
#pragma once

#include <memory>

#include "examples/embedding/windows/Browser.h"

/// A top-level window that shows a folder in a TBrowser, with the program's own line of text below.
class THostWindow {
 public:
  /// Raises std::runtime_error if the system makes no window.
  explicit THostWindow(const oak::TString& folder);
  ~THostWindow();
  THostWindow(const THostWindow&) = delete;
  THostWindow& operator=(const THostWindow&) = delete;

  /// Null once the user has closed it.
  HWND GetHandle() const { return fHandle; }
  HWND GetStatusLine() const { return fStatus; }
  /// nil while no folder is shown.
  TBrowser* GetBrowser() { return fBrowser.get(); }
  /// Takes the controls out of the window, which goes on, and puts new ones into it.
  void HideFolder();
  void ShowFolder(const oak::TString& folder);

 private:
  static LRESULT CALLBACK Procedure(HWND window, UINT message, WPARAM wParam, LPARAM lParam);
  LRESULT Handle(UINT message, WPARAM wParam, LPARAM lParam);
  void LayOut();

  HWND fHandle = nullptr;
  HWND fStatus = nullptr;
  std::unique_ptr<TBrowser> fBrowser;
};
