// The cursor on real folders: the same on every shell.
#include "oak/namespace/FolderTrek.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <set>

#include "oak/namespace/OakItemIdList.h"
#include "tests/MessageOf.h"
#include "tests/namespace/TestFolder.h"

namespace oak {
namespace {

using ::testing::ElementsAre;
using tests::MessageOf;
using tests::TTestFolder;

Ref<IItemIdList> ItemOf(const TTestFolder& folder, TStringView name = {}) {
  return TOakItemIdList::Create(folder.Path(name));
}

std::multiset<TString> NamesIn(TFolderTrek& cursor) {
  std::multiset<TString> names;
  while (cursor.Next()) names.insert(cursor.GetObjectName());
  return names;
}

// --- functions on paths -------------------------------------------------------

TEST(FolderTrekPaths, AreJudgedByTheirText) {
  struct TCase {
    const char16_t* Path;
    bool IsDrive, IsAbsolute, IsUnc, IsServer;
  };
  const TCase cases[] = {
      {u"", false, false, false, false},
      {u"C:", true, true, false, false},
      {u"C:\\x", false, true, false, false},
      {u"C:\\\\", false, true, false, false},
      {u"1:\\x", false, false, false, false},
      {u"\\\\server", false, true, false, true},
      {u"\\\\server\\share", true, true, true, false},
      {u"\\\\server\\share\\x", false, true, true, false},
      {u"\\\\*", false, false, false, false},
      {u"\\\\?\\unc\\s\\h", true, true, true, false},
      {u"\\x", false, false, false, false},
  };
  for (const TCase& c : cases) {
    SCOPED_TRACE(ToUtf8(c.Path));
    EXPECT_EQ(IsDrive(c.Path), c.IsDrive);
    EXPECT_EQ(IsAbsolutePath(c.Path), c.IsAbsolute);
    EXPECT_EQ(IsUNCPath(c.Path), c.IsUnc);
    EXPECT_EQ(IsUncServer(c.Path), c.IsServer);
  }
}

TEST(FolderTrekPaths, ProtocolsAndSearches) {
  EXPECT_TRUE(IsProtocolPath(u"http://x"));
  EXPECT_TRUE(IsProtocolPath(u"\"ftp\"://x"));
  EXPECT_FALSE(IsProtocolPath(u"\"ft\":x"));
  EXPECT_FALSE(IsProtocolPath(u"C:\\x"));
  EXPECT_FALSE(IsProtocolPath(u"::{0}"));
  EXPECT_TRUE(IsSearchFolderPath(u"  'Search-MS:query=x'"));
  EXPECT_FALSE(IsSearchFolderPath(u"x search-ms:"));
}

TEST(FolderTrekPaths, Compared) {
  EXPECT_TRUE(SamePath(u"C:\\Ä\\", u"c:\\ä"));
  EXPECT_FALSE(SamePath(u"C:\\a\\\\", u"C:\\a"));
  EXPECT_TRUE(HasFileExtension(u"C:\\a\\b.TXT\\", u"txt"));
  EXPECT_FALSE(HasFileExtension(u"C:\\a.txt\\b", u".txt"));
  EXPECT_LT(CompareFilenames(u"a2", u"A10"), 0);
}

// --- filter -------------------------------------------------------------------

TEST(FolderTrekFilter, LetsFoldersAndMatchesPass) {
  TTestFolder folder;
  folder.MakeFolder(u"sub.dir");
  for (const char16_t* name : {u"a.txt", u"B.TXT", u"c.md", u"noext"}) folder.MakeFile(name);
  struct TCase {
    const char16_t* Filter;
    std::multiset<TString> Names;
  };
  const TCase cases[] = {
      {u"*", {u"sub.dir", u"a.txt", u"B.TXT", u"c.md", u"noext"}},
      {u"*.txt", {u"sub.dir", u"a.txt", u"B.TXT"}},
      {u"*.txt;*.md", {u"sub.dir", u"a.txt", u"B.TXT", u"c.md"}},
      {u"*.", {u"sub.dir", u"noext"}},
      {u"*.*", {u"sub.dir", u"a.txt", u"B.TXT", u"c.md"}},
      {u";", {u"sub.dir"}},
  };
  for (const TCase& c : cases) {
    TFolderTrek cursor;
    cursor.SetFilter(c.Filter);
    EXPECT_EQ(cursor.GetFilter(), TStringView(c.Filter) == u";" ? u"" : c.Filter);
    cursor.SetFolderIdList(ItemOf(folder));
    EXPECT_EQ(NamesIn(cursor), c.Names) << ToUtf8(c.Filter);
  }
}

// --- enumeration --------------------------------------------------------------

TEST(FolderTrek, FetchesEveryObjectOnce) {
  TTestFolder folder;
  TFolderTrek empty;
  empty.SetFolderIdList(ItemOf(folder));
  EXPECT_FALSE(empty.Next());

  folder.MakeFile(u"one.txt", "12345");
  folder.MakeFolder(u"two");
  TFolderTrek cursor;
  const Ref<IItemIdList> item = ItemOf(folder);
  cursor.SetFolderIdList(item);
  EXPECT_EQ(NamesIn(cursor), (std::multiset<TString>{u"one.txt", u"two"}));
  EXPECT_FALSE(cursor.GetObjectName().empty()) << "the last object stays the current one";
  EXPECT_FALSE(cursor.Next()) << "the end doesn't begin anew";
  cursor.SetFolderIdList(item);
  EXPECT_FALSE(cursor.GetAbsoluteItemIdList()->Depth() > item->Depth()) << "no current object";
  EXPECT_EQ(NamesIn(cursor).size(), 2u) << "setting the folder starts over";
}

TEST(FolderTrek, AnswersForTheCurrentObject) {
  TTestFolder folder;
  folder.MakeFile(u"one.txt", "12345");
  folder.MakeFolder(u"two");
  folder.MakeFolder(u"two\\three");
  TFolderTrek cursor;
  cursor.SetFolder(folder.Path());
  cursor.SetObjectName(u"one.txt");
  EXPECT_FALSE(cursor.IsFolder());
  EXPECT_EQ(cursor.GetFileSize(), 5);
  EXPECT_EQ(cursor.GetFullPath(), folder.Path(u"one.txt"));
  EXPECT_EQ(cursor.GetShellObjectName(true), u"one.txt");
  EXPECT_TRUE(cursor.CanRename());
  EXPECT_FALSE(cursor.HasSubFolders());
  EXPECT_THAT(cursor.GetListOfPaths(), ElementsAre(folder.Path(u"one.txt")));
  EXPECT_FALSE(cursor.IsDrive());
  EXPECT_TRUE(cursor.IsFileSystemFolder());

  cursor.SetObjectName(u"TWO");
  EXPECT_TRUE(cursor.IsFolder());
  EXPECT_TRUE(cursor.HasSubFolders());
  EXPECT_TRUE(cursor.BrowseObject());
  EXPECT_EQ(cursor.GetFolder(), folder.Path(u"two"));
  EXPECT_TRUE(cursor.Next());
  EXPECT_EQ(cursor.GetObjectName(), u"three");
  cursor.SelectParent();
  EXPECT_EQ(cursor.GetFolder(), folder.Path());
  EXPECT_EQ(cursor.GetObjectName(), u"two");
}

TEST(FolderTrek, KeepsTheCallersItem) {
  TTestFolder folder;
  folder.MakeFile(u"one.txt");
  const Ref<IItemIdList> item = ItemOf(folder, u"one.txt");
  TFolderTrek cursor(item);
  EXPECT_EQ(cursor.GetAbsoluteItemIdList(), item);
  EXPECT_EQ(cursor.GetItemIdList()->Depth(), 1);
  EXPECT_EQ(cursor.GetFolder(), folder.Path());

  TFolderTrek copy(&cursor);
  EXPECT_EQ(copy.GetFolder(), folder.Path());
  EXPECT_TRUE(IsInvalid(copy.GetItemIdList())) << "the current object is not copied";

  cursor.SetAbsoluteItemIdList(TOakItemIdList::CreateForSpecialFolder(SF_DESKTOP, true));
  EXPECT_EQ(cursor.GetSpecialFolder(), SF_DESKTOP);
  EXPECT_TRUE(IsInvalid(cursor.GetItemIdList())) << "the desktop lies in no folder";
}

// --- failures -----------------------------------------------------------------

TEST(FolderTrekFailures, SayWhatWasWrong) {
  TTestFolder folder;
  TFolderTrek cursor;
  EXPECT_EQ(MessageOf([&] { cursor.SetAbsoluteItemIdList(nullptr); }),
            u"\"nil\" is not a valid value that can be assigned to TFolderTrek.AbsoluteItemIdList");
  EXPECT_EQ(MessageOf([&] { cursor.SetObjectName(u"x"); }), u"No active folder was set.");
  EXPECT_EQ(MessageOf([&] { cursor.GetShellObjectName(true); }),
            u"TFolderTrek cannot return the current object's name if there is no current object.");
  EXPECT_EQ(MessageOf([&] { cursor.HasSubFolders(); }), u"No valid folder is currently assigned");
  EXPECT_EQ(MessageOf([&] { cursor.CanRename(); }),
            u"No valid shell objects is currently assigned in this instance of TFolderTrek");
  EXPECT_THROW(cursor.GetUIObject(IID_IUnknown), EInvalidOperation);
  EXPECT_EQ(cursor.GetInfoTip(false), u"");
  EXPECT_EQ(cursor.GetAttributes(SFGAO_FOLDER), 0u);
  EXPECT_EQ(cursor.GetOverlayIndex(), -1);
  EXPECT_EQ(cursor.GetLastChangeDate(), 0);

  folder.MakeFile(u"one.txt");
  cursor.SetFolder(folder.Path());
  cursor.SetObjectName(u"one.txt");
  EXPECT_EQ(MessageOf([&] { cursor.SetObjectName(u""); }), u"Cannot find Object with empty name");
  EXPECT_TRUE(IsInvalid(cursor.GetItemIdList()));
  EXPECT_EQ(MessageOf([&] { cursor.SetObjectName(u"missing"); }),
            u"Error: Cannot find Object \"missing\" in Folder \"" + folder.Path() + u"\"");
}

TEST(FolderTrekFailures, AnInvalidFolderLeavesTheCursorWhereItWas) {
  TTestFolder folder;
  folder.MakeFile(u"one.txt");
  TFolderTrek cursor;
  cursor.SetFolder(folder.Path());
  const Ref<IItemIdList> missing = ItemOf(folder, u"missing");
  try {
    cursor.SetFolderIdList(missing);
    FAIL() << "an invalid folder was accepted";
  } catch (const EFolderTrekError& error) {
    EXPECT_EQ(error.GetErrorCode(), 3u);
    EXPECT_TRUE(Contains(error.GetMessage(), u" Internal data: FPath: ")) << error.what();
  }
  EXPECT_EQ(cursor.GetFolder(), folder.Path());
  EXPECT_TRUE(cursor.Next());
  EXPECT_TRUE(EndsWith(MessageOf([&] { cursor.SetAbsoluteItemIdList(missing); }),
                       folder.Path(u"missing") + u"\r\n"));
}

}  // namespace
}  // namespace oak
