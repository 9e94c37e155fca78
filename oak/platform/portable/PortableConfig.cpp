#include "oak/platform/portable/PortableConfig.h"

#include <pwd.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <atomic>
#include <cstdlib>
#include <mutex>

namespace oak {
namespace {

struct TConfigSlot {
  std::mutex Lock;
  std::shared_ptr<const TPortableConfig> Config;
  std::atomic<std::uint64_t> Generation{1};
};

TConfigSlot& ConfigSlot() {
  static auto* slot = new TConfigSlot;  // outlives static destructors that still ask
  return *slot;
}

std::string Environment(const char* name) {
  const char* value = std::getenv(name);
  return value ? value : "";
}

// XDG rules: a variable counts only if it holds an absolute path.
std::string AbsoluteEnvironment(const char* name, const std::string& otherwise) {
  std::string value = Environment(name);
  if (value.empty() || value.front() != '/') return otherwise;
  while (value.size() > 1 && value.back() == '/') value.pop_back();
  return value;
}

struct TAccount {
  std::string Name;
  std::string Home;
};

TAccount ReadAccount() {
  TAccount result;
  passwd entry{};
  passwd* found = nullptr;
  std::vector<char> buffer(16384);
  if (getpwuid_r(geteuid(), &entry, buffer.data(), buffer.size(), &found) == 0 && found) {
    result.Name = found->pw_name ? found->pw_name : "";
    result.Home = found->pw_dir ? found->pw_dir : "";
  }
  if (result.Name.empty()) result.Name = "user";
  result.Home = AbsoluteEnvironment("HOME", result.Home);
  if (result.Home.empty() || result.Home.front() != '/') result.Home = "/";
  return result;
}

std::string FirstDirectory(std::initializer_list<const char*> candidates) {
  for (const char* candidate : candidates) {
    struct stat info {};
    if (stat(candidate, &info) == 0 && S_ISDIR(info.st_mode)) return candidate;
  }
  return "/";
}

std::string Below(const std::string& directory, const char* name) {
  return (directory == "/" ? std::string() : directory) + "/" + name;
}

std::string HostName() {
  char name[256] = {};
  if (gethostname(name, sizeof name - 1) != 0 || name[0] == 0) return "LOCALHOST";
  return name;
}

// "de_CH.UTF-8@euro" is "de-CH"; without a locale, and in that of programmers, American English.
TString LocaleName() {
  std::string name;
  for (const char* variable : {"LC_ALL", "LC_TIME", "LANG"})
    if (name.empty()) name = Environment(variable);
  name.resize(std::min(name.size(), name.find_first_of(".@")));
  std::replace(name.begin(), name.end(), '_', '-');
  return name.empty() || name == "C" || name == "POSIX" ? u"en-US" : FromUtf8(name);
}

std::string MakeAbsolute(std::string_view directory) {
  std::string result(directory);
  if (result.empty() || result.front() != '/') {
    std::vector<char> buffer(65536);
    const char* current = getcwd(buffer.data(), buffer.size());
    result = Below(current ? current : "/", result.c_str());
  }
  while (result.size() > 1 && result.back() == '/') result.pop_back();
  return result;
}

// Changes a copy of the present configuration and publishes it, as one step.
template <class TChange>
bool ChangeConfig(TChange&& change) {
  const std::shared_ptr<const TPortableConfig> present = PortableConfig();
  TConfigSlot& slot = ConfigSlot();
  const std::lock_guard lock(slot.Lock);
  auto changed = std::make_shared<TPortableConfig>(slot.Config ? *slot.Config : *present);
  if (!change(*changed)) return false;
  slot.Config = std::move(changed);
  slot.Generation.fetch_add(1, std::memory_order_acq_rel);
  return true;
}

bool IsDriveLetter(char16_t letter) { return letter >= u'A' && letter <= u'Z'; }

bool ByLetter(const TPortableDrive& a, const TPortableDrive& b) { return a.Letter < b.Letter; }

}  // namespace

const TPortableDrive* TPortableConfig::FindDrive(char16_t letter) const {
  const char16_t wanted = UpCase(letter);
  for (const TPortableDrive& drive : Drives)
    if (drive.Letter == wanted) return &drive;
  return nullptr;
}

const TPortableShare* TPortableConfig::FindShare(TStringView server, TStringView share) const {
  for (const TPortableShare& candidate : Shares)
    if (SameText(candidate.Server, server) && SameText(candidate.Share, share)) return &candidate;
  return nullptr;
}

TPortableConfig PortableConfigFromEnvironment() {
  const TAccount account = ReadAccount();
  TPortableConfig config;
  config.Drives.push_back({u'C', "/", TPortableDriveKind::Fixed, {}, {}});
  config.Home = account.Home;
  config.ConfigHome = AbsoluteEnvironment("XDG_CONFIG_HOME", Below(account.Home, ".config"));
  config.DataHome = AbsoluteEnvironment("XDG_DATA_HOME", Below(account.Home, ".local/share"));
  config.CacheHome = AbsoluteEnvironment("XDG_CACHE_HOME", Below(account.Home, ".cache"));
  config.Trash = Below(config.DataHome, "Trash");
  config.Temp = AbsoluteEnvironment("TMPDIR", FirstDirectory({"/tmp", "/var/tmp"}));
  config.ProgramFiles = FirstDirectory({"/opt", "/usr/local"});
  config.ProgramData = FirstDirectory({"/usr/local/share", "/usr/share"});
  config.Windows = FirstDirectory({"/usr"});
  config.System = FirstDirectory({"/usr/lib", "/lib"});
  config.ComputerName = UpperCase(FromUtf8(HostName()));
  config.UserName = FromUtf8(account.Name);
  config.Language = LocaleName();
  config.IsAdmin = geteuid() == 0;
  return config;
}

std::shared_ptr<const TPortableConfig> PortableConfig() {
  TConfigSlot& slot = ConfigSlot();
  const std::lock_guard lock(slot.Lock);
  if (!slot.Config)
    slot.Config = std::make_shared<const TPortableConfig>(PortableConfigFromEnvironment());
  return slot.Config;
}

void SetPortableConfig(std::shared_ptr<const TPortableConfig> config) {
  TConfigSlot& slot = ConfigSlot();
  const std::lock_guard lock(slot.Lock);
  slot.Config.swap(config);
  slot.Generation.fetch_add(1, std::memory_order_acq_rel);
}

std::uint64_t PortableConfigGeneration() noexcept {
  return ConfigSlot().Generation.load(std::memory_order_acquire);
}

void SetPortableConfig(TPortableConfig config) {
  std::sort(config.Drives.begin(), config.Drives.end(), ByLetter);
  SetPortableConfig(std::make_shared<const TPortableConfig>(std::move(config)));
}

bool MapDrive(char16_t letter, std::string_view directory, TPortableDriveKind kind,
              TStringView label) {
  const char16_t upper = UpCase(letter);
  if (!IsDriveLetter(upper)) return false;
  const TPortableDrive drive{upper, MakeAbsolute(directory), kind, TString(label), {}};
  return ChangeConfig([&](TPortableConfig& config) {
    std::erase_if(config.Drives, [&](const auto& other) { return other.Letter == upper; });
    config.Drives.push_back(drive);
    std::sort(config.Drives.begin(), config.Drives.end(), ByLetter);
    return true;
  });
}

bool UnmapDrive(char16_t letter) {
  return ChangeConfig([upper = UpCase(letter)](TPortableConfig& config) {
    return std::erase_if(config.Drives, [&](const auto& d) { return d.Letter == upper; }) > 0;
  });
}

bool MapShare(TStringView server, TStringView share, std::string_view directory) {
  if (server.empty() || share.empty() || Contains(server, u"\\") || Contains(share, u"\\"))
    return false;
  const TPortableShare mapped{TString(server), TString(share), MakeAbsolute(directory)};
  return ChangeConfig([&](TPortableConfig& config) {
    std::erase_if(config.Shares, [&](const auto& other) {
      return SameText(other.Server, mapped.Server) && SameText(other.Share, mapped.Share);
    });
    config.Shares.push_back(mapped);
    return true;
  });
}

}  // namespace oak
