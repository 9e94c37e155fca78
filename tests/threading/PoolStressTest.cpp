// Pools under load from real threads, in real time.
#include <chrono>
#include <random>
#include <thread>

#include "tests/threading/PoolKit.h"

namespace oak::tests {
namespace {

using testkit::TMainQueue;
using TSteady = std::chrono::steady_clock;

/// The ends that items come to.
struct TAccount {
  std::atomic<int> Made{0}, Ran{0}, Failed{0}, Delivered{0}, Freed{0}, RanTwice{0};
};

/// An item that notes its end.
class TAccounted final : public TBasicWorkItem {
 public:
  TAccounted(TAccount& account, unsigned kind, Ref<ICancellationIndicator> token)
      : TBasicWorkItem(std::move(token)), fAccount(account), fKind(kind) {
    fFireOnWorkDoneSynchronized = kind % 3 == 0;
    ++fAccount.Made;
  }
  ~TAccounted() override { ++fAccount.Freed; }

  void DoWork() override {
    if (fStarted.exchange(true)) ++fAccount.RanTwice;
    ++fAccount.Ran;
    if (fKind % 17 == 0) {
      ++fAccount.Failed;
      throw std::runtime_error("on trial");
    }
    for (unsigned i = 0; i < fKind % 5 && !Terminated(); ++i) std::this_thread::yield();
  }

 protected:
  void WorkDone() override { ++fAccount.Delivered; }

 private:
  TAccount& fAccount;
  const unsigned fKind;
  std::atomic<bool> fStarted{false};
};

/// Adds, cancels, pauses, resizes and ends, as the dice fall.
class TProducer {
 public:
  TProducer(TAccount& account, unsigned seed, bool pauses)
      : fAccount(account), fDice(seed), fPauses(pauses) {}

  void Step(TWorkerThreadPool& pool) {
    const unsigned die = Roll();
    switch (die % 64) {
      case 0:
        fToken.Reset();
        break;
      case 1:
        fToken.Cancel();
        break;
      case 2:
        if (fPauses) pool.SetPaused(die % 512 == 2);  // mostly ends a pause
        break;
      case 3:
        pool.SetMaxRunningThreads(static_cast<int>(1 + Roll() % 6));
        break;
      case 4:
        pool.SetMinWorkerThreads(static_cast<int>(1 + Roll() % 4));
        break;
      case 5:
        pool.TerminateWorkItems();
        break;
      case 6:
        if (Roll() % 4 == 0) pool.TerminateAllThreads(false);
        break;
      case 7:
        pool.SetMaxIdleTime(Roll() % 3);
        break;
      case 8:
        (void)pool.Dump();
        break;
      case 9:
        (void)pool.ContainsWorkItem(ICancellationIndicator::Iid);
        break;
      case 10:
        (void)pool.ActiveThreadCount();
        break;
      case 11:
        AddBatch(pool);
        break;
      default:
        pool.AddWorkItem(Make(), die % 5 == 0 ? TPriority::Highest : TPriority::Normal);
    }
  }
  unsigned Roll() { return static_cast<unsigned>(fDice()); }

 private:
  Ref<IWorkItem> Make() {
    const unsigned kind = Roll();
    const auto item = MakeRef<TAccounted>(fAccount, kind, kind % 2 ? fToken.GetToken() : nullptr);
    if (kind % 13 == 0) item->Cancel();
    return item;
  }
  void AddBatch(TWorkerThreadPool& pool) {
    IWorkItems items(Roll() % 8);
    for (Ref<IWorkItem>& item : items) item = Make();
    pool.AddWorkItems(items, TPriority::Normal);
  }

  TAccount& fAccount;
  std::mt19937 fDice;
  const bool fPauses;
  CancellationToken fToken;
};

class WorkerPoolStress : public ::testing::Test {
 protected:
  WorkerPoolStress() {
    std::random_device device;
    fSeed = device();
    RecordProperty("seed", static_cast<int>(fSeed));
    Application().OnException = [this](TObject*, const std::exception_ptr&) { ++fReported; };
  }
  ~WorkerPoolStress() override { Application().OnException = nullptr; }

  // So many milliseconds; the main thread serves its queue meanwhile.
  void Run(std::chrono::milliseconds time, TWorkerThreadPool& pool, bool rough) {
    const auto end = TSteady::now() + time;
    std::atomic<bool> stop{false};
    std::vector<std::thread> threads;
    for (unsigned i = 0; i < 3; ++i) {
      threads.emplace_back([&, i] {
        TProducer producer(fAccount, fSeed + i, true);
        while (!stop) {
          if (rough) {
            producer.Step(pool);
          } else {
            pool.AddWorkItem(MakeRef<TAccounted>(fAccount, producer.Roll(), nullptr),
                             TPriority::Normal);
          }
          if (pool.QueueLength() > 1000) std::this_thread::yield();
        }
      });
    }
    while (TSteady::now() < end) TThread::CheckSynchronize(2);
    stop = true;
    for (std::thread& thread : threads) thread.join();
  }

  void ExpectAllAccounted() {
    fQueue.RunUntil(
        [&] { return fAccount.Freed == fAccount.Made && fReported == fAccount.Failed; });
    EXPECT_EQ(fAccount.Freed, fAccount.Made) << "seed " << fSeed;
    EXPECT_EQ(fAccount.RanTwice, 0) << "seed " << fSeed;
    EXPECT_EQ(fReported, fAccount.Failed) << "seed " << fSeed;
    EXPECT_LE(fAccount.Delivered, fAccount.Ran - fAccount.Failed) << "seed " << fSeed;
    EXPECT_TRUE(TThread::AwaitNone(20'000)) << "seed " << fSeed;
  }

  TMainQueue fQueue;
  TAccount fAccount;
  unsigned fSeed = 0;
  std::atomic<int> fReported{0};
};

TEST_F(WorkerPoolStress, EachItemIsRunOnceAndDelivered) {
  constexpr std::chrono::milliseconds time{300};
  std::atomic<int> allDone{0};
  {
    TWorkerThreadPool pool(true);
    pool.OnAllWorkItemsDone = [&](bool) { ++allDone; };
    Run(time, pool, false);
    ASSERT_TRUE(fQueue.RunUntil([&] { return pool.GetWorkItemsCount() == 0; })) << fSeed;
    EXPECT_TRUE(fQueue.RunUntil([&] { return allDone > 0; }));
  }
  ExpectAllAccounted();
  EXPECT_EQ(fAccount.Ran, fAccount.Made) << "seed " << fSeed;
  EXPECT_EQ(fAccount.Delivered, fAccount.Made - fAccount.Failed) << "seed " << fSeed;
}

TEST_F(WorkerPoolStress, NothingIsLostWhateverComesTogether) {
  constexpr std::chrono::milliseconds time{400};
  {
    TWorkerThreadPool pool(false);
    Run(time, pool, true);
    // Whatever has happened to it, it works on.
    pool.SetPaused(false);
    const auto last = MakeRef<TTestItem>(nullptr);
    pool.AddWorkItem(last, TPriority::Highest);
    EXPECT_TRUE(fQueue.RunUntil([&] { return last->GetStatus() == TTaskStatus::Completed; }))
        << ToUtf8(pool.Dump()) << "seed " << fSeed;
  }
  ExpectAllAccounted();
}

TEST_F(WorkerPoolStress, PoolsMayEndAtAnyMoment) {
  constexpr std::chrono::milliseconds time{400};
  const auto end = TSteady::now() + time;
  std::mt19937 dice(fSeed);
  int pools = 0;
  for (; TSteady::now() < end; ++pools) {
    TWorkerPoolConfig config;
    config.MaxRunningThreads = static_cast<int>(1 + dice() % 3);
    config.MinRunningThreads = config.MaxRunningThreads;
    auto pool = TWorkerPool::CreateInstance(config);
    std::vector<std::thread> producers;
    for (unsigned i = 0; i < 2; ++i) {
      producers.emplace_back([&, held = pool, seed = static_cast<unsigned>(dice())]() mutable {
        // A paused pool whose last references wait in its queue would wait for ever.
        TProducer producer(fAccount, seed, false);
        for (int step = 0; step < 40; ++step) producer.Step(static_cast<TWorkerThreadPool&>(*held));
        held->AddWorkItem(MakeRef<TAsyncProcedure>([pool = held] {}), TPriority::Normal);
        held.Reset();
      });
    }
    pool.Reset();  // The last reference is that of a producer or of an item.
    for (std::thread& thread : producers) thread.join();
    TThread::CheckSynchronize();
  }
  ExpectAllAccounted();
  EXPECT_GT(pools, 1);
}

}  // namespace
}  // namespace oak::tests
