// The system's error dialogs, off for the span of a block.
#pragma once

#include "oak/platform/Api.h"

namespace oak {

/// Sets the error mode and restores the one before.
class TErrorMode {
 public:
  explicit TErrorMode(UINT mode = SEM_FAILCRITICALERRORS) : fOld(Api().SetErrorMode(mode)) {}
  ~TErrorMode() { Api().SetErrorMode(fOld); }
  TErrorMode(const TErrorMode&) = delete;
  TErrorMode& operator=(const TErrorMode&) = delete;

 private:
  UINT fOld;
};

}  // namespace oak
