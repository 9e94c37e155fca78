// The hand-written matchers accept exactly what these expressions accept.
#include <gtest/gtest.h>

#include <random>
#include <regex>

#include "oak/namespace/Oak.Shell.PathUtils.h"

namespace oak {
namespace {

const std::string kOctet = R"((25[0-5]|2[0-4]\d|1\d\d|[1-9]?\d))";
const std::string kDotted = "(" + kOctet + R"((\.)" + kOctet + "){3})";
const std::string kGroup = "[0-9A-Fa-f]{1,4}";

/// "n groups, then either some more groups or an embedded address or nothing".
std::string IPv6Expression() {
  std::string alternatives = "((" + kGroup + ":){7}(" + kGroup + "|:))|((" + kGroup +
                             ":){6}(:" + kGroup + "|" + kDotted + "|:))";
  for (int n = 5; n >= 0; --n) {
    const std::string leading = n > 0 ? "(" + kGroup + ":){" + std::to_string(n) + "}" : ":";
    alternatives += "|(" + leading + "(((:" + kGroup + "){1," + std::to_string(7 - n) +
                    "})|((:" + kGroup + "){0," + std::to_string(5 - n) + "}:" + kDotted + ")|:))";
  }
  return R"(\s*()" + alternatives + R"()(%.+)?\s*)";
}

std::string RandomText(std::mt19937& random, const std::vector<std::string>& pieces, int most) {
  std::string text;
  for (int n = std::uniform_int_distribution<int>(0, most)(random); n > 0; --n)
    text += pieces[random() % pieces.size()];
  return text;
}

TEST(PathUtilsMatch, IPv6LikeTheExpression) {
  const std::regex expression(IPv6Expression(), std::regex::ECMAScript | std::regex::optimize);
  const auto check = [&](const std::string& text) {
    const bool expected = std::regex_match(text, expression);
    EXPECT_EQ(TPathUtils::IsValidIPv6(FromUtf8(text)), expected) << text;
    return expected ? 1 : 0;
  };
  int accepted = 0;
  // Every number of groups before and behind a "::", with and without an address.
  for (int before = 0; before <= 9; ++before)
    for (int behind = 0; behind <= 9; ++behind)
      for (const std::string gap : {"::", ":", ""})
        for (const std::string end : {"", "1.2.3.4", ":1.2.3.4", ":", "%eth0", "g"}) {
          std::string text;
          for (int i = 0; i < before; ++i) text += (i ? ":" : "") + std::string("ab1");
          text += gap;
          for (int i = 0; i < behind; ++i) text += (i ? ":" : "") + std::string("F");
          accepted += check(text + end);
        }
  EXPECT_GT(accepted, 150);

  std::mt19937 random(20240607);
  const std::vector<std::string> pieces = {
      ":",         "::",       "1:", "ab12:", "fffff", "0",  "A:b:C:", ".",   " ",        "1.2.3.4",
      "1.2.3.256", "01.2.3.4", "%",  "eth0",  "g",     "\n", "\t",     "::1", "2001:db8:"};
  for (int i = 0; i < 4000; ++i) check(RandomText(random, pieces, 9));
}

TEST(PathUtilsMatch, UrlLikeTheExpression) {
  const std::regex expression(R"re((([a-zA-Z0-9]{2,}:[^\\{}|^~\[\]`<>#%"])|(file:\\)).*)re");
  std::mt19937 random(1);
  const std::vector<std::string> pieces = {"a", "Z9", ":", "\\", "/",      "file:", "file",
                                           "~", "#",  "%", "{",  "]",      "^",     "`",
                                           "<", "\"", " ", ".",  "http://"};
  int accepted = 0;
  for (int i = 0; i < 20000; ++i) {
    const std::string text = RandomText(random, pieces, 6);
    const bool isCandidate = text.size() >= 4 && text[1] != ':' && text[1] != '\\';
    const bool expected = isCandidate && std::regex_match(text, expression);
    accepted += expected;
    EXPECT_EQ(TPathUtils::IsURL(FromUtf8(text)), expected) << text;
  }
  EXPECT_GT(accepted, 1000);
}

TEST(PathUtilsMatch, HostileTextsEndAtOnce) {
  const std::size_t length = 1'000'000;
  for (const char16_t c : {u'1', u':', u'.', u'a', u' ', u'%', u'\n'}) {
    const TString text(length, c);
    EXPECT_FALSE(TPathUtils::IsValidIP(text));
    EXPECT_FALSE(TPathUtils::IsURL(text));
    EXPECT_TRUE(TPathUtils::IsValidIPv6(u"::1%" + TString(length, u'z')));
    EXPECT_FALSE(TPathUtils::IsValidIPv6(u"1:2:" + text + u"x"));
  }
  EXPECT_TRUE(TPathUtils::IsURL(TString(length, u's') + u"://"));
}

}  // namespace
}  // namespace oak
