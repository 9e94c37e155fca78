// Threads that are killed, which only this system can.
#include "tests/threading/PoolKit.h"

namespace oak::tests {
namespace {

using testkit::TMainQueue;
using testkit::TScopedApi;

// In real time: a killed thread would stay in a clock's list of sleepers.
TEST(WorkerPoolForcedEnd, KillsTheThreadAndReleasesItsItem) {
  TMainQueue queue;
  TString message;
  TScopedApi debug(Api().OutputDebugStringW, [&](LPCWSTR text) { message = FromW(text); });
  std::atomic<int> allDone{0};
  TWorkerThreadPool pool(true);
  pool.SetMaxTimeUntilHardTerminate(50);
  pool.SetMaxRunningThreads(1);
  pool.OnAllWorkItemsDone = [&](bool) { ++allDone; };
  std::atomic<bool> started{false};
  pool.AddWorkItem(MakeRef<TTestItem>([&](TTestItem&) {
    started = true;
    Api().Sleep(INFINITE);
  }));
  ASSERT_TRUE(queue.RunUntil([&] { return started.load(); }));
  pool.TerminateAllThreads(true);
  EXPECT_EQ(pool.GetCount(), 0);
  EXPECT_EQ(pool.GetWorkItemsCount(), 0);
  EXPECT_EQ(allDone, 1);
  EXPECT_EQ(TCounted::Alive(), 0) << "the killed thread can't release it";
  EXPECT_TRUE(EndsWith(message, u"TestItem the hard way.")) << ToUtf8(message);
  EXPECT_TRUE(TThread::AwaitNone(20'000));

  // The pool goes on.
  std::atomic<bool> ran{false};
  pool.AddWorkItem(MakeRef<TTestItem>([&](TTestItem&) { ran = true; }));
  EXPECT_TRUE(queue.RunUntil([&] { return ran.load(); }));
}

}  // namespace
}  // namespace oak::tests
