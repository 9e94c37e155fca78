// What an extension says of a file.
#pragma once

#include "oak/base/Text.h"
#include "oak/platform/shell_api_enums.h"

namespace oak {

/// Kind of a file: the canonical value of System.Kind, its label, and the kind
/// that associations perceive. Empty texts for an unknown extension.
struct TFileKind {
  const char16_t* Kind = u"";
  const char16_t* Label = u"";
  PERCEIVED Perceived = PERCEIVED_TYPE_UNSPECIFIED;
};

/// By the extension of the name, in any case.
TFileKind FileKindOf(TStringView name, bool isFolder);

}  // namespace oak
