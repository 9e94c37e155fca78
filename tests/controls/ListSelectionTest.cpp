// Selection and focus of a list, by the program and by the user.
#include "tests/controls/ControlsFixture.h"

namespace oak::tests {
namespace {

const TShiftState WithCtrl{ssCtrl};
const TShiftState WithShift{ssShift};

class ListSelection : public TListTest {
 protected:
  void Expect(const std::string& selection) {
    EXPECT_EQ(list->Selection(), selection);
    ExpectShown(*list);
  }
};

TEST_F(ListSelection, ByTheProgram) {
  ShowReport(8);
  const auto row = [this](int index) { return list->Row(index); };
  struct TCase {
    const char* What;
    std::function<void()> Do;
    const char* Selection;
    TLog Events;
  };
  const std::vector<TCase> cases{
      {"one", [&] { list->SetSelected(row(3)); }, "[3]", {"select 3"}},
      {"one more", [&] { row(5)->SetSelected(true); }, "[3] 5", {"select 5"}},
      {"the same again", [&] { row(5)->SetSelected(true); }, "[3] 5", {}},
      {"another alone",
       [&] { list->SetSelected(row(4)); },
       "[4]",
       {"deselect 3", "select 4", "deselect 5"}},
      {"all",
       [&] { list->SelectAll(); },
       "0 1 2 3 [4] 5 6 7",
       {"select 0", "select 1", "select 2", "select 3", "select 5", "select 6", "select 7"}},
      {"focus alone", [&] { list->SetItemFocused(row(6)); }, "0 1 2 3 4 5 [6] 7", {}},
      {"single",
       [&] { list->SetMultiSelect(false); },
       "0 [-6]",
       {"deselect 1", "deselect 2", "deselect 3", "deselect 4", "deselect 5", "deselect 6",
        "deselect 7"}},
      {"the second of one",
       [&] { row(2)->SetSelected(true); },
       "2 [-6]",
       {"deselect 0", "select 2"}},
      {"none", [&] { list->SetSelected(nullptr); }, "[-6]", {"deselect 2"}},
      {"no focus", [&] { list->SetItemFocused(nullptr); }, "", {}},
  };
  for (const TCase& one : cases) {
    SCOPED_TRACE(one.What);
    one.Do();
    Expect(one.Selection);
    EXPECT_EQ(list->Take(), one.Events);
    int selected = 0;
    for (int i = 0; i < list->Items().GetCount(); ++i) selected += row(i)->GetSelected();
    EXPECT_EQ(list->GetSelCount(), selected);
  }
}

TEST_F(ListSelection, ByTheUser) {
  ShowReport(9);
  const auto click = [this](int index, TShiftState shift = {}) {
    screen->Click(*list, list->At(index), shift);
  };
  struct TCase {
    const char* What;
    std::function<void()> Do;
    const char* Selection;
  };
  const std::vector<TCase> cases{
      {"click", [&] { click(2); }, "[2]"},
      {"click another", [&] { click(4); }, "[4]"},
      {"ctrl adds", [&] { click(6, WithCtrl); }, "4 [6]"},
      {"ctrl takes away", [&] { click(4, WithCtrl); }, "[-4] 6"},
      {"shift from there", [&] { click(7, WithShift); }, "4 5 6 [7]"},
      {"shift the other way", [&] { click(2, WithShift); }, "[2] 3 4"},
      {"down", [&] { Press(vkDown); }, "[3]"},
      {"shift down", [&] { Press(vkDown, WithShift); }, "3 [4]"},
      {"shift up twice", [&] { Press(vkUp, WithShift), Press(vkUp, WithShift); }, "[2] 3"},
      {"ctrl down", [&] { Press(vkDown, WithCtrl); }, "2 [3]"},
      {"ctrl down further", [&] { Press(vkDown, WithCtrl); }, "2 3 [-4]"},
      {"ctrl space", [&] { Press(vkSpace, WithCtrl); }, "2 3 [4]"},
      {"end", [&] { Press(vkEnd); }, "[8]"},
      {"shift home", [&] { Press(vkHome, WithShift); }, "[0] 1 2 3 4 5 6 7 8"},
      {"right click on a selected one", [&] { screen->RightClick(*list, list->At(3)); },
       "0 1 2 [3] 4 5 6 7 8"},
      {"click on one of many", [&] { click(5); }, "[5]"},
      {"right click elsewhere", [&] { screen->RightClick(*list, list->At(1)); }, "[1]"},
      {"click beside",
       [&] {
         screen->Click(*list, {380, 222});
       },
       "[-1]"},
  };
  for (const TCase& one : cases) {
    SCOPED_TRACE(one.What);
    one.Do();
    Expect(one.Selection);
  }
}

TEST_F(ListSelection, StaysWithTheRows) {
  ShowReport(8);
  for (const int index : {2, 4, 5}) list->Row(index)->SetSelected(true);
  list->SetItemFocused(list->Row(4));
  struct TCase {
    const char* What;
    std::function<void()> Do;
    const char* Selection;
  };
  const std::vector<TCase> cases{
      {"a row before", [&] { list->Items().Insert(0)->SetCaption(u"new"); }, "3 [5] 6"},
      {"a row between, in a bracket",
       [&] {
         list->Items().BeginUpdate();
         list->Items().Insert(4)->SetCaption(u"new");
         list->Items().EndUpdate();
       },
       "3 [6] 7"},
      {"deleted before", [&] { list->Items().Delete(1); }, "2 [5] 6"},
      {"a selected one deleted", [&] { list->Items().Delete(2); }, "[4] 5"},
      {"the focused one deleted", [&] { list->Items().Delete(4); }, "[4]"},
      {"turned round",
       [&] {
         list->CustomSort(
             [](TListItem* a, TListItem* b, LPARAM) { return b->GetIndex() - a->GetIndex(); }, 0);
       },
       "[2]"},
      {"another style", [&] { list->SetViewStyle(vsList); }, "[2]"},
      {"and back", [&] { list->SetViewStyle(vsReport); }, "[2]"},
      {"a new window", [&] { list->RecreateWnd(); }, "[2]"},
      {"all gone", [&] { list->Items().Clear(); }, ""},
  };
  for (const TCase& one : cases) {
    SCOPED_TRACE(one.What);
    one.Do();
    screen->Drain();
    Expect(one.Selection);
  }
}

TEST_F(ListSelection, HiddenWithoutTheKeyboard) {
  auto* edit = new TEdit;
  edit->SetBounds(420, 10, 100, 24);
  edit->SetParent(form.get());
  ShowReport(3);
  list->SetSelected(list->Row(1));
  ExpectShown(*list);
  edit->SetFocus();
  ExpectShown(*list);
  list->SetHideSelection(true);
  ExpectShown(*list);
  list->SetFocus();
  ExpectShown(*list);
}

TEST_F(ListSelection, HandlersMayChangeIt) {
  ShowReport(8);
  // A row that must not be selected, and one that brings another along.
  list->OnSelectItem = [this](TObject*, TListItem* item, bool selected) {
    if (item->GetIndex() == 3 && selected) item->SetSelected(false);
    if (item->GetIndex() == 4 && selected) list->Row(6)->SetSelected(true);
  };
  screen->Click(*list, list->At(3));
  Expect("[-3]");
  screen->Click(*list, list->At(4));
  Expect("[4] 6");
  list->OnSelectItem = [this](TObject*, TListItem* item, bool selected) {
    if (selected && item->GetCaption() == u"row 2") list->Items().Delete(0);
  };
  screen->Click(*list, list->At(2));
  EXPECT_EQ(list->Items().GetCount(), 7);
  ExpectShown(*list);
}

TEST_F(ListSelection, TypedTextLeadsToARow) {
  list->SetViewStyle(vsReport);
  list->AddColumns({200});
  for (const TStringView name : {u"alpha", u"beta", u"bravo", u"charlie", u"Betty"})
    list->AddRow(TString(name));
  Show();
  list->SetFocus();
  struct TCase {
    TStringView Typed;
    const char* Selection;
  };
  for (const TCase& one : {TCase{u"b", "[1]"}, TCase{u"br", "[2]"}, TCase{u"c", "[3]"},
                           TCase{u"bet", "[4]"}, TCase{u"bet", "[1]"}, TCase{u"a", "[0]"}}) {
    SCOPED_TRACE(ToUtf8(one.Typed));
    screen->TypeText(one.Typed);
    Expect(one.Selection);
    screen->Advance(1100);
  }
  if (screen->IsNative()) return;
  screen->TypeText(u"bb");
  Expect("[2]");  // a letter again goes on to the next one
}

}  // namespace
}  // namespace oak::tests
