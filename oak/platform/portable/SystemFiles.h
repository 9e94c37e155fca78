// What the file functions of the portable system share.
#pragma once

#include <optional>
#include <string>

#include "oak/platform/portable/PortableFiles.h"
#include "oak/platform/portable/SystemBinding.h"

namespace oak {

/// The native path of a caller's path; on failure the last error is set.
std::optional<std::string> NativeForCall(LPCWSTR path);

/// Makes "not found" exact: whether the object, its directory or its drive is
/// missing. Other codes stay.
DWORD ExactLookupError(const std::string& native, DWORD code);

/// Looks a caller's path up; on failure the last error is set. A path that ends
/// in "\" has to lead to a directory.
std::optional<TFileInfo> InfoForCall(LPCWSTR path, std::string& native);

/// Sets the last error from a native error number and gives FALSE.
BOOL FailNative(const std::string& native, int error);

/// Information and name as the find functions report them.
void FillFindData(const TFileInfo& info, TStringView name, WIN32_FIND_DATAW& data) noexcept;

/// True if a name matches a pattern of the find functions: "*" any text, "?" one
/// character, or none before a dot or the end; "*.*" any name; a pattern that
/// ends in "." names without a dot.
bool MatchesFindPattern(TStringView name, TStringView pattern);

}  // namespace oak
