// The names in an open directory, read at once.
#pragma once

#include <string>
#include <vector>

namespace oak {

struct TFileEntry {
  std::string Name;
  bool IsFolder;  ///< a real one; not a symbolic link
};

/// All entries of an open directory but "." and "..", by way of a descriptor of its own: a
/// directory that changes while it is read may skip some. 0 or a native error number.
int ListEntries(int directory, std::vector<TFileEntry>& entries);

}  // namespace oak
