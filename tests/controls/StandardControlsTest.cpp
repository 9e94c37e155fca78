// Edits, combo boxes, buttons, labels, panels, splitters and forms.
#include "oak/framework/Application.h"
#include "tests/controls/ControlsFixture.h"

namespace oak::tests {
namespace {

using ::testing::ElementsAre;
using ::testing::IsEmpty;

class StandardControls : public TControlsTest {
 protected:
  template <class T>
  T* Place(const TRect& bounds) {
    auto* control = new T;
    control->SetBounds(bounds.Left, bounds.Top, bounds.Width(), bounds.Height());
    control->SetParent(form.get());
    return control;
  }
};

TEST_F(StandardControls, EditTakesTypedText) {
  auto* edit = Place<TEdit>({10, 10, 210, 34});
  Show();
  edit->SetFocus();
  int changes = 0;
  edit->OnChange = [&](TObject*) { ++changes; };
  screen->TypeText(u"Hello");
  EXPECT_EQ(edit->GetText(), u"Hello");
  EXPECT_EQ(screen->TextOf(*edit), u"Hello");
  EXPECT_EQ(changes, 5);
  EXPECT_TRUE(edit->GetModified());
  screen->KeyPress(vkBack);
  screen->KeyPress(vkHome);
  screen->KeyPress(vkRight, {ssShift});
  EXPECT_EQ(edit->GetSelText(), u"H");
  screen->TypeText(u"J");
  EXPECT_EQ(edit->GetText(), u"Jell");
  edit->SelectAll();
  screen->KeyPress(vkDelete);
  EXPECT_EQ(edit->GetText(), u"");
  edit->SetText(u"set");
  EXPECT_EQ(screen->TextOf(*edit), u"set");
  EXPECT_FALSE(edit->GetModified());
  edit->SelectText(1, 1);
  edit->RecreateWnd();
  screen->Drain();
  EXPECT_EQ(screen->TextOf(*edit), u"set");
  EXPECT_EQ(edit->GetSelStart(), 1);
  EXPECT_EQ(edit->GetSelLength(), 1);
  EXPECT_EQ(screen->Focused(), edit);
  edit->SetReadOnly(true);
  screen->TypeText(u"x");
  EXPECT_EQ(edit->GetText(), u"set");
  edit->SetReadOnly(false);
  edit->SetMaxLength(4);
  edit->SelectText(3, 0);
  screen->TypeText(u"abc");
  EXPECT_EQ(edit->GetText(), u"seta");
  edit->OnKeyPress = [](TObject*, char16_t& key) { key = key == u'q' ? u'p' : u'\0'; };
  edit->SetMaxLength(0);
  screen->TypeText(u"qrs");
  EXPECT_EQ(edit->GetText(), u"setap");
}

TEST_F(StandardControls, MemoAndRichEditTakeLines) {
  auto* memo = Place<TMemo>({10, 10, 210, 110});
  auto* rich = Place<TRichEdit>({10, 120, 210, 220});
  Show();
  for (TCustomEdit* edit : std::initializer_list<TCustomEdit*>{memo, rich}) {
    SCOPED_TRACE(edit == memo ? "memo" : "rich");
    edit->SetFocus();
    screen->TypeText(u"one");
    screen->KeyPress(vkReturn);
    screen->TypeText(u"two");
    EXPECT_EQ(ToUtf8(edit->GetText()), "one\r\ntwo");
    edit->SelectText(5, 3);
    EXPECT_EQ(edit->GetSelText(), u"two");
    EXPECT_EQ(edit->GetSelStart(), 5);
    screen->TypeText(u"3");
    EXPECT_EQ(ToUtf8(edit->GetText()), "one\r\n3");
  }
  const std::string rtf = "{\\rtf1\\ansi{\\fonttbl{\\f0 Arial;}}\\f0 plain {\\b bold}\\par last}";
  rich->LoadFromBytes({rtf.begin(), rtf.end()});
  EXPECT_TRUE(StartsWith(rich->GetText(), u"plain bold"));
  EXPECT_TRUE(StartsWith(screen->TextOf(*rich), u"plain bold"));
}

TEST_F(StandardControls, ComboBoxByKeysAndMouse) {
  auto* combo = Place<TCustomComboBoxEx>({10, 10, 210, 34});
  const auto images = MakeImages(16, 3);
  combo->SetImages(images.get());
  for (const TStringView name : {u"red", u"green", u"blue"})
    combo->AddItem({TString(name), combo->GetItemCount(), -1, 0, nullptr});
  TLog events;
  combo->OnSelect = [&](TObject*) { events.push_back("select"); };
  combo->OnChange = [&](TObject*) { events.push_back("change"); };
  combo->OnDropDown = [&](TObject*) { events.push_back("drop"); };
  combo->OnCloseUp = [&](TObject*) { events.push_back("close"); };
  Show();
  combo->SetFocus();
  EXPECT_EQ(screen->Focused(), combo);
  screen->KeyPress(vkDown);
  EXPECT_EQ(combo->GetItemIndex(), 0);
  EXPECT_EQ(combo->GetText(), u"red");
  screen->KeyPress(vkDown);
  EXPECT_EQ(combo->GetText(), u"green");
  EXPECT_THAT(events, ElementsAre("select", "select"));
  events.clear();
  combo->SelectAll();
  screen->TypeText(u"gr");
  EXPECT_THAT(events, ElementsAre("change", "change"));
  events.clear();
  combo->SetDroppedDown(true);
  EXPECT_TRUE(combo->GetDroppedDown());
  screen->KeyPress(vkDown);
  screen->KeyPress(vkReturn);
  EXPECT_FALSE(combo->GetDroppedDown());
  EXPECT_EQ(events.front(), "drop");
  EXPECT_THAT(events, ::testing::Contains("close"));
  combo->SetItemIndex(2);
  EXPECT_EQ(screen->TextOf(*combo), u"blue");
  combo->RecreateWnd();
  screen->Drain();
  EXPECT_EQ(screen->TextOf(*combo), u"blue");
  EXPECT_EQ(combo->GetItemIndex(), 2);
}

TEST_F(StandardControls, ButtonsClick) {
  auto* button = Place<TButton>({10, 10, 110, 40});
  auto* standard = Place<TButton>({120, 10, 220, 40});
  auto* cancel = Place<TButton>({230, 10, 330, 40});
  auto* edit = Place<TEdit>({10, 60, 110, 84});
  standard->SetDefault(true);
  cancel->SetCancel(true);
  button->SetText(u"&Press");
  TLog clicks;
  button->OnClick = [&](TObject*) { clicks.push_back("button"); };
  standard->OnClick = [&](TObject*) { clicks.push_back("default"); };
  cancel->OnClick = [&](TObject*) { clicks.push_back("cancel"); };
  Show();
  screen->Click(*button, {20, 10});
  EXPECT_EQ(screen->Focused(), button);
  screen->KeyPress(vkSpace);
  screen->KeyPress(vkReturn);
  EXPECT_THAT(clicks, ElementsAre("button", "button", "button"));
  clicks.clear();
  edit->SetFocus();
  screen->KeyPress(vkReturn);
  screen->KeyPress(vkEscape);
  screen->KeyPress(u'P', {ssAlt});
  EXPECT_THAT(clicks, ElementsAre("default", "cancel", "button"));
  clicks.clear();
  // Let go elsewhere; disabled.
  screen->Drag(*button, {20, 10}, *edit, {5, 5});
  EXPECT_THAT(clicks, IsEmpty());
  EXPECT_FALSE(button->GetMouseCapture());
  button->SetEnabled(false);
  screen->Click(*button, {20, 10});
  EXPECT_THAT(clicks, IsEmpty());
  EXPECT_EQ(screen->TextOf(*button), u"&Press");
}

TEST_F(StandardControls, TabGoesRound) {
  auto* first = Place<TEdit>({10, 10, 110, 34});
  auto* panel = Place<TPanel>({10, 40, 210, 100});
  auto* inner = new TButton;
  inner->SetParent(panel);
  auto* label = Place<TLabel>({10, 110, 110, 130});
  auto* list = Place<TListUnderTest>({10, 140, 210, 240});
  auto* off = Place<TEdit>({220, 10, 320, 34});
  off->SetTabStop(false);
  auto* memo = Place<TMemo>({220, 40, 320, 100});
  label->SetText(u"&List");
  Show();
  first->SetFocus();
  const auto names = [&] {
    const TWinControl* focused = screen->Focused();
    return focused == first   ? "first"
           : focused == inner ? "inner"
           : focused == list  ? "list"
           : focused == memo  ? "memo"
           : focused == off   ? "off"
                              : "?";
  };
  TLog way;
  for (int i = 0; i < 3; ++i) {
    screen->KeyPress(vkTab);
    way.push_back(names());
  }
  EXPECT_THAT(way, ElementsAre("inner", "list", "memo"));
  way.clear();
  for (int i = 0; i < 2; ++i) {
    screen->KeyPress(vkTab, {ssShift});
    way.push_back(names());
  }
  EXPECT_THAT(way, ElementsAre("list", "inner"));
  screen->KeyPress(u'L', {ssAlt});
  EXPECT_STREQ(names(), "list");
  TLog events;
  first->OnExit = [&](TObject*) { events.push_back("exit"); };
  list->OnEnter = [&](TObject*) { events.push_back("enter"); };
  first->SetFocus();
  screen->Click(*list, {30, 60});
  EXPECT_THAT(events, ElementsAre("exit", "enter"));
  EXPECT_EQ(form->GetActiveControl(), list);
  // What can't have the keyboard any more gives it up.
  list->SetEnabled(false);
  EXPECT_NE(screen->Focused(), list);
  first->SetFocus();
  first->SetVisible(false);
  EXPECT_NE(screen->Focused(), first);
  EXPECT_FALSE(first->CanFocus());
}

TEST_F(StandardControls, AlignmentReachesTheWindows) {
  auto* top = Place<TPanel>({0, 0, 100, 40});
  auto* left = Place<TTreeUnderTest>({0, 0, 150, 100});
  auto* splitter = Place<TSplitter>({160, 0, 165, 100});
  auto* rest = Place<TListUnderTest>({0, 0, 100, 100});
  auto* anchored = new TButton;
  anchored->SetBounds(300, 5, 80, 25);
  anchored->SetAnchors({akTop, akRight});
  anchored->SetParent(top);
  top->SetAlign(alTop);
  left->SetAlign(alLeft);
  splitter->SetAlign(alLeft);
  rest->SetAlign(alClient);
  Show();
  const auto check = [&] {
    const TSize client = form->GetClientSize();
    EXPECT_EQ(top->GetWidth(), client.Width);
    EXPECT_EQ(rest->GetBoundsRect().Right, client.Width);
    EXPECT_EQ(rest->GetBoundsRect().Bottom, client.Height);
    EXPECT_EQ(splitter->GetLeft(), left->GetWidth());
    for (const TWinControl* control :
         std::initializer_list<TWinControl*>{top, left, splitter, rest, anchored})
      EXPECT_EQ(screen->BoundsOf(*control), control->GetBoundsRect());
  };
  check();
  const int distance = top->GetWidth() - anchored->GetLeft();
  screen->ResizeWindow(*form, 620, 420);
  check();
  EXPECT_EQ(top->GetWidth() - anchored->GetLeft(), distance);
  EXPECT_EQ(form->GetBoundsRect(), TRect(60, 40, 680, 460));
  const int width = left->GetWidth();
  screen->Drag(*splitter, {2, 50}, *splitter, {42, 50});
  EXPECT_EQ(left->GetWidth(), width + 40);
  check();
  screen->SetWindowState(*form, wsMinimized);
  EXPECT_EQ(form->GetWindowState(), wsMinimized);
  EXPECT_FALSE(screen->IsShown(*rest));
  screen->SetWindowState(*form, wsNormal);
  EXPECT_EQ(form->GetWindowState(), wsNormal);
  EXPECT_TRUE(screen->IsShown(*rest));
  check();
  screen->SetWindowState(*form, wsMaximized);
  EXPECT_EQ(form->GetWindowState(), wsMaximized);
  check();
  screen->SetWindowState(*form, wsNormal);
  EXPECT_EQ(form->GetBoundsRect(), TRect(60, 40, 680, 460));
  check();
}

TEST_F(StandardControls, FormsShowAndClose) {
  TLog events;
  form->OnShow = [&](TObject*) { events.push_back("show"); };
  form->OnHide = [&](TObject*) { events.push_back("hide"); };
  form->OnActivate = [&](TObject*) { events.push_back("activate"); };
  form->OnCloseQuery = [&](TObject*, bool& can) {
    events.push_back("query");
    can = events.size() > 3;
  };
  form->OnClose = [&](TObject*, TCloseAction&) { events.push_back("close"); };
  form->SetText(u"Title");
  Show();
  EXPECT_EQ(screen->TextOf(*form), u"Title");
  EXPECT_TRUE(form->IsActive());
  EXPECT_EQ(Screen().GetActiveForm(), form.get());
  screen->CloseWindow(*form);
  EXPECT_TRUE(screen->IsShown(*form));
  screen->CloseWindow(*form);
  EXPECT_FALSE(form->GetVisible());
  EXPECT_FALSE(screen->IsShown(*form));
  EXPECT_THAT(events, ElementsAre("show", "activate", "query", "query", "close", "hide"));
  form->Show();
  screen->Drain();
  EXPECT_TRUE(screen->IsShown(*form));
}

TEST_F(StandardControls, PrivateMessagesComeInOrder) {
  class TReceiver : public TPanel {
   public:
    ~TReceiver() override { BeginDestroy(); }
    TLog Log;

   protected:
    void WndProc(TMessage& message) override {
      if (message.Msg < FirstPrivateMessage) return TPanel::WndProc(message);
      Log.push_back(std::to_string(message.Msg - FirstPrivateMessage) + ":" +
                    std::to_string(message.WParam) + ":" + std::to_string(message.LParam));
      message.Result = 7;
      if (message.WParam == 1) PostMessage(FirstPrivateMessage + 1, 9);
    }
  };
  auto* panel = Place<TReceiver>({10, 10, 110, 110});
  EXPECT_FALSE(panel->PostMessage(FirstPrivateMessage));
  Show();
  EXPECT_TRUE(panel->PostMessage(FirstPrivateMessage, 1, -5));
  EXPECT_TRUE(panel->PostMessage(FirstPrivateMessage, 2));
  EXPECT_THAT(panel->Log, IsEmpty());
  screen->Drain();
  EXPECT_THAT(panel->Log, ElementsAre("0:1:-5", "0:2:0", "1:9:0"));
  EXPECT_EQ(panel->Perform(FirstPrivateMessage, 3), 7);
  EXPECT_EQ(panel->GetPeer()->Send(FirstPrivateMessage, 4, 0), 7);
}

TEST_F(StandardControls, HintsAppear) {
  auto* button = Place<TButton>({10, 10, 110, 40});
  button->SetHint(u"short|a long text");
  button->SetShowHint(true);
  Show();
  const int windows = screen->CountWindows();
  screen->MouseMove(*button, {5, 5});
  screen->MouseMove(*button, {15, 10});
  EXPECT_EQ(Application().GetHint(), u"a long text");
  screen->Advance(700);
  EXPECT_GT(screen->CountWindows(), windows);
  screen->MouseMove(*form, {300, 200});
  EXPECT_EQ(Application().GetHint(), u"");
}

}  // namespace
}  // namespace oak::tests
