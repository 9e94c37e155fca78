// The worker pool: how work and threads end.
#include <memory>
#include <stdexcept>

#include "tests/threading/PoolKit.h"

namespace oak::tests {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;
using testing::UnorderedElementsAre;
using testkit::TScopedApi;
using enum TTaskStatus;

/// Threads can't be ended by force here.
class WorkerPoolEnd : public TPoolTest {
 protected:
  /// An item that sees no cancellation until the gate opens.
  Ref<TTestItem> Stubborn(TEvent& gate) {
    return MakeRef<TTestItem>([&gate](TTestItem&) { gate.WaitFor(); });
  }
  TAllWorkItemsFinished ToldDone() {
    return [this](bool terminated) {
      Trace.Add(std::string("all done") + (terminated ? ", terminated" : "") +
                (IsMainThread() ? " on main" : " on worker"));
    };
  }

  std::vector<std::string> Messages;
  TScopedApi<decltype(TApi::OutputDebugStringW)> Debug{
      Api().OutputDebugStringW, [this](LPCWSTR text) { Messages.push_back(ToUtf8(FromW(text))); }};
  TScopedApi<decltype(TApi::TerminateThread)> NoForce{Api().TerminateThread, nullptr};
};

// --- all done -------------------------------------------------------------------------

TEST_F(WorkerPoolEnd, AllDoneComesOnAWorkerHoweverTheLastItemEnds) {
  TWorkerThreadPool pool(false);
  pool.SetMaxRunningThreads(1);
  pool.OnAllWorkItemsDone = ToldDone();
  Add(pool, Named("ran"));
  ASSERT_TRUE(Clock.Settle());
  EXPECT_THAT(Trace.Take(), ElementsAre("ran", "all done on worker"));

  const auto fails = MakeRef<TTestItem>([](TTestItem&) { throw std::runtime_error("failed"); });
  const auto failsLate = Named("work");
  fails->OnDone = [&] { Trace.Add("never"); };
  failsLate->OnDone = [] { throw Exception(u"in WorkDone"); };
  pool.AddWorkItems({fails, failsLate}, TPriority::Normal);
  ASSERT_TRUE(Clock.Settle());
  EXPECT_EQ(fails->GetStatus(), Canceled);
  EXPECT_EQ(failsLate->GetStatus(), Completed);
  EXPECT_THAT(Trace.Take(), ElementsAre("work", "all done on worker"));
  Queue.Run();
  EXPECT_THAT(Trace.Take(), UnorderedElementsAre("reported failed", "reported in WorkDone"));

  TEvent gate;
  Add(pool, Waiting(gate));
  ASSERT_TRUE(Clock.Settle());
  const auto canceled = Named("never");
  canceled->OnDone = [&] { Trace.Add("never"); };
  Add(pool, canceled);
  canceled->Cancel();
  gate.SetEvent();
  ASSERT_TRUE(Clock.Settle());
  EXPECT_THAT(Trace.Take(), ElementsAre("waiting", "all done on worker"));
  EXPECT_EQ(pool.GetWorkItemsCount(), 0);
  EXPECT_EQ(pool.GetCount(), 1) << "the worker has survived all of it";
}

TEST_F(WorkerPoolEnd, WorkAddedDuringAllDoneWaitsForItsReturn) {
  TWorkerThreadPool pool(false);
  MakeIdle(pool, 2);
  TEvent inside;
  int calls = 0;
  pool.OnAllWorkItemsDone = [&](bool) {
    if (++calls > 1) return;
    pool.AddWorkItem(Named("added inside"));
    inside.WaitFor();
    Trace.Add("all done");
  };
  Add(pool, Named("last"));
  ASSERT_TRUE(Clock.Settle());
  Add(pool, Named("added meanwhile"));
  ASSERT_TRUE(Clock.Advance(3000));
  EXPECT_THAT(Trace.Take(), ElementsAre("last")) << "the other worker is idle and polls";
  const std::uint64_t before = Clock.GetTicks();
  inside.SetEvent();
  ASSERT_TRUE(Clock.Settle());
  EXPECT_EQ(Trace.Take().front(), "all done");
  EXPECT_EQ(pool.QueueLength(), 0);
  EXPECT_EQ(Clock.GetTicks(), before) << "the sleeper was woken";
}

// --- dropping work --------------------------------------------------------------------

TEST_F(WorkerPoolEnd, DroppingTellsHowManyItemsItStopped) {
  TWorkerThreadPool pool(false);
  pool.SetMinWorkerThreads(2);
  pool.SetMaxRunningThreads(2);
  pool.OnAllWorkItemsDone = ToldDone();
  EXPECT_EQ(pool.TerminateWorkItems(), 0);
  TEvent gate(true);
  const IWorkItems running{Waiting(gate), Waiting(gate)};
  const IWorkItems queued{Named("never"), Named("never"), Named("never")};
  pool.AddWorkItems(running, TPriority::Normal);
  ASSERT_TRUE(Clock.Settle());
  Trace.Take();
  pool.AddWorkItems(queued, TPriority::Normal);
  EXPECT_EQ(pool.TerminateWorkItems(), 5);
  for (const auto& item : running) EXPECT_EQ(item->GetStatus(), Canceled);
  for (const auto& item : queued) EXPECT_EQ(item->GetStatus(), WaitingToRun);
  EXPECT_EQ(pool.GetWorkItemsCount(), 2);
  EXPECT_THAT(Trace.Take(), IsEmpty());
  gate.SetEvent();
  ASSERT_TRUE(Clock.Settle());
  EXPECT_THAT(Trace.Take(), ElementsAre("all done on worker"));
}

TEST_F(WorkerPoolEnd, DroppingTheLastWorkReportsOnItsCaller) {
  TWorkerThreadPool pool(false);
  pool.SetMaxRunningThreads(1);
  const auto late = Named("never");
  pool.OnAllWorkItemsDone = [&, told = ToldDone()](bool terminated) {
    told(terminated);
    pool.AddWorkItem(late);  // dropped as well
  };
  pool.SetPaused(true);
  Add(pool, Named("never"));
  Add(pool, Named("never"));
  ASSERT_TRUE(Clock.Settle());
  EXPECT_EQ(pool.TerminateWorkItems(), 2);
  EXPECT_EQ(late->GetStatus(), Created);
  EXPECT_EQ(pool.GetWorkItemsCount(), 0);
  EXPECT_THAT(Trace.Take(), ElementsAre("all done on main"));
  pool.SetPaused(false);
}

TEST_F(WorkerPoolEnd, CancellationMayCallThePool) {
  TWorkerThreadPool pool(false);
  pool.SetMaxRunningThreads(1);
  TEvent gate, asked;
  const auto item = Stubborn(gate);
  // From another thread: no lock may be held while the item is told.
  item->OnTerminateItem = [&] {
    std::thread([&] { Trace.Add(pool.ContainsWorkItem(3) ? "contained" : "?"); }).join();
  };
  item->SetTag(3);
  Add(pool, item);
  ASSERT_TRUE(Clock.Settle());
  EXPECT_EQ(pool.TerminateWorkItems(), 1);
  EXPECT_THAT(Trace.Take(), ElementsAre("contained"));
  pool.TerminateAllThreads(false);
  EXPECT_THAT(Trace.Take(), ElementsAre("contained", "contained", "contained"))
      << "once by each step";
  gate.SetEvent();
  ASSERT_TRUE(Clock.Settle());
}

// --- ending threads -------------------------------------------------------------------

TEST_F(WorkerPoolEnd, AnEndedPoolWorksAgain) {
  TWorkerThreadPool pool(false);
  pool.SetMinWorkerThreads(3);
  TEvent gate;
  const auto running = Stubborn(gate);
  Add(pool, running);
  ASSERT_TRUE(Clock.Settle());
  pool.OnAllThreadsTerminated = [&](TCustomThreadPool&) { Trace.Add("no threads"); };
  pool.OnThreadTerminated = [&](TOakThread& thread) {
    EXPECT_TRUE(IsMainThread());
    EXPECT_TRUE(thread.IsFinished());
    Trace.Add("a thread less");
  };
  pool.Dispose();
  EXPECT_TRUE(pool.GetTerminated());
  EXPECT_EQ(running->GetStatus(), Canceled);
  Add(pool, Named("added while it ends"));
  ASSERT_TRUE(Clock.Settle());
  EXPECT_EQ(pool.GetCount(), 1) << "no new thread by then";
  gate.SetEvent();
  ASSERT_TRUE(Queue.RunUntil([&] { return !pool.GetTerminated(); }));
  ASSERT_TRUE(Clock.Settle());
  EXPECT_EQ(pool.GetCount(), 1);
  EXPECT_THAT(Trace.Take(), ElementsAre("a thread less", "no threads", "added while it ends"));
  pool.OnThreadTerminated = nullptr;
}

TEST_F(WorkerPoolEnd, IdleThreadsEndAtOnceAndSoDoesThePool) {
  auto pool = std::make_unique<TWorkerThreadPool>(false);
  MakeIdle(*pool, 3);
  const std::uint64_t before = Clock.GetTicks();
  pool.reset();
  EXPECT_EQ(Clock.GetTicks(), before);
  EXPECT_TRUE(TThread::AwaitNone(20'000));
}

TEST_F(WorkerPoolEnd, AThreadThatWaitsForTheMainThreadIsServed) {
  auto pool = std::make_unique<TWorkerThreadPool>(false);
  Add(*pool, MakeRef<TTestItem>(
                 [&](TTestItem&) { TThread::Synchronize(nullptr, [&] { Trace.Add("served"); }); }));
  ASSERT_TRUE(Clock.AwaitSleepers(1));
  pool.reset();
  EXPECT_THAT(Trace.Take(), ElementsAre("served"));
}

TEST_F(WorkerPoolEnd, AThreadThatHangsIsGivenUp) {
  TEvent gate;
  const auto item = Stubborn(gate);
  auto pool = std::make_unique<TWorkerThreadPool>(false);
  pool->OnAllWorkItemsDone = ToldDone();
  pool->SetMaxRunningThreads(1);
  Add(*pool, item);
  Add(*pool, Named("never"));
  ASSERT_TRUE(Clock.Settle());
  const std::uint64_t before = Clock.GetTicks();
  pool.reset();
  EXPECT_GE(Clock.GetTicks() - before, 3000u);
  EXPECT_LE(Clock.GetTicks() - before, 3100u);
  EXPECT_THAT(Messages, ElementsAre(testing::AllOf(
                            testing::StartsWith("Terminating worker Thread with work item"),
                            testing::EndsWith("TestItem the hard way."))));
  EXPECT_EQ(item->GetStatus(), Canceled);
  EXPECT_THAT(Trace.Take(), ElementsAre("all done, terminated on main"));
  // It comes back to a pool that is gone.
  gate.SetEvent();
  EXPECT_TRUE(TThread::AwaitNone(20'000));
}

TEST_F(WorkerPoolEnd, AThreadWithoutWorkIsNamedByItsHandle) {
  TEvent gate;
  TCustomThreadPool pool;
  pool.SetMaxTimeUntilHardTerminate(500);
  auto* const thread = new TBodyThread([&](TBodyThread&) { gate.WaitFor(); });
  const auto handle =
      static_cast<std::int64_t>(reinterpret_cast<std::uintptr_t>(thread->GetHandle()));
  pool.Add(thread);
  ASSERT_TRUE(Clock.Settle());
  const std::uint64_t before = Clock.GetTicks();
  pool.Remove(thread);  // not over: the hard way
  EXPECT_GE(Clock.GetTicks() - before, 500u);
  EXPECT_LE(Clock.GetTicks() - before, 520u);
  EXPECT_THAT(Messages,
              ElementsAre("Terminating Thread tests::TBodyThread the hard way. Thread ID: " +
                          std::to_string(handle)));
  EXPECT_EQ(pool.GetCount(), 0);
  EXPECT_EQ(thread->GetStatus(), Canceled);
  EXPECT_EQ(thread->GetThreadPool(), nullptr);
  gate.SetEvent();
  EXPECT_TRUE(TThread::AwaitNone(20'000));
}

TEST_F(WorkerPoolEnd, AClockThatFallsBackDoesNotPutOffTheEnd) {
  TEvent gate;
  TWorkerThreadPool pool(false);
  const auto item = Stubborn(gate);
  // Falls back while the pool waits for the thread.
  item->OnTerminateItem = [&] { Clock.JumpBack(1'000'000); };
  Add(pool, item);
  ASSERT_TRUE(Clock.Settle());
  pool.TerminateAllThreads(true);
  EXPECT_EQ(pool.GetCount(), 0);
  gate.SetEvent();
  EXPECT_TRUE(TThread::AwaitNone(20'000));
}

TEST_F(WorkerPoolEnd, AHungAllDoneDoesNotBlockThePool) {
  TEvent gate;
  std::atomic<int> calls{0};
  TWorkerThreadPool pool(false);
  pool.OnAllWorkItemsDone = [&](bool) {
    if (++calls == 1) gate.WaitFor();
  };
  Add(pool, Named("first"));
  ASSERT_TRUE(Clock.Settle());
  Add(pool, Named("dropped"));
  pool.TerminateAllThreads(true);
  EXPECT_EQ(pool.GetWorkItemsCount(), 0);
  Add(pool, Named("second"));
  ASSERT_TRUE(Clock.Settle());
  EXPECT_THAT(Trace.Take(), ElementsAre("first", "second"));
  gate.SetEvent();
  ASSERT_TRUE(Clock.Settle());
}

// --- pools that free themselves ---------------------------------------------------------

class TTold final : public TWorkerThreadPool {
 public:
  explicit TTold(TTrace& trace) : TWorkerThreadPool(false), fTrace(trace) {
    OnAllThreadsTerminated = [this](TCustomThreadPool&) { fTrace.Add("no threads"); };
  }
  ~TTold() override {
    Shutdown();
    fTrace.Add("freed");
  }

 private:
  TTrace& fTrace;
};

TEST_F(WorkerPoolEnd, FreesItselfWithoutThreadsAtOnceElseWithTheLast) {
  auto* const empty = new TTold(Trace);
  empty->SetFreeOnLastThreadTermination(true);
  empty->TerminateAllThreads(false);
  EXPECT_THAT(Trace.Take(), ElementsAre("freed")) << "without any event";

  TEvent gate;
  auto* const busy = new TTold(Trace);
  Add(*busy, Stubborn(gate));
  ASSERT_TRUE(Clock.Settle());
  busy->SetFreeOnLastThreadTermination(true);
  busy->TerminateAllThreads(false);
  EXPECT_THAT(Trace.Take(), IsEmpty());
  gate.SetEvent();
  EXPECT_TRUE(TThread::AwaitNone(20'000));
  EXPECT_THAT(Trace.Take(), ElementsAre("no threads", "freed"));

  auto* const retiring = new TTold(Trace);
  retiring->SetFreeOnLastThreadTermination(true);
  retiring->SetMaxIdleTime(1000);
  Add(*retiring, Named("work"));
  ASSERT_TRUE(Clock.Advance(1500));
  EXPECT_TRUE(TThread::AwaitNone(20'000));
  EXPECT_THAT(Trace.Take(), ElementsAre("work", "no threads", "freed"));
}

TEST_F(WorkerPoolEnd, TheLastReferenceMayBeHeldByAnItemOfThePool) {
  TWorkerPoolConfig config;
  config.MaxRunningThreads = 2;
  config.MinRunningThreads = 2;
  config.OnAllWorkItemsFinished = ToldDone();
  auto pool = TWorkerPool::CreateInstance(config);
  TEvent gate;
  pool->AddWorkItem(Waiting(gate, "other"), TPriority::Normal);
  ASSERT_TRUE(Clock.Settle());
  // Released by the body, with the item, and by the item's destructor.
  pool->AddWorkItem(MakeRef<TTestItem>([this, &gate, held = pool](TTestItem&) mutable {
                      Trace.Add("last");
                      gate.SetEvent();
                    }),
                    TPriority::Normal);
  pool.Reset();
  EXPECT_TRUE(TThread::AwaitNone(20'000));
  EXPECT_THAT(Trace.Take(), testing::IsSupersetOf({"other", "last"}));

  auto second = TWorkerPool::CreateInstance(TWorkerPoolConfig());
  second->AddWorkItem(MakeRef<TTestItem>([this, &gate, held = second](TTestItem& self) mutable {
                        gate.WaitFor();
                        held.Reset();  // the last one: the pool is gone behind this
                        Trace.Add(self.IsCanceled() ? "canceled" : "?");
                      }),
                      TPriority::Normal);
  ASSERT_TRUE(Clock.Settle());
  second.Reset();
  gate.SetEvent();
  EXPECT_TRUE(TThread::AwaitNone(20'000));
  EXPECT_THAT(Trace.Take(), ElementsAre("canceled"));
}

TEST_F(WorkerPoolEnd, APrivatePoolTakesItsSettings) {
  TWorkerPoolConfig config;
  EXPECT_EQ(config.MaxRunningThreads, GetCPUCount() * 3 + 2);
  config.MaxRunningThreads = 3;
  config.MinRunningThreads = 2;
  config.MaxCpuUsage = 500;
  config.ThreadPriority = tpLower;
  const auto pool = TWorkerPool::CreateInstance(config);
  auto& inside = static_cast<TWorkerThreadPool&>(*pool);
  EXPECT_EQ(inside.GetMaxRunningThreads(), 3);
  EXPECT_EQ(inside.GetMinWorkerThreads(), 2);
  EXPECT_EQ(inside.GetMaxCpuUsage(), 100);
  EXPECT_EQ(inside.GetPriority(), tpLower);
  EXPECT_TRUE(pool.As<IPausable>());
  const auto told = TWorkerPool::CreateInstance(ToldDone());
  told->AddWorkItem(Named("work"), TPriority::Normal);
  ASSERT_TRUE(Clock.Settle());
  EXPECT_THAT(Trace.Take(), ElementsAre("work", "all done on worker"));
}

// --- misuse -----------------------------------------------------------------------------

TEST_F(WorkerPoolEnd, NothingIsAddedToAPoolThatIsDestroyed) {
  class TLate final : public TWorkerThreadPool {
   public:
    TLate() : TWorkerThreadPool(false) {}
    ~TLate() override {
      Shutdown();
      const auto item = MakeRef<TTestItem>(nullptr);
      for (const bool batch : {false, true}) {
        try {
          batch ? AddWorkItems({item}, TPriority::Normal) : AddWorkItem(item);
          ADD_FAILURE() << "accepted";
        } catch (const EInvalidOperation& error) {
          EXPECT_EQ(error.GetMessage(),
                    u"New workitems cannot be added to a threadpool that is destroying.");
        }
      }
      EXPECT_EQ(item->GetStatus(), Created);
    }
  };
  { TLate late; }
  TWorkerThreadPool pool(false);
  EXPECT_THROW(pool.AddWorkItem(nullptr), EArgumentException);
  EXPECT_THROW(pool.AddWorkItems({Named("x"), nullptr}, TPriority::Normal), EArgumentException);
  EXPECT_EQ(pool.GetWorkItemsCount(), 0);
}

}  // namespace
}  // namespace oak::tests
