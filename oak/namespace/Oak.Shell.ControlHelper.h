// TShellControlHelper: helper functions around shell objects for cursors and
// controls. TControlHelper: the same for controls alone.
#pragma once

#include <functional>
#include <memory>

#include "oak/base/Set.h"
#include "oak/base/Variant.h"
#include "oak/framework/Cancellation.h"
#include "oak/namespace/Oak.Shell.FileNameFormat.h"
#include "oak/namespace/Oak.Shell.Types.Interfaces.h"
#include "oak/platform/shell_api_system.h"

struct IDataObject;
struct IDropTargetHelper;

namespace oak {

class TBeforeCommandEventArgs;
class TComponent;
class TControl;
class TCustomListView;
class TCustomTreeView;
class TExplorerSettings;
class TFont;
class TPopupMenu;
class TShellColumnId;
class TShellCommand;
class TStyle;
class TTreeNode;
struct TSize;

/// What an edit offers while the user types.
enum TOakShellAutoCompleteOption : std::uint8_t {
  acoFileSystem,
  acoFolderOnly,
  acoURL,  ///< Addresses that were visited or typed.
  acoVirtualNameSpace
};
using TOakShellAutoCompleteOptions = TSet<TOakShellAutoCompleteOption>;

struct TShellControlHelper {
  // --- folders and values --------------------------------------------------------
  /// A column's value as the user reads it; empty for an empty or null value.
  static TString VariantToString(const TVariant& pValue, const TShellColumnId& pColumn);
  /// Whether a folder is too slow to be enumerated on the main thread. Reads at
  /// most 101 objects on another thread and waits at most 1000 ms for them;
  /// cancellation ends the wait early and answers true.
  static bool ShouldEnumerateAsync(const Ref<IItemIdList>& pItemIdList,
                                   const Ref<ICancellationIndicator>& pCancel);
  /// Enters a place once, so that the system asks for a logon where it needs
  /// one. True if that raised nothing.
  static bool Authenticate(TStringView pPath, bool pShowErrors);
  /// "RHSDACLOI": a letter for each of these attributes of a file that is set; empty for -1.
  static TString AttributesToString(int pAttributes);

  // --- commands ----------------------------------------------------------------------
  /// Asks whether a command may be carried out on the elements (may be nil): makes its
  /// record and hands it to pBeforeInvoke, such as TFolderTrek::BeforeInvokeCommand.
  static bool DoBeforeShellCommand(
      const TShellCommand& pCommand, TCommandSource pSource,
      const Ref<IItemIdListCollection>& pElements,
      const std::function<bool(TBeforeCommandEventArgs& pEventArgs)>& pBeforeInvoke);

  // --- names -----------------------------------------------------------------------
  /// The name that a control shows. With shell names a folder keeps the name that
  /// the shell gives it, whatever the format; EArgumentException for an invalid
  /// item then, and for nil always. Without them the item's plain name.
  static TString GetDisplayName(const Ref<IItemIdList>& pItemIdList, TOakFileNameFormat pFormat,
                                bool pUseShellNames = true);
  /// The full name for what the user typed: the old extension is added where the
  /// control hides it and the user gave none, and ".lnk" always. Nil is a control
  /// that follows the user's settings.
  static TString PrepareForRename(TStringView pOldName, TStringView pNewName,
                                  const TComponent* pControl);
  /// By the control's format if it has one (IOakFileNameFormatOwner), else by the
  /// user's settings.
  static bool ControlShowsExtensions(const TComponent* pControl);

  // --- the user's settings of the shell ----------------------------------------------
  // Any thread; asked anew at each call. Without SHGetSetSettings the defaults of the
  // system.
  /// Reads or changes the settings of the mask (SSF_). False where the system has no
  /// such function.
  static bool SetShellSettings(DWORD pMask, SHELLSTATEW& pValues, bool pSet);
  static bool GetShellNoConfirmRecycle();
  static void SetShellNoConfirmRecycle(bool pValue);
  /// Whether the extensions of known file types are shown.
  static bool GetShellShowExtensions();
  static void SetShellShowExtensions(bool pValue);
  static bool ShellShowInfoTip();
  static bool ShellSingleClickActivate();

  // --- the navigation pane -------------------------------------------------------------
  // Any thread; the registry is read at each call.
  static bool IsWindows8OrLater();
  static bool IsWindows10OrLater();
  /// A value of the registry's 64-bit view. Its name is the last component of the
  /// path. Null if it is missing, a text or a number, empty for any other kind.
  static TVariant GetRegistryValue(TStringView pPath, HKEY pRoot);
  static bool ShellShowFavorites();
  static bool ShellShowLibraries();
  static bool ShellShowOneDrive();
  static bool ShellShowAllFolders();
  static bool ShellExpandToCurrentFolder();
  /// Whether the folder of this class, "{...}", is pinned to the pane.
  static bool ShellShowNamespace(TStringView pClsid);
  /// Replaces who answers the settings; nil: the user's own again.
  static void SetExplorerSettings(std::shared_ptr<const TExplorerSettings> pSettings);

  // --- looks of controls; main thread -----------------------------------------------
  /// A length given for 96 pixels per inch, in pixels of the active form, or of
  /// the screen without one. Never less than pPixels.
  static int ScaledPixels(int pPixels);
  /// Gives an edit the shell's proposals. Without options it gets none, whatever
  /// the user's settings. False if the system refuses.
  static bool EnableAutoComplete(HWND pHandle, TOakShellAutoCompleteOptions pOptions);
  /// The same with flags of the system (SHACF_).
  static bool EnableAutoComplete(HWND pHandle, DWORD pFlags);
  /// Makes a list look like the Explorer's, or with pOff like any other. The window's
  /// part is left out while there is none.
  static void ApplyExplorerStyle(TCustomListView& pListView, bool pOff);
  static void ApplyExplorerStyle(TCustomTreeView& pTreeView, bool pOff);
  /// The system's font of icon titles, at the font's or control's density. The colour
  /// stays.
  static void ApplyExplorerFont(TFont& pFont);
  static void ApplyExplorerFont(TControl& pControl);
  static TSize GetTextExtent(const TFont& pFont, TStringView pText);
  static int GetTextWidth(const TFont& pFont, TStringView pText);
  /// Height of all rows in pixels; for trees that have a window.
  static void SetTreeNodeHeight(TCustomTreeView& pTreeView, int pHeight);
  /// Makes one row so many rows high. False if the window has no such row.
  static bool SetNodeIntegralHeight(const TTreeNode& pNode, int pRows);
  /// Window for dialogs of a component: that of its form, or of the control that owns
  /// it, else that of the application. May be null.
  static HWND GetOwningWindowHandle(TComponent* pComponent);
  /// A copy for the shell to add its entries to; what happens to an entry happens to
  /// the original. Nil gives an empty menu.
  static std::unique_ptr<TPopupMenu> ClonePopupMenu(TPopupMenu* pMenu);

  // --- drag and clipboard ----------------------------------------------------------------
  /// The shell's painter of what is dragged over a window; answers IDragSourceHelper
  /// as well. Nil where the system has none.
  static Ref<IDropTargetHelper> CreateDragHelper();
  /// Files as one object for drag and clipboard. Those that don't exist are left
  /// out; nil if none is left or the shell refuses.
  static Ref<IDataObject> GetDataObjectForMultiFiles(const TStringArray& pFileNames);
  /// Paths of the files on the clipboard, else names of what it could make files of.
  static TStringArray GetFilenamesFromClipboard();
  /// Lets a type of files have the icon that the shell shows for another file, such as
  /// "app.ico" or a program: in this process, wherever icons are asked for by extension.
  /// The user's registry stays as it is. An empty file gives the type the shell's icon
  /// again. False, and nothing changed, if the file has no icon. An empty extension raises
  /// EArgumentException.
  static bool AssociateIconWithExtension(TStringView pExtension, TStringView pIconFile);
};

/// Small services around a control. Main thread where nothing else is said.
struct TControlHelper {
  /// A length given for 96 pixels per inch in the control's pixels, and back.
  static int ScaledPixels(const TControl& pControl, int pPixels);
  static int UnScaledPixels(const TControl& pControl, int pPixels);
  static int GetCurrentPPI(const TControl& pControl);
  /// Runs the procedure on the main thread, later, unless the control has gone by
  /// then. Any thread, as long as the control lives.
  static void BeginInvoke(TControl& pControl, std::function<void()> pProcedure);
  /// Whether the caller has to use BeginInvoke. Any thread.
  static bool GetInvokeRequired(const TControl& pControl) noexcept;
  /// The style that the control is drawn in: the system's if it wants no other.
  static TStyle& StyleServices(const TControl& pControl);
  static TString GetCaption(const TControl& pControl);
};

}  // namespace oak
