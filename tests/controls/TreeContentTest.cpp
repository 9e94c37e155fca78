// The nodes of a tree: content, expansion, selection, looks.
#include "oak/framework/Canvas.h"
#include "tests/controls/ControlsFixture.h"

namespace oak::tests {
namespace {

using ::testing::ElementsAre;
using ::testing::IsEmpty;

class TreeContent : public TTreeTest {
 protected:
  struct TCase {
    const char* What;
    std::function<void()> Do;
  };
  void Walk(const std::vector<TCase>& cases) {
    for (const TCase& one : cases) {
      SCOPED_TRACE(one.What);
      one.Do();
      screen->Drain();
      ExpectShown(*tree);
    }
  }
  TTreeNode* Node(TStringView path) { return tree->Find(path); }
};

TEST_F(TreeContent, IsShownAsItChanges) {
  Build({u"a", u" a1", u" a2", u"  a21", u"b", u"c", u" c1"});
  Show();
  ExpectShown(*tree);
  Walk({
      {"expanded", [&] { Node(u"a")->Expand(false); }},
      {"all of it", [&] { tree->FullExpand(); }},
      {"text", [&] { Node(u"a|a2")->SetText(u"A2"); }},
      {"added at the end", [&] { tree->Items().AddChild(Node(u"a"), u"a3"); }},
      {"added in front", [&] { tree->Items().AddChildFirst(Node(u"a"), u"a0"); }},
      {"inserted", [&] { tree->Items().Insert(Node(u"a|a1"), u"a00"); }},
      {"a root", [&] { tree->Items().Add(nullptr, u"d"); }},
      {"first child of a leaf", [&] { tree->Items().AddChild(Node(u"b"), u"b1"); }},
      {"which opens", [&] { Node(u"b")->Expand(false); }},
      {"moved below another", [&] { Node(u"c")->MoveTo(Node(u"b"), naAddChild); }},
      {"moved up", [&] { Node(u"a|A2")->MoveTo(Node(u"a"), naInsert); }},
      {"moved to the end", [&] { Node(u"a")->MoveTo(nullptr, naAdd); }},
      {"sorted downwards",
       [&] {
         tree->CustomSort([](TTreeNode* a, TTreeNode* b,
                             LPARAM) { return b->GetText() < a->GetText() ? -1 : 1; },
                          0);
       }},
      {"a branch sorted by text", [&] { Node(u"a")->CustomSort(nullptr, 0); }},
      {"deleted", [&] { Node(u"b")->Delete(); }},
      {"children deleted", [&] { Node(u"A2")->DeleteChildren(); }},
      {"collapsed", [&] { tree->FullCollapse(); }},
      {"in a bracket",
       [&] {
         tree->Items().BeginUpdate();
         for (int i = 0; i < 30; ++i) tree->Items().Add(nullptr, u"node " + IntToStr(i));
         Node(u"a")->Delete();
         Node(u"node 3")->SetHasChildren(true);
         tree->Items().EndUpdate();
       }},
      {"scrolled", [&] { tree->SetTopItem(Node(u"node 9")); }},
      {"made visible", [&] { Node(u"node 29")->MakeVisible(); }},
      {"a new window", [&] { tree->RecreateWnd(); }},
      {"cleared", [&] { tree->Items().Clear(); }},
      {"filled again", [&] { tree->Items().Add(nullptr, u"x"); }},
  });
}

TEST_F(TreeContent, OpensByMouseAndKeys) {
  Build({u"a", u" a1", u"  a11", u"b", u" b1"});
  Show();
  tree->SetFocus();
  tree->SetSelected(Node(u"a"));
  tree->Take();
  struct TStep {
    const char* What;
    std::function<void()> Do;
    TLog Events;
  };
  const auto key = [this](std::uint16_t code) { return [this, code] { screen->KeyPress(code); }; };
  const std::vector<TStep> steps{
      {"button",
       [&] { screen->Click(*tree, tree->AtButton(Node(u"b"))); },
       {"mouse down", "expand? b", "expanded b"}},
      {"button again",
       [&] { screen->Click(*tree, tree->AtButton(Node(u"b"))); },
       {"mouse down", "collapse? b", "collapsed b"}},
      {"double click",
       [&] { screen->DoubleClick(*tree, tree->At(Node(u"b"))); },
       {"mouse down", "select? b", "selected b", "double click", "mouse down", "expand? b",
        "expanded b"}},
      {"left", key(vkLeft), {"collapse? b", "collapsed b"}},
      {"right", key(vkRight), {"expand? b", "expanded b"}},
      {"right into it", key(vkRight), {"select? b1", "selected b1"}},
      {"left out of it", key(vkLeft), {"select? b", "selected b"}},
      {"minus", key(vkSubtract), {"collapse? b", "collapsed b"}},
      {"plus", key(vkAdd), {"expand? b", "expanded b"}},
      {"home", key(vkHome), {"select? a", "selected a"}},
      {"down", key(vkDown), {"select? b", "selected b"}},
      {"end", key(vkEnd), {"select? b1", "selected b1"}},
      {"up", key(vkUp), {"select? b", "selected b"}},
  };
  for (const TStep& step : steps) {
    SCOPED_TRACE(step.What);
    step.Do();
    TLog events = tree->Take();
    // Whether and when the release of the button is told, and is a click, is the system's affair.
    std::erase_if(events,
                  [](const std::string& text) { return text == "mouse up" || text == "click"; });
    EXPECT_EQ(events, step.Events);
    ExpectShown(*tree);
  }
}

TEST_F(TreeContent, IsFilledWhenItOpens) {
  Build({u"lazy", u"empty", u"refused", u"late"});
  for (const TStringView name : {u"lazy", u"empty", u"refused", u"late"})
    Node(name)->SetHasChildren(true);
  tree->OnExpanding = [this](TObject*, TTreeNode* node, bool& allow) {
    if (node->GetText() == u"lazy") tree->Items().AddChild(node, u"child");
    if (node->GetText() == u"empty") node->SetHasChildren(false);
    if (node->GetText() == u"refused") allow = false;
  };
  Show();
  ExpectShown(*tree);
  screen->Click(*tree, tree->AtButton(Node(u"lazy")));
  EXPECT_TRUE(Node(u"lazy")->GetExpanded());
  ExpectShown(*tree);
  screen->Click(*tree, tree->AtButton(Node(u"empty")));
  EXPECT_FALSE(Node(u"empty")->GetExpanded());
  ExpectShown(*tree);
  screen->Click(*tree, tree->AtButton(Node(u"refused")));
  EXPECT_FALSE(Node(u"refused")->GetExpanded());
  Node(u"refused")->Expand(false);
  EXPECT_FALSE(Node(u"refused")->GetExpanded());
  ExpectShown(*tree);
  // Children that come later find the node open.
  tree->Take();
  screen->Click(*tree, tree->AtButton(Node(u"late")));
  EXPECT_TRUE(Node(u"late")->GetExpanded());
  EXPECT_THAT(tree->Take(), ::testing::Contains("expanded late"));
  tree->Items().AddChild(Node(u"late"), u"one");
  tree->Items().AddChild(Node(u"late"), u"two");
  ExpectShown(*tree);
  // A veto keeps it so.
  tree->OnCollapsing = [](TObject*, TTreeNode*, bool& allow) { allow = false; };
  screen->Click(*tree, tree->AtButton(Node(u"late")));
  Node(u"lazy")->Collapse(false);
  EXPECT_TRUE(Node(u"late")->GetExpanded());
  EXPECT_TRUE(Node(u"lazy")->GetExpanded());
  ExpectShown(*tree);
}

TEST_F(TreeContent, SelectionMayBeRefused) {
  Build({u"a", u"b", u" b1", u"c"});
  Show();
  tree->SetFocus();
  tree->SetSelected(Node(u"a"));
  tree->OnChanging = [](TObject*, TTreeNode* node, bool& allow) {
    allow = !node || node->GetText() != u"c";
  };
  screen->Click(*tree, tree->At(Node(u"c")));
  EXPECT_EQ(tree->GetSelected(), Node(u"a"));
  ExpectShown(*tree);
  Node(u"c")->SetSelected(true);
  EXPECT_EQ(tree->GetSelected(), Node(u"a"));
  screen->KeyPress(vkEnd);
  EXPECT_EQ(tree->GetSelected(), Node(u"a"));
  // A hidden node is brought to light when it is selected.
  tree->SetSelected(Node(u"b|b1"));
  EXPECT_TRUE(Node(u"b")->GetExpanded());
  ExpectShown(*tree);
  // And what is hidden can't stay selected.
  screen->Click(*tree, tree->AtButton(Node(u"b")));
  EXPECT_EQ(tree->GetSelected(), Node(u"b"));
  ExpectShown(*tree);
  tree->SetSelected(nullptr);
  ExpectShown(*tree);
}

TEST_F(TreeContent, SelectionMovesOnWhenItsNodeGoes) {
  Build({u"a", u"b", u" b1", u" b2", u"c"});
  Show();
  tree->SetFocus();
  tree->FullExpand();
  tree->SetSelected(Node(u"b|b2"));
  tree->Take();
  Node(u"b|b2")->Delete();
  EXPECT_EQ(tree->GetSelected(), Node(u"b|b1"));
  EXPECT_THAT(tree->Take(), ElementsAre("select? b1", "selected b1"));
  ExpectShown(*tree);
  Node(u"b")->Delete();
  EXPECT_EQ(tree->GetSelected(), Node(u"c"));
  EXPECT_THAT(tree->Take(), ElementsAre("select? c", "selected c"));
  ExpectShown(*tree);
  Node(u"c")->Delete();
  Node(u"a")->Delete();
  EXPECT_EQ(tree->GetSelected(), nullptr);
  ExpectShown(*tree);
  // A refusal can't keep a node that goes.
  Build({u"x", u"y"});
  tree->SetSelected(Node(u"x"));
  tree->OnChanging = [](TObject*, TTreeNode*, bool& allow) { allow = false; };
  Node(u"x")->Delete();
  EXPECT_EQ(tree->GetSelected(), nullptr);
  ExpectShown(*tree);
}

TEST_F(TreeContent, TellsOfChangesAfterADelay) {
  Build({u"a", u"b", u"c"});
  Show();
  tree->SetFocus();
  tree->SetSelected(Node(u"a"));
  tree->SetChangeDelay(100);
  tree->Take();
  screen->KeyPress(vkDown);
  screen->KeyPress(vkDown);
  EXPECT_THAT(tree->Take(), ElementsAre("select? b", "select? c"));
  screen->Advance(200);
  EXPECT_THAT(tree->Take(), ElementsAre("selected c"));
  // Setting it to nothing tells what is due.
  tree->SetSelected(Node(u"a"));
  tree->SetChangeDelay(0);
  EXPECT_THAT(tree->Take(), ElementsAre("select? a", "selected a"));
}

TEST_F(TreeContent, PointsAndPlaces) {
  Build({u"a", u" a1", u"b"});
  tree->SetStateImages(images.get());
  Node(u"a")->SetStateIndex(2);
  Show();
  tree->FullExpand();
  screen->Paint();
  for (const TStringView path : {u"a", u"a|a1", u"b"}) {
    TTreeNode* const node = Node(path);
    SCOPED_TRACE(ToUtf8(path));
    const TRect text = node->DisplayRect(true);
    const TRect all = node->DisplayRect(false);
    EXPECT_TRUE(all.Contains(text.TopLeft()));
    EXPECT_EQ(all.Width(), tree->GetClientRect().Width());
    const TTreeHitTest label = tree->GetHitTest(text.Center().X, text.Center().Y);
    EXPECT_EQ(label.Node, node);
    EXPECT_TRUE(label.Flags.Contains(htOnLabel));
    const TTreeHitTest icon = tree->GetHitTest(text.Left - 10, text.Center().Y);
    EXPECT_EQ(icon.Node, node);
    EXPECT_TRUE(icon.Flags.Contains(htOnIcon));
    const TTreeHitTest right = tree->GetHitTest(text.Right + 20, text.Center().Y);
    EXPECT_TRUE(right.Flags.Contains(htOnRight));
  }
  const TRect text = Node(u"a")->DisplayRect(true);
  EXPECT_TRUE(
      tree->GetHitTest(text.Left - 10 - 16 - 4, text.Center().Y).Flags.Contains(htOnStateIcon));
  EXPECT_TRUE(tree->GetHitTest(5, 200).Flags.Contains(htNowhere));
  EXPECT_EQ(tree->GetNodeAt(5, 200), nullptr);
  EXPECT_EQ(tree->GetTopItem(), Node(u"a"));
  EXPECT_GT(tree->GetVisibleRowCount(), 5);
  // What is not there has no place.
  Node(u"a")->Collapse(false);
  EXPECT_TRUE(Node(u"a|a1")->DisplayRect(true).IsEmpty());
  for (int i = 0; i < 40; ++i) tree->Items().Add(nullptr, u"n");
  EXPECT_TRUE(tree->Items().GetLastNode()->DisplayRect(false).IsEmpty());
  tree->Items().GetLastNode()->MakeVisible();
  EXPECT_FALSE(tree->Items().GetLastNode()->DisplayRect(false).IsEmpty());
  EXPECT_TRUE(Node(u"a")->DisplayRect(false).IsEmpty());
  int position = 0, page = 0, range = 0;
  ASSERT_TRUE(tree->GetPeer()->GetScroll(sbVertical, &position, &page, &range));
  EXPECT_GT(position, 0);
  EXPECT_EQ(position + page, range);
  const TTreeNode* const top = tree->GetTopItem();
  tree->GetPeer()->ScrollLines(sbVertical, -2);
  EXPECT_EQ(tree->GetTopItem()->GetNextVisible()->GetNextVisible(), top);
  screen->Wheel(*tree, {50, 50}, 1);
  EXPECT_LT(tree->GetTopItem()->GetIndex(), top->GetIndex() - 2);
}

TEST_F(TreeContent, StatesOfNodes) {
  Build({u"a", u"b"});
  Show();
  TTreeNode* const a = Node(u"a");
  tree->SetDropTargetNode(a);
  EXPECT_TRUE(a->GetDropTarget());
  tree->SetDropTargetNode(Node(u"b"));
  EXPECT_FALSE(a->GetDropTarget());
  ExpectShown(*tree);
  const auto states = MakeImages(12, 4);
  tree->SetStateImages(states.get());
  a->SetCut(true);
  a->SetOverlayIndex(1);
  a->SetImageIndex(2);
  a->SetStateIndex(3);
  a->SetEnabled(false);
  Node(u"b")->SetImageIndex(0);
  Node(u"b")->SetSelectedIndex(1);
  ExpectShown(*tree);
  tree->SetSelected(Node(u"b"));
  ExpectShown(*tree);
  a->SetCut(false);
  a->SetOverlayIndex(-1);
  a->SetStateIndex(0);
  ExpectShown(*tree);
  a->SetOverlayIndex(0);
  a->SetStateIndex(2);
  tree->RecreateWnd();
  screen->Drain();
  EXPECT_TRUE(Node(u"b")->GetDropTarget());
  ExpectShown(*tree);
  Node(u"b")->Delete();
  EXPECT_EQ(tree->GetDropTargetNode(), nullptr);
  ExpectShown(*tree);
  tree->SetStateImages(nullptr);
}

TEST_F(TreeContent, DrawnByTheApplication) {
  Build({u"a", u" a1", u"b", u"c"});
  Show();
  tree->SetFocus();
  tree->FullExpand();
  tree->SetSelected(Node(u"b"));
  Node(u"c")->SetEnabled(false);
  std::vector<std::string> rows;
  tree->OnAdvancedCustomDrawItem = [&](TObject*, TTreeNode* node, TCustomDrawState state,
                                       TCustomDrawStage stage, TCanvas& canvas, bool& standard) {
    rows.push_back(ToUtf8(node->GetText()) + (stage == cdPrePaint ? "" : "."));
    EXPECT_EQ(state.Contains(cdsSelected), node == Node(u"b"));
    EXPECT_EQ(state.Contains(cdsFocused), node == Node(u"b"));
    EXPECT_EQ(state.Contains(cdsDisabled), node == Node(u"c"));
    canvas.GetFont().SetColor(clRed);
    standard = node != Node(u"a|a1");
  };
  tree->Invalidate();
  screen->Paint();
  EXPECT_THAT(rows, ElementsAre("a", "a.", "a1", "b", "b.", "c", "c."));
  tree->OnAdvancedCustomDrawItem = nullptr;
}

TEST_F(TreeContent, RightClickSelectsIfAsked) {
  Build({u"a", u"b"});
  Show();
  tree->SetFocus();
  tree->SetSelected(Node(u"a"));
  tree->Take();
  screen->RightClick(*tree, tree->At(Node(u"b")));
  EXPECT_EQ(tree->GetSelected(), Node(u"a"));
  EXPECT_THAT(tree->Take(), ::testing::Contains("menu"));
  tree->SetRightClickSelect(true);
  screen->RightClick(*tree, tree->At(Node(u"b")));
  EXPECT_EQ(tree->GetSelected(), Node(u"b"));
  const TLog log = tree->Take();
  EXPECT_LT(std::find(log.begin(), log.end(), "selected b"),
            std::find(log.begin(), log.end(), "menu"));
  ExpectShown(*tree);
}

TEST_F(TreeContent, AsksForImagesOfWhatIsSeen) {
  for (int i = 0; i < 500; ++i) tree->Items().Add(nullptr, u"node");
  int last = -1;
  tree->OnGetImageIndex = [&](TObject*, TTreeNode* node) {
    last = std::max(last, node->GetIndex());
    node->SetImageIndex(1);
  };
  Show();
  EXPECT_GT(last, 0);
  EXPECT_LE(last, tree->GetVisibleRowCount());
  ExpectShown(*tree);
}

}  // namespace
}  // namespace oak::tests
