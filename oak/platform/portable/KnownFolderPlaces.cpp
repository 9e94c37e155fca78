#include "oak/platform/portable/KnownFolderPlaces.h"

#include <sys/stat.h>

#include <fstream>
#include <iterator>
#include <mutex>

#include "oak/platform/portable/PortableFiles.h"

namespace oak {
namespace {

struct TUserDir {
  const char* Key;
  const char* Fallback;  // below the home directory
};
// In the order of TKnownFolderBase from UserDesktop on.
constexpr TUserDir kUserDirs[] = {
    {"DESKTOP", "Desktop"},     {"DOCUMENTS", "Documents"}, {"DOWNLOAD", "Downloads"},
    {"MUSIC", "Music"},         {"PICTURES", "Pictures"},   {"VIDEOS", "Videos"},
    {"TEMPLATES", "Templates"}, {"PUBLICSHARE", "Public"},
};

bool IsDirectory(const std::string& path) {
  struct stat info;
  return !path.empty() && ::stat(path.c_str(), &info) == 0 && S_ISDIR(info.st_mode);
}

std::string ReadText(const std::string& path) {
  std::ifstream file(path, std::ios::binary);
  return {std::istreambuf_iterator<char>(file), std::istreambuf_iterator<char>()};
}

// The value between double quotes with the shell's backslash escapes undone;
// empty if it is not closed.
std::string Unquote(std::string_view text) {
  std::string value;
  if (text.empty() || text.front() != '"') return value;
  for (std::size_t i = 1; i < text.size(); ++i) {
    if (text[i] == '"') return value;
    if (text[i] == '\\' && i + 1 < text.size()) ++i;
    value += text[i];
  }
  return {};
}

std::string TrimSlashes(std::string path) {
  while (path.size() > 1 && path.back() == '/') path.pop_back();
  return path;
}

void ParseLine(std::string_view line, const std::string& home,
               std::unordered_map<std::string, std::string>& dirs) {
  constexpr std::string_view prefix = "XDG_", suffix = "_DIR", variable = "$HOME";
  const std::size_t start = line.find_first_not_of(" \t");
  if (start == std::string_view::npos || line[start] == '#') return;
  line.remove_prefix(start);
  const std::size_t equals = line.find('=');
  if (equals == std::string_view::npos || !line.starts_with(prefix)) return;
  std::string_view key = line.substr(prefix.size(), equals - prefix.size());
  if (!key.ends_with(suffix)) return;
  key.remove_suffix(suffix.size());
  std::string value = Unquote(line.substr(equals + 1));
  if (value == variable || value.starts_with("$HOME/"))
    value = home + value.substr(variable.size());
  if (value.starts_with('/')) dirs[std::string(key)] = TrimSlashes(std::move(value));
}

}  // namespace

std::unordered_map<std::string, std::string> ParseUserDirs(std::string_view text,
                                                           const std::string& home) {
  std::unordered_map<std::string, std::string> dirs;
  while (!text.empty()) {
    const std::size_t end = text.find('\n');
    ParseLine(text.substr(0, end), home, dirs);
    text = end == std::string_view::npos ? std::string_view() : text.substr(end + 1);
  }
  return dirs;
}

TKnownFolderPlaces::TKnownFolderPlaces(std::shared_ptr<const TPortableConfig> config)
    : fConfig(std::move(config)),
      fUserDirs(ParseUserDirs(ReadText(fConfig->ConfigHome + "/user-dirs.dirs"), fConfig->Home)) {
  std::vector<std::string> bases(static_cast<std::size_t>(TKnownFolderBase::Count));
  for (std::size_t i = 0; i < bases.size(); ++i)
    bases[i] = BaseDirectory(static_cast<TKnownFolderBase>(i));
  const auto folders = KnownFolders();
  fNative.reserve(folders.size());
  fPaths.reserve(folders.size());
  for (const TKnownFolder& folder : folders) {
    std::string native = bases[static_cast<std::size_t>(folder.Base)];
    if (!native.empty() && *folder.RelativePath) native = JoinNative(native, folder.RelativePath);
    TString path = native.empty() ? TString() : WindowsPath(native);
    if (!path.empty())
      fByPath.emplace(UpperCase(ExcludeTrailingPathDelimiter(path)),
                      static_cast<int>(fPaths.size()));
    fNative.push_back(std::move(native));
    fPaths.push_back(std::move(path));
  }
}

std::string TKnownFolderPlaces::BaseDirectory(TKnownFolderBase base) const {
  switch (base) {
    case TKnownFolderBase::None:
    case TKnownFolderBase::Count:
      return {};
    case TKnownFolderBase::Root:
      return "/";
    case TKnownFolderBase::Home:
      return fConfig->Home;
    case TKnownFolderBase::Config:
      return fConfig->ConfigHome;
    case TKnownFolderBase::Data:
      return fConfig->DataHome;
    case TKnownFolderBase::Cache:
      return fConfig->CacheHome;
    case TKnownFolderBase::Own:
      return JoinNative(fConfig->DataHome, "oak-shell");
    case TKnownFolderBase::ProgramData:
      return fConfig->ProgramData;
    case TKnownFolderBase::ProgramFiles:
      return fConfig->ProgramFiles;
    case TKnownFolderBase::ProgramFilesX86:
      return fConfig->ProgramFilesX86.empty() ? fConfig->ProgramFiles : fConfig->ProgramFilesX86;
    case TKnownFolderBase::Windows:
      return fConfig->Windows;
    case TKnownFolderBase::System:
      return fConfig->System;
    default:
      return UserDirectory(base);
  }
}

// The home directory itself as a value switches a user directory off.
std::string TKnownFolderPlaces::UserDirectory(TKnownFolderBase base) const {
  const TUserDir& dir = kUserDirs[static_cast<std::size_t>(base) -
                                  static_cast<std::size_t>(TKnownFolderBase::UserDesktop)];
  const auto named = fUserDirs.find(dir.Key);
  if (named != fUserDirs.end() && named->second != fConfig->Home && IsDirectory(named->second))
    return named->second;
  return JoinNative(fConfig->Home, dir.Fallback);
}

int TKnownFolderPlaces::FindFolded(TStringView path) const {
  const auto found = fByPath.find(UpperCase(ExcludeTrailingPathDelimiter(path)));
  return found == fByPath.end() ? -1 : found->second;
}

std::shared_ptr<const TKnownFolderPlaces> TKnownFolderPlaces::Current() {
  static auto& lock = *new std::mutex;  // used by threads that outlive static destructors
  static auto& current = *new std::shared_ptr<const TKnownFolderPlaces>;
  std::shared_ptr<const TPortableConfig> config = PortableConfig();
  {
    const std::lock_guard guard(lock);
    if (current && current->fConfig == config) return current;
  }
  auto made = std::make_shared<const TKnownFolderPlaces>(config);
  const std::lock_guard guard(lock);
  current = made;
  return made;
}

}  // namespace oak
