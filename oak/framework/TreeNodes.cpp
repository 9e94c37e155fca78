#include <algorithm>
#include <vector>

#include "oak/base/LogicalOrder.h"
#include "oak/framework/TreeView.h"

namespace oak {
namespace {

/// Number of nodes of a branch.
int CountBranch(const TTreeNode* root) {
  int count = 1;
  for (const TTreeNode* node = root->GetFirstChild(); node;) {
    ++count;
    if (node->GetFirstChild()) {
      node = node->GetFirstChild();
      continue;
    }
    while (node != root && !node->GetNextSibling()) node = node->GetParent();
    node = node == root ? nullptr : node->GetNextSibling();
  }
  return count;
}

}  // namespace

TTreeNodes::TTreeNodes(TCustomTreeView* owner) : fOwner(owner) {}

TTreeNodes::~TTreeNodes() { Clear(); }

TTreeNode* TTreeNodes::GetNodeFromIndex(int index) const {
  TTreeNode* node = index < 0 ? nullptr : fFirst;
  while (node && index-- > 0) node = node->GetNext();
  return node;
}

TTreeNode* TTreeNodes::Add(TTreeNode* sibling, TString text) {
  return AddChild(sibling ? sibling->GetParent() : nullptr, std::move(text));
}

TTreeNode* TTreeNodes::AddChild(TTreeNode* parent, TString text) {
  std::unique_ptr<TTreeNode> node = fOwner->CreateNode();
  node->fText = std::move(text);
  return AddNode(std::move(node), parent, naAddChild);
}

TTreeNode* TTreeNodes::AddChildFirst(TTreeNode* parent, TString text) {
  std::unique_ptr<TTreeNode> node = fOwner->CreateNode();
  node->fText = std::move(text);
  return AddNode(std::move(node), parent, naAddChildFirst);
}

TTreeNode* TTreeNodes::Insert(TTreeNode* sibling, TString text) {
  std::unique_ptr<TTreeNode> node = fOwner->CreateNode();
  node->fText = std::move(text);
  return AddNode(std::move(node), sibling, sibling ? naInsert : naAdd);
}

TTreeNode* TTreeNodes::AddNode(std::unique_ptr<TTreeNode> node, TTreeNode* relative,
                               TNodeAttachMode mode) {
  TTreeNode* added = node.release();  // belongs to the tree from here on
  Attach(added, relative, mode);
  ++fCount;
  if (fOwner->fTreePeer) fOwner->fTreePeer->NodeInserted(added);
  const TTreeNodeWatch watch(*fOwner, added);
  fOwner->Added(added);
  return watch.Exists() ? added : nullptr;
}

void TTreeNodes::Attach(TTreeNode* node, TTreeNode* relative, TNodeAttachMode mode) {
  switch (mode) {
    case naAdd:
      Link(node, relative ? relative->fParent : nullptr, nullptr);
      break;
    case naAddFirst: {
      TTreeNode* parent = relative ? relative->fParent : nullptr;
      Link(node, parent, parent ? parent->fFirstChild : fFirst);
      break;
    }
    case naAddChild:
      Link(node, relative, nullptr);
      break;
    case naAddChildFirst:
      Link(node, relative, relative ? relative->fFirstChild : fFirst);
      break;
    case naInsert:
      Link(node, relative ? relative->fParent : nullptr, relative);
      break;
  }
}

void TTreeNodes::Move(TTreeNode* node, TTreeNode* destination, TNodeAttachMode mode) {
  Unlink(node);
  Attach(node, destination, mode);
  if (fOwner->fTreePeer) fOwner->fTreePeer->NodeMoved(node);
}

// `before` null: at the end.
void TTreeNodes::Link(TTreeNode* node, TTreeNode* parent, TTreeNode* before) {
  TTreeNode*& first = parent ? parent->fFirstChild : fFirst;
  TTreeNode*& last = parent ? parent->fLastChild : fLast;
  node->fParent = parent;
  node->fNextSibling = before;
  node->fPrevSibling = before ? before->fPrevSibling : last;
  (node->fPrevSibling ? node->fPrevSibling->fNextSibling : first) = node;
  (before ? before->fPrevSibling : last) = node;
  if (!parent) return;
  ++parent->fCount;
  parent->SetFlag(TTreeNode::FlagHasChildren, true);
}

void TTreeNodes::Unlink(TTreeNode* node) {
  TTreeNode* parent = node->fParent;
  (node->fPrevSibling ? node->fPrevSibling->fNextSibling
                      : (parent ? parent->fFirstChild : fFirst)) = node->fNextSibling;
  (node->fNextSibling ? node->fNextSibling->fPrevSibling : (parent ? parent->fLastChild : fLast)) =
      node->fPrevSibling;
  node->fParent = node->fPrevSibling = node->fNextSibling = nullptr;
  if (!parent || --parent->fCount > 0) return;
  parent->SetFlag(TTreeNode::FlagHasChildren, false);
  parent->SetFlag(TTreeNode::FlagExpanded, false);
}

void TTreeNodes::Delete(TTreeNode* node) {
  if (!node || node->GetDeleting()) return;
  TCustomTreeView* view = fOwner;
  const TTreeNodeWatch watch(*view, node);
  view->ForgetBranch(node);
  if (!watch.Exists()) return;
  if (view->fTreePeer) view->fTreePeer->NodeDeleting(node);
  TTreeNode* parent = node->fParent;
  Unlink(node);
  fCount -= CountBranch(node);
  if (parent) parent->Update();
  DestroyBranch(node, view);
}

// The branch is no part of the tree any more. Its nodes end children first, each after its event;
// the event may change the tree and even destroy it.
void TTreeNodes::DestroyBranch(TTreeNode* root, TCustomTreeView* view) {
  const TLifeGuard guard = view->GetLifeGuard();
  for (TTreeNode* node = root; node;) {
    node->SetFlag(TTreeNode::FlagDeleting, true);
    if (node->fFirstChild) {
      node = node->fFirstChild;
      continue;
    }
    TTreeNode* next = node == root         ? nullptr
                      : node->fNextSibling ? node->fNextSibling
                                           : node->fParent;
    if (node->fParent) node->fParent->fFirstChild = node->fNextSibling;
    if (guard.IsAlive())
      view->EndNode(node);
    else
      node->fOwner = nullptr;
    delete node;
    node = next;
  }
}

void TTreeNodes::Clear() {
  TCustomTreeView* view = fOwner;
  if (!fFirst) return;
  const TLifeGuard guard = view->GetLifeGuard();
  if (view->fTreePeer) view->fTreePeer->NodesCleared();
  view->fSelected = view->fDropTarget = view->fEdited = nullptr;
  TTreeNode* root = fFirst;
  fFirst = fLast = nullptr;
  fCount = 0;
  while (root) {
    TTreeNode* next = root->fNextSibling;
    root->fPrevSibling = root->fNextSibling = nullptr;
    if (!guard.IsAlive()) root->fOwner = nullptr;
    DestroyBranch(root, view);
    root = next;
  }
}

void TTreeNodes::BeginUpdate() {
  if (fUpdateCount++ == 0 && fOwner->fTreePeer) fOwner->fTreePeer->BeginUpdate();
}

void TTreeNodes::EndUpdate() {
  if (fUpdateCount == 0 || --fUpdateCount > 0) return;
  if (fOwner->fTreePeer) fOwner->fTreePeer->EndUpdate();
}

void TTreeNodes::Sort(TTreeNode* parent, const TTVCompare& compare, LPARAM data, bool recursive) {
  TTreeNode*& first = parent ? parent->fFirstChild : fFirst;
  TTreeNode*& last = parent ? parent->fLastChild : fLast;
  std::vector<TTreeNode*> nodes;
  for (TTreeNode* node = first; node; node = node->fNextSibling) nodes.push_back(node);
  std::stable_sort(nodes.begin(), nodes.end(), [&](TTreeNode* a, TTreeNode* b) {
    return (compare ? compare(a, b, data) : CompareLogical(a->GetText(), b->GetText())) < 0;
  });
  TTreeNode* previous = nullptr;
  for (TTreeNode* node : nodes) {
    node->fPrevSibling = previous;
    node->fNextSibling = nullptr;
    (previous ? previous->fNextSibling : first) = node;
    previous = node;
  }
  last = previous;
  if (fOwner->fTreePeer && nodes.size() > 1) fOwner->fTreePeer->ChildrenSorted(parent);
  if (!recursive) return;
  for (TTreeNode* node : nodes) {
    if (node->fFirstChild) Sort(node, compare, data, true);
  }
}

}  // namespace oak
