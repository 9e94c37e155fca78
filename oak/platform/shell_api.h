// The Windows shell's vocabulary: interfaces, structures, constants and identifiers.
//
// On Windows these are the system's own declarations, with what some SDKs lack added. Elsewhere
// they are declared here with the published names, order of methods and layouts, so that the
// library's COM interfaces are real COM interfaces on every system. Method names, parameters,
// ownership and results are those of the platform's documentation.
//
// A header that needs only a part includes that part: shell_api_types.h (structures),
// shell_api_folder.h, shell_api_item.h, shell_api_property.h, shell_api_search.h, shell_api_ole.h.
#pragma once

#include "oak/platform/shell_api_constants.h"
#include "oak/platform/shell_api_folder.h"
#include "oak/platform/shell_api_folderids.h"
#include "oak/platform/shell_api_guids.h"
#include "oak/platform/shell_api_ids.h"
#include "oak/platform/shell_api_item.h"
#include "oak/platform/shell_api_keys.h"
#include "oak/platform/shell_api_ole.h"
#include "oak/platform/shell_api_property.h"
#include "oak/platform/shell_api_search.h"
#include "oak/platform/shell_api_system.h"
#include "oak/platform/shell_api_types.h"
#include "oak/platform/shell_api_view.h"
