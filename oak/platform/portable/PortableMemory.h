// Memory blocks with handles, as data objects carry them, and the clipboard.
#pragma once

#include "oak/base/Ref.h"
#include "oak/base/Text.h"
#include "oak/platform/shell_api.h"

namespace oak {

/// A block of zeroed memory that GlobalLock and GlobalSize know; nil if there is
/// not enough memory. Freed by PortableGlobalFree, or with the STGMEDIUM that
/// holds it. Any thread.
HGLOBAL PortableGlobalAlloc(SIZE_T bytes) noexcept;
/// Frees a block; handles that are none are left alone.
void PortableGlobalFree(HGLOBAL block) noexcept;
/// A block with a copy of these bytes.
HGLOBAL PortableGlobalCopy(const void* bytes, SIZE_T count) noexcept;

/// A block in the form of CF_HDROP that names these files.
HGLOBAL PortableDropFiles(const TStringArray& paths);
/// The names in a block of that form. One that ends too early gives those that are whole.
TStringArray PortableDroppedFiles(const BYTE* bytes, std::size_t count);

/// The clipboard of this process: what OleGetClipboard gives. Nil empties it.
/// Any thread.
void SetPortableClipboard(Ref<IDataObject> data);
Ref<IDataObject> PortableClipboard();

/// A data object that holds a text (CF_UNICODETEXT) and takes data of other formats; nil if there
/// is not enough memory.
Ref<IDataObject> MakeTextData(TStringView text);

/// The number of a clipboard format, registered at its first use; 0 if there are too many.
UINT PortableClipboardFormat(TStringView name);
/// Name under which a clipboard format was registered; empty if it was not.
TString PortableClipboardFormatName(UINT format);

}  // namespace oak
