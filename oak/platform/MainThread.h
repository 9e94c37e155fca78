// Which thread is the main one.
#pragma once

#include "oak/base/abi.h"

namespace oak {

/// Identifier of the calling thread, asked of the system once for each thread
/// and not seen by an observer of the function table.
DWORD CurrentThreadId() noexcept;

/// Identifier of the main thread: the one that initialised the library, unless
/// SetMainThread named another. Any thread.
DWORD MainThreadId() noexcept;

/// Whether the caller is the main thread. Any thread, no system call.
bool IsMainThread() noexcept;

/// Makes the calling thread the main one: for hosts that load the library on a
/// thread of its own, and for tests. To be called before other threads use the
/// library.
void SetMainThread() noexcept;

}  // namespace oak
