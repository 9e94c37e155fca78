#include "oak/platform/portable/ShellRoots.h"

#include "oak/platform/portable/PortableKnownFolders.h"
#include "oak/platform/portable/ShellDirectory.h"
#include "oak/platform/portable/ShellNode.h"

namespace oak {

namespace {

constexpr DWORD kVirtual = SFGAO_FOLDER | SFGAO_HASSUBFOLDER | SFGAO_CANLINK;
constexpr DWORD kAncestor = kVirtual | SFGAO_FILESYSANCESTOR | SFGAO_HASPROPSHEET;
constexpr DWORD kDirectory = kAncestor | SFGAO_FILESYSTEM | SFGAO_STORAGE | SFGAO_STORAGEANCESTOR |
                             SFGAO_DROPTARGET | SFGAO_CANCOPY;

TString KnownPath(REFGUID id) {
  const TKnownFolder* folder = FindKnownFolder(id);
  return folder ? KnownFolderPath(*folder) : TString();
}

TFolderMount Standard(REFGUID classId, const char16_t* name, int order, DWORD attributes, int icon,
                      Ref<IFolderSource> source) {
  TFolderMount mount;
  mount.ClassId = classId;
  mount.Name = name;
  mount.Order = order;
  mount.Attributes = attributes;
  mount.IconIndex = icon;
  mount.Source = std::move(source);
  return mount;
}

}  // namespace

TString DesktopDirectory() { return KnownPath(FOLDERID_Desktop); }

Ref<IFolderSource> MakeDesktopSource() {
  return MakeRef<TDirectorySource>(&DesktopDirectory, DesktopClassId);
}

void MountStandardFolders() {
  TFolderMount quick =
      Standard(QuickAccessClassId, u"Quick access", 10, kVirtual | SFGAO_FILESYSANCESTOR,
               iconQuickAccess, MakeQuickAccessSource());
  quick.SinceMajorVersion = 10;
  quick.InfoTip = u"The folders that are used most";
  MountFolder(std::move(quick));

  TFolderMount profile = Standard(
      ProfileClassId, u"", 20, kDirectory, iconUser,
      MakeRef<TDirectorySource>([] { return KnownPath(FOLDERID_Profile); }, ProfileClassId));
  profile.KnownFolder = FOLDERID_Profile;
  profile.InfoTip = u"The files of the user";
  MountFolder(std::move(profile));

  TFolderMount computer =
      Standard(ComputerClassId, u"This PC", 30, kAncestor | SFGAO_CANRENAME | SFGAO_DROPTARGET,
               iconComputer, MakeComputerSource());
  computer.InfoTip = u"The drives of this computer";
  MountFolder(std::move(computer));

  TFolderMount network =
      Standard(NetworkClassId, u"Network", 50, kAncestor, iconNetwork, MakeNetworkSource());
  network.InfoTip = u"The computers of the network";
  MountFolder(std::move(network));

  TFolderMount control = Standard(ControlPanelClassId, u"Control Panel", 60, kVirtual, iconSettings,
                                  MakeControlPanelSource());
  control.InfoTip = u"The settings of this computer";
  MountFolder(std::move(control));

  MountLibraries();
  MountRecycleBin();
}

}  // namespace oak
