#include "testkit/FaultInjection.h"

#include <algorithm>
#include <string_view>

#include "oak/platform/ApiFailure.h"

namespace oak::testkit {
namespace {

struct TFunctionInfo {
  std::string_view Name;
  bool CanFail;
};
// Not constexpr: with the sanitizers the address of a function is no constant to compare.
const TFunctionInfo Functions[] = {
#define OAK_API(Result, Name, Params, Failure) \
  {#Name, failure::Failure<Result>::Function != nullptr},
#include "oak/platform/ApiList.inc"
#undef OAK_API
};

/// Methods of interfaces, which are not in the table, all can.
bool CanFail(std::string_view name) {
  const auto found = std::find_if(std::begin(Functions), std::end(Functions),
                                  [&](const TFunctionInfo& f) { return f.Name == name; });
  return found == std::end(Functions) || found->CanFail;
}

}  // namespace

TFaultInjector::TFaultInjector(int failingCall, DWORD code, std::string only)
    : fLeft(failingCall), fCode(code), fOnly(std::move(only)) {
  fBefore = SetApiObserver(this);
}

std::string TFaultInjector::FailedName() const {
  const std::lock_guard guard(fLock);
  return fFailedName;
}

bool TFaultInjector::BeforeCall(const char* name) {
  const std::lock_guard guard(fLock);
  if (fOnly.empty() ? !CanFail(name) : fOnly != name) return true;
  if (--fLeft != 0) return true;
  fFailedName = name;
  return false;
}

int SweepFaults(const std::function<void()>& scenario,
                const std::function<void(const std::string& failed)>& check, DWORD code) {
  for (int failing = 1;; ++failing) {
    std::string failed;
    {
      TFaultInjector injector(failing, code);
      scenario();
      failed = injector.FailedName();
    }
    if (failed.empty()) return failing - 1;
    if (check) check(failed);
  }
}

}  // namespace oak::testkit
