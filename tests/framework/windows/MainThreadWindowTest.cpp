// The main thread's queue inside message loops that know nothing of it.
#include <gtest/gtest.h>

#include <thread>

#include "oak/framework/MainThreadQueue.h"
#include "oak/framework/Thread.h"
#include "oak/platform/shell_api.h"
#include "testkit/MainQueue.h"

namespace oak {
namespace {

using testkit::TMainQueue;

constexpr int Overdue = 99;

/// An ordinary loop, until somebody posts WM_QUIT; ends by itself when that does not come.
int RunLoop(int longest = 1'000'000) {
  const UINT_PTR watchdog = ::SetTimer(
      nullptr, 0, 20'000, [](HWND, UINT, UINT_PTR, DWORD) { ::PostQuitMessage(Overdue); });
  MSG message{};
  int count = 0;
  while (count++<longest&& ::GetMessageW(&message, nullptr, 0, 0)> 0) {
    ::TranslateMessage(&message);
    ::DispatchMessageW(&message);
  }
  ::KillTimer(nullptr, watchdog);
  return message.message == WM_QUIT ? static_cast<int>(message.wParam) : -1;
}

/// A window that counts what it is told.
class TCountingWindow {
 public:
  TCountingWindow() {
    WNDCLASSEXW info{};
    info.cbSize = sizeof info;
    info.lpfnWndProc = &WindowProc;
    info.hInstance = ::GetModuleHandleW(nullptr);
    info.lpszClassName = L"OakTestCounting";
    ::RegisterClassExW(&info);
    Handle = ::CreateWindowExW(0, info.lpszClassName, L"", WS_OVERLAPPEDWINDOW, 0, 0, 200, 100,
                               nullptr, nullptr, info.hInstance, nullptr);
    Paints = Sent = 0;
  }
  ~TCountingWindow() { ::DestroyWindow(Handle); }
  HWND Handle = nullptr;
  static inline int Paints = 0;
  static inline int Sent = 0;

 private:
  static LRESULT CALLBACK WindowProc(HWND window, UINT message, WPARAM wParam, LPARAM lParam) {
    if (message == WM_APP) return ++Sent;
    if (message == WM_PAINT) {
      ++Paints;
      ::ValidateRect(window, nullptr);
      return 0;
    }
    return ::DefWindowProcW(window, message, wParam, lParam);
  }
};

class MainThreadWindow : public testing::Test {
 protected:
  MainThreadWindow() { InitializeFramework(); }
  ~MainThreadWindow() override {
    MSG message;
    while (::PeekMessageW(&message, nullptr, 0, 0, PM_REMOVE)) ::DispatchMessageW(&message);
  }
  TMainQueue Main;
};

TEST_F(MainThreadWindow, AnyLoopServesTheQueue) {
  int posted = 0;
  TMainThreadQueue::Instance().Post([&] {
    TThread::CreateAnonymousThread([&] {
      for (int i = 0; i < 10; ++i) TThread::Queue(nullptr, [&] { ++posted; });
      TThread::Synchronize(nullptr, [] { ::PostQuitMessage(2); });
    })->Start();
    EXPECT_EQ(RunLoop(), 2);  // as a modal dialog would
    ::PostQuitMessage(3);
  });
  EXPECT_EQ(RunLoop(), 3);
  EXPECT_EQ(posted, 10);
}

TEST_F(MainThreadWindow, ABatchIsOneMessage) {
  int ran = 0;
  for (int i = 0; i < 1000; ++i) TMainThreadQueue::Instance().Post([&] { ++ran; });
  MSG message{};
  int messages = 0;
  while (::PeekMessageW(&message, nullptr, 0, 0, PM_REMOVE)) {
    ::DispatchMessageW(&message);
    ++messages;
  }
  EXPECT_EQ(ran, 1000);
  EXPECT_EQ(messages, 1);
}

TEST_F(MainThreadWindow, APosterWithoutEndDoesNotShutOutThePainting) {
  const TCountingWindow window;
  ::ShowWindow(window.Handle, SW_SHOWNOACTIVATE);
  if (!::IsWindowVisible(window.Handle)) GTEST_SKIP() << "no window can be shown here";
  ::UpdateWindow(window.Handle);
  int rounds = 0;
  bool ending = false;
  std::function<void()> again = [&] {
    ++rounds;
    if (!ending) TMainThreadQueue::Instance().Post(again);
  };
  again();
  const int before = TCountingWindow::Paints;
  ::InvalidateRect(window.Handle, nullptr, TRUE);
  RunLoop(100);
  EXPECT_GT(TCountingWindow::Paints, before);
  EXPECT_GT(rounds, 10) << "and the queue is served all the same";
  ending = true;
  Main.Run();
}

TEST_F(MainThreadWindow, WaitingForAThreadLetsItsSentMessagesThrough) {
  const TCountingWindow window;
  LRESULT answer = 0;
  TThread* const sender = TThread::CreateAnonymousThread([&] {
    DWORD_PTR result = 0;
    ::SendMessageTimeoutW(window.Handle, WM_APP, 0, 0, SMTO_NORMAL, 20'000, &result);
    answer = static_cast<LRESULT>(result);
    TThread::Synchronize(nullptr, [&] { answer += 10; });
  });
  sender->SetFreeOnTerminate(false);
  sender->WaitFor();
  delete sender;
  EXPECT_EQ(answer, 11);
}

TEST_F(MainThreadWindow, EndsWithTheFrameworkAndBeginsAgain) {
  for (int i = 0; i < 2; ++i) {
    EXPECT_TRUE(FinalizeFramework(20'000));
    EXPECT_EQ(TMainThreadQueue::Instance().GetWaker(), nullptr);
    std::thread([] { EXPECT_FALSE(TMainThreadQueue::Instance().Post([] {})); }).join();
    TMainThreadQueue::Instance().Post([] { ::PostQuitMessage(4); });
    EXPECT_EQ(RunLoop(), 4);
  }
}

}  // namespace
}  // namespace oak
