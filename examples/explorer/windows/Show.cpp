// On Windows the form is a window; a tour of it leaves pictures.
#include "examples/explorer/Show.h"

#include <cstdio>

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

}  // namespace

int ShowForm(TExplorerForm& form, const TShowOptions& options) {
  if (!options.Screenshot.empty() || options.Tour) {
    form.Show();
    if (form.GetList().Items().GetCount() > 0) {
      form.GetList().SetSelected(form.GetList().Items()[0]);
      form.GetList().SetFocus();
    }
    return SavePicture(form, options.Screenshot.empty() ? "explorer.png" : options.Screenshot) ? 0
                                                                                               : 1;
  }
  Application().Run();
  return 0;
}
