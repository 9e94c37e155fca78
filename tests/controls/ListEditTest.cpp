// Captions edited in place.
#include "tests/controls/ControlsFixture.h"

namespace oak::tests {
namespace {

using ::testing::ElementsAre;
using ::testing::IsEmpty;

class ListEdit : public TListTest {
 protected:
  void Begin(int index) {
    ASSERT_TRUE(list->Row(index)->EditCaption());
    screen->Drain();
    list->Take();
  }
};

TEST_F(ListEdit, IsTakenWithReturnAndDroppedWithEscape) {
  ShowReport(4);
  ASSERT_TRUE(list->Row(1)->EditCaption());
  EXPECT_THAT(list->Take(), ElementsAre("select 1", "edit?"));
  EXPECT_EQ(list->Selection(), "[1]");
  EXPECT_TRUE(list->IsEditing());
  EXPECT_EQ(list->GetEditedItem(), list->Row(1));
  EXPECT_NE(list->GetEditControl(), nullptr);
  EXPECT_EQ(list->GetEditText(), u"row 1");
  EXPECT_EQ(screen->Focused(), list);
  screen->TypeText(u"other");
  EXPECT_EQ(list->GetEditText(), u"other");
  screen->KeyPress(vkReturn);
  EXPECT_FALSE(list->IsEditing());
  EXPECT_EQ(list->Row(1)->GetCaption(), u"other");
  EXPECT_THAT(list->Take(), ElementsAre("edit other"));
  ExpectShown(*list);

  screen->KeyPress(vkF2);
  EXPECT_FALSE(list->IsEditing()) << "what that key means is the program's affair";
  list->SetSelected(list->Row(2));
  list->Row(2)->EditCaption();
  screen->TypeText(u"lost");
  screen->KeyPress(vkEscape);
  EXPECT_FALSE(list->IsEditing());
  EXPECT_EQ(list->Row(2)->GetCaption(), u"row 2");
  EXPECT_EQ(screen->Focused(), list);
  ExpectShown(*list);
}

TEST_F(ListEdit, KnowsManyEnds) {
  ShowReport(4);
  auto* edit = new TEdit;
  edit->SetBounds(420, 10, 100, 24);
  edit->SetParent(form.get());
  struct TCase {
    const char* What;
    std::function<void()> Do;
    TLog Events;
  };
  const std::vector<TCase> cases{
      {"taken by the program", [&] { list->EndEditing(false); }, {"edit new"}},
      {"dropped by the program", [&] { list->EndEditing(true); }, {"edit cancelled"}},
      {"cancelled by the row", [&] { list->Row(1)->CancelEdit(); }, {"edit cancelled"}},
      {"the keyboard goes elsewhere", [&] { edit->SetFocus(); }, {"edit new"}},
      {"a new window", [&] { list->RecreateWnd(); }, {"edit cancelled"}},
      {"another style", [&] { list->SetViewStyle(vsIcon); }, {"edit cancelled"}},
      {"read-only", [&] { list->SetReadOnly(true); }, {"edit cancelled"}},
      {"another row is edited", [&] { list->Row(2)->EditCaption(); }, {}},
      {"the row is deleted", [&] { list->Items().Delete(1); }, {}},
      {"all rows are deleted", [&] { list->Items().Clear(); }, {}},
  };
  for (const TCase& one : cases) {
    SCOPED_TRACE(one.What);
    list->SetViewStyle(vsReport);
    list->SetReadOnly(false);
    list->Items().Clear();
    list->Fill(4);
    Begin(1);
    screen->TypeText(u"new");
    one.Do();
    screen->Drain();
    TLog events = list->Take();
    std::erase_if(events, [](const std::string& text) { return !text.starts_with("edit "); });
    if (!one.Events.empty()) {
      EXPECT_EQ(events, one.Events);
    }
    if (list->IsEditing()) {
      EXPECT_EQ(list->GetEditedItem(), list->Row(2));
      list->EndEditing(true);
    }
    EXPECT_EQ(list->GetEditedItem(), nullptr);
    ExpectShown(*list);
  }
}

TEST_F(ListEdit, MayBeRefused) {
  ShowReport(3);
  list->OnEditing = [](TObject*, TListItem* item, bool& allow) { allow = item->GetIndex() != 1; };
  EXPECT_FALSE(list->Row(1)->EditCaption());
  EXPECT_FALSE(list->IsEditing());
  list->SetReadOnly(true);
  EXPECT_FALSE(list->Row(0)->EditCaption());
  list->SetReadOnly(false);
  // The program changes what the user typed.
  list->OnEdited = [](TObject*, TListItem*, TString& text) { text += u"!"; };
  Begin(0);
  screen->TypeText(u"x");
  screen->KeyPress(vkReturn);
  EXPECT_EQ(list->Row(0)->GetCaption(), u"x!");
  ExpectShown(*list);
}

TEST_F(ListEdit, ProgramWorksTheField) {
  ShowReport(3);
  Begin(2);
  list->SetEditText(u"name.txt");
  list->SelectEditText(0, 4);
  screen->TypeText(u"other");
  EXPECT_EQ(list->GetEditText(), u"other.txt");
  list->SelectEditText(0, -1);
  screen->TypeText(u"z");
  EXPECT_EQ(list->GetEditText(), u"z");
  list->EndEditing(false);
  EXPECT_EQ(list->Row(2)->GetCaption(), u"z");
}

TEST_F(ListEdit, FollowsItsRow) {
  ShowReport(4);
  Begin(2);
  screen->TypeText(u"mine");
  list->Items().Insert(0)->SetCaption(u"before");
  ASSERT_TRUE(list->GetEditedItem());
  list->EndEditing(false);
  EXPECT_EQ(list->Row(3)->GetCaption(), u"mine");
  EXPECT_EQ(list->Row(2)->GetCaption(), u"row 1");
  ExpectShown(*list);
}

TEST_F(ListEdit, SecondClickOpensIt) {
  ShowReport(3);
  screen->Click(*list, list->At(1));
  screen->Advance(700);
  EXPECT_FALSE(list->IsEditing());
  screen->Click(*list, list->At(1));
  EXPECT_FALSE(list->IsEditing());
  screen->Advance(700);
  EXPECT_TRUE(list->IsEditing());
  screen->KeyPress(vkEscape);
  EXPECT_FALSE(list->IsEditing());
  list->Take();
  screen->DoubleClick(*list, list->At(1));
  screen->Advance(700);
  EXPECT_FALSE(list->IsEditing());
  EXPECT_THAT(list->Take(), ::testing::Contains("double click"));
}

}  // namespace
}  // namespace oak::tests
