#include "oak/framework/Thread.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <latch>
#include <mutex>
#include <stdexcept>
#include <thread>

#include "oak/framework/Application.h"
#include "oak/framework/ComApartment.h"
#include "oak/framework/MainThreadQueue.h"
#include "oak/platform/MainThread.h"
#include "testkit/FaultInjection.h"
#include "testkit/MainQueue.h"
#include "testkit/VirtualClock.h"

namespace oak {
namespace {

using testing::ElementsAre;
using testkit::TFaultInjector;
using testkit::TMainQueue;
using testkit::TScopedApi;
using testkit::TVirtualClock;

/// What happened, told by any thread.
class TLog {
 public:
  void Add(const std::string& text) {
    const std::lock_guard guard(fLock);
    fLines.push_back(text);
  }
  std::vector<std::string> Lines() const {
    const std::lock_guard guard(fLock);
    return fLines;
  }

 private:
  mutable std::mutex fLock;
  std::vector<std::string> fLines;
};

/// Tells each step of its life.
class TTold final : public TThread {
 public:
  explicit TTold(TLog& log, TClosure body = {}) : fLog(log), fBody(std::move(body)) {}
  ~TTold() override {
    Finish();
    fLog.Add("destroyed");
  }
  bool FailsInDoTerminate = false;

 protected:
  void Execute() override {
    fLog.Add("execute");
    if (fBody) fBody();
    SetReturnValue(7);
  }
  void TerminatedSet() override { fLog.Add("terminated"); }
  void DoTerminate() override {
    TThread::DoTerminate();
    fLog.Add("end");
    if (FailsInDoTerminate) throw std::runtime_error("late");
  }

 private:
  TLog& fLog;
  const TClosure fBody;
};

std::string FatalText(const TThread& thread) {
  return ToUtf8(ExceptionText(thread.GetFatalException()));
}

// --- life ------------------------------------------------------------------------------

TEST(Thread, NeverStartedIsDestroyedWithoutAWord) {
  TMainQueue queue;
  TLog log;
  {
    TTold thread(log);
    EXPECT_TRUE(thread.GetSuspended());
    EXPECT_FALSE(thread.GetFinished());
  }
  {
    TTold owned(log);  // also when it would have destroyed itself
    owned.SetFreeOnTerminate(true);
  }
  EXPECT_TRUE(TThread::AwaitNone(20'000));
  EXPECT_THAT(log.Lines(), ElementsAre("destroyed", "destroyed"));
}

TEST(Thread, RunsFromStartToEnd) {
  struct TCase {
    const char* Name;
    bool TerminateFirst, FailExecute, FailDoTerminate;
    std::vector<std::string> Steps;
    const char* Fatal;
    int Result;
  };
  const TCase cases[] = {
      {"plain", false, false, false, {"execute", "end"}, "", 7},
      {"terminated first", true, false, false, {"terminated", "end"}, "", 0},
      {"execute fails", false, true, false, {"execute", "end"}, "early", 0},
      {"end fails", false, false, true, {"execute", "end"}, "late", 7},
      {"both fail", false, true, true, {"execute", "end"}, "early", 0},
  };
  for (const TCase& c : cases) {
    SCOPED_TRACE(c.Name);
    TMainQueue queue;
    TLog log;
    {
      TTold thread(log, [&] {
        if (c.FailExecute) throw std::runtime_error("early");
      });
      thread.FailsInDoTerminate = c.FailDoTerminate;
      if (c.TerminateFirst) thread.Terminate();
      thread.Start();
      EXPECT_FALSE(thread.GetSuspended());
      EXPECT_EQ(thread.WaitFor(), c.Result);
      EXPECT_TRUE(thread.GetFinished());
      EXPECT_EQ(FatalText(thread), c.Fatal);
      EXPECT_EQ(log.Lines(), c.Steps);
    }
    EXPECT_EQ(log.Lines().back(), "destroyed");
  }
}

TEST(Thread, FreesItselfAfterItsLastStep) {
  TMainQueue queue;
  TLog log;
  for (const bool fails : {false, true}) {
    auto* thread = new TTold(log, [&] {
      if (fails) throw std::runtime_error("");
    });
    thread->SetFreeOnTerminate(true);
    thread->Start();
    ASSERT_TRUE(TThread::AwaitNone(20'000));
  }
  EXPECT_THAT(log.Lines(),
              ElementsAre("execute", "end", "destroyed", "execute", "end", "destroyed"));
}

TEST(Thread, DestroyingItTerminatesAndWaits) {
  TMainQueue queue;
  TLog log;
  std::latch running(1);
  {
    TThread* self = nullptr;
    TTold thread(log, [&] {
      running.count_down();
      // The owner waits in the destructor, and serves this call meanwhile.
      while (!self->GetTerminated()) std::this_thread::yield();
      TThread::Synchronize(self, [&] { log.Add(IsMainThread() ? "served" : "wrong thread"); });
    });
    self = &thread;
    thread.Start();
    running.wait();
  }
  EXPECT_THAT(log.Lines(), ElementsAre("execute", "terminated", "served", "end", "destroyed"));
}

TEST(Thread, IsStartedOnce) {
  TMainQueue queue;
  TLog log;
  TTold thread(log);
  std::atomic<int> winners{0};
  {
    std::vector<std::jthread> starters;
    for (int i = 0; i < 4; ++i)
      starters.emplace_back([&] { winners += thread.StartIfSuspended(); });
  }
  EXPECT_EQ(winners, 1);
  EXPECT_THROW(thread.Start(), EThread);
  thread.WaitFor();
  EXPECT_THROW(thread.Start(), EThread);
  EXPECT_THAT(log.Lines(), ElementsAre("execute", "end"));
}

TEST(Thread, KnowsItselfAndIsKnown) {
  TMainQueue queue;
  TLog log;
  TThread* seen = nullptr;
  DWORD id = 0;
  TTold thread(log, [&] {
    seen = TThread::Current();
    id = CurrentThreadId();
    EXPECT_THROW(seen->WaitFor(), EThread);
  });
  EXPECT_EQ(TThread::Current(), nullptr);
  thread.WaitFor();  // starts it
  EXPECT_EQ(seen, &thread);
  EXPECT_EQ(id, thread.GetThreadID());
  EXPECT_NE(id, CurrentThreadId());
  EXPECT_NE(thread.GetHandle(), nullptr);
  EXPECT_EQ(ToUtf8(thread.ClassName()).find("TThread"), std::string::npos);
  EXPECT_EQ(FatalText(thread), "");
}

TEST(Thread, OnTerminateRunsOnTheMainThreadBeforeTheEnd) {
  TMainQueue queue;
  TLog log;
  TTold thread(log, [] { throw std::runtime_error("broken"); });
  thread.OnTerminate = [&](TThread& sender) {
    log.Add(IsMainThread() ? "told" : "wrong thread");
    log.Add(FatalText(sender));
    EXPECT_FALSE(sender.GetFinished());
  };
  thread.WaitFor();
  EXPECT_THAT(log.Lines(), ElementsAre("execute", "told", "broken", "end"));
}

// --- waiting ------------------------------------------------------------------------------

TEST(Thread, WaitForOnTheMainThreadServesTheThreadsCalls) {
  TMainQueue queue;
  TLog log;
  int served = 0;
  TTold first(log, [&] {
    for (int i = 0; i < 50; ++i) TThread::Synchronize(nullptr, [&] { ++served; });
  });
  // Waits for the first one, on a thread where nothing is served.
  TTold second(log, [&] { first.WaitFor(); });
  first.Start();
  second.WaitFor();
  EXPECT_EQ(served, 50);
}

TEST(Thread, WaitForGivesUpAfterItsTime) {
  TMainQueue queue;
  TVirtualClock clock;
  clock.HoldThreads();
  TLog log;
  TTold thread(log, [] { Api().Sleep(100); });
  EXPECT_FALSE(thread.WaitFor(0));
  thread.Start();
  const std::uint64_t start = clock.GetTicks();
  EXPECT_FALSE(thread.WaitFor(99));
  EXPECT_EQ(clock.GetTicks() - start, 99u);
  EXPECT_TRUE(thread.WaitFor(99));
  EXPECT_EQ(clock.GetTicks() - start, 100u);
  EXPECT_FALSE(clock.GetOverran());
}

// --- failures of the system ---------------------------------------------------------------

TEST(ThreadFaults, NoThreadCanBeCreated) {
  TMainQueue queue;
  TLog log;
  {
    const TFaultInjector injector(1, ERROR_NOT_ENOUGH_MEMORY, "CreateThread");
    EXPECT_THROW(TTold thread(log), EThread);
    EXPECT_TRUE(injector.HasFailed());
  }
  EXPECT_EQ(TThread::GetRunningCount(), 0);
  EXPECT_THAT(log.Lines(), ElementsAre());
}

TEST(ThreadFaults, StartFailsAndIsTriedAgain) {
  TMainQueue queue;
  TLog log;
  TTold thread(log);
  {
    const TFaultInjector injector(1, ERROR_GEN_FAILURE, "ResumeThread");
    EXPECT_THROW(thread.Start(), EThread);
  }
  EXPECT_TRUE(thread.GetSuspended());
  EXPECT_EQ(TThread::GetRunningCount(), 0);
  EXPECT_EQ(thread.WaitFor(), 7);
}

TEST(ThreadFaults, NothingElseStopsAThread) {
  TMainQueue queue;
  int runs = 0;
  const int faults = testkit::SweepFaults([&] {
    TLog log;
    try {
      TTold thread(log, [&] { ++runs; });
      thread.SetPriority(tpNormal);
      static_cast<void>(thread.GetThreadID());
      thread.Start();
      thread.WaitFor();
    } catch (const EThread&) {
      --runs;
    }
  });
  EXPECT_GE(faults, 4);
  EXPECT_EQ(runs, faults + 1 - 2 - 2);  // creation and start failed in two of them
  EXPECT_TRUE(TThread::AwaitNone(20'000));
}

TEST(Thread, ForcedEndIsRefusedOrFinal) {
  TMainQueue queue;
  std::atomic<bool> leave{false};
  std::latch running(1);
  TLog log;
  auto thread = std::make_unique<TTold>(log, [&] {
    running.count_down();
    while (!leave) std::this_thread::yield();
  });
  thread->Start();
  running.wait();
  if (thread->ForceTerminate()) {
    EXPECT_TRUE(thread->GetFinished());
    EXPECT_EQ(TThread::GetRunningCount(), 0);
    thread.reset();  // does not wait for what never comes
    EXPECT_THAT(log.Lines(), ElementsAre("execute", "destroyed"));
  } else {
    EXPECT_FALSE(Api().TerminateThread) << "a system that can, did not";
    EXPECT_FALSE(thread->GetFinished());
    leave = true;
    thread.reset();
    EXPECT_EQ(log.Lines().back(), "destroyed");
  }
}

TEST(Thread, PrioritiesAreTakenWithoutComplaint) {
  TMainQueue queue;
  TLog log;
  TTold thread(log);
  EXPECT_EQ(thread.GetPriority(), tpNormal);
  for (const auto priority : {tpHigher, tpHighest, tpTimeCritical, tpNormal, tpLower, tpIdle}) {
    thread.SetPriority(priority);
    EXPECT_EQ(thread.GetPriority(), priority);
    const int system = priority == tpHigher ? THREAD_PRIORITY_ABOVE_NORMAL : THREAD_PRIORITY_IDLE;
    EXPECT_TRUE(Api().SetThreadPriority(thread.GetHandle(), system));
  }
  EXPECT_FALSE(Api().SetThreadPriority(nullptr, THREAD_PRIORITY_NORMAL));
}

TEST(ComApartment, IsLeftOnlyIfItWasEntered) {
  TMainQueue queue;
  TLog log;
  TTold thread(log, [] {
    TComApartment outer(COINIT_APARTMENTTHREADED | COINIT_SPEED_OVER_MEMORY);
    EXPECT_EQ(outer.GetResult(), S_OK);
    {
      const TComApartment other(COINIT_MULTITHREADED);
      EXPECT_EQ(other.GetResult(), RPC_E_CHANGED_MODE);
      const TComApartment inner;
      EXPECT_EQ(inner.GetResult(), S_FALSE);
    }
    outer.Leave();
    EXPECT_EQ(TComApartment(COINIT_MULTITHREADED).GetResult(), S_OK);
  });
  thread.WaitFor();
  EXPECT_EQ(FatalText(thread), "");
}

TEST(SystemTimes, GrowAndHoldTogether) {
  const auto number = [](const FILETIME& time) {
    return (std::uint64_t{time.dwHighDateTime} << 32) | time.dwLowDateTime;
  };
  FILETIME idle{}, kernel{}, user{};
  ASSERT_TRUE(Api().GetSystemTimes(&idle, &kernel, &user));
  EXPECT_GE(number(kernel), number(idle));  // the idle time is a part of it
  const std::uint64_t before = number(kernel) + number(user);
  EXPECT_GT(before, 0u);
  // Processors count time as it passes; a second would be ten million of these.
  for (std::uint64_t now = before; now == before; now = number(kernel) + number(user))
    ASSERT_TRUE(Api().GetSystemTimes(nullptr, &kernel, &user));
}

// Many short lives of all kinds at once; the sanitizers look on.
TEST(ThreadStress, LivesOfAllKinds) {
  TMainQueue queue;
  TLog log;
  std::atomic<int> served{0};
  constexpr int rounds = 60;
  for (int i = 0; i < rounds; ++i) {
    auto* freeing = new TTold(log, [&] { TThread::Queue(nullptr, [&] { ++served; }); });
    freeing->SetFreeOnTerminate(true);
    TTold waited(log, [&] { TThread::Synchronize(nullptr, [&] { ++served; }); });
    TTold dropped(log, [&] { TThread::Queue(TThread::Current(), [&] { ++served; }); });
    freeing->Start();
    waited.Start();
    if (i % 3 != 0) dropped.Start();
    if (i % 2 == 0) waited.WaitFor();
  }
  ASSERT_TRUE(TThread::AwaitNone(20'000));
  queue.Run();
  EXPECT_GE(served, rounds + rounds / 2);  // those that were terminated may skip their work
  const auto lines = log.Lines();
  EXPECT_EQ(std::count(lines.begin(), lines.end(), "destroyed"), 3 * rounds);
}

}  // namespace
}  // namespace oak
