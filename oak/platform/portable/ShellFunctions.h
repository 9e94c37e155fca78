// Behind the free functions of the shell.
#pragma once

#include "oak/platform/portable/PortableShell.h"

namespace oak {

struct TApi;

/// Absolute list of a special folder by its number (CSIDL_ with its flags).
HRESULT SpecialFolderList(int csidl, TPidl& list);
/// Windows path of a known folder; E_FAIL for one that has none by nature.
HRESULT KnownFolderDirectory(REFGUID id, DWORD flags, TString& path);

/// Runs a function that tells no reason when it fails; no exception leaves it.
template <class R, class TBody>
R ShellCall(R failure, TBody&& body) noexcept {
  try {
    return body();
  } catch (...) {
    return failure;
  }
}

// Parts of BindPortableShell.
void BindShellNames(TApi& api);
void BindShellItems(TApi& api);
void BindShellLists(TApi& api);
void BindShellInfo(TApi& api);
void BindShellImages(TApi& api);

}  // namespace oak
