// Arrays of items, info tips and handlers for several objects.
#include "oak/platform/portable/PortableCall.h"
#include "oak/platform/portable/ShellFolder.h"
#include "oak/platform/portable/ShellItem.h"
#include "oak/platform/portable/ShellMenu.h"
#include "oak/platform/portable/ShellPidl.h"

namespace oak {

namespace {

// What the shell itself makes of objects, whoever is the source of each.
HRESULT MakeCommonObject(TShellObjects objects, REFIID iid, void** object) {
  if (iid == IID_IContextMenu || iid == IID_IContextMenu2 || iid == IID_IContextMenu3)
    return MakeItemMenu(std::move(objects), {}, iid, object);
  if (iid == IID_IDropTarget && objects.size() == 1) return MakeDropTarget(objects[0], iid, object);
  return iid == IID_IDataObject ? DataOf(objects)->QueryInterface(iid, object) : E_NOINTERFACE;
}

class TQueryInfo : public TInterfacedObject<IQueryInfo> {
 public:
  TQueryInfo(Ref<TFolderNode> node, PCUITEMID_CHILD child)
      : fNode(std::move(node)), fChild(CopyElement(child)) {}

  HRESULT GetInfoTip(DWORD, LPWSTR* ppwszTip) override {
    return PortableCall("IQueryInfo::GetInfoTip", [&]() -> HRESULT {
      if (!ppwszTip) return E_POINTER;
      *ppwszTip = nullptr;
      TString tip;
      const HRESULT result = fNode->SourceOf(fChild.Get()).GetInfoTip(fChild.Get(), tip);
      if (FAILED(result) || tip.empty()) return FAILED(result) ? result : S_FALSE;
      *ppwszTip = TaskText(tip);
      return S_OK;
    });
  }
  HRESULT GetInfoFlags(DWORD* pdwFlags) override {
    if (!pdwFlags) return E_POINTER;
    *pdwFlags = 0;
    return E_NOTIMPL;
  }

 private:
  const Ref<TFolderNode> fNode;
  const TPidl fChild;
};

class TEnumItems : public TInterfacedObject<IEnumShellItems> {
 public:
  explicit TEnumItems(std::vector<Ref<IShellItem>> items, std::size_t next = 0)
      : fItems(std::move(items)), fNext(next) {}

  HRESULT Next(ULONG celt, IShellItem** rgelt, ULONG* pceltFetched) override {
    return PortableCall("IEnumShellItems::Next", [&]() -> HRESULT {
      if (pceltFetched) *pceltFetched = 0;
      if (!rgelt || (celt != 1 && !pceltFetched)) return E_POINTER;
      ULONG count = 0;
      for (; count < celt && fNext < fItems.size(); ++count)
        rgelt[count] = Ref<IShellItem>(fItems[fNext++]).Detach();
      if (pceltFetched) *pceltFetched = count;
      return count == celt ? S_OK : S_FALSE;
    });
  }
  HRESULT Skip(ULONG celt) override {
    const std::size_t left = fItems.size() - fNext;
    fNext += celt < left ? celt : left;
    return celt <= left ? S_OK : S_FALSE;
  }
  HRESULT Reset() override {
    fNext = 0;
    return S_OK;
  }
  HRESULT Clone(IEnumShellItems** ppenum) override {
    return PortableCall("IEnumShellItems::Clone", [&]() -> HRESULT {
      if (!ppenum) return E_POINTER;
      *ppenum = MakeRef<TEnumItems>(fItems, fNext).Detach();
      return S_OK;
    });
  }

 private:
  const std::vector<Ref<IShellItem>> fItems;
  std::size_t fNext;
};

class TItemArray : public TInterfacedObject<IShellItemArray> {
 public:
  explicit TItemArray(std::vector<Ref<IShellItem>> items) : fItems(std::move(items)) {}

  HRESULT BindToHandler(IBindCtx* pbc, REFGUID bhid, REFIID riid, void** ppvOut) override {
    return PortableCall("IShellItemArray::BindToHandler", [&]() -> HRESULT {
      if (!ppvOut) return E_POINTER;
      *ppvOut = nullptr;
      if (fItems.size() == 1) return fItems[0]->BindToHandler(pbc, bhid, riid, ppvOut);
      return BindObjects(riid, ppvOut);
    });
  }
  HRESULT GetPropertyStore(GETPROPERTYSTOREFLAGS flags, REFIID riid, void** ppv) override {
    return PortableCall("IShellItemArray::GetPropertyStore", [&]() -> HRESULT {
      if (!ppv) return E_POINTER;
      *ppv = nullptr;
      const Ref<IShellItem2> item = fItems.size() == 1 ? fItems[0].As<IShellItem2>() : nullptr;
      return item ? item->GetPropertyStore(flags, riid, ppv) : E_NOTIMPL;
    });
  }
  HRESULT GetPropertyDescriptionList(REFPROPERTYKEY, REFIID, void** ppv) override {
    if (ppv) *ppv = nullptr;
    return E_NOTIMPL;
  }
  HRESULT GetAttributes(SIATTRIBFLAGS AttribFlags, SFGAOF sfgaoMask,
                        SFGAOF* psfgaoAttribs) override {
    return PortableCall("IShellItemArray::GetAttributes", [&]() -> HRESULT {
      if (!psfgaoAttribs) return E_POINTER;
      *psfgaoAttribs = 0;
      const bool any = (AttribFlags & SIATTRIBFLAGS_MASK) == SIATTRIBFLAGS_OR;
      SFGAOF common = any ? 0 : sfgaoMask;
      for (const Ref<IShellItem>& item : fItems) {
        SFGAOF own = 0;
        const HRESULT result = item->GetAttributes(sfgaoMask, &own);
        if (FAILED(result)) return result;
        common = any ? common | own : common & own;
        if (!any && common == 0 && !(AttribFlags & SIATTRIBFLAGS_ALLITEMS)) break;
      }
      *psfgaoAttribs = common;
      return common == sfgaoMask ? S_OK : S_FALSE;
    });
  }
  HRESULT GetCount(DWORD* pdwNumItems) override {
    return PortableCall("IShellItemArray::GetCount", [&]() -> HRESULT {
      if (!pdwNumItems) return E_POINTER;
      *pdwNumItems = static_cast<DWORD>(fItems.size());
      return S_OK;
    });
  }
  HRESULT GetItemAt(DWORD dwIndex, IShellItem** ppsi) override {
    return PortableCall("IShellItemArray::GetItemAt", [&]() -> HRESULT {
      if (!ppsi) return E_POINTER;
      *ppsi = nullptr;
      if (dwIndex >= fItems.size()) return E_FAIL;
      *ppsi = Ref<IShellItem>(fItems[dwIndex]).Detach();
      return S_OK;
    });
  }
  HRESULT EnumItems(IEnumShellItems** ppenumShellItems) override {
    return PortableCall("IShellItemArray::EnumItems", [&]() -> HRESULT {
      if (!ppenumShellItems) return E_POINTER;
      *ppenumShellItems = MakeRef<TEnumItems>(fItems).Detach();
      return S_OK;
    });
  }

 private:
  // A handler for all items: of their source if they lie in one folder, else of the shell.
  HRESULT BindObjects(REFIID iid, void** object) const {
    TShellObjects objects;
    std::vector<PCUITEMID_CHILD> children;
    bool together = true;
    for (const Ref<IShellItem>& item : fItems) {
      const auto access = item.As<IItemAccess>();
      if (!access || !access->Folder()) return E_NOINTERFACE;
      objects.push_back({access->Folder(), CopyElement(access->Child())});
      children.push_back(objects.back().Child.Get());
      const TFolderNode &own = *objects.back().Folder, &first = *objects[0].Folder;
      together = together && own.PidlBytes() == first.PidlBytes() &&
                 std::memcmp(own.Pidl(), first.Pidl(), own.PidlBytes()) == 0;
    }
    return together ? MakeUIObject(objects[0].Folder, children, iid, object)
                    : MakeCommonObject(std::move(objects), iid, object);
  }

  const std::vector<Ref<IShellItem>> fItems;
};

}  // namespace

HRESULT MakeItemArray(std::vector<Ref<IShellItem>> items, REFIID iid, void** array) {
  *array = nullptr;
  if (items.empty()) return E_INVALIDARG;
  return MakeRef<TItemArray>(std::move(items))->QueryInterface(iid, array);
}

HRESULT MakeQueryInfo(const Ref<TFolderNode>& node, PCUITEMID_CHILD child, REFIID iid,
                      void** object) {
  return MakeRef<TQueryInfo>(node, child)->QueryInterface(iid, object);
}

HRESULT MakeUIObject(const Ref<TFolderNode>& node, std::span<const PCUITEMID_CHILD> children,
                     REFIID iid, void** object) {
  *object = nullptr;
  const bool mounts = ElementKind(children[0]) == ekMount;
  bool oneSource = true;
  for (PCUITEMID_CHILD child : children) {
    if (!ElementKind(child)) return E_INVALIDARG;
    oneSource = oneSource && (ElementKind(child) == ekMount) == mounts;
  }
  const HRESULT result =
      oneSource ? node->SourceOf(children[0]).GetUIObject(children, iid, object) : E_NOINTERFACE;
  if (result != E_NOINTERFACE) return result;
  if (iid == IID_IQueryInfo && children.size() == 1)
    return MakeQueryInfo(node, children[0], iid, object);
  TShellObjects objects;
  for (PCUITEMID_CHILD child : children) objects.push_back({node, CopyElement(child)});
  return MakeCommonObject(std::move(objects), iid, object);
}

}  // namespace oak
