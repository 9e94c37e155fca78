// The worker pool on a system that refuses.
#include "testkit/FaultInjection.h"
#include "tests/threading/PoolKit.h"

namespace oak::tests {
namespace {

using testing::ElementsAre;
using testkit::TFaultInjector;

class WorkerPoolFaults : public TPoolTest {};

TEST_F(WorkerPoolFaults, OnlyWithoutAnyThreadTheAdderLearnsOfIt) {
  for (const char* const function : {"CreateThread", "ResumeThread"}) {
    TWorkerThreadPool pool(false), other(false);
    {
      const TFaultInjector injector(1, ERROR_NOT_ENOUGH_MEMORY, function);
      EXPECT_THROW(Add(pool, Named("first")), EThread);
      EXPECT_TRUE(injector.HasFailed());
    }
    EXPECT_EQ(pool.GetCount(), 0);
    EXPECT_EQ(pool.QueueLength(), 1) << "the item waits for better times";
    try {
      pool.WorkItemsActive();
      ADD_FAILURE() << "work without a thread was not told";
    } catch (const EInvalidOperation& error) {
      EXPECT_EQ(error.GetMessage(),
                u"TWorkerThreadPool should have worker threads in case it has worker items.");
    }
    Add(pool, Named("second"));
    ASSERT_TRUE(Clock.Settle());
    EXPECT_THAT(Trace.Take(), testing::UnorderedElementsAre("first", "second"));
    other.SetMinWorkerThreads(2);
    TEvent gate(true);
    Add(other, Waiting(gate));
    ASSERT_TRUE(Clock.Settle());
    {
      const TFaultInjector injector(1, ERROR_NOT_ENOUGH_MEMORY, function);
      EXPECT_NO_THROW(Add(other, Named("later")));
      EXPECT_TRUE(injector.HasFailed());
    }
    gate.SetEvent();
    ASSERT_TRUE(Clock.Settle());
    EXPECT_THAT(Trace.Take(), ElementsAre("waiting", "later"));
  }
}

// Whatever fails, all work is done in the end or its adder was told, and nothing is left.
TEST_F(WorkerPoolFaults, EachCallMayFail) {
  int failures = 0;
  for (int call = 1;; ++call) {
    TFaultInjector injector(call);
    int accepted = 0;
    {
      TWorkerThreadPool pool(true);
      pool.SetMinWorkerThreads(2);
      pool.SetPriority(tpLower);
      for (int i = 0; i < 4; ++i) {
        try {
          Add(pool, Named("item"));
          ASSERT_TRUE(Clock.Advance(500));
        } catch (const EThread&) {
        }
        ++accepted;
      }
      ASSERT_TRUE(Clock.Settle());
      EXPECT_EQ(Trace.Take().size(), static_cast<std::size_t>(accepted)) << injector.FailedName();
      EXPECT_EQ(pool.GetWorkItemsCount(), 0) << injector.FailedName();
    }
    EXPECT_TRUE(TThread::AwaitNone(20'000));
    if (!injector.HasFailed()) break;
    ++failures;
    ASSERT_LT(failures, 500);
  }
  EXPECT_GT(failures, 4) << "threads, priorities, apartments, names, load";
}

TEST_F(WorkerPoolFaults, AClosedMainThreadQueueKeepsNoThread) {
  TWorkerThreadPool pool(false);
  pool.OnThreadTerminated = [&](TOakThread&) { Trace.Add("told"); };
  Add(pool, Named("work"));
  ASSERT_TRUE(Clock.Settle());
  TMainThreadQueue::Instance().Close();
  pool.TerminateAllThreads(true);
  EXPECT_EQ(pool.GetCount(), 0);
  EXPECT_THAT(Trace.Take(), ElementsAre("work"));
  TMainThreadQueue::Instance().Open();
}

}  // namespace
}  // namespace oak::tests
