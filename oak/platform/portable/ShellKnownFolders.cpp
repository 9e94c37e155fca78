#include "oak/platform/portable/ShellKnownFolders.h"

#include "oak/platform/portable/PortableKnownFolders.h"
#include "oak/platform/portable/ShellFunctions.h"
#include "oak/platform/portable/ShellParse.h"
#include "oak/platform/portable/ShellPidl.h"

namespace oak {

namespace {

constexpr HRESULT kFolderMissing = HRESULT_FROM_WIN32(2);  // ERROR_FILE_NOT_FOUND

HRESULT DirectoryList(const TKnownFolder& folder, DWORD flags, TPidl& list) {
  const TString path = KnownFolderPath(folder);
  if (path.empty()) return kFolderMissing;
  WIN32_FIND_DATAW data{};
  data.dwFileAttributes = 0x10;  // FILE_ATTRIBUTE_DIRECTORY
  TParseOptions options;
  if (flags & KnownFolderUnverified)
    options.FindData = &data;
  else if (!EnsureKnownFolder(folder, (flags & KnownFolderCreate) != 0))
    return kFolderMissing;
  return ParseAbsolute(path, options, list);
}

}  // namespace

TPidl ConcatLists(const TPidl& first, const TPidl& second) {
  const std::size_t a = PidlSize(first.Get()) - sizeof(USHORT), b = PidlSize(second.Get());
  BYTE* block = static_cast<BYTE*>(CoTaskMemAlloc(a + b));
  if (!block) throw std::bad_alloc();
  std::memcpy(block, first.Get(), a);
  std::memcpy(block + a, second.Get(), b);
  return TPidl::Adopt(reinterpret_cast<PItemIdList>(block));
}

HRESULT KnownFolderList(const TKnownFolder& folder, DWORD flags, TPidl& list) {
  if (folder.Id == FOLDERID_Desktop) {
    list = CopyElement(nullptr);
    return S_OK;
  }
  if (folder.Kind != TKnownFolderKind::Virtual) return DirectoryList(folder, flags, list);
  return folder.ParsingName && *folder.ParsingName ? ParseAbsolute(folder.ParsingName, {}, list)
                                                   : kFolderMissing;
}

HRESULT SpecialFolderList(int csidl, TPidl& list) {
  const int number = csidl & 0xFF;
  const TKnownFolder* folder = FindKnownFolderByCsidl(number);
  if (!folder) return E_INVALIDARG;
  const DWORD flags = static_cast<DWORD>(csidl) & (KnownFolderCreate | KnownFolderUnverified);
  // The desktop's own directory is a place of its own, unlike the desktop.
  if (number == CSIDL_DESKTOPDIRECTORY) return DirectoryList(*folder, flags, list);
  return KnownFolderList(*folder, flags, list);
}

HRESULT KnownFolderDirectory(REFGUID id, DWORD flags, TString& path) {
  const TKnownFolder* folder = FindKnownFolder(id);
  if (!folder) return kFolderMissing;
  path = KnownFolderPath(*folder);
  if (path.empty()) return folder->Kind == TKnownFolderKind::Virtual ? E_FAIL : kFolderMissing;
  if (flags & KnownFolderUnverified) return S_OK;
  return EnsureKnownFolder(*folder, (flags & KnownFolderCreate) != 0) ? S_OK : kFolderMissing;
}

}  // namespace oak
