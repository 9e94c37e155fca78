// The user and the eye of the tests of controls: one source for both widget sets.
#pragma once

#include <functional>
#include <memory>
#include <string>
#include <vector>

#include "oak/framework/ControlTypes.h"
#include "oak/framework/Forms.h"
#include "oak/framework/ListView.h"
#include "oak/framework/StdCtrls.h"
#include "oak/framework/TreeView.h"

namespace oak::tests {

/// The images of a row or node as they are seen; -1 is none.
struct TShownImages {
  int Image = -1;
  int State = -1;    ///< Of the state images.
  int Overlay = -1;  ///< 0..14.
  bool Cut = false;  ///< Pale.
  friend bool operator==(const TShownImages&, const TShownImages&) = default;
};

/// A row of a list as it is seen.
struct TShownRow {
  std::vector<TString> Cells;  ///< In the order of the screen; one in the styles without columns.
  bool Marked = false;         ///< As selected, or as the target of a drop.
  bool Focused = false;
  bool Checked = false;  ///< In a check box of the list's own.
  TShownImages Images;
  friend bool operator==(const TShownRow&, const TShownRow&) = default;
};

/// A row of a tree as it is seen.
struct TShownNode {
  TString Text;
  int Level = 0;
  bool HasButton = false;
  bool Expanded = false;
  bool Marked = false;  ///< As selected, or as the target of a drop.
  TShownImages Images;
  friend bool operator==(const TShownNode&, const TShownNode&) = default;
};

/// A column of a list's header as it is seen.
struct TShownColumn {
  TString Caption;
  int Width = 0;
  TListSortMark Mark = TListSortMark::None;
  friend bool operator==(const TShownColumn&, const TShownColumn&) = default;
};

/// Works the controls like a user and tells what the screen shows of them, asking the screen and
/// not the control. All that follows from an input has happened when its call returns. Points are
/// client pixels of the control.
class IScreenDriver {
 public:
  virtual ~IScreenDriver() = default;

  // --- the user --------------------------------------------------------------------------------
  virtual void MoveMouse(const TWinControl& control, TPoint point) = 0;
  /// Never the second half of a double click.
  virtual void Click(const TWinControl& control, TPoint point, TShiftState shift = {},
                     TMouseButton button = mbLeft) = 0;
  void RightClick(const TWinControl& control, TPoint point, TShiftState shift = {}) {
    Click(control, point, shift, mbRight);
  }
  virtual void DoubleClick(const TWinControl& control, TPoint point) = 0;
  virtual void Drag(const TWinControl& from, TPoint fromPoint, const TWinControl& to,
                    TPoint toPoint, TShiftState shift = {}, TMouseButton button = mbLeft) = 0;
  virtual void PressMouse(const TWinControl& control, TPoint point) = 0;
  virtual void ReleaseMouse() = 0;
  virtual void Wheel(const TWinControl& control, TPoint point, int notches) = 0;
  /// A side button.
  virtual void ExtraClick(const TWinControl& control, TPoint point, bool forward) = 0;
  /// To the window that has the keyboard.
  virtual void Key(std::uint16_t key, TShiftState shift = {}) = 0;
  virtual void Type(TStringView text) = 0;
  virtual void ResizeForm(TCustomForm& form, int width, int height) = 0;
  virtual void SetFormState(TCustomForm& form, TWindowState state) = 0;
  virtual void CloseForm(TCustomForm& form) = 0;
  /// The form gets to a monitor of that density, with the size that suits it.
  virtual void SetDensity(TCustomForm& form, int pixelsPerInch) = 0;
  /// The next menu that opens is answered with this path of captions; an empty one cancels it.
  virtual void QueueMenuChoice(TString path) = 0;
  /// Runs in the next loop that waits for the user (a menu, a drag, a modal form), or at the end of
  /// the present input.
  virtual void Later(std::function<void()> action) = 0;

  // --- time ------------------------------------------------------------------------------------
  /// Runs all that waits.
  virtual void Pump() = 0;
  /// Lets time pass, with all that is due in it.
  virtual void Advance(unsigned milliseconds) = 0;

  // --- the eye ---------------------------------------------------------------------------------
  /// The text that the window bears: caption, edited text.
  virtual TString TextOf(const TWinControl& control) = 0;
  /// The control whose window has the keyboard, itself or for a part of it (the field in which a
  /// caption is edited), or nil.
  virtual TWinControl* Focused() = 0;
  virtual bool IsShown(const TWinControl& control) = 0;
  /// The window's place in its parent, with its frame.
  virtual TRect BoundsOf(const TWinControl& control) = 0;
  /// Paints all that waits for it.
  virtual void Paint() = 0;
  /// How many rows the window believes in.
  virtual int CountRows(TCustomListView& list) = 0;
  /// The row as the window shows it. It must be in sight.
  virtual TShownRow RowOf(TCustomListView& list, int index) = 0;
  virtual std::vector<TShownColumn> ColumnsOf(TCustomListView& list) = 0;
  /// The rows of a tree in sight, from the top.
  virtual std::vector<TShownNode> NodesOf(TCustomTreeView& tree) = 0;
  /// The image beside the text of a combo box; -1 is none.
  virtual int ImageOf(TCustomComboBoxEx& combo) = 0;
  /// What handlers threw since the last call; what is left at the end is a failure.
  virtual std::vector<TString> TakeExceptions() = 0;
  /// Number of windows of this program, the hidden ones included.
  virtual int CountWindows() = 0;

  // --- differences -----------------------------------------------------------------------------
  /// The system's own controls, and not those that the library draws.
  virtual bool IsNative() const = 0;
};

/// Sets up the widget set under test for the driver's life: the headless one, or the system's.
std::unique_ptr<IScreenDriver> MakeScreenDriver();

}  // namespace oak::tests
