// Asking long work to end.
#pragma once

#include "oak/base/Ref.h"

namespace oak {

/// Tells whether work that was begun is still wanted. Any thread, no lock.
struct ICancellationIndicator : IUnknown {
  static constexpr GUID Iid{
      0x5B0C1F3A, 0x8E2D, 0x4A67, {0x9C, 0x41, 0x2F, 0x7D, 0x60, 0xB8, 0x13, 0xE5}};
  virtual bool IsCancellationRequested() = 0;
};

/// Work that runs elsewhere and can be told to end. Any thread.
struct ITerminable : IUnknown {
  static constexpr GUID Iid{
      0x9D4471C6, 0x1B5E, 0x47F0, {0xA2, 0x7B, 0x84, 0x3E, 0xD9, 0x05, 0x6C, 0x1A}};
  /// Asks the work to end and cuts its way back to whoever started it.
  virtual void Terminate() = 0;
};

}  // namespace oak
