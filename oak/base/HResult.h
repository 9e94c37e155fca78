// Checks on HRESULT values.
#pragma once

#include "oak/base/Text.h"

namespace oak {

/// Operations on HRESULT.
struct THResultHelper {
  /// Nothing on success. A failure raises EFolderTrekError with the code part if
  /// that lies in 2..12175, otherwise with the whole value.
  static void CheckForError(HRESULT value, TStringView message = {});
  /// Eight upper-case hexadecimal digits.
  static TString ToString(HRESULT value);
};

/// Nothing on success; a failure raises EOleSysError.
void OleCheck(HRESULT value);

}  // namespace oak
