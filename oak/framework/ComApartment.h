// The calling thread's apartment for component objects.
#pragma once

#include "oak/platform/shell_api.h"

namespace oak {

/// Enters an apartment for the span of a block. A thread that is in one of another
/// kind stays there. The thread that made it destroys it.
class TComApartment {
 public:
  /// Flags of CoInitializeEx.
  explicit TComApartment(DWORD mode = COINIT_APARTMENTTHREADED);
  ~TComApartment() { Leave(); }
  TComApartment(const TComApartment&) = delete;
  TComApartment& operator=(const TComApartment&) = delete;
  /// Success (S_OK, S_FALSE) or why the apartment was not entered.
  HRESULT GetResult() const noexcept { return fResult; }
  /// Leaves before the block's end.
  void Leave() noexcept;

 private:
  HRESULT fResult;
  bool fEntered;
};

}  // namespace oak
