// The function table: every free function of the shell and of the operating
// system that the library calls.
//
//   Api().SHParseDisplayName(W(text), nullptr, pidl.Put(), 0, nullptr);
//   if (Api().VariantCompare) ...            // the running system may lack it
//
// Names, parameters and results are the published ones. On Windows an entry
// calls the system, elsewhere the portable shell. Tests replace, count and fail
// entries through ScopedApi (testkit).
#pragma once

#include <atomic>
#include <functional>

#include "oak/platform/ApiFailure.h"
#include "oak/platform/shell_api.h"

namespace oak {

struct TApi;

/// Watches the calls that cross the seam. One at a time, for the whole process.
/// Calls that the platform makes to itself are not seen.
class IApiObserver {
 public:
  /// Before a call is made, on the calling thread. False makes the call fail:
  /// an entry of the table returns its failure value with the observer's code as
  /// last error, a method of the portable shell the observer's code as HRESULT.
  /// Functions that cannot fail (TNever in ApiList.inc) are called all the same.
  virtual bool BeforeCall(const char* name) = 0;
  /// Win32 error code of a failed call.
  virtual DWORD FailureCode() const { return 31; }  // ERROR_GEN_FAILURE

 protected:
  ~IApiObserver() = default;
};

namespace detail {
extern std::atomic<IApiObserver*> gApiObserver;
/// How many observed platform calls this thread is inside of.
extern thread_local int tPlatformDepth;
struct TPlatformScope {
  TPlatformScope() noexcept { ++tPlatformDepth; }
  ~TPlatformScope() { --tPlatformDepth; }
  TPlatformScope(const TPlatformScope&) = delete;
  TPlatformScope& operator=(const TPlatformScope&) = delete;
  bool IsOutermost() const noexcept { return tPlatformDepth == 1; }
};
/// Sets the thread's last error without passing the table.
void SetLastErrorDirect(DWORD code) noexcept;
/// The thread's last error without passing the table.
DWORD GetLastErrorDirect() noexcept;
/// Fills the table with what the running system has.
void BindPlatform(TApi& api);
}  // namespace detail

/// Installs an observer (nil: none) and returns the one before.
inline IApiObserver* SetApiObserver(IApiObserver* observer) noexcept {
  return detail::gApiObserver.exchange(observer);
}
inline IApiObserver* GetApiObserver() noexcept {
  return detail::gApiObserver.load(std::memory_order_acquire);
}

template <class Signature>
class TApiEntry;

/// One function of the table. Null (false) if the running system lacks it.
template <class R, class... A>
class TApiEntry<R(A...)> {
 public:
  using TFunction = R(STDAPICALLTYPE*)(A...);
  using TReplacement = std::function<R(A...)>;

  explicit operator bool() const noexcept { return fFunction || fReplacement; }
  R operator()(A... args) const {
    if (IApiObserver* observer = GetApiObserver()) [[unlikely]]
      return Observed(*observer, args...);
    return Call(args...);
  }

  const char* Name() const noexcept { return fName; }
  TFunction Function() const noexcept { return fFunction; }
  /// Set-up of the table only; not while another thread may call the entry.
  void Bind(const char* name, TFunction function, R (*failure)(DWORD)) noexcept {
    fName = name;
    fFunction = function;
    fFailure = failure;
  }
  void SetFunction(TFunction function) noexcept { fFunction = function; }
  void SetReplacement(TReplacement replacement) { fReplacement = std::move(replacement); }
  const TReplacement& Replacement() const noexcept { return fReplacement; }

 private:
  R Call(A... args) const { return fReplacement ? fReplacement(args...) : fFunction(args...); }
  R Observed(IApiObserver& observer, A... args) const {
    const detail::TPlatformScope scope;
    const bool allowed = !scope.IsOutermost() || observer.BeforeCall(fName);
    if (allowed || !fFailure) return Call(args...);
    detail::SetLastErrorDirect(observer.FailureCode());
    return fFailure(observer.FailureCode());
  }
  const char* fName = "";
  TFunction fFunction = nullptr;
  R (*fFailure)(DWORD) = nullptr;
  TReplacement fReplacement;
};

/// The table itself: one member for each line of ApiList.inc.
struct TApi {
#define OAK_API(Result, Name, Params, Failure) TApiEntry<Result Params> Name;
#include "oak/platform/ApiList.inc"
#undef OAK_API
};

/// The process's table, bound at first use. Any thread.
TApi& Api();

}  // namespace oak
