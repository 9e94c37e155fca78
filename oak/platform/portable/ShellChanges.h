// Events of the namespace: who wants to know of them, and the portable shell's own.
#pragma once

#include "oak/platform/portable/PortableShell.h"

namespace oak {

struct TApi;
class TFolderNode;

/// Tells an event (SHCNE_) of one object, or of two for renaming, to the windows that are
/// registered for it. Posts only, so any thread may call it, under a lock as well. Never throws.
void AnnounceChange(LONG event, PCIDLIST_ABSOLUTE first,
                    PCIDLIST_ABSOLUTE second = nullptr) noexcept;
/// By Windows paths of the file system, whether or not the objects exist (any more). `folder` makes
/// the event that of a folder: SHCNE_MKDIR for SHCNE_CREATE, and so on.
void AnnouncePath(LONG event, bool folder, TStringView first, TStringView second = {}) noexcept;
/// An object of a folder was renamed; a name that was given again is no change.
void AnnounceRename(const TFolderNode& folder, PCUITEMID_CHILD child,
                    PCUITEMID_CHILD renamed) noexcept;
/// Whether an object is a folder; false if that cannot be told.
bool IsFolderElement(const TFolderNode& folder, PCUITEMID_CHILD child);
/// The list of a path of the file system without a look at the disk; nil if none leads there.
TPidl ListOfPath(TStringView path, bool folder);

/// Windows that are registered, and notifications that they have not taken yet. For tests.
std::size_t ChangeRegistrations() noexcept;
std::size_t PendingChanges() noexcept;

void BindShellChanges(TApi& api);

}  // namespace oak
