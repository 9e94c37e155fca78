#include <gtest/gtest.h>

#include "oak/base/Exceptions.h"
#include "oak/namespace/Oak.Shell.Types.h"
#include "testkit/ScopedApi.h"

namespace oak {
namespace {

using testkit::TScopedApi;

WIN32_FIND_DATAW Found(TStringView name, DWORD attributes = FILE_ATTRIBUTE_NORMAL,
                       std::uint64_t size = 0) {
  WIN32_FIND_DATAW data{};
  name.copy(reinterpret_cast<char16_t*>(data.cFileName),
            std::min<std::size_t>(name.size(), MAX_PATH));
  data.dwFileAttributes = attributes;
  data.nFileSizeHigh = static_cast<DWORD>(size >> 32);
  data.nFileSizeLow = static_cast<DWORD>(size);
  return data;
}

FILETIME Utc(int year, int month, int day) {
  return DateTimeToFileTime(EncodeDate(year, month, day));
}

/// A zone without daylight time: two hours east of UTC.
class TZone {
 public:
  TZone()
      : fZone(Api().GetTimeZoneInformation, [](TIME_ZONE_INFORMATION* zone) {
          *zone = {};
          zone->Bias = -120;
          return DWORD{TIME_ZONE_ID_UNKNOWN};
        }) {}

 private:
  TScopedApi<decltype(TApi::GetTimeZoneInformation)> fZone;
};

TEST(SearchOptions, FiltersBecomeSortedPatterns) {
  const struct {
    TString Filter;
    bool AutoWildcard;
    TStringArray Expected;
  } rows[] = {
      {u"*", true, {u"*"}},
      {u"b; a ;;*.txt;B", false, {u"*.txt", u"a", u"b"}},
      {u"x?z;plain", true, {u"*plain*", u"x?z"}},
      {u" ; ", true, {}},
  };
  for (const auto& row : rows) {
    TOakSearchOptions options;
    options.SetAutoWildcard(row.AutoWildcard);
    options.SetFilter(row.Filter);
    EXPECT_EQ(options.GetFilterList(), row.Expected) << ToUtf8(row.Filter);
    EXPECT_EQ(options.GetFilter(), row.Filter);
  }
}

TEST(SearchOptions, MatchesByNameKindSizeAndAttributes) {
  TOakSearchOptions options;
  options.SetFilter(u"*.txt");
  EXPECT_TRUE(options.Matches(Found(u"A.TXT"), u"C:\\dir\\"));
  EXPECT_FALSE(options.Matches(Found(u"a.doc"), u"C:\\dir\\"));
  EXPECT_FALSE(options.Matches(Found(u"h.txt", FILE_ATTRIBUTE_HIDDEN), u""));
  options.SetIncludeHidden(true);
  EXPECT_TRUE(options.Matches(Found(u"h.txt", FILE_ATTRIBUTE_HIDDEN), u""));

  options.Reset();
  EXPECT_FALSE(options.Matches(Found(u"."), u""));
  EXPECT_FALSE(options.Matches(Found(u"..", FILE_ATTRIBUTE_DIRECTORY), u""));
  EXPECT_TRUE(options.Matches(Found(TString(MAX_PATH, u'n')), u""));  // no terminator

  const WIN32_FIND_DATAW file = Found(u"f");
  const WIN32_FIND_DATAW folder = Found(u"d", FILE_ATTRIBUTE_DIRECTORY);
  const struct {
    TFilesFolders Kind;
    bool File, Folder;
  } kinds[] = {
      {ffFilesOnly, true, false}, {ffFoldersOnly, false, true}, {ffFilesAndFolders, true, true}};
  for (const auto& kind : kinds) {
    options.SetFilesAndFolders(kind.Kind);
    EXPECT_EQ(options.Matches(file, u""), kind.File) << kind.Kind;
    EXPECT_EQ(options.Matches(folder, u""), kind.Folder) << kind.Kind;
  }

  options.SetMinFileSize(0x1'0000'0000);
  options.SetMaxFileSize(0x1'0000'0001);
  EXPECT_FALSE(options.Matches(Found(u"f", 0, 0xFFFF'FFFF), u""));
  EXPECT_TRUE(options.Matches(Found(u"f", 0, 0x1'0000'0001), u""));
  EXPECT_FALSE(options.Matches(Found(u"f", 0, 0x1'0000'0002), u""));
  EXPECT_FALSE(options.Matches(folder, u""));  // the limits hold for folders, too

  options.Reset();
  options.SetFilter(u"C:\\dir\\*");
  EXPECT_FALSE(options.Matches(file, u"C:\\dir\\"));
  options.SetUseFullPathWhenComparing(true);
  EXPECT_TRUE(options.Matches(file, u"C:\\dir\\"));
  EXPECT_FALSE(options.Matches(file, u"D:\\"));
}

TEST(SearchOptions, DatesAreLocalAndInclusive) {
  const TZone zone;
  TOakSearchOptions options;
  options.SetLastWriteDateMin(EncodeDate(2024, 5, 2));
  options.SetLastWriteDateMax(EncodeDate(2024, 5, 3));
  // Local midnight lies two hours before that of UTC.
  const std::uint64_t begin = FileTimeToTicks(Utc(2024, 5, 2)) - 2 * 3600 * FileTimeTicksPerSecond;
  const std::uint64_t end = begin + FileTimeTicksPerDay;
  EXPECT_EQ(FileTimeToTicks(options.GetLastWriteDateMin_FileTime()), begin);
  EXPECT_EQ(FileTimeToTicks(options.GetLastWriteDateMax_FileTime()), end);

  WIN32_FIND_DATAW data = Found(u"f");
  const struct {
    std::uint64_t Time;
    bool Expected;
  } rows[] = {{begin - 1, false}, {begin, true}, {end, true}, {end + 1, false}};
  for (const auto& row : rows) {
    data.ftLastWriteTime = TicksToFileTime(row.Time);
    EXPECT_EQ(options.Matches(data, u""), row.Expected) << row.Time - begin;
  }

  // Up to one day after the epoch a limit is none.
  options.SetLastWriteDateMax(1.0);
  EXPECT_TRUE(options.Matches(data, u""));
  options.SetCreationDateMin(EncodeDate(2024, 1, 1));
  EXPECT_FALSE(options.Matches(data, u""));
  data.ftCreationTime = Utc(2024, 2, 1);
  EXPECT_TRUE(options.Matches(data, u""));
  options.SetAccessDateMax(EncodeDate(2024, 1, 1));
  data.ftLastAccessTime = Utc(2025, 1, 1);
  EXPECT_FALSE(options.Matches(data, u""));
}

TEST(SearchOptions, AreCopiedWholeAndReset) {
  TOakSearchOptions from;
  from.SetMaxFileSize(7);
  from.SetRecursiveSearch(false);
  from.SetAccessDateMin(40000.5);
  from.SetFilesAndFolders(ffFilesOnly);
  from.SetAutoWildcard(false);
  from.SetFilter(u"x");
  from.SetUseFullPathWhenComparing(true);
  TOakSearchOptions to;
  to.Assign(&from);
  EXPECT_EQ(to.GetMaxFileSize(), 7);
  EXPECT_FALSE(to.GetRecursiveSearch());
  EXPECT_EQ(to.GetAccessDateMin(), 40000.5);
  EXPECT_EQ(to.GetFilesAndFolders(), ffFilesOnly);
  EXPECT_EQ(to.GetFilterList(), TStringArray{u"x"});
  EXPECT_TRUE(to.GetUseFullPathWhenComparing());

  to.Reset();
  EXPECT_EQ(to.ToAQS(), u"*");
  EXPECT_EQ(to.GetFilterList(), TStringArray{u"*"});
  EXPECT_TRUE(to.GetRecursiveSearch() && to.GetAutoWildcard());
  to.SetFilter(u"");
  EXPECT_EQ(to.GetFilter(), u"*");
  EXPECT_THROW(to.Assign(nullptr), EConvertError);
}

}  // namespace
}  // namespace oak
