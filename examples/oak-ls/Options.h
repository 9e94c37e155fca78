// What the user asked oak-ls for.
#pragma once

#include <string>
#include <vector>

#include "oak/base/Text.h"

/// Options of one run, with their defaults.
struct TOptions {
  oak::TString Filter;
  bool Hidden = false;
  bool FileSystemOnly = false;
  bool Names = false;
  bool Json = false;
  std::vector<std::string> Places;  ///< As typed, in UTF-8.
};

/// Reads the arguments and carries out --map. False if the program is to end with
/// `exitCode`; what there is to say has then been said.
bool ReadOptions(const std::vector<std::string>& arguments, TOptions& options, int& exitCode);
