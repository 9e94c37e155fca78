// Properties of the objects of the file system.
#pragma once

#include <string>
#include <vector>

#include "oak/base/Text.h"

namespace oak {

/// One file-system object whose properties are asked or set. Its name may differ
/// from that of the native file (an object in the recycle bin).
struct TFileObject {
  TString Name;        ///< whole file name, in Windows form
  std::string Native;  ///< native path
  bool IsFolder = false;
};

/// The value of a property. HRESULT_FROM_WIN32(ERROR_NOT_FOUND) if the file system
/// does not know it, S_OK with VT_EMPTY if it does but the object has no value.
/// Any thread. A symbolic link answers for what it leads to.
HRESULT GetFileProperty(const TFileObject& object, REFPROPERTYKEY key, PROPVARIANT* value);
/// Stores a property: dates, read-only, comments and the like (kept in extended
/// attributes "user.oak.*"). HRESULT_FROM_WIN32 of ERROR_ACCESS_DENIED for a
/// property that cannot be set, of ERROR_NOT_SUPPORTED if the file system keeps no
/// extended attributes, DISP_E_TYPEMISMATCH for a value of a wrong kind.
HRESULT SetFileProperty(const TFileObject& object, REFPROPERTYKEY key, REFPROPVARIANT value);
/// The keys that GetFileProperty answers for an object; those of pictures only if its
/// name is one of a picture.
std::vector<PROPERTYKEY> FilePropertyKeys(const TFileObject& object);

/// Name of the kind of an object, by its extension: "TXT File", "File folder".
TString FileTypeName(TStringView name, bool isFolder);

}  // namespace oak
