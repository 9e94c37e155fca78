// Columns where the test needs a hand in the system: zones and failures.
#include <fcntl.h>
#include <gtest/gtest.h>
#include <sys/stat.h>

#include <map>

#include "oak/base/DateTime.h"
#include "oak/namespace/FolderTrek.h"
#include "oak/namespace/Oak.Shell.ShellColumns.h"
#include "oak/platform/portable/PortableConfig.h"
#include "oak/platform/portable/PortableFiles.h"
#include "testkit/CallCounter.h"
#include "testkit/FaultInjection.h"
#include "testkit/ScopedApi.h"
#include "tests/EmptyObjects.h"
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
  ~FolderTrekColumnsPortable() override {
    SetPortableConfig(std::shared_ptr<const TPortableConfig>());
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

TEST_F(FolderTrekColumnsPortable, DatesByIdentifierFollowTheUsersLanguage) {
  TPortableConfig config = *PortableConfig();
  config.Language = u"de-DE";
  SetPortableConfig(config);
  const timespec times[2] = {{0, UTIME_OMIT}, {1600000000, 600000000}};  // midnight in no zone
  ASSERT_EQ(utimensat(AT_FDCWD, NativePath(fFolder.Path(u"report.txt"))->c_str(), times, 0), 0);
  TVariant value;
  const TString text = fCursor.GetColumnText(TShellColumns::WriteTime(), false, value);
  EXPECT_EQ(text, FormatDateTime(u"dd.mm.yyyy hh:nn:ss", value.Get().date + 0.5 / 86400));
  fCursor.SetItemIdList(nullptr);
  fCursor.GetColumnText(TShellColumns::WriteTime(), false, value);
  EXPECT_TRUE(value.IsEmpty());  // nothing is left of the object before
}

TEST_F(FolderTrekColumnsPortable, ShortcutsTellTheirTargets) {
  fCursor.SetAbsoluteItemIdList(fCursor.AddLinkTo(fFolder.Path(), u"shortcut"));
  EXPECT_EQ(fCursor.GetColumnText(TShellColumns::ShortcutTarget(), false),
            fFolder.Path(u"report.txt"));
}

TEST_F(FolderTrekColumnsPortable, TheRecycleBinTellsWhereFromAndWhen) {
  fFolder.MakeFolder(u"trash\\files");
  fFolder.MakeFolder(u"trash\\info");
  for (const TStringView name : {u"trash\\files\\old", u"trash\\files\\stray"})
    fFolder.MakeFile(name);
  fFolder.MakeFile(u"trash\\info\\old.trashinfo",
                   "[Trash Info]\nPath=/here/old.txt\nDeletionDate=2020-01-02T03:04:05\n");
  TPortableConfig config = *PortableConfig();
  config.Language = u"en-US";
  config.Trash = NativePath(fFolder.Path(u"trash")).value();
  SetPortableConfig(config);
  fCursor.SetSpecialFolder(SF_BITBUCKET);
  std::map<TString, TString> rows;
  while (fCursor.Next()) {
    TString& row = rows[fCursor.GetColumnText(0, false)];
    for (const int column : {1, 2}) row += u"|" + fCursor.GetColumnText(column, false);
    row += fCursor.GetColumnText(TShellColumns::Owner(), false).empty() ? u"|nobody" : u"|";
  }
  EXPECT_EQ(rows, (std::map<TString, TString>{{u"old.txt", u"|C:\\here|1/2/2020 3:04 AM|"},
                                              {u"stray", u"|||"}}));
  EXPECT_EQ(fCursor.GetColumnText(1, true), u"Original location");
}

TEST_F(FolderTrekColumnsPortable, WhatFailsIsNotSearchedFor) {
  const int size = fCursor.GetIndexOfShColumnId(TShellColumns::Size());
  ASSERT_TRUE(Api().DeleteFileW(W(fFolder.Path(u"report.txt"))));
  {
    const testkit::TCallCounter calls;
    EXPECT_EQ(fCursor.GetColumnText(size, false), u"");
    EXPECT_EQ(calls.Count("IShellFolder2::MapColumnToSCID"), 1);
  }
  // A folder that can't be bound is not bound again for each number.
  int asked = 0;
  const TScopedApi dead(Api().SHCreateShellItem,
                        [&asked](PCIDLIST_ABSOLUTE, IShellFolder*, PCUITEMID_CHILD, IShellItem**) {
                          ++asked;
                          return E_FAIL;
                        });
  TFolderTrek cursor;
  EXPECT_THROW(cursor.SetFolder(fFolder.Path()), Exception);
  asked = 0;
  EXPECT_EQ(cursor.GetIndexOfShColumnId(TShellColumns::Size()), -1);
  EXPECT_EQ(asked, 1);
}

TEST_F(FolderTrekColumnsPortable, AFolderWithoutPlaceHasNoDates) {
  TFolderTrek bare;
  bare.SetShellfolder(MakeRef<TEmptyShellFolder>());
  bare.SetItemIdList(fCursor.GetItemIdList());
  EXPECT_TRUE(bare.GetIShellDetails());
  for (const TShellColumnId& column : {TShellColumns::ItemDate(), TShellColumns::WriteTime()})
    EXPECT_EQ(bare.GetColumnText(column, false), u"");
  EXPECT_EQ(bare.GetColumnText(1, true), u"");
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
