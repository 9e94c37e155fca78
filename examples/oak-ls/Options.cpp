#include "Options.h"

#include <cstdio>

#include "oak/platform/Console.h"

namespace {

constexpr int UsageError = 2;

constexpr const char* Usage =
    "Usage: oak-ls [OPTION]... [PLACE]...\n"
    "Lists or describes places of the shell namespace; the desktop without a PLACE.\n"
    "A PLACE is a path, a class identifier (\"::{...}\"), \"shell:Name\" or names as\n"
    "the shell shows them (\"This PC\"), joined by \"\\\".\n"
    "\n"
    "  --map C=/some/dir     use a directory as a drive (not on Windows)\n"
    "  --filter \"*.txt;*.md\" only files that match; folders are always listed\n"
    "  --hidden              hidden objects too\n"
    "  --filesystem-only     only objects of the file system\n"
    "  --names               describe the place itself, with all forms of its name\n"
    "  --json                one JSON object a line\n"
    "  --help                this text\n"
    "\n"
    "Ends with 0, with 2 if a place was not found, with 1 if one could not be read.\n";

bool Complain(const std::string& message, int& exitCode) {
  std::fprintf(stderr, "oak-ls: %s\n", message.c_str());
  exitCode = UsageError;
  return false;
}

bool Map(const std::string& value, int& exitCode) {
  const std::size_t equals = value.find('=');
  std::string error = "it reads LETTER=DIRECTORY";
  if (equals != std::string::npos &&
      oak::MapDriveFromArgument(value.substr(0, equals), value.substr(equals + 1), error))
    return true;
  return Complain("--map " + value + ": " + error, exitCode);
}

/// The value of "--name value" or "--name=value"; moves `index` over it.
bool TakeValue(const std::vector<std::string>& arguments, std::size_t& index,
               const std::string& name, std::string& value) {
  const std::string& argument = arguments[index];
  if (argument.starts_with(name + "=")) {
    value = argument.substr(name.size() + 1);
    return true;
  }
  if (argument != name || index + 1 == arguments.size()) return false;
  value = arguments[++index];
  return true;
}

bool SetFlag(const std::string& argument, TOptions& options) {
  if (argument == "--hidden") return options.Hidden = true;
  if (argument == "--filesystem-only") return options.FileSystemOnly = true;
  if (argument == "--names") return options.Names = true;
  if (argument == "--json") return options.Json = true;
  return false;
}

}  // namespace

bool ReadOptions(const std::vector<std::string>& arguments, TOptions& options, int& exitCode) {
  bool onlyPlaces = false;
  std::string value;
  for (std::size_t i = 0; i < arguments.size(); ++i) {
    const std::string& argument = arguments[i];
    if (onlyPlaces || !argument.starts_with("-") || argument == "-") {
      options.Places.push_back(argument);
    } else if (argument == "--") {
      onlyPlaces = true;
    } else if (argument == "--help") {
      std::fputs(Usage, stdout);
      exitCode = 0;
      return false;
    } else if (TakeValue(arguments, i, "--map", value)) {
      if (!Map(value, exitCode)) return false;
    } else if (TakeValue(arguments, i, "--filter", value)) {
      options.Filter = oak::FromUtf8(value);
    } else if (argument == "--map" || argument == "--filter") {
      return Complain(argument + " needs a value", exitCode);
    } else if (!SetFlag(argument, options)) {
      return Complain("unknown option " + argument + "; --help lists the options", exitCode);
    }
  }
  return true;
}
