// Matching of names with wildcards.
//
// A filter text is one pattern or several with ";" between them. In a pattern
// "*" stands for any text, "?" for exactly one UTF-16 unit; everything else stands
// for itself ignoring case. Blanks before a pattern are skipped, blanks behind it
// count. A pattern without characters matches nothing. A pattern's final "*.*"
// stands for any rest, with a dot or without: "*.*" matches every name, "a*.*"
// every name with that start, "*.*.*" every name that holds a dot.
//
// The time is at most the product of the lengths. Any thread.
#pragma once

#include <cstdint>
#include <vector>

#include "oak/base/Text.h"

namespace oak {

/// True if one of the patterns matches the whole name.
bool MatchPatternSpec(TStringView name, TStringView spec) noexcept;

/// A filter text that is read once and used for many names. The answers are
/// those of MatchPatternSpec. A value; matching from several threads is fine as
/// long as none of them changes the list.
class TPatternList {
 public:
  /// Matches nothing.
  TPatternList() = default;
  explicit TPatternList(TStringView spec) { Add(spec); }

  /// Adds the patterns of a filter text.
  void Add(TStringView spec);
  void Clear() noexcept;
  bool IsEmpty() const noexcept { return fPatterns.empty(); }
  bool Matches(TStringView name) const noexcept;

 private:
  // General patterns are cut at their first and last "*": what lies outside has
  // its place in a name and is looked at first.
  enum class TKind : std::uint8_t { All, Exact, Prefix, Suffix, Contains, General };
  struct TPattern {
    TKind kind;
    char16_t last;                ///< Of a suffix: its last character.
    std::uint32_t begin, length;  ///< in fText
    std::uint32_t head, tail;     ///< Of a general pattern: lengths before and behind.
  };
  void AddPattern(TStringView pattern);
  bool MatchesPattern(const TPattern& pattern, TStringView name) const noexcept;

  TString fText;  ///< The texts of the patterns, upper case, without what the kind implies.
  std::vector<TPattern> fPatterns;
  bool fMatchesAll = false;
};

}  // namespace oak
