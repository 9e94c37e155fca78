// A list of clipboard formats as the interface wants it.
#pragma once

#include <vector>

#include "oak/base/Ref.h"
#include "oak/platform/shell_api_ids.h"

namespace oak {

Ref<IEnumFORMATETC> MakeEnumFormats(std::vector<FORMATETC> formats);

}  // namespace oak
