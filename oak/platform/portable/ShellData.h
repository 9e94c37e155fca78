// Objects of the namespace as data: on the clipboard and in drags.
#pragma once

#include <vector>

#include "oak/base/Text.h"
#include "oak/platform/portable/ShellNode.h"

namespace oak {

struct TApi;

/// Formats that the shell exchanges beside CF_HDROP; the names are the published ones.
enum class TShellFormat : std::uint8_t {
  IdList,           ///< "Shell IDList Array"
  FileName,         ///< "FileNameW": path of the first object
  FileDescriptor,   ///< "FileGroupDescriptorW"
  FileContents,     ///< "FileContents", a stream for each descriptor
  PreferredEffect,  ///< "Preferred DropEffect": what the source wants, DROPEFFECT_
  PerformedEffect,  ///< "Performed DropEffect": with DROPEFFECT_MOVE the source has to delete
  LogicalEffect,    ///< "Logical Performed DropEffect": what was done
  PasteSucceeded    ///< "Paste Succeeded": told to the source when all is done
};
CLIPFORMAT FormatOf(TShellFormat format);

/// A data object for objects of a folder, given by lists relative to it, of one or more levels;
/// with the desktop's list they are absolute. Formats that it lacks are asked of `inner`, which may
/// be nil. It takes data of any format by SetData. Any thread.
Ref<IDataObject> MakeDataObject(PCIDLIST_ABSOLUTE folder,
                                const std::vector<PCUIDLIST_RELATIVE>& children,
                                IDataObject* inner = nullptr);

/// A copy of a block of memory that the data holds in the format; false if it has none.
bool ReadData(IDataObject& data, CLIPFORMAT format, std::vector<BYTE>& bytes);
/// Gives data a block in the format.
HRESULT WriteData(IDataObject& data, CLIPFORMAT format, const void* bytes, std::size_t count);
/// A DROPEFFECT_ value; `otherwise` if there is none.
DWORD ReadEffect(IDataObject& data, TShellFormat format, DWORD otherwise);
HRESULT WriteEffect(IDataObject& data, TShellFormat format, DWORD effect);
bool HasFormat(IDataObject& data, CLIPFORMAT format);
/// Windows paths of its files (CF_HDROP).
TStringArray PathsOf(IDataObject& data);
/// Absolute lists of its objects: of "Shell IDList Array", else of the files that exist. Any bytes
/// are answered.
std::vector<TPidl> ListsOf(IDataObject& data);

/// Opens the contents of a file that the data describes; see FileGroupDescriptorW.
HRESULT OpenFileContents(IDataObject& data, LONG index, Ref<IStream>& stream);

void BindShellData(TApi& api);

}  // namespace oak
