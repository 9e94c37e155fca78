// A folder in memory, as a user of the mount interface would write it.
#pragma once

#include <map>
#include <memory>
#include <mutex>

#include "oak/platform/portable/PortableShell.h"

namespace oak {

/// One object of the tree. A folder if it has children, even none.
struct TMemoryObject {
  TString Name;
  DWORD Attributes = 0;
  std::uint64_t Size = 0;
  TString Comment;
  std::shared_ptr<std::vector<TMemoryObject>> Children;
};

/// All sources of one tree share its lock.
struct TMemoryTree {
  std::mutex Lock;
  HRESULT Failure = S_OK;   ///< what listing answers from the second object on
  int Listed = 0;           ///< objects that cursors have delivered
  std::vector<GUID> Asked;  ///< identifiers of handlers that were asked for
};

TMemoryObject MemoryFile(TStringView name, std::uint64_t size = 0, DWORD attributes = 0);
TMemoryObject MemoryFolder(TStringView name, std::vector<TMemoryObject> children = {},
                           DWORD attributes = 0);
Ref<IFolderSource> MakeMemoryFolder(std::shared_ptr<TMemoryTree> tree, const TMemoryObject& folder);

}  // namespace oak
