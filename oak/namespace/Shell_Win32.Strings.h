// Texts of the system's own libraries, in the user's language.
#pragma once

#include "oak/base/Text.h"

namespace oak {

// Our own wording where the system has none.
inline constexpr TStringView sInFolder = u"In Folder";
inline constexpr TStringView sNewFolder = u"New Folder";
inline constexpr TStringView sArrangeIconsBy = u"Arrange Icons By";

/// Texts that InitializeShell fetches. One that the system lacks is empty, unless
/// a default is told.
struct TSystemStrings {
  TString BackgroundContextMenu_Thumbnails;
  TString BackgroundContextMenu_Preview;
  TString BackgroundContextMenu_LargeIcons;
  TString BackgroundContextMenu_MediumIcons;
  TString BackgroundContextMenu_SmallIcons;
  TString BackgroundContextMenu_List;
  TString BackgroundContextMenu_Details;
  TString BackgroundContextMenu_View;
  TString BackgroundContextMenu_Paste;
  TString BackgroundContextMenu_Properties;
  TString BackgroundContextMenu_Refresh;  ///< Default from Windows 10 on: "Refresh".
  TString BackgroundContextMenu_New;
  TString BackgroundContextMenu_NewFolder;
  TString BackgroundContextMenu_Shortcut;
  TString BackgroundContextMenu_SortByXP;
  TString BackgroundContextMenu_SortByWin7;
  TString ResourcePreview_SelectFile;
  TString ResourcePreview_NotAvailable;
  TString ResourcePreview_NotPossible;
  TString ResourceSearch_Running;
  TString ResourceSearch_NoResults;
  TString ComDlg_Filename;
  TString ComDlg_Folder;
  TString ComDlg_FileType;
  TString ComDlg_Open;
  TString ComDlg_SaveAs;
  TString Error_Caption;
  TString Error_NewFolder;
  TString strSystemInFolder;   ///< Default sInFolder.
  TString strSystemNewFolder;  ///< For menus; default sNewFolder.
  TString strControlPanel;     ///< Captions of the desktop's control panel entries.
  TString strAllControlPanelElements;
};

/// The texts; initializes the shell at first use and raises as that does. Any
/// thread; unchanged until FinalizeShell.
const TSystemStrings& SystemStrings();

/// A text resource of a library. A missing one gives the default and one line of
/// debug output.
TString LoadSystemString(UINT pId, TStringView pLibrary, TStringView pDefault = {});
/// The same, trying a second identifier before the default.
TString LoadSystemString(UINT pId, UINT pSecondId, TStringView pLibrary, TStringView pDefault);
/// A text resource split at "|".
TStringArray LoadSystemStrings(UINT pId, TStringView pLibrary);

}  // namespace oak
