// TOakItemIdList: every object of the shell namespace that the library speaks
// about.
#pragma once

#include <atomic>
#include <memory>

#include "oak/namespace/Oak.Shell.Types.Interfaces.h"

struct IContextMenu;
struct IKnownFolderManager;
struct IShellFolder;
struct IShellItem;
struct IShellLinkW;
struct ISequentialStream;
struct IStream;

namespace oak {

class TItemText;
struct TRetiredState;

/// A lock that its owner may take again; two words, nothing to free.
class TReentrantLock {
 public:
  void Enter() noexcept;
  void Leave() noexcept;

 private:
  class TPlace;

  std::atomic<DWORD> fOwner{0};
  DWORD fDepth = 0;
};

/// The library's IItemIdList. Made by the Create functions.
///
/// An item is born with a pidl, a path or a shell item and finds the others when
/// they are first asked for. There is one attempt to find the pidl: an item that
/// failed stays invalid until Reload, Rename or SetPidl replaces its list.
///
/// Threads: any thread may read an item. What two threads find out at once is
/// published once, and the second finding is dropped. A list or text that was
/// replaced is kept for a minute at least, so that a reader on another thread may
/// finish with it; whoever keeps a WindowsPointer for longer clones it. The cached
/// shell item is read and filled by the main thread alone, as it belongs to that
/// thread's apartment.
///
/// A query for IShellFolder, ISequentialStream or IStream binds the object.
class TOakItemIdList : public TInterfacedObject<IItemIdList, IMetaDataFormatter, IHasDebugInfo> {
 public:
  // --- making items --------------------------------------------------------
  /// Wraps a pidl; who frees it is said by pOwnsPointer. Nil is an invalid item.
  static Ref<IItemIdList> Create(PCItemIdList pItemIdList, TItemIdListOwnership pOwnsPointer);
  /// Takes over a pidl.
  static Ref<IItemIdList> Create(TPidl pItemIdList);
  /// A path, a class identifier or another text that the shell can parse. Asks
  /// nobody before the pidl is needed. Empty means the computer, "\\*" the
  /// network; both are looked up at once.
  static Ref<IItemIdList> Create(TStringView pPath);
  /// As above, but parsed at once if a folder or a window is given: relative to
  /// the folder (the item is then a relative list), with the window as owner of
  /// a logon dialog.
  static Ref<IItemIdList> Create(TStringView pPath, IShellFolder* pShellFolder,
                                 HWND pWindowHandleForLogonDialog);
  /// The folder's list followed by a relative one (nil: the folder itself).
  static Ref<IItemIdList> Create(IShellFolder* pShellFolder, PCItemIdList pRelativeIdList);
  /// The list of a shell item, found at once on the caller's thread. Such an item
  /// counts as SF_FILESYSTEMFOLDER and can't be reloaded.
  static Ref<IItemIdList> Create(IShellItem* pShellItem);
  /// A list for a path that need not exist: the object itself is not asked.
  static Ref<IItemIdList> CreateSimpleIdList(TStringView pPath);
  /// A special folder; invalid if the system lacks it. From the cache the same
  /// object comes each time, except for SF_DRIVES and SF_QUICKACCESS. Before
  /// Windows 10 SF_QUICKACCESS is SF_LINKS.
  static Ref<IItemIdList> CreateForSpecialFolder(TOakShellFolder pSpecialFolder, bool pFromCache);
  /// The special folder with this in-folder name or class identifier, in any
  /// case of letters; nil if there is none.
  static Ref<IItemIdList> CreateForSpecialFolder(TStringView pDisplayName);
  /// An invalid item that still tells its path.
  static Ref<IItemIdList> CreateInvalidWithPath(TStringView pPath);
  /// An item that stands for a query below a folder (TOakSearchFolder). Raises
  /// EOleSysError.
  static Ref<IItemIdList> CreateSearchFolder(TStringView pQuery,
                                             const Ref<IItemIdList>& pSearchScope);
  /// Finds the object that a text of the user names: a path, a class identifier
  /// or names as the shell shows them. A complete scan looks for the first name
  /// in the computer and on the desktop too. Never nil; an invalid item with the
  /// text as path if nothing was found. May ask slow folders.
  static Ref<IItemIdList> Parse(TStringView pPath, HWND pWindowHandleForLogonDialog = nullptr,
                                bool pCompleteScan = false);

  // --- lists ---------------------------------------------------------------
  /// Number of elements; 0 for nil.
  static int GetDepth(PCItemIdList pItemIdList) { return PidlDepth(pItemIdList); }
  /// Pointer into the list behind that many elements, at most to its end.
  /// Raises EInvalidArgument for a negative count.
  static PCItemIdList GetElementNo(PCItemIdList pIdList, int pElementsToSkip);
  /// Whether the item is the network or lies in it.
  static bool IsNetworkPidl(const Ref<IItemIdList>& pFullPidl);
  /// Whether the item lies in a special folder (or is it, if wanted).
  static bool IsParentOf(TOakShellFolder pParentFolder, const Ref<IItemIdList>& pChildItemIdList,
                         bool pAcceptsEquals);
  /// The implementation behind an interface, nil if it is another's. Borrowed.
  static TOakItemIdList* From(const Ref<IItemIdList>& pItemIdList) noexcept;
  /// The item's folder; raises what binding raises, which a query can't. May be
  /// nil where the shell gave no object without failing.
  static Ref<IShellFolder> FolderOf(const Ref<IItemIdList>& pItemIdList);
  /// Forgets what the class remembers of the shell: special folders and their
  /// names, the last parsed folder, the known-folder manager. For unloading and
  /// after the shell itself was reconfigured. Not while others use items.
  static void ClearCaches();

  // --- IItemIdList ---------------------------------------------------------
  /// Carries out a command without events. What the shell has no verb for is done
  /// here, all else by the object's context menu. Raises EFolderTrekError. Owner
  /// thread of the shell's user interface.
  bool InvokeCommand(const TShellCommand& pCommand) override;
  Ref<IItemIdList> Concat(const Ref<IItemIdList>& pItemIdList2) override;
  Ref<IItemIdList> GetStartItemIdList(int pFragments) override;
  Ref<IItemIdList> GetParent() override;
  Ref<IItemIdList> GetLastPart() override;
  bool Equals(const Ref<IItemIdList>& pItemIdList2, TItemIdListComparison pComparison) override;
  int CompareTo(const Ref<IItemIdList>& pItemIdList2, TItemIdListComparison pComparison) override;
  PItemIdList WindowsPointer() override;
  TString Path() override;
  int Depth() override;
  bool IsInvalid() override;
  TOakShellFolder SpecialFolder() override;
  bool IsSpecialFolder(TOakShellFolder pSpecialFolderToCheck) override;
  TString DisplayName(TItemIdListDisplayNameFormat pDisplayFormat) override;
  TString Name() override;
  TString DisplayPath() override;
  Ref<IItemIdList> LinkTarget() override;
  Ref<IShellItem> ShellItem() override;
  bool IsParentOf(const Ref<IItemIdList>& pChildItemIdList, bool pAcceptsEquals,
                  TItemIdListComparison pComparisonType) override;
  bool IsFolder() override;
  bool IsAbsolute() override;
  bool IsSlow() override;
  bool IsResolved() override;
  bool HasAttributes(DWORD pAttributes) override;
  bool Reload() override;
  TShellPropertyValue GetPropertyValue(const TShellColumnId& pShellColumnId) override;
  TString GetShellInformation(std::span<const TShellColumnId> pSHColumns, bool pFirstOnly) override;
  void SetPropertyValue(const TShellColumnId& pKey, const TShellPropertyValue& pValue) override;
  Ref<IItemIdList> CreateNewFolder(TStringView pNewFolderName) override;
  void Rename(TStringView pNewName, HWND pWindowHandle, bool pUpdatePidl) override;

  // --- IMetaDataFormatter, IHasDebugInfo -----------------------------------
  TString GetFormattedString(const TShellColumnId& pShellColumnId) override;
  std::int64_t GetPlainValue(const TShellColumnId& pShellColumnId) override;
  TString GetInfo(TItemIdListInfoLevel pLevel) override;

  // --- beyond the interfaces -----------------------------------------------
  /// Replaces the list; special folder, path and shell item are unknown again.
  void SetPidl(TPidl pPidl);
  /// Replaces the cached shell item; the path is unknown again.
  void SetShellItem(IShellItem* pShellItem);
  /// The folder behind the item. Raises EFolderTrekError.
  Ref<IShellFolder> GetShellFolder();
  /// The file's contents for reading; nil for folders and on failure.
  Ref<IStream> GetStream();
  Ref<ISequentialStream> GetSequentialStream();
  /// Deletes the object for good. Raises EFolderTrekError.
  void RemoveStorage();
  /// Opens the object in another way than the shell would; true if that was done. An
  /// elevated process lets Explorer, which is not elevated, open documents of a viewer
  /// that can't run elevated.
  bool HandleCommand(const TShellCommand& pCommand);
  /// Which of the given special folders the item is (an empty set: which of
  /// all), SF_FILESYSTEMFOLDER or SF_UNKNOWN for none of them. Not remembered.
  TOakShellFolder TestForSpecialFolder(TOakShellFolders pFoldersToTest);

 protected:
  /// Base constructor: keeps the pidl as it is given; no copy is made here.
  TOakItemIdList(PItemIdList pItemIdList, TItemIdListOwnership pOwnsPointer) noexcept;
  /// Without lock, path and special folder: what is made around a shell item.
  struct TBare {};
  explicit TOakItemIdList(TBare) noexcept;
  ~TOakItemIdList() override;

  HRESULT QueryDelegated(REFIID iid, void** out) override;
  /// Gives the item its list, if it has none. For constructors.
  void AdoptPidl(TPidl pPidl) noexcept;

 private:
  friend class TItemParser;
  friend class TItemRename;
  friend const Ref<IItemIdList>& NullItemIdList();

  Ref<IItemIdList> Self() { return Ref<IItemIdList>::Share(this); }
  PItemIdList Resolve();
  TPidl FindPidl();
  /// Exchanges the list for one that the item owns.
  void ReplacePidl(TPidl pPidl);
  /// After a rename: new list, everything that was known of the old one forgotten.
  void ReplaceRenamed(TPidl pPidl);
  void Retire(std::unique_ptr<TRetiredState> pState) noexcept;
  /// The stored text as it stands; a view for the length of the caller's statement.
  TStringView PathField() const noexcept;
  void InitPath(TStringView pText);
  void SetPathField(TStringView pText);
  void StoreSpecialFolder(TOakShellFolder pFound, PItemIdList pPidl);
  TString ComputePath(const TItemText* pSeen);
  TString PathOfPidl(PItemIdList pPidl);
  TString NameForExplorer();
  bool IsBrowsable();
  bool AreBothInQuickAccess(const Ref<IItemIdList>& pOther);
  bool Explore(const TShellCommand& pCommand);
  bool PinToHome();
  bool OpenCommandPrompt();
  bool UnlockDrive(const TShellCommand& pCommand);
  bool Share();
  bool InvokeByMenu(const TShellCommand& pCommand);
  bool InvokeDefault(IContextMenu* pMenu, const TShellCommand& pCommand);
  TString WorkingDirectory();
  bool SamePathDecides(const Ref<IItemIdList>& pOther, bool& pSame);
  TOakShellFolder FindKnownFolder(IKnownFolderManager& pManager, TOakShellFolders pFoldersToTest);
  TOakShellFolder FindByComparing(TOakShellFolders pFoldersToTest);

  static constexpr std::uintptr_t kFailed = 1;

  std::atomic<PItemIdList> fItemIdList{nullptr};  ///< nil: not resolved yet; kFailed: invalid.
  std::atomic<TItemIdListOwnership> fOwnsPointer{iloOwnsMemory};
  std::atomic<TOakShellFolder> fSpecialFolder{SF_FILESYSTEMFOLDER};
  bool fHasPIDLLock = false;
  std::atomic<IShellItem*> fShellItem{nullptr};  ///< One count is held.
  TReentrantLock fPIDLLock;                      ///< Held for the whole of Reload.
  std::atomic<const TItemText*> fPath{nullptr};  ///< "-": not computed; nil: there is none.
  TRetiredState* fRetired = nullptr;             ///< Newest first; guarded by a lock of the class.
};

/// An item that stands for a search: its contents are the objects below the
/// scope that match the query. Always slow.
class TOakSearchFolder final : public TOakItemIdList {
 public:
  /// An empty query or an invalid scope gives an invalid item. Raises
  /// EOleSysError if the system can't search.
  static Ref<TOakSearchFolder> Create(TStringView pQuery, const Ref<IItemIdList>& pSearchScope);
  /// Where the search looks; nil for an invalid item.
  Ref<IItemIdList> GetSearchScope() const { return FSearchScope; }
  bool IsSlow() override { return true; }

 private:
  TOakSearchFolder() noexcept : TOakItemIdList(nullptr, iloForeignOwned) {}
  Ref<IItemIdList> FSearchScope;
};

/// The one invalid item that stands for "nothing". Any thread.
const Ref<IItemIdList>& NullItemIdList();

/// Whether there is no item or no such object. Takes nil.
inline bool IsInvalid(const Ref<IItemIdList>& pItemIdList) {
  return !pItemIdList || pItemIdList->IsInvalid();
}

/// The pidl of a text: relative to the folder if one is given, else absolute.
/// With a window the shell may show a logon dialog. Nil if there is none.
/// Raises EFolderTrekError only if the shell itself can't be opened.
TPidl GetIdListFromPath(IShellFolder* pShellFolder, TStringView pPath, HWND pWindowHandle);

/// Questions about items.
struct TItemIdListHelper {
  static bool HasSubFolders(const Ref<IItemIdList>& pItemIdList, bool pFileSystemOnly);
  /// A container that is a file too, such as an archive.
  static bool IsFileAndFolder(const Ref<IItemIdList>& pItemIdList);
  static bool IsNullOrInvalid(const Ref<IItemIdList>& pItemIdList);
  static bool SupportsIShellFolder2(const Ref<IItemIdList>& pItemIdList);
};

/// Shortcut files.
struct TShellLinkHelper {
  /// Nil if the item is no link.
  static Ref<IShellLinkW> GetIShellLink(const Ref<IItemIdList>& pItemIdList);
  /// Nil if the path is no shortcut file that can be read.
  static Ref<IShellLinkW> GetIShellLink(TStringView pPath);
  /// What the link points to, nil if it is none.
  static Ref<IItemIdList> Resolve(const Ref<IItemIdList>& pSourceItemIdList);
  static Ref<IItemIdList> Resolve(TStringView pPath);
  /// Writes a shortcut to the source into a directory, named as given or as the
  /// source, and returns its item; nil for an invalid source or an empty
  /// destination. Raises EFolderTrekError.
  static Ref<IItemIdList> AddLinkTo(const Ref<IItemIdList>& pSourceItemIdList,
                                    TStringView pDestination, TStringView pLinkName);
};

}  // namespace oak
