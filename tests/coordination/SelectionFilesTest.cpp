// Selections on disk: ini files, the walk over all files, folders that are made, and totals.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "oak/coordination/OakSelectionList.h"
#include "oak/framework/FileContent.h"
#include "tests/coordination/SelectionFixture.h"

namespace oak {
namespace {

using ::testing::ElementsAre;
using ::testing::IsEmpty;
using ::testing::UnorderedElementsAre;
using tests::TSelectionFixture;

class SelectionFiles : public TSelectionFixture {};

// --- ini file ----------------------------------------------------------------------

TEST_F(SelectionFiles, ComesBackFromAnIniFileAsItWas) {
  const char* const names[] = {"a=b.txt", "a=b=c.txt", "=.txt",      "a = b.txt", "x;y.txt",
                               "[z].txt", "ä ж.txt",   "q'uote.txt", "a.txt=.md", "a.txt"};
  for (const char* name : names) Make(name);
  Make("F=G");
  for (const char* name : names) list.AddPathToSelection(Path(name));
  Run("+F=G +gone\\* +Z");
  const auto expected = Entries();
  ASSERT_EQ(expected.size(), 13u);
  const TString file = Path("list.ini");
  list.SaveToIniFile(file, u"Selection");
  list.SaveToIniFile(file, u"Selection");
  Run("+A");
  list.SaveToIniFile(file, u"Other");
  Run("-A");
  changes = 0;
  TOakSelectionList other;
  other.LoadFromIniFile(file, u"selection");
  EXPECT_EQ(Relative(other.GetPaths().ToArray()), expected);
  list.LoadFromIniFile(file, u"Other");
  EXPECT_EQ(list.GetCount(), 14);
  EXPECT_EQ(changes, 1);
  list.LoadFromIniFile(file, u"nothing");
  EXPECT_TRUE(list.IsEmpty());
}

TEST_F(SelectionFiles, ReadsIniFilesOfOthers) {
  const TString file = Path("others.ini");
  const TString text = u"[First]\r\nC:\\no=\r\n; " + Path("b.txt") + u"=\r\n[Mine]\r\n" +
                       Path("a.txt") + u" = value\r\n\r\nno key\r\n; " + Path("b.txt") + u"=\r\n" +
                       Path("A\\*") + u"=\r\n[Last]\r\n" + Path("Z\\*") + u"=\r\n[mine]\r\n" +
                       Path("AB\\*") + u"=";
  ReplaceFileContent(file, ToUtf8(text));
  list.LoadFromIniFile(file, u"Mine");
  EXPECT_THAT(Entries(), ElementsAre("a.txt", "A\\*", "AB\\*"));
  EXPECT_THAT(invalid, IsEmpty());
}

TEST_F(SelectionFiles, AFileThatCannotBeReadOrWrittenChangesNothing) {
  Run("+A");
  EXPECT_THROW(list.SaveToIniFile(Path("no\\such\\folder.ini"), u"x"), EFileError);
  EXPECT_THROW(list.LoadFromIniFile(Path("A"), u"x"), EFileError) << "a folder";
  EXPECT_THAT(Entries(), ElementsAre("A\\*"));
}

// --- all files ---------------------------------------------------------------------

TEST_F(SelectionFiles, WalksOverAllSelectedFiles) {
  EXPECT_EQ(list.FindNext(), u"");
  list.ResetFindNext();
  Run("+a.txt +A +Empty +Z\\z.txt");
  EXPECT_THAT(Relative(list.GetListOfAllFiles()),
              UnorderedElementsAre("a.txt", "A\\x.txt", "A\\y.txt", "A\\B\\c.txt", "A\\B\\d.txt",
                                   "A\\B\\C\\e.txt", "Z\\z.txt"));
  TStringArray found;
  for (TString file = list.FindNext(); !file.empty(); file = list.FindNext()) found.push_back(file);
  EXPECT_EQ(found, list.GetListOfAllFiles());
  EXPECT_EQ(list.FindNext(), u"") << "the end stays the end";
  list.ResetFindNext();
  EXPECT_EQ(list.FindNext(), found.front());
  EXPECT_THAT(invalid, IsEmpty());
}

TEST_F(SelectionFiles, WhatCannotBeReadIsToldAndLeftOut) {
  Run("+gone.txt +gone\\* +A");
  invalid.clear();
  EXPECT_EQ(list.GetListOfAllFiles().size(), 5u);
  EXPECT_THAT(invalid, ElementsAre(Path("gone.txt"), Path("gone")));

  // A handler may begin anew, or end the list, in the middle of the walk.
  auto ending = TOakSelectionList::CreateCopy(list);
  ending->OnInvalidPath = [&](TOakBaseSelectionList*, TStringView) { ending->ResetFindNext(); };
  EXPECT_NE(ending->FindNext(), u"");
  ending->OnInvalidPath = [&](TOakBaseSelectionList*, TStringView) { ending.reset(); };
  EXPECT_NE(ending->FindNext(), u"");
  EXPECT_FALSE(ending);
}

TEST_F(SelectionFiles, EntersLinksOnlyIfWanted) {
  std::error_code error;
  std::filesystem::create_directory_symlink(Native("A"), Native("Z\\loop"), error);
  if (error) GTEST_SKIP() << "no links here";
  Run("+Z");
  EXPECT_THAT(Relative(list.GetListOfAllFiles()), ElementsAre("Z\\z.txt"));
  list.SetFollowReparsePoint(true);
  EXPECT_EQ(list.GetListOfAllFiles().size(), 6u);
}

// --- files and folders ---------------------------------------------------------------

TEST_F(SelectionFiles, MakesFoldersOfAnyLength) {
  EXPECT_THROW(OakForceDirectories(u""), EInvalidOperation);
  EXPECT_TRUE(OakForceDirectories(Path("A")));
  EXPECT_TRUE(OakForceDirectories(Path("n1\\n2\\n3\\")));
  EXPECT_TRUE(std::filesystem::is_directory(Native("n1\\n2\\n3")));
  EXPECT_FALSE(OakForceDirectories(Path("a.txt"))) << "a file stands in the way";
  EXPECT_FALSE(OakForceDirectories(Path("a.txt\\below")));

  TString deep = Path("n1");
  while (deep.size() < 300) deep += u"\\a folder of some length";
  EXPECT_TRUE(OakForceDirectories(deep));
  EXPECT_TRUE(TOakSelectionList::IsFolder(deep));
  EXPECT_FALSE(TOakSelectionList::IsFile(deep));
  EXPECT_TRUE(TOakSelectionList::CreateFile(deep + u"\\more\\file.txt"));
  EXPECT_TRUE(TOakSelectionList::IsFile(deep + u"\\more\\file.txt"));
  EXPECT_FALSE(TOakSelectionList::CreateFile(deep + u"\\more\\file.txt")) << "it is there already";
  TString entry = deep + u"\\";
  EXPECT_TRUE(TOakSelectionList::FormatSelectionPath(entry));
  EXPECT_EQ(entry, deep + u"\\*");
  list.AddPathToSelection(deep);
  EXPECT_EQ(list.GetListOfAllFiles().size(), 1u);
}

// --- totals ------------------------------------------------------------------------

/// Keeps what is to be counted until the test says what came out.
class SelectionTotals : public TSelectionFixture {
 protected:
  SelectionTotals() {
    FolderSizeJob() = [this](TFolderSizeRequest request) { jobs.push_back(std::move(request)); };
    list.SetCalculateSelectedFiles(true);
    list.OnCompletedCalculateFiles = [this](TObject*) { ++completed; };
  }
  ~SelectionTotals() override { FolderSizeJob() = nullptr; }

  void Finish(std::uint64_t size, int files, int folders, std::size_t number = 0) {
    ASSERT_LT(number, jobs.size());
    const TFolderSizeRequest job = std::move(jobs[number]);
    jobs.erase(jobs.begin() + static_cast<std::ptrdiff_t>(number));
    TFolderSizeRequest::TResult result{job.Token->IsCancellationRequested(), size, files, folders};
    job.OnWorkDone(result);
  }
  std::string Totals() const {
    return std::to_string(list.GetSize()) + " " + std::to_string(list.GetFileCount()) + " " +
           std::to_string(list.GetFolderCount());
  }

  std::vector<TFolderSizeRequest> jobs;
  int completed = 0;
};

TEST_F(SelectionTotals, AddsAndTakesAwayWhatWasCounted) {
  Run("+a.txt");
  EXPECT_EQ(Totals(), "7 1 0") << "a file is counted at once";
  EXPECT_EQ(completed, 1);
  Run("+A");
  ASSERT_EQ(jobs.size(), 1u);
  EXPECT_EQ(jobs[0].Path, Path("A"));
  EXPECT_EQ(Totals(), "7 1 0") << "not known yet";
  Finish(35, 5, 3);
  EXPECT_EQ(Totals(), "42 6 3");
  EXPECT_EQ(completed, 2);
  Run("-A\\B\\c.txt");
  EXPECT_EQ(jobs.at(0).Path, Path("A\\B\\c.txt"));
  Finish(7, 1, 0);
  EXPECT_EQ(Totals(), "35 5 2") << "the folder is not selected as a whole any more";
  Run("-a.txt");
  Finish(7, 1, 0);
  EXPECT_EQ(Totals(), "28 4 2");
  list.Clear();
  EXPECT_EQ(Totals(), "0 0 0");
}

TEST_F(SelectionTotals, AnEmptyListGivesUpWhatIsBeingCounted) {
  Run("+A -A");
  ASSERT_EQ(jobs.size(), 2u);
  EXPECT_TRUE(jobs[0].Token->IsCancellationRequested());
  completed = 0;
  Finish(35, 5, 3);
  Finish(35, 5, 3);
  EXPECT_EQ(Totals(), "0 0 0") << "what was given up counts nothing";
  EXPECT_EQ(completed, 2);
  Run("+Z");
  ASSERT_EQ(jobs.size(), 1u);
  EXPECT_FALSE(jobs[0].Token->IsCancellationRequested()) << "new work has a token of its own";
  Finish(7, 1, 0);
  Run("-Z");
  EXPECT_EQ(Totals(), "0 0 0") << "though the count that would take it off was given up";
  FolderSizeJob() = nullptr;
  EXPECT_THROW(TOakSelectionList().SetCalculateSelectedFiles(true), EInvalidOperation);
}

TEST_F(SelectionTotals, CountsMayEndInAnyOrder) {
  Run("+A -A\\B\\c.txt");
  Finish(7, 1, 0, 1);
  EXPECT_EQ(Totals(), "0 0 0") << "less than nothing is not shown";
  Finish(35, 5, 3);
  EXPECT_EQ(Totals(), "28 4 2");
}

TEST_F(SelectionTotals, ACountThatEndsAtOnceMayEndTheList) {
  auto ending = TOakSelectionList::CreateCopy(list);
  FolderSizeJob() = [](TFolderSizeRequest request) { request.OnWorkDone({}); };
  ending->OnCompletedCalculateFiles = [&](TObject*) { ending.reset(); };
  ending->BeginUpdate();
  ending->AddPathToSelection(Path("Z"));
  EXPECT_FALSE(ending);
}

TEST_F(SelectionTotals, ACountMayOutliveTheList) {
  auto ending = TOakSelectionList::CreateCopy(list);
  ending->AddPathToSelection(Path("A"));
  ASSERT_EQ(jobs.size(), 1u);
  ending.reset();
  EXPECT_TRUE(jobs[0].Token->IsCancellationRequested());
  Finish(1, 1, 1);
}

}  // namespace
}  // namespace oak
