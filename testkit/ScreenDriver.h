// A user and an eye for forms: one test for the headless screen and for real windows.
#pragma once

#include <cstdint>
#include <functional>
#include <iosfwd>
#include <memory>
#include <string>
#include <vector>

#include "oak/framework/ControlTypes.h"
#include "oak/framework/Forms.h"
#include "oak/framework/ListView.h"
#include "oak/framework/StdCtrls.h"
#include "oak/framework/TreeView.h"

namespace oak::testkit {

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
  int Width = 0;  ///< In pixels.
  TListSortMark Mark = TListSortMark::None;
  friend bool operator==(const TShownColumn&, const TShownColumn&) = default;
};

// One line each, for messages of failed tests.
std::ostream& operator<<(std::ostream& out, const TShownImages& images);
std::ostream& operator<<(std::ostream& out, const TShownRow& row);
std::ostream& operator<<(std::ostream& out, const TShownNode& node);
std::ostream& operator<<(std::ostream& out, const TShownColumn& column);

/// Works forms like a user and tells what the screen shows of them, asking the screen and not the
/// control. Main thread.
///
///   const auto driver = MakeScreenDriver([](const std::string& text) { ADD_FAILURE() << text; });
///   TNotesForm form;
///   form.Show();
///   driver->Drain();
///   driver->Click(form.Edit, {5, 5});
///   driver->TypeText(u"milk");
///   driver->KeyPress(vkReturn);
///   EXPECT_EQ(driver->RowOf(form.List, 0).Cells.at(0), u"milk");
///
/// All that follows from an input has happened when its call returns. Points are client pixels of
/// the control. Controls that are given need a window; forms end before the driver.
class IScreenDriver {
 public:
  virtual ~IScreenDriver() = default;

  // --- the user --------------------------------------------------------------------------------
  virtual void MouseMove(const TWinControl& control, TPoint point) = 0;
  /// Moves there and presses the left button.
  virtual void MouseDown(const TWinControl& control, TPoint point) = 0;
  /// Releases the left button where the pointer is.
  virtual void MouseUp() = 0;
  /// Never the second half of a double click. `shift` holds keys down meanwhile, here and below.
  virtual void Click(const TWinControl& control, TPoint point, TShiftState shift = {},
                     TMouseButton button = mbLeft) = 0;
  void RightClick(const TWinControl& control, TPoint point, TShiftState shift = {}) {
    Click(control, point, shift, mbRight);
  }
  virtual void DoubleClick(const TWinControl& control, TPoint point) = 0;
  /// Press, moves, release.
  virtual void Drag(const TWinControl& from, TPoint fromPoint, const TWinControl& to,
                    TPoint toPoint, TShiftState shift = {}, TMouseButton button = mbLeft) = 0;
  /// Turns the wheel there; positive is away from the user.
  virtual void Wheel(const TWinControl& control, TPoint point, int notches) = 0;
  /// A side button of the mouse, back or forward.
  virtual void ExtraButton(const TWinControl& control, TPoint point, bool forward) = 0;
  /// Down and up, to the window that has the keyboard. `key` is a virtual key: letters are u'A' to
  /// u'Z'.
  virtual void KeyPress(std::uint16_t key, TShiftState shift = {}) = 0;
  /// Types characters. On real windows only those that the keyboard has: another one is a failure
  /// and is left out.
  virtual void TypeText(TStringView text) = 0;
  /// What a user does to a form by its frame.
  virtual void ResizeWindow(TCustomForm& form, int width, int height) = 0;
  virtual void SetWindowState(TCustomForm& form, TWindowState state) = 0;
  virtual void CloseWindow(TCustomForm& form) = 0;
  /// The form gets to a monitor of that density, with the size that suits it.
  virtual void SetPixelsPerInch(TCustomForm& form, int pixelsPerInch) = 0;

  // --- answers, given beforehand ---------------------------------------------------------------
  /// The next menu that opens is answered with this path of captions, "View|Details"; an empty one
  /// cancels it.
  virtual void QueueMenuChoice(TString path) = 0;
  /// The next message dialog that opens is answered with this button of its own (TModalResult).
  virtual void QueueDialogAnswer(int result) = 0;
  /// Runs in the next loop that waits for the user (a menu, a drag, a modal form), or at the end of
  /// the next input; if called within an input, at the end of that one. On real windows input that
  /// the action gives comes after it has returned: what waits for that goes into a further Later.
  virtual void Later(std::function<void()> action) = 0;

  // --- time ------------------------------------------------------------------------------------
  /// Processes all that waits.
  virtual void Drain() = 0;
  /// Lets time pass, with all that is due in it: virtual time on the headless screen, real time
  /// with real windows.
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
  /// The row as the window shows it. It must be in sight. On the headless screen a text that is too
  /// long for its place ends with "...", and columns without width have none.
  virtual TShownRow RowOf(TCustomListView& list, int index) = 0;
  /// The columns of a report, in the order of the screen.
  virtual std::vector<TShownColumn> ColumnsOf(TCustomListView& list) = 0;
  /// The rows of a tree in sight, from the top.
  virtual std::vector<TShownNode> NodesOf(TCustomTreeView& tree) = 0;
  /// The image beside the text of a combo box; -1 is none.
  virtual int ImageOf(TCustomComboBoxEx& combo) = 0;
  /// Texts of the exceptions that handlers threw since the last call. What is not taken is a
  /// failure at the end.
  virtual std::vector<TString> TakeExceptions() = 0;
  /// Number of windows of this program, the hidden ones included.
  virtual int CountWindows() = 0;

  // --- differences -----------------------------------------------------------------------------
  /// Real windows, and not those that the library draws in memory.
  virtual bool IsNative() const = 0;
};

/// What a driver tells when the test went wrong: a loop that nobody ends (it is cancelled), an
/// answer that nobody asked for or that was not offered, an exception that no handler took. Without
/// it the text goes to the error output and the process is aborted.
using TScreenFailure = std::function<void(const std::string& text)>;

/// Makes the headless screen the widget set for the driver's life, on any system. At its end it
/// also reports windows, timers and menus that are left (see THeadlessScreen).
std::unique_ptr<IScreenDriver> MakeHeadlessScreenDriver(TScreenFailure onFailure = nullptr);

/// The system's own windows for the driver's life, worked by real mouse and keyboard input; where
/// the system has none, the headless screen. On Windows nobody should touch mouse or keyboard
/// meanwhile; under Wine the calling thread moves to a desktop of its own, so make it before the
/// thread's first window.
std::unique_ptr<IScreenDriver> MakeScreenDriver(TScreenFailure onFailure = nullptr);

}  // namespace oak::testkit
