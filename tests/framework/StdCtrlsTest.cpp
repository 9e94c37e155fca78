#include "tests/framework/ControlFixture.h"

#include "oak/base/Exceptions.h"
#include "oak/framework/ImageList.h"
#include "oak/framework/StdCtrls.h"

namespace oak::tests {
namespace {

class StdCtrls : public TScreenTest {
 protected:
  template <class T>
  T* Add() {
    auto* control = new T;
    control->SetParent(&form);
    return control;
  }
  TProbeForm form;
};

TEST_F(StdCtrls, EditsTellOfChangesOnce) {
  auto* edit = Add<TEdit>();
  int changes = 0;
  edit->OnChange = [&](TObject*) { ++changes; };
  edit->SetText(u"one two");
  edit->SelectText(4, 99);
  form.Show();
  EXPECT_EQ(edit->GetSelText(), u"two") << "set before there was a window";
  edit->SetText(u"one two");
  EXPECT_EQ(changes, 1);
  edit->SetFocus();
  screen->TypeText(u"b");
  form.RecreateWnd();
  EXPECT_EQ(changes, 2);
  EXPECT_TRUE(edit->GetModified());
  edit->SelectText(-3, 2);
  EXPECT_EQ(edit->GetSelText(), u"on");
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
  }
  combo->SetItemIndex(0);
  combo->SetReadOnly(true);
  combo->SetText(u"nothing of that name");
  EXPECT_EQ(combo->GetText(), u"a");
}

TEST_F(StdCtrls, CombosLetGo) {
  auto* combo = Add<TCustomComboBoxEx>();
  auto images = std::make_unique<TImageList>();
  combo->SetImages(images.get());
  form.Show();
  images.reset();
  EXPECT_EQ(combo->GetImages(), nullptr);
  form.RecreateWnd();
  combo->OnDropDown = [&](TObject*) { delete combo; };
  combo->SetDroppedDown(true);
  EXPECT_EQ(form.GetControlCount(), 0);
}

TEST_F(StdCtrls, ButtonsAreClickedWhenSpaceIsReleased) {
  auto* button = Add<TButton>();
  auto* other = Add<TEdit>();
  int clicks = 0;
  button->OnClick = [&](TObject*) { ++clicks; };
  form.Show();
  button->SetFocus();
  screen->KeyDown(vkSpace);
  EXPECT_EQ(clicks, 0);
  screen->KeyUp(vkSpace);
  EXPECT_EQ(clicks, 1);
  screen->KeyDown(vkSpace);
  other->SetFocus();  // the press is over
  button->SetFocus();
  screen->KeyUp(vkSpace);
  EXPECT_EQ(clicks, 1);
}

}  // namespace
}  // namespace oak::tests
