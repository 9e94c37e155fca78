// Layout, drawing and scrolling of a list on the headless desktop.
#include "oak/framework/Canvas.h"
#include "oak/framework/headless/CanvasHeadless.h"
#include "tests/framework/HeadlessListFixture.h"

namespace oak::tests {
namespace {

class HeadlessListLayout : public THeadlessListTest {
 protected:
  TScrollBarKind fVertical = sbVertical;
  struct TBar {
    int Position = -1, Page = -1, Range = -1;
    bool Shown = false;
    friend bool operator==(const TBar&, const TBar&) = default;
  };
  TBar Bar(TScrollBarKind kind) {
    TBar bar;
    bar.Shown = list->Peer().GetScroll(kind, &bar.Position, &bar.Page, &bar.Range);
    return bar;
  }
};

// --- layout: a line of text is 15 pixels, an image 16, a row 18, the header 23 ------------------

TEST_F(HeadlessListLayout, ReportRowsAndCells) {
  ShowReport(100);
  TListItem& row = *list->Row(1);
  EXPECT_EQ(list->GetHeaderRect(), TRect(0, 0, 283, 23));
  EXPECT_EQ(row.DisplayRect(drBounds), TRect(0, 41, 260, 59));
  EXPECT_EQ(row.DisplayRect(drIcon), TRect(0, 42, 16, 58));
  EXPECT_EQ(row.DisplayRect(drLabel), TRect(16, 41, 120, 59));
  EXPECT_EQ(row.DisplayRect(drSelectBounds), TRect(0, 41, 120, 59));
  EXPECT_EQ(list->Peer().GetSubItemRect(1, 2), TRect(200, 41, 260, 59));
  EXPECT_EQ(list->Peer().GetSubItemRect(1, 3), TRect());
  EXPECT_EQ(list->Peer().GetItemRect(100, drBounds), TRect());

  row.SetIndent(2);
  list->SetCheckboxes(true);
  EXPECT_EQ(row.DisplayRect(drIcon).Left, 2 * 16 + 16);
  list->Columns()[1]->SetIndex(0);
  EXPECT_EQ(row.DisplayRect(drIcon).Left, 80 + 2 * 16 + 16) << "icons go with the captions";
  list->SetShowColumnHeaders(false);
  EXPECT_EQ(row.DisplayRect(drBounds).Top, 18);
  EXPECT_EQ(list->GetHeaderRect(), TRect());
}

TEST_F(HeadlessListLayout, ScrollBarsComeAndGoWithRowsAndColumns) {
  ShowReport(9);
  EXPECT_FALSE(Bar(sbVertical).Shown);
  list->Fill(1);
  EXPECT_EQ(Bar(sbVertical), (TBar{0, 9 * 18, 10 * 18, true}));
  EXPECT_EQ(list->GetVisibleRowCount(), 9);
  list->Columns()[0]->SetWidth(143);
  EXPECT_FALSE(Bar(sbHorizontal).Shown);
  // Two pixels too many: the bar takes the room of a row.
  list->Columns()[0]->SetWidth(145);
  EXPECT_EQ(Bar(sbHorizontal), (TBar{0, 283, 285, true}));
  EXPECT_EQ(list->GetVisibleRowCount(), 8);
  list->Items().Delete(0);
  list->Items().Delete(0);
  EXPECT_FALSE(Bar(sbVertical).Shown);
  EXPECT_FALSE(Bar(sbHorizontal).Shown) << "there is room without the other one";
  list->SetBounds(0, 0, 300, 100);
  EXPECT_TRUE(Bar(sbVertical).Shown);
}

TEST_F(HeadlessListLayout, ColumnsOfVsList) {
  list->SetDefaultColumnWidthPixels(90);
  ShowStyle(vsList, 40);
  // 200 pixels less a bar of 17 hold ten rows.
  EXPECT_EQ(list->Row(0)->DisplayRect(drIcon), TRect(0, 1, 16, 17));
  EXPECT_EQ(list->Row(11)->DisplayRect(drIcon).TopLeft(), TPoint(90, 19));
  EXPECT_EQ(Bar(sbHorizontal), (TBar{0, 270, 360, true}));
  EXPECT_FALSE(Bar(sbVertical).Shown);
  list->Row(39)->MakeVisible(false);
  EXPECT_EQ(list->GetTopItem(), list->Row(10));
  EXPECT_EQ(list->GetItemAt(5, 5), list->Row(10));
  EXPECT_EQ(list->GetItemAt(85, 5), nullptr) << "right of the text";
  screen->MouseMove(list->ClientToScreen({50, 100}));
  screen->Wheel(1);
  EXPECT_EQ(list->GetTopItem(), list->Row(0)) << "the wheel goes aside";
}

TEST_F(HeadlessListLayout, IconsStandInAGridWithTwoLinesOfText) {
  ShowStyle(vsIcon, 20);
  // 75 pixels from icon to icon, three beside each other.
  EXPECT_EQ(list->Row(0)->DisplayRect(drIcon), TRect(21, 2, 53, 34));
  EXPECT_EQ(list->Row(4)->DisplayRect(drIcon).TopLeft(), TPoint(75 + 21, 75 + 2));
  EXPECT_EQ(Bar(sbVertical), (TBar{0, 200, 7 * 75, true}));
  const TRect oneLine = list->Row(0)->DisplayRect(drLabel);
  EXPECT_EQ(oneLine.Height(), 15);
  EXPECT_EQ(oneLine.Top, 36);
  list->Row(0)->SetCaption(u"a caption that needs more lines than there are");
  const TRect twoLines = list->Row(0)->DisplayRect(drLabel);
  EXPECT_EQ(twoLines.Height(), 30);
  EXPECT_LE(twoLines.Width(), 75);
  EXPECT_EQ(list->Row(0)->DisplayRect(drBounds), twoLines.United({21, 2, 53, 34}));

  list->SetIconSpacingPixels(140, 50);
  EXPECT_EQ(list->Row(3)->DisplayRect(drIcon).TopLeft(), TPoint(140 + 54, 50 + 2));
  list->SetIconSpacingPixels(-1, -1);
  EXPECT_EQ(list->Row(4)->DisplayRect(drIcon).TopLeft(), TPoint(75 + 21, 75 + 2));
  list->SetViewStyle(vsSmallIcon);
  EXPECT_EQ(list->Row(1)->DisplayRect(drIcon), TRect(0, 19, 16, 35))
      << "one of 200 pixels in a row";
}

TEST_F(HeadlessListLayout, HitTests) {
  list->SetCheckboxes(true);
  ShowReport(3);
  const struct {
    TPoint Point;
    int Index, SubItem;
    THitTestFlag Flag;
  } cases[] = {
      {{5, 25}, 0, 0, htOnStateIcon}, {{20, 25}, 0, 0, htOnIcon},    {{40, 25}, 0, 0, htOnLabel},
      {{115, 25}, 0, 0, htNowhere},   {{130, 45}, 1, 1, htNowhere},  {{250, 60}, 2, 2, htNowhere},
      {{270, 25}, -1, 0, htNowhere},  {{40, 90}, -1, 0, htNowhere},  {{40, 10}, -1, 0, htNowhere},
      {{-1, 50}, -1, 0, htToLeft},    {{300, 50}, -1, 0, htToRight}, {{40, -1}, -1, 0, htAbove},
      {{40, 200}, -1, 0, htBelow},
  };
  for (const auto& test : cases) {
    const TListHitTest hit = list->GetHitTest(test.Point.X, test.Point.Y);
    EXPECT_EQ(hit.Index, test.Index) << test.Point.X << "," << test.Point.Y;
    EXPECT_EQ(hit.SubItem, test.SubItem) << test.Point.X << "," << test.Point.Y;
    EXPECT_TRUE(hit.Flags == test.Flag) << test.Point.X << "," << test.Point.Y;
  }
  EXPECT_EQ(list->GetItemAt(130, 45), nullptr);
  list->SetRowSelect(true);
  EXPECT_EQ(list->GetItemAt(130, 45), list->Row(1));
  EXPECT_EQ(list->GetItemAt(270, 45), nullptr);
  EXPECT_EQ(list->GetListPeer()->HeaderHitTest({130, 10}), 1);
  EXPECT_EQ(list->GetListPeer()->HeaderHitTest({130, 30}), -1);
}

TEST_F(HeadlessListLayout, ScrollingKeepsRowsAtTheEdge) {
  ShowReport(100, {120, 200, 60});
  list->Scroll(0, 1);
  EXPECT_EQ(list->GetTopItem(), list->Row(1));
  list->Scroll(0, 3 * 18);
  EXPECT_EQ(list->GetTopItem(), list->Row(4));
  list->Scroll(0, -20);
  EXPECT_EQ(list->GetTopItem(), list->Row(2));
  list->Row(50)->MakeVisible(false);
  EXPECT_EQ(list->Row(50)->DisplayRect(drBounds).Bottom, 23 + 8 * 18);
  list->Row(49)->MakeVisible(false);
  EXPECT_EQ(list->GetTopItem(), list->Row(43)) << "was visible already";
  list->Row(51)->MakeVisible(true);
  EXPECT_EQ(list->GetTopItem(), list->Row(43)) << "a part of it is";
  list->Row(10)->MakeVisible(true);
  EXPECT_EQ(list->GetTopItem(), list->Row(10));
  list->Scroll(10000, 10000);
  EXPECT_EQ(list->GetTopItem(), list->Row(92));
  EXPECT_EQ(list->Peer().GetSubItemRect(92, 0).Left, -(380 - 283));
  list->Peer().ScrollLines(sbVertical, -2);
  EXPECT_EQ(list->GetTopItem(), list->Row(90));
  screen->MouseMove(list->ClientToScreen({50, 100}));
  screen->Wheel(1);
  EXPECT_EQ(list->GetTopItem(), list->Row(87));
}

TEST_F(HeadlessListLayout, TheFontsSizeIsFollowed) {
  ShowReport(10);
  TFont font = list->GetFont();
  font.SetHeight(-24);
  list->SetFont(font);
  EXPECT_EQ(list->Row(0)->DisplayRect(drBounds).Height(), 32);
  EXPECT_EQ(list->GetHeaderRect().Height(), 38);
  EXPECT_EQ(list->GetVisibleRowCount(), 5);
}

// --- widths that fit
// ------------------------------------------------------------------------------

TEST_F(HeadlessListLayout, WidthsFitTheVisibleRows) {
  ShowReport(1000);
  const int text = list->GetStringWidth(u"size 0");
  list->Columns()[1]->SetWidth(TListColumn::FitTexts);
  EXPECT_EQ(list->Columns()[1]->GetWidth(), text + 12) << "not that of \"size 999\"";
  list->Columns()[1]->SetCaption(u"a long caption");
  const int caption = list->GetStringWidth(u"a long caption");
  list->Columns()[1]->SetWidth(TListColumn::FitTextsAndCaption);
  EXPECT_EQ(list->Columns()[1]->GetWidth(), caption + 12);
  list->Columns()[2]->SetWidth(0);
  list->Peer().ResetRequests();
  Press(vkAdd, {ssCtrl});
  EXPECT_EQ(list->Columns()[0]->GetWidth(), list->GetStringWidth(u"row 0") + 12 + 16);
  EXPECT_EQ(list->Columns()[1]->GetWidth(), caption + 12);
  EXPECT_EQ(list->Columns()[2]->GetWidth(), 0) << "a hidden column stays hidden";
  EXPECT_LE(list->Peer().GetTextRequests(), 50);
}

TEST_F(HeadlessListLayout, WidthsThatWaitedAreMeasuredWithTheWindow) {
  ShowReport(5, {TListColumn::FitTexts, TListColumn::FitTextsAndCaption});
  EXPECT_EQ(list->Columns()[0]->GetWidth(), list->GetStringWidth(u"row 0") + 12 + 16);
  EXPECT_EQ(list->Columns()[1]->GetWidth(), list->GetStringWidth(u"size 0") + 12);
}

// --- drawing
// ---------------------------------------------------------------------------------------

class HeadlessListPaint : public THeadlessListTest {
 protected:
  /// What stands in the picture of the list.
  std::vector<TDrawOperation> Drawn(TDrawKind kind) {
    screen.Drain();
    std::vector<TDrawOperation> found;
    for (const TDrawOperation& operation : list->Peer().GetDrawing())
      if (operation.Kind == kind) found.push_back(operation);
    return found;
  }
  const TDrawOperation* TextOf(TStringView text) {
    fFound = Drawn(TDrawKind::Text);
    for (const TDrawOperation& operation : fFound)
      if (operation.Text == text) return &operation;
    return nullptr;
  }
  void Redraw() {
    list->Invalidate();
    screen.Drain();
  }
  /// Colour of the last filled area that covers the text of a row.
  TColor Behind(int row) {
    TColor color = clNone;
    for (const TDrawOperation& fill : Drawn(TDrawKind::FillRect))
      if (fill.Rect.Contains(AtRow(row))) color = fill.Color;
    return color;
  }

  std::vector<TDrawOperation> fFound;
};

TEST_F(HeadlessListPaint, OnlyWhatIsSeenIsAskedFor) {
  const auto requests = [this] {
    screen.Drain();
    const std::pair result(list->Peer().GetTextRequests(), list->Peer().GetImageRequests());
    list->Peer().ResetRequests();
    return result;
  };
  using TRequests = std::pair<int, int>;
  list->SetSmallImages(&small);
  list->SetViewStyle(vsReport);
  list->AddColumns({120, 80, 60});
  form.Show();
  screen.Drain();
  list->Peer().ResetRequests();
  list->Fill(100'000);
  EXPECT_EQ(list->Peer().GetTextRequests(), 0);
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
  list->Items().Delete(8);
  EXPECT_EQ(requests(), TRequests(6, 2));

  list->Columns()[1]->SetWidth(0);
  EXPECT_EQ(requests(), TRequests(20, 10)) << "a hidden column is not asked for";
  list->Columns()[0]->SetWidth(400);
  EXPECT_EQ(requests().first, 9) << "nor one that is scrolled out";
  list->Peer().ScrollLines(sbVertical, 1000);
  EXPECT_EQ(requests().second, 9);
  list->SetSmallImages(nullptr);
  EXPECT_EQ(requests().second, 0) << "without images none is asked for";
}

TEST_F(HeadlessListPaint, NothingIsAskedForWithinAnUpdate) {
  ShowReport(20);
  list->Items().BeginUpdate();
  list->Row(0)->SetCaption(u"x");
  Redraw();
  EXPECT_EQ(list->Peer().GetTextRequests(), 0);
  list->Items().EndUpdate();
  screen.Drain();
  EXPECT_EQ(list->Peer().GetTextRequests(), 30);
  EXPECT_NE(TextOf(u"x"), nullptr);
}

TEST_F(HeadlessListPaint, AClickRepaintsTheRowsItChanges) {
  ShowReport(20);
  screen->Click(*list, AtRow(2));
  list->Peer().ResetRequests();
  screen->Click(*list, AtRow(6));
  // The label that was hit is asked for once more.
  EXPECT_LE(list->Peer().GetImageRequests(), 5) << "rows 2 to 6 lie in one rectangle";
  EXPECT_GE(list->Peer().GetImageRequests(), 2);
}

TEST_F(HeadlessListPaint, AnImageThatIsSetWhenAskedForCausesNoSecondPaint) {
  list->OnGetImageIndex = [](TObject*, TListItem* item) { item->SetImageIndex(3); };
  ShowReport(5);
  EXPECT_EQ(list->Row(4)->GetImageIndex(), 3);
  const int painted = list->Peer().GetPaintCount();
  screen.Drain();
  EXPECT_EQ(list->Peer().GetPaintCount(), painted);
  EXPECT_TRUE(list->TakeTold().empty());
}

TEST_F(HeadlessListPaint, StatesAreSeen) {
  ShowReport(6);
  list->Row(1)->SetSelected(true);
  list->Row(2)->SetCut(true);
  list->Row(3)->SetDropTarget(true);
  list->Row(4)->SetOverlayIndex(1);
  list->SetItemFocused(list->Row(1));
  Redraw();
  const auto images = Drawn(TDrawKind::Image);
  ASSERT_EQ(images.size(), 6u);
  EXPECT_EQ(images[0].State, TImageState::Normal);
  EXPECT_EQ(images[1].State, TImageState::Selected);
  EXPECT_EQ(images[2].State, TImageState::Ghosted);
  EXPECT_EQ(images[3].State, TImageState::Selected);
  EXPECT_EQ(images[4].Overlay, 2);
  EXPECT_EQ(images[4].ImageIndex, 4 % 3);
  EXPECT_EQ(Behind(0), ColorToRGB(clWindow));
  EXPECT_EQ(Behind(1), ColorToRGB(clHighlight));
  EXPECT_EQ(TextOf(u"row 1")->PenColor, ColorToRGB(clHighlightText));
  EXPECT_EQ(Behind(3), ColorToRGB(clHighlight));
  ASSERT_EQ(Drawn(TDrawKind::FocusRect).size(), 1u);
  EXPECT_TRUE(Drawn(TDrawKind::FocusRect)[0].Rect.Contains(AtRow(1)));

  // Without the keyboard.
  TScreenList other(&form);
  other.SetBounds(300, 0, 50, 50);
  other.SetFocus();
  EXPECT_EQ(Behind(1), ColorToRGB(clBtnFace));
  EXPECT_TRUE(Drawn(TDrawKind::FocusRect).empty());
  list->SetHideSelection(true);
  EXPECT_EQ(Behind(1), ColorToRGB(clWindow));
}

TEST_F(HeadlessListPaint, CellsAlignAndShortenTheirTexts) {
  ShowReport(1, {70, 80, 60});
  list->Row(0)->SetCaption(u"much too long");
  list->Columns()[1]->SetAlignment(taRightJustify);
  screen.Drain();
  const TDrawOperation* const caption = TextOf(u"much...");
  ASSERT_NE(caption, nullptr);
  EXPECT_LE(caption->Rect.Right, 70);
  EXPECT_EQ(TextOf(u"size 0")->Rect.Right, 150 - 2);
  EXPECT_EQ(TextOf(u"date 0")->Rect.Left, 150 + 2);
  list->Columns()[0]->SetIndex(2);
  EXPECT_EQ(TextOf(u"date 0")->Rect.Left, 80 + 2) << "texts move with their columns";
}

TEST_F(HeadlessListPaint, CheckBoxesAndStateImages) {
  ShowReport(2);
  list->SetCheckboxes(true);
  list->Row(1)->SetChecked(true);
  EXPECT_EQ(Drawn(TDrawKind::Rectangle).size(), 2u);
  EXPECT_EQ(Drawn(TDrawKind::Line).size(), 2u) << "one tick";
  list->SetStateImages(&small);
  list->Row(0)->SetStateIndex(2);
  EXPECT_TRUE(Drawn(TDrawKind::Rectangle).empty());
  const auto images = Drawn(TDrawKind::Image);
  ASSERT_EQ(images.size(), 3u) << "row 1 has none";
  EXPECT_EQ(images[0].ImageIndex, 2);
  EXPECT_LT(images[0].Rect.Left, images[1].Rect.Left);
}

TEST_F(HeadlessListPaint, TheApplicationDrawsAlong) {
  ShowReport(3);
  list->OnAdvancedCustomDrawItem = [](TObject*, TListItem* item, TCustomDrawState state,
                                      TCustomDrawStage stage, TCanvas& canvas, bool& standard) {
    if (stage == cdPostPaint) return canvas.TextOut(200, 150, u"after " + item->GetCaption());
    EXPECT_EQ(state.Contains(cdsSelected), item->GetIndex() == 1);
    canvas.GetFont().SetColor(clRed);
    canvas.GetBrush().SetColor(clYellow);
    standard = item->GetIndex() != 2;
  };
  list->Row(1)->SetSelected(true);
  Redraw();
  EXPECT_EQ(TextOf(u"row 0")->PenColor, clRed);
  EXPECT_EQ(Behind(0), clYellow);
  EXPECT_EQ(TextOf(u"row 1")->PenColor, ColorToRGB(clHighlightText))
      << "selected rows are readable";
  EXPECT_EQ(TextOf(u"row 2"), nullptr);
  EXPECT_NE(TextOf(u"after row 0"), nullptr);
  EXPECT_EQ(TextOf(u"after row 2"), nullptr);
}

TEST_F(HeadlessListPaint, AnEmptyListCanShowAText) {
  ShowReport(0);
  list->OnDrawAll = [this](TCanvas& canvas, TCustomDrawStage stage) {
    if (stage == cdPrePaint && list->Items().GetCount() == 0) canvas.TextOut(10, 40, u"nothing");
    return true;
  };
  Redraw();
  EXPECT_NE(TextOf(u"nothing"), nullptr);
  list->Fill(1);
  EXPECT_EQ(TextOf(u"nothing"), nullptr);
  EXPECT_NE(TextOf(u"row 0"), nullptr);
}

TEST_F(HeadlessListPaint, TheBackgroundPictureLiesBehindTheRows) {
  ShowReport(3);
  TBitmap picture(100, 60);
  list->SetBackgroundBitmap(&picture, true, 0, 0);
  EXPECT_EQ(Drawn(TDrawKind::Bitmap).size(), 9u) << "300 by 177 pixels";
  list->SetBackgroundBitmap(&picture, false, 100, 100);
  const auto drawn = Drawn(TDrawKind::Bitmap);
  ASSERT_EQ(drawn.size(), 1u);
  EXPECT_EQ(drawn[0].Rect, TRect(200, 140, 300, 200));
  list->SetBackgroundBitmap(nullptr, false, 0, 0);
  EXPECT_TRUE(Drawn(TDrawKind::Bitmap).empty());
}

TEST_F(HeadlessListPaint, HeadersShowCaptionsAndSortMarks) {
  ShowReport(3);
  const auto header = [this](TDrawKind kind) {
    screen.Drain();
    std::vector<TDrawOperation> found;
    for (const TDrawOperation& operation : list->Peer().GetHeader().GetDrawing())
      if (operation.Kind == kind) found.push_back(operation);
    return found;
  };
  EXPECT_EQ(header(TDrawKind::Text).size(), 3u);
  EXPECT_TRUE(header(TDrawKind::Polygon).empty());
  list->Columns()[1]->SetSortMark(TListSortMark::Down);
  const auto marks = header(TDrawKind::Polygon);
  ASSERT_EQ(marks.size(), 1u);
  EXPECT_TRUE(TRect(120, 0, 200, 23).Contains(marks[0].Points[0]));
  EXPECT_GT(marks[0].Points[2].Y, marks[0].Points[0].Y) << "points down";
}

// --- what reaches the window
// ------------------------------------------------------------------------

TEST_F(HeadlessListPaint, ManyChangesReachTheWindowAsOne) {
  ShowReport(100);
  TListItem* const focused = list->Row(70);
  list->SetItemFocused(focused);
  list->Row(70)->SetSelected(true);
  list->Row(70)->MakeVisible(false);
  const int top = list->GetTopItem()->GetIndex();
  struct TCase {
    const char* Name;
    std::function<void()> Act;
    TEvents Expected;
  };
  TListItems& items = list->Items();
  const TCase cases[] = {
      {"texts",
       [&] {
         list->Row(3)->SetCaption(u"x");
         list->Row(9)->SetImageIndex(1);
       },
       {"changed 3 3", "changed 9 9"}},
      {"texts in an update",
       [&] {
         items.BeginUpdate();
         items.BeginUpdate();
         list->Row(3)->SetCaption(u"y");
         items.EndUpdate();
         list->Row(9)->SetImageIndex(2);
         list->Row(5)->SetCut(true);
         items.EndUpdate();
       },
       {"changed 3 9", "states 5 5"}},
      {"an update without changes",
       [&] {
         items.BeginUpdate();
         items.EndUpdate();
       },
       {}},
      {"rows in an update",
       [&] {
         items.BeginUpdate();
         for (int i = 0; i < 10; ++i) items.Add();
         items.Delete(100);
         list->Row(3)->SetCaption(u"z");
         items.EndUpdate();
       },
       {"reset"}},
      {"rows one by one",
       [&] {
         items.Insert(90);
         items.Delete(91);
       },
       {"inserted 90 1", "deleted 91 1"}},
      {"rows that stand together",
       [&] { items.DeleteIf([](TListItem& item) { return item.GetIndex() >= 100; }); },
       {"deleted 100 9"}},
      {"rows here and there",
       [&] { items.DeleteIf([](TListItem& item) { return item.GetIndex() % 40 == 39; }); },
       {"reset"}},
      {"a sort that changes nothing",
       [&] { list->CustomSort([](auto*, auto*, LPARAM) { return 0; }, 0); },
       {}},
      {"a sort",
       [&] {
         list->CustomSort([](auto* a, auto* b, LPARAM) { return b->GetIndex() - a->GetIndex(); },
                          0);
         list->CustomSort([](auto* a, auto* b, LPARAM) { return b->GetIndex() - a->GetIndex(); },
                          0);
       },
       {"reset", "reset"}},
      {"all selected", [&] { list->SelectAll(); }, {"states 0 97"}},
      {"one selected", [&] { list->SetSelected(list->Row(69)); }, {"states 0 97"}},
      {"columns",
       [&] {
         list->Columns().BeginUpdate();
         list->Columns().Add()->SetCaption(u"new");
         list->Columns()[0]->SetWidth(99);
         list->Columns().EndUpdate();
       },
       {"columns"}},
      {"a width", [&] { list->Columns()[0]->SetWidth(88); }, {"width 0"}},
      {"a sort mark", [&] { list->Columns()[0]->SetSortMark(TListSortMark::Up); }, {"columns"}},
  };
  for (const TCase& test : cases) {
    list->TakeTold();
    test.Act();
    EXPECT_EQ(list->TakeTold(), test.Expected) << test.Name;
    EXPECT_EQ(list->GetTopItem(), list->Row(top)) << test.Name;
    EXPECT_EQ(list->GetItemFocused(), focused) << test.Name;
  }
  list->TakeTold();
  list->Items().Clear();
  EXPECT_EQ(list->TakeTold(), TEvents({"deleted 0 98"}));
}

TEST_F(HeadlessListPaint, ANewWindowShowsTheSame) {
  ShowReport(100);
  list->Row(50)->MakeVisible(false);
  list->SetSelected(list->Row(45));
  list->SetCheckboxes(true);
  const TListItem* const top = list->GetTopItem();
  list->RecreateWnd();
  EXPECT_EQ(list->GetTopItem(), top);
  EXPECT_EQ(list->State(), "[45]");
  EXPECT_TRUE(list->Focused());
  EXPECT_NE(TextOf(u"row 45"), nullptr);
  EXPECT_EQ(list->Row(45)->DisplayRect(drIcon).Left, 16);

  list->Items().BeginUpdate();
  list->RecreateWnd();
  list->Row(46)->SetCaption(u"changed");
  screen.Drain();
  EXPECT_EQ(TextOf(u"changed"), nullptr) << "the update goes on";
  list->Items().EndUpdate();
  EXPECT_NE(TextOf(u"changed"), nullptr);
}

TEST_F(HeadlessListPaint, ImageListsLeaveByThemselves) {
  auto images = std::make_unique<TImageList>(nullptr, 20, 20);
  images->Add(TBitmap(20, 20));
  ShowReport(1);
  list->SetSmallImages(images.get());
  list->SetLargeImages(images.get());
  EXPECT_EQ(list->Row(0)->DisplayRect(drIcon).Width(), 20);
  list->SetLargeImages(nullptr);
  screen.Drain();
  list->Peer().ResetRequests();
  images->Add(TBitmap(20, 20));
  screen.Drain();
  EXPECT_EQ(list->Peer().GetImageRequests(), 1) << "a change of the images is seen";
  images.reset();
  EXPECT_EQ(list->GetSmallImages(), nullptr);
  EXPECT_EQ(list->Row(0)->DisplayRect(drIcon).Width(), 0);
  screen.Drain();
}

}  // namespace
}  // namespace oak::tests
