// Making calls to the platform fail, one after the other.
#pragma once

#include <functional>
#include <mutex>
#include <string>

#include "oak/platform/Api.h"

namespace oak::testkit {

/// Fails the k-th call that can fail, counted from 1, for its own span of life.
/// Calls that only give something back or ask for the time are not counted: they
/// have no failure that a caller could act on.
class TFaultInjector final : public IApiObserver {
 public:
  /// With `only`, a function or "Interface::Method", other calls are not counted.
  explicit TFaultInjector(int failingCall, DWORD code = ERROR_GEN_FAILURE, std::string only = {});
  ~TFaultInjector() { SetApiObserver(fBefore); }
  TFaultInjector(const TFaultInjector&) = delete;
  TFaultInjector& operator=(const TFaultInjector&) = delete;

  bool BeforeCall(const char* name) override;
  DWORD FailureCode() const override { return fCode; }

  /// Whether the call was reached and made to fail, and which one it was.
  bool HasFailed() const { return !FailedName().empty(); }
  std::string FailedName() const;

 private:
  IApiObserver* fBefore = nullptr;
  mutable std::mutex fLock;
  int fLeft;
  DWORD fCode;
  std::string fOnly;
  std::string fFailedName;
};

/// Runs the scenario with the first, second, ... call failing until one run makes
/// no more calls. `check` sees the name of the call that failed after each run.
/// Returns the number of calls that were made to fail. The scenario runs on one
/// thread.
int SweepFaults(const std::function<void()>& scenario,
                const std::function<void(const std::string& failed)>& check = {},
                DWORD code = ERROR_GEN_FAILURE);

}  // namespace oak::testkit
