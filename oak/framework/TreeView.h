// TCustomTreeView: nodes that are filled when they are first expanded.
#pragma once

#include <cstdint>
#include <exception>
#include <functional>
#include <memory>
#include <optional>

#include "oak/framework/ImageList.h"
#include "oak/framework/ListView.h"
#include "oak/framework/Timer.h"
#include "oak/framework/WidgetSet.h"
#include "oak/framework/WinControl.h"

namespace oak {

class TCustomTreeView;
class TTreeNode;
class TTreeNodes;

/// Order of two nodes: negative, 0 or positive. `Data` is the caller's.
using TTVCompare = std::function<int(TTreeNode* Node1, TTreeNode* Node2, LPARAM Data)>;

enum TNodeAttachMode : std::uint8_t { naAdd, naAddFirst, naAddChild, naAddChildFirst, naInsert };

/// A node. Owned by its tree; children are a linked list, so inserting and deleting costs the same
/// anywhere. Derive from it for nodes that know more. Main thread.
class TTreeNode : public TPersistent {
 public:
  explicit TTreeNode(TTreeNodes* owner) : fOwner(owner) {}
  ~TTreeNode() override;

  TTreeNodes* GetOwner() const noexcept { return fOwner; }
  TCustomTreeView* GetTreeView() const noexcept;
  TTreeNode* GetParent() const noexcept { return fParent; }
  TTreeNode* GetFirstChild() const noexcept { return fFirstChild; }
  TTreeNode* GetLastChild() const noexcept { return fLastChild; }
  TTreeNode* GetNextSibling() const noexcept { return fNextSibling; }
  TTreeNode* GetPrevSibling() const noexcept { return fPrevSibling; }
  /// Next in depth-first order, all or only those that a parent's expansion shows.
  TTreeNode* GetNext() const noexcept;
  TTreeNode* GetNextVisible() const noexcept;
  TTreeNode* GetPrevVisible() const noexcept;
  /// Number of direct children.
  int GetCount() const noexcept { return fCount; }
  /// 0 for roots.
  int GetLevel() const noexcept;
  /// Position among its siblings.
  int GetIndex() const noexcept;
  bool HasAsParent(const TTreeNode* node) const noexcept;
  bool GetDeleting() const noexcept { return (fFlags & FlagDeleting) != 0; }

  virtual TString GetText() const { return fText; }
  void SetText(TString value);
  int GetImageIndex() const noexcept { return fImageIndex; }
  void SetImageIndex(int value);
  int GetSelectedIndex() const noexcept { return fSelectedIndex; }
  void SetSelectedIndex(int value);
  int GetOverlayIndex() const noexcept { return fOverlayIndex; }
  void SetOverlayIndex(int value);
  int GetStateIndex() const noexcept { return fStateIndex; }
  virtual void SetStateIndex(int value);

  /// Whether a button to expand is shown; true without children means that they are still to come.
  bool GetHasChildren() const noexcept { return (fFlags & FlagHasChildren) != 0; }
  void SetHasChildren(bool value);
  bool GetExpanded() const noexcept { return (fFlags & FlagExpanded) != 0; }
  void SetExpanded(bool value);
  /// Expands if the tree's CanExpand allows it; that is where children are added.
  virtual void Expand(bool recursive);
  virtual void Collapse(bool recursive);
  bool GetSelected() const noexcept;
  void SetSelected(bool value);
  bool GetFocused() const noexcept { return GetSelected(); }
  bool GetCut() const noexcept { return (fFlags & FlagCut) != 0; }
  void SetCut(bool value);
  bool GetDropTarget() const noexcept;
  void SetDropTarget(bool value);
  bool GetEnabled() const noexcept { return (fFlags & FlagDisabled) == 0; }
  void SetEnabled(bool value);

  /// Removes and destroys the node with all its children. The whole branch is out of the tree
  /// before the first node is told; the children are told first. What a handler throws comes out at
  /// the end.
  void Delete();
  void DeleteChildren();
  /// With all its children. Raises EInvalidOperation for a place in its own branch or in another
  /// tree; nothing if the node or `destination` is being deleted. What is edited
  /// is cancelled; a selected node that gets hidden gives the selection to a parent.
  void MoveTo(TTreeNode* destination, TNodeAttachMode mode);
  /// Stable sort of the direct children, or of the whole branch. Without a function by text, in the
  /// logical order. The function may contradict itself; when it changes the tree, sorting ends.
  /// False if there was nothing to sort.
  bool CustomSort(const TTVCompare& compare, LPARAM data, bool recursive = false);

  void MakeVisible();
  /// Whether all parents are expanded.
  bool IsNodeVisible() const noexcept;
  /// In client pixels; empty if scrolled away, hidden or without a window.
  TRect DisplayRect(bool textOnly) const;
  bool EditText();
  void EndEdit(bool cancel);
  /// Asks for a paint of the node.
  void Update();

  void* Data = nullptr;
  /// Place for the peer of the tree.
  std::uintptr_t PeerData = 0;

 private:
  friend class TTreeNodes;
  friend class TCustomTreeView;
  enum : std::uint8_t {
    FlagHasChildren = 1,
    FlagExpanded = 2,
    FlagCut = 4,
    FlagDeleting = 8,
    FlagDisabled = 16
  };
  bool SetFlag(std::uint8_t flag, bool value);
  void ExpandAlone();

  TTreeNodes* fOwner;
  TTreeNode* fParent = nullptr;
  TTreeNode* fFirstChild = nullptr;
  TTreeNode* fLastChild = nullptr;
  TTreeNode* fNextSibling = nullptr;
  TTreeNode* fPrevSibling = nullptr;
  TString fText;
  int fCount = 0;
  int fImageIndex = -1;
  int fSelectedIndex = -1;
  std::int16_t fOverlayIndex = -1;
  std::int16_t fStateIndex = -1;
  std::uint8_t fFlags = 0;
};

/// The nodes of a tree.
class TTreeNodes : public TPersistent {
 public:
  explicit TTreeNodes(TCustomTreeView* owner);
  ~TTreeNodes() override;
  TCustomTreeView* GetOwner() const noexcept { return fOwner; }

  /// Number of all nodes.
  int GetCount() const noexcept { return fCount; }
  TTreeNode* GetFirstNode() const noexcept { return fFirst; }
  TTreeNode* GetLastNode() const noexcept { return fLast; }
  /// Node at a depth-first position; linear.
  TTreeNode* GetNodeFromIndex(int index) const;
  /// A sibling of `sibling` at the end; nil: a root.
  TTreeNode* Add(TTreeNode* sibling, TString text);
  TTreeNode* AddChild(TTreeNode* parent, TString text);
  TTreeNode* AddChildFirst(TTreeNode* parent, TString text);
  /// Before `sibling`.
  TTreeNode* Insert(TTreeNode* sibling, TString text);
  /// nil if a handler removed the node, or if `relative` or the tree are being destroyed.
  TTreeNode* AddNode(std::unique_ptr<TTreeNode> node, TTreeNode* relative, TNodeAttachMode mode);
  void Delete(TTreeNode* node);
  void Clear();
  void BeginUpdate();
  void EndUpdate();
  bool IsUpdating() const noexcept { return fUpdateCount > 0; }

 private:
  friend class TTreeNode;
  friend class TCustomTreeView;
  void Attach(TTreeNode* node, TTreeNode* relative, TNodeAttachMode mode);
  void Move(TTreeNode* node, TTreeNode* destination, TNodeAttachMode mode);
  void Link(TTreeNode* node, TTreeNode* parent, TTreeNode* before);
  void Unlink(TTreeNode* node);
  bool Sort(TTreeNode* parent, const TTVCompare& compare, LPARAM data);
  void SortBranch(TTreeNode* parent, const TTVCompare& compare, LPARAM data, bool recursive);
  static TTreeNode* NextInBranch(const TTreeNode* root, TTreeNode* node);
  static int MarkBranch(TTreeNode* root);
  static void DestroyBranch(TTreeNode* root, TCustomTreeView* view, const TLifeGuard& guard,
                            std::exception_ptr& failure);

  TCustomTreeView* fOwner;
  TTreeNode* fFirst = nullptr;
  TTreeNode* fLast = nullptr;
  int fCount = 0;
  int fUpdateCount = 0;
  unsigned fVersion = 0;  // counts changes of number or order
};

/// Tells whether a node is still part of its tree, after code that may have deleted it or the tree.
/// Lives on the stack; several end in the reverse order of their making.
class TTreeNodeWatch {
 public:
  TTreeNodeWatch(TCustomTreeView& view, TTreeNode* node);
  ~TTreeNodeWatch();
  TTreeNodeWatch(const TTreeNodeWatch&) = delete;
  TTreeNodeWatch& operator=(const TTreeNodeWatch&) = delete;
  bool Exists() const { return fGuard.IsAlive() && fNode && !fNode->GetDeleting(); }

 private:
  friend class TCustomTreeView;
  TCustomTreeView& fView;
  TLifeGuard fGuard;
  TTreeNode* fNode;
  TTreeNodeWatch* fOuter;
};

/// A tree of nodes. Children are asked for by CanExpand when a node is first opened; text and
/// images when a node is drawn.
class TCustomTreeView : public TWinControl {
 public:
  explicit TCustomTreeView(TComponent* owner = nullptr);
  ~TCustomTreeView() override;

  TTreeNodes& Items() noexcept { return *fItems; }
  const TTreeNodes& Items() const noexcept { return *fItems; }

  TTreeNode* GetSelected() const noexcept { return fSelected; }
  /// Asks CanChange; a refusal leaves the selection.
  void SetSelected(TTreeNode* value);
  /// Marked as the place of a drop.
  TTreeNode* GetDropTargetNode() const noexcept { return fDropTarget; }
  void SetDropTargetNode(TTreeNode* value);
  TTreeNode* GetTopItem() const;
  void SetTopItem(TTreeNode* value);

  TImageList* GetImages() const noexcept { return fImages; }
  virtual void SetImages(TImageList* value);
  TImageList* GetStateImages() const noexcept { return fStateImages; }
  virtual void SetStateImages(TImageList* value);
  int GetIndent() const noexcept { return fIndent; }
  void SetIndent(int value);
  bool GetShowButtons() const noexcept { return fShowButtons; }
  void SetShowButtons(bool value);
  bool GetShowLines() const noexcept { return fShowLines; }
  void SetShowLines(bool value);
  bool GetShowRoot() const noexcept { return fShowRoot; }
  void SetShowRoot(bool value);
  bool GetHideSelection() const noexcept { return fHideSelection; }
  void SetHideSelection(bool value);
  bool GetRowSelect() const noexcept { return fRowSelect; }
  void SetRowSelect(bool value);
  bool GetReadOnly() const noexcept { return fReadOnly; }
  void SetReadOnly(bool value);
  bool GetHotTrack() const noexcept { return fHotTrack; }
  void SetHotTrack(bool value);
  bool GetToolTips() const noexcept { return fToolTips; }
  void SetToolTips(bool value);
  bool GetRightClickSelect() const noexcept { return fRightClickSelect; }
  void SetRightClickSelect(bool value) { fRightClickSelect = value; }
  /// Milliseconds between a selection by the user and Change; 0: at once.
  int GetChangeDelay() const noexcept { return fChangeDelay; }
  virtual void SetChangeDelay(int value);

  TTreeNode* GetNodeAt(int x, int y) const;
  TTreeHitTest GetHitTest(int x, int y) const;
  int GetVisibleRowCount() const;
  void FullExpand();
  void FullCollapse();
  bool IsEditing() const;
  HWND GetEditControl() const;
  TString GetEditText() const;
  void SetEditText(const TString& text);
  void SelectEditText(int start, int end);
  bool CustomSort(const TTVCompare& compare, LPARAM data, bool recursive = true);

  std::function<void(TObject* Sender, TTreeNode* Node)> OnChange;
  std::function<void(TObject* Sender, TTreeNode* Node, bool& AllowChange)> OnChanging;
  std::function<void(TObject* Sender, TTreeNode* Node, bool& AllowExpansion)> OnExpanding;
  std::function<void(TObject* Sender, TTreeNode* Node)> OnExpanded;
  std::function<void(TObject* Sender, TTreeNode* Node, bool& AllowCollapse)> OnCollapsing;
  std::function<void(TObject* Sender, TTreeNode* Node)> OnCollapsed;
  std::function<void(TObject* Sender, TTreeNode* Node, bool& AllowEdit)> OnEditing;
  std::function<void(TObject* Sender, TTreeNode* Node, TString& Text)> OnEdited;
  std::function<void(TObject* Sender, TTreeNode* Node)> OnDeletion;
  std::function<void(TObject* Sender, TTreeNode* Node)> OnAddition;
  std::function<void(TObject* Sender, TTreeNode* Node)> OnGetImageIndex;
  std::function<std::unique_ptr<TTreeNode>(TCustomTreeView* Sender)> OnCreateNode;
  std::function<void(TObject* Sender, TTreeNode* Node, TCustomDrawState State,
                     TCustomDrawStage Stage, TCanvas& Canvas, bool& DefaultDraw)>
      OnAdvancedCustomDrawItem;

  // --- for peers -----------------------------------------------------------------------------
  TString HandleGetText(TTreeNode* node);
  int HandleGetImage(TTreeNode* node, bool selected);
  TColor HandleTextColor(TTreeNode* node, TColor standard);
  bool HandleCanExpand(TTreeNode* node);  ///< Fills the children as well.
  void HandleExpanded(TTreeNode* node);
  bool HandleCanCollapse(TTreeNode* node);
  void HandleCollapsed(TTreeNode* node);
  bool HandleSelecting(TTreeNode* node);
  void HandleSelected(TTreeNode* node);
  bool HandleBeginEdit(TTreeNode* node);
  /// nullopt: the user cancelled. True if the text was taken. Ends what HandleBeginEdit began.
  bool HandleEndEdit(std::optional<TString> text);
  /// The node whose text is being edited, nil once it was deleted meanwhile.
  TTreeNode* GetEditedNode() const noexcept { return fEdited; }
  void HandleBeginDrag(TTreeNode* node, TMouseButton button);
  bool HandleCustomDrawItem(TCanvas& canvas, TTreeNode* node, TCustomDrawState state,
                            TCustomDrawStage stage);
  ITreeViewPeer* GetTreePeer() const noexcept { return fTreePeer; }

 protected:
  std::unique_ptr<IControlPeer> CreatePeer() override;
  void CreateWnd() override;
  void DestroyWnd() override;
  void Notification(TComponent* component, TOperation operation) override;
  void ChangeScale(int m, int d) override;

  virtual std::unique_ptr<TTreeNode> CreateNode();
  virtual bool CanChange(TTreeNode* node);
  virtual void Change(TTreeNode* node);
  virtual bool CanExpand(TTreeNode* node);
  /// Called for the expansion by the user and by the program.
  virtual void Expanded(TTreeNode* node);
  virtual bool CanCollapse(TTreeNode* node);
  virtual void Collapsed(TTreeNode* node);
  virtual bool CanEdit(TTreeNode* node);
  virtual void Edit(TTreeNode* node, const TString& text);
  virtual void CancelEdit(TTreeNode* node);
  virtual void Delete(TTreeNode* node);
  virtual void Added(TTreeNode* node);
  virtual void GetImageIndex(TTreeNode* node);
  virtual void GetSelectedIndex(TTreeNode* node);
  virtual void DoBeginDrag(TTreeNode* node, TMouseButton button);
  virtual bool IsCustomDrawn(TCustomDrawTarget target, TCustomDrawStage stage);
  virtual bool CustomDrawItem(TCanvas& canvas, TTreeNode* node, TCustomDrawState state,
                              TCustomDrawStage stage);
  virtual TColor GetNodeTextColor(TTreeNode* node, TColor standard) {
    (void)node;
    return standard;
  }

 private:
  friend class TTreeNode;
  friend class TTreeNodes;
  friend class TTreeNodeWatch;
  void ForgetBranch(TTreeNode* node);
  bool EndEditBelow(TTreeNode* node);
  void SelectVisible();
  void EndNode(TTreeNode* node);
  void ExpandParents(TTreeNode* node);
  void SelectionHasChanged();
  void SetImageField(TImageList*& field, TChangeLink& link, TImageList* value, TListImages which);
  void SetStyleFlag(bool& field, bool value);

  std::unique_ptr<TTreeNodes> fItems;
  TTreeNodeWatch* fWatches = nullptr;
  ITreeViewPeer* fTreePeer = nullptr;
  TTreeNode* fSelected = nullptr;
  TTreeNode* fDropTarget = nullptr;
  TTreeNode* fEdited = nullptr;
  TTreeNode* fTop = nullptr;  // while there is no window
  TImageList* fImages = nullptr;
  TImageList* fStateImages = nullptr;
  TChangeLink fImagesLink;
  TChangeLink fStateImagesLink;
  TTimer fChangeTimer;
  int fIndent = 19;
  int fChangeDelay = 0;
  bool fShowButtons = true;
  bool fShowLines = true;
  bool fShowRoot = true;
  bool fHideSelection = true;
  bool fRowSelect = false;
  bool fReadOnly = false;
  bool fHotTrack = false;
  bool fToolTips = true;
  bool fRightClickSelect = false;
};

}  // namespace oak
