// How controls look in real windows: colours of the program and of the style, densities.
#include "oak/framework/ImageList.h"
#include "oak/framework/Styles.h"
#include "tests/framework/win32/Win32Fixture.h"

namespace oak::tests {
namespace {

/// A panel with an edit at the top, a memo and a rich edit below, a combo box at the bottom.
class TSampleForm : public TTestForm {
 public:
  TSampleForm() {
    Top.SetParent(this);
    Top.SetAlign(alTop);
    Top.SetHeight(40);
    Edit.SetParent(&Top);
    Edit.SetBounds(70, 8, 180, 23);
    Edit.SetText(u"first");
    Combo.SetParent(this);
    Combo.SetAlign(alBottom);
    Memo.SetParent(this);
    Memo.SetAlign(alLeft);
    Memo.SetWidth(160);
    Rich.SetParent(this);
    Rich.SetAlign(alClient);
    Rich.SetText(u"formatted");
  }

  TPanel Top;
  TEdit Edit;
  TCustomComboBoxEx Combo;
  TMemo Memo;
  TRichEdit Rich;
};

class ControlWindows : public TWin32Test {
 protected:
  TBitmap Look(TStringView name) {
    Pump();
    TBitmap picture = TakeScreenshot(form.GetHandle());
    Keep(picture, name);
    return picture;
  }
  TColor PixelOf(const TBitmap& picture, const TWinControl& control, int x, int y) {
    const TPoint at = control.ClientToScreen({x, y}) - form.GetBoundsRect().TopLeft();
    return picture.GetPixel(at.X, at.Y);
  }
  TSampleForm form;
};

TEST_F(ControlWindows, PictureShowsWhatTheControlsAre) {
  TImageList images(nullptr, 16, 16);
  TBitmap blue(16, 16);
  blue.Fill(clBlue);
  images.Add(blue);
  form.Combo.SetImages(&images);
  form.Combo.AddItem({u"Desktop", 0, -1, 0, nullptr});
  form.Combo.SetItemIndex(0);
  form.Memo.SetColor(0x00C0FFFF);
  form.Rich.SetColor(RgbColor(220, 240, 220));
  form.Top.SetColor(RgbColor(200, 210, 240));
  TPanel painted;
  painted.SetParent(&form.Top);
  painted.SetBounds(350, 10, 30, 20);
  painted.OnPaint = [](TObject*, TCanvas& canvas, const TRect&) {
    canvas.GetBrush().SetColor(clRed);
    canvas.FillRect({5, 5, 25, 15});
  };
  form.Show();
  const TBitmap picture = Look(u"controls");
  ASSERT_EQ(picture.GetSize(), form.GetBoundsRect().Size());
  EXPECT_EQ(PixelOf(picture, painted, 10, 10), clRed);
  EXPECT_EQ(PixelOf(picture, form.Memo, 100, 60), 0x00C0FFFFu);
  EXPECT_EQ(PixelOf(picture, form.Rich, 100, 60), RgbColor(220, 240, 220));
  EXPECT_EQ(PixelOf(picture, form.Top, 2, 38), RgbColor(200, 210, 240));
  EXPECT_EQ(PixelOf(picture, form.Edit, 170, 10), ColorToRGB(clWindow));
  EXPECT_EQ(PixelOf(picture, form.Combo, 12, form.Combo.GetHeight() / 2), clBlue);
}

TEST_F(ControlWindows, StyleAndDensityReachTheWindows) {
  form.Show();
  ASSERT_TRUE(TStyleManager::TrySetStyle(u"Dark"));
  const TBitmap dark = Look(u"dark");
  const TStyle& style = TStyleManager::ActiveStyle();
  for (TWinControl* control :
       std::initializer_list<TWinControl*>{&form.Edit, &form.Memo, &form.Rich})
    EXPECT_EQ(PixelOf(dark, *control, 110, 12), style.GetSystemColor(clWindow));
  EXPECT_EQ(PixelOf(dark, form.Top, 2, 38), style.GetSystemColor(clBtnFace));

  TStyleManager::TrySetStyle(u"System");
  for (const int density : {144, 192, 96}) {
    SCOPED_TRACE(density);
    // The system tells the new density with the place that the window gets there.
    RECT suggested{20, 20, 20 + 420 * density / 96, 20 + 300 * density / 96};
    ::SendMessageW(form.GetHandle(), WM_DPICHANGED, MAKEWPARAM(density, density),
                   reinterpret_cast<LPARAM>(&suggested));
    EXPECT_EQ(Look(u"density" + IntToStr(density)).GetSize(), TRect(suggested).Size());
    EXPECT_EQ(ScreenRect(form.Edit.GetHandle()).Width(), MulDiv(180, density, 96));
    // The window takes its height from the font; the control follows and is laid out with it.
    EXPECT_EQ(form.Combo.GetHeight(), ScreenRect(form.Combo.GetHandle()).Height());
    EXPECT_EQ(form.Combo.GetBoundsRect().Bottom, form.GetClientSize().Height);
    const auto font =
        reinterpret_cast<HFONT>(::SendMessageW(form.Edit.GetHandle(), WM_GETFONT, 0, 0));
    LOGFONTW description{};
    ::GetObjectW(font, sizeof description, &description);
    EXPECT_EQ(std::abs(description.lfHeight), MulDiv(12, density, 96));
  }
}

}  // namespace
}  // namespace oak::tests
