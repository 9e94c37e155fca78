// How text lies in the bytes of files and streams.
#pragma once

#include <cstdint>
#include <string>
#include <string_view>

#include "oak/base/Text.h"

namespace oak {

/// A form of text in bytes: a small value. Decoding never fails: what is no text
/// in that form becomes U+FFFD. Any thread.
class TEncoding {
 public:
  enum TKind : std::uint8_t {
    ekAnsi,     ///< The system's code page; Latin-1 where the system converts nothing.
    ekUtf8,     ///< UTF-8.
    ekUtf16LE,  ///< 16-bit units, low byte first.
    ekUtf16BE   ///< 16-bit units, high byte first.
  };

  constexpr TEncoding(TKind kind = ekUtf8) noexcept : fKind(kind) {}
  static constexpr TEncoding ANSI() noexcept { return ekAnsi; }
  static constexpr TEncoding UTF8() noexcept { return ekUtf8; }
  static constexpr TEncoding Unicode() noexcept { return ekUtf16LE; }
  static constexpr TEncoding BigEndianUnicode() noexcept { return ekUtf16BE; }

  constexpr TKind GetKind() const noexcept { return fKind; }
  constexpr bool operator==(const TEncoding&) const noexcept = default;
  /// Bytes of one unit: 2 for the 16-bit forms, else 1.
  constexpr std::size_t GetUnitSize() const noexcept { return fKind >= ekUtf16LE ? 2 : 1; }
  /// The byte order mark; empty for ekAnsi, which has none.
  std::string_view GetPreamble() const noexcept;
  /// The text of bytes without mark. 16-bit forms keep lone surrogates, which
  /// names of files may hold.
  TString GetString(std::string_view bytes) const;
  /// The bytes of a text, without mark. What the code page lacks becomes "?".
  std::string GetBytes(TStringView text) const;
  /// True if the text comes back from its bytes as it was.
  bool CanHold(TStringView text) const;

  /// The length of the mark that the bytes begin with, or 0; `encoding` becomes
  /// the mark's, or `fallback` without one.
  static std::size_t GetBufferEncoding(std::string_view bytes, TEncoding& encoding,
                                       TEncoding fallback = ANSI()) noexcept;
  /// As GetBufferEncoding; bytes without mark are UTF-8 if they are well formed,
  /// else ANSI.
  static std::size_t Detect(std::string_view bytes, TEncoding& encoding);

 private:
  TKind fKind;
};

/// The byte order mark at the start of some bytes. Any thread.
class TBOM {
 public:
  /// Looks at the first bytes; three are enough.
  explicit TBOM(std::string_view bytes) noexcept;
  /// Reads the first bytes of a stream and goes back to where it stood. A stream
  /// that can't be read or sought has no mark.
  explicit TBOM(IStream* stream) noexcept;

  bool Exists() const noexcept { return fLength > 0; }
  /// Bytes of the mark, 0 without one.
  std::size_t GetLength() const noexcept { return fLength; }
  /// What the mark tells; ANSI without one.
  TEncoding GetEncoding() const noexcept { return fEncoding; }

 private:
  TEncoding fEncoding = TEncoding::ANSI();
  std::size_t fLength = 0;
};

}  // namespace oak
