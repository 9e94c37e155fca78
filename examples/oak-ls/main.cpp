// oak-ls: lists or describes any place of the shell namespace.
#include <algorithm>
#include <cstdio>

#include "Description.h"
#include "Options.h"
#include "oak/namespace/OakItemIdList.h"
#include "oak/namespace/Shell_Win32.h"
#include "oak/platform/Console.h"

using namespace oak;

namespace {

enum TExitCode { ecDone = 0, ecUnreadable = 1, ecNotFound = 2 };

void Complain(const std::string& message) { std::fprintf(stderr, "oak-ls: %s\n", message.c_str()); }

void Print(const TDescription& description, const TOptions& options) {
  if (options.Json)
    std::printf("%s\n", ToJson(description).c_str());
  else if (options.Names)
    std::printf("%s\n", ToBlock(description).c_str());
  else
    std::printf("%s\n", ToRow(description).c_str());
}

/// The place that the user means; nil if there is none.
Ref<IItemIdList> FindPlace(const std::string& place) {
  const Ref<IItemIdList> item = TOakItemIdList::Parse(PathFromArgument(place), nullptr, true);
  return item->IsInvalid() ? nullptr : item;
}

void List(const Ref<IItemIdList>& folder, const TOptions& options) {
  TFolderTrek cursor;
  cursor.SetShowErrorMessages(false);
  cursor.SetAcceptSearchFolderPaths(true);
  cursor.SetFileSystemOnly(options.FileSystemOnly);
  cursor.SetFilter(options.Filter);
  cursor.SetFolderIdList(folder);
  TOakShellShowOptions shown{soShowFiles, soShowNethood, soShowRecycleBin};
  if (options.Hidden) shown.Include(soShowHidden);
  while (cursor.Next())
    if (cursor.ShowObjectAccordingShowOptions(shown)) Print(Describe(cursor), options);
}

TExitCode ShowPlace(const std::string& place, const TOptions& options, bool withHeading) {
  const Ref<IItemIdList> item =
      place.empty() ? TOakItemIdList::CreateForSpecialFolder(SF_DESKTOP, true) : FindPlace(place);
  if (!item) {
    Complain("cannot find \"" + place + "\"");
    return ecNotFound;
  }
  if (withHeading) std::printf("%s:\n", place.c_str());
  if (options.Names || !item->IsFolder()) {
    TFolderTrek cursor(item);
    cursor.SetShowErrorMessages(false);
    Print(Describe(cursor), options);
  } else {
    List(item, options);
  }
  return ecDone;
}

TExitCode Guarded(const std::string& place, const TOptions& options, bool withHeading) {
  try {
    return ShowPlace(place, options, withHeading);
  } catch (const std::exception& error) {
    Complain("cannot read \"" + place + "\": " + error.what());
    return ecUnreadable;
  }
}

}  // namespace

int main(int argc, char** argv) {
  TOptions options;
  int exitCode = ecDone;
  if (!ReadOptions(ConsoleArguments(argc, argv), options, exitCode)) return exitCode;
  try {
    InitializeShell();
  } catch (const Exception& error) {
    Complain(error.what());
    return ecUnreadable;
  }
  if (options.Places.empty()) options.Places.emplace_back();
  const bool withHeadings = options.Places.size() > 1 && !options.Json && !options.Names;
  for (const std::string& place : options.Places)
    exitCode = std::max<int>(exitCode, Guarded(place, options, withHeadings));
  if (std::fflush(stdout) != 0 || std::ferror(stdout)) {
    Complain("the output could not be written");
    exitCode = std::max<int>(exitCode, ecUnreadable);
  }
  return exitCode;
}
