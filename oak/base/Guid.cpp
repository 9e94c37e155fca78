#include "oak/base/Guid.h"

#include <cstring>

namespace oak {

namespace {
constexpr std::size_t kPlainLength = 36;

/// Reads hexadecimal digits; false on any other character.
bool ReadHex(TStringView digits, std::uint32_t& value) noexcept {
  value = 0;
  for (const char16_t c : digits) {
    std::uint32_t digit;
    if (c >= u'0' && c <= u'9')
      digit = c - u'0';
    else if (const char16_t upper = UpCase(c); upper >= u'A' && upper <= u'F')
      digit = upper - u'A' + 10u;
    else
      return false;
    value = value * 16 + digit;
  }
  return true;
}

std::uint64_t Low64(const GUID& guid) noexcept {
  std::uint64_t value;
  std::memcpy(&value, guid.Data4, sizeof value);
  return value;
}
}  // namespace

TString GuidToString(const GUID& guid) {
  TString text = u"{" + IntToHex(guid.Data1, 8) + u"-" + IntToHex(guid.Data2, 4) + u"-" +
                 IntToHex(guid.Data3, 4) + u"-";
  for (int i = 0; i < 8; ++i) {
    if (i == 2) text += u'-';
    text += IntToHex(guid.Data4[i], 2);
  }
  return text + u"}";
}

bool TryParseGuid(TStringView text, GUID& guid) noexcept {
  if (text.size() == kPlainLength + 2 && text.front() == u'{' && text.back() == u'}')
    text = text.substr(1, kPlainLength);
  if (text.size() != kPlainLength) return false;
  for (const std::size_t at : {8u, 13u, 18u, 23u})
    if (text[at] != u'-') return false;
  std::uint32_t data1, data2, data3;
  if (!ReadHex(text.substr(0, 8), data1) || !ReadHex(text.substr(9, 4), data2) ||
      !ReadHex(text.substr(14, 4), data3))
    return false;
  GUID read{};
  read.Data1 = data1;
  read.Data2 = static_cast<std::uint16_t>(data2);
  read.Data3 = static_cast<std::uint16_t>(data3);
  constexpr std::size_t kBytes[] = {19, 21, 24, 26, 28, 30, 32, 34};
  for (std::size_t i = 0; i < 8; ++i) {
    std::uint32_t byte;
    if (!ReadHex(text.substr(kBytes[i], 2), byte)) return false;
    read.Data4[i] = static_cast<std::uint8_t>(byte);
  }
  guid = read;
  return true;
}

int CompareGuids(const GUID& a, const GUID& b) noexcept {
  if (a.Data1 != b.Data1) return a.Data1 < b.Data1 ? -1 : 1;
  if (a.Data2 != b.Data2) return a.Data2 < b.Data2 ? -1 : 1;
  if (a.Data3 != b.Data3) return a.Data3 < b.Data3 ? -1 : 1;
  return std::memcmp(a.Data4, b.Data4, sizeof a.Data4);
}

std::size_t TGuidHash::operator()(const GUID& guid) const noexcept {
  const std::uint64_t high =
      (std::uint64_t{guid.Data1} << 32) | (std::uint64_t{guid.Data2} << 16) | guid.Data3;
  // Published identifiers come in runs that differ in one field only.
  const std::uint64_t mixed = (high ^ (Low64(guid) * 0x9E3779B97F4A7C15u)) * 0xFF51AFD7ED558CCDu;
  return static_cast<std::size_t>(mixed ^ (mixed >> 32));
}

std::size_t TPropertyKeyHash::operator()(const PROPERTYKEY& key) const noexcept {
  return TGuidHash()(key.fmtid) ^ (static_cast<std::size_t>(key.pid) * 0x9E3779B1u);
}

}  // namespace oak
