// How a list is laid out, drawn and scrolled.
#include "oak/framework/Canvas.h"
#include "tests/controls/ControlsFixture.h"

namespace oak::tests {
namespace {

using ::testing::Contains;

class ListLooks : public TListTest {};

TEST_F(ListLooks, EveryStyleShowsItsRows) {
  ShowStyle(vsIcon, 7);
  for (const TViewStyle style : {vsIcon, vsSmallIcon, vsList, vsReport}) {
    SCOPED_TRACE(static_cast<int>(style));
    if (style == vsReport) list->AddColumns({150, 80});
    list->SetViewStyle(style);
    list->SetSelected(list->Row(2));
    screen->Drain();
    ExpectShown(*list);
    for (int i = 0; i < 7; ++i) {
      const TListItem& item = *list->Row(i);
      const TRect bounds = item.DisplayRect(drBounds);
      const TRect icon = item.DisplayRect(drIcon);
      const TRect label = item.DisplayRect(drLabel);
      EXPECT_FALSE(bounds.IsEmpty());
      EXPECT_TRUE(bounds.Contains(icon.Center()));
      EXPECT_TRUE(bounds.Contains(label.Center()));
      EXPECT_FALSE(icon.Intersects(label));
      EXPECT_EQ(item.GetPosition(), bounds.TopLeft());
      const TListHitTest onIcon = list->GetHitTest(icon.Center().X, icon.Center().Y);
      EXPECT_EQ(onIcon.Index, i);
      EXPECT_TRUE(onIcon.Flags.Contains(htOnIcon));
      const TPoint text = label.TopLeft() + TPoint(label.Width() > 60 ? 10 : label.Width() / 2, 5);
      const TListHitTest onLabel = list->GetHitTest(text.X, text.Y);
      EXPECT_EQ(onLabel.Index, i);
      EXPECT_TRUE(onLabel.Flags.Contains(htOnLabel));
      EXPECT_EQ(list->GetItemAt(text.X, text.Y), &item);
      if (i > 0) {
        EXPECT_FALSE(bounds.Intersects(list->Row(i - 1)->DisplayRect(drBounds)));
      }
    }
    const TRect client = list->GetClientRect();
    const TPoint corner(client.Right - 5, client.Bottom - 25);
    const TListHitTest nowhere = list->GetHitTest(corner.X, corner.Y);
    EXPECT_EQ(nowhere.Index, -1);
    EXPECT_TRUE(nowhere.Flags.Contains(htNowhere));
    EXPECT_EQ(list->GetItemAt(corner.X, corner.Y), nullptr);
  }
}

TEST_F(ListLooks, CellsOfAReport) {
  ShowReport(4, {120, 80, 60});
  for (const bool rowSelect : {false, true}) {
    list->SetRowSelect(rowSelect);
    int left = list->Row(1)->DisplayRect(drBounds).Left;
    for (int column = 0; column < 3; ++column) {
      const TRect cell = list->GetListPeer()->GetSubItemRect(1, column);
      EXPECT_EQ(cell.Right, left + list->Columns()[column]->GetWidth());
      left = cell.Right;
      const TPoint point(cell.Right - 10, cell.Center().Y);
      const TListHitTest hit = list->GetHitTest(point.X, point.Y);
      EXPECT_EQ(hit.Index, 1) << column;
      EXPECT_EQ(hit.SubItem, column);
      if (column > 0) {
        EXPECT_EQ(list->GetItemAt(point.X, point.Y), rowSelect ? list->Row(1) : nullptr);
      }
    }
  }
  EXPECT_EQ(list->GetHeaderRect().Top, 0);
  EXPECT_EQ(list->GetHeaderRect().Bottom, list->Row(0)->DisplayRect(drBounds).Top);
  list->SetShowColumnHeaders(false);
  EXPECT_TRUE(list->GetHeaderRect().IsEmpty());
  EXPECT_EQ(list->Row(0)->DisplayRect(drBounds).Top, 0);
  list->SetShowColumnHeaders(true);
  ExpectShown(*list);
}

TEST_F(ListLooks, Scrolls) {
  ShowReport(100);
  const int page = list->GetVisibleRowCount();
  EXPECT_GT(page, 5);
  EXPECT_EQ(list->GetTopItem(), list->Row(0));
  list->Row(50)->MakeVisible(false);
  EXPECT_EQ(list->GetTopItem(), list->Row(50 - page + 1));
  ExpectShown(*list);
  list->Row(50)->MakeVisible(false);
  EXPECT_EQ(list->GetTopItem(), list->Row(50 - page + 1));
  list->Row(10)->MakeVisible(false);
  EXPECT_EQ(list->GetTopItem(), list->Row(10));
  const int height = list->Row(10)->DisplayRect(drBounds).Height();
  list->Scroll(0, 3 * height);
  EXPECT_EQ(list->GetTopItem(), list->Row(13));
  ExpectShown(*list);
  screen->Wheel(*list, {50, 100}, -1);
  const int after = list->GetTopItem()->GetIndex();
  EXPECT_GT(after, 13);
  screen->Wheel(*list, {50, 100}, 1);
  EXPECT_EQ(list->GetTopItem(), list->Row(13));
  int position = 0, size = 0, range = 0;
  ASSERT_TRUE(list->GetPeer()->GetScroll(sbVertical, &position, &size, &range));
  EXPECT_EQ(MulDiv(range, 13, 100), position);
  list->GetPeer()->ScrollLines(sbVertical, 2);
  EXPECT_EQ(list->GetTopItem(), list->Row(15));
  list->RecreateWnd();
  screen->Drain();
  EXPECT_EQ(list->GetTopItem(), list->Row(15));
  // Keys keep the focused row in sight.
  list->SetFocus();
  list->SetSelected(list->Row(15));
  Press(vkNext);
  Press(vkNext);
  const TRect focused = list->GetItemFocused()->DisplayRect(drBounds);
  EXPECT_LE(focused.Bottom, list->GetClientRect().Bottom);
  EXPECT_GT(list->GetItemFocused()->GetIndex(), 15 + page);
  Press(vkEnd);
  EXPECT_EQ(list->GetTopItem(), list->Row(100 - page));
  ExpectShown(*list);
  // The rows at the end go: what is left is in sight.
  list->Items().DeleteIf([](TListItem& item) { return item.GetIndex() >= 30; });
  screen->Drain();
  EXPECT_EQ(list->GetTopItem(), list->Row(30 - page));
  ExpectShown(*list);
  list->Items().DeleteIf([](TListItem& item) { return item.GetIndex() >= 3; });
  EXPECT_EQ(list->GetTopItem(), list->Row(0));
  ExpectShown(*list);
}

TEST_F(ListLooks, AsksForWhatIsSeenOnly) {
  ShowReport(1000);
  list->TextRequests = list->ImageRequests = 0;
  list->Items().BeginUpdate();
  for (int i = 0; i < 500; ++i) list->AddRow(u"more");
  list->Items().EndUpdate();
  list->CustomSort([](TListItem* a, TListItem* b, LPARAM) { return a->GetIndex() - b->GetIndex(); },
                   0);
  list->SelectAll();
  list->UpdateItems(600, 700);
  EXPECT_EQ(list->TextRequests, 0);
  EXPECT_EQ(list->ImageRequests, 0);
  screen->Paint();
  const int seen = list->GetVisibleRowCount() + 2;
  EXPECT_GT(list->TextRequests, 0);
  EXPECT_LE(list->TextRequests, seen * 3 * 2);
  EXPECT_GT(list->ImageRequests, 0);
  EXPECT_LE(list->ImageRequests, seen * 2);
}

TEST_F(ListLooks, CheckBoxes) {
  ShowReport(3);
  list->SetCheckboxes(true);
  screen->Drain();
  const auto box = [this](int index) {
    const TRect icon = list->Row(index)->DisplayRect(drIcon);
    return TPoint(icon.Left - 9, icon.Center().Y);
  };
  EXPECT_TRUE(list->GetHitTest(box(1).X, box(1).Y).Flags.Contains(htOnStateIcon));
  screen->Click(*list, box(1));
  EXPECT_TRUE(list->Row(1)->GetChecked());
  EXPECT_EQ(list->Selection(), "");
  screen->Click(*list, box(1));
  EXPECT_FALSE(list->Row(1)->GetChecked());
  screen->Click(*list, list->At(2));
  EXPECT_FALSE(list->Row(2)->GetChecked());
  Press(vkSpace);
  EXPECT_TRUE(list->Row(2)->GetChecked());
  EXPECT_EQ(list->Selection(), "[2]");
  Press(vkSpace);
  EXPECT_FALSE(list->Row(2)->GetChecked());
  list->Row(0)->SetChecked(true);
  list->RecreateWnd();
  screen->Drain();
  EXPECT_TRUE(list->Row(0)->GetChecked());
  ExpectShown(*list);

  // With state images the application says what a click means.
  const auto states = MakeImages(16, 4);
  list->SetStateImages(states.get());
  list->Row(1)->SetStateIndex(2);
  list->Row(2)->SetStateIndex(0);
  screen->Drain();
  ExpectShown(*list);
  screen->Click(*list, box(1));
  EXPECT_FALSE(list->Row(1)->GetChecked());
  EXPECT_EQ(list->Row(1)->GetStateIndex(), 2);
  EXPECT_TRUE(list->GetHitTest(box(1).X, box(1).Y).Flags.Contains(htOnStateIcon));
  list->SetStateImages(nullptr);
  list->SetCheckboxes(false);
  EXPECT_FALSE(list->GetHitTest(box(0).X, box(0).Y).Flags.Contains(htOnStateIcon));
}

TEST_F(ListLooks, StatesOfRows) {
  ShowReport(4);
  list->Row(0)->SetCut(true);
  list->Row(1)->SetDropTarget(true);
  list->Row(2)->SetOverlayIndex(0);
  list->Row(3)->SetIndent(1);
  EXPECT_EQ(list->GetDropTargetItem(), list->Row(1));
  ExpectShown(*list);
  list->Row(2)->SetDropTarget(true);
  EXPECT_FALSE(list->Row(1)->GetDropTarget());
  list->Row(0)->SetImageIndex(3);
  list->Row(1)->SetImageIndex(-1);
  ExpectShown(*list);
  list->Row(0)->SetCut(false);
  list->Row(2)->SetOverlayIndex(-1);
  list->Row(3)->SetOverlayIndex(1);
  ExpectShown(*list);
  EXPECT_EQ(list->Row(3)->DisplayRect(drIcon).Left, list->Row(0)->DisplayRect(drIcon).Left + 16);
  list->RecreateWnd();
  screen->Drain();
  EXPECT_EQ(list->GetDropTargetItem(), list->Row(2));
  EXPECT_EQ(list->Row(3)->DisplayRect(drIcon).Left, list->Row(0)->DisplayRect(drIcon).Left + 16);
}

TEST_F(ListLooks, DrawnByTheApplication) {
  ShowReport(3, {120, 80});
  TLog steps;
  list->DrawsAll = true;
  list->OnEvent = [&](const std::string& event) {
    if (event.starts_with("draw")) steps.push_back(event);
  };
  list->SetSelected(list->Row(1));
  steps.clear();
  list->Invalidate();
  screen->Paint();
  ASSERT_FALSE(steps.empty());
  EXPECT_EQ(steps.front(), "draw all");
  EXPECT_EQ(steps.back(), "drawn all");
  const auto count = [&](const char* step) { return std::count(steps.begin(), steps.end(), step); };
  EXPECT_EQ(count("draw row"), 3);
  EXPECT_EQ(count("drawn row"), 3);
  EXPECT_EQ(count("draw cell"), 3);
  EXPECT_EQ(count("drawn cell"), 3);
  list->DrawsAll = false;
  list->OnEvent = nullptr;
  std::vector<int> rows;
  list->OnAdvancedCustomDrawItem = [&](TObject*, TListItem* item, TCustomDrawState state,
                                       TCustomDrawStage stage, TCanvas& canvas, bool& standard) {
    if (stage != cdPrePaint) return;
    rows.push_back(item->GetIndex());
    EXPECT_EQ(state.Contains(cdsSelected), item->GetIndex() == 1);
    EXPECT_EQ(state.Contains(cdsFocused), item->GetIndex() == 1);
    canvas.GetFont().SetColor(clRed);
    standard = item->GetIndex() != 2;
  };
  list->Invalidate();
  screen->Paint();
  EXPECT_THAT(rows, ::testing::ElementsAre(0, 1, 2));
  list->OnAdvancedCustomDrawItem = nullptr;
}

TEST_F(ListLooks, AnEmptyListIsDrawnByTheApplicationToo) {
  ShowReport(0);
  list->DrawsAll = true;
  TLog steps;
  list->OnEvent = [&](const std::string& event) {
    if (event.starts_with("draw")) steps.push_back(event);
  };
  list->Invalidate();
  screen->Paint();
  EXPECT_THAT(steps, ::testing::ElementsAre("draw all", "drawn all"));
  const TPoint middle = list->GetClientRect().Center();
  EXPECT_EQ(list->GetItemAt(middle.X, middle.Y), nullptr);
  EXPECT_TRUE(list->GetHitTest(middle.X, middle.Y).Flags.Contains(htNowhere));
  // Clicks, keys and typing find nothing.
  screen->Click(*list, middle);
  screen->RightClick(*list, middle);
  for (const std::uint16_t key : {vkDown, vkHome, vkNext, vkSpace}) Press(key);
  screen->TypeText(u"x");
  EXPECT_EQ(list->Selection(), "");
  ExpectShown(*list);
}

TEST_F(ListLooks, SpacingAndWidthOfIcons) {
  ShowStyle(vsIcon, 6);
  list->SetIconSpacingPixels(100, 90);
  screen->Drain();
  list->Arrange(arDefault);
  EXPECT_EQ(list->Row(1)->DisplayRect(drIcon).Left - list->Row(0)->DisplayRect(drIcon).Left, 100);
  const int below = list->Row(0)->DisplayRect(drIcon).Top;
  EXPECT_TRUE(list->Row(5)->DisplayRect(drIcon).Top == below + 90 ||
              list->Row(5)->DisplayRect(drIcon).Top == below + 180);
  list->RecreateWnd();
  screen->Drain();
  EXPECT_EQ(list->Row(1)->DisplayRect(drIcon).Left - list->Row(0)->DisplayRect(drIcon).Left, 100);

  list->Items().Clear();
  list->Fill(60);
  list->SetViewStyle(vsList);
  list->SetDefaultColumnWidthPixels(130);
  screen->Drain();
  const int perColumn = list->GetVisibleRowCount() / (list->GetClientRect().Width() / 130);
  EXPECT_EQ(
      list->Row(perColumn)->DisplayRect(drBounds).Left - list->Row(0)->DisplayRect(drBounds).Left,
      130);
}

TEST_F(ListLooks, IconsStandInTheOrderOfTheRows) {
  ShowStyle(vsIcon, 7);
  const auto expectOrder = [this](const char* when) {
    SCOPED_TRACE(when);
    screen->Drain();
    for (int i = 1; i < list->Items().GetCount(); ++i) {
      const TPoint former = list->Row(i - 1)->DisplayRect(drIcon).Center();
      const TPoint place = list->Row(i)->DisplayRect(drIcon).Center();
      EXPECT_TRUE(place.Y > former.Y + 8 || place.X > former.X) << i;
      EXPECT_GT(place.Y, former.Y - 8) << i;
    }
  };
  const auto byIndex = [](TListItem* a, TListItem* b, LPARAM) {
    return a->GetIndex() - b->GetIndex();
  };
  for (const TViewStyle style : {vsIcon, vsSmallIcon}) {
    SCOPED_TRACE(static_cast<int>(style));
    list->SetViewStyle(style);
    list->Items().Insert(1)->SetCaption(u"a1");
    list->Items().Insert(0)->SetCaption(u"a0");
    list->CustomSort(byIndex, 0);
    expectOrder("the new order is adopted");
    list->CustomSort(
        [](TListItem* a, TListItem* b, LPARAM) { return b->GetIndex() - a->GetIndex(); }, 0);
    expectOrder("sorted");
    list->Items().Delete(2);
    list->Arrange(arDefault);
    expectOrder("arranged after one has gone");
  }
}

TEST_F(ListLooks, BackgroundStaysBehindTheRows) {
  TBitmap picture(64, 64);
  ShowReport(60);
  list->SetBackgroundBitmap(&picture, true, 0, 0);
  ExpectShown(*list);
  list->SetBackgroundBitmap(&picture, false, 100, 100);
  screen->Wheel(*list, {50, 100}, -2);
  list->RecreateWnd();
  screen->Drain();
  ExpectShown(*list);
  list->SetBackgroundBitmap(nullptr, false, 0, 0);
  ExpectShown(*list);
}

}  // namespace
}  // namespace oak::tests
