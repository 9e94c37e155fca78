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
  for (int i = 0; i < 1000; ++i) {
    TMenuItem* item = root.Add(u"item");
    EXPECT_GE(item->GetCommand(), 256u);
    EXPECT_TRUE(numbers.insert(item->GetCommand()).second);
    EXPECT_EQ(FindMenuItem(item->GetCommand()), item);
  }
  const UINT gone = root.GetItem(0)->GetCommand();
  root.Delete(0);
  EXPECT_EQ(FindMenuItem(gone), nullptr);
  EXPECT_NE(root.Add(u"new")->GetCommand(), gone) << "a late choice finds nobody else";
}

TEST(MenuItem, FindsItsWayInTheTree) {
  TMenu menu;
  TMenuItem* view = menu.Items().Add(u"&View");
  TMenuItem* details = view->Add(u"De&tails && more");
  EXPECT_EQ(menu.Items().Find(u"view"), view);
  EXPECT_EQ(view->Find(u"details & more"), nullptr) << "a single mark is none of the text";
  EXPECT_EQ(view->Find(u"Details && more"), details);
  EXPECT_EQ(menu.Items().FindCommand(details->GetCommand()), details);
  EXPECT_EQ(details->FindCommand(details->GetCommand()), nullptr);
  EXPECT_EQ(details->GetParentMenu(), &menu);
  std::unique_ptr<TMenuItem> taken = menu.Items().Remove(view);
  EXPECT_EQ(details->GetParentMenu(), nullptr);
  EXPECT_EQ(menu.Items().FindCommand(details->GetCommand()), nullptr);
  EXPECT_FALSE(menu.DispatchCommand(details->GetCommand()));
  menu.Items().Insert(-5, std::move(taken));
  EXPECT_EQ(menu.Items().GetItem(0), view);
  delete view;
  EXPECT_EQ(menu.Items().GetCount(), 0) << "whoever destroys an entry, its parent forgets it";
}

TEST(MenuItem, ChecksRadioGroupsAndItself) {
  TMenuItem root;
  auto radio = [&](std::uint8_t group) {
    TMenuItem* item = root.Add(u"radio");
    item->SetRadioItem(true);
    item->SetGroupIndex(group);
    item->SetAutoCheck(true);
    return item;
  };
  TMenuItem* a = radio(1);
  TMenuItem* b = radio(1);
  TMenuItem* c = radio(2);
  TMenuItem* plain = root.Add(u"plain");
  plain->SetAutoCheck(true);
  a->SetChecked(true);
  c->SetChecked(true);
  plain->Click();
  b->Click();
  b->Click();  // stays checked
  EXPECT_FALSE(a->GetChecked());
  EXPECT_TRUE(b->GetChecked());
  EXPECT_TRUE(c->GetChecked());
  EXPECT_TRUE(plain->GetChecked());
  plain->Click();
  EXPECT_FALSE(plain->GetChecked());
  plain->SetEnabled(false);
  plain->OnClick = [](TObject*) { ADD_FAILURE(); };
  plain->Click();
  EXPECT_FALSE(plain->GetChecked());
}

TEST(MenuItem, IsCopiedWithAllBelow) {
  TMenu from, to;
  int clicks = 0;
  TMenuItem* sub = from.Items().Add(u"Sub");
  TMenuItem* leaf = sub->Add(u"Leaf", [&](TObject*) { ++clicks; });
  leaf->SetShortCut(ShortCut(u'X', ssCtrl));
  leaf->SetChecked(true);
  to.Items().Add(u"old");
  to.Items().Assign(&from.Items());
  ASSERT_EQ(to.Items().GetCount(), 1);
  TMenuItem* copy = to.Items().GetItem(0)->GetItem(0);
  EXPECT_TRUE(copy->GetChecked());
  EXPECT_NE(copy->GetCommand(), leaf->GetCommand());
  EXPECT_TRUE(to.DispatchCommand(copy->GetCommand()));
  EXPECT_FALSE(to.DispatchCommand(leaf->GetCommand()));
  EXPECT_TRUE(to.IsShortCut(u'X', ssCtrl));
  EXPECT_EQ(clicks, 2);
}

TEST(ShortCuts, AreShownAsText) {
  const std::pair<TShortCut, const char16_t*> cases[] = {
      {ShortCut(vkDelete, {ssCtrl, ssShift}), u"Ctrl+Shift+Del"},
      {ShortCut(u'A', ssAlt), u"Alt+A"},
      {ShortCut(vkF5, {}), u"F5"},
      {ShortCut(0x7B, {}), u"F12"},
      {ShortCut(0x69, ssCtrl), u"Ctrl+Num 9"},
      {ShortCut(vkAdd, {ssLeft}), u"Num +"},
      {ShortCut(0, ssCtrl), u""},
      {ShortCut(0x07, {}), u""},
  };
  for (const auto& [shortCut, text] : cases) EXPECT_EQ(ShortCutToText(shortCut), text);
}

class PopupMenu : public TScreenTest {};

TEST_F(PopupMenu, RunsTheChoiceAfterItHasClosed) {
  TPlainForm form;
  form.Show();
  TPopupMenu menu;
  TLog log;
  menu.OnPopup = [&](TObject*) {
    log.push_back("popup");
    menu.Items().Clear();
    TMenuItem* sub = menu.Items().Add(u"Sub");
    sub->Add(u"Leaf", [&](TObject*) {
      log.push_back("leaf");
      EXPECT_EQ(screen->GetMenuSession(), nullptr);
    });
  };
  screen->QueueMenuChoice(u"Sub|Leaf");
  menu.Popup(50, 60);
  EXPECT_THAT(log, ElementsAre("popup", "leaf"));
  screen->QueueMenuChoice(u"");
  menu.Popup(50, 60);
  EXPECT_THAT(log, ElementsAre("popup", "leaf", "popup"));
}

TEST_F(PopupMenu, FillsSubmenusWhenTheyOpen) {
  TPlainForm form;
  form.Show();
  TPopupMenu menu;
  TMenuItem* late = menu.Items().Add(u"Late");
  int clicks = 0;
  late->OnPopup = [&](TObject*) {
    late->Clear();
    late->Add(u"Found", [&](TObject*) { ++clicks; });
  };
  screen->QueueMenuChoice(u"Late|Found");
  menu.Popup(0, 0);
  EXPECT_EQ(clicks, 1);
}

TEST_F(PopupMenu, MayBeDestroyedAtAnyMoment) {
  enum { InPopup, WhileOpen, EntryWhileOpen, InClick, EntryInClick };
  for (const int when : {InPopup, WhileOpen, EntryWhileOpen, InClick, EntryInClick}) {
    SCOPED_TRACE(when);
    TPlainForm form;
    form.Show();
    auto* menu = new TPopupMenu(&form);
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
      if (!session.IsFinished() && !session.Choose(u"Item")) session.Cancel();
    };
    menu->Popup(10, 10);
    screen->OnMenu = nullptr;
    EXPECT_EQ(clicked, when == InClick || when == EntryInClick);
    form.SetPopupMenu(menu);
    delete menu;
    EXPECT_EQ(form.GetPopupMenu(), nullptr);
  }
}

TEST_F(PopupMenu, OfAFormRunsByItsNumbers) {
  TPlainForm form;
  auto* bar = new TMainMenu;
  int clicks = 0;
  TMenuItem* item = bar->Items().Add(u"File")->Add(u"Open", [&](TObject*) { ++clicks; });
  form.SetMenu(bar);
  form.Show();
  const int height = form.GetClientSize().Height;
  form.HandleMenuCommand(item->GetCommand());
  form.HandleMenuCommand(1);
  EXPECT_EQ(clicks, 1);
  TMenuItem* help = bar->Items().Add(u"Help");
  help->SetCaption(u"Assistance");
  screen.Drain();
  EXPECT_NE(TextPicture(form).find(u"Assistance"), TString::npos) << "the bar follows its entries";
  delete bar;
  EXPECT_EQ(form.GetMenu(), nullptr);
  EXPECT_GT(form.GetClientSize().Height, height);
}

}  // namespace
}  // namespace oak::tests
