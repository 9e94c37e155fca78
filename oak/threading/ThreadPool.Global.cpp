#include "oak/threading/ThreadPool.Global.h"

#include <algorithm>
#include <atomic>
#include <memory>
#include <mutex>

#include "oak/framework/Application.h"
#include "oak/framework/Finalizers.h"
#include "oak/platform/Api.h"
#include "oak/threading/Oak.Threading.Pool.h"
#include "oak/threading/ThreadPool.Cpu.h"
#include "oak/threading/ThreadPool.Worker.h"

namespace oak {
namespace {

constexpr DWORD UnloadHardTerminateMs = 40;
constexpr DWORD UnloadGraceMs = 200;

// Never destroyed: the last workers of a process that just exits still look at it.
struct TGlobalPool {
  std::mutex Lock;  ///< For making, replacing and ending.
  std::atomic<TWorkerThreadPool*> Pool{nullptr};
  std::atomic<bool> IsReplaced{false};
  Ref<IWorkerThreadPool> Replacement;
};

TGlobalPool& Global() {
  static TGlobalPool& global = *new TGlobalPool;
  return global;
}

std::unique_ptr<TWorkerThreadPool> MakeGlobalPool() {
  const int processors = std::max(4, GetCPUCount());
  auto pool = std::make_unique<TWorkerThreadPool>(true);
  pool->SetMinWorkerThreads((Application().GetIsLibrary() ? 1 : 2) * processors);
  pool->SetMaxRunningThreads(processors * 4);
  return pool;
}

}  // namespace

bool IsGlobalPool(const TCustomThreadPool& pPool) noexcept {
  return Global().Pool.load(std::memory_order_relaxed) == &pPool;
}

Ref<IWorkerThreadPool> TWorkerThreadPool::Instance() {
  TGlobalPool& global = Global();
  TWorkerThreadPool* pool = global.Pool.load(std::memory_order_acquire);
  if (!pool) {
    const std::lock_guard guard(global.Lock);
    pool = global.Pool.load(std::memory_order_relaxed);
    if (!pool) {
      AddFinalizer(&TWorkerThreadPool::FinalizeInstance);
      pool = MakeGlobalPool().release();
      global.Pool.store(pool, std::memory_order_release);
    }
  }
  return Ref<IWorkerThreadPool>::Share(pool);
}

void TWorkerThreadPool::FinalizeInstance() {
  const std::unique_ptr<TWorkerThreadPool> pool(Global().Pool.exchange(nullptr));
  if (!pool || !Application().GetIsLibrary()) return;
  pool->SetMaxTimeUntilHardTerminate(UnloadHardTerminateMs);
  Api().Sleep(UnloadGraceMs);
}

// --- private pools ----------------------------------------------------------------------

TWorkerThreadPoolRefCounted::TWorkerThreadPoolRefCounted(const TWorkerPoolConfig& pWorkerPoolConfig)
    : TWorkerThreadPool(true) {
  SetMaxRunningThreads(pWorkerPoolConfig.MaxRunningThreads);
  SetMinWorkerThreads(pWorkerPoolConfig.MinRunningThreads);
  SetMaxCpuUsage(pWorkerPoolConfig.MaxCpuUsage);
  SetPriority(pWorkerPoolConfig.ThreadPriority);
  OnAllWorkItemsDone = pWorkerPoolConfig.OnAllWorkItemsFinished;
}

ULONG STDMETHODCALLTYPE TWorkerThreadPoolRefCounted::Release() {
  const ULONG left = fRefCount.fetch_sub(1) - 1;
  if (left > 0) return left;
  // What ends with the pool may take and give back a reference for the last time.
  constexpr ULONG many = 0x40000000;
  fRefCount = many;
  delete this;
  return 0;
}

TWorkerPoolConfig::TWorkerPoolConfig()
    : MaxRunningThreads(TCustomThreadPool::DefaultMaxRunningThreads()) {}

Ref<IWorkerThreadPool> TWorkerPool::GlobalInstance() {
  TGlobalPool& global = Global();
  if (global.IsReplaced.load(std::memory_order_acquire)) {
    const std::lock_guard guard(global.Lock);
    if (global.Replacement) return global.Replacement;
  }
  return TWorkerThreadPool::Instance();
}

Ref<IWorkerThreadPool> TWorkerPool::SetGlobalInstance(Ref<IWorkerThreadPool> pPool) {
  TGlobalPool& global = Global();
  const std::lock_guard guard(global.Lock);
  global.IsReplaced = static_cast<bool>(pPool);
  global.Replacement.Swap(pPool);
  return pPool;
}

Ref<IWorkerThreadPool> TWorkerPool::CreateInstance(const TWorkerPoolConfig& pWorkerPoolConfig) {
  return MakeRef<TWorkerThreadPoolRefCounted>(pWorkerPoolConfig);
}

Ref<IWorkerThreadPool> TWorkerPool::CreateInstance(TAllWorkItemsFinished pAllWorkItemsFinished) {
  TWorkerPoolConfig config;
  config.OnAllWorkItemsFinished = std::move(pAllWorkItemsFinished);
  return CreateInstance(config);
}

}  // namespace oak
