#include "tests/framework/ControlFixture.h"

#include "oak/base/Exceptions.h"
#include "oak/framework/Menus.h"
#include "oak/framework/StdCtrls.h"

namespace oak::tests {
namespace {

using ::testing::ElementsAre;
using ::testing::IsEmpty;

class ControlInput : public TScreenTest {
 protected:
  /// Lets a control write down its mouse events.
  void Listen(TControl& control) {
    control.OnClick = [this](TObject*) { log.push_back("click"); };
    control.OnDblClick = [this](TObject*) { log.push_back("double"); };
    control.OnMouseDown = [this](TObject*, TMouseButton button, TShiftState shift, int x, int y) {
      log.push_back("down " + std::to_string(button) + " at " + std::to_string(x) + "," +
                    std::to_string(y) + (shift.Contains(ssDouble) ? " again" : ""));
    };
    control.OnMouseUp = [this](TObject*, TMouseButton button, TShiftState, int, int) {
      log.push_back("up " + std::to_string(button));
    };
    control.OnMouseEnter = [this](TObject*) { log.push_back("enter"); };
    control.OnMouseLeave = [this](TObject*) { log.push_back("leave"); };
  }
  TLog log;
};

TEST_F(ControlInput, ClicksAreMadeOfPressAndReleaseOnTheControl) {
  TPlainForm form;
  auto* control = new TWatchedControl(&form);
  Listen(*control);
  form.Show();
  screen->Click(*control, {4, 5});
  EXPECT_THAT(log, ElementsAre("enter", "down 0 at 4,5", "click", "up 0"));
  log.clear();
  screen->DoubleClick(*control, {4, 5});
  EXPECT_THAT(
      log, ElementsAre("down 0 at 4,5", "click", "up 0", "double", "down 0 at 4,5 again", "up 0"));
  log.clear();
  screen->RightClick(*control, {1, 2});
  EXPECT_THAT(log, ElementsAre("down 1 at 1,2", "up 1"));
  log.clear();
  screen->Drag(*control, {4, 5}, form, {200, 200});
  screen->MouseMove(form.ClientToScreen({201, 200}));
  EXPECT_THAT(log, ElementsAre("down 0 at 4,5", "up 0", "leave")) << "released elsewhere";
  EXPECT_FALSE(control->GetMouseCapture());

  // A handler that has done all on the press takes the click away.
  class TEarly : public TWatchedControl {
   public:
    using TWatchedControl::TWatchedControl;
    void MouseDown(TMouseButton button, TShiftState shift, int x, int y) override {
      EXPECT_TRUE(GetControlState().Contains(csClicked));
      ExcludeState(csClicked);
      TWatchedControl::MouseDown(button, shift, x, y);
    }
  };
  auto* early = new TEarly(&form);
  early->SetLeft(100);
  Listen(*early);
  log.clear();
  screen->Click(*early, {1, 1});
  EXPECT_THAT(log, ElementsAre("enter", "down 0 at 1,1", "up 0"));
}

TEST_F(ControlInput, ALostMouseEndsThePress) {
  TLog notes;
  TPlainForm form;
  auto* control = new TWatchedControl(&form, &notes);
  auto* other = new TWatchedControl(&form);
  other->SetLeft(100);
  Listen(*control);
  form.Show();
  screen->MouseMove(control->ClientToScreen({3, 3}));
  screen->MouseDown();
  ASSERT_TRUE(control->GetMouseCapture());
  other->SetMouseCapture(true);
  EXPECT_EQ(notes.back(), "capture lost");
  EXPECT_FALSE(control->GetControlState().Contains(csLButtonDown));
  other->SetMouseCapture(false);
  screen->MouseUp();
  EXPECT_EQ(std::count(log.begin(), log.end(), "click"), 0);
  notes.clear();
  screen->Click(*control, {3, 3});
  EXPECT_EQ(std::count(notes.begin(), notes.end(), "capture lost"), 0);
}

TEST_F(ControlInput, TheWheelGoesUpUntilSomebodyUsesIt) {
  TPlainForm form;
  auto* panel = new TWatchedControl(&form);
  panel->SetBounds(0, 0, 200, 200);
  auto* leaf = new TWatchedControl(panel);
  bool leafUses = false;
  auto listen = [&](TControl& control, const char* name, const bool* uses) {
    control.OnMouseWheel = [this, name, uses](TObject*, TShiftState, int delta, TPoint,
                                              bool& handled) {
      log.push_back(name + std::to_string(delta));
      handled = uses && *uses;
    };
  };
  listen(*leaf, "leaf ", &leafUses);
  listen(*panel, "panel ", nullptr);
  listen(form, "form ", nullptr);
  form.Show();
  screen->MouseMove(leaf->ClientToScreen({3, 3}));
  screen->Wheel(-1);
  EXPECT_THAT(log, ElementsAre("leaf -120", "panel -120", "form -120"));
  log.clear();
  leafUses = true;
  screen->Wheel(2);
  EXPECT_THAT(log, ElementsAre("leaf 240"));
}

// --- keys --------------------------------------------------------------------------
TEST_F(ControlInput, TheFormMaySeeKeysFirst) {
  TPlainForm form;
  auto* edit = new TEdit;
  edit->SetParent(&form);
  std::uint16_t taken = 0;
  auto listen = [&](TWinControl& control, const std::string& name) {
    control.OnKeyDown = [&, name](TObject*, std::uint16_t& key, TShiftState) {
      log.push_back(name + " down");
      if (key == taken) key = 0;
    };
    control.OnKeyPress = [&, name](TObject*, char16_t& key) {
      log.push_back(name + " char");
      if (key == u'q') key = 0;
    };
    control.OnKeyUp = [&, name](TObject*, std::uint16_t&, TShiftState) {
      log.push_back(name + " up");
    };
  };
  listen(form, "form");
  listen(*edit, "edit");
  form.Show();
  edit->SetFocus();
  screen->KeyPress(u'A');
  EXPECT_THAT(log, ElementsAre("edit down", "edit char", "edit up"));
  log.clear();
  form.SetKeyPreview(true);
  screen->KeyPress(u'B');
  EXPECT_THAT(
      log, ElementsAre("form down", "edit down", "form char", "edit char", "form up", "edit up"));
  log.clear();
  taken = u'C';
  screen->KeyPress(u'C');
  EXPECT_THAT(log, ElementsAre("form down", "form up", "edit up")) << "no character follows";
  log.clear();
  screen->KeyPress(u'Q');
  EXPECT_THAT(log, ElementsAre("form down", "edit down", "form char", "form up", "edit up"));
  EXPECT_EQ(edit->GetText(), u"ab");
}

TEST_F(ControlInput, TabGoesThroughTheTabStopsOfAllContainers) {
  TPlainForm form;
  auto* first = new TEdit;
  auto* panel = new TPanel;
  auto* inner = new TEdit;
  auto* skipped = new TEdit;
  auto* last = new TEdit;
  for (TWinControl* control : std::initializer_list<TWinControl*>{first, panel, last})
    control->SetParent(&form);
  inner->SetParent(panel);
  skipped->SetParent(panel);
  skipped->SetTabStop(false);
  form.Show();
  EXPECT_TRUE(first->Focused()) << "the first stop has the keyboard when the form appears";
  auto tab = [&](TShiftState shift = {}) {
    screen->KeyPress(vkTab, shift);
    return form.GetActiveControl();
  };
  EXPECT_EQ(tab(), inner);
  EXPECT_EQ(tab(), last);
  EXPECT_EQ(tab(), first);
  EXPECT_EQ(tab(ssShift), last);
  last->SetTabOrder(0);
  EXPECT_EQ(first->GetTabOrder(), 1);
  EXPECT_EQ(tab(), first);
  panel->SetEnabled(false);
  EXPECT_EQ(tab(), last);
  panel->SetEnabled(true);
  panel->Hide();
  EXPECT_EQ(tab(ssShift), first);
  EXPECT_THROW(inner->SetFocus(), EInvalidOperation);
}

TEST_F(ControlInput, EnterAndExitFollowTheKeyboardThroughContainers) {
  TPlainForm form;
  auto* left = new TWatchedControl(&form, &log, "left");
  auto* inLeft = new TWatchedControl(left, &log, "inLeft");
  auto* alsoInLeft = new TWatchedControl(left, &log, "alsoInLeft");
  auto* right = new TWatchedControl(&form, &log, "right");
  form.Show();
  log.clear();
  inLeft->SetFocus();
  EXPECT_THAT(log, ElementsAre("left enter", "inLeft enter"));
  log.clear();
  alsoInLeft->SetFocus();
  EXPECT_THAT(log, ElementsAre("inLeft exit", "alsoInLeft enter"));
  log.clear();
  right->SetFocus();
  EXPECT_THAT(log, ElementsAre("alsoInLeft exit", "left exit", "right enter"));
  log.clear();
  TPlainForm other;
  other.Show();
  screen->ActivateWindow(form);
  EXPECT_THAT(log, IsEmpty()) << "another program part is no exit";
  EXPECT_TRUE(right->Focused());
  // Sending the keyboard elsewhere from OnExit ends the first way.
  right->OnExit = [&](TObject*) {
    right->OnExit = nullptr;
    left->SetFocus();
  };
  inLeft->SetFocus();
  EXPECT_TRUE(left->Focused());
  EXPECT_EQ(std::count(log.begin(), log.end(), "inLeft enter"), 0);
}

TEST_F(ControlInput, WhatGoesAwayLeavesTheKeyboardToTheNext) {
  enum { Hide, Disable, Destroy, TakeAway };
  for (const int how : {Hide, Disable, Destroy, TakeAway}) {
    TPlainForm form;
    auto* panel = new TPanel;
    panel->SetParent(&form);
    auto* edit = new TEdit;
    edit->SetParent(panel);
    auto* next = new TEdit;
    next->SetParent(&form);
    form.Show();
    edit->SetFocus();
    switch (how) {
      case Hide:
        panel->Hide();
        break;
      case Disable:
        panel->SetEnabled(false);
        break;
      case Destroy:
        delete panel;
        break;
      default:
        panel->SetParent(nullptr);
    }
    EXPECT_EQ(form.GetActiveControl(), next) << how;
    EXPECT_TRUE(next->Focused()) << how;
    if (how == TakeAway) delete panel;
  }
}

TEST_F(ControlInput, ReturnAndEscapePressTheFormsButtons) {
  TPlainForm form;
  auto add = [&](const char* name) {
    auto* button = new TButton;
    button->SetParent(&form);
    button->OnClick = [this, name](TObject*) { log.push_back(name); };
    return button;
  };
  auto* edit = new TEdit;
  edit->SetParent(&form);
  add("ok")->SetDefault(true);
  TButton* other = add("other");
  add("cancel")->SetCancel(true);
  other->SetText(u"O&ther");
  form.Show();
  edit->SetFocus();
  screen->KeyPress(vkReturn);
  screen->KeyPress(vkEscape);
  screen->KeyPress(u'T', ssAlt);
  EXPECT_THAT(log, ElementsAre("ok", "cancel", "other"));
  log.clear();
  other->SetFocus();
  screen->KeyPress(vkReturn);
  screen->KeyPress(vkSpace);
  EXPECT_THAT(log, ElementsAre("other", "other")) << "the button that has the keyboard comes first";
  log.clear();
  auto* memo = new TMemo;
  memo->SetParent(&form);
  memo->SetFocus();
  screen->KeyPress(vkReturn);
  EXPECT_THAT(log, IsEmpty()) << "a memo takes the key itself";
  EXPECT_FALSE(memo->GetText().empty());
}

TEST_F(ControlInput, ShortCutsRunMenusAroundTheControl) {
  TPlainForm form;
  auto* panel = new TPanel;
  panel->SetParent(&form);
  auto* edit = new TEdit;
  edit->SetParent(panel);
  TPopupMenu popup;
  TMainMenu bar;
  panel->SetPopupMenu(&popup);
  form.SetMenu(&bar);
  auto add = [&](TMenu& menu, const char* name, std::uint16_t key) {
    TMenuItem* item =
        menu.Items().Add(FromUtf8(name), [this, name](TObject*) { log.push_back(name); });
    item->SetShortCut(ShortCut(key, ssCtrl));
    return item;
  };
  TMenuItem* inPopup = add(popup, "popup", u'K');
  add(bar, "bar", u'K');
  form.Show();
  edit->SetFocus();
  screen->KeyPress(u'K', ssCtrl);
  inPopup->SetEnabled(false);
  screen->KeyPress(u'K', ssCtrl);
  screen->KeyPress(u'K', {ssCtrl, ssShift});
  EXPECT_THAT(log, ElementsAre("popup", "bar"));
}

// --- context menu and hints ------------------------------------------------------------
TEST_F(ControlInput, AMenuRequestGoesUpToTheNextMenu) {
  TPlainForm form;
  auto* panel = new TPanel;
  panel->SetBounds(20, 30, 200, 100);
  panel->SetParent(&form);
  auto* edit = new TWatchedControl(panel);
  TPopupMenu popup;
  TMenuItem* item = popup.Items().Add(u"Do");
  item->OnClick = [this](TObject*) { log.push_back("do"); };
  panel->SetPopupMenu(&popup);
  form.Show();
  edit->SetFocus();
  screen->QueueMenuChoice(u"Do");
  screen->RightClick(*edit, {7, 8});
  EXPECT_THAT(log, ElementsAre("do"));
  EXPECT_EQ(popup.GetPopupPoint(), edit->ClientToScreen({7, 8}));
  EXPECT_EQ(popup.GetPopupComponent(), panel);
  screen->QueueMenuChoice(u"");
  screen->KeyPress(vkApps);
  EXPECT_EQ(popup.GetPopupPoint(), panel->ClientToScreen({0, 0}));
  screen->QueueMenuChoice(u"");
  screen->KeyPress(vkF10, ssShift);
  edit->OnContextPopup = [](TObject*, TPoint point, bool& handled) {
    EXPECT_EQ(point, TPoint(-1, -1));
    handled = true;
  };
  screen->KeyPress(vkApps);  // no menu opens: nobody would answer it
  popup.SetAutoPopup(false);
  edit->OnContextPopup = nullptr;
  screen->RightClick(*edit, {7, 8});
  EXPECT_THAT(log, ElementsAre("do"));
}

TEST_F(ControlInput, HintsAppearWhenTheMouseRests) {
  TPlainForm form;
  auto* control = new TWatchedControl(&form);
  control->SetHint(u"Short|The long text");
  control->SetShowHint(true);
  form.Show();
  int told = 0;
  Application().OnHint = [&](TObject*) { ++told; };
  screen->MouseMove(control->ClientToScreen({5, 5}));
  EXPECT_EQ(Application().GetHint(), u"The long text");
  EXPECT_EQ(screen->GetHintText(), u"");
  screen.Advance(static_cast<std::uint64_t>(Application().GetHintPause()));
  EXPECT_EQ(screen->GetHintText(), u"Short");
  screen->MouseMove({1, 1});
  EXPECT_EQ(Application().GetHint(), u"");
  EXPECT_EQ(screen->GetHintText(), u"");
  EXPECT_EQ(told, 2);
  Application().OnHint = nullptr;
  Application().SetShowHint(false);
  screen->MouseMove(control->ClientToScreen({5, 5}));
  screen.Advance(5000);
  EXPECT_EQ(screen->GetHintText(), u"");
  Application().SetShowHint(true);
  delete control;
  EXPECT_EQ(Application().GetHint(), u"") << "what is gone has nothing to say";
}

// --- failures ------------------------------------------------------------------------------
TEST_F(ControlInput, WhatAHandlerThrowsIsReportedAndTheRestGoesOn) {
  TPlainForm form;
  auto* control = new TWatchedControl(&form);
  form.Show();
  control->OnClick = [](TObject*) { throw EInvalidOperation(u"Refused"); };
  screen->Click(*control, {3, 3});
  EXPECT_THAT(screen.Exceptions(), ElementsAre(u"Refused"));
  screen.Exceptions().clear();
  EXPECT_FALSE(control->GetMouseCapture());
}

}  // namespace
}  // namespace oak::tests
