// Ends in the wrong moment: windows and controls that go while their own messages are handled.
#include "oak/framework/Timer.h"
#include "tests/framework/win32/Win32Fixture.h"
#include "tests/framework/windows/HandleCount.h"

namespace oak::tests {
namespace {

using ::testing::ElementsAre;

class WindowLife : public TWin32Test {};

/// Notes the private messages that it gets.
class TReceiver : public TPanel {
 public:
  using TPanel::TPanel;
  ~TReceiver() override { BeginDestroy(); }
  std::vector<WPARAM> Received;
  std::function<void(TMessage&)> OnMessage;

 protected:
  void WndProc(TMessage& message) override {
    if (message.Msg >= FirstPrivateMessage) Received.push_back(message.WParam);
    if (OnMessage) OnMessage(message);
    TPanel::WndProc(message);
  }
};

BOOL CALLBACK CountWindow(HWND window, LPARAM parameter) {
  DWORD process = 0;
  ::GetWindowThreadProcessId(window, &process);
  if (process == ::GetCurrentProcessId()) ++*reinterpret_cast<int*>(parameter);
  return TRUE;
}

/// All windows of this process, those without a screen included.
int CountWindows() {
  int count = 0;
  const auto withChildren = [](HWND window, LPARAM parameter) -> BOOL {
    CountWindow(window, parameter);
    ::EnumChildWindows(window, &CountWindow, parameter);
    return TRUE;
  };
  ::EnumWindows(withChildren, reinterpret_cast<LPARAM>(&count));
  HWND window = nullptr;
  while ((window = ::FindWindowExW(HWND_MESSAGE, window, nullptr, nullptr)))
    withChildren(window, reinterpret_cast<LPARAM>(&count));
  return count;
}

TEST_F(WindowLife, ControlsDieInTheirOwnEvents) {
  TTestForm form;
  TEdit other;
  other.SetParent(&form);
  form.Show();
  const int before = CountWindows();
  const auto typeInto = [](TWinControl* control) { Type(control->GetHandle(), u"abc"); };
  {
    SCOPED_TRACE("edit in OnChange");
    auto* edit = new TEdit;
    edit->SetParent(&form);
    edit->OnChange = [edit](TObject*) { delete edit; };
    typeInto(edit);
    EXPECT_EQ(CountWindows(), before);
  }
  {
    SCOPED_TRACE("edit in OnKeyPress");
    auto* edit = new TEdit;
    edit->SetParent(&form);
    edit->OnKeyPress = [edit](TObject*, char16_t&) { delete edit; };
    typeInto(edit);
    EXPECT_EQ(CountWindows(), before);
  }
  {
    SCOPED_TRACE("combo in OnSelect");
    auto* combo = new TCustomComboBoxEx;
    combo->SetParent(&form);
    combo->AddItem({u"a", -1, -1, 0, nullptr});
    combo->OnSelect = [combo](TObject*) { delete combo; };
    combo->SetFocus();
    PressKey(::GetFocus(), VK_DOWN);
    EXPECT_EQ(CountWindows(), before);
  }
  {
    SCOPED_TRACE("button in OnClick, OnMouseDown, OnExit");
    for (int way = 0; way < 3; ++way) {
      auto* button = new TButton;
      button->SetParent(&form);
      const auto end = [button](TObject*) { delete button; };
      if (way == 0) button->OnClick = end;
      if (way == 1)
        button->OnMouseDown = [end](TObject*, TMouseButton, TShiftState, int, int) {
          end(nullptr);
        };
      if (way == 2) button->OnExit = end;
      const HWND window = button->GetHandle();
      Click(window, 5, 5);
      if (way == 2) other.SetFocus();
      EXPECT_FALSE(::IsWindow(window)) << way;
    }
    EXPECT_EQ(CountWindows(), before);
  }
  {
    SCOPED_TRACE("panel while it paints and while it is moved");
    for (int way = 0; way < 2; ++way) {
      auto* panel = new TPanel;
      panel->SetParent(&form);
      if (way == 0) panel->OnPaint = [panel](TObject*, TCanvas&, const TRect&) { delete panel; };
      if (way == 1) panel->OnResize = [panel](TObject*) { delete panel; };
      const HWND window = panel->GetHandle();
      if (way == 0) ::RedrawWindow(window, nullptr, nullptr, RDW_INVALIDATE | RDW_UPDATENOW);
      if (way == 1) ::SetWindowPos(window, nullptr, 3, 3, 77, 55, SWP_NOZORDER);
      EXPECT_FALSE(::IsWindow(window)) << way;
    }
    EXPECT_EQ(CountWindows(), before);
  }
}

TEST_F(WindowLife, FormsDieInTheirOwnEvents) {
  const int before = CountWindows();
  const std::vector<std::function<void(TForm&, TEdit&, std::function<void()>)>> ways{
      [](TForm&, TEdit& edit, auto end) {
        edit.OnChange = [end](TObject*) { end(); };
        Type(edit.GetHandle(), u"x");
      },
      [](TForm& form, TEdit&, auto end) {
        form.OnDeactivate = [end](TObject*) { end(); };
        ::SendMessageW(form.GetHandle(), WM_ACTIVATE, WA_INACTIVE, 0);
      },
      [](TForm& form, TEdit&, auto end) {
        form.OnCloseQuery = [end](TObject*, bool&) { end(); };
        ::SendMessageW(form.GetHandle(), WM_CLOSE, 0, 0);
      },
      [](TForm& form, TEdit& edit, auto end) {
        edit.OnExit = [end](TObject*) { end(); };
        edit.SetFocus();
        ::DestroyWindow(form.GetHandle());
      },
  };
  for (std::size_t i = 0; i < ways.size(); ++i) {
    SCOPED_TRACE(i);
    auto* form = new TTestForm;
    auto* edit = new TEdit(form);
    edit->SetParent(form);
    form->Show();
    const TLifeGuard guard = form->GetLifeGuard();
    ways[i](*form, *edit, [form, guard] {
      if (guard.IsAlive()) delete form;
    });
    Pump();
    if (guard.IsAlive()) delete form;
    EXPECT_EQ(CountWindows(), before);
  }
}

TEST_F(WindowLife, WindowsAreMadeAnewInTheirOwnEvents) {
  TTestForm form;
  TEdit edit;
  edit.SetParent(&form);
  form.Show();
  edit.SetFocus();
  const int before = CountWindows();
  edit.OnChange = [&](TObject*) { edit.RecreateWnd(); };
  const HWND former = edit.GetHandle();
  Type(former, u"a");
  EXPECT_NE(edit.GetHandle(), former);
  EXPECT_FALSE(::IsWindow(former));
  EXPECT_EQ(WindowText(edit.GetHandle()), u"a");
  EXPECT_TRUE(edit.Focused());
  edit.OnChange = [&](TObject*) { form.RecreateWnd(); };
  edit.SelectText(1, 0);
  Type(edit.GetHandle(), u"b");
  EXPECT_EQ(WindowText(edit.GetHandle()), u"ab");
  EXPECT_TRUE(::IsWindowVisible(edit.GetHandle()));
  EXPECT_EQ(CountWindows(), before);
}

TEST_F(WindowLife, PostedMessagesComeAfterTheHandlerAndDieWithTheWindow) {
  TTestForm form;
  TReceiver receiver;
  receiver.SetParent(&form);
  form.Show();
  receiver.OnMessage = [&](TMessage& message) {
    if (message.Msg != FirstPrivateMessage || message.WParam != 1) return;
    receiver.PostMessage(FirstPrivateMessage, 3);
    EXPECT_EQ(receiver.Received.size(), 1u);
  };
  EXPECT_TRUE(receiver.PostMessage(FirstPrivateMessage, 1));
  EXPECT_TRUE(receiver.PostMessage(FirstPrivateMessage, 2));
  EXPECT_TRUE(receiver.Received.empty());
  Pump();
  EXPECT_THAT(receiver.Received, ElementsAre(1, 2, 3));

  // What other program parts post to the window comes the same way.
  ::PostMessageW(receiver.GetHandle(), FirstPrivateMessage + 5, 7, 0);
  Pump();
  EXPECT_EQ(receiver.Received.back(), 7u);

  receiver.Received.clear();
  receiver.PostMessage(FirstPrivateMessage, 4);
  receiver.RecreateWnd();
  receiver.PostMessage(FirstPrivateMessage, 5);
  Pump();
  EXPECT_THAT(receiver.Received, ElementsAre(5));
}

TEST_F(WindowLife, TimersEndAtOnce) {
  int ticks = 0;
  auto other = std::make_unique<TTimer>();
  TTimer timer;
  timer.SetInterval(1);
  other->SetInterval(1);
  bool late = false;
  other->OnTimer = [&](TObject*) { late = true; };
  timer.OnTimer = [&](TObject*) {
    other.reset();
    late = false;
    if (++ticks == 3) timer.SetEnabled(false);
  };
  PumpUntil([&] { return ticks >= 3; });
  EXPECT_FALSE(late);
  // A later timer proves that the ended ones are silent.
  bool after = false;
  TTimer sentinel;
  sentinel.SetInterval(20);
  sentinel.OnTimer = [&](TObject*) { after = true; };
  PumpUntil([&] { return after; });
  EXPECT_EQ(ticks, 3);
}

TEST_F(WindowLife, RoundsLeaveNoHandles) {
  const auto round = [] {
    TTestForm form;
    TPanel panel;
    panel.SetParent(&form);
    TEdit edit;
    edit.SetParent(&panel);
    TMemo memo;
    memo.SetParent(&form);
    TCustomComboBoxEx combo;
    combo.SetParent(&form);
    combo.AddItem({u"a", -1, -1, 0, nullptr});
    TLabel label;
    label.SetParent(&form);
    TButton button;
    button.SetParent(&panel);
    TBitmap icon(16, 16);
    icon.Fill(clBlue);
    form.SetIcon(icon);
    form.Show();
    Pump();
    edit.GetFont().SetSize(14);
    edit.SetColor(clYellow);
    panel.RecreateWnd();
    Pump();
  };
  // Caches fill in the first rounds.
  for (int i = 0; i < 10; ++i) round();
  const int windows = CountWindows();
  const int gdi = CountGdiHandles();
  DWORD kernel = 0;
  ::GetProcessHandleCount(::GetCurrentProcess(), &kernel);
  const DWORD user = ::GetGuiResources(::GetCurrentProcess(), GR_USEROBJECTS);
  constexpr int rounds = 200;
  for (int i = 0; i < rounds; ++i) round();
  DWORD kernelAfter = 0;
  ::GetProcessHandleCount(::GetCurrentProcess(), &kernelAfter);
  EXPECT_EQ(CountWindows(), windows);
  EXPECT_LE(CountGdiHandles(), gdi + 2);
  EXPECT_LE(::GetGuiResources(::GetCurrentProcess(), GR_USEROBJECTS), user + 2);
  EXPECT_LE(kernelAfter, kernel + 2);
}

}  // namespace
}  // namespace oak::tests
