// The state of a check box in front of a shell object.
#pragma once

#include <cstdint>

namespace oak {

/// How much of an object is selected; also the index of the picture that shows it.
enum TOakSelectionState : std::uint8_t {
  ssUnused,     ///< No check box.
  ssDisabled,   ///< Can't be told.
  ssChecked,    ///< The object with all that lies below it.
  ssUnChecked,  ///< Nothing of it.
  ssGrayed      ///< Something that lies below it.
};

constexpr TOakSelectionState BoolToSelectionState(bool pValue) noexcept {
  return pValue ? ssChecked : ssUnChecked;
}

}  // namespace oak
