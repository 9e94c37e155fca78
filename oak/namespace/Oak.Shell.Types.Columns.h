// TShellColumnId: which property of a shell object is meant.
#pragma once

#include "oak/base/Text.h"

namespace oak {

/// A property key. Same layout as PROPERTYKEY; a value, any thread.
class TShellColumnId {
 public:
  constexpr TShellColumnId() noexcept = default;
  constexpr TShellColumnId(const GUID& pFormatId, DWORD pPid) noexcept
      : FormatId(pFormatId), Pid(pPid) {}
  constexpr TShellColumnId(const PROPERTYKEY& pKey) noexcept
      : FormatId(pKey.fmtid), Pid(pKey.pid) {}
  constexpr operator PROPERTYKEY() const noexcept { return PROPERTYKEY{FormatId, Pid}; }

  /// Whether the format identifier is not the null GUID.
  bool IsValid() const noexcept;
  /// Canonical name such as "System.Size"; empty if the system has none.
  TString ToString() const;
  /// From a canonical name or, failing that, a label in the user's language and
  /// any case. Unknown text gives TShellColumns::Invalid.
  static TShellColumnId FromString(TStringView pText);
  /// Label in the user's language, or empty.
  TString DisplayName() const;
  /// PROPDESC_DISPLAYTYPE of the property, or -1 if it is not known.
  int GetDisplayType() const;

  friend bool operator==(const TShellColumnId& a, const TShellColumnId& b) noexcept {
    return a.Pid == b.Pid && IsEqualGUID(a.FormatId, b.FormatId);
  }

  GUID FormatId{};
  DWORD Pid = 0;
};
static_assert(sizeof(TShellColumnId) == sizeof(PROPERTYKEY) &&
              alignof(TShellColumnId) == alignof(PROPERTYKEY));

/// The column as the pointer that the platform's functions take.
inline const PROPERTYKEY* AsPropertyKey(const TShellColumnId* pColumn) noexcept {
  return reinterpret_cast<const PROPERTYKEY*>(pColumn);
}

}  // namespace oak
