// Rows of a list view: adding, finding, removing.
#include <algorithm>
#include <memory>
#include <random>
#include <stdexcept>
#include <vector>

#include "oak/base/Exceptions.h"
#include "tests/framework/ListProbe.h"

namespace oak::tests {
namespace {

// --- rows ---------------------------------------------------------------------------------

TEST(ListItems, SmallEnoughForLongLists) { EXPECT_LE(sizeof(TListItem), 112u); }

TEST(ListItems, SubItemsForgiveReadingAndRefuseGaps) {
  TListSubItems texts;
  EXPECT_EQ(texts.Get(0), u"");
  texts.Put(0, u"nowhere");
  texts.Delete(0);
  EXPECT_EQ(texts.Add(u"b"), 0);
  texts.Insert(0, u"a");
  texts.Insert(2, u"c");
  EXPECT_THROW(texts.Insert(4, u"e"), EArgumentException);
  texts.Delete(1);
  EXPECT_EQ(texts.IndexOf(u"c"), 1);
  EXPECT_EQ(texts[-1], u"");
}

TEST(ListItems, RowsThatAreNotInTheListYetTellNothing) {
  TProbeList list({u"x"});
  int told = 0;
  list.OnChange = [&](TObject*, TListItem*, TItemChange) { ++told; };
  auto item = std::make_unique<TListItem>(&list.Items());
  item->SetCaption(u"new");
  item->SetSelected(true);
  item->SetCut(true);
  EXPECT_EQ(told, 0);
  EXPECT_EQ(item->GetIndex(), -1);
  EXPECT_EQ(list.GetSelCount(), 0);
  list.Items().AddItem(std::move(item), 0);
  EXPECT_EQ(list.GetSelCount(), 1);
  EXPECT_EQ(list.GetSelected(), list.Row(0));
}

// Every change of rows and states, against a plain list that is kept beside.
class TListWalk {
 public:
  explicit TListWalk(unsigned seed) : fRandom(seed) {}

  void Step() {
    const int row = Below(Count() + 1);  // or none, behind the last
    const bool isRow = row < Count();
    const std::function<void()> steps[] = {
        [&] { Insert(row); },
        [&] { Insert(row); },
        [&] { Insert(Count()); },
        [&] {
          if (isRow) Remove(row);
        },
        [&] { RemoveSome(Below(50) == 0 ? 1 : 2 + Below(5)); },
        [&] { Sort(); },
        [&] {
          if (isRow) fList.Row(row)->SetSelected(Below(2) == 0);
        },
        [&] { SelectRange(); },
        [&] { fList.SetSelected(fList.Row(row)); },
        [&] { Below(4) == 0 ? fList.SelectAll() : fList.ClearSelection(); },
        [&] { fList.SetItemFocused(fList.Row(row)); },
    };
    steps[Below(static_cast<int>(std::size(steps)))]();
  }

  void Check() {
    ASSERT_EQ(fList.Items().GetCount(), Count());
    int selected = 0;
    TListItem* first = nullptr;
    for (TListItem* const item : fList.Items()) {
      if (!item->GetSelected()) continue;
      if (!first) first = item;
      ++selected;
    }
    ASSERT_EQ(fList.GetSelCount(), selected);
    ASSERT_EQ(fList.GetSelected(), first);
    for (int probe = 0; probe < 3 && Count() > 0; ++probe) {
      const int index = Below(Count());
      ASSERT_EQ(fList.Row(index), fRows[At(index)]);
      ASSERT_EQ(fRows[At(index)]->GetIndex(), index);
    }
    TListItem* const focused = fList.GetItemFocused();
    ASSERT_TRUE(!focused || std::find(fRows.begin(), fRows.end(), focused) != fRows.end());
  }

  void CheckAllPlaces() {
    for (int i = Count() - 1; i >= 0; --i) ASSERT_EQ(fRows[At(i)]->GetIndex(), i);
  }

 private:
  static std::size_t At(int index) { return static_cast<std::size_t>(index); }
  int Count() const { return static_cast<int>(fRows.size()); }
  int Below(int limit) { return static_cast<int>(fRandom() % static_cast<unsigned>(limit)); }

  void Insert(int index) {
    TListItem* const item = fList.Items().Insert(index);
    item->SetCaption(IntToStr(Below(1000)));
    fRows.insert(fRows.begin() + index, item);
  }
  void Remove(int index) {
    fRows[At(index)]->Delete();
    fRows.erase(fRows.begin() + index);
  }
  // All of which the code of the first letter divides; every row with 1.
  void RemoveSome(int divisor) {
    const auto goes = [divisor](const TListItem& item) {
      return item.GetStoredCaption().front() % divisor == 0;
    };
    std::vector<TListItem*> kept;
    for (TListItem* const item : fRows)
      if (!goes(*item)) kept.push_back(item);
    const int count = fList.Items().DeleteIf(goes);
    ASSERT_EQ(count, Count() - static_cast<int>(kept.size()));
    fRows = kept;
  }
  void Sort() {
    const auto order = [](TListItem* a, TListItem* b) {
      return a->GetStoredCaption().front() - b->GetStoredCaption().front();
    };
    ASSERT_TRUE(fList.CustomSort([&](auto* a, auto* b, LPARAM) { return order(a, b); }, 0));
    std::stable_sort(fRows.begin(), fRows.end(), [&](auto* a, auto* b) { return order(a, b) < 0; });
  }
  void SelectRange() {
    const int from = Below(Count() + 2) - 1;
    const int to = from + Below(20) - 2;
    if (Below(2) == 0)
      fList.HandleSelectOnly(from, to);
    else
      fList.HandleSelectRange(from, to, Below(2) == 0);
  }

  std::mt19937 fRandom;
  TProbeList fList;
  std::vector<TListItem*> fRows;
};

TEST(ListItems, PlacesCountsAndFocusAgreeAfterAnyChanges) {
  for (unsigned seed = 1; seed <= 8; ++seed) {
    SCOPED_TRACE(seed);
    TListWalk walk(seed);
    for (int step = 0; step < 1500; ++step) {
      walk.Step();
      ASSERT_NO_FATAL_FAILURE(walk.Check()) << "step " << step;
      if (step % 100 == 99) {
        ASSERT_NO_FATAL_FAILURE(walk.CheckAllPlaces()) << "step " << step;
      }
    }
  }
}

TEST(ListItems, DroppedAndEditedRowsAreForgotten) {
  TProbeList list({u"a", u"b"});
  list.Row(0)->SetDropTarget(true);
  EXPECT_EQ(list.GetDropTargetItem(), list.Row(0));
  EXPECT_TRUE(list.HandleBeginEdit(0));
  EXPECT_FALSE(list.HandleBeginEdit(1)) << "one at a time";
  list.Items().Delete(0);
  EXPECT_EQ(list.GetDropTargetItem(), nullptr);
  EXPECT_EQ(list.GetEditedItem(), nullptr);
  EXPECT_FALSE(list.HandleEndEdit(TString(u"text")));
  EXPECT_EQ(list.Captions(), u"b ");
}

// --- deletion events ------------------------------------------------------------------------

TEST(ListItems, ARowStillHasItsPlaceWhileItsDeletionIsTold) {
  TProbeList list({u"a", u"b", u"c"});
  std::vector<int> places;
  list.OnDeletion = [&](TObject*, TListItem* item) {
    EXPECT_TRUE(item->GetDeleting());
    places.push_back(item->GetIndex());
  };
  list.Items().Delete(1);
  list.Items().Clear();
  EXPECT_EQ(places, (std::vector<int>{1, 0, 1}));
}

TEST(ListItems, HandlersOfDeletionMayDeleteMore) {
  struct TCase {
    const char* Name;
    std::function<void(TProbeList&, TListItem*)> Handler;
    TString Left;
    int Told;
  };
  const TCase cases[] = {
      {"the same row", [](TProbeList&, TListItem* i) { i->Delete(); }, u"a d ", 2},
      {"all", [](TProbeList& l, TListItem*) { l.Items().Clear(); }, u"", 4},
      {"the next row", [](TProbeList& l, TListItem* i) { l.Items().Delete(i->GetIndex() + 1); },
       u"a ", 3},
      {"the first row", [](TProbeList& l, TListItem*) { l.Items().Delete(0); }, u"d ", 3},
      {"those that the others keep",
       [](TProbeList& l, TListItem*) {
         l.Items().DeleteIf([](const TListItem& i) { return i.GetCaption() == u"d"; });
       },
       u"a ", 3},
      {"none, but one is added",
       [](TProbeList& l, TListItem*) { l.Items().Add()->SetCaption(u"n"); }, u"a d n n ", 2},
  };
  for (const TCase& test : cases) {
    SCOPED_TRACE(test.Name);
    TProbeList list({u"a", u"b", u"c", u"d"});
    list.SelectAll();
    int told = 0;
    list.OnDeletion = [&](TObject*, TListItem* item) {
      ++told;
      test.Handler(list, item);
    };
    list.Items().DeleteIf([](const TListItem& item) {
      return item.GetCaption() == u"b" || item.GetCaption() == u"c";
    });
    EXPECT_EQ(list.Captions(), test.Left);
    EXPECT_EQ(told, test.Told);
    list.OnDeletion = nullptr;
    list.Items().DeleteIf([](const TListItem& item) { return !item.GetSelected(); });
    EXPECT_EQ(list.GetSelCount(), list.Items().GetCount());
  }
}

TEST(ListItems, AFailingHandlerLeavesAWholeList) {
  TProbeList list({u"a", u"b", u"c", u"d"});
  bool fail = true;
  list.OnDeletion = [&](TObject*, TListItem* item) {
    if (fail && item->GetCaption() == u"b") throw std::runtime_error("b");
  };
  EXPECT_THROW(list.Items().Delete(1), std::runtime_error);
  EXPECT_EQ(list.Captions(), u"a b c d ");
  EXPECT_THROW(list.Items().DeleteIf([](const TListItem& i) { return i.GetCaption() < u"d"; }),
               std::runtime_error);
  EXPECT_EQ(list.Captions(), u"c d ") << "those that were told are gone";
  fail = false;
  list.Items().Clear();
  EXPECT_EQ(list.Captions(), u"");
}

TEST(ListItems, AssignCopiesWhatTheRowShows) {
  TProbeList list({u"a", u"b"});
  TListItem& from = *list.Row(0);
  from.GetSubItems().Add(u"sub");
  from.SetImageIndex(3);
  from.SetSelected(true);
  list.Row(1)->Assign(&from);
  EXPECT_EQ(list.Captions(), u"a a ");
  EXPECT_EQ(list.Row(1)->GetSubItems()[0], u"sub");
  EXPECT_EQ(list.Row(1)->GetImageIndex(), 3);
  EXPECT_FALSE(list.Row(1)->GetSelected()) << "states belong to the row";
  EXPECT_THROW(list.Row(1)->Assign(&list), EConvertError);
}

}  // namespace
}  // namespace oak::tests
