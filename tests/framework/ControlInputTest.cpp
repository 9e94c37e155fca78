#include "tests/framework/ControlFixture.h"

#include "oak/base/Exceptions.h"
#include "oak/framework/StdCtrls.h"

namespace oak::tests {
namespace {

using ::testing::ElementsAre;
using ::testing::IsEmpty;

class ControlInput : public TScreenTest {
 protected:
  TLog log;
};

TEST_F(ControlInput, ALostMouseEndsThePress) {
  TProbeForm form;
  auto* control = new TWatchedControl(&form, &log);
  auto* other = new TWatchedControl(&form);
  other->SetLeft(100);
  int clicks = 0;
  control->OnClick = [&](TObject*) { ++clicks; };
  form.Show();
  screen->MouseMove(control->ClientToScreen({3, 3}));
  screen->MouseDown();
  ASSERT_TRUE(control->GetMouseCapture());
  other->SetMouseCapture(true);
  EXPECT_EQ(log.back(), "capture lost");
  EXPECT_FALSE(control->GetControlState().Contains(csLButtonDown));
  other->SetMouseCapture(false);
  screen->MouseUp();
  EXPECT_EQ(clicks, 0);
  log.clear();
  screen->Click(*control, {3, 3});
  EXPECT_EQ(clicks, 1);
  EXPECT_EQ(std::count(log.begin(), log.end(), "capture lost"), 0) << "given back, not lost";
}

TEST_F(ControlInput, TabFollowsTheOrderOfTheProgram) {
  TProbeForm form;
  auto* first = new TEdit;
  auto* panel = new TPanel;
  auto* last = new TEdit;
  for (TWinControl* control : std::initializer_list<TWinControl*>{first, panel, last})
    control->SetParent(&form);
  auto* inner = new TEdit;
  inner->SetParent(panel);
  form.Show();
  EXPECT_TRUE(first->Focused()) << "the first stop has the keyboard when the form appears";
  last->SetTabOrder(0);
  EXPECT_EQ(first->GetTabOrder(), 1);
  screen->KeyPress(vkTab, ssShift);
  EXPECT_EQ(form.GetActiveControl(), last);
  screen->KeyPress(vkTab, ssShift);
  EXPECT_EQ(form.GetActiveControl(), inner);
  panel->Hide();
  EXPECT_THROW(inner->SetFocus(), EInvalidOperation);
}

TEST_F(ControlInput, EnterAndExitFollowTheKeyboardThroughContainers) {
  TProbeForm form;
  auto* left = new TWatchedControl(&form, &log, "left");
  auto* inLeft = new TWatchedControl(left, &log, "inLeft");
  auto* alsoInLeft = new TWatchedControl(left, &log, "alsoInLeft");
  auto* right = new TWatchedControl(&form, &log, "right");
  form.Show();
  log.clear();
  inLeft->SetFocus();
  alsoInLeft->SetFocus();
  right->SetFocus();
  EXPECT_THAT(log, ElementsAre("left enter", "inLeft enter", "inLeft exit", "alsoInLeft enter",
                               "alsoInLeft exit", "left exit", "right enter"));
  log.clear();
  TProbeForm other;
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
    TProbeForm form;
    auto* panel = new TPanel;
    panel->SetParent(&form);
    auto* edit = new TEdit;
    edit->SetParent(panel);
    auto* next = new TEdit;
    next->SetParent(&form);
    form.Show();
    edit->SetFocus();
    if (how == Hide) panel->Hide();
    if (how == Disable) panel->SetEnabled(false);
    if (how == Destroy) delete panel;
    if (how == TakeAway) panel->SetParent(nullptr);
    EXPECT_EQ(form.GetActiveControl(), next) << how;
    EXPECT_TRUE(next->Focused()) << how;
    if (how == TakeAway) delete panel;
  }
}

TEST_F(ControlInput, HintsAppearWhenTheMouseRests) {
  TProbeForm form;
  auto* control = new TWatchedControl(&form);
  control->SetHint(u"Short|The long text");
  control->SetShowHint(true);
  form.Show();
  const auto rest = [&](std::uint64_t milliseconds) {
    screen->MouseMove({1, 1});
    screen->MouseMove(control->ClientToScreen({5, 5}));
    screen.Advance(milliseconds);
    return screen->GetHintText();
  };
  const auto pause = static_cast<std::uint64_t>(Application().GetHintPause());
  EXPECT_EQ(rest(pause - 1), u"");
  EXPECT_EQ(Application().GetHint(), u"The long text");
  EXPECT_EQ(rest(pause), u"Short");
  screen->MouseMove(control->ClientToScreen({6, 5}));
  EXPECT_EQ(screen->GetHintText(), u"Short") << "it stays while the mouse does";
  Application().SetShowHint(false);
  EXPECT_EQ(rest(5000), u"");
  Application().SetShowHint(true);
  rest(1);
  delete control;  // in the pause before its hint
  EXPECT_EQ(Application().GetHint(), u"") << "what is gone has nothing to say";
  screen.Advance(5000);
  EXPECT_EQ(screen->GetHintText(), u"");
}

}  // namespace
}  // namespace oak::tests
