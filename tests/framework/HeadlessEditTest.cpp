#include "oak/framework/headless/HeadlessEdit.h"

#include "oak/framework/headless/HeadlessCombo.h"
#include "tests/framework/HeadlessProbe.h"

namespace oak::tests {
namespace {

class HeadlessEdit : public THeadlessTest {};

using testkit::THeadlessScreen;

TEST_F(HeadlessEdit, KeysChangeTheText) {
  struct TCase {
    const char* Name;
    TString Before;
    int Caret;
    std::function<void(THeadlessDesktop&)> Act;
    TString After;
    int Start;
    int Length;
  };
  const TCase cases[] = {
      {"type", u"ad", 1, [](auto& d) { d.TypeText(u"bc"); }, u"abcd", 3, 0},
      {"back and delete", u"abcd", 2, [](auto& d) { d.KeyPress(vkBack), d.KeyPress(vkDelete); },
       u"ad", 1, 0},
      {"nothing before the beginning", u"ab", 0, [](auto& d) { d.KeyPress(vkBack); }, u"ab", 0, 0},
      {"nothing behind the end", u"ab", 2, [](auto& d) { d.KeyPress(vkDelete); }, u"ab", 2, 0},
      {"home, end, over what is selected", u"abc", 1,
       [](auto& d) { d.KeyPress(vkHome), d.KeyPress(vkEnd, {ssShift}), d.TypeText(u"x"); }, u"x", 1,
       0},
      {"by words", u"one two  three", 0,
       [](auto& d) {
         d.KeyPress(vkRight, {ssCtrl});
         d.KeyPress(vkRight, {ssCtrl, ssShift});
       },
       u"one two  three", 4, 5},
      {"a pair is one character", u"a\U0001F600b", 3,
       [](auto& d) { d.KeyPress(vkLeft), d.KeyPress(vkDelete); }, u"ab", 1, 0},
      {"a pair before the caret", u"a\U0001F600b", 3, [](auto& d) { d.KeyPress(vkBack); }, u"ab", 1,
       0},
      {"all, cut, paste twice", u"ab", 0,
       [](auto& d) {
         for (const char16_t key : {u'A', u'X', u'V', u'V'}) d.KeyPress(key, {ssCtrl});
       },
       u"abab", 4, 0},
      {"copy by the other keys", u"ab", 0,
       [](auto& d) {
         d.KeyPress(vkRight, {ssShift});
         d.KeyPress(vkInsert, {ssCtrl});
         d.KeyPress(vkEnd);
         d.KeyPress(vkInsert, {ssShift});
       },
       u"aba", 3, 0},
      {"one line of what is pasted", u"", 0,
       [](auto& d) {
         d.SetClipboardText(u"first\r\nsecond");
         d.KeyPress(u'V', {ssCtrl});
       },
       u"first", 5, 0},
      {"keys without a character", u"ab", 1,
       [](auto& d) { d.KeyPress(vkEscape), d.KeyPress(u'B', {ssCtrl}), d.KeyPress(vkF5); }, u"ab",
       1, 0},
  };
  for (const TCase& test : cases) {
    SCOPED_TRACE(test.Name);
    TEdit edit;
    edit.SetParent(&form);
    edit.SetText(test.Before);
    int changes = 0;
    edit.OnChange = [&](TObject*) { ++changes; };
    form.Show();
    edit.SetFocus();
    edit.SelectText(test.Caret, 0);
    test.Act(screen.Desktop());
    EXPECT_EQ(edit.GetText(), test.After);
    EXPECT_EQ(edit.GetSelStart(), test.Start);
    EXPECT_EQ(edit.GetSelLength(), test.Length);
    EXPECT_EQ(changes > 0, edit.GetModified());
  }
}

TEST_F(HeadlessEdit, TheMousePlacesTheCaretAndSelects) {
  TEdit edit;
  edit.SetParent(&form);
  edit.SetText(u"abcdef");
  form.Show();
  screen->Click(edit, {2 + 7 * 2 + 1, 8});  // a cell is 7 pixels wide
  EXPECT_EQ(edit.GetSelStart(), 2);
  screen->Click(edit, {2 + 7 * 4 + 1, 8}, {ssShift});
  EXPECT_EQ(edit.GetSelLength(), 2);
  screen->Drag(edit, {2 + 7 * 5, 8}, edit, {-50, 8});
  EXPECT_EQ(edit.GetSelStart(), 0);
  EXPECT_EQ(edit.GetSelLength(), 5);
  EXPECT_EQ(screen->GetCaptureWindow(), nullptr);
  screen->DoubleClick(edit, {10, 8});
  EXPECT_EQ(edit.GetSelText(), u"abcdef");
}

TEST_F(HeadlessEdit, AMemoHasLines) {
  TMemo memo;
  memo.SetParent(&form);
  memo.SetBounds(0, 0, 200, 64);
  form.Show();
  screen->TypeText(u"one\ntwo\nthree");
  EXPECT_EQ(memo.GetText(), u"one\r\ntwo\r\nthree");
  screen->KeyPress(vkUp);
  screen->KeyPress(vkHome);
  screen->TypeText(u"*");
  EXPECT_EQ(memo.GetText(), u"one\r\n*two\r\nthree");
  screen->KeyPress(vkHome);
  screen->KeyPress(vkBack);  // the line end is one character
  EXPECT_EQ(memo.GetText(), u"one*two\r\nthree");
  for (int i = 0; i < 10; ++i) screen->TypeText(u"\n");
  int position = 0, page = 0, range = 0;
  EXPECT_TRUE(memo.GetPeer()->GetScroll(sbVertical, &position, &page, &range));
  EXPECT_EQ(range, 12);
  EXPECT_EQ(page, 4);
}

TEST_F(HeadlessEdit, ItMayEndInItsOwnChange) {
  auto edit = std::make_unique<TEdit>();
  edit->SetParent(&form);
  edit->OnChange = [&](TObject*) { edit.reset(); };
  form.Show();
  screen->TypeText(u"ab");
  EXPECT_EQ(edit, nullptr);
  auto combo = std::make_unique<TCustomComboBoxEx>();
  combo->SetParent(&form);
  combo->AddItem({u"a"});
  combo->OnDropDown = [&](TObject*) { combo.reset(); };
  combo->SetFocus();
  screen->KeyPress(vkF4);
  EXPECT_EQ(combo, nullptr);
}

// --- combo ---------------------------------------------------------------------

struct TComboFixture {
  THeadlessScreen Screen{FailWith};
  TProbeForm Form;
  TCustomComboBoxEx Combo;
  TLog Log;

  TComboFixture() {
    Combo.SetParent(&Form);
    Combo.SetBounds(10, 10, 150, 23);
    for (const char16_t* caption : {u"alpha", u"beta", u"gamma", u"delta", u"epsilon"})
      Combo.AddItem({caption});
    Combo.SetDropDownCount(3);
    Combo.OnChange = [this](TObject*) { Log.push_back("change"); };
    Combo.OnSelect = [this](TObject*) {
      Log.push_back("select " + std::to_string(Combo.GetItemIndex()));
    };
    Combo.OnDropDown = [this](TObject*) { Log.push_back("drop"); };
    Combo.OnCloseUp = [this](TObject*) { Log.push_back("close"); };
    Form.Show();
  }
  THeadlessCombo& Window() { return dynamic_cast<THeadlessCombo&>(*Screen->WindowOf(Combo)); }
};

TEST(HeadlessCombo, TheListIsWorkedByTheMouse) {
  TComboFixture f;
  f.Screen->Click(f.Combo, f.Window().GetButtonRect().Center());
  EXPECT_TRUE(f.Combo.GetDroppedDown());
  ASSERT_NE(f.Window().GetList(), nullptr);
  f.Screen->MouseMove(f.Window().GetListRowRect(0).Center());
  f.Screen->Wheel(-2);
  f.Screen->Click(f.Window().GetListRowRect(4).Center());
  EXPECT_EQ(Take(f.Log), (TLog{"drop", "close", "select 4"}));
  EXPECT_EQ(f.Combo.GetText(), u"epsilon");
  f.Screen->Click(f.Combo, f.Window().GetButtonRect().Center());
  f.Screen->Click({900, 900});
  EXPECT_EQ(Take(f.Log), (TLog{"drop", "close"}));
  EXPECT_EQ(f.Screen->GetTopWindows().size(), 1u);
}

TEST(HeadlessCombo, TheListClosesWithTheFocusTheComboAndTheForm) {
  TComboFixture f;
  TProbe other(f.Form, {200, 0, 300, 50}, "other");
  const auto drop = [&] {
    f.Combo.SetFocus();
    f.Combo.SetDroppedDown(true);
    return f.Combo.GetDroppedDown();
  };
  EXPECT_TRUE(drop());
  other.SetFocus();
  EXPECT_FALSE(f.Combo.GetDroppedDown());
  EXPECT_TRUE(drop());
  f.Combo.SetVisible(false);
  EXPECT_EQ(f.Screen->GetTopWindows().size(), 1u);
  f.Combo.SetVisible(true);
  EXPECT_TRUE(drop());
  f.Combo.RecreateWnd();
  EXPECT_EQ(f.Screen->GetTopWindows().size(), 1u);
}

}  // namespace
}  // namespace oak::tests
