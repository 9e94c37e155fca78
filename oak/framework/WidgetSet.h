// The seam between controls and what shows them: a widget set and its peers.
//
// A control owns its model and works without a window. When it is shown it asks the current widget
// set for a peer: the thing on the screen. A peer holds nothing that the model lacks; it is told
// what changed, asks the control for text and images of what it is about to draw, and reports what
// the user does through the control's Handle... operations. Everything here runs on the main
// thread. A peer must expect that any call into its control destroys the control, and with it
// the peer: it keeps a TLifeGuard on the control around such calls.
#pragma once

#include <functional>
#include <memory>
#include <vector>

#include "oak/framework/ControlTypes.h"
#include "oak/framework/Graphics.h"

struct IDataObject;
struct IDropSource;
struct IDropTarget;

namespace oak {

class TCanvas;
class TWinControl;
class TCustomListView;
class TCustomTreeView;
class TCustomEdit;
class TCustomComboBoxEx;
class TCustomForm;
class TImageList;
class TMenuItem;
class TMenu;
class TPopupMenu;
class TBitmap;

/// What a windowed control needs of its window. Coordinates are pixels of the parent's client area
/// for bounds, of the own client area otherwise.
class IControlPeer {
 public:
  virtual ~IControlPeer() = default;

  /// The system's window; unique and not null in every widget set.
  virtual HWND GetHandle() const = 0;

  virtual void SetBounds(const TRect& bounds) = 0;
  virtual TRect GetClientRect() const = 0;
  virtual TPoint ClientToScreen(TPoint point) const = 0;
  virtual TPoint ScreenToClient(TPoint point) const = 0;
  /// Density of the monitor that the window is on, or what the process is told of it.
  virtual int GetPixelsPerInch() const = 0;
  virtual void SetVisible(bool visible) = 0;
  virtual void SetEnabled(bool enabled) = 0;
  virtual void SetText(const TString& text) = 0;
  virtual void SetFont(const TFont& font) = 0;
  /// Colours have changed; the peer asks the control for them when it draws.
  virtual void ColorsChanged() = 0;
  virtual void SetCursor(TCursor cursor) = 0;
  virtual void SetHint(const TString& hint) = 0;
  /// The control changed its parent window; `parent` may be a window of a foreign program part.
  virtual void SetParent(HWND parent) = 0;
  /// To the top or the bottom among its siblings.
  virtual void SetZOrder(bool top) = 0;

  /// Asks for a paint of the rectangle, or of all if it is null, later. Never paints at once.
  virtual void Invalidate(const TRect* rect) = 0;
  /// Paints now what is invalid.
  virtual void Update() = 0;

  virtual bool SetFocus() = 0;
  virtual bool HasFocus() const = 0;
  virtual void SetCapture(bool capture) = 0;
  virtual bool HasCapture() const = 0;

  /// Queues a message that comes back through TWinControl::HandleMessage after the present
  /// handler has returned; dropped when the window dies first.
  virtual void Post(UINT message, WPARAM wParam, LPARAM lParam) = 0;
  /// Sends a message to the window itself: for messages of the platform's controls and of shell
  /// extensions. 0 where a widget set doesn't know it.
  virtual LRESULT Send(UINT message, WPARAM wParam, LPARAM lParam) = 0;

  /// Makes the window a target of OLE drag and drop; nil takes that back.
  virtual HRESULT SetDropTarget(IDropTarget* target) = 0;

  /// Position, page and range of a scroll bar; false if the window has none.
  virtual bool GetScroll(TScrollBarKind kind, int* position, int* page, int* range) const = 0;
  /// Scrolls by lines; negative is left or up.
  virtual void ScrollLines(TScrollBarKind kind, int lines) = 0;
};

enum TDisplayCode : std::uint8_t { drBounds, drIcon, drLabel, drSelectBounds };

/// Where a point lies in a list or tree; the values are those of the platform's hit test.
enum THitTestFlag : std::uint8_t {
  htNowhere,
  htOnIcon,
  htOnLabel,
  htOnStateIcon,
  htOnIndent,
  htOnButton,
  htOnRight,
  htAbove,
  htBelow,
  htToLeft,
  htToRight
};
using THitTests = TSet<THitTestFlag>;

struct TListHitTest {
  int Index = -1;
  int SubItem = 0;  ///< Column whose cell was hit; 0 is the caption.
  THitTests Flags;
};

enum class TListImages : std::uint8_t { Large, Small, State };

/// The window of a list view. Index arguments are positions in the model after the change.
class IListViewPeer : public virtual IControlPeer {
 public:
  virtual void ItemsInserted(int index, int count) = 0;
  virtual void ItemsDeleted(int index, int count) = 0;
  /// Order or number of all rows may have changed.
  virtual void ItemsReset() = 0;
  /// Text or images of these rows have to be drawn anew; nothing is asked for before that.
  virtual void ItemsChanged(int first, int last) = 0;
  /// Selected or focused states of these rows were changed by the program.
  virtual void ItemStatesChanged(int first, int last) = 0;
  virtual void BeginUpdate() = 0;
  virtual void EndUpdate() = 0;

  /// Number, order, widths, captions or sort marks of columns have changed.
  virtual void ColumnsChanged() = 0;
  virtual void ColumnWidthChanged(int column) = 0;
  virtual void SetViewStyle() = 0;  ///< The control's view style or a style flag has changed.
  virtual void ImagesChanged(TListImages which) = 0;
  virtual void SetIconSpacing(int width, int height) = 0;  ///< -1, -1: the default.
  virtual void SetDefaultColumnWidth(int width) = 0;
  virtual void SetBackground() = 0;  ///< The control's background picture has changed.
  virtual void Arrange() = 0;

  virtual TRect GetItemRect(int index, TDisplayCode code) const = 0;
  virtual TRect GetSubItemRect(int index, int column) const = 0;
  virtual TListHitTest HitTest(TPoint point) const = 0;
  virtual int GetTopIndex() const = 0;
  virtual int GetVisibleRowCount() const = 0;
  virtual void MakeVisible(int index, bool partialOk) = 0;
  virtual void Scroll(int dx, int dy) = 0;
  /// Width in pixels of a caption in the list's font.
  virtual int GetStringWidth(const TString& text) const = 0;

  virtual bool BeginEdit(int index) = 0;
  virtual void EndEdit(bool cancel) = 0;
  virtual HWND GetEditHandle() const = 0;  ///< Null while no text is edited.
  virtual TString GetEditText() const = 0;
  virtual void SetEditText(const TString& text) = 0;
  virtual void SelectEditText(int start, int end) = 0;

  virtual HWND GetHeaderHandle() const = 0;
  virtual TRect GetHeaderRect() const = 0;            ///< In client pixels; empty if not shown.
  virtual int HeaderHitTest(TPoint point) const = 0;  ///< Column at a point of the list, or -1.
};

struct TTreeHitTest {
  class TTreeNode* Node = nullptr;
  THitTests Flags;
};

/// The window of a tree view.
class ITreeViewPeer : public virtual IControlPeer {
 public:
  virtual void NodeInserted(TTreeNode* node) = 0;
  /// Called while the node and its children still exist.
  virtual void NodeDeleting(TTreeNode* node) = 0;
  virtual void NodesCleared() = 0;
  /// The children of `parent` (nil: the roots) are in a new order.
  virtual void ChildrenSorted(TTreeNode* parent) = 0;
  virtual void NodeMoved(TTreeNode* node) = 0;
  /// Text, images, states or the mark that it has children changed.
  virtual void NodeChanged(TTreeNode* node) = 0;
  virtual void NodeExpanded(TTreeNode* node) = 0;  ///< Expanded or collapsed by the program.
  virtual void SelectionChanged() = 0;
  virtual void BeginUpdate() = 0;
  virtual void EndUpdate() = 0;
  virtual void StyleChanged() = 0;
  virtual void ImagesChanged(TListImages which) = 0;
  virtual void SetIndent(int pixels) = 0;

  virtual TRect GetNodeRect(TTreeNode* node, bool textOnly) const = 0;  ///< Empty if not visible.
  virtual TTreeHitTest HitTest(TPoint point) const = 0;
  virtual TTreeNode* GetTopNode() const = 0;
  virtual void SetTopNode(TTreeNode* node) = 0;
  virtual int GetVisibleRowCount() const = 0;
  virtual void MakeVisible(TTreeNode* node) = 0;

  virtual bool BeginEdit(TTreeNode* node) = 0;
  virtual void EndEdit(bool cancel) = 0;
  virtual HWND GetEditHandle() const = 0;
  virtual TString GetEditText() const = 0;
  virtual void SetEditText(const TString& text) = 0;
  virtual void SelectEditText(int start, int end) = 0;
};

/// The window of an edit control, single line, memo or rich.
class IEditPeer : public virtual IControlPeer {
 public:
  virtual TString GetText() const = 0;
  virtual void GetSelection(int* start, int* end) const = 0;
  virtual void SetSelection(int start, int end) = 0;
  virtual void StyleChanged() = 0;  ///< Read-only, limit, alignment, password or text hint.
  /// Loads formatted text: rich controls only, false elsewhere.
  virtual bool LoadRichText(const std::vector<std::uint8_t>& data) = 0;
};

/// The window of a combo box with images and an edit field.
class IComboPeer : public virtual IControlPeer {
 public:
  virtual void ItemsChanged() = 0;
  virtual void SetItemIndex(int index) = 0;
  virtual void SetDroppedDown(bool dropped) = 0;
  virtual bool GetDroppedDown() const = 0;
  virtual TString GetText() const = 0;
  virtual void SelectText(int start, int end) = 0;
  virtual void ImagesChanged() = 0;
  virtual HWND GetEditHandle() const = 0;
};

enum TWindowState : std::uint8_t { wsNormal, wsMinimized, wsMaximized };

/// A top-level window.
class IFormPeer : public virtual IControlPeer {
 public:
  virtual void SetWindowState(TWindowState state) = 0;
  virtual void SetCaption(const TString& caption) = 0;
  virtual void SetIcon(const TBitmap* icon) = 0;
  virtual void Activate() = 0;
  virtual void SetMenu(TMenu* menu) = 0;
  /// Disables the other windows of the program until `until` gives true, pumping messages.
  virtual void RunModal(const std::function<bool()>& until) = 0;
};

/// A timer of the widget set. Ticks stop when it is destroyed, even those that are already queued.
class ITimerPeer {
 public:
  virtual ~ITimerPeer() = default;
};

struct TMonitorInfo {
  TRect Bounds;
  TRect WorkArea;
  int PixelsPerInch = 96;
  bool Primary = false;
};

/// A dialog with a text and buttons, as TaskMessageDlg and MessageDlg show it.
struct TMessageDialog {
  TString Title;
  TString Instruction;  ///< Large text; may be empty.
  TString Text;
  std::uint8_t Kind = 0;      ///< TMsgDlgType.
  std::uint32_t Buttons = 0;  ///< Bits of TMsgDlgButtons.
  int DefaultButton = 0;      ///< TModalResult of the button.
  HWND Owner = nullptr;
};

class TWidgetSet {
 public:
  virtual ~TWidgetSet() = default;

  /// Makes the window; the control's properties have been set, its parent has a window. Raises
  /// EOSError if the system makes none.
  virtual std::unique_ptr<IControlPeer> CreateControl(
      TWinControl& control) = 0;  ///< Painted by the control.
  virtual std::unique_ptr<IFormPeer> CreateForm(TCustomForm& form) = 0;
  virtual std::unique_ptr<IListViewPeer> CreateListView(TCustomListView& view) = 0;
  virtual std::unique_ptr<ITreeViewPeer> CreateTreeView(TCustomTreeView& view) = 0;
  virtual std::unique_ptr<IEditPeer> CreateEdit(TCustomEdit& edit) = 0;
  virtual std::unique_ptr<IComboPeer> CreateCombo(TCustomComboBoxEx& combo) = 0;
  virtual std::unique_ptr<ITimerPeer> CreateTimer(unsigned milliseconds,
                                                  std::function<void()> tick) = 0;

  /// Runs one waiting message; false if none waits.
  virtual bool ProcessMessage() = 0;
  /// Waits until a message, a timer or a queued procedure is due.
  virtual void WaitMessage() = 0;
  /// Makes a WaitMessage of the main thread return. Any thread.
  virtual void WakeUp() = 0;

  virtual std::vector<TMonitorInfo> GetMonitors() const = 0;
  virtual TPoint GetCursorPos() const = 0;
  virtual void SetCursorPos(TPoint point) = 0;
  virtual void SetGlobalCursor(TCursor cursor) = 0;  ///< crDefault: each window's own.
  virtual TShiftState GetShiftState() const = 0;
  virtual bool IsKeyDown(std::uint16_t key) const = 0;
  virtual int GetSystemMetric(int index, int pixelsPerInch) const = 0;  ///< SM_... of the platform.
  virtual TColor GetSysColor(TColor systemColor) const = 0;             ///< As 0x00BBGGRR.
  virtual bool IsDarkMode() const = 0;
  virtual bool IsThemed() const { return false; }  ///< Whether the system draws themed controls.
  virtual TFont GetSystemFont(int pixelsPerInch) const = 0;  ///< Of lists and trees of the shell.
  virtual TSize MeasureText(const TFont& font, int pixelsPerInch, TStringView text) const = 0;
  virtual TWinControl* ControlOf(HWND window) const = 0;  ///< nil for foreign windows.
  virtual HWND GetFocusedWindow() const = 0;
  virtual bool IsWindow(HWND window) const = 0;

  /// Makes a system menu for the items; freed by DestroyMenu. The shell's menu objects add to it.
  virtual HMENU CreateMenu(const TMenuItem& root) = 0;
  virtual void DestroyMenu(HMENU menu) = 0;
  /// Shows a menu at a screen point until the user has chosen; 0 if nothing was chosen. `owner`
  /// gets the messages of owner-drawn and shell entries through HandleMessage.
  virtual UINT TrackMenu(HMENU menu, TPoint screen, TWinControl* owner, HWND ownerWindow) = 0;
  /// A window that is never shown; see AllocateHWnd.
  virtual HWND CreateHiddenWindow(std::function<void(TMessage&)> procedure) = 0;
  virtual void DestroyHiddenWindow(HWND window) = 0;
  virtual LRESULT DefaultProc(HWND window, const TMessage& message) = 0;
  virtual int ShowDialog(const TMessageDialog& dialog) = 0;  ///< Result: TModalResult.

  virtual bool GetClipboardText(TString* text) = 0;
  virtual bool SetClipboardText(const TString& text) = 0;

  /// Drags `data` until the user drops or cancels; pumps messages. `source` may be nil.
  virtual HRESULT DoDragDrop(TWinControl& control, IDataObject* data, IDropSource* source,
                             DWORD allowed, DWORD* effect) = 0;
};

/// The widget set of this program: the system's own, or what SetWidgetSet named. Main thread.
TWidgetSet& WidgetSet();

/// Makes another one current and gives back the former. To be called while no control has a window.
std::unique_ptr<TWidgetSet> SetWidgetSet(std::unique_ptr<TWidgetSet> widgetSet);

/// Makes the widget set of the running system: each system has its own definition.
std::unique_ptr<TWidgetSet> CreateSystemWidgetSet();

}  // namespace oak
