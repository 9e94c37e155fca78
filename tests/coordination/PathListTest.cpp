// Lists of paths and tests of path texts.
#include "oak/coordination/OakPathList.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cstring>

#include "oak/platform/Api.h"
#include "testkit/ScopedApi.h"
#include "tests/framework/TempFolder.h"

namespace oak {
namespace {

using ::testing::ElementsAre;

TEST(PathList, KeepsOneFormOfEachPath) {
  TOakPathList list;
  EXPECT_EQ(list.Add(u"C:\\a\\"), 0);
  EXPECT_EQ(list.Add(u""), -1) << "nothing to add";
  EXPECT_EQ(list.Add(u"C:\\"), 1);
  list.AddStrings({u"C:\\b\\*", u""});
  list.Insert(0, u"\\\\server\\share\\");
  list.SetText(list.GetText() + u"D:\\x\\\r\n\r\n");
  EXPECT_THAT(list.ToArray(),
              ElementsAre(u"\\\\server\\share\\", u"C:\\a", u"C:\\", u"C:\\b\\*", u"D:\\x"));
  EXPECT_EQ(list.IndexOfPath(u"c:\\A\\"), 1);
  EXPECT_EQ(list.IndexOfPath(u"C:"), 2);
  EXPECT_FALSE(list.ContainsPath(u"C:\\ab"));
  EXPECT_TRUE(list.Remove(u"c:\\a\\"));
  EXPECT_FALSE(list.Remove(u"C:\\a"));
  EXPECT_EQ(list.Remove(TStringList{u"D:\\X\\", u"E:\\", u"\\\\server\\share"}), 2);
  EXPECT_THAT(list.ToArray(), ElementsAre(u"C:\\", u"C:\\b\\*"));

  TOakPathList other;
  other.AddRange(TStringList{u"C:\\1", u"C:\\2", u"C:\\3", u"C:\\4"}, 1, 2);
  other.AddRange(TStringList{u"C:\\5"}, -3, 9);
  EXPECT_THAT(other.ToArray(), ElementsAre(u"C:\\2", u"C:\\3", u"C:\\5"));
  other.AddRange(other, 0, 2);
  EXPECT_EQ(other.GetCount(), 6);
  other.SetCheckIfExists(true);
  EXPECT_EQ(other.Add(u"C:\\no such\\file"), -1);
}

TEST(PathList, TellsOfEveryPathThatComesAndGoes) {
  TOakPathList list;
  std::vector<std::string> log;
  list.OnAdd = [&](TStringView path, int index) {
    log.push_back("+" + ToUtf8(path) + "@" + std::to_string(index));
  };
  list.OnRemove = [&](TStringView path, int index) {
    log.push_back("-" + ToUtf8(path) + "@" + std::to_string(index));
  };
  list.Add(u"C:\\a");
  list.AddStrings({u"C:\\b\\", u""});
  list.Insert(0, u"C:\\c");
  list.Put(1, u"C:\\d\\");
  list.Delete(0);
  EXPECT_THAT(log,
              ElementsAre("+C:\\a@0", "+C:\\b@1", "+C:\\c@0", "-C:\\a@1", "+C:\\d@1", "-C:\\c@0"));
  log.clear();
  list.Assign(std::make_unique<TOakPathList>(TStringArray{u"C:\\x"}).get());
  EXPECT_THAT(log, ElementsAre("-C:\\b@1", "-C:\\d@0", "+C:\\x@0")) << "emptied from its end";
}

TEST(PathList, KnowsNetworkPathsAsTheyChange) {
  TOakPathList list;
  EXPECT_FALSE(list.GetContainsNetworkPath());
  list.Add(u"\\\\server\\share\\x");
  EXPECT_TRUE(list.GetContainsNetworkPath());
  list.Put(0, u"C:\\x");
  const testkit::TScopedApi types(Api().GetDriveTypeW, [](LPCWSTR root) -> UINT {
    return FromW(root) == u"Z:\\" ? DRIVE_REMOTE : DRIVE_FIXED;
  });
  EXPECT_FALSE(list.GetContainsNetworkPath());
  list.Add(u"Z:\\x");
  EXPECT_TRUE(list.GetContainsNetworkPath());
  list.Clear();
  EXPECT_FALSE(list.GetContainsNetworkPath());
}

TEST(PathList, BuildsWhatFileOperationsTake) {
  TOakPathList list(TStringArray{u"C:\\a", u"D:\\"});
  const char16_t expected[] = u"C:\\a\0D:\\\0";  // and one more zero at the end
  EXPECT_EQ(std::memcmp(list.GetStringPointer(), expected, sizeof expected), 0);
  list.Clear();
  EXPECT_EQ(std::memcmp(list.GetStringPointer(), u"\0", 2 * sizeof(char16_t)), 0);

  TWideStringBuilder builder;
  builder.Append(u"ab");
  builder.Append(u"");
  builder.SetIncludeTrailingZeroCharacter(false);
  EXPECT_EQ(builder.GetSize(), 8u);
}

TEST(PathList, SplitsAndComparesPathsAsWholes) {
  TString name = u"?";
  EXPECT_EQ(TOakPathList::SplitPath(u"C:\\b", name), u"C:\\");
  EXPECT_EQ(name, u"b");
  EXPECT_EQ(TOakPathList::SplitPath(u"C:\\", name), u"C:\\");
  EXPECT_EQ(name, u"");
  EXPECT_THAT(TOakPathList::SplitPathByDelimiter(u"\\\\s\\h", u'\\'),
              ElementsAre(u"", u"", u"s", u"h"));
  EXPECT_TRUE(TOakPathList::IsSubPathOf(u"C:\\a\\", u"c:\\A\\b"));
  EXPECT_FALSE(TOakPathList::IsSubPathOf(u"C:\\a", u"C:\\ab"));
  EXPECT_FALSE(TOakPathList::IsSubPathOf(u"C:\\a", u"C:\\a\\"));
  EXPECT_TRUE(TOakPathList(TStringArray{u"C:\\a\\b", u"c:\\A\\c\\d"}).AllItemsSubpathOf(u"C:\\a"));
  EXPECT_FALSE(TOakPathList(TStringArray{u"C:\\a\\b", u"C:\\a"}).AllItemsSubpathOf(u"C:\\a"));
  EXPECT_FALSE(TOakPathList().AllItemsSubpathOf(u"C:\\a"));
  EXPECT_TRUE(TOakPathList::ShareSameRoot(TStringList{u"C:\\a", u"c:\\b"}));
  EXPECT_FALSE(TOakPathList::ShareSameRoot(TStringList{u"C:\\a", u"D:\\a"}));
  EXPECT_FALSE(TOakPathList::ShareSameRoot(TStringList{u"\\\\s\\1\\a", u"\\\\s\\2\\a"}));
  EXPECT_TRUE(TOakPathList::ShareSameRoot(TStringList{}));
}

}  // namespace
}  // namespace oak
