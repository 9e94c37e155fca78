// What the namespace units take from units that stand above them.
//
// A unit above fills its member when it is loaded. An empty member means that
// the unit is not part of the program: the operation then says so, it never
// pretends to have done something. To be set before other threads run.
#pragma once

#include <functional>

#include "oak/namespace/Oak.Shell.Types.Interfaces.h"

namespace oak {

struct TNamespaceHooks {
  /// Carries out a command on one item; true if it was carried out. Unset: the
  /// items' InvokeCommand raises EInvalidOperation.
  std::function<bool(const Ref<IItemIdList>& item, const TShellCommand& command)> InvokeCommand;
  /// Replaces the source of thumbnails. Unset: EInvalidOperation.
  std::function<void(const Ref<IUnknown>& provider)> SetThumbnailProvider;
};

TNamespaceHooks& NamespaceHooks();

}  // namespace oak
