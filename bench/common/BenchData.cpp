#include "bench/common/BenchData.h"

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <random>

namespace bench {
namespace {

namespace fs = std::filesystem;

int FileCount() {
  if (const char* count = std::getenv("OAK_BENCH_FILES")) return std::max(1, std::atoi(count));
  return std::getenv("OAK_BENCH_SMOKE") ? 500 : 100'000;
}

fs::path DataRoot() { return fs::temp_directory_path() / "oak-bench-data"; }

oak::TString MakeName(std::mt19937& random, int number) {
  static const char16_t* const words[] = {u"Report", u"invoice", u"IMG_",  u"Übersicht", u"notes",
                                          u"main",   u"résumé",  u"Draft", u"data-",     u"проект"};
  static const char16_t* const extensions[] = {u".txt", u".cpp", u".h", u".JPG",
                                               u".md",  u".pdf", u""};
  oak::TString name = words[random() % std::size(words)];
  if (random() % 2) name += u" ";
  name += oak::IntToStr(static_cast<std::int64_t>(random() % 5000));
  if (random() % 3 == 0)
    name += u" (" + oak::IntToStr(static_cast<std::int64_t>(random() % 40)) + u")";
  // Unique whatever came before.
  name += u"_" + oak::IntToHex(static_cast<std::uint64_t>(number), 5);
  return name + extensions[random() % std::size(extensions)];
}

void Touch(const fs::path& path) { std::ofstream(path).put('x'); }

/// Makes the data once; a half-made folder of an earlier run is begun anew.
template <class TMake>
std::string Generated(const fs::path& folder, TMake&& make) {
  if (!fs::exists(folder)) {
    const fs::path unfinished = folder.string() + ".new";
    fs::remove_all(unfinished);
    fs::create_directories(unfinished);
    make(unfinished);
    fs::rename(unfinished, folder);
  }
  return folder.string();
}

void MakeTree(const fs::path& root, int files) {
  std::mt19937 random(7);
  std::vector<fs::path> folders{root};
  std::vector<int> depths{0};
  const int folderCount = std::max(1, files / 10);
  while (static_cast<int>(folders.size()) < folderCount) {
    const std::size_t parent = random() % folders.size();
    if (depths[parent] == 8) continue;
    folders.push_back(folders[parent] / ("dir" + std::to_string(folders.size())));
    depths.push_back(depths[parent] + 1);
    fs::create_directory(folders.back());
  }
  for (int i = 0; i < files; ++i)
    Touch(folders[random() % folders.size()] / fs::path(oak::ToUtf8(MakeName(random, i))));
}

}  // namespace

std::string Folder() {
  if (const char* folder = std::getenv("OAK_BENCH_FOLDER")) return folder;
  return Generated(DataRoot() / ("folder-" + std::to_string(FileCount())), [](const fs::path& p) {
    for (const oak::TString& name : Names()) Touch(p / fs::path(oak::ToUtf8(name)));
  });
}

std::string Tree() {
  if (const char* tree = std::getenv("OAK_BENCH_TREE")) return tree;
  return Generated(DataRoot() / ("tree-" + std::to_string(2 * FileCount())),
                   [](const fs::path& p) { MakeTree(p, 2 * FileCount()); });
}

std::string Pictures() {
  const int count = std::max(1, FileCount() / 10);
  return Generated(DataRoot() / ("pictures-" + std::to_string(count)), [&](const fs::path& folder) {
    const std::string start("\x89PNG\r\n\x1a\n\0\0\0\rIHDR\0\0\4\0\0\0\3\0\x8\6\0\0\0", 29);
    const std::string pixels = "crc." + std::string({0, 0, 4, 0}) + "IDAT" + std::string(1024, 'x');
    for (int i = 0; i < count; ++i)
      std::ofstream(folder / ("IMG_" + std::to_string(i) + ".png"), std::ios::binary)
          << start << pixels;
  });
}

const std::vector<oak::TString>& Names() {
  static const std::vector<oak::TString> names = [] {
    std::mt19937 random(42);
    std::vector<oak::TString> made;
    for (int i = 0; i < FileCount(); ++i) made.push_back(MakeName(random, i));
    return made;
  }();
  return names;
}

}  // namespace bench
