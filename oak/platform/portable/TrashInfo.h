// What the trash of the desktop writes down of a deleted file.
#pragma once

#include <optional>
#include <string>
#include <string_view>

#include "oak/base/abi.h"

namespace oak {

struct TTrashInfo {
  std::string OriginalPath;  ///< Native, absolute.
  FILETIME Deleted{};        ///< Local time; zero if it is not told.
};

/// Reads the text of a ".trashinfo" file; nothing if it is none.
std::optional<TTrashInfo> ReadTrashInfo(std::string_view text);

/// The text that describes an object deleted at this local time.
std::string FormatTrashInfo(const std::string& originalPath, const SYSTEMTIME& deleted);

}  // namespace oak
