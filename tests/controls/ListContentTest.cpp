// What is in a list: rows that come, go and move.
#include "tests/controls/ControlsFixture.h"

namespace oak::tests {
namespace {

class ListContent : public TListTest {};

TEST_F(ListContent, RowsAreShownAsTheyComeAndGo) {
  ShowReport(5);
  ExpectShown(*list);

  list->AddRow(u"added", {u"1", u"2"});
  ExpectShown(*list);
  list->Items().Insert(2)->SetCaption(u"inserted");
  ExpectShown(*list);
  list->Items().Delete(0);
  list->Row(1)->SetCaption(u"renamed");
  list->Row(2)->GetSubItems().Put(0, u"other");
  list->Row(2)->SubItemsChanged();
  ExpectShown(*list);

  list->Items().BeginUpdate();
  list->Items().Delete(1);
  for (int i = 0; i < 40; ++i) list->AddRow(u"bulk " + IntToStr(i));
  list->Items().Delete(0);
  list->Items().EndUpdate();
  ExpectShown(*list);

  list->Items()[list->Items().GetCount() - 1]->MakeVisible(false);
  ExpectShown(*list);
  list->Items().DeleteIf([](TListItem& item) { return item.GetIndex() % 2 == 0; });
  ExpectShown(*list);
  list->Items().Clear();
  ExpectShown(*list);
  EXPECT_EQ(list->GetTopItem(), nullptr);
  list->AddRow(u"again");
  ExpectShown(*list);
}

}  // namespace
}  // namespace oak::tests
