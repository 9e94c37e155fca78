// Names for objects whose own name is taken.
#include <limits.h>
#include <sys/stat.h>

#include <algorithm>
#include <cerrno>

#include "oak/platform/portable/FileTransfer.h"
#include "oak/platform/portable/PortableFiles.h"

namespace oak {
namespace {

constexpr unsigned MostAttempts = 100000;

// Where the extension of a file starts; the end for folders, and for names that start with the dot.
std::size_t ExtensionOf(const std::string& name, bool folder) {
  const std::size_t dot = folder ? std::string::npos : name.rfind('.');
  return dot == std::string::npos || dot == 0 ? name.size() : dot;
}

// Cuts the stem, not within a character, until the whole fits into a directory entry.
std::string Fitting(std::string stem, const std::string& rest) {
  if (rest.size() >= NAME_MAX) return (stem + rest).substr(0, NAME_MAX);
  std::size_t size = std::min(stem.size(), NAME_MAX - rest.size());
  if (size < stem.size())
    while (size > 0 && (static_cast<unsigned char>(stem[size]) & 0xC0) == 0x80) --size;
  stem.resize(size);
  return stem + rest;
}

std::string Numbered(unsigned number) {
  return number < 2 ? std::string() : " (" + std::to_string(number) + ")";
}

}  // namespace

std::string CandidateName(const std::string& name, bool folder, TFreeName form, unsigned attempt) {
  if (form == TFreeName::Shortcut)
    return Fitting(name, " - Shortcut" + Numbered(attempt + 1) + ".lnk");
  if (form == TFreeName::Number && attempt == 0) return name;
  const std::size_t dot = ExtensionOf(name, folder);
  const std::string mark = form == TFreeName::Copy ? " - Copy" : "";
  return Fitting(name.substr(0, dot), mark + Numbered(attempt + 1) + name.substr(dot));
}

int AtFreeName(const std::string& directory, const std::string& name, bool folder, TFreeName form,
               std::string& made, const std::function<int(const std::string& path)>& make) {
  for (unsigned attempt = 0; attempt < MostAttempts; ++attempt) {
    made = JoinNative(directory, CandidateName(name, folder, form, attempt));
    struct stat info;
    if (::lstat(made.c_str(), &info) == 0) continue;
    const int error = make(made);
    if (error != EEXIST) return error;  // somebody else was faster
  }
  return EEXIST;
}

}  // namespace oak
