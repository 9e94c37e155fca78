// An application around the library, made up by a test.
#pragma once

#include "oak/framework/Host.h"

namespace oak::testkit {

/// Stands in for the application: the members of Host() are empty at first and can be
/// set freely, and the hourglass cursor is counted. Restores the host in the end.
class TScopedHost {
 public:
  TScopedHost();
  ~TScopedHost();
  TScopedHost(const TScopedHost&) = delete;
  TScopedHost& operator=(const TScopedHost&) = delete;

  /// How often and how deep the hourglass cursor is on.
  int GetWaitCursorDepth() const { return fWaitCursorDepth; }
  int GetWaitCursorCount() const { return fWaitCursorCount; }

 private:
  THost fBefore;
  int fWaitCursorDepth = 0;
  int fWaitCursorCount = 0;
};

}  // namespace oak::testkit
