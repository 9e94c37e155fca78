// Images that come to a source while controls show it, as the shell's icons do.
#include <algorithm>

#include "oak/framework/ImageList.h"
#include "oak/framework/ListView.h"
#include "oak/framework/TreeView.h"
#include "oak/framework/win32/ImageListWin32.h"
#include "tests/framework/win32/Win32Fixture.h"

namespace oak::tests {
namespace {

/// Has an image for each number that was asked for.
class TGrowingSource : public IImageSource {
 public:
  int GetCount() const override { return Count; }
  TSize GetImageSize() const override { return {16, 16}; }
  bool GetImage(int, TBitmap& image) const override {
    image = TBitmap(16, 16);
    image.Fill(clRed);
    return true;
  }
  int Count = 1;
};

class LateImages : public TWin32Test {
 protected:
  LateImages() { images.SetSource(source); }

  /// The image that is wanted now; it comes to the source with the question.
  int Ask() {
    source->Count = std::max(source->Count, wanted + 1);
    return wanted;
  }
  /// As many images as the control itself can draw.
  void ExpectAfterDrawing(TWinControl& control, UINT message, WPARAM kind) {
    Pump();
    wanted += 3;
    control.Invalidate();
    ::UpdateWindow(control.GetHandle());
    const LRESULT list = ::SendMessageW(control.GetHandle(), message, kind, 0);
    EXPECT_EQ(ImageListCalls().GetImageCount(reinterpret_cast<HIMAGELIST>(list)), wanted + 1);
  }

  const std::shared_ptr<TGrowingSource> source = std::make_shared<TGrowingSource>();
  TImageList images;
  int wanted = 0;
  TTestForm form;
};

TEST_F(LateImages, AreThereWhenTheControlDraws) {
  TCustomListView list(nullptr);
  list.SetSmallImages(&images);
  list.SetLargeImages(&images);
  list.Items().AddItem(std::make_unique<TListItem>(&list.Items()));
  list.OnGetImageIndex = [this](TObject*, TListItem* row) { row->SetImageIndex(Ask()); };
  list.SetBounds(0, 0, 200, 100);
  list.SetParent(&form);
  TCustomTreeView tree(nullptr);
  tree.SetImages(&images);
  tree.Items().Add(nullptr, u"node");
  tree.OnGetImageIndex = [this](TObject*, TTreeNode* node) { node->SetImageIndex(Ask()); };
  tree.SetBounds(0, 110, 200, 100);
  tree.SetParent(&form);
  form.Show();
  ExpectAfterDrawing(tree, TVM_GETIMAGELIST, TVSIL_NORMAL);
  ExpectAfterDrawing(list, LVM_GETIMAGELIST, LVSIL_NORMAL);
  list.SetViewStyle(vsList);
  ExpectAfterDrawing(list, LVM_GETIMAGELIST, LVSIL_SMALL);
}

}  // namespace
}  // namespace oak::tests
