// Behaving like an older version of Windows.
#pragma once

#include "testkit/ScopedApi.h"

namespace oak::testkit {

/// Makes the platform tell another version of itself.
class TWindowsVersion {
 public:
  TWindowsVersion(DWORD major, DWORD minor, DWORD build);
  static TWindowsVersion Windows7() { return {6, 1, 7601}; }
  static TWindowsVersion Windows8() { return {6, 2, 9200}; }
  static TWindowsVersion Windows10() { return {10, 0, 17134}; }
  static TWindowsVersion Windows11() { return {10, 0, 22631}; }

 private:
  TScopedApi<decltype(TApi::RtlGetVersion)> fRtlGetVersion;
};

}  // namespace oak::testkit
