// The shortcut class of the portable shell.
#pragma once

namespace oak {

/// Makes CLSID_ShellLink known to CoCreateInstance.
void RegisterShellLinkClass();

}  // namespace oak
