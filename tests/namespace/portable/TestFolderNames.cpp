#include <algorithm>

#include "tests/namespace/TestFolder.h"

namespace oak::tests {

std::filesystem::path NativeName(TStringView name) {
  std::string text = ToUtf8(name);
  std::replace(text.begin(), text.end(), '\\', '/');
  return text;
}

// C: is the root of the file system unless a test maps it elsewhere.
TString LibraryPath(const std::filesystem::path& native) {
  TString text = u"C:" + FromUtf8(native.string());
  std::replace(text.begin(), text.end(), u'/', u'\\');
  return text;
}

}  // namespace oak::tests
