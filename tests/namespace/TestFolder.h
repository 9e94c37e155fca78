// A directory of the test's own.
#pragma once

#include <filesystem>
#include <string_view>

#include "oak/base/Text.h"

namespace oak::tests {

/// Made empty, removed with its contents in the end. Names are relative, in
/// Windows form.
class TTestFolder {
 public:
  TTestFolder();
  ~TTestFolder();
  TTestFolder(const TTestFolder&) = delete;
  TTestFolder& operator=(const TTestFolder&) = delete;

  /// Path of the directory or of something in it, as the library sees it.
  TString Path(TStringView name = {}) const;
  void MakeFile(TStringView name, std::string_view content = "content") const;
  void MakeFolder(TStringView name) const;
  bool Exists(TStringView name) const;

 private:
  std::filesystem::path Native(TStringView name) const;

  std::filesystem::path fRoot;
};

/// The platform's own parts.
std::filesystem::path NativeName(TStringView name);
TString LibraryPath(const std::filesystem::path& native);

}  // namespace oak::tests
