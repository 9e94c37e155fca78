// The threads of pools, and the pool of ready-made ones.
#include <memory>

#include "tests/threading/PoolKit.h"

namespace oak::tests {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;
using testkit::TScopedApi;
using enum TTaskStatus;

class OakThread : public TPoolTest {};

TEST_F(OakThread, ItsStateFollowsItsLife) {
  TEvent gate;
  TBodyThread thread([&](TBodyThread&) { gate.WaitFor(); });
  thread.SetFreeOnTerminate(false);
  EXPECT_EQ(thread.GetStatus(), WaitingToRun);
  thread.Start();
  EXPECT_EQ(thread.GetStatus(), Running);
  EXPECT_THROW(thread.Start(), EThread);
  EXPECT_EQ(thread.GetStatus(), Running);
  gate.SetEvent();
  EXPECT_TRUE(thread.WaitFor(INFINITE));
  EXPECT_TRUE(thread.IsFinished());
  thread.SetPaused(true);
  EXPECT_EQ(thread.GetStatus(), Completed);

  TBodyThread paused([](TBodyThread&) {});
  paused.SetFreeOnTerminate(false);
  paused.SetPaused(true);
  paused.Start();
  EXPECT_EQ(paused.GetStatus() == Running, false) << "a start does not end a pause";
  paused.WaitFor();
}

TEST_F(OakThread, ADelayEndsWithItsTimeOrTheThread) {
  struct TCase {
    bool Terminated, Canceled;
    std::uint64_t Ended;
  };
  for (const TCase c :
       {TCase{false, false, 1000}, TCase{true, false, 505}, TCase{false, true, 505}}) {
    CancellationToken token;
    std::uint64_t waited = 0;
    TBodyThread thread(
        [&](TBodyThread& self) {
          const std::uint64_t start = Api().GetTickCount64();
          self.Delay(1000);
          waited = Api().GetTickCount64() - start;
        },
        token);
    thread.SetFreeOnTerminate(false);
    thread.Start();
    ASSERT_TRUE(Clock.Advance(502));
    if (c.Terminated) thread.Terminate();
    if (c.Canceled) token.Cancel();
    ASSERT_TRUE(Clock.Advance(600));
    EXPECT_TRUE(thread.WaitFor(INFINITE));
    EXPECT_EQ(waited, c.Ended);
  }
}

TEST_F(OakThread, APauseHoldsTheLookAtTerminated) {
  TBodyThread thread([&](TBodyThread& self) { Trace.Add(self.GetTerminated() ? "end" : "on"); });
  thread.SetFreeOnTerminate(false);
  thread.SetPaused(true);
  thread.Start();
  ASSERT_TRUE(Clock.Advance(250));
  EXPECT_THAT(Trace.Take(), IsEmpty());
  thread.SetPaused(false);
  ASSERT_TRUE(Clock.Advance(49));
  EXPECT_THAT(Trace.Take(), IsEmpty());
  ASSERT_TRUE(Clock.Advance(1));
  EXPECT_THAT(Trace.Take(), ElementsAre("on"));
  thread.WaitFor();
}

TEST_F(OakThread, BackgroundModeIsThatOfTheCallingThread) {
  std::vector<int> modes;
  TScopedApi priority(Api().SetThreadPriority, [&](HANDLE, int mode) -> BOOL {
    modes.push_back(mode);
    return TRUE;
  });
  TBodyThread thread([](TBodyThread&) {});
  for (const bool mode : {false, true, true, false, false}) thread.SetBackgroundMode(mode);
  EXPECT_THAT(modes, ElementsAre(THREAD_MODE_BACKGROUND_BEGIN, THREAD_MODE_BACKGROUND_END));
}

class ThreadPoolOfThreads : public TPoolTest {
 protected:
  TBodyThread* Waiter(TEvent& gate, const char* name) {
    return new TBodyThread([this, &gate, name](TBodyThread&) {
      Trace.Add(name);
      gate.WaitFor();
    });
  }
};

TEST_F(ThreadPoolOfThreads, ThreadsAboveTheLimitWaitForOthersToEnd) {
  TThreadPool pool;
  pool.SetMaxRunningThreads(1);
  TEvent first, second, third;
  pool.Add(Waiter(first, "first"));
  pool.Add(Waiter(second, "second"));
  pool.Add(Waiter(third, "third"));
  ASSERT_TRUE(Clock.Settle());
  EXPECT_EQ(pool.GetCount(), 3);
  EXPECT_EQ(pool.RunningThreadCount(), 1);
  EXPECT_THAT(Trace.Take(), ElementsAre("first"));
  first.SetEvent();
  ASSERT_TRUE(Clock.Settle());
  EXPECT_THAT(Trace.Take(), ElementsAre("second"));
  // The count may equal the limit and still one more is started.
  pool.SetMaxRunningThreads(2);
  ASSERT_TRUE(Clock.Settle());
  EXPECT_THAT(Trace.Take(), ElementsAre("third"));
  EXPECT_EQ(pool.RunningThreadCount(), 2);
  pool.SetMaxRunningThreads(1);
  EXPECT_EQ(pool.ThreadsNotTerminated(), 1);
  second.SetEvent();
  third.SetEvent();
  ASSERT_TRUE(Clock.Settle());
  EXPECT_FALSE(pool.ThreadsActive());
}

TEST_F(ThreadPoolOfThreads, EndsWhatRunsAndWhatStillWaits) {
  std::atomic<int> destroyed{0};
  const auto make = [&] {
    auto guard = std::shared_ptr<void>(nullptr, [&](void*) { ++destroyed; });
    return new TBodyThread([guard](TBodyThread& self) {
      while (!self.GetTerminated()) Api().Sleep(10);
    });
  };
  {
    TThreadPool pool;
    pool.SetMaxRunningThreads(2);
    pool.SetPriority(tpLower);
    for (int i = 0; i < 4; ++i) pool.Add(make());
    ASSERT_TRUE(Clock.Settle());
    EXPECT_EQ(pool.RunningThreadCount(), 2);
    pool.SetPaused(true);
    pool.SetPaused(false);
  }
  EXPECT_TRUE(TThread::AwaitNone(20'000));
  EXPECT_EQ(destroyed, 4);
}

TEST_F(ThreadPoolOfThreads, AThreadThatComesTooLateIsEndedAtOnce) {
  TThreadPool pool;
  TEvent gate;
  pool.Add(Waiter(gate, "hangs"));
  ASSERT_TRUE(Clock.Settle());
  pool.TerminateAllThreads(false);
  pool.Add(Waiter(gate, "late"));
  ASSERT_TRUE(Clock.Settle());
  EXPECT_THAT(Trace.Take(), ElementsAre("hangs")) << "it skipped its execution";
  EXPECT_EQ(pool.GetCount(), 1);
  gate.SetEvent();
  ASSERT_TRUE(Clock.Settle());
  EXPECT_FALSE(pool.GetTerminated());
}

TEST_F(OakThread, AComThreadLivesInTheApartmentThatIsAskedFor) {
  for (const bool freeThreaded : {false, true}) {
    const auto kept = MakeRef<TTestItem>(nullptr);
    TScopedApi enter(Api().CoInitializeEx, [&](LPVOID, DWORD mode) -> HRESULT {
      Trace.Add("enter " + std::to_string(mode));
      return S_OK;
    });
    TScopedApi leave(Api().CoUninitialize, [&] { Trace.Add("leave"); });
    TCOMThread thread([&] { Trace.Add("call"); }, kept.As<IUnknown>(), freeThreaded, false);
    thread.WaitFor();
    EXPECT_THAT(Trace.Take(), ElementsAre(freeThreaded ? "enter 8" : "enter 10", "call", "leave"));
    TCOMThread::Run([&] { throw Exception(u"kept as the fatal exception"); }, kept.As<IUnknown>());
    EXPECT_TRUE(TThread::AwaitNone(20'000));
    EXPECT_THAT(Trace.Take(), ElementsAre("enter 10", "leave"));
  }
}

}  // namespace
}  // namespace oak::tests
