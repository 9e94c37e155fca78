// Where the known folders are under one configuration of the portable system.
#pragma once

#include <memory>
#include <unordered_map>
#include <vector>

#include "oak/platform/portable/KnownFolderTable.h"
#include "oak/platform/portable/PortableConfig.h"

namespace oak {

/// The directories that a user-dirs.dirs file names, by their key without "XDG_"
/// and "_DIR" ("DESKTOP"). `home` replaces $HOME. Lines that are none are skipped.
std::unordered_map<std::string, std::string> ParseUserDirs(std::string_view text,
                                                           const std::string& home);

/// The places of all known folders, by their index in the table.
class TKnownFolderPlaces {
 public:
  explicit TKnownFolderPlaces(std::shared_ptr<const TPortableConfig> config);
  /// Those of the present configuration. Any thread.
  static std::shared_ptr<const TKnownFolderPlaces> Current();

  const std::string& Native(std::size_t index) const { return fNative[index]; }
  const TString& Path(std::size_t index) const { return fPaths[index]; }
  /// Index of the first folder at that path in any case; -1 without one.
  int FindFolded(TStringView path) const;

 private:
  std::string BaseDirectory(TKnownFolderBase base) const;
  std::string UserDirectory(TKnownFolderBase base) const;

  std::shared_ptr<const TPortableConfig> fConfig;
  std::unordered_map<std::string, std::string> fUserDirs;
  std::vector<std::string> fNative;
  std::vector<TString> fPaths;
  std::unordered_map<TString, int> fByPath;  // upper-cased, without trailing delimiter
};

}  // namespace oak
