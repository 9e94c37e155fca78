#include "testkit/windows/WindowsScreenDriver.h"

#include <array>
#include <cstdio>
#include <cstdlib>

#include "testkit/windows/OwnDesktop.h"

namespace oak::testkit {
namespace {

constexpr UINT GetMenuOfWindow = 0x01E1;  // MN_GETHMENU
constexpr int PatienceInSteps = 500;
constexpr int PatienceOfDrain = 5;

TString PlainCaption(TString text) {
  text = text.substr(0, text.find(u'\t'));
  std::erase(text, u'&');
  return text;
}

constexpr std::array<std::array<DWORD, 2>, 3> ButtonFlags{
    {{MOUSEEVENTF_LEFTDOWN, MOUSEEVENTF_LEFTUP},
     {MOUSEEVENTF_RIGHTDOWN, MOUSEEVENTF_RIGHTUP},
     {MOUSEEVENTF_MIDDLEDOWN, MOUSEEVENTF_MIDDLEUP}}};

/// A visible window of this process and of that class, or nil.
HWND FindOwnWindow(LPCWSTR className) {
  HWND window = nullptr;
  while ((window = ::FindWindowExW(nullptr, window, className, nullptr))) {
    DWORD process = 0;
    ::GetWindowThreadProcessId(window, &process);
    if (process == ::GetCurrentProcessId() && ::IsWindowVisible(window)) return window;
  }
  return nullptr;
}

int FindCaptionIn(HMENU menu, const TString& caption) {
  for (int i = 0; i < ::GetMenuItemCount(menu); ++i) {
    TString text(256, u'\0');
    const int length =
        ::GetMenuStringW(menu, static_cast<UINT>(i), WBuffer(text), 256, MF_BYPOSITION);
    text.resize(static_cast<std::size_t>(length));
    if (SameText(PlainCaption(text), caption)) return i;
  }
  return -1;
}

}  // namespace

TWindowsScreenDriver* TWindowsScreenDriver::gDriver = nullptr;

TWindowsScreenDriver::TWindowsScreenDriver(TScreenFailure onFailure)
    : fOnFailure(std::move(onFailure)), fTime(::GetTickCount() + 1) {
  EnterOwnDesktop();
  fFormer = SetWidgetSet(CreateSystemWidgetSet());
  gDriver = this;
  fFormerOnException =
      std::exchange(Application().OnException, [this](TObject*, const std::exception_ptr& error) {
        fExceptions.push_back(ExceptionText(error));
      });
  fTimer = ::SetTimer(nullptr, 0, USER_TIMER_MINIMUM, &TWindowsScreenDriver::Tick);
}

TWindowsScreenDriver::~TWindowsScreenDriver() {
  Drain();
  ::KillTimer(nullptr, fTimer);
  const std::size_t unused = fMenuChoices.size() + fDialogAnswers.size();
  if (unused > 0) Fail(std::to_string(unused) + " answers that nobody asked for");
  for (const TString& text : fExceptions) Fail("An exception was not handled: " + ToUtf8(text));
  Application().OnException = std::move(fFormerOnException);
  SetWidgetSet(std::move(fFormer));
  gDriver = nullptr;
}

void TWindowsScreenDriver::Fail(const std::string& text) {
  if (fOnFailure) return fOnFailure(text);
  std::fprintf(stderr, "screen driver: %s\n", text.c_str());
  std::abort();
}

// --- steps --------------------------------------------------------------------------------------

void CALLBACK TWindowsScreenDriver::Tick(HWND, UINT, UINT_PTR, DWORD) {
  if (gDriver) gDriver->RunTick();
}

void TWindowsScreenDriver::RunTick() {
  // Without an input under way it is Drain that sees the timer, or a loop of the program that
  // waits: then it sees it again and again.
  if (!fRunning && ++fTicksOfDrain <= PatienceOfDrain) return;
  const bool former = std::exchange(fRunning, true);
  if (!former) StepLater();
  if (!RunStep()) Watch();
  fRunning = former;
}

// A loop that nobody ends any more would hold up the tests.
void TWindowsScreenDriver::Watch() {
  if (++fIdleTicks < PatienceInSteps) return;
  fIdleTicks = 0;
  Fail("a loop waits for a user who does not come");
  if (const HWND capture = ::GetCapture()) ::PostMessageW(capture, WM_CANCELMODE, 0, 0);
  StepKey(VK_ESCAPE, true);
  StepKey(VK_ESCAPE, false);
}

bool TWindowsScreenDriver::RunStep() {
  if (AnswerMenu() || AnswerDialog()) return true;
  if (fSteps.empty()) return false;
  fIdleTicks = 0;
  const TStep step = std::move(fSteps.front());
  fSteps.pop_front();
  try {
    step();
  } catch (...) {
    Application().HandleException(nullptr);
  }
  return true;
}

void TWindowsScreenDriver::Later(std::function<void()> action) {
  if (fRunning)
    Step(std::move(action));
  else
    fLater.push_back(std::move(action));
}

void TWindowsScreenDriver::StepLater() {
  for (std::function<void()>& action : std::exchange(fLater, {})) Step(std::move(action));
}

void TWindowsScreenDriver::Run() {
  StepLater();
  // Within a step: the loop that waits at the moment goes on with the new ones.
  if (std::exchange(fRunning, true)) return;
  do Drain();
  while (RunStep());
  fRunning = false;
}

void TWindowsScreenDriver::Drain() {
  fTicksOfDrain = 0;
  Application().ProcessMessages();
  fTicksOfDrain = 0;
}

void TWindowsScreenDriver::Advance(unsigned milliseconds) {
  const ULONGLONG end = ::GetTickCount64() + milliseconds;
  fTime += milliseconds;
  do {
    Drain();
    const ULONGLONG now = ::GetTickCount64();
    if (now >= end) break;
    ::MsgWaitForMultipleObjectsEx(0, nullptr, static_cast<DWORD>(end - now), QS_ALLINPUT,
                                  MWMO_INPUTAVAILABLE);
  } while (true);
}

void TWindowsScreenDriver::StepMouse(DWORD flags, int data) {
  const DWORD time = ++fTime;
  Step([=] {
    INPUT input{};
    input.type = INPUT_MOUSE;
    input.mi.dwFlags = flags;
    input.mi.mouseData = static_cast<DWORD>(data);
    input.mi.time = time;
    ::SendInput(1, &input, sizeof input);
  });
}

void TWindowsScreenDriver::StepMove(TPoint screen) {
  Step([=] { ::SetCursorPos(screen.X, screen.Y); });
}

void TWindowsScreenDriver::StepKey(std::uint16_t key, bool down) {
  const DWORD time = ++fTime;
  Step([=] {
    INPUT input{};
    input.type = INPUT_KEYBOARD;
    input.ki.wVk = key;
    input.ki.wScan = static_cast<WORD>(::MapVirtualKeyW(key, MAPVK_VK_TO_VSC));
    input.ki.dwFlags = down ? 0 : KEYEVENTF_KEYUP;
    input.ki.time = time;
    ::SendInput(1, &input, sizeof input);
  });
}

void TWindowsScreenDriver::StepShift(TShiftState shift, bool down) {
  if (shift.Contains(ssCtrl)) StepKey(VK_CONTROL, down);
  if (shift.Contains(ssShift)) StepKey(VK_SHIFT, down);
  if (shift.Contains(ssAlt)) StepKey(VK_MENU, down);
}

// --- the user -----------------------------------------------------------------------------------

void TWindowsScreenDriver::MouseMove(const TWinControl& control, TPoint point) {
  StepMove(control.ClientToScreen(point));
  Run();
}

void TWindowsScreenDriver::Click(const TWinControl& control, TPoint point, TShiftState shift,
                                 TMouseButton button) {
  constexpr DWORD pause = 2000;
  fTime += pause;
  StepMove(control.ClientToScreen(point));
  StepShift(shift, true);
  StepMouse(ButtonFlags[button][0]);
  StepMouse(ButtonFlags[button][1]);
  StepShift(shift, false);
  Run();
}

void TWindowsScreenDriver::DoubleClick(const TWinControl& control, TPoint point) {
  Click(control, point, {}, mbLeft);
  StepMouse(MOUSEEVENTF_LEFTDOWN);
  StepMouse(MOUSEEVENTF_LEFTUP);
  Run();
}

void TWindowsScreenDriver::Drag(const TWinControl& from, TPoint fromPoint, const TWinControl& to,
                                TPoint toPoint, TShiftState shift, TMouseButton button) {
  constexpr int moves = 8;
  constexpr DWORD pause = 2000;
  const TPoint start = from.ClientToScreen(fromPoint);
  const TPoint end = to.ClientToScreen(toPoint);
  fTime += pause;
  StepMove(start);
  StepShift(shift, true);
  StepMouse(ButtonFlags[button][0]);
  // A real mouse is still over the control when the drag begins.
  StepMove({start.X + ::GetSystemMetrics(SM_CXDRAG) + 2, start.Y + 1});
  for (int i = 1; i <= moves; ++i)
    StepMove({start.X + (end.X - start.X) * i / moves, start.Y + (end.Y - start.Y) * i / moves});
  StepMouse(ButtonFlags[button][1]);
  StepShift(shift, false);
  Run();
}

void TWindowsScreenDriver::MouseDown(const TWinControl& control, TPoint point) {
  StepMove(control.ClientToScreen(point));
  StepMouse(MOUSEEVENTF_LEFTDOWN);
  Run();
}

void TWindowsScreenDriver::MouseUp() {
  StepMouse(MOUSEEVENTF_LEFTUP);
  Run();
}

void TWindowsScreenDriver::Wheel(const TWinControl& control, TPoint point, int notches) {
  StepMove(control.ClientToScreen(point));
  StepMouse(MOUSEEVENTF_WHEEL, notches * WHEEL_DELTA);
  Run();
}

void TWindowsScreenDriver::ExtraButton(const TWinControl& control, TPoint point, bool forward) {
  StepMove(control.ClientToScreen(point));
  StepMouse(MOUSEEVENTF_XDOWN, forward ? XBUTTON2 : XBUTTON1);
  StepMouse(MOUSEEVENTF_XUP, forward ? XBUTTON2 : XBUTTON1);
  Run();
}

void TWindowsScreenDriver::KeyPress(std::uint16_t key, TShiftState shift) {
  StepShift(shift, true);
  StepKey(key, true);
  StepKey(key, false);
  StepShift(shift, false);
  Run();
}

void TWindowsScreenDriver::TypeText(TStringView text) {
  for (const char16_t character : text) {
    const SHORT key = ::VkKeyScanW(static_cast<WCHAR>(character));
    if (key == -1) {
      Fail("no key for the character " + std::to_string(static_cast<int>(character)));
      continue;
    }
    const bool shift = (key & 0x100) != 0;
    if (shift) StepKey(VK_SHIFT, true);
    StepKey(static_cast<std::uint16_t>(key & 0xFF), true);
    StepKey(static_cast<std::uint16_t>(key & 0xFF), false);
    if (shift) StepKey(VK_SHIFT, false);
  }
  Run();
}

void TWindowsScreenDriver::ResizeWindow(TCustomForm& form, int width, int height) {
  ::SetWindowPos(form.GetHandle(), nullptr, 0, 0, width, height, SWP_NOMOVE | SWP_NOZORDER);
  Drain();
}

void TWindowsScreenDriver::SetWindowState(TCustomForm& form, TWindowState state) {
  constexpr WPARAM commands[] = {SC_RESTORE, SC_MINIMIZE, SC_MAXIMIZE};
  ::SendMessageW(form.GetHandle(), WM_SYSCOMMAND, commands[state], 0);
  Drain();
}

// What the system sends, with the place that it suggests.
void TWindowsScreenDriver::SetPixelsPerInch(TCustomForm& form, int pixelsPerInch) {
  RECT place = form.GetBoundsRect();
  const auto scaled = [&](LONG length) {
    return static_cast<LONG>(MulDiv(length, pixelsPerInch, form.GetPixelsPerInch()));
  };
  place.right = place.left + scaled(place.right - place.left);
  place.bottom = place.top + scaled(place.bottom - place.top);
  ::SendMessageW(form.GetHandle(), WM_DPICHANGED, MAKEWPARAM(pixelsPerInch, pixelsPerInch),
                 reinterpret_cast<LPARAM>(&place));
  Drain();
}

void TWindowsScreenDriver::CloseWindow(TCustomForm& form) {
  ::SendMessageW(form.GetHandle(), WM_SYSCOMMAND, SC_CLOSE, 0);
  Drain();
}

// --- answers ------------------------------------------------------------------------------------

// Clicks through the path of the next choice, one menu after the other.
bool TWindowsScreenDriver::AnswerMenu() {
  const HWND window = FindOwnWindow(L"#32768");
  if (!window) {
    fMenuSeen = nullptr;
    return false;
  }
  if (window == fMenuSeen || fMenuChoices.empty()) return false;
  fMenuSeen = window;
  TString& path = fMenuChoices.front();
  const TString caption = path.substr(0, path.find(u'|'));
  const bool last = caption.size() == path.size();
  const auto menu = reinterpret_cast<HMENU>(::SendMessageW(window, GetMenuOfWindow, 0, 0));
  const int index = caption.empty() ? -1 : FindCaptionIn(menu, caption);
  if (!caption.empty() && index < 0) Fail("no such entry: " + ToUtf8(caption));
  std::deque<TStep> rest = std::exchange(fSteps, {});
  RECT place{};
  if (index < 0 || !::GetMenuItemRect(window, menu, static_cast<UINT>(index), &place)) {
    StepKey(VK_ESCAPE, true);
    StepKey(VK_ESCAPE, false);
  } else {
    StepMove(TRect(place).Center());
    StepMouse(MOUSEEVENTF_LEFTDOWN);
    StepMouse(MOUSEEVENTF_LEFTUP);
  }
  if (last || index < 0)
    fMenuChoices.pop_front();
  else
    path.erase(0, caption.size() + 1);
  fSteps.insert(fSteps.end(), std::make_move_iterator(rest.begin()),
                std::make_move_iterator(rest.end()));
  return true;
}

bool TWindowsScreenDriver::AnswerDialog() {
  const HWND window = FindOwnWindow(L"#32770");
  if (!window) fDialogSeen = nullptr;
  if (!window || window == fDialogSeen || fDialogAnswers.empty()) return false;
  fDialogSeen = window;
  const auto button = static_cast<WPARAM>(fDialogAnswers.front());
  fDialogAnswers.pop_front();
  // Of the two kinds of dialogs each knows one of these.
  ::PostMessageW(window, TDM_CLICK_BUTTON, button, 0);
  ::PostMessageW(window, WM_COMMAND, button, 0);
  return true;
}

std::unique_ptr<IScreenDriver> MakeScreenDriver(TScreenFailure onFailure) {
  return std::make_unique<TWindowsScreenDriver>(std::move(onFailure));
}

}  // namespace oak::testkit
