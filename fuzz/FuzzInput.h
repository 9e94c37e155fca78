// Turning the bytes of a fuzzer into the inputs of the library.
#pragma once

#include <cstdint>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <vector>

#include "oak/base/Pidl.h"
#include "oak/base/Text.h"
#include "oak/platform/Console.h"

namespace fuzz {

/// Makes drive C a small directory, so that a walk by names ends soon whatever lies
/// on the machine. Once for the process.
inline void UseSmallDrive() {
  static const bool done = [] {
    const auto root = std::filesystem::temp_directory_path() / "oak-fuzz-drive";
    std::filesystem::create_directories(root / "usr" / "share");
    std::ofstream(root / "main.cpp").put('x');
    std::string error;
    return oak::MapDriveFromArgument("C", root.string(), error);
  }();
  (void)done;
}

/// The bytes as 16-bit text, any unit value.
inline oak::TString ToText(const std::uint8_t* data, std::size_t size) {
  oak::TString text(size / 2, u'\0');
  if (!text.empty()) std::memcpy(text.data(), data, text.size() * 2);
  return text;
}

/// Two texts, divided at the first zero unit.
inline std::pair<oak::TString, oak::TString> ToTwoTexts(const std::uint8_t* data,
                                                        std::size_t size) {
  oak::TString text = ToText(data, size);
  const std::size_t zero = text.find(u'\0');
  if (zero == oak::TString::npos) return {text, {}};
  return {text.substr(0, zero), text.substr(zero + 1)};
}

/// The bytes as a list: each element as long as it says, cut where the bytes end.
/// The interface of a pidl has no length, so that a list must end inside its block;
/// everything else in it is left as it came.
class TAnyPidl {
 public:
  TAnyPidl(const std::uint8_t* data, std::size_t size) : fBytes(data, data + size) {
    fBytes.resize(size + 2, 0);
    std::size_t at = 0;
    for (;;) {
      USHORT length = 0;
      std::memcpy(&length, fBytes.data() + at, sizeof(length));
      if (length < sizeof(length) || at + length > size) break;
      at += length;
    }
    fBytes[at] = fBytes[at + 1] = 0;
  }
  oak::PCItemIdList Get() const { return reinterpret_cast<oak::PCItemIdList>(fBytes.data()); }

 private:
  std::vector<std::uint8_t> fBytes;
};

}  // namespace fuzz
