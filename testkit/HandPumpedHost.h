// An application around the library, moved on by hand.
#pragma once

#include <deque>
#include <functional>

#include "oak/framework/Host.h"

namespace oak::testkit {

/// Stands in for the application: background procedures wait in a queue until the
/// test runs them, on the test's own thread, and the other members of Host() can
/// be set freely. Restores the host in the end; what still waits is dropped.
class THandPumpedHost {
 public:
  THandPumpedHost();
  ~THandPumpedHost();
  THandPumpedHost(const THandPumpedHost&) = delete;
  THandPumpedHost& operator=(const THandPumpedHost&) = delete;

  std::size_t GetPending() const { return fQueue.size(); }
  /// Runs the oldest procedure; false if none waits.
  bool RunNext();
  /// Runs all, those that they add included.
  void RunAll();
  /// Procedures run at once, where they are handed over.
  void SetInline(bool value) { fInline = value; }
  /// How often and how deep the hourglass cursor is on.
  int GetWaitCursorDepth() const { return fWaitCursorDepth; }
  int GetWaitCursorCount() const { return fWaitCursorCount; }

 private:
  THost fBefore;
  std::deque<std::function<void()>> fQueue;
  bool fInline = false;
  int fWaitCursorDepth = 0;
  int fWaitCursorCount = 0;
};

}  // namespace oak::testkit
