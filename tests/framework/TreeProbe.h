// A tree view that writes down its events and its nodes, for tests.
#pragma once

#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "oak/framework/TreeView.h"

namespace oak::tests {

class TProbeTree : public TCustomTreeView {
 public:
  using TCustomTreeView::ChangeScale;

  explicit TProbeTree(TComponent* owner = nullptr) : TCustomTreeView(owner) {}
  ~TProbeTree() override { BeginDestroy(); }

  std::vector<std::string> Log;
  /// Called with each event before its default.
  std::function<void(const std::string& event)> OnNote;

  std::vector<std::string> Take() { return std::exchange(Log, {}); }
  /// Adds nodes from lines that are indented by a blank for each level.
  void Build(std::initializer_list<TStringView> lines) {
    std::vector<TTreeNode*> path;
    for (const TStringView line : lines) {
      const std::size_t level = line.find_first_not_of(u' ');
      path.resize(level);
      path.push_back(
          Items().AddChild(level ? path[level - 1] : nullptr, TString(line.substr(level))));
    }
  }
  /// The first node of that text.
  TTreeNode* Node(TStringView text) {
    TTreeNode* node = Items().GetFirstNode();
    while (node && node->GetText() != text) node = node->GetNext();
    return node;
  }
  /// "a(a1 a2(x)) b", found by way of the links forward; fails if those backward say otherwise.
  std::string Shape() { return ShapeOf(nullptr); }

 protected:
  bool CanChange(TTreeNode* node) override {
    return Note("select?", node) && TCustomTreeView::CanChange(node);
  }
  void Change(TTreeNode* node) override {
    if (Note("selected", node)) TCustomTreeView::Change(node);
  }
  bool CanExpand(TTreeNode* node) override {
    return Note("expand?", node) && TCustomTreeView::CanExpand(node);
  }
  void Expanded(TTreeNode* node) override {
    if (Note("expanded", node)) TCustomTreeView::Expanded(node);
  }
  bool CanCollapse(TTreeNode* node) override {
    return Note("collapse?", node) && TCustomTreeView::CanCollapse(node);
  }
  void Collapsed(TTreeNode* node) override {
    if (Note("collapsed", node)) TCustomTreeView::Collapsed(node);
  }
  void Added(TTreeNode* node) override {
    const TTreeNodeWatch watch(*this, node);
    if (const auto hook = OnAdd) hook(node);
    if (watch.Exists()) TCustomTreeView::Added(node);
  }
  void Delete(TTreeNode* node) override {
    if (Note("deleted", node)) TCustomTreeView::Delete(node);
  }
  void CancelEdit(TTreeNode* node) override { Note("edit cancelled", node); }

 public:
  std::function<void(TTreeNode* node)> OnAdd;

 private:
  bool Note(const std::string& what, TTreeNode* node) {
    const std::string event = what + (node ? " " + ToUtf8(node->GetText()) : "");
    Log.push_back(event);
    if (!OnNote) return true;
    const TTreeNodeWatch watch(*this, node);
    const TLifeGuard guard = GetLifeGuard();
    const bool wasDeleting = node && node->GetDeleting();
    const auto hook = OnNote;
    hook(event);
    return guard.IsAlive() && (!node || wasDeleting || watch.Exists());
  }
  std::string ShapeOf(TTreeNode* parent) {
    std::string text;
    int count = 0;
    TTreeNode* last = nullptr;
    TTreeNode* node = parent ? parent->GetFirstChild() : Items().GetFirstNode();
    for (; node; node = node->GetNextSibling(), ++count) {
      EXPECT_EQ(node->GetPrevSibling(), last);
      EXPECT_EQ(node->GetParent(), parent);
      EXPECT_EQ(node->GetIndex(), count);
      text += (text.empty() ? "" : " ") + ToUtf8(node->GetText());
      if (node->GetFirstChild()) text += "(" + ShapeOf(node) + ")";
      last = node;
    }
    EXPECT_EQ(parent ? parent->GetLastChild() : Items().GetLastNode(), last);
    if (parent) {
      EXPECT_EQ(parent->GetCount(), count);
    }
    return text;
  }
};

}  // namespace oak::tests
