// The property system of the portable shell: descriptions of properties and the
// texts of their values.
#pragma once

#include "oak/platform/portable/PropertyTable.h"
#include "oak/platform/shell_api_property.h"

namespace oak {

/// The value as the user reads it; empty for a value without text. Sizes, numbers
/// and dates follow the configured language; dates are shown in local time.
TString FormatProperty(const TPropertyInfo& info, REFPROPVARIANT value,
                       PROPDESC_FORMAT_FLAGS flags);

/// SHCOLSTATE_ bits and alignment of the property's column in a folder.
SHCOLSTATEF ColumnStateOf(const TPropertyInfo& info) noexcept;
bool IsRightAligned(const TPropertyInfo& info) noexcept;

/// Descriptions are counted objects that hold no state. TYPE_E_ELEMENTNOTFOUND
/// for an unknown property.
HRESULT MakePropertyDescription(const TPropertyInfo* info, REFIID iid, void** description);
/// The one property system.
HRESULT GetPortablePropertySystem(REFIID iid, void** system);

}  // namespace oak
