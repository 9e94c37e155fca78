#include <algorithm>

#include "oak/platform/portable/LinkFile.h"
#include "oak/platform/portable/LinkFormat.h"
#include "oak/platform/shell_api.h"

namespace oak {
namespace lnk {

TString FromAnsi(std::span<const BYTE> bytes) {
  const TString decoded = FromUtf8({reinterpret_cast<const char*>(bytes.data()), bytes.size()});
  if (decoded.find(u'\uFFFD') == TString::npos) return decoded;
  return {bytes.begin(), bytes.end()};
}

TString FromAnsiTerminated(std::span<const BYTE> bytes) {
  const auto end = std::find(bytes.begin(), bytes.end(), BYTE{0});
  return FromAnsi(bytes.first(static_cast<std::size_t>(end - bytes.begin())));
}

TString FromUnicodeTerminated(std::span<const BYTE> bytes) {
  TString text(bytes.size() / sizeof(char16_t), u'\0');
  if (!text.empty()) std::memcpy(text.data(), bytes.data(), text.size() * sizeof(char16_t));
  text.resize(std::min(text.size(), text.find(u'\0')));
  return text;
}

namespace {

/// Copies a list that ends inside its bytes; anything else gives nil.
TPidl CheckedPidl(std::span<const BYTE> bytes) {
  std::size_t at = 0;
  for (;;) {
    if (bytes.size() - at < sizeof(USHORT)) return {};
    USHORT length = 0;
    std::memcpy(&length, bytes.data() + at, sizeof(length));
    if (length == 0) break;
    if (length < sizeof(length) || length > bytes.size() - at) return {};
    at += length;
  }
  // Copied to an address that suits the type before it is looked at as a list.
  auto* copy = static_cast<PItemIdList>(CoTaskMemAlloc(at + sizeof(USHORT)));
  if (!copy) throw std::bad_alloc();
  std::memcpy(copy, bytes.data(), at + sizeof(USHORT));
  return TPidl::Adopt(copy);
}

std::span<const BYTE> From(std::span<const BYTE> bytes, DWORD offset) {
  return offset < bytes.size() ? bytes.subspan(offset) : std::span<const BYTE>();
}

TString JoinSuffix(const TString& base, const TString& suffix) {
  if (suffix.empty() || base.empty()) return base + suffix;
  return IncludeTrailingPathDelimiter(base) + suffix;
}

/// Name of the share in the block of the network location.
TString ReadNetworkName(std::span<const BYTE> block) {
  constexpr DWORD ansiOnly = 0x14;
  TReader reader(block);
  reader.Read<DWORD>();  // size
  reader.Read<DWORD>();  // flags
  const auto name = reader.Read<DWORD>();
  reader.Read<DWORD>();  // device name
  reader.Read<DWORD>();  // provider
  if (reader.HasFailed()) return {};
  if (name > ansiOnly) {
    const auto unicode = reader.Read<DWORD>();
    if (!reader.HasFailed()) return FromUnicodeTerminated(From(block, unicode));
  }
  return FromAnsiTerminated(From(block, name));
}

void ReadLinkInfo(std::span<const BYTE> block, TLinkFile& link) {
  TReader reader(block);
  reader.Read<DWORD>();  // size
  const auto headerSize = reader.Read<DWORD>();
  const auto flags = reader.Read<DWORD>();
  reader.Read<DWORD>();  // volume
  const auto localAt = reader.Read<DWORD>();
  const auto networkAt = reader.Read<DWORD>();
  const auto suffixAt = reader.Read<DWORD>();
  if (reader.HasFailed()) return;
  TString local = FromAnsiTerminated(From(block, localAt));
  TString suffix = FromAnsiTerminated(From(block, suffixAt));
  if (headerSize >= InfoHeaderUnicode) {
    const auto unicodeLocalAt = reader.Read<DWORD>();
    const auto unicodeSuffixAt = reader.Read<DWORD>();
    if (unicodeLocalAt) local = FromUnicodeTerminated(From(block, unicodeLocalAt));
    if (unicodeSuffixAt) suffix = FromUnicodeTerminated(From(block, unicodeSuffixAt));
  }
  if (flags & InfoHasLocalPath) link.LocalPath = JoinSuffix(local, suffix);
  if (flags & InfoHasNetworkPath)
    link.NetworkPath = JoinSuffix(ReadNetworkName(From(block, networkAt)), suffix);
}

std::optional<TString> ReadText(TReader& reader, bool isUnicode) {
  const auto length = reader.Read<WORD>();
  const std::span<const BYTE> bytes = reader.Take(std::size_t{length} * (isUnicode ? 2 : 1));
  if (reader.HasFailed()) return std::nullopt;
  if (!isUnicode) return FromAnsi(bytes);
  TString text(length, u'\0');
  if (length) std::memcpy(text.data(), bytes.data(), bytes.size());
  return text;
}

void ReadTexts(TReader& reader, DWORD flags, TLinkFile& link) {
  const bool isUnicode = (flags & IsUnicode) != 0;
  if (flags & HasName) link.Description = ReadText(reader, isUnicode);
  if (flags & HasRelativePath) link.RelativePath = ReadText(reader, isUnicode);
  if (flags & HasWorkingDirectory) link.WorkingDirectory = ReadText(reader, isUnicode);
  if (flags & HasArguments) link.Arguments = ReadText(reader, isUnicode);
  if (flags & HasIconLocation) link.IconLocation = ReadText(reader, isUnicode);
}

/// The blocks behind the texts. A broken one ends the file, as it does for others.
void ReadBlocks(TReader& reader, TLinkFile& link) {
  constexpr DWORD smallestBlock = 8;
  while (reader.Left() >= sizeof(DWORD)) {
    const auto size = reader.Read<DWORD>();
    if (size < smallestBlock || size - sizeof(DWORD) > reader.Left()) return;
    const std::span<const BYTE> rest = reader.Take(size - sizeof(DWORD));
    DWORD signature = 0;
    std::memcpy(&signature, rest.data(), sizeof(signature));
    if (signature == EnvironmentBlock && size == EnvironmentBlockSize) {
      link.EnvironmentTarget =
          FromUnicodeTerminated(rest.subspan(EnvironmentUnicodeAt - sizeof(DWORD)));
      continue;
    }
    const auto* bytes = reinterpret_cast<const BYTE*>(&size);
    link.OtherBlocks.insert(link.OtherBlocks.end(), bytes, bytes + sizeof(size));
    link.OtherBlocks.insert(link.OtherBlocks.end(), rest.begin(), rest.end());
  }
}

/// False if the bytes are no header of a link.
bool ReadHeader(TReader& reader, TLinkFile& link, DWORD& flags) {
  const auto headerSize = reader.Read<DWORD>();
  const auto classId = reader.Read<GUID>();
  flags = reader.Read<DWORD>();
  link.FileAttributes = reader.Read<DWORD>();
  link.Created = reader.Read<FILETIME>();
  link.Accessed = reader.Read<FILETIME>();
  link.Written = reader.Read<FILETIME>();
  link.FileSize = reader.Read<DWORD>();
  link.IconIndex = reader.Read<int>();
  link.ShowCommand = reader.Read<DWORD>();
  link.Hotkey = reader.Read<WORD>();
  reader.Take(10);
  link.OtherFlags = flags & ~static_cast<DWORD>(KnownFlags);
  return !reader.HasFailed() && headerSize == HeaderSize && classId == ClassId;
}

bool ReadBody(TReader& reader, DWORD flags, TLinkFile& link) {
  if (flags & HasTarget) {
    const auto size = reader.Read<WORD>();
    link.Target = CheckedPidl(reader.Take(size));
  }
  if ((flags & HasLinkInfo) && !(flags & ForceNoLinkInfo)) {
    TReader ahead = reader;
    const auto size = ahead.Read<DWORD>();
    if (size < sizeof(DWORD)) return false;
    ReadLinkInfo(reader.Take(size), link);
  }
  ReadTexts(reader, flags, link);
  if (reader.HasFailed()) return false;
  ReadBlocks(reader, link);
  return true;
}

}  // namespace
}  // namespace lnk

HRESULT ReadLinkFile(std::span<const BYTE> bytes, TLinkFile& link) {
  link = {};
  lnk::TReader reader(bytes);
  DWORD flags = 0;
  if (lnk::ReadHeader(reader, link, flags) && lnk::ReadBody(reader, flags, link)) return S_OK;
  link = {};
  return HRESULT_FROM_WIN32(ERROR_BAD_FORMAT);
}

}  // namespace oak
