// Without a screen the form is driven over the headless desktop, and printed.
#include "examples/explorer/Show.h"

#include <cstdio>

#include "examples/explorer/Tour.h"
#include "oak/framework/headless/HeadlessDesktop.h"
#include "oak/framework/headless/HeadlessMenu.h"
#include "oak/framework/headless/HeadlessPicture.h"
#include "oak/platform/portable/ShellHooks.h"
#include "oak/platform/portable/ShellIcons.h"

using namespace oak;

namespace {

/// Folders, drives, other places, files.
TString SignOf(int icon) {
  switch (icon) {
    case iconFolder:
    case iconFolderOpen:
      return u"\u25A0";
    case iconDrive:
    case iconRemovable:
    case iconNetDrive:
    case iconCdRom:
      return u"\u25AC";
    default:
      return icon > iconFolderOpen && icon < iconText ? u"\u25C6" : u"\u00B7";
  }
}

/// The portable shell shows nothing by itself: what it has to tell goes to the status line.
void ListenToShell(TExplorerForm& form) {
  TShellHooks hooks;
  hooks.OnFailure = [&form](const TShellFailure& failure) {
    TString text = u"Not done: " + failure.Verb;
    for (const TString& place : failure.Places) text += u" " + place;
    form.ShowProblem(text);
  };
  hooks.OnProperties = [&form](const TString& title, const TString& report) {
    form.GetStatus().SetCaption(title + u": " + report.substr(0, report.find_first_of(u"\r\n")));
  };
  SetShellHooks(std::move(hooks));
}

class THeadlessGuide final : public ITourGuide {
 public:
  explicit THeadlessGuide(TExplorerForm& form)
      : fForm(form), fDesktop(static_cast<THeadlessDesktop&>(WidgetSet())) {
    fLook.ImageSign = [](const TDrawOperation& image) { return SignOf(image.ImageIndex); };
    fForm.SetBounds(0, 0, 840, 420);
    fForm.Show();
    fDesktop.Run();
  }

  void Click(TWinControl& control, TPoint point) override { fDesktop.Click(control, point); }
  void DoubleClick(TWinControl& control, TPoint point) override {
    fDesktop.DoubleClick(control, point);
  }
  void Key(TWinControl&, std::uint16_t key, TShiftState shift) override {
    fDesktop.KeyPress(key, shift);
  }
  void ShowMenu(TWinControl& control, TPoint point, const char16_t* submenu,
                const char* words) override {
    fDesktop.OnMenu = [&](THeadlessMenuSession& menu) {
      menu.GetEntries(submenu);  // opens it
      Show(words);
      menu.Cancel();
    };
    fDesktop.RightClick(control, point);
    fDesktop.OnMenu = nullptr;
  }
  void Show(const char* words) override {
    std::printf("\n# %s\n%s", words, ToUtf8(TextPicture(fForm, fLook)).c_str());
  }

 private:
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
  ListenToShell(form);
  THeadlessGuide guide(form);
  RunTour(form, guide);
  SetShellHooks({});
  return 0;
}
