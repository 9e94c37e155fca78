// Any bytes as UTF-8 and any units as text: conversions, order and GUIDs.
#include <cstdlib>

#include "FuzzInput.h"
#include "oak/base/Guid.h"
#include "oak/base/LogicalOrder.h"

using namespace oak;

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  const TString decoded = FromUtf8({reinterpret_cast<const char*>(data), size});
  if (FromUtf8(ToUtf8(decoded)) != decoded) std::abort();
  const auto [a, b] = fuzz::ToTwoTexts(data, size);
  const int order = CompareLogical(a, b);
  if ((order < 0) != (CompareLogical(b, a) > 0)) std::abort();
  const auto keys = MakeLogicalKey(a) <=> MakeLogicalKey(b);
  if ((order < 0) != (keys < 0) || (order == 0) != (keys == 0)) std::abort();
  if (SameText(a, b) != (CompareText(a, b) == 0)) std::abort();
  if (!SameText(UpperCase(a), a)) std::abort();
  GUID guid;
  if (TryParseGuid(a, guid)) GuidToString(guid);
  return 0;
}
