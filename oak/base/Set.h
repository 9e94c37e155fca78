// TSet<E>: a set of the values of an enumeration, one bit each.
#pragma once

#include <cstdint>
#include <initializer_list>

namespace oak {

/// Holds any subset of an enumeration whose values lie in 0..63.
template <class E>
class TSet {
 public:
  constexpr TSet() = default;
  constexpr TSet(E value) : fBits(Bit(value)) {}
  constexpr TSet(std::initializer_list<E> values) {
    for (E v : values) fBits |= Bit(v);
  }

  constexpr bool Contains(E value) const { return (fBits & Bit(value)) != 0; }
  constexpr bool IsEmpty() const { return fBits == 0; }
  constexpr void Include(E value) { fBits |= Bit(value); }
  constexpr void Exclude(E value) { fBits &= ~Bit(value); }
  /// The raw bits, value n at bit n: the form in which sets are stored.
  constexpr std::uint64_t ToBits() const { return fBits; }
  static constexpr TSet FromBits(std::uint64_t bits) {
    TSet s;
    s.fBits = bits;
    return s;
  }

  friend constexpr TSet operator+(TSet a, TSet b) { return FromBits(a.fBits | b.fBits); }
  friend constexpr TSet operator-(TSet a, TSet b) { return FromBits(a.fBits & ~b.fBits); }
  friend constexpr TSet operator*(TSet a, TSet b) { return FromBits(a.fBits & b.fBits); }
  constexpr TSet& operator+=(TSet b) { return *this = *this + b; }
  constexpr TSet& operator-=(TSet b) { return *this = *this - b; }
  friend constexpr bool operator==(TSet a, TSet b) = default;
  /// True if every member of a is one of b.
  friend constexpr bool operator<=(TSet a, TSet b) { return (a.fBits & ~b.fBits) == 0; }

 private:
  static constexpr std::uint64_t Bit(E v) { return std::uint64_t{1} << static_cast<unsigned>(v); }
  std::uint64_t fBits = 0;
};

}  // namespace oak
