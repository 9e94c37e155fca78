// Modal forms, hints and the clipboard in real windows.
#include "oak/framework/Timer.h"
#include "tests/framework/win32/Win32Fixture.h"

namespace oak::tests {
namespace {

class ServicesWindows : public TWin32Test {
 protected:
  /// Runs once the loop that follows waits for the user.
  void Soon(std::function<void()> action) {
    fTimer.SetInterval(30);
    fTimer.OnTimer = [this, action = std::move(action)](TObject*) {
      const std::function<void()> once = action;
      fTimer.SetEnabled(false);
      once();
    };
    fTimer.Restart();
    fTimer.SetEnabled(true);
  }

 private:
  TTimer fTimer;
};

TEST_F(ServicesWindows, ModalFormHoldsTheOthers) {
  TTestForm main;
  main.Show();
  TTestForm dialog;
  TButton ok;
  ok.SetParent(&dialog);
  ok.SetModalResult(mrOk);
  bool mainEnabled = true, dialogOwned = false;
  Soon([&] {
    mainEnabled = ::IsWindowEnabled(main.GetHandle());
    dialogOwned = ::GetWindow(dialog.GetHandle(), GW_OWNER) == main.GetHandle();
    Click(ok.GetHandle(), 5, 5);
  });
  EXPECT_EQ(dialog.ShowModal(), mrOk);
  EXPECT_FALSE(mainEnabled);
  EXPECT_TRUE(dialogOwned);
  EXPECT_TRUE(::IsWindowEnabled(main.GetHandle()));
  EXPECT_FALSE(::IsWindowVisible(dialog.GetHandle()));

  // The close button of the frame cancels; a window made anew stays modal.
  Soon([&] {
    dialog.RecreateWnd();
    ::PostMessageW(dialog.GetHandle(), WM_CLOSE, 0, 0);
  });
  EXPECT_EQ(dialog.ShowModal(), mrCancel);
  EXPECT_TRUE(::IsWindowEnabled(main.GetHandle()));
}

TEST_F(ServicesWindows, ClipboardKeepsText) {
  const TString text = u"Zeile 1\r\n\u00E4\u4E2D\U0001F600";
  Clipboard().SetAsText(text);
  EXPECT_TRUE(Clipboard().HasText());
  EXPECT_EQ(Clipboard().GetAsText(), text);
}

TEST_F(ServicesWindows, HintAppearsWhereTheMouseRests) {
  TTestForm form;
  TPanel panel;
  panel.SetParent(&form);
  panel.SetBounds(0, 0, 200, 100);
  panel.SetHint(u"what it is");
  panel.SetShowHint(true);
  form.Show();
  Application().SetHintPause(10);
  const auto shownTip = [] {
    HWND tip = nullptr;
    while ((tip = ::FindWindowExW(nullptr, tip, TOOLTIPS_CLASSW, nullptr)))
      if (::IsWindowVisible(tip)) return tip;
    return tip;
  };
  const TPoint at = panel.ClientToScreen({50, 50});
  ::SetCursorPos(at.X, at.Y);
  ::PostMessageW(panel.GetHandle(), WM_MOUSEMOVE, 0, MAKELPARAM(50, 50));
  PumpUntil([&] { return shownTip() != nullptr; });
  EXPECT_EQ(WindowText(shownTip()), u"what it is");
  ::PostMessageW(panel.GetHandle(), WM_LBUTTONDOWN, MK_LBUTTON, MAKELPARAM(50, 50));
  Pump();
  EXPECT_EQ(shownTip(), nullptr);
  Application().SetHintPause(500);
}

}  // namespace
}  // namespace oak::tests
