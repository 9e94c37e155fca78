// Work items by themselves: states, delivery, delays, futures.
#include <stdexcept>

#include "oak/base/TypeName.h"
#include "testkit/ManualWorkerPool.h"
#include "tests/threading/PoolKit.h"

namespace oak::tests {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;
using testkit::TMainQueue;
using testkit::TManualWorkerPool;
using testkit::TScopedApi;
using testkit::TScopedWorkerPool;
using testkit::TVirtualClock;
using enum TTaskStatus;

// --- states ---------------------------------------------------------------------------

TEST(WorkItem, ItsEndIsNotOvertaken) {
  struct TCase {
    TTaskStatus Before, Next, After;
  };
  const TCase cases[] = {{Created, WaitingToRun, WaitingToRun},
                         {WaitingToRun, Running, Running},
                         {Running, Paused, Paused},
                         {Paused, Running, Running},
                         {Paused, Completed, Completed},
                         {Running, Canceled, Canceled},
                         {Completed, Canceled, Canceled},          // before it is delivered
                         {Completed, Running, Completed},          // a late resume
                         {Completed, Paused, Completed},           // a late pause
                         {Completed, WaitingToRun, WaitingToRun},  // queued once more
                         {Canceled, WaitingToRun, Canceled},
                         {Canceled, Running, Canceled},
                         {Canceled, Completed, Canceled}};
  for (const TCase& c : cases) {
    const auto item = MakeRef<TTestItem>(nullptr);
    item->SetStatus(c.Before);
    item->SetStatus(c.Next);
    EXPECT_EQ(item->GetStatus(), c.After)
        << static_cast<int>(c.Before) << " to " << static_cast<int>(c.Next);
  }
}

TEST(WorkItem, TheTokenFlowsInWhereverSomebodyLooks) {
  CancellationToken token;
  const auto item = MakeRef<TTestItem>(nullptr, token);
  int terminated = 0;
  item->OnTerminateItem = [&] { ++terminated; };
  EXPECT_FALSE(item->IsCancellationRequested());
  token.Cancel();
  EXPECT_TRUE(item->IsCancellationRequested());
  EXPECT_EQ(terminated, 0) << "asking for the token alone changes nothing";
  EXPECT_EQ(item->GetStatus(), Canceled);
  EXPECT_EQ(item->GetStatus(), Canceled);
  item->SetStatus(Canceled);
  EXPECT_EQ(terminated, 1);

  const auto without = MakeRef<TTestItem>(nullptr);
  EXPECT_FALSE(without->IsCancellationRequested());
  without->Cancel();
  EXPECT_TRUE(without->IsCancellationRequested());
}

TEST(WorkItem, HasTheIdentityOfItsClass) {
  const auto item = MakeRef<TDelayedProcedure>([] {}, 0, true, nullptr);
  const Ref<IWorkItem> seen = item;
  EXPECT_EQ(TypeName(seen->ClassType()), u"TDelayedProcedure");
  EXPECT_TRUE(seen.As<ICancellationIndicator>());
  EXPECT_TRUE(seen.As<ITerminatable>());
  EXPECT_FALSE(seen.As<IPausable>());
  EXPECT_TRUE(MakeRef<TCustomCancellationToken>().As<ICancellationIndicator>());
}

TEST(WorkItem, WaitingForAllEndsWithTheLast) {
  TMainQueue queue;
  TVirtualClock clock;
  const auto done = MakeRef<TTestItem>(nullptr), canceled = MakeRef<TTestItem>(nullptr);
  done->SetStatus(Completed);
  canceled->Cancel();
  CancellationToken token;
  const auto late = MakeRef<TTestItem>(nullptr, token);
  TScopedApi sleep(Api().Sleep, [&](DWORD milliseconds) {
    EXPECT_EQ(milliseconds, 1u);
    clock.Advance(milliseconds);
    if (clock.GetTicks() >= 1'000'030) token.Cancel();
  });
  WaitForAll({done, nullptr, canceled, late});
  EXPECT_EQ(clock.GetTicks(), 1'000'030u);
}

// --- delivery ---------------------------------------------------------------------------

/// Runs items by hand; closures go to the main thread's queue.
class WorkItemDelivery : public ::testing::Test {
 protected:
  Ref<TTestItem> Told(bool synchronized) {
    const auto item = MakeRef<TTestItem>([this](TTestItem&) { Trace.Add("work"); });
    if (synchronized) item->DeliverOnMainThread();
    const auto where = [] { return IsMainThread() ? " on main" : " on worker"; };
    item->OnDone = [this, where] { Trace.Add(std::string("done") + where()); };
    item->SetOnWorkDone([this, where, expected = item.Get()](const Ref<IWorkItem>& done) {
      EXPECT_EQ(done.Get(), static_cast<IWorkItem*>(expected));
      Trace.Add(std::string("event") + where());
    });
    return item;
  }

  TMainQueue Queue;
  TTrace Trace;
  TScopedWorkerPool Pool;
};

TEST_F(WorkItemDelivery, IsOnTheMainThreadUnlessSwitchedOff) {
  Pool->AddWorkItem(Told(true), TPriority::Normal);
  ASSERT_TRUE(Pool->RunNext(TManualWorkerPool::OnWorker));
  EXPECT_THAT(Trace.Take(), ElementsAre("work")) << "the worker does not wait";
  EXPECT_EQ(TCounted::Alive(), 1) << "it lives until its delivery";
  Queue.Run();
  EXPECT_EQ(TCounted::Alive(), 0);
  EXPECT_THAT(Trace.Take(), ElementsAre("done on main", "event on main"));

  Pool->AddWorkItem(Told(true), TPriority::Normal);
  ASSERT_TRUE(Pool->RunNext());
  EXPECT_EQ(Queue.GetPending(), 0u) << "on the main thread nothing is posted";
  EXPECT_THAT(Trace.Take(), ElementsAre("work", "done on main", "event on main"));

  Pool->AddWorkItem(Told(false), TPriority::Normal);
  ASSERT_TRUE(Pool->RunNext(TManualWorkerPool::OnWorker));
  EXPECT_THAT(Trace.Take(), ElementsAre("work", "done on worker", "event on worker"));
}

TEST_F(WorkItemDelivery, ACancelledResultIsNotDelivered) {
  const auto queued = Told(true), done = Told(true);
  Pool->AddWorkItems({queued, done}, TPriority::Normal);
  queued->Cancel();
  EXPECT_EQ(Pool->RunAll(TManualWorkerPool::OnWorker), 2);
  EXPECT_THAT(Trace.Take(), ElementsAre("work")) << "what was cancelled in the queue did not run";
  EXPECT_EQ(done->GetStatus(), Completed);
  done->Cancel();
  EXPECT_EQ(Queue.GetPending(), 1u);
  Queue.Run();
  EXPECT_THAT(Trace.Take(), IsEmpty());
}

// --- procedures -------------------------------------------------------------------------

TEST_F(WorkItemDelivery, AnAsyncProcedureRunsAndReports) {
  CancellationToken token;
  const auto add = [&](const char* text) { return [this, text] { Trace.Add(text); }; };
  TAsyncProcedure::CreateAndQueue(add("first"), token, add("first done"));
  TAsyncProcedure::CreateAndQueue(add("second"));
  const Ref<IWorkItem> apart = TAsyncProcedure::CreateNoAdd(
      add("apart"), token, [&](const Ref<IWorkItem>&) { Trace.Add("never"); }, 42);
  EXPECT_EQ(Pool->GetPending(), 2u);
  EXPECT_EQ(apart->GetTag(), 42);
  EXPECT_EQ(apart->GetStatus(), Created);
  Pool->AddWorkItem(apart, TPriority::Highest);
  Pool->RunAll();
  EXPECT_THAT(Trace.Take(), ElementsAre("apart", "first", "first done", "second"));
  TAsyncProcedure::CreateAndQueue(add("late"), token);
  token.Cancel();
  Pool->RunAll();
  EXPECT_THAT(Trace.Take(), IsEmpty());
}

TEST_F(WorkItemDelivery, ADelayIsSleptInSlicesUntilItIsCancelled) {
  struct TCase {
    int Delay;
    std::vector<DWORD> Sleeps;
    std::size_t CancelledIn = 0;  // this slice, counted from 1
  };
  const TCase cases[] = {{120, {50, 50, 50, 20}},
                         {50, {50, 50, 0}},
                         {49, {50, 49}},
                         {1, {50, 1}},
                         {0, {}},
                         {-5, {}},
                         {120, {50}, 1},
                         {120, {50, 50}, 2},
                         {120, {50, 50, 50}, 3},
                         {120, {50, 50, 50, 20}, 4}};
  for (const TCase& c : cases) {
    CancellationToken token;
    std::vector<DWORD> sleeps;
    TScopedApi sleep(Api().Sleep, [&](DWORD milliseconds) {
      sleeps.push_back(milliseconds);
      if (sleeps.size() == c.CancelledIn) token.Cancel();
    });
    TDelayedProcedure::CreateAndQueue([&] { Trace.Add("ran"); }, c.Delay, true, token);
    Pool->RunAll();
    EXPECT_EQ(sleeps, c.Sleeps) << c.Delay;
    EXPECT_EQ(Trace.Take().size(), c.CancelledIn ? 0u : 1u) << c.Delay;
  }
}

TEST_F(WorkItemDelivery, ADelayedProcedureOnTheMainThreadIsTestedThere) {
  CancellationToken token;
  const Ref<IWorkItem> first =
      TDelayedProcedure::CreateAndQueue([&] { Trace.Add("first"); }, 0, false, token);
  TDelayedProcedure::CreateAndQueue([&] { Trace.Add("second"); }, 0, false, token);
  Pool->RunAll(TManualWorkerPool::OnWorker);
  EXPECT_THAT(Trace.Take(), IsEmpty());
  EXPECT_EQ(Queue.GetPending(), 2u);
  first->Cancel();
  Queue.Run();
  EXPECT_THAT(Trace.Take(), ElementsAre("second"));
  TDelayedProcedure::CreateAndQueue([&] { Trace.Add(IsMainThread() ? "main" : "worker"); }, token);
  Pool->RunAll(TManualWorkerPool::OnWorker);
  EXPECT_THAT(Trace.Take(), ElementsAre("worker"));
}

// --- futures ----------------------------------------------------------------------------

TEST_F(WorkItemDelivery, AFutureGivesItsValueOrADefault) {
  const Ref<IFuture<bool>> future = TFuture<bool>::CreateAndQueue([] { return true; });
  const Ref<IFuture<TString>> text = TFuture<TString>::Construct([] { return TString(u"text"); });
  EXPECT_TRUE(text.As<IFuture<TString>>());
  EXPECT_FALSE(text.As<IFuture<bool>>()) << "futures of other values are other interfaces";
  EXPECT_EQ(Pool->GetPending(), 1u) << "Construct queues nothing";
  Pool->RunAll();
  EXPECT_TRUE(future->Value());
  Pool->AddWorkItem(text.As<IWorkItem>(), TPriority::Normal);
  Pool->RunAll();
  EXPECT_EQ(text->Value(), u"text");

  CancellationToken token;
  const Ref<IFuture<bool>> canceled = TFuture<bool>::CreateAndQueue([] { return true; }, token);
  token.Cancel();
  Pool->RunAll();
  EXPECT_FALSE(canceled->Value());
  const Ref<IFuture<bool>> failed =
      TFuture<bool>::CreateAndQueue([]() -> bool { throw Exception(u"no value"); });
  Pool->RunAll();
  EXPECT_FALSE(failed->Value());
}

TEST_F(WorkItemDelivery, AFutureIsAwaitedInSlicesOf40Milliseconds) {
  TVirtualClock clock;
  std::uint64_t ready = 0;
  TScopedApi sleep(Api().Sleep, [&](DWORD milliseconds) {
    EXPECT_EQ(milliseconds, 40u);
    clock.Advance(milliseconds);
    if (clock.GetTicks() >= 1'000'000 + ready) Pool->RunAll();
  });
  struct TCase {
    std::uint64_t Ready, Timeout;
    TTaskStatus Status;
    std::uint64_t Waited;
  };
  const TCase cases[] = {{100, 1000, Completed, 120},  // seen at the next look
                         {5000, 100, Running, 120},
                         {5000, 1, Running, 40},
                         {0, 0, Running, 0}};  // without a look, though it could run
  for (const TCase& c : cases) {
    const std::uint64_t start = clock.GetTicks();
    ready = start - 1'000'000 + c.Ready;
    bool value = false;
    const auto future = TFuture<bool>::CreateAndQueue([] { return true; });
    EXPECT_EQ(future->TryGetValue(value, c.Timeout), c.Status);
    EXPECT_EQ(value, c.Status == Completed);
    EXPECT_EQ(clock.GetTicks() - start, c.Waited);
    Pool->RunAll();
  }
  CancellationToken token;
  bool value = true;
  const auto canceled = TFuture<bool>::CreateAndQueue([] { return true; }, token);
  token.Cancel();
  EXPECT_EQ(canceled->TryGetValue(value, 1000), Canceled);
  EXPECT_FALSE(value);
  Pool->RunAll();
}

// --- the pool by hand ---------------------------------------------------------------------

TEST_F(WorkItemDelivery, AManualPoolKeepsTheOrderAndTellsWhatItHas) {
  const auto add = [&](const char* text, TPriority priority) {
    const auto item = MakeRef<TTestItem>([this, text](TTestItem&) { Trace.Add(text); });
    item->SetTag(text[0]);
    Pool->AddWorkItem(item, priority);
  };
  add("n1", TPriority::Normal);
  add("H1", TPriority::Highest);
  add("n2", TPriority::Normal);
  add("H2", TPriority::Highest);
  EXPECT_EQ(Pool->CountOf<TTestItem>(), 4u);
  EXPECT_EQ(Pool->GetWorkItem(0)->GetTag(), 'H');
  EXPECT_FALSE(Pool->GetWorkItem(4));
  EXPECT_TRUE(Pool->ContainsWorkItem('n'));
  EXPECT_FALSE(Pool->ContainsWorkItem(IPausable::Iid));
  EXPECT_EQ(Pool->RunAll(), 4);
  EXPECT_THAT(Trace.Take(), ElementsAre("H2", "H1", "n1", "n2"));
  Pool->SetInline(true);
  add("at once", TPriority::Normal);
  EXPECT_THAT(Trace.Take(), ElementsAre("at once"));
  Pool->SetInline(false);
  add("dropped", TPriority::Normal);
  Pool->Dispose();
  EXPECT_EQ(Pool->GetPending(), 0u);
}

}  // namespace
}  // namespace oak::tests
