// The shell's item object, and arrays of items.
#pragma once

#include <atomic>
#include <memory>
#include <vector>

#include "oak/base/InterfacedObject.h"
#include "oak/platform/portable/ShellNode.h"

namespace oak {

/// How the portable shell recognises its own items.
struct IItemAccess : IUnknown {
  static constexpr GUID Iid{
      0x2F90D8A6, 0x1B44, 0x4E5B, {0x8C, 0x71, 0x0A, 0x9D, 0x3E, 0x62, 0xF5, 0xC8}};
  /// The folder that the object lies in; nil for the desktop itself.
  virtual const Ref<TFolderNode>& Folder() = 0;
  /// The object in that folder, nil for the desktop. Lives as long as the item.
  virtual PCUITEMID_CHILD Child() = 0;
};

/// One object of the namespace. May be used by several threads at once; Update
/// is the only operation that changes it, and readers see the old or the new state.
class TShellItem
    : public TInterfacedObject<IShellItem2, IPersistIDList, IParentAndItem, IItemAccess> {
 public:
  /// The desktop.
  TShellItem() = default;
  TShellItem(Ref<TFolderNode> folder, TPidl child);
  ~TShellItem() override;

  const Ref<TFolderNode>& Folder() override { return fFolder; }
  PCUITEMID_CHILD Child() override { return fChild.load(std::memory_order_acquire); }

  // IShellItem
  HRESULT BindToHandler(IBindCtx* pbc, REFGUID bhid, REFIID riid, void** ppv) override;
  HRESULT GetParent(IShellItem** ppsi) override;
  HRESULT GetDisplayName(SIGDN sigdnName, LPWSTR* ppszName) override;
  HRESULT GetAttributes(SFGAOF sfgaoMask, SFGAOF* psfgaoAttribs) override;
  HRESULT Compare(IShellItem* psi, SICHINTF hint, int* piOrder) override;
  // IShellItem2
  HRESULT GetPropertyStore(GETPROPERTYSTOREFLAGS flags, REFIID riid, void** ppv) override;
  HRESULT GetPropertyStoreWithCreateObject(GETPROPERTYSTOREFLAGS flags, IUnknown* punkCreateObject,
                                           REFIID riid, void** ppv) override;
  HRESULT GetPropertyStoreForKeys(const PROPERTYKEY* rgKeys, UINT cKeys,
                                  GETPROPERTYSTOREFLAGS flags, REFIID riid, void** ppv) override;
  HRESULT GetPropertyDescriptionList(REFPROPERTYKEY keyType, REFIID riid, void** ppv) override;
  HRESULT Update(IBindCtx* pbc) override;
  HRESULT GetProperty(REFPROPERTYKEY key, PROPVARIANT* ppropvar) override;
  HRESULT GetCLSID(REFPROPERTYKEY key, CLSID* pclsid) override;
  HRESULT GetFileTime(REFPROPERTYKEY key, FILETIME* pft) override;
  HRESULT GetInt32(REFPROPERTYKEY key, int* pi) override;
  HRESULT GetString(REFPROPERTYKEY key, LPWSTR* ppsz) override;
  HRESULT GetUInt32(REFPROPERTYKEY key, ULONG* pui) override;
  HRESULT GetUInt64(REFPROPERTYKEY key, ULONGLONG* pull) override;
  HRESULT GetBool(REFPROPERTYKEY key, BOOL* pf) override;
  // IPersistIDList
  HRESULT GetClassID(CLSID* pClassID) override;
  HRESULT SetIDList(PCIDLIST_ABSOLUTE pidl) override;
  HRESULT GetIDList(PIDLIST_ABSOLUTE* ppidl) override;
  // IParentAndItem
  HRESULT SetParentAndItem(PCIDLIST_ABSOLUTE pidlParent, IShellFolder* psf,
                           PCUITEMID_CHILD pidlChild) override;
  HRESULT GetParentAndItem(PIDLIST_ABSOLUTE* ppidlParent, IShellFolder** ppsf,
                           PITEMID_CHILD* ppidlChild) override;

 private:
  bool IsDesktop() const noexcept { return !fFolder; }
  HRESULT Open(Ref<TFolderNode>& node);
  HRESULT Value(REFPROPERTYKEY key, PROPVARIANT* value);
  HRESULT BindStorage(IBindCtx* context, REFIID iid, void** object);
  HRESULT BindStream(IBindCtx* context, REFIID iid, void** object);
  HRESULT BindLinkTarget(REFIID iid, void** object);
  HRESULT BindUIObject(REFIID iid, void** object);
  HRESULT BindViewObject(REFIID iid, void** object);

  /// The element before an update, which readers may still look at.
  struct TFormer {
    TPidl Child;
    std::unique_ptr<TFormer> Next;
  };

  const Ref<TFolderNode> fFolder;
  std::atomic<PCUITEMID_CHILD> fChild{nullptr};
  TPidl fOwned;  // this and the next under a lock that all items share
  std::unique_ptr<TFormer> fFormer;
};

/// An item for the first element of `child`.
HRESULT MakeItem(const Ref<TFolderNode>& folder, PCUITEMID_CHILD child, REFIID iid, void** item);
/// An item for a list relative to `folder`; the empty list gives the folder itself.
HRESULT MakeItemOfList(const Ref<TFolderNode>& folder, PCUIDLIST_RELATIVE list, REFIID iid,
                       void** item);
/// Absolute list of any object that has one: items, folders, arrays of one item.
HRESULT ListOfObject(IUnknown* object, TPidl& pidl);
/// A text name in one of the published forms (SIGDN).
HRESULT NameOfChild(const TFolderNode* folder, PCUITEMID_CHILD child, SIGDN form, TString& name);

/// An immutable array; any thread. No items give E_INVALIDARG.
HRESULT MakeItemArray(std::vector<Ref<IShellItem>> items, REFIID iid, void** array);

}  // namespace oak
