// GUIDs as text and as keys of containers. All functions are pure; any thread.
#pragma once

#include <cstddef>

#include "oak/base/Text.h"

namespace oak {

/// "{XXXXXXXX-XXXX-XXXX-XXXX-XXXXXXXXXXXX}", upper case.
TString GuidToString(const GUID& guid);
/// Reads the form that GuidToString writes, in any case, with or without its
/// braces. False leaves `guid` alone.
bool TryParseGuid(TStringView text, GUID& guid) noexcept;

/// Byte order of the fields: negative, 0 or positive.
int CompareGuids(const GUID& a, const GUID& b) noexcept;

/// For std::unordered_map<GUID, T, TGuidHash>.
struct TGuidHash {
  std::size_t operator()(const GUID& guid) const noexcept;
};
/// For std::map<GUID, T, TGuidLess>.
struct TGuidLess {
  bool operator()(const GUID& a, const GUID& b) const noexcept { return CompareGuids(a, b) < 0; }
};

/// For std::unordered_map<PROPERTYKEY, T, TPropertyKeyHash, TPropertyKeyEqual>.
struct TPropertyKeyHash {
  std::size_t operator()(const PROPERTYKEY& key) const noexcept;
};
struct TPropertyKeyEqual {
  bool operator()(const PROPERTYKEY& a, const PROPERTYKEY& b) const noexcept {
    return a.pid == b.pid && CompareGuids(a.fmtid, b.fmtid) == 0;
  }
};

}  // namespace oak
