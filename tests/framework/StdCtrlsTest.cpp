#include "tests/framework/ControlFixture.h"

#include "oak/base/Exceptions.h"
#include "oak/framework/ImageList.h"
#include "oak/framework/StdCtrls.h"

namespace oak::tests {
namespace {

using ::testing::ElementsAre;

class StdCtrls : public TScreenTest {
 protected:
  template <class T>
  T* Add() {
    auto* control = new T;
    control->SetParent(&form);
    return control;
  }
  TPlainForm form;
  TLog log;
};

// --- edits ------------------------------------------------------------------------------
TEST_F(StdCtrls, EditsKeepTextAndSelectionWithAndWithoutWindow) {
  auto* edit = Add<TEdit>();
  edit->SetText(u"one two");
  edit->SelectText(4, 99);
  EXPECT_EQ(edit->GetSelText(), u"two");
  form.Show();
  EXPECT_EQ(edit->GetSelText(), u"two");
  edit->SetFocus();
  screen->TypeText(u"2");
  EXPECT_EQ(edit->GetText(), u"one 2");
  edit->SelectAll();
  form.RecreateWnd();
  EXPECT_EQ(edit->GetSelText(), u"one 2");
  edit->SelectText(-3, 2);
  EXPECT_EQ(edit->GetSelText(), u"on");
  edit->SetText(u"x");
  EXPECT_EQ(edit->GetSelStart() + edit->GetSelLength(), 0) << "a new text begins without marks";
}

TEST_F(StdCtrls, EditsTellOfChangesOnce) {
  auto* edit = Add<TEdit>();
  int changes = 0;
  edit->OnChange = [&](TObject*) { ++changes; };
  form.Show();
  edit->SetText(u"a");
  edit->SetText(u"a");
  EXPECT_EQ(changes, 1);
  EXPECT_FALSE(edit->GetModified());
  edit->SetFocus();
  screen->TypeText(u"b");
  EXPECT_EQ(changes, 2);
  EXPECT_TRUE(edit->GetModified());
  form.RecreateWnd();
  EXPECT_EQ(changes, 2);
  EXPECT_TRUE(edit->GetModified());
  edit->SetMaxLength(4);
  edit->SelectText(2, 0);
  screen->TypeText(u"cdef");
  EXPECT_EQ(edit->GetText().size(), 4u);
  edit->SetReadOnly(true);
  changes = 0;
  screen->TypeText(u"z");
  EXPECT_EQ(changes, 0);
  edit->SetReadOnly(false);
  edit->SetMaxLength(0);
  edit->OnChange = [&](TObject*) { delete edit; };
  screen->TypeText(u"!");
  EXPECT_EQ(form.GetControlCount(), 0);
}

TEST_F(StdCtrls, RichEditsLoadByWhatTheBytesSay) {
  auto* edit = Add<TRichEdit>();
  auto load = [&](std::string_view bytes) {
    edit->LoadFromBytes({bytes.begin(), bytes.end()});
    return edit->GetText();
  };
  for (const bool shown : {false, true}) {
    if (shown) form.Show();
    EXPECT_EQ(load("\xEF\xBB\xBFgr\xC3\xBC\xC3\x9F"), u"gr\u00FC\u00DF");
    EXPECT_EQ(load(std::string_view("\xFF\xFE"
                                    "A\0B\0",
                                    6)),
              u"AB");
    EXPECT_EQ(load("plain"), u"plain");
    EXPECT_EQ(load(""), u"");
    EXPECT_EQ(load(R"({\rtf1\ansi{\fonttbl{\f0 Arial;}}\b bold\b0\par next\u8364?})"),
              u"bold\r\nnext\u20AC");
    EXPECT_FALSE(edit->GetModified());
    form.Show();
    form.RecreateWnd();
    EXPECT_EQ(edit->GetText(), u"bold\r\nnext\u20AC");
  }
  EXPECT_THROW(edit->LoadFromFile(u"/no/such/file"), EOSError);
  EXPECT_EQ(edit->GetText(), u"bold\r\nnext\u20AC") << "a failure changes nothing";
}

// --- combo ------------------------------------------------------------------------------
TEST_F(StdCtrls, CombosKeepTheirEntryWhenOthersComeAndGo) {
  auto* combo = Add<TCustomComboBoxEx>();
  for (const char16_t* caption : {u"a", u"b", u"c"}) combo->AddItem({.Caption = caption});
  for (const bool shown : {false, true}) {
    if (shown) form.Show();
    combo->SetItemIndex(1);
    combo->InsertItem(0, {.Caption = u"before"});
    EXPECT_EQ(combo->GetItemIndex(), 2);
    combo->DeleteItem(0);
    EXPECT_EQ(combo->GetItemIndex(), 1);
    EXPECT_EQ(combo->GetText(), u"b");
    combo->SetText(u"free");
    EXPECT_EQ(combo->GetItemIndex(), -1);
    combo->SetText(u"c");
    EXPECT_EQ(combo->GetItemIndex(), 2);
    combo->DeleteItem(2);
    EXPECT_EQ(combo->GetItemIndex(), -1);
    combo->AddItem({.Caption = u"c"});
    EXPECT_THROW(combo->SetItemIndex(3), EArgumentException);
    EXPECT_THROW(combo->DeleteItem(-1), EArgumentException);
    EXPECT_THROW(combo->GetItem(3), EArgumentException);
  }
  combo->SetItemIndex(0);
  form.RecreateWnd();
  EXPECT_EQ(combo->GetText(), u"a");
  EXPECT_EQ(combo->GetItemIndex(), 0);
  combo->SetReadOnly(true);
  combo->SetText(u"nothing of that name");
  EXPECT_EQ(combo->GetText(), u"a");
}

TEST_F(StdCtrls, CombosTellWhatTheUserDoes) {
  auto* combo = Add<TCustomComboBoxEx>();
  combo->AddItem({.Caption = u"first"});
  combo->AddItem({.Caption = u"second"});
  auto note = [&](const char* what) { return [this, what](TObject*) { log.push_back(what); }; };
  combo->OnChange = note("change");
  combo->OnSelect = note("select");
  combo->OnDropDown = note("down");
  combo->OnCloseUp = note("up");
  form.Show();
  combo->SetFocus();
  screen->TypeText(u"x");
  combo->SetItemIndex(0);
  EXPECT_THAT(log, ElementsAre("change")) << "the program's own doing is no news";
  log.clear();
  combo->SetDroppedDown(true);
  EXPECT_TRUE(combo->GetDroppedDown());
  screen->KeyPress(vkDown);
  screen->KeyPress(vkReturn);
  EXPECT_FALSE(combo->GetDroppedDown());
  EXPECT_EQ(combo->GetText(), u"second");
  EXPECT_EQ(log.front(), "down");
  EXPECT_EQ(std::count(log.begin(), log.end(), "up"), 1);
  EXPECT_GE(std::count(log.begin(), log.end(), "select"), 1);
  EXPECT_EQ(std::count(log.begin(), log.end(), "change"), 0);

  combo->OnDropDown = [&](TObject*) { delete combo; };
  combo->SetDroppedDown(true);
  EXPECT_EQ(form.GetControlCount(), 0);
}

TEST_F(StdCtrls, CombosLetGoOfTheirImages) {
  auto* combo = Add<TCustomComboBoxEx>();
  auto images = std::make_unique<TImageList>();
  combo->SetImages(images.get());
  form.Show();
  images.reset();
  EXPECT_EQ(combo->GetImages(), nullptr);
  form.RecreateWnd();
}

// --- button and label -----------------------------------------------------------------------
TEST_F(StdCtrls, ButtonsAreClickedByMouseAndSpaceOnlyWhenReleased) {
  auto* button = Add<TButton>();
  auto* other = Add<TEdit>();
  other->SetTop(100);
  int clicks = 0;
  button->OnClick = [&](TObject*) { ++clicks; };
  form.Show();
  screen->Click(*button, {3, 3});
  EXPECT_EQ(clicks, 1);
  EXPECT_TRUE(button->Focused());
  screen->KeyDown(vkSpace);
  EXPECT_EQ(clicks, 1);
  screen->KeyUp(vkSpace);
  EXPECT_EQ(clicks, 2);
  screen->KeyDown(vkSpace);
  other->SetFocus();  // the press is over
  button->SetFocus();
  screen->KeyUp(vkSpace);
  EXPECT_EQ(clicks, 2);
  button->SetEnabled(false);
  screen->Click(*button, {3, 3});
  button->PerformClick();
  EXPECT_EQ(clicks, 2);
  button->SetEnabled(true);
  button->SetFocus();
  button->OnClick = [&](TObject*) { delete button; };
  screen->KeyPress(vkReturn);
  EXPECT_EQ(form.GetControlCount(), 1);
}

TEST_F(StdCtrls, LabelsNameTheNextControl) {
  auto* label = Add<TLabel>();
  auto* edit = Add<TEdit>();
  auto* other = Add<TEdit>();
  label->SetText(u"A && &Name");
  form.Show();
  other->SetFocus();
  screen->KeyPress(u'N', ssAlt);
  EXPECT_TRUE(edit->Focused());
  EXPECT_FALSE(label->Focused());
}

TEST_F(StdCtrls, TheClipboardHoldsText) {
  EXPECT_FALSE(Clipboard().HasText());
  EXPECT_EQ(Clipboard().GetAsText(), u"");
  auto* edit = Add<TEdit>();
  form.Show();
  edit->SetText(u"copied");
  edit->SetFocus();
  edit->SelectAll();
  screen->KeyPress(u'C', ssCtrl);
  EXPECT_EQ(Clipboard().GetAsText(), u"copied");
  Clipboard().SetAsText(u"pasted");
  screen->KeyPress(u'V', ssCtrl);
  EXPECT_EQ(edit->GetText(), u"pasted");
}

}  // namespace
}  // namespace oak::tests
