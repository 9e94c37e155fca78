// The machine's processors.
#pragma once

namespace oak {

/// Number of processors: the environment variable NUMBER_OF_PROCESSORS if it is a
/// number, else what the system says. Asked once.
int GetCPUCount();

/// How busy the machine is, in percent, since the last time that it was asked; the
/// first answer is the mean since the system's start. Asks the system every 200 ms at
/// most. Any thread.
int GetCPUUsage();

namespace detail {
/// Forgets what was asked before; for tests.
void ResetCpuCaches();
}  // namespace detail

}  // namespace oak
