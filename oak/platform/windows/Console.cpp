#include "oak/platform/Console.h"

#include <shellapi.h>

namespace oak {

std::vector<std::string> ConsoleArguments(int, char**) {
  SetConsoleOutputCP(CP_UTF8);
  std::vector<std::string> arguments;
  int count = 0;
  LPWSTR* texts = CommandLineToArgvW(GetCommandLineW(), &count);
  for (int i = 1; texts && i < count; ++i) arguments.push_back(ToUtf8(FromW(texts[i])));
  LocalFree(texts);
  return arguments;
}

TString PathFromArgument(std::string_view argument) { return FromUtf8(argument); }

bool MapDriveFromArgument(std::string_view, std::string_view, std::string& error) {
  error = "drives can't be mapped on Windows";
  return false;
}

}  // namespace oak
