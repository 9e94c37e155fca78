// Keys, mouse buttons and the wheel that controls hand to the program; forms that come and go.
#include "tests/controls/ControlsFixture.h"

namespace oak::tests {
namespace {

using ::testing::ElementsAre;

class ControlInput : public TControlsTest {
 protected:
  template <class T>
  T* Place(const TRect& bounds, TWinControl* parent = nullptr) {
    auto* control = new T;
    control->SetBounds(bounds.Left, bounds.Top, bounds.Width(), bounds.Height());
    control->SetParent(parent ? parent : form.get());
    return control;
  }
  TListUnderTest* PlaceList() {
    auto* const list = Place<TListUnderTest>({10, 10, 210, 160});
    list->SetViewStyle(vsReport);
    list->AddColumns({150});
    list->Fill(30);
    return list;
  }
  TTreeUnderTest* PlaceTree() {
    auto* const tree = Place<TTreeUnderTest>({220, 10, 420, 160});
    for (const TStringView text : {u"a", u"b", u"c"}) tree->Items().Add(nullptr, TString(text));
    return tree;
  }
  /// Writes the keys of a control down, and uses them up if `swallow` is set.
  void Listen(TWinControl& control) {
    const auto name = [](std::uint16_t key, TShiftState shift) {
      return std::to_string(key) + (shift.Contains(ssShift) ? " shift" : "") +
             (shift.Contains(ssCtrl) ? " ctrl" : "") + (shift.Contains(ssAlt) ? " alt" : "");
    };
    const auto isModifier = [](std::uint16_t key) {
      return key == vkShift || key == vkControl || key == vkMenu;
    };
    control.OnKeyDown = [=, this](TObject*, std::uint16_t& key, TShiftState shift) {
      if (isModifier(key)) return;
      log.push_back("down " + name(key, shift));
      if (swallow) key = 0;
    };
    control.OnKeyUp = [=, this](TObject*, std::uint16_t& key, TShiftState shift) {
      if (!isModifier(key)) log.push_back("up " + name(key, shift));
    };
    control.OnKeyPress = [this](TObject*, char16_t& key) {
      log.push_back("char " + std::to_string(static_cast<int>(key)));
    };
  }
  void ListenToMouse(TWinControl& control) {
    control.OnMouseDown = [this](TObject*, TMouseButton button, TShiftState shift, int x, int y) {
      log.push_back("down " + std::to_string(button) + " " + std::to_string(x) + "," +
                    std::to_string(y) + (shift.Contains(ssCtrl) ? " ctrl" : ""));
    };
    control.OnMouseUp = [this](auto&&...) { log.push_back("up"); };
    control.OnClick = [this](TObject*) { log.push_back("click"); };
    control.OnDblClick = [this](TObject*) { log.push_back("double"); };
  }
  TLog Take() { return std::exchange(log, {}); }

  TLog log;
  bool swallow = false;
};

struct TKeyCase {
  std::uint16_t Key;
  TShiftState Shift;
  const char* Name;
  const char* Char;  // nullptr: none
};

const TKeyCase KeyCases[] = {
    {vkLeft, {ssAlt}, "37 alt", nullptr},
    {vkRight, {ssAlt}, "39 alt", nullptr},
    {vkUp, {ssAlt}, "38 alt", nullptr},
    {vkReturn, {ssAlt}, "13 alt", nullptr},
    {u'E', {ssShift, ssCtrl, ssAlt}, "69 shift ctrl alt", nullptr},
    {u'C', {ssCtrl}, "67 ctrl", "char 3"},
    {vkDelete, {ssShift}, "46 shift", nullptr},
    {vkF2, {}, "113", nullptr},
    {vkF5, {}, "116", nullptr},
    {vkBack, {}, "8", "char 8"},
    {vkReturn, {}, "13", "char 13"},
    {vkEscape, {}, "27", "char 27"},
    {vkSpace, {}, "32", "char 32"},
};

TEST_F(ControlInput, KeysOfListsAndTrees) {
  TListUnderTest* const list = PlaceList();
  TTreeUnderTest* const tree = PlaceTree();
  Listen(*list);
  Listen(*tree);
  Show();
  list->SetSelected(list->Row(1));
  tree->SetSelected(tree->Find(u"b"));
  for (TWinControl* const control : std::initializer_list<TWinControl*>{list, tree}) {
    SCOPED_TRACE(control == list ? "list" : "tree");
    control->SetFocus();
    for (const bool used : {false, true}) {
      SCOPED_TRACE(used ? "used up" : "left to the control");
      swallow = used;
      for (const TKeyCase& one : KeyCases) {
        SCOPED_TRACE(one.Name);
        screen->KeyPress(one.Key, one.Shift);
        TLog wanted{std::string("down ") + one.Name};
        if (one.Char && !used) wanted.push_back(one.Char);
        wanted.push_back(std::string("up ") + one.Name);
        EXPECT_EQ(Take(), wanted);
      }
    }
    // What was used up does nothing more.
    screen->KeyPress(vkDown);
    screen->KeyPress(vkEnd);
    screen->TypeText(u"c");
    swallow = false;
    Take();
  }
  EXPECT_EQ(list->Selection(), "[1]");
  EXPECT_EQ(tree->GetSelected(), tree->Find(u"b"));
  EXPECT_EQ(screen->Focused(), tree);
  // The form sees them first if it wants.
  form->SetKeyPreview(true);
  form->OnKeyDown = [this](TObject*, std::uint16_t& key, TShiftState) {
    log.push_back("form");
    if (key == vkF5) key = 0;
  };
  screen->KeyPress(vkF5);
  EXPECT_THAT(Take(), ElementsAre("form", "up 116"));
  screen->KeyPress(vkF2);
  EXPECT_THAT(Take(), ElementsAre("form", "down 113", "up 113"));
}

TEST_F(ControlInput, KeysOfAComboBox) {
  auto* const combo = Place<TCustomComboBoxEx>({10, 10, 210, 34});
  auto* const edit = Place<TEdit>({10, 60, 210, 84});
  combo->AddItem({u"one"});
  combo->AddItem({u"two"});
  Listen(*combo);
  TLog focus;
  Show();
  edit->SetFocus();
  combo->OnEnter = [&](TObject*) { focus.push_back("enter"); };
  combo->OnExit = [&](TObject*) { focus.push_back("exit"); };
  combo->SetFocus();
  screen->TypeText(u"x");
  screen->KeyPress(vkReturn);
  screen->KeyPress(vkEscape);
  EXPECT_THAT(Take(), ElementsAre("down 88", "char 120", "up 88", "down 13", "char 13", "up 13",
                                  "down 27", "char 27", "up 27"));
  swallow = true;
  screen->TypeText(u"y");
  screen->KeyPress(vkDown);
  EXPECT_EQ(combo->GetText(), u"x");
  EXPECT_EQ(combo->GetItemIndex(), -1);
  swallow = false;
  // List and field are parts of one control.
  combo->SetDroppedDown(true);
  screen->KeyPress(vkEscape);
  EXPECT_FALSE(combo->GetDroppedDown());
  EXPECT_THAT(focus, ElementsAre("enter"));
  screen->Click(*edit, {5, 5});
  EXPECT_THAT(focus, ElementsAre("enter", "exit"));
  EXPECT_EQ(screen->Focused(), edit);
}

TEST_F(ControlInput, ImageBesideTheTextOfAComboBox) {
  auto* const combo = Place<TCustomComboBoxEx>({10, 10, 210, 34});
  const auto images = MakeImages(16, 4);
  combo->SetImages(images.get());
  combo->AddItem({u"one", 1, -1, 0, nullptr});
  combo->AddItem({u"two"});
  combo->SetEditImageIndex(3);
  Show();
  combo->SetFocus();
  EXPECT_EQ(screen->ImageOf(*combo), 3);
  combo->SetItemIndex(0);
  EXPECT_EQ(screen->ImageOf(*combo), 1);
  combo->SetItemIndex(1);
  EXPECT_EQ(screen->ImageOf(*combo), -1);
  combo->SelectAll();
  screen->TypeText(u"x");
  EXPECT_EQ(screen->ImageOf(*combo), 3);
  combo->SetEditImageIndex(2);
  EXPECT_EQ(screen->ImageOf(*combo), 2);
  EXPECT_EQ(screen->TextOf(*combo), u"x");
  combo->InsertItem(0, {u"zero", 0, -1, 0, nullptr});
  combo->RecreateWnd();
  screen->Drain();
  EXPECT_EQ(screen->ImageOf(*combo), 2);
  combo->SetEditImageIndex(-1);
  EXPECT_EQ(screen->ImageOf(*combo), -1);
}

TEST_F(ControlInput, SideButtonsGoToWhoeverWantsThem) {
  class THistory : public TPanel {
   public:
    ~THistory() override { BeginDestroy(); }
    std::vector<int> Moves;

   protected:
    bool WMXButtonDown(int direction) override {
      Moves.push_back(direction);
      return true;
    }
  };
  auto* const panel = Place<THistory>({0, 0, 500, 300});
  TListUnderTest* const list = PlaceList();
  TTreeUnderTest* const tree = PlaceTree();
  list->SetParent(panel);
  tree->SetParent(panel);
  auto* const edit = Place<TEdit>({10, 170, 210, 194}, panel);
  auto* const label = Place<TLabel>({10, 200, 210, 224}, panel);
  Show();
  const std::pair<const TWinControl*, TPoint> places[] = {{list, list->At(1)},
                                                          {tree, {20, 10}},
                                                          {edit, {20, 10}},
                                                          {label, {20, 10}},
                                                          {panel, {450, 250}}};
  for (const auto& [control, point] : places) {
    SCOPED_TRACE(control->GetTop());
    screen->ExtraButton(*control, point, false);
    screen->ExtraButton(*control, point, true);
    EXPECT_THAT(std::exchange(panel->Moves, {}), ElementsAre(-1, 1));
  }
  EXPECT_EQ(list->Selection(), "");
}

TEST_F(ControlInput, AWheelThatIsUsedScrollsNothing) {
  TListUnderTest* const list = PlaceList();
  auto* const panel = Place<TPanel>({220, 10, 420, 160});
  auto* const label = Place<TLabel>({10, 10, 100, 60}, panel);
  Show();
  std::vector<int> deltas;
  bool used = true;
  const auto note = [&](TObject*, TShiftState, int delta, TPoint, bool& handled) {
    deltas.push_back(delta);
    handled = used;
  };
  list->OnMouseWheel = note;
  screen->Wheel(*list, {30, 60}, -1);
  EXPECT_THAT(deltas, ElementsAre(-120));
  EXPECT_EQ(list->GetTopItem(), list->Row(0));
  used = false;
  screen->Wheel(*list, {30, 60}, -1);
  EXPECT_NE(list->GetTopItem(), list->Row(0));
  // What a control has no use for goes to the one that holds it.
  deltas.clear();
  panel->OnMouseWheel = note;
  used = true;
  screen->Wheel(*label, {10, 10}, 2);
  EXPECT_THAT(deltas, ElementsAre(240));
}

TEST_F(ControlInput, MouseOfFieldsOfText) {
  auto* const edit = Place<TEdit>({10, 10, 210, 34});
  auto* const memo = Place<TMemo>({10, 50, 210, 130});
  auto* const rich = Place<TRichEdit>({10, 140, 210, 220});
  Show();
  for (TCustomEdit* const field : std::initializer_list<TCustomEdit*>{edit, memo, rich}) {
    SCOPED_TRACE(field->GetTop());
    field->SetText(u"some words");
    ListenToMouse(*field);
    screen->Click(*field, {20, 8});
    EXPECT_THAT(Take(), ElementsAre("down 0 20,8", "click", "up"));
    EXPECT_EQ(screen->Focused(), field);
    screen->DoubleClick(*field, {20, 8});
    EXPECT_THAT(Take(), ElementsAre("down 0 20,8", "click", "up", "double", "down 0 20,8", "up"));
  }
}

TEST_F(ControlInput, MouseOfAPaintedControl) {
  auto* const pad = Place<TPanel>({10, 10, 210, 110});
  auto* const other = Place<TEdit>({10, 120, 210, 144});
  ListenToMouse(*pad);
  pad->OnMouseEnter = [this](TObject*) { log.push_back("enter"); };
  pad->OnMouseLeave = [this](TObject*) { log.push_back("leave"); };
  int paints = 0;
  pad->OnPaint = [&](auto&&...) { ++paints; };
  Show();
  screen->MouseMove(*other, {5, 5});
  Take();
  screen->Click(*pad, {20, 30}, {ssCtrl});
  EXPECT_THAT(Take(), ElementsAre("enter", "down 0 20,30 ctrl", "click", "up"));
  screen->Click(*pad, {21, 30}, {}, mbRight);
  EXPECT_THAT(Take(), ElementsAre("down 1 21,30", "up"));
  screen->DoubleClick(*pad, {60, 30});
  EXPECT_THAT(Take(), ElementsAre("down 0 60,30", "click", "up", "double", "down 0 60,30", "up"));
  screen->MouseMove(*other, {5, 5});
  screen->Advance(screen->IsNative() ? 50 : 0);
  EXPECT_THAT(Take(), ElementsAre("leave"));
  pad->SetMouseCapture(true);
  EXPECT_TRUE(pad->GetMouseCapture());
  screen->Click(*other, {5, 5});
  EXPECT_FALSE(Take().empty());
  pad->SetMouseCapture(false);
  EXPECT_FALSE(pad->GetMouseCapture());
  const int painted = paints;
  pad->InvalidateRect({0, 0, 10, 10});
  pad->InvalidateRect({50, 50, 60, 60});
  EXPECT_EQ(paints, painted);
  pad->Update();
  EXPECT_EQ(paints, painted + 1);
  EXPECT_EQ(pad->ScreenToClient(pad->ClientToScreen({3, 4})), TPoint(3, 4));
}

TEST_F(ControlInput, ATextIsShownAsItStands) {
  auto* const rich = Place<TRichEdit>({10, 10, 210, 120});
  const TString source = u"{\\rtf1\\ansi plain {\\b bold}}";
  rich->SetText(source);
  Show();
  EXPECT_EQ(ToUtf8(screen->TextOf(*rich)), ToUtf8(source));
  rich->SetText(u"other");
  EXPECT_EQ(screen->TextOf(*rich), u"other");
  rich->SetText(source + u"\r\n2");
  EXPECT_EQ(ToUtf8(screen->TextOf(*rich)), ToUtf8(source) + "\r\n2");
  rich->RecreateWnd();
  screen->Drain();
  EXPECT_EQ(ToUtf8(screen->TextOf(*rich)), ToUtf8(source) + "\r\n2");
  EXPECT_FALSE(rich->GetModified());
}

TEST_F(ControlInput, AFormWithoutFrameThatGoesWhenItIsLeft) {
  auto* const edit = Place<TEdit>({10, 10, 210, 34});
  Show();
  edit->SetFocus();
  TForm popup;
  popup.SetFormBorderStyle(bsFormNone);
  popup.SetPosition(poDesigned);
  const TPoint at = form->ClientToScreen({40, 120});
  popup.SetBounds(at.X, at.Y, 120, 90);
  TListUnderTest rows;
  rows.SetAlign(alClient);
  rows.SetParent(&popup);
  rows.Fill(3);
  popup.OnActivate = [this](TObject*) { log.push_back("activate"); };
  popup.OnDeactivate = [&](TObject*) {
    log.push_back("deactivate");
    popup.Hide();
  };
  form->OnDeactivate = [this](TObject*) { log.push_back("form left"); };
  form->OnActivate = [this](TObject*) { log.push_back("form back"); };
  for (int i = 0; i < 2; ++i) {
    popup.Show();
    rows.SetFocus();
    screen->Drain();
    EXPECT_EQ(popup.GetClientRect(), TRect(0, 0, 120, 90));
    EXPECT_EQ(rows.GetBoundsRect(), TRect(0, 0, 120, 90));
    EXPECT_EQ(screen->Focused(), &rows);
    EXPECT_THAT(Take(), ElementsAre("form left", "activate"));
    screen->Click(*edit, {5, 5});
    EXPECT_FALSE(screen->IsShown(popup));
    EXPECT_EQ(screen->Focused(), edit);
    EXPECT_THAT(Take(), ElementsAre("deactivate", "form back"));
  }
}

}  // namespace
}  // namespace oak::tests
