#include "oak/framework/MainThreadQueue.h"

#include <algorithm>
#include <iterator>
#include <utility>
#include <vector>

#include "oak/framework/Application.h"
#include "oak/framework/Thread.h"
#include "oak/platform/MainThread.h"

namespace oak {

/// A thread that waits for its closure.
struct TMainThreadQueue::TSent {
  TEvent Over{true};
  std::exception_ptr Error;
  bool Dropped = false;
};

TMainThreadQueue& TMainThreadQueue::Instance() {
  static auto& queue = *new TMainThreadQueue;  // threads post at any late time
  return queue;
}

bool TMainThreadQueue::Append(TEntry entry) {
  detail::EnsureFramework();
  {
    const std::lock_guard lock(fLock);
    if (fClosed) return false;
    entry.Number = ++fLastNumber;
    fEntries.push_back(std::move(entry));
  }
  WakeLoop();
  Poke();
  return true;
}

void TMainThreadQueue::WakeLoop() noexcept {
  if (fWakePending.exchange(true)) return;
  if (IMainThreadWaker* const waker = fWaker; waker && !waker->Wake()) fWakePending = false;
  try {
    if (OnWake) OnWake();
  } catch (...) {
    // The closure waits all the same; whoever posted it can't help.
  }
}

bool TMainThreadQueue::Post(TClosure closure, const TThread* thread, const void* token) {
  return Append({0, std::move(closure), thread, token, nullptr});
}

bool TMainThreadQueue::Send(const TClosure& closure) {
  if (IsMainThread()) {
    closure();
    return true;
  }
  const auto sent = std::make_shared<TSent>();
  if (!Append({0, TClosure(std::cref(closure)), nullptr, nullptr, sent})) return false;
  sent->Over.WaitFor();
  if (sent->Error) std::rethrow_exception(std::exchange(sent->Error, nullptr));
  return !sent->Dropped;
}

void TMainThreadQueue::Remove(const TThread* thread, const void* token) {
  if (!thread && !token) return;
  const auto stays = [&](const TEntry& entry) {
    return entry.Sent || (thread && entry.Thread != thread) || (token && entry.Token != token);
  };
  std::vector<TEntry> removed;  // destroyed after the lock
  const std::lock_guard lock(fLock);
  const auto end = std::stable_partition(fEntries.begin(), fEntries.end(), stays);
  std::move(end, fEntries.end(), std::back_inserter(removed));
  fEntries.erase(end, fEntries.end());
}

bool TMainThreadQueue::RunNext(std::uint64_t last) {
  TEntry entry;
  {
    const std::lock_guard lock(fLock);
    if (fEntries.empty() || fEntries.front().Number > last) return false;
    entry = std::move(fEntries.front());
    fEntries.pop_front();
  }
  try {
    entry.Closure();
  } catch (...) {
    if (entry.Sent)
      entry.Sent->Error = std::current_exception();
    else
      Application().HandleException(nullptr);
  }
  if (entry.Sent) entry.Sent->Over.SetEvent();
  return true;
}

bool TMainThreadQueue::CheckSynchronize(DWORD timeout) {
  if (!IsMainThread())
    throw EThread(u"CheckSynchronize was called on a thread that is not the main thread.");
  if (timeout > 0) {
    fChanged.ResetEvent();  // a signal of former times; what it stood for is seen now
    if (GetPending() == 0) Wait(timeout);
  }
  fWakePending = false;
  if (IMainThreadWaker* const waker = fWaker) waker->Woken();
  std::uint64_t last = 0;
  {
    const std::lock_guard lock(fLock);
    last = fLastNumber;
  }
  bool any = false;
  while (RunNext(last)) any = true;
  return any;
}

std::size_t TMainThreadQueue::GetPending() const {
  const std::lock_guard lock(fLock);
  return fEntries.size();
}

void TMainThreadQueue::Poke() noexcept {
  fChanged.SetEvent();
  if (!fMainWaits) return;
  if (IMainThreadWaker* const waker = fWaker) waker->Poke();
}

void TMainThreadQueue::Wait(DWORD milliseconds) noexcept {
  IMainThreadWaker* const waker = fWaker;
  if (waker && !TWaitClockUse()) {
    fMainWaits = true;  // before the look: a poke is seen here or comes to the waker
    const bool over = fChanged.WaitFor(0) == wrSignaled || waker->Wait(milliseconds);
    fMainWaits = false;
    if (over) return;
  }
  fChanged.WaitFor(milliseconds);
}

void TMainThreadQueue::Close() {
  std::deque<TEntry> dropped;
  {
    const std::lock_guard lock(fLock);
    fClosed = true;
    dropped.swap(fEntries);
  }
  for (const TEntry& entry : dropped) {
    if (!entry.Sent) continue;
    entry.Sent->Dropped = true;
    entry.Sent->Over.SetEvent();
  }
}

void TMainThreadQueue::Open() {
  const std::lock_guard lock(fLock);
  fClosed = false;
}

// --- the framework -------------------------------------------------------------

namespace {

std::atomic<bool> gInstalled{false};

}  // namespace

void InitializeFramework() {
  if (gInstalled.exchange(true)) return;
  TMainThreadQueue::Instance().Open();
  detail::InstallMainThreadWaker();
}

bool FinalizeFramework(DWORD milliseconds) {
  if (milliseconds > 0) TThread::AwaitNone(milliseconds);
  TMainThreadQueue::Instance().Close();
  detail::RemoveMainThreadWaker();
  gInstalled = false;
  return TThread::GetRunningCount() == 0;
}

void detail::EnsureFramework() noexcept {
  if (gInstalled || !IsMainThread()) return;
  try {
    InitializeFramework();
  } catch (...) {
    // The queue works without being called: CheckSynchronize serves it.
  }
}

}  // namespace oak
