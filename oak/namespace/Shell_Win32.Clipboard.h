// Names of files out of the clipboard and out of drag data.
#pragma once

#include "oak/base/Text.h"
#include "oak/platform/shell_api_constants.h"
#include "oak/platform/shell_api_types.h"

namespace oak {

/// Dropped or copied files, as a global block.
inline constexpr FORMATETC HDropFormatEtc{CF_HDROP, nullptr, DVASPECT_CONTENT, -1, TYMED_HGLOBAL};

/// Formats of file descriptors, registered at first use; 0 if that fails.
UINT CF_FILEDESCRIPTORA();
UINT CF_FILEDESCRIPTORW();

/// Whether the clipboard holds files or descriptors of files.
bool FilesInClipboard();
/// Paths in a global block of format CF_HDROP. The block stays the caller's.
/// Empty for anything else.
TStringArray GetFilenamesFromHandle(HANDLE pHandle);
/// Names in a global block of file descriptors. The count and the names that the
/// block claims are believed only as far as the block reaches.
TStringArray GetFilenamesFromFileDescriptorA(HGLOBAL pHandle);
TStringArray GetFilenamesFromFileDescriptorW(HGLOBAL pHandle);

}  // namespace oak
