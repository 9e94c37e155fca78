#include "oak/base/PatternMatch.h"

#include <gtest/gtest.h>

#include <random>

namespace oak {
namespace {

void ExpectMatch(TStringView name, TStringView spec, bool expected) {
  SCOPED_TRACE(ToUtf8(name) + " ~ " + ToUtf8(spec));
  EXPECT_EQ(MatchPatternSpec(name, spec), expected);
  EXPECT_EQ(TPatternList(spec).Matches(name), expected);
}

TEST(PatternMatch, Table) {
  const struct {
    TStringView spec;
    std::vector<TStringView> hits, misses;
  } cases[] = {
      {u"*", {u"", u"a", u"a.b"}, {}},
      {u"", {}, {u"", u"a"}},
      {u";;", {}, {u"", u"a"}},
      {u"  ", {}, {u"", u"  "}},
      {u"a;;b", {u"a", u"B"}, {u"", u";"}},
      {u"*.txt", {u"a.TXT", u".txt", u"a.b.txt"}, {u"atxt", u"a.txt ", u"txt", u""}},
      {u" *.cpp;  *.h", {u"a.cpp", u"b.H"}, {u"a.c", u"h"}},
      {u"*.cpp ;*.h", {u"a.h", u"a.cpp "}, {u"a.cpp"}},
      {u"Ä*", {u"äh", u"Ä"}, {u"a", u"xä"}},
      {u"*ß*", {u"Straße"}, {u"STRASSE"}},
      // A final "*.*" stands for any rest.
      {u"*.*", {u"", u"name", u"a.b"}, {}},
      {u"a*.*", {u"a", u"abc", u"a.b"}, {u"", u"ba"}},
      {u"*.*.*", {u"a.b", u".", u"a.", u".b"}, {u"", u"ab"}},
      {u"x;a*.*;y", {u"abc", u"x"}, {u"bc"}},
      {u"*.*x", {u"a.x"}, {u"ax"}},
      {u".*", {u".a", u"."}, {u"a."}},
      // "*." has no meaning of its own here.
      {u"*.", {u"a."}, {u"a"}},
  };
  for (const auto& c : cases) {
    for (const TStringView name : c.hits) ExpectMatch(name, c.spec, true);
    for (const TStringView name : c.misses) ExpectMatch(name, c.spec, false);
  }
}

/// The meaning of a pattern, told without any cleverness.
bool MatchSlowly(TStringView name, TStringView pattern) {
  if (pattern.empty()) return name.empty();
  if (pattern.front() == u'*')
    return MatchSlowly(name, pattern.substr(1)) ||
           (!name.empty() && MatchSlowly(name.substr(1), pattern));
  return !name.empty() &&
         (pattern.front() == u'?' || SameText(pattern.substr(0, 1), name.substr(0, 1))) &&
         MatchSlowly(name.substr(1), pattern.substr(1));
}

TEST(PatternMatch, AgreesWithThePlainMeaning) {
  std::mt19937 random(5);
  const auto text = [&random](TStringView units, std::size_t limit) {
    TString result;
    for (std::size_t left = random() % limit; left > 0; --left)
      result += units[random() % units.size()];
    return result;
  };
  int hits = 0;
  for (int i = 0; i < 200000; ++i) {
    const TString name = text(u"aAb.", 9);
    TString first = text(u"aB.**?", 7);
    const TString second = text(u"ab*?", 5);
    const TString spec = first + u";" + second;
    if (EndsWith(first, u"*.*")) first.resize(first.size() - 2);
    const bool expected = (!first.empty() && MatchSlowly(name, first)) ||
                          (!second.empty() && MatchSlowly(name, second));
    hits += expected;
    ASSERT_EQ(MatchPatternSpec(name, spec), expected) << ToUtf8(name) << " ~ " << ToUtf8(spec);
    ASSERT_EQ(TPatternList(spec).Matches(name), expected) << ToUtf8(name) << " ~ " << ToUtf8(spec);
  }
  EXPECT_GT(hits, 20000);
}

TEST(PatternMatch, ManyStarsEnd) {
  // A matcher that tries every split of the name would not come back from this.
  TString pattern;
  for (int i = 0; i < 60; ++i) pattern += u"a*";
  ExpectMatch(TString(4000, u'a') + u"b", pattern + u"c", false);
  ExpectMatch(TString(4000, u'a') + u"b", pattern + u"b", true);
}

}  // namespace
}  // namespace oak
