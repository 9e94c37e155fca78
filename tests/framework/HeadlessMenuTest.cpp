#include "oak/framework/headless/HeadlessMenu.h"

#include "oak/framework/Dialogs.h"
#include "oak/framework/Menus.h"
#include "oak/framework/headless/HeadlessForm.h"
#include "tests/framework/HeadlessProbe.h"

namespace oak::tests {
namespace {

using testkit::THeadlessScreen;

/// A form with a popup menu of two levels that writes down what was chosen.
struct TMenuFixture {
  THeadlessScreen Screen{FailWith};
  TProbeForm Form;
  TPopupMenu Menu;
  TProbe Probe{Form, {0, 0, 100, 100}, "p"};
  TLog Chosen;

  TMenuFixture() {
    Menu.Items().Add(u"&Open", Choose("open"));
    Menu.Items().Add(u"-");
    TMenuItem& view = *Menu.Items().Add(u"&View");
    view.Add(u"&Icons", Choose("icons"));
    view.Add(u"&Details", Choose("details"))->SetChecked(true);
    Menu.Items().Add(u"Disabled", Choose("disabled"))->SetEnabled(false);
    Menu.Items().Add(u"Hidden", Choose("hidden"))->SetVisible(false);
    Menu.Items().Add(u"Save && E&xit", Choose("exit"))->SetShortCut(ShortCut(u'S', {ssCtrl}));
    Form.SetPopupMenu(&Menu);
    Form.Show();
  }
  std::function<void(TObject*)> Choose(std::string name) {
    return [this, name](TObject*) { Chosen.push_back(name); };
  }
  void Popup() { Menu.Popup(200, 200); }
};

TEST(HeadlessMenu, QueuedChoicesAreTakenInOrderAndFaultsAreTold) {
  TMenuFixture f;
  f.Screen->QueueMenuChoice(u"Open");
  f.Screen->QueueMenuChoice(u"");
  f.Screen->QueueMenuChoice(u"View|Trees");
  for (int i = 0; i < 3; ++i) f.Popup();
  EXPECT_EQ(f.Chosen, TLog{"open"});
  EXPECT_EQ(f.Screen->GetComplaints(),
            std::vector<TString>{u"The menu has no entry \"View|Trees\" that can be chosen."});
  f.Screen->ClearComplaints();
  f.Popup();  // nobody there
  EXPECT_EQ(f.Screen->GetComplaints(),
            std::vector<TString>{u"The menu waits for input that nobody gives."});
  f.Screen->ClearComplaints();
  EXPECT_EQ(f.Chosen.size(), 1u);
}

TEST(HeadlessMenu, KeysAndMouseChooseFromIt) {
  // The menu stands at 200, 200; its rows are 20 pixels high.
  const struct {
    const char* Name;
    std::vector<TPoint> Clicks;
    std::vector<std::uint16_t> Keys;
    TLog Chosen;
  } cases[] = {
      {"return on the first", {}, {vkDown, vkReturn}, {"open"}},
      {"lines are passed over", {}, {vkDown, vkDown, vkRight, vkDown, vkReturn}, {"details"}},
      {"from below", {}, {vkUp, vkReturn}, {"exit"}},
      {"mnemonics", {}, {u'V', u'D'}, {"details"}},
      {"escape", {}, {u'V', vkEscape, vkEscape}, {}},
      {"a disabled one stays open", {{220, 271}}, {vkEscape}, {}},
      {"click", {{220, 211}}, {}, {"open"}},
      {"click elsewhere", {{900, 900}}, {}, {}},
  };
  for (const auto& test : cases) {
    SCOPED_TRACE(test.Name);
    TMenuFixture f;
    f.Screen->Later([&] {
      for (const TPoint point : test.Clicks) f.Screen->Click(point);
      for (const std::uint16_t key : test.Keys) f.Screen->KeyPress(key);
    });
    f.Popup();
    EXPECT_EQ(f.Chosen, test.Chosen);
    EXPECT_EQ(f.Screen->GetTopWindows().size(), 1u);
  }
  TMenuFixture f;
  f.Screen->Later([&] {
    f.Screen->MouseMove({220, 251});
    const THeadlessWindow& sub = *f.Screen->GetTopWindows().back();
    f.Screen->Click(sub.GetScreenRect().TopLeft() + TPoint(30, 30));
  });
  f.Popup();
  EXPECT_EQ(f.Chosen, TLog{"details"});
}

TEST(HeadlessMenu, EntriesOfOthersAreMergedAndFilledLate) {
  TMenuFixture f;
  TMenuTable& table = TMenuTable::Instance();
  const HMENU menu = table.Create(), late = table.Create();
  table.Insert(menu, -1, {.Command = 7001, .Text = u"&Shell"});
  TMenuEntry sub{.Text = u"Send to"};
  sub.SubMenu = late;
  table.Insert(menu, 0, sub);
  // Shell menus fill a submenu when their owner is told that it opens.
  f.Probe.OnProc = [&](TMessage& message) {
    constexpr UINT initMenuPopup = 0x117;
    if (message.Msg == initMenuPopup && reinterpret_cast<HMENU>(message.WParam) == late)
      table.Insert(late, -1, {.Command = 7002, .Text = u"Desktop"});
  };
  f.Screen->QueueMenuChoice(u"Send to|Desktop");
  EXPECT_EQ(f.Screen->TrackMenu(menu, {10, 10}, &f.Probe, nullptr), 7002u);
  f.Screen->OnMenu = [&](THeadlessMenuSession& open) { EXPECT_TRUE(open.ChooseCommand(7001)); };
  EXPECT_EQ(f.Screen->TrackMenu(menu, {10, 10}, &f.Probe, nullptr), 7001u);
  EXPECT_EQ(table.GetCount(menu), 2);
  EXPECT_TRUE(table.Destroy(menu));
  EXPECT_FALSE(table.IsMenu(late));
  EXPECT_FALSE(table.Destroy(menu));
  EXPECT_EQ(f.Screen->TrackMenu(menu, {10, 10}, &f.Probe, nullptr), 0u);
}

TEST(HeadlessMenu, TheMenuBarOfAForm) {
  TMenuFixture f;
  TMainMenu bar;
  TMenuItem& file = *bar.Items().Add(u"&File");
  file.Add(u"&Close", f.Choose("close"));
  bar.Items().Add(u"&Help", f.Choose("help"));
  const TRect before = f.Form.GetClientRect();
  f.Form.SetMenu(&bar);
  EXPECT_EQ(f.Form.GetClientRect().Height(), before.Height() - 20);
  auto& window = dynamic_cast<THeadlessForm&>(*f.Screen->WindowOf(f.Form));
  const auto at = [&](int entry) {
    return f.Form.GetBoundsRect().TopLeft() + window.GetMenuBarRect(entry).Center();
  };
  f.Screen->QueueMenuChoice(u"Close");
  f.Screen->Click(at(0));
  f.Screen->Click(at(1));
  EXPECT_EQ(f.Chosen, (TLog{"close", "help"}));
  f.Form.SetMenu(nullptr);
  EXPECT_EQ(f.Form.GetClientRect(), before);
}

TEST(HeadlessDialog, AnswersComeFromTheScriptAndTextsAreKept) {
  THeadlessScreen screen(FailWith);
  screen->QueueDialogAnswer(mrYes);
  EXPECT_EQ(MessageDlg(u"Delete?", mtConfirmation, {mbYes, mbNo}, mbNo), mrYes);
  screen->OnDialog = [](const TMessageDialog& dialog) {
    return dialog.Text == u"Again?" ? static_cast<int>(mrRetry) : 0;
  };
  EXPECT_EQ(MessageDlg(u"Again?", mtError, {mbRetry, mbCancel}, mbCancel), mrRetry);
  EXPECT_EQ(screen->GetDialogs()[0].Dialog.Text, u"Delete?");
  EXPECT_TRUE(screen->GetComplaints().empty());
  EXPECT_EQ(MessageDlg(u"Nobody?", mtError, {mbOK, mbCancel}, mbCancel), mrCancel);
  EXPECT_EQ(screen->GetComplaints().size(), 1u);
  screen->ClearComplaints();
  screen->SetUnattended(false);  // a program without a user is answered, too
  EXPECT_EQ(MessageDlg(u"Nobody?", mtError, {mbOK, mbCancel}, mbOK), mrOk);
  EXPECT_TRUE(screen->GetComplaints().empty());
}

}  // namespace
}  // namespace oak::tests
