// Controls and forms that end in the middle of what happens to them. These tests say most under the
// address sanitizer.
#include "oak/framework/StdCtrls.h"
#include "tests/framework/ControlFixture.h"

namespace oak::tests {
namespace {

using TEnd = std::function<void()>;

/// One way in which a user makes an event of a control happen.
struct TEndCase {
  const char* Name;
  std::function<void(TWatchedControl&, TEnd end)> Arrange;
  std::function<void(testkit::THeadlessScreen&, TWatchedControl&)> Act;
};

/// Ends it in this event.
template <class TOwner, class TEvent>
auto EndsIn(TEvent TOwner::*event) {
  return
      [event](TWatchedControl& control, TEnd end) { control.*event = [end](auto&&...) { end(); }; };
}

std::vector<TEndCase> EndCases() {
  using T = TWatchedControl;
  auto click = [](testkit::THeadlessScreen& s, T& c) { s->DoubleClick(c, {3, 3}); };
  auto key = [](testkit::THeadlessScreen& s, T& c) {
    c.SetFocus();
    s->KeyPress(u'A');
  };
  auto leave = [](testkit::THeadlessScreen& s, T& c) {
    s->MouseMove(c.ClientToScreen({3, 3}));
    s->Wheel(1);
    s->MouseMove({0, 0});
  };
  return {
      {"click", EndsIn(&T::OnClick), click},
      {"double click", EndsIn(&T::OnDblClick), click},
      {"mouse down", EndsIn(&T::OnMouseDown), click},
      {"mouse up", EndsIn(&T::OnMouseUp), click},
      {"mouse move", EndsIn(&T::OnMouseMove), click},
      {"mouse enter", EndsIn(&T::OnMouseEnter), click},
      {"mouse leave", EndsIn(&T::OnMouseLeave), leave},
      {"wheel", EndsIn(&T::OnMouseWheel), leave},
      {"menu", EndsIn(&T::OnContextPopup),
       [](auto& s, T& c) {
         s->RightClick(c, {3, 3});
       }},
      {"key down", EndsIn(&T::OnKeyDown), key},
      {"key press", EndsIn(&T::OnKeyPress), key},
      {"key up", EndsIn(&T::OnKeyUp), key},
      {"enter", EndsIn(&T::OnEnter), [](auto&, T& c) { c.SetFocus(); }},
      {"exit", EndsIn(&T::OnExit),
       [](auto& s, T& c) {
         c.SetFocus();
         s->KeyPress(vkTab);
       }},
      {"resize", EndsIn(&T::OnResize), [](auto&, T& c) { c.SetWidth(77); }},
      {"resize in a layout",
       [](T& c, TEnd end) {
         c.SetAlign(alTop);
         const auto arrange = EndsIn(&T::OnResize);
         arrange(c, std::move(end));
       },
       [](auto& s, T& c) { s->ResizeWindow(*c.GetParentForm(), 300, 300); }},
      {"paint",
       [](T& c, TEnd end) {
         const auto arrange = EndsIn(&T::OnPaint);
         arrange(c, std::move(end));
         c.Invalidate();
       },
       [](auto& s, T&) { s.Drain(); }},
      {"message", EndsIn(&T::OnWndProc),
       [](auto& s, T& c) {
         c.PostMessage(FirstPrivateMessage);
         s.Drain();
       }},
      {"new window", EndsIn(&T::OnCreateWnd), [](auto&, T& c) { c.RecreateWnd(); }},
  };
}

class ControlEnd : public TScreenTest {};

TEST_F(ControlEnd, AControlOrItsFormMayBeDestroyedInEachOfItsEvents) {
  for (const bool withForm : {false, true})
    for (const TEndCase& c : EndCases()) {
      SCOPED_TRACE(std::string(c.Name) + (withForm ? ", form" : ", control"));
      auto* form = new TProbeForm;
      auto* control = new TWatchedControl(form);
      auto* other = new TEdit;
      other->SetParent(form);
      other->SetTop(100);
      form->Show();
      bool ended = false;
      c.Arrange(*control, [&] {
        if (std::exchange(ended, true)) return;
        withForm ? delete std::exchange(form, nullptr) : delete control;
      });
      c.Act(screen, *control);
      EXPECT_TRUE(ended);
      EXPECT_EQ(Screen().GetFormCount(), withForm ? 0 : 1);
      EXPECT_EQ(form ? form->GetControlCount() : 1, 1);
      screen.Drain();
      delete form;
    }
}

TEST_F(ControlEnd, AFormMayBeDestroyedInItsOwnEvents) {
  const char* names[] = {"OnShow", "OnActivate",   "OnDeactivate",
                         "OnHide", "OnCloseQuery", "OnClose"};
  for (const std::string name : names) {
    SCOPED_TRACE(name);
    auto* form = new TProbeForm;
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
    TProbeForm other;
    if (!ended) other.Show();
    if (!ended) screen->CloseWindow(*form);
    screen.Drain();
    EXPECT_TRUE(ended);
  }
}

}  // namespace
}  // namespace oak::tests
