// Controls of the library as parts of a window that knows nothing of them.
#pragma once

#include "examples/explorer/FolderList.h"
#include "examples/explorer/PlaceTree.h"
#include "oak/namespace/Oak.Shell.SystemImageList.h"
#include "oak/platform/shell_api.h"

/// A tree of folders and a list of the rows of one folder, side by side in a window of others.
/// Its operations raise what the library raises.
class TBrowser {
 public:
  /// Makes the controls in `parent`, a window of the calling thread.
  TBrowser(HWND parent, const oak::TString& folder);
  TBrowser(const TBrowser&) = delete;
  TBrowser& operator=(const TBrowser&) = delete;

  /// Places the controls in pixels of the parent's client area.
  void SetBounds(const RECT& area);
  void SetFocus();
  void Show(const oak::Ref<oak::IItemIdList>& folder);
  /// Density of the monitor, for what the program lays out itself.
  int GetPixelsPerInch() const { return fList.GetCurrentPPI(); }

  TPlaceTree& GetTree() { return fTree; }
  TFolderList& GetList() { return fList; }

 private:
  void ScaleIcons();

  // The controls end before the icons that they show.
  int fPixelsPerInch = 96;
  oak::TOakSystemImageList fIcons{nullptr, oak::si_Small, fPixelsPerInch};
  oak::TOakShellLink fLink;
  TPlaceTree fTree{nullptr};
  TFolderList fList{nullptr};
};
