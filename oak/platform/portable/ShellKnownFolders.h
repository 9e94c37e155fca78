// Known folders as places of the namespace.
#pragma once

#include "oak/platform/portable/PortableShell.h"

namespace oak {

struct TKnownFolder;

/// Makes the folder's directory if it is missing (KF_FLAG_CREATE).
inline constexpr DWORD KnownFolderCreate = 0x8000;
/// Does not look whether the directory exists (KF_FLAG_DONT_VERIFY).
inline constexpr DWORD KnownFolderUnverified = 0x4000;

/// Absolute list of a known folder; the empty one for the desktop.
HRESULT KnownFolderList(const TKnownFolder& folder, DWORD flags, TPidl& list);
/// The first list followed by the second.
TPidl ConcatLists(const TPidl& first, const TPidl& second);

}  // namespace oak
