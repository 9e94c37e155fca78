// Walks over a folder: as lists, as items, as elements of a storage.
#include "oak/platform/portable/PortableCall.h"
#include "oak/platform/portable/ShellFolder.h"
#include "oak/platform/portable/ShellItem.h"
#include "oak/platform/portable/ShellPidl.h"
#include "oak/platform/portable/ShellStorage.h"

namespace oak {

namespace {

// The folder's mounts, then its own objects.
class TFolderWalk {
 public:
  TFolderWalk(Ref<TFolderNode> node, DWORD flags) : fNode(std::move(node)), fFlags(flags) {}

  // Opens both cursors, so that what can't be listed fails at once.
  HRESULT Start() {
    fMounts.Reset();
    fObjects.Reset();
    fPassed = 0;
    const HRESULT result =
        fNode->MayHaveMounts() ? fNode->Mounts().Enumerate(fFlags, fMounts) : S_OK;
    return FAILED(result) ? result : fNode->Contents().Enumerate(fFlags, fObjects);
  }

  HRESULT Next(PCUITEMID_CHILD& child) {
    while (fMounts || fObjects) {
      Ref<IFolderCursor>& cursor = fMounts ? fMounts : fObjects;
      const HRESULT result = cursor->Next(&child);
      if (FAILED(result)) return result;
      if (result == S_OK) {
        ++fPassed;
        return S_OK;
      }
      cursor.Reset();
    }
    return S_FALSE;
  }

  const Ref<TFolderNode>& Node() const { return fNode; }
  DWORD Flags() const { return fFlags; }
  std::size_t Passed() const { return fPassed; }

 private:
  const Ref<TFolderNode> fNode;
  const DWORD fFlags;
  Ref<IFolderCursor> fMounts;
  Ref<IFolderCursor> fObjects;
  std::size_t fPassed = 0;
};

// What the three enumerators have in common. Convert turns a child into a result.
template <class TInterface, class TElement, class TTraits>
class TFolderEnumerator : public TInterfacedObject<TInterface> {
 public:
  TFolderEnumerator(Ref<TFolderNode> node, DWORD flags) : fWalk(std::move(node), flags) {}
  HRESULT Start() { return fWalk.Start(); }

  HRESULT Next(ULONG celt, TElement* rgelt, ULONG* pceltFetched) override {
    return PortableCall(TTraits::NextName, [&]() -> HRESULT {
      if (pceltFetched) *pceltFetched = 0;
      if (!rgelt || (celt != 1 && !pceltFetched)) return E_POINTER;
      for (ULONG count = 0; count < celt; ++count) {
        PCUITEMID_CHILD child = nullptr;
        HRESULT result = fWalk.Next(child);
        if (result == S_OK) result = TTraits::Convert(fWalk.Node(), child, rgelt[count]);
        if (FAILED(result) && count == 0) return result;
        if (result != S_OK)
          return S_FALSE;  // the rest was delivered; a failure comes back next time
        if (pceltFetched) *pceltFetched = count + 1;
      }
      return S_OK;
    });
  }
  HRESULT Skip(ULONG celt) override {
    return PortableCall(TTraits::SkipName, [&]() -> HRESULT {
      PCUITEMID_CHILD child = nullptr;
      HRESULT result = S_OK;
      for (; celt > 0 && result == S_OK; --celt) result = fWalk.Next(child);
      return result;
    });
  }
  HRESULT Reset() override {
    return PortableCall(TTraits::ResetName, [&]() -> HRESULT { return fWalk.Start(); });
  }
  HRESULT Clone(TInterface** ppenum) override {
    return PortableCall(TTraits::CloneName, [&]() -> HRESULT {
      if (!ppenum) return E_POINTER;
      *ppenum = nullptr;
      const auto copy = MakeRef<TFolderEnumerator>(fWalk.Node(), fWalk.Flags());
      HRESULT result = copy->Start();
      PCUITEMID_CHILD child = nullptr;
      for (std::size_t left = fWalk.Passed(); left > 0 && result == S_OK; --left)
        result = copy->fWalk.Next(child);
      if (FAILED(result)) return result;
      return copy->QueryInterface(IidOf<TInterface>(), reinterpret_cast<void**>(ppenum));
    });
  }

 private:
  TFolderWalk fWalk;
};

struct TListTraits {
  static constexpr const char* NextName = "IEnumIDList::Next";
  static constexpr const char* SkipName = "IEnumIDList::Skip";
  static constexpr const char* ResetName = "IEnumIDList::Reset";
  static constexpr const char* CloneName = "IEnumIDList::Clone";
  static HRESULT Convert(const Ref<TFolderNode>&, PCUITEMID_CHILD child, PITEMID_CHILD& result) {
    result = CopyElement(child).Detach();
    return S_OK;
  }
};

struct TItemTraits {
  static constexpr const char* NextName = "IEnumShellItems::Next";
  static constexpr const char* SkipName = "IEnumShellItems::Skip";
  static constexpr const char* ResetName = "IEnumShellItems::Reset";
  static constexpr const char* CloneName = "IEnumShellItems::Clone";
  static HRESULT Convert(const Ref<TFolderNode>& node, PCUITEMID_CHILD child, IShellItem*& result) {
    return MakeItem(node, child, IID_IShellItem, reinterpret_cast<void**>(&result));
  }
};

struct TStatTraits {
  static constexpr const char* NextName = "IEnumSTATSTG::Next";
  static constexpr const char* SkipName = "IEnumSTATSTG::Skip";
  static constexpr const char* ResetName = "IEnumSTATSTG::Reset";
  static constexpr const char* CloneName = "IEnumSTATSTG::Clone";
  static HRESULT Convert(const Ref<TFolderNode>& node, PCUITEMID_CHILD child, STATSTG& result) {
    return DescribeElement(*node, child, STATFLAG_DEFAULT, result);
  }
};

template <class TTraits, class TInterface, class TElement>
HRESULT MakeEnumerator(const Ref<TFolderNode>& node, DWORD flags, TInterface** result) {
  *result = nullptr;
  auto made = MakeRef<TFolderEnumerator<TInterface, TElement, TTraits>>(node, flags);
  const HRESULT started = made->Start();
  if (FAILED(started)) return started;
  *result = made.Detach();
  return S_OK;
}

}  // namespace

HRESULT MakeEnumIdList(const Ref<TFolderNode>& node, DWORD flags, IEnumIDList** result) {
  return MakeEnumerator<TListTraits, IEnumIDList, PITEMID_CHILD>(node, flags, result);
}

HRESULT MakeEnumShellItems(const Ref<TFolderNode>& node, DWORD flags, IEnumShellItems** result) {
  return MakeEnumerator<TItemTraits, IEnumShellItems, IShellItem*>(node, flags, result);
}

HRESULT MakeEnumStatStg(const Ref<TFolderNode>& node, IEnumSTATSTG** result) {
  constexpr DWORD kAll =
      SHCONTF_FOLDERS | SHCONTF_NONFOLDERS | SHCONTF_INCLUDEHIDDEN | SHCONTF_INCLUDESUPERHIDDEN;
  return MakeEnumerator<TStatTraits, IEnumSTATSTG, STATSTG>(node, kAll, result);
}

}  // namespace oak
