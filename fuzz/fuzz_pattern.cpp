// Any text as a pattern and as a filter. The compiled list has to agree with the
// plain matcher.
#include <cstdlib>

#include "FuzzInput.h"
#include "oak/base/PatternMatch.h"
#include "oak/namespace/FolderTrek.h"
#include "oak/namespace/Oak.Shell.Types.h"
#include "oak/namespace/Shell_Win32.h"

using namespace oak;

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  const auto [name, pattern] = fuzz::ToTwoTexts(data, size);
  if (TPatternList(pattern).Matches(name) != MatchPatternSpec(name, pattern)) std::abort();
  MatchPattern(name, pattern);
  TFolderTrek cursor;
  cursor.SetFilter(pattern);
  const TString filter = cursor.GetFilter();
  cursor.SetFilter(filter);
  // One empty pattern reads as the empty text, which means no filter.
  if (!filter.empty() && cursor.GetFilter() != filter) std::abort();

  TOakSearchOptions options;
  options.SetFilter(pattern);
  WIN32_FIND_DATAW found{};
  const std::size_t length = std::min<std::size_t>(name.size(), MAX_PATH - 1);
  std::memcpy(found.cFileName, name.data(), length * sizeof(char16_t));
  options.Matches(found, u"C:\\folder\\");
  options.SetAutoWildcard(false);
  options.Matches(found, u"C:\\folder\\");
  return 0;
}
