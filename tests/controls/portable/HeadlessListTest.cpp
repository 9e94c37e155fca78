// What only the headless list knows: where its parts lie, what it asks for, draws and is told.
#include "oak/framework/Canvas.h"
#include "oak/framework/headless/CanvasHeadless.h"
#include "oak/framework/headless/HeadlessDesktop.h"
#include "oak/framework/headless/HeadlessListPeer.h"
#include "tests/controls/ControlsFixture.h"

namespace oak::tests {
namespace {

using ::testing::Contains;
using ::testing::ElementsAre;
using ::testing::IsEmpty;
using ::testing::Not;

/// Writes down what the list tells its window.
class TToldPeer final : public THeadlessListPeer {
 public:
  TToldPeer(THeadlessDesktop& desktop, TCustomListView& view, TLog& log)
      : THeadlessListPeer(desktop, view), fLog(log) {}
  void ItemsInserted(int index, int count) override {
    Note("inserted", index, count);
    THeadlessListPeer::ItemsInserted(index, count);
  }
  void ItemsDeleted(int index, int count) override {
    Note("deleted", index, count);
    THeadlessListPeer::ItemsDeleted(index, count);
  }
  void ItemsReset() override {
    fLog.push_back("reset");
    THeadlessListPeer::ItemsReset();
  }
  void ItemsChanged(int first, int last) override {
    Note("changed", first, last);
    THeadlessListPeer::ItemsChanged(first, last);
  }
  void ItemStatesChanged(int first, int last) override {
    Note("states", first, last);
    THeadlessListPeer::ItemsChanged(first, last);
  }

 private:
  void Note(const char* what, int a, int b) {
    fLog.push_back(std::string(what) + " " + std::to_string(a) + " " + std::to_string(b));
  }
  TLog& fLog;
};

class TToldList : public TListUnderTest {
 public:
  ~TToldList() override { BeginDestroy(); }
  TLog Told;

 protected:
  std::unique_ptr<IControlPeer> CreatePeer() override {
    return std::make_unique<TToldPeer>(dynamic_cast<THeadlessDesktop&>(WidgetSet()), *this, Told);
  }
};

/// A list of 300 by 200 pixels without an edge, with columns of 120, 80 and 60. A line of text is
/// 15 pixels, an image 16, a row 18, the header 23.
class HeadlessList : public TListTest {
 protected:
  HeadlessList() {
    delete list;
    list = told;
    list->SetBorderStyle(bsNone);
    list->SetBounds(0, 0, 300, 200);
    list->SetSmallImages(smallImages.get());
    list->SetLargeImages(largeImages.get());
    list->SetParent(form.get());
  }
  void ShowRows(int rows, std::initializer_list<int> widths = {120, 80, 60}) {
    ShowReport(rows, widths);
    told->Told.clear();
    Peer().ResetRequests();
  }
  THeadlessDesktop& Desktop() { return dynamic_cast<THeadlessDesktop&>(WidgetSet()); }
  THeadlessListPeer& Peer() { return dynamic_cast<THeadlessListPeer&>(*list->GetListPeer()); }
  TRect Icon(int row) { return list->Row(row)->DisplayRect(drIcon); }

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
  /// What stands in the picture of the list.
  std::vector<TDrawOperation> Drawn(TDrawKind kind, TStringView text = {}) {
    screen->Drain();
    std::vector<TDrawOperation> found;
    for (const TDrawOperation& operation : Peer().GetDrawing())
      if (operation.Kind == kind && (text.empty() || operation.Text == text))
        found.push_back(operation);
    return found;
  }

  TToldList* told = new TToldList;
};

TEST_F(HeadlessList, PartsOfAReport) {
  ShowRows(100);
  TListItem& row = *list->Row(1);
  EXPECT_EQ(list->GetHeaderRect(), TRect(0, 0, 283, 23));
  EXPECT_EQ(row.DisplayRect(drBounds), TRect(0, 41, 260, 59));
  EXPECT_EQ(row.DisplayRect(drIcon), TRect(0, 42, 16, 58));
  EXPECT_EQ(row.DisplayRect(drLabel), TRect(16, 41, 120, 59));
  EXPECT_EQ(row.DisplayRect(drSelectBounds), TRect(0, 41, 120, 59));
  EXPECT_EQ(Peer().GetSubItemRect(1, 2), TRect(200, 41, 260, 59));
  EXPECT_EQ(Peer().GetSubItemRect(1, 3), TRect());
  EXPECT_EQ(Peer().GetItemRect(100, drBounds), TRect());
  row.SetIndent(2);
  list->SetCheckboxes(true);
  EXPECT_EQ(Icon(1).Left, 2 * 16 + 16);
  list->Columns()[1]->SetIndex(0);
  EXPECT_EQ(Icon(1).Left, 80 + 2 * 16 + 16) << "icons go with the captions";
  TFont font = list->GetFont();
  font.SetHeight(-24);
  list->SetFont(font);
  EXPECT_EQ(row.DisplayRect(drBounds).Height(), 32);
  EXPECT_EQ(list->GetHeaderRect().Height(), 38);
  EXPECT_EQ(list->GetVisibleRowCount(), 5);
}

TEST_F(HeadlessList, PartsInTheOtherStyles) {
  list->SetDefaultColumnWidthPixels(90);
  ShowStyle(vsList, 40);
  // 200 pixels less a bar of 17 hold ten rows.
  EXPECT_EQ(Icon(0), TRect(0, 1, 16, 17));
  EXPECT_EQ(Icon(11).TopLeft(), TPoint(90, 19));
  EXPECT_EQ(Bar(sbHorizontal), (TBar{0, 270, 360, true}));
  list->Row(39)->MakeVisible(false);
  EXPECT_EQ(list->GetItemAt(5, 5), list->Row(10));
  EXPECT_EQ(list->GetItemAt(85, 5), nullptr) << "right of the text";
  screen->Wheel(*list, {50, 100}, 1);
  EXPECT_EQ(list->GetTopItem(), list->Row(0)) << "the wheel goes aside";
  // 75 pixels from icon to icon, three beside each other; texts have two lines.
  list->SetViewStyle(vsIcon);
  EXPECT_EQ(Icon(0), TRect(21, 2, 53, 34));
  EXPECT_EQ(Icon(4).TopLeft(), TPoint(75 + 21, 75 + 2));
  EXPECT_EQ(Bar(sbVertical), (TBar{0, 200, 14 * 75, true}));
  const TRect oneLine = list->Row(0)->DisplayRect(drLabel);
  EXPECT_EQ(oneLine.Height(), 15);
  list->Row(0)->SetCaption(u"a caption that needs more lines than there are");
  const TRect twoLines = list->Row(0)->DisplayRect(drLabel);
  EXPECT_EQ(twoLines.Height(), 30);
  EXPECT_LE(twoLines.Width(), 75);
  EXPECT_EQ(list->Row(0)->DisplayRect(drBounds), twoLines.United(Icon(0)));
  list->SetIconSpacingPixels(140, 50);
  EXPECT_EQ(Icon(3).TopLeft(), TPoint(140 + 54, 50 + 2));
  list->SetViewStyle(vsSmallIcon);
  EXPECT_EQ(Icon(1), TRect(90, 1, 106, 17)) << "one of 200 pixels in a row";
}

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

TEST_F(HeadlessList, HitTests) {
  list->SetCheckboxes(true);
  ShowRows(3);
  const struct {
    TPoint Point;
    int Index, SubItem;
    THitTestFlag Flag;
  } cases[] = {
      {{5, 25}, 0, 0, htOnStateIcon}, {{20, 25}, 0, 0, htOnIcon},   {{40, 25}, 0, 0, htOnLabel},
      {{115, 25}, 0, 0, htNowhere},   {{130, 45}, 1, 1, htNowhere}, {{270, 25}, -1, 0, htNowhere},
      {{40, 90}, -1, 0, htNowhere},   {{40, 10}, -1, 0, htNowhere}, {{-1, 50}, -1, 0, htToLeft},
      {{300, 50}, -1, 0, htToRight},  {{40, -1}, -1, 0, htAbove},   {{40, 200}, -1, 0, htBelow},
  };
  for (const auto& test : cases) {
    SCOPED_TRACE(std::to_string(test.Point.X) + "," + std::to_string(test.Point.Y));
    const TListHitTest hit = list->GetHitTest(test.Point.X, test.Point.Y);
    EXPECT_EQ(hit.Index, test.Index);
    EXPECT_EQ(hit.SubItem, test.SubItem);
    EXPECT_TRUE(hit.Flags == test.Flag);
  }
  screen->MouseMove(*list, {119, 10});
  EXPECT_EQ(Desktop().GetCursorShape(), crSizeWE);
  screen->MouseMove(*list, {60, 10});
  EXPECT_EQ(Desktop().GetCursorShape(), crArrow);
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
  EXPECT_THAT(told->Told, IsEmpty());
}

TEST_F(HeadlessList, CellsAlignShortenAndColourTheirTexts) {
  ShowRows(2, {70, 80, 60});
  list->Row(0)->SetCaption(u"much too long");
  list->Columns()[1]->SetAlignment(taRightJustify);
  ASSERT_EQ(Drawn(TDrawKind::Text, u"much...").size(), 1u);
  EXPECT_LE(Drawn(TDrawKind::Text, u"much...")[0].Rect.Right, 70);
  EXPECT_EQ(Drawn(TDrawKind::Text, u"size 0")[0].Rect.Right, 150 - 2);
  list->Columns()[0]->SetIndex(2);
  EXPECT_EQ(Drawn(TDrawKind::Text, u"x")[0].Rect.Left, 80 + 2) << "texts move with their columns";
  list->OnAdvancedCustomDrawItem = [](TObject*, TListItem*, TCustomDrawState,
                                      TCustomDrawStage stage, TCanvas& canvas, bool&) {
    if (stage == cdPrePaint) canvas.GetFont().SetColor(clRed);
  };
  list->Row(1)->SetSelected(true);
  list->Invalidate();
  EXPECT_EQ(Drawn(TDrawKind::Text, u"size 0")[0].PenColor, clRed);
  EXPECT_EQ(Drawn(TDrawKind::Text, u"row 1")[0].PenColor, ColorToRGB(clHighlightText))
      << "selected rows are readable";
  TBitmap picture(100, 60);
  list->SetBackgroundBitmap(&picture, true, 0, 0);
  EXPECT_EQ(Drawn(TDrawKind::Bitmap).size(), 9u) << "300 by 177 pixels";
  list->SetBackgroundBitmap(&picture, false, 100, 100);
  ASSERT_EQ(Drawn(TDrawKind::Bitmap).size(), 1u);
  EXPECT_EQ(Drawn(TDrawKind::Bitmap)[0].Rect, TRect(200, 140, 300, 200));
  list->OnAdvancedCustomDrawItem = nullptr;
}

TEST_F(HeadlessList, ManyChangesReachTheWindowAsOne) {
  ShowRows(100);
  TListItem* const focused = list->Row(70);
  list->SetSelected(focused);
  focused->MakeVisible(false);
  const int top = list->GetTopItem()->GetIndex();
  struct TCase {
    const char* Name;
    std::function<void()> Act;
    TLog Expected;
  };
  TListItems& items = list->Items();
  const auto byPlace = [](TListItem* a, TListItem* b, LPARAM sign) {
    return static_cast<int>(sign) * (b->GetIndex() - a->GetIndex());
  };
  const TCase cases[] = {
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
      {"rows in an update",
       [&] {
         items.BeginUpdate();
         for (int i = 0; i < 10; ++i) items.Add();
         items.Delete(100);
         items.EndUpdate();
       },
       {"reset"}},
      {"rows one by one",
       [&] { items.Insert(90), items.Delete(91); },
       {"inserted 90 1", "deleted 91 1"}},
      {"a sort that changes nothing", [&] { list->CustomSort(byPlace, 0); }, {}},
      {"all selected", [&] { list->SelectAll(); }, {"states 0 108"}},
  };
  for (const TCase& test : cases) {
    SCOPED_TRACE(test.Name);
    told->Told.clear();
    test.Act();
    EXPECT_EQ(told->Told, test.Expected);
    EXPECT_EQ(list->GetTopItem(), list->Row(top));
    EXPECT_EQ(list->GetItemFocused(), focused);
  }
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

TEST_F(HeadlessList, RepeatedLettersGoOn) {
  ShowRows(0);
  for (const TStringView caption : {u"alpha", u"Bear", u"bean", u"beta one", u"beta two"})
    list->AddRow(TString(caption));
  const struct {
    TStringView Text;
    unsigned Pause;
    const char* Expected;
  } steps[] = {{u"b", 0, "[1]"},     {u"b", 0, "[2]"},    {u"b", 1500, "[3]"},
               {u"bea", 900, "[1]"}, {u"n", 1500, "[2]"}, {u"beta t", 1500, "[4]"},
               {u"zz", 1500, "[4]"}, {u" ", 1500, "[4]"}};
  for (const auto& step : steps) {
    screen->TypeText(step.Text);
    EXPECT_EQ(list->Selection(), step.Expected) << ToUtf8(step.Text);
    screen->Advance(step.Pause);
  }
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
