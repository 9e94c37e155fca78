// Windows paths and the native paths behind them.
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>

#include "oak/platform/portable/PortableConfig.h"
#include "oak/platform/portable/PortableFiles.h"
#include "oak/platform/shell_api.h"

namespace oak {
namespace {

constexpr TStringView LongPrefix = u"\\\\?\\";
constexpr TStringView DevicePrefix = u"\\\\.\\";
constexpr TStringView VolumePrefix = u"Volume{";

bool IsLetter(char16_t c) { return (c >= u'A' && c <= u'Z') || (c >= u'a' && c <= u'z'); }
bool StartsWithDrive(TStringView path) {
  return path.size() >= 2 && path[1] == u':' && IsLetter(path[0]);
}

std::optional<std::string> Fail(DWORD* error, DWORD code) {
  if (error) *error = code;
  return std::nullopt;
}

std::string CurrentNativeDirectory() {
  std::vector<char> buffer(65536);
  const char* current = getcwd(buffer.data(), buffer.size());
  return current ? current : "/";
}

// Takes the text up to the next delimiter off the front, and the delimiter.
TStringView TakePart(TStringView& rest) {
  const std::size_t end = std::min(rest.find(u'\\'), rest.size());
  const TStringView part = rest.substr(0, end);
  rest.remove_prefix(std::min(end + 1, rest.size()));
  return part;
}

// Continues a native root by the components of `rest`. In a literal path "."
// and ".." are names like any other, which no file has.
std::optional<std::string> Append(const std::string& root, std::string start, TStringView rest,
                                  bool literal, DWORD* error) {
  std::string result = std::move(start);
  while (!rest.empty()) {
    const TStringView part = TakePart(rest);
    if (part.empty()) continue;
    const bool dots = part == u"." || part == u"..";
    if (dots && literal) return Fail(error, ERROR_INVALID_NAME);
    if (part == u".") continue;
    if (dots) {
      if (result.size() > root.size())
        result.resize(std::max({root.size(), result.rfind('/'), std::size_t{1}}));
      continue;
    }
    const std::string name = NameToNative(part);
    if (name.empty()) return Fail(error, ERROR_INVALID_NAME);
    result = JoinNative(result, name);
  }
  return result;
}

std::optional<std::string> FromDrive(char16_t letter, TStringView rest, bool literal,
                                     DWORD* error) {
  const auto config = PortableConfig();
  const TPortableDrive* drive = config->FindDrive(letter);
  if (!drive) return Fail(error, ERROR_PATH_NOT_FOUND);
  return Append(drive->Directory, drive->Directory, rest, literal, error);
}

// `rest` begins with the server's name.
std::optional<std::string> FromShare(TStringView rest, bool literal, DWORD* error) {
  const TStringView server = TakePart(rest);
  const TStringView name = TakePart(rest);
  const auto config = PortableConfig();
  const TPortableShare* share = config->FindShare(server, name);
  if (!share) {
    const bool known = std::any_of(config->Shares.begin(), config->Shares.end(),
                                   [&](auto& other) { return SameText(other.Server, server); });
    return Fail(error, known ? ERROR_BAD_NET_NAME : ERROR_BAD_NETPATH);
  }
  return Append(share->Directory, share->Directory, rest, literal, error);
}

// `rest` is what follows "\\?\" or "\\.\".
std::optional<std::string> FromLongForm(TStringView rest, bool literal, DWORD* error) {
  if (StartsText(u"UNC\\", rest)) return FromShare(rest.substr(4), literal, error);
  if (StartsText(VolumePrefix, rest)) {
    const TStringView name = TakePart(rest);
    const char16_t letter = DriveOfVolumeName(TString(LongPrefix) + TString(name));
    if (letter == 0) return Fail(error, ERROR_PATH_NOT_FOUND);
    return FromDrive(letter, rest, literal, error);
  }
  if (StartsWithDrive(rest) && (rest.size() == 2 || rest[2] == u'\\'))
    return FromDrive(rest[0], rest.substr(2), literal, error);
  return Fail(error, ERROR_PATH_NOT_FOUND);
}

// A path relative to the current directory, or to its drive. The current
// directory of another drive is that drive's root.
std::optional<std::string> FromRelative(TStringView path, DWORD* error) {
  const TString current = WindowsPath(CurrentNativeDirectory());
  if (StartsWithDrive(path)) {
    if (!StartsText(path.substr(0, 2), current))
      return FromDrive(path[0], path.substr(2), false, error);
    path.remove_prefix(2);
  }
  TString base = current;
  if (base.empty()) {
    const auto config = PortableConfig();
    if (config->Drives.empty()) return Fail(error, ERROR_PATH_NOT_FOUND);
    base = TString(1, config->Drives.front().Letter) + u":\\";
  }
  if (!path.empty() && path.front() == u'\\') base = ExtractFileDrive(base);
  return NativePathText(IncludeTrailingPathDelimiter(base) + TString(path), error);
}

// Does `directory` lead to `native`? Gives the length of what to skip.
bool Leads(const std::string& directory, std::string_view native, std::size_t& skip) {
  if (directory == "/") {
    skip = 0;
    return true;
  }
  skip = directory.size();
  return native.starts_with(directory) && (native.size() == skip || native[skip] == '/');
}

TString AppendNames(TString root, std::string_view rest) {
  while (!rest.empty()) {
    const std::size_t start = std::min(rest.find_first_not_of('/'), rest.size());
    rest.remove_prefix(start);
    const std::size_t end = std::min(rest.find('/'), rest.size());
    if (end > 0) {
      if (root.back() != u'\\') root.push_back(u'\\');
      root += NameFromNative(rest.substr(0, end));
    }
    rest.remove_prefix(end);
  }
  return root;
}

// The path without empty, "." and ".." components.
std::string Normalized(std::string_view native) {
  std::string result;
  while (!native.empty()) {
    const std::size_t end = std::min(native.find('/'), native.size());
    const std::string_view part = native.substr(0, end);
    native.remove_prefix(std::min(end + 1, native.size()));
    if (part.empty() || part == ".") continue;
    if (part == "..")
      result.resize(std::min(result.rfind('/'), result.size()));
    else
      (result += '/') += part;
  }
  return result.empty() ? "/" : result;
}

std::uint64_t Hash(std::uint64_t hash, std::string_view bytes) {
  for (const char byte : bytes) hash = (hash ^ static_cast<unsigned char>(byte)) * 0x100000001B3u;
  return hash;
}

TString VolumeName(const TPortableDrive& drive) {
  const std::string_view letter(reinterpret_cast<const char*>(&drive.Letter), 1);
  const std::uint64_t high = Hash(Hash(0xCBF29CE484222325u, letter), drive.Directory);
  const std::uint64_t low = Hash(high ^ 0x9E3779B97F4A7C15u, drive.Directory);
  const TString a = LowerCase(IntToHex(high, 16));
  const TString b = LowerCase(IntToHex(low, 16));
  return TString(LongPrefix) + TString(VolumePrefix) + a.substr(0, 8) + u"-" + a.substr(8, 4) +
         u"-" + a.substr(12, 4) + u"-" + b.substr(0, 4) + u"-" + b.substr(4, 12) + u"}\\";
}

bool Exists(const std::string& native) {
  struct stat info {};
  return lstat(native.c_str(), &info) == 0;
}

}  // namespace

std::string JoinNative(std::string_view directory, std::string_view name) {
  std::string result;
  result.reserve(directory.size() + name.size() + 1);
  result += directory;
  if (result.empty() || result.back() != '/') result += '/';
  return result += name;
}

std::optional<std::string> NativePathText(TStringView path, DWORD* error) {
  if (path.empty()) return Fail(error, ERROR_PATH_NOT_FOUND);
  if (path.find(u'\0') != TStringView::npos) return Fail(error, ERROR_INVALID_NAME);
  if (StartsWith(path, LongPrefix)) return FromLongForm(path.substr(4), true, error);
  TString text(path);
  std::replace(text.begin(), text.end(), u'/', u'\\');
  const TStringView view = text;
  if (StartsWith(view, DevicePrefix)) return FromLongForm(view.substr(4), false, error);
  if (StartsWith(view, u"\\\\")) return FromShare(view.substr(2), false, error);
  if (StartsWithDrive(view) && view.size() > 2 && view[2] == u'\\')
    return FromDrive(view[0], view.substr(2), false, error);
  return FromRelative(view, error);
}

std::string FindNativeChild(const std::string& directory, const std::string& name) {
  std::string exact = JoinNative(directory, name);
  if (Exists(exact)) return exact;
  auto reader = TNativeDirectory::Open(directory);
  if (!reader) return exact;
  const TString wanted = NameFromNative(name);
  std::string best;
  while (const char* entry = reader->Next()) {
    // Of several spellings the first in byte order, whatever the disk's order.
    if (SameText(NameFromNative(entry), wanted) && (best.empty() || best > entry)) best = entry;
  }
  return best.empty() ? exact : JoinNative(directory, best);
}

std::optional<std::string> NativePath(TStringView path, DWORD* error) {
  std::optional<std::string> text = NativePathText(path, error);
  if (!text || Exists(*text)) return text;
  std::string_view rest = *text;
  std::string result = "/";
  while (!rest.empty()) {
    rest.remove_prefix(1);
    const std::size_t end = std::min(rest.find('/'), rest.size());
    std::string next = FindNativeChild(result, std::string(rest.substr(0, end)));
    rest.remove_prefix(end);
    const bool found = Exists(next);
    result = std::move(next);
    if (!found) return rest.empty() ? result : result + std::string(rest);
  }
  return result;
}

TString WindowsPath(std::string_view native) {
  if (native.empty() || native.front() != '/') return {};
  const std::string path = Normalized(native);
  const auto config = PortableConfig();
  TString root;
  std::size_t best = 0;
  std::size_t skip = 0;
  for (const TPortableDrive& drive : config->Drives) {
    if (!Leads(drive.Directory, path, skip) || (!root.empty() && skip <= best)) continue;
    best = skip;
    root = TString(1, drive.Letter) + u":\\";
  }
  for (const TPortableShare& share : config->Shares) {
    if (!Leads(share.Directory, path, skip) || (!root.empty() && skip <= best)) continue;
    best = skip;
    root = u"\\\\" + share.Server + u"\\" + share.Share;
  }
  return root.empty() ? root : AppendNames(std::move(root), std::string_view(path).substr(best));
}

TString VolumeNameOfDrive(char16_t letter) {
  const auto config = PortableConfig();
  const TPortableDrive* drive = config->FindDrive(letter);
  return drive ? VolumeName(*drive) : TString();
}

char16_t DriveOfVolumeName(TStringView name) {
  const TString wanted = IncludeTrailingPathDelimiter(name);
  const auto config = PortableConfig();
  for (const TPortableDrive& drive : config->Drives)
    if (SameText(VolumeName(drive), wanted)) return drive.Letter;
  return 0;
}

}  // namespace oak
