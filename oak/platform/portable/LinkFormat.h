// Constants and cursors of the shortcut file format.
#pragma once

#include <cstring>
#include <span>
#include <vector>

#include "oak/base/Text.h"

namespace oak::lnk {

inline constexpr DWORD HeaderSize = 0x4C;
inline constexpr GUID ClassId{0x00021401, 0, 0, {0xC0, 0, 0, 0, 0, 0, 0, 0x46}};

enum TFlag : DWORD {
  HasTarget = 0x1,
  HasLinkInfo = 0x2,
  HasName = 0x4,
  HasRelativePath = 0x8,
  HasWorkingDirectory = 0x10,
  HasArguments = 0x20,
  HasIconLocation = 0x40,
  IsUnicode = 0x80,
  ForceNoLinkInfo = 0x100,
  HasEnvironment = 0x200,
  KnownFlags = 0x3FF
};

inline constexpr DWORD InfoHasLocalPath = 1;
inline constexpr DWORD InfoHasNetworkPath = 2;
inline constexpr DWORD InfoHeaderAnsi = 0x1C;
inline constexpr DWORD InfoHeaderUnicode = 0x24;
inline constexpr DWORD EnvironmentBlock = 0xA0000001;
inline constexpr DWORD EnvironmentBlockSize = 0x314;
inline constexpr std::size_t EnvironmentUnicodeAt = 8 + MAX_PATH;

/// Little-endian reads that never pass the end: a read that would gives 0 and
/// marks the reader as failed.
class TReader {
 public:
  explicit TReader(std::span<const BYTE> bytes) : fBytes(bytes) {}

  std::size_t Position() const { return fAt; }
  std::size_t Left() const { return fBytes.size() - fAt; }
  bool HasFailed() const { return fFailed; }
  template <class T>
  T Read() {
    T value{};
    const std::span<const BYTE> bytes = Take(sizeof(T));
    if (!bytes.empty()) std::memcpy(&value, bytes.data(), sizeof(T));
    return value;
  }
  /// Empty if fewer bytes are left.
  std::span<const BYTE> Take(std::size_t count) {
    if (count > Left()) {
      fFailed = true;
      return {};
    }
    fAt += count;
    return fBytes.subspan(fAt - count, count);
  }

 private:
  std::span<const BYTE> fBytes;
  std::size_t fAt = 0;
  bool fFailed = false;
};

class TWriter {
 public:
  template <class T>
  void Write(const T& value) {
    const auto* bytes = reinterpret_cast<const BYTE*>(&value);
    fBytes.insert(fBytes.end(), bytes, bytes + sizeof(T));
  }
  void Append(std::span<const BYTE> bytes) {
    fBytes.insert(fBytes.end(), bytes.begin(), bytes.end());
  }
  /// Without a terminator.
  void WriteText(TStringView text) {
    const auto* bytes = reinterpret_cast<const BYTE*>(text.data());
    fBytes.insert(fBytes.end(), bytes, bytes + text.size() * sizeof(char16_t));
  }
  /// With a terminator; what the 8-bit set lacks becomes "?".
  void WriteAnsi(TStringView text) {
    for (const char16_t c : text) fBytes.push_back(c < 0x80 ? static_cast<BYTE>(c) : BYTE{'?'});
    fBytes.push_back(0);
  }
  /// Overwrites a 32-bit number that was written before.
  void Patch(std::size_t at, std::size_t value) {
    const auto number = static_cast<DWORD>(value);
    std::memcpy(fBytes.data() + at, &number, sizeof(number));
  }
  std::size_t Position() const { return fBytes.size(); }
  std::vector<BYTE> Finish() { return std::move(fBytes); }

 private:
  std::vector<BYTE> fBytes;
};

/// A text of 8-bit units, taken as UTF-8 where it is that, else as Latin-1.
TString FromAnsi(std::span<const BYTE> bytes);
/// The text up to a terminator or the end.
TString FromAnsiTerminated(std::span<const BYTE> bytes);
TString FromUnicodeTerminated(std::span<const BYTE> bytes);

}  // namespace oak::lnk
