#include "oak/framework/Sync.h"

#include <gtest/gtest.h>

#include <functional>
#include <memory>
#include <random>
#include <thread>
#include <vector>

#include "oak/framework/Thread.h"
#include "testkit/MainQueue.h"
#include "testkit/VirtualClock.h"

namespace oak {
namespace {

using testkit::TMainQueue;
using testkit::TVirtualClock;

/// A thread of the library around a closure, waited for in the end.
class TWorker final : public TThread {
 public:
  explicit TWorker(TClosure body) : fBody(std::move(body)) { Start(); }
  ~TWorker() override { Finish(); }

 protected:
  void Execute() override { fBody(); }

 private:
  const TClosure fBody;
};

std::vector<std::unique_ptr<TWorker>> MakeWorkers(int count, std::function<void(int)> body) {
  std::vector<std::unique_ptr<TWorker>> workers;
  for (int i = 0; i < count; ++i)
    workers.push_back(std::make_unique<TWorker>([body, i] { body(i); }));
  return workers;
}

TEST(Event, RemembersOneSignalUntilItIsTakenOrReset) {
  struct TCase {
    const char* Name;
    bool ManualReset;
    bool InitialState;
    const char* Steps;  ///< s set, 3 set three times, r reset, y a wait ends, n it does not
  };
  const TCase cases[] = {
      {"new", false, false, "n"},
      {"initially set", false, true, "yn"},
      {"one wait takes it", false, false, "synn"},
      {"two sets are one signal", false, false, "ssyn"},
      {"reset takes it back", false, false, "srn"},
      {"manual: until reset", true, true, "yyrnn"},
      {"manual: one reset undoes many sets", true, false, "s3srn"},
  };
  for (const TCase& c : cases) {
    TEvent event(c.ManualReset, c.InitialState);
    SCOPED_TRACE(c.Name);
    for (const char* step = c.Steps; *step; ++step) {
      if (*step == 's') event.SetEvent();
      if (*step == '3') event.SetEventFor(3);
      if (*step == 'r') event.ResetEvent();
      if (*step == 'y' || *step == 'n') {
        EXPECT_EQ(event.IsSet(), *step == 'y') << step;
        EXPECT_EQ(event.WaitFor(0), *step == 'y' ? wrSignaled : wrTimeout) << step;
      }
    }
  }
}

// Threads wait, the signals are given while none of them has woken yet.
TEST(Event, LetsAsManyThreadsGoAsItWasSignalled) {
  struct TCase {
    bool ManualReset;
    int Waiting;
    std::vector<std::uint32_t> Signals;
    int Gone;
    bool StaysSet;
  };
  const TCase cases[] = {{false, 3, {1, 1}, 2, false},
                         {false, 3, {9}, 3, true},
                         {false, 2, {0}, 0, false},
                         {true, 3, {1}, 3, true},
                         {false, 4, {1, 2}, 3, false}};
  for (const TCase& c : cases) {
    SCOPED_TRACE(testing::Message() << c.Waiting << " waiting, first signal for " << c.Signals[0]);
    TMainQueue queue;
    TVirtualClock clock;
    clock.HoldThreads();
    TEvent event(c.ManualReset);
    std::atomic<int> gone{0};
    const auto workers =
        MakeWorkers(c.Waiting, [&](int) { gone += event.WaitFor() == wrSignaled; });
    ASSERT_TRUE(clock.AwaitSleepers(static_cast<std::size_t>(c.Waiting)));
    EXPECT_EQ(event.GetWaiting(), static_cast<std::uint32_t>(c.Waiting));
    for (const std::uint32_t count : c.Signals) event.SetEventFor(count);
    ASSERT_TRUE(clock.Settle());
    EXPECT_EQ(gone, c.Gone);
    EXPECT_EQ(event.IsSet(), c.StaysSet);
    for (int i = 0; i < c.Waiting; ++i) event.SetEventFor(1);
  }
}

TEST(VirtualClock, TellsOfAThreadThatNeverWaits) {
  TMainQueue queue;
  std::atomic<bool> leave{false};
  TVirtualClock clock;
  clock.HoldThreads();
  clock.SetLimit(5);
  TWorker busy([&] {
    while (!leave) std::this_thread::yield();
  });
  EXPECT_FALSE(clock.Settle());
  EXPECT_TRUE(clock.GetOverran());
  clock.SetBusyThreads(1);
  EXPECT_TRUE(clock.Settle());
  leave = true;
}

TEST(VirtualClock, ReleasesWhoWaitsWhenItEnds) {
  TMainQueue queue;
  TEvent event;
  std::atomic<int> results{0};
  {
    TVirtualClock clock;
    clock.HoldThreads();
    TThread::CreateAnonymousThread([&] { results += event.WaitFor(5000) == wrTimeout; })->Start();
    TThread::CreateAnonymousThread([&] {
      Api().Sleep(5000);
      ++results;
    })->Start();
    ASSERT_TRUE(clock.AwaitSleepers(2));
  }
  ASSERT_TRUE(TThread::AwaitNone(20'000));
  EXPECT_EQ(results, 2);
}

TEST(EventThreads, NoSignalIsLostBetweenTwoThreads) {
  TEvent ping, pong;
  constexpr int rounds = 20'000;
  int value = 0;  // guarded by the events alone
  TWorker other([&] {
    for (int i = 0; i < rounds; ++i) {
      ping.WaitFor();
      ++value;
      pong.SetEvent();
    }
  });
  for (int i = 0; i < rounds; ++i) {
    ping.SetEvent();
    ASSERT_EQ(pong.WaitFor(60'000), wrSignaled);
    ASSERT_EQ(value, i + 1);
  }
}

// Producers add to a count and signal; consumers take from it and wait, with times so
// short that they often pass just when a signal comes.
TEST(EventThreads, NoWorkIsForgottenWhenWaitsTimeOut) {
  TEvent event;
  std::atomic<int> waiting{0}, taken{0};
  constexpr int producers = 2, each = 4'000, total = producers * each;
  const auto take = [&] {
    int before = waiting.load();
    while (before > 0)
      if (waiting.compare_exchange_weak(before, before - 1)) return ++taken, true;
    return false;
  };
  const auto consumers = MakeWorkers(3, [&](int index) {
    std::minstd_rand random(static_cast<unsigned>(index + 1));
    while (taken < total)
      if (!take()) event.WaitFor(index == 0 ? INFINITE : static_cast<DWORD>(random() % 2));
    event.SetEventFor(3);
  });
  const auto makers = MakeWorkers(producers, [&](int index) {
    for (int i = 0; i < each; ++i) {
      const int count = index == 0 ? 1 : 1 + i % 3;
      for (int k = 0; k < count && i < each; ++k, ++i) ++waiting;
      --i;
      event.SetEventFor(static_cast<std::uint32_t>(count));
    }
  });
  for (const auto& worker : makers) EXPECT_TRUE(worker->WaitFor(60'000));
  for (const auto& worker : consumers) EXPECT_TRUE(worker->WaitFor(60'000));
  EXPECT_EQ(taken, total);
}

TEST(CriticalSection, IsTakenAgainByItsOwnerOnly) {
  TCriticalSection section;
  const auto othersGetIt = [&] {
    bool got = false;
    std::thread([&] {
      got = section.TryEnter();
      if (got) section.Leave();
    }).join();
    return got;
  };
  TLock outer(section);
  TLock inner(section);
  inner.Leave();
  inner.Leave();  // once is enough
  EXPECT_FALSE(othersGetIt());
  outer.Leave();
  EXPECT_TRUE(othersGetIt());
}

}  // namespace
}  // namespace oak
