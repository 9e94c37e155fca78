// What the portable shell answers to the small services.
#include <gtest/gtest.h>

#include "oak/namespace/Oak.Shell.Types.h"
#include "oak/namespace/Shell_Win32.h"

namespace oak {
namespace {

TEST(PortablePatterns, MeanWhatUsersExpect) {
  const struct {
    TStringView Name, Pattern;
    bool Expected;
  } rows[] = {
      {u"a.txt", u"*.*", true},
      {u"README", u"*.*", false},
      {u".hidden", u"*.*", true},
      {u"a.txt", u"a*.*", true},
      {u"README", u"*.", true},
      {u"a.txt", u"*.", false},
      {u"a.", u"*.", true},
      {u"Ä.TXT", u"ä.txt", true},
      {u"a.txt", u"*.doc; *.txt", true},
      {u"README", u"*.txt;*.*", false},
      {u"a.txt", u"?.txt", true},
      {u"", u"*", true},
      {u"x", u";", false},
  };
  for (const auto& row : rows)
    EXPECT_EQ(MatchPattern(row.Name, row.Pattern), row.Expected)
        << ToUtf8(row.Name) << " in " << ToUtf8(row.Pattern);
}

TEST(PortableColumns, AreFoundByNameAndLabel) {
  for (const TShellColumnId& column : {TShellColumns::Name(), TShellColumns::Size(),
                                       TShellColumns::WriteTime(), TShellColumns::ElementType()}) {
    ASSERT_NE(column.ToString(), u"");
    EXPECT_EQ(TShellColumnId::FromString(column.ToString()), column) << ToUtf8(column.ToString());
    EXPECT_EQ(TShellColumnId::FromString(UpperCase(column.DisplayName())), column)
        << ToUtf8(column.DisplayName());
  }
  EXPECT_EQ(TShellColumns::WriteTime().GetDisplayType(), PDDT_DATETIME);
  TOakSearchOptions options;
  options.SetMinFileSize(1);
  EXPECT_EQ(options.ToAQS(), u"System.Size:>=1 *");
}

}  // namespace
}  // namespace oak
