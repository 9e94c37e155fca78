// Modal forms, dialogs, hints, density, clipboard, drag and drop in real windows.
#include "oak/base/InterfacedObject.h"
#include "oak/framework/Dialogs.h"
#include "oak/framework/Timer.h"
#include "oak/framework/win32/System.h"
#include "tests/framework/win32/Win32Fixture.h"

namespace oak::tests {
namespace {

using ::testing::ElementsAre;

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

TEST_F(ServicesWindows, DialogGivesTheChosenButton) {
  TTestForm form;
  form.Show();
  TString text;
  const auto press = [&](WPARAM button) {
    Soon([&, button] {
      const HWND dialog = ::GetLastActivePopup(form.GetHandle());
      ASSERT_NE(dialog, form.GetHandle());
      text = WindowText(dialog);
      ::PostMessageW(dialog, WM_COMMAND, button, 0);
    });
  };
  press(IDNO);
  EXPECT_EQ(TaskMessageDlg(u"Instruction", u"Text", mtConfirmation, {mbYes, mbNo}, mbNo), mrNo);
  press(IDOK);
  EXPECT_EQ(MessageDlg(u"Text", mtError, {mbOK}), mrOk);
  press(IDCANCEL);
  EXPECT_EQ(MessageDlg(u"Text", mtWarning, {mbOK, mbCancel}), mrCancel);
  EXPECT_FALSE(text.empty());
}

TEST_F(ServicesWindows, ClipboardKeepsText) {
  const TString text = u"Zeile 1\r\n\u00E4\u4E2D\U0001F600";
  Clipboard().SetAsText(text);
  EXPECT_TRUE(Clipboard().HasText());
  EXPECT_EQ(Clipboard().GetAsText(), text);
  Clipboard().SetAsText(u"");
  EXPECT_EQ(Clipboard().GetAsText(), u"");
}

TEST_F(ServicesWindows, DensityOfTheMonitorScalesTheForm) {
  TTestForm form;
  TPanel panel;
  panel.SetParent(&form);
  panel.SetBounds(10, 20, 100, 40);
  form.Show();
  const int before = form.GetCurrentPPI();
  ASSERT_EQ(before, form.GetFormPeer()->GetPixelsPerInch());
  // The system tells the new density with the place that the window gets there.
  RECT suggested{30, 30, 30 + 630, 30 + 450};
  ::SendMessageW(form.GetHandle(), WM_DPICHANGED, MAKEWPARAM(144, 144),
                 reinterpret_cast<LPARAM>(&suggested));
  EXPECT_EQ(form.GetBoundsRect(), TRect(suggested));
  EXPECT_EQ(form.GetCurrentPPI(), 144);
  EXPECT_EQ(panel.GetWidth(), MulDiv(100, 144, before));
  EXPECT_EQ(ScreenRect(panel.GetHandle()).Height(), panel.GetHeight());
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

/// Notes what is dragged over it.
class TNotingTarget final : public TInterfacedObject<IDropTarget> {
 public:
  explicit TNotingTarget(std::vector<std::string>& log) : fLog(log) {}
  HRESULT STDMETHODCALLTYPE DragEnter(IDataObject*, DWORD, POINTL, DWORD* effect) override {
    return Note("enter", effect);
  }
  HRESULT STDMETHODCALLTYPE DragOver(DWORD, POINTL, DWORD* effect) override {
    *effect &= DROPEFFECT_COPY;
    return S_OK;
  }
  HRESULT STDMETHODCALLTYPE DragLeave() override {
    fLog.push_back("leave");
    return S_OK;
  }
  HRESULT STDMETHODCALLTYPE Drop(IDataObject*, DWORD, POINTL, DWORD* effect) override {
    return Note("drop", effect);
  }

 private:
  HRESULT Note(const char* what, DWORD* effect) {
    fLog.push_back(what);
    *effect &= DROPEFFECT_COPY;
    return S_OK;
  }
  std::vector<std::string>& fLog;
};

void SendMouse(DWORD flags, TPoint to) {
  ::SetCursorPos(to.X, to.Y);
  INPUT input{};
  input.type = INPUT_MOUSE;
  input.mi.dwFlags = flags;
  ::SendInput(1, &input, sizeof input);
}

Ref<IDataObject> SomeData() {
  Ref<IDataObject> data;
  ::SHCreateDataObject(nullptr, 0, nullptr, nullptr, IID_IDataObject,
                       reinterpret_cast<void**>(data.Put()));
  return data;
}

TEST_F(ServicesWindows, DragReachesTheTarget) {
  TTestForm form;
  TPanel source, target;
  source.SetParent(&form);
  source.SetBounds(0, 0, 100, 100);
  target.SetParent(&form);
  target.SetBounds(150, 0, 100, 100);
  std::vector<std::string> log;
  {
    Ref<TNotingTarget> drop = Ref<TNotingTarget>::Adopt(new TNotingTarget(log));
    target.SetDropTarget(drop.Get());
  }
  form.Show();
  Pump();
  const Ref<IDataObject> data = SomeData();
  if (!data) GTEST_SKIP() << "no data object of the shell here";
  const TPoint from = source.ClientToScreen({10, 10});
  const TPoint to = target.ClientToScreen({10, 10});
  const auto drag = [&](std::function<void()> last) {
    log.clear();
    SendMouse(MOUSEEVENTF_LEFTDOWN, from);
    int step = 0;
    TTimer mover;
    mover.SetInterval(20);
    mover.OnTimer = [&](TObject*) {
      switch (++step) {
        case 1:
          return SendMouse(MOUSEEVENTF_MOVE, from + TPoint(20, 0));
        case 2:
        case 3:
          return SendMouse(MOUSEEVENTF_MOVE, to);
        default:
          return last();
      }
    };
    DWORD effect = DROPEFFECT_NONE;
    const HRESULT result = WidgetSet().DoDragDrop(source, data.Get(), nullptr,
                                                  DROPEFFECT_COPY | DROPEFFECT_MOVE, &effect);
    return std::pair(result, effect);
  };
  const auto dropped = drag([&] { SendMouse(MOUSEEVENTF_LEFTUP, to); });
  EXPECT_EQ(dropped.first, DRAGDROP_S_DROP);
  EXPECT_EQ(dropped.second, static_cast<DWORD>(DROPEFFECT_COPY));
  EXPECT_THAT(log, ElementsAre("enter", "drop"));

  // A target that is taken back, or whose window is made anew.
  target.RecreateWnd();
  EXPECT_EQ(drag([&] { SendMouse(MOUSEEVENTF_LEFTUP, to); }).first, DRAGDROP_S_DROP);
  EXPECT_THAT(log, ElementsAre("enter", "drop"));
  target.SetDropTarget(nullptr);
  drag([&] { SendMouse(MOUSEEVENTF_LEFTUP, to); });
  EXPECT_TRUE(log.empty());
}

TEST_F(ServicesWindows, SystemIsDescribed) {
  const std::vector<TMonitorInfo> monitors = WidgetSet().GetMonitors();
  ASSERT_FALSE(monitors.empty());
  EXPECT_EQ(std::count_if(monitors.begin(), monitors.end(),
                          [](const TMonitorInfo& monitor) { return monitor.Primary; }),
            1);
  const TFont font = WidgetSet().GetSystemFont(192);
  EXPECT_FALSE(font.GetName().empty());
  const TSize once = WidgetSet().MeasureText(font, 96, u"Hamburg");
  const TSize twice = WidgetSet().MeasureText(font, 192, u"Hamburg");
  EXPECT_NEAR(twice.Width, 2 * once.Width, once.Width / 3);
  EXPECT_TRUE(win32::HasCommonControls6());
}

}  // namespace
}  // namespace oak::tests
