// The main thread's queue, pumped by hand.
#pragma once

#include <atomic>
#include <cstdint>
#include <functional>

#include "oak/framework/MainThreadQueue.h"

namespace oak::testkit {

/// Makes the test's thread the main one and its queue an empty one. Closures that other
/// threads post run when the test says so. In the end it drops what still waits in the
/// queue, releases threads that wait in Synchronize, and waits for all threads to end.
class TMainQueue {
 public:
  TMainQueue();
  ~TMainQueue();
  TMainQueue(const TMainQueue&) = delete;
  TMainQueue& operator=(const TMainQueue&) = delete;

  std::size_t GetPending() const { return TMainThreadQueue::Instance().GetPending(); }
  /// How often the main thread's loop was asked to serve the queue.
  int GetWakes() const { return fWakes; }
  /// Runs what waits. True if something was run.
  bool Run() { return TMainThreadQueue::Instance().CheckSynchronize(); }
  /// Runs what comes until the condition holds, in real time. False if that takes
  /// longer than the limit: a safety net, by which a test has failed.
  bool RunUntil(const std::function<bool()>& condition, std::uint64_t limitMs = 20'000);

 private:
  std::function<void()> fBefore;
  std::atomic<int> fWakes{0};
};

}  // namespace oak::testkit
