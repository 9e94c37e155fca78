// Putting files into the user's trash and taking them out again.
#pragma once

#include <string>

#include "oak/platform/portable/FileTransfer.h"

namespace oak {

// Results are native error numbers, 0 for success.

/// Moves an object into the trash of the configuration, which is made if it is missing. `inTrash`
/// is the path that it has there. EINVAL for the trash itself and for what holds it.
int MoveToTrash(const std::string& native, const TTransferGoesOn& goesOn, std::string& inTrash);

/// Moves an object of the trash, given by its path there, back to where it was deleted, under a
/// numbered name if the old one is taken; folders that are gone are made. `restored` is its path.
int RestoreFromTrash(const std::string& inTrash, const TTransferGoesOn& goesOn,
                     std::string& restored);

/// Removes an object of the trash for good.
int RemoveFromTrash(const std::string& inTrash, const TTransferGoesOn& goesOn);

/// Drops what is written down of an object that was taken out of the trash by other means.
void ForgetTrashEntry(const std::string& inTrash);

/// The directory whose entries are the deleted objects.
std::string TrashFilesDirectory();
/// Whether a path is that of an object in the trash: an entry of that directory.
bool IsTrashEntry(const std::string& native);

}  // namespace oak
