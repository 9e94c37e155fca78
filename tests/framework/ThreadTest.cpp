#include "oak/framework/Thread.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
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
using testkit::TMainQueue;
using testkit::TVirtualClock;

/// What happened, told by any thread.
class TLog {
 public:
  void Add(const std::string& text) {
    const std::lock_guard guard(fLock);
    fLines.push_back(text);
  }
  std::vector<std::string> Lines() {
    const std::lock_guard guard(fLock);
    return fLines;
  }

 private:
  std::mutex fLock;
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

TEST(Thread, NeverStartedIsDestroyedWithoutAWord) {
  TMainQueue queue;
  TLog log;
  for (const bool freesItself : {false, true}) {
    TTold thread(log);
    thread.SetFreeOnTerminate(freesItself);
  }
  EXPECT_TRUE(TThread::AwaitNone(20'000));
  EXPECT_THAT(log.Lines(), ElementsAre("destroyed", "destroyed"));
}

TEST(Thread, RunsFromStartToEnd) {
  struct TCase {
    bool TerminateFirst, FailExecute, FailDoTerminate;
    std::vector<std::string> Steps;
    const char* Fatal;
    int Result;
  };
  const TCase cases[] = {
      {false, false, false, {"execute", "told", "end"}, "", 7},
      {true, false, false, {"terminated", "told", "end"}, "", 0},
      {false, true, false, {"execute", "told", "end"}, "early", 0},
      {false, false, true, {"execute", "told", "end"}, "late", 7},
      {false, true, true, {"execute", "told", "end"}, "early", 0},
  };
  for (const TCase& c : cases) {
    TMainQueue queue;
    TLog log;
    {
      TTold thread(log, [&] {
        EXPECT_THROW(TThread::Current()->WaitFor(), EThread);
        if (c.FailExecute) throw std::runtime_error("early");
      });
      thread.FailsInDoTerminate = c.FailDoTerminate;
      thread.OnTerminate = [&](TThread& sender) {
        EXPECT_TRUE(IsMainThread());
        EXPECT_FALSE(sender.GetFinished());
        log.Add("told");
      };
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
  TEvent running;
  {
    TThread* self = nullptr;
    TTold thread(log, [&] {
      running.SetEvent();
      // The owner waits in the destructor, and serves this call meanwhile.
      while (!self->GetTerminated()) std::this_thread::yield();
      TThread::Synchronize(self, [&] { log.Add(IsMainThread() ? "served" : "wrong thread"); });
    });
    self = &thread;
    thread.Start();
    running.WaitFor();
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

TEST(Thread, WaitsEndAtTheirMoment) {
  TMainQueue queue;
  TVirtualClock clock;
  clock.HoldThreads();
  TLog log;
  TEvent event;
  TTold thread(log, [&] {
    EXPECT_EQ(event.WaitFor(100), wrTimeout);
    EXPECT_EQ(event.WaitFor(100), wrSignaled);
  });
  thread.Start();
  const std::uint64_t start = clock.GetTicks();
  EXPECT_FALSE(thread.WaitFor(199));
  EXPECT_EQ(clock.GetTicks() - start, 199u);
  event.SetEvent();
  EXPECT_TRUE(thread.WaitFor(99));
  EXPECT_EQ(clock.GetTicks() - start, 199u);
  EXPECT_FALSE(clock.GetOverran());
}

TEST(ThreadFaults, OnlyCreationAndStartCanFail) {
  TMainQueue queue;
  bool ran = false;
  bool refused = false;
  const auto live = [&] {
    TLog log;
    ran = refused = false;
    try {
      TTold thread(log, [&] { ran = true; });
      thread.SetPriority(tpNormal);
      static_cast<void>(thread.GetThreadID());
      try {
        thread.Start();
      } catch (const EThread&) {
        refused = true;
        EXPECT_TRUE(thread.GetSuspended());
      }
      thread.WaitFor();  // tries it again
    } catch (const EThread&) {
      refused = true;
    }
  };
  const int faults = testkit::SweepFaults(live, [&](const std::string& failed) {
    EXPECT_EQ(ran, failed != "CreateThread") << failed;
    EXPECT_EQ(refused, failed == "CreateThread" || failed == "ResumeThread") << failed;
  });
  EXPECT_GE(faults, 4);
  EXPECT_TRUE(TThread::AwaitNone(20'000));
}

TEST(Thread, ForcedEndIsRefusedOrFinal) {
  TMainQueue queue;
  std::atomic<bool> leave{false};
  TEvent running;
  TLog log;
  auto thread = std::make_unique<TTold>(log, [&] {
    running.SetEvent();
    while (!leave) std::this_thread::yield();
  });
  thread->Start();
  running.WaitFor();
  const bool forced = thread->ForceTerminate();
  EXPECT_EQ(forced, static_cast<bool>(Api().TerminateThread)) << "a system that can, does";
  EXPECT_EQ(thread->GetFinished(), forced);
  leave = true;
  thread.reset();  // does not wait for what never comes
  EXPECT_EQ(log.Lines().back(), "destroyed");
}

TEST(ComApartment, IsLeftOnlyIfItWasEntered) {
  TMainQueue queue;
  TLog log;
  TTold thread(log, [] {
    TComApartment outer(COINIT_APARTMENTTHREADED | COINIT_SPEED_OVER_MEMORY);
    EXPECT_EQ(TComApartment(COINIT_MULTITHREADED).GetResult(), RPC_E_CHANGED_MODE);
    EXPECT_EQ(TComApartment().GetResult(), S_FALSE);
    outer.Leave();
    EXPECT_EQ(TComApartment(COINIT_MULTITHREADED).GetResult(), S_OK);
  });
  thread.WaitFor();
  EXPECT_EQ(FatalText(thread), "");
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
