// Shared by the sources of Variant.h: values by kind instead of by type.
#pragma once

#include <cstdint>
#include <variant>

#include "oak/base/Variant.h"

namespace oak::detail {

/// A text in task memory; throws std::bad_alloc.
LPWSTR NewTaskText(TStringView text);
/// Throws std::bad_alloc.
BSTR NewBstr(TStringView text);

struct TNothing {};
/// A date or file time: 100-nanosecond steps, so that nothing is lost between the two.
struct TMoment {
  FILETIME time;
};
/// What a value says, whatever its type. TNothing: empty, null, or no simple value.
using TContent =
    std::variant<TNothing, std::int64_t, std::uint64_t, double, bool, TMoment, TString, GUID>;

/// True for a type that has no value.
inline bool IsEmptyType(VARTYPE type) noexcept { return type == VT_EMPTY || type == VT_NULL; }
bool IsWholeNumberType(VARTYPE type) noexcept;
/// Scalars whose bytes lie in the structure itself and mean the same in both.
bool IsPlainType(VARTYPE type) noexcept;

TContent ReadContent(const PROPVARIANT& value);
TContent ReadContent(const VARIANT& value);

}  // namespace oak::detail
