// Environment variables: those of the process, and those that programs for the
// platform take for granted.
#include <unistd.h>

#include <algorithm>
#include <cstdlib>
#include <optional>
#include <thread>

#include "oak/platform/portable/PortableConfig.h"
#include "oak/platform/portable/PortableFiles.h"
#include "oak/platform/portable/SystemBinding.h"

namespace oak {
namespace {

std::optional<TString> PathOf(const std::string& native) {
  const TString path = native.empty() ? TString() : WindowsPath(native);
  return path.empty() ? std::nullopt : std::optional(path);
}

// Places, which always follow the configuration.
std::optional<TString> PlaceVariable(TStringView name, const TPortableConfig& config) {
  struct TPlaceName {
    TStringView Name;
    const std::string TPortableConfig::*Place;
  };
  static constexpr TPlaceName places[] = {
      {u"USERPROFILE", &TPortableConfig::Home},
      {u"APPDATA", &TPortableConfig::ConfigHome},
      {u"LOCALAPPDATA", &TPortableConfig::DataHome},
      {u"TEMP", &TPortableConfig::Temp},
      {u"TMP", &TPortableConfig::Temp},
      {u"SystemRoot", &TPortableConfig::Windows},
      {u"windir", &TPortableConfig::Windows},
      {u"ProgramFiles", &TPortableConfig::ProgramFiles},
      {u"ProgramW6432", &TPortableConfig::ProgramFiles},
      {u"ProgramFiles(x86)", &TPortableConfig::ProgramFilesX86},
      {u"ProgramData", &TPortableConfig::ProgramData},
      {u"ALLUSERSPROFILE", &TPortableConfig::ProgramData},
  };
  for (const TPlaceName& place : places)
    if (SameText(place.Name, name)) return PathOf(config.*place.Place);
  const TString home = WindowsPath(config.Home);
  const TString drive = ExtractFileDrive(home);
  if (SameText(name, u"HOMEDRIVE") && !drive.empty()) return drive;
  if (SameText(name, u"HOMEPATH") && !drive.empty()) return home.substr(drive.size());
  if (!SameText(name, u"SystemDrive")) return std::nullopt;
  return TString(1, config.Drives.empty() ? u'C' : config.Drives.front().Letter) + u":";
}

// Facts that the process's own environment may override.
std::optional<TString> FactVariable(TStringView name, const TPortableConfig& config) {
  if (SameText(name, u"USERNAME")) return config.UserName;
  if (SameText(name, u"COMPUTERNAME")) return config.ComputerName;
  if (SameText(name, u"USERDOMAIN")) return config.ComputerName;
  if (SameText(name, u"OS")) return u"Windows_NT";
  if (SameText(name, u"NUMBER_OF_PROCESSORS"))
    return IntToStr(std::max(1u, std::thread::hardware_concurrency()));
  return std::nullopt;
}

// Exactly spelled first, then in any case.
std::optional<TString> ProcessVariable(TStringView name) {
  if (const char* exact = std::getenv(ToUtf8(name).c_str())) return FromUtf8(exact);
  for (char** entry = environ; entry && *entry; ++entry) {
    const std::string_view text = *entry;
    const std::size_t end = text.find('=');
    if (end == std::string_view::npos || end == 0) continue;
    if (SameText(FromUtf8(text.substr(0, end)), name)) return FromUtf8(text.substr(end + 1));
  }
  return std::nullopt;
}

std::optional<TString> Variable(TStringView name) {
  if (name.empty() || name.find(u'=') != TStringView::npos) return std::nullopt;
  const auto config = PortableConfig();
  if (auto place = PlaceVariable(name, *config)) return place;
  if (auto own = ProcessVariable(name)) return own;
  return FactVariable(name, *config);
}

DWORD STDAPICALLTYPE GetEnvironmentVariableW(LPCWSTR name, LPWSTR buffer, DWORD capacity) {
  return SystemCall<DWORD>(0, [&]() -> DWORD {
    const auto value = Variable(ViewOf(name));
    if (!value) return FailWith<DWORD>(ERROR_ENVVAR_NOT_FOUND, 0);
    detail::SetLastErrorDirect(ERROR_SUCCESS);  // tells an empty value from a failure
    return AnswerText(*value, buffer, capacity);
  });
}

// "%name%" becomes the variable; names that there are not stay as they are, and
// their second "%" may begin the next one.
TString Expanded(TStringView text) {
  TString result;
  for (std::size_t i = 0; i < text.size();) {
    const std::size_t end = text[i] == u'%' ? text.find(u'%', i + 1) : TStringView::npos;
    const auto value =
        end == TStringView::npos ? std::nullopt : Variable(text.substr(i + 1, end - i - 1));
    if (value) {
      result += *value;
      i = end + 1;
    } else {
      result += text[i++];
    }
  }
  return result;
}

DWORD STDAPICALLTYPE ExpandEnvironmentStringsW(LPCWSTR source, LPWSTR buffer, DWORD capacity) {
  return SystemCall<DWORD>(0, [&]() -> DWORD {
    if (!source) return FailWith<DWORD>(ERROR_INVALID_PARAMETER, 0);
    const TString text = Expanded(source);
    CopyText(text, buffer, capacity);
    return static_cast<DWORD>(text.size() + 1);  // with the end, fitting or not
  });
}

}  // namespace

#define BIND(Name) api.Name.SetFunction(&Name)
void BindSystemEnvironment(TApi& api) {
  BIND(GetEnvironmentVariableW);
  BIND(ExpandEnvironmentStringsW);
}
#undef BIND

}  // namespace oak
