// The window of a tree view: the system's tree control.
//
// Every node has its entry in the native tree (TTreeNode::PeerData), which knows nothing of it but
// the pointer and whether it has children; texts and images are asked for when they are drawn.
#pragma once

#include <array>
#include <vector>

#include "oak/framework/TreeView.h"
#include "oak/framework/win32/CanvasWin32.h"
#include "oak/framework/win32/WindowPeer.h"

namespace oak {

class TTreePeer final : public TWindowPeer, public ITreeViewPeer {
 public:
  explicit TTreePeer(TCustomTreeView& view);
  void Create();

  // --- ITreeViewPeer -------------------------------------------------------------------------
  void NodeInserted(TTreeNode* node) override;
  void NodeDeleting(TTreeNode* node) override;
  void NodesCleared() override;
  void ChildrenSorted(TTreeNode* parent) override;
  void NodeMoved(TTreeNode* node) override;
  void NodeChanged(TTreeNode* node) override;
  void NodeExpanded(TTreeNode* node) override;
  void SelectionChanged() override;
  void BeginUpdate() override { PausePainting(); }
  void EndUpdate() override { ResumePainting(); }
  void StyleChanged() override;
  void ImagesChanged(TListImages which) override;
  void SetIndent(int pixels) override;
  TRect GetNodeRect(TTreeNode* node, bool textOnly) const override;
  TTreeHitTest HitTest(TPoint point) const override;
  TTreeNode* GetTopNode() const override;
  void SetTopNode(TTreeNode* node) override;
  int GetVisibleRowCount() const override;
  void MakeVisible(TTreeNode* node) override;
  bool BeginEdit(TTreeNode* node) override;
  void EndEdit(bool cancel) override;
  HWND GetEditHandle() const override;
  TString GetEditText() const override;
  void SetEditText(const TString& text) override;
  void SelectEditText(int start, int end) override;

  // --- TWindowPeer ---------------------------------------------------------------------------
  void ColorsChanged() override;
  bool HandleNotify(NMHDR& notification, LRESULT& result) override;

 protected:
  void Initialize() override { ColorsChanged(); }
  LRESULT WindowProc(UINT message, WPARAM wParam, LPARAM lParam) override;
  LRESULT InnerProc(HWND window, UINT message, WPARAM wParam, LPARAM lParam) override;
  LPCWSTR GetThemeName(bool dark) const override;

 private:
  DWORD StyleBits() const;
  HTREEITEM EntryOf(const TTreeNode* node) const;
  TTreeNode* NodeOf(HTREEITEM entry) const;
  HTREEITEM NextEntry(UINT which, HTREEITEM entry) const;
  void InsertEntry(TTreeNode* node);
  void DeleteEntry(HTREEITEM entry);
  void ForgetNodes(HTREEITEM entry);
  void DeleteDoomed();
  void CorrectSelection();
  void PushExpansion(TTreeNode* node);
  void PushDropTarget();
  UINT StateOf(const TTreeNode& node) const;

  bool Notified(NMHDR& notification, LRESULT& result);
  void SelectForMenu(TPoint point);
  LRESULT SystemKey(WPARAM key, LPARAM lParam);
  bool HandleExpanding(const NMTREEVIEWW& change);
  void HandleExpanded(const NMTREEVIEWW& change);
  void GiveDisplayInfo(NMTVDISPINFOW& info);
  void EndLabelEdit(const NMTVDISPINFOW& info);
  LRESULT CustomDraw(NMTVCUSTOMDRAW& draw);
  LRESULT DrawNode(NMTVCUSTOMDRAW& draw);
  void FinishClick();

  TCustomTreeView& fView;
  std::array<TString, 4> fTexts;  // given to the native tree, which reads them a little later
  unsigned fNextText = 0;
  TSharedFont fNodeFont;           // of the node being drawn
  std::vector<HTREEITEM> fDoomed;  // to be deleted when the procedure returns
  HTREEITEM fKeptOpen = nullptr;   // the last entry whose collapse was refused
  int fProcedures = 0;             // of the window, that run
  int fNotifications = 0;          // that are being handled
  bool fPushing = false;           // the model changes the window, not the user
};

}  // namespace oak
