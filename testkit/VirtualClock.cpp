#include "testkit/VirtualClock.h"

#include <algorithm>
#include <chrono>

#include "oak/base/DateTime.h"
#include "oak/framework/Thread.h"

namespace oak::testkit {
namespace {

constexpr std::uint64_t Never = ~std::uint64_t{0};

}  // namespace

TVirtualClock::TVirtualClock(std::uint64_t ticks, std::uint64_t systemTimeMs)
    : fStartTicks(ticks),
      fStartSystemTime(systemTimeMs),
      fGetTickCount64(Api().GetTickCount64, [this] { return fStartTicks + Look() - fFallenBack; }),
      fGetSystemTimeAsFileTime(Api().GetSystemTimeAsFileTime,
                               [this](FILETIME* time) { *time = SystemTime(); }),
      fGetSystemTime(Api().GetSystemTime,
                     [this](SYSTEMTIME* time) { FileTimeToSystem(SystemTime(), *time); }),
      fGetLocalTime(Api().GetLocalTime,
                    [this](SYSTEMTIME* time) { FileTimeToSystem(SystemTime(), *time); }),
      fSleep(Api().Sleep, [this](DWORD milliseconds) { SleepFor(milliseconds); }) {}

TVirtualClock::~TVirtualClock() {
  if (!fHolding) return;
  {
    const std::lock_guard guard(fLock);
    fClosing = true;
  }
  fStirred.notify_all();
  SetWaitClock(nullptr);
  TGuard guard(fLock);
  fStirred.wait(guard, [this] { return fSleepers.empty(); });
}

FILETIME TVirtualClock::SystemTime() {
  constexpr std::uint64_t stepsPerMs = 10'000;
  return TicksToFileTime((fStartSystemTime + Look()) * stepsPerMs);
}

std::uint64_t TVirtualClock::Look() { return fElapsed += fCostOfLook; }

void TVirtualClock::SleepFor(DWORD milliseconds) {
  fSlept += milliseconds;
  if (fHolding)
    Wait(nullptr, milliseconds);
  else
    Advance(milliseconds);
}

bool TVirtualClock::Advance(std::uint64_t milliseconds) {
  if (!fHolding || !IsOnTestThread()) {
    fElapsed += milliseconds;
    Changed();
    return true;
  }
  WaitOnTestThread(nullptr, fElapsed + milliseconds);
  return Settle();
}

// --- held threads ---------------------------------------------------------------

void TVirtualClock::HoldThreads() {
  fTestThread = std::this_thread::get_id();
  fHolding = true;
  SetWaitClock(this);
}

void TVirtualClock::SetBusyThreads(int count) {
  const std::lock_guard guard(fLock);
  fBusyThreads = count;
}

void TVirtualClock::Changed() noexcept {
  // Under the lock, so that no thread is between its look at the event and its sleep.
  { const std::lock_guard guard(fLock); }
  fStirred.notify_all();
}

std::uint64_t TVirtualClock::DeadlineAfter(DWORD milliseconds) const {
  return milliseconds == INFINITE ? Never : fElapsed + milliseconds;
}

bool TVirtualClock::Wait(IWaitable* waitable, DWORD milliseconds) {
  const std::uint64_t deadline = DeadlineAfter(milliseconds);
  return IsOnTestThread() ? WaitOnTestThread(waitable, deadline) : WaitOnThread(waitable, deadline);
}

bool TVirtualClock::WaitOnThread(IWaitable* waitable, std::uint64_t deadline) {
  TSleeper sleeper{waitable, deadline, TThread::Current() != nullptr};
  bool taken = false;
  TGuard guard(fLock);
  fSleepers.push_back(&sleeper);
  fStirred.notify_all();
  fStirred.wait(guard, [&] {
    taken = waitable && waitable->TryTake();
    return taken || fElapsed >= deadline || fClosing;
  });
  std::erase(fSleepers, &sleeper);
  fStirred.notify_all();
  return taken;
}

// Passes time up to the deadline or to the moment at which the wait is over.
bool TVirtualClock::WaitOnTestThread(IWaitable* waitable, std::uint64_t deadline) {
  TGuard guard(fLock);
  for (;;) {
    AwaitReal(guard, [&] { return IsSettled() || (waitable && waitable->IsSignaled()); });
    if (waitable && waitable->TryTake()) return true;
    if (fElapsed >= deadline) return false;
    const std::uint64_t next = std::min(NextDeadline(), deadline);
    if (next != Never)
      StepTo(guard, next);
    else  // for a thread that the clock does not know of
      fStirred.wait(guard);
  }
}

void TVirtualClock::StepTo(TGuard& guard, std::uint64_t moment) {
  fElapsed = moment;
  guard.unlock();
  fStirred.notify_all();
  guard.lock();
}

std::uint64_t TVirtualClock::NextDeadline() const {
  std::uint64_t next = Never;
  for (const TSleeper* sleeper : fSleepers)
    if (sleeper->Deadline > fElapsed) next = std::min(next, sleeper->Deadline);
  return next;
}

bool TVirtualClock::IsDue(const TSleeper& sleeper) const {
  return fElapsed >= sleeper.Deadline || (sleeper.Waitable && sleeper.Waitable->IsSignaled());
}

bool TVirtualClock::IsSettled() const {
  int ours = 0;
  for (const TSleeper* sleeper : fSleepers) {
    if (IsDue(*sleeper)) return false;
    if (sleeper->IsOurs) ++ours;
  }
  return ours + fBusyThreads >= TThread::GetRunningCount();
}

bool TVirtualClock::AwaitReal(TGuard& guard, const std::function<bool()>& condition) {
  // Once is enough to fail a test; it need not go on for hours.
  const std::chrono::milliseconds limit(fOverran ? 10 : fLimit.load());
  const bool met = fStirred.wait_for(guard, limit, condition);
  if (!met) fOverran = true;
  return met;
}

bool TVirtualClock::Settle() {
  TGuard guard(fLock);
  return AwaitReal(guard, [this] { return IsSettled(); });
}

std::size_t TVirtualClock::CountSleepers() const {
  return static_cast<std::size_t>(std::count_if(fSleepers.begin(), fSleepers.end(),
                                                [this](const TSleeper* s) { return !IsDue(*s); }));
}

bool TVirtualClock::AwaitSleepers(std::size_t count) {
  TGuard guard(fLock);
  return AwaitReal(guard, [&] { return CountSleepers() >= count; });
}

std::size_t TVirtualClock::GetSleepers() const {
  const std::lock_guard guard(fLock);
  return CountSleepers();
}

}  // namespace oak::testkit
