// A selection list over a small tree of files.
#pragma once

#include <gtest/gtest.h>

#include <algorithm>
#include <sstream>

#include "oak/coordination/OakSelectionList.h"
#include "oak/namespace/Shell_Win32.h"
#include "tests/framework/TempFolder.h"

namespace oak::tests {

/// Names are relative to the folder of the test, in Windows form.
class TSelectionFixture : public ::testing::Test {
 protected:
  TSelectionFixture() {
    InitializeShell();  // shortcuts are objects of the system
    for (const char* name :
         {"A", "A\\B", "A\\B\\C", "AB", "Empty", "Z", "a.txt", "b.txt", "A\\x.txt", "A\\y.txt",
          "A\\B\\c.txt", "A\\B\\d.txt", "A\\B\\C\\e.txt", "AB\\n.txt", "Z\\z.txt"})
      Make(name);
    list.OnChange = [this](TObject*) { ++changes; };
    list.OnInvalidPath = [this](TOakBaseSelectionList* sender, TStringView path) {
      EXPECT_EQ(sender, &list);
      invalid.emplace_back(path);
    };
  }

  TString Root() const { return ExtractFileDir(folder.Path("x")); }
  TString Path(const std::string& name) const { return Root() + u"\\" + FromUtf8(name); }
  std::filesystem::path Native(std::string name) const {
    std::replace(name.begin(), name.end(), '\\', '/');
    return folder.Native("").parent_path() / name;
  }
  /// A file if the name has an extension, else a folder.
  void Make(const std::string& name, std::string_view content = "content") const {
    if (name.find('.') == std::string::npos)
      std::filesystem::create_directory(Native(name));
    else
      std::ofstream(Native(name), std::ios::binary) << content;
  }
  /// "+name" ticks, "-name" unticks; blanks between them.
  void Run(const std::string& steps) {
    std::istringstream words(steps);
    for (std::string word; words >> word;)
      if (word[0] == '+')
        list.AddPathToSelection(Path(word.substr(1)));
      else
        list.RemovePathFromSelection(Path(word.substr(1)));
  }
  /// The entries in their order.
  std::vector<std::string> Entries() const { return Relative(list.GetPaths().ToArray()); }
  std::vector<std::string> Relative(const TStringArray& paths) const {
    std::vector<std::string> names;
    const TString root = Root() + u"\\";
    for (const TString& path : paths)
      names.push_back(
          ToUtf8(path.starts_with(root) ? path.substr(root.size()) : u"(elsewhere) " + path));
    return names;
  }

  TTempFolder folder;
  TOakSelectionList list;
  int changes = 0;
  TStringArray invalid;
};

}  // namespace oak::tests
