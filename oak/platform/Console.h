// The edge between a console program and the library.
#pragma once

#include <string>
#include <string_view>
#include <vector>

#include "oak/base/Text.h"

namespace oak {

/// The program's arguments in UTF-8, without the program's name, whatever the
/// system hands to main. Also makes standard output take UTF-8.
std::vector<std::string> ConsoleArguments(int argc, char** argv);

/// A path as the library writes it for one that the user typed: a native absolute
/// path is mapped to a drive, every other text stays.
TString PathFromArgument(std::string_view argument);

/// Makes a native directory the root of a drive ("C" or "C:"), and this process
/// the only one that sees it so. False with a reason in `error` if the letter or
/// the directory is no good or the system has real drives.
bool MapDriveFromArgument(std::string_view drive, std::string_view directory, std::string& error);

}  // namespace oak
