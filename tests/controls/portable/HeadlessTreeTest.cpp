// What only the headless tree knows: what it asks for, where keys and presses lead.
#include "oak/framework/headless/CanvasHeadless.h"
#include "oak/framework/headless/HeadlessTreePeer.h"
#include "tests/controls/ControlsFixture.h"

namespace oak::tests {
namespace {

/// A tree of 200 by 100 pixels without an edge. A line of text is 15 pixels, a row with images 20.
class HeadlessTree : public TTreeTest {
 protected:
  HeadlessTree() {
    tree->SetBorderStyle(bsNone);
    tree->SetBounds(10, 10, 200, 100);
  }
  void ShowTree() {
    Show();
    tree->SetFocus();
    screen->Drain();
    tree->Take();
  }
  THeadlessTreePeer& Peer() { return dynamic_cast<THeadlessTreePeer&>(*tree->GetTreePeer()); }
  TTreeNode* Node(TStringView path) { return tree->Find(path); }
  void Fill(int count) {
    tree->Items().BeginUpdate();
    for (int i = 0; i < count; ++i) tree->Items().Add(nullptr, u"node " + IntToStr(i));
    tree->Items().EndUpdate();
  }
  TString Selected() { return tree->GetSelected() ? tree->GetSelected()->GetText() : TString(); }
};

TEST_F(HeadlessTree, AsksForWhatItDraws) {
  Fill(1000);
  ShowTree();
  const auto requests = [this] {
    screen->Paint();
    const int images = Peer().GetImageRequests();
    Peer().ResetRequests();
    return images;
  };
  requests();
  Fill(1000);
  tree->CustomSort([](TTreeNode*, TTreeNode*, LPARAM) { return 0; }, 0);
  EXPECT_EQ(Peer().GetTextRequests() + Peer().GetImageRequests(), 0);
  EXPECT_LE(requests(), 6);
  Node(u"node 3")->SetText(u"changed");
  EXPECT_EQ(requests(), 1);
  Node(u"node 900")->SetText(u"out of sight");
  EXPECT_EQ(requests(), 0);
  // What is disabled is grey, unless it is selected.
  const auto colorOf = [&](TStringView text) {
    screen->Paint();
    for (const TDrawOperation& drawn : Peer().GetDrawing())
      if (drawn.Kind == TDrawKind::Text && drawn.Text == text) return drawn.PenColor;
    return TColor(clNone);
  };
  Node(u"node 1")->SetEnabled(false);
  EXPECT_EQ(colorOf(u"node 1"), ColorToRGB(clGrayText));
  EXPECT_EQ(colorOf(u"node 2"), ColorToRGB(clWindowText));
  tree->SetSelected(Node(u"node 1"));
  EXPECT_EQ(colorOf(u"node 1"), ColorToRGB(clHighlightText));
}

TEST_F(HeadlessTree, KeysWalkThroughWhatIsSeen) {
  Build({u"a", u" a1", u"  x", u"b", u"c", u"d", u"e", u"f", u"g", u"h"});
  ShowTree();
  EXPECT_EQ(Selected(), u"a") << "the keyboard needs a node to start from";
  const std::pair<std::uint16_t, TStringView> steps[] = {
      {vkUp, u"a"},    {vkNext, u"e"},      {vkPrior, u"a"},  {vkEnd, u"h"},    {vkNext, u"h"},
      {vkHome, u"a"},  {vkRight, u"a"},     {vkRight, u"a1"}, {vkRight, u"a1"}, {vkRight, u"x"},
      {vkLeft, u"a1"}, {vkMultiply, u"a1"}, {vkDown, u"x"},   {vkLeft, u"a1"},  {vkLeft, u"a1"},
      {vkLeft, u"a"},  {vkSubtract, u"a"},  {vkDown, u"b"},   {vkLeft, u"b"},   {vkAdd, u"b"},
  };
  int number = 0;
  for (const auto& [key, selected] : steps) {
    SCOPED_TRACE(++number);
    screen->KeyPress(key);
    EXPECT_EQ(Selected(), selected);
    EXPECT_FALSE(tree->GetSelected()->DisplayRect(false).IsEmpty());
  }
  screen->KeyPress(vkDown, {ssCtrl});
  EXPECT_EQ(Selected(), u"b");
  tree->Items().Clear();
  screen->KeyPress(vkDown);
  screen->KeyPress(vkLeft);
  screen->TypeText(u"x");
  EXPECT_EQ(tree->GetSelected(), nullptr);
}

TEST_F(HeadlessTree, TypedTextLeadsToANode) {
  Build({u"alpha", u"beta", u" hidden", u"Bravo", u"charlie", u"best"});
  ShowTree();
  const std::pair<TStringView, TStringView> steps[] = {
      {u"b", u"beta"},   {u"b", u"Bravo"}, {u"bbb", u"Bravo"}, {u"br", u"Bravo"},
      {u"bes", u"best"}, {u"h", u"best"},  {u"a", u"alpha"},   {u"B", u"beta"}};
  for (const auto& [typed, selected] : steps) {
    SCOPED_TRACE(ToUtf8(typed));
    screen->TypeText(typed);
    EXPECT_EQ(Selected(), selected);
    screen->Advance(1100);
  }
}

TEST_F(HeadlessTree, WhatEndsAnEdit) {
  Build({u"a", u" deep", u"b"});
  ShowTree();
  ASSERT_TRUE(Node(u"a|deep")->EditText());
  EXPECT_TRUE(Node(u"a")->GetExpanded()) << "a hidden node is brought to light";
  screen->TypeText(u"new");
  // A press elsewhere takes the text and selects.
  screen->Click(*tree, tree->At(Node(u"b")));
  EXPECT_NE(Node(u"a|new"), nullptr);
  EXPECT_EQ(Selected(), u"b");
  // So does scrolling.
  Node(u"b")->EditText();
  screen->TypeText(u"taken");
  Fill(20);
  tree->SetTopItem(Node(u"node 8"));
  EXPECT_FALSE(tree->IsEditing());
  EXPECT_NE(Node(u"taken"), nullptr);
  // A move of any node cancels.
  tree->SetTopItem(Node(u"a"));
  Node(u"a")->EditText();
  tree->Take();
  Node(u"node 1")->MoveTo(Node(u"a"), naAddChild);
  EXPECT_THAT(tree->Take(), ::testing::ElementsAre("edit cancelled"));
  EXPECT_FALSE(tree->IsEditing());
}

TEST_F(HeadlessTree, PressesThatLeadNowhere) {
  Build({u"a", u" a1", u"b"});
  ShowTree();
  tree->SetSelected(Node(u"b"));
  const TPoint onA = tree->At(Node(u"a"));
  // Beside a node, below the last one, with the middle button.
  screen->Click(*tree, {190, 10});
  screen->Click(*tree, {50, 90});
  screen->Click(*tree, onA, {}, mbMiddle);
  EXPECT_EQ(Selected(), u"b");
  tree->SetRowSelect(true);
  screen->Click(*tree, {190, 10});
  EXPECT_EQ(Selected(), u"a");
  // The node under a pressed mouse goes: nothing is dragged.
  screen->MouseDown(*tree, onA);
  Node(u"a")->Delete();
  tree->Take();
  screen->MouseMove(*tree, onA + TPoint(40, 40));
  screen->MouseUp();
  EXPECT_THAT(tree->Take(), ::testing::Not(::testing::Contains(::testing::StartsWith("drag"))));
}

}  // namespace
}  // namespace oak::tests
