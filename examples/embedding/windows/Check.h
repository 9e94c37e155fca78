// The program tries itself out: what it shows is compared with what it was told.
#pragma once

#include "examples/embedding/windows/HostWindow.h"

/// Works the window like a user, ends its controls and finally the window. Runs messages by
/// `runMessages`, the program's own loop. Prints what went wrong; true if nothing did.
bool CheckHost(THostWindow& host, const oak::TString& folder, void (*runMessages)());
