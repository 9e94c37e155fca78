// Context menus, menu bars and what is chosen from them.
#include "oak/framework/Menus.h"
#include "tests/controls/ControlsFixture.h"

namespace oak::tests {
namespace {

using ::testing::ElementsAre;
using ::testing::IsEmpty;

class ControlMenus : public TListTest {
 protected:
  ControlMenus() {
    const auto note = [this](const char* what) {
      return [this, what](TObject*) { chosen.push_back(what); };
    };
    menu.Items().Add(u"&Open", note("open"));
    TMenuItem* const view = menu.Items().Add(u"&View");
    view->Add(u"Large", note("large"));
    view->Add(u"Small", note("small"));
    menu.Items().Add(u"-");
    menu.Items().Add(u"Disabled", note("disabled"))->SetEnabled(false);
    menu.OnPopup = [this](TObject*) {
      where = menu.GetPopupPoint();
      component = menu.GetPopupComponent();
    };
    list->SetPopupMenu(&menu);
    ShowReport(3);
  }
  ~ControlMenus() override { form.reset(); }

  TPopupMenu menu;
  TLog chosen;
  TPoint where;
  TWinControl* component = nullptr;
};

TEST_F(ControlMenus, RightClickAndKeyboardOpenThem) {
  screen->QueueMenuChoice(u"Open");
  screen->RightClick(*list, list->At(1));
  EXPECT_THAT(chosen, ElementsAre("open"));
  EXPECT_EQ(where, list->ClientToScreen(list->At(1)));
  EXPECT_EQ(component, list);
  EXPECT_EQ(list->Selection(), "[1]");
  chosen.clear();

  screen->QueueMenuChoice(u"View|Small");
  screen->KeyPress(vkApps);
  EXPECT_THAT(chosen, ElementsAre("small"));
  chosen.clear();
  screen->QueueMenuChoice(u"");
  screen->KeyPress(vkF10, {ssShift});
  EXPECT_THAT(chosen, IsEmpty());
  EXPECT_EQ(screen->Focused(), list);
  TTreeUnderTest tree;
  tree.SetBounds(420, 10, 100, 100);
  tree.SetParent(form.get());
  tree.SetPopupMenu(&menu);
  tree.SetSelected(tree.Items().Add(nullptr, u"node"));
  screen->QueueMenuChoice(u"Open");
  tree.SetFocus();
  screen->KeyPress(vkApps);
  EXPECT_THAT(chosen, ElementsAre("open"));
  EXPECT_EQ(component, &tree);
  // A program that answers the key itself gets no menu besides.
  component = nullptr;
  for (TWinControl* const control : std::initializer_list<TWinControl*>{list, &tree}) {
    control->OnKeyDown = [](TObject*, std::uint16_t& key, TShiftState) {
      if (key == vkF10) key = 0;
    };
    control->SetFocus();
    screen->KeyPress(vkF10, {ssShift});
    EXPECT_EQ(component, nullptr);
  }
}

TEST_F(ControlMenus, AskFirst) {
  std::vector<TPoint> points;
  list->OnContextPopup = [&](TObject*, TPoint point, bool& handled) {
    points.push_back(point);
    handled = true;
  };
  screen->RightClick(*list, list->At(2));
  screen->KeyPress(vkApps);
  EXPECT_THAT(points, ElementsAre(list->At(2), TPoint(-1, -1)));
  list->OnContextPopup = nullptr;
  menu.SetAutoPopup(false);
  screen->RightClick(*list, list->At(2));
  EXPECT_THAT(chosen, IsEmpty());
  // A control without a menu leaves it to the one that holds it.
  list->SetPopupMenu(nullptr);
  menu.SetAutoPopup(true);
  form->SetPopupMenu(&menu);
  screen->QueueMenuChoice(u"Open");
  screen->RightClick(*list, list->At(0));
  EXPECT_THAT(chosen, ElementsAre("open"));
  EXPECT_EQ(component, form.get());
}

TEST_F(ControlMenus, MayDestroyWhatTheyStandOver) {
  menu.Items().GetItem(0)->OnClick = [this](TObject*) { delete std::exchange(list, nullptr); };
  screen->QueueMenuChoice(u"Open");
  screen->RightClick(*list, list->At(1));
  EXPECT_EQ(list, nullptr);
  // In the middle of the choice.
  auto* panel = new TPanel;
  panel->SetParent(form.get());
  panel->SetBounds(10, 10, 100, 100);
  panel->SetPopupMenu(&menu);
  screen->Later([&] { delete std::exchange(panel, nullptr); });
  screen->QueueMenuChoice(u"View|Large");
  screen->RightClick(*panel, {20, 20});
  EXPECT_EQ(panel, nullptr);
}

TEST_F(ControlMenus, ShortCutsWork) {
  TMenuItem* const open = menu.Items().GetItem(0);
  open->SetShortCut(ShortCut(u'O', {ssCtrl}));
  screen->KeyPress(u'O', {ssCtrl});
  EXPECT_THAT(chosen, ElementsAre("open"));
  open->SetEnabled(false);
  screen->KeyPress(u'O', {ssCtrl});
  EXPECT_THAT(chosen, ElementsAre("open"));
}

}  // namespace
}  // namespace oak::tests
