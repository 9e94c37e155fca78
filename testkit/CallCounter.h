// Counting the calls that the library makes to the platform.
#pragma once

#include <map>
#include <mutex>
#include <string>

#include "oak/platform/Api.h"

namespace oak::testkit {

/// Counts the calls of all threads for its own span of life. One observer at a
/// time: do not nest with TFaultInjector, which counts too.
class TCallCounter final : public IApiObserver {
 public:
  TCallCounter() { fBefore = SetApiObserver(this); }
  ~TCallCounter() { SetApiObserver(fBefore); }
  TCallCounter(const TCallCounter&) = delete;
  TCallCounter& operator=(const TCallCounter&) = delete;

  bool BeforeCall(const char* name) override;

  /// All calls, or those of one function or "Interface::Method".
  int Total() const;
  int Count(const std::string& name) const;
  /// "Name: 3" a line, for the message of a failed test.
  std::string ToString() const;
  void Reset();

 private:
  IApiObserver* fBefore = nullptr;
  mutable std::mutex fLock;
  std::map<std::string, int> fCounts;
};

}  // namespace oak::testkit
