// Names, patterns and sizes as text.
#include <algorithm>
#include <cmath>
#include <cstring>

#include "oak/base/LogicalOrder.h"
#include "oak/base/PatternMatch.h"
#include "oak/base/Pidl.h"
#include "oak/platform/portable/SystemBinding.h"

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

TString WithSeparators(std::uint64_t value) {
  TString text;
  int digits = 0;
  do {
    if (digits > 0 && digits % 3 == 0) text.insert(text.begin(), u',');
    text.insert(text.begin(), static_cast<char16_t>(u'0' + value % 10));
    ++digits;
    value /= 10;
  } while (value > 0);
  return text;
}

// Three digits of a number of units: "1.30", "22.9", "999". `hundredths` is the
// number times 100.
TString ThreeDigits(std::uint64_t hundredths) {
  if (hundredths >= 10000) return WithSeparators(hundredths / 100);
  const auto digit = [](std::uint64_t value) { return static_cast<char16_t>(u'0' + value % 10); };
  TString text =
      IntToStr(static_cast<std::int64_t>(hundredths / 100)) + u'.' + digit(hundredths / 10);
  if (hundredths < 1000) text += digit(hundredths);
  return text;
}

// The next unit begins at 1000 of one, so that there are never four digits.
TString ByteSizeText(std::uint64_t size, bool round) {
  static constexpr const char16_t* units[] = {u" KB", u" MB", u" GB", u" TB", u" PB", u" EB"};
  if (size < 1024) return WithSeparators(size) + u" bytes";
  int unit = 0;
  std::uint64_t divisor = 1024;
  while (unit < 5 && size / divisor >= 1000) {
    divisor *= 1024;
    ++unit;
  }
  const std::uint64_t whole = size / divisor;
  const std::uint64_t rest = size % divisor;
  // By units of 1/1024 of the divisor, so that nothing overflows.
  std::uint64_t hundredths = whole * 100 + rest / (divisor / 1024) * 100 / 1024;
  if (round) {
    const std::uint64_t step = hundredths < 1000 ? 1 : hundredths < 10000 ? 10 : 100;
    const std::uint64_t thousandths = whole * 1000 + rest / (divisor / 1024) * 1000 / 1024;
    hundredths = (thousandths + step * 5) / (step * 10) * step;
  }
  return ThreeDigits(hundredths) + units[unit];
}

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
    const TString text = ByteSizeText(Magnitude(size), false);
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
    const std::uint64_t value = Magnitude(size);
    const TString text = WithSeparators(value / 1024 + (value % 1024 ? 1 : 0)) + u" KB";
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
