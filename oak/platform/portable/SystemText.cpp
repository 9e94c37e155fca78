// Names, patterns and sizes as text.
#include <algorithm>
#include <cmath>
#include <cstring>

#include "oak/base/LogicalOrder.h"
#include "oak/base/PatternMatch.h"
#include "oak/base/Pidl.h"
#include "oak/platform/portable/SystemBinding.h"
#include "oak/platform/portable/SystemLocale.h"

namespace oak {
namespace {

int STDAPICALLTYPE StrCmpLogicalW(LPCWSTR a, LPCWSTR b) {
  if (!a || !b) return a ? 1 : b ? -1 : 0;
  return SystemCall<int>(0, [&] {
    const int order = CompareLogical(a, b);
    return order < 0 ? -1 : order > 0 ? 1 : 0;
  });
}

BOOL STDAPICALLTYPE PathMatchSpecW(LPCWSTR file, LPCWSTR pattern) {
  return file && pattern && MatchPatternSpec(file, pattern) ? TRUE : FALSE;
}

// --- sizes -----------------------------------------------------------------

// Cuts a text that is too long, as the published functions do.
LPWSTR PutCut(TStringView text, LPWSTR buffer, UINT capacity) {
  if (!buffer || capacity == 0) return nullptr;
  CopyText(text.substr(0, std::min<std::size_t>(text.size(), capacity - 1)), buffer, capacity);
  return buffer;
}

std::uint64_t Magnitude(LONGLONG size) {
  return size < 0 ? ~static_cast<std::uint64_t>(size) + 1 : static_cast<std::uint64_t>(size);
}

LPWSTR STDAPICALLTYPE StrFormatByteSizeW(LONGLONG size, LPWSTR buffer, UINT capacity) {
  return SystemCall<LPWSTR>(nullptr, [&] {
    const TString text = ByteSizeText(Magnitude(size));
    return PutCut(size < 0 ? u"-" + text : text, buffer, capacity);
  });
}

HRESULT STDAPICALLTYPE StrFormatByteSizeEx(ULONGLONG size, int flags, LPWSTR buffer,
                                           UINT capacity) {
  constexpr int rounds = 1, truncates = 2;
  if (!buffer || capacity == 0 || (flags != rounds && flags != truncates)) return E_INVALIDARG;
  return SystemCall<HRESULT>(E_OUTOFMEMORY, [&] {
    PutCut(ByteSizeText(size, flags == rounds), buffer, capacity);
    return S_OK;
  });
}

LPWSTR STDAPICALLTYPE StrFormatKBSizeW(LONGLONG size, LPWSTR buffer, UINT capacity) {
  return SystemCall<LPWSTR>(nullptr, [&] {
    const TString text = KilobyteText(Magnitude(size));
    return PutCut(size < 0 ? u"-" + text : text, buffer, capacity);
  });
}

// --- STRRET ----------------------------------------------------------------

LPWSTR TaskText(TStringView text) {
  auto* copy = static_cast<LPWSTR>(CoTaskMemAlloc((text.size() + 1) * sizeof(WCHAR)));
  if (copy) CopyText(text, copy, text.size() + 1);
  return copy;
}

// A narrow text that ends at a zero or with the memory that holds it.
std::string_view Bounded(const char* text, std::size_t limit) {
  return {text, strnlen(text, limit)};
}

HRESULT STDAPICALLTYPE StrRetToStrW(STRRET* name, PCUITEMID_CHILD pidl, LPWSTR* text) {
  if (text) *text = nullptr;
  if (!name || !text) return E_INVALIDARG;
  return SystemCall<HRESULT>(E_OUTOFMEMORY, [&]() -> HRESULT {
    switch (name->uType) {
      case STRRET_WSTR:
        if (!name->pOleStr) return E_FAIL;
        *text = std::exchange(name->pOleStr, nullptr);  // moves from owner to owner
        return S_OK;
      case STRRET_CSTR:
        *text = TaskText(FromUtf8(Bounded(name->cStr, sizeof name->cStr)));
        break;
      case STRRET_OFFSET: {
        const std::size_t size = PidlSize(pidl);
        if (name->uOffset >= size) return E_INVALIDARG;
        const char* start = reinterpret_cast<const char*>(pidl) + name->uOffset;
        *text = TaskText(FromUtf8(Bounded(start, size - name->uOffset)));
        break;
      }
      default:
        return E_FAIL;
    }
    return *text ? S_OK : E_OUTOFMEMORY;
  });
}

// --- narrow text -------------------------------------------------------------

// The narrow text of this system is UTF-8, which stands in for its code pages.
bool IsUtf8CodePage(UINT codePage) {
  constexpr UINT utf8 = 65001;
  return codePage <= 3 || codePage == utf8;  // CP_ACP, CP_OEMCP, CP_MACCP, CP_THREAD_ACP
}

int STDAPICALLTYPE MultiByteToWideChar(UINT codePage, DWORD flags, LPCSTR text, int length,
                                       LPWSTR buffer, int capacity) {
  constexpr UINT latin1 = 28591;
  constexpr DWORD failOnInvalid = 8;  // MB_ERR_INVALID_CHARS
  return SystemCall<int>(0, [&] {
    const bool known = IsUtf8CodePage(codePage) || codePage == latin1;
    if (!known || !text || length < -1 || length == 0 || capacity < 0 || (capacity && !buffer))
      return FailWith(ERROR_INVALID_PARAMETER, 0);
    const std::string_view bytes = length < 0
                                       ? std::string_view(text, std::strlen(text) + 1)
                                       : std::string_view(text, static_cast<std::size_t>(length));
    TString wide;
    if (codePage == latin1)
      for (const char byte : bytes) wide.push_back(static_cast<unsigned char>(byte));
    else
      wide = FromUtf8(bytes);
    if ((flags & failOnInvalid) && codePage != latin1 && ToUtf8(wide) != bytes)
      return FailWith(ERROR_NO_UNICODE_TRANSLATION, 0);
    const int needed = static_cast<int>(wide.size());
    if (capacity == 0) return needed;
    if (needed > capacity) return FailWith(ERROR_INSUFFICIENT_BUFFER, 0);
    std::copy(wide.begin(), wide.end(), buffer);
    return needed;
  });
}

// What Latin-1 lacks becomes the fallback, as on the platform.
std::string ToLatin1(TStringView text, char fallback, BOOL* usedFallback) {
  std::string bytes;
  for (const char16_t unit : text) {
    bytes.push_back(unit < 0x100 ? static_cast<char>(unit) : fallback);
    if (unit >= 0x100 && usedFallback) *usedFallback = TRUE;
  }
  return bytes;
}

int STDAPICALLTYPE WideCharToMultiByte(UINT codePage, DWORD, LPCWSTR text, int length, LPSTR buffer,
                                       int capacity, LPCSTR fallback, BOOL* usedFallback) {
  constexpr UINT latin1 = 28591;
  return SystemCall<int>(0, [&] {
    const bool known = IsUtf8CodePage(codePage) || codePage == latin1;
    if (!known || !text || length < -1 || length == 0 || capacity < 0 || (capacity && !buffer))
      return FailWith(ERROR_INVALID_PARAMETER, 0);
    if (usedFallback) *usedFallback = FALSE;
    const TStringView units = length < 0
                                  ? TStringView(text, std::char_traits<char16_t>::length(text) + 1)
                                  : TStringView(text, static_cast<std::size_t>(length));
    const std::string bytes = codePage == latin1
                                  ? ToLatin1(units, fallback ? *fallback : '?', usedFallback)
                                  : ToUtf8(units);
    const int needed = static_cast<int>(bytes.size());
    if (capacity == 0) return needed;
    if (needed > capacity) return FailWith(ERROR_INSUFFICIENT_BUFFER, 0);
    std::copy(bytes.begin(), bytes.end(), buffer);
    return needed;
  });
}

UINT STDAPICALLTYPE GetACP() { return 65001; }

}  // namespace

#define BIND(Name) api.Name.SetFunction(&Name)
void BindSystemText(TApi& api) {
  BIND(StrCmpLogicalW);
  BIND(PathMatchSpecW);
  BIND(StrFormatByteSizeW);
  BIND(StrFormatByteSizeEx);
  BIND(StrFormatKBSizeW);
  BIND(StrRetToStrW);
  BIND(MultiByteToWideChar);
  BIND(WideCharToMultiByte);
  BIND(GetACP);
}
#undef BIND

}  // namespace oak
