// Controls in windows and message loops of others.
#include "tests/framework/win32/Win32Fixture.h"

namespace oak::tests {
namespace {

/// A plain window as a program without this library has it.
class TForeignWindow {
 public:
  explicit TForeignWindow(DWORD style = WS_OVERLAPPEDWINDOW | WS_VISIBLE) {
    WNDCLASSEXW description{};
    description.cbSize = sizeof description;
    description.lpfnWndProc = &Proc;
    description.hInstance = ::GetModuleHandleW(nullptr);
    description.lpszClassName = L"ForeignWindow";
    ::RegisterClassExW(&description);
    Handle = ::CreateWindowExW(0, L"ForeignWindow", L"", style, 10, 10, 400, 300, nullptr, nullptr,
                               description.hInstance, nullptr);
  }
  ~TForeignWindow() {
    if (::IsWindow(Handle)) ::DestroyWindow(Handle);
  }
  /// The message loop of such a program: it knows nothing of ours.
  static void RunLoop() {
    MSG message;
    while (::PeekMessageW(&message, nullptr, 0, 0, PM_REMOVE)) {
      ::TranslateMessage(&message);
      ::DispatchMessageW(&message);
    }
  }

  HWND Handle;
  static inline int Commands = 0;

 private:
  static LRESULT CALLBACK Proc(HWND window, UINT message, WPARAM wParam, LPARAM lParam) {
    if (message == WM_COMMAND) ++Commands;
    return ::DefWindowProcW(window, message, wParam, lParam);
  }
};

class ForeignParent : public TWin32Test {};

TEST_F(ForeignParent, NotificationsFindTheirControl) {
  TForeignWindow window;
  const auto procedure = ::GetWindowLongPtrW(window.Handle, GWLP_WNDPROC);
  int changes = 0;
  {
    TEdit edit;
    edit.OnChange = [&](TObject*) { ++changes; };
    edit.SetColor(RgbColor(10, 200, 30));
    edit.SetBounds(20, 30, 100, 24);
    edit.SetParentWindow(window.Handle);
    TEdit second;
    second.SetBounds(20, 60, 100, 24);
    second.SetParentWindow(window.Handle);
    edit.SetFocus();
    ::PostMessageW(edit.GetHandle(), WM_CHAR, 'a', 1);
    TForeignWindow::RunLoop();
    EXPECT_EQ(changes, 1);
    EXPECT_EQ(edit.GetText(), u"a");
    const TBitmap picture = TakeScreenshot(edit.GetHandle());
    EXPECT_EQ(picture.GetPixel(80, 12), RgbColor(10, 200, 30));
    // Between our controls the tab key moves as on a form.
    ::PostMessageW(edit.GetHandle(), WM_KEYDOWN, VK_TAB, 1);
    TForeignWindow::RunLoop();
    EXPECT_EQ(edit.GetText(), u"a");
    TForeignWindow::Commands = 0;
  }
  // The foreign window gets its own procedure and its own messages back.
  EXPECT_EQ(::GetWindowLongPtrW(window.Handle, GWLP_WNDPROC), procedure);
  ::SendMessageW(window.Handle, WM_COMMAND, 5, 0);
  EXPECT_EQ(TForeignWindow::Commands, 1);
}

TEST_F(ForeignParent, EndOfTheForeignWindowLeavesTheControl) {
  auto window = std::make_unique<TForeignWindow>();
  TPanel panel;
  TEdit edit;
  edit.SetParent(&panel);
  edit.SetText(u"kept");
  panel.SetBounds(0, 0, 200, 100);
  panel.SetParentWindow(window->Handle);
  ASSERT_TRUE(edit.HandleAllocated());
  Type(edit.GetHandle(), u"-");
  window.reset();
  EXPECT_FALSE(panel.HandleAllocated());
  EXPECT_FALSE(edit.HandleAllocated());
  const TString text = edit.GetText();
  EXPECT_EQ(text.size(), 5u);

  TForeignWindow next;
  panel.SetParentWindow(next.Handle);
  EXPECT_EQ(WindowText(edit.GetHandle()), text);
  EXPECT_EQ(ScreenRect(panel.GetHandle()).Size(), (TSize{200, 100}));
  // From one window to another without being made anew.
  TForeignWindow third;
  const HWND handle = panel.GetHandle();
  panel.SetParentWindow(third.Handle);
  EXPECT_EQ(panel.GetHandle(), handle);
  EXPECT_EQ(::GetParent(handle), third.Handle);
}

TEST_F(ForeignParent, ControlEndsWithItsForeignWindowInAnEvent) {
  auto window = std::make_unique<TForeignWindow>();
  auto edit = std::make_unique<TEdit>();
  edit->SetParentWindow(window->Handle);
  edit->OnChange = [&](TObject*) {
    window.reset();
    edit.reset();
  };
  const HWND handle = edit->GetHandle();
  Type(handle, u"x");
  EXPECT_EQ(edit, nullptr);
  EXPECT_FALSE(::IsWindow(handle));
}

}  // namespace
}  // namespace oak::tests
