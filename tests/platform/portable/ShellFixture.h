// A machine of its own for each test of the portable shell: drive C: and a user in
// a new temporary directory, a removable drive, a network drive and a server.
#pragma once

#include <gtest/gtest.h>

#include <filesystem>
#include <string>

#include "oak/base/Pidl.h"
#include "oak/base/Ref.h"
#include "oak/platform/Api.h"
#include "oak/platform/portable/PortableConfig.h"
#include "oak/platform/portable/PortableShell.h"

namespace oak {

class TShellTest : public testing::Test {
 protected:
  void SetUp() override;
  void TearDown() override;

  /// Makes a file below drive C:, by native relative path.
  void MakeFile(const std::string& path, const std::string& contents = "x");
  void MakeDirectory(const std::string& path);

  /// The list of a text, or nil; `result` receives the HRESULT.
  static TPidl Parse(TStringView text, HRESULT* result = nullptr);
  static Ref<IShellItem2> Item(TStringView text);
  static Ref<IShellFolder2> Folder(TStringView text);
  static Ref<IShellFolder> Desktop();
  /// "!" and the eight digits of the code on failure.
  static TString Name(const Ref<IShellItem2>& item, SIGDN form);
  static TString Name(TStringView text, SIGDN form) { return Name(Item(text), form); }
  static TString Name(IShellFolder* folder, PCUITEMID_CHILD child, SHGDNF flags);
  /// In-folder names of the objects of a folder, in the order in which they come.
  static TStringArray List(TStringView text, DWORD flags);

  std::filesystem::path fRoot;
};

inline constexpr DWORD AllObjects =
    SHCONTF_FOLDERS | SHCONTF_NONFOLDERS | SHCONTF_INCLUDEHIDDEN | SHCONTF_INCLUDESUPERHIDDEN;

/// UTF-8 for messages of failed tests.
inline std::string Show(TStringView text) { return ToUtf8(text); }

}  // namespace oak
