// Controls and forms that end in the middle of what happens to them. These tests say most under the
// address sanitizer.
#include "oak/framework/StdCtrls.h"
#include "oak/framework/Timer.h"
#include "tests/framework/ControlFixture.h"

namespace oak::tests {
namespace {

/// One way in which a user makes an event of a control happen.
struct TEndCase {
  const char* Name;
  std::function<void(TWatchedControl&, std::function<void()> end)> Arrange;
  std::function<void(testkit::THeadlessScreen&, TWatchedControl&)> Act;
};

std::vector<TEndCase> EndCases() {
  auto click = [](testkit::THeadlessScreen& s, TWatchedControl& c) { s->DoubleClick(c, {3, 3}); };
  auto key = [](testkit::THeadlessScreen& s, TWatchedControl& c) {
    c.SetFocus();
    s->KeyPress(u'A');
  };
  return {
      {"OnClick", [](TWatchedControl& c, auto end) { c.OnClick = [=](TObject*) { end(); }; },
       click},
      {"OnDblClick", [](TWatchedControl& c, auto end) { c.OnDblClick = [=](TObject*) { end(); }; },
       click},
      {"OnMouseDown",
       [](TWatchedControl& c, auto end) {
         c.OnMouseDown = [=](TObject*, TMouseButton, TShiftState, int, int) { end(); };
       },
       click},
      {"OnMouseUp",
       [](TWatchedControl& c, auto end) {
         c.OnMouseUp = [=](TObject*, TMouseButton, TShiftState, int, int) { end(); };
       },
       click},
      {"OnMouseMove",
       [](TWatchedControl& c, auto end) {
         c.OnMouseMove = [=](TObject*, TShiftState, int, int) { end(); };
       },
       click},
      {"OnMouseEnter",
       [](TWatchedControl& c, auto end) { c.OnMouseEnter = [=](TObject*) { end(); }; }, click},
      {"OnMouseLeave",
       [](TWatchedControl& c, auto end) { c.OnMouseLeave = [=](TObject*) { end(); }; },
       [](testkit::THeadlessScreen& s, TWatchedControl& c) {
         s->MouseMove(c.ClientToScreen({3, 3}));
         s->MouseMove({0, 0});
       }},
      {"OnMouseWheel",
       [](TWatchedControl& c, auto end) {
         c.OnMouseWheel = [=](TObject*, TShiftState, int, TPoint, bool&) { end(); };
       },
       [](testkit::THeadlessScreen& s, TWatchedControl& c) {
         s->MouseMove(c.ClientToScreen({3, 3}));
         s->Wheel(1);
       }},
      {"OnContextPopup",
       [](TWatchedControl& c, auto end) {
         c.OnContextPopup = [=](TObject*, TPoint, bool&) { end(); };
       },
       [](testkit::THeadlessScreen& s, TWatchedControl& c) {
         s->RightClick(c, {3, 3});
       }},
      {"OnKeyDown",
       [](TWatchedControl& c, auto end) {
         c.OnKeyDown = [=](TObject*, std::uint16_t&, TShiftState) { end(); };
       },
       key},
      {"OnKeyPress",
       [](TWatchedControl& c, auto end) { c.OnKeyPress = [=](TObject*, char16_t&) { end(); }; },
       key},
      {"OnKeyUp",
       [](TWatchedControl& c, auto end) {
         c.OnKeyUp = [=](TObject*, std::uint16_t&, TShiftState) { end(); };
       },
       key},
      {"OnEnter", [](TWatchedControl& c, auto end) { c.OnEnter = [=](TObject*) { end(); }; },
       [](testkit::THeadlessScreen&, TWatchedControl& c) { c.SetFocus(); }},
      {"OnExit", [](TWatchedControl& c, auto end) { c.OnExit = [=](TObject*) { end(); }; },
       [](testkit::THeadlessScreen& s, TWatchedControl& c) {
         c.SetFocus();
         s->KeyPress(vkTab);
       }},
      {"OnResize", [](TWatchedControl& c, auto end) { c.OnResize = [=](TObject*) { end(); }; },
       [](testkit::THeadlessScreen&, TWatchedControl& c) { c.SetWidth(77); }},
      {"OnResize in a layout",
       [](TWatchedControl& c, auto end) {
         c.SetAlign(alTop);
         c.OnResize = [=](TObject*) { end(); };
       },
       [](testkit::THeadlessScreen& s, TWatchedControl& c) {
         s->ResizeWindow(*c.GetParentForm(), 300, 300);
       }},
      {"OnPaint",
       [](TWatchedControl& c, auto end) {
         c.OnPaint = [=](TObject*, TCanvas&, const TRect&) { end(); };
         c.Invalidate();
       },
       [](testkit::THeadlessScreen& s, TWatchedControl&) { s.Drain(); }},
      {"WndProc", [](TWatchedControl& c, auto end) { c.OnWndProc = [=](TMessage&) { end(); }; },
       [](testkit::THeadlessScreen& s, TWatchedControl& c) {
         c.PostMessage(FirstPrivateMessage);
         s.Drain();
       }},
      {"CreateWnd", [](TWatchedControl& c, auto end) { c.OnCreateWnd = [=] { end(); }; },
       [](testkit::THeadlessScreen&, TWatchedControl& c) { c.RecreateWnd(); }},
  };
}

class ControlEnd : public TScreenTest {};

TEST_F(ControlEnd, AControlMayBeDestroyedInEachOfItsEvents) {
  for (const TEndCase& c : EndCases()) {
    SCOPED_TRACE(c.Name);
    TPlainForm form;
    auto* control = new TWatchedControl(&form);
    auto* other = new TEdit;
    other->SetParent(&form);
    other->SetTop(100);
    form.Show();
    bool ended = false;
    c.Arrange(*control, [&] {
      delete control;
      ended = true;  // the handler's own state has to outlive its control
    });
    c.Act(screen, *control);
    EXPECT_TRUE(ended);
    EXPECT_EQ(form.GetControlCount(), 1);
    screen.Drain();
  }
}

TEST_F(ControlEnd, AFormMayBeDestroyedInEachEventOfItsControls) {
  for (const TEndCase& c : EndCases()) {
    SCOPED_TRACE(c.Name);
    auto* form = new TPlainForm;
    auto* control = new TWatchedControl(form);
    auto* other = new TEdit;
    other->SetParent(form);
    other->SetTop(100);
    form->Show();
    bool ended = false;
    c.Arrange(*control, [&] {
      if (!ended) {
        ended = true;
        delete form;
      }
    });
    c.Act(screen, *control);
    EXPECT_TRUE(ended);
    EXPECT_EQ(Screen().GetFormCount(), 0);
    screen.Drain();
  }
}

TEST_F(ControlEnd, AFormGoesWithAllThatIsPending) {
  for (const bool released : {false, true}) {
    auto* form = new TPlainForm;
    auto* timer = new TTimer(form);
    timer->SetInterval(10);
    int ticks = 0;
    timer->OnTimer = [&](TObject*) { ++ticks; };
    TLog notes;
    auto* control = new TWatchedControl(form, &notes);
    auto* edit = new TEdit;
    edit->SetParent(form);
    edit->SetTop(100);
    form->Show();
    edit->SetFocus();
    screen.Advance(25);
    EXPECT_EQ(ticks, 2);
    screen->MouseMove(control->ClientToScreen({2, 2}));
    screen->MouseDown();
    ASSERT_TRUE(control->GetMouseCapture());
    control->PostMessage(FirstPrivateMessage);
    control->SetHint(u"hint");
    control->SetShowHint(true);
    released ? form->Release() : delete form;
    screen.Advance(1000);
    screen->MouseUp();
    EXPECT_LE(ticks, 2);
    EXPECT_EQ(Screen().GetFormCount(), 0);
    EXPECT_EQ(screen->GetTimerCount(), 0u);
  }
}

TEST_F(ControlEnd, AFormMayBeDestroyedInItsOwnEvents) {
  const char* names[] = {"OnShow", "OnActivate",   "OnDeactivate",
                         "OnHide", "OnCloseQuery", "OnClose"};
  for (const std::string name : names) {
    SCOPED_TRACE(name);
    auto* form = new TPlainForm;
    bool ended = false;
    auto end = [&](auto&&...) {
      delete form;
      ended = true;
    };
    if (name == "OnShow") form->OnShow = end;
    if (name == "OnActivate") form->OnActivate = end;
    if (name == "OnDeactivate") form->OnDeactivate = end;
    if (name == "OnHide") form->OnHide = end;
    if (name == "OnCloseQuery") form->OnCloseQuery = end;
    if (name == "OnClose") form->OnClose = end;
    form->Show();
    TPlainForm other;
    if (!ended) other.Show();
    if (!ended) screen->CloseWindow(*form);
    screen.Drain();
    EXPECT_TRUE(ended);
  }
}

}  // namespace
}  // namespace oak::tests
