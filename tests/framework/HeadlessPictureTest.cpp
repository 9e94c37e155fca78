#include "oak/framework/headless/HeadlessPicture.h"

#include "oak/framework/ImageList.h"
#include "oak/framework/ListView.h"
#include "oak/framework/Menus.h"
#include "oak/framework/TreeView.h"
#include "oak/framework/headless/HeadlessMenu.h"
#include "oak/framework/headless/HeadlessPictureGrid.h"
#include "tests/framework/HeadlessProbe.h"

namespace oak::tests {
namespace {

using testkit::THeadlessScreen;

/// A control that draws what a test says.
class TDrawn : public TCustomControl {
 public:
  TDrawn(TWinControl& parent, const TRect& bounds, std::function<void(TCanvas&, const TRect&)> draw)
      : TCustomControl(nullptr) {
    SetBounds(bounds.Left, bounds.Top, bounds.Width(), bounds.Height());
    SetColor(clWindow);
    OnPaint = [draw = std::move(draw)](TObject*, TCanvas& canvas, const TRect& clip) {
      draw(canvas, clip);
    };
    SetParent(&parent);
  }
  ~TDrawn() override { BeginDestroy(); }
};

TEST(HeadlessPicture, AFormWithControls) {
  THeadlessScreen screen(FailWith);
  TProbeForm form(u"Search");
  form.SetBounds(0, 0, 300, 190);
  TLabel label;
  label.SetParent(&form);
  label.SetBounds(8, 8, 60, 23);
  label.SetCaption(u"&Name:");
  TEdit edit;
  edit.SetParent(&form);
  edit.SetBounds(70, 8, 130, 23);
  edit.SetText(u"*.txt");
  TButton find;
  find.SetParent(&form);
  find.SetBounds(210, 7, 66, 25);
  find.SetCaption(u"&Find");
  TMemo memo;
  memo.SetParent(&form);
  memo.SetBounds(8, 40, 268, 68);
  memo.SetText(u"first\r\nsecond\r\nthird\r\nfourth\r\nfifth\r\nsixth");
  TButton close;
  close.SetParent(&form);
  close.SetBounds(200, 118, 76, 25);
  close.SetCaption(u"Close");
  form.Show();
  find.SetFocus();
  const TString expected =
      uR"(
┌─ Search ────────────────────────────────┐
│ Name:    [*.txt            ] [* Find  ] │
│ ┌─────────────────────────────────────┐ │
│ │first                               |│ │
│ │second                              #│ │
│ │third                               #│ │
│ │fourth                              |│ │
│ └─────────────────────────────────────┘ │
│                             [  Close  ] │
└─────────────────────────────────────────┘
)";
  EXPECT_EQ(u"\n" + screen.Picture(form), expected);
  EXPECT_EQ(screen.Picture(form), screen.Picture(form));
}

TEST(HeadlessPicture, WindowsCoverEachOtherAndWhatIsScrolledOutIsCut) {
  THeadlessScreen screen(FailWith);
  TProbeForm form(u"Over");
  form.SetBounds(0, 0, 240, 140);
  const auto fill = [](TStringView text) {
    return [text](TCanvas& canvas, const TRect&) {
      for (int y = 0; y < 100; y += 20) canvas.TextOut(-7, y, text);
    };
  };
  TDrawn below(form, {0, 0, 224, 100}, fill(u"0123456789abcdefghijklmnopqrstuvwxyz"));
  TDrawn above(form, {56, 20, 112, 60}, fill(u"ABCDEFGHIJKLMNOP"));
  form.Show();
  EXPECT_EQ(u"\n" + screen.Picture(form),
            uR"(
┌─ Over ─────────────────────────┐
│123456789abcdefghijklmnopqrstuvw│
│12345678BCDEFGHIhijklmnopqrstuvw│
│12345678BCDEFGHIhijklmnopqrstuvw│
│123456789abcdefghijklmnopqrstuvw│
│123456789abcdefghijklmnopqrstuvw│
└────────────────────────────────┘
)");
}

TEST(HeadlessPicture, AListAndATree) {
  THeadlessScreen screen(FailWith);
  TImageList images(nullptr, 16, 16);
  for (int i = 0; i < 2; ++i) images.Add(TBitmap(16, 16));
  TProbeForm form(u"Files");
  form.SetBounds(0, 0, 520, 210);
  TCustomTreeView tree;
  tree.SetImages(&images);
  tree.SetBounds(0, 0, 180, 150);
  tree.SetParent(&form);
  TTreeNode* const disk = tree.Items().Add(nullptr, u"Disk");
  disk->SetImageIndex(0);
  for (const TStringView name : {u"docs", u"src"}) {
    TTreeNode* const node = tree.Items().AddChild(disk, TString(name));
    node->SetImageIndex(1);
    node->SetHasChildren(name == u"src");
  }
  disk->Expand(false);
  TCustomListView list;
  list.SetSmallImages(&images);
  list.SetViewStyle(vsReport);
  list.SetCheckboxes(true);
  list.SetBounds(190, 0, 310, 150);
  list.SetParent(&form);
  const auto addColumn = [&](TStringView caption, int width, TAlignment alignment) {
    TListColumn* const column = list.Columns().Add();
    column->SetCaption(TString(caption));
    column->SetWidth(width);
    column->SetAlignment(alignment);
    return column;
  };
  addColumn(u"Name", 160, taLeftJustify)->SetSortMark(TListSortMark::Up);
  addColumn(u"Size", 80, taRightJustify);
  for (int i = 0; i < 12; ++i) {
    TListItem* const item = list.Items().Add();
    item->SetCaption(u"file " + IntToStr(i) + (i == 2 ? u" with a long name" : u""));
    item->GetSubItems().Add(IntToStr(i * 100));
    item->SetImageIndex(i % 2);
    item->SetChecked(i == 1);
  }
  form.Show();
  tree.SetSelected(disk->GetFirstChild());
  list.SetFocus();
  list.SetSelected(list.Items()[1]);
  THeadlessPictureOptions options;
  options.ImageSign = [](const TDrawOperation& image) {
    return image.ImageIndex == 1 ? TString(u"@") : TString(u"=");
  };
  EXPECT_EQ(u"\n" + TextPicture(form, options),
            uR"(
┌─ Files ────────────────────────────────────────────────────────────────┐
│┌────────────────────────┐ ┌───────────────────────────────────────────┐│
││v  = Disk               │ │Name                 ^│      Size│        |││
││      @ docs            │ │[ ]=file 0                       0        #││
││   >  @ src             │ │[x]*file 1                     100        #││
││                        │ │[ ]=file 2 with a ...          200        #││
││                        │ │[ ]@file 3                     300        |││
││                        │ │[ ]=file 4                     400        |││
││                        │ │[ ]@file 5                     500        |││
││                        │ │[ ]=file 6                     600        |││
│└────────────────────────┘ └───────────────────────────────────────────┘│
└────────────────────────────────────────────────────────────────────────┘
)");
}

// How wide the rows are is known when they are drawn.
TEST(HeadlessPicture, ABarThatComesUpLeavesTheSelectedNodeInSight) {
  THeadlessScreen screen(FailWith);
  TProbeForm form;
  TCustomTreeView tree;
  tree.SetBounds(0, 0, 100, 150);
  tree.SetParent(&form);
  for (int i = 0; i < 30; ++i) tree.Items().Add(nullptr, IntToStr(i));
  TTreeNode* const last = tree.Items().Add(nullptr, u"wider than the tree has room for it");
  form.Show();
  tree.SetSelected(last);
  screen->Paint();
  ASSERT_FALSE(last->DisplayRect(false).IsEmpty());
  EXPECT_LE(last->DisplayRect(false).Bottom, tree.GetClientRect().Bottom);
}

TEST(HeadlessPicture, AnOpenMenuLiesOverTheForm) {
  THeadlessScreen screen(FailWith);
  TProbeForm form(u"Menu");
  form.SetBounds(0, 0, 260, 150);
  TPopupMenu menu;
  menu.Items().Add(u"&Open")->SetDefault(true);
  menu.Items().Add(u"-");
  menu.Items().Add(u"Send to")->Add(u"Desktop");
  TMenuItem& checked = *menu.Items().Add(u"Checked");
  checked.SetChecked(true);
  checked.SetShortCut(ShortCut(vkF5, {}));
  form.Show();
  TString picture, without;
  screen->OnMenu = [&](THeadlessMenuSession& open) {
    open.GetEntries(u"Send to");
    picture = screen.Picture(form);
    without = TextPicture(form, {.Popups = false, .ImageSign = nullptr});
    open.Cancel();
  };
  menu.Popup(20, 40);
  EXPECT_EQ(u"\n" + picture,
            uR"(
┌─ Menu ────────────────────────────┐
│  ┌───────────────────┐            │
│  │   Open            │            │
│  │───────────────────│┌─────────────────┐
│  │  *Send to       > ││   Desktop       │
│  │√  Checked      F5 │└─────────────────┘
│  └───────────────────┘            │
└───────────────────────────────────┘
)");
  EXPECT_EQ(without, screen.Picture(form));
}

TEST(HeadlessPicture, CellsOfOddText) {
  struct TCase {
    TString Text;
    std::vector<TString> Cells;
  };
  const TCase cases[] = {{u"", {}},
                         {u"a\u0301b", {u"a\u0301", u"b"}},
                         {u"\u4E2Dx", {u"\u4E2D", u"", u"x"}},
                         {u"\u0301", {}},
                         {u"a\tb", {u"a", u"b"}}};
  for (const TCase& test : cases) EXPECT_EQ(CellsOfText(test.Text), test.Cells);
  EXPECT_EQ(CellsOfText(TString(1, char16_t{0xD83D})).size(), 1u);  // half of a pair
}

}  // namespace
}  // namespace oak::tests
