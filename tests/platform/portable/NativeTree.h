// A native directory of the test's own, with names of any bytes.
#pragma once

#include <ftw.h>
#include <gtest/gtest.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <string>

#include "oak/platform/portable/PortableFiles.h"
#include "oak/platform/portable/PortableShell.h"

namespace oak::tests {

class TNativeTree {
 public:
  TNativeTree() {
    std::string pattern = ::testing::TempDir() + "oak-tree-XXXXXX";
    fRoot = mkdtemp(pattern.data());
  }
  ~TNativeTree() { nftw(fRoot.c_str(), &Remove, 16, FTW_DEPTH | FTW_PHYS); }
  TNativeTree(const TNativeTree&) = delete;
  TNativeTree& operator=(const TNativeTree&) = delete;

  const std::string& Root() const { return fRoot; }
  std::string Native(const std::string& name) const { return fRoot + "/" + name; }
  TString Path(const std::string& name = {}) const {
    return WindowsPath(name.empty() ? fRoot : Native(name));
  }
  void File(const std::string& name, const std::string& text = "text") const {
    std::ofstream(Native(name), std::ios::binary) << text;
  }
  void Folder(const std::string& name) const { ASSERT_EQ(mkdir(Native(name).c_str(), 0777), 0); }
  void Link(const std::string& name, const std::string& target) const {
    ASSERT_EQ(symlink(target.c_str(), Native(name).c_str()), 0);
  }
  bool Exists(const std::string& name) const {
    struct stat info;
    return lstat(Native(name).c_str(), &info) == 0;
  }
  std::string Text(const std::string& name) const {
    std::ifstream file(Native(name), std::ios::binary);
    return {std::istreambuf_iterator<char>(file), std::istreambuf_iterator<char>()};
  }
  Ref<IFolderSource> Source(const std::string& name = {}) const {
    return MakeFileSystemFolder(Path(name));
  }

 private:
  static int Remove(const char* path, const struct stat*, int, struct FTW*) {
    return ::remove(path);
  }
  std::string fRoot;
};

inline struct stat StatOf(const std::string& path) {
  struct stat info {};
  EXPECT_EQ(::lstat(path.c_str(), &info), 0) << path;
  return info;
}

/// A directory on another device than the tests' own, if the machine has one.
class TOtherDevice {
 public:
  TOtherDevice() {
    std::string pattern = "/dev/shm/oak-device-XXXXXX";
    if (mkdtemp(pattern.data())) fRoot = pattern;
  }
  ~TOtherDevice() {
    std::error_code ignored;
    if (!fRoot.empty()) std::filesystem::remove_all(fRoot, ignored);
  }
  bool IsOther(const std::string& than) const {
    return !fRoot.empty() && StatOf(fRoot).st_dev != StatOf(than).st_dev;
  }
  std::string Native(const std::string& name) const { return fRoot + "/" + name; }

 private:
  std::string fRoot;
};

/// The element of an existing object; fails the test if there is none.
inline TPidl Parse(const Ref<IFolderSource>& source, TStringView name) {
  TPidl element;
  EXPECT_EQ(source->ParseName(name, {}, element), S_OK) << ToUtf8(name);
  return element;
}

inline TString NameOf(const Ref<IFolderSource>& source, PCUITEMID_CHILD element,
                      TNameForm form = TNameForm::Parsing) {
  TString name;
  EXPECT_EQ(source->GetName(element, form, name), S_OK);
  return name;
}

constexpr HRESULT Win32(DWORD code) { return HRESULT_FROM_WIN32(code); }

}  // namespace oak::tests
