// Properties that people write on their files (title, comments, tags, ...), kept
// in extended attributes of the native file system.
#pragma once

#include <string>

#include "oak/base/Variant.h"

namespace oak {

/// Whether the property is kept so. Any thread.
bool IsStoredProperty(REFPROPERTYKEY key) noexcept;
/// An empty value if the file has none, or its file system keeps none.
HRESULT ReadStoredProperty(const std::string& native, REFPROPERTYKEY key, TPropVariant& value);
/// Empty and null remove the property.
HRESULT WriteStoredProperty(const std::string& native, REFPROPERTYKEY key, REFPROPVARIANT value);

}  // namespace oak
