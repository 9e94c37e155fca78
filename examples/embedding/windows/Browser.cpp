#include "examples/embedding/windows/Browser.h"

#include <utility>

#include "oak/namespace/OakItemIdList.h"

using namespace oak;

TBrowser::TBrowser(HWND parent, const TString& folder) {
  fTree.SetImages(&fIcons);
  fList.SetSmallImages(&fIcons);
  // What the user does in one of them, the other follows.
  fTree.setShellLink(&fLink);
  fList.setShellLink(&fLink);
  // From here on they have windows: children of the foreign one.
  fTree.SetParentWindow(parent);
  fList.SetParentWindow(parent);
  ScaleIcons();
  fTree.AddRoot(TOakItemIdList::CreateForSpecialFolder(SF_DESKTOP, true));
  fTree.Items().GetFirstNode()->Expand(false);
  Show(TOakItemIdList::Parse(folder, nullptr, true));
}

void TBrowser::ScaleIcons() {
  const int former = std::exchange(fPixelsPerInch, fList.GetCurrentPPI());
  fIcons.ChangeScale(fPixelsPerInch, former);
}

void TBrowser::SetBounds(const RECT& area) {
  ScaleIcons();
  const int width = area.right - area.left;
  const int height = area.bottom - area.top;
  const int gap = fList.ScaledPixels(4);
  const int tree = width / 3;
  fTree.SetBounds(area.left, area.top, tree, height);
  fList.SetBounds(area.left + tree + gap, area.top, width - tree - gap, height);
}

void TBrowser::SetFocus() { fList.SetFocus(); }

void TBrowser::Show(const Ref<IItemIdList>& folder) { fLink.PathChanged(nullptr, folder); }
