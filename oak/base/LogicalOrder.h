// The order in which the platform's file views list names.
//
// Names are compared from left to right, each run of the digits 0 to 9 as one
// number of any length ("a2" before "a10"). Everything else goes by this order:
//   control characters
//   ' - blank ! " # $ % & ( ) * , . / : ; ? @ [ \ ] ^ _ ` { | } ~ + < = >
//   punctuation, symbols, blanks and combining marks beyond ASCII, by code
//   numbers, by value
//   Latin letters without regard to case and accent; ß æ œ þ as two letters
//   all other letters by the code of their capital
// A name that is the start of another comes first. Names that are equal so far
// are told apart by their accents, then by leading zeros: the first number that
// has more of them comes first ("01" before "1"). Case never matters.
//
// All functions are pure: no locale, no environment; any thread.
#pragma once

#include <compare>
#include <cstdint>
#include <span>
#include <string>
#include <vector>

#include "oak/base/Text.h"

namespace oak {

/// Negative, 0 or positive. 0 only for names that differ at most in case.
int CompareLogical(TStringView a, TStringView b);

/// A name turned into bytes whose plain order is the order of the names. Worth
/// making when a name is compared more than a few times. About as many bytes as
/// the name has characters, plus 3.
class TLogicalKey {
 public:
  TLogicalKey() = default;
  const std::string& GetBytes() const noexcept { return fBytes; }
  /// The order of CompareLogical.
  friend std::strong_ordering operator<=>(const TLogicalKey& a, const TLogicalKey& b) noexcept {
    return a.fBytes.compare(b.fBytes) <=> 0;
  }
  friend bool operator==(const TLogicalKey& a, const TLogicalKey& b) noexcept = default;

 private:
  friend TLogicalKey MakeLogicalKey(TStringView name);
  std::string fBytes;
};
TLogicalKey MakeLogicalKey(TStringView name);

/// The numbers of the names (0 to size - 1) in sorted order. Names that compare
/// equal are ordered by their code units, equal names by their numbers, so the
/// result does not depend on the method. Throws std::bad_alloc, and
/// std::length_error for 2^32 names or more.
std::vector<std::uint32_t> SortLogical(std::span<const TStringView> names);
std::vector<std::uint32_t> SortLogical(std::span<const TString> names);

}  // namespace oak
