// The worker pool: order, growth, idling, its settings.
#include "tests/threading/PoolKit.h"

namespace oak::tests {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;
using testkit::TScopedApi;

// --- the queue ------------------------------------------------------------------------

TEST(WorkItemsQueue, IsAskedByTagClassAndInterface) {
  TWorkItemsQueue queue;
  const auto item = MakeRef<TTestItem>(nullptr);
  item->SetTag(7);
  queue.Add(item, false);
  EXPECT_TRUE(queue.ContainsWorkItem(0)) << "no tag is any tag";
  EXPECT_TRUE(queue.ContainsWorkItem(7, WorkItemClass<TTestItem>()));
  EXPECT_TRUE(queue.ContainsWorkItem(0, WorkItemClass<TBasicWorkItem>())) << "inherited";
  EXPECT_FALSE(queue.ContainsWorkItem(0, WorkItemClass<TDelayedProcedure>()));
  EXPECT_TRUE(queue.ContainsWorkItem(ICancellationIndicator::Iid));
  EXPECT_FALSE(queue.ContainsWorkItem(IPausable::Iid));
  EXPECT_EQ(queue.Clear(), 1);
  EXPECT_EQ(queue.Clear(), 0);
  EXPECT_FALSE(queue.ContainsWorkItem(7));
  EXPECT_EQ(item->GetStatus(), TTaskStatus::WaitingToRun) << "what is dropped keeps its status";
}

class WorkerPool : public TPoolTest {};

TEST_F(WorkerPool, TakesWorkInTheOrderOfItsPriority) {
  TWorkerThreadPool pool(false);
  pool.SetMaxRunningThreads(1);
  TEvent gate;
  Add(pool, Waiting(gate));
  ASSERT_TRUE(Clock.Settle());
  Add(pool, Named("normal"));
  pool.AddWorkItem(Named("plain"));
  pool.AddWorkItems({Named("batch 1"), Named("batch 2")}, TPriority::Normal);
  Add(pool, Named("high 1"), TPriority::Highest);
  pool.AddWorkItems({Named("high 2"), Named("high 3")}, TPriority::Highest);
  pool.SetUseLIFO(true);
  pool.AddWorkItem(Named("last in"));
  EXPECT_EQ(pool.QueueLength(), 8);
  EXPECT_EQ(pool.GetWorkItemsCount(), 9);
  gate.SetEvent();
  ASSERT_TRUE(Clock.Settle());
  EXPECT_THAT(Trace.Take(), ElementsAre("waiting", "last in", "high 3", "high 2", "high 1",
                                        "normal", "plain", "batch 1", "batch 2"));
}

TEST_F(WorkerPool, ABatchAndASingleItemWakeSleepersAtOnce) {
  TWorkerThreadPool pool(false);
  MakeIdle(pool, 3);
  TEvent gate(true);
  const std::uint64_t before = Clock.GetTicks();
  pool.AddWorkItems({Waiting(gate, "a"), Waiting(gate, "b")}, TPriority::Normal);
  ASSERT_TRUE(Clock.Settle());
  EXPECT_EQ(pool.ActiveThreadCount(), 2);
  Add(pool, Waiting(gate, "c"));
  ASSERT_TRUE(Clock.Settle());
  EXPECT_EQ(pool.ActiveThreadCount(), 3);
  EXPECT_EQ(Clock.GetTicks(), before) << "not the poll has found them";
  gate.SetEvent();
}

// --- growth ---------------------------------------------------------------------------

TEST_F(WorkerPool, GrowsAtOnceToItsMinimumWhateverTheLoad) {
  TWorkerThreadPool pool(false);
  pool.SetMaxRunningThreads(4);
  pool.SetMinWorkerThreads(3);
  Cpu.Busy = 100;
  TEvent gate(true);
  EXPECT_EQ(pool.GetCount(), 0) << "a pool begins without threads";
  for (const int count : {1, 2, 3, 3}) {
    Add(pool, Waiting(gate));
    EXPECT_EQ(pool.GetCount(), count);
  }
  pool.SetMinWorkerThreads(4);  // the fourth item waits already
  ASSERT_TRUE(Clock.Settle());
  EXPECT_EQ(pool.ActiveThreadCount(), 4);
  gate.SetEvent();
}

TEST_F(WorkerPool, GrowsAboveItsMinimumOnceIn400Milliseconds) {
  TWorkerThreadPool pool(false);
  pool.SetMaxRunningThreads(4);
  TEvent gate(true);
  struct TStep {
    std::uint64_t Passed;
    int Count;
  };
  // The step above the minimum has no gate. The last one meets the limit.
  for (const TStep step : {TStep{0, 1}, TStep{0, 2}, TStep{0, 2}, TStep{399, 2}, TStep{1, 3},
                           TStep{399, 3}, TStep{1, 4}, TStep{1000, 4}}) {
    ASSERT_TRUE(Clock.Advance(step.Passed));
    Add(pool, Waiting(gate));
    ASSERT_TRUE(Clock.Settle());
    EXPECT_EQ(pool.GetCount(), step.Count) << "at " << Clock.GetTicks();
  }
  gate.SetEvent();
}

TEST_F(WorkerPool, GrowsAboveItsMinimumOnlyOnAMachineThatIsNotBusy) {
  struct TCase {
    int Busy, MaxCpuUsage, Count;
  };
  for (const TCase c : {TCase{79, 80, 2}, TCase{80, 80, 1}, TCase{0, 0, 1}, TCase{99, 150, 2},
                        TCase{100, 150, 1}}) {
    detail::ResetCpuCaches();
    TWorkerThreadPool pool(false);
    pool.SetMaxCpuUsage(c.MaxCpuUsage);
    Cpu.Busy = c.Busy;
    TWorkerThreadPool::GetCPUUsage();  // the mean since the start counts for nothing
    ASSERT_TRUE(Clock.Advance(201));
    TEvent gate(true);
    Add(pool, Waiting(gate));
    ASSERT_TRUE(Clock.Settle());
    Add(pool, Waiting(gate));
    EXPECT_EQ(pool.GetCount(), c.Count) << c.Busy << " of " << c.MaxCpuUsage;
    gate.SetEvent();
  }
}

TEST_F(WorkerPool, GrowsWhenAWorkerLeavesWorkBehindAndNeverByTime) {
  TWorkerThreadPool pool(false);
  Cpu.Busy = 100;
  TEvent first, gate(true);
  Add(pool, Waiting(first, "first"));
  ASSERT_TRUE(Clock.Settle());
  Add(pool, Waiting(gate, "second"));
  Add(pool, Waiting(gate, "third"));
  ASSERT_EQ(pool.GetCount(), 1);
  Cpu.Busy = 0;
  ASSERT_TRUE(Clock.Advance(5000));
  EXPECT_EQ(pool.GetCount(), 1);
  first.SetEvent();
  ASSERT_TRUE(Clock.Settle());
  EXPECT_EQ(pool.GetCount(), 2);
  EXPECT_THAT(Trace.Take(), testing::UnorderedElementsAre("first", "second", "third"));
  gate.SetEvent();
}

// --- idling ---------------------------------------------------------------------------

TEST_F(WorkerPool, AWorkerRetiresAfterMoreThanItsIdleTime) {
  TWorkerThreadPool pool(false);
  MakeIdle(pool, 2);
  ASSERT_TRUE(Clock.Advance(60'000));
  EXPECT_EQ(pool.GetCount(), 2) << "exactly the time is not more than it";
  ASSERT_TRUE(Clock.Advance(499));
  EXPECT_EQ(pool.GetCount(), 2);
  ASSERT_TRUE(Clock.Advance(1));
  EXPECT_EQ(pool.GetCount(), 0) << "the minimum keeps nobody";
  pool.SetMaxRunningThreads(1);
  for (int i = 0; i < 3; ++i) {
    Add(pool, Named("again"));
    ASSERT_TRUE(Clock.Advance(60'000));
    EXPECT_EQ(pool.GetCount(), 1) << "work starts the time anew";
  }
  EXPECT_THAT(Trace.Take(), ElementsAre("again", "again", "again"));
}

TEST_F(WorkerPool, AClockThatFallsBackRetiresWorkersAndLosesNoWork) {
  TWorkerThreadPool pool(false);
  Add(pool, Named("before"));
  ASSERT_TRUE(Clock.Settle());
  Clock.JumpBack(50'000);
  ASSERT_TRUE(Clock.Advance(500));
  EXPECT_EQ(pool.GetCount(), 0);
  Add(pool, Named("after"));
  ASSERT_TRUE(Clock.Settle());
  EXPECT_THAT(Trace.Take(), ElementsAre("before", "after"));
}

// --- settings -------------------------------------------------------------------------

TEST(WorkerPoolSettings, LimitsFollowEachOther) {
  struct TCase {
    const char* Steps;  // M: maximum, m: minimum, and one digit or letter (a: 10)
    int Max, Min;
  };
  const TCase cases[] = {
      {"M6m3", 6, 3},     {"M3m9", 9, 2},  // raising both lowers the minimum by the old limit
      {"M8m5M2", 2, 5},                    // below the minimum: that call leaves it alone
      {"M8m5M2M4", 4, 1},                  // the next one looks at the limit before it
      {"M1m1M5", 5, 1},   {"M8m5M1M5", 5, 1}};
  for (const TCase& c : cases) {
    TWorkerThreadPool pool(false);
    for (const char* step = c.Steps; *step; step += 2) {
      const int value = step[1] - '0';
      *step == 'M' ? pool.SetMaxRunningThreads(value) : pool.SetMinWorkerThreads(value);
    }
    EXPECT_EQ(pool.GetMaxRunningThreads(), c.Max) << c.Steps;
    EXPECT_EQ(pool.GetMinWorkerThreads(), c.Min) << c.Steps;
  }
  TWorkerThreadPool pool(false);
  pool.SetMaxCpuUsage(-1);
  EXPECT_EQ(pool.GetMaxCpuUsage(), 0);
  pool.SetMaxCpuUsage(101);
  EXPECT_EQ(pool.GetMaxCpuUsage(), 100);
}

TEST_F(WorkerPool, ALowerLimitEndsTheYoungestAndCancelsWhatTheyRun) {
  TWorkerThreadPool pool(false);
  pool.SetMinWorkerThreads(3);
  TEvent gate(true);
  const IWorkItems items{Waiting(gate), Waiting(gate), Waiting(gate)};
  for (const Ref<IWorkItem>& item : items) {
    pool.AddWorkItem(item);
    ASSERT_TRUE(Clock.Settle());
  }
  pool.SetMaxRunningThreads(1);
  EXPECT_EQ(pool.ThreadsNotTerminated(), 1);
  EXPECT_EQ(items[0]->GetStatus(), TTaskStatus::Running);
  EXPECT_EQ(items[1]->GetStatus(), TTaskStatus::Canceled);
  EXPECT_EQ(items[2]->GetStatus(), TTaskStatus::Canceled);
  gate.SetEvent();
  ASSERT_TRUE(Clock.Settle());
  EXPECT_EQ(pool.GetCount(), 1);
}

TEST_F(WorkerPool, ThreadsGetItsPriorityAndPreparation) {
  TScopedApi priority(Api().SetThreadPriority, [&](HANDLE, int) -> BOOL {
    Trace.Add("priority");
    return TRUE;
  });
  TScopedApi enter(Api().CoInitializeEx, [&](LPVOID, DWORD mode) -> HRESULT {
    Trace.Add("enter " + std::to_string(mode));
    return S_OK;
  });
  TScopedApi leave(Api().CoUninitialize, [&] { Trace.Add("leave"); });
  TString name;
  TScopedApi description(Api().SetThreadDescription, [&](HANDLE, LPCWSTR text) -> HRESULT {
    name = FromW(text);
    return S_OK;
  });
  {
    TWorkerThreadPool pool(true);
    pool.SetMaxRunningThreads(1);
    pool.OnNewThread = [&](TWorkerThreadPool& sender, TOakThread& thread) {
      EXPECT_EQ(&sender, &pool);
      EXPECT_EQ(&thread, TThread::Current());
      throw Exception(u"in the event");
    };
    Add(pool, Named("first"));
    ASSERT_TRUE(Clock.Settle());
    EXPECT_EQ(name, u"TWorkerThread");
    EXPECT_THAT(Trace.Take(), ElementsAre("enter 10", "first")) << "an event may fail";
    Queue.Run();
    EXPECT_THAT(Trace.Take(), ElementsAre("reported in the event"));
    for (int i = 0; i < 2; ++i) pool.SetPriority(tpLowest);
    EXPECT_THAT(Trace.Take(), ElementsAre("priority")) << "the second time nothing changes";
  }
  EXPECT_THAT(Trace.Take(), ElementsAre("leave"));
}

TEST_F(WorkerPool, TellsWhatItHas) {
  TWorkerThreadPool pool(false);
  pool.SetMaxRunningThreads(1);
  EXPECT_FALSE(pool.WorkItemsActive());
  TEvent gate;
  const auto running = Waiting(gate), queued = Named("queued");
  running->SetTag(5);
  queued->SetTag(6);
  Add(pool, running);
  ASSERT_TRUE(Clock.Settle());
  Add(pool, queued);
  for (const int tag : {5, 6, 7}) EXPECT_EQ(pool.ContainsWorkItem(tag), tag != 7);
  EXPECT_TRUE(pool.ContainsWorkItem(ICancellationIndicator::Iid));
  EXPECT_TRUE(pool.WorkItemsActive());
  const std::string dump = ToUtf8(pool.Dump());
  EXPECT_THAT(dump, testing::HasSubstr("1 items waiting"));
  EXPECT_THAT(dump, testing::HasSubstr("TestItem, tag 5, Running"));
  gate.SetEvent();
  ASSERT_TRUE(Clock.Settle());
  EXPECT_FALSE(pool.ContainsWorkItem(5));
  EXPECT_FALSE(pool.WorkItemsActive());
}

// --- pausing --------------------------------------------------------------------------

TEST_F(WorkerPool, APauseHoldsWorkAtItsNextLook) {
  TWorkerThreadPool pool(false);
  pool.SetMinWorkerThreads(2);
  const auto item = MakeRef<TTestItem>([&](TTestItem& self) {
    for (int i = 0; i < 2; ++i) {
      Api().Sleep(10);
      if (self.IsCanceled()) return;
      Trace.Add("step");
    }
  });
  Add(pool, item);
  ASSERT_TRUE(Clock.Advance(10));
  pool.SetPaused(true);
  EXPECT_EQ(item->GetStatus(), TTaskStatus::Paused);
  Add(pool, Named("later"));
  ASSERT_TRUE(Clock.Advance(10'000));
  EXPECT_THAT(Trace.Take(), ElementsAre("step")) << "neither the next step nor a new worker";
  pool.SetPaused(false);
  EXPECT_EQ(item->GetStatus(), TTaskStatus::Running);
  ASSERT_TRUE(Clock.Advance(99));
  ASSERT_TRUE(Clock.Advance(1));
  EXPECT_THAT(Trace.Take(), testing::UnorderedElementsAre("step", "later"));
}

TEST_F(WorkerPool, TerminationReleasesWhatIsPaused) {
  TWorkerThreadPool pool(false);
  const auto item = MakeRef<TTestItem>([&](TTestItem& self) {
    Api().Sleep(10);
    Trace.Add(self.IsCanceled() ? "canceled" : "goes on");
  });
  Add(pool, item);
  ASSERT_TRUE(Clock.Settle());
  pool.SetPaused(true);
  ASSERT_TRUE(Clock.Advance(1000));
  EXPECT_THAT(Trace.Take(), IsEmpty());
  pool.TerminateAllThreads(true);
  EXPECT_EQ(pool.GetCount(), 0);
  EXPECT_THAT(Trace.Take(), ElementsAre("canceled"));
}

}  // namespace
}  // namespace oak::tests
