#include "oak/platform/portable/LinkObject.h"
#include "oak/platform/portable/PortableBinding.h"

namespace oak {

void BindPortableLinks(TApi&) { RegisterShellLinkClass(); }

}  // namespace oak
