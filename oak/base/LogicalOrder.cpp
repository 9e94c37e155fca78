#include "oak/base/LogicalOrder.h"

#include <algorithm>
#include <array>
#include <cstring>

#include "oak/base/LogicalKey.h"

namespace oak {

namespace {
#include "oak/base/OrderTable.inc"

// The first byte of each element of a key, in the order of the names.
constexpr std::uint8_t kEndOfName = 0x00;
constexpr std::uint8_t kControl = 0x02;  // and the character
constexpr std::uint8_t kAsciiSymbol = 0x03;
constexpr std::uint8_t kSymbol = 0x30;       // and two bytes
constexpr std::uint8_t kNumber = 0x40;       // plus the count of digits; two digits a byte
constexpr std::uint8_t kLongNumber = 0x55;   // and four bytes: the count of digits
constexpr std::uint8_t kLatinLetter = 0x60;  // plus the letter
constexpr std::uint8_t kLetter = 0x80;       // and two bytes
constexpr std::size_t kMaxShortNumber = kLongNumber - kNumber - 1;
// Behind the name: its accents, an element each.
constexpr std::uint8_t kEndOfAccents = 0x01;
constexpr std::uint8_t kNoAccent = 0x02;
constexpr std::uint8_t kAccent = 0x03;  // and two bytes
// Behind those: the leading zeros of each number, more of them first.
constexpr std::uint8_t kEndOfZeros = 0xFF;
constexpr std::uint8_t kNoZeros = 0xFE;  // minus their count
constexpr std::size_t kMaxZerosPerByte = 200;

constexpr std::array<std::uint8_t, 128> MakeAsciiWeights() {
  std::array<std::uint8_t, 128> weights{};
  weights.fill(kControl);
  std::uint8_t next = kAsciiSymbol;
  for (const char c : std::string_view("'- !\"#$%&()*,./:;?@[\\]^_`{|}~+<=>"))
    weights[static_cast<unsigned char>(c)] = next++;
  for (std::size_t c = '0'; c <= '9'; ++c) weights[c] = kNumber;
  for (std::uint8_t i = 0; i < 26; ++i)
    weights[std::size_t{'A'} + i] = weights[std::size_t{'a'} + i] =
        static_cast<std::uint8_t>(kLatinLetter + i);
  return weights;
}
constexpr std::array<std::uint8_t, 128> kAsciiWeight = MakeAsciiWeights();

bool IsDigit(char16_t c) noexcept { return c >= u'0' && c <= u'9'; }

std::uint16_t ClassOf(char16_t c) noexcept {
  return kOrderClass[kOrderPage[c >> 6] * 64u + (c & 63u)];
}

std::uint8_t* Write16(std::uint8_t* out, unsigned value) noexcept {
  *out++ = static_cast<std::uint8_t>(value >> 8);
  *out++ = static_cast<std::uint8_t>(value);
  return out;
}

std::uint8_t LatinLetter(unsigned indexFromA) noexcept {
  return static_cast<std::uint8_t>(kLatinLetter + indexFromA);
}

/// A run of digits: its leading zeros, and the digits that count.
struct TNumber {
  const char16_t* digits;
  const char16_t* end;
  std::size_t zeros;
  std::size_t Count() const noexcept { return static_cast<std::size_t>(end - digits); }
};

TNumber ReadNumber(const char16_t* at, const char16_t* last) noexcept {
  const char16_t* digits = at;
  while (digits != last && *digits == u'0') ++digits;
  const char16_t* end = digits;
  while (end != last && IsDigit(*end)) ++end;
  return {digits, end, static_cast<std::size_t>(digits - at)};
}

std::uint8_t* WriteNumber(std::uint8_t* out, const TNumber& number) noexcept {
  const std::size_t count = number.Count();
  if (count <= kMaxShortNumber) {
    *out++ = static_cast<std::uint8_t>(kNumber + count);
  } else {
    *out++ = kLongNumber;
    out = Write16(out, static_cast<unsigned>(count >> 16));
    out = Write16(out, static_cast<unsigned>(count & 0xFFFF));
  }
  for (const char16_t* p = number.digits; p < number.end; p += 2) {
    const int high = p[0] - u'0';
    const int low = p + 1 < number.end ? p[1] - u'0' : 0;
    *out++ = static_cast<std::uint8_t>(high * 16 + low);
  }
  return out;
}

/// Writes a unit beyond ASCII; true if it is told from its base by an accent.
bool WriteWide(std::uint8_t*& out, char16_t c) noexcept {
  const std::uint16_t kind = ClassOf(c);
  if (kind == 0) {
    *out++ = kLetter;
    out = Write16(out, UpCase(c));
    return false;
  }
  if (kind == 1 || kind == 2) {
    *out++ = kind == 1 ? kSymbol : kControl;
    out = kind == 1 ? Write16(out, c) : (*out = static_cast<std::uint8_t>(c), out + 1);
    return false;
  }
  if (kind >= 0x8000) {
    *out++ = LatinLetter((kind >> 5) & 31u);
    *out++ = LatinLetter(kind & 31u);
  } else if (kind <= u'Z') {
    *out++ = LatinLetter(kind - unsigned{u'A'});
  } else {
    *out++ = kLetter;
    out = Write16(out, kind);
  }
  return true;
}

std::uint8_t* WriteAccents(std::uint8_t* out, TStringView name) noexcept {
  std::uint8_t* end = out;  // trailing elements without accent are left out
  const char16_t* const last = name.data() + name.size();
  for (const char16_t* p = name.data(); p != last;) {
    if (IsDigit(*p)) {
      p = ReadNumber(p, last).end;
      *out++ = kNoAccent;
      continue;
    }
    if (*p >= 0x80 && ClassOf(*p) > 2) {
      *out++ = kAccent;
      end = out = Write16(out, UpCase(*p));
    } else {
      *out++ = kNoAccent;
    }
    ++p;
  }
  return end;
}

std::uint8_t* WriteZeros(std::uint8_t* out, TStringView name) noexcept {
  std::uint8_t* end = out;
  const char16_t* const last = name.data() + name.size();
  for (const char16_t* p = name.data(); p != last;) {
    if (!IsDigit(*p)) {
      ++p;
      continue;
    }
    const TNumber number = ReadNumber(p, last);
    std::size_t zeros = number.zeros;
    for (; zeros >= kMaxZerosPerByte; zeros -= kMaxZerosPerByte)
      *out++ = static_cast<std::uint8_t>(kNoZeros - kMaxZerosPerByte);
    *out++ = static_cast<std::uint8_t>(kNoZeros - zeros);
    if (number.zeros > 0) end = out;
    p = number.end;
  }
  return end;
}
}  // namespace

std::uint8_t* detail::WriteLogicalKey(std::uint8_t* out, TStringView name) noexcept {
  bool hasAccents = false;
  bool hasZeros = false;
  const char16_t* const last = name.data() + name.size();
  for (const char16_t* p = name.data(); p != last;) {
    const char16_t c = *p;
    if (c >= 0x80) {
      hasAccents |= WriteWide(out, c);
      ++p;
      continue;
    }
    const std::uint8_t weight = kAsciiWeight[c];
    if (weight == kNumber) {
      const TNumber number = ReadNumber(p, last);
      hasZeros |= number.zeros > 0;
      out = WriteNumber(out, number);
      p = number.end;
      continue;
    }
    *out++ = weight;
    if (weight == kControl) *out++ = static_cast<std::uint8_t>(c);
    ++p;
  }
  *out++ = kEndOfName;
  if (hasAccents) out = WriteAccents(out, name);
  *out++ = kEndOfAccents;
  if (hasZeros) out = WriteZeros(out, name);
  *out++ = kEndOfZeros;
  return out;
}

TLogicalKey MakeLogicalKey(TStringView name) {
  TLogicalKey key;
  key.fBytes.resize(detail::LogicalKeyLimit(name.size()));
  auto* first = reinterpret_cast<std::uint8_t*>(key.fBytes.data());
  key.fBytes.resize(static_cast<std::size_t>(detail::WriteLogicalKey(first, name) - first));
  return key;
}

namespace {
constexpr std::size_t kShortName = 260;

/// A key on the stack, unless the name is very long.
class TTemporaryKey {
 public:
  explicit TTemporaryKey(TStringView name) {
    std::uint8_t* first = fShort;
    if (name.size() > kShortName) {
      fLong.resize(detail::LogicalKeyLimit(name.size()));
      first = fLong.data();
    }
    fBytes = {reinterpret_cast<const char*>(first),
              static_cast<std::size_t>(detail::WriteLogicalKey(first, name) - first)};
  }
  std::string_view Bytes() const noexcept { return fBytes; }
  TTemporaryKey(const TTemporaryKey&) = delete;
  TTemporaryKey& operator=(const TTemporaryKey&) = delete;

 private:
  std::uint8_t fShort[detail::LogicalKeyLimit(kShortName)];
  std::vector<std::uint8_t> fLong;
  std::string_view fBytes;
};

/// Numbers by value.
int CompareDigits(const TNumber& a, const TNumber& b) noexcept {
  if (a.Count() != b.Count()) return a.Count() < b.Count() ? -1 : 1;
  for (std::size_t i = 0; i < a.Count(); ++i)
    if (a.digits[i] != b.digits[i]) return a.digits[i] < b.digits[i] ? -1 : 1;
  return 0;
}
}  // namespace

int CompareLogical(TStringView a, TStringView b) {
  // Gives what the keys give, without making them as long as the names are ASCII.
  const char16_t* p = a.data();
  const char16_t* q = b.data();
  const char16_t* const lastP = p + a.size();
  const char16_t* const lastQ = q + b.size();
  int zeros = 0;
  while (p != lastP && q != lastQ) {
    const char16_t x = *p;
    const char16_t y = *q;
    if ((x | y) >= 0x80) return TTemporaryKey(a).Bytes().compare(TTemporaryKey(b).Bytes());
    if (IsDigit(x) && IsDigit(y)) {
      const TNumber m = ReadNumber(p, lastP);
      const TNumber n = ReadNumber(q, lastQ);
      if (const int order = CompareDigits(m, n)) return order;
      if (zeros == 0 && m.zeros != n.zeros) zeros = m.zeros > n.zeros ? -1 : 1;
      p = m.end;
      q = n.end;
      continue;
    }
    if (kAsciiWeight[x] != kAsciiWeight[y]) return kAsciiWeight[x] < kAsciiWeight[y] ? -1 : 1;
    if (kAsciiWeight[x] == kControl && x != y) return x < y ? -1 : 1;
    ++p;
    ++q;
  }
  if (p != lastP) return 1;
  return q != lastQ ? -1 : zeros;
}

}  // namespace oak
