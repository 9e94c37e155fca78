// TCustomListView: rows with a caption, sub items and an image, in four view styles.
#pragma once

#include <algorithm>
#include <array>
#include <climits>
#include <cstdint>
#include <functional>
#include <memory>
#include <optional>
#include <vector>

#include "oak/framework/ListColumns.h"
#include "oak/framework/ListItems.h"
#include "oak/framework/WidgetSet.h"
#include "oak/framework/WinControl.h"

namespace oak {

class TImageList;
class TChangeLink;
class TBitmap;

enum TViewStyle : std::uint8_t { vsIcon, vsSmallIcon, vsList, vsReport };
enum TSearchDirection : std::uint8_t { sdLeft, sdRight, sdAbove, sdBelow, sdAll };
enum TListArrangement : std::uint8_t {
  arAlignBottom,
  arAlignLeft,
  arAlignRight,
  arAlignTop,
  arDefault,
  arSnapToGrid
};

enum TCustomDrawTarget : std::uint8_t { dtControl, dtItem, dtSubItem };
enum TCustomDrawStage : std::uint8_t { cdPrePaint, cdPostPaint, cdPreErase, cdPostErase };
enum TCustomDrawStateFlag : std::uint8_t {
  cdsSelected,
  cdsGrayed,
  cdsDisabled,
  cdsChecked,
  cdsFocused,
  cdsDefault,
  cdsHot,
  cdsMarked,
  cdsIndeterminate
};
using TCustomDrawState = TSet<TCustomDrawStateFlag>;

using TLVCompare = std::function<int(TListItem* Item1, TListItem* Item2, LPARAM Data)>;

/// A list of rows. The rows belong to the control; the screen asks for the text and the image of a
/// row when it draws it and at no other time.
class TCustomListView : public TWinControl {
 public:
  explicit TCustomListView(TComponent* owner = nullptr);
  ~TCustomListView() override;

  /// Made at the first call, by CreateListItems and CreateListColumns.
  TListItems& Items() { return fItems ? *fItems : MakeItems(); }
  const TListItems& Items() const { return const_cast<TCustomListView*>(this)->Items(); }
  TListColumns& Columns() { return fColumns ? *fColumns : MakeColumns(); }
  const TListColumns& Columns() const { return const_cast<TCustomListView*>(this)->Columns(); }
  virtual void Clear() { Items().Clear(); }

  TViewStyle GetViewStyle() const noexcept { return fViewStyle; }
  /// Default vsIcon.
  virtual void SetViewStyle(TViewStyle value);
  bool GetMultiSelect() const noexcept { return fMultiSelect; }
  /// Default true. Without, the first selected row alone stays selected.
  void SetMultiSelect(bool value);
  /// Default false: captions can be edited.
  virtual bool GetReadOnly() const { return fReadOnly; }
  virtual void SetReadOnly(bool value);
  /// Check boxes of the list's own, unless there are state images, which are what the rows show
  /// then and the application's to change.
  bool GetCheckboxes() const noexcept { return fCheckboxes; }
  virtual void SetCheckboxes(bool value);
  /// In vsReport the whole row is marked and can be clicked.
  bool GetRowSelect() const noexcept { return fRowSelect; }
  void SetRowSelect(bool value);
  bool GetGridLines() const noexcept { return fGridLines; }
  void SetGridLines(bool value);
  /// Selected rows look like others while the list has no focus; default false.
  bool GetHideSelection() const noexcept { return fHideSelection; }
  void SetHideSelection(bool value);
  /// Column captions are buttons; default true.
  bool GetColumnClick() const noexcept { return fColumnClick; }
  void SetColumnClick(bool value);
  /// Columns can be dragged to another place; default true.
  bool GetFullDrag() const noexcept { return fFullDrag; }
  void SetFullDrag(bool value);
  bool GetShowColumnHeaders() const noexcept { return fShowColumnHeaders; }
  void SetShowColumnHeaders(bool value);  ///< Default true.
  bool GetHotTrack() const noexcept { return fHotTrack; }
  void SetHotTrack(bool value);
  /// Icons stay in their grid; default true.
  bool GetAutoArrange() const noexcept { return fAutoArrange; }
  void SetAutoArrange(bool value);

  // Image lists are not owned; one that ends takes itself away.
  TImageList* GetSmallImages() const noexcept { return fImages[1]; }
  virtual void SetSmallImages(TImageList* value);
  TImageList* GetLargeImages() const noexcept { return fImages[0]; }
  virtual void SetLargeImages(TImageList* value);
  TImageList* GetStateImages() const noexcept { return fImages[2]; }
  virtual void SetStateImages(TImageList* value);
  /// Pixels from icon to icon; -1, -1 is the default of the system.
  void SetIconSpacingPixels(int width, int height);
  TSize GetIconSpacingPixels() const noexcept { return fIconSpacing; }
  /// Width of the columns of vsList; -1 is the default of the system.
  void SetDefaultColumnWidthPixels(int width);
  int GetDefaultColumnWidthPixels() const noexcept { return fDefaultColumnWidth; }

  /// Background picture; nil takes it away. The control keeps a copy.
  void SetBackgroundBitmap(const TBitmap* bitmap, bool tiled, int xPercent, int yPercent);
  const TBitmap* GetBackgroundBitmap() const noexcept { return fBackground.get(); }
  bool IsBackgroundTiled() const noexcept { return fBackgroundTiled; }
  TPoint GetBackgroundOffset() const noexcept { return fBackgroundOffset; }  ///< Percent.

  // --- selection -----------------------------------------------------------------------------
  int GetSelCount() const noexcept { return fSelCount; }
  // Each row whose selection changes is told by Change and DoSelectItem, after the states of all
  // rows have been set; what these handlers change is told after they have returned.
  /// First selected row, or nil. Setting selects that row alone and focuses it; nil selects none.
  TListItem* GetSelected() const;
  void SetSelected(TListItem* value);
  /// The row that keys start from. When it is deleted, the next one has the focus.
  TListItem* GetItemFocused() const noexcept { return fItemFocused; }
  void SetItemFocused(TListItem* value);
  TListItem* GetDropTargetItem() const noexcept { return fDropTarget; }
  virtual void SelectAll();
  virtual void ClearSelection();
  virtual void DeleteSelected();
  /// The next row after `start` (nil: from the first on) that has all these states, in the order of
  /// the rows; backwards from `start` with sdAbove and sdLeft.
  TListItem* GetNextItem(TListItem* start, TSearchDirection direction, TItemStates states) const;
  /// First row after `startIndex` (`inclusive`: from it on; never before the first row) with that
  /// caption or, with `partial`, one that begins so; case is ignored. `wrap` goes on at the first
  /// row up to the one before the start. nil if there is none.
  virtual TListItem* FindCaption(int startIndex, const TString& value, bool partial, bool inclusive,
                                 bool wrap);

  // --- geometry: client pixels; nil, -1 or empty without a window ---------------------------
  /// The row whose icon, label or check box is there; with RowSelect all of its cells count.
  TListItem* GetItemAt(int x, int y) const;
  /// SubItem is a position among the columns. In the blank part of a cell of vsReport, Index names
  /// the row though Flags is htNowhere.
  TListHitTest GetHitTest(int x, int y) const;
  TListItem* GetTopItem() const;
  int GetVisibleRowCount() const;
  /// By pixels; positive shows what lies to the right and below.
  void Scroll(int dx, int dy);
  /// Texts and images of these rows have changed.
  void UpdateItems(int first, int last);
  /// Puts the icons of vsIcon and vsSmallIcon in their grid, whatever the code.
  void Arrange(TListArrangement code);
  int GetStringWidth(const TString& text) const;
  HWND GetHeaderHandle() const;
  TRect GetHeaderRect() const;
  /// Sets the widths of all columns that are not hidden so that the texts of the visible rows and
  /// the captions fit: what Ctrl and the numeric plus key do.
  void SizeColumnsToFit();

  // --- editing -------------------------------------------------------------------------------
  bool IsEditing() const;
  HWND GetEditControl() const;
  TString GetEditText() const;
  void SetEditText(const TString& text);
  void SelectEditText(int start, int end);
  void EndEditing(bool cancel);

  /// Sorts the rows; equal ones keep their order, and all keep their states. Without a function:
  /// OnCompare, else the captions in the logical order. The function may contradict itself, as
  /// comparisons of foreign code do. False if it removed or added rows: then nothing was sorted.
  bool CustomSort(const TLVCompare& compare, LPARAM data);

  // --- events --------------------------------------------------------------------------------
  std::function<void(TObject* Sender, TListItem* Item, TItemChange Change)> OnChange;
  std::function<void(TObject* Sender, TListItem* Item, bool Selected)> OnSelectItem;
  std::function<void(TObject* Sender, TListColumn* Column)> OnColumnClick;
  std::function<void(TObject* Sender, TListColumn* Column, TPoint Point)> OnColumnRightClick;
  TNotifyEvent OnColumnDragged;
  std::function<void(TObject* Sender, TListItem* Item, bool& AllowEdit)> OnEditing;
  std::function<void(TObject* Sender, TListItem* Item, TString& Text)> OnEdited;
  std::function<void(TObject* Sender, TListItem* Item)> OnDeletion;
  std::function<void(TObject* Sender, TListItem* Item)> OnInsert;
  std::function<void(TObject* Sender, TListItem* Item)> OnGetImageIndex;
  std::function<void(TObject* Sender, TListItem* Item1, TListItem* Item2, LPARAM Data,
                     int& Compare)>
      OnCompare;
  std::function<std::unique_ptr<TListItem>(TCustomListView* Sender)> OnCreateItem;
  std::function<void(TObject* Sender, TListItem* Item, TCustomDrawState State,
                     TCustomDrawStage Stage, TCanvas& Canvas, bool& DefaultDraw)>
      OnAdvancedCustomDrawItem;

  // --- for peers -----------------------------------------------------------------------------
  // A peer does not hear of what it reports itself: it repaints what it must. Icon, label and
  // editor stand in the column TListColumns::GetLabelColumn.
  // What to draw. May compute, load or queue; called for visible rows only.
  /// Text of a cell, `column` in the order of the screen; the caption in the other view styles.
  TString HandleGetText(int index, int column);
  int HandleGetImage(int index);
  TItemStates HandleGetStates(int index) const;
  TColor HandleTextColor(int index, TColor standard);
  // What the user did.
  /// Rows first..last get or lose the selection. Without MultiSelect others lose it to the last.
  void HandleSelectRange(int first, int last, bool selected);
  /// The rows first..last become the selected ones, all others lose the selection.
  void HandleSelectOnly(int first, int last);
  /// -1: none.
  void HandleFocusItem(int index);
  void HandleColumnClick(int column);
  void HandleColumnRightClick(int column, TPoint point);
  /// During and at the end of a drag of a column's edge.
  void HandleColumnWidth(int column, int width, bool finished);
  /// Whether a column may be dropped at that place; x is in header pixels.
  bool HandleColumnDragging(int from, int to, int x);
  void HandleColumnDragged(int from, int to);
  /// Asks whether the row may be edited, and from then on counts it as edited until HandleEndEdit.
  bool HandleBeginEdit(int index);
  /// nullopt: the user cancelled. True if the text was taken. For the row of HandleBeginEdit.
  bool HandleEndEdit(std::optional<TString> text);
  /// The row of HandleBeginEdit, or nil; it may have moved since.
  TListItem* GetEditedItem() const noexcept { return fEdited; }
  void HandleBeginDrag(TMouseButton button);
  /// Row that a typed text leads to, or -1.
  int HandleIncrementalSearch(const TString& text, int start);
  void HandleToggleCheck(int index);
  // Drawing steps: false if the application has done the step itself.
  bool HandleCustomDraw(TCanvas& canvas, const TRect& rect, TCustomDrawStage stage);
  bool HandleCustomDrawItem(TCanvas& canvas, int index, TCustomDrawState state,
                            TCustomDrawStage stage);
  bool HandleCustomDrawSubItem(TCanvas& canvas, int index, int column, TCustomDrawState state,
                               TCustomDrawStage stage);
  IListViewPeer* GetListPeer() const noexcept { return fListPeer; }

 protected:
  std::unique_ptr<IControlPeer> CreatePeer() override;
  void CreateWnd() override;
  void DestroyWnd() override;
  void Notification(TComponent* component, TOperation operation) override;
  void ChangeScale(int m, int d) override;
  /// All keys while editing, arrows always.
  bool WantsKey(std::uint16_t key, TShiftState shift) override;

  // The collections; a descendant may make its own kinds of them.
  virtual std::unique_ptr<TListItems> CreateListItems();
  virtual std::unique_ptr<TListColumns> CreateListColumns();
  /// Makes a row; default: OnCreateItem, else TListItem.
  virtual std::unique_ptr<TListItem> CreateListItem();
  virtual std::unique_ptr<TListColumn> CreateListColumn();
  /// A row was added. Default: OnInsert.
  virtual void InsertItem(TListItem* item);
  /// A row is about to be removed and still has its place. Default: OnDeletion.
  virtual void DeleteItem(TListItem* item);
  /// Text, image or a state of a row changed, by the user or the program. Default: OnChange.
  virtual void Change(TListItem* item, TItemChange change);
  /// After Change, when the selection changed. Default: OnSelectItem.
  virtual void DoSelectItem(TListItem* item, bool selected);
  /// Default: not read-only, and OnEditing.
  virtual bool CanEdit(TListItem* item);
  /// The user finished editing; default: OnEdited, then the caption. Not called when cancelled.
  virtual void Edit(TListItem* item, const TString& text);
  virtual void CancelEdit(TListItem* item);
  virtual void ColClick(TListColumn* column);
  /// nil: right of the columns. The point is in header pixels.
  virtual void ColRightClick(TListColumn* column, TPoint point);
  virtual bool CanDragColumn(int from, int to, int x);
  virtual void ColDragged(int from, int to);
  virtual void ColResized(int column, bool finished);
  /// The user drags the selected rows; default: nothing.
  virtual void DoBeginDrag(TMouseButton button);
  /// The picture that the selected rows are dragged with, and the pointer's place in it; nil for
  /// none. Default: the image of the focused row if selected, else of the first selected one.
  virtual std::unique_ptr<TBitmap> GetDragImage(TPoint& hotSpot);
  /// Makes sure that the row has its image; default: OnGetImageIndex.
  virtual void GetImageIndex(TListItem* item);
  /// Text of a cell. Default: what the column's text index says; without columns the caption.
  virtual TString GetColumnText(TListItem* item, int column);
  /// Row for typed text, `start` included; default: FindCaption with partial match and wrap.
  virtual int IncrementalSearch(const TString& text, int start);
  /// Whether the steps below are asked. Default: those of rows, with OnAdvancedCustomDrawItem.
  virtual bool IsCustomDrawn(TCustomDrawTarget target, TCustomDrawStage stage);
  virtual bool CustomDraw(TCanvas& canvas, const TRect& rect, TCustomDrawStage stage);
  virtual bool CustomDrawItem(TCanvas& canvas, TListItem* item, TCustomDrawState state,
                              TCustomDrawStage stage);
  virtual bool CustomDrawSubItem(TCanvas& canvas, TListItem* item, int column,
                                 TCustomDrawState state, TCustomDrawStage stage);
  virtual TColor GetItemTextColor(TListItem* item, TColor standard) {
    (void)item;
    return standard;
  }

 private:
  friend class TListItem;
  friend class TListItems;
  friend class TListColumns;
  friend class TListColumn;

  TListItems& MakeItems();
  TListColumns& MakeColumns();
  template <class T>
  void SetStyleFlag(T& field, T value);
  void SetImages(TListImages which, TImageList* value);
  void PushStateToPeer();

  // What rows and columns report.
  void ItemAdded(TListItem* item, int index);
  void ItemsLeft(int index, int count, bool together);
  void ItemChanged(TListItem* item, TItemChange change);
  void LookChanged(const TListItem* item);
  void Forget(TListItem* item, int nextFocus) noexcept;
  void RowsReset();
  void RowsChanged(int first, int last);
  void StatesChanged(int first, int last);
  void UpdateBegun();
  void UpdateEnded();
  void ColumnsChanged();
  void ColumnWidthChanged(int column);
  void FitColumn(int column, bool withCaption);
  void FitWaitingColumns();

  // Selection: first the states of all rows, then the peer, then the handlers.
  struct TRange {
    int First = INT_MAX;
    int Last = -1;
    bool IsEmpty() const { return Last < First; }
    void Add(int first, int last) {
      First = std::min(First, first);
      Last = std::max(Last, last);
    }
  };
  void Mark(int index, bool selected, TRange& changed);
  void MarkRange(int first, int last, bool selected, TRange& changed);
  void MarkOnly(int first, int last, TRange& changed);
  void SelectionMarked(const TRange& changed, bool tellPeer);
  void TellSelection(TRange range);
  bool TellRow(TListItem* item);
  void SetItemState(TListItem* item, std::uint8_t flag, bool value);
  void SetItemSelected(TListItem* item, bool value);
  void FocusItem(TListItem* item, bool tellPeer);
  std::vector<TListItem*> SortedByCaption() const;
  bool ApplyOrder(const std::vector<TListItem*>& order);

  std::unique_ptr<TListItems> fItems;
  std::unique_ptr<TListColumns> fColumns;
  IListViewPeer* fListPeer = nullptr;
  std::array<TImageList*, 3> fImages{};  // by TListImages
  std::array<std::unique_ptr<TChangeLink>, 3> fImageLinks;
  std::unique_ptr<TBitmap> fBackground;
  TPoint fBackgroundOffset;
  TListItem* fItemFocused = nullptr;
  TListItem* fDropTarget = nullptr;
  TListItem* fEdited = nullptr;
  const TListItem* fImageRequest = nullptr;  // the row whose image is being asked for
  int fSelCount = 0;
  int fUntold = 0;              // rows with StateUntold
  mutable int fNoneBefore = 0;  // no row before it is selected
  int fTopIndex = 0;            // while the window is made anew
  // What an update bracket has to tell the peer at its end.
  struct TPending {
    bool Reset = false;
    TRange Rows;
    TRange States;
  } fPending;
  TSize fIconSpacing{-1, -1};
  int fDefaultColumnWidth = -1;
  TViewStyle fViewStyle = vsIcon;
  bool fTelling = false;  // handlers of a change of the selection run
  bool fMultiSelect = true;
  bool fReadOnly = false;
  bool fCheckboxes = false;
  bool fRowSelect = false;
  bool fGridLines = false;
  bool fHideSelection = false;
  bool fColumnClick = true;
  bool fFullDrag = true;
  bool fShowColumnHeaders = true;
  bool fHotTrack = false;
  bool fAutoArrange = true;
  bool fBackgroundTiled = false;
};

}  // namespace oak
