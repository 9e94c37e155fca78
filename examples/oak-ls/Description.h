// What oak-ls tells of one object, and how it writes it.
#pragma once

#include <optional>
#include <string>
#include <utility>
#include <vector>

#include "oak/namespace/FolderTrek.h"

/// Everything that is told of one object, in UTF-8.
struct TDescription {
  std::string Name;
  bool IsFolder = false;
  std::string Path;
  int Depth = 0;
  std::string Special;  ///< Name of the TOakShellFolder value.
  std::vector<std::string> Attributes;
  std::optional<std::int64_t> Size;                        ///< Bytes; none for folders.
  std::optional<std::string> Modified;                     ///< Local time.
  std::optional<std::string> Target;                       ///< Of a link.
  std::vector<std::pair<std::string, std::string>> Names;  ///< By display-name form.
};

/// Describes the cursor's current object, or its folder if there is none.
TDescription Describe(oak::TFolderTrek& cursor);

/// One line: kind, time, size, name and a link's target.
std::string ToRow(const TDescription& description);
/// One JSON object on one line.
std::string ToJson(const TDescription& description);
/// A block of lines with all that is known.
std::string ToBlock(const TDescription& description);
