// A desktop for one test process.
#pragma once

namespace oak::testkit {

/// Moves the calling thread to a desktop of this process alone, so that mouse, keys, focus and
/// foreground of tests that run at the same time don't meet. Before the thread's first window:
/// later it changes nothing, and neither on Windows, where input reaches only the desktop that the
/// user sees. More calls do nothing.
void EnterOwnDesktop();

}  // namespace oak::testkit
