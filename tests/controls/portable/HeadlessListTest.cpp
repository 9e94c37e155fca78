// What only the headless list knows: what it asks for, how far it scrolls, where keys lead.
#include "oak/framework/headless/HeadlessListPeer.h"
#include "tests/controls/ControlsFixture.h"

namespace oak::tests {
namespace {

using ::testing::Contains;
using ::testing::Not;

/// A list of 300 by 200 pixels without an edge, with columns of 120, 80 and 60. A line of text is
/// 15 pixels, an image 16, a row 18, the header 23.
class HeadlessList : public TListTest {
 protected:
  HeadlessList() {
    list->SetBorderStyle(bsNone);
    list->SetBounds(0, 0, 300, 200);
  }
  void ShowRows(int rows, std::initializer_list<int> widths = {120, 80, 60}) {
    ShowReport(rows, widths);
    Peer().ResetRequests();
  }
  THeadlessListPeer& Peer() { return dynamic_cast<THeadlessListPeer&>(*list->GetListPeer()); }

  struct TBar {
    int Position = -1, Page = -1, Range = -1;
    bool Shown = false;
    friend bool operator==(const TBar&, const TBar&) = default;
  };
  TBar Bar(TScrollBarKind kind) {
    TBar bar;
    bar.Shown = Peer().GetScroll(kind, &bar.Position, &bar.Page, &bar.Range);
    return bar;
  }
};

TEST_F(HeadlessList, ScrollBarsComeAndGo) {
  ShowRows(9);
  EXPECT_FALSE(Bar(sbVertical).Shown);
  list->Fill(1);
  EXPECT_EQ(Bar(sbVertical), (TBar{0, 9 * 18, 10 * 18, true}));
  list->Columns()[0]->SetWidth(143);
  EXPECT_FALSE(Bar(sbHorizontal).Shown);
  // Two pixels too many: the bar takes the room of a row.
  list->Columns()[0]->SetWidth(145);
  EXPECT_EQ(Bar(sbHorizontal), (TBar{0, 283, 285, true}));
  EXPECT_EQ(list->GetVisibleRowCount(), 8);
  Press(vkRight);
  EXPECT_EQ(Peer().GetSubItemRect(0, 0).Left, -2);
  Press(vkLeft);
  Press(vkLeft);
  EXPECT_EQ(Peer().GetSubItemRect(0, 0).Left, 0);
  list->Items().Delete(0);
  list->Items().Delete(0);
  EXPECT_FALSE(Bar(sbVertical).Shown);
  EXPECT_FALSE(Bar(sbHorizontal).Shown) << "there is room without the other one";
  // Scrolling by any number of pixels keeps rows at the edge.
  list->Fill(92);
  list->Scroll(0, 1);
  EXPECT_EQ(list->GetTopItem(), list->Row(1));
  list->Scroll(0, 3 * 18 - 20);
  EXPECT_EQ(list->GetTopItem(), list->Row(3));
  list->Scroll(10000, 10000);
  EXPECT_EQ(list->GetTopItem(), list->Row(92));
}

TEST_F(HeadlessList, AsksForNothingThatIsNotSeen) {
  const auto requests = [this] {
    screen->Drain();
    const std::pair result(Peer().GetTextRequests(), Peer().GetImageRequests());
    Peer().ResetRequests();
    return result;
  };
  using TRequests = std::pair<int, int>;
  ShowRows(0);
  list->Fill(100'000);
  EXPECT_EQ(requests(), TRequests(30, 10)) << "nine rows and a part of one, three cells each";
  list->Row(4)->SetCaption(u"new");
  EXPECT_EQ(requests(), TRequests(3, 1));
  list->Row(4)->SetCaption(u"new");
  list->Row(40)->SetCaption(u"far away");
  list->Items().Delete(50'000);
  list->Items().Insert(60'000);
  EXPECT_EQ(requests(), TRequests(0, 0));
  list->UpdateItems(8, 20'000);
  EXPECT_EQ(requests(), TRequests(6, 2));
  list->Columns()[1]->SetWidth(0);
  EXPECT_EQ(requests(), TRequests(20, 10)) << "a hidden column is not asked for";
  list->Items().BeginUpdate();
  list->Row(0)->SetCaption(u"x");
  list->Invalidate();
  EXPECT_EQ(requests(), TRequests(0, 0)) << "nothing is drawn within an update";
  list->Items().EndUpdate();
  EXPECT_EQ(requests(), TRequests(20, 10));
  list->SetSmallImages(nullptr);
  EXPECT_EQ(requests().second, 0) << "without images none is asked for";
  // Widths fit the rows in sight; a hidden column stays hidden.
  Press(vkAdd, {ssCtrl});
  EXPECT_EQ(list->Columns()[0]->GetWidth(), list->GetStringWidth(u"row 10") + 12);
  EXPECT_EQ(list->Columns()[1]->GetWidth(), 0);
  EXPECT_LE(requests().first, 50);
}

TEST_F(HeadlessList, WidthsThatWaitedAreMeasuredWithTheWindow) {
  ShowRows(5, {TListColumn::FitTexts, TListColumn::FitTextsAndCaption});
  EXPECT_EQ(list->Columns()[0]->GetWidth(), list->GetStringWidth(u"row 0") + 12 + 16);
  EXPECT_EQ(list->Columns()[1]->GetWidth(), list->GetStringWidth(u"size 0") + 12);
}

TEST_F(HeadlessList, AnImageThatIsSetWhenAskedForCausesNoSecondPaint) {
  list->OnGetImageIndex = [](TObject*, TListItem* item) { item->SetImageIndex(3); };
  ShowRows(5);
  const int painted = Peer().GetPaintCount();
  screen->Drain();
  EXPECT_EQ(Peer().GetPaintCount(), painted);
}

TEST_F(HeadlessList, ChangesOutOfSightLeaveThePlaceAndTheFocus) {
  ShowRows(100);
  TListItem* const focused = list->Row(70);
  list->SetSelected(focused);
  focused->MakeVisible(false);
  const int top = list->GetTopItem()->GetIndex();
  const int painted = Peer().GetPaintCount();
  TListItems& items = list->Items();
  const std::function<void()> changes[] = {
      [&] {
        items.BeginUpdate();
        for (int i = 0; i < 10; ++i) items.Add();
        items.Delete(100);
        items.EndUpdate();
      },
      [&] { items.Insert(90), items.Delete(91); },
      [&] {
        list->CustomSort([](auto* a, auto* b, LPARAM) { return a->GetIndex() - b->GetIndex(); }, 0);
      },
      [&] { list->SelectAll(); },
  };
  for (const auto& change : changes) {
    change();
    EXPECT_EQ(list->GetTopItem(), list->Row(top));
    EXPECT_EQ(list->GetItemFocused(), focused);
  }
  EXPECT_EQ(Peer().GetPaintCount(), painted) << "all of it waits for one paint";
}

// --- what the user does -------------------------------------------------------------------------

TEST_F(HeadlessList, KeysFollowTheGrid) {
  list->SetDefaultColumnWidthPixels(90);
  ShowStyle(vsList, 35);  // columns of ten
  list->SetSelected(list->Row(4));
  const struct {
    TViewStyle Style;
    std::uint16_t Key;
    const char* Selection;
  } steps[] = {
      {vsList, vkRight, "[14]"}, {vsList, vkRight, "[24]"}, {vsList, vkRight, "[34]"},
      {vsList, vkRight, "[34]"}, {vsList, vkUp, "[33]"},    {vsIcon, vkDown, "[33]"},
      {vsIcon, vkRight, "[34]"}, {vsIcon, vkUp, "[31]"},    {vsIcon, vkLeft, "[30]"},
  };
  for (const auto& step : steps) {
    list->SetViewStyle(step.Style);
    Press(step.Key);
    EXPECT_EQ(list->Selection(), step.Selection);
  }
}

TEST_F(HeadlessList, ARangeBeginsAtItsRowWhereverThatGoes) {
  ShowRows(10);
  screen->Click(*list, list->At(1));
  screen->Click(*list, list->At(4), {ssCtrl});
  screen->Click(*list, list->At(6), {ssCtrl, ssShift});
  EXPECT_EQ(list->Selection(), "1 4 5 [6]");
  Press(vkPrior);
  EXPECT_EQ(list->Selection(), "[0]");
  screen->Click(*list, list->At(4));
  list->Items().Insert(0);
  screen->Click(*list, list->At(6), {ssShift});
  EXPECT_EQ(list->Selection(), "5 [6]");
  list->Items().Delete(0);
  list->Items().Delete(0);
  screen->Click(*list, list->At(1), {ssShift});
  EXPECT_EQ(list->Selection(), "[1] 2 3");
  list->CustomSort([](auto* a, auto* b, LPARAM) { return b->GetIndex() - a->GetIndex(); }, 0);
  Press(vkUp, {ssShift});
  EXPECT_EQ(list->Selection(), "[6] 7") << "begins at the focused row after a sort";
}

TEST_F(HeadlessList, DragsBeginOnARowAndFarEnough) {
  ShowRows(6);
  screen->Drag(*list, list->At(1), *list, list->At(1) + TPoint(2, 3));
  EXPECT_THAT(list->Take(), Not(Contains("drag"))) << "a trembling hand";
  screen->Drag(*list, {280, 190}, *list, {200, 100});
  EXPECT_THAT(list->Take(), Not(Contains("drag"))) << "there is no row";
  list->SelectAll();
  screen->Drag(*list, list->At(2), *list, list->At(2) + TPoint(30, 30));
  EXPECT_EQ(list->GetSelCount(), 6) << "all of them";
  screen->Drag(*list, list->At(2), *list, list->At(2) + TPoint(40, 40), {}, mbRight);
  EXPECT_THAT(list->Take(), Not(Contains("menu")));
}

TEST_F(HeadlessList, AnEditIsTakenByScrollingAndMeasuringSurvivesItsList) {
  ShowRows(30);
  ASSERT_TRUE(list->Row(1)->EditCaption());
  screen->TypeText(u"new");
  list->Scroll(0, 40);
  EXPECT_FALSE(list->IsEditing());
  EXPECT_EQ(list->Row(1)->GetCaption(), u"new");
  // Texts are asked for outside of drawing as well.
  const std::function<void()> deeds[] = {
      [this] { Press(vkAdd, {ssCtrl}); },
      [this] { list->GetHitTest(30, 30); },
      [this] { list->Columns()[0]->SetWidth(TListColumn::FitTexts); },
  };
  for (const std::function<void()>& deed : deeds) {
    list->OnEvent = [this](const std::string& event) {
      if (event == "text") delete std::exchange(list, nullptr);
    };
    deed();
    EXPECT_EQ(list, nullptr);
    list = new TListUnderTest;
    list->SetBounds(0, 0, 300, 200);
    list->SetParent(form.get());
    ShowReport(30);
  }
}

}  // namespace
}  // namespace oak::tests
