// Texts of nodes edited in place.
#include "tests/controls/ControlsFixture.h"

namespace oak::tests {
namespace {

using ::testing::ElementsAre;

class TreeEdit : public TTreeTest {
 protected:
  TreeEdit() {
    Build({u"a", u" a1", u"b"});
    edit->SetBounds(420, 10, 100, 24);
    edit->SetParent(form.get());
    Show();
    tree->SetFocus();
    tree->FullExpand();
  }
  void Begin(TTreeNode* node) {
    ASSERT_TRUE(node->EditText());
    screen->Drain();
    tree->Take();
  }
  TLog TakeEdits() {
    TLog events = tree->Take();
    std::erase_if(events, [](const std::string& text) { return !text.starts_with("edit"); });
    return events;
  }
  TEdit* edit = new TEdit;
};

TEST_F(TreeEdit, IsTakenOrDropped) {
  TTreeNode* const a = tree->Find(u"a");
  ASSERT_TRUE(a->EditText());
  EXPECT_TRUE(tree->IsEditing());
  EXPECT_EQ(tree->GetEditedNode(), a);
  EXPECT_EQ(tree->GetEditText(), u"a");
  EXPECT_EQ(screen->Focused(), tree);
  screen->TypeText(u"new");
  screen->KeyPress(vkReturn);
  EXPECT_FALSE(tree->IsEditing());
  EXPECT_EQ(a->GetText(), u"new");
  EXPECT_THAT(TakeEdits(), ElementsAre("edit?", "edit new"));
  ExpectShown(*tree);
  Begin(a);
  screen->TypeText(u"lost");
  screen->KeyPress(vkEscape);
  EXPECT_EQ(a->GetText(), u"new");
  EXPECT_THAT(TakeEdits(), ElementsAre("edit cancelled"));
  Begin(a);
  tree->SetEditText(u"left right");
  tree->SelectEditText(0, 4);
  screen->TypeText(u"no");
  EXPECT_EQ(tree->GetEditText(), u"no right");
  a->EndEdit(false);
  EXPECT_EQ(a->GetText(), u"no right");
  tree->OnEdited = [](TObject*, TTreeNode*, TString& text) { text = u"<" + text + u">"; };
  Begin(a);
  screen->TypeText(u"x");
  edit->SetFocus();
  EXPECT_EQ(a->GetText(), u"<x>");
  ExpectShown(*tree);
}

TEST_F(TreeEdit, EndsWithItsNode) {
  const std::vector<std::pair<const char*, std::function<void()>>> ends{
      {"deleted", [&] { tree->Find(u"a|a1")->Delete(); }},
      {"parent deleted", [&] { tree->Find(u"a")->Delete(); }},
      {"cleared", [&] { tree->Items().Clear(); }},
      {"parent closed", [&] { tree->Find(u"a")->Collapse(false); }},
      {"new window", [&] { tree->RecreateWnd(); }},
      {"read-only", [&] { tree->SetReadOnly(true); }},
  };
  for (const auto& [what, end] : ends) {
    SCOPED_TRACE(what);
    tree->SetReadOnly(false);
    tree->Items().Clear();
    Build({u"a", u" a1", u"b"});
    tree->FullExpand();
    Begin(tree->Find(u"a|a1"));
    screen->TypeText(u"new");
    end();
    screen->Drain();
    EXPECT_FALSE(tree->IsEditing());
    EXPECT_EQ(tree->GetEditedNode(), nullptr);
    EXPECT_EQ(tree->Find(u"a|new"), nullptr);
    ExpectShown(*tree);
  }
}

TEST_F(TreeEdit, MayBeRefusedAndWaitsForASecondClick) {
  tree->OnEditing = [](TObject*, TTreeNode* node, bool& allow) { allow = node->GetText() != u"b"; };
  EXPECT_FALSE(tree->Find(u"b")->EditText());
  EXPECT_FALSE(tree->IsEditing());
  tree->SetReadOnly(true);
  EXPECT_FALSE(tree->Find(u"a")->EditText());
  tree->SetReadOnly(false);

  screen->Click(*tree, tree->At(tree->Find(u"a|a1")));
  screen->Advance(700);
  EXPECT_FALSE(tree->IsEditing());
  screen->Click(*tree, tree->At(tree->Find(u"a|a1")));
  screen->Advance(700);
  EXPECT_TRUE(tree->IsEditing());
  screen->KeyPress(vkEscape);
  EXPECT_FALSE(tree->IsEditing());
}

}  // namespace
}  // namespace oak::tests
