#include "oak/platform/portable/ShellFolder.h"

#include "oak/platform/portable/PortableCall.h"
#include "oak/platform/portable/ShellChanges.h"
#include "oak/platform/portable/ShellMenu.h"
#include "oak/platform/portable/ShellPidl.h"
#include "oak/platform/portable/ShellProperties.h"

namespace oak {

DWORD ModeOf(IBindCtx* context) {
  BIND_OPTS options{};
  options.cbStruct = sizeof options;
  if (!context || FAILED(context->GetBindOptions(&options))) return STGM_READ;
  return options.grfMode;
}

namespace {

HRESULT BindChild(const Ref<TFolderNode>& node, PCUIDLIST_RELATIVE pidl, IBindCtx* context,
                  REFIID iid, void** object) {
  Ref<TFolderNode> parent;
  PCUITEMID_CHILD child = nullptr;
  HRESULT result = BindParent(node, pidl, parent, child);
  if (FAILED(result)) return result;
  if (iid == IID_IStream || iid == IID_ISequentialStream) {
    Ref<IStream> stream;
    if (!ElementKind(child)) return E_INVALIDARG;
    result = parent->SourceOf(child).OpenStream(child, ModeOf(context), stream.Put());
    return SUCCEEDED(result) && stream ? stream->QueryInterface(iid, object) : result;
  }
  if (iid == IID_IPropertyStore) return MakePropertyStore(parent, child, {}, false, iid, object);
  Ref<TFolderNode> folder;
  result = parent->Open(child, folder);
  return SUCCEEDED(result) ? MakeFolderObject(folder, iid, object) : result;
}

// One child as the source sees it; several levels lead to the last one.
HRESULT Locate(const Ref<TFolderNode>& node, PCUIDLIST_RELATIVE pidl, Ref<TFolderNode>& parent,
               PCUITEMID_CHILD& child) {
  const HRESULT result = BindParent(node, pidl, parent, child);
  return SUCCEEDED(result) && !ElementKind(child) ? E_INVALIDARG : result;
}

HRESULT ReturnText(TStringView text, STRRET* result) {
  result->uType = STRRET_WSTR;
  result->pOleStr = TaskText(text);
  return S_OK;
}

HRESULT FormatProperty(const TFolderNode& node, PCUITEMID_CHILD child, REFPROPERTYKEY key,
                       TString& text) {
  TPropVariant value;
  const HRESULT result = node.GetProperty(child, key, value.Put());
  text.clear();
  if (FAILED(result)) return result == PropertyNotFound ? S_OK : result;
  LPWSTR formatted = nullptr;
  if (Api().PSFormatForDisplayAlloc &&
      SUCCEEDED(Api().PSFormatForDisplayAlloc(key, value, PDFF_DEFAULT, &formatted))) {
    const auto owner = TTaskMemory<WCHAR>::Adopt(formatted);
    text = FromW(formatted);
  } else {
    text = PropVariantToText(value);
  }
  return S_OK;
}

}  // namespace

LPWSTR TaskText(TStringView text) {
  auto* block = static_cast<LPWSTR>(CoTaskMemAlloc((text.size() + 1) * sizeof(WCHAR)));
  if (!block) throw std::bad_alloc();
  std::memcpy(block, text.data(), text.size() * sizeof(WCHAR));
  block[text.size()] = 0;
  return block;
}

TNameForm NameFormOf(SHGDNF flags) noexcept {
  const bool inFolder = (flags & SHGDN_INFOLDER) != 0;
  if (flags & SHGDN_FORPARSING) {
    if (flags & SHGDN_FORADDRESSBAR)
      return inFolder ? TNameForm::AddressBar : TNameForm::AbsoluteEditing;
    return inFolder ? TNameForm::Parsing : TNameForm::AbsoluteParsing;
  }
  if (flags & SHGDN_FOREDITING) return TNameForm::Editing;
  return inFolder ? TNameForm::Display : TNameForm::Normal;
}

HRESULT CommonAttributes(const TFolderNode& node, std::span<const PCUITEMID_CHILD> children,
                         DWORD& attributes) {
  const DWORD mask = attributes;
  if (children.empty()) {
    const HRESULT result = node.GetFolderAttributes(mask, attributes);
    attributes &= mask;
    return result;
  }
  for (PCUITEMID_CHILD child : children) {
    DWORD own = 0;
    const HRESULT result = AttributesOfList(
        Ref<TFolderNode>::Share(const_cast<TFolderNode*>(&node)), child, mask, own);
    if (FAILED(result)) return result;
    attributes &= own;
  }
  return S_OK;
}

HRESULT MakeFolderObject(const Ref<TFolderNode>& node, REFIID iid, void** object) {
  return MakeRef<TPortableFolder>(node)->QueryInterface(iid, object);
}

HRESULT NodeOf(IUnknown* folder, Ref<TFolderNode>& node) {
  node.Reset();
  if (!folder) return S_OK;
  const auto shared = Ref<IUnknown>::Share(folder);
  if (const auto access = shared.As<INodeAccess>()) {
    node = access->Node();
    return S_OK;
  }
  TPidl pidl;
  HRESULT result = E_NOINTERFACE;
  if (const auto persist = shared.As<IPersistFolder2>())
    result = persist->GetCurFolder(pidl.Put());
  else if (const auto list = shared.As<IPersistIDList>())
    result = list->GetIDList(pidl.Put());
  return SUCCEEDED(result) ? TFolderNode::FromPidl(pidl.Get(), node) : result;
}

// --- IShellFolder --------------------------------------------------------------

HRESULT TPortableFolder::ParseDisplayName(HWND, IBindCtx* pbc, LPWSTR pszDisplayName,
                                          ULONG* pchEaten, PIDLIST_RELATIVE* ppidl,
                                          ULONG* pdwAttributes) {
  return PortableCall("IShellFolder::ParseDisplayName", [&]() -> HRESULT {
    if (!ppidl) return E_POINTER;
    *ppidl = nullptr;
    if (pchEaten) *pchEaten = 0;
    if (!pszDisplayName) return E_INVALIDARG;
    WIN32_FIND_DATAW data;
    TParseOptions options;
    if (FindDataOf(pbc, data)) options.FindData = &data;
    const TStringView text(pszDisplayName);
    TPidl list;
    HRESULT result = ParseRelative(fNode, text, options, list);
    DWORD attributes = 0;
    if (SUCCEEDED(result) && pdwAttributes && *pdwAttributes)
      result = AttributesOfList(fNode, list.Get(), *pdwAttributes, attributes);
    if (FAILED(result)) return result;
    if (pdwAttributes) *pdwAttributes = attributes;
    if (pchEaten) *pchEaten = static_cast<ULONG>(text.size());
    *ppidl = list.Detach();
    return S_OK;
  });
}

HRESULT TPortableFolder::EnumObjects(HWND, SHCONTF grfFlags, IEnumIDList** ppenumIDList) {
  return PortableCall("IShellFolder::EnumObjects", [&]() -> HRESULT {
    if (!ppenumIDList) return E_POINTER;
    *ppenumIDList = nullptr;
    return MakeEnumIdList(fNode, grfFlags, ppenumIDList);
  });
}

HRESULT TPortableFolder::BindToObject(PCUIDLIST_RELATIVE pidl, IBindCtx* pbc, REFIID riid,
                                      void** ppv) {
  return PortableCall("IShellFolder::BindToObject", [&]() -> HRESULT {
    if (!ppv) return E_POINTER;
    *ppv = nullptr;
    return BindChild(fNode, pidl, pbc, riid, ppv);
  });
}

HRESULT TPortableFolder::BindToStorage(PCUIDLIST_RELATIVE pidl, IBindCtx* pbc, REFIID riid,
                                       void** ppv) {
  return PortableCall("IShellFolder::BindToStorage", [&]() -> HRESULT {
    if (!ppv) return E_POINTER;
    *ppv = nullptr;
    return BindChild(fNode, pidl, pbc, riid, ppv);
  });
}

HRESULT TPortableFolder::CompareIDs(LPARAM lParam, PCUIDLIST_RELATIVE pidl1,
                                    PCUIDLIST_RELATIVE pidl2) {
  return PortableCall("IShellFolder::CompareIDs", [&]() -> HRESULT {
    int order = 0;
    const HRESULT result = fNode->CompareLists(lParam, pidl1, pidl2, order);
    if (FAILED(result)) return result;
    const int sign = (order > 0) - (order < 0);
    return MAKE_HRESULT(0, 0, static_cast<USHORT>(sign));
  });
}

HRESULT TPortableFolder::CreateViewObject(HWND, REFIID riid, void** ppv) {
  return PortableCall("IShellFolder::CreateViewObject", [&]() -> HRESULT {
    if (!ppv) return E_POINTER;
    *ppv = nullptr;
    return MakeViewObject(fNode, riid, ppv);
  });
}

HRESULT TPortableFolder::GetAttributesOf(UINT cidl, PCUITEMID_CHILD_ARRAY apidl, SFGAOF* rgfInOut) {
  return PortableCall("IShellFolder::GetAttributesOf", [&]() -> HRESULT {
    if (!rgfInOut || (cidl && !apidl)) return E_POINTER;
    return CommonAttributes(*fNode, {apidl, cidl}, *rgfInOut);
  });
}

HRESULT TPortableFolder::GetUIObjectOf(HWND, UINT cidl, PCUITEMID_CHILD_ARRAY apidl, REFIID riid,
                                       UINT*, void** ppv) {
  return PortableCall("IShellFolder::GetUIObjectOf", [&]() -> HRESULT {
    if (!ppv) return E_POINTER;
    *ppv = nullptr;
    if (!cidl || !apidl) return E_INVALIDARG;
    return MakeUIObject(fNode, {apidl, cidl}, riid, ppv);
  });
}

HRESULT TPortableFolder::GetDisplayNameOf(PCUITEMID_CHILD pidl, SHGDNF uFlags, STRRET* pName) {
  return PortableCall("IShellFolder::GetDisplayNameOf", [&]() -> HRESULT {
    if (!pName) return E_POINTER;
    pName->uType = STRRET_WSTR;
    pName->pOleStr = nullptr;
    const TNameForm form = NameFormOf(uFlags);
    TString name;
    HRESULT result = S_OK;
    if (!pidl || IsEmptyPidl(pidl)) {
      result = fNode->GetFolderName(form, name);
    } else {
      Ref<TFolderNode> parent;
      PCUITEMID_CHILD child = nullptr;
      result = Locate(fNode, pidl, parent, child);
      if (SUCCEEDED(result)) result = parent->GetName(child, form, name);
    }
    return FAILED(result) ? result : ReturnText(name, pName);
  });
}

HRESULT TPortableFolder::SetNameOf(HWND, PCUITEMID_CHILD pidl, LPCWSTR pszName, SHGDNF uFlags,
                                   PITEMID_CHILD* ppidlOut) {
  return PortableCall("IShellFolder::SetNameOf", [&]() -> HRESULT {
    if (ppidlOut) *ppidlOut = nullptr;
    if (!pszName || !*pszName) return E_INVALIDARG;
    Ref<TFolderNode> parent;
    PCUITEMID_CHILD child = nullptr;
    HRESULT result = Locate(fNode, pidl, parent, child);
    if (FAILED(result)) return result;
    const TNameForm form = uFlags & SHGDN_FORPARSING ? TNameForm::Parsing : TNameForm::Display;
    TPidl renamed;
    result = parent->SourceOf(child).Rename(child, pszName, form, renamed);
    if (FAILED(result)) return result;
    AnnounceRename(*parent, child, renamed.Get());
    if (ppidlOut) *ppidlOut = renamed.Detach();
    return result;
  });
}

// --- IShellFolder2 ---------------------------------------------------------------

HRESULT TPortableFolder::GetDefaultSearchGUID(GUID*) { return E_NOTIMPL; }

HRESULT TPortableFolder::EnumSearches(IEnumExtraSearch** ppenum) {
  if (ppenum) *ppenum = nullptr;
  return E_NOTIMPL;
}

HRESULT TPortableFolder::GetDefaultColumn(DWORD, ULONG* pSort, ULONG* pDisplay) {
  return PortableCall("IShellFolder2::GetDefaultColumn", [&]() -> HRESULT {
    if (pSort) *pSort = 0;
    if (pDisplay) *pDisplay = 0;
    return S_OK;
  });
}

HRESULT TPortableFolder::GetDefaultColumnState(UINT iColumn, SHCOLSTATEF* pcsFlags) {
  return PortableCall("IShellFolder2::GetDefaultColumnState", [&]() -> HRESULT {
    if (!pcsFlags) return E_POINTER;
    *pcsFlags = 0;
    const std::span<const TFolderColumn> columns = fNode->Contents().GetColumns();
    if (iColumn >= columns.size()) return E_INVALIDARG;
    *pcsFlags = columns[iColumn].State;
    return S_OK;
  });
}

HRESULT TPortableFolder::GetDetailsEx(PCUITEMID_CHILD pidl, const SHCOLUMNID* pscid, VARIANT* pv) {
  return PortableCall("IShellFolder2::GetDetailsEx", [&]() -> HRESULT {
    if (!pv || !pscid) return E_POINTER;
    VariantInit(pv);
    Ref<TFolderNode> parent;
    PCUITEMID_CHILD child = nullptr;
    HRESULT result = Locate(fNode, pidl, parent, child);
    if (FAILED(result)) return result;
    TPropVariant value;
    result = parent->GetProperty(child, *pscid, value.Put());
    if (result == PropertyNotFound) return S_OK;
    return FAILED(result) ? result : PropVariantToVariantValue(value, *pv);
  });
}

HRESULT TPortableFolder::GetDetailsOf(PCUITEMID_CHILD pidl, UINT iColumn, SHELLDETAILS* psd) {
  return PortableCall("IShellFolder2::GetDetailsOf", [&]() -> HRESULT {
    if (!psd) return E_POINTER;
    psd->str.uType = STRRET_WSTR;
    psd->str.pOleStr = nullptr;
    const std::span<const TFolderColumn> columns = fNode->Contents().GetColumns();
    if (iColumn >= columns.size()) return E_INVALIDARG;
    const TFolderColumn& column = columns[iColumn];
    psd->fmt = column.Format;
    psd->cxChar = static_cast<int>(column.Width);
    if (!pidl) return ReturnText(column.Title, &psd->str);
    Ref<TFolderNode> parent;
    PCUITEMID_CHILD child = nullptr;
    TString text;
    HRESULT result = Locate(fNode, pidl, parent, child);
    if (SUCCEEDED(result))
      result = iColumn == 0 ? parent->GetName(child, TNameForm::Display, text)
                            : FormatProperty(*parent, child, column.Key, text);
    return FAILED(result) ? result : ReturnText(text, &psd->str);
  });
}

HRESULT TPortableFolder::MapColumnToSCID(UINT iColumn, SHCOLUMNID* pscid) {
  return PortableCall("IShellFolder2::MapColumnToSCID", [&]() -> HRESULT {
    if (!pscid) return E_POINTER;
    *pscid = {};
    const std::span<const TFolderColumn> columns = fNode->Contents().GetColumns();
    if (iColumn >= columns.size()) return E_INVALIDARG;
    *pscid = columns[iColumn].Key;
    return S_OK;
  });
}

// --- IPersistFolder2, IPersistIDList -----------------------------------------------

HRESULT TPortableFolder::GetClassID(CLSID* pClassID) {
  return PortableCall("IPersist::GetClassID", [&]() -> HRESULT {
    if (!pClassID) return E_POINTER;
    *pClassID = fNode->ClassId();
    return S_OK;
  });
}

// A folder object is bound when it is made and stays so.
HRESULT TPortableFolder::Initialize(PCIDLIST_ABSOLUTE) { return E_UNEXPECTED; }
HRESULT TPortableFolder::SetIDList(PCIDLIST_ABSOLUTE) { return E_UNEXPECTED; }

HRESULT TPortableFolder::GetCurFolder(PIDLIST_ABSOLUTE* ppidl) {
  return PortableCall("IPersistFolder2::GetCurFolder", [&]() -> HRESULT {
    if (!ppidl) return E_POINTER;
    *ppidl = TPidl::Copy(fNode->Pidl()).Detach();
    return S_OK;
  });
}

HRESULT TPortableFolder::GetIDList(PIDLIST_ABSOLUTE* ppidl) {
  return PortableCall("IPersistIDList::GetIDList", [&]() -> HRESULT {
    if (!ppidl) return E_POINTER;
    *ppidl = TPidl::Copy(fNode->Pidl()).Detach();
    return S_OK;
  });
}

// --- IShellIconOverlay, IShellIcon ----------------------------------------------------

HRESULT TPortableFolder::GetOverlayIndex(PCUITEMID_CHILD pidl, int* pIndex) {
  return PortableCall("IShellIconOverlay::GetOverlayIndex", [&]() -> HRESULT {
    if (!pIndex) return E_POINTER;
    *pIndex = -1;
    Ref<TFolderNode> parent;
    PCUITEMID_CHILD child = nullptr;
    HRESULT result = Locate(fNode, pidl, parent, child);
    int index = -1;
    if (SUCCEEDED(result)) result = parent->SourceOf(child).GetOverlayIndex(child, index);
    if (result == S_OK) *pIndex = index;
    return result;
  });
}

HRESULT TPortableFolder::GetOverlayIconIndex(PCUITEMID_CHILD pidl, int* pIconIndex) {
  return GetOverlayIndex(pidl, pIconIndex);
}

HRESULT TPortableFolder::GetIconOf(PCUITEMID_CHILD pidl, UINT flags, int* pIconIndex) {
  return PortableCall("IShellIcon::GetIconOf", [&]() -> HRESULT {
    if (!pIconIndex) return E_POINTER;
    Ref<TFolderNode> parent;
    PCUITEMID_CHILD child = nullptr;
    const HRESULT result = Locate(fNode, pidl, parent, child);
    if (FAILED(result)) return result;
    *pIconIndex = parent->GetIconIndex(child, (flags & 1) != 0);  // GIL_OPENICON
    return S_OK;
  });
}

}  // namespace oak
