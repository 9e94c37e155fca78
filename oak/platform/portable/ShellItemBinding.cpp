// The shell's functions: items, arrays, and lists compared by what they lead to.
#include "oak/platform/Api.h"
#include "oak/platform/portable/PortableCall.h"
#include "oak/platform/portable/ShellFolder.h"
#include "oak/platform/portable/ShellFunctions.h"
#include "oak/platform/portable/ShellItem.h"
#include "oak/platform/portable/ShellPidl.h"

namespace oak {

namespace {

// The folder that a caller names by its list or its object; nil if by neither.
HRESULT FolderOf(PCIDLIST_ABSOLUTE parent, IShellFolder* folder, Ref<TFolderNode>& node) {
  return folder || !parent ? NodeOf(folder, node) : TFolderNode::FromPidl(parent, node);
}

HRESULT MakeItemIn(PCIDLIST_ABSOLUTE parent, IShellFolder* folder, PCUIDLIST_RELATIVE pidl,
                   REFIID iid, void** out) {
  if (!out) return E_POINTER;
  *out = nullptr;
  if (!pidl) return E_INVALIDARG;
  Ref<TFolderNode> node;
  if (parent || folder) {
    const HRESULT result = FolderOf(parent, folder, node);
    if (FAILED(result)) return result;
  } else {
    node = TFolderNode::Desktop();
  }
  return MakeItemOfList(node, pidl, iid, out);
}

HRESULT STDAPICALLTYPE SHCreateShellItem(PCIDLIST_ABSOLUTE parent, IShellFolder* folder,
                                         PCUITEMID_CHILD pidl, IShellItem** item) {
  return PortableCall("SHCreateShellItem", [&]() -> HRESULT {
    return MakeItemIn(parent, folder, pidl, IID_IShellItem, reinterpret_cast<void**>(item));
  });
}

HRESULT STDAPICALLTYPE SHCreateItemWithParent(PCIDLIST_ABSOLUTE parent, IShellFolder* folder,
                                              PCUITEMID_CHILD pidl, REFIID iid, void** out) {
  return PortableCall("SHCreateItemWithParent",
                      [&]() -> HRESULT { return MakeItemIn(parent, folder, pidl, iid, out); });
}

HRESULT STDAPICALLTYPE SHCreateItemFromIDList(PCIDLIST_ABSOLUTE pidl, REFIID iid, void** out) {
  return PortableCall("SHCreateItemFromIDList",
                      [&]() -> HRESULT { return MakeItemIn(nullptr, nullptr, pidl, iid, out); });
}

HRESULT ParseItem(const Ref<TFolderNode>& start, LPCWSTR name, IBindCtx* context, REFIID iid,
                  void** out) {
  if (!name) return E_INVALIDARG;
  WIN32_FIND_DATAW data;
  TParseOptions options;
  if (FindDataOf(context, data)) options.FindData = &data;
  TPidl list;
  const HRESULT result = ParseRelative(start, name, options, list);
  return SUCCEEDED(result) ? MakeItemOfList(start, list.Get(), iid, out) : result;
}

HRESULT STDAPICALLTYPE SHCreateItemFromParsingName(LPCWSTR path, IBindCtx* context, REFIID iid,
                                                   void** out) {
  return PortableCall("SHCreateItemFromParsingName", [&]() -> HRESULT {
    if (!out) return E_POINTER;
    *out = nullptr;
    return ParseItem(TFolderNode::Desktop(), path, context, iid, out);
  });
}

HRESULT STDAPICALLTYPE SHCreateItemFromRelativeName(IShellItem* parent, LPCWSTR name,
                                                    IBindCtx* context, REFIID iid, void** out) {
  return PortableCall("SHCreateItemFromRelativeName", [&]() -> HRESULT {
    if (!out) return E_POINTER;
    *out = nullptr;
    TPidl list;
    Ref<TFolderNode> node;
    HRESULT result = ListOfObject(parent, list);
    if (SUCCEEDED(result)) result = TFolderNode::FromPidl(list.Get(), node);
    return SUCCEEDED(result) ? ParseItem(node, name, context, iid, out) : result;
  });
}

// --- arrays -------------------------------------------------------------------------------

HRESULT AddItem(const Ref<TFolderNode>& start, PCUIDLIST_RELATIVE pidl,
                std::vector<Ref<IShellItem>>& items) {
  if (!pidl) return E_INVALIDARG;
  Ref<IShellItem> item;
  const HRESULT result = MakeItemOfList(start, pidl, IID_IShellItem, item.PutVoid());
  if (SUCCEEDED(result)) items.push_back(std::move(item));
  return result;
}

HRESULT MakeArrayIn(const Ref<TFolderNode>& start, UINT count, const ITEMIDLIST* const* pidls,
                    IShellItemArray** items) {
  if (count && !pidls) return E_INVALIDARG;
  std::vector<Ref<IShellItem>> made;
  for (UINT i = 0; i < count; ++i) {
    const HRESULT result = AddItem(start, pidls[i], made);
    if (FAILED(result)) return result;
  }
  return MakeItemArray(std::move(made), IID_IShellItemArray, reinterpret_cast<void**>(items));
}

HRESULT STDAPICALLTYPE SHCreateShellItemArray(PCIDLIST_ABSOLUTE parent, IShellFolder* folder,
                                              UINT count, PCUITEMID_CHILD_ARRAY pidls,
                                              IShellItemArray** items) {
  return PortableCall("SHCreateShellItemArray", [&]() -> HRESULT {
    if (!items) return E_POINTER;
    *items = nullptr;
    Ref<TFolderNode> node;
    const HRESULT result = FolderOf(parent, folder, node);
    if (FAILED(result)) return result;
    if (!node) return E_INVALIDARG;
    if (count == 0) {  // the folder's objects
      Ref<IEnumIDList> walk;
      std::vector<Ref<IShellItem>> made;
      HRESULT next = MakeEnumIdList(node, SHCONTF_FOLDERS | SHCONTF_NONFOLDERS, walk.Put());
      while (SUCCEEDED(next)) {
        TPidl child;
        next = walk->Next(1, child.Put(), nullptr);
        if (next != S_OK) break;
        next = AddItem(node, child.Get(), made);
      }
      if (FAILED(next)) return next;
      return MakeItemArray(std::move(made), IID_IShellItemArray, reinterpret_cast<void**>(items));
    }
    return MakeArrayIn(node, count, pidls, items);
  });
}

HRESULT STDAPICALLTYPE SHCreateShellItemArrayFromIDLists(UINT count, PCIDLIST_ABSOLUTE_ARRAY pidls,
                                                         IShellItemArray** items) {
  return PortableCall("SHCreateShellItemArrayFromIDLists", [&]() -> HRESULT {
    if (!items) return E_POINTER;
    *items = nullptr;
    return MakeArrayIn(TFolderNode::Desktop(), count, pidls, items);
  });
}

HRESULT STDAPICALLTYPE SHCreateShellItemArrayFromShellItem(IShellItem* item, REFIID iid,
                                                           void** out) {
  return PortableCall("SHCreateShellItemArrayFromShellItem", [&]() -> HRESULT {
    if (!out) return E_POINTER;
    *out = nullptr;
    if (!item) return E_INVALIDARG;
    std::vector<Ref<IShellItem>> items;
    items.push_back(Ref<IShellItem>::Share(item));
    return MakeItemArray(std::move(items), iid, out);
  });
}

// --- lists by what they lead to ----------------------------------------------------------------

// Two elements with different bytes may still be one object: sizes and times that an
// element carries for speed do not count.
bool SameElements(const Ref<TFolderNode>& folder, PCUITEMID_CHILD a, PCUITEMID_CHILD b) {
  const std::size_t size = ElementSize(a);
  if (ElementSize(b) == size && std::memcmp(a, b, size) == 0) return true;
  int order = 1;
  return folder && SUCCEEDED(folder->Compare(SHCIDS_CANONICALONLY, a, b, order)) && order == 0;
}

// What follows `parent` in `child`, or nil.
PCUIDLIST_RELATIVE RestAfter(PCUIDLIST_RELATIVE parent, PCUIDLIST_RELATIVE child) {
  const BYTE* start = reinterpret_cast<const BYTE*>(parent);
  for (; !IsEmptyPidl(parent); parent = NextElement(parent), child = NextElement(child)) {
    if (IsEmptyPidl(child)) return nullptr;
    const std::size_t size = ElementSize(parent);
    if (ElementSize(child) == size && std::memcmp(parent, child, size) == 0) continue;
    if (!ElementKind(parent) || ElementKind(parent) != ElementKind(child)) return nullptr;
    Ref<TFolderNode> folder;
    const auto bytes = static_cast<std::size_t>(reinterpret_cast<const BYTE*>(parent) - start);
    if (FAILED(TFolderNode::FromPidl(reinterpret_cast<PCUIDLIST_ABSOLUTE>(start), bytes, folder)))
      return nullptr;
    if (!SameElements(folder, parent, child)) return nullptr;
  }
  return child;
}

PUIDLIST_RELATIVE STDAPICALLTYPE ILFindChild(PCIDLIST_ABSOLUTE parent, PCIDLIST_ABSOLUTE child) {
  return ShellCall<PUIDLIST_RELATIVE>(nullptr, [&]() -> PUIDLIST_RELATIVE {
    if (!parent || !child) return nullptr;
    return const_cast<PUIDLIST_RELATIVE>(RestAfter(parent, child));
  });
}

BOOL STDAPICALLTYPE ILIsEqual(PCIDLIST_ABSOLUTE a, PCIDLIST_ABSOLUTE b) {
  if (!a || !b) return a == b ? TRUE : FALSE;
  const PCUIDLIST_RELATIVE rest = ILFindChild(a, b);
  return rest && IsEmptyPidl(rest) ? TRUE : FALSE;
}

BOOL STDAPICALLTYPE ILIsParent(PCIDLIST_ABSOLUTE parent, PCIDLIST_ABSOLUTE child, BOOL immediate) {
  const PCUIDLIST_RELATIVE rest = ILFindChild(parent, child);
  if (!rest) return FALSE;
  if (!immediate) return TRUE;
  return !IsEmptyPidl(rest) && IsEmptyPidl(NextElement(rest)) ? TRUE : FALSE;
}

}  // namespace

#define BIND(Name) api.Name.SetFunction(&(Name))

void BindShellItems(TApi& api) {
  BIND(SHCreateShellItem);
  BIND(SHCreateItemWithParent);
  BIND(SHCreateItemFromIDList);
  BIND(SHCreateItemFromParsingName);
  BIND(SHCreateItemFromRelativeName);
  BIND(SHCreateShellItemArray);
  BIND(SHCreateShellItemArrayFromIDLists);
  BIND(SHCreateShellItemArrayFromShellItem);
}

void BindShellLists(TApi& api) {
  BIND(ILFindChild);
  BIND(ILIsEqual);
  BIND(ILIsParent);
}

#undef BIND

}  // namespace oak
