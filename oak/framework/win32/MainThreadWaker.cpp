// Calling the main thread: a message-only window, which any message loop serves, also
// that of a foreign program, of a menu or of a modal dialog.
#include <mutex>
#include <utility>

#include "oak/framework/MainThreadQueue.h"
#include "oak/framework/Thread.h"
#include "oak/platform/windows/WindowsHeaders.h"

namespace oak {
namespace {

constexpr UINT DueMessage = WM_USER + 1;
constexpr WPARAM AfterPause = 1;  ///< Parameter of that message
constexpr DWORD PauseMs = 10;
constexpr wchar_t WakerClass[] = L"OakMainThreadWaker";

class TWindowWaker final : public IMainThreadWaker {
 public:
  static TWindowWaker& Instance() {
    static auto& waker = *new TWindowWaker;  // a thread may be inside of it at any time
    return waker;
  }
  void Open();
  void Close() noexcept;

  bool Wake() noexcept override;
  void Woken() noexcept override {}
  bool Wait(DWORD milliseconds) noexcept override;
  void Poke() noexcept override;

 private:
  static HINSTANCE Module() noexcept;
  static LRESULT CALLBACK WindowProc(HWND window, UINT message, WPARAM wParam, LPARAM lParam);
  static void CALLBACK PauseOver(PVOID, BOOLEAN);
  void Due(bool afterPause) noexcept;
  bool LeavesPrecedence() noexcept;
  void EndPause(HANDLE wait) noexcept;

  std::mutex fLock;  ///< Window and event, which other threads use.
  HWND fWindow = nullptr;
  HANDLE fEvent = nullptr;
  HANDLE fPause = nullptr;  ///< The timer that ends a pause. Main thread, as fLastTime.
  ULONGLONG fLastTime = 0;  ///< When the queue was served last.
};

/// The module that holds this code: the program, or the library that it is linked to.
HINSTANCE TWindowWaker::Module() noexcept {
  HMODULE module = nullptr;
  ::GetModuleHandleExW(
      GET_MODULE_HANDLE_EX_FLAG_FROM_ADDRESS | GET_MODULE_HANDLE_EX_FLAG_UNCHANGED_REFCOUNT,
      reinterpret_cast<LPCWSTR>(&TWindowWaker::WindowProc), &module);
  return module;
}

void TWindowWaker::Open() {
  WNDCLASSEXW info{};
  info.cbSize = sizeof info;
  info.lpfnWndProc = &TWindowWaker::WindowProc;
  info.hInstance = Module();
  info.lpszClassName = WakerClass;
  ::RegisterClassExW(&info);
  const HWND window = ::CreateWindowExW(0, WakerClass, L"", 0, 0, 0, 0, 0, HWND_MESSAGE, nullptr,
                                        info.hInstance, nullptr);
  const HANDLE event = ::CreateEventW(nullptr, FALSE, FALSE, nullptr);
  {
    const std::lock_guard lock(fLock);
    fWindow = window;
    fEvent = event;
  }
  if (!window || !event) {
    Close();  // CheckSynchronize still serves the queue
    return;
  }
  TMainThreadQueue& queue = TMainThreadQueue::Instance();
  queue.SetWaker(this);
  if (queue.GetPending() > 0) Wake();
}

void TWindowWaker::Close() noexcept {
  TMainThreadQueue::Instance().SetWaker(nullptr);
  EndPause(INVALID_HANDLE_VALUE);
  HWND window = nullptr;
  {
    const std::lock_guard lock(fLock);
    window = std::exchange(fWindow, nullptr);
    if (fEvent) ::CloseHandle(std::exchange(fEvent, nullptr));
  }
  if (window) ::DestroyWindow(window);
  ::UnregisterClassW(WakerClass, Module());
}

bool TWindowWaker::Wake() noexcept {
  const std::lock_guard lock(fLock);
  return fWindow && ::PostMessageW(fWindow, DueMessage, 0, 0);
}

void TWindowWaker::Poke() noexcept {
  const std::lock_guard lock(fLock);
  if (fEvent) ::SetEvent(fEvent);
}

bool TWindowWaker::Wait(DWORD milliseconds) noexcept {
  const DWORD result = ::MsgWaitForMultipleObjects(1, &fEvent, FALSE, milliseconds, QS_SENDMESSAGE);
  if (result == WAIT_FAILED) return false;
  if (result == WAIT_OBJECT_0 + 1) {
    MSG message;  // looking is enough: sent messages are delivered meanwhile
    ::PeekMessageW(&message, nullptr, 0, 0, PM_NOREMOVE | PM_QS_SENDMESSAGE);
  }
  return true;
}

/// Posted messages go before the user's input and painting. So that threads which post
/// without end do not shut the user out, the queue makes pauses while he waits. They end
/// by a message as well: a timer's would come last and maybe never.
bool TWindowWaker::LeavesPrecedence() noexcept {
  if (fPause) return true;
  if (::GetTickCount64() - fLastTime >= PauseMs) return false;
  if (HIWORD(::GetQueueStatus(QS_INPUT | QS_PAINT)) == 0) return false;
  if (!::CreateTimerQueueTimer(&fPause, nullptr, &TWindowWaker::PauseOver, nullptr, PauseMs, 0,
                               WT_EXECUTEONLYONCE | WT_EXECUTEINTIMERTHREAD)) {
    fPause = nullptr;
    return false;
  }
  TMainThreadQueue::Instance().HoldWakes();
  return true;
}

void CALLBACK TWindowWaker::PauseOver(PVOID, BOOLEAN) {
  TWindowWaker& self = Instance();
  const std::lock_guard lock(self.fLock);
  if (self.fWindow) ::PostMessageW(self.fWindow, DueMessage, AfterPause, 0);
}

/// INVALID_HANDLE_VALUE waits for the timer's thread to leave this code.
void TWindowWaker::EndPause(HANDLE wait) noexcept {
  if (fPause) ::DeleteTimerQueueTimer(nullptr, std::exchange(fPause, nullptr), wait);
}

void TWindowWaker::Due(bool afterPause) noexcept {
  if (afterPause)
    EndPause(nullptr);
  else if (LeavesPrecedence())
    return;
  try {
    TThread::CheckSynchronize();
  } catch (...) {
    // Another thread was named the main one.
  }
  fLastTime = ::GetTickCount64();
}

LRESULT CALLBACK TWindowWaker::WindowProc(HWND window, UINT message, WPARAM wParam, LPARAM lParam) {
  if (message != DueMessage) return ::DefWindowProcW(window, message, wParam, lParam);
  Instance().Due(wParam == AfterPause);
  return 0;
}

}  // namespace

int MainThreadWaitHandle() { return -1; }

void detail::InstallMainThreadWaker() { TWindowWaker::Instance().Open(); }

void detail::RemoveMainThreadWaker() noexcept { TWindowWaker::Instance().Close(); }

}  // namespace oak
