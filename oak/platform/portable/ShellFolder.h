// The shell's folder object over a bound folder, and what belongs to it.
#pragma once

#include "oak/base/InterfacedObject.h"
#include "oak/platform/portable/ShellNode.h"
#include "oak/platform/portable/ShellParse.h"

namespace oak {

/// How the portable shell recognises its own folder objects.
struct INodeAccess : IUnknown {
  static constexpr GUID Iid{
      0x6A3B0C52, 0x91D7, 0x4C3E, {0xA6, 0x0D, 0x58, 0x21, 0xB9, 0xE4, 0x77, 0x03}};
  virtual const Ref<TFolderNode>& Node() = 0;
};

/// A folder of the namespace. Immutable; any thread.
class TPortableFolder
    : public TInterfacedObject<IShellFolder2, IPersistFolder2, IPersistIDList, IStorage,
                               IShellIconOverlay, IShellIcon, INodeAccess> {
 public:
  explicit TPortableFolder(Ref<TFolderNode> node) : fNode(std::move(node)) {}
  const Ref<TFolderNode>& Node() override { return fNode; }

  // IShellFolder
  HRESULT ParseDisplayName(HWND hwnd, IBindCtx* pbc, LPWSTR pszDisplayName, ULONG* pchEaten,
                           PIDLIST_RELATIVE* ppidl, ULONG* pdwAttributes) override;
  HRESULT EnumObjects(HWND hwnd, SHCONTF grfFlags, IEnumIDList** ppenumIDList) override;
  HRESULT BindToObject(PCUIDLIST_RELATIVE pidl, IBindCtx* pbc, REFIID riid, void** ppv) override;
  HRESULT BindToStorage(PCUIDLIST_RELATIVE pidl, IBindCtx* pbc, REFIID riid, void** ppv) override;
  HRESULT CompareIDs(LPARAM lParam, PCUIDLIST_RELATIVE pidl1, PCUIDLIST_RELATIVE pidl2) override;
  HRESULT CreateViewObject(HWND hwndOwner, REFIID riid, void** ppv) override;
  HRESULT GetAttributesOf(UINT cidl, PCUITEMID_CHILD_ARRAY apidl, SFGAOF* rgfInOut) override;
  HRESULT GetUIObjectOf(HWND hwndOwner, UINT cidl, PCUITEMID_CHILD_ARRAY apidl, REFIID riid,
                        UINT* rgfReserved, void** ppv) override;
  HRESULT GetDisplayNameOf(PCUITEMID_CHILD pidl, SHGDNF uFlags, STRRET* pName) override;
  HRESULT SetNameOf(HWND hwnd, PCUITEMID_CHILD pidl, LPCWSTR pszName, SHGDNF uFlags,
                    PITEMID_CHILD* ppidlOut) override;
  // IShellFolder2
  HRESULT GetDefaultSearchGUID(GUID* pguid) override;
  HRESULT EnumSearches(IEnumExtraSearch** ppenum) override;
  HRESULT GetDefaultColumn(DWORD dwRes, ULONG* pSort, ULONG* pDisplay) override;
  HRESULT GetDefaultColumnState(UINT iColumn, SHCOLSTATEF* pcsFlags) override;
  HRESULT GetDetailsEx(PCUITEMID_CHILD pidl, const SHCOLUMNID* pscid, VARIANT* pv) override;
  HRESULT GetDetailsOf(PCUITEMID_CHILD pidl, UINT iColumn, SHELLDETAILS* psd) override;
  HRESULT MapColumnToSCID(UINT iColumn, SHCOLUMNID* pscid) override;
  // IPersistFolder2, IPersistIDList
  HRESULT GetClassID(CLSID* pClassID) override;
  HRESULT Initialize(PCIDLIST_ABSOLUTE pidl) override;
  HRESULT GetCurFolder(PIDLIST_ABSOLUTE* ppidl) override;
  HRESULT SetIDList(PCIDLIST_ABSOLUTE pidl) override;
  HRESULT GetIDList(PIDLIST_ABSOLUTE* ppidl) override;
  // IShellIconOverlay, IShellIcon
  HRESULT GetOverlayIndex(PCUITEMID_CHILD pidl, int* pIndex) override;
  HRESULT GetOverlayIconIndex(PCUITEMID_CHILD pidl, int* pIconIndex) override;
  HRESULT GetIconOf(PCUITEMID_CHILD pidl, UINT flags, int* pIconIndex) override;
  // IStorage
  HRESULT CreateStream(const OLECHAR* pwcsName, DWORD grfMode, DWORD reserved1, DWORD reserved2,
                       IStream** ppstm) override;
  HRESULT OpenStream(const OLECHAR* pwcsName, void* reserved1, DWORD grfMode, DWORD reserved2,
                     IStream** ppstm) override;
  HRESULT CreateStorage(const OLECHAR* pwcsName, DWORD grfMode, DWORD reserved1, DWORD reserved2,
                        IStorage** ppstg) override;
  HRESULT OpenStorage(const OLECHAR* pwcsName, IStorage* pstgPriority, DWORD grfMode,
                      SNB snbExclude, DWORD reserved, IStorage** ppstg) override;
  HRESULT CopyTo(DWORD ciidExclude, const IID* rgiidExclude, SNB snbExclude,
                 IStorage* pstgDest) override;
  HRESULT MoveElementTo(const OLECHAR* pwcsName, IStorage* pstgDest, const OLECHAR* pwcsNewName,
                        DWORD grfFlags) override;
  HRESULT Commit(DWORD grfCommitFlags) override;
  HRESULT Revert() override;
  HRESULT EnumElements(DWORD reserved1, void* reserved2, DWORD reserved3,
                       IEnumSTATSTG** ppenum) override;
  HRESULT DestroyElement(const OLECHAR* pwcsName) override;
  HRESULT RenameElement(const OLECHAR* pwcsOldName, const OLECHAR* pwcsNewName) override;
  HRESULT SetElementTimes(const OLECHAR* pwcsName, const FILETIME* pctime, const FILETIME* patime,
                          const FILETIME* pmtime) override;
  HRESULT SetClass(REFCLSID clsid) override;
  HRESULT SetStateBits(DWORD grfStateBits, DWORD grfMask) override;
  HRESULT Stat(STATSTG* pstatstg, DWORD grfStatFlag) override;

 private:
  HRESULT FindElement(const OLECHAR* name, TPidl& child) const;
  HRESULT OpenFolderElement(PCUITEMID_CHILD child, IStorage** storage) const;
  HRESULT CreateElement(const OLECHAR* name, bool folder, DWORD mode, TPidl& child) const;

  const Ref<TFolderNode> fNode;
};

/// A folder object's answer to `iid`.
HRESULT MakeFolderObject(const Ref<TFolderNode>& node, REFIID iid, void** object);
/// The bound folder behind a folder object of ours, or of another one that tells
/// its list; nil for nil.
HRESULT NodeOf(IUnknown* folder, Ref<TFolderNode>& node);

/// A walk over the objects of a folder.
HRESULT MakeEnumIdList(const Ref<TFolderNode>& node, DWORD flags, IEnumIDList** result);
HRESULT MakeEnumShellItems(const Ref<TFolderNode>& node, DWORD flags, IEnumShellItems** result);
HRESULT MakeEnumStatStg(const Ref<TFolderNode>& node, IEnumSTATSTG** result);
/// The tip of a child as IQueryInfo.
HRESULT MakeQueryInfo(const Ref<TFolderNode>& node, PCUITEMID_CHILD child, REFIID iid,
                      void** object);
/// What a set of children has in common, or a handler for them: IQueryInfo here,
/// everything else by the source.
HRESULT MakeUIObject(const Ref<TFolderNode>& node, std::span<const PCUITEMID_CHILD> children,
                     REFIID iid, void** object);

/// Access mode that a bind context asks for; reading without one.
DWORD ModeOf(IBindCtx* context);

/// Task memory with the text; throws std::bad_alloc.
LPWSTR TaskText(TStringView text);
/// Which form a combination of SHGDN_ flags asks for.
TNameForm NameFormOf(SHGDNF flags) noexcept;
/// What an observer of the seam sees as one of the attributes call's bits: those
/// that all children have.
HRESULT CommonAttributes(const TFolderNode& node, std::span<const PCUITEMID_CHILD> children,
                         DWORD& attributes);

}  // namespace oak
