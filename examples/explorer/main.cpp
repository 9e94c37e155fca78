// explorer: a window with the namespace as a tree and the chosen folder as rows.
#include <cstdio>
#include <cstdlib>
#include <filesystem>

#include "Show.h"
#include "oak/framework/Application.h"
#include "oak/framework/Styles.h"
#include "oak/namespace/OakItemIdList.h"
#include "oak/platform/Console.h"

using namespace oak;

namespace {

constexpr char Usage[] =
    "usage: explorer [--tour] [--screenshot FILE.png] [--density N] [--style NAME] [PLACE]\n"
    "  --tour             select, menus, sort, open, go up; after each step the window is "
    "printed,\n"
    "                     on Windows saved as explorer-1.png and so on. What a system without a\n"
    "                     screen does anyway\n"
    "  --screenshot FILE  save a picture of the window and end (Windows)\n"
    "  --density N        tour or picture as on a monitor of N pixels per inch (Windows)\n"
    "  --style NAME       Light or Dark instead of the system's colours\n"
    "PLACE is a path or a name such as \"This PC\"; default: your home folder.\n";

/// False if the arguments make no sense.
bool ReadOptions(const std::vector<std::string>& arguments, TShowOptions& options,
                 std::string& place) {
  for (std::size_t i = 0; i < arguments.size(); ++i) {
    if (arguments[i] == "--tour")
      options.Tour = true;
    else if (arguments[i] == "--screenshot" && i + 1 < arguments.size())
      options.Screenshot = arguments[++i];
    else if (arguments[i] == "--density" && i + 1 < arguments.size())
      options.Density = std::atoi(arguments[++i].c_str());
    else if (arguments[i] == "--style" && i + 1 < arguments.size())
      options.Style = arguments[++i];
    else if (arguments[i].starts_with("--") || !place.empty())
      return false;
    else
      place = arguments[i];
  }
  return true;
}

Ref<IItemIdList> PlaceOf(const std::string& place) {
  if (place.empty()) return TOakItemIdList::CreateForSpecialFolder(SF_PROFILE, true);
  std::error_code error;
  const std::filesystem::path path = std::filesystem::absolute(place, error);
  const bool isDirectory = std::filesystem::is_directory(path, error);
  const std::string text = isDirectory ? path.lexically_normal().string() : place;
  return TOakItemIdList::Parse(PathFromArgument(text), nullptr, true);
}

}  // namespace

int main(int argc, char** argv) try {
  TShowOptions options;
  std::string place;
  if (!ReadOptions(ConsoleArguments(argc, argv), options, place)) {
    std::fputs(Usage, stderr);
    return 2;
  }
  const Ref<IItemIdList> folder = PlaceOf(place);
  if (folder->IsInvalid() || !folder->IsFolder()) {
    std::fprintf(stderr, "explorer: \"%s\" is no folder\n", place.c_str());
    return 1;
  }
  if (!options.Style.empty() && !TStyleManager::TrySetStyle(FromUtf8(options.Style))) {
    std::fprintf(stderr, "explorer: there is no style \"%s\"\n", options.Style.c_str());
    return 1;
  }
  Application().SetTitle(u"Explorer");
  auto& form = Application().CreateForm<TExplorerForm>();
  form.GoTo(folder);
  return ShowForm(form, options);
} catch (const std::exception& error) {
  std::fprintf(stderr, "explorer: %s\n", error.what());
  return 1;
}
