#include "oak/platform/portable/ShellData.h"

#include <algorithm>
#include <array>
#include <cstring>

#include "oak/base/InterfacedObject.h"
#include "oak/platform/Api.h"
#include "oak/platform/portable/PortableCall.h"
#include "oak/platform/portable/PortableMemory.h"
#include "oak/platform/portable/ShellEnumFormats.h"
#include "oak/platform/portable/ShellFolder.h"
#include "oak/platform/portable/ShellItem.h"
#include "oak/platform/portable/ShellKnownFolders.h"
#include "oak/platform/portable/ShellParse.h"
#include "oak/platform/portable/ShellPidl.h"

namespace oak {
namespace {

constexpr std::array<const char16_t*, 8> FormatNames = {
    u"Shell IDList Array",           u"FileNameW",
    u"FileGroupDescriptorW",         u"FileContents",
    u"Preferred DropEffect",         u"Performed DropEffect",
    u"Logical Performed DropEffect", u"Paste Succeeded"};

FORMATETC Wanted(CLIPFORMAT format, DWORD tymed, LONG index = -1) {
  return {format, nullptr, DVASPECT_CONTENT, index, tymed};
}

class TEnumFormats : public TInterfacedObject<IEnumFORMATETC> {
 public:
  TEnumFormats(std::vector<FORMATETC> formats, std::size_t next)
      : fFormats(std::move(formats)), fNext(next) {}

  HRESULT Next(ULONG celt, FORMATETC* rgelt, ULONG* pceltFetched) override {
    return PortableCall("IEnumFORMATETC::Next", [&]() -> HRESULT {
      if (pceltFetched) *pceltFetched = 0;
      if (!rgelt || (celt != 1 && !pceltFetched)) return E_POINTER;
      ULONG count = 0;
      for (; count < celt && fNext < fFormats.size(); ++count) rgelt[count] = fFormats[fNext++];
      if (pceltFetched) *pceltFetched = count;
      return count == celt ? S_OK : S_FALSE;
    });
  }
  HRESULT Skip(ULONG celt) override {
    const std::size_t left = fFormats.size() - fNext;
    fNext += std::min<std::size_t>(celt, left);
    return celt <= left ? S_OK : S_FALSE;
  }
  HRESULT Reset() override {
    fNext = 0;
    return S_OK;
  }
  HRESULT Clone(IEnumFORMATETC** ppenum) override {
    return PortableCall("IEnumFORMATETC::Clone", [&]() -> HRESULT {
      if (!ppenum) return E_POINTER;
      *ppenum = MakeRef<TEnumFormats>(fFormats, fNext).Detach();
      return S_OK;
    });
  }

 private:
  const std::vector<FORMATETC> fFormats;
  std::size_t fNext;
};

// A list within a block that nobody has checked; nil if it does not end inside.
TPidl ListAt(const std::vector<BYTE>& bytes, std::size_t offset) {
  std::size_t at = offset;
  for (;;) {
    if (at > bytes.size() || bytes.size() - at < sizeof(USHORT)) return {};
    const std::size_t size = ElementSize(bytes.data() + at);
    if (size == 0) break;
    if (size <= sizeof(USHORT)) return {};
    at += size;
  }
  return TPidl::Copy(reinterpret_cast<PCItemIdList>(bytes.data() + offset));
}

std::vector<TPidl> ListsOfArray(const std::vector<BYTE>& bytes) {
  std::vector<TPidl> lists;
  UINT count = 0;
  if (bytes.size() < sizeof count) return lists;
  std::memcpy(&count, bytes.data(), sizeof count);
  if (count > bytes.size() / sizeof(UINT) || bytes.size() < (std::size_t{count} + 2) * sizeof(UINT))
    return lists;
  const auto offset = [&](std::size_t index) {
    UINT value = 0;
    std::memcpy(&value, bytes.data() + (index + 1) * sizeof value, sizeof value);
    return value;
  };
  const TPidl folder = ListAt(bytes, offset(0));
  for (std::size_t i = 1; folder && i <= count; ++i) {
    const TPidl child = ListAt(bytes, offset(i));
    if (child) lists.push_back(ConcatLists(folder, child));
  }
  return lists;
}

}  // namespace

Ref<IEnumFORMATETC> MakeEnumFormats(std::vector<FORMATETC> formats) {
  return MakeRef<TEnumFormats>(std::move(formats), std::size_t{0});
}

CLIPFORMAT FormatOf(TShellFormat format) {
  static const auto ids = [] {
    std::array<CLIPFORMAT, FormatNames.size()> made{};
    for (std::size_t i = 0; i < made.size(); ++i)
      made[i] = static_cast<CLIPFORMAT>(PortableClipboardFormat(FormatNames[i]));
    return made;
  }();
  return ids[static_cast<std::size_t>(format)];
}

bool HasFormat(IDataObject& data, CLIPFORMAT format) {
  FORMATETC wanted = Wanted(format, TYMED_HGLOBAL | TYMED_ISTREAM);
  return data.QueryGetData(&wanted) == S_OK;
}

bool ReadData(IDataObject& data, CLIPFORMAT format, std::vector<BYTE>& bytes) {
  FORMATETC wanted = Wanted(format, TYMED_HGLOBAL);
  STGMEDIUM medium{};
  if (data.GetData(&wanted, &medium) != S_OK) return false;
  const auto* from = static_cast<const BYTE*>(Api().GlobalLock(medium.hGlobal));
  if (from) {
    bytes.assign(from, from + Api().GlobalSize(medium.hGlobal));
    Api().GlobalUnlock(medium.hGlobal);
  }
  Api().ReleaseStgMedium(&medium);
  return from != nullptr;
}

HRESULT WriteData(IDataObject& data, CLIPFORMAT format, const void* bytes, std::size_t count) {
  FORMATETC wanted = Wanted(format, TYMED_HGLOBAL);
  STGMEDIUM medium{};
  medium.tymed = TYMED_HGLOBAL;
  medium.hGlobal = PortableGlobalCopy(bytes, count);
  if (!medium.hGlobal) return E_OUTOFMEMORY;
  const HRESULT result = data.SetData(&wanted, &medium, TRUE);
  if (FAILED(result)) Api().ReleaseStgMedium(&medium);
  return result;
}

DWORD ReadEffect(IDataObject& data, TShellFormat format, DWORD otherwise) {
  std::vector<BYTE> bytes;
  DWORD effect = otherwise;
  if (ReadData(data, FormatOf(format), bytes) && bytes.size() >= sizeof effect)
    std::memcpy(&effect, bytes.data(), sizeof effect);
  return effect;
}

HRESULT WriteEffect(IDataObject& data, TShellFormat format, DWORD effect) {
  return WriteData(data, FormatOf(format), &effect, sizeof effect);
}

TStringArray PathsOf(IDataObject& data) {
  // All at once: DragQueryFileW counts from the first name at each call.
  std::vector<BYTE> bytes;
  return ReadData(data, CF_HDROP, bytes) ? PortableDroppedFiles(bytes.data(), bytes.size())
                                         : TStringArray();
}

std::vector<TPidl> ListsOf(IDataObject& data) {
  std::vector<BYTE> bytes;
  if (ReadData(data, FormatOf(TShellFormat::IdList), bytes)) return ListsOfArray(bytes);
  std::vector<TPidl> lists;
  for (const TString& path : PathsOf(data)) {
    TPidl list;
    if (SUCCEEDED(ParseAbsolute(path, {}, list))) lists.push_back(std::move(list));
  }
  return lists;
}

HRESULT OpenFileContents(IDataObject& data, LONG index, Ref<IStream>& stream) {
  FORMATETC wanted = Wanted(FormatOf(TShellFormat::FileContents), TYMED_ISTREAM, index);
  STGMEDIUM medium{};
  const HRESULT result = data.GetData(&wanted, &medium);
  if (FAILED(result)) return result;
  if (medium.tymed == TYMED_ISTREAM) stream = Ref<IStream>::Share(medium.pstm);
  Api().ReleaseStgMedium(&medium);
  return stream ? S_OK : DV_E_TYMED;
}

// --- the shell's functions --------------------------------------------------------------

namespace {

HRESULT CheckLists(UINT count, PCUIDLIST_RELATIVE_ARRAY pidls,
                   std::vector<PCUIDLIST_RELATIVE>& children) {
  if (count && !pidls) return E_INVALIDARG;
  for (UINT i = 0; i < count; ++i) {
    TPidlSplit split;
    if (!SplitPidl(pidls[i], split)) return E_INVALIDARG;
    children.push_back(pidls[i]);
  }
  return S_OK;
}

HRESULT STDAPICALLTYPE SHCreateDataObject(PCIDLIST_ABSOLUTE folder, UINT count,
                                          PCUITEMID_CHILD_ARRAY pidls, IDataObject* inner,
                                          REFIID iid, void** out) {
  return PortableCall("SHCreateDataObject", [&]() -> HRESULT {
    if (!out) return E_POINTER;
    *out = nullptr;
    std::vector<PCUIDLIST_RELATIVE> children;
    const HRESULT result = CheckLists(count, pidls, children);
    if (FAILED(result)) return result;
    return MakeDataObject(folder, children, inner)->QueryInterface(iid, out);
  });
}

HRESULT STDAPICALLTYPE CIDLData_CreateFromIDArray(PCIDLIST_ABSOLUTE folder, UINT count,
                                                  PCUIDLIST_RELATIVE_ARRAY pidls,
                                                  IDataObject** data) {
  return PortableCall("CIDLData_CreateFromIDArray", [&]() -> HRESULT {
    if (!data) return E_POINTER;
    *data = nullptr;
    std::vector<PCUIDLIST_RELATIVE> children;
    const HRESULT result = CheckLists(count, pidls, children);
    if (SUCCEEDED(result)) *data = MakeDataObject(folder, children).Detach();
    return result;
  });
}

HRESULT STDAPICALLTYPE SHCreateShellItemArrayFromDataObject(IDataObject* data, REFIID iid,
                                                            void** out) {
  return PortableCall("SHCreateShellItemArrayFromDataObject", [&]() -> HRESULT {
    if (!out) return E_POINTER;
    *out = nullptr;
    if (!data) return E_INVALIDARG;
    std::vector<Ref<IShellItem>> items;
    for (const TPidl& list : ListsOf(*data)) {
      Ref<IShellItem> item;
      const HRESULT result =
          MakeItemOfList(TFolderNode::Desktop(), list.Get(), IID_IShellItem, item.PutVoid());
      if (FAILED(result)) return result;
      items.push_back(std::move(item));
    }
    return items.empty() ? E_FAIL : MakeItemArray(std::move(items), iid, out);
  });
}

}  // namespace

#define BIND(Name) api.Name.SetFunction(&(Name))
void BindShellData(TApi& api) {
  BIND(SHCreateDataObject);
  BIND(CIDLData_CreateFromIDArray);
  BIND(SHCreateShellItemArrayFromDataObject);
}
#undef BIND

}  // namespace oak
