#include "testkit/OldWindows.h"

namespace oak::testkit {

TWindowsVersion::TWindowsVersion(DWORD major, DWORD minor, DWORD build)
    : fRtlGetVersion(Api().RtlGetVersion, [=](auto* version) {
        version->dwMajorVersion = major;
        version->dwMinorVersion = minor;
        version->dwBuildNumber = build;
        return 0;
      }) {}

}  // namespace oak::testkit
