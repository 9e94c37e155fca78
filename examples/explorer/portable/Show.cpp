// Without a screen the form is driven over the headless desktop, and printed.
#include "examples/explorer/Show.h"

#include <cstdio>

#include "examples/explorer/Pictures.h"
#include "oak/framework/headless/HeadlessDesktop.h"
#include "oak/framework/headless/HeadlessPicture.h"

using namespace oak;

namespace {

/// Does what a user would do with mouse and keys.
class TTour {
 public:
  explicit TTour(TExplorerForm& form)
      : fForm(form), fDesktop(static_cast<THeadlessDesktop&>(WidgetSet())) {
    fLook.ImageSign = [](const TDrawOperation& image) -> TString {
      constexpr const char16_t* signs[] = {u"\u25A0", u"\u00B7", u"\u25AC", u"\u25C6"};
      return image.ImageIndex >= 0 && image.ImageIndex < 4 ? signs[image.ImageIndex] : u"";
    };
  }

  int Run() {
    fForm.SetBounds(0, 0, 840, 420);
    fForm.Show();
    fDesktop.Run();
    Step("The window opens on a folder; tree and path follow.");
    OpenLastFolder();
    SelectRows();
    SortBySize();
    fDesktop.KeyPress(vkUp, ssAlt);
    Step("Alt and the up arrow: one folder up, with the one that was left selected.");
    return 0;
  }

 private:
  void Step(const char* words) {
    std::printf("\n# %s\n%s", words, ToUtf8(TextPicture(fForm, fLook)).c_str());
  }

  void OpenLastFolder() {
    TFolderList& list = fForm.GetList();
    TListItem* row = nullptr;
    for (TListItem* const item : list.Items())
      if (static_cast<const TFolderRow&>(*item).IsFolder()) row = item;
    if (!row) return;
    row->MakeVisible(false);
    fDesktop.DoubleClick(list, row->DisplayRect(drLabel).Center());
    Step("A double click opens a folder.");
  }

  void SelectRows() {
    TFolderList& list = fForm.GetList();
    if (list.Items().GetCount() == 0) return;
    fDesktop.Click(list, list.Items()[0]->DisplayRect(drLabel).Center());
    fDesktop.KeyPress(vkDown, ssShift);
    fDesktop.KeyPress(vkDown, ssShift);
    Step("Shift and arrows select rows; the status line counts them.");
  }

  void SortBySize() {
    TFolderList& list = fForm.GetList();
    if (list.Columns().GetCount() < 2) return;
    const TRect header = list.GetHeaderRect();
    const int x = list.Columns()[0]->GetWidth() + list.Columns()[1]->GetWidth() / 2;
    fDesktop.Click(list, {x, header.Center().Y});
    Step("A click on a column sorts by it; selected rows stay selected.");
  }

  TExplorerForm& fForm;
  THeadlessDesktop& fDesktop;
  THeadlessPictureOptions fLook;
};

}  // namespace

int ShowForm(TExplorerForm& form, const TShowOptions& options) {
  if (!options.Screenshot.empty()) {
    std::fputs("explorer: there are no pixels on this system; the tour shows the window as text\n",
               stderr);
    return 1;
  }
  return TTour(form).Run();
}
