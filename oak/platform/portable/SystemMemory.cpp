// Memory with handles, dropped files, and the clipboard of the process.
#include <algorithm>
#include <cstring>
#include <mutex>
#include <vector>

#include "oak/platform/portable/PortableMemory.h"
#include "oak/platform/portable/SystemBinding.h"
#include "oak/platform/portable/SystemHandles.h"

namespace oak {
namespace {

struct TBlock : TSystemObject {
  explicit TBlock(SIZE_T count) : Bytes(count), Size(count) {
    if (count == 0) Bytes.resize(1);  // an empty block has an address, too
  }
  std::vector<BYTE> Bytes;
  SIZE_T Size;
};

std::shared_ptr<TBlock> BlockOf(HANDLE handle) {
  return TSystemHandles::Instance().Find<TBlock>(handle);
}

LPVOID STDAPICALLTYPE GlobalLock(HGLOBAL handle) {
  return SystemCall<LPVOID>(nullptr, [&]() -> LPVOID {
    const auto block = BlockOf(handle);
    return block ? block->Bytes.data() : FailWith<BYTE*>(ERROR_INVALID_HANDLE, nullptr);
  });
}

// Blocks never move, so there is nothing to count.
BOOL STDAPICALLTYPE GlobalUnlock(HGLOBAL handle) {
  return SystemCall<BOOL>(FALSE, [&] {
    return FailWith(BlockOf(handle) ? ERROR_SUCCESS : ERROR_INVALID_HANDLE, FALSE);
  });
}

SIZE_T STDAPICALLTYPE GlobalSize(HGLOBAL handle) {
  return SystemCall<SIZE_T>(0, [&] {
    const auto block = BlockOf(handle);
    return block ? block->Size : FailWith<SIZE_T>(ERROR_INVALID_HANDLE, 0);
  });
}

void STDAPICALLTYPE ReleaseStgMedium(STGMEDIUM* medium) {
  if (!medium) return;
  IUnknown* owner = medium->pUnkForRelease;
  const bool isFile = medium->tymed == TYMED_FILE;
  if (medium->tymed == TYMED_ISTREAM && medium->pstm) {
    medium->pstm->Release();
  } else if (medium->tymed == TYMED_ISTORAGE && medium->pstg) {
    reinterpret_cast<IUnknown*>(medium->pstg)->Release();
  } else if (!owner && medium->tymed == TYMED_HGLOBAL) {
    PortableGlobalFree(medium->hGlobal);
  }
  if (isFile) CoTaskMemFree(medium->lpszFileName);
  *medium = STGMEDIUM{};
  if (owner) owner->Release();  // it owns the block
}

// --- dropped files -----------------------------------------------------------

// Index -1 asks for the number of files; without a buffer for a name's length.
UINT STDAPICALLTYPE DragQueryFileW(HDROP drop, UINT index, LPWSTR buffer, UINT capacity) {
  return SystemCall<UINT>(0, [&]() -> UINT {
    const auto block = BlockOf(drop);
    if (!block) return FailWith<UINT>(ERROR_INVALID_HANDLE, 0);
    const TStringArray names = PortableDroppedFiles(block->Bytes.data(), block->Size);
    if (index == 0xFFFFFFFFu) return static_cast<UINT>(names.size());
    if (index >= names.size()) return 0;
    const TStringView name = names[index];
    if (!buffer) return static_cast<UINT>(name.size());
    if (capacity == 0) return 0;
    const std::size_t length = std::min<std::size_t>(name.size(), capacity - 1);
    CopyText(name.substr(0, length), buffer, capacity);
    return static_cast<UINT>(length);
  });
}

// --- clipboard ---------------------------------------------------------------

constexpr UINT FirstRegisteredFormat = 0xC000;
constexpr std::size_t MostFormats = 0x4000;

struct TClipboard {
  std::mutex Lock;
  Ref<IDataObject> Data;
  TStringArray Formats;  // registered, from FirstRegisteredFormat on
};

TClipboard& Clipboard() {
  static auto* clipboard = new TClipboard;  // holds objects that static destructors may use
  return *clipboard;
}

UINT STDAPICALLTYPE RegisterClipboardFormatW(LPCWSTR name) {
  return SystemCall<UINT>(0, [&]() -> UINT {
    const TStringView text = ViewOf(name);
    if (text.empty() || text.size() > 255) return FailWith<UINT>(ERROR_INVALID_NAME, 0);
    const UINT format = PortableClipboardFormat(text);
    return format ? format : FailWith<UINT>(ERROR_NOT_ENOUGH_MEMORY, 0);
  });
}

BOOL STDAPICALLTYPE IsClipboardFormatAvailable(UINT format) {
  const Ref<IDataObject> data = PortableClipboard();
  if (!data || format > 0xFFFF) return FALSE;
  FORMATETC wanted{};
  wanted.cfFormat = static_cast<CLIPFORMAT>(format);
  wanted.dwAspect = 1;  // DVASPECT_CONTENT
  wanted.lindex = -1;
  wanted.tymed = TYMED_HGLOBAL | TYMED_ISTREAM | TYMED_FILE;
  return data->QueryGetData(&wanted) == S_OK ? TRUE : FALSE;
}

HRESULT STDAPICALLTYPE OleGetClipboard(IDataObject** data) {
  if (!data) return E_INVALIDARG;
  *data = PortableClipboard().Detach();
  return *data ? S_OK : static_cast<HRESULT>(0x800401D3u);  // CLIPBRD_E_BAD_DATA
}

HRESULT STDAPICALLTYPE OleSetClipboard(IDataObject* data) {
  SetPortableClipboard(Ref<IDataObject>::Share(data));
  return S_OK;
}

/// The clipboard is this process's own: its object needs no rendering before the end.
HRESULT STDAPICALLTYPE OleFlushClipboard() { return S_OK; }

HRESULT STDAPICALLTYPE OleIsCurrentClipboard(IDataObject* data) {
  return data && PortableClipboard().Get() == data ? S_OK : S_FALSE;
}

HGLOBAL STDAPICALLTYPE GlobalAlloc(UINT, SIZE_T bytes) { return PortableGlobalAlloc(bytes); }
HGLOBAL STDAPICALLTYPE GlobalFree(HGLOBAL block) {
  PortableGlobalFree(block);
  return nullptr;
}

}  // namespace

// --- PortableMemory.h --------------------------------------------------------

HGLOBAL PortableGlobalAlloc(SIZE_T bytes) noexcept {
  return SystemCall<HGLOBAL>(
      nullptr, [&] { return TSystemHandles::Instance().Add(std::make_shared<TBlock>(bytes)); });
}

void PortableGlobalFree(HGLOBAL block) noexcept {
  SystemCall<bool>(false, [&] { return TSystemHandles::Instance().Close<TBlock>(block); });
}

HGLOBAL PortableGlobalCopy(const void* bytes, SIZE_T count) noexcept {
  const HGLOBAL block = PortableGlobalAlloc(count);
  if (block && count > 0) std::memcpy(GlobalLock(block), bytes, count);
  return block;
}

TStringArray PortableDroppedFiles(const BYTE* bytes, std::size_t count) {
  TStringArray names;
  DROPFILES header;
  if (count < sizeof header) return names;
  std::memcpy(&header, bytes, sizeof header);
  const std::size_t unit = header.fWide ? sizeof(char16_t) : 1;
  std::size_t at = header.pFiles;
  TString wide;
  std::string narrow;
  for (; at <= count && count - at >= unit; at += unit) {
    char16_t c = bytes[at];
    if (header.fWide) std::memcpy(&c, bytes + at, sizeof c);
    if (c != 0) {
      header.fWide ? wide.push_back(c) : narrow.push_back(static_cast<char>(c));
      continue;
    }
    if (wide.empty() && narrow.empty()) break;
    names.push_back(header.fWide ? wide : FromUtf8(narrow));
    wide.clear();
    narrow.clear();
  }
  return names;
}

HGLOBAL PortableDropFiles(const TStringArray& paths) {
  DROPFILES header{};
  header.pFiles = sizeof header;
  header.fWide = TRUE;
  TString names;
  for (const TString& path : paths) (names += path) += u'\0';
  names += u'\0';
  std::vector<BYTE> bytes(sizeof header + names.size() * sizeof(char16_t));
  std::memcpy(bytes.data(), &header, sizeof header);
  std::memcpy(bytes.data() + sizeof header, names.data(), names.size() * sizeof(char16_t));
  return PortableGlobalCopy(bytes.data(), bytes.size());
}

void SetPortableClipboard(Ref<IDataObject> data) {
  TClipboard& clipboard = Clipboard();
  const std::lock_guard lock(clipboard.Lock);
  clipboard.Data.Swap(data);
}

Ref<IDataObject> PortableClipboard() {
  TClipboard& clipboard = Clipboard();
  const std::lock_guard lock(clipboard.Lock);
  return clipboard.Data;
}

UINT PortableClipboardFormat(TStringView name) {
  TClipboard& clipboard = Clipboard();
  const std::lock_guard lock(clipboard.Lock);
  const auto found = std::find_if(clipboard.Formats.begin(), clipboard.Formats.end(),
                                  [&](const TString& other) { return SameText(other, name); });
  const auto index = static_cast<std::size_t>(found - clipboard.Formats.begin());
  if (index >= MostFormats) return 0;
  if (found == clipboard.Formats.end()) clipboard.Formats.emplace_back(name);
  return FirstRegisteredFormat + static_cast<UINT>(index);
}

TString PortableClipboardFormatName(UINT format) {
  TClipboard& clipboard = Clipboard();
  const std::lock_guard lock(clipboard.Lock);
  const std::size_t index = format - FirstRegisteredFormat;
  return format >= FirstRegisteredFormat && index < clipboard.Formats.size()
             ? clipboard.Formats[index]
             : TString();
}

#define BIND(Name) api.Name.SetFunction(&Name)
void BindSystemMemory(TApi& api) {
  BIND(GlobalLock);
  BIND(GlobalUnlock);
  BIND(GlobalSize);
  BIND(ReleaseStgMedium);
  BIND(DragQueryFileW);
  BIND(RegisterClipboardFormatW);
  BIND(IsClipboardFormatAvailable);
  BIND(OleGetClipboard);
  BIND(OleSetClipboard);
  BIND(OleFlushClipboard);
  BIND(OleIsCurrentClipboard);
  BIND(GlobalAlloc);
  BIND(GlobalFree);
}
#undef BIND

}  // namespace oak
