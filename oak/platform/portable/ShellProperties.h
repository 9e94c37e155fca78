// Properties of the objects of a folder.
#pragma once

#include "oak/base/Variant.h"
#include "oak/platform/portable/ShellNode.h"

namespace oak {

/// What a property that an object does not have is answered with.
inline constexpr HRESULT PropertyNotFound = HRESULT_FROM_WIN32(1168);  // ERROR_NOT_FOUND

/// A time of a child; zero if it has none.
FILETIME TimeProperty(const TFolderNode& node, PCUITEMID_CHILD child, REFPROPERTYKEY key);

/// A store over one child. With no keys it holds all that the object has. Values
/// are read when they are asked for and written by Commit, all or up to the first
/// failure. One thread at a time.
HRESULT MakePropertyStore(const Ref<TFolderNode>& node, PCUITEMID_CHILD child,
                          std::span<const PROPERTYKEY> keys, bool writable, REFIID iid,
                          void** store);

}  // namespace oak
