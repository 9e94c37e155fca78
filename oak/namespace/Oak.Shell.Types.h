// The vocabulary that the whole library shares: enumerations, interfaces,
// commands, column identifiers, property values and search options.
#pragma once

#include "oak/namespace/Oak.Shell.ShellColumns.h"
#include "oak/namespace/Oak.Shell.Types.Columns.h"
#include "oak/namespace/Oak.Shell.Types.Commands.h"
#include "oak/namespace/Oak.Shell.Types.Enums.h"
#include "oak/namespace/Oak.Shell.Types.Interfaces.h"
#include "oak/namespace/Oak.Shell.Types.PropertyValue.h"
#include "oak/namespace/Oak.Shell.Types.SearchOptions.h"

namespace oak {

/// Operations on TOakShellFolder values. Any thread.
struct TOakShellFolderHelper {
  /// Path of the folder, or its display path if it has none.
  static TString ToPath(TOakShellFolder pFolder);
  /// The folder's name as its parent shows it, in the user's language.
  static TString ToString(TOakShellFolder pFolder);
  /// The name of the value itself, such as "SF_PERSONAL"; "" outside the range.
  static TStringView ToIdentifier(TOakShellFolder pFolder);
};

/// Operations on exceptions.
struct TOakExceptionHelper {
  /// Appends " Internal data: " and the object's own description to the message
  /// if the object has one; nil has none.
  static void AddMessageInfo(Exception& pException, IUnknown* pObject);
};

}  // namespace oak
