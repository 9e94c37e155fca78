// What the portable system pretends to be: its drives, its user, its version.
#pragma once

#include <memory>
#include <string>
#include <vector>

#include "oak/base/Text.h"

namespace oak {

/// What kind of device a drive letter stands for.
enum class TPortableDriveKind : std::uint8_t { Fixed, Removable, Network, CdRom };

/// A drive letter and the native directory that is its root. A drive whose
/// directory is missing is listed, but not ready.
struct TPortableDrive {
  char16_t Letter = u'C';  ///< 'A'..'Z'
  std::string Directory;   ///< absolute, without trailing slash except "/" itself
  TPortableDriveKind Kind = TPortableDriveKind::Fixed;
  TString Label;   ///< volume label; may be empty
  TString Remote;  ///< "\\server\share" behind a network drive; may be empty
};

/// A network share and the native directory that is its root.
struct TPortableShare {
  TString Server;
  TString Share;
  std::string Directory;
};

/// Everything about the machine that is configurable. A value type: copy the
/// present one, change the copy, set it.
struct TPortableConfig {
  std::vector<TPortableDrive> Drives;  ///< ascending by letter, each at most once
  std::vector<TPortableShare> Shares;

  // Native directories, absolute.
  std::string Home;             ///< home directory of the user
  std::string ConfigHome;       ///< $XDG_CONFIG_HOME; holds user-dirs.dirs
  std::string DataHome;         ///< $XDG_DATA_HOME
  std::string CacheHome;        ///< $XDG_CACHE_HOME
  std::string Trash;            ///< trash directory of the user: DataHome/Trash
  std::string Temp;             ///< for temporary files
  std::string ProgramFiles;     ///< stands for "Program Files"
  std::string ProgramFilesX86;  ///< stands for "Program Files (x86)"
  std::string ProgramData;      ///< data shared by all users
  std::string Windows;          ///< stands for the system's own directory
  std::string System;           ///< stands for its "System32"

  TString ComputerName;
  TString UserName;
  DWORD MajorVersion = 10;
  DWORD MinorVersion = 0;
  DWORD BuildNumber = 19045;
  /// A locale name. Numbers, sizes and dates are written as it asks; texts are English.
  TString Language = u"en-US";
  bool IsAdmin = false;  ///< what IsUserAnAdmin answers

  const TPortableDrive* FindDrive(char16_t letter) const;
  const TPortableShare* FindShare(TStringView server, TStringView share) const;
};

/// The present configuration; built from the environment at first use. Never
/// nil. Any thread; the snapshot stays as it is while the caller holds it.
std::shared_ptr<const TPortableConfig> PortableConfig();

/// Grows with every change of the configuration: what was found in an older
/// generation may be out of date. Any thread, no lock.
std::uint64_t PortableConfigGeneration() noexcept;

/// Replaces the configuration for the whole process. Nil: back to the one that
/// the environment gives. Any thread.
void SetPortableConfig(std::shared_ptr<const TPortableConfig> config);
void SetPortableConfig(TPortableConfig config);

/// A configuration read afresh from the environment: only C:, mapped to "/".
TPortableConfig PortableConfigFromEnvironment();

/// Adds or replaces one drive of the present configuration. The directory is
/// made absolute and loses a trailing slash. False if the letter is none.
bool MapDrive(char16_t letter, std::string_view directory,
              TPortableDriveKind kind = TPortableDriveKind::Fixed, TStringView label = {});
/// Removes a drive from the present configuration. False if there was none.
bool UnmapDrive(char16_t letter);
/// Adds or replaces a network share of the present configuration.
bool MapShare(TStringView server, TStringView share, std::string_view directory);

}  // namespace oak
