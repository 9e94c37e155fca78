// Drag and drop between a tree and a list, with data and targets as programs have them.
#include "oak/platform/Api.h"
#include "tests/EmptyObjects.h"
#include "tests/controls/ControlsFixture.h"

namespace oak::tests {
namespace {

using ::testing::Contains;
using ::testing::ElementsAre;

constexpr DWORD EffectCopy = 1;
constexpr DWORD EffectMove = 2;
constexpr DWORD KeyCtrl = 8;

/// Names of rows or nodes, for targets of the same program.
struct ICarriedNames : IUnknown {
  static constexpr GUID Iid{
      0x6b1a53e2, 0x8f0d, 0x4c39, {0x9a, 0x51, 0x27, 0x3b, 0xd1, 0x40, 0x76, 0x0c}};
  virtual const std::vector<TString>& GetNames() = 0;
};

class TCarriedNames : public TEmptyDataObject<ICarriedNames> {
 public:
  explicit TCarriedNames(std::vector<TString> names) : fNames(std::move(names)) { ++Count; }
  ~TCarriedNames() override { --Count; }
  static inline int Count = 0;

  const std::vector<TString>& GetNames() override { return fNames; }

 private:
  std::vector<TString> fNames;
};

/// Takes what is dropped, and tells where; writes down the way.
class TDropLog : public TInterfacedObject<IDropTarget> {
 public:
  std::function<void(TPoint screen)> OnOver;
  std::function<void(TPoint screen, const std::vector<TString>& names, DWORD effect)> OnDropped;
  TLog Log;

  HRESULT STDMETHODCALLTYPE DragEnter(IDataObject* data, DWORD keys, POINTL point,
                                      DWORD* effect) override {
    fData = Ref<IDataObject>::Share(data);
    return Note("enter", keys, point, effect);
  }
  HRESULT STDMETHODCALLTYPE DragOver(DWORD keys, POINTL point, DWORD* effect) override {
    return Note("over", keys, point, effect);
  }
  HRESULT STDMETHODCALLTYPE DragLeave() override {
    fData.Reset();
    Log.push_back("leave");
    return S_OK;
  }
  HRESULT STDMETHODCALLTYPE Drop(IDataObject* data, DWORD keys, POINTL point,
                                 DWORD* effect) override {
    fData.Reset();
    *effect = keys & KeyCtrl ? EffectCopy : EffectMove;
    Ref<ICarriedNames> names;
    if (SUCCEEDED(data->QueryInterface(ICarriedNames::Iid, names.PutVoid())) && OnDropped)
      OnDropped({point.x, point.y}, names->GetNames(), *effect);
    Log.push_back("drop");
    return S_OK;
  }

 private:
  HRESULT Note(const char* what, DWORD keys, POINTL point, DWORD* effect) {
    if (Log.empty() || Log.back() != what) Log.push_back(what);
    *effect = keys & KeyCtrl ? EffectCopy : EffectMove;
    if (OnOver) OnOver({point.x, point.y});
    return S_OK;
  }
  Ref<IDataObject> fData;
};

/// A tree on the left, a list on the right; each gives and takes.
class DragAndDrop : public TControlsTest {
 protected:
  DragAndDrop() {
    PlaceTree();
    PlaceList();
    list->OnBeginDrag = [this](TMouseButton) {
      std::vector<TString> names;
      for (TListItem* item : list->Items())
        if (item->GetSelected()) names.push_back(item->GetCaption());
      Begin(*list, std::move(names));
      if (result == DRAGDROP_S_DROP && effect == EffectMove) list->DeleteSelected();
    };
    tree->OnBeginDrag = [this](TTreeNode* node, TMouseButton) { Begin(*tree, {node->GetText()}); };
    treeTarget->OnOver = [this](TPoint at) {
      const TPoint point = tree->ScreenToClient(at);
      tree->SetDropTargetNode(tree->GetNodeAt(point.X, point.Y));
    };
    treeTarget->OnDropped = [this](TPoint, const std::vector<TString>& names, DWORD) {
      for (const TString& name : names) tree->Items().AddChild(tree->GetDropTargetNode(), name);
      tree->SetDropTargetNode(nullptr);
    };
    listTarget->OnDropped = [this](TPoint at, const std::vector<TString>& names, DWORD) {
      const TPoint point = list->ScreenToClient(at);
      TListItem* const item = list->GetItemAt(point.X, point.Y);
      for (const TString& name : names)
        list->Items().Insert(item ? item->GetIndex() : -1)->SetCaption(name);
    };
    Show();
    list->SetFocus();
  }
  ~DragAndDrop() override {
    form.reset();
    // A target whose window went in the middle of a drag may not have heard of the end.
    treeTarget.Reset();
    listTarget.Reset();
    EXPECT_EQ(TCarriedNames::Count, 0);
  }
  void PlaceTree() {
    tree = new TTreeUnderTest;
    tree->SetBounds(10, 10, 200, 240);
    tree->SetParent(form.get());
    tree->Build({u"north", u"east", u"south"});
    tree->SetDropTarget(treeTarget.Get());
  }
  void PlaceList() {
    list = new TListUnderTest;
    list->SetBounds(220, 10, 300, 240);
    list->SetViewStyle(vsReport);
    list->SetParent(form.get());
    list->AddColumns({200});
    list->Fill(5);
    list->SetDropTarget(listTarget.Get());
  }
  void Begin(TWinControl& control, std::vector<TString> names) {
    ++drags;
    const auto data = Ref<IDataObject>::Adopt(new TCarriedNames(std::move(names)));
    const TLifeGuard guard = control.GetLifeGuard();
    result = WidgetSet().DoDragDrop(control, data.Get(), nullptr, EffectCopy | EffectMove, &effect);
    survived = guard.IsAlive();
  }

  Ref<TDropLog> treeTarget = Ref<TDropLog>::Adopt(new TDropLog);
  Ref<TDropLog> listTarget = Ref<TDropLog>::Adopt(new TDropLog);
  TTreeUnderTest* tree = nullptr;
  TListUnderTest* list = nullptr;
  HRESULT result = E_FAIL;
  DWORD effect = 99;
  int drags = 0;
  bool survived = false;
};

TEST_F(DragAndDrop, RowsGoToANode) {
  list->Row(1)->SetSelected(true);
  list->Row(3)->SetSelected(true);
  TTreeNode* const east = tree->Find(u"east");
  screen->Drag(*list, list->At(3), *tree, tree->At(east));
  EXPECT_EQ(drags, 1);
  EXPECT_EQ(result, DRAGDROP_S_DROP);
  EXPECT_EQ(effect, EffectMove);
  ASSERT_EQ(east->GetCount(), 2);
  EXPECT_EQ(east->GetFirstChild()->GetText(), u"row 1");
  EXPECT_EQ(list->Items().GetCount(), 3);
  EXPECT_EQ(tree->GetDropTargetNode(), nullptr);
  EXPECT_EQ(treeTarget->Log.front(), "enter");
  EXPECT_EQ(treeTarget->Log.back(), "drop");
  EXPECT_THAT(list->Take(), Contains("drag"));
  ExpectShown(*list);
  ExpectShown(*tree);
  // The mouse is free again.
  screen->Click(*list, list->At(2));
  EXPECT_EQ(list->Selection(), "[2]");
}

TEST_F(DragAndDrop, ANodeGoesBetweenRows) {
  screen->Drag(*tree, tree->At(tree->Find(u"south")), *list, list->At(2), {ssCtrl});
  EXPECT_EQ(drags, 1);
  EXPECT_EQ(effect, EffectCopy);
  EXPECT_EQ(list->Row(2)->GetCaption(), u"south");
  ExpectShown(*list);
  ExpectShown(*tree);
  // Within one control.
  screen->Drag(*tree, tree->At(tree->Find(u"south")), *tree, tree->At(tree->Find(u"north")));
  EXPECT_NE(tree->Find(u"north|south"), nullptr);
  ExpectShown(*tree);
}

TEST_F(DragAndDrop, RightButtonAndEscape) {
  screen->Drag(*list, list->At(1), *tree, tree->At(tree->Find(u"north")), {}, mbRight);
  EXPECT_EQ(drags, 1);
  EXPECT_EQ(result, DRAGDROP_S_DROP);
  EXPECT_NE(tree->Find(u"north|row 1"), nullptr);
  EXPECT_THAT(list->Take(), Contains("drag right"));

  list->OnBeginDrag = [this](TMouseButton) {
    screen->Later([this] { screen->KeyPress(vkEscape); });
    Begin(*list, {u"lost"});
  };
  treeTarget->Log.clear();
  const TPoint from = list->At(2);
  screen->MouseDown(*list, from);
  screen->MouseMove(*list, from + TPoint(40, 20));
  EXPECT_EQ(result, DRAGDROP_S_CANCEL);
  EXPECT_EQ(effect, 0u);
  screen->MouseUp();
  EXPECT_EQ(drags, 2);
  EXPECT_THAT(treeTarget->Log, ::testing::IsEmpty());
}

TEST_F(DragAndDrop, TargetsComeAndGo) {
  tree->SetDropTarget(nullptr);
  screen->Drag(*list, list->At(1), *tree, tree->At(tree->Find(u"north")));
  EXPECT_EQ(effect, 0u);
  EXPECT_TRUE(treeTarget->Log.empty());
  tree->SetDropTarget(treeTarget.Get());
  tree->RecreateWnd();
  screen->Drain();
  screen->Drag(*list, list->At(1), *tree, tree->At(tree->Find(u"north")));
  EXPECT_NE(tree->Find(u"north|row 1"), nullptr);
}

TEST_F(DragAndDrop, WhatMayHappenInTheMiddle) {
  struct TCase {
    const char* What;
    std::function<void()> Do;
  };
  const std::vector<TCase> cases{
      {"the source's window is made anew", [&] { list->RecreateWnd(); }},
      {"the target's window is made anew", [&] { tree->RecreateWnd(); }},
      {"the rows go", [&] { list->Items().Clear(); }},
      {"the target goes", [&] { delete std::exchange(tree, nullptr); }},
      {"the source goes", [&] { delete std::exchange(list, nullptr); }},
      {"the form goes", [&] { tree = nullptr, list = nullptr, form.reset(); }},
  };
  for (const TCase& one : cases) {
    SCOPED_TRACE(one.What);
    if (list->Items().GetCount() == 0) list->Fill(5);
    bool done = false;
    treeTarget->OnDropped = nullptr;
    treeTarget->OnOver = [&](TPoint) {
      if (!std::exchange(done, true)) one.Do();
    };
    if (!tree) PlaceTree();
    screen->Drain();
    drags = 0;
    list->OnBeginDrag = [this](TMouseButton) { Begin(*list, {u"x"}); };
    screen->Drag(*list, list->At(1), *tree, tree->At(tree->Items().GetFirstNode()));
    EXPECT_TRUE(done);
    EXPECT_EQ(drags, 1);
    EXPECT_EQ(survived, list != nullptr);
    if (!list && form) PlaceList();
    screen->Drain();
  }
}

}  // namespace
}  // namespace oak::tests
