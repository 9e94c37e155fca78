#include "testkit/MainQueue.h"

#include <chrono>
#include <utility>

#include "oak/framework/Thread.h"
#include "oak/platform/MainThread.h"

namespace oak::testkit {
namespace {

constexpr DWORD LongEnough = 20'000;

TMainThreadQueue& Queue() { return TMainThreadQueue::Instance(); }

}  // namespace

TMainQueue::TMainQueue() {
  SetMainThread();
  Queue().Close();
  Queue().Open();
  Queue().CheckSynchronize();
  fBefore = std::exchange(Queue().OnWake, [this] { ++fWakes; });
}

TMainQueue::~TMainQueue() {
  Queue().Close();  // first: what waits may refer to the test's variables, which are gone
  TThread::AwaitNone(LongEnough);
  Queue().OnWake = std::move(fBefore);
  Queue().Open();
}

bool TMainQueue::RunUntil(const std::function<bool()>& condition, std::uint64_t limitMs) {
  using TSteady = std::chrono::steady_clock;
  const auto end = TSteady::now() + std::chrono::milliseconds(limitMs);
  constexpr DWORD slice = 2;  // for conditions that nobody announces
  TParking rest;
  for (;;) {
    Run();
    if (condition()) return true;
    if (TSteady::now() >= end) return false;
    if (TWaitClockUse())
      rest.Park(0, slice);  // a clock of the test must not be moved by this
    else
      Queue().Wait(slice);
  }
}

}  // namespace oak::testkit
