#include "oak/framework/MainThreadQueue.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <stdexcept>
#include <thread>

#include "oak/framework/Application.h"
#include "oak/framework/Thread.h"
#include "oak/platform/MainThread.h"
#include "testkit/MainQueue.h"
#include "testkit/ScopedApi.h"
#include "testkit/VirtualClock.h"

namespace oak {
namespace {

using testing::ElementsAre;
using testkit::TMainQueue;
using testkit::TScopedApi;
using testkit::TVirtualClock;

TMainThreadQueue& Queue() { return TMainThreadQueue::Instance(); }

/// Runs a body on a thread that the library does not know, to its end.
void OnThread(const std::function<void()>& body) { std::thread(body).join(); }

class MainThreadQueue : public testing::Test {
 protected:
  std::function<void()> Note(const std::string& text) {
    return [this, text] { Log.push_back(text); };
  }
  TMainQueue Main;
  std::vector<std::string> Log;
};

TEST_F(MainThreadQueue, RunsInTheOrderOfPosting) {
  TEvent posted;
  std::thread other([&] {
    TThread::Queue(nullptr, Note("1"));
    TThread::ForceQueue(nullptr, Note("2"));
    TThread::Queue(nullptr, Note("3"));
    posted.SetEvent();
    TThread::Synchronize(nullptr, Note("4"));
    TThread::Queue(nullptr, Note("6"));
  });
  posted.WaitFor();
  EXPECT_TRUE(Main.RunUntil([&] { return Log.size() == 4; }));
  TThread::Queue(nullptr, Note("5, at once"));
  other.join();
  TThread::ForceQueue(nullptr, Note("7"));
  EXPECT_TRUE(Main.Run());
  EXPECT_FALSE(Main.Run());
  EXPECT_THAT(Log, ElementsAre("1", "2", "3", "4", "5, at once", "6", "7"));
}

TEST_F(MainThreadQueue, WhatIsPostedWhileRunningWaitsForTheNextRound) {
  int rounds = 0;
  std::function<void()> again = [&] {
    ++rounds;
    Queue().Post(again);
  };
  Queue().Post(again);
  EXPECT_TRUE(Main.Run());
  EXPECT_EQ(rounds, 1);
  EXPECT_EQ(Main.GetPending(), 1u);
}

TEST_F(MainThreadQueue, KeepsTheOrderWhenAClosureRunsTheQueue) {
  Queue().Post([&] {
    Queue().Post(Note("third"));
    Main.Run();
    Note("outer ends")();
  });
  Queue().Post(Note("second"));
  Main.Run();
  EXPECT_THAT(Log, ElementsAre("second", "third", "outer ends"));
}

TEST_F(MainThreadQueue, AFailingClosureIsReportedAndTheRestRuns) {
  std::vector<TString> reports;
  Application().OnException = [&](TObject*, const std::exception_ptr& e) {
    reports.push_back(ExceptionText(e));
  };
  Queue().Post([] { throw EThread(u"b"); });
  Queue().Post([] { throw 5; });
  Queue().Post(Note("last"));
  Main.Run();
  Application().OnException = nullptr;
  EXPECT_THAT(reports, ElementsAre(u"b", u"Unknown exception"));
  EXPECT_THAT(Log, ElementsAre("last"));
}

TEST_F(MainThreadQueue, SynchronizeRaisesAtTheCaller) {
  const auto fails = [] { TThread::Synchronize(nullptr, [] { throw EThread(u"sent"); }); };
  std::thread other([&] {
    EXPECT_THROW(fails(), EThread);
    Queue().Post(Note("done"));
  });
  EXPECT_TRUE(Main.RunUntil([&] { return !Log.empty(); }));
  other.join();
  EXPECT_THROW(fails(), EThread);
}

TEST_F(MainThreadQueue, RemovesByThreadAndToken) {
  const int tokens[2] = {};
  struct TCase {
    bool ByThread;
    const void* Token;
    std::vector<std::string> Left;
  };
  const TCase cases[] = {
      {true, nullptr, {"none", "token 0"}},
      {true, &tokens[0], {"none", "thread", "token 0", "thread, token 1"}},
      {false, &tokens[0], {"none", "thread", "thread, token 1"}},
      {false, nullptr, {"none", "thread", "token 0", "thread, token 0", "thread, token 1"}},
  };
  for (const TCase& c : cases) {
    const std::unique_ptr<TThread> thread(TThread::CreateAnonymousThread([] {}));
    thread->SetFreeOnTerminate(false);
    Queue().Post(Note("none"));
    Queue().Post(Note("thread"), thread.get());
    Queue().Post(Note("token 0"), nullptr, &tokens[0]);
    Queue().Post(Note("thread, token 0"), thread.get(), &tokens[0]);
    Queue().Post(Note("thread, token 1"), thread.get(), &tokens[1]);
    TThread::RemoveQueuedEvents(c.ByThread ? thread.get() : nullptr, c.Token);
    Main.Run();
    EXPECT_EQ(std::exchange(Log, {}), c.Left);
    Queue().Post(Note("of a thread that goes"), thread.get());
  }
  Main.Run();
  EXPECT_THAT(Log, ElementsAre());
}

TEST_F(MainThreadQueue, DestroysClosuresOutsideOfItsLock) {
  struct TPostsInTheEnd {
    ~TPostsInTheEnd() {
      Posted = Queue().Post([] {}) ? 1 : 2;
    }
    int& Posted;
  };
  const int token = 0;
  const std::pair<std::function<void()>, int> ways[] = {
      {[&] { Main.Run(); }, 1},
      {[&] { Queue().Remove(nullptr, &token); }, 1},
      {[] { Queue().Close(); }, 2}};
  for (const auto& [drop, expected] : ways) {
    int posted = 0;
    Queue().Post([end = std::make_shared<TPostsInTheEnd>(posted)] {}, nullptr, &token);
    drop();
    EXPECT_EQ(posted, expected);
    Queue().Open();
  }
}

TEST_F(MainThreadQueue, ClosingReleasesWhoWaits) {
  TVirtualClock clock;
  clock.HoldThreads();
  std::atomic<int> refused{0};
  const auto sends = [&] {
    try {
      TThread::Synchronize(nullptr, [&] { Log.push_back("must not run"); });
    } catch (const EThread&) {
      ++refused;
    }
  };
  TThread::CreateAnonymousThread(sends)->Start();
  Queue().Post(Note("must not run"));
  ASSERT_TRUE(clock.AwaitSleepers(1));
  Queue().Close();
  ASSERT_TRUE(TThread::AwaitNone(20'000));
  OnThread(sends);
  EXPECT_FALSE(Queue().Post(Note("must not run")));
  EXPECT_EQ(refused, 2);
  Queue().Open();
  EXPECT_TRUE(Queue().Post(Note("runs again")));
  Main.Run();
  EXPECT_THAT(Log, ElementsAre("runs again"));
}

TEST_F(MainThreadQueue, WakesTheLoopOnceForABatch) {
  OnThread([&] {
    for (int i = 0; i < 10; ++i) Queue().Post(Note("."));
    EXPECT_THROW(TThread::CheckSynchronize(), EThread) << "the main thread's alone";
  });
  EXPECT_EQ(Main.GetWakes(), 1);
  Queue().Post([&] { Queue().Post(Note("!")); });
  Main.Run();
  EXPECT_EQ(Main.GetWakes(), 2) << "for what came while the batch ran";
  Main.Run();
  EXPECT_EQ(Log.size(), 11u);
  EXPECT_EQ(Main.GetWakes(), 2);
}

TEST_F(MainThreadQueue, WaitsForWorkAsLongAsItIsTold) {
  TVirtualClock clock;
  clock.HoldThreads();
  const std::uint64_t start = clock.GetTicks();
  EXPECT_FALSE(TThread::CheckSynchronize(30));
  EXPECT_EQ(clock.GetTicks() - start, 30u);
  TThread::CreateAnonymousThread([&] {
    Api().Sleep(20);
    TThread::Queue(nullptr, Note("came"));
    Api().Sleep(20);
  })->Start();
  EXPECT_TRUE(TThread::CheckSynchronize(1000));
  EXPECT_EQ(clock.GetTicks() - start, 50u);
  EXPECT_THAT(Log, ElementsAre("came"));
  EXPECT_TRUE(clock.Advance(20));
}

TEST_F(MainThreadQueue, ReportsOfOtherThreadsComeToTheMainThread) {
  std::vector<std::string> lines;
  const TScopedApi debug(Api().OutputDebugStringW, [&](LPCWSTR text) {
    lines.push_back((IsMainThread() ? "main: " : "other: ") + ToUtf8(FromW(text)));
  });
  const auto report = [] {
    try {
      throw std::runtime_error("x");
    } catch (...) {
      Application().HandleException(&Application());
    }
  };
  report();
  OnThread(report);
  EXPECT_THAT(lines, ElementsAre("main: x"));
  Main.Run();
  EXPECT_THAT(lines, ElementsAre("main: x", "main: x"));

  TObject* told = &Application();
  Application().OnException = [&](TObject* sender, const std::exception_ptr&) {
    told = sender;
    throw std::runtime_error("the handler itself");
  };
  OnThread(report);
  Main.Run();
  EXPECT_EQ(told, nullptr) << "the sender may be gone by then";
  Application().OnException = nullptr;

  Queue().Close();
  OnThread(report);
  EXPECT_EQ(lines.back(), "other: x") << "nobody else would tell";
}

TEST(Framework, EndsAndBeginsAgain) {
  TMainQueue queue;
  InitializeFramework();
  InitializeFramework();
  std::atomic<bool> refused{false};
  TEvent go;
  TThread::CreateAnonymousThread([&] {
    go.WaitFor();
    try {
      TThread::Synchronize(nullptr, [] {});
    } catch (const EThread&) {
      refused = true;
    }
  })->Start();
  EXPECT_FALSE(FinalizeFramework());
  go.SetEvent();
  EXPECT_TRUE(FinalizeFramework(20'000));
  EXPECT_TRUE(refused);
  bool ran = false;
  EXPECT_TRUE(Queue().Post([&] { ran = true; }));
  queue.Run();
  EXPECT_TRUE(ran);
}

}  // namespace
}  // namespace oak
