// Columns where the test needs a hand in the system: zones and failures.
#include <gtest/gtest.h>

#include "oak/namespace/FolderTrek.h"
#include "oak/namespace/Oak.Shell.ShellColumns.h"
#include "testkit/FaultInjection.h"
#include "testkit/ScopedApi.h"
#include "tests/namespace/TestFolder.h"

namespace oak::tests {
namespace {

using testkit::TScopedApi;

class FolderTrekColumnsPortable : public ::testing::Test {
 protected:
  FolderTrekColumnsPortable() {
    fFolder.MakeFile(u"report.txt", std::string(2000, 'x'));
    fCursor.SetFolder(fFolder.Path());
    EXPECT_TRUE(fCursor.Next());
  }

  TTestFolder fFolder;
  TFolderTrek fCursor;
};

TEST_F(FolderTrekColumnsPortable, DatesAreThoseOfTheUsersClock) {
  const auto dateIn = [this](LONG bias) {
    const TScopedApi zone(Api().GetTimeZoneInformation, [bias](TIME_ZONE_INFORMATION* info) {
      *info = {};
      info->Bias = bias;
      return DWORD{0};
    });
    return fCursor.GetColumnValue(TShellColumns::WriteTime()).Get().date;
  };
  EXPECT_NEAR(dateIn(-120) - dateIn(0), 120.0 / 1440, 1e-6);
  EXPECT_NEAR(dateIn(300) - dateIn(0), -300.0 / 1440, 1e-6);
  // A system that doesn't know its zone leaves the date as it is.
  const TScopedApi unknown(Api().GetTimeZoneInformation,
                           [](TIME_ZONE_INFORMATION*) { return DWORD{0xFFFFFFFF}; });
  EXPECT_EQ(fCursor.GetColumnValue(TShellColumns::WriteTime()).Get().date,
            fCursor.GetLastChangeDate());
}

TEST_F(FolderTrekColumnsPortable, FailingDetailsAreReplacedByTheValue) {
  const int size = fCursor.GetIndexOfShColumnId(TShellColumns::Size());
  const auto failing = [this, size](bool header) {
    const testkit::TFaultInjector fault(1, ERROR_GEN_FAILURE, "IShellFolder2::GetDetailsOf");
    return fCursor.GetColumnText(size, header);
  };
  EXPECT_EQ(failing(false), u"2 KB");  // whole kilobytes, as the property system writes sizes
  EXPECT_EQ(failing(true), u"");       // a caption has no other source
}

TEST_F(FolderTrekColumnsPortable, AStateThatIsNotToldHidesNothing) {
  const testkit::TFaultInjector fault(1, ERROR_GEN_FAILURE, "IShellFolder2::GetDefaultColumnState");
  int width = 0;
  fCursor.GetColumnInfo(fCursor.GetIndexOfShColumnId(TShellColumns::Attributes()), width);
  EXPECT_GT(width, 0);
}

TEST_F(FolderTrekColumnsPortable, EveryFailureGivesAnEmptyText) {
  testkit::SweepFaults([this] {
    for (int column = 0; column < 8; ++column) {
      fCursor.GetColumnText(column, false);
      fCursor.GetColumnText(column, true);
    }
    fCursor.GetColumnValue(TShellColumns::ItemDate());
    int width = 0;
    fCursor.GetColumnInfo(1, width);
  });
}

}  // namespace
}  // namespace oak::tests
