#include "oak/namespace/Oak.Shell.Types.h"

#include "oak/namespace/OakItemIdList.h"

namespace oak {
namespace {

/// In the order of TOakShellFolder.
constexpr TStringView FolderIdentifiers[] = {
    u"SF_FILESYSTEMFOLDER",
    u"SF_BITBUCKET",
    u"SF_CONTROLS",
    u"SF_DESKTOP",
    u"SF_DESKTOPDIRECTORY",
    u"SF_DRIVES",
    u"SF_FONTS",
    u"SF_NETHOOD",
    u"SF_NETWORK",
    u"SF_PERSONAL",
    u"SF_PRINTERS",
    u"SF_PROGRAMS",
    u"SF_RECENT",
    u"SF_SENDTO",
    u"SF_STARTMENU",
    u"SF_STARTUP",
    u"SF_TEMPLATES",
    u"SF_FAVORITES",
    u"SF_COMMON_STARTMENU",
    u"SF_COMMON_STARTUP",
    u"SF_COMMON_DESKTOPDIRECTORY",
    u"SF_APPDATA",
    u"SF_PRINTHOOD",
    u"SF_COMMON_FAVORITES",
    u"SF_INTERNET_CACHE",
    u"SF_COOKIES",
    u"SF_HISTORY",
    u"SF_COMMON_PROGRAMS",
    u"SF_ALTSTARTUP",
    u"SF_COMMON_APPDATA",
    u"SF_COMMON_DOCUMENTS",
    u"SF_INTERNET",
    u"SF_LOCAL_APPDATA",
    u"SF_MYPICTURES",
    u"SF_PROGRAM_FILES",
    u"SF_SYSTEM",
    u"SF_PROGRAM_FILES_COMMON",
    u"SF_WINDOWS",
    u"SF_PROGRAM_FILESX86",
    u"SF_PROGRAM_FILES_COMMONX86",
    u"SF_SYSTEMX86",
    u"SF_MY_MUSIC",
    u"SF_MY_VIDEOS",
    u"SF_LIBRARIES",
    u"SF_LIBRARY_DOCUMENTS",
    u"SF_LIBRARY_PICTURES",
    u"SF_LIBRARY_MUSIC",
    u"SF_LIBRARY_VIDEOS",
    u"SF_LIBRARY_PUBLIC",
    u"SF_PROFILE",
    u"SF_HOME_GROUP",
    u"SF_LINKS",
    u"SF_QUICKACCESS",
    u"SF_DOWNLOADS",
    u"SF_ONEDRIVE",
    u"SF_QUICKLAUNCH",
    u"SF_UNKNOWN",
    u"SF_INVALID",
};
static_assert(std::size(FolderIdentifiers) == OakShellFolderCount);

Ref<IItemIdList> CachedItem(TOakShellFolder pFolder) {
  return TOakItemIdList::CreateForSpecialFolder(pFolder, true);
}

}  // namespace

TString TOakShellFolderHelper::ToPath(TOakShellFolder pFolder) {
  const Ref<IItemIdList> item = CachedItem(pFolder);
  return item ? item->DisplayPath() : TString();
}

TString TOakShellFolderHelper::ToString(TOakShellFolder pFolder) {
  const Ref<IItemIdList> item = CachedItem(pFolder);
  return item ? item->DisplayName(dnfInFolder) : TString();
}

TStringView TOakShellFolderHelper::ToIdentifier(TOakShellFolder pFolder) {
  return pFolder < OakShellFolderCount ? FolderIdentifiers[pFolder] : TStringView();
}

void TOakExceptionHelper::AddMessageInfo(Exception& pException, IUnknown* pObject) {
  const TString info = InternalDataText(pObject);
  if (!info.empty()) pException.SetMessage(pException.GetMessage() + info);
}

}  // namespace oak
