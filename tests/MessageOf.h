// What a call raises, as text.
#pragma once

#include "oak/base/Exceptions.h"

namespace oak::tests {

/// The message of the exception of that class; others come through.
template <class TError = Exception, class TCall>
TString MessageOf(TCall&& call) {
  try {
    call();
  } catch (const TError& error) {
    return error.GetMessage();
  }
  return u"(nothing was raised)";
}

}  // namespace oak::tests
