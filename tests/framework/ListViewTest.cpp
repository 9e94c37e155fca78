// Selection, order and columns of a list view that has no window.
#include <algorithm>
#include <memory>
#include <random>
#include <vector>

#include "tests/framework/ListProbe.h"

namespace oak::tests {
namespace {

// --- selection ------------------------------------------------------------------------------

TEST(ListSelection, AllStatesAreSetBeforeTheFirstIsTold) {
  TProbeList list({u"a", u"b", u"c"});
  TString log;
  list.OnChange = [&](TObject*, TListItem* item, TItemChange change) {
    log += item->GetCaption() + (change == ctState ? u"! " : u"? ");
    EXPECT_EQ(list.GetSelCount(), 3);
  };
  list.OnSelectItem = [&](TObject*, TListItem* item, bool selected) {
    log += item->GetCaption() + (selected ? u"+ " : u"- ");
  };
  list.SelectAll();
  EXPECT_EQ(log, u"a! a+ b! b+ c! c+ ");
  log.clear();
  list.SelectAll();
  EXPECT_EQ(log, u"") << "nothing has changed";
}

TEST(ListSelection, SurvivesItsHandlers) {
  struct TCase {
    const char* Name;
    std::function<void(TProbeList&, TListItem*)> Handler;
    TString Left;
    TString Selected;
  };
  const TCase cases[] = {
      {"deletes the row that is told", [](TProbeList&, TListItem* i) { i->Delete(); }, u"", u""},
      {"deletes the next row",
       [](TProbeList& l, TListItem* i) { l.Items().Delete(i->GetIndex() + 1); }, u"a c e ",
       u"a c e "},
      {"deletes the first row", [](TProbeList& l, TListItem*) { l.Items().Delete(0); }, u"", u""},
      {"turns the order around",
       [](TProbeList& l, TListItem*) {
         l.CustomSort([](TListItem* x, TListItem* y,
                         LPARAM) { return y->GetCaption().compare(x->GetCaption()); },
                      0);
       },
       u"e d c b a ", u"e d c b a "},
      {"takes the selection back", [](TProbeList&, TListItem* i) { i->SetSelected(false); },
       u"a b c d e ", u""},
      {"allows one row only", [](TProbeList& l, TListItem*) { l.SetMultiSelect(false); },
       u"a b c d e ", u"a "},
      {"adds a row in front",
       [](TProbeList& l, TListItem*) {
         if (l.Items().GetCount() < 8) l.Items().Insert(0)->SetCaption(u"n");
       },
       u"n n n a b c d e ", u"a b c d e "},
  };
  for (const TCase& test : cases) {
    SCOPED_TRACE(test.Name);
    TProbeList list({u"a", u"b", u"c", u"d", u"e"});
    std::vector<TListItem*> told;
    list.OnSelectItem = [&](TObject*, TListItem* item, bool selected) {
      if (!selected) return;
      EXPECT_EQ(std::count(told.begin(), told.end(), item), 0) << "told twice";
      told.push_back(item);
      test.Handler(list, item);
    };
    list.SelectAll();
    EXPECT_EQ(list.Captions(), test.Left);
    EXPECT_EQ(list.Selection(), test.Selected);
    EXPECT_EQ(list.GetSelCount(), std::count(test.Selected.begin(), test.Selected.end(), u' '));
  }
}

TEST(ListSelection, NextItemsByDirectionAndStates) {
  TProbeList list({u"a", u"b", u"c", u"d", u"e"});
  list.Row(1)->SetSelected(true);
  list.Row(3)->SetSelected(true);
  list.Row(3)->SetCut(true);
  list.Row(4)->SetDropTarget(true);
  list.SetItemFocused(list.Row(2));
  const struct {
    int Start;
    TSearchDirection Direction;
    TItemStates States;
    TString Expected;
  } cases[] = {
      {-1, sdAll, {}, u"a"},
      {4, sdAll, {}, u""},
      {-1, sdAll, isSelected, u"b"},
      {1, sdBelow, isSelected, u"d"},
      {3, sdAll, isSelected, u""},
      {-1, sdAbove, {}, u"e"},
      {4, sdAbove, isSelected, u"d"},
      {0, sdAbove, {}, u""},
      {-1, sdAll, {isSelected, isCut}, u"d"},
      {-1, sdAll, {isSelected, isFocused}, u""},
      {-1, sdAll, isFocused, u"c"},
      {-1, sdAll, isDropHilited, u"e"},
  };
  for (const auto& test : cases) {
    const TListItem* const found =
        list.GetNextItem(list.Row(test.Start), test.Direction, test.States);
    EXPECT_EQ(found ? found->GetCaption() : u"", test.Expected)
        << test.Start << " " << test.Direction << " " << test.States.ToBits();
  }
}

TEST(ListSelection, CaptionsAreFoundAsAsked) {
  TProbeList list({u"Alpha", u"beta", u"ALPINE", u"gamma", u"alpha"});
  const struct {
    int Start;
    TString Text;
    bool Partial, Inclusive, Wrap;
    int Expected;
  } cases[] = {
      {0, u"alpha", false, true, false, 0},   {0, u"alpha", false, false, false, 4},
      {-1, u"alpha", false, false, false, 0}, {-5, u"alpha", false, true, false, 0},
      {1, u"al", true, true, false, 2},       {3, u"b", true, true, false, -1},
      {3, u"b", true, true, true, 1},         {3, u"gam", true, false, true, -1},
      {9, u"be", true, true, true, 1},        {0, u"alp", false, true, true, -1},
      {2, u"", true, false, false, 3},
  };
  for (const auto& test : cases) {
    TListItem* const found =
        list.FindCaption(test.Start, test.Text, test.Partial, test.Inclusive, test.Wrap);
    EXPECT_EQ(list.Items().IndexOf(found), test.Expected) << test.Start << ToUtf8(test.Text);
  }
}

// --- order ----------------------------------------------------------------------------------

TEST(ListSort, WithoutFunctionByTheEventOrInLogicalOrder) {
  TProbeList list({u"file10", u"File9", u"file1", u"file 2", u"FILE9"});
  EXPECT_TRUE(list.CustomSort({}, 0));
  EXPECT_EQ(list.Captions(), u"file 2 file1 File9 FILE9 file10 ");
  list.OnCompare = [](TObject*, TListItem* a, TListItem* b, LPARAM data, int& result) {
    result = static_cast<int>(a->GetCaption().size() - b->GetCaption().size());
    if (data == 7) result = -result;
  };
  EXPECT_TRUE(list.CustomSort({}, 7));
  EXPECT_EQ(list.Captions(), u"file 2 file10 file1 File9 FILE9 ");
}

TEST(ListSort, ComparisonsThatContradictThemselvesLoseNothing) {
  std::mt19937 random(7);
  const std::function<int()> answers[] = {[] { return 1; }, [] { return -1; },
                                          [&] { return static_cast<int>(random() % 3) - 1; }};
  for (const auto& answer : answers) {
    TProbeList list;
    for (int i = 0; i < 100; ++i) list.Items().Add()->SetCaption(IntToStr(i));
    list.SelectAll();
    EXPECT_TRUE(list.CustomSort([&](TListItem*, TListItem*, LPARAM) { return answer(); }, 0));
    std::vector<TString> captions;
    for (TListItem* const item : list.Items()) captions.push_back(item->GetCaption());
    std::sort(captions.begin(), captions.end());
    EXPECT_EQ(std::unique(captions.begin(), captions.end()), captions.end());
    EXPECT_EQ(captions.size(), 100u);
  }
}

TEST(ListSort, AComparisonThatChangesTheRowsEndsTheSort) {
  TProbeList list({u"d", u"c", u"b", u"a"});
  int calls = 0;
  EXPECT_FALSE(list.CustomSort(
      [&](TListItem* a, TListItem* b, LPARAM) {
        if (++calls == 2) list.Items().Delete(3);
        return a->GetCaption().compare(b->GetCaption());
      },
      0));
  EXPECT_EQ(calls, 2);
  EXPECT_EQ(list.Captions(), u"d c b ");
  EXPECT_THROW(list.CustomSort([](TListItem*, TListItem*, LPARAM) -> int { throw 1; }, 0), int);
  EXPECT_EQ(list.Captions(), u"d c b ");
}

// --- the end of the list in its own events ----------------------------------------------------

TEST(ListView, MayBeDestroyedInAnyOfItsEvents) {
  struct TCase {
    const char* Name;
    std::function<void(TProbeList&, std::function<void()> destroy)> Arrange;
    std::function<void(TProbeList&)> Act;
  };
  const TCase cases[] = {
      {"OnSelectItem as single selection begins",
       [](auto& l, auto d) {
         l.SelectAll();
         l.OnSelectItem = [d](auto...) { d(); };
       },
       [](auto& l) { l.SetMultiSelect(false); }},
      {"OnInsert", [](auto& l, auto d) { l.OnInsert = [d](auto...) { d(); }; },
       [](auto& l) { EXPECT_EQ(l.Items().Add(), nullptr); }},
      {"OnCreateItem",
       [](auto& l, auto d) {
         l.OnCreateItem = [d](auto*) {
           d();
           return std::unique_ptr<TListItem>();
         };
       },
       [](auto& l) { EXPECT_EQ(l.Items().Add(), nullptr); }},
      {"OnDeletion of one", [](auto& l, auto d) { l.OnDeletion = [d](auto...) { d(); }; },
       [](auto& l) { l.Row(1)->Delete(); }},
      {"OnDeletion of all", [](auto& l, auto d) { l.OnDeletion = [d](auto...) { d(); }; },
       [](auto& l) { l.Items().Clear(); }},
      {"the test of what to delete", [](auto&, auto) {},
       [](auto& l) {
         TProbeList* const list = &l;
         EXPECT_EQ(l.Items().DeleteIf([list](TListItem&) {
           delete list;
           return true;
         }),
                   0);
       }},
      {"a comparison", [](auto& l, auto d) { l.OnCompare = [d](auto...) { d(); }; },
       [](auto& l) { EXPECT_FALSE(l.CustomSort({}, 0)); }},
  };
  for (const TCase& test : cases) {
    SCOPED_TRACE(test.Name);
    auto* list = new TProbeList({u"c", u"b", u"a"});
    const TLifeGuard guard = list->GetLifeGuard();
    test.Arrange(*list, [guard, list] {
      if (guard.IsAlive()) delete list;
    });
    test.Act(*list);
    EXPECT_FALSE(guard.IsAlive());
  }
}

// --- columns --------------------------------------------------------------------------------

TEST(ListColumns, WidthsKeepTheirLimitsAndHiddenOnesStayHidden) {
  TProbeList list;
  TListColumn& column = *list.Columns().Add();
  column.SetMinWidth(20);
  column.SetMaxWidth(80);
  for (const auto& [asked, given] : {std::pair(50, 50), {10, 20}, {200, 80}, {0, 20}}) {
    column.SetWidth(asked);
    EXPECT_EQ(column.GetWidth(), given);
  }
  column.SetMinWidth(0);
  column.SetWidth(0);
  column.SetMaxWidth(1);
  list.HandleColumnWidth(0, 90, true);
  EXPECT_LE(column.GetWidth(), 1) << "a hidden column can't be dragged open";
  column.SetMaxWidth(-1);
  column.SetWidth(300);
  EXPECT_EQ(column.GetWidth(), 300);
  column.SetWidth(TListColumn::FitTexts);
  EXPECT_EQ(column.GetWidth(), TListColumn::FitTexts) << "waits for a window";
}

TEST(ListColumns, IconSpacingFollowsTheDensityUnlessItIsTheSystems) {
  TProbeList list;
  list.SetIconSpacingPixels(80, 60);
  list.SetDefaultColumnWidthPixels(120);
  list.ChangeScale(144, 96);
  EXPECT_EQ(list.GetIconSpacingPixels(), (TSize{120, 90}));
  EXPECT_EQ(list.GetDefaultColumnWidthPixels(), 180);
  list.SetIconSpacingPixels(-1, 5);
  list.ChangeScale(96, 144);
  EXPECT_EQ(list.GetIconSpacingPixels(), (TSize{-1, -1}));
}

// --- editing --------------------------------------------------------------------------------

TEST(ListEditing, ARowThatEndsWhileItIsAskedIsNotEdited) {
  TProbeList list({u"a", u"b"});
  list.OnEditing = [](TObject*, TListItem* item, bool&) { item->Delete(); };
  EXPECT_FALSE(list.HandleBeginEdit(0));
  EXPECT_EQ(list.GetEditedItem(), nullptr);
  list.OnEditing = nullptr;
  EXPECT_TRUE(list.HandleBeginEdit(0));
  list.OnEdited = [](TObject*, TListItem* item, TString&) { item->Delete(); };
  EXPECT_FALSE(list.HandleEndEdit(TString(u"x")));
  EXPECT_EQ(list.Items().GetCount(), 0);
}

}  // namespace
}  // namespace oak::tests
