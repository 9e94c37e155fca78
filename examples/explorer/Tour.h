// A tour of the form: what a user would do with mouse and keys.
#pragma once

#include "ExplorerForm.h"

/// The hands of the tour, and its eye; each system has its own. Input has had its effect when the
/// call returns. Points are client pixels of the control.
class ITourGuide {
 public:
  virtual ~ITourGuide() = default;
  virtual void Click(oak::TWinControl& control, oak::TPoint point) = 0;
  virtual void DoubleClick(oak::TWinControl& control, oak::TPoint point) = 0;
  virtual void Key(oak::TWinControl& control, std::uint16_t key, oak::TShiftState shift) = 0;
  /// Shows the form as it is now.
  virtual void Show(const char* words) = 0;
  /// Opens the menu at a point and one of its submenus (empty: none), shows the form with them and
  /// chooses nothing. Does nothing where a menu can't be looked at.
  virtual void ShowMenu(oak::TWinControl& control, oak::TPoint point, const char16_t* submenu,
                        const char* words) = 0;
};

/// Select, menus, sort, open, go up, go back. Changes nothing on the disk.
void RunTour(TExplorerForm& form, ITourGuide& guide);
