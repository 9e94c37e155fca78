// A real directory for one test, seen as the drive "T:".
#pragma once

#include "oak/platform/Api.h"
#include "oak/platform/portable/PortableConfig.h"
#include "tests/platform/portable/NativeTree.h"

namespace oak::test {

/// A text in a form that a failed expectation shows.
inline std::string Show(TStringView text) { return ToUtf8(text); }

class TSystemTest : public testing::Test {
 protected:
  TSystemTest() {
    TPortableConfig config = PortableConfigFromEnvironment();
    config.Drives = {{u'T', Root(), TPortableDriveKind::Fixed, u"Test", {}}};
    SetPortableConfig(config);
  }
  ~TSystemTest() override { SetPortableConfig(std::shared_ptr<const TPortableConfig>()); }

  const std::string& Root() const { return fTree.Root(); }
  std::string Native(const std::string& name) const { return fTree.Native(name); }
  void WriteFile(const std::string& name, const std::string& text = "x") const {
    fTree.File(name, text);
  }
  void MakeDirectory(const std::string& name) const {
    std::filesystem::create_directories(Native(name));
  }
  std::string ReadAll(const std::string& name) const { return fTree.Text(name); }

 private:
  const tests::TNativeTree fTree;
};

/// Clears the last error, makes the call, and gives the error it left.
template <class TCall>
DWORD ErrorAfter(TCall&& call) {
  Api().SetLastError(ERROR_SUCCESS);
  call();
  return Api().GetLastError();
}

}  // namespace oak::test
