// TShellItemArray and TOakDesktopFolder.
#include "oak/base/HResult.h"
#include "oak/namespace/ComFence.h"
#include "oak/namespace/Oak.Shell.ItemIdListCollection.h"
#include "oak/namespace/OakItemIdList.h"
#include "oak/namespace/Shell_Win32.h"
#include "oak/platform/Api.h"

namespace oak {

// --- TShellItemArray -----------------------------------------------------------

Ref<IShellItemArray> TShellItemArray::PidlArrayToShellItemArray(
    const std::vector<Ref<IItemIdList>>& pItems) {
  std::vector<PCIDLIST_ABSOLUTE> pidls;
  for (const Ref<IItemIdList>& item : pItems)
    if (!IsInvalid(item)) pidls.push_back(item->WindowsPointer());
  Ref<IShellItemArray> array;
  if (pidls.empty()) return array;
  if (!Api().SHCreateShellItemArrayFromIDLists) OleCheck(E_NOTIMPL);
  OleCheck(Api().SHCreateShellItemArrayFromIDLists(static_cast<UINT>(pidls.size()), pidls.data(),
                                                   array.Put()));
  return array;
}

template <class TCall>
HRESULT TShellItemArray::Forward(TCall&& pCall) {
  return ComFenced([&]() -> HRESULT {
    if (!fArray) fArray = PidlArrayToShellItemArray(fItems);
    return fArray ? pCall(*fArray.Get()) : E_FAIL;
  });
}

HRESULT STDMETHODCALLTYPE TShellItemArray::BindToHandler(IBindCtx* pContext, REFGUID pHandler,
                                                         REFIID pInterfaceID, void** pObject) {
  if (!pObject) return E_POINTER;
  *pObject = nullptr;
  return Forward([&](IShellItemArray& array) {
    return array.BindToHandler(pContext, pHandler, pInterfaceID, pObject);
  });
}

HRESULT STDMETHODCALLTYPE TShellItemArray::GetPropertyStore(GETPROPERTYSTOREFLAGS pFlags,
                                                            REFIID pInterfaceID, void** pStore) {
  if (!pStore) return E_POINTER;
  *pStore = nullptr;
  return Forward(
      [&](IShellItemArray& array) { return array.GetPropertyStore(pFlags, pInterfaceID, pStore); });
}

HRESULT STDMETHODCALLTYPE TShellItemArray::GetPropertyDescriptionList(REFPROPERTYKEY pKeyType,
                                                                      REFIID pInterfaceID,
                                                                      void** pList) {
  if (!pList) return E_POINTER;
  *pList = nullptr;
  return Forward([&](IShellItemArray& array) {
    return array.GetPropertyDescriptionList(pKeyType, pInterfaceID, pList);
  });
}

HRESULT STDMETHODCALLTYPE TShellItemArray::GetAttributes(SIATTRIBFLAGS pFlags, SFGAOF pMask,
                                                         SFGAOF* pAttributes) {
  if (!pAttributes) return E_POINTER;
  *pAttributes = 0;
  return Forward(
      [&](IShellItemArray& array) { return array.GetAttributes(pFlags, pMask, pAttributes); });
}

HRESULT STDMETHODCALLTYPE TShellItemArray::GetCount(DWORD* pCount) {
  if (!pCount) return E_POINTER;
  *pCount = 0;
  return ComFenced([&]() -> HRESULT {
    if (!fArray) fArray = PidlArrayToShellItemArray(fItems);
    return fArray ? fArray->GetCount(pCount) : S_OK;
  });
}

HRESULT STDMETHODCALLTYPE TShellItemArray::GetItemAt(DWORD pIndex, IShellItem** pItem) {
  if (!pItem) return E_POINTER;
  *pItem = nullptr;
  return Forward([&](IShellItemArray& array) { return array.GetItemAt(pIndex, pItem); });
}

HRESULT STDMETHODCALLTYPE TShellItemArray::EnumItems(IEnumShellItems** pEnum) {
  if (!pEnum) return E_POINTER;
  *pEnum = nullptr;
  return Forward([&](IShellItemArray& array) { return array.EnumItems(pEnum); });
}

// --- TOakDesktopFolder ---------------------------------------------------------

namespace {

/// Binds to the folder of an object that lies anywhere below the desktop.
HRESULT BindToOwnFolder(PCIDLIST_ABSOLUTE pPidl, Ref<IShellFolder>& pFolder,
                        PCUITEMID_CHILD& pChild) {
  const HRESULT result =
      Api().SHBindToParent(pPidl, IidOf<IShellFolder>(), pFolder.PutVoid(), &pChild);
  return SUCCEEDED(result) && !pFolder ? E_NOINTERFACE : result;
}

bool AreElements(UINT pCount, PCUITEMID_CHILD_ARRAY pPidls) {
  for (UINT i = 0; i < pCount; ++i)
    if (PidlDepth(pPidls[i]) > 1) return false;
  return true;
}

HRESULT MakeDataObject(UINT pCount, PCUITEMID_CHILD_ARRAY pPidls, REFIID pInterfaceID,
                       void** pObject) {
  // The lists are relative to the root of the namespace.
  const TPidl root =
      TPidl::Copy(TOakItemIdList::CreateForSpecialFolder(SF_DESKTOP, true)->WindowsPointer());
  HRESULT result = E_NOTIMPL;
  if (Api().SHCreateDataObject)
    result = Api().SHCreateDataObject(root.Get(), pCount, pPidls, nullptr, pInterfaceID, pObject);
  // Where the function is there in name only, the older one does as well.
  if (result != E_NOTIMPL || !Api().CIDLData_CreateFromIDArray) return result;
  Ref<IDataObject> data;
  result = Api().CIDLData_CreateFromIDArray(root.Get(), pCount, pPidls, data.Put());
  if (FAILED(result)) return result;
  return data ? data->QueryInterface(pInterfaceID, pObject) : E_NOINTERFACE;
}

}  // namespace

TOakDesktopFolder::TOakDesktopFolder() : fDesktop(Desktop()) {}

HRESULT STDMETHODCALLTYPE TOakDesktopFolder::ParseDisplayName(HWND pWindow, IBindCtx* pContext,
                                                              LPWSTR pName, ULONG* pEaten,
                                                              PIDLIST_RELATIVE* pPidl,
                                                              ULONG* pAttributes) {
  return fDesktop->ParseDisplayName(pWindow, pContext, pName, pEaten, pPidl, pAttributes);
}

HRESULT STDMETHODCALLTYPE TOakDesktopFolder::EnumObjects(HWND pWindow, SHCONTF pFlags,
                                                         IEnumIDList** pEnum) {
  return fDesktop->EnumObjects(pWindow, pFlags, pEnum);
}

HRESULT STDMETHODCALLTYPE TOakDesktopFolder::BindToObject(PCUIDLIST_RELATIVE pPidl,
                                                          IBindCtx* pContext, REFIID pInterfaceID,
                                                          void** pObject) {
  return fDesktop->BindToObject(pPidl, pContext, pInterfaceID, pObject);
}

HRESULT STDMETHODCALLTYPE TOakDesktopFolder::BindToStorage(PCUIDLIST_RELATIVE pPidl,
                                                           IBindCtx* pContext, REFIID pInterfaceID,
                                                           void** pObject) {
  return fDesktop->BindToStorage(pPidl, pContext, pInterfaceID, pObject);
}

HRESULT STDMETHODCALLTYPE TOakDesktopFolder::CompareIDs(LPARAM pHint, PCUIDLIST_RELATIVE pPidl1,
                                                        PCUIDLIST_RELATIVE pPidl2) {
  return fDesktop->CompareIDs(pHint, pPidl1, pPidl2);
}

HRESULT STDMETHODCALLTYPE TOakDesktopFolder::CreateViewObject(HWND pOwner, REFIID pInterfaceID,
                                                              void** pView) {
  return fDesktop->CreateViewObject(pOwner, pInterfaceID, pView);
}

HRESULT STDMETHODCALLTYPE TOakDesktopFolder::GetAttributesOf(UINT pCount,
                                                             PCUITEMID_CHILD_ARRAY pPidls,
                                                             SFGAOF* pAttributes) {
  return ComFenced([&]() -> HRESULT {
    if (!pPidls || !pAttributes) return E_POINTER;
    if (AreElements(pCount, pPidls)) return fDesktop->GetAttributesOf(pCount, pPidls, pAttributes);
    // As every folder does it: what all of them have.
    SFGAOF common = *pAttributes;
    for (UINT i = 0; i < pCount && common != 0; ++i) {
      Ref<IShellFolder> folder;
      PCUITEMID_CHILD child = nullptr;
      SFGAOF own = common;
      HRESULT result = BindToOwnFolder(pPidls[i], folder, child);
      if (SUCCEEDED(result)) result = folder->GetAttributesOf(1, &child, &own);
      if (FAILED(result)) return result;
      common &= own;
    }
    *pAttributes = common;
    return S_OK;
  });
}

HRESULT STDMETHODCALLTYPE TOakDesktopFolder::GetUIObjectOf(HWND pOwner, UINT pCount,
                                                           PCUITEMID_CHILD_ARRAY pPidls,
                                                           REFIID pInterfaceID, UINT* pReserved,
                                                           void** pObject) {
  return ComFenced([&]() -> HRESULT {
    if (!pObject) return E_POINTER;
    *pObject = nullptr;
    if (!pPidls || pCount == 0) return E_INVALIDARG;
    if (AreElements(pCount, pPidls))
      return fDesktop->GetUIObjectOf(pOwner, pCount, pPidls, pInterfaceID, pReserved, pObject);
    if (pCount > 1) {
      if (pInterfaceID != IidOf<IDataObject>()) return E_NOINTERFACE;
      return MakeDataObject(pCount, pPidls, pInterfaceID, pObject);
    }
    Ref<IShellFolder> folder;
    PCUITEMID_CHILD child = nullptr;
    const HRESULT result = BindToOwnFolder(pPidls[0], folder, child);
    return FAILED(result)
               ? result
               : folder->GetUIObjectOf(pOwner, 1, &child, pInterfaceID, pReserved, pObject);
  });
}

HRESULT STDMETHODCALLTYPE TOakDesktopFolder::GetDisplayNameOf(PCUITEMID_CHILD pPidl, SHGDNF pFlags,
                                                              STRRET* pName) {
  return ComFenced([&]() -> HRESULT {
    if (PidlDepth(pPidl) < 2) return fDesktop->GetDisplayNameOf(pPidl, pFlags, pName);
    Ref<IShellFolder> folder;
    PCUITEMID_CHILD child = nullptr;
    const HRESULT result = BindToOwnFolder(pPidl, folder, child);
    if (FAILED(result)) return result;
    const HRESULT named = folder->GetDisplayNameOf(child, pFlags, pName);
    // An offset points into the element, which the caller sees as a part of a longer list.
    if (SUCCEEDED(named) && pName->uType == STRRET_OFFSET)
      pName->uOffset += static_cast<UINT>(reinterpret_cast<const BYTE*>(child) -
                                          reinterpret_cast<const BYTE*>(pPidl));
    return named;
  });
}

HRESULT STDMETHODCALLTYPE TOakDesktopFolder::SetNameOf(HWND pWindow, PCUITEMID_CHILD pPidl,
                                                       LPCWSTR pName, SHGDNF pFlags,
                                                       PITEMID_CHILD* pNewPidl) {
  return ComFenced([&]() -> HRESULT {
    if (PidlDepth(pPidl) < 2) return fDesktop->SetNameOf(pWindow, pPidl, pName, pFlags, pNewPidl);
    if (pNewPidl) *pNewPidl = nullptr;
    Ref<IShellFolder> folder;
    PCUITEMID_CHILD child = nullptr;
    const HRESULT result = BindToOwnFolder(pPidl, folder, child);
    if (FAILED(result)) return result;
    TPidl element;
    const HRESULT named =
        folder->SetNameOf(pWindow, child, pName, pFlags, pNewPidl ? element.Put() : nullptr);
    if (FAILED(named) || !element) return named;
    TPidl parent = TPidl::Copy(pPidl);
    Api().ILRemoveLastID(parent.Get());
    *pNewPidl = Api().ILCombine(parent.Get(), element.Get());
    return *pNewPidl ? named : E_OUTOFMEMORY;
  });
}

}  // namespace oak
