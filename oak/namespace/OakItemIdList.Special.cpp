// Special folders: how they are made and how an item is recognised as one.
#include <array>
#include <atomic>
#include <mutex>
#include <unordered_map>

#include "oak/namespace/FolderTrek.Paths.h"
#include "oak/namespace/OakItemIdList.Special.h"
#include "oak/namespace/OakItemIdList.State.h"
#include "oak/namespace/Shell_Win32.h"

namespace oak {
namespace {

constexpr int kNoCsidl = -1;
constexpr TStringView kQuickAccess = u"shell:::{679f85cb-0220-4080-b29b-5540cc05aab6}";

struct TSpecialFolder {
  int csidl;
  const GUID* knownFolder;
};

// In the order of TOakShellFolder.
const TSpecialFolder SpecialFolderTable[] = {
    {CSIDL_DRIVES, &FOLDERID_ComputerFolder},  // SF_FILESYSTEMFOLDER
    {CSIDL_BITBUCKET, &FOLDERID_RecycleBinFolder},
    {CSIDL_CONTROLS, &FOLDERID_ControlPanelFolder},
    {CSIDL_DESKTOP, &FOLDERID_Desktop},
    {CSIDL_DESKTOPDIRECTORY, &FOLDERID_Desktop},
    {CSIDL_DRIVES, &FOLDERID_ComputerFolder},
    {CSIDL_FONTS, &FOLDERID_Fonts},
    {CSIDL_NETHOOD, &FOLDERID_NetHood},
    {CSIDL_NETWORK, &FOLDERID_NetworkFolder},
    {CSIDL_PERSONAL, &FOLDERID_Documents},
    {CSIDL_PRINTERS, &FOLDERID_PrintersFolder},
    {CSIDL_PROGRAMS, &FOLDERID_Programs},
    {CSIDL_RECENT, &FOLDERID_Recent},
    {CSIDL_SENDTO, &FOLDERID_SendTo},
    {CSIDL_STARTMENU, &FOLDERID_StartMenu},
    {CSIDL_STARTUP, &FOLDERID_Startup},
    {CSIDL_TEMPLATES, &FOLDERID_Templates},
    {CSIDL_FAVORITES, &FOLDERID_Favorites},
    {CSIDL_COMMON_STARTMENU, &FOLDERID_CommonStartMenu},
    {CSIDL_COMMON_STARTUP, &FOLDERID_CommonStartup},
    {CSIDL_COMMON_DESKTOPDIRECTORY, &FOLDERID_PublicDesktop},
    {CSIDL_APPDATA, &FOLDERID_RoamingAppData},
    {CSIDL_PRINTHOOD, &FOLDERID_PrintHood},
    {CSIDL_COMMON_FAVORITES, &FOLDERID_Favorites},
    {CSIDL_INTERNET_CACHE, &FOLDERID_InternetCache},
    {CSIDL_COOKIES, &FOLDERID_Cookies},
    {CSIDL_HISTORY, &FOLDERID_History},
    {CSIDL_COMMON_PROGRAMS, &FOLDERID_CommonPrograms},
    {CSIDL_ALTSTARTUP, &FOLDERID_Startup},
    {CSIDL_COMMON_APPDATA, &FOLDERID_ProgramData},
    {CSIDL_COMMON_DOCUMENTS, &FOLDERID_PublicDocuments},
    {CSIDL_INTERNET, &FOLDERID_InternetFolder},
    {CSIDL_LOCAL_APPDATA, &FOLDERID_LocalAppData},
    {CSIDL_MYPICTURES, &FOLDERID_Pictures},
    {CSIDL_PROGRAM_FILES, &FOLDERID_ProgramFiles},
    {CSIDL_SYSTEM, &FOLDERID_System},
    {CSIDL_PROGRAM_FILES_COMMON, &FOLDERID_ProgramFilesCommon},
    {CSIDL_WINDOWS, &FOLDERID_Windows},
    {CSIDL_PROGRAM_FILESX86, &FOLDERID_ProgramFilesX86},
    {CSIDL_PROGRAM_FILES_COMMONX86, &FOLDERID_ProgramFilesCommonX86},
    {CSIDL_SYSTEMX86, &FOLDERID_SystemX86},
    {CSIDL_MYMUSIC, &FOLDERID_Music},
    {CSIDL_MYVIDEO, &FOLDERID_Videos},
    {kNoCsidl, &FOLDERID_Libraries},
    {kNoCsidl, &FOLDERID_DocumentsLibrary},
    {kNoCsidl, &FOLDERID_PicturesLibrary},
    {kNoCsidl, &FOLDERID_MusicLibrary},
    {kNoCsidl, &FOLDERID_VideosLibrary},
    {kNoCsidl, &FOLDERID_PublicLibraries},
    {kNoCsidl, &FOLDERID_Profile},
    {kNoCsidl, &FOLDERID_HomeGroup},
    {kNoCsidl, &FOLDERID_Links},
    {kNoCsidl, &GUID_NULL},  // SF_QUICKACCESS
    {kNoCsidl, &FOLDERID_Downloads},
    {kNoCsidl, &FOLDERID_SkyDrive},
    {kNoCsidl, &FOLDERID_QuickLaunch},
    {CSIDL_DRIVES, &FOLDERID_ComputerFolder},  // SF_UNKNOWN
    {kNoCsidl, &GUID_NULL},                    // SF_INVALID
};
static_assert(std::size(SpecialFolderTable) == OakShellFolderCount);

struct TFolderAlias {
  GUID id;
  TOakShellFolder folder;
};

// Identifiers under which the shell shows folders in places of its own.
constexpr TFolderAlias KnownFolderIdMap[] = {
    {{0x0DDD015D, 0xB06C, 0x45D5, {0x8C, 0x4C, 0xF5, 0x97, 0x13, 0x85, 0x46, 0x39}}, SF_MYPICTURES},
    {{0xF42EE2D3, 0x909F, 0x4907, {0x88, 0x71, 0x4C, 0x22, 0xFC, 0x0B, 0xF7, 0x56}}, SF_PERSONAL},
    {{0xA0C69A99, 0x21C8, 0x4671, {0x87, 0x03, 0x79, 0x34, 0x16, 0x2F, 0xCF, 0x1D}}, SF_MY_MUSIC},
    {{0x35286A68, 0x3C57, 0x41A1, {0xBB, 0xB1, 0x0E, 0xAE, 0x73, 0xD7, 0x6C, 0x95}}, SF_MY_VIDEOS},
    {{0x7D83EE9B, 0x2244, 0x4E70, {0xB1, 0xF5, 0x53, 0x93, 0x04, 0x2A, 0xF1, 0xE4}}, SF_DOWNLOADS},
    {{0x679F85CB, 0x0220, 0x4080, {0xB2, 0x9B, 0x55, 0x40, 0xCC, 0x05, 0xAA, 0xB6}},
     SF_QUICKACCESS},
    {{0x26EE0668, 0xA00A, 0x44D7, {0x93, 0x71, 0xBE, 0xB0, 0x64, 0xC9, 0x86, 0x83}}, SF_CONTROLS},
    {{0x323CA680, 0xC24D, 0x4099, {0xB9, 0x4D, 0x44, 0x6D, 0xD2, 0xD7, 0x24, 0x9E}}, SF_FAVORITES},
    {{0xA302545D, 0xDEFF, 0x464B, {0xAB, 0xE8, 0x61, 0xC8, 0x64, 0x8D, 0x93, 0x9B}}, SF_LIBRARIES},
    {{0x5E6C858F, 0x0E22, 0x4760, {0x9A, 0xFE, 0xEA, 0x33, 0x17, 0xB6, 0x71, 0x73}}, SF_PROFILE},
    {{0x754AC886, 0xDF64, 0x4CBA, {0x86, 0xB5, 0xF7, 0xFB, 0xF4, 0xFB, 0xCE, 0xF5}},
     SF_DESKTOPDIRECTORY},
    {{0x6D809377, 0x6AF0, 0x444B, {0x89, 0x57, 0xA3, 0x77, 0x3F, 0x02, 0x20, 0x0E}},
     SF_PROGRAM_FILES},
    {{0x6365D5A7, 0x0F0D, 0x45E5, {0x87, 0xF6, 0x0D, 0xA5, 0x6B, 0x6A, 0x4F, 0x7D}},
     SF_PROGRAM_FILES_COMMON},
};

TOakShellFolder NextFolder(TOakShellFolder folder) {
  return static_cast<TOakShellFolder>(folder + 1);
}

// --- what the class remembers ------------------------------------------------

using TFolderNames = std::unordered_map<TString, TOakShellFolder>;

struct TSpecialFolders {
  std::mutex SpecialFolderLock;
  std::array<Ref<IItemIdList>, OakShellFolderCount> SpecialFolderItems;
  std::atomic<const TFolderNames*> SpecialFolderByName{nullptr};
  std::mutex ManagerLock;
  Ref<IKnownFolderManager> KnownFolderManager;

  TSpecialFolders() { FillFixed(); }
  /// The two slots that need no shell.
  void FillFixed() {
    static const ITEMIDLIST root{};
    SpecialFolderItems[SF_FILESYSTEMFOLDER] = NullItemIdList();
    SpecialFolderItems[SF_DESKTOP] = TOakItemIdList::Create(&root, iloForeignOwned);
  }
};

TSpecialFolders& Folders() {
  // Never destroyed: the shell may be gone when static objects end.
  static auto* folders = new TSpecialFolders;
  return *folders;
}

Ref<IKnownFolderManager> GetKnownFolderManager() {
  TSpecialFolders& folders = Folders();
  {
    const std::lock_guard lock(folders.ManagerLock);
    if (folders.KnownFolderManager) return folders.KnownFolderManager;
  }
  Ref<IKnownFolderManager> manager;
  if (FAILED(Api().CoCreateInstance(CLSID_KnownFolderManager, nullptr, CLSCTX_INPROC_SERVER,
                                    IidOf<IKnownFolderManager>(), manager.PutVoid())))
    return {};
  const std::lock_guard lock(folders.ManagerLock);
  folders.KnownFolderManager = manager;
  return manager;
}

TPidl PidlOfFolder(TOakShellFolder folder) {
  const TSpecialFolder& row = SpecialFolderTable[folder];
  TPidl pidl;
  if (row.csidl != kNoCsidl &&
      SUCCEEDED(Api().SHGetSpecialFolderLocation(nullptr, row.csidl, pidl.Put())) && pidl)
    return pidl;
  if (folder == SF_INVALID || !Api().SHGetKnownFolderIDList ||
      FAILED(Api().SHGetKnownFolderIDList(*row.knownFolder, 0, nullptr, pidl.Put())))
    return {};
  return pidl;
}

/// Every name and class identifier of every special folder.
std::unique_ptr<const TFolderNames> CollectFolderNames() {
  auto names = std::make_unique<TFolderNames>();
  const auto add = [&names](TOakShellFolder folder, const TString& text) {
    if (!text.empty()) names->try_emplace(UpperCase(text), folder);
  };
  for (TOakShellFolder folder = SF_BITBUCKET; folder < SF_UNKNOWN; folder = NextFolder(folder)) {
    const Ref<IItemIdList> item = TOakItemIdList::CreateForSpecialFolder(folder, true);
    if (item->IsInvalid()) continue;
    add(folder, item->DisplayName(dnfInFolder));
    for (const auto form : {dnfAbsoluteParsing, dnfRelativeParsing})
      if (const TString name = item->DisplayName(form); IsFolderClassId(name)) add(folder, name);
  }
  return names;
}

const TFolderNames& GetFolderNames() {
  auto& shared = Folders().SpecialFolderByName;
  if (const TFolderNames* names = shared.load(std::memory_order_acquire)) return *names;
  auto names = CollectFolderNames();
  const TFolderNames* first = nullptr;
  if (!shared.compare_exchange_strong(first, names.get(), std::memory_order_acq_rel)) return *first;
  return *names.release();
}

}  // namespace

void ClearSpecialFolders() {
  TSpecialFolders& folders = Folders();
  std::array<Ref<IItemIdList>, OakShellFolderCount> old;
  Ref<IKnownFolderManager> manager;
  {
    const std::lock_guard lock(folders.SpecialFolderLock);
    old.swap(folders.SpecialFolderItems);
    folders.FillFixed();
  }
  {
    const std::lock_guard lock(folders.ManagerLock);
    manager.Swap(folders.KnownFolderManager);
  }
  delete folders.SpecialFolderByName.exchange(nullptr);
}

// --- making ------------------------------------------------------------------

Ref<IItemIdList> TOakItemIdList::CreateForSpecialFolder(TOakShellFolder pSpecialFolder,
                                                        bool pFromCache) {
  if (pSpecialFolder > SF_INVALID) pSpecialFolder = SF_INVALID;
  if (pSpecialFolder == SF_QUICKACCESS && !IsWindows10OrLater()) pSpecialFolder = SF_LINKS;
  TSpecialFolders& folders = Folders();
  if (pFromCache) {
    const std::lock_guard lock(folders.SpecialFolderLock);
    if (const auto& known = folders.SpecialFolderItems[pSpecialFolder]) return known;
  }
  // Without the lock: two threads may make the same folder, and the later one stays.
  Ref<IItemIdList> item = pSpecialFolder == SF_QUICKACCESS ? Create(kQuickAccess)
                                                           : Create(PidlOfFolder(pSpecialFolder));
  if (pSpecialFolder != SF_INVALID && item->IsInvalid()) return item;
  From(item)->fSpecialFolder.store(pSpecialFolder, std::memory_order_release);
  if (pFromCache && pSpecialFolder != SF_DRIVES && pSpecialFolder != SF_QUICKACCESS) {
    Ref<IItemIdList> stored = item;
    const std::lock_guard lock(folders.SpecialFolderLock);
    folders.SpecialFolderItems[pSpecialFolder].Swap(stored);
    // The folder that stood there is let go behind the lock.
  }
  return item;
}

Ref<IItemIdList> TOakItemIdList::CreateForSpecialFolder(TStringView pDisplayName) {
  const TFolderNames& names = GetFolderNames();
  const auto found = names.find(UpperCase(pDisplayName));
  return found == names.end() ? nullptr : CreateForSpecialFolder(found->second, true);
}

// --- recognising -------------------------------------------------------------

TOakShellFolder TOakItemIdList::SpecialFolder() {
  const TOakShellFolder known = fSpecialFolder.load(std::memory_order_acquire);
  if (known != SF_INVALID) return known;
  const PItemIdList pidl = WindowsPointer();
  const TOakShellFolder found = TestForSpecialFolder({});
  StoreSpecialFolder(found, pidl);
  return found;
}

bool TOakItemIdList::IsSpecialFolder(TOakShellFolder pSpecialFolderToCheck) {
  if (pSpecialFolderToCheck == SF_DESKTOP) {
    // No resolving: an item that was not looked up is not taken for the desktop.
    const PItemIdList pidl = fItemIdList.load(std::memory_order_acquire);
    return reinterpret_cast<std::uintptr_t>(pidl) > kFailed && PidlDepth(pidl) == 0;
  }
  const TOakShellFolder known = fSpecialFolder.load(std::memory_order_acquire);
  if (known != SF_INVALID) return known == pSpecialFolderToCheck;
  const PItemIdList pidl = WindowsPointer();
  if (CompareTo(CreateForSpecialFolder(pSpecialFolderToCheck, true), ilcDisplay) != 0) return false;
  StoreSpecialFolder(pSpecialFolderToCheck, pidl);
  return true;
}

/// Remembers what was found for a list, unless another thread replaced that.
void TOakItemIdList::StoreSpecialFolder(TOakShellFolder pFound, PItemIdList pPidl) {
  fSpecialFolder.store(pFound, std::memory_order_release);
  if (WindowsPointer() != pPidl) fSpecialFolder.store(SF_INVALID, std::memory_order_release);
}

TOakShellFolder TOakItemIdList::TestForSpecialFolder(TOakShellFolders pFoldersToTest) {
  if (IsInvalid()) return SF_INVALID;
  const bool testsAll = pFoldersToTest.IsEmpty();
  TOakShellFolder found = SF_INVALID;
  if (const auto manager = GetKnownFolderManager()) {
    found = FindKnownFolder(*manager, pFoldersToTest);
    if (found == SF_DESKTOP && Depth() >= 1) found = SF_DESKTOPDIRECTORY;
    if (found == SF_INVALID && (testsAll || pFoldersToTest.Contains(SF_QUICKACCESS)) &&
        Path().empty() && Equals(CreateForSpecialFolder(SF_QUICKACCESS, true), ilcDisplay))
      found = SF_QUICKACCESS;
  } else {
    found = FindByComparing(pFoldersToTest);
  }
  if (found != SF_INVALID) return found;
  return testsAll && !Path().empty() ? SF_FILESYSTEMFOLDER : SF_UNKNOWN;
}

TOakShellFolder TOakItemIdList::FindByComparing(TOakShellFolders pFoldersToTest) {
  for (TOakShellFolder folder = SF_BITBUCKET; folder < SF_INVALID; folder = NextFolder(folder)) {
    if (!pFoldersToTest.IsEmpty() && !pFoldersToTest.Contains(folder)) continue;
    if (Equals(CreateForSpecialFolder(folder, true), ilcDisplay)) return folder;
  }
  return SF_INVALID;
}

TOakShellFolder TOakItemIdList::FindKnownFolder(IKnownFolderManager& pManager,
                                                TOakShellFolders pFoldersToTest) {
  Ref<IKnownFolder> known;
  if (FAILED(pManager.FindFolderFromIDList(WindowsPointer(), known.Put())) || !known) {
    const TString path = Path();
    if (path.empty() ||
        FAILED(pManager.FindFolderFromPath(W(path), FFFP_EXACTMATCH, known.Put())) || !known)
      return SF_INVALID;
  }
  KNOWNFOLDERID id{};
  if (FAILED(known->GetId(&id))) return SF_INVALID;
  for (const TFolderAlias& alias : KnownFolderIdMap)
    if (IsEqualGUID(alias.id, id)) return alias.folder;
  for (TOakShellFolder folder = SF_BITBUCKET; folder < SF_INVALID; folder = NextFolder(folder)) {
    if (!pFoldersToTest.IsEmpty() && !pFoldersToTest.Contains(folder)) continue;
    if (IsEqualGUID(*SpecialFolderTable[folder].knownFolder, id)) return folder;
  }
  return SF_INVALID;
}

}  // namespace oak
