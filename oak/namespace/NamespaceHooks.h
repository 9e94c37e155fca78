// What the namespace units take from units that stand above them.
//
// A unit above fills its member when it is loaded. An empty member means that
// the unit is not part of the program: the operation then says so, it never
// pretends to have done something. To be set before other threads run.
#pragma once

#include <functional>

#include "oak/namespace/Oak.Shell.Types.Interfaces.h"
#include "oak/platform/shell_api.h"

namespace oak {

/// What is to be shared.
struct TShareRequest {
  TString Title;
  TString DataType;       ///< "File" for one object, "Files" for a selection.
  TStringArray Files;     ///< Paths.
  Ref<IDataObject> Data;  ///< Of a selection; nil for one object.
};

struct TNamespaceHooks {
  /// Hands objects to the share dialog of the system; true if that took them. Unset: the
  /// verb "Windows.ModernShare" raises EInvalidOperation. Main thread.
  std::function<bool(const TShareRequest& request)> Share;
  /// Replaces the source of thumbnails. Unset: EInvalidOperation.
  std::function<void(const Ref<IUnknown>& provider)> SetThumbnailProvider;
};

TNamespaceHooks& NamespaceHooks();

/// Shares through the hook. Raises EInvalidOperation in a program without one.
bool ShareObjects(const TShareRequest& request);

}  // namespace oak
