// A folder's objects as elements of a storage.
#pragma once

#include "oak/platform/portable/ShellNode.h"

namespace oak {

/// Fills the published description of an element: name (task memory, unless
/// STATFLAG_NONAME), type, size and times.
HRESULT DescribeElement(const TFolderNode& node, PCUITEMID_CHILD child, DWORD flags, STATSTG& stat);

}  // namespace oak
