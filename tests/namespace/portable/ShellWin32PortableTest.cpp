// Names of properties, and queries made of them.
#include <gtest/gtest.h>

#include <cstring>

#include "oak/namespace/Oak.Shell.Types.h"
#include "oak/namespace/Shell_Win32.h"
#include "testkit/ScopedApi.h"

namespace oak {
namespace {

TEST(PortableColumns, AreFoundByNameAndLabel) {
  for (const TShellColumnId& column : {TShellColumns::Name(), TShellColumns::Size(),
                                       TShellColumns::WriteTime(), TShellColumns::ElementType()}) {
    ASSERT_NE(column.ToString(), u"");
    EXPECT_EQ(TShellColumnId::FromString(column.ToString()), column) << ToUtf8(column.ToString());
    EXPECT_EQ(TShellColumnId::FromString(UpperCase(column.DisplayName())), column)
        << ToUtf8(column.DisplayName());
  }
  EXPECT_EQ(TShellColumns::WriteTime().GetDisplayType(), PDDT_DATETIME);
}

TEST(SearchOptions, BecomeAQuery) {
  const testkit::TScopedApi dates(
      Api().GetDateFormatW, [](LCID, DWORD, const SYSTEMTIME* date, LPCWSTR, LPWSTR buffer, int) {
        const TString text =
            IntToStr(date->wDay) + u"." + IntToStr(date->wMonth) + u"." + IntToStr(date->wYear);
        std::memcpy(buffer, text.c_str(), (text.size() + 1) * sizeof(char16_t));
        return static_cast<int>(text.size() + 1);
      });
  TOakSearchOptions options;
  EXPECT_EQ(options.ToAQS(), u"*");
  options.SetMinFileSize(5'000'000'000);
  EXPECT_EQ(options.ToAQS(), u"System.Size:>=5000000000 *");
  options.SetMaxFileSize(0);
  options.SetCreationDateMin(EncodeDate(2024, 5, 1));
  options.SetCreationDateMax(EncodeDate(2024, 5, 2));
  options.SetAccessDateMin(EncodeDate(2024, 5, 3));
  options.SetAccessDateMax(EncodeDate(2024, 5, 4));
  options.SetLastWriteDateMin(EncodeDate(2024, 5, 5));
  options.SetLastWriteDateMax(EncodeDate(2024, 5, 6));
  options.SetFilter(u"a;b");
  EXPECT_EQ(options.ToAQS(),
            u"System.Size:>=5000000000 & System.Size:<=0 & "
            u"System.DateCreated:>=1.5.2024 & System.DateCreated:<=2.5.2024 & "
            u"System.DateAccessed:>=3.5.2024 & System.DateAccessed:<=4.5.2024 & "
            u"System.DateModified:>=5.5.2024 & System.DateModified:<=6.5.2024 a;b");
}

}  // namespace
}  // namespace oak
