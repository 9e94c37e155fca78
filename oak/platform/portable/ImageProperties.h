// Properties of picture files.
#pragma once

#include "oak/base/Variant.h"
#include "oak/platform/portable/FileProperties.h"

namespace oak {

/// Whether the property is one that the header of a picture tells. Any thread.
bool IsImageProperty(REFPROPERTYKEY key) noexcept;
/// Whether the object can be a picture, by its extension.
bool IsPictureName(const TFileObject& object);

/// The value of such a property; empty for what is no picture and for what its header
/// does not tell. Opens the file, but only one that IsPictureName, and never a pipe or a
/// device. A file that cannot be looked up or read is a failure. Any thread.
HRESULT GetImageProperty(const TFileObject& object, REFPROPERTYKEY key, TPropVariant& value);

}  // namespace oak
