// A directory as a folder of the shell: listing, names, attributes, parsing, order.
#include <set>

#include "NativeTree.h"
#include "WithoutRoot.h"
#include "oak/platform/portable/FileSystemSource.h"
#include "oak/platform/portable/PortableConfig.h"

namespace oak::tests {
namespace {

constexpr DWORD kAll =
    SHCONTF_FOLDERS | SHCONTF_NONFOLDERS | SHCONTF_INCLUDEHIDDEN | SHCONTF_INCLUDESUPERHIDDEN;

std::set<std::string> List(const Ref<IFolderSource>& source, DWORD flags) {
  std::set<std::string> names;
  Ref<IFolderCursor> cursor;
  EXPECT_EQ(source->Enumerate(flags, cursor), S_OK);
  PCUITEMID_CHILD element = nullptr;
  while (cursor && cursor->Next(&element) == S_OK)
    names.insert(NameToNative(NameOf(source, element)));
  return names;
}

DWORD AttributesOf(const Ref<IFolderSource>& source, TStringView name, DWORD mask) {
  DWORD attributes = 0;
  EXPECT_EQ(source->GetAttributes(Parse(source, name).Get(), mask, attributes), S_OK);
  return attributes & mask;
}

TEST(FileSystemFolder, ListsWhatTheFlagsAskFor) {
  const TNativeTree tree;
  tree.Folder("dir");
  tree.Folder(".hidden dir");
  tree.File("file");
  tree.File(".hidden");
  tree.Link("link to dir", "dir");
  tree.Link("link to file", "file");
  tree.Link("broken", "nowhere");
  tree.Link("loop", "loop");
  ASSERT_EQ(mkfifo(tree.Native("pipe").c_str(), 0666), 0);
  ASSERT_EQ(mkfifo(tree.Native(".pipe").c_str(), 0666), 0);
  const struct {
    DWORD Flags;
    std::set<std::string> Names;
  } cases[] = {{SHCONTF_FOLDERS, {"dir", "link to dir"}},
               {SHCONTF_NONFOLDERS, {"file", "link to file", "broken", "loop", "pipe"}},
               {SHCONTF_NONFOLDERS | SHCONTF_INCLUDEHIDDEN,
                {"file", ".hidden", "link to file", "broken", "loop", "pipe"}},
               {kAll,
                {"dir", ".hidden dir", "file", ".hidden", "link to dir", "link to file", "broken",
                 "loop", "pipe", ".pipe"}},
               {0, {}}};
  for (const auto& test : cases) EXPECT_EQ(List(tree.Source(), test.Flags), test.Names);
}

// More entries than one read of the directory delivers, half of them taken away
// while the walk is on.
TEST(FileSystemFolder, LargeListingsAreCompleteAndSurviveChanges) {
  const TNativeTree tree;
  const std::string filler(240, 'n');
  for (int i = 0; i < 600; ++i) tree.File(filler + std::to_string(i), "");
  const auto source = tree.Source();
  EXPECT_EQ(List(source, kAll).size(), 600u);
  Ref<IFolderCursor> cursor;
  ASSERT_EQ(source->Enumerate(kAll, cursor), S_OK);
  PCUITEMID_CHILD element = nullptr;
  ASSERT_EQ(cursor->Next(&element), S_OK);
  for (int i = 0; i < 600; i += 2) unlink(tree.Native(filler + std::to_string(i)).c_str());
  HRESULT result;
  while ((result = cursor->Next(&element)) == S_OK) {
  }
  EXPECT_EQ(result, S_FALSE);
}

TEST(FileSystemFolder, EnumerationTellsWhyItFails) {
  WithoutRoot([&] {
    const TNativeTree tree;
    Ref<IFolderCursor> cursor;
    tree.Folder("closed");
    ASSERT_EQ(chmod(tree.Native("closed").c_str(), 0), 0);
    EXPECT_EQ(tree.Source("closed")->Enumerate(kAll, cursor), Win32(ERROR_ACCESS_DENIED));
    chmod(tree.Native("closed").c_str(), 0700);
    EXPECT_EQ(tree.Source("missing")->Enumerate(kAll, cursor), Win32(ERROR_PATH_NOT_FOUND));
  });
}

TEST(FileSystemFolder, Attributes) {
  const TNativeTree tree;
  tree.Folder("empty");
  tree.Folder("parent");
  tree.Folder("parent/child");
  tree.Folder("linked");
  tree.Link("linked/child", "../empty");
  tree.File("file");
  tree.File("a.lnk");
  tree.File(".rc");
  tree.File("frozen");
  ASSERT_EQ(chmod(tree.Native("frozen").c_str(), 0444), 0);
  tree.Link("to parent", "parent");
  tree.Link("broken", "nowhere");
  ASSERT_EQ(mkfifo(tree.Native("pipe").c_str(), 0666), 0);
  const auto source = tree.Source();
  constexpr DWORD mask = SFGAO_FOLDER | SFGAO_STREAM | SFGAO_LINK | SFGAO_HIDDEN | SFGAO_READONLY |
                         SFGAO_HASSUBFOLDER | SFGAO_FILESYSTEM | SFGAO_SYSTEM;
  const struct {
    TStringView Name;
    DWORD Expected;
  } cases[] = {{u"empty", SFGAO_FOLDER},
               {u"parent", SFGAO_FOLDER | SFGAO_HASSUBFOLDER},
               {u"linked", SFGAO_FOLDER | SFGAO_HASSUBFOLDER},
               {u"file", SFGAO_STREAM},
               {u"a.lnk", SFGAO_STREAM | SFGAO_LINK},
               {u".rc", SFGAO_STREAM | SFGAO_HIDDEN},
               {u"frozen", SFGAO_STREAM | SFGAO_READONLY},
               {u"to parent", SFGAO_FOLDER | SFGAO_HASSUBFOLDER},
               {u"broken", SFGAO_STREAM},
               {u"pipe", SFGAO_SYSTEM}};
  for (const auto& test : cases)
    EXPECT_EQ(AttributesOf(source, test.Name, mask), test.Expected | SFGAO_FILESYSTEM)
        << ToUtf8(test.Name);
}

TEST(FileSystemFolder, ParsesExactlyThenIgnoringCase) {
  const TNativeTree tree;
  tree.File("Both");
  tree.File("both");
  tree.Folder(
      "Gr\xC3\xBC\xC3\x9F"
      "e");
  const auto source = tree.Source();
  EXPECT_EQ(NameOf(source, Parse(source, u"both").Get()), u"both");
  EXPECT_EQ(NameOf(source, Parse(source, u"Both").Get()), u"Both");
  EXPECT_EQ(NameOf(source, Parse(source, u"GRÜßE").Get()), u"Grüße");
}

// Elements come from files and other processes: any bytes are answered.
TEST(FileSystemFolder, ForeignElementsAreRefused) {
  const TNativeTree tree;
  tree.File("secret");
  const auto source = tree.Source();
  const TPidl elements[] = {
      MakeFileElement(0, u"..\\secret"),         MakeFileElement(0, u"../secret"),
      MakeFileElement(feFolder, u".."),          MakeFileElement(feFolder, u"."),
      MakeFileElement(0, TString(u"a\0b", 3)),   MakeElement(ekFileSystem, 1, {}),
      MakeNameElement(ekDrive, 1, 0, u"secret"), MakeNameElement(ekFileSystem, 2, 0, u"secret")};
  for (const TPidl& element : elements) {
    TString name;
    DWORD attributes = 0;
    int order = 0;
    Ref<IFolderSource> child;
    Ref<IStream> stream;
    EXPECT_EQ(source->GetName(element.Get(), TNameForm::Display, name), E_INVALIDARG);
    EXPECT_EQ(source->GetAttributes(element.Get(), kAll, attributes), E_INVALIDARG);
    EXPECT_EQ(source->Open(element.Get(), child), E_INVALIDARG);
    EXPECT_EQ(source->OpenStream(element.Get(), STGM_READ, stream.Put()), E_INVALIDARG);
    EXPECT_EQ(source->Compare(0, element.Get(), element.Get(), order), E_INVALIDARG);
    EXPECT_EQ(source->Destroy(element.Get()), E_INVALIDARG);
  }
}

TEST(FileSystemFolder, Order) {
  const TNativeTree tree;
  tree.File("file 10");
  tree.File("file 9", std::string(5000, 'x'));
  tree.File("FILE 9");
  const auto source = tree.Source();
  const auto compare = [&](LPARAM what, TStringView a, TStringView b) {
    int order = 99;
    EXPECT_EQ(source->Compare(what, Parse(source, a).Get(), Parse(source, b).Get(), order), S_OK);
    return order < 0 ? -1 : order > 0 ? 1 : 0;
  };
  EXPECT_EQ(compare(0, u"file 9", u"file 10"), -1);
  EXPECT_EQ(compare(1, u"file 9", u"file 10"), 1);  // by size
  // Different objects are never equal, however they are shown.
  for (const LPARAM what : {LPARAM{0}, LPARAM{SHCIDS_CANONICALONLY}}) {
    EXPECT_NE(compare(what, u"file 9", u"FILE 9"), 0);
    EXPECT_EQ(compare(what, u"file 9", u"FILE 9"), -compare(what, u"FILE 9", u"file 9"));
  }
}

TEST(FileSystemFolder, OverlaysAndTips) {
  const TNativeTree tree;
  tree.Folder("shared");
  tree.Link("link", "shared");
  tree.File("a.lnk");
  tree.File("file.txt", std::string(2048, 'x'));
  const auto before = PortableConfig();
  ASSERT_TRUE(MapShare(u"server", u"share", tree.Native("shared")));
  const auto source = MakeFileSystemFolder(u"C:" + ReplaceAll(FromUtf8(tree.Root()), u"/", u"\\"));
  const auto overlay = [&](TStringView name) {
    int index = 0;
    return source->GetOverlayIndex(Parse(source, name).Get(), index) == S_OK ? index : 0;
  };
  EXPECT_EQ(overlay(u"shared"), 1);
  EXPECT_EQ(overlay(u"link"), 2);
  EXPECT_EQ(overlay(u"a.lnk"), 2);
  EXPECT_EQ(overlay(u"file.txt"), 0);
  TString tip;
  ASSERT_EQ(source->GetInfoTip(Parse(source, u"file.txt").Get(), tip), S_OK);
  EXPECT_TRUE(tip.starts_with(u"Type: TXT File\nSize: 2.00 KB\nDate modified: ")) << ToUtf8(tip);
  SetPortableConfig(before);
}

}  // namespace
}  // namespace oak::tests
