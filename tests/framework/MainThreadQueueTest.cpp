#include "oak/framework/MainThreadQueue.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <latch>
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
  std::thread other;
  {
    std::latch posted(1);
    other = std::thread([&] {
      TThread::Queue(nullptr, Note("1"));
      TThread::ForceQueue(nullptr, Note("2"));
      TThread::Queue(nullptr, Note("3"));
      posted.count_down();
      TThread::Synchronize(nullptr, Note("4"));
      TThread::Queue(nullptr, Note("6"));
    });
    posted.wait();
  }
  EXPECT_TRUE(Log.empty());
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
  Queue().Post(Note("second"));
  EXPECT_TRUE(Main.Run());
  EXPECT_EQ(rounds, 1);
  EXPECT_THAT(Log, ElementsAre("second"));
  EXPECT_EQ(Main.GetPending(), 1u);
  EXPECT_TRUE(Main.Run());
  EXPECT_EQ(rounds, 2);
}

TEST_F(MainThreadQueue, KeepsTheOrderWhenAClosureRunsTheQueue) {
  Queue().Post([&] {
    Note("outer begins")();
    Queue().Post(Note("third"));
    Main.Run();
    Note("outer ends")();
  });
  Queue().Post(Note("second"));
  Main.Run();
  EXPECT_THAT(Log, ElementsAre("outer begins", "second", "third", "outer ends"));
}

TEST_F(MainThreadQueue, AFailingClosureIsReportedAndTheRestRuns) {
  std::vector<TString> reports;
  Application().OnException = [&](TObject* sender, const std::exception_ptr& e) {
    EXPECT_EQ(sender, nullptr);
    reports.push_back(ExceptionText(e));
  };
  Queue().Post([] { throw std::runtime_error("a"); });
  Queue().Post(Note("between"));
  Queue().Post([] { throw EThread(u"b"); });
  Queue().Post([] { throw 5; });
  Queue().Post(Note("last"));
  Main.Run();
  Application().OnException = nullptr;
  EXPECT_THAT(reports, ElementsAre(u"a", u"b", u"Unknown exception"));
  EXPECT_THAT(Log, ElementsAre("between", "last"));
}

TEST_F(MainThreadQueue, SynchronizeRaisesAtTheCaller) {
  TString text;
  std::thread other([&] {
    try {
      TThread::Synchronize(nullptr, [] { throw EThread(u"from the main thread"); });
    } catch (const EThread& e) {
      text = e.GetMessage();
    }
    Queue().Post(Note("done"));
  });
  EXPECT_TRUE(Main.RunUntil([&] { return !Log.empty(); }));
  other.join();
  EXPECT_EQ(text, u"from the main thread");
  EXPECT_THROW(TThread::Synchronize(nullptr, [] { throw EThread(u"at once"); }), EThread);
}

TEST_F(MainThreadQueue, RemovesByThreadAndToken) {
  class TIdle final : public TThread {
   public:
    ~TIdle() override { Finish(); }

   protected:
    void Execute() override {}
  };
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
    TIdle thread;
    Queue().Post(Note("none"));
    Queue().Post(Note("thread"), &thread);
    Queue().Post(Note("token 0"), nullptr, &tokens[0]);
    Queue().Post(Note("thread, token 0"), &thread, &tokens[0]);
    Queue().Post(Note("thread, token 1"), &thread, &tokens[1]);
    TThread::RemoveQueuedEvents(c.ByThread ? &thread : nullptr, c.Token);
    Main.Run();
    EXPECT_EQ(Log, c.Left);
    Log.clear();
    Queue().Post(Note("of a thread that goes"), &thread);
  }
  Main.Run();
  EXPECT_THAT(Log, ElementsAre());
}

// A closure's end may do what it likes, such as posting; no lock is held then.
TEST_F(MainThreadQueue, DestroysClosuresOutsideOfItsLock) {
  struct TPostsInTheEnd {
    ~TPostsInTheEnd() {
      Posted = Queue().Post([] {}) ? 1 : 2;
    }
    int& Posted;
  };
  const int token = 0;
  struct TCase {
    const char* Name;
    std::function<void()> Drop;
    int Posted;
  };
  const TCase cases[] = {{"run", [&] { Main.Run(); }, 1},
                         {"removed", [&] { Queue().Remove(nullptr, &token); }, 1},
                         {"closed", [] { Queue().Close(); }, 2}};
  for (const TCase& c : cases) {
    SCOPED_TRACE(c.Name);
    int posted = 0;
    Queue().Post([end = std::make_shared<TPostsInTheEnd>(posted)] {}, nullptr, &token);
    c.Drop();
    EXPECT_EQ(posted, c.Posted);
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
  });
  EXPECT_EQ(Main.GetWakes(), 1);
  Queue().Post([&] { Queue().Post(Note("!")); });
  Main.Run();
  EXPECT_EQ(Main.GetWakes(), 2) << "for what came while the batch ran";
  Main.Run();
  EXPECT_EQ(Log.size(), 11u);
  EXPECT_EQ(Main.GetWakes(), 2);
}

TEST_F(MainThreadQueue, IsServedByTheMainThreadAlone) {
  Queue().Post(Note("here"));
  OnThread([] { EXPECT_THROW(TThread::CheckSynchronize(), EThread); });
  EXPECT_TRUE(Log.empty());
  Main.Run();
  EXPECT_THAT(Log, ElementsAre("here"));
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

TEST_F(MainThreadQueue, ManyThreadsPostAndWait) {
  constexpr int threads = 4, each = 500;
  int posted = 0, sent = 0;  // the main thread's
  std::atomic<int> over{0};
  for (int i = 0; i < threads; ++i)
    TThread::CreateAnonymousThread([&] {
      for (int k = 0; k < each; ++k) {
        TThread::Queue(nullptr, [&] { ++posted; });
        if (k % 5 == 0) TThread::Synchronize(nullptr, [&] { ++sent; });
      }
      ++over;
    })->Start();
  EXPECT_TRUE(Main.RunUntil([&] { return over == threads && Main.GetPending() == 0; }));
  EXPECT_EQ(posted, threads * each);
  EXPECT_EQ(sent, threads * each / 5);
}

// --- reports of exceptions -----------------------------------------------------------

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

  TObject* told = nullptr;
  Application().OnException = [&](TObject* sender, const std::exception_ptr&) {
    told = sender;
    throw std::runtime_error("the handler itself");
  };
  report();
  EXPECT_EQ(told, &Application());
  OnThread(report);
  Main.Run();
  EXPECT_EQ(told, nullptr) << "the sender may be gone by then";
  Application().OnException = nullptr;

  Queue().Close();
  OnThread(report);
  EXPECT_EQ(lines.back(), "other: x") << "nobody else would tell";
  Application().HandleException(nullptr, nullptr);  // nothing to tell
  EXPECT_EQ(lines.size(), 5u);
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
  EXPECT_TRUE(TMainThreadQueue::Instance().Post([&] { ran = true; }));
  queue.Run();
  EXPECT_TRUE(ran);
}

}  // namespace
}  // namespace oak
