// The example worked by mouse and keys, over real files.
#include "examples/explorer/ExplorerForm.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <set>

#include "oak/framework/headless/HeadlessMenu.h"
#include "oak/namespace/OakItemIdList.h"
#include "oak/platform/portable/ShellHooks.h"
#include "testkit/HeadlessForms.h"
#include "tests/framework/TempFolder.h"

namespace oak::tests {
namespace {

using testing::ElementsAre;
using TNames = std::set<std::string>;

class Explorer : public testing::Test {
 protected:
  Explorer() {
    std::filesystem::create_directories(folder.Native("inner/deep"));
    folder.Write("a.txt", "first");
    folder.Write("b.txt", "second");
    form.Show();
    GoTo("");
    form.GetList().SetFocus();
  }
  ~Explorer() override { SetShellHooks({}); }

  Ref<IItemIdList> Place(const std::string& name) {
    return TOakItemIdList::Parse(folder.Path(name), nullptr, true);
  }
  void GoTo(const std::string& name) {
    form.GoTo(Place(name));
    screen.Drain();
  }
  TListItem* Row(TStringView name) {
    return list.FindCaption(0, TString(name), false, true, false);
  }
  void Select(TStringView name) {
    ASSERT_NE(Row(name), nullptr) << ToUtf8(name);
    screen->Click(list, Row(name)->DisplayRect(drLabel).Center());
  }
  void Open(TStringView name) {
    ASSERT_NE(Row(name), nullptr) << ToUtf8(name);
    screen->DoubleClick(list, Row(name)->DisplayRect(drLabel).Center());
  }
  void Press(std::uint16_t key, TShiftState shift = {}) { screen->KeyPress(key, shift); }
  std::vector<std::string> Rows() {
    std::vector<std::string> names;
    for (TListItem* const row : list.Items()) names.push_back(ToUtf8(row->GetStoredCaption()));
    return names;
  }
  std::string InTree() {
    return list.GetFolder() && tree.GetSelected() ? ToUtf8(tree.GetSelected()->GetText()) : "";
  }
  TNames OnDisk(const std::string& name = "") {
    TNames names;
    for (const auto& entry : std::filesystem::directory_iterator(folder.Native(name)))
      names.insert(entry.path().filename().string());
    return names;
  }

  TTempFolder folder;
  testkit::THeadlessScreen screen{[](const std::string& text) { ADD_FAILURE() << text; }};
  TExplorerForm form;
  TFolderList& list = form.GetList();
  TPlaceTree& tree = form.GetTree();
};

TEST_F(Explorer, AllPartsFollowWhicheverIsMoved) {
  EXPECT_THAT(Rows(), ElementsAre("inner", "a.txt", "b.txt"));
  Open(u"inner");
  EXPECT_THAT(Rows(), ElementsAre("deep"));
  EXPECT_EQ(InTree(), "inner");
  EXPECT_EQ(form.GetPathEdit().GetText(), folder.Path("inner"));
  tree.SetFocus();
  Press(vkRight);  // expands
  Press(vkRight);  // and goes in
  EXPECT_EQ(InTree(), "deep");
  EXPECT_TRUE(Rows().empty());
  EXPECT_EQ(form.GetStatus().GetText(), u"0 objects");
  list.SetFocus();
  Press(vkLeft, ssAlt);
  Press(vkLeft, ssAlt);
  EXPECT_THAT(Rows(), ElementsAre("inner", "a.txt", "b.txt"));
  Press(vkRight, ssAlt);
  EXPECT_EQ(InTree(), "inner");
  Press(vkUp, ssAlt);
  ASSERT_NE(list.GetSelected(), nullptr);
  EXPECT_EQ(list.GetSelected()->GetStoredCaption(), u"inner");  // where the user came from
  EXPECT_TRUE(form.GetLink().IsMovePossible(-1));
}

TEST_F(Explorer, WhatCantBeOpenedLeavesAllWhereItIs) {
  std::filesystem::remove_all(folder.Native("inner"));  // the list still shows it
  Open(u"inner");
  EXPECT_THAT(Rows(), ElementsAre("inner", "a.txt", "b.txt"));
  EXPECT_EQ(form.GetPathEdit().GetText(), folder.Path(""));
  EXPECT_NE(form.GetStatus().GetText(), u"3 objects, 1 selected");
  form.GoToText(folder.Path("nowhere"));
  EXPECT_NE(form.GetStatus().GetText().find(u"There is no folder"), TString::npos);
}

TEST_F(Explorer, FilesAreCopiedMovedAndDeletedByKeys) {
  Select(u"a.txt");
  Press(u'C', ssCtrl);
  Press(u'V', ssCtrl);
  EXPECT_EQ(OnDisk(), (TNames{"a - Copy.txt", "a.txt", "b.txt", "inner"}));
  EXPECT_EQ(folder.Read("a - Copy.txt"), "first");
  EXPECT_NE(Row(u"a - Copy.txt"), nullptr);
  Select(u"b.txt");
  Press(u'X', ssCtrl);
  Open(u"inner");
  Press(u'V', ssCtrl);
  EXPECT_EQ(OnDisk("inner"), (TNames{"b.txt", "deep"}));
  EXPECT_EQ(OnDisk(), (TNames{"a - Copy.txt", "a.txt", "inner"}));
  Select(u"b.txt");
  Press(vkDelete, ssShift);
  EXPECT_EQ(OnDisk("inner"), TNames{"deep"});
  EXPECT_THAT(Rows(), ElementsAre("deep"));
  EXPECT_EQ(list.GetItemFocused(), Row(u"deep"));  // for the next key
}

TEST_F(Explorer, NamesAreGivenInTheRow) {
  Select(u"a.txt");
  Press(vkF2);
  ASSERT_TRUE(list.IsEditing());
  Press(u'A', ssCtrl);
  screen->TypeText(u"renamed.txt");
  Press(vkReturn);
  EXPECT_EQ(OnDisk(), (TNames{"b.txt", "inner", "renamed.txt"}));
  EXPECT_THAT(Rows(), ElementsAre("inner", "b.txt", "renamed.txt"));
  Press(u'N', {ssCtrl, ssShift});
  ASSERT_TRUE(list.IsEditing());
  Press(u'A', ssCtrl);
  screen->TypeText(u"made");
  Press(vkReturn);
  EXPECT_EQ(OnDisk(), (TNames{"b.txt", "inner", "made", "renamed.txt"}));
  Select(u"made");
  Press(vkF2);
  Press(u'A', ssCtrl);
  screen->TypeText(u"b.txt");  // taken
  Press(vkReturn);
  EXPECT_EQ(OnDisk(), (TNames{"b.txt", "inner", "made", "renamed.txt"}));
  EXPECT_EQ(folder.Read("b.txt"), "second");
  EXPECT_EQ(form.GetStatus().GetText().find(u"4 objects"), TString::npos);  // but why not
  Select(u"b.txt");
  EXPECT_EQ(form.GetStatus().GetText(), u"4 objects, 1 selected");
}

TEST_F(Explorer, TheShellsMenuActsOnTheSelection) {
  TString report;
  TShellHooks hooks;
  hooks.OnProperties = [&](const TString&, const TString& text) { report = text; };
  SetShellHooks(std::move(hooks));
  const auto choose = [&](TStringView verb, TPoint point) {
    bool isChosen = false;
    screen->OnMenu = [&](THeadlessMenuSession& menu) { isChosen = menu.Choose(verb); };
    screen->RightClick(list, point);
    screen->OnMenu = nullptr;
    EXPECT_TRUE(isChosen) << ToUtf8(verb);
  };
  choose(u"Properties", Row(u"b.txt")->DisplayRect(drLabel).Center());
  EXPECT_NE(report.find(u"b.txt"), TString::npos);
  choose(u"Rename", Row(u"b.txt")->DisplayRect(drLabel).Center());
  EXPECT_TRUE(list.IsEditing());
  Press(vkEscape);
  choose(u"Copy", Row(u"inner")->DisplayRect(drLabel).Center());
  choose(u"Paste", {300, list.GetClientSize().Height - 30});
  EXPECT_EQ(OnDisk(), (TNames{"a.txt", "b.txt", "inner", "inner - Copy"}));
  EXPECT_EQ(OnDisk("inner - Copy"), TNames{"deep"});
  choose(u"New|Folder", {300, list.GetClientSize().Height - 30});
  EXPECT_EQ(OnDisk().size(), 5u);
  EXPECT_EQ(Rows().size(), 5u);
  EXPECT_EQ(form.GetStatus().GetText(), u"5 objects");
}

TEST_F(Explorer, ObjectsAreDraggedWhereTheyBelong) {
  const auto at = [&](TStringView name) { return Row(name)->DisplayRect(drLabel).Center(); };
  const auto below = [&](TTreeNode* parent, TStringView name) {
    parent->Expand(false);
    TTreeNode* found = parent->GetFirstChild();
    while (found->GetText() != name) found = found->GetNextSibling();
    found->MakeVisible();
    return found;
  };
  const TPoint background{300, list.GetClientSize().Height - 30};
  screen->Drag(list, at(u"a.txt"), list, at(u"inner"));  // from row to row
  EXPECT_EQ(OnDisk("inner"), (TNames{"a.txt", "deep"}));
  EXPECT_THAT(Rows(), ElementsAre("inner", "b.txt"));
  TTreeNode* const inner = below(tree.GetSelected(), u"inner");
  screen->Drag(list, at(u"b.txt"), tree, inner->DisplayRect(true).Center(), ssCtrl);  // as a copy
  EXPECT_EQ(OnDisk("inner"), (TNames{"a.txt", "b.txt", "deep"}));
  EXPECT_EQ(folder.Read("b.txt"), "second");
  EXPECT_EQ(tree.GetDropTargetNode(), nullptr);
  // Nothing comes of these: onto itself, onto a file, onto the folder that it lies in.
  screen->Drag(list, at(u"inner"), list, at(u"inner") + TPoint(12, 0));
  screen->Drag(list, at(u"inner"), list, at(u"b.txt"));
  screen->Drag(list, at(u"b.txt"), list, background, ssCtrl);
  EXPECT_EQ(OnDisk(), (TNames{"b.txt", "inner"}));
  // Within the tree; the press goes to what it drags.
  TTreeNode* const top = tree.GetSelected();
  TTreeNode* const deep = below(below(top, u"inner"), u"deep");
  const TRect name = top->DisplayRect(true);  // too long for the tree
  screen->Drag(tree, deep->DisplayRect(true).Center(), tree, {name.Left + 8, name.Center().Y},
               ssCtrl);
  EXPECT_EQ(OnDisk(), (TNames{"b.txt", "deep", "inner"}));
  EXPECT_EQ(OnDisk("inner"), (TNames{"a.txt", "b.txt", "deep"}));
}

}  // namespace
}  // namespace oak::tests
