// Background work, as its users see it: items, tokens, futures, pools.
//
//   fToken.Reset();                                     // what was asked before is void
//   TWorkerPool::GlobalInstance()->AddWorkItem(
//       MakeRef<TSizeItem>(path, this, fToken), TPriority::Normal);
//   TDelayedProcedure::CreateAndQueue([this] { Blink(); }, 500, false, fToken);
//   auto slow = TFuture<bool>::CreateAndQueue([path] { return IsSlow(path); });
#pragma once

#include "oak/threading/Oak.Threading.Future.h"
#include "oak/threading/Oak.Threading.Interlocked.h"
#include "oak/threading/Oak.Threading.Pool.h"
#include "oak/threading/Oak.Threading.Procedures.h"
#include "oak/threading/Oak.Threading.Token.h"
#include "oak/threading/Oak.Threading.Types.h"
#include "oak/threading/Oak.Threading.WorkItem.h"
