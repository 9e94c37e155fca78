#include "oak/platform/portable/LibrariesFolder.h"
#include "oak/platform/portable/LinkObject.h"
#include "oak/platform/portable/PortableBinding.h"

namespace oak {

void BindPortableLinks(TApi&) {
  RegisterShellLinkClass();
  RegisterShellLibraryClass();
}

}  // namespace oak
