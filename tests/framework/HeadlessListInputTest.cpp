// Mouse and keys of a list on the headless desktop, and its end in the middle of them.
#include "oak/framework/headless/HeadlessEdit.h"
#include "tests/framework/HeadlessListFixture.h"

namespace oak::tests {
namespace {

class HeadlessListInput : public THeadlessListTest {
 protected:
  void DragRow(int row, TPoint by, TShiftState shift = {}, TMouseButton button = mbLeft) {
    const TPoint from = list->ClientToScreen(AtRow(row));
    screen->Drag(from, from + by, shift, button);
  }
  void SlowClick(TPoint point) {
    screen->Click(*list, point);
    screen.Advance(600);
  }
  TEvents SelectEvents() {
    TEvents events = list->Take();
    std::erase_if(events, [](const std::string& event) { return event != "select"; });
    return events;
  }
  bool HasEvent(const std::string& event) {
    return std::find(list->Log.begin(), list->Log.end(), event) != list->Log.end();
  }
  THeadlessEditBox* Box() { return list->Peer().GetEdit(); }
};

// --- selecting -------------------------------------------------------------------------------

TEST_F(HeadlessListInput, ClicksSelect) {
  ShowReport(8);
  const TPoint nowhere(280, 190);
  const struct {
    int Row;  // -1: beside all rows
    TShiftState Shift;
    TMouseButton Button;
    const char* Expected;
  } steps[] = {
      {2, {}, mbLeft, "[2]"},
      {5, {ssShift}, mbLeft, "2 3 4 [5]"},
      {1, {ssShift}, mbLeft, "[1] 2"},
      {4, {ssCtrl}, mbLeft, "1 2 [4]"},
      {6, {ssCtrl, ssShift}, mbLeft, "1 2 4 5 [6]"},
      {5, {ssCtrl}, mbLeft, "1 2 4 [-5] 6"},
      {2, {}, mbRight, "1 [2] 4 6"},
      {7, {}, mbRight, "[7]"},
      {-1, {ssCtrl}, mbLeft, "[7]"},
      {-1, {}, mbLeft, "[-7]"},
      {3, {ssShift}, mbLeft, "[3] 4 5 6 7"},
      {4, {}, mbLeft, "[4]"},
      {-1, {}, mbRight, "[-4]"},
  };
  for (const auto& step : steps) {
    screen->Click(*list, step.Row < 0 ? nowhere : AtRow(step.Row), step.Shift, step.Button);
    EXPECT_EQ(list->State(), step.Expected) << step.Row;
  }
  list->SetMultiSelect(false);
  screen->Click(*list, AtRow(1));
  screen->Click(*list, AtRow(3), {ssShift});
  EXPECT_EQ(list->State(), "[3]");
  screen->Click(*list, AtRow(5), {ssCtrl});
  EXPECT_EQ(list->State(), "[5]");
}

TEST_F(HeadlessListInput, EachChangeOfTheSelectionIsToldOnce) {
  ShowReport(8);
  screen->Click(*list, AtRow(2));
  EXPECT_EQ(SelectEvents().size(), 1u);
  screen->Click(*list, AtRow(2));
  EXPECT_EQ(SelectEvents().size(), 0u);
  screen->Click(*list, AtRow(5), {ssShift});
  EXPECT_EQ(SelectEvents().size(), 3u);
  screen->Click(*list, AtRow(5));
  EXPECT_EQ(SelectEvents().size(), 3u);
}

TEST_F(HeadlessListInput, ClicksTakeTheKeyboard) {
  ShowReport(8);
  TScreenList other(&form);
  other.SetBounds(310, 0, 50, 50);
  other.SetFocus();
  screen->Click(*list, AtRow(1));
  EXPECT_TRUE(list->Focused());
}

TEST_F(HeadlessListInput, KeysMoveAndSelect) {
  ShowReport(30);
  const struct {
    std::uint16_t Key;
    TShiftState Shift;
    const char* Expected;
    int Top;
  } steps[] = {
      {vkDown, {}, "[0]", 0},
      {vkDown, {}, "[1]", 0},
      {vkDown, {ssShift}, "1 [2]", 0},
      {vkDown, {ssCtrl}, "1 2 [-3]", 0},
      {vkSpace, {ssCtrl}, "1 2 [3]", 0},
      {vkSpace, {ssCtrl}, "1 2 [-3]", 0},
      {vkSpace, {}, "[3]", 0},
      {vkNext, {}, "[11]", 3},
      {vkPrior, {}, "[3]", 3},
      {vkEnd, {}, "[29]", 21},
      {vkDown, {}, "[29]", 21},
      {vkUp, {ssShift}, "[28] 29", 21},
      {vkHome, {}, "[0]", 0},
      {vkUp, {}, "[0]", 0},
      {vkNext, {ssShift}, "0 1 2 3 4 5 6 7 [8]", 0},
  };
  for (const auto& step : steps) {
    Press(step.Key, step.Shift);
    EXPECT_EQ(list->State(), step.Expected) << step.Key;
    EXPECT_EQ(list->GetTopItem(), list->Row(step.Top)) << step.Key;
  }
}

TEST_F(HeadlessListInput, KeysFollowTheGrid) {
  list->SetDefaultColumnWidthPixels(90);
  ShowStyle(vsList, 35);  // columns of ten
  list->SetSelected(list->Row(4));
  Press(vkRight);
  EXPECT_EQ(list->State(), "[14]");
  Press(vkRight);
  Press(vkRight);
  EXPECT_EQ(list->State(), "[34]");
  Press(vkRight);
  EXPECT_EQ(list->State(), "[34]");
  Press(vkUp);
  EXPECT_EQ(list->State(), "[33]");
  list->SetViewStyle(vsIcon);  // rows of three
  Press(vkDown);
  EXPECT_EQ(list->State(), "[33]") << "there is none below";
  Press(vkRight);
  Press(vkUp);
  EXPECT_EQ(list->State(), "[31]");
  Press(vkLeft);
  EXPECT_EQ(list->State(), "[30]");
}

TEST_F(HeadlessListInput, ARangeBeginsAtItsRowWhereverThatGoes) {
  ShowReport(10);
  screen->Click(*list, AtRow(4));
  list->Items().Insert(0);
  screen->Click(*list, AtRow(6), {ssShift});
  EXPECT_EQ(list->State(), "5 [6]");
  list->Items().Delete(0);
  list->Items().Delete(0);
  screen->Click(*list, AtRow(1), {ssShift});
  EXPECT_EQ(list->State(), "[1] 2 3");
  list->CustomSort([](auto* a, auto* b, LPARAM) { return b->GetIndex() - a->GetIndex(); }, 0);
  EXPECT_EQ(list->State(), "5 6 [7]");
  Press(vkUp, {ssShift});
  EXPECT_EQ(list->State(), "[6] 7") << "begins at the focused row after a sort";
}

TEST_F(HeadlessListInput, CheckBoxes) {
  list->SetCheckboxes(true);
  ShowReport(4);
  const TPoint box(5, AtRow(1).Y);
  screen->Click(*list, box);
  EXPECT_TRUE(list->Row(1)->GetChecked());
  EXPECT_EQ(list->State(), "") << "a check box selects nothing";
  screen->Click(*list, AtRow(2));
  Press(vkSpace);
  EXPECT_TRUE(list->Row(2)->GetChecked());
  Press(vkSpace);
  EXPECT_FALSE(list->Row(2)->GetChecked());
  list->SetStateImages(&small);
  screen->Click(*list, box);
  Press(vkSpace);
  EXPECT_TRUE(list->Row(1)->GetChecked()) << "with state images it is the application's";
  EXPECT_FALSE(list->Row(2)->GetChecked());
  EXPECT_EQ(list->State(), "[2]");
}

TEST_F(HeadlessListInput, TypingFindsRows) {
  ShowReport(0);
  for (const char16_t* caption : {u"alpha", u"Bear", u"bean", u"beta one", u"beta two", u"gamma"})
    list->Items().Add()->SetCaption(caption);
  const struct {
    const char16_t* Text;
    unsigned Pause;
    const char* Expected;
  } steps[] = {
      {u"b", 0, "[1]"},    {u"b", 0, "[2]"},         {u"b", 1500, "[3]"},  {u"bea", 0, "[1]"},
      {u"n", 1500, "[2]"}, {u"beta t", 1500, "[4]"}, {u"zz", 1500, "[4]"}, {u"a", 1500, "[0]"},
      {u"ga", 900, "[5]"}, {u"mma", 1500, "[5]"},    {u" ", 1500, "[5]"},
  };
  screen->Click(*list, {290, 190});
  for (const auto& step : steps) {
    screen->TypeText(step.Text);
    EXPECT_EQ(list->State(), step.Expected) << ToUtf8(step.Text);
    screen.Advance(step.Pause);
  }
}

TEST_F(HeadlessListInput, ReportsScrollAsideByKeys) {
  ShowReport(3, {200, 200, 200});
  Press(vkRight);
  EXPECT_EQ(list->Peer().GetSubItemRect(0, 0).Left, -16);
  Press(vkLeft);
  Press(vkLeft);
  EXPECT_EQ(list->Peer().GetSubItemRect(0, 0).Left, 0);
}

// --- dragging --------------------------------------------------------------------------------

TEST_F(HeadlessListInput, RowsAreDraggedWithTheirSelection) {
  ShowReport(8);
  DragRow(1, {2, 3});
  EXPECT_FALSE(HasEvent("drag left")) << "a trembling hand";
  EXPECT_EQ(list->State(), "[1]");
  screen->Click(*list, AtRow(3), {ssShift});
  list->Take();
  DragRow(2, {30, 30});
  EXPECT_EQ(std::count(list->Log.begin(), list->Log.end(), "drag left"), 1);
  EXPECT_EQ(list->State(), "1 [2] 3") << "all of them";
  screen->Click(*list, AtRow(2));
  EXPECT_EQ(list->State(), "[2]") << "a click means the one row";
  DragRow(5, {0, 40}, {}, mbRight);
  EXPECT_TRUE(HasEvent("drag right"));
  EXPECT_FALSE(HasEvent("menu"));
  EXPECT_EQ(list->State(), "[5]");
  list->Take();
  screen->Drag(list->ClientToScreen({280, 190}), list->ClientToScreen({200, 100}));
  EXPECT_FALSE(HasEvent("drag left")) << "there is no row";
  screen->RightClick(*list, AtRow(5));
  EXPECT_TRUE(HasEvent("menu"));
}

// --- header ------------------------------------------------------------------------------------

TEST_F(HeadlessListInput, HeadersAreClickedSizedAndMoved) {
  ShowReport(3);
  screen->Click(*list, OnHeader(1));
  EXPECT_EQ(list->Take(), TEvents{"column click 1"}) << "not a mouse event of the list";
  screen->RightClick(*list, OnHeader(0));
  screen->RightClick(*list, {290, 10});
  EXPECT_EQ(list->Take(), TEvents({"column right 0", "column right none"}));

  screen->Drag(list->ClientToScreen(OnDivider(0)),
               list->ClientToScreen(OnDivider(0) + TPoint(20, 0)), {}, mbLeft, 2);
  EXPECT_EQ(list->Columns()[0]->GetWidth(), 140);
  EXPECT_EQ(list->Take(), TEvents({"column size 0", "column size 0", "column size 0 end"}));
  screen->DoubleClick(*list, OnDivider(1));
  EXPECT_EQ(list->Columns()[1]->GetWidth(), list->GetStringWidth(u"size 0") + 12);
  EXPECT_EQ(list->Take().back(), "column size 1 end");

  const TListColumn* const first = list->Columns()[0];
  screen->Drag(list->ClientToScreen(OnHeader(0)), list->ClientToScreen(OnHeader(2)));
  EXPECT_EQ(list->Take(), TEvents{"column drag 0 2"});
  EXPECT_EQ(list->Columns()[2], first);
  EXPECT_EQ(list->HandleGetText(0, 2), u"row 0");

  list->SetFullDrag(false);
  screen->Drag(list->ClientToScreen(OnHeader(0)), list->ClientToScreen(OnHeader(2)));
  list->SetColumnClick(false);
  screen->Click(*list, OnHeader(1));
  EXPECT_EQ(list->Take(), TEvents());
}

TEST_F(HeadlessListInput, AHiddenColumnIsNotDraggedOpen) {
  ShowReport(3);
  list->Columns()[1]->SetWidth(0);
  list->Columns()[1]->SetMaxWidth(1);
  EXPECT_EQ(list->GetListPeer()->HeaderHitTest({125, 10}), 2);
  screen->Drag(list->ClientToScreen({121, 10}), list->ClientToScreen({180, 10}));
  EXPECT_LE(list->Columns()[1]->GetWidth(), 1);
  EXPECT_EQ(list->Columns()[0]->GetWidth(), 120);
}

TEST_F(HeadlessListInput, ThePointerTellsOfDividers) {
  ShowReport(3);
  screen->MouseMove(list->ClientToScreen(OnDivider(0)));
  EXPECT_EQ(screen->GetCursorShape(), crSizeWE);
  screen->MouseMove(list->ClientToScreen(OnHeader(0)));
  EXPECT_EQ(screen->GetCursorShape(), crArrow);
}

// --- editing -------------------------------------------------------------------------------------

TEST_F(HeadlessListInput, CaptionsAreEdited) {
  ShowReport(5);
  screen->Click(*list, AtRow(1));
  Press(vkF2);
  EXPECT_FALSE(list->IsEditing()) << "what that key means is the program's affair";
  ASSERT_TRUE(list->Row(1)->EditCaption());
  EXPECT_EQ(list->GetEditText(), u"row 1");
  EXPECT_FALSE(list->Focused());
  screen->TypeText(u"new\n");
  EXPECT_FALSE(list->IsEditing());
  EXPECT_EQ(list->Row(1)->GetCaption(), u"new");
  EXPECT_TRUE(list->Focused()) << "the keyboard comes back";

  EXPECT_TRUE(list->Row(2)->EditCaption());
  list->SetEditText(u"report.txt");
  list->SelectEditText(0, 6);
  screen->TypeText(u"letter");
  EXPECT_EQ(list->GetEditText(), u"letter.txt");
  list->Take();
  Press(vkEscape);
  EXPECT_EQ(list->Take(), TEvents{"edit cancelled"});
  EXPECT_EQ(list->Row(2)->GetCaption(), u"row 2");

  list->SetReadOnly(true);
  EXPECT_FALSE(list->Row(2)->EditCaption());
  EXPECT_FALSE(list->IsEditing());
  EXPECT_EQ(list->GetEditText(), u"");
}

TEST_F(HeadlessListInput, WhatEndsAnEdit) {
  struct TCase {
    const char* Name;
    std::function<void()> Act;
    bool Accepted;
  };
  const TCase cases[] = {
      {"a click on another row", [&] { screen->Click(*list, AtRow(3)); }, true},
      {"a click beside the rows",
       [&] {
         screen->Click(*list, {290, 190});
       },
       true},
      {"the keyboard goes elsewhere", [&] { form.SetFocus(); }, true},
      {"scrolling", [&] { list->Scroll(0, 40); }, true},
      {"EndEditing", [&] { list->EndEditing(false); }, true},
      {"EndEditing that cancels", [&] { list->EndEditing(true); }, false},
      {"CancelEdit", [&] { list->Row(1)->CancelEdit(); }, false},
      {"another edit",
       [&] {
         list->Row(2)->EditCaption();
         list->EndEditing(true);
       },
       true},
      {"another view style", [&] { list->SetViewStyle(vsIcon); }, false},
      {"a new window", [&] { list->RecreateWnd(); }, false},
  };
  ShowReport(30);
  for (const TCase& test : cases) {
    SCOPED_TRACE(test.Name);
    list->SetViewStyle(vsReport);
    list->Row(0)->MakeVisible(false);
    list->Row(1)->SetCaption(u"old");
    ASSERT_TRUE(list->Row(1)->EditCaption());
    screen->TypeText(u"new");
    test.Act();
    EXPECT_FALSE(list->IsEditing());
    EXPECT_EQ(list->GetEditedItem(), nullptr);
    EXPECT_EQ(list->Row(1)->GetCaption(), test.Accepted ? u"new" : u"old");
  }
}

TEST_F(HeadlessListInput, TheEditFollowsItsRow) {
  ShowReport(5);
  ASSERT_TRUE(list->Row(1)->EditCaption());
  screen->TypeText(u"x");
  list->Items().Insert(0);
  list->CustomSort([](auto* a, auto* b, LPARAM) { return b->GetIndex() - a->GetIndex(); }, 0);
  TListItem* const row = list->GetEditedItem();
  EXPECT_EQ(row->GetIndex(), 3);
  Press(vkReturn);
  EXPECT_EQ(row->GetCaption(), u"x");

  ASSERT_TRUE(list->Row(1)->EditCaption());
  list->Take();
  list->Items().Delete(1);
  EXPECT_FALSE(list->IsEditing());
  EXPECT_EQ(list->Take(), TEvents()) << "nobody is left to be told";
  ASSERT_TRUE(list->Row(1)->EditCaption());
  list->Items().BeginUpdate();
  list->Items().Clear();
  list->Items().EndUpdate();
  EXPECT_FALSE(list->IsEditing());
}

TEST_F(HeadlessListInput, ASecondSlowClickEdits) {
  ShowReport(5);
  SlowClick(AtRow(1));
  EXPECT_FALSE(list->IsEditing()) << "this one selects";
  screen->Click(*list, AtRow(1));
  EXPECT_FALSE(list->IsEditing()) << "it may be the first half of a double click";
  screen.Advance(600);
  EXPECT_TRUE(list->IsEditing());
  Press(vkEscape);

  screen->DoubleClick(*list, AtRow(1));
  screen.Advance(600);
  EXPECT_FALSE(list->IsEditing());
  EXPECT_TRUE(HasEvent("double click"));
  screen->Click(*list, AtRow(1));
  Press(vkDown);
  screen.Advance(600);
  EXPECT_FALSE(list->IsEditing()) << "something else was done meanwhile";
  DragRow(2, {40, 40});
  screen.Advance(600);
  EXPECT_FALSE(list->IsEditing());
  list->SetReadOnly(true);
  SlowClick(AtRow(2));
  SlowClick(AtRow(2));
  EXPECT_FALSE(list->IsEditing());
}

// --- the end in the middle
// ---------------------------------------------------------------------------

class HeadlessListEnd : public HeadlessListInput {
 protected:
  std::vector<std::pair<std::string, std::function<void()>>> Ways() {
    return {
        {"mouse down", [this] { screen->Click(AtScreen(2)); }},
        {"select", [this] { screen->Click(AtScreen(2)); }},
        {"select", [this] { screen->Click(AtScreen(4), {ssShift}); }},
        {"select", [this] { screen->KeyPress(vkEnd); }},
        {"select", [this] { screen->KeyPress(vkSpace, {ssCtrl}); }},
        {"select", [this] { screen->TypeText(u"row 1"); }},
        {"select", [this] { list->SelectAll(); }},
        {"double click", [this] { screen->DoubleClick(AtScreen(1)); }},
        {"key", [this] { screen->KeyPress(vkDown); }},
        {"drag left", [this] { screen->Drag(AtScreen(1), AtScreen(1) + TPoint(40, 40)); }},
        {"menu", [this] { screen->RightClick(AtScreen(1)); }},
        {"column click 1", [this] { screen->Click(*list, OnHeader(1)); }},
        {"column right 0", [this] { screen->RightClick(*list, OnHeader(0)); }},
        {"column size 0",
         [this] {
           screen->Drag(list->ClientToScreen(OnDivider(0)), list->ClientToScreen({150, 10}));
         }},
        {"column size 1 end", [this] { screen->DoubleClick(*list, OnDivider(1)); }},
        {"column drag 0 1",
         [this] {
           screen->Drag(list->ClientToScreen(OnHeader(0)), list->ClientToScreen(OnHeader(1)));
         }},
        {"edit?", [this] { list->Row(1)->EditCaption(); }},
        {"edit xy",
         [this] {
           list->Row(1)->EditCaption();
           screen->TypeText(u"xy\n");
         }},
        {"edit xy",
         [this] {
           list->Row(1)->EditCaption();
           screen->TypeText(u"xy");
           screen->Click(AtScreen(4));
         }},
        {"edit xy",
         [this] {
           list->Row(1)->EditCaption();
           screen->TypeText(u"xy");
           screen->Wheel(-1);
         }},
        {"edit cancelled",
         [this] {
           list->Row(1)->EditCaption();
           screen->KeyPress(vkEscape);
         }},
        {"image", [this] { list->Invalidate(); }},
        {"text", [this] { list->Invalidate(); }},
        {"draw", [this] { list->Invalidate(); }},
        {"text", [this] { screen->KeyPress(vkAdd, {ssCtrl}); }},
        {"text", [this] { list->GetHitTest(30, 30); }},
        {"text", [this] { list->Columns()[0]->SetWidth(TListColumn::FitTexts); }},
    };
  }

  /// Runs each way on a new list and does `happening` when its event comes.
  void RunAll(const std::function<void()>& happening) {
    const std::size_t count = Ways().size();
    for (std::size_t i = 0; i < count; ++i) {
      if (i > 0) list = std::make_unique<TScreenList>(&form);
      ShowReport(30);
      list->SetSelected(list->Row(0));
      screen->MouseMove(list->ClientToScreen({30, 100}));
      screen.Drain();
      const auto [event, act] = Ways()[i];
      SCOPED_TRACE(std::to_string(i) + " " + event);
      bool happened = false;
      list->OnEvent = [&, event = event](const std::string& name) {
        if (happened || name != event) return;
        happened = true;
        happening();
      };
      act();
      screen.Drain();
      screen.Advance(1000);
      EXPECT_TRUE(happened);
      if (list) list->OnEvent = nullptr;
      screen.Drain();
    }
  }
  TPoint AtScreen(int row) { return list->ClientToScreen(AtRow(row)); }
};

TEST_F(HeadlessListEnd, DestroyedInAnyEvent) {
  RunAll([this] { list.reset(); });
}

TEST_F(HeadlessListEnd, ItsWindowIsMadeAnewInAnyEvent) {
  RunAll([this] { list->RecreateWnd(); });
}

TEST_F(HeadlessListEnd, ItIsClearedInAnyEvent) {
  RunAll([this] {
    list->Items().Clear();
    list->Columns().Clear();
  });
}

TEST_F(HeadlessListEnd, ItIsHiddenAndFilledAnewInAnyEvent) {
  RunAll([this] {
    list->Hide();
    list->Items().Clear();
    list->Fill(3);
    list->SetViewStyle(vsIcon);
    list->Show();
  });
}

}  // namespace
}  // namespace oak::tests
