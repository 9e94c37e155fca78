// Ticking and unticking in a real tree of files.
#include "oak/coordination/OakSelectionList.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <thread>

#include "oak/namespace/OakItemIdList.h"
#include "testkit/CallCounter.h"
#include "testkit/FaultInjection.h"
#include "testkit/ScopedApi.h"
#include "tests/coordination/SelectionFixture.h"

namespace oak {
namespace {

using ::testing::ElementsAre;
using ::testing::IsEmpty;
using testkit::TScopedApi;
using tests::TSelectionFixture;
using TNames = std::vector<std::string>;

class SelectionList : public TSelectionFixture {};

// --- entries ---------------------------------------------------------------------

TEST_F(SelectionList, StandsForTheTreeWithAsFewEntriesAsCanBe) {
  struct TCase {
    const char* Steps;
    TNames Entries;
  };
  const TCase cases[] = {
      {"+A", {"A\\*"}},
      {"+A\\", {"A\\*"}},
      {"+a.txt", {"a.txt"}},
      {"+A +A\\x.txt +A\\B", {"A\\*"}},         // covered already
      {"+A\\x.txt +A\\B\\c.txt +A", {"A\\*"}},  // covers what was there
      {"+A -A", {}},
      {"+A\\x.txt +A\\B -A", {}},  // something below it
      {"+A -A\\x.txt", {"A\\y.txt", "A\\B\\*"}},
      {"+A -A\\B\\c.txt", {"A\\x.txt", "A\\y.txt", "A\\B\\d.txt", "A\\B\\C\\*"}},
      {"+A -A\\B\\C\\e.txt", {"A\\x.txt", "A\\y.txt", "A\\B\\c.txt", "A\\B\\d.txt"}},
      {"+A -A\\B\\c.txt +A\\B\\c.txt", {"A\\*"}},  // folds again, all the way
      {"+A -A\\x.txt -A\\y.txt +A\\y.txt +A\\x.txt", {"A\\*"}},
      {"+A\\B\\c.txt +A\\B\\d.txt", {"A\\B\\c.txt", "A\\B\\d.txt"}},
      {"+A\\B\\c.txt +A\\B\\d.txt +A\\B\\C\\e.txt", {"A\\B\\*"}},
      {"+A\\x.txt +A\\y.txt +A\\B\\c.txt +A\\B\\d.txt +A\\B\\C", {"A\\*"}},
      {"+A -a\\b\\C.TXT", {"a\\x.txt", "a\\y.txt", "a\\b\\d.txt", "a\\b\\C\\*"}},
      {"+AB +A -A\\B", {"AB\\*", "A\\x.txt", "A\\y.txt"}},  // a neighbour that begins alike
      {"+A\\x.txt -A\\x.txt -A\\x.txt", {}},
  };
  for (const TCase& c : cases) {
    list.Clear();
    Run(c.Steps);
    EXPECT_THAT(Entries(), ::testing::UnorderedElementsAreArray(c.Entries)) << c.Steps;
  }
}

TEST_F(SelectionList, AnswersForEveryPath) {
  struct TCase {
    const char* Path;
    TOakSelectionState State;
    bool IsSubItem;
  };
  Make("Z\\other.txt");
  Run("+A\\B +Z\\z.txt");
  for (const TCase& c : {TCase{"A\\B", ssChecked, false},
                         {"A\\B\\", ssChecked, false},
                         {"A\\B\\c.txt", ssChecked, true},
                         {"A\\B\\C", ssChecked, true},
                         {"a\\b\\C\\E.TXT", ssChecked, true},
                         {"A", ssGrayed, false},
                         {"Z", ssGrayed, false},
                         {"Z\\z.txt", ssChecked, false},
                         {"A\\x.txt", ssUnChecked, false},
                         {"AB", ssUnChecked, false},
                         {"missing", ssDisabled, false},
                         {"A\\B\\missing", ssDisabled, false}}) {
    bool isSubItem = !c.IsSubItem;
    EXPECT_EQ(list.PathSelected(Path(c.Path), isSubItem), c.State) << c.Path;
    EXPECT_EQ(isSubItem, c.IsSubItem) << c.Path;
    EXPECT_EQ(list.IsPIDLSelected(TOakItemIdList::Create(Path(c.Path)), isSubItem), c.State)
        << c.Path;
  }
  for (const char16_t* nothing : {u"", u".", u"..", u"*"})
    EXPECT_EQ(list.IsPathSelected(nothing), ssDisabled) << ToUtf8(nothing);
  EXPECT_EQ(list.IsPathSelected(ExtractFileDrive(Path("A")) + u"\\"), ssGrayed);
}

TEST_F(SelectionList, ComputerAndNetworkAreGrayedWhileSomethingOfThemIsSelected) {
  const auto stateOf = [&](TOakShellFolder place) {
    bool isSubItem = true;
    const auto state =
        list.IsPIDLSelected(TOakItemIdList::CreateForSpecialFolder(place, true), isSubItem);
    EXPECT_FALSE(isSubItem);
    return state;
  };
  bool isSubItem = true;
  EXPECT_EQ(list.IsPIDLSelected(nullptr, isSubItem), ssDisabled);
  EXPECT_EQ(stateOf(SF_DRIVES), ssDisabled);
  EXPECT_EQ(stateOf(SF_NETWORK), ssDisabled);
  Run("+A");
  EXPECT_EQ(stateOf(SF_DRIVES), ssGrayed);
  EXPECT_EQ(stateOf(SF_NETWORK), ssDisabled);
  EXPECT_FALSE(list.GetDifferentDrives());
  list.Clear();
  list.AddPathToSelection(u"\\\\no-such-server-4711\\share\\file");
  EXPECT_EQ(stateOf(SF_DRIVES), ssDisabled);
  EXPECT_EQ(stateOf(SF_NETWORK), ssGrayed);
  Run("+A");
  EXPECT_TRUE(list.GetDifferentDrives());
}

TEST_F(SelectionList, KeepsTheOrderAndTellsHowFarAPathWouldFold) {
  Run("+a.txt +Z +A\\x.txt +A\\B\\c.txt -Z +A");
  EXPECT_THAT(Entries(), ElementsAre("a.txt", "A\\*"));
  EXPECT_EQ(list.GetListItem(2), u"");
  EXPECT_EQ(list.ToString(), Path("a.txt") + u"\r\n" + Path("A\\*"));
  list.Clear();
  Run("+A\\x.txt +A\\B");
  EXPECT_EQ(list.CompletePathSelected(Path("A\\y.txt")), Path("A"));
  EXPECT_EQ(list.CompletePathSelected(Path("A\\B\\c.txt")), Path("A\\B")) << "y.txt is missing";
  EXPECT_EQ(list.CompletePathSelected(Path("Z\\")), Path("Z"));
  EXPECT_EQ(list.CompletePIDLSelected(TOakItemIdList::Create(Path("A\\y.txt"))), Path("A"));
  EXPECT_EQ(list.CompletePIDLSelected(nullptr), u"");
}

// --- what is not there ---------------------------------------------------------------

TEST_F(SelectionList, WhatIsAwayIsKeptAsItWas) {
  Run("+gone\\* +gone.txt +gone\\*");
  EXPECT_THAT(Entries(), ElementsAre("gone\\*", "gone.txt")) << "once each";
  EXPECT_THAT(invalid, ElementsAre(Path("gone\\*"), Path("gone.txt"), Path("gone\\*")));
  Make("gone");
  Make("gone\\inside.txt");
  EXPECT_EQ(list.IsPathSelected(Path("gone\\inside.txt")), ssChecked) << "it has come back";
  Run("-gone -gone.txt");
  EXPECT_THAT(Entries(), IsEmpty()) << "what is not there can be taken away";
  Run("+never\\* -never");
  EXPECT_THAT(Entries(), IsEmpty()) << "a folder by its name, too";

  list.SetRemoveInvalidPaths(true);
  invalid.clear();
  Run("+never +A");
  EXPECT_THAT(Entries(), ElementsAre("A\\*"));
  EXPECT_EQ(invalid.size(), 1u);
}

TEST_F(SelectionList, AFolderThatCannotBeReadStaysSelected) {
  Run("+A");
  {
    const TScopedApi next(Api().FindNextFileW, [](HANDLE, WIN32_FIND_DATAW*) -> BOOL {
      Api().SetLastError(ERROR_GEN_FAILURE);
      return FALSE;
    });
    Run("-A\\B\\c.txt");
  }
  EXPECT_THAT(Entries(), ElementsAre("A\\*")) << "its other children would be lost";
  EXPECT_THAT(invalid, ElementsAre(Path("A\\B\\")));
  Run("-A\\B\\c.txt");
  EXPECT_EQ(Entries().size(), 4u);
}

TEST_F(SelectionList, NothingIsLostWhateverFails) {
  // One call after the other fails: each change is done as a whole or not at all.
  const std::vector<TNames> before = {{"A\\*"},
                                      {"A\\B\\C\\*", "A\\B\\d.txt", "A\\x.txt", "A\\y.txt"}};
  const int unticked = testkit::SweepFaults(
      [&] {
        list.Clear();
        list.AddPathToSelection(Path("A"));
        list.RemovePathFromSelection(Path("A\\B\\c.txt"));
      },
      [&](const std::string& failed) {
        TNames entries = Entries();
        std::sort(entries.begin(), entries.end());
        // The addition of a path that could not be looked up keeps it as it was given.
        if (entries == TNames{"A"} || entries.empty()) return;
        EXPECT_THAT(before, ::testing::Contains(entries)) << failed;
      });
  EXPECT_GT(unticked, 5);

  const int ticked = testkit::SweepFaults(
      [&] {
        list.Clear();
        for (const char* name : {"A\\x.txt", "A\\y.txt", "A\\B"})
          list.AddPathToSelection(Path(name));
      },
      [&](const std::string& failed) {
        for (const char* name : {"A\\x.txt", "A\\y.txt"})
          EXPECT_EQ(list.IsPathSelected(Path(name)), ssChecked) << failed << " " << name;
      });
  EXPECT_GT(ticked, 5);
}

// --- events ----------------------------------------------------------------------------

TEST_F(SelectionList, TellsOnceOfEachChange) {
  const auto changesOf = [&](const char* steps) {
    changes = 0;
    Run(steps);
    return changes;
  };
  EXPECT_EQ(changesOf("+A"), 1);
  EXPECT_EQ(changesOf("+A +A\\x.txt -Z"), 0) << "nothing changed";
  EXPECT_EQ(changesOf("-A\\B\\c.txt"), 1) << "though many entries came";
  EXPECT_EQ(changesOf("+A\\B\\c.txt"), 1) << "though all folded";
  changes = 0;
  list.BeginUpdate();
  list.BeginUpdate();
  Run("+Z -A");
  list.EndUpdate();
  EXPECT_EQ(changes, 0);
  for (int i = 0; i < 2; ++i) list.EndUpdate();
  EXPECT_EQ(changes, 1);
  list.Clear();
  list.Clear();
  EXPECT_EQ(changes, 2);
}

TEST_F(SelectionList, HandlersMayChangeOrEndTheList) {
  list.OnChange = [&](TObject*) {
    list.OnChange = nullptr;
    list.AddPathToSelection(Path("Z"));
  };
  Run("+A");
  EXPECT_THAT(Entries(), ElementsAre("A\\*", "Z\\*"));

  auto ending = std::make_unique<TOakSelectionList>();
  ending->OnInvalidPath = [&](TOakBaseSelectionList*, TStringView) { ending.reset(); };
  ending->OnChange = [&](TObject*) { ADD_FAILURE() << "after its end"; };
  ending->SetPaths(TStringList{Path("gone"), Path("gone too"), Path("A")});
  EXPECT_FALSE(ending);
  ending = std::make_unique<TOakSelectionList>();
  ending->AddPathToSelection(Path("A"));
  ending->OnChange = [&](TObject*) { ending.reset(); };
  ending->Clear();
  EXPECT_FALSE(ending);
}

TEST_F(SelectionList, ManyTicksAtOnceReadTheFolderOnce) {
  constexpr int count = 300;
  Make("Many");
  for (int i = 0; i < count; ++i) Make("Many\\" + std::to_string(i) + ".txt");
  list.BeginUpdate();
  for (int i = 0; i + 1 < count; ++i)
    list.AddPathToSelection(Path("Many\\" + std::to_string(i) + ".txt"));
  const testkit::TCallCounter calls;
  list.EndUpdate();
  EXPECT_LE(calls.Count("FindNextFileW"), count + 3) << calls.ToString();
  EXPECT_EQ(list.GetCount(), count - 1) << "one is missing";
  Run("+Many\\299.txt");
  EXPECT_THAT(Entries(), ElementsAre("Many\\*"));
}

TEST_F(SelectionList, OthersMayAskWhileItChanges) {
  Run("+A");
  std::atomic<bool> stop{false};
  std::atomic<int> wrong{0};
  std::thread reader([&] {
    bool isSubItem = false;
    while (!stop) {
      // Covered by whatever entry there is at the moment.
      if (list.PathSelected(Path("A\\y.txt"), isSubItem) != ssChecked) ++wrong;
      list.IsUNCPathSelected();
    }
  });
  for (int i = 0; i < 200; ++i) Run("+A\\x.txt +Z -Z");
  stop = true;
  reader.join();
  EXPECT_EQ(wrong, 0);
}

// --- renaming, copying --------------------------------------------------------------------

TEST_F(SelectionList, FollowsRenamedObjects) {
  struct TCase {
    const char *From, *To;
    TNames Entries;
  };
  for (const TCase& c : {TCase{"A", "New", {"New\\B\\*", "New\\x.txt", "AB\\*", "a.txt"}},
                         {"A\\B", "A\\C", {"A\\C\\*", "A\\x.txt", "AB\\*", "a.txt"}},
                         {"A.TXT", "b.txt", {"A\\B\\*", "A\\x.txt", "AB\\*", "b.txt"}},
                         {"A\\B\\c.txt", "z", {"A\\B\\*", "A\\x.txt", "AB\\*", "a.txt"}},
                         {"a.txt", "A\\x.txt", {"A\\B\\*", "A\\x.txt", "AB\\*"}}}) {
    list.Clear();
    Run("+A\\B +A\\x.txt +AB +a.txt");
    changes = 0;
    list.PathWasRenamed(Path(c.From), Path(c.To));
    EXPECT_THAT(Entries(), ::testing::ElementsAreArray(c.Entries)) << c.From;
    EXPECT_EQ(changes, TStringView(FromUtf8(c.To)) == u"z" ? 0 : 1) << c.From;
  }
  list.PathWasRenamed(u"", u"x");
  EXPECT_EQ(list.GetCount(), 3);
}

// --- links -----------------------------------------------------------------------------

TEST_F(SelectionList, AFolderShortcutStandsForItsTarget) {
  Make("Link");
  Make("Link\\desktop.ini");
  ASSERT_TRUE(
      TShellLinkHelper::AddLinkTo(TOakItemIdList::Create(Path("A")), Path("Link"), u"target"));
  Run("+A");
  EXPECT_EQ(list.IsPathSelected(Path("Link")), ssDisabled);
  list.SetHandleShellLinks(true);
  EXPECT_EQ(list.IsPathSelected(Path("Link")), ssChecked);
  Run("-Link");
  EXPECT_THAT(Entries(), IsEmpty());
  Run("+Link");
  EXPECT_THAT(Entries(), ElementsAre("A\\*"));
}

}  // namespace
}  // namespace oak
