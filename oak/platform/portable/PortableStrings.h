// The string resources and module handles of the portable system.
#pragma once

#include <optional>

#include "oak/base/Text.h"

namespace oak {

/// Text of a library's string resource; nothing if the library or the number is
/// unknown. The library is named ignoring case, with or without directory and
/// ".dll". Any thread.
std::optional<TString> PortableString(TStringView library, UINT id);
/// Adds or replaces a string resource, e.g. one in another language. Any thread.
void SetPortableString(TStringView library, UINT id, TStringView text);
/// A text in the form "@shell32.dll,-4161" of indirect strings; the text itself
/// if it is none, nothing if the resource is missing.
std::optional<TString> PortableIndirectString(TStringView text);

/// Handle of one of the system's libraries; nil if it has no such library. The
/// empty name gives the program's own. Handles live for ever.
HMODULE PortableModule(TStringView name);
/// File name of a module ("shell32.dll"); empty for handles that are none.
TString PortableModuleName(HMODULE module);

}  // namespace oak
