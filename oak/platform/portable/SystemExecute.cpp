// Opening of documents and starting of programs.
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstdlib>
#include <vector>

#include "oak/platform/portable/SystemFiles.h"

namespace oak {
namespace {

// What hInstApp tells of failures; numbers above 32 are successes.
constexpr int Started = 42;
constexpr int NoAssociation = 31;
constexpr int AccessDenied = 5;

// The desktop's own opener, which knows what belongs to what.
constexpr const char* Opener = "xdg-open";
// What a command prompt is here.
constexpr TStringView Prompt = u"cmd.exe";
constexpr const char* Terminal = "x-terminal-emulator";

bool IsProgram(const std::string& native) {
  struct stat info {};
  return stat(native.c_str(), &info) == 0 && S_ISREG(info.st_mode) &&
         access(native.c_str(), X_OK) == 0;
}

std::string FindProgram(std::string_view name) {
  const char* variable = std::getenv("PATH");
  std::string_view places = variable ? variable : "/usr/local/bin:/usr/bin:/bin";
  while (!places.empty()) {
    const std::size_t end = std::min(places.find(':'), places.size());
    const std::string candidate = JoinNative(end ? places.substr(0, end) : ".", name);
    if (IsProgram(candidate)) return candidate;
    places.remove_prefix(std::min(end + 1, places.size()));
  }
  return {};
}

// Parameters stand between blanks, or in double quotes; \" is a quote.
std::vector<std::string> SplitParameters(TStringView text) {
  std::vector<std::string> result;
  TString part;
  bool quoted = false, any = false;
  for (std::size_t i = 0; i < text.size(); ++i) {
    const char16_t c = text[i];
    if (c == u'\\' && i + 1 < text.size() && text[i + 1] == u'"') {
      part += text[++i];
      any = true;
    } else if (c == u'"') {
      quoted = !quoted;
      any = true;
    } else if ((c == u' ' || c == u'\t') && !quoted) {
      if (any) result.push_back(ToUtf8(part));
      part.clear();
      any = false;
    } else {
      part += c;
      any = true;
    }
  }
  if (any) result.push_back(ToUtf8(part));
  return result;
}

// Starts a program that goes on when this one ends. Nothing but system calls
// between fork and exec: other threads may hold any lock.
bool Spawn(const std::vector<std::string>& command, const std::string& directory) {
  std::vector<char*> arguments;
  for (const std::string& argument : command)
    arguments.push_back(const_cast<char*>(argument.c_str()));
  arguments.push_back(nullptr);
  const pid_t child = fork();
  if (child < 0) return false;
  if (child == 0) {
    setsid();
    const pid_t grandchild = fork();
    if (grandchild != 0) _exit(grandchild < 0 ? 1 : 0);
    if (!directory.empty() && chdir(directory.c_str()) != 0) _exit(127);
    execv(arguments[0], arguments.data());
    _exit(127);
  }
  int status = 0;
  while (waitpid(child, &status, 0) < 0 && errno == EINTR) {
  }
  return WIFEXITED(status) && WEXITSTATUS(status) == 0;
}

bool IsUrl(TStringView text) {
  const std::size_t colon = text.find(u':');
  if (colon == TStringView::npos || colon < 2) return false;
  return std::all_of(text.begin(), text.begin() + static_cast<std::ptrdiff_t>(colon),
                     [](char16_t c) {
                       return (c >= u'a' && c <= u'z') || (c >= u'A' && c <= u'Z') ||
                              (c >= u'0' && c <= u'9') || c == u'+' || c == u'-' || c == u'.';
                     });
}

TString FileOf(const SHELLEXECUTEINFOW& info) {
  const auto& toPath = Api().SHGetPathFromIDListEx;
  if ((info.fMask & SEE_MASK_IDLIST) == 0 || !info.lpIDList || !toPath.Function())
    return TString(ViewOf(info.lpFile));
  TString path(32768, u'\0');
  const auto* pidl = static_cast<PCIDLIST_ABSOLUTE>(info.lpIDList);
  if (!toPath.Function()(pidl, WBuffer(path), static_cast<DWORD>(path.size()), 0)) return {};
  return FromW(W(path));
}

BOOL Fail(SHELLEXECUTEINFOW& info, DWORD code, int instance) {
  info.hInstApp = reinterpret_cast<HINSTANCE>(static_cast<LONG_PTR>(instance));
  return FailWith(code, FALSE);
}

// The command that opens a file or address; empty with the last error set if
// there is none.
std::vector<std::string> CommandFor(const TString& file, TStringView parameters) {
  std::vector<std::string> command;
  if (SameText(file, Prompt)) {
    command = {FindProgram(Terminal)};
  } else if (IsUrl(file)) {
    command = {FindProgram(Opener), ToUtf8(file)};
  } else {
    std::string native;
    if (!InfoForCall(W(file), native)) return {};
    if (IsProgram(native)) {
      command = {native};
      for (std::string& parameter : SplitParameters(parameters))
        command.push_back(std::move(parameter));
    } else {
      command = {FindProgram(Opener), native};
    }
  }
  return command.front().empty() ? FailWith(ERROR_NO_ASSOCIATION, std::vector<std::string>())
                                 : command;
}

BOOL STDAPICALLTYPE ShellExecuteExW(SHELLEXECUTEINFOW* info) {
  return SystemCall<BOOL>(FALSE, [&] {
    if (!info || info->cbSize != sizeof *info) return FailWith(ERROR_INVALID_PARAMETER, FALSE);
    if (info->fMask & SEE_MASK_NOCLOSEPROCESS) info->hProcess = nullptr;
    const TStringView verb = ViewOf(info->lpVerb);
    if (!verb.empty() && !SameText(verb, u"open") && !SameText(verb, u"explore"))
      return Fail(*info, ERROR_NO_ASSOCIATION, NoAssociation);
    const TString file = FileOf(*info);
    const auto command = CommandFor(file, ViewOf(info->lpParameters));
    if (command.empty()) {
      const DWORD code = detail::GetLastErrorDirect();
      return Fail(*info, code,
                  code == ERROR_NO_ASSOCIATION ? NoAssociation : static_cast<int>(code & 31));
    }
    std::string directory;
    if (!ViewOf(info->lpDirectory).empty()) {
      const auto place = InfoForCall(info->lpDirectory, directory);
      if (!place || !place->IsDirectory()) return Fail(*info, ERROR_DIRECTORY, AccessDenied);
    }
    if (!Spawn(command, directory)) return Fail(*info, ERROR_ACCESS_DENIED, AccessDenied);
    info->hInstApp = reinterpret_cast<HINSTANCE>(static_cast<LONG_PTR>(Started));
    return TRUE;
  });
}

// Above 32 for success, as ever.
HINSTANCE STDAPICALLTYPE ShellExecuteW(HWND window, LPCWSTR verb, LPCWSTR file, LPCWSTR parameters,
                                       LPCWSTR directory, int show) {
  SHELLEXECUTEINFOW info{};
  info.cbSize = sizeof info;
  info.hwnd = window;
  info.lpVerb = verb;
  info.lpFile = file;
  info.lpParameters = parameters;
  info.lpDirectory = directory;
  info.nShow = show;
  const bool done = Api().ShellExecuteExW(&info) != FALSE;  // hInstApp tells why it failed
  return done ? reinterpret_cast<HINSTANCE>(static_cast<LONG_PTR>(Started)) : info.hInstApp;
}

}  // namespace

void BindSystemExecute(TApi& api) {
  api.ShellExecuteExW.SetFunction(&ShellExecuteExW);
  api.ShellExecuteW.SetFunction(&ShellExecuteW);
}

}  // namespace oak
