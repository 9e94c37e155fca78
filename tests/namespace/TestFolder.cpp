#include "tests/namespace/TestFolder.h"

#include <atomic>
#include <chrono>
#include <fstream>
#include <string>

namespace oak::tests {

namespace fs = std::filesystem;

TTestFolder::TTestFolder() {
  static std::atomic<int> last{0};
  // Several test programs may run at once.
  const auto now = std::chrono::steady_clock::now().time_since_epoch().count();
  do {
    fRoot = fs::temp_directory_path() /
            ("oak-items-" + std::to_string(now) + "-" + std::to_string(++last));
  } while (!fs::create_directories(fRoot));
}

TTestFolder::~TTestFolder() {
  std::error_code ignored;
  fs::remove_all(fRoot, ignored);
}

fs::path TTestFolder::Native(TStringView name) const {
  return name.empty() ? fRoot : fRoot / NativeName(name);
}

TString TTestFolder::Path(TStringView name) const { return LibraryPath(Native(name)); }

void TTestFolder::MakeFile(TStringView name, std::string_view content) const {
  std::ofstream(Native(name), std::ios::binary) << content;
}

void TTestFolder::MakeFolder(TStringView name) const { fs::create_directories(Native(name)); }

bool TTestFolder::Exists(TStringView name) const { return fs::exists(Native(name)); }

}  // namespace oak::tests
