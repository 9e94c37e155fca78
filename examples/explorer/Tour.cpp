#include "Tour.h"

using namespace oak;

namespace {

void OpenLastFolder(TFolderList& list, ITourGuide& guide) {
  TListItem* row = nullptr;
  for (TListItem* const item : list.Items())
    if (static_cast<const TFolderRow&>(*item).IsFolder()) row = item;
  if (!row) return;
  row->MakeVisible(false);
  guide.DoubleClick(list, row->DisplayRect(drLabel).Center());
  guide.Show("A double click opens a folder.");
}

void SelectRows(TFolderList& list, ITourGuide& guide) {
  if (list.Items().GetCount() == 0) return;
  guide.Click(list, list.Items()[0]->DisplayRect(drLabel).Center());
  guide.Key(list, vkDown, ssShift);
  guide.Key(list, vkDown, ssShift);
  guide.Show("Shift and arrows select rows; the status line counts them.");
}

void ShowMenus(TFolderList& list, ITourGuide& guide) {
  if (list.Items().GetCount() == 0) return;
  const TPoint row = list.Items()[0]->DisplayRect(drLabel).Center();
  guide.ShowMenu(list, row, u"", "A right click on them: what the shell can do to them.");
}

void ShowFolderMenu(TFolderList& list, ITourGuide& guide) {
  const int count = list.Items().GetCount();
  const int bottom = list.GetClientSize().Height - 8;
  if (count > 0 && list.Items()[count - 1]->DisplayRect(drBounds).Bottom >= bottom) return;
  guide.ShowMenu(list, {120, bottom}, u"New", "A right click beside the rows: the folder's menu.");
}

void SortBySize(TFolderList& list, ITourGuide& guide) {
  if (list.Columns().GetCount() < 2) return;
  const int x = list.Columns()[0]->GetWidth() + list.Columns()[1]->GetWidth() / 2;
  guide.Click(list, {x, list.GetHeaderRect().Center().Y});
  guide.Show("A click on a column sorts by it; selected rows stay selected.");
}

}  // namespace

void RunTour(TExplorerForm& form, ITourGuide& guide) {
  TFolderList& list = form.GetList();
  guide.Show("The window opens on a folder; tree and path follow.");
  SelectRows(list, guide);
  ShowMenus(list, guide);
  SortBySize(list, guide);
  OpenLastFolder(list, guide);
  ShowFolderMenu(list, guide);
  guide.Key(list, vkUp, ssAlt);
  guide.Show("Alt and the up arrow: one folder up, with the one that was left selected.");
  guide.Key(list, vkLeft, ssAlt);
  guide.Show("Alt and the left arrow: back to where the user came from.");
}
