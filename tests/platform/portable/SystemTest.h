// A real directory for one test, seen as the drive "T:".
#pragma once

#include <gtest/gtest.h>
#include <stdlib.h>

#include <filesystem>
#include <fstream>

#include "oak/platform/Api.h"
#include "oak/platform/portable/PortableConfig.h"
#include "oak/platform/portable/PortableFiles.h"

namespace oak::test {

/// A text in a form that a failed expectation shows.
inline std::string Show(TStringView text) { return ToUtf8(text); }

class TSystemTest : public testing::Test {
 protected:
  TSystemTest() {
    char name[] = "/tmp/oak-system-XXXXXX";
    fRoot = mkdtemp(name);
    TPortableConfig config = PortableConfigFromEnvironment();
    config.Drives = {{u'T', fRoot, TPortableDriveKind::Fixed, u"Test", {}}};
    SetPortableConfig(config);
  }
  ~TSystemTest() override {
    SetPortableConfig(std::shared_ptr<const TPortableConfig>());
    std::error_code ignored;
    std::filesystem::remove_all(fRoot, ignored);
  }

  const std::string& Root() const { return fRoot; }
  std::string Native(const std::string& name) const { return fRoot + "/" + name; }
  void WriteFile(const std::string& name, const std::string& text = "x") const {
    std::ofstream(Native(name), std::ios::binary) << text;
  }
  void MakeDirectory(const std::string& name) const {
    std::filesystem::create_directories(Native(name));
  }
  std::string ReadAll(const std::string& name) const {
    std::ifstream file(Native(name), std::ios::binary);
    return {std::istreambuf_iterator<char>(file), {}};
  }

 private:
  std::string fRoot;
};

/// Clears the last error, makes the call, and gives the error it left.
template <class TCall>
DWORD ErrorAfter(TCall&& call) {
  Api().SetLastError(ERROR_SUCCESS);
  call();
  return Api().GetLastError();
}

}  // namespace oak::test
