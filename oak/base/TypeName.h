// The name of a class, for messages that people read.
#pragma once

#include <typeinfo>

#include "oak/base/Text.h"

namespace oak {

/// Name of a class as the source has it, without namespace oak in front:
/// "TDelayedProcedure", "TFuture<bool>". Any thread.
TString TypeName(const std::type_info& type);

/// The same for the class of an object, not the type that it is seen through.
template <class T>
TString TypeNameOf(const T& object) {
  return TypeName(typeid(object));
}

}  // namespace oak
