#include "oak/platform/Console.h"

#include <cctype>
#include <filesystem>

#include "oak/platform/portable/PortableConfig.h"
#include "oak/platform/portable/PortableFiles.h"

namespace oak {

std::vector<std::string> ConsoleArguments(int argc, char** argv) {
  return argc > 1 ? std::vector<std::string>(argv + 1, argv + argc) : std::vector<std::string>();
}

TString PathFromArgument(std::string_view argument) {
  // "//server" and the like are left to the shell.
  if (!argument.starts_with('/') || argument.starts_with("//")) return FromUtf8(argument);
  TString path = WindowsPath(argument);
  if (path.empty()) {
    // A drive stands for the real directory: the way there may be a link.
    std::error_code failure;
    const auto real = std::filesystem::weakly_canonical(std::filesystem::path(argument), failure);
    if (!failure) path = WindowsPath(real.string());
  }
  return path.empty() ? FromUtf8(argument) : path;
}

bool MapDriveFromArgument(std::string_view drive, std::string_view directory, std::string& error) {
  if (drive.ends_with(':')) drive.remove_suffix(1);
  if (drive.size() != 1 || !std::isalpha(static_cast<unsigned char>(drive[0]))) {
    error = "a drive is one letter";
    return false;
  }
  std::error_code failure;
  const std::filesystem::path native =
      std::filesystem::canonical(std::filesystem::path(directory), failure);
  if (failure || !std::filesystem::is_directory(native, failure)) {
    error = "there is no directory \"" + std::string(directory) + "\"";
    return false;
  }
  MapDrive(UpCase(static_cast<char16_t>(drive[0])), native.string());
  return true;
}

}  // namespace oak
