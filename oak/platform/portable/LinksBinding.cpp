#include "oak/platform/portable/LibrariesFolder.h"
#include "oak/platform/portable/LinkObject.h"
#include "oak/platform/portable/PortableBinding.h"
#include "oak/platform/portable/ShellChanges.h"
#include "oak/platform/portable/ShellData.h"
#include "oak/platform/portable/ShellMenu.h"

namespace oak {

void BindPortableLinks(TApi& api) {
  RegisterShellLinkClass();
  RegisterShellLibraryClass();
  BindShellChanges(api);
  BindShellData(api);
  BindShellMenus(api);
  BindShellOpen(api);
  BindShellProperties(api);
}

}  // namespace oak
