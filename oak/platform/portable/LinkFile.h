// The shortcut file format (.lnk), read and written as published.
#pragma once

#include <cstdint>
#include <optional>
#include <span>
#include <vector>

#include "oak/base/Pidl.h"
#include "oak/base/Text.h"

namespace oak {

/// Everything that a shortcut file holds. What this library has no use for is kept
/// and written back.
struct TLinkFile {
  TPidl Target;  ///< Absolute; may be another shell's.
  DWORD FileAttributes = 0;
  FILETIME Created{};
  FILETIME Accessed{};
  FILETIME Written{};
  DWORD FileSize = 0;
  int IconIndex = 0;
  DWORD ShowCommand = 1;  ///< SW_SHOWNORMAL
  WORD Hotkey = 0;
  TString LocalPath;    ///< Path of the target on this machine.
  TString NetworkPath;  ///< Path of the target on the network.
  std::optional<TString> Description;
  std::optional<TString> RelativePath;
  std::optional<TString> WorkingDirectory;
  std::optional<TString> Arguments;
  std::optional<TString> IconLocation;
  /// Target with environment variables in it, unexpanded.
  TString EnvironmentTarget;
  /// Flags without a field of their own, and the blocks behind the texts that are
  /// not understood, headers included.
  DWORD OtherFlags = 0;
  std::vector<BYTE> OtherBlocks;
};

/// Reads a file's bytes, whatever they are. An error of the format gives
/// HRESULT_FROM_WIN32(ERROR_BAD_FORMAT) and leaves `link` empty.
HRESULT ReadLinkFile(std::span<const BYTE> bytes, TLinkFile& link);

/// The file's bytes. A text of over 65,535 characters is cut.
std::vector<BYTE> WriteLinkFile(const TLinkFile& link);

}  // namespace oak
