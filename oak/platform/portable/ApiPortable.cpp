#include "oak/platform/Api.h"
#include "oak/platform/portable/PortableBinding.h"

namespace oak::detail {
namespace {
thread_local DWORD tLastError = 0;
}

void SetLastErrorDirect(DWORD code) noexcept { tLastError = code; }
DWORD GetLastErrorDirect() noexcept { return tLastError; }

void BindPlatform(TApi& api) {
  BindPortableSystem(api);
  BindPortableShell(api);
  BindPortableProperties(api);
  BindPortableLinks(api);
}

}  // namespace oak::detail
