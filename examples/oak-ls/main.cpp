// oak-ls: lists or describes any place of the shell namespace.
#include <algorithm>
#include <cstdio>
#include <filesystem>
#include <numeric>

#include "Description.h"
#include "Options.h"
#include "oak/base/LogicalOrder.h"
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
  Ref<IItemIdList> item = TOakItemIdList::Parse(PathFromArgument(place), nullptr, true);
  std::error_code error;
  if (item->IsInvalid() && std::filesystem::exists(place, error)) {
    // The shell has no current directory.
    const std::string path = std::filesystem::absolute(place, error).lexically_normal().string();
    item = TOakItemIdList::Parse(PathFromArgument(path), nullptr, true);
  }
  return item->IsInvalid() ? nullptr : item;
}

std::vector<std::uint32_t> ShellOrder(const std::vector<TDescription>& rows) {
  std::vector<std::uint32_t> order(rows.size());
  std::iota(order.begin(), order.end(), 0u);
  return order;
}

/// Folders first, each kind by name with numbers by value.
std::vector<std::uint32_t> SortedOrder(const std::vector<TDescription>& rows) {
  TStringArray names;
  for (const TDescription& row : rows) names.push_back(FromUtf8(row.Name));
  std::vector<std::uint32_t> order = SortLogical(names);
  std::stable_partition(order.begin(), order.end(),
                        [&](std::uint32_t row) { return rows[row].IsFolder; });
  return order;
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
  std::vector<TDescription> rows;
  while (cursor.Next())
    if (cursor.ShowObjectAccordingShowOptions(shown)) rows.push_back(Describe(cursor));
  // Other folders than directories have an order of their own.
  const bool isDirectory = cursor.IsFileSystemFolder();
  for (const std::uint32_t row : isDirectory ? SortedOrder(rows) : ShellOrder(rows))
    Print(rows[row], options);
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
