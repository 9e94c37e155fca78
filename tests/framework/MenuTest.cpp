#include "tests/framework/ControlFixture.h"

#include <set>

#include "oak/framework/Menus.h"
#include "oak/framework/headless/HeadlessMenu.h"

namespace oak::tests {
namespace {

using ::testing::ElementsAre;

TEST(MenuItem, HasANumberOfItsOwnAsLongAsItLives) {
  TMenuItem root;
  std::set<UINT> numbers;
  for (int i = 0; i < 1000; ++i) numbers.insert(root.Add(u"item")->GetCommand());
  EXPECT_EQ(numbers.size(), 1000u);
  EXPECT_GE(*numbers.begin(), 256u);
  const UINT gone = root.GetItem(0)->GetCommand();
  root.Delete(0);
  EXPECT_EQ(FindMenuItem(gone), nullptr);
  EXPECT_NE(root.Add(u"new")->GetCommand(), gone) << "a late choice finds nobody else";
}

TEST(MenuItem, FindsItsWayInTheTree) {
  TMenu menu;
  TMenuItem* view = menu.Items().Add(u"&View");
  TMenuItem* details = view->Add(u"De&tails && more");
  EXPECT_EQ(view->Find(u"details & more"), nullptr) << "a single mark is none of the text";
  EXPECT_EQ(view->Find(u"Details && more"), details);
  EXPECT_EQ(menu.Items().FindCommand(details->GetCommand()), details);
  std::unique_ptr<TMenuItem> taken = menu.Items().Remove(view);
  EXPECT_EQ(details->GetParentMenu(), nullptr);
  EXPECT_FALSE(menu.DispatchCommand(details->GetCommand()));
  menu.Items().Insert(-5, std::move(taken));
  EXPECT_EQ(menu.Items().GetItem(0), view);
  delete view;
  EXPECT_EQ(menu.Items().GetCount(), 0) << "whoever destroys an entry, its parent forgets it";
}

TEST(MenuItem, ChecksRadioGroupsAndItself) {
  TMenuItem root;
  const auto add = [&](std::uint8_t group) {
    TMenuItem* item = root.Add(u"item");
    item->SetRadioItem(group != 0);
    item->SetGroupIndex(group);
    item->SetAutoCheck(true);
    return item;
  };
  TMenuItem* const items[] = {add(1), add(1), add(2), add(0)};
  for (const int clicked : {0, 2, 3, 1, 1}) items[clicked]->Click();
  EXPECT_FALSE(items[0]->GetChecked());
  EXPECT_TRUE(items[1]->GetChecked()) << "a second click leaves it";
  EXPECT_TRUE(items[2]->GetChecked()) << "another group";
  EXPECT_TRUE(items[3]->GetChecked());
  items[3]->Click();
  EXPECT_FALSE(items[3]->GetChecked());
}

TEST(MenuItem, IsCopiedWithAllBelow) {
  TMenu from, to;
  int clicks = 0;
  TMenuItem* sub = from.Items().Add(u"Sub");
  TMenuItem* leaf = sub->Add(u"Leaf", [&](TObject*) { ++clicks; });
  leaf->SetShortCut(ShortCut(u'X', ssCtrl));
  to.Items().Add(u"old");
  to.Items().Assign(&from.Items());
  ASSERT_EQ(to.Items().GetCount(), 1);
  TMenuItem* copy = to.Items().GetItem(0)->GetItem(0);
  EXPECT_TRUE(to.DispatchCommand(copy->GetCommand()));
  EXPECT_FALSE(to.DispatchCommand(leaf->GetCommand()));
  EXPECT_TRUE(to.IsShortCut(u'X', ssCtrl));
  EXPECT_EQ(clicks, 2);
}

TEST(ShortCuts, AreShownAsText) {
  const std::pair<TShortCut, const char16_t*> cases[] = {
      {ShortCut(vkDelete, {ssCtrl, ssShift}), u"Ctrl+Shift+Del"},
      {ShortCut(0x7B, {}), u"F12"},
      {ShortCut(0x69, ssCtrl), u"Ctrl+Num 9"},
      {ShortCut(vkAdd, {ssLeft}), u"Num +"},
      {ShortCut(0x07, {}), u""},
  };
  for (const auto& [shortCut, text] : cases) EXPECT_EQ(ShortCutToText(shortCut), text);
}

class PopupMenu : public TScreenTest {};

TEST_F(PopupMenu, RunsTheChoiceAfterItHasClosed) {
  TProbeForm form;
  form.Show();
  TPopupMenu menu;
  TLog log;
  TMenuItem* late = nullptr;
  menu.OnPopup = [&](TObject*) {
    log.push_back("popup");
    menu.Items().Clear();
    late = menu.Items().Add(u"Sub");
    // Filled when it opens.
    late->OnPopup = [&](TObject*) {
      late->Clear();
      late->Add(u"Leaf", [&](TObject*) {
        log.push_back("leaf");
        EXPECT_EQ(screen->GetMenuSession(), nullptr);
      });
    };
  };
  screen->QueueMenuChoice(u"Sub|Leaf");
  menu.Popup(50, 60);
  screen->QueueMenuChoice(u"");
  menu.Popup(50, 60);
  EXPECT_THAT(log, ElementsAre("popup", "leaf", "popup"));
}

TEST_F(PopupMenu, MayBeDestroyedAtAnyMoment) {
  enum { InPopup, WhileOpen, EntryWhileOpen, FormWhileOpen, InClick, EntryInClick };
  for (const int when :
       {InPopup, WhileOpen, EntryWhileOpen, FormWhileOpen, InClick, EntryInClick}) {
    SCOPED_TRACE(when);
    auto form = std::make_unique<TProbeForm>();
    form->Show();
    auto* menu = new TPopupMenu(form.get());
    menu->SetPopupComponent(form.get());
    TMenuItem* item = menu->Items().Add(u"Item");
    bool clicked = false;
    item->OnClick = [&](TObject*) {
      if (when == InClick) delete std::exchange(menu, nullptr);
      if (when == EntryInClick) delete item;
      clicked = true;
    };
    if (when == InPopup) menu->OnPopup = [&](TObject*) { delete std::exchange(menu, nullptr); };
    screen->OnMenu = [&](THeadlessMenuSession& session) {
      if (when == WhileOpen) delete std::exchange(menu, nullptr);
      if (when == EntryWhileOpen) delete item;
      if (when == FormWhileOpen) menu = nullptr, form.reset();
      if (!session.IsFinished() && !session.Choose(u"Item")) session.Cancel();
    };
    menu->Popup(10, 10);
    screen->OnMenu = nullptr;
    EXPECT_EQ(clicked, when == InClick || when == EntryInClick);
    if (!form) continue;
    form->SetPopupMenu(menu);
    delete menu;
    EXPECT_EQ(form->GetPopupMenu(), nullptr);
  }
}

TEST_F(PopupMenu, OfAFormRunsByItsNumbers) {
  TProbeForm form;
  auto* bar = new TMainMenu;
  int clicks = 0;
  TMenuItem* item = bar->Items().Add(u"File")->Add(u"Open", [&](TObject*) { ++clicks; });
  form.SetMenu(bar);
  form.Show();
  const int height = form.GetClientSize().Height;
  form.HandleMenuCommand(item->GetCommand());
  form.HandleMenuCommand(1);
  EXPECT_EQ(clicks, 1);
  bar->Items().Add(u"Help")->SetCaption(u"Assistance");
  screen.Drain();
  EXPECT_NE(TextPicture(form).find(u"Assistance"), TString::npos) << "the bar follows its entries";
  delete bar;
  EXPECT_EQ(form.GetMenu(), nullptr);
  EXPECT_GT(form.GetClientSize().Height, height);
}

}  // namespace
}  // namespace oak::tests
