// What an entry of the function table returns when an observer makes it fail.
#pragma once

#include "oak/platform/shell_api_types.h"

namespace oak::failure {

// Each takes the Win32 error code of the failure and gives the function's failure value.

template <class R>
struct THresult {
  static R Make(DWORD code) { return HRESULT_FROM_WIN32(code); }
  static constexpr R (*Function)(DWORD) = &Make;
};
/// The error code itself, as the registry functions return it.
template <class R>
struct TCode {
  static R Make(DWORD code) { return static_cast<R>(code); }
  static constexpr R (*Function)(DWORD) = &Make;
};
/// STATUS_UNSUCCESSFUL.
template <class R>
struct TStatus {
  static R Make(DWORD) { return static_cast<R>(0xC0000001u); }
  static constexpr R (*Function)(DWORD) = &Make;
};
/// INVALID_HANDLE_VALUE.
template <class R>
struct TBadHandle {
  static R Make(DWORD) { return INVALID_HANDLE_VALUE; }
  static constexpr R (*Function)(DWORD) = &Make;
};
template <class R>
struct TAllOnes {
  static R Make(DWORD) { return static_cast<R>(-1); }
  static constexpr R (*Function)(DWORD) = &Make;
};
/// Zero, false or nil.
template <class R>
struct TZero {
  static R Make(DWORD) { return R(); }
  static constexpr R (*Function)(DWORD) = &Make;
};
/// The function cannot fail: it is carried out, whatever the observer says.
/// Functions that free something are of this kind, so that a failure on trial
/// shows no leak that the program cannot help.
template <class R>
struct TNever {
  static constexpr R (*Function)(DWORD) = nullptr;
};

}  // namespace oak::failure
