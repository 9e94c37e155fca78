// What is to be ended explicitly, before the program ends or the library is unloaded.
#pragma once

namespace oak {

using TFinalizer = void (*)();

/// Registers a function for RunFinalizers; one that is registered already stays where it
/// is. Any thread.
void AddFinalizer(TFinalizer finalizer);

/// Calls what is registered, the latest first, and forgets it. What one raises goes to
/// Application().HandleException. FinalizeShell calls this; a program that uses nothing
/// of the shell calls it itself.
void RunFinalizers() noexcept;

}  // namespace oak
