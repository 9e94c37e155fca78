// Which objects of the file system took part in a copy.
#pragma once

#include <sys/stat.h>

#include <cstdint>
#include <unordered_map>

namespace oak {

/// Objects as they were when they were seen. Others may work in the same folders meanwhile: what a
/// copy removes afterwards, of its own remains or of a source that was moved, is to be just this.
class TTransferLog {
 public:
  void Add(const struct stat& info) { fObjects.insert_or_assign(KeyOf(info), StateOf(info)); }
  bool Has(const struct stat& info) const { return fObjects.count(KeyOf(info)) != 0; }
  /// Whether nobody has written it since. A folder is judged by what lies in it.
  bool HasUnchanged(const struct stat& info) const {
    const auto found = fObjects.find(KeyOf(info));
    return found != fObjects.end() && (S_ISDIR(info.st_mode) || found->second == StateOf(info));
  }
  bool IsEmpty() const { return fObjects.empty(); }

 private:
  struct TKey {
    dev_t Device;
    ino_t Number;
    bool operator==(const TKey&) const = default;
  };
  struct THash {
    std::size_t operator()(const TKey& key) const noexcept {
      return static_cast<std::size_t>(key.Number * 0x9E3779B97F4A7C15u ^ key.Device);
    }
  };
  struct TState {
    off_t Size;
    std::int64_t Seconds, Nanoseconds;  // of the last write
    bool operator==(const TState&) const = default;
  };
  static TKey KeyOf(const struct stat& info) { return {info.st_dev, info.st_ino}; }
  static TState StateOf(const struct stat& info) {
    return {info.st_size, info.st_mtim.tv_sec, info.st_mtim.tv_nsec};
  }

  std::unordered_map<TKey, TState, THash> fObjects;
};

}  // namespace oak
