// Values of properties: as text, and between the two kinds of variant.
#pragma once

#include "oak/base/Text.h"

namespace oak {

class TShellColumnId;

/// The key to read in place of another that has no plain value; nearly always
/// the key itself.
TShellColumnId SubstituteMetaData(const TShellColumnId& pColumn) noexcept;
/// The value as the user reads it, in the form that belongs to the property;
/// empty without a value.
TString PropVariantAsDisplayString(const PROPVARIANT& pValue, const TShellColumnId& pColumn);
/// The same for the other kind of variant.
TString VariantToStringViaPropertySystem(const VARIANT& pValue, const TShellColumnId& pColumn);

// The caller owns the results and clears them with VariantClear and
// PropVariantClear. On failure they are empty.
[[nodiscard]] HRESULT PropVariantToVariant(const PROPVARIANT& pValue, VARIANT& pResult) noexcept;
[[nodiscard]] HRESULT VariantToPropVariant(const VARIANT& pValue, PROPVARIANT& pResult) noexcept;

}  // namespace oak
