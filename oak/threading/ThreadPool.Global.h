// The pool of the process.
#pragma once

namespace oak {

class TCustomThreadPool;

/// Whether this is the process's pool. Any thread.
bool IsGlobalPool(const TCustomThreadPool& pPool) noexcept;

}  // namespace oak
