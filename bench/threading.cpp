// The worker pool: empty items, start latency, cancelled items, pending delays; beside it a plain
// condition queue and, where they are installed, two pools of other libraries.
#include <condition_variable>
#include <deque>
#include <mutex>
#include <thread>

#include "bench/common/BenchData.h"
#include "oak/threading/Oak.Threading.h"

#ifdef OAK_BENCH_TBB
#include <tbb/task_arena.h>
#include <tbb/task_group.h>
#endif
#ifdef OAK_BENCH_QT
#include <QRunnable>
#include <QThreadPool>
#endif

namespace {

using namespace oak;
using TClock = std::chrono::steady_clock;

bool IsSmoke() { return std::getenv("OAK_BENCH_SMOKE") != nullptr; }
int ItemCount() { return IsSmoke() ? 2'000 : 500'000; }
int LatencyRounds() { return IsSmoke() ? 50 : 3'000; }

/// As many workers as processors, for all pools alike.
int Workers() { return static_cast<int>(std::max(2u, std::thread::hardware_concurrency())); }

/// Counts down; the main thread waits for 0.
class TCountdown {
 public:
  explicit TCountdown(int count) : fLeft(count) {}
  void Done() {
    if (fLeft.fetch_sub(1, std::memory_order_acq_rel) == 1) {
      const std::lock_guard guard(fLock);
      fIsDone = true;
      fDone.notify_one();
    }
  }
  void Wait() {
    std::unique_lock guard(fLock);
    fDone.wait(guard, [this] { return fIsDone; });
  }

 private:
  std::atomic<int> fLeft;
  std::mutex fLock;
  std::condition_variable fDone;
  bool fIsDone = false;
};

// --- the pools, each with Post(function object) -------------------------------------------------

template <class TRun>
class TRunItem final : public TBasicWorkItem {
 public:
  explicit TRunItem(TRun run) : fRun(std::move(run)) { fFireOnWorkDoneSynchronized = false; }
  void DoWork() override { fRun(); }

 private:
  TRun fRun;
};

class TOurPool {
 public:
  TOurPool() {
    TWorkerPoolConfig config;
    config.MinRunningThreads = config.MaxRunningThreads = Workers();
    fPool = TWorkerPool::CreateInstance(config);
  }
  template <class TRun>
  void Post(TRun run) {
    fPool->AddWorkItem(MakeRef<TRunItem<TRun>>(std::move(run)), TPriority::Normal);
  }

 private:
  Ref<IWorkerThreadPool> fPool;
};

/// The simplest pool that works: one lock, one condition.
class TConditionQueue {
 public:
  TConditionQueue() {
    for (int i = 0; i < Workers(); ++i) fThreads.emplace_back([this] { Run(); });
  }
  ~TConditionQueue() {
    {
      const std::lock_guard guard(fLock);
      fEnds = true;
    }
    fChanged.notify_all();
    for (std::thread& thread : fThreads) thread.join();
  }
  template <class TRun>
  void Post(TRun run) {
    {
      const std::lock_guard guard(fLock);
      fQueue.emplace_back(std::move(run));
    }
    fChanged.notify_one();
  }

 private:
  void Run() {
    std::unique_lock guard(fLock);
    while (true) {
      fChanged.wait(guard, [this] { return fEnds || !fQueue.empty(); });
      if (fQueue.empty()) return;
      const std::function<void()> run = std::move(fQueue.front());
      fQueue.pop_front();
      guard.unlock();
      run();
      guard.lock();
    }
  }

  std::mutex fLock;
  std::condition_variable fChanged;
  std::deque<std::function<void()>> fQueue;
  std::vector<std::thread> fThreads;
  bool fEnds = false;
};

#ifdef OAK_BENCH_TBB
class TArenaPool {
 public:
  TArenaPool() : fArena(Workers() + 1) {}
  template <class TRun>
  void Post(TRun run) {
    fArena.enqueue(std::move(run));
  }

 private:
  tbb::task_arena fArena;
};
#endif

#ifdef OAK_BENCH_QT
class TQtPool {
 public:
  TQtPool() { fPool.setMaxThreadCount(Workers()); }
  ~TQtPool() { fPool.waitForDone(); }
  template <class TRun>
  void Post(TRun run) {
    fPool.start(new TRunnable<TRun>(std::move(run)));
  }

 private:
  template <class TRun>
  struct TRunnable final : QRunnable {
    explicit TRunnable(TRun r) : Run(std::move(r)) {}
    void run() override { Run(); }
    TRun Run;
  };
  QThreadPool fPool;
};
#endif

// --- measures -----------------------------------------------------------------------------------

template <class TPool>
void FromOneProducer(benchmark::State& state) {
  TPool pool;
  const int count = ItemCount();
  for (auto _ : state) {
    TCountdown left(count);
    for (int i = 0; i < count; ++i) pool.Post([&left] { left.Done(); });
    left.Wait();
  }
  state.SetItemsProcessed(state.iterations() * count);
}

/// Every item adds two more until there are enough: nobody but workers adds.
template <class TPool>
struct TGrower {
  TPool& Pool;
  TCountdown& Left;
  std::atomic<int>& ToAdd;
  void operator()() const {
    for (int i = 0; i < 2; ++i)
      if (ToAdd.fetch_sub(1, std::memory_order_relaxed) > 0) Pool.Post(*this);
    Left.Done();
  }
};

template <class TPool>
void FromInside(benchmark::State& state) {
  TPool pool;
  const int count = ItemCount();
  for (auto _ : state) {
    TCountdown left(count);
    std::atomic<int> toAdd(count - 1);
    pool.Post(TGrower<TPool>{pool, left, toAdd});
    left.Wait();
  }
  state.SetItemsProcessed(state.iterations() * count);
}

/// Long enough for all workers to fall asleep.
void AwaitIdle() {
  const TClock::time_point end = TClock::now() + std::chrono::microseconds(200);
  while (TClock::now() < end) std::this_thread::yield();
}

template <class TPool>
void StartLatency(benchmark::State& state) {
  TPool pool;
  std::vector<double> times;
  for (auto _ : state) {
    for (int round = 0; round < LatencyRounds(); ++round) {
      std::atomic<std::int64_t> started{0};
      AwaitIdle();
      const TClock::time_point added = TClock::now();
      pool.Post([&started] { started = TClock::now().time_since_epoch().count(); });
      while (started.load() == 0) std::this_thread::yield();
      times.push_back(static_cast<double>(started - added.time_since_epoch().count()) / 1e3);
    }
  }
  std::sort(times.begin(), times.end());
  const auto at = [&](double part) {
    return times[static_cast<std::size_t>(part * static_cast<double>(times.size() - 1))];
  };
  state.counters["p50_us"] = at(0.50);
  state.counters["p99_us"] = at(0.99);
}

#define OAK_BENCH_POOL(pool)                                                      \
  BENCHMARK(FromOneProducer<pool>)->Unit(benchmark::kMillisecond)->UseRealTime(); \
  BENCHMARK(FromInside<pool>)->Unit(benchmark::kMillisecond)->UseRealTime();      \
  BENCHMARK(StartLatency<pool>)->Unit(benchmark::kMillisecond)->UseRealTime()->Iterations(1)

OAK_BENCH_POOL(TOurPool);
OAK_BENCH_POOL(TConditionQueue);
#ifdef OAK_BENCH_TBB
OAK_BENCH_POOL(TArenaPool);
#endif
#ifdef OAK_BENCH_QT
OAK_BENCH_POOL(TQtPool);
#endif

/// Items whose token is cancelled before a worker sees them: made, queued, taken, dropped.
void CancelledItems(benchmark::State& state) {
  const int count = ItemCount();
  for (auto _ : state) {
    TCountdown done(1);
    const Ref<IWorkerThreadPool> pool = TWorkerPool::CreateInstance([&done](bool) { done.Done(); });
    CancellationToken token;
    const Ref<ICancellationIndicator> indicator = token;
    token.Cancel();
    IWorkItems items;
    for (int i = 0; i < count; ++i)
      items.push_back(MakeRef<TAsyncProcedure>([] { std::abort(); }, indicator));
    pool->AddWorkItems(items, TPriority::Normal);
    done.Wait();
  }
  state.SetItemsProcessed(state.iterations() * count);
}
BENCHMARK(CancelledItems)->Unit(benchmark::kMillisecond)->UseRealTime();

/// Ten thousand delayed procedures wait for their turn; then all are cancelled.
void PendingDelays(benchmark::State& state) {
  const int count = IsSmoke() ? 100 : 10'000;
  double queued = 0;
  for (auto _ : state) {
    TCountdown done(1);
    const Ref<IWorkerThreadPool> pool = TWorkerPool::CreateInstance([&done](bool) { done.Done(); });
    CancellationToken token;
    const Ref<ICancellationIndicator> indicator = token;
    const TClock::time_point start = TClock::now();
    for (int i = 0; i < count; ++i)
      pool->AddWorkItem(MakeRef<TDelayedProcedure>([] { std::abort(); }, 60'000, true, indicator),
                        TPriority::Normal);
    queued = std::chrono::duration<double, std::micro>(TClock::now() - start).count() / count;
    token.Cancel();
    done.Wait();
  }
  state.counters["queue_us_each"] = queued;
}
BENCHMARK(PendingDelays)->Unit(benchmark::kMillisecond)->UseRealTime();

}  // namespace
