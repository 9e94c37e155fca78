#include <vector>

#include "oak/base/LogicalOrder.h"
#include "oak/framework/Application.h"
#include "oak/framework/MergeSort.h"
#include "oak/framework/TreeView.h"

namespace oak {

TTreeNodes::TTreeNodes(TCustomTreeView* owner) : fOwner(owner) {}

TTreeNodes::~TTreeNodes() {
  try {
    Clear();
  } catch (...) {
    Application().HandleException(nullptr);
  }
}

// The next node of a branch, depth first.
TTreeNode* TTreeNodes::NextInBranch(const TTreeNode* root, TTreeNode* node) {
  if (node->fFirstChild) return node->fFirstChild;
  while (node != root && !node->fNextSibling) node = node->fParent;
  return node == root ? nullptr : node->fNextSibling;
}

// For the program the whole branch is gone before the first handler hears of it. Tells its size.
int TTreeNodes::MarkBranch(TTreeNode* root) {
  int count = 0;
  for (TTreeNode* node = root; node; node = NextInBranch(root, node)) {
    node->SetFlag(TTreeNode::FlagDeleting, true);
    node->PeerData = 0;
    ++count;
  }
  return count;
}

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
  const TTreeNode* const near = relative;
  if (!node || (near && near->GetDeleting()) || fOwner->GetComponentState().Contains(csDestroying))
    return nullptr;
  TTreeNode* added = node.release();  // belongs to the tree from here on
  Attach(added, relative, mode);
  ++fCount;
  const TTreeNodeWatch watch(*fOwner, added);
  if (fOwner->fTreePeer) fOwner->fTreePeer->NodeInserted(added);
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
  const TTreeNodeWatch watch(*fOwner, node);
  const TTreeNodeWatch goal(*fOwner, destination);
  if (fOwner->fEdited && fOwner->fTreePeer) fOwner->fTreePeer->EndEdit(true);
  if (!watch.Exists() || (destination && !goal.Exists())) return;
  TTreeNode* const parent = node->fParent;
  Unlink(node);
  Attach(node, destination, mode);
  if (fOwner->fTreePeer) fOwner->fTreePeer->NodeMoved(node);
  if (parent && parent != node->fParent) parent->Update();
  fOwner->SelectVisible();
}

// `before` null: at the end.
void TTreeNodes::Link(TTreeNode* node, TTreeNode* parent, TTreeNode* before) {
  TTreeNode*& first = parent ? parent->fFirstChild : fFirst;
  TTreeNode*& last = parent ? parent->fLastChild : fLast;
  ++fVersion;
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
  ++fVersion;
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
  fCount -= MarkBranch(node);
  if (parent) parent->Update();
  std::exception_ptr failure;
  DestroyBranch(node, view, view->GetLifeGuard(), failure);
  if (failure) std::rethrow_exception(failure);
}

// The branch is no part of the tree any more. Its nodes end children first, each after its event;
// the event may change the tree and even destroy it. Keeps the first exception.
void TTreeNodes::DestroyBranch(TTreeNode* root, TCustomTreeView* view, const TLifeGuard& guard,
                               std::exception_ptr& failure) {
  for (TTreeNode* node = root; node;) {
    if (node->fFirstChild) {
      node = node->fFirstChild;
      continue;
    }
    TTreeNode* next = node == root         ? nullptr
                      : node->fNextSibling ? node->fNextSibling
                                           : node->fParent;
    if (node->fParent) node->fParent->fFirstChild = node->fNextSibling;
    try {
      if (guard.IsAlive()) view->EndNode(node);
    } catch (...) {
      if (!failure) failure = std::current_exception();
    }
    if (!guard.IsAlive()) node->fOwner = nullptr;
    delete node;
    node = next;
  }
}

void TTreeNodes::Clear() {
  TCustomTreeView* view = fOwner;
  if (!fFirst) return;
  const TLifeGuard guard = view->GetLifeGuard();
  view->fEdited = nullptr;
  if (view->fTreePeer) view->fTreePeer->EndEdit(true);
  if (!guard.IsAlive() || !fFirst) return;
  view->fSelected = view->fDropTarget = nullptr;
  TTreeNode* root = fFirst;
  fFirst = fLast = nullptr;
  fCount = 0;
  ++fVersion;
  for (TTreeNode* other = root; other; other = other->fNextSibling) MarkBranch(other);
  if (view->fTreePeer) view->fTreePeer->NodesCleared();
  std::exception_ptr failure;
  while (root) {
    TTreeNode* next = root->fNextSibling;
    root->fPrevSibling = root->fNextSibling = nullptr;
    if (!guard.IsAlive()) root->fOwner = nullptr;
    DestroyBranch(root, view, guard, failure);
    root = next;
  }
  if (failure) std::rethrow_exception(failure);
}

void TTreeNodes::BeginUpdate() {
  if (fUpdateCount++ == 0 && fOwner->fTreePeer) fOwner->fTreePeer->BeginUpdate();
}

void TTreeNodes::EndUpdate() {
  if (fUpdateCount == 0 || --fUpdateCount > 0) return;
  if (fOwner->fTreePeer) fOwner->fTreePeer->EndUpdate();
}

// False if a comparison has changed the tree, which stays as it is then.
bool TTreeNodes::Sort(TTreeNode* parent, const TTVCompare& compare, LPARAM data) {
  std::vector<TTreeNode*> nodes;
  for (TTreeNode* node = parent ? parent->fFirstChild : fFirst; node; node = node->fNextSibling)
    nodes.push_back(node);
  const TLifeGuard guard = fOwner->GetLifeGuard();
  const unsigned version = fVersion;
  const auto unchanged = [&] { return guard.IsAlive() && fVersion == version; };
  MergeSort(nodes, [&](TTreeNode* a, TTreeNode* b) {
    if (!unchanged()) return false;
    return (compare ? compare(a, b, data) : CompareLogical(a->GetText(), b->GetText())) > 0;
  });
  if (!unchanged()) return false;
  TTreeNode* previous = nullptr;
  for (TTreeNode* node : nodes) {
    node->fPrevSibling = previous;
    node->fNextSibling = nullptr;
    (previous ? previous->fNextSibling : parent ? parent->fFirstChild : fFirst) = node;
    previous = node;
  }
  (parent ? parent->fLastChild : fLast) = previous;
  if (fOwner->fTreePeer && nodes.size() > 1) fOwner->fTreePeer->ChildrenSorted(parent);
  return true;
}

// Sorts the children of `parent`, and those of the nodes below it if `recursive`.
void TTreeNodes::SortBranch(TTreeNode* parent, const TTVCompare& compare, LPARAM data,
                            bool recursive) {
  if (!Sort(parent, compare, data) || !recursive) return;
  for (TTreeNode* node = parent ? parent->fFirstChild : fFirst; node;
       node = parent ? NextInBranch(parent, node) : node->GetNext()) {
    if (node->fFirstChild && !Sort(node, compare, data)) return;
  }
}

}  // namespace oak
