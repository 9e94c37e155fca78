// The threads on which background work runs. Most users need Oak.Threading.h only.
#pragma once

#include "oak/threading/ThreadPool.Cpu.h"
#include "oak/threading/ThreadPool.Custom.h"
#include "oak/threading/ThreadPool.Queue.h"
#include "oak/threading/ThreadPool.Threads.h"
#include "oak/threading/ThreadPool.Worker.h"
