// Drives, volumes and network connections.
#include <sys/stat.h>
#include <sys/statvfs.h>
#include <sys/vfs.h>

#include <algorithm>
#include <cerrno>

#include "oak/platform/portable/PortableConfig.h"
#include "oak/platform/portable/SystemFiles.h"
#include "oak/platform/portable/SystemHandles.h"

namespace oak {
namespace {

constexpr DWORD ErrorDirNotRoot = 144;

// The drive of a caller's root ("C:", "C:\", a volume name, "\\server\share");
// nil is the current one. Gives the native directory.
struct TPlace {
  std::string Directory;
  const TPortableDrive* Drive = nullptr;
  std::shared_ptr<const TPortableConfig> Config;  // keeps Drive alive
};

std::optional<TPlace> PlaceOf(LPCWSTR root) {
  if (root && !*root) return std::nullopt;
  TPlace place;
  place.Config = PortableConfig();
  const auto native = NativePathText(root ? IncludeTrailingPathDelimiter(root) : u"\\");
  if (!native) return std::nullopt;
  place.Directory = *native;
  TString text = root ? TString(root) : TString();
  if (!root) text = WindowsPath(*native);
  if (StartsText(u"\\\\?\\Volume{", text)) {
    place.Drive = place.Config->FindDrive(DriveOfVolumeName(text.substr(0, text.find(u'}') + 1)));
  } else {
    const std::size_t start = StartsWith(text, u"\\\\?\\") || StartsWith(text, u"\\\\.\\") ? 4 : 0;
    if (text.size() > start + 1 && text[start + 1] == u':')
      place.Drive = place.Config->FindDrive(text[start]);
  }
  return place;
}

bool IsRootOf(const TPlace& place) {
  if (place.Drive) return place.Drive->Directory == place.Directory;
  return std::any_of(
      place.Config->Shares.begin(), place.Config->Shares.end(),
      [&](const TPortableShare& share) { return share.Directory == place.Directory; });
}

UINT TypeOf(const TPortableDrive* drive) {
  if (!drive) return DRIVE_REMOTE;  // a share without a letter
  switch (drive->Kind) {
    case TPortableDriveKind::Removable:
      return DRIVE_REMOVABLE;
    case TPortableDriveKind::Network:
      return DRIVE_REMOTE;
    case TPortableDriveKind::CdRom:
      return DRIVE_CDROM;
    case TPortableDriveKind::Fixed:
      break;
  }
  return DRIVE_FIXED;
}

UINT STDAPICALLTYPE GetDriveTypeW(LPCWSTR root) {
  return SystemCall<UINT>(DRIVE_UNKNOWN, [&]() -> UINT {
    const auto place = PlaceOf(root);
    return place && IsRootOf(*place) ? TypeOf(place->Drive) : DRIVE_NO_ROOT_DIR;
  });
}

DWORD STDAPICALLTYPE GetLogicalDrives() {
  return SystemCall<DWORD>(0, [] {
    DWORD mask = 0;
    const auto config = PortableConfig();
    for (const TPortableDrive& drive : config->Drives) mask |= 1u << (drive.Letter - u'A');
    return mask;
  });
}

BOOL STDAPICALLTYPE GetDiskFreeSpaceExW(LPCWSTR directory, ULARGE_INTEGER* available,
                                        ULARGE_INTEGER* total, ULARGE_INTEGER* free) {
  return SystemCall<BOOL>(FALSE, [&] {
    const TString path = directory ? TString(directory) : TString(u"\\");
    const auto native = NativeForCall(W(path));
    if (!native) return FALSE;
    struct statvfs info {};
    if (statvfs(native->c_str(), &info) != 0) {
      const int error = errno;
      const DWORD code = ExactLookupError(*native, Win32FromErrno(error));
      return FailWith(code == ERROR_FILE_NOT_FOUND ? ERROR_PATH_NOT_FOUND : code, FALSE);
    }
    const std::uint64_t unit = info.f_frsize ? info.f_frsize : info.f_bsize;
    if (available) available->QuadPart = unit * info.f_bavail;
    if (total) total->QuadPart = unit * info.f_blocks;
    if (free) free->QuadPart = unit * info.f_bfree;
    return TRUE;
  });
}

// Name of a native file system, by the number that statfs tells.
TStringView FileSystemName(const std::string& directory) {
  struct TName {
    std::uint32_t Magic;
    TStringView Name;
  };
  static constexpr TName names[] = {
      {0xEF53, u"ext4"},      {0x9123683E, u"btrfs"},   {0x58465342, u"XFS"},
      {0x01021994, u"tmpfs"}, {0x794C7630, u"overlay"}, {0x6969, u"NFS"},
      {0xFF534D42, u"CIFS"},  {0xFE534D42, u"SMB2"},    {0x4D44, u"FAT32"},
      {0x2011BAB0, u"exFAT"}, {0x5346544E, u"NTFS"},    {0x7366746E, u"NTFS"},
      {0x9660, u"CDFS"},      {0x15013346, u"UDF"},     {0x65735546, u"FUSE"},
      {0x2FC12FC1, u"ZFS"},   {0xF2F52010, u"F2FS"},    {0x73717368, u"squashfs"}};
  struct statfs info {};
  if (statfs(directory.c_str(), &info) == 0)
    for (const TName& name : names)
      if (name.Magic == static_cast<std::uint32_t>(info.f_type)) return name.Name;
  return u"native";
}

BOOL STDAPICALLTYPE GetVolumeInformationW(LPCWSTR root, LPWSTR label, DWORD labelCapacity,
                                          LPDWORD serial, LPDWORD longestName, LPDWORD flags,
                                          LPWSTR fileSystem, DWORD fileSystemCapacity) {
  return SystemCall<BOOL>(FALSE, [&] {
    const auto place = PlaceOf(root);
    if (!place) return FailWith(ERROR_PATH_NOT_FOUND, FALSE);
    if (!IsRootOf(*place)) return FailWith(ErrorDirNotRoot, FALSE);
    DWORD error = 0;
    const auto info = GetFileInfo(place->Directory, true, &error);
    if (!info) return FailWith(ExactLookupError(place->Directory, error), FALSE);
    const TStringView name = place->Drive ? TStringView(place->Drive->Label) : TStringView();
    if (label && !CopyText(name, label, labelCapacity)) return FailWith(ERROR_MORE_DATA, FALSE);
    if (fileSystem && !CopyText(FileSystemName(place->Directory), fileSystem, fileSystemCapacity))
      return FailWith(ERROR_MORE_DATA, FALSE);
    if (serial) *serial = info->VolumeSerial;
    if (longestName) *longestName = 255;
    // Case-sensitive and case-preserving names in Unicode, links, sparse files.
    if (flags) *flags = 0x1 | 0x2 | 0x4 | 0x40 | 0x80 | 0x400000;
    return TRUE;
  });
}

// --- volume names ----------------------------------------------------------

BOOL STDAPICALLTYPE GetVolumeNameForVolumeMountPointW(LPCWSTR mountPoint, LPWSTR name,
                                                      DWORD capacity) {
  return SystemCall<BOOL>(FALSE, [&] {
    if (!mountPoint || !name) return FailWith(ERROR_INVALID_PARAMETER, FALSE);
    if (!EndsWith(mountPoint, u"\\")) return FailWith(ERROR_INVALID_NAME, FALSE);
    const auto place = PlaceOf(mountPoint);
    if (!place || !place->Drive) return FailWith(ERROR_PATH_NOT_FOUND, FALSE);
    if (!IsRootOf(*place)) return FailWith(ERROR_NOT_A_REPARSE_POINT, FALSE);
    if (CopyText(VolumeNameOfDrive(place->Drive->Letter), name, capacity)) return TRUE;
    return FailWith(ERROR_FILENAME_EXCED_RANGE, FALSE);
  });
}

BOOL STDAPICALLTYPE GetVolumePathNamesForVolumeNameW(LPCWSTR name, LPWSTR buffer, DWORD capacity,
                                                     LPDWORD length) {
  return SystemCall<BOOL>(FALSE, [&] {
    const char16_t letter = DriveOfVolumeName(ViewOf(name));
    if (letter == 0) return FailWith(name ? ERROR_FILE_NOT_FOUND : ERROR_INVALID_NAME, FALSE);
    const TString list = TString(1, letter) + TString(TStringView(u":\\\0", 3));
    if (length) *length = static_cast<DWORD>(list.size() + 1);
    return CopyText(list, buffer, capacity) ? TRUE : FailWith(ERROR_MORE_DATA, FALSE);
  });
}

BOOL STDAPICALLTYPE GetVolumePathNameW(LPCWSTR path, LPWSTR buffer, DWORD capacity) {
  return SystemCall<BOOL>(FALSE, [&] {
    if (!path || !buffer) return FailWith(ERROR_INVALID_PARAMETER, FALSE);
    const auto place = PlaceOf(path);
    if (!place) return FailWith(ERROR_PATH_NOT_FOUND, FALSE);
    const TString root =
        place->Drive
            ? TString(1, place->Drive->Letter) + u":\\"
            : IncludeTrailingPathDelimiter(ExtractFileDrive(WindowsPath(place->Directory)));
    if (CopyText(root, buffer, capacity)) return TRUE;
    return FailWith(ERROR_FILENAME_EXCED_RANGE, FALSE);
  });
}

struct TVolumeSearch : TSystemObject {
  std::mutex Lock;
  std::vector<TString> Names;
  std::size_t Next = 0;
};

BOOL NextVolume(TVolumeSearch& search, LPWSTR name, DWORD capacity) {
  const std::lock_guard lock(search.Lock);
  if (search.Next >= search.Names.size()) return FailWith(ERROR_NO_MORE_FILES, FALSE);
  if (!CopyText(search.Names[search.Next], name, capacity))
    return FailWith(ERROR_FILENAME_EXCED_RANGE, FALSE);
  ++search.Next;
  return TRUE;
}

HANDLE STDAPICALLTYPE FindFirstVolumeW(LPWSTR name, DWORD capacity) {
  return SystemCall<HANDLE>(INVALID_HANDLE_VALUE, [&]() -> HANDLE {
    const auto search = std::make_shared<TVolumeSearch>();
    const auto config = PortableConfig();
    for (const TPortableDrive& drive : config->Drives)
      if (drive.Kind != TPortableDriveKind::Network)
        search->Names.push_back(VolumeNameOfDrive(drive.Letter));
    if (!NextVolume(*search, name, capacity)) return INVALID_HANDLE_VALUE;
    return TSystemHandles::Instance().Add(search);
  });
}

BOOL STDAPICALLTYPE FindNextVolumeW(HANDLE handle, LPWSTR name, DWORD capacity) {
  return SystemCall<BOOL>(FALSE, [&] {
    const auto search = TSystemHandles::Instance().Find<TVolumeSearch>(handle);
    return search ? NextVolume(*search, name, capacity) : FailWith(ERROR_INVALID_HANDLE, FALSE);
  });
}

BOOL STDAPICALLTYPE FindVolumeClose(HANDLE handle) {
  return SystemCall<BOOL>(FALSE, [&] {
    const bool closed = TSystemHandles::Instance().Close<TVolumeSearch>(handle);
    return closed ? TRUE : FailWith(ERROR_INVALID_HANDLE, FALSE);
  });
}

// --- network connections ---------------------------------------------------

DWORD STDAPICALLTYPE WNetGetConnectionW(LPCWSTR device, LPWSTR remote, LPDWORD capacity) {
  return SystemCall<DWORD>(ERROR_NOT_ENOUGH_MEMORY, [&]() -> DWORD {
    const TStringView name = ViewOf(device);
    if (!capacity) return ERROR_INVALID_PARAMETER;
    if (name.size() != 2 || name[1] != u':') return ERROR_BAD_DEVICE;
    const auto config = PortableConfig();
    const TPortableDrive* drive = config->FindDrive(name[0]);
    if (!drive) return ERROR_BAD_DEVICE;
    if (drive->Kind != TPortableDriveKind::Network || drive->Remote.empty())
      return ERROR_NOT_CONNECTED;
    if (CopyText(drive->Remote, remote, *capacity)) return NO_ERROR;
    *capacity = static_cast<DWORD>(drive->Remote.size() + 1);
    return ERROR_MORE_DATA;
  });
}

// There is nobody to ask for a network place.
DWORD STDAPICALLTYPE WNetConnectionDialog(HWND, DWORD) { return ERROR_NO_NETWORK; }

}  // namespace

#define BIND(Name) api.Name.SetFunction(&Name)
void BindSystemVolumes(TApi& api) {
  BIND(GetDriveTypeW);
  BIND(GetLogicalDrives);
  BIND(GetDiskFreeSpaceExW);
  BIND(GetVolumeInformationW);
  BIND(GetVolumeNameForVolumeMountPointW);
  BIND(GetVolumePathNamesForVolumeNameW);
  BIND(GetVolumePathNameW);
  BIND(FindFirstVolumeW);
  BIND(FindNextVolumeW);
  BIND(FindVolumeClose);
  BIND(WNetGetConnectionW);
  BIND(WNetConnectionDialog);
}
#undef BIND

}  // namespace oak
