// What is selected can be seen and read: with and without the keyboard, light and dark.
#include <algorithm>
#include <map>

#include "oak/framework/ListView.h"
#include "oak/framework/Styles.h"
#include "oak/framework/TreeView.h"
#include "oak/framework/win32/System.h"
#include "tests/framework/win32/Win32Fixture.h"

namespace oak::tests {
namespace {

class TMarksForm : public TTestForm {
 public:
  TMarksForm() {
    List.SetViewStyle(vsReport);
    List.SetRowSelect(true);
    for (const int width : {120, 60}) List.Columns().Add()->SetWidth(width);
    for (int i = 0; i < 4; ++i) {
      auto row = std::make_unique<TListItem>(&List.Items());
      row->SetCaption(u"r");
      List.Items().AddItem(std::move(row));
    }
    List.SetBounds(150, 0, 220, 150);
    List.SetParent(this);
    Tree.SetHideSelection(false);
    Tree.Items().Add(nullptr, u"selected node");
    Tree.Items().Add(nullptr, u"another node");
    Tree.SetBounds(0, 0, 140, 150);
    Tree.SetParent(this);
    Edit.SetBounds(0, 160, 100, 24);
    Edit.SetParent(this);
    List.SetSelected(List.Items()[1]);
    Tree.SetSelected(Tree.Items().GetFirstNode());
  }
  TCustomListView List{nullptr};
  TCustomTreeView Tree{nullptr};
  TEdit Edit;
};

class MarksWindows : public TWin32Test {
 protected:
  ~MarksWindows() override { TStyleManager::TrySetStyle(u"System"); }

  TBitmap Look(TStringView name) {
    Pump();
    TBitmap picture = TakeScreenshot(form.GetHandle());
    Keep(picture, name);
    return picture;
  }
  TColor PixelOf(const TBitmap& picture, const TWinControl& control, TPoint point) {
    const TPoint at = control.ClientToScreen(point) - form.GetBoundsRect().TopLeft();
    return picture.GetPixel(at.X, at.Y);
  }
  /// Far behind the text: of the cell with the caption, and of the next one.
  void ExpectWholeRow(const TBitmap& picture) {
    const TRect row = form.List.Items()[1]->DisplayRect(drBounds);
    const TRect other = form.List.Items()[2]->DisplayRect(drBounds);
    const TColor mark = PixelOf(picture, form.List, {110, row.Center().Y});
    EXPECT_NE(mark, PixelOf(picture, form.List, {110, other.Center().Y}));
    EXPECT_EQ(mark, PixelOf(picture, form.List, {170, row.Center().Y}));
  }
  /// The most frequent colour of a node's label is its ground; the text has to stand out from it.
  void ExpectReadable(const TBitmap& picture) {
    const TRect label = form.Tree.Items().GetFirstNode()->DisplayRect(true);
    std::map<TColor, int> colors;
    for (int y = label.Top; y < label.Bottom; ++y)
      for (int x = label.Left; x < label.Right; ++x) ++colors[PixelOf(picture, form.Tree, {x, y})];
    const auto ground = std::max_element(colors.begin(), colors.end(),
                                         [](auto& a, auto& b) { return a.second < b.second; });
    const bool dark = win32::IsDarkColor(ground->first);
    EXPECT_TRUE(std::any_of(colors.begin(), colors.end(),
                            [&](auto& color) { return win32::IsDarkColor(color.first) != dark; }));
  }

  TMarksForm form;
};

TEST_F(MarksWindows, CoverTheRowAndLeaveTheTextReadable) {
  form.Show();
  for (const char16_t* style : {u"System", u"Dark"}) {
    SCOPED_TRACE(ToUtf8(style));
    ASSERT_TRUE(TStyleManager::TrySetStyle(style));
    form.List.SetFocus();
    const TBitmap focused = Look(TString(u"marks-list-") + style);
    ExpectWholeRow(focused);
    ExpectReadable(focused);
    form.Edit.SetFocus();
    const TBitmap unfocused = Look(TString(u"marks-none-") + style);
    ExpectWholeRow(unfocused);
    ExpectReadable(unfocused);
    form.Tree.SetFocus();
    ExpectReadable(Look(TString(u"marks-tree-") + style));
  }
}

}  // namespace
}  // namespace oak::tests
