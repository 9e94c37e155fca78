#include "oak/platform/portable/PortableKnownFolders.h"

#include <sys/stat.h>

#include "oak/platform/portable/KnownFolderPlaces.h"

namespace oak {
namespace {

constexpr int kCsidlDesktop = 0x00;
constexpr int kCsidlDesktopDirectory = 0x10;
constexpr int kCsidlAltStartup = 0x1D;
constexpr int kCsidlCommonAltStartup = 0x1E;
constexpr int kCsidlCommonFavorites = 0x1F;
constexpr int kCsidlMyDocuments = 0x0C;

// Numbers that share a folder with another one.
int UsualCsidl(int csidl) noexcept {
  switch (csidl & 0xFF) {
    case kCsidlDesktopDirectory:
      return kCsidlDesktop;
    case kCsidlAltStartup:
      return 0x07;
    case kCsidlCommonAltStartup:
      return 0x18;
    case kCsidlCommonFavorites:
      return 0x06;
    case kCsidlMyDocuments:
      return 0x05;
    default:
      return csidl & 0xFF;
  }
}

template <class TTest>
const TKnownFolder* FindFirst(const TTest& test) noexcept {
  for (const TKnownFolder& folder : KnownFolders())
    if (test(folder)) return &folder;
  return nullptr;
}

std::size_t IndexOf(const TKnownFolder& folder) {
  return static_cast<std::size_t>(&folder - KnownFolders().data());
}

char16_t FoldHex(char16_t c) { return c >= u'a' && c <= u'z' ? static_cast<char16_t>(c - 32) : c; }

// Parsing names hold ASCII only, so no table of letters is needed.
bool SameParsingName(TStringView a, TStringView b) noexcept {
  if (a.size() != b.size()) return false;
  for (std::size_t i = 0; i < a.size(); ++i)
    if (FoldHex(a[i]) != FoldHex(b[i])) return false;
  return true;
}

TStringView WithoutPrefixes(TStringView name) noexcept {
  constexpr TStringView shell = u"shell:", colons = u"::";
  if (name.size() >= shell.size() && SameParsingName(name.substr(0, shell.size()), shell))
    name.remove_prefix(shell.size());
  if (name.starts_with(colons)) name.remove_prefix(colons.size());
  return name;
}

// The text of a class identifier, without its braces.
void FormatGuid(REFGUID id, char16_t (&text)[37]) noexcept {
  constexpr char16_t digits[] = u"0123456789ABCDEF";
  std::size_t at = 0;
  const auto put = [&](std::uint32_t value, int count) {
    for (int shift = (count - 1) * 4; shift >= 0; shift -= 4)
      text[at++] = digits[(value >> shift) & 0xF];
  };
  put(id.Data1, 8);
  text[at++] = u'-';
  put(id.Data2, 4);
  text[at++] = u'-';
  put(id.Data3, 4);
  for (int i = 0; i < 8; ++i) {
    if (i == 0 || i == 2) text[at++] = u'-';
    put(id.Data4[i], 2);
  }
  text[at] = 0;
}

// Equal as spelled, but for the letter of the drive.
bool SameSpelling(TStringView a, TStringView b) {
  if (a.size() >= 2 && b.size() >= 2 && a[1] == u':' && b[1] == u':')
    return UpCase(a[0]) == UpCase(b[0]) && a.substr(1) == b.substr(1);
  return a == b;
}

const TKnownFolder* NearestParent(const TKnownFolderPlaces& places, TString path) {
  for (;;) {
    const int index = places.FindFolded(path);
    if (index >= 0) return &KnownFolders()[static_cast<std::size_t>(index)];
    const std::size_t delimiter = path.find_last_of(PathDelim);
    if (delimiter == TString::npos) return nullptr;
    path.resize(delimiter);
  }
}

bool MakeDirectories(const std::string& path) {
  if (::mkdir(path.c_str(), 0777) == 0) return true;
  struct stat info;
  if (::stat(path.c_str(), &info) == 0) return S_ISDIR(info.st_mode);
  const std::size_t slash = path.find_last_of('/');
  if (slash == std::string::npos || slash == 0 || !MakeDirectories(path.substr(0, slash)))
    return false;
  return ::mkdir(path.c_str(), 0777) == 0;
}

}  // namespace

const TKnownFolder* FindKnownFolder(REFGUID id) noexcept {
  return FindFirst([&](const TKnownFolder& folder) { return folder.Id == id; });
}

const TKnownFolder* FindKnownFolderByCsidl(int csidl) noexcept {
  if (csidl < 0) return nullptr;
  const int usual = UsualCsidl(csidl);
  return FindFirst([&](const TKnownFolder& folder) { return folder.Csidl == usual; });
}

const TKnownFolder* FindKnownFolderByName(TStringView name) noexcept {
  return FindFirst([&](const TKnownFolder& folder) { return SameParsingName(folder.Name, name); });
}

const TKnownFolder* FindKnownFolderByParsingName(TStringView name) noexcept {
  const TStringView wanted = WithoutPrefixes(name);
  if (wanted.empty()) return nullptr;
  return FindFirst([&](const TKnownFolder& folder) {
    return SameParsingName(WithoutPrefixes(folder.ParsingName), wanted);
  });
}

const TKnownFolder* FindKnownFolderByClassId(REFGUID clsid) noexcept {
  char16_t text[37];
  FormatGuid(clsid, text);
  return FindFirst([&](const TKnownFolder& folder) {
    TStringView name = folder.ParsingName;
    if (!name.ends_with(u'}') || name.size() < 38) return false;
    name.remove_suffix(1);
    return SameParsingName(name.substr(name.size() - 36), text);
  });
}

const TKnownFolder* FindKnownFolderByPath(TStringView path, TKnownFolderMatch match) {
  if (path.empty()) return nullptr;
  const auto places = TKnownFolderPlaces::Current();
  const TString text = ExcludeTrailingPathDelimiter(path);
  if (match == TKnownFolderMatch::NearestParent) return NearestParent(*places, text);
  const int index = places->FindFolded(text);
  if (index < 0) return nullptr;
  const auto at = static_cast<std::size_t>(index);
  const bool same = match == TKnownFolderMatch::IgnoreCase ||
                    SameSpelling(ExcludeTrailingPathDelimiter(places->Path(at)), text);
  return same ? &KnownFolders()[at] : nullptr;
}

std::string KnownFolderNativePath(const TKnownFolder& folder) {
  return TKnownFolderPlaces::Current()->Native(IndexOf(folder));
}

TString KnownFolderPath(const TKnownFolder& folder) {
  return TKnownFolderPlaces::Current()->Path(IndexOf(folder));
}

bool EnsureKnownFolder(const TKnownFolder& folder, bool always) {
  const std::string native = KnownFolderNativePath(folder);
  if (native.empty()) return false;
  struct stat info;
  if (::stat(native.c_str(), &info) == 0) return true;
  return (always || folder.Created) && MakeDirectories(native);
}

}  // namespace oak
