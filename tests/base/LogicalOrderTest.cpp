#include "oak/base/LogicalOrder.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <numeric>
#include <random>

namespace oak {
namespace {

int Sign(int order) { return (order > 0) - (order < 0); }

void ExpectOrder(TStringView a, TStringView b, int order) {
  SCOPED_TRACE(ToUtf8(a) + " | " + ToUtf8(b));
  EXPECT_EQ(Sign(CompareLogical(a, b)), order);
  EXPECT_EQ(Sign(CompareLogical(b, a)), -order);
  const auto keys = MakeLogicalKey(a) <=> MakeLogicalKey(b);
  EXPECT_EQ(keys < 0 ? -1 : keys > 0 ? 1 : 0, order);
}

TEST(LogicalOrder, KnownOrder) {
  const TString zeros20(20, u'0');
  const TString names[] = {// controls, symbols of ASCII, symbols beyond
                           u"", u"\u0001", u"\u001F", u"\u0085", u"'", u"-", u" ", u"!", u"#",
                           u"(2)", u".", u".a", u"_", u"{", u"~", u"+", u"=", u"«", u"–", u"“",
                           // numbers, leading zeros only where all else is equal
                           u"00", u"0", u"0 b", u"0a", u"001", u"01", u"1", u"1 ", u"01a", u"1a",
                           u"1b", u"2", u"10", u"10.05", u"10.5", u"010.15", TString(20, u'9'),
                           u"1" + zeros20, u"1" + TString(19, u'0') + u"1", u"1" + zeros20 + u"0",
                           // letters; accents and strokes only where all else is equal
                           u"a", u"a'b", u"a b", u"a.txt", u"a_1", u"a01", u"a1", u"a01b", u"a1b",
                           u"a2", u"a10", u"aa", u"Aal", u"aäl", u"äal", u"ab", u"file2b",
                           u"file10a", u"ol", u"öl", u"Øl", u"ol2", u"oma", u"strasse", u"Straße",
                           u"strassen", u"z", u"ž", u"za",
                           // other letters
                           u"ά1", u"α2", u"β", u"жук", u"Й", u"中", u"😀"};
  for (std::size_t i = 0; i < std::size(names); ++i)
    for (std::size_t j = i; j < std::size(names); ++j)
      ExpectOrder(names[i], names[j], i == j ? 0 : -1);
}

TEST(LogicalOrder, LeadingZerosByTheHundred) {
  for (const std::size_t count : {1u, 199u, 200u, 201u, 400u, 1000u})
    ExpectOrder(TString(count + 1, u'0') + u"7", TString(count, u'0') + u"7", -1);
  ExpectOrder(u"1-01", u"1-1", -1);
  ExpectOrder(u"01-1", u"1-01", -1);  // the first number decides
}

/// Names from few characters, so that many are nearly equal.
class TNames {
 public:
  explicit TNames(unsigned seed) : fRandom(seed) {}
  TString Next() {
    static constexpr TStringView kUnits[] = {u"0",      u"0",  u"1",         u"2", u"9", u"a", u"A",
                                             u"b",      u"-",  u" ",         u".", u"ä", u"Ä", u"á",
                                             u"ß",      u"ss", u"ж",         u"Ж", u"ά", u"Α", u"–",
                                             u"\u0001", u"00", u"123456789", u"æ", u"😀"};
    TString name;
    for (std::size_t left = fRandom() % 9; left > 0; --left)
      name += kUnits[fRandom() % std::size(kUnits)];
    if (fRandom() % 50 == 0) name += TString(fRandom() % 600, u'0') + u"5";
    return name;
  }

 private:
  std::mt19937 fRandom;
};

TEST(LogicalOrder, CompareAgreesWithKeys) {
  TNames names(1);
  for (int i = 0; i < 100000; ++i) {
    const TString a = names.Next();
    const TString b = names.Next();
    const auto keys = MakeLogicalKey(a) <=> MakeLogicalKey(b);
    ASSERT_EQ(Sign(CompareLogical(a, b)), keys < 0   ? -1
                                          : keys > 0 ? 1
                                                     : 0)
        << ToUtf8(a) << " | " << ToUtf8(b);
    // Equal keys mean names that differ at most in case.
    ASSERT_EQ(keys == 0, SameText(a, b)) << ToUtf8(a) << " | " << ToUtf8(b);
  }
}

void ExpectSorted(const std::vector<TString>& names) {
  std::vector<std::uint32_t> expected(names.size());
  std::iota(expected.begin(), expected.end(), 0u);
  std::stable_sort(expected.begin(), expected.end(), [&](std::uint32_t a, std::uint32_t b) {
    const int order = CompareLogical(names[a], names[b]);
    return order != 0 ? order < 0 : names[a] < names[b];
  });
  EXPECT_EQ(SortLogical(std::span<const TString>(names)), expected);
  const std::vector<TStringView> views(names.begin(), names.end());
  EXPECT_EQ(SortLogical(std::span<const TStringView>(views)), expected);
}

TEST(LogicalSort, LongCommonStartsAndEqualNames) {
  TNames names(3);
  std::vector<TString> list;
  const TString start = u"A common start of names " + TString(300, u'x');
  for (int i = 0; i < 2000; ++i) list.push_back(start.substr(0, 20 + i % 280) + names.Next());
  for (int i = 0; i < 700; ++i) list.push_back(i % 2 == 0 ? u"Equal" : u"eQual");
  for (int i = 0; i < 700; ++i) list.push_back(u"ab");  // a key that ends inside eight bytes
  for (int i = 0; i < 40; ++i) list.push_back(TString(30000, u'y') + IntToStr(i % 5));
  ExpectSorted(list);
}

}  // namespace
}  // namespace oak
