// On Windows the form is a window; a tour of it leaves pictures.
#include "examples/explorer/Show.h"

#include <cstdio>

#include "examples/explorer/Tour.h"
#include "examples/explorer/windows/PostedInput.h"
#include "oak/framework/Application.h"
#include "oak/framework/Png.h"
#include "oak/framework/win32/Screenshot.h"

using namespace oak;

namespace {

bool SavePicture(TExplorerForm& form, const std::string& file) {
  Application().ProcessMessages();
  const TBitmap picture = TakeScreenshot(form.GetHandle());
  if (picture.IsEmpty()) return false;
  SavePng(picture, FromUtf8(file));
  std::printf("%s: %d by %d pixels\n", file.c_str(), picture.GetWidth(), picture.GetHeight());
  return true;
}

/// Tells the window what the system tells when it gets to such a monitor.
void MoveToDensity(TExplorerForm& form, int density) {
  const TRect bounds = form.GetBoundsRect();
  const int former = form.GetPixelsPerInch();
  RECT place{0, 0, MulDiv(bounds.Width(), density, former),
             MulDiv(bounds.Height(), density, former)};
  ::SendMessageW(form.GetHandle(), WM_DPICHANGED, MAKEWPARAM(density, density),
                 reinterpret_cast<LPARAM>(&place));
}

/// Posts input to the windows, so that the user keeps mouse and keyboard. A picture after each
/// step.
class TWindowGuide final : public ITourGuide {
 public:
  TWindowGuide(TExplorerForm& form, std::string prefix) : fForm(form), fPrefix(std::move(prefix)) {}
  bool HasFailed() const { return fFailed; }

  void Click(TWinControl& control, TPoint point) override {
    const HWND window = PartAt(control, point);
    PostClick(window, point);
    Application().ProcessMessages();
  }
  void DoubleClick(TWinControl& control, TPoint point) override {
    const HWND window = PartAt(control, point);
    PostDoubleClick(window, point);
    Application().ProcessMessages();
  }
  void Key(TWinControl& control, std::uint16_t key, TShiftState shift) override {
    const THeldKeys held(shift);
    PostKey(control.GetHandle(), key, shift.Contains(ssAlt));
    Application().ProcessMessages();
  }
  void ShowMenu(TWinControl&, TPoint, const char16_t*, const char*) override {}
  void Show(const char* words) override {
    std::printf("\n# %s\n%s: %s\n", words, ToUtf8(fForm.GetPathEdit().GetText()).c_str(),
                ToUtf8(fForm.GetStatus().GetText()).c_str());
    if (!SavePicture(fForm, fPrefix + std::to_string(++fNumber) + ".png")) fFailed = true;
  }

 private:
  /// The control's window or a part of it, a header; `point` becomes one of its own.
  static HWND PartAt(TWinControl& control, TPoint& point) {
    const HWND window = control.GetHandle();
    const HWND part = ::RealChildWindowFromPoint(window, point);
    if (!part || part == window) return window;
    POINT inPart = point;
    ::MapWindowPoints(window, part, &inPart, 1);
    point = TPoint(inPart);
    return part;
  }

  TExplorerForm& fForm;
  std::string fPrefix;
  int fNumber = 0;
  bool fFailed = false;
};

}  // namespace

int ShowForm(TExplorerForm& form, const TShowOptions& options) {
  if (!options.Screenshot.empty() || options.Tour) {
    form.Show();
    if (options.Density > 0) MoveToDensity(form, options.Density);
    form.GetList().SetFocus();
  }
  if (options.Tour) {
    TWindowGuide guide(form, "explorer-");
    RunTour(form, guide);
    return guide.HasFailed() ? 1 : 0;
  }
  if (!options.Screenshot.empty()) {
    if (form.GetList().Items().GetCount() > 0)
      form.GetList().SetSelected(form.GetList().Items()[0]);
    return SavePicture(form, options.Screenshot) ? 0 : 1;
  }
  Application().Run();
  return 0;
}
