// The tree's window on the headless desktop: layout, drawing, scrolling, mouse and keys.
#include <gmock/gmock.h>

#include "oak/framework/headless/CanvasHeadless.h"
#include "oak/framework/headless/HeadlessEdit.h"
#include "oak/framework/headless/HeadlessTreePeer.h"
#include "tests/framework/GeometryPrinting.h"
#include "tests/framework/HeadlessProbe.h"
#include "tests/framework/TreeProbe.h"

namespace oak::tests {
namespace {

using ::testing::ElementsAre;
using ::testing::IsEmpty;
using testkit::THeadlessScreen;

/// A tree of 200 by 100 pixels without an edge. A line of text is 15 pixels, a row 20.
class HeadlessTree : public ::testing::Test {
 protected:
  HeadlessTree() : images(nullptr, 16, 16), states(nullptr, 12, 12) {
    for (TImageList* const list : {&images, &states}) {
      const TBitmap picture(list->GetWidth(), list->GetHeight());
      for (int i = 0; i < 4; ++i) list->Add(picture);
    }
    tree.SetBorderStyle(bsNone);
    tree.SetBounds(10, 10, 200, 100);
    tree.SetParent(&form);
  }
  void Show() {
    form.Show();
    tree.SetFocus();
    screen.Drain();
    tree.Take();
  }
  THeadlessTreePeer& Peer() { return dynamic_cast<THeadlessTreePeer&>(*tree.GetTreePeer()); }
  TTreeNode* Node(TStringView text) { return tree.Node(text); }
  void Fill(int count) {
    tree.Items().BeginUpdate();
    for (int i = 0; i < count; ++i) tree.Items().Add(nullptr, u"node " + IntToStr(i));
    tree.Items().EndUpdate();
  }
  std::string Seen() {
    std::string text;
    for (const TDrawOperation& drawn : Peer().GetDrawing())
      if (drawn.Kind == TDrawKind::Text) text += ToUtf8(drawn.Text) + " ";
    return text;
  }
  /// The drawings of images within the row of a node.
  std::vector<TDrawOperation> ImagesOf(TTreeNode* node) {
    std::vector<TDrawOperation> found;
    for (const TDrawOperation& drawn : Peer().GetDrawing())
      if (drawn.Kind == TDrawKind::Image && node->DisplayRect(false).Contains(drawn.Rect.Center()))
        found.push_back(drawn);
    return found;
  }
  int ScrollTop() {
    int position = 0, page = 0, range = 0;
    Peer().GetScroll(sbVertical, &position, &page, &range);
    return position;
  }

  THeadlessScreen screen{FailWith};
  TImageList images, states;
  TProbeForm form;
  TProbeTree tree;
};

TEST_F(HeadlessTree, PlacesItsParts) {
  tree.Build({u"a", u" ab", u"  abc", u"d"});
  tree.SetImages(&images);
  tree.SetStateImages(&states);
  Node(u"ab")->SetStateIndex(2);
  tree.FullExpand();
  Show();
  const auto width = [](int letters) { return letters * 7 + 4; };
  EXPECT_EQ(Peer().GetRowHeight(), 20);
  EXPECT_EQ(Node(u"a")->DisplayRect(true), TRect(19 + 19, 0, 38 + width(1), 20));
  EXPECT_EQ(Node(u"ab")->DisplayRect(true), TRect(38 + 15 + 19, 20, 72 + width(2), 40));
  EXPECT_EQ(Node(u"abc")->DisplayRect(true), TRect(57 + 19, 40, 76 + width(3), 60));
  EXPECT_EQ(Node(u"d")->DisplayRect(false), TRect(0, 60, 200, 80));
  const struct {
    TPoint Point;
    THitTestFlag Flag;
    TStringView Node;
  } cases[] = {
      {{9, 10}, htOnButton, u"a"},      {{28, 30}, htOnButton, u"ab"}, {{5, 30}, htOnIndent, u"ab"},
      {{44, 30}, htOnStateIcon, u"ab"}, {{60, 30}, htOnIcon, u"ab"},   {{74, 30}, htOnLabel, u"ab"},
      {{150, 30}, htOnRight, u"ab"},    {{9, 70}, htOnIndent, u"d"},   {{20, 70}, htOnIcon, u"d"},
      {{9, 90}, htNowhere, u""},        {{9, -1}, htAbove, u""},       {{9, 100}, htBelow, u""},
      {{-1, 9}, htToLeft, u""},         {{200, 9}, htToRight, u""},
  };
  for (const auto& test : cases) {
    SCOPED_TRACE(std::to_string(test.Point.X) + "," + std::to_string(test.Point.Y));
    const TTreeHitTest hit = tree.GetHitTest(test.Point.X, test.Point.Y);
    EXPECT_TRUE(hit.Flags.Contains(test.Flag));
    EXPECT_EQ(hit.Node ? hit.Node->GetText() : TString(), test.Node);
  }
  tree.SetShowRoot(false);
  EXPECT_EQ(Node(u"a")->DisplayRect(true).Left, 19);
  EXPECT_TRUE(tree.GetHitTest(1, 10).Flags.Contains(htOnIcon)) << "roots have no button";
  tree.SetShowButtons(false);
  EXPECT_TRUE(tree.GetHitTest(9, 30).Flags.Contains(htOnIndent));
  tree.SetIndent(30);
  EXPECT_EQ(Node(u"abc")->DisplayRect(true).Left, 60 + 19);
  tree.SetImages(nullptr);
  EXPECT_EQ(Node(u"abc")->DisplayRect(true), TRect(60, 38, 60 + width(3), 57));
}

TEST_F(HeadlessTree, AsksForWhatItDraws) {
  tree.SetImages(&images);
  Fill(1000);
  Show();
  EXPECT_EQ(Seen(), "node 0 node 1 node 2 node 3 node 4 ");
  Peer().ResetRequests();
  Fill(1000);
  tree.CustomSort([](TTreeNode*, TTreeNode*, LPARAM) { return 0; }, 0);
  Node(u"node 3")->SetText(u"changed");
  EXPECT_EQ(Peer().GetTextRequests() + Peer().GetImageRequests(), 0);
  screen->Paint();
  EXPECT_LE(Peer().GetTextRequests(), 6);
  EXPECT_LE(Peer().GetImageRequests(), 6);
  EXPECT_EQ(Seen(), "node 0 node 1 node 2 changed node 4 ");
  // A change of one row is one row to paint.
  Peer().ResetRequests();
  Node(u"changed")->SetText(u"again");
  screen->Paint();
  EXPECT_EQ(Peer().GetImageRequests(), 1);
  Peer().ResetRequests();
  Node(u"node 900")->SetText(u"out of sight");
  screen->Paint();
  EXPECT_EQ(Peer().GetImageRequests(), 0);
  // Nothing is drawn within a bracket.
  tree.Items().BeginUpdate();
  Node(u"again")->Delete();
  tree.Invalidate();
  screen->Paint();
  EXPECT_EQ(Peer().GetImageRequests(), 0);
  tree.Items().EndUpdate();
  screen->Paint();
  EXPECT_EQ(Seen(), "node 0 node 1 node 2 node 4 node 5 ");
}

TEST_F(HeadlessTree, DrawsStatesOfNodes) {
  tree.SetImages(&images);
  tree.SetStateImages(&states);
  tree.Build({u"plain", u"cut", u"off", u"target"});
  TTreeNode* const plain = Node(u"plain");
  plain->SetImageIndex(1);
  plain->SetSelectedIndex(2);
  Node(u"cut")->SetImageIndex(0);
  Node(u"cut")->SetCut(true);
  Node(u"cut")->SetOverlayIndex(0);
  Node(u"cut")->SetStateIndex(3);
  Node(u"off")->SetEnabled(false);
  tree.SetDropTargetNode(Node(u"target"));
  Show();
  tree.SetSelected(plain);
  screen->Paint();
  ASSERT_EQ(ImagesOf(plain).size(), 1u);
  EXPECT_EQ(ImagesOf(plain)[0].ImageIndex, 2);
  tree.SetSelected(Node(u"off"));
  screen->Paint();
  EXPECT_EQ(ImagesOf(plain)[0].ImageIndex, 1);
  const std::vector<TDrawOperation> cut = ImagesOf(Node(u"cut"));
  ASSERT_EQ(cut.size(), 2u);
  EXPECT_EQ(cut[0].ImageIndex, 3);
  EXPECT_EQ(cut[1].ImageIndex, 0);
  EXPECT_EQ(cut[1].Overlay, 1);
  EXPECT_EQ(cut[1].State, TImageState::Ghosted);
  const auto colorOf = [&](TStringView text) {
    for (const TDrawOperation& drawn : Peer().GetDrawing())
      if (drawn.Kind == TDrawKind::Text && drawn.Text == text) return drawn.PenColor;
    return TColor(clNone);
  };
  EXPECT_EQ(colorOf(u"target"), ColorToRGB(clHighlightText));
  EXPECT_EQ(colorOf(u"off"), ColorToRGB(clHighlightText)) << "selected";
  tree.SetSelected(plain);
  screen->Paint();
  EXPECT_EQ(colorOf(u"off"), ColorToRGB(clGrayText));
  EXPECT_EQ(colorOf(u"cut"), ColorToRGB(clWindowText));
}

TEST_F(HeadlessTree, ScrollsByRows) {
  Fill(20);
  Show();
  const int height = Peer().GetRowHeight();
  EXPECT_EQ(tree.GetVisibleRowCount(), 100 / height);
  const int seen = tree.GetVisibleRowCount();
  Node(u"node 10")->MakeVisible();
  EXPECT_EQ(tree.GetTopItem(), Node(TString(u"node ") + IntToStr(11 - seen)));
  const TTreeNode* const top = tree.GetTopItem();
  Node(u"node 9")->MakeVisible();
  EXPECT_EQ(tree.GetTopItem(), top) << "it is in sight";
  Node(u"node 2")->MakeVisible();
  EXPECT_EQ(tree.GetTopItem(), Node(u"node 2"));
  tree.SetTopItem(Node(u"node 19"));
  EXPECT_EQ(ScrollTop(), (20 - seen) * height) << "no farther than the end";
  screen->MouseMove(tree.ClientToScreen({50, 50}));
  screen->Wheel(1);
  EXPECT_EQ(ScrollTop() % height, 0);
  EXPECT_LT(ScrollTop(), (20 - seen) * height);
  // What is left is in sight.
  tree.SetTopItem(Node(u"node 19"));
  while (tree.Items().GetCount() > 3) tree.Items().GetLastNode()->Delete();
  screen->Paint();
  EXPECT_EQ(tree.GetTopItem(), Node(u"node 0"));
  // A wide row brings the other bar, once it was seen.
  TTreeNode* const wide = Node(u"node 1");
  wide->SetText(TString(60, u'x'));
  screen->Paint();
  int position = -1, page = 0, range = 0;
  ASSERT_TRUE(Peer().GetScroll(sbHorizontal, &position, &page, &range));
  EXPECT_EQ(range, 19 + 60 * 7 + 4);
  Peer().ScrollLines(sbHorizontal, 2);
  EXPECT_EQ(wide->DisplayRect(true).Left, 19 - 32);
}

TEST_F(HeadlessTree, KeysWalkThroughWhatIsSeen) {
  tree.Build({u"a", u" a1", u"  x", u"b", u"c", u"d", u"e", u"f", u"g", u"h"});
  Show();
  EXPECT_EQ(tree.GetSelected(), Node(u"a")) << "the keyboard needs a node to start from";
  const struct {
    std::uint16_t Key;
    TStringView Selected;
  } cases[] = {
      {vkUp, u"a"},        {vkNext, u"e"}, {vkPrior, u"a"}, {vkPrior, u"a"},  {vkEnd, u"h"},
      {vkNext, u"h"},      {vkHome, u"a"}, {vkRight, u"a"}, {vkRight, u"a1"}, {vkRight, u"a1"},
      {vkMultiply, u"a1"}, {vkDown, u"x"}, {vkLeft, u"a1"}, {vkLeft, u"a1"},  {vkLeft, u"a"},
      {vkSubtract, u"a"},  {vkDown, u"b"}, {vkLeft, u"b"},  {vkAdd, u"b"},
  };
  int step = 0;
  for (const auto& test : cases) {
    SCOPED_TRACE(++step);
    screen->KeyPress(test.Key);
    EXPECT_EQ(tree.GetSelected()->GetText(), test.Selected);
    EXPECT_FALSE(tree.GetSelected()->DisplayRect(false).IsEmpty());
  }
  screen->KeyPress(vkDown, {ssCtrl});
  EXPECT_EQ(tree.GetSelected(), Node(u"b"));
  tree.Items().Clear();
  screen->KeyPress(vkDown);
  screen->KeyPress(vkLeft);
  screen->TypeText(u"x");
  EXPECT_EQ(tree.GetSelected(), nullptr);
}

TEST_F(HeadlessTree, TypedTextLeadsToANode) {
  tree.Build({u"alpha", u"beta", u" hidden", u"Bravo", u"charlie", u"best"});
  Show();
  const struct {
    TStringView Typed;
    TStringView Selected;
  } cases[] = {{u"b", u"beta"},   {u"b", u"Bravo"}, {u"bbb", u"Bravo"}, {u"br", u"Bravo"},
               {u"bes", u"best"}, {u"h", u"best"},  {u"a", u"alpha"},   {u"B", u"beta"}};
  for (const auto& test : cases) {
    SCOPED_TRACE(ToUtf8(test.Typed));
    screen->TypeText(test.Typed);
    EXPECT_EQ(tree.GetSelected()->GetText(), test.Selected);
    screen.Advance(1100);
  }
}

TEST_F(HeadlessTree, TheFieldStandsOverItsNode) {
  tree.Build({u"a", u" deep", u"b"});
  Show();
  // A hidden node is brought to light.
  ASSERT_TRUE(Node(u"deep")->EditText());
  EXPECT_TRUE(Node(u"a")->GetExpanded());
  ASSERT_TRUE(Peer().GetEdit());
  EXPECT_TRUE(Peer().GetEdit()->GetBounds().Contains(Node(u"deep")->DisplayRect(true).Center()));
  screen->TypeText(u"new");
  // A press elsewhere takes the text and selects.
  screen->Click(tree, Node(u"b")->DisplayRect(true).Center());
  EXPECT_EQ(tree.Shape(), "a(new) b");
  EXPECT_EQ(tree.GetSelected(), Node(u"b"));
  // So does scrolling.
  Node(u"b")->EditText();
  screen->TypeText(u"taken");
  Fill(20);
  tree.SetTopItem(Node(u"node 8"));
  EXPECT_FALSE(tree.IsEditing());
  EXPECT_NE(Node(u"taken"), nullptr);
  // A move of any node cancels.
  tree.SetTopItem(Node(u"a"));
  Node(u"a")->EditText();
  tree.Take();
  Node(u"node 1")->MoveTo(Node(u"a"), naAddChild);
  EXPECT_THAT(tree.Take(), ElementsAre("edit cancelled a"));
  EXPECT_FALSE(tree.IsEditing());
}

TEST_F(HeadlessTree, ANewWindowLooksTheSame) {
  Fill(30);
  tree.Items().AddChild(Node(u"node 7"), u"below");
  Show();
  Node(u"node 7")->Expand(false);
  tree.SetSelected(Node(u"below"));
  tree.SetTopItem(Node(u"node 6"));
  screen->Paint();
  const TString picture = screen.Picture(form);
  tree.Take();
  tree.RecreateWnd();
  EXPECT_EQ(screen.Picture(form), picture);
  EXPECT_EQ(tree.GetTopItem(), Node(u"node 6"));
  form.RecreateWnd();
  EXPECT_EQ(screen.Picture(form), picture);
  EXPECT_THAT(tree.Take(), IsEmpty());
  // Its top node goes meanwhile.
  tree.SetParent(nullptr);
  Node(u"node 6")->Delete();
  tree.SetParent(&form);
  screen->Paint();
  EXPECT_EQ(tree.GetTreePeer()->GetTopNode(), tree.GetTopItem());
}

TEST_F(HeadlessTree, PressesThatLeadNowhere) {
  tree.Build({u"a", u" a1", u"b"});
  Show();
  tree.SetSelected(Node(u"b"));
  tree.Take();
  const TPoint onA = Node(u"a")->DisplayRect(true).Center();
  // Beside a node, below the last one, with the middle button.
  screen->Click(tree, {190, 10});
  screen->Click(tree, {50, 90});
  screen->Click(tree, onA, {}, mbMiddle);
  EXPECT_EQ(tree.GetSelected(), Node(u"b"));
  tree.SetRowSelect(true);
  screen->Click(tree, {190, 10});
  EXPECT_EQ(tree.GetSelected(), Node(u"a"));
  // The node under a pressed mouse goes: nothing is dragged.
  screen->MouseMove(tree.ClientToScreen(onA));
  screen->MouseDown();
  Node(u"a")->Delete();
  screen->MouseMove(tree.ClientToScreen(onA + TPoint(40, 40)));
  screen->MouseUp();
  EXPECT_EQ(tree.Shape(), "b");
}

}  // namespace
}  // namespace oak::tests
