// The libraries of the portable shell.
#pragma once

namespace oak {

/// Makes CLSID_ShellLibrary known to CoCreateInstance.
void RegisterShellLibraryClass();

}  // namespace oak
