// TItemIdListCollection: several items that are treated as one selection.
#pragma once

#include "oak/base/InterfacedObject.h"
#include "oak/namespace/Oak.Shell.Types.Interfaces.h"
#include "oak/platform/shell_api.h"

namespace oak {

/// Items that are absolute or relative to the collection's folder. One thread at
/// a time.
///
/// It is a context menu as well: that of its items, whatever folders they lie in. What that menu
/// fails with comes as the result of the call; nothing is raised there.
class TItemIdListCollection : public TInterfacedObject<IItemIdListCollection, IContextMenu> {
 public:
  /// The folder may be nil: a relative name is then parsed by the desktop, and the items find
  /// their folder by themselves.
  explicit TItemIdListCollection(Ref<IShellFolder> pShellFolder = nullptr);
  /// Copies the items of another collection, made absolute.
  explicit TItemIdListCollection(const Ref<IItemIdListCollection>& pCollection);
  explicit TItemIdListCollection(std::vector<Ref<IItemIdList>> pItems);

  // --- ICommandInvokable ---------------------------------------------------
  /// One item, and commands that only make sense for one, are carried out item by item, all others
  /// on the selection. False for an empty collection. Raises EFolderTrekError.
  bool InvokeCommand(const TShellCommand& pCommand) override;

  // --- IItemIdListCollection -----------------------------------------------
  void Add(TStringView pPath) override;
  void Add(const Ref<IItemIdList>& pItemIdList) override;
  void Add(const Ref<IItemIdListCollection>& pList) override;
  void AddStrings(const TStrings& pStrings) override;
  void Clear() override;
  int Count() override { return static_cast<int>(fItems.size()); }
  Ref<IItemIdList> GetItem(int pIndex) override;
  void CopyTo(const Ref<IItemIdListCollection>& pList) override;
  void CopyTo(IDataObject* pTarget) override;
  bool HaveSameParent() override;
  bool HasMultipleFileTypes() override;
  Ref<IItemIdList> GetLongestCommonAncestor() override;
  Ref<IShellItemArray> GetShellItemArray() override;
  Ref<IUnknown> GetUIObject(REFIID pInterfaceID) override;
  std::vector<PItemIdList> ToPItemIdListArray() override;
  TString ToString() override;

  // --- IContextMenu ----------------------------------------------------------
  HRESULT STDMETHODCALLTYPE QueryContextMenu(HMENU pMenu, UINT pIndex, UINT pFirstId, UINT pLastId,
                                             UINT pFlags) override;
  HRESULT STDMETHODCALLTYPE InvokeCommand(CMINVOKECOMMANDINFO* pInfo) override;
  HRESULT STDMETHODCALLTYPE GetCommandString(UINT_PTR pId, UINT pType, UINT* pReserved, CHAR* pName,
                                             UINT pSize) override;

  // --- beyond the interfaces -------------------------------------------------
  /// The items become those of another collection, made absolute.
  void Assign(const Ref<IItemIdListCollection>& pCollection);
  /// Carries the command out on the selection as a whole; true if there is one. Raises
  /// EFolderTrekError.
  bool InvokeCommandOnAll(const TShellCommand& pCommand);
  /// Carries the command out on item by item. The first failure ends it: the item's exception is
  /// raised, with ".InvokeCommandOnEach(" and the command in its text.
  bool InvokeCommandOnEach(const TShellCommand& pCommand);
  /// A menu for items that may lie in different folders, with the extensions for all objects of
  /// file systems. Raises EFolderTrekError.
  Ref<IContextMenu> GetContextMenuMultiple();

  /// The items as they are. They end with any change of the collection.
  auto begin() const { return fItems.begin(); }
  auto end() const { return fItems.end(); }

 private:
  using TItems = std::vector<Ref<IItemIdList>>;

  const Ref<IItemIdList>& FolderIdList();
  Ref<IItemIdList> MakeAbsolute(const Ref<IItemIdList>& pItemIdList);
  bool IsRelative(const Ref<IItemIdList>& pItemIdList) const;
  /// Raises EFolderTrekError without any.
  TItems ValidItems();
  void MakeAllAbsolute(TItems& pItems);
  Ref<IShellFolder> CommonFolder(TItems& pItems);
  Ref<IDataObject> GetDataObject();
  Ref<IContextMenu> ForwardMenu();
  bool Share();

  Ref<IShellFolder> fShellFolder;
  Ref<IItemIdList> fFolderIdList;  ///< Of fShellFolder, found at first need.
  TItems fItems;
  Ref<IContextMenu> fContextMenu;  ///< What IContextMenu forwards to; dropped by any change.
};

/// What collections are asked for beside their own operations.
struct IItemIdListCollectionHelper {
  /// Paths of the items, in their order.
  static TStringArray GetFilePaths(const Ref<IItemIdListCollection>& pCollection);
};

/// Items as the platform's array. The array is made when it is first asked for anything; of items
/// that are all invalid it is empty. One thread at a time, that of the array's apartment.
class TShellItemArray : public TInterfacedObject<IShellItemArray> {
 public:
  explicit TShellItemArray(std::vector<Ref<IItemIdList>> pItems) : fItems(std::move(pItems)) {}
  /// The valid items, in their order; nil without any. Raises EOleSysError.
  static Ref<IShellItemArray> PidlArrayToShellItemArray(
      const std::vector<Ref<IItemIdList>>& pItems);

  HRESULT STDMETHODCALLTYPE BindToHandler(IBindCtx* pContext, REFGUID pHandler, REFIID pInterfaceID,
                                          void** pObject) override;
  HRESULT STDMETHODCALLTYPE GetPropertyStore(GETPROPERTYSTOREFLAGS pFlags, REFIID pInterfaceID,
                                             void** pStore) override;
  HRESULT STDMETHODCALLTYPE GetPropertyDescriptionList(REFPROPERTYKEY pKeyType, REFIID pInterfaceID,
                                                       void** pList) override;
  HRESULT STDMETHODCALLTYPE GetAttributes(SIATTRIBFLAGS pFlags, SFGAOF pMask,
                                          SFGAOF* pAttributes) override;
  HRESULT STDMETHODCALLTYPE GetCount(DWORD* pCount) override;
  HRESULT STDMETHODCALLTYPE GetItemAt(DWORD pIndex, IShellItem** pItem) override;
  HRESULT STDMETHODCALLTYPE EnumItems(IEnumShellItems** pEnum) override;

 private:
  template <class TCall>
  HRESULT Forward(TCall&& pCall);

  std::vector<Ref<IItemIdList>> fItems;
  Ref<IShellItemArray> fArray;
};

/// The desktop as a folder whose objects may lie anywhere below it: it takes absolute item
/// identifier lists where the desktop itself takes elements, so that objects of several folders
/// have attributes, names and a data object together. Threads as for the desktop.
class TOakDesktopFolder : public TInterfacedObject<IShellFolder> {
 public:
  /// Raises EFolderTrekError if the shell doesn't give its desktop.
  TOakDesktopFolder();

  HRESULT STDMETHODCALLTYPE ParseDisplayName(HWND pWindow, IBindCtx* pContext, LPWSTR pName,
                                             ULONG* pEaten, PIDLIST_RELATIVE* pPidl,
                                             ULONG* pAttributes) override;
  HRESULT STDMETHODCALLTYPE EnumObjects(HWND pWindow, SHCONTF pFlags, IEnumIDList** pEnum) override;
  HRESULT STDMETHODCALLTYPE BindToObject(PCUIDLIST_RELATIVE pPidl, IBindCtx* pContext,
                                         REFIID pInterfaceID, void** pObject) override;
  HRESULT STDMETHODCALLTYPE BindToStorage(PCUIDLIST_RELATIVE pPidl, IBindCtx* pContext,
                                          REFIID pInterfaceID, void** pObject) override;
  HRESULT STDMETHODCALLTYPE CompareIDs(LPARAM pHint, PCUIDLIST_RELATIVE pPidl1,
                                       PCUIDLIST_RELATIVE pPidl2) override;
  HRESULT STDMETHODCALLTYPE CreateViewObject(HWND pOwner, REFIID pInterfaceID,
                                             void** pView) override;
  HRESULT STDMETHODCALLTYPE GetAttributesOf(UINT pCount, PCUITEMID_CHILD_ARRAY pPidls,
                                            SFGAOF* pAttributes) override;
  HRESULT STDMETHODCALLTYPE GetUIObjectOf(HWND pOwner, UINT pCount, PCUITEMID_CHILD_ARRAY pPidls,
                                          REFIID pInterfaceID, UINT* pReserved,
                                          void** pObject) override;
  HRESULT STDMETHODCALLTYPE GetDisplayNameOf(PCUITEMID_CHILD pPidl, SHGDNF pFlags,
                                             STRRET* pName) override;
  HRESULT STDMETHODCALLTYPE SetNameOf(HWND pWindow, PCUITEMID_CHILD pPidl, LPCWSTR pName,
                                      SHGDNF pFlags, PITEMID_CHILD* pNewPidl) override;

 private:
  Ref<IShellFolder> fDesktop;
};

}  // namespace oak
