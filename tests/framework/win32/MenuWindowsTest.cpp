// Menus of the system: what they show, and what is chosen from them.
#include "oak/framework/ImageList.h"
#include "oak/framework/Menus.h"
#include "tests/framework/win32/MenuKeys.h"
#include "tests/framework/win32/Win32Fixture.h"

namespace oak::tests {
namespace {

using ::testing::ElementsAre;

class MenuWindows : public TWin32Test {};

struct TEntry {
  TString Text;
  UINT State = 0;
  UINT Type = 0;
  UINT Command = 0;
  HMENU SubMenu = nullptr;
  HBITMAP Image = nullptr;
};

TEntry EntryOf(HMENU menu, int index) {
  TString text(128, u'\0');
  MENUITEMINFOW info{};
  info.cbSize = sizeof info;
  info.fMask = MIIM_STRING | MIIM_STATE | MIIM_FTYPE | MIIM_ID | MIIM_SUBMENU | MIIM_BITMAP;
  info.dwTypeData = WBuffer(text);
  info.cch = 128;
  ::GetMenuItemInfoW(menu, static_cast<UINT>(index), TRUE, &info);
  text.resize(info.fType & (MFT_SEPARATOR | MFT_OWNERDRAW) ? 0 : info.cch);
  return {text, info.fState, info.fType, info.wID, info.hSubMenu, info.hbmpItem};
}

TEST_F(MenuWindows, EntriesLookAsTheModelSays) {
  TImageList images(nullptr, 16, 16);
  TBitmap picture(16, 16);
  picture.Fill(clGreen);
  images.Add(picture);
  TPopupMenu menu;
  menu.SetImages(&images);
  TMenuItem* open = menu.Items().Add(u"&Open");
  open->SetDefault(true);
  open->SetShortCut(ShortCut('O', {ssCtrl}));
  open->SetImageIndex(0);
  menu.Items().Add(u"hidden")->SetVisible(false);
  TMenuItem* checked = menu.Items().Add(u"checked");
  checked->SetChecked(true);
  checked->SetRadioItem(true);
  menu.Items().Add(u"more")->Add(u"inner");
  TMenuItem* drawn = menu.Items().Add(u"drawn");
  drawn->OnMeasureItem = [](TObject*, TCanvas&, int&, int&) {};
  drawn->OnDrawItem = [](TObject*, TCanvas&, const TRect&, bool) {};

  const HMENU handle = menu.GetHandle();
  ASSERT_EQ(::GetMenuItemCount(handle), 4);
  const TEntry first = EntryOf(handle, 0);
  EXPECT_EQ(first.Text, u"&Open\tCtrl+O");
  EXPECT_TRUE(first.State & MFS_DEFAULT);
  EXPECT_EQ(first.Command, open->GetCommand());
  EXPECT_NE(first.Image, nullptr);
  EXPECT_TRUE(EntryOf(handle, 1).State & MFS_CHECKED);
  EXPECT_TRUE(EntryOf(handle, 1).Type & MFT_RADIOCHECK);
  EXPECT_EQ(EntryOf(EntryOf(handle, 2).SubMenu, 0).Text, u"inner");
  EXPECT_TRUE(EntryOf(handle, 3).Type & MFT_OWNERDRAW);
}

/// Notes the menu messages that reach it, as the shell's menus need them.
class TMenuOwner : public TPanel {
 public:
  ~TMenuOwner() override { BeginDestroy(); }
  std::vector<UINT> Messages;

 protected:
  void WndProc(TMessage& message) override {
    if (message.Msg == WM_MEASUREITEM) {
      auto& measure = *reinterpret_cast<MEASUREITEMSTRUCT*>(message.LParam);
      measure.itemWidth = 60;
      measure.itemHeight = 20;
      message.Result = TRUE;
    }
    if (message.Msg != WM_MENUSELECT) Messages.push_back(message.Msg);
  }
};

TEST_F(MenuWindows, ChoiceRunsTheEntryAndTheShellIsAsked) {
  TTestForm form;
  TMenuOwner owner;
  owner.SetParent(&form);
  form.Show();
  Pump();
  std::vector<std::string> log;
  TPopupMenu menu;
  menu.Items().Add(u"first");
  TMenuItem* more = menu.Items().Add(u"more");
  more->OnPopup = [&](TObject* sender) {
    auto* item = static_cast<TMenuItem*>(sender);
    item->Clear();
    item->Add(u"late", [&](TObject*) { log.push_back("late"); });
  };
  menu.SetPopupComponent(&owner);
  {
    const TKeySender keys({VK_UP, VK_RIGHT, VK_RETURN});
    menu.Popup(100, 100);
  }
  EXPECT_THAT(log, ElementsAre("late"));
  {
    // An entry that the shell has added: its owner measures and draws it.
    owner.Messages.clear();
    const HMENU handle = menu.GetHandle();
    ::AppendMenuW(handle, MF_OWNERDRAW, 0x7000, nullptr);
    const TKeySender keys({VK_UP, VK_RETURN});
    EXPECT_EQ(WidgetSet().TrackMenu(handle, {50, 50}, &owner, nullptr), 0x7000u);
    EXPECT_THAT(owner.Messages, ::testing::IsSupersetOf({static_cast<UINT>(WM_INITMENUPOPUP),
                                                         static_cast<UINT>(WM_MEASUREITEM),
                                                         static_cast<UINT>(WM_DRAWITEM)}));
  }
  {
    const TKeySender keys({VK_ESCAPE});
    EXPECT_EQ(WidgetSet().TrackMenu(menu.GetHandle(), {50, 50}, nullptr, nullptr), 0u);
  }
}

TEST_F(MenuWindows, MainMenuCommandsAndSubmenus) {
  TTestForm form;
  TMainMenu menu;
  std::vector<std::string> log;
  TMenuItem* file = menu.Items().Add(u"&File");
  TMenuItem* quit = file->Add(u"&Quit", [&](TObject*) { log.push_back("quit"); });
  file->OnPopup = [&](TObject*) { quit->SetEnabled(log.empty()); };
  form.SetMenu(&menu);
  form.Show();
  const HMENU bar = ::GetMenu(form.GetHandle());
  ASSERT_EQ(::GetMenuItemCount(bar), 1);
  const HMENU sub = ::GetSubMenu(bar, 0);
  ::SendMessageW(form.GetHandle(), WM_COMMAND, quit->GetCommand(), 0);
  EXPECT_THAT(log, ElementsAre("quit"));
  EXPECT_FALSE(EntryOf(sub, 0).State & MFS_DISABLED);
  ::SendMessageW(form.GetHandle(), WM_INITMENUPOPUP, reinterpret_cast<WPARAM>(sub), 0);
  EXPECT_TRUE(EntryOf(sub, 0).State & MFS_DISABLED);
  // The bar takes room from the controls.
  RECT client{};
  ::GetClientRect(form.GetHandle(), &client);
  EXPECT_EQ(form.GetClientRect(), TRect(client));
  form.RecreateWnd();
  EXPECT_EQ(::GetMenuItemCount(::GetMenu(form.GetHandle())), 1);
}

}  // namespace
}  // namespace oak::tests
