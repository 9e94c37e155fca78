#include "tests/namespace/TestFolder.h"

namespace oak::tests {

std::filesystem::path NativeName(TStringView name) { return ToWString(name); }

TString LibraryPath(const std::filesystem::path& native) { return FromWString(native.wstring()); }

}  // namespace oak::tests
