// Bind contexts of the portable system.
#pragma once

#include "oak/base/Ref.h"
#include "oak/platform/shell_api.h"

namespace oak {

/// A new bind context with the published default options. Throws std::bad_alloc.
Ref<IBindCtx> MakePortableBindContext();

}  // namespace oak
