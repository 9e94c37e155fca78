// A directory of the test's own.
#pragma once

#include "tests/framework/TempFolder.h"

namespace oak::tests {

/// Made empty, removed with its contents in the end. Names are relative, in
/// Windows form.
class TTestFolder {
 public:
  /// Path of the directory or of something in it, as the library sees it.
  TString Path(TStringView name = {}) const {
    const TString root = ExtractFileDir(fFolder.Path("x"));
    return name.empty() ? root : root + u"\\" + TString(name);
  }
  void MakeFile(TStringView name, std::string_view content = "content") const {
    std::ofstream(Native(name), std::ios::binary) << content;
  }
  void MakeFolder(TStringView name) const { std::filesystem::create_directories(Native(name)); }
  bool Exists(TStringView name) const { return std::filesystem::exists(Native(name)); }

 private:
  std::filesystem::path Native(TStringView name) const {
    return fFolder.Native("") / ReplaceAll(name, u"\\", u"/");
  }

  TTempFolder fFolder;
};

}  // namespace oak::tests
