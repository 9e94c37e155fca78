// A form on its way between monitors of different density.
#include "tests/controls/ControlsFixture.h"

namespace oak::tests {
namespace {

/// Sizes on the screen that must follow the density.
struct TSizes {
  int RowHeight = 0;
  int NodeHeight = 0;
  int Indent = 0;
  std::vector<int> Columns;
  std::vector<TRect> Bounds;
  friend bool operator==(const TSizes&, const TSizes&) = default;
};

/// A form as explorers are: a line to type in above, a tree, a splitter, a list.
class Density : public TControlsTest {
 protected:
  Density() {
    form->SetBounds(0, 0, 480, 300);  // twice as large it still fits the screen
    Place(*top, {0, 0, 100, 32}, alTop);
    edit->SetParent(top);
    edit->SetBounds(40, 4, 50, 24);
    edit->SetAnchors({akLeft, akTop, akRight});
    Place(*tree, {0, 0, 160, 100}, alLeft);
    Place(*splitter, {160, 0, 166, 100}, alLeft);
    Place(*list, {0, 0, 100, 100}, alClient);
    tree->SetImages(images.get());
    list->SetSmallImages(images.get());
    tree->Items().AddChild(tree->Items().Add(nullptr, u"root"), u"child");
    tree->Find(u"root")->Expand(false);
    list->SetViewStyle(vsReport);
    list->AddColumns({100, 60, 1});
    list->Columns()[1]->SetMinWidth(50);
    list->Columns()[1]->SetMaxWidth(70);
    list->Columns()[2]->SetMaxWidth(1);  // hidden
    list->Fill(20);
    Show();
  }
  ~Density() override { form.reset(); }

  void Place(TControl& control, const TRect& bounds, TAlign align) {
    control.SetBounds(bounds.Left, bounds.Top, bounds.Width(), bounds.Height());
    control.SetAlign(align);
    control.SetParent(form.get());
  }
  /// As an application does it: pictures of the size that the density asks for.
  void MoveTo(int pixelsPerInch) {
    screen->SetPixelsPerInch(*form, pixelsPerInch);
    const std::unique_ptr<TImageList> made = MakeImages(form->ScaledPixels(16), 4);
    images->SetSize(made->GetWidth(), made->GetHeight());
    images->Assign(made.get());
    screen->Drain();
    screen->Paint();
  }
  TSizes Measure() {
    TSizes sizes;
    TTreeNode* const root = tree->Find(u"root");
    sizes.RowHeight = list->Row(1)->DisplayRect(drBounds).Height();
    sizes.NodeHeight = root->DisplayRect(false).Height();
    sizes.Indent = tree->Find(u"root|child")->DisplayRect(true).Left - root->DisplayRect(true).Left;
    for (const TShownColumn& column : screen->ColumnsOf(*list))
      sizes.Columns.push_back(column.Width);
    for (TControl* control : std::vector<TControl*>{form.get(), top, edit, tree, splitter, list})
      sizes.Bounds.push_back(control->GetBoundsRect());
    return sizes;
  }

  std::unique_ptr<TImageList> images = MakeImages(16, 4);
  TPanel* top = new TPanel;
  TEdit* edit = new TEdit;
  TTreeUnderTest* tree = new TTreeUnderTest;
  TSplitter* splitter = new TSplitter;
  TListUnderTest* list = new TListUnderTest;
};

TEST_F(Density, AllOfTheFormFollows) {
  const TSizes first = Measure();
  EXPECT_EQ(first.Columns, (std::vector{100, 60, 1}));
  for (const int ppi : {144, 192, 120}) {
    SCOPED_TRACE(ppi);
    MoveTo(ppi);
    const auto scaled = [&](int length) { return MulDiv(length, ppi, 96); };
    EXPECT_EQ(form->GetPixelsPerInch(), ppi);
    EXPECT_EQ(form->GetWidth(), scaled(480));
    EXPECT_EQ(top->GetHeight(), scaled(32));
    EXPECT_EQ(edit->GetHeight(), scaled(24));
    EXPECT_NEAR(top->GetWidth() - edit->GetBoundsRect().Right,
                scaled(first.Bounds[1].Width() - first.Bounds[2].Right), 1);
    EXPECT_EQ(tree->GetWidth(), scaled(160));
    EXPECT_EQ(splitter->GetWidth(), scaled(6));
    EXPECT_EQ(list->GetBoundsRect().Right, form->GetClientSize().Width);
    for (const TWinControl* control :
         std::initializer_list<const TWinControl*>{top, edit, tree, list}) {
      EXPECT_EQ(screen->BoundsOf(*control), control->GetBoundsRect());
      EXPECT_EQ(control->GetFont().GetPixelsPerInch(), ppi);
    }
    const TSizes sizes = Measure();
    EXPECT_EQ(sizes.Columns, (std::vector{scaled(100), scaled(60), 1}));
    EXPECT_EQ(list->Columns()[1]->GetMinWidth(), scaled(50));
    EXPECT_EQ(list->Columns()[1]->GetMaxWidth(), scaled(70));
    EXPECT_NEAR(sizes.Indent, scaled(19), 1);  // scaled step by step
    // Rows hold a line of the larger font and the larger picture; how much more is the system's.
    EXPECT_GE(sizes.RowHeight, scaled(16));
    EXPECT_NEAR(sizes.RowHeight, scaled(first.RowHeight), scaled(first.RowHeight) / 6);
    EXPECT_GE(sizes.NodeHeight, scaled(16) - 1);
    EXPECT_NEAR(sizes.NodeHeight, scaled(first.NodeHeight), scaled(first.NodeHeight) / 6);
    EXPECT_EQ(screen->RowOf(*list, 1).Cells[0], u"row 1");
    ExpectShown(*tree);
  }
  MoveTo(96);
  EXPECT_EQ(Measure().Bounds, first.Bounds);
  EXPECT_EQ(Measure(), first);
}

TEST_F(Density, TheUserWorksOnThere) {
  MoveTo(144);
  screen->Click(*list, list->At(2));
  EXPECT_EQ(list->Selection(), "[2]");
  screen->Drag(*splitter, {3, 50}, *splitter, {43, 50});
  EXPECT_EQ(tree->GetWidth(), 240 + 40);
  EXPECT_EQ(screen->BoundsOf(*list).Left, 240 + 40 + 9);
  // Not narrower than the least size, which has grown as well.
  screen->Drag(*splitter, {3, 50}, *splitter, {-277, 50});
  EXPECT_EQ(splitter->GetMinSize(), 45);
  EXPECT_EQ(tree->GetWidth(), 45);
}

TEST_F(Density, WhatComesLaterIsScaledOnItsWayIn) {
  MoveTo(192);
  TPanel panel;
  TEdit inside;
  inside.SetParent(&panel);
  inside.SetBounds(5, 6, 50, 20);
  panel.SetBounds(10, 10, 100, 40);
  panel.SetParent(form.get());
  EXPECT_EQ(panel.GetBoundsRect(), TRect(20, 20, 220, 100));
  EXPECT_EQ(inside.GetBoundsRect(), TRect(10, 12, 110, 52));
  EXPECT_EQ(screen->BoundsOf(inside), inside.GetBoundsRect());
  EXPECT_EQ(inside.GetFont().GetPixelsPerInch(), 192);
}

}  // namespace
}  // namespace oak::tests
