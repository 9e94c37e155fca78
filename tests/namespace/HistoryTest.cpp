// Back and forward.
#include "oak/namespace/Oak.Shell.History.h"

#include <gtest/gtest.h>

#include <limits>

#include "oak/namespace/OakItemIdList.h"
#include "tests/namespace/TestFolder.h"

namespace oak {
namespace {

using tests::TTestFolder;

class History : public ::testing::Test {
 protected:
  History() {
    for (char16_t name = u'a'; name <= u'h'; ++name) folder.MakeFolder(TString(1, name));
  }

  Ref<IItemIdList> Place(char16_t name) { return TOakItemIdList::Create(folder.Path({&name, 1})); }

  /// Runs steps: a letter adds that folder, "<2" and ">2" move, "=2" sets the position, "!" clears.
  void Run(TStringView steps) {
    for (std::size_t i = 0; i < steps.size(); ++i) {
      const auto count = [&] { return static_cast<std::uint8_t>(steps[++i] - u'0'); };
      if (steps[i] == u'<')
        history.MoveBack(count());
      else if (steps[i] == u'>')
        history.MoveForward(count());
      else if (steps[i] == u'=')
        history.SetPosition(count());
      else if (steps[i] == u'!')
        history.Clear();
      else
        history.Add(Place(steps[i]));
    }
  }

  /// The entries by their letters, the position behind them.
  std::string State() {
    TString text;
    for (int i = 0; i < history.GetCount(); ++i) text += ExtractFileName(history.GetPaths(i));
    return ToUtf8(text + u"@" + IntToStr(history.GetPosition()));
  }

  TTestFolder folder;
  TPidlHistory history;
};

TEST_F(History, KeepsThePlacesInTheOrderOfVisits) {
  const std::pair<const char16_t*, const char*> cases[] = {
      {u"", "@-1"},          {u"abc", "abc@2"},     {u"abc<1", "abc@1"},
      {u"abc<9", "abc@0"},   {u"abc<2>1", "abc@1"}, {u"abc<2>9", "abc@2"},
      {u"<1", "@-1"},        {u">1", "@-1"},        {u"abc<0", "abc@2"},
      {u"abc<2d", "ad@1"},  // what lay ahead is cut
      {u"abc<2a", "a@0"},   // also by the place where it stands
      {u"abc<1b", "ab@1"},  // replaced, and all behind it cut
      {u"aa", "a@0"},       // a repeat doesn't pile up
      {u"aba", "aba@2"},    // a return does
      {u"abc!", "@-1"},      {u"abc!d", "d@0"},     {u"abc=0d", "ad@1"},
      {u"abc=7d", "abcd@3"},  // beyond the end nothing is current, nothing lies ahead
      {u"abc=7<1", "abc@6"}, {u"abc=7>1", "abc@7"},
  };
  for (const auto& [steps, state] : cases) {
    history.Clear();
    Run(steps);
    EXPECT_EQ(State(), state) << ToUtf8(steps);
  }
}

TEST_F(History, HasNoCurrentEntryOutsideOfTheList) {
  EXPECT_FALSE(history.GetCurrentFolderItemIDList());
  Run(u"ab");
  EXPECT_EQ(history.GetCurrentFolderItemIDList()->Path(), folder.Path(u"b"));
  for (const int position : {-1, -100, 2, std::numeric_limits<int>::max()}) {
    history.SetPosition(position);
    EXPECT_FALSE(history.GetCurrentFolderItemIDList()) << position;
    EXPECT_EQ(history.GetPosition(), position);
    EXPECT_EQ(history.GetPaths(position), u"");
  }
  history.SetPosition(std::numeric_limits<int>::max());
  Run(u">1c");
  EXPECT_EQ(State(), "abc@2");
  history.SetPosition(std::numeric_limits<int>::min());
  Run(u">1");
  EXPECT_EQ(history.GetPosition(), std::numeric_limits<int>::min() + 1);
  history.SetPosition(-1);
  Run(u"d");
  EXPECT_EQ(State(), "d@0") << "all lay ahead of a position before the first";
}

TEST_F(History, TellsWhetherAMoveIsPossible) {
  EXPECT_FALSE(history.IsMovePossible(0));
  EXPECT_FALSE(history.IsMovePossible(1));
  EXPECT_FALSE(history.IsMovePossible(-1));
  Run(u"abcd<1");
  struct TCase {
    int Delta;
    bool Possible;
  };
  // Backwards one more than there is: whoever shows a button asks whether there is a place at all.
  for (const TCase& c : {TCase{0, true},
                         {1, true},
                         {2, false},
                         {-2, true},
                         {-3, true},
                         {-4, false},
                         {std::numeric_limits<int>::max(), false},
                         {std::numeric_limits<int>::min(), false}})
    EXPECT_EQ(history.IsMovePossible(c.Delta), c.Possible) << c.Delta;
}

TEST_F(History, APlaceThatIsGoneMakesRoom) {
  Run(u"a");
  Run(u"b");
  // An entry may become invalid once it is there: renamed away by another holder of the item.
  TOakItemIdList::From(history.GetItem(1))->SetPidl({});
  ASSERT_TRUE(IsInvalid(history.GetItem(1)));
  Run(u"c");
  EXPECT_EQ(State(), "ac@1");
}

TEST_F(History, TakesItsOwnEntryAgain) {
  Run(u"abc<2");
  history.Add(history.GetItem(2));  // the list cuts the entry that the reference comes from
  EXPECT_EQ(State(), "ac@1");
}

}  // namespace
}  // namespace oak
