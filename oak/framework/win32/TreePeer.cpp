#include "oak/framework/win32/TreePeer.h"

#include <unordered_map>
#include <utility>

#include "oak/framework/ImageList.h"
#include "oak/framework/win32/PeerScopes.h"
#include "oak/framework/win32/Peers.h"
#include "oak/framework/win32/System.h"

namespace oak {
namespace {

constexpr DWORD ChangingTreeStyles = TVS_HASBUTTONS | TVS_HASLINES | TVS_LINESATROOT |
                                     TVS_EDITLABELS | TVS_SHOWSELALWAYS | TVS_FULLROWSELECT |
                                     TVS_TRACKSELECT | TVS_NOTOOLTIPS;
constexpr UINT PushedStates = TVIS_CUT | TVIS_OVERLAYMASK | TVIS_STATEIMAGEMASK;

THitTests TreeHitsOf(UINT flags) {
  struct TPair {
    UINT Native;
    THitTestFlag Ours;
  };
  constexpr TPair pairs[] = {
      {TVHT_NOWHERE, htNowhere},
      {TVHT_ONITEMICON, htOnIcon},
      {TVHT_ONITEMLABEL, htOnLabel},
      {TVHT_ONITEMINDENT, htOnIndent},
      {TVHT_ONITEMBUTTON, htOnButton},
      {TVHT_ONITEMRIGHT, htOnRight},
      {TVHT_ONITEMSTATEICON, htOnStateIcon},
      {TVHT_ABOVE, htAbove},
      {TVHT_BELOW, htBelow},
      {TVHT_TORIGHT, htToRight},
      {TVHT_TOLEFT, htToLeft},
  };
  THitTests hits;
  for (const TPair& pair : pairs)
    if (flags & pair.Native) hits.Include(pair.Ours);
  return hits;
}

using TPlaces = std::unordered_map<const TTreeNode*, int>;

int CALLBACK ComparePlaces(LPARAM a, LPARAM b, LPARAM places) {
  const auto& map = *reinterpret_cast<const TPlaces*>(places);
  const auto place = [&map](LPARAM node) {
    const auto found = map.find(reinterpret_cast<const TTreeNode*>(node));
    return found == map.end() ? static_cast<int>(map.size()) : found->second;  // about to go
  };
  return place(a) - place(b);
}

}  // namespace

TTreePeer::TTreePeer(TCustomTreeView& view) : TWindowPeer(view), fView(view) {}

void TTreePeer::Create() {
  TWindowParams params = MakeParams();
  params.ClassName = WC_TREEVIEWW;
  if (params.Style & WS_BORDER) {
    params.Style &= ~static_cast<DWORD>(WS_BORDER);
    params.ExStyle |= WS_EX_CLIENTEDGE;
  }
  params.Style |= StyleBits();
  params.Text.clear();
  CreateHandle(params);
}

DWORD TTreePeer::StyleBits() const {
  DWORD style = 0;
  if (fView.GetShowButtons()) style |= TVS_HASBUTTONS;
  if (fView.GetShowLines()) style |= TVS_HASLINES;
  if (fView.GetShowRoot()) style |= TVS_LINESATROOT;
  if (!fView.GetReadOnly()) style |= TVS_EDITLABELS;
  if (!fView.GetHideSelection()) style |= TVS_SHOWSELALWAYS;
  if (fView.GetRowSelect()) style |= TVS_FULLROWSELECT;
  if (fView.GetHotTrack()) style |= TVS_TRACKSELECT;
  if (!fView.GetToolTips()) style |= TVS_NOTOOLTIPS;
  return style;
}

LPCWSTR TTreePeer::GetThemeName(bool dark) const { return dark ? L"DarkMode_Explorer" : nullptr; }

void TTreePeer::ColorsChanged() {
  TWindowPeer::ColorsChanged();
  Send(TVM_SETBKCOLOR, 0, static_cast<LPARAM>(GetBackColor()));
  Send(TVM_SETTEXTCOLOR, 0, static_cast<LPARAM>(GetTextColor()));
}

void TTreePeer::StyleChanged() {
  const TPeerGuard guard(*this);
  if (fView.GetReadOnly()) EndEdit(true);
  if (!guard.IsAlive()) return;
  ChangeStyle(ChangingTreeStyles, StyleBits());
  Invalidate(nullptr);
}

void TTreePeer::ImagesChanged(TListImages which) {
  const bool states = which == TListImages::State;
  const TImageList* images = states ? fView.GetStateImages() : fView.GetImages();
  Send(TVM_SETIMAGELIST, states ? TVSIL_STATE : TVSIL_NORMAL,
       reinterpret_cast<LPARAM>(images ? images->GetHandle() : nullptr));
  SetIndent(fView.GetIndent());  // the native tree may take the width of a picture for it
  Invalidate(nullptr);
}

void TTreePeer::SetIndent(int pixels) { Send(TVM_SETINDENT, static_cast<WPARAM>(pixels), 0); }

// --- nodes --------------------------------------------------------------------------------------

HTREEITEM TTreePeer::EntryOf(const TTreeNode* node) const {
  return node ? reinterpret_cast<HTREEITEM>(node->PeerData) : nullptr;
}

TTreeNode* TTreePeer::NodeOf(HTREEITEM entry) const {
  if (!entry) return nullptr;
  TVITEMW item{};
  item.mask = TVIF_PARAM | TVIF_HANDLE;
  item.hItem = entry;
  if (!::SendMessageW(GetHandle(), TVM_GETITEMW, 0, reinterpret_cast<LPARAM>(&item)))
    return nullptr;
  return reinterpret_cast<TTreeNode*>(item.lParam);
}

UINT TTreePeer::StateOf(const TTreeNode& node) const {
  UINT state = node.GetCut() ? TVIS_CUT : 0;
  if (node.GetOverlayIndex() >= 0)
    state |= INDEXTOOVERLAYMASK(static_cast<UINT>(node.GetOverlayIndex() + 1));
  // Image 0 of the state images stands for none.
  if (node.GetStateIndex() > 0)
    state |= INDEXTOSTATEIMAGEMASK(static_cast<UINT>(node.GetStateIndex()));
  return state;
}

void TTreePeer::InsertEntry(TTreeNode* node) {
  TVINSERTSTRUCTW insert{};
  insert.hParent = node->GetParent() ? EntryOf(node->GetParent()) : TVI_ROOT;
  insert.hInsertAfter = node->GetPrevSibling() ? EntryOf(node->GetPrevSibling()) : TVI_FIRST;
  TVITEMW& item = insert.item;
  item.mask = TVIF_TEXT | TVIF_IMAGE | TVIF_SELECTEDIMAGE | TVIF_CHILDREN | TVIF_PARAM | TVIF_STATE;
  item.pszText = LPSTR_TEXTCALLBACKW;
  item.iImage = I_IMAGECALLBACK;
  item.iSelectedImage = I_IMAGECALLBACK;
  item.cChildren = node->GetHasChildren() ? 1 : 0;
  item.lParam = reinterpret_cast<LPARAM>(node);
  item.stateMask = PushedStates;
  item.state = StateOf(*node);
  node->PeerData =
      static_cast<std::uintptr_t>(Send(TVM_INSERTITEMW, 0, reinterpret_cast<LPARAM>(&insert)));
}

void TTreePeer::NodeInserted(TTreeNode* node) {
  const TPeerFlag pushing(fPushing, *this);
  InsertEntry(node);
  TTreeNode* parent = node->GetParent();
  if (!parent || parent->GetCount() > 1) return;
  // The first child: its parent gets a button, and opens if it was opened in advance.
  NodeChanged(parent);
  if (parent->GetExpanded()) PushExpansion(parent);
}

// The native tree does not survive the end of an entry in the middle of a notification of its own.
// Such an entry only forgets its node, and goes when the window's procedure returns.
void TTreePeer::DeleteEntry(HTREEITEM entry) {
  if (!entry) return;
  const TPeerFlag pushing(fPushing, *this);
  if (fNotifications == 0) {
    Send(TVM_DELETEITEM, 0, reinterpret_cast<LPARAM>(entry));
    return;
  }
  ForgetNodes(entry);
  fDoomed.push_back(entry);
}

void TTreePeer::ForgetNodes(HTREEITEM entry) {
  TVITEMW item{};
  item.mask = TVIF_PARAM | TVIF_HANDLE;
  item.hItem = entry;
  Send(TVM_SETITEMW, 0, reinterpret_cast<LPARAM>(&item));
  for (HTREEITEM child = NextEntry(TVGN_CHILD, entry); child; child = NextEntry(TVGN_NEXT, child))
    ForgetNodes(child);
}

HTREEITEM TTreePeer::NextEntry(UINT which, HTREEITEM entry) const {
  return reinterpret_cast<HTREEITEM>(
      ::SendMessageW(GetHandle(), TVM_GETNEXTITEM, which, reinterpret_cast<LPARAM>(entry)));
}

void TTreePeer::DeleteDoomed() {
  const TPeerFlag pushing(fPushing, *this);
  for (const HTREEITEM entry : std::exchange(fDoomed, {}))
    Send(TVM_DELETEITEM, 0, reinterpret_cast<LPARAM>(entry));
  CorrectSelection();
}

void TTreePeer::NodeDeleting(TTreeNode* node) {
  DeleteEntry(EntryOf(node));
  node->PeerData = 0;
  CorrectSelection();
}

// The native tree picks another node by itself when the selected one goes.
void TTreePeer::CorrectSelection() {
  if (NodeOf(NextEntry(TVGN_CARET, nullptr)) != fView.GetSelected()) SelectionChanged();
}

void TTreePeer::NodesCleared() {
  const TPeerGuard guard(*this);
  EndEdit(true);
  if (!guard.IsAlive()) return;
  const TPeerFlag pushing(fPushing, *this);
  BeginUpdate();
  if (fNotifications == 0) {
    Send(TVM_DELETEITEM, 0, reinterpret_cast<LPARAM>(TVI_ROOT));
  } else {
    for (HTREEITEM root = NextEntry(TVGN_ROOT, nullptr); root; root = NextEntry(TVGN_NEXT, root))
      if (NodeOf(root)) DeleteEntry(root);
  }
  EndUpdate();
}

void TTreePeer::ChildrenSorted(TTreeNode* parent) {
  TPlaces places;
  TTreeNode* node = parent ? parent->GetFirstChild() : fView.Items().GetFirstNode();
  for (; node; node = node->GetNextSibling()) places.emplace(node, static_cast<int>(places.size()));
  TVSORTCB sort{};
  sort.hParent = parent ? EntryOf(parent) : TVI_ROOT;
  sort.lpfnCompare = ComparePlaces;
  sort.lParam = reinterpret_cast<LPARAM>(&places);
  Send(TVM_SORTCHILDRENCB, 0, reinterpret_cast<LPARAM>(&sort));
}

void TTreePeer::NodeMoved(TTreeNode* node) {
  const TPeerFlag pushing(fPushing, *this);
  BeginUpdate();
  DeleteEntry(EntryOf(node));
  InsertEntry(node);
  const TTreeNode* end = node->GetNextSibling();
  for (const TTreeNode* up = node; !end && up; up = up->GetParent()) end = up->GetNextSibling();
  for (TTreeNode* below = node->GetFirstChild(); below && below != end; below = below->GetNext())
    InsertEntry(below);
  for (TTreeNode* below = node; below && below != end; below = below->GetNext())
    if (below->GetExpanded()) PushExpansion(below);
  EndUpdate();
  SelectionChanged();
}

void TTreePeer::NodeChanged(TTreeNode* node) {
  if (!EntryOf(node)) return;
  TVITEMW item{};
  item.mask =
      TVIF_HANDLE | TVIF_TEXT | TVIF_IMAGE | TVIF_SELECTEDIMAGE | TVIF_CHILDREN | TVIF_STATE;
  item.hItem = EntryOf(node);
  item.pszText = LPSTR_TEXTCALLBACKW;
  item.iImage = I_IMAGECALLBACK;
  item.iSelectedImage = I_IMAGECALLBACK;
  item.cChildren = node->GetHasChildren() ? 1 : 0;
  item.stateMask = PushedStates;
  item.state = StateOf(*node);
  Send(TVM_SETITEMW, 0, reinterpret_cast<LPARAM>(&item));
  PushDropTarget();
}

void TTreePeer::PushDropTarget() {
  const HTREEITEM wanted = EntryOf(fView.GetDropTargetNode());
  const HTREEITEM shown = NextEntry(TVGN_DROPHILITE, nullptr);
  if (wanted != shown) Send(TVM_SELECTITEM, TVGN_DROPHILITE, reinterpret_cast<LPARAM>(wanted));
}

void TTreePeer::PushExpansion(TTreeNode* node) {
  const TPeerFlag pushing(fPushing, *this);
  if (!EntryOf(node) || !node->GetFirstChild()) return;
  Send(TVM_EXPAND, node->GetExpanded() ? TVE_EXPAND : TVE_COLLAPSE,
       reinterpret_cast<LPARAM>(EntryOf(node)));
}

void TTreePeer::NodeExpanded(TTreeNode* node) { PushExpansion(node); }

void TTreePeer::SelectionChanged() {
  const TPeerFlag pushing(fPushing, *this);
  // The native tree would open the parents of a node that is hidden.
  const TTreeNode* const node = fView.GetSelected();
  const HTREEITEM entry = node && node->IsNodeVisible() ? EntryOf(node) : nullptr;
  Send(TVM_SELECTITEM, TVGN_CARET, reinterpret_cast<LPARAM>(entry));
}

// --- geometry -----------------------------------------------------------------------------------

TRect TTreePeer::GetNodeRect(TTreeNode* node, bool textOnly) const {
  RECT rect{};
  const HTREEITEM entry = EntryOf(node);
  if (!entry) return {};
  *reinterpret_cast<HTREEITEM*>(&rect) = entry;
  if (!::SendMessageW(GetHandle(), TVM_GETITEMRECT, textOnly, reinterpret_cast<LPARAM>(&rect)))
    return {};
  return TRect(rect).Intersects(GetClientRect()) ? TRect(rect) : TRect();
}

TTreeHitTest TTreePeer::HitTest(TPoint point) const {
  TVHITTESTINFO info{};
  info.pt = point;
  ::SendMessageW(GetHandle(), TVM_HITTEST, 0, reinterpret_cast<LPARAM>(&info));
  return {NodeOf(info.hItem), TreeHitsOf(info.flags)};
}

TTreeNode* TTreePeer::GetTopNode() const { return NodeOf(NextEntry(TVGN_FIRSTVISIBLE, nullptr)); }

void TTreePeer::SetTopNode(TTreeNode* node) {
  Send(TVM_SELECTITEM, TVGN_FIRSTVISIBLE, reinterpret_cast<LPARAM>(EntryOf(node)));
}

int TTreePeer::GetVisibleRowCount() const {
  return static_cast<int>(::SendMessageW(GetHandle(), TVM_GETVISIBLECOUNT, 0, 0));
}

void TTreePeer::MakeVisible(TTreeNode* node) {
  const TPeerFlag pushing(fPushing, *this);
  if (EntryOf(node)) Send(TVM_ENSUREVISIBLE, 0, reinterpret_cast<LPARAM>(EntryOf(node)));
}

// --- editing ------------------------------------------------------------------------------------

bool TTreePeer::BeginEdit(TTreeNode* node) {
  const TPeerGuard guard(*this);
  ::SetFocus(GetHandle());  // the native tree edits nothing without the keyboard
  if (!guard.IsAlive() || !EntryOf(node)) return false;
  const LRESULT edit = Send(TVM_EDITLABELW, 0, reinterpret_cast<LPARAM>(EntryOf(node)));
  return guard.IsAlive() && edit != 0;
}

void TTreePeer::EndEdit(bool cancel) {
  if (GetEditHandle()) Send(TVM_ENDEDITLABELNOW, cancel, 0);
}

HWND TTreePeer::GetEditHandle() const {
  return reinterpret_cast<HWND>(::SendMessageW(GetHandle(), TVM_GETEDITCONTROL, 0, 0));
}

TString TTreePeer::GetEditText() const { return win32::TextOfWindow(GetEditHandle()); }

void TTreePeer::SetEditText(const TString& text) {
  if (const HWND edit = GetEditHandle()) ::SetWindowTextW(edit, W(text));
}

void TTreePeer::SelectEditText(int start, int end) {
  if (const HWND edit = GetEditHandle())
    ::SendMessageW(edit, EM_SETSEL, static_cast<WPARAM>(start), end);
}

namespace win32 {

std::unique_ptr<ITreeViewPeer> MakeTreePeer(TCustomTreeView& view) {
  auto peer = std::make_unique<TTreePeer>(view);
  peer->Create();
  return peer;
}

}  // namespace win32

}  // namespace oak
