// The window of a tree view on the headless desktop.
#pragma once

#include <cstdint>
#include <memory>
#include <vector>

#include "oak/framework/TreeView.h"
#include "oak/framework/headless/HeadlessLabelPeer.h"

namespace oak {

/// Rows of the nodes whose parents are expanded, with buttons, scroll bars, mouse and keys. It
/// knows where it is scrolled to and what the mouse is at; all else it asks of the tree.
class THeadlessTreePeer final : public THeadlessLabelPeer<ITreeViewPeer, TCustomTreeView> {
 public:
  THeadlessTreePeer(THeadlessDesktop& desktop, TCustomTreeView& view);
  ~THeadlessTreePeer() override;

  // --- ITreeViewPeer -------------------------------------------------------------------------
  void NodeInserted(TTreeNode*) override { RowsChanged(); }
  void NodeDeleting(TTreeNode* node) override;
  void NodesCleared() override;
  void ChildrenSorted(TTreeNode*) override { RowsChanged(); }
  void NodeMoved(TTreeNode*) override { RowsChanged(); }
  void NodeChanged(TTreeNode* node) override;
  void NodeExpanded(TTreeNode*) override { RowsChanged(); }
  void SelectionChanged() override;
  void BeginUpdate() override { ++fUpdateCount; }
  void EndUpdate() override;
  void StyleChanged() override;
  void ImagesChanged(TListImages) override { RowsChanged(); }
  void SetIndent(int) override { RowsChanged(); }
  TRect GetNodeRect(TTreeNode* node, bool textOnly) const override;
  TTreeHitTest HitTest(TPoint point) const override;
  TTreeNode* GetTopNode() const override;
  void SetTopNode(TTreeNode* node) override;
  int GetVisibleRowCount() const override;
  void MakeVisible(TTreeNode* node) override;
  bool BeginEdit(TTreeNode* node) override;

  // --- THeadlessWindow -----------------------------------------------------------------------
  void Paint(TCanvas& canvas, const TRect& clip) override;
  void OnMouse(TMouseEvent& event) override;
  void OnKey(TKeyEvent& event) override;
  void OnBoundsChanged() override { RowsChanged(); }
  void OnStateChanged() override { RowsChanged(); }
  void OnFocusChanged(bool focused) override;
  void OnCaptureLost() override { fPress = {}; }
  void OnScroll(TScrollBarKind kind, int position) override;
  void OnTimerTick(int id) override;

  // --- for tests -----------------------------------------------------------------------------
  /// How often the tree was asked since the last ResetRequests.
  int GetTextRequests() const noexcept { return fTextRequests; }
  int GetImageRequests() const noexcept { return fImageRequests; }
  void ResetRequests() noexcept { fTextRequests = fImageRequests = 0; }
  int GetRowHeight() const;

 private:
  /// Parts of a row in client pixels.
  struct TParts {
    TRect Bounds;
    TRect Button;  ///< Empty if the node has none.
    TRect State;
    TRect Icon;
    TRect Text;
  };
  struct TPress {
    TTreeNode* Node = nullptr;
    TMouseButton Button = mbLeft;
    TPoint Start;
    bool EditOnUp = false;
  };

  const std::vector<TTreeNode*>& Rows() const;
  int RowOf(const TTreeNode* node) const;
  int GetTopRow() const;
  void RowsChanged();
  void UpdateScrollBars();
  void SetBar(TScrollBarKind kind, int page, int range, int line);
  int TextLeft(const TTreeNode& node) const;
  TParts GetParts(int row, const TString& text) const;
  TString AskText(TTreeNode* node) const;
  void InvalidateRow(int row);

  bool PaintRow(TCanvas& canvas, int row);
  void PaintParts(TCanvas& canvas, const TTreeNode& node, const TParts& parts, const TString& text,
                  int image);
  TCustomDrawState GetDrawState(const TTreeNode& node) const;

  void MouseDown(TMouseEvent& event);
  void MouseMove(const TMouseEvent& event);
  void MouseUp(const TMouseEvent& event);
  bool KeyDown(const TKeyEvent& event);
  TTreeNode* GetKeyTarget(std::uint16_t key) const;
  bool GoLeftOrRight(bool left);
  void TypeChar(char16_t character);
  bool Select(TTreeNode* node);
  void Toggle(TTreeNode* node, bool expand);

  mutable std::vector<TTreeNode*> fRows;
  mutable bool fRowsKnown = false;
  int fWidest = 0;  // right edge of the widest row that was painted
  TPress fPress;
  int fUpdateCount = 0;
  TString fSearch;
  std::uint64_t fSearchTicks = 0;
  mutable int fTextRequests = 0;
  int fImageRequests = 0;
};

}  // namespace oak
