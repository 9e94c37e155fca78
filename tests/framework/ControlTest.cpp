#include "tests/framework/ControlFixture.h"

#include "oak/base/Exceptions.h"
#include "oak/framework/StdCtrls.h"

namespace oak::tests {
namespace {

using ::testing::ElementsAre;

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
  const std::tuple<TAlign, int, int, TRect> places[] = {
      {alClient, 1, 1, {40, 35, 280, 185}},  {alLeft, 40, 1, {0, 35, 40, 185}},
      {alRight, 20, 1, {280, 35, 300, 185}}, {alBottom, 1, 15, {0, 185, 300, 200}},
      {alTop, 1, 10, {0, 0, 300, 10}},       {alTop, 1, 25, {0, 10, 300, 35}},
  };
  for (const auto& [align, width, height, place] : places) Add(panel, align, width, height);
  for (int i = 0; i < panel.GetControlCount(); ++i)
    EXPECT_EQ(BoundsOf(*panel.GetControl(i)), std::get<TRect>(places[i])) << i;
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
  EXPECT_EQ(BoundsOf(*button), TRect(190, 0, 210, 100));
  edit->Hide();
  EXPECT_EQ(BoundsOf(*bar), TRect(290, 0, 300, 100));
  edit->Show();
  EXPECT_EQ(BoundsOf(*button), TRect(190, 0, 210, 100)) << "a control comes back to its rank";
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

TEST_F(ControlLayout, AnchorsFollowTheEdges) {
  const std::pair<TAnchors, TRect> cases[] = {
      {{akLeft, akTop}, {10, 10, 30, 30}},
      {{akRight, akBottom}, {60, 30, 80, 50}},
      {{akLeft, akTop, akRight, akBottom}, {10, 10, 80, 50}},
      {{}, {35, 20, 55, 40}},
  };
  for (const auto& [anchors, after] : cases) {
    TPanel panel;
    panel.SetBounds(0, 0, 100, 100);
    auto* control = new TWatchedControl(&panel);
    control->SetBounds(10, 10, 20, 20);
    control->SetAnchors(anchors);
    for (const int width : {121, 61, 150}) panel.SetBounds(0, 0, width, width - 30);
    EXPECT_EQ(BoundsOf(*control), after) << anchors.ToBits();
    panel.SetBounds(0, 0, 100, 100);
    EXPECT_EQ(BoundsOf(*control), TRect(10, 10, 30, 30)) << "no rounding stays";
  }
}

// --- inheritance -------------------------------------------------------------------
TEST(ControlLook, FontAndColourComeFromTheParentUntilSet) {
  TPanel outer;
  auto* inner = new TPanel;
  inner->SetParent(&outer);
  auto* leaf = new TWatchedControl(inner);
  outer.GetFont().SetSize(20);
  outer.SetColor(clRed);
  inner->GetFont().SetSize(11);
  inner->SetColor(clBlue);
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
  TProbeForm form;
  auto* panel = new TWatchedControl(&form);
  auto* child = new TWatchedControl(panel);
  child->Hide();
  EXPECT_FALSE(form.HandleAllocated());
  panel->SetAlign(alClient);
  form.Show();
  EXPECT_FALSE(child->HandleAllocated());
  EXPECT_EQ(BoundsOf(*panel), form.GetClientRect()) << "the frame takes its part";
  child->Show();
  panel->Hide();
  EXPECT_FALSE(child->IsShowing());
  EXPECT_TRUE(child->HandleAllocated()) << "hiding keeps windows";
  EXPECT_THROW(TWatchedControl(nullptr).GetHandle(), EInvalidOperation);

  TProbeForm hidden;
  auto* wanted = new TWatchedControl(&hidden);
  EXPECT_NE(wanted->GetHandle(), nullptr) << "a window can be had before it is seen";
  EXPECT_FALSE(wanted->IsShowing());
}

TEST_F(ControlWindow, LivesInAForeignParent) {
  TProbeForm host;  // stands for the window of a foreign program
  host.Show();
  TWatchedControl control(nullptr);
  control.SetParentWindow(host.GetHandle());
  EXPECT_TRUE(control.IsShowing());
  auto* first = new TEdit;
  auto* second = new TEdit;
  first->SetParent(&control);
  second->SetParent(&control);
  first->SetFocus();
  screen->KeyPress(vkTab);
  EXPECT_TRUE(second->Focused()) << "tab stops go round without a form";
  control.SetParentWindow(nullptr);
  EXPECT_FALSE(second->HandleAllocated());
}

TEST_F(ControlWindow, StacksAsTheListOfControlsSays) {
  TProbeForm form;
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

TEST_F(ControlWindow, GetsItsMessagesInOrderAndAfterTheApplication) {
  TLog log;
  TProbeForm form;
  auto* control = new TWatchedControl(&form, &log);
  form.Show();
  log.clear();
  Application().OnMessage = [&](TWinControl* receiver, TMessage& message, bool& handled) {
    EXPECT_EQ(receiver, control);
    handled = message.Msg == FirstPrivateMessage + 1;
  };
  control->OnWndProc = [&](TMessage& message) {
    if (message.Msg != FirstPrivateMessage + 2) return;
    control->PostMessage(FirstPrivateMessage + 4);
    log.push_back("handled");
    message.Result = 7;
  };
  for (UINT number = 1; number <= 3; ++number) control->PostMessage(FirstPrivateMessage + number);
  screen.Drain();
  EXPECT_THAT(log, ElementsAre("message 2", "handled", "message 3", "message 4"));
  EXPECT_EQ(control->Perform(FirstPrivateMessage + 2), 7);
  log.clear();
  control->PostMessage(FirstPrivateMessage + 5);
  delete control;
  screen.Drain();
  Application().OnMessage = nullptr;
  EXPECT_TRUE(log.empty()) << "messages die with their window";
}

}  // namespace
}  // namespace oak::tests
