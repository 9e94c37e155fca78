// A native file as a stream of the platform.
#pragma once

#include <string>

#include "oak/platform/shell_api_ole.h"

namespace oak {

/// Opens a regular file. `mode` is STGM_: access, sharing and STGM_CREATE (an
/// existing file becomes empty, a missing one is made). Sharing holds among all
/// streams of this kind, those of other processes included. Failures are STG_E_
/// codes where there is one, else Win32 codes. `name` is what Stat tells.
/// The stream is used by one thread at a time; clones have their own position.
HRESULT OpenFileStream(const std::string& native, LPCWSTR name, DWORD mode, IStream** stream);

}  // namespace oak
