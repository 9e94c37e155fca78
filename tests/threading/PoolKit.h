// What the tests of the pools have in common.
#pragma once

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <atomic>
#include <mutex>
#include <string>
#include <vector>

#include "oak/base/DateTime.h"
#include "oak/framework/Application.h"
#include "oak/platform/MainThread.h"
#include "oak/threading/Oak.Threading.h"
#include "oak/threading/ThreadPool.h"
#include "testkit/MainQueue.h"
#include "testkit/VirtualClock.h"

namespace oak::tests {

/// Lines that any thread adds.
class TTrace {
 public:
  void Add(std::string line) {
    const std::lock_guard guard(fLock);
    fLines.push_back(std::move(line));
  }
  /// What was added since the last call.
  std::vector<std::string> Take() {
    const std::lock_guard guard(fLock);
    return std::exchange(fLines, {});
  }

 private:
  std::mutex fLock;
  std::vector<std::string> fLines;
};

/// Counts its objects, so that a test sees what is left.
class TCounted {
 public:
  TCounted() { ++gAlive; }
  ~TCounted() { --gAlive; }
  TCounted(const TCounted&) = delete;
  TCounted& operator=(const TCounted&) = delete;
  static int Alive() { return gAlive; }

 private:
  static inline std::atomic<int> gAlive{0};
};

/// A work item with a body.
class TTestItem : public TBasicWorkItem {
 public:
  explicit TTestItem(std::function<void(TTestItem&)> body,
                     Ref<ICancellationIndicator> token = nullptr)
      : TBasicWorkItem(std::move(token)), fBody(std::move(body)) {
    fFireOnWorkDoneSynchronized = false;
  }
  void DeliverOnMainThread() { fFireOnWorkDoneSynchronized = true; }
  bool IsCanceled() { return Terminated(); }

  void DoWork() override {
    if (fBody) fBody(*this);
  }
  std::function<void()> OnDone;
  std::function<void()> OnTerminateItem;

 protected:
  void WorkDone() override {
    if (OnDone) OnDone();
  }
  void Terminate() override {
    TBasicWorkItem::Terminate();
    if (OnTerminateItem) OnTerminateItem();
  }

 private:
  const std::function<void(TTestItem&)> fBody;
  const TCounted fCounted;
};

/// A thread with a body.
class TBodyThread final : public TOakThread {
 public:
  explicit TBodyThread(std::function<void(TBodyThread&)> body,
                       Ref<ICancellationIndicator> indicator = nullptr)
      : TOakThread(std::move(indicator)), fBody(std::move(body)) {}
  ~TBodyThread() override { Finish(); }

 protected:
  void Execute() override { fBody(*this); }

 private:
  const std::function<void(TBodyThread&)> fBody;
};

/// How busy the machine seems to be.
class TScriptedCpu {
 public:
  TScriptedCpu()
      : fTimes(Api().GetSystemTimes, [this](FILETIME* idle, FILETIME* kernel, FILETIME* user) {
          ++Calls;
          if (Fails) return BOOL{FALSE};
          fTotal += 1000;
          fIdle += static_cast<std::uint64_t>(10 * (100 - Busy));
          *idle = TicksToFileTime(fIdle);
          *kernel = TicksToFileTime(fTotal);
          *user = {};
          return BOOL{TRUE};
        }) {
    detail::ResetCpuCaches();
  }
  ~TScriptedCpu() { detail::ResetCpuCaches(); }

  std::atomic<int> Busy{0};
  std::atomic<int> Calls{0};
  std::atomic<bool> Fails{false};

 private:
  std::uint64_t fTotal = 0;
  std::uint64_t fIdle = 0;
  testkit::TScopedApi<decltype(TApi::GetSystemTimes)> fTimes;
};

/// Real threads that the test's clock moves. A pool is declared behind it or ended by
/// the test.
class TPoolTest : public ::testing::Test {
 protected:
  TPoolTest() {
    Clock.HoldThreads();
    Application().OnException = [this](TObject*, const std::exception_ptr& exception) {
      Trace.Add("reported " + ToUtf8(ExceptionText(exception)));
    };
  }
  ~TPoolTest() override {
    EXPECT_FALSE(Clock.GetOverran()) << "threads did not come to wait";
    Application().OnException = nullptr;
  }
  void TearDown() override { EXPECT_EQ(TCounted::Alive(), 0) << "work items are left"; }

  /// An item that tells its name and ends.
  Ref<TTestItem> Named(std::string name) {
    return MakeRef<TTestItem>([this, name = std::move(name)](TTestItem&) { Trace.Add(name); });
  }
  /// An item that tells its name and waits for the gate.
  Ref<TTestItem> Waiting(TEvent& gate, std::string name = "waiting") {
    return MakeRef<TTestItem>([this, &gate, name = std::move(name)](TTestItem&) {
      Trace.Add(name);
      gate.WaitFor();
    });
  }
  static void Add(TWorkerThreadPool& pool, const Ref<IWorkItem>& item,
                  TPriority priority = TPriority::Normal) {
    pool.AddWorkItem(item, priority);
  }
  /// Gives the pool so many threads, which wait for work.
  void MakeIdle(TWorkerThreadPool& pool, int threads) {
    pool.SetMinWorkerThreads(threads);
    pool.SetMaxRunningThreads(threads);
    TEvent gate(true);
    for (int i = 0; i < threads; ++i) Add(pool, Waiting(gate));
    EXPECT_TRUE(Clock.Settle());
    gate.SetEvent();
    EXPECT_TRUE(Clock.Settle());
    EXPECT_EQ(pool.GetCount(), threads);
    Trace.Take();
  }

  testkit::TMainQueue Queue;
  TScriptedCpu Cpu;
  testkit::TVirtualClock Clock;
  TTrace Trace;
};

}  // namespace oak::tests
