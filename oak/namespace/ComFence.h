// The fence around bodies that the system calls: no exception leaves them.
#pragma once

#include <new>

#include "oak/base/Exceptions.h"

namespace oak {

/// Runs a body that gives an HRESULT; what it throws becomes one.
template <class TBody>
HRESULT ComFenced(TBody&& body) noexcept {
  try {
    return body();
  } catch (const EOSError& error) {
    // The code is that of Win32, or a whole HRESULT.
    const std::uint32_t code = error.GetErrorCode();
    const HRESULT whole = static_cast<HRESULT>(code);
    return code == 0 ? E_FAIL : whole < 0 ? whole : HRESULT_FROM_WIN32(code);
  } catch (const EOleSysError& error) {
    return error.GetErrorCode();
  } catch (const std::bad_alloc&) {
    return E_OUTOFMEMORY;
  } catch (...) {
    return E_FAIL;
  }
}

}  // namespace oak
