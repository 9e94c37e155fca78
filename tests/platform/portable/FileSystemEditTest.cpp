// Making, renaming and removing objects of a directory.
#include <sys/stat.h>

#include "NativeTree.h"
#include "WithoutRoot.h"

namespace oak::tests {
namespace {

// What is there stays as it is unless a file was to be replaced by a file.
TEST(FileSystemEdit, TakenNames) {
  const TNativeTree tree;
  tree.Folder("folder");
  tree.File("folder/inside");
  tree.File("file", "old");
  tree.File("outside", "outside");
  tree.Link("link", "outside");
  const auto source = tree.Source();
  const struct {
    TStringView Name;
    bool Folder, Replace;
    HRESULT Result;
  } cases[] = {{u"folder", true, false, STG_E_FILEALREADYEXISTS},
               {u"folder", true, true, S_OK},
               {u"folder", false, true, STG_E_FILEALREADYEXISTS},
               {u"file", false, false, STG_E_FILEALREADYEXISTS},
               {u"file", true, true, STG_E_FILEALREADYEXISTS},
               {u"link", false, true, STG_E_FILEALREADYEXISTS}};
  for (const auto& test : cases) {
    TPidl element;
    EXPECT_EQ(source->Create(test.Name, test.Folder, test.Replace, element), test.Result)
        << ToUtf8(test.Name);
  }
  EXPECT_TRUE(tree.Exists("folder/inside"));
  EXPECT_EQ(tree.Text("file"), "old");
  EXPECT_EQ(tree.Text("outside"), "outside");
  TPidl element;
  EXPECT_EQ(source->Create(u"file", false, true, element), S_OK);
  EXPECT_EQ(tree.Text("file"), "");
}

TEST(FileSystemEdit, ImpossibleNames) {
  const TNativeTree tree;
  tree.File("file");
  const auto source = tree.Source();
  const TPidl file = Parse(source, u"file");
  const std::pair<TString, DWORD> cases[] = {
      {u"", ERROR_INVALID_NAME},
      {u"..", ERROR_INVALID_NAME},
      {u"a/b", ERROR_INVALID_NAME},
      {u"a:b", ERROR_INVALID_NAME},
      {TString(u"a\0b", 3), ERROR_INVALID_NAME},
      {TString(256, u'x'), ERROR_FILENAME_EXCED_RANGE},
      {TString(128, u'ü'), ERROR_FILENAME_EXCED_RANGE}};  // 256 bytes
  for (const auto& [name, error] : cases) {
    TPidl element;
    EXPECT_EQ(source->Create(name, true, false, element), Win32(error)) << ToUtf8(name);
    EXPECT_EQ(source->Rename(file.Get(), name, TNameForm::Parsing, element), Win32(error))
        << ToUtf8(name);
  }
  TPidl element;
  EXPECT_EQ(source->Create(TString(255, u'x'), false, false, element), S_OK);
  EXPECT_EQ(tree.Source("missing")->Create(u"a", true, false, element),
            Win32(ERROR_PATH_NOT_FOUND));
}

TEST(FileSystemEdit, RenamingNeverReplaces) {
  const TNativeTree tree;
  tree.File("source", "source");
  tree.File("target", "target");
  tree.Folder("empty");
  tree.Link("broken", "nowhere");
  ASSERT_EQ(::link(tree.Native("source").c_str(), tree.Native("hard link").c_str()), 0);
  const auto source = tree.Source();
  const TPidl file = Parse(source, u"source");
  for (TStringView name : {u"target", u"empty", u"broken", u"hard link"}) {
    TPidl renamed;
    EXPECT_EQ(source->Rename(file.Get(), name, TNameForm::Parsing, renamed),
              Win32(ERROR_ALREADY_EXISTS))
        << ToUtf8(name);
  }
  EXPECT_EQ(tree.Text("source"), "source");
  EXPECT_EQ(tree.Text("target"), "target");
  TPidl renamed;
  tree.File("link.lnk");
  const TPidl link = Parse(source, u"link.lnk");
  EXPECT_EQ(source->Rename(link.Get(), u"renamed", TNameForm::Display, renamed), S_OK);
  EXPECT_EQ(NameOf(source, renamed.Get()), u"renamed.lnk");  // the ending is not shown
  unlink(tree.Native("source").c_str());
  EXPECT_EQ(source->Rename(file.Get(), u"any", TNameForm::Parsing, renamed),
            Win32(ERROR_FILE_NOT_FOUND));
}

TEST(FileSystemEdit, DestroysTreesButNothingBehindLinks) {
  const TNativeTree tree;
  tree.Folder("outside");
  tree.File("outside/precious");
  tree.Folder("tree");
  tree.Link("tree/link out", "../outside");
  tree.Link("tree/up", "..");
  tree.Link("tree/loop", "loop");
  tree.File("tree/.hidden");
  tree.File("tree/bad \xFF name");
  std::string deep = "tree";
  for (int i = 0; i < 60; ++i) {
    deep += "/d";
    tree.Folder(deep);
    tree.File(deep + "/file");
  }
  const std::string filler(200, 'n');  // several reads of the directory
  for (int i = 0; i < 400; ++i) tree.File("tree/" + filler + std::to_string(i), "");
  tree.Link("root link", "outside");
  const auto source = tree.Source();
  EXPECT_EQ(source->Destroy(Parse(source, u"tree").Get()), S_OK);
  EXPECT_FALSE(tree.Exists("tree"));
  EXPECT_EQ(source->Destroy(Parse(source, u"root link").Get()), S_OK);
  EXPECT_FALSE(tree.Exists("root link"));
  EXPECT_TRUE(tree.Exists("outside/precious"));
}

TEST(FileSystemEdit, WithoutRights) {
  WithoutRoot([&] {
    const TNativeTree tree;
    tree.Folder("closed");
    tree.File("closed/file");
    ASSERT_EQ(chmod(tree.Native("closed").c_str(), 0555), 0);
    const auto source = tree.Source("closed");
    const TPidl file = Parse(source, u"file");
    TPidl element;
    EXPECT_EQ(source->Create(u"new", true, false, element), Win32(ERROR_ACCESS_DENIED));
    EXPECT_EQ(source->Rename(file.Get(), u"new", TNameForm::Parsing, element),
              Win32(ERROR_ACCESS_DENIED));
    EXPECT_EQ(source->Destroy(file.Get()), Win32(ERROR_ACCESS_DENIED));
    EXPECT_EQ(tree.Source()->Destroy(Parse(tree.Source(), u"closed").Get()),
              Win32(ERROR_ACCESS_DENIED));
    EXPECT_TRUE(tree.Exists("closed/file"));
    chmod(tree.Native("closed").c_str(), 0755);
  });
}

}  // namespace
}  // namespace oak::tests
