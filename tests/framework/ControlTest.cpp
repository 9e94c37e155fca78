#include "tests/framework/ControlFixture.h"

#include "oak/base/Exceptions.h"
#include "oak/framework/Menus.h"
#include "oak/framework/StdCtrls.h"

namespace oak::tests {
namespace {

using ::testing::ElementsAre;
using ::testing::IsEmpty;

// --- layout ------------------------------------------------------------------------
class ControlLayout : public TScreenTest {
 protected:
  TWatchedControl* Add(TWinControl& parent, TAlign align, int width, int height) {
    auto* control = new TWatchedControl(&parent);
    control->SetBounds(control->GetLeft(), control->GetTop(), width, height);
    control->SetAlign(align);
    return control;
  }
};

TEST_F(ControlLayout, EdgesTakeTheirPartInOrderOfKindAndCreation) {
  TPanel panel;
  panel.SetBounds(0, 0, 300, 200);
  TWatchedControl* client = Add(panel, alClient, 1, 1);
  TWatchedControl* left1 = Add(panel, alLeft, 40, 1);
  TWatchedControl* left2 = Add(panel, alLeft, 30, 1);
  TWatchedControl* right1 = Add(panel, alRight, 20, 1);
  TWatchedControl* right2 = Add(panel, alRight, 10, 1);
  TWatchedControl* bottom = Add(panel, alBottom, 1, 15);
  TWatchedControl* top1 = Add(panel, alTop, 1, 10);
  TWatchedControl* top2 = Add(panel, alTop, 1, 25);
  EXPECT_EQ(BoundsOf(*top1), TRect(0, 0, 300, 10));
  EXPECT_EQ(BoundsOf(*top2), TRect(0, 10, 300, 35));
  EXPECT_EQ(BoundsOf(*bottom), TRect(0, 185, 300, 200));
  EXPECT_EQ(BoundsOf(*left1), TRect(0, 35, 40, 185));
  EXPECT_EQ(BoundsOf(*left2), TRect(40, 35, 70, 185));
  EXPECT_EQ(BoundsOf(*right1), TRect(280, 35, 300, 185));
  EXPECT_EQ(BoundsOf(*right2), TRect(270, 35, 280, 185));
  EXPECT_EQ(BoundsOf(*client), TRect(70, 35, 270, 185));

  left1->Hide();
  EXPECT_EQ(BoundsOf(*left2), TRect(0, 35, 30, 185));
  EXPECT_EQ(BoundsOf(*client), TRect(30, 35, 270, 185));
  left1->Show();
  EXPECT_EQ(BoundsOf(*left1), TRect(0, 35, 40, 185)) << "a control comes back to its rank";
  delete top1;
  EXPECT_EQ(BoundsOf(*top2), TRect(0, 0, 300, 25));
}

TEST_F(ControlLayout, AControlPutBesideAnotherOneTakesThatRank) {
  TPanel panel;
  panel.SetBounds(0, 0, 300, 100);
  TWatchedControl* edit = Add(panel, alRight, 80, 1);
  TWatchedControl* button = Add(panel, alRight, 20, 1);
  TWatchedControl* bar = Add(panel, alRight, 10, 1);
  ASSERT_EQ(BoundsOf(*bar), TRect(190, 0, 200, 100));
  bar->SetLeft(button->GetBoundsRect().Right);  // right of the button, left of the edit
  EXPECT_EQ(BoundsOf(*edit), TRect(220, 0, 300, 100));
  EXPECT_EQ(BoundsOf(*bar), TRect(210, 0, 220, 100));
  EXPECT_EQ(BoundsOf(*button), TRect(190, 0, 210, 100));
  bar->BringToFront();  // the z-order is no rank
  panel.Realign();
  EXPECT_EQ(BoundsOf(*button), TRect(190, 0, 210, 100));
}

TEST_F(ControlLayout, NestedBracketsPutLayoutOff) {
  TPanel panel;
  panel.SetBounds(0, 0, 100, 100);
  panel.DisableAlign();
  panel.DisableAlign();
  TWatchedControl* client = Add(panel, alClient, 7, 7);
  panel.EnableAlign();
  EXPECT_EQ(BoundsOf(*client), TRect(0, 0, 7, 7));
  panel.EnableAlign();
  EXPECT_EQ(BoundsOf(*client), TRect(0, 0, 100, 100));
}

TEST_F(ControlLayout, HandlersOfResizeMayChangeTheLayout) {
  TPanel panel;
  panel.SetBounds(0, 0, 100, 100);
  TWatchedControl* top = Add(panel, alTop, 1, 20);
  TWatchedControl* client = Add(panel, alClient, 1, 1);
  client->OnResize = [&](TObject*) { top->SetHeight(30); };
  panel.SetWidth(200);
  EXPECT_EQ(BoundsOf(*client), TRect(0, 30, 200, 100));
  // Two that never agree come to an end.
  int rounds = 0;
  client->OnResize = [&](TObject*) { top->SetHeight(40 + ++rounds); };
  panel.SetWidth(210);
  EXPECT_LT(rounds, 10);
  client->OnResize = [&](TObject*) { throw EInvalidOperation(u"no"); };
  EXPECT_THROW(panel.SetWidth(220), EInvalidOperation);
  client->OnResize = nullptr;
  panel.SetWidth(230);
  EXPECT_EQ(client->GetWidth(), 230) << "a layout that failed does not block the next";
}

TEST_F(ControlLayout, AControlMayInsistOnItsSize) {
  class TStubborn : public TWatchedControl {
   public:
    using TWatchedControl::TWatchedControl;
    void SetBounds(int left, int top, int width, int) override {
      TWatchedControl::SetBounds(left, top, width, 33);
    }
  };
  TPanel panel;
  panel.SetBounds(0, 0, 100, 100);
  auto* top = new TStubborn(&panel);
  TWatchedControl* client = Add(panel, alClient, 1, 1);
  top->SetAlign(alTop);
  EXPECT_EQ(BoundsOf(*top), TRect(0, 0, 100, 33));
  EXPECT_EQ(BoundsOf(*client), TRect(0, 33, 100, 100));
}

TEST_F(ControlLayout, AnchorsFollowTheEdges) {
  struct TCase {
    TAnchors Anchors;
    TRect After;
  };
  const TCase cases[] = {
      {{akLeft, akTop}, {10, 10, 30, 30}},
      {{akRight, akBottom}, {60, 30, 80, 50}},
      {{akLeft, akTop, akRight, akBottom}, {10, 10, 80, 50}},
      {{}, {35, 20, 55, 40}},
  };
  for (const TCase& c : cases) {
    TPanel panel;
    panel.SetBounds(0, 0, 100, 100);
    auto* control = new TWatchedControl(&panel);
    control->SetBounds(10, 10, 20, 20);
    control->SetAnchors(c.Anchors);
    for (const int width : {120, 60, 150}) panel.SetBounds(0, 0, width, width - 30);
    EXPECT_EQ(BoundsOf(*control), c.After) << c.Anchors.ToBits();
    panel.SetBounds(0, 0, 100, 100);
    EXPECT_EQ(BoundsOf(*control), TRect(10, 10, 30, 30)) << "no rounding stays";
  }
  // A parent without a size says nothing about distances.
  TPanel panel;
  panel.SetBounds(0, 0, 0, 0);
  auto* control = new TWatchedControl(&panel);
  control->SetAnchors({akLeft, akRight});
  panel.SetBounds(0, 0, 100, 100);
  EXPECT_EQ(control->GetWidth(), 50);
}

// --- inheritance -------------------------------------------------------------------
TEST(ControlLook, FontAndColourComeFromTheParentUntilSet) {
  TPanel outer;
  auto* inner = new TPanel;
  inner->SetParent(&outer);
  auto* leaf = new TWatchedControl(inner);
  outer.GetFont().SetSize(20);
  outer.SetColor(clRed);
  EXPECT_EQ(leaf->GetFont().GetSize(), 20);
  EXPECT_EQ(leaf->GetColor(), clRed);
  inner->GetFont().SetSize(11);
  inner->SetColor(clBlue);
  EXPECT_FALSE(inner->GetParentFont());
  outer.GetFont().SetSize(30);
  outer.SetColor(clGreen);
  EXPECT_EQ(leaf->GetFont().GetSize(), 11) << "the nearest parent counts";
  EXPECT_EQ(leaf->GetColor(), clBlue);
  inner->SetParentFont(true);
  inner->SetParentColor(true);
  EXPECT_EQ(leaf->GetFont().GetSize(), 30);
  EXPECT_EQ(leaf->GetColor(), clGreen);
  EXPECT_THROW(outer.SetParent(inner), EInvalidOperation);
}

// --- windows -----------------------------------------------------------------------
class ControlWindow : public TScreenTest {};

TEST_F(ControlWindow, IsMadeWhenItIsShown) {
  TLog log;
  TPlainForm form;
  auto* panel = new TWatchedControl(&form, &log, "panel");
  auto* child = new TWatchedControl(panel, &log, "child");
  child->Hide();
  EXPECT_FALSE(form.HandleAllocated());
  panel->SetAlign(alClient);
  form.Show();
  EXPECT_THAT(log, ElementsAre("panel create"));
  EXPECT_EQ(BoundsOf(*panel), form.GetClientRect()) << "the frame takes its part";
  EXPECT_TRUE(panel->IsShowing());
  child->Show();
  EXPECT_TRUE(child->IsShowing());
  panel->Hide();
  EXPECT_FALSE(child->IsShowing());
  EXPECT_TRUE(child->HandleAllocated()) << "hiding keeps windows";
  EXPECT_THROW(TWatchedControl(nullptr).GetHandle(), EInvalidOperation);

  TPlainForm hidden;
  auto* wanted = new TWatchedControl(&hidden);
  EXPECT_NE(wanted->GetHandle(), nullptr) << "a window can be had before it is seen";
  EXPECT_FALSE(wanted->IsShowing());
}

TEST_F(ControlWindow, LivesInAForeignParent) {
  TPlainForm host;  // stands for the window of a foreign program
  host.Show();
  TLog log;
  TWatchedControl control(nullptr, &log);
  control.SetParentWindow(host.GetHandle());
  EXPECT_TRUE(control.IsShowing());
  screen->Click(control, {3, 3});
  auto* first = new TEdit;
  auto* second = new TEdit;
  first->SetParent(&control);
  second->SetParent(&control);
  first->SetFocus();
  screen->KeyPress(vkTab);
  EXPECT_TRUE(second->Focused()) << "tab stops go round without a form";
  screen->TypeText(u"x");
  EXPECT_EQ(second->GetText(), u"x");
  control.SetParentWindow(nullptr);
  EXPECT_FALSE(control.HandleAllocated());
  EXPECT_FALSE(second->HandleAllocated());
}

TEST_F(ControlWindow, IsMadeAnewWithAllThatStandsInIt) {
  TLog log;
  TPlainForm form;
  auto* panel = new TWatchedControl(&form, &log, "panel");
  auto* child = new TWatchedControl(panel, &log, "child");
  auto* edit = new TEdit;
  edit->SetParent(panel);
  edit->SetText(u"abcdef");
  form.Show();
  edit->SetFocus();
  edit->SelectText(2, 3);
  log.clear();
  panel->RecreateWnd();
  EXPECT_THAT(
      log, ElementsAre("child destroy to recreate", "child wmdestroy", "panel destroy to recreate",
                       "panel wmdestroy", "panel create again", "child create again"));
  EXPECT_TRUE(child->IsShowing());
  EXPECT_TRUE(edit->Focused());
  EXPECT_EQ(edit->GetSelText(), u"cde");
  EXPECT_FALSE(panel->GetControlState().Contains(csRecreating));

  log.clear();
  form.RecreateWnd();
  EXPECT_TRUE(edit->Focused());
  EXPECT_TRUE(form.IsActive());
  panel->HandleWindowLost();  // the system destroyed it
  EXPECT_FALSE(child->HandleAllocated());
  form.Hide();
  form.Show();
  EXPECT_TRUE(child->IsShowing());
}

TEST_F(ControlWindow, StacksAsTheListOfControlsSays) {
  TPlainForm form;
  auto* below = new TWatchedControl(&form);
  auto* above = new TWatchedControl(&form);
  below->Hide();
  form.Show();
  below->Show();  // its window is younger, and yet below
  EXPECT_EQ(screen->WindowAt(above->ClientToScreen({5, 5})), screen->WindowOf(*above));
  EXPECT_EQ(form.ControlAtPos({5, 5}), above);
  below->BringToFront();
  EXPECT_EQ(screen->WindowAt(above->ClientToScreen({5, 5})), screen->WindowOf(*below));
  EXPECT_EQ(form.ControlAtPos({5, 5}), below);
}

TEST_F(ControlWindow, MovesWithoutEcho) {
  TPlainForm form;
  auto* control = new TWatchedControl(&form);
  int resized = 0;
  control->OnResize = [&](TObject*) { ++resized; };
  form.Show();
  control->PosChanging = 0;
  control->SetBounds(5, 6, 70, 80);
  EXPECT_EQ(screen->WindowOf(*control)->GetBounds(), TRect(5, 6, 75, 86));
  EXPECT_EQ(resized, 1);
  EXPECT_EQ(control->PosChanging, 1);
  control->SetBounds(5, 6, 70, 80);
  control->HandleBounds({5, 6, 75, 86});
  control->SetLeft(9);
  EXPECT_EQ(resized, 1);
  screen->ResizeWindow(form, 500, 350);
  EXPECT_EQ(form.GetWidth(), 500);
}

TEST_F(ControlWindow, ChangesParentWithItsWindow) {
  TPlainForm one, two;
  auto* control = new TWatchedControl(&one);
  one.Show();
  two.Show();
  one.GetFont().SetSize(17);
  control->SetParent(&two);
  EXPECT_EQ(screen->WindowOf(*control)->GetParentWindow(), screen->WindowOf(two));
  EXPECT_NE(control->GetFont().GetSize(), 17);
  control->SetParent(nullptr);
  EXPECT_FALSE(control->HandleAllocated());
  delete control;
}

// --- messages ----------------------------------------------------------------------
TEST_F(ControlWindow, GetsItsMessagesAfterThePresentHandler) {
  TLog log;
  TPlainForm form;
  auto* control = new TWatchedControl(&form, &log);
  EXPECT_FALSE(control->PostMessage(FirstPrivateMessage)) << "nobody is there yet";
  form.Show();
  log.clear();
  control->OnWndProc = [&](TMessage& message) {
    if (message.Msg != FirstPrivateMessage + 1) return;
    control->PostMessage(FirstPrivateMessage + 2, 5, 6);
    log.push_back("handled");
    message.Result = 7;
  };
  EXPECT_EQ(control->Perform(FirstPrivateMessage + 1), 7);
  EXPECT_THAT(log, ElementsAre("message 1", "handled"));
  screen.Drain();
  EXPECT_EQ(log.back(), "message 2");

  log.clear();
  control->PostMessage(FirstPrivateMessage + 3);
  delete control;
  TWatchedControl other(&form, &log, "other");
  screen.Drain();
  EXPECT_EQ(std::count_if(log.begin(), log.end(),
                          [](const std::string& s) { return s.find("message") != s.npos; }),
            0)
      << "messages die with their window";
}

TEST_F(ControlWindow, TheApplicationSeesMessagesFirst) {
  TLog log;
  TPlainForm form;
  auto* control = new TWatchedControl(&form, &log);
  form.Show();
  log.clear();
  Application().OnMessage = [&](TWinControl* receiver, TMessage& message, bool& handled) {
    EXPECT_EQ(receiver, control);
    handled = message.Msg == FirstPrivateMessage + 1;
  };
  control->PostMessage(FirstPrivateMessage + 1);
  control->PostMessage(FirstPrivateMessage + 2);
  screen.Drain();
  Application().OnMessage = nullptr;
  EXPECT_THAT(log, ElementsAre("message 2"));
}

}  // namespace
}  // namespace oak::tests
