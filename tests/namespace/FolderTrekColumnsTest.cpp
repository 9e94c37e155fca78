// Columns of real folders, by number and by identifier: the same on every shell.
#include <gtest/gtest.h>

#include <set>

#include "oak/base/Guid.h"
#include "oak/namespace/FolderTrek.h"
#include "oak/namespace/Oak.Shell.ControlHelper.h"
#include "oak/namespace/Oak.Shell.ShellColumns.h"
#include "oak/namespace/Oak.Shell.Types.ColumnInfo.h"
#include "oak/namespace/OakItemIdList.h"
#include "tests/namespace/TestFolder.h"

namespace oak::tests {
namespace {

TEST(ShellColumns, AreNamedByPublishedKeys) {
  struct TCase {
    TShellColumnId Column;
    const char16_t* FormatId;
    DWORD Pid;
  };
  // One of each block, at its edges, where a slip of the pen would not show elsewhere.
  const TCase cases[] = {
      {TShellColumns::Name(), u"{B725F130-47EF-101A-A5F1-02608C9EEBAC}", 10},
      {TShellColumns::ToName(), u"{E3E0584C-B788-4A5A-BB20-7F5A44C9ACDD}", 17},
      {TShellColumns::Keywords(), u"{F29F85E0-4FF9-1068-AB91-08002B27B3D9}", 5},
      {TShellColumns::InternalName(), u"{0CEF7D53-FA64-11D1-A203-0000F81FEDEE}", 5},
      {TShellColumns::Owner(), u"{9B174B33-40FF-11D2-A27E-00C04FC30871}", 4},
      {TShellColumns::Media_Composer(), u"{64440492-4C8B-11D1-8B70-080036B11A03}", 19},
      {TShellColumns::Image_VerticalSize(), u"{6444048F-4C8B-11D1-8B70-080036B11A03}", 4},
      {TShellColumns::Photo_ShutterSpeed(), u"{14B81DA1-0135-4D31-96D9-6CBFC9671A99}", 37377},
      {TShellColumns::Media_Duration(), u"{64440490-4C8B-11D1-8B70-080036B11A03}", 3},
      {TShellColumns::Music_TrackNumber(), u"{56A3372E-CE9C-11D2-9F0E-006097C686F6}", 7},
      {TShellColumnGroups::Audio(), u"{2804D469-788F-48AA-8570-71B9C187E138}", 100},
      {TShellColumnGroups::Video(), u"{BEBE0920-7671-4C54-A3EB-49FDDFC191EE}", 100},
  };
  for (const TCase& c : cases) {
    EXPECT_EQ(GuidToString(c.Column.FormatId), c.FormatId);
    EXPECT_EQ(c.Column.Pid, c.Pid) << ToUtf8(c.FormatId);
  }
  EXPECT_TRUE(TShellColumns::IsCustomColumnId(TShellColumns::CreateCustomId(7)));
  EXPECT_FALSE(TShellColumns::IsCustomColumnId(TShellColumns::Name()));
  EXPECT_FALSE(TShellColumns::IsEqualShellColumnId(TShellColumns::CreateCustomId(7),
                                                   TShellColumns::CreateCustomId(8)));
}

/// A directory with one file of 2000 bytes.
class FolderTrekColumns : public ::testing::Test {
 protected:
  FolderTrekColumns() {
    fFolder.MakeFile(u"report.txt", std::string(2000, 'x'));
    fCursor.SetFolder(fFolder.Path());
  }
  void StandOnFile() { ASSERT_TRUE(fCursor.Next()); }

  TTestFolder fFolder;
  TFolderTrek fCursor;
};

TEST_F(FolderTrekColumns, NumbersAndIdentifiersAreInverse) {
  std::set<int> found;
  for (const TShellColumnId& column : {TShellColumns::Name(), TShellColumns::Size(),
                                       TShellColumns::StorageType(), TShellColumns::WriteTime()}) {
    const int number = fCursor.GetIndexOfShColumnId(column);
    ASSERT_GE(number, 0);
    found.insert(number);
    EXPECT_EQ(fCursor.GetShColumnIdFromColumnNumber(number), column);
    EXPECT_NE(fCursor.GetColumnText(column, true), u"");
    EXPECT_EQ(fCursor.GetColumnText(column, true), fCursor.GetColumnText(number, true));
  }
  EXPECT_EQ(found.size(), 4u);
  EXPECT_EQ(fCursor.GetIndexOfShColumnId(TShellColumns::Invalid()), -1);
  EXPECT_EQ(fCursor.GetIndexOfShColumnId(TShellColumns::CreateCustomId(1)), -1);
  EXPECT_EQ(fCursor.GetIndexOfShColumnId(TShellColumns::OakDriveListFreePercentage()), 256);
  EXPECT_EQ(fCursor.GetShColumnIdFromColumnNumber(256),
            TShellColumns::OakDriveListFreePercentage());
  for (const int number : {-1, 255, 319, 5000})
    EXPECT_EQ(fCursor.GetShColumnIdFromColumnNumber(number), TShellColumns::Invalid()) << number;
  EXPECT_EQ(fCursor.GetSortColumn(), 0);
  TFolderTrek computer;
  computer.SetSpecialFolder(SF_DRIVES);
  const TString free = computer.GetColumnText(TShellColumns::FreeSize(), true);
  EXPECT_EQ(computer.GetColumnText(TShellColumns::OakDriveListFreePercentage(), true),
            u"% " + free);
}

TEST_F(FolderTrekColumns, AnObjectTellsItsTextsAndValues) {
  // Without an object there is nothing to tell, and nothing is raised.
  EXPECT_EQ(fCursor.GetColumnText(0, false), u"");
  EXPECT_EQ(fCursor.GetColumnText(1, false), u"");
  EXPECT_TRUE(fCursor.GetColumnValue(TShellColumns::Size()).IsEmpty());
  StandOnFile();
  EXPECT_EQ(fCursor.GetColumnText(0, false), fCursor.GetShellObjectName(true));
  EXPECT_EQ(fCursor.GetColumnText(-1, false), u"");
  EXPECT_EQ(fCursor.GetColumnText(300, false), u"");
  EXPECT_EQ(fCursor.GetColumnText(TShellColumns::Invalid(), false), u"");
  const int size = fCursor.GetIndexOfShColumnId(TShellColumns::Size());
  EXPECT_NE(fCursor.GetColumnText(size, false).find(u"KB"), TString::npos)
      << ToUtf8(fCursor.GetColumnText(size, false));
  TFolderTrek nowhere;
  EXPECT_FALSE(nowhere.GetIShellDetails());
  EXPECT_EQ(nowhere.GetColumnText(TShellColumns::Name(), true), u"");
  EXPECT_EQ(nowhere.GetDefaultColumnState(0), 0u);
}

TEST_F(FolderTrekColumns, WidthsFollowCharactersAndStates) {
  int shown = 0;
  for (int number = 0; number < 40; ++number) {
    if (!fCursor.GetShColumnIdFromColumnNumber(number).IsValid()) break;
    TColumnInfo info;
    fCursor.GetColumnInfo(number, info);
    int width = -1;
    const TAlignment alignment = fCursor.GetColumnInfo(number, width);
    EXPECT_EQ(width > 0, info.fVisibleByDefault) << number;
    EXPECT_EQ(width, info.fVisibleByDefault ? info.fWidth : 0) << number;
    EXPECT_EQ(alignment, info.fAlignment & LVCFMT_JUSTIFYMASK) << number;
    EXPECT_EQ(info.fTitle, fCursor.GetColumnText(number, true)) << number;
    shown += info.fVisibleByDefault ? 1 : 0;
  }
  EXPECT_GE(shown, 3);
  TColumnInfo name;
  fCursor.GetColumnInfo(0, name);
  EXPECT_EQ((name.fWidth - 100) % 8, 0);
  EXPECT_EQ(fCursor.GetColumnInfo(fCursor.GetIndexOfShColumnId(TShellColumns::Size()), name.fWidth),
            taRightJustify);
  int width = 0;
  EXPECT_EQ(fCursor.GetColumnInfo(5000, width), taLeftJustify);
  EXPECT_EQ(width, 120);
  TFolderTrek nowhere;
  try {
    nowhere.GetColumnInfo(0, name);
    FAIL() << "a cursor without a folder told of its columns";
  } catch (const EInvalidOperation& error) {
    EXPECT_EQ(error.GetMessage(), u"GetColumnInfo() can only be called if a valid folder was set.");
  }
}

}  // namespace
}  // namespace oak::tests
