// The pool of the process.
#include <thread>

#include "oak/framework/Finalizers.h"
#include "tests/threading/PoolKit.h"

namespace oak::tests {
namespace {

using testing::ElementsAre;
using testkit::TScopedApi;

class GlobalPool : public TPoolTest {
 protected:
  GlobalPool() { RunFinalizers(); }
  ~GlobalPool() override {
    RunFinalizers();
    Application().SetIsLibrary(false);
  }
  static TWorkerThreadPool& Pool() {
    return static_cast<TWorkerThreadPool&>(*TWorkerPool::GlobalInstance());
  }
};

TEST_F(GlobalPool, SizesItselfByTheProcessors) {
  struct TCase {
    char16_t Processors;
    bool IsLibrary;
    int Min, Max;
  };
  // With few processors the first limit is below the minimum, which it lowers.
  for (const TCase c :
       {TCase{u'8', false, 16, 32}, TCase{u'8', true, 8, 32}, TCase{u'2', true, 4, 16},
        TCase{u'3', false, 8, 16}, TCase{u'1', false, 4, 16}}) {
    RunFinalizers();
    detail::ResetCpuCaches();
    TScopedApi processors(Api().GetEnvironmentVariableW, [&](LPCWSTR, LPWSTR text, DWORD) -> DWORD {
      text[0] = static_cast<WCHAR>(c.Processors);
      return 1;
    });
    Application().SetIsLibrary(c.IsLibrary);
    EXPECT_EQ(Pool().GetMinWorkerThreads(), c.Min);
    EXPECT_EQ(Pool().GetMaxRunningThreads(), c.Max);
  }
}

TEST_F(GlobalPool, IsMadeOnceWhoeverComesFirst) {
  std::vector<IWorkerThreadPool*> found(8);
  std::vector<std::thread> threads;
  for (auto& pool : found)
    threads.emplace_back([&pool] { pool = TWorkerPool::GlobalInstance().Get(); });
  for (auto& thread : threads) thread.join();
  for (const auto* pool : found) EXPECT_EQ(pool, found[0]);
}

TEST_F(GlobalPool, IsEndedExplicitlyAndMadeAgain) {
  TEvent gate;
  const Ref<IWorkItem> running = TAsyncProcedure::CreateAndQueue([&] { gate.WaitFor(10'000); });
  ASSERT_TRUE(Clock.Settle());
  TScopedApi debug(Api().OutputDebugStringW, [&](LPCWSTR) { Trace.Add("given up"); });
  TScopedApi noForce(Api().TerminateThread, nullptr);
  for (const bool isLibrary : {false, true}) {
    if (isLibrary) TAsyncProcedure::CreateAndQueue([&] { gate.WaitFor(10'000); });
    ASSERT_TRUE(Clock.Settle());
    Application().SetIsLibrary(isLibrary);
    const std::uint64_t start = Clock.GetTicks();
    RunFinalizers();
    const std::uint64_t took = Clock.GetTicks() - start;
    EXPECT_THAT(Trace.Take(), ElementsAre("given up"));
    EXPECT_GE(took, isLibrary ? 240u : 3000u);
    EXPECT_LE(took, isLibrary ? 300u : 3100u);
  }
  gate.SetEvent();
  gate.SetEvent();
  EXPECT_TRUE(Clock.Advance(10'000));
  EXPECT_TRUE(TThread::AwaitNone(20'000));
  TString name;
  TScopedApi description(Api().SetThreadDescription, [&](HANDLE, LPCWSTR text) -> HRESULT {
    name = FromW(text);
    return S_OK;
  });
  TAsyncProcedure::CreateAndQueue([this] { Trace.Add("again"); });
  ASSERT_TRUE(Clock.Settle());
  EXPECT_EQ(name, u"TWorkerThread in GlobalThreadPool");
  EXPECT_THAT(Trace.Take(), ElementsAre("again"));
  RunFinalizers();
}

}  // namespace
}  // namespace oak::tests
