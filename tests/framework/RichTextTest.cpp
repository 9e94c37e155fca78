#include "oak/framework/RichText.h"

#include <gtest/gtest.h>

#include <string_view>

namespace oak::tests {
namespace {

TEST(RichText, GivesItsWords) {
  const auto read = [](std::string_view source) -> TString {
    TString text = u"(none)";
    PlainTextOfRtf({source.begin(), source.end()}, &text);
    return text;
  };
  EXPECT_EQ(read("{\\rtf1\\ansi{\\fonttbl{\\f0 Some Font;}}{\\*\\generator X;}"
                 "\\f0\\fs20 Hello \\b world\\b0\\par second\\tab line\\par}"),
            u"Hello world\r\nsecond\tline");
  EXPECT_EQ(read("{\\rtf1 \\u8364?\\'e9\\{\\uc2\\u960 ab c\\}}"), u"\u20AC\u00E9{\u03C0 c}");
  EXPECT_EQ(read("plain"), u"(none)");
  EXPECT_EQ(read("{\\rtf1 }}}\\"), u"");  // more ends than beginnings
  EXPECT_EQ(read("{\\rtf1 a\\'"), u"a" + TString(1, u'\0'));
}

}  // namespace
}  // namespace oak::tests
