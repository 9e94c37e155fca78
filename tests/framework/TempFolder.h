// A directory of a test's own, and the bytes of the files in it.
#pragma once

#include <atomic>
#include <chrono>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <string>

#include "oak/base/Text.h"
#include "oak/platform/Console.h"

namespace oak::tests {

/// Made empty, removed with its contents in the end.
class TTempFolder {
 public:
  TTempFolder() {
    static std::atomic<int> last{0};
    // Several test programs may run at once.
    const auto now = std::chrono::steady_clock::now().time_since_epoch().count();
    do {
      fRoot = std::filesystem::temp_directory_path() /
              ("oak-framework-" + std::to_string(now) + "-" + std::to_string(++last));
    } while (!std::filesystem::create_directories(fRoot));
  }
  ~TTempFolder() {
    std::error_code ignored;
    std::filesystem::remove_all(fRoot, ignored);
  }
  TTempFolder(const TTempFolder&) = delete;
  TTempFolder& operator=(const TTempFolder&) = delete;

  /// The path of a file as the library sees it.
  TString Path(const std::string& name) const { return PathFromArgument(Native(name).string()); }
  std::filesystem::path Native(const std::string& name) const { return fRoot / name; }
  void Write(const std::string& name, std::string_view bytes) const {
    std::ofstream(Native(name), std::ios::binary) << bytes;
  }
  std::string Read(const std::string& name) const {
    std::ifstream file(Native(name), std::ios::binary);
    return std::string(std::istreambuf_iterator<char>(file), {});
  }
  int Count() const {
    return static_cast<int>(std::distance(std::filesystem::directory_iterator(fRoot),
                                          std::filesystem::directory_iterator()));
  }

 private:
  std::filesystem::path fRoot;
};

}  // namespace oak::tests
