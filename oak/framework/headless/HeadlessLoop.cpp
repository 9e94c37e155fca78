// The message queue of the headless desktop, its timers and the loops that wait.
#include <algorithm>
#include <chrono>
#include <new>
#include <thread>

#include "oak/base/Exceptions.h"
#include "oak/framework/Application.h"
#include "oak/framework/MainThreadQueue.h"
#include "oak/framework/Thread.h"
#include "oak/framework/WinControl.h"
#include "oak/framework/headless/HeadlessDesktop.h"
#include "oak/framework/headless/HeadlessHint.h"
#include "oak/platform/Api.h"
#include "oak/platform/WaitClock.h"

namespace oak {
namespace {

using TRealClock = std::chrono::steady_clock;

/// A loop that nobody ends gives up after that, in a test.
constexpr std::chrono::seconds LongestLoop{30};
/// ... and after so many rounds in which nothing but timers happened.
constexpr std::uint64_t MostIdleRounds = 20'000;
/// How often such a loop looks at the time meanwhile, in milliseconds.
constexpr DWORD LookInterval = 100;
constexpr DWORD LookAtThreads = 10;
constexpr std::uint64_t MostMessages = 1'000'000;

/// Runs what a message stands for; an exception is the program's, not the loop's.
template <class F>
void HandleMessageBy(F&& run) noexcept {
  try {
    run();
  } catch (...) {
    Application().HandleException(nullptr);
  }
}

/// Whether time passes only when a test says so.
bool IsTimeVirtual() { return TWaitClockUse() || Api().GetTickCount64.Replacement(); }

}  // namespace

// --- timers ------------------------------------------------------------------

struct THeadlessDesktop::TTimerEntry {
  std::uint64_t Number;
  std::uint64_t Due;
  unsigned Interval;
  HWND Window;  // null: a timer of the program
  int Id;
  std::function<void()> Tick;
  bool Alive = true;
};

class THeadlessDesktop::TTimerHandle final : public ITimerPeer {
 public:
  explicit TTimerHandle(TTimerRef entry) : fEntry(std::move(entry)) {}
  ~TTimerHandle() override { fEntry->Alive = false; }

 private:
  TTimerRef fEntry;  // the desktop drops it when it looks next
};

std::uint64_t THeadlessDesktop::Now() const { return Api().GetTickCount64(); }

THeadlessDesktop::TTimerRef THeadlessDesktop::AddTimer(unsigned milliseconds, HWND window, int id,
                                                       std::function<void()> tick) {
  const unsigned interval = std::max(milliseconds, 1u);
  auto entry = std::make_shared<TTimerEntry>(
      TTimerEntry{++fLastTimer, Now() + interval, interval, window, id, std::move(tick)});
  fTimers.push_back(entry);
  return entry;
}

std::unique_ptr<ITimerPeer> THeadlessDesktop::CreateTimer(unsigned milliseconds,
                                                          std::function<void()> tick) {
  return std::make_unique<TTimerHandle>(AddTimer(milliseconds, nullptr, 0, std::move(tick)));
}

void THeadlessDesktop::StartWindowTimer(HWND window, int id, unsigned milliseconds) {
  StopWindowTimer(window, id);
  AddTimer(milliseconds, window, id, [this, window, id] {
    if (THeadlessWindow* const found = FindWindow(window)) found->OnTimerTick(id);
  });
}

void THeadlessDesktop::StopWindowTimer(HWND window, int id) {
  for (const TTimerRef& timer : fTimers)
    if (timer->Window == window && timer->Id == id && window) timer->Alive = false;
}

void THeadlessDesktop::StopWindowTimers(HWND window) {
  for (const TTimerRef& timer : fTimers)
    if (timer->Window == window) timer->Alive = false;
}

THeadlessDesktop::TTimerRef THeadlessDesktop::NextTimer() const {
  TTimerRef next;
  for (const TTimerRef& timer : fTimers)
    if (timer->Alive &&
        (!next || std::pair(timer->Due, timer->Number) < std::pair(next->Due, next->Number)))
      next = timer;
  return next;
}

bool THeadlessDesktop::GetNextTimer(std::uint64_t* ticks) const {
  const TTimerRef next = NextTimer();
  if (next && ticks) *ticks = next->Due;
  return next != nullptr;
}

std::size_t THeadlessDesktop::GetTimerCount() const {
  return static_cast<std::size_t>(std::count_if(
      fTimers.begin(), fTimers.end(), [](const TTimerRef& timer) { return timer->Alive; }));
}

bool THeadlessDesktop::RunTimer() {
  std::erase_if(fTimers, [](const TTimerRef& timer) { return !timer->Alive; });
  const TTimerRef timer = NextTimer();
  if (!timer) return false;
  const std::uint64_t now = Now();
  if (timer->Due > now) return false;
  timer->Due += timer->Interval;
  if (timer->Due <= now) timer->Due = now + timer->Interval;  // ticks that were missed are lost
  HandleMessageBy(timer->Tick);
  return true;
}

// --- hints -------------------------------------------------------------------

void THeadlessDesktop::StartHint() {
  if (fHint && fHint->Holds(fHover, fCursorPos)) return;
  StopHint();
  if (!fHover || !fHover->GetControlOrNil()) return;
  const auto pause = static_cast<unsigned>(std::max(Application().GetHintPause(), 1));
  fHintTimer = AddTimer(pause, nullptr, 0, [this] { ShowHint(); });
}

void THeadlessDesktop::ShowHint() {
  if (fHintTimer) fHintTimer->Alive = false;
  fHintTimer.reset();
  const bool wasShown = fHint != nullptr;
  fHint.reset();
  if (wasShown || !fHover) return;
  const TLifeGuard guard = fHover->Guard();
  THeadlessWindow* const over = fHover;
  const TPoint point = over->ScreenToClient(fCursorPos);
  TRect area = over->GetClientRect();
  const TString text = over->GetControlOrNil()->HandleHint(point, area);
  if (!guard.IsAlive() || fHover != over || text.empty()) return;
  fHint = std::make_unique<THeadlessHint>(*this, *over, area, text, fCursorPos);
  const auto longest = static_cast<unsigned>(std::max(Application().GetHintHidePause(), 1));
  fHintTimer = AddTimer(longest, nullptr, 0, [this] { ShowHint(); });
}

void THeadlessDesktop::StopHint() {
  if (fHintTimer) fHintTimer->Alive = false;
  fHintTimer.reset();
  fHint.reset();
}

TString THeadlessDesktop::GetHintText() const { return fHint ? fHint->GetWindowText() : TString(); }

// --- messages ----------------------------------------------------------------

bool THeadlessDesktop::PostToWindow(HWND window, UINT message, WPARAM wParam,
                                    LPARAM lParam) noexcept {
  try {
    const std::lock_guard lock(fPostLock);
    fPosted.push_back({window, message, wParam, lParam});
  } catch (const std::bad_alloc&) {
    return false;
  }
  WakeUp();
  return true;
}

bool THeadlessDesktop::RunPosted() {
  TPosted posted{};
  {
    const std::lock_guard lock(fPostLock);
    if (fPosted.empty()) return false;
    posted = fPosted.front();
    fPosted.pop_front();
  }
  THeadlessWindow* const window = FindWindow(posted.Window);
  if (!window) return true;  // it died before
  HandleMessageBy([&] {
    TMessage message{posted.Message, posted.WParam, posted.LParam, 0};
    window->OnMessage(message);
  });
  return true;
}

bool THeadlessDesktop::RunQueuedProcedures() {
  TMainThreadQueue& queue = TMainThreadQueue::Instance();
  return queue.GetPending() > 0 && queue.CheckSynchronize();
}

bool THeadlessDesktop::RunInput() {
  if (fInput.empty()) return false;
  const THeadlessInput input = std::move(fInput.front());
  fInput.pop_front();
  HandleMessageBy([&] { DispatchInput(input); });
  return true;
}

bool THeadlessDesktop::ProcessMessage() {
  return RunPosted() || RunQueuedProcedures() || RunActivation() || RunInput() || RunTimer() ||
         PaintNext();
}

std::size_t THeadlessDesktop::GetPendingCount() const {
  const std::lock_guard lock(fPostLock);
  return fPosted.size() + fInput.size();
}

bool THeadlessDesktop::HasWork() const {
  std::uint64_t due = 0;
  return GetPendingCount() > 0 || fActivationDue || TMainThreadQueue::Instance().GetPending() > 0 ||
         (GetNextTimer(&due) && due <= Now()) || NextToPaint();
}

void THeadlessDesktop::WaitMessage() { WaitAtMost(INFINITE); }

void THeadlessDesktop::WaitAtMost(DWORD milliseconds) {
  if (HasWork()) return;
  std::uint64_t due = 0;
  const bool timed = GetNextTimer(&due);
  const bool held = static_cast<bool>(TWaitClockUse());
  if (IsTimeVirtual() && !held) {
    // A clock that nobody advances would never come to the end of a wait; threads may post.
    if (milliseconds != INFINITE) TMainThreadQueue::Instance().Wait(LookAtThreads);
    std::this_thread::yield();
    return;
  }
  if (held && !timed && milliseconds == INFINITE) return;
  if (timed) {
    const std::uint64_t now = Now();
    const std::uint64_t left = due > now ? due - now : 0;
    milliseconds = static_cast<DWORD>(std::min<std::uint64_t>(left, milliseconds));
  }
  TMainThreadQueue::Instance().Wait(milliseconds);
}

void THeadlessDesktop::WakeUp() { TMainThreadQueue::Instance().Poke(); }

void THeadlessDesktop::Run() {
  for (std::uint64_t left = MostMessages; ProcessMessage(); --left)
    if (left == 0) throw EInvalidOperation(u"The messages of the desktop come to no end.");
}

// --- loops -------------------------------------------------------------------

/// Whether anything can still come to a loop at which nobody sits.
bool THeadlessDesktop::CanGoOn(std::uint64_t idleRounds) {
  if (idleRounds > MostIdleRounds) return false;
  if (OnWait && OnWait()) return true;
  if (GetNextTimer(nullptr) && (!IsTimeVirtual() || TWaitClockUse())) return true;
  return TThread::GetRunningCount() > 0;
}

void THeadlessDesktop::RunLoop(const std::function<bool()>& until, TStringView what) {
  const TRealClock::time_point begin = TRealClock::now();
  std::uint64_t idleRounds = 0;
  while (!until()) {
    if (ProcessMessage()) {
      if (!fUnattended || TRealClock::now() - begin < LongestLoop) continue;
    } else if (!fUnattended) {
      WaitMessage();
      continue;
    } else if (CanGoOn(++idleRounds) && TRealClock::now() - begin < LongestLoop) {
      WaitAtMost(LookInterval);
      continue;
    }
    const TString text = TString(what) + u" waits for input that nobody gives.";
    Complain(text);
    throw EInvalidOperation(text);
  }
}

}  // namespace oak
