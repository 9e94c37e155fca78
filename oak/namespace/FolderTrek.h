// TFolderTrek: a cursor that stands on one folder of the shell namespace and on
// one object in it.
#pragma once

#include <functional>
#include <limits>
#include <memory>
#include <optional>

#include "oak/base/PatternMatch.h"
#include "oak/base/Variant.h"
#include "oak/framework/Cancellation.h"
#include "oak/framework/Component.h"
#include "oak/framework/ControlTypes.h"
#include "oak/namespace/FolderTrek.Paths.h"
#include "oak/namespace/Oak.Shell.Types.Interfaces.h"
#include "oak/platform/shell_api.h"

namespace oak {

class TBeforeCommandEventArgs;
class TFolderTrek;
class TMenuItem;
class TPopupMenu;
struct TColumnInfo;
struct TMessage;

/// What fetching the next object led to.
enum TEnumResult : std::uint8_t {
  sbnNoMoreItems,
  sbnOK,
  sbnAsync  ///< The objects will come through the notifier.
};

/// Which objects a view shows.
enum TOakShellShowOption : std::uint8_t {
  soShowNethood,
  soShowRecycleBin,
  soShowErrorMessages,
  soShowHidden,
  soShowFiles,
  soShowContextMenuOnTop,
  soColorCompressed,
  soColorEncrypted,
  soFileSystemOnly,
  soNoFillOnStartup,
  soShowShellNames
};
using TOakShellShowOptions = TSet<TOakShellShowOption>;

struct TShowOptionsHelper {
  /// Whether a view with these options shows the object. Raises as
  /// SetAbsoluteItemIdList does.
  static bool IsValid(TOakShellShowOptions pOptions, const Ref<IItemIdList>& pItemIdList);
};

/// What a cursor needs of a change notifier.
class IFolderTrekNotifier {
 public:
  virtual void Add(const Ref<IItemIdListCollection>& pItems) = 0;
  virtual void AddItemIdList(const Ref<IItemIdList>& pItemIdList) = 0;
  /// Tells whether the notifier's owner still wants results; may be nil.
  virtual Ref<ICancellationIndicator> GetCancellationIndicator() = 0;
  /// Enumerates the cursor's folder elsewhere and reports to this notifier. The
  /// cursor is to be copied. Nil if it can't be done.
  virtual Ref<ITerminable> EnumerateInBackground(const TFolderTrek& pFolderTrek) = 0;

 protected:
  ~IFolderTrekNotifier() = default;
};

/// Told first of a verb; false stops it.
using TOnContextMenuSelectEvent = std::function<void(TStringView Command, bool& Execute)>;
using TOnBeforeShellCommand =
    std::function<void(TObject* Sender, TStringView Command, bool& Execute, TCommandSource Source)>;
using TOnBeforeCommand = std::function<void(TObject* Sender, TBeforeCommandEventArgs& pEventArgs)>;

/// The cursor. Used by one thread at a time; making one costs next to nothing.
///
/// Three states: no folder; a folder and no current object (after every change
/// of the folder); a folder and an object in it. Objects come in the order of
/// the shell. An enumeration lives from the first Next until the folder is set
/// again, be it to the same one; Next after the end does not begin anew.
class TFolderTrek : public TComponent {
 public:
  explicit TFolderTrek(TComponent* AOwner = nullptr);
  explicit TFolderTrek(std::nullptr_t) : TFolderTrek(static_cast<TComponent*>(nullptr)) {}
  /// Copies properties, filter, folder and events, not the current object.
  explicit TFolderTrek(const TFolderTrek* pCopyFrom);
  /// Stands on the object that the text names. Raises EFolderTrekError.
  explicit TFolderTrek(TStringView aObjectPath);
  /// Stands on the object. Raises as SetAbsoluteItemIdList does.
  explicit TFolderTrek(const Ref<IItemIdList>& pAbsoluteItemIdList);
  ~TFolderTrek() override;

  // --- properties ----------------------------------------------------------
  /// Wildcard patterns joined by ";", "*" for none. Folders always pass.
  TString GetFilter() const;
  void SetFilter(TStringView pFilter);
  /// Path of the active folder, empty without one.
  TString GetFolder() const { return GetDirectory(); }
  void SetFolder(TStringView pFolder) { SetDirectory(pFolder); }
  /// Leaves out objects that are not of the file system; archives are then no
  /// folders. Default false.
  bool GetFileSystemOnly() const { return FFileSystemOnly; }
  void SetFileSystemOnly(bool pValue) { FFileSystemOnly = pValue; }
  /// Several objects of this folder as one selection; made at first read.
  Ref<IItemIdListCollection> GetMultiObjects();
  /// Lets the system show its error and logon dialogs. Default true.
  bool GetShowErrorMessages() const { return fShowErrorMessages; }
  void SetShowErrorMessages(bool pValue) { fShowErrorMessages = pValue; }
  /// Puts the shell's entries before those of the application. Default false.
  bool GetShowContextMenuOnTop() const { return fShowContextMenuOnTop; }
  void SetShowContextMenuOnTop(bool pValue) { fShowContextMenuOnTop = pValue; }
  /// Asks for the objects that a navigation pane shows. Default false.
  bool GetForNavigation() const { return fForNavigation; }
  void SetForNavigation(bool pValue) { fForNavigation = pValue; }
  /// Which special folder the active one is; SF_INVALID without a folder.
  TOakShellFolder GetSpecialFolder() const;
  void SetSpecialFolder(TOakShellFolder pValue);
  TString GetVersion() const;
  /// Kept for the cursor's owner, who allows no changes then. Default false.
  bool GetReadOnly() const { return fReadOnly; }
  void SetReadOnly(bool pValue) { fReadOnly = pValue; }
  /// Lets the results of a search be entered. Default false.
  bool GetAcceptSearchFolderPaths() const { return fAcceptSearchFolderPaths; }
  void SetAcceptSearchFolderPaths(bool pValue) { fAcceptSearchFolderPaths = pValue; }
  /// Lets the shell finish a long command of its menus on a thread of its own. Default true.
  bool GetAsyncContextMenuOperations() const { return fAsyncContextMenuOperations; }
  void SetAsyncContextMenuOperations(bool pValue) { fAsyncContextMenuOperations = pValue; }

  /// The user chose to rename the object; the receiver asks for the name.
  TNotifyEvent OnRename;
  // Before a command, in this order. Sender is the cursor's owner, or the cursor without
  // one. A handler may destroy the cursor; the command then ends.
  TOnContextMenuSelectEvent OnContextMenuSelect;
  TOnBeforeShellCommand OnBeforeShellCommand;
  TOnBeforeCommand OnBeforeCommand;  ///< Has the last word.

  // Items are taken by value: they may be the cursor's own.
  // --- the active folder ---------------------------------------------------
  Ref<IItemIdList> GetFolderIdList() const { return FFolderIdList; }
  /// Nil leaves no folder. Raises EFolderTrekError for an invalid one. The same
  /// reference as now starts the enumeration over.
  void SetFolderIdList(Ref<IItemIdList> pItemIdList);
  /// Bound when first needed. Raises EFolderTrekError.
  Ref<IShellFolder> GetShellFolder();
  void SetShellfolder(const Ref<IShellFolder>& pShellFolder);
  TString GetDirectory() const;
  void SetDirectory(TStringView pDirectory);
  /// The active folder becomes the current object of its parent.
  void SelectParent();
  /// Enters the current object if it is a folder; true if one is bound.
  bool BrowseObject();

  // --- the current object --------------------------------------------------
  /// Relative to the folder; NullItemIdList or nil without one.
  Ref<IItemIdList> GetItemIdList() const { return FItemIDList; }
  void SetItemIdList(Ref<IItemIdList> pItemIdList);
  /// The folder followed by the object; the folder without one.
  Ref<IItemIdList> GetAbsoluteItemIdList();
  /// Sets folder and object together. Raises EInvalidArgument for nil and
  /// EFolderTrekError for an invalid item.
  void SetAbsoluteItemIdList(Ref<IItemIdList> pItemIdList);
  /// File name of the object.
  TString GetObjectName();
  /// Looks a name up in the folder; a text with "\" sets folder and object.
  /// Raises EFolderTrekError.
  void SetObjectName(TStringView pName);
  TString GetFullPath();
  void SetFullPath(TStringView pPath) { SetObjectName(pPath); }
  /// Which special folder the object is.
  TOakShellFolder IsSpecialObject();
  TOakShellFolder GetSpecialObject() { return IsSpecialObject(); }
  void SetSpecialObject(TOakShellFolder pValue);
  /// Fetches the next object that the filter lets pass. Raises EFolderTrekError
  /// for the failures that a user can act on; others end the enumeration.
  bool Next();
  /// As Next, but a slow folder is enumerated in the background through the
  /// notifier.
  TEnumResult Next(IFolderTrekNotifier* pChangeNotifier);

  // --- questions about the current object ----------------------------------
  bool IsFolder();
  bool IsBrowsable();
  /// About the active folder: whether it is a directory.
  bool IsFileSystemFolder();
  /// Raises EInvalidOperation without object, unless the folder is the desktop.
  bool HasSubFolders();
  bool IsHidden() { return GetAttributes(SFGAO_HIDDEN) != 0; }
  bool IsLink() { return GetAttributes(SFGAO_LINK) != 0; }
  bool IsDrive() { return oak::IsDrive(GetFullPath()); }
  /// Raises EInvalidOperation without object.
  bool CanRename();
  /// Those of the asked SFGAO_ bits that are set. Asks the shell each time.
  DWORD GetAttributes(DWORD pAttributes);
  /// Name as the shell shows it, in the folder or alone. Raises
  /// EInvalidOperation without object.
  TString GetShellObjectName(bool pInFolderName);
  TString GetDomain();
  std::int64_t GetFileSize();
  /// Local time of the last change, 0 if unknown.
  double GetLastChangeDate();
  TString GetInfoTip(bool pUseSlowInfoTip);
  /// Index into the system's image list, -1 if unknown.
  int GetIconNumber();
  int GetSelectedIconNumber();
  int GetOverlayIndex();
  int GetDesktopIconIndex();
  TString GetDesktopName();
  /// Paths of the multi-objects, else of the current object.
  TStringArray GetListOfPaths();
  /// Raises EInvalidOperation without object and EFolderTrekError on failure.
  Ref<IUnknown> GetUIObject(REFIID pInterfaceID);
  bool CheckIfValid(bool pFolderOnly);
  /// Window that the shell may put dialogs on; nil if it is to stay silent.
  HWND GetWindowHandle(bool pForce);
  bool FilterMatch();
  bool ShowObjectAccordingShowOptions(TOakShellShowOptions pShowOptions);

  // --- columns -------------------------------------------------------------
  // Columns are numbered by the folder from 0 on; 256 is the bar of used space
  // in a list of drives. Reading them raises nothing but what is said here.
  /// Whether a folder is bound, which can be asked for its columns.
  bool GetIShellDetails();
  /// Text of the current object, or with pHeader the caption of the column. By number it is the
  /// folder's text, by identifier that of the property system; empty where there is none.
  TString GetColumnText(int pColumnIndex, bool pHeader);
  TString GetColumnText(const TShellColumnId& pColumnID, bool pHeader);
  /// Gives the value behind the text as well, empty without one; untouched for a header.
  TString GetColumnText(const TShellColumnId& pColumnID, bool pHeader, TVariant& pColumnVariant);
  /// Value of the current object, empty if it has none. The dates of writing, creation and
  /// access are local, all others as the system gives them.
  TVariant GetColumnValue(const TShellColumnId& pColumnID);
  /// TShellColumns::Invalid if there is no such column.
  TShellColumnId GetShColumnIdFromColumnNumber(int pColumnNumber);
  /// -1 if the folder doesn't have the column. Asks the folder for each number up to the one
  /// that is found, at most 320 times: once for a column, not for each object.
  int GetIndexOfShColumnId(const TShellColumnId& pColumnID);
  /// Alignment, and the width in pixels of the screen; 0 for a column that is
  /// hidden at first, 120 if the folder doesn't tell of it.
  TAlignment GetColumnInfo(int pColumnIndex, int& pWidth);
  /// The width at 96 pixels per inch, and the alignment as the folder gives it: LVCFMT_ bits.
  /// The defaults if it doesn't tell. Raises EInvalidOperation without a folder.
  void GetColumnInfo(int pColumnIndex, TColumnInfo& pColumnInfo);
  /// What the property system knows, whatever the folder.
  void GetColumnInfo(const TShellColumnId& pShellColumn, TColumnInfo& pColumnInfo);
  /// SHCOLSTATE_ bits; 0 if unknown.
  DWORD GetDefaultColumnState(int pColumnIndex);
  /// The column that the folder sorts by: always the name.
  int GetSortColumn() const { return 0; }

  // --- actions -------------------------------------------------------------
  /// Renames the object; NewName becomes the name that it has afterwards. The
  /// shell reports its own errors; nothing is raised for them.
  void RenameObject(TString& NewName);
  Ref<IItemIdList> AddLinkTo(TStringView pDestinationFolder, TStringView pLinkName);
  void CopyTo(IFolderTrekNotifier& pChangeNotifier);
  bool ShowNetConnectionDialog();
  /// Replaces the source of thumbnails for the whole process. Raises
  /// EInvalidOperation in a program without thumbnails.
  static void SetThumbnailProvider(const Ref<IUnknown>& pProvider);

  // --- commands ------------------------------------------------------------
  // On the multi-objects if there are any, else on the current object. Main thread, but
  // for commands without menu and message.
  /// Asks the events, then has the command carried out; false if it was stopped or not
  /// carried out. Raises what the items raise.
  bool InvokeCommand(const TShellCommand& pCommand);
  /// The same through the context menu, as the user does it by key. A command that the
  /// shell refuses leaves its code as the thread's last error and raises nothing. Raises
  /// EInvalidOperation without object and what GetUIObject raises.
  bool InvokeContextMenuCommand(const TShellCommand& pCommand);
  /// Carries out the default command for objects of the active folder. OnBeforeShellCommand
  /// and OnBeforeCommand are asked by a cursor of its own, which is their sender. Raises as
  /// SetObjectName and the items do.
  void InvokeDefaultContextMenuCommand(const TStringArray& pPaths);
  /// Invokes an entry (pId, counted from 1) or, for 0, a verb of a menu that was filled.
  /// pMask adds CMIC_MASK_ bits.
  HRESULT IContextMenuInvoke(IContextMenu* pContextMenu, TStringView pVerb, UINT pId = 0,
                             DWORD pMask = 0);
  /// Asks all events for a command; false if one stopped it.
  bool DoBeforeShellCommand(const TShellCommand& pCommand,
                            TCommandSource pSource = TCommandSource::Call);
  /// Asks OnBeforeShellCommand and OnBeforeCommand; true unless the command ended up
  /// cancelled.
  bool BeforeInvokeCommand(TBeforeCommandEventArgs& pEventArgs);

  // --- menus; main thread ----------------------------------------------------
  /// Asked with the verb that was chosen, before the events; false stops it.
  using TBeforeVerb = std::function<bool(const TString& pVerb)>;
  /// Shows the shell's menu, waits for the choice and carries it out. pShellMenuAnchor is
  /// an entry of a menu of the application, which is shown together with the shell's: its
  /// entries stand before that one; at the end if it is the menu's root. May be nil.
  /// Returns the verb that was carried out, empty for an entry without one, for one of the
  /// application, and if nothing was chosen or it was stopped; "__ERROR__" on failure.
  /// Raises as GetUIObject and what the items raise. The cursor may be destroyed meanwhile.
  TString ShowContextMenu(TPoint pScreen, TMenuItem* pShellMenuAnchor,
                          const TBeforeVerb& pBeforeCommand = nullptr);
  /// Where the pointer is.
  TString ShowContextMenu(TMenuItem* pShellMenuAnchor = nullptr,
                          const TBeforeVerb& pBeforeCommand = nullptr);
  /// The menu of the folder's background behind a copy of the application's (may be nil).
  /// Verb is "refresh", "thumbnails", another verb or the entry's number; empty if nothing
  /// was chosen, an entry of the application was, the folder has no such menu or the
  /// invocation failed; "__ERROR__" if the shell could not fill the menu. Raises as
  /// GetShellFolder. The cursor may be destroyed meanwhile.
  void ShowBackgroundMenu(TPoint pScreen, TPopupMenu* pPopupMenu, TString& pVerb);
  /// Lets the shell build that menu and throws it away; true if it could. Raises as
  /// GetShellFolder.
  bool QueryBackgroundMenu(TPoint pScreen);
  /// Answers the messages of the menu that is open.
  void HandlePopupMessages(TMessage& Message);
  /// Identifier of the entry with that caption in a menu or its submenus, ignoring case,
  /// "&" and the shortcut's name; 0 if there is none.
  static UINT GetCommandIdForMenuCaption(HMENU pMenu, TStringView pCaption);

 private:
  class TOpenMenu;

  enum THasSubFolders : std::uint8_t { hsfUnknown, hsfYes, hsfNo };
  /// Folders in which the filter has rules of its own.
  enum TFolderKind : std::uint8_t { fkUnknown, fkLinks, fkRecent, fkOther };

  void InvalidateCaches() { fHasSubFolders = hsfUnknown; }
  bool BeginEnumeration(bool& pResult);
  bool EndEnumeration(HRESULT pResult) const;
  bool PassesFileSystemOnly();
  bool UnlockDrive();
  bool HasObject() const;
  bool BindQuietly();
  Ref<IItemIdList> AbsoluteOrOwnItem();
  bool FilterMatchName(TStringView pName) const;
  TString NameForFilter(bool& pIsFolder);
  bool PassesFileSystemOptions(TOakShellShowOptions pShowOptions);
  void FindObjectByName(TStringView pName);
  [[noreturn]] void RaiseNoObject() const;
  int GetImageIndex(bool pOpen);
  std::optional<TString> DetailsText(int pColumnIndex, bool pHeader);
  TString GetColumnHeader(const TShellColumnId& pColumnID);
  std::optional<DWORD> ColumnState(int pColumnIndex);
  TObject* EventSender() noexcept;
  std::weak_ptr<const bool> Life();
  bool HasMultiObjects() const;
  bool InvokeOnSelection(const TShellCommand& pCommand);
  std::vector<Ref<IItemIdList>> SelectedItems(int pMost = std::numeric_limits<int>::max());
  bool ExploreSelection();
  bool OpenCommandPromptHere();
  bool InvokeByShell(const TShellCommand& pCommand, const TString& pVerb);
  TString WorkingDirectoryOfSelection();
  void FireRename();
  TString ShowContextMenu_Internal(TPoint pScreen, TMenuItem* pShellMenuAnchor,
                                   const TBeforeVerb& pBeforeCommand);
  Ref<IContextMenu> GetContextMenuOfSelection();
  Ref<IContextMenu> GetBackgroundContextMenu(Ref<IShellView>& pView);
  UINT ContextMenuFlags() const;
  TString RunChosen(TOpenMenu& pMenu, UINT pId, const TBeforeVerb& pBeforeCommand);
  bool InvokeVerb(IContextMenu* pMenu, const TString& pVerb, UINT pId);

  Ref<IItemIdList> FFolderIdList;
  Ref<IShellFolder> FShellFolder;
  Ref<IItemIdList> FItemIDList;
  Ref<IItemIdList> FAbsoluteIdList;
  Ref<IEnumIDList> FObjects;
  bool FFileSystemOnly = false;
  Ref<IItemIdListCollection> FMultiObjects;
  TStringArray FFilter;
  TPatternList fPatterns;        ///< FFilter, compiled.
  bool fMatchesDotless = false;  ///< FFilter holds "*.".
  TFolderKind fFolderKind = fkUnknown;
  Ref<IShellFolder2> fShellFolder2;
  bool FTriedIshd = false;
  bool fReadOnly = false;
  THasSubFolders fHasSubFolders = hsfUnknown;
  bool fShowErrorMessages = true;
  bool fShowContextMenuOnTop = false;
  bool fForNavigation = false;
  bool fAsyncContextMenuOperations = true;
  bool fAcceptSearchFolderPaths = false;
  Ref<ITerminable> fShellFolderEnumeratorWorkItem;
  std::shared_ptr<const bool> fLife;  ///< Made when first asked for.
  TOpenMenu* fOpenMenu = nullptr;     ///< On the stack of whoever shows it.
};

}  // namespace oak
