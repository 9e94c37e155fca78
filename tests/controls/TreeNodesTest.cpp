// The nodes of a tree without a window: order, deletion, expansion, selection, sorting.
#include "oak/base/Exceptions.h"
#include "tests/controls/ControlsFixture.h"

namespace oak::tests {
namespace {

using ::testing::ElementsAre;
using ::testing::IsEmpty;

// --- order --------------------------------------------------------------------------------------

TEST(TreeNodes, StandWhereTheyWereAttached) {
  TTreeUnderTest tree;
  tree.Build({u"a", u" a1", u" a2", u"b"});
  TTreeNodes& nodes = tree.Items();
  nodes.Add(tree.Node(u"a1"), u"a3");
  nodes.AddChildFirst(tree.Node(u"a"), u"a0");
  nodes.AddChildFirst(nullptr, u"first");
  nodes.Insert(tree.Node(u"a2"), u"a1+");
  nodes.Insert(nullptr, u"last");
  EXPECT_EQ(tree.Shape(), "first a(a0 a1 a1+ a2 a3) b last");
  const auto make = [&](TStringView text) {
    auto node = std::make_unique<TTreeNode>(&nodes);
    node->SetText(TString(text));
    return node;
  };
  nodes.AddNode(make(u"x"), tree.Node(u"a2"), naAddFirst);
  nodes.AddNode(make(u"y"), tree.Node(u"b"), naAddChildFirst);
  nodes.AddNode(make(u"z"), nullptr, naInsert);
  EXPECT_EQ(nodes.AddNode(nullptr, nullptr, naAdd), nullptr);
  EXPECT_EQ(tree.Shape(), "first a(x a0 a1 a1+ a2 a3) b(y) last z");
  EXPECT_EQ(nodes.GetCount(), 12);
  EXPECT_EQ(nodes.GetNodeFromIndex(3)->GetText(), u"a0");
  EXPECT_EQ(nodes.GetNodeFromIndex(12), nullptr);
  EXPECT_EQ(nodes.GetNodeFromIndex(-1), nullptr);
  EXPECT_EQ(tree.Node(u"y")->GetLevel(), 1);
  EXPECT_TRUE(tree.Node(u"b")->GetHasChildren());
}

TEST(TreeNodes, MoveWithTheirBranch) {
  const struct {
    TStringView Node;
    TStringView To;
    TNodeAttachMode Mode;
    const char* Shape;
  } cases[] = {
      {u"c", u"a", naAddChildFirst, "a(c(c1) a1(x y) a2) b"},
      {u"a1", u"b", naAdd, "a(c(c1) a2) b a1(x y)"},
      {u"a1", u"x", naInsert, nullptr},  // into its own branch
      {u"b", u"c1", naInsert, "a(c(b c1) a2) a1(x y)"},
      {u"a2", u"c", naAddFirst, "a(a2 c(b c1)) a1(x y)"},
      {u"a2", u"c", naInsert, "a(a2 c(b c1)) a1(x y)"},
      {u"c", u"", naAdd, "a(a2) a1(x y) c(b c1)"},
      {u"a2", u"y", naAddChild, "a a1(x y(a2)) c(b c1)"},
      {u"a", u"a", naAddChild, "a a1(x y(a2)) c(b c1)"},
  };
  TTreeUnderTest tree;
  tree.Build({u"a", u" a1", u"  x", u"  y", u" a2", u"b", u"c", u" c1"});
  tree.Node(u"a")->Expand(false);
  for (const auto& test : cases) {
    SCOPED_TRACE(ToUtf8(test.Node) + " to " + ToUtf8(test.To));
    TTreeNode* const node = tree.Node(test.Node);
    TTreeNode* const to = test.To.empty() ? nullptr : tree.Node(test.To);
    if (test.Shape) {
      node->MoveTo(to, test.Mode);
      EXPECT_EQ(tree.Shape(), test.Shape);
    } else {
      EXPECT_THROW(node->MoveTo(to, test.Mode), EInvalidOperation);
    }
    EXPECT_EQ(tree.Items().GetCount(), 8);
  }
  EXPECT_FALSE(tree.Node(u"a")->GetHasChildren()) << "the last child has gone";
  EXPECT_FALSE(tree.Node(u"a")->GetExpanded());
  TTreeUnderTest other;
  other.Build({u"foreign"});
  EXPECT_THROW(tree.Node(u"a")->MoveTo(other.Node(u"foreign"), naAdd), EInvalidOperation);
  EXPECT_EQ(other.Shape(), "foreign");
}

TEST(TreeNodes, ASelectedNodeThatIsMovedOutOfSightGivesTheSelectionAway) {
  TTreeUnderTest tree;
  tree.Build({u"closed", u" open", u"  x", u"b", u" b1"});
  tree.SetSelected(tree.Node(u"b1"));
  tree.Node(u"open")->Expand(false);
  EXPECT_FALSE(tree.Node(u"closed")->GetExpanded());
  tree.Take();
  tree.Node(u"b")->MoveTo(tree.Node(u"open"), naAddChild);
  EXPECT_EQ(tree.GetSelected(), tree.Node(u"closed"));
  EXPECT_THAT(tree.Take(), ElementsAre("select? closed", "selected closed"));
}

TEST(TreeNodes, WalksFollowWhatIsExpanded) {
  TTreeUnderTest tree;
  tree.Build({u"a", u" a1", u"  a11", u" a2", u"b", u" b1", u"c"});
  tree.Node(u"a")->SetExpanded(true);
  std::string seen, back;
  for (TTreeNode* node = tree.Items().GetFirstNode(); node; node = node->GetNextVisible())
    seen += ToUtf8(node->GetText()) + " ";
  for (TTreeNode* node = tree.Node(u"c"); node; node = node->GetPrevVisible())
    back = ToUtf8(node->GetText()) + " " + back;
  EXPECT_EQ(seen, "a a1 a2 b c ");
  EXPECT_EQ(back, seen);
  EXPECT_FALSE(tree.Node(u"a11")->IsNodeVisible());
}

TEST(TreeNodes, DeepBranchesNeedNoStack) {
  TTreeUnderTest tree;
  constexpr int depth = 200'000;
  TTreeNode* node = nullptr;
  for (int i = 0; i < depth; ++i) node = tree.Items().AddChild(node, u"n");
  EXPECT_EQ(node->GetLevel(), depth - 1);
  tree.CustomSort(nullptr, 0);
  tree.Items().GetFirstNode()->Delete();
  EXPECT_EQ(tree.Items().GetCount(), 0);
}

// --- deletion -----------------------------------------------------------------------------------

TEST(TreeNodes, AreAllGoneBeforeTheFirstIsTold) {
  TTreeUnderTest tree;
  tree.Build({u"a", u" a1", u"  x", u" a2", u"b"});
  std::vector<std::string> told;
  tree.OnDeletion = [&](TObject*, TTreeNode* node) {
    told.push_back(ToUtf8(node->GetText()) + " of " + tree.Shape());
    EXPECT_TRUE(node->GetDeleting());
    // What is done to a node that goes has no effect.
    node->SetSelected(true);
    node->SetDropTarget(true);
    node->SetText(u"late");
    node->Expand(true);
    node->Delete();
    node->MakeVisible();
    EXPECT_FALSE(node->EditText());
    EXPECT_EQ(tree.Items().AddChild(node, u"child"), nullptr);
    node->MoveTo(nullptr, naAdd);
    tree.Items().GetFirstNode()->MoveTo(node, naAddChild);
  };
  tree.Node(u"a")->Delete();
  EXPECT_THAT(told, ElementsAre("x of b", "a1 of b", "a2 of b", "a of b"));
  EXPECT_EQ(tree.Items().GetCount(), 1);
  EXPECT_EQ(tree.GetSelected(), nullptr);
  EXPECT_EQ(tree.GetDropTargetNode(), nullptr);
  told.clear();
  tree.Items().AddChild(tree.Node(u"b"), u"b1");
  tree.OnDeletion = [&](TObject*, TTreeNode* node) { told.push_back(ToUtf8(node->GetText())); };
  tree.Node(u"b")->DeleteChildren();
  EXPECT_FALSE(tree.Node(u"b")->GetHasChildren());
  tree.Items().Clear();
  EXPECT_THAT(told, ElementsAre("b1", "b"));
}

TEST(TreeNodes, HandlersOfADeletionMayChangeTheTree) {
  const std::vector<std::pair<const char*, std::function<void(std::unique_ptr<TTreeUnderTest>&)>>>
      deeds{
          {"destroy", [](auto& tree) { tree.reset(); }},
          {"clear", [](auto& tree) { tree->Items().Clear(); }},
          {"add", [](auto& tree) { tree->Items().Add(nullptr, u"new"); }},
          {"delete another", [](auto& tree) { tree->Items().Delete(tree->Node(u"b")); }},
          {"sort", [](auto& tree) { tree->CustomSort(nullptr, 0); }},
          {"throw", [](auto&) { throw EInvalidOperation(u"thrown"); }},
      };
  for (const bool clear : {false, true}) {
    for (const auto& [what, deed] : deeds) {
      SCOPED_TRACE(std::string(what) + (clear ? " in a clear" : ""));
      auto tree = std::make_unique<TTreeUnderTest>();
      tree->Build({u"a", u" a1", u"  x", u" a2", u"b", u" b1"});
      bool done = false;
      tree->OnEvent = [&tree, &done, deed = &deed](const std::string& event) {
        if (event == "delete a1" && !std::exchange(done, true)) (*deed)(tree);
      };
      TTreeNodes& items = tree->Items();
      try {
        if (clear)
          items.Clear();
        else
          items.Delete(tree->Node(u"a"));
        EXPECT_STRNE(what, "throw");
      } catch (const EInvalidOperation&) {
        EXPECT_STREQ(what, "throw");
      }
      EXPECT_TRUE(done);
      if (tree) {
        EXPECT_EQ(tree->Node(u"a"), nullptr);
        tree->Shape();
        tree->Items().Add(nullptr, u"end");
      }
    }
  }
}

TEST(TreeNodes, MayBeRemovedAsTheyAreAdded) {
  auto tree = std::make_unique<TTreeUnderTest>();
  tree->OnEvent = [&](const std::string& event) {
    if (event == "add unwanted") tree->Node(u"unwanted")->Delete();
    if (event == "add fatal") tree.reset();
  };
  TTreeNode* const a = tree->Items().Add(nullptr, u"a");
  EXPECT_EQ(tree->Items().AddChild(a, u"unwanted"), nullptr);
  EXPECT_FALSE(a->GetHasChildren());
  EXPECT_EQ(tree->Shape(), "a");
  EXPECT_EQ(tree->Items().AddChild(a, u"fatal"), nullptr);
  EXPECT_EQ(tree, nullptr);
}

// --- selection ----------------------------------------------------------------------------------

TEST(TreeNodes, ThoseOfOthersAreNotSelected) {
  TTreeUnderTest tree, other;
  tree.Build({u"a"});
  other.Build({u"foreign"});
  tree.SetSelected(tree.Node(u"a"));
  tree.SetSelected(other.Node(u"foreign"));
  tree.SetDropTargetNode(other.Node(u"foreign"));
  EXPECT_EQ(tree.GetSelected(), tree.Node(u"a"));
  EXPECT_EQ(tree.GetDropTargetNode(), nullptr);
}

// --- sorting ------------------------------------------------------------------------------------

TEST(TreeNodes, AreSortedByBranches) {
  const auto byLength = [](TTreeNode* a, TTreeNode* b, LPARAM sign) {
    return static_cast<int>(sign) *
           (static_cast<int>(a->GetText().size()) - static_cast<int>(b->GetText().size()));
  };
  TTreeUnderTest tree;
  tree.Build({u"n10", u"n9", u" c", u" bb", u" a", u"n1", u" zz", u"  2", u"  1", u" y"});
  EXPECT_TRUE(tree.CustomSort(nullptr, 0, false));
  EXPECT_EQ(tree.Shape(), "n1(zz(2 1) y) n9(c bb a) n10");
  EXPECT_TRUE(tree.Node(u"n9")->CustomSort(byLength, 1));
  EXPECT_EQ(tree.Shape(), "n1(zz(2 1) y) n9(c a bb) n10") << "equal ones keep their order";
  EXPECT_TRUE(tree.Node(u"n1")->CustomSort(nullptr, 0, true));
  EXPECT_EQ(tree.Shape(), "n1(y zz(1 2)) n9(c a bb) n10");
  EXPECT_TRUE(tree.CustomSort(byLength, -1));
  EXPECT_EQ(tree.Shape(), "n10 n1(zz(1 2) y) n9(bb c a)");
  EXPECT_FALSE(tree.Node(u"n10")->CustomSort(nullptr, 0));
  // Comparisons that contradict themselves.
  tree.CustomSort([](TTreeNode*, TTreeNode*, LPARAM) { return 1; }, 0);
  EXPECT_EQ(tree.Items().GetCount(), 10);
  tree.Shape();
}

TEST(TreeNodes, SortingEndsWhenTheTreeChanges) {
  auto tree = std::make_unique<TTreeUnderTest>();
  tree->Build({u"b", u" b2", u" b1", u"a"});
  tree->CustomSort(
      [&](TTreeNode*, TTreeNode*, LPARAM) {
        tree->Items().Add(nullptr, u"new");
        return 1;
      },
      0);
  EXPECT_EQ(tree->Shape(), "b(b2 b1) a new");
  tree->CustomSort(
      [&](TTreeNode*, TTreeNode*, LPARAM) {
        tree.reset();
        return 1;
      },
      0);
  EXPECT_EQ(tree, nullptr);
}

// --- looks --------------------------------------------------------------------------------------

TEST(TreeNodes, WatchesTellWhoIsStillThere) {
  auto tree = std::make_unique<TTreeUnderTest>();
  tree->Build({u"a", u" a1", u"b"});
  const TTreeNodeWatch a(*tree, tree->Node(u"a"));
  const TTreeNodeWatch none(*tree, nullptr);
  const TTreeNodeWatch child(*tree, tree->Node(u"a1"));
  const TTreeNodeWatch b(*tree, tree->Node(u"b"));
  EXPECT_FALSE(none.Exists());
  tree->Node(u"a1")->MoveTo(nullptr, naAdd);
  EXPECT_TRUE(child.Exists());
  tree->Node(u"a")->Delete();
  EXPECT_FALSE(a.Exists());
  EXPECT_TRUE(child.Exists());
  tree.reset();
  EXPECT_FALSE(child.Exists());
  EXPECT_FALSE(b.Exists());
}

}  // namespace
}  // namespace oak::tests
