// Controls in real windows: place, text, input, paint.
#include "oak/framework/ImageList.h"
#include "oak/framework/Styles.h"
#include "tests/framework/win32/Win32Fixture.h"

namespace oak::tests {
namespace {

using ::testing::ElementsAre;

/// A form as programs have it: panel at the top with label, edit and button, a memo and a rich edit
/// with a splitter between them, a combo box below.
class TSampleForm : public TTestForm {
 public:
  TSampleForm() {
    SetText(u"Windows");
    Top.SetParent(this);
    Top.SetAlign(alTop);
    Top.SetHeight(40);
    Label.SetParent(&Top);
    Label.SetText(u"&Name:");
    Label.SetBounds(8, 11, 60, 20);
    Edit.SetParent(&Top);
    Edit.SetBounds(70, 8, 180, 23);
    Edit.SetText(u"first");
    Button.SetParent(&Top);
    Button.SetText(u"&Find");
    Button.SetBounds(260, 7, 80, 25);
    Combo.SetParent(this);
    Combo.SetAlign(alBottom);
    Memo.SetParent(this);
    Memo.SetAlign(alLeft);
    Memo.SetWidth(160);
    Memo.SetText(u"one\ntwo");
    Bar.SetParent(this);
    Bar.SetAlign(alLeft);
    Bar.SetLeft(200);
    Rich.SetParent(this);
    Rich.SetAlign(alClient);
    Rich.SetText(u"formatted");
  }

  TPanel Top;
  TLabel Label;
  TEdit Edit;
  TButton Button;
  TCustomComboBoxEx Combo;
  TMemo Memo;
  TSplitter Bar;
  TRichEdit Rich;
};

class ControlWindows : public TWin32Test {};

TRect ClientBounds(const TWinControl& control, HWND window) {
  RECT rect{};
  ::GetWindowRect(window, &rect);
  ::MapWindowPoints(nullptr, control.GetParent()->GetPeer()->GetHandle(),
                    reinterpret_cast<POINT*>(&rect), 2);
  return TRect(rect);
}

TEST_F(ControlWindows, StandWhereTheModelSays) {
  TSampleForm form;
  form.Show();
  Pump();
  EXPECT_EQ(ScreenRect(form.GetHandle()), form.GetBoundsRect());
  EXPECT_EQ(WindowText(form.GetHandle()), u"Windows");
  const auto check = [&] {
    for (int i = 0; i < form.GetControlCount(); ++i) {
      auto& control = dynamic_cast<TWinControl&>(*form.GetControl(i));
      EXPECT_EQ(ClientBounds(control, control.GetHandle()), control.GetBoundsRect()) << i;
      EXPECT_EQ(::GetParent(control.GetHandle()), form.GetHandle()) << i;
      EXPECT_TRUE(::IsWindowVisible(control.GetHandle())) << i;
    }
  };
  check();
  EXPECT_EQ(form.Top.GetWidth(), form.GetClientSize().Width);

  // The user drags the frame; the program moves the form; it is maximised and put back.
  ::SetWindowPos(form.GetHandle(), nullptr, 80, 50, 500, 360, SWP_NOZORDER);
  EXPECT_EQ(form.GetBoundsRect(), TRect(80, 50, 580, 410));
  check();
  form.SetBounds(90, 60, 450, 320);
  EXPECT_EQ(ScreenRect(form.GetHandle()), TRect(90, 60, 540, 380));
  check();
  ::ShowWindow(form.GetHandle(), SW_MAXIMIZE);
  EXPECT_EQ(form.GetWindowState(), wsMaximized);
  check();
  form.SetWindowState(wsMinimized);
  EXPECT_TRUE(::IsIconic(form.GetHandle()));
  ::ShowWindow(form.GetHandle(), SW_RESTORE);
  form.SetWindowState(wsNormal);
  EXPECT_EQ(form.GetBoundsRect(), TRect(90, 60, 540, 380));
  check();
}

TEST_F(ControlWindows, TextGoesBothWays) {
  TSampleForm form;
  form.Show();
  int changes = 0;
  form.Edit.OnChange = [&](TObject*) { ++changes; };
  form.Edit.OnKeyPress = [](TObject*, char16_t& key) {
    if (key == u'x') key = u'y';
    if (key == u'!') key = 0;
  };
  form.Edit.SetFocus();
  form.Edit.SelectText(5, 0);
  Type(form.Edit.GetHandle(), u"ax!");
  EXPECT_EQ(form.Edit.GetText(), u"firstay");
  EXPECT_EQ(WindowText(form.Edit.GetHandle()), u"firstay");
  EXPECT_EQ(changes, 2);
  EXPECT_TRUE(form.Edit.GetModified());

  form.Edit.SetText(u"new");
  EXPECT_EQ(WindowText(form.Edit.GetHandle()), u"new");
  EXPECT_EQ(changes, 3);
  form.Edit.SelectText(1, 2);
  EXPECT_EQ(form.Edit.GetSelText(), u"ew");

  // A window made anew goes on where the former was.
  form.Edit.RecreateWnd();
  EXPECT_EQ(WindowText(form.Edit.GetHandle()), u"new");
  EXPECT_EQ(form.Edit.GetSelText(), u"ew");
  form.Edit.SetMaxLength(4);
  form.Edit.SelectText(3, 0);
  Type(form.Edit.GetHandle(), u"123");
  EXPECT_EQ(form.Edit.GetText(), u"new1");
  form.Edit.SetReadOnly(true);
  Type(form.Edit.GetHandle(), u"2");
  EXPECT_EQ(form.Edit.GetText(), u"new1");
}

TEST_F(ControlWindows, LinesOfMemoAndRichEdit) {
  TSampleForm form;
  form.Show();
  EXPECT_EQ(::SendMessageW(form.Memo.GetHandle(), EM_GETLINECOUNT, 0, 0), 2);
  form.Memo.SetFocus();
  PressKey(form.Memo.GetHandle(), VK_RETURN);
  EXPECT_EQ(::SendMessageW(form.Memo.GetHandle(), EM_GETLINECOUNT, 0, 0), 3);
  EXPECT_TRUE(Contains(form.Memo.GetText(), u"\r\n"));

  const std::string rtf = "{\\rtf1\\ansi plain {\\b bold} end}";
  form.Rich.LoadFromBytes({rtf.begin(), rtf.end()});
  EXPECT_EQ(Trim(WindowText(form.Rich.GetHandle())), u"plain bold end");
  form.Rich.RecreateWnd();
  EXPECT_EQ(Trim(WindowText(form.Rich.GetHandle())), u"plain bold end");
  EXPECT_TRUE(StartsText(u"richedit", ClassOf(form.Rich.GetHandle())));
}

TEST_F(ControlWindows, KeysMoveTheFocusAndClick) {
  TSampleForm form;
  std::vector<std::string> log;
  form.Edit.OnEnter = [&](TObject*) { log.push_back("edit"); };
  form.Edit.OnExit = [&](TObject*) { log.push_back("edit left"); };
  form.Button.OnEnter = [&](TObject*) { log.push_back("button"); };
  form.Button.OnClick = [&](TObject*) { log.push_back("click"); };
  form.Show();
  form.Edit.SetFocus();
  EXPECT_EQ(::GetFocus(), form.Edit.GetHandle());
  PressKey(form.Edit.GetHandle(), VK_TAB);
  EXPECT_EQ(::GetFocus(), form.Button.GetHandle());
  EXPECT_EQ(form.GetActiveControl(), &form.Button);
  PressKey(form.Button.GetHandle(), VK_SPACE);
  EXPECT_THAT(log, ElementsAre("edit", "edit left", "button", "click"));
  // The tab must not have become a character of the edit.
  EXPECT_EQ(form.Edit.GetText(), u"first");
}

TEST_F(ControlWindows, MouseReachesTheControl) {
  TSampleForm form;
  form.Show();
  std::vector<std::string> log;
  const auto note = [&](const char* what, int x, int y, TShiftState shift) {
    log.push_back(std::string(what) + " " + std::to_string(x) + "," + std::to_string(y) +
                  (shift.Contains(ssDouble) ? " double" : "") +
                  (shift.Contains(ssShift) ? " shift" : ""));
  };
  form.Top.OnMouseDown = [&](TObject*, TMouseButton, TShiftState shift, int x, int y) {
    note("down", x, y, shift);
  };
  form.Top.OnMouseMove = [&](TObject*, TShiftState shift, int x, int y) {
    note("move", x, y, shift);
  };
  form.Top.OnMouseUp = [&](TObject*, TMouseButton, TShiftState shift, int x, int y) {
    note("up", x, y, shift);
  };
  const HWND top = form.Top.GetHandle();
  ::SendMessageW(top, WM_LBUTTONDOWN, MK_LBUTTON | MK_SHIFT, MAKELPARAM(3, 4));
  EXPECT_EQ(::GetCapture(), top);
  ::SendMessageW(top, WM_MOUSEMOVE, MK_LBUTTON, MAKELPARAM(-5, 7));
  ::SendMessageW(top, WM_LBUTTONUP, 0, MAKELPARAM(-5, 7));
  ::SendMessageW(top, WM_RBUTTONDBLCLK, MK_RBUTTON, MAKELPARAM(1, 1));
  EXPECT_THAT(log, ElementsAre("down 3,4 shift", "move -5,7", "up -5,7", "down 1,1 double"));
  EXPECT_NE(::GetCapture(), top);

  // The splitter sizes the memo.
  const int width = form.Memo.GetWidth();
  const HWND bar = form.Bar.GetHandle();
  ::SendMessageW(bar, WM_LBUTTONDOWN, MK_LBUTTON, MAKELPARAM(1, 10));
  ::SendMessageW(bar, WM_MOUSEMOVE, MK_LBUTTON, MAKELPARAM(31, 10));
  ::SendMessageW(form.Bar.GetHandle(), WM_LBUTTONUP, 0, MAKELPARAM(1, 10));
  EXPECT_EQ(form.Memo.GetWidth(), width + 30);
  EXPECT_EQ(ScreenRect(form.Memo.GetHandle()).Width(), width + 30);
}

TEST_F(ControlWindows, ComboShowsEntriesAndTells) {
  TSampleForm form;
  TImageList images(nullptr, 16, 16);
  TBitmap red(16, 16);
  red.Fill(clRed);
  images.Add(red);
  form.Combo.SetImages(&images);
  form.Combo.AddItem({u"Desktop", 0, -1, 0, nullptr});
  form.Combo.AddItem({u"Documents", 0, -1, 1, nullptr});
  form.Combo.SetItemIndex(0);
  form.Show();
  Pump();
  const HWND window = form.Combo.GetHandle();
  EXPECT_EQ(::SendMessageW(window, CB_GETCOUNT, 0, 0), 2);
  EXPECT_EQ(WindowText(form.Combo.GetEditHandle()), u"Desktop");
  // The window takes its height from the font; the control follows and is laid out with it.
  EXPECT_EQ(form.Combo.GetHeight(), ScreenRect(window).Height());
  EXPECT_EQ(form.Combo.GetBoundsRect().Bottom, form.GetClientSize().Height);

  int selected = 0, changed = 0;
  form.Combo.OnSelect = [&](TObject*) { ++selected; };
  form.Combo.OnChange = [&](TObject*) { ++changed; };
  form.Combo.SetFocus();
  EXPECT_TRUE(form.Combo.Focused());
  PressKey(::GetFocus(), VK_DOWN);
  EXPECT_EQ(form.Combo.GetItemIndex(), 1);
  EXPECT_EQ(form.Combo.GetText(), u"Documents");
  EXPECT_EQ(selected, 1);
  form.Combo.SelectAll();
  Type(form.Combo.GetEditHandle(), u"D");
  EXPECT_EQ(form.Combo.GetText(), u"D");
  EXPECT_EQ(form.Combo.GetItemIndex(), -1);
  EXPECT_GE(changed, 1);
  form.Combo.SetText(u"typed");
  EXPECT_EQ(WindowText(form.Combo.GetEditHandle()), u"typed");
}

TEST_F(ControlWindows, PictureShowsWhatTheControlsAre) {
  TSampleForm form;
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
  painted.SetText(u"");
  painted.OnPaint = [](TObject*, TCanvas& canvas, const TRect&) {
    canvas.GetBrush().SetColor(clRed);
    canvas.FillRect({5, 5, 25, 15});
  };
  form.Show();
  Pump();
  const TBitmap picture = TakeScreenshot(form.GetHandle());
  Keep(picture, u"controls");
  ASSERT_EQ(picture.GetSize(), form.GetBoundsRect().Size());
  const auto pixel = [&](TWinControl& control, int x, int y) {
    const TPoint at = control.ClientToScreen({x, y}) - form.GetBoundsRect().TopLeft();
    return picture.GetPixel(at.X, at.Y);
  };
  EXPECT_EQ(pixel(painted, 10, 10), clRed);
  EXPECT_EQ(pixel(form.Memo, 100, 60), 0x00C0FFFFu);
  EXPECT_EQ(pixel(form.Rich, 100, 60), RgbColor(220, 240, 220));
  EXPECT_EQ(pixel(form.Top, 2, 38), RgbColor(200, 210, 240));
  EXPECT_EQ(pixel(form.Edit, 170, 10), ColorToRGB(clWindow));
  EXPECT_EQ(pixel(form.Combo, 12, form.Combo.GetHeight() / 2), clBlue);
}

TEST_F(ControlWindows, StyleAndDensityReachTheWindows) {
  TSampleForm form;
  form.Combo.AddItem({u"Desktop", -1, -1, 0, nullptr});
  form.Combo.SetItemIndex(0);
  form.Show();
  ASSERT_TRUE(TStyleManager::TrySetStyle(u"Dark"));
  Pump();
  const auto pixel = [&](const TBitmap& picture, TWinControl& control, int x, int y) {
    const TPoint at = control.ClientToScreen({x, y}) - form.GetBoundsRect().TopLeft();
    return picture.GetPixel(at.X, at.Y);
  };
  const TBitmap dark = TakeScreenshot(form.GetHandle());
  Keep(dark, u"dark");
  const TColor window = TStyleManager::ActiveStyle().GetSystemColor(clWindow);
  EXPECT_EQ(pixel(dark, form.Edit, 170, 10), window);
  EXPECT_EQ(pixel(dark, form.Memo, 100, 60), window);
  EXPECT_EQ(pixel(dark, form.Rich, 100, 60), window);
  EXPECT_EQ(pixel(dark, form.Top, 2, 38), TStyleManager::ActiveStyle().GetSystemColor(clBtnFace));

  TStyleManager::TrySetStyle(u"System");
  for (const int density : {144, 192, 96}) {
    SCOPED_TRACE(density);
    RECT suggested{20, 20, 20 + 420 * density / 96, 20 + 300 * density / 96};
    ::SendMessageW(form.GetHandle(), WM_DPICHANGED, MAKEWPARAM(density, density),
                   reinterpret_cast<LPARAM>(&suggested));
    Pump();
    const TBitmap picture = TakeScreenshot(form.GetHandle());
    Keep(picture, u"density" + IntToStr(density));
    EXPECT_EQ(picture.GetSize(), TRect(suggested).Size());
    EXPECT_EQ(form.Edit.GetWidth(), MulDiv(180, density, 96));
    EXPECT_EQ(ClientBounds(form.Edit, form.Edit.GetHandle()), form.Edit.GetBoundsRect());
    EXPECT_EQ(form.Combo.GetBoundsRect().Bottom, form.GetClientSize().Height);
    // The text grows with the window.
    const auto font =
        reinterpret_cast<HFONT>(::SendMessageW(form.Edit.GetHandle(), WM_GETFONT, 0, 0));
    LOGFONTW description{};
    ::GetObjectW(font, sizeof description, &description);
    EXPECT_EQ(std::abs(description.lfHeight), MulDiv(12, density, 96));
  }
}

}  // namespace
}  // namespace oak::tests
