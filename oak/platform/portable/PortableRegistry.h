// The registry of the portable system: a tree in memory.
#pragma once

#include <optional>
#include <vector>

#include "oak/base/Text.h"

namespace oak {

/// Value types of the registry, as published.
inline constexpr DWORD PortableRegText = 1;
inline constexpr DWORD PortableRegExpandText = 2;
inline constexpr DWORD PortableRegBinary = 3;
inline constexpr DWORD PortableRegNumber = 4;

// Roots are the published HKEY_* handles, keys are named by "\"-separated
// paths, ignoring case; the value name "" is the default value. Any thread.
void SetRegistryText(HKEY root, TStringView key, TStringView name, TStringView text,
                     DWORD type = PortableRegText);
void SetRegistryNumber(HKEY root, TStringView key, TStringView name, DWORD value);
void SetRegistryBinary(HKEY root, TStringView key, TStringView name,
                       const std::vector<BYTE>& value);
std::optional<TString> GetRegistryText(HKEY root, TStringView key, TStringView name);
std::optional<DWORD> GetRegistryNumber(HKEY root, TStringView key, TStringView name);
/// Removes a key with everything below it. False if there is none.
bool DeleteRegistryKey(HKEY root, TStringView key);
/// Back to the content at the program's start.
void ResetRegistry();

}  // namespace oak
