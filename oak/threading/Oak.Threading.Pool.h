// TWorkerPool: where pools come from.
#pragma once

#include "oak/framework/Thread.h"
#include "oak/threading/Oak.Threading.Types.h"

namespace oak {

/// Settings of a private pool.
struct TWorkerPoolConfig {
  TWorkerPoolConfig();

  /// Above its minimum the pool grows only while the machine is less busy, in percent.
  int MaxCpuUsage = 80;
  /// Three for each processor, and two.
  int MaxRunningThreads;
  int MinRunningThreads = 1;
  TThreadPriority ThreadPriority = tpNormal;
  /// Called on a worker when the last item is done.
  TAllWorkItemsFinished OnAllWorkItemsFinished;
};

/// The pools of the process. Any thread.
struct TWorkerPool {
  /// The process's pool, made at first use. It is not counted: it lives until
  /// FinalizeShell, and a reference to it must not be kept longer.
  static Ref<IWorkerThreadPool> GlobalInstance();
  /// A pool of its own. With the last reference it ends: its threads are told to, and
  /// those that don't within three seconds are given up.
  static Ref<IWorkerThreadPool> CreateInstance(const TWorkerPoolConfig& pWorkerPoolConfig);
  /// The same with default settings and this callback.
  static Ref<IWorkerThreadPool> CreateInstance(TAllWorkItemsFinished pAllWorkItemsFinished);

  /// Puts a pool in the place of the process's one, nil puts that back; returns the
  /// replacement before. For tests; see TManualWorkerPool.
  static Ref<IWorkerThreadPool> SetGlobalInstance(Ref<IWorkerThreadPool> pPool);
};

}  // namespace oak
