// Columns and header of a list.
#include "tests/controls/ControlsFixture.h"

namespace oak::tests {
namespace {

using ::testing::ElementsAre;
using ::testing::IsEmpty;

class ListColumns : public TListTest {};

TEST_F(ListColumns, FollowTheModel) {
  ShowReport(4);
  TListColumns& columns = list->Columns();
  struct TCase {
    const char* What;
    std::function<void()> Do;
  };
  const std::vector<TCase> cases{
      {"caption", [&] { columns[1]->SetCaption(u"Größe"); }},
      {"width", [&] { columns[1]->SetWidth(97); }},
      {"sort mark", [&] { columns[0]->SetSortMark(TListSortMark::Up); }},
      {"other sort mark",
       [&] {
         columns[0]->SetSortMark(TListSortMark::None);
         columns[2]->SetSortMark(TListSortMark::Down);
       }},
      {"another column", [&] { columns.Add()->SetCaption(u"last"); }},
      {"moved to the front", [&] { columns[2]->SetIndex(0); }},
      {"the caption's column moved", [&] { columns[1]->SetIndex(3); }},
      {"hidden", [&] { columns[1]->SetWidth(0); }},
      {"shown again", [&] { columns[1]->SetWidth(60); }},
      {"one deleted", [&] { columns.Delete(1); }},
      {"aligned", [&] { columns[1]->SetAlignment(taRightJustify); }},
      {"a new window", [&] { list->RecreateWnd(); }},
      {"icons and back",
       [&] {
         list->SetViewStyle(vsIcon);
         columns[0]->SetCaption(u"unseen");
         list->SetViewStyle(vsReport);
       }},
      {"another row",
       [&] {
         list->AddRow(u"new", {u"1", u"2", u"3"});
       }},
      {"deleted but the caption",
       [&] {
         for (int i = columns.GetCount() - 1; i >= 0; --i)
           if (columns[i]->GetTextIndex() != 0) columns.Delete(i);
       }},
  };
  for (const TCase& one : cases) {
    SCOPED_TRACE(one.What);
    one.Do();
    screen->Drain();
    ExpectShown(*list);
  }
}

TEST_F(ListColumns, HeaderReports) {
  ShowReport(3);
  screen->Click(*list, OnHeader(1));
  EXPECT_THAT(list->Take(), ElementsAre("column click 1"));
  screen->RightClick(*list, OnHeader(2));
  const TLog right = list->Take();
  EXPECT_THAT(right, ::testing::Contains("column right 2"));
  EXPECT_EQ(list->GetListPeer()->HeaderHitTest(OnHeader(1)), 1);
  EXPECT_EQ(list->GetListPeer()->HeaderHitTest(list->At(1)), -1);
  screen->RightClick(*list, {395, OnHeader(0).Y});
  EXPECT_THAT(list->Take(), ::testing::Contains("column right none"));

  list->SetColumnClick(false);
  screen->Click(*list, OnHeader(1));
  EXPECT_THAT(list->Take(), IsEmpty());
}

TEST_F(ListColumns, UserSizesThem) {
  ShowReport(3);
  list->Columns()[1]->SetMinWidth(40);
  list->Columns()[1]->SetMaxWidth(120);
  const TPoint edge = OnDivider(1);
  screen->Drag(*list, edge, *list, edge + TPoint(30, 0));
  EXPECT_EQ(list->Columns()[1]->GetWidth(), 110);
  EXPECT_THAT(list->Take(), ElementsAre("column size 1 end"));
  ExpectShown(*list);
  screen->Drag(*list, OnDivider(1), *list, OnDivider(1) + TPoint(60, 0));
  EXPECT_EQ(list->Columns()[1]->GetWidth(), 120);
  ExpectShown(*list);
  screen->Drag(*list, OnDivider(1), *list, OnDivider(1) - TPoint(100, 0));
  EXPECT_EQ(list->Columns()[1]->GetWidth(), 40);
  ExpectShown(*list);
  // A double click fits the texts.
  list->Row(1)->GetSubItems().Put(0, u"quite a long text");
  list->Row(1)->SubItemsChanged();
  list->Columns()[1]->SetMaxWidth(0);
  screen->DoubleClick(*list, OnDivider(1));
  EXPECT_GE(list->Columns()[1]->GetWidth(), list->GetStringWidth(u"quite a long text"));
  ExpectShown(*list);
}

TEST_F(ListColumns, UserMovesThem) {
  ShowReport(3, {100, 80, 60});
  const auto order = [this] {
    std::string text;
    for (int i = 0; i < list->Columns().GetCount(); ++i)
      text += std::to_string(list->Columns()[i]->GetTextIndex());
    return text;
  };
  screen->Drag(*list, OnHeader(0), *list, OnHeader(2) + TPoint(20, 0));
  EXPECT_EQ(order(), "120");
  EXPECT_THAT(list->Take(), ElementsAre("column drag 0 2"));
  ExpectShown(*list);
  screen->Drag(*list, OnHeader(1), *list, OnHeader(0) - TPoint(30, 0));
  EXPECT_EQ(order(), "210");
  ExpectShown(*list);
  // Clicks speak of the place on the screen.
  list->Take();
  screen->Click(*list, OnHeader(0));
  EXPECT_THAT(list->Take(), ElementsAre("column click 0"));
  // The icon and the label stand in the column of the caption, wherever that is.
  EXPECT_EQ(list->GetHitTest(list->At(1).X, list->At(1).Y).SubItem, 2);
  list->RecreateWnd();
  screen->Drain();
  ExpectShown(*list);

  // Moves that are refused leave all as it is.
  list->Take();
  list->MayDragColumn = [](int from, int to) { return from != 0 && to != 0; };
  screen->Drag(*list, OnHeader(0), *list, OnHeader(2));
  screen->Drag(*list, OnHeader(2), *list, OnHeader(0) - TPoint(40, 0));
  EXPECT_THAT(list->Take(), IsEmpty());
  ExpectShown(*list);
  list->MayDragColumn = nullptr;
  list->SetFullDrag(false);
  screen->Drag(*list, OnHeader(0), *list, OnHeader(2));
  EXPECT_EQ(order(), "210");
}

TEST_F(ListColumns, FitTheTextsThatAreSeen) {
  ShowReport(3);
  list->Row(0)->SetCaption(u"a long caption of a row");
  list->Columns()[0]->SetWidth(TListColumn::FitTexts);
  EXPECT_GE(list->Columns()[0]->GetWidth(), list->GetStringWidth(u"a long caption of a row"));
  list->Columns()[2]->SetCaption(u"long name of a column");
  list->Columns()[2]->SetWidth(TListColumn::FitTextsAndCaption);
  EXPECT_GE(list->Columns()[2]->GetWidth(), list->GetStringWidth(u"long name of a column"));
  ExpectShown(*list);
  list->SetFocus();
  list->Columns()[0]->SetWidth(30);
  Press(vkAdd, {ssCtrl});
  EXPECT_GE(list->Columns()[0]->GetWidth(), list->GetStringWidth(u"a long caption of a row"));
  ExpectShown(*list);
}

}  // namespace
}  // namespace oak::tests
