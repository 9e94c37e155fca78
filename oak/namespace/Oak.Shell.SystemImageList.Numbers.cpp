// Numbers of icons and names of file types, and what is remembered of them.
#include <atomic>
#include <unordered_map>

#include "oak/framework/Sync.h"
#include "oak/namespace/ErrorMode.h"
#include "oak/namespace/FolderTrek.Paths.h"
#include "oak/namespace/Oak.Shell.SystemImageList.h"
#include "oak/namespace/OakItemIdList.h"
#include "oak/namespace/Shell_Win32.h"

namespace oak {
namespace {

struct TTextHash {
  using is_transparent = void;
  std::size_t operator()(TStringView pText) const noexcept {
    return std::hash<TStringView>{}(pText);
  }
};

/// What was asked once, by text. The lock is held while the system is asked, so that no two threads
/// ask for the same; its owner may come again from within the call, if the shell runs messages.
template <class T>
class TTextCache {
 public:
  /// `pAsk` gives false for a failure, which is not remembered.
  template <class TAsk>
  T Get(TStringView pKey, const T& pFailure, const TAsk& pAsk) {
    const TLock lock(fLock);
    if (const auto found = fValues.find(pKey); found != fValues.end()) return found->second;
    T value = pFailure;
    if (pAsk(value)) fValues.emplace(TString(pKey), value);
    return value;
  }
  void Clear() {
    const TLock lock(fLock);
    fValues.clear();
  }

 private:
  TCriticalSection fLock;
  std::unordered_map<TString, T, TTextHash, std::equal_to<>> fValues;
};

/// Icons by extension, for each size with and without open state. Live as long as the process.
TTextCache<int>& IconsOf(TOakImageListSize pSize, bool pOpenState) {
  static auto* caches = new TTextCache<int>[(si_FreeScaled + 1) * 2];
  return caches[pSize * 2 + (pOpenState ? 1 : 0)];
}

TTextCache<TString>& FileTypes() {
  static auto* types = new TTextCache<TString>;
  return *types;
}

/// Files whose icons the program has chosen for types, by upper-case extension with its dot.
struct TIconFiles {
  TCriticalSection Lock;
  std::unordered_map<TString, TString> Files;
};

TIconFiles& IconFiles() {
  static auto* files = new TIconFiles;
  return *files;
}

TString Dotted(TStringView pExtension) {
  TString dotted(pExtension.empty() || pExtension.front() == u'.' ? u"" : u".");
  return dotted += pExtension;
}

TString IconFileOf(TStringView pExtension) {
  TIconFiles& known = IconFiles();
  const TLock lock(known.Lock);
  const auto found = known.Files.find(UpperCase(pExtension));
  return found == known.Files.end() ? TString() : found->second;
}

constexpr int NotAsked = -1;
std::atomic<int> gFolderIcons[2]{NotAsked, NotAsked};
std::atomic<int> gUnknownIcon{NotAsked};

UINT IconFlags(TOakImageListSize pSize, bool pOpenState) {
  return SHGFI_SYSICONINDEX | (pSize == si_Large ? 0u : SHGFI_SMALLICON) |
         (pOpenState ? SHGFI_OPENICON : 0u);
}

int AskIcon(LPCWSTR pObject, DWORD pAttributes, UINT pFlags) {
  SHFILEINFOW info{};
  return Api().SHGetFileInfoW(pObject, pAttributes, &info, sizeof(info), pFlags) ? info.iIcon : -1;
}

/// The icon that the program chose for a type, else that of the system.
int AskIconOfType(TStringView pExtension, UINT pFlags) {
  if (const TString file = IconFileOf(pExtension); !file.empty()) {
    const TErrorMode quiet;
    const int icon = AskIcon(W(file), 0, pFlags);
    if (icon >= 0) return icon;
  }
  TString name = u"test";
  name += pExtension;
  return AskIcon(W(name), FILE_ATTRIBUTE_NORMAL, pFlags | SHGFI_USEFILEATTRIBUTES);
}

/// A folder that every system has: the temporary one, else that of Windows.
TString AnyFolder() {
  TString temp = OakGetTempPath();
  const DWORD attributes =
      temp.empty() ? INVALID_FILE_ATTRIBUTES : Api().GetFileAttributesW(W(temp));
  const bool exists =
      attributes != INVALID_FILE_ATTRIBUTES && (attributes & FILE_ATTRIBUTE_DIRECTORY) != 0;
  return exists ? temp : OakGetWindowsPath();
}

}  // namespace

int TOakSystemImageList::GetIndexFromItemIdList(const Ref<IItemIdList>& pItemIdList,
                                                TOakImageListSize pSize, bool pOpenState) {
  if (!pItemIdList || pItemIdList->IsInvalid()) return -1;
  const TErrorMode quiet;
  return AskIcon(reinterpret_cast<LPCWSTR>(pItemIdList->WindowsPointer()), 0,
                 IconFlags(pSize, pOpenState) | SHGFI_PIDL);
}

int TOakSystemImageList::GetIndexFromPath(TStringView pPath, TOakImageListSize pSize,
                                          bool pOpenState) {
  if (pPath.empty()) return -1;
  const TString path(pPath);
  const TErrorMode quiet;
  return AskIcon(W(path), 0, IconFlags(pSize, pOpenState));
}

int TOakSystemImageList::GetIndexFromPathByExt(TStringView pPath, TOakImageListSize pSize,
                                               bool pOpenState) {
  if (pPath.empty()) return -1;
  if (pPath.back() == PathDelim) return GetFolderIconNumber(pOpenState);
  return GetIndexFromExtension(ExtractFileExt(pPath), pSize, pOpenState);
}

int TOakSystemImageList::GetIndexFromExtension(TStringView pExtension, TOakImageListSize pSize,
                                               bool pOpenState) {
  TString dotted;  // Most callers bring the dot, and the answer.
  if (!pExtension.empty() && pExtension.front() != u'.') pExtension = dotted = Dotted(pExtension);
  return IconsOf(pSize, pOpenState).Get(pExtension, -1, [&](int& pIndex) {
    pIndex = AskIconOfType(pExtension, IconFlags(pSize, pOpenState));
    return pIndex >= 0;
  });
}

void TOakSystemImageList::SetIconFile(TStringView pExtension, TStringView pIconFile) {
  TIconFiles& known = IconFiles();
  {
    const TLock lock(known.Lock);
    const TString key = UpperCase(Dotted(pExtension));
    if (pIconFile.empty())
      known.Files.erase(key);
    else
      known.Files[key] = pIconFile;
  }
  ForgetIcons();
}

TString TOakSystemImageList::GetFileType(TStringView pExtension) {
  if (!pExtension.empty() && pExtension.front() == u'.') pExtension.remove_prefix(1);
  TString name = u"test";
  if (!pExtension.empty()) {
    name += u'.';
    name += pExtension;
  }
  return FileTypes().Get(UpperCase(name), {}, [&](TString& pType) {
    SHFILEINFOW info{};
    if (!Api().SHGetFileInfoW(W(name), FILE_ATTRIBUTE_NORMAL, &info, sizeof(info),
                              SHGFI_TYPENAME | SHGFI_USEFILEATTRIBUTES))
      return false;
    pType = Trim(FromW(info.szTypeName));
    return true;
  });
}

int TOakSystemImageList::GetFolderIconNumber(bool pOpenState) {
  std::atomic<int>& known = gFolderIcons[pOpenState ? 1 : 0];
  int index = known.load(std::memory_order_relaxed);
  if (index != NotAsked) return index;
  index = GetIndexFromPath(AnyFolder(), si_Small, pOpenState);
  known.store(index, std::memory_order_relaxed);
  return index;
}

int TOakSystemImageList::GetSpecialFolderIcon(TOakShellFolder pFolder, TOakImageListSize pSize,
                                              bool pOpenState) {
  return GetIndexFromItemIdList(TOakItemIdList::CreateForSpecialFolder(pFolder, true), pSize,
                                pOpenState);
}

int TOakSystemImageList::GetUnknownFileIconNumber() {
  int index = gUnknownIcon.load(std::memory_order_relaxed);
  if (index != NotAsked) return index;
  index = GetIndexFromExtension(u"lxvbf_unknown_extension", si_Small, false);
  gUnknownIcon.store(index, std::memory_order_relaxed);
  return index;
}

void TOakSystemImageList::ForgetIcons() {
  for (int size = 0; size <= si_FreeScaled; ++size)
    for (const bool isOpen : {false, true})
      IconsOf(static_cast<TOakImageListSize>(size), isOpen).Clear();
  FileTypes().Clear();
  for (std::atomic<int>& icon : gFolderIcons) icon.store(NotAsked, std::memory_order_relaxed);
  gUnknownIcon.store(NotAsked, std::memory_order_relaxed);
}

}  // namespace oak
