// How controls show the names of files.
#pragma once

#include <cstdint>

namespace oak {

enum class TOakFileNameFormat : std::uint8_t {
  Auto,               ///< As the user's settings of the shell say.
  IncludeExtensions,  ///< As the file has it.
  ExcludeExtensions
};

/// A control that decides about the extensions of the names that it shows.
class IOakFileNameFormatOwner {
 public:
  virtual TOakFileNameFormat GetFileNameFormat() const = 0;

 protected:
  ~IOakFileNameFormatOwner() = default;
};

}  // namespace oak
