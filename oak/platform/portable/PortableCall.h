// The fence around every COM method of the portable shell.
#pragma once

#include <new>

#include "oak/base/Exceptions.h"
#include "oak/platform/Api.h"

namespace oak {

/// Runs the body of a COM method: an installed observer may fail the call, and
/// no exception leaves it. `name` is "Interface::Method" and lives for ever.
template <class TBody>
HRESULT PortableCall(const char* name, TBody&& body) noexcept {
  try {
    if (IApiObserver* observer = GetApiObserver()) [[unlikely]] {
      const detail::TPlatformScope scope;
      if (scope.IsOutermost() && !observer->BeforeCall(name))
        return HRESULT_FROM_WIN32(observer->FailureCode());
      return body();
    }
    return body();
  } catch (const std::bad_alloc&) {
    return E_OUTOFMEMORY;
  } catch (const EOSError& error) {
    return HRESULT_FROM_WIN32(error.GetErrorCode());
  } catch (...) {
    return E_UNEXPECTED;
  }
}

}  // namespace oak
