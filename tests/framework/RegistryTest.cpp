#include "oak/framework/Registry.h"

#include <gtest/gtest.h>

#include "oak/framework/StringList.h"
#include "oak/platform/Api.h"
#include "testkit/FaultInjection.h"
#include "testkit/ScopedApi.h"

namespace oak::tests {
namespace {

/// Each process its own: tests run at the same time on one registry.
const TString kRoot =
    u"Software\\Oak test of the registry " + IntToHex(Api().GetCurrentProcessId(), 1);

/// A key of the test's own, open for everything.
class RegistryTest : public testing::Test {
 protected:
  void SetUp() override {
    registry.DeleteKey(kRoot);
    ASSERT_TRUE(registry.OpenKey(kRoot, true));
  }
  void TearDown() override {
    registry.CloseKey();
    EXPECT_TRUE(registry.DeleteKey(kRoot));
    EXPECT_FALSE(registry.KeyExists(kRoot));
  }
  TRegistry registry;
};

TEST_F(RegistryTest, PathsStartAtTheRootOrAtTheOpenKey) {
  EXPECT_TRUE(registry.CreateKey(u"a\\b"));
  EXPECT_TRUE(registry.CreateKey(u"c"));
  EXPECT_TRUE(registry.KeyExists(u"A\\B"));
  EXPECT_FALSE(registry.KeyExists(u"\\a\\b"));
  ASSERT_TRUE(registry.OpenKey(u"a\\", false));
  EXPECT_EQ(registry.GetCurrentPath(), kRoot + u"\\a");
  EXPECT_FALSE(registry.OpenKey(u"none", false));
  EXPECT_EQ(registry.GetLastError(), LSTATUS{ERROR_FILE_NOT_FOUND});
  EXPECT_EQ(registry.GetCurrentPath(), kRoot + u"\\a");  // as it was
  ASSERT_TRUE(registry.OpenKeyReadOnly(u"\\" + kRoot));
  EXPECT_FALSE(registry.DeleteKey(u""));
  EXPECT_TRUE(registry.DeleteKey(u"a"));  // with b below it
  EXPECT_FALSE(registry.DeleteKey(u"a"));
  TStringList names{u"before"};
  registry.GetKeyNames(names);
  EXPECT_EQ(names.ToArray(), TStringArray{u"c"});
  registry.SetRootKey(HKEY_CLASSES_ROOT);
  EXPECT_FALSE(registry.IsOpen());
  registry.SetRootKey(HKEY_CURRENT_USER);
}

TEST_F(RegistryTest, ValuesComeBackByTheirKind) {
  const TString longText(5000, u'x');
  registry.WriteString(u"text", longText);
  registry.WriteString(u"", u"default ä\u20AC");
  registry.WriteExpandString(u"expand", u"%TEMP%\\x");
  registry.WriteInteger(u"number", -5);
  registry.WriteInt64(u"large", -5'000'000'000);
  registry.WriteBool(u"yes", true);
  registry.WriteBinaryData(u"bytes", {1, 0, 2});
  EXPECT_EQ(registry.ReadString(u"TEXT"), longText);
  EXPECT_EQ(registry.ReadString(u""), u"default ä\u20AC");
  EXPECT_EQ(registry.ReadString(u"missing"), u"");
  EXPECT_EQ(registry.ReadInteger(u"number"), -5);
  EXPECT_EQ(registry.ReadInt64(u"large"), -5'000'000'000);
  EXPECT_TRUE(registry.ReadBool(u"yes"));
  EXPECT_EQ(registry.ReadBinaryData(u"bytes"), (std::vector<BYTE>{1, 0, 2}));
  const struct {
    TString Name;
    TRegDataType Type;
    int Size;
  } kinds[] = {{u"text", rdString, 10002}, {u"expand", rdExpandString, 18},
               {u"number", rdInteger, 4},  {u"large", rdInteger64, 8},
               {u"bytes", rdBinary, 3},    {u"missing", rdUnknown, -1}};
  for (const auto& kind : kinds) {
    EXPECT_EQ(registry.GetDataType(kind.Name), kind.Type) << ToUtf8(kind.Name);
    EXPECT_EQ(registry.GetDataSize(kind.Name), kind.Size) << ToUtf8(kind.Name);
  }
  EXPECT_TRUE(registry.DeleteValue(u"text"));
  EXPECT_FALSE(registry.DeleteValue(u"text"));
}

TEST_F(RegistryTest, TextsOfOthersMayEndAnyhow) {
  const std::pair<std::vector<BYTE>, TString> cases[] = {{{'a', 0}, u"a"},
                                                         {{'a', 0, 0, 0, 'b', 0, 0, 0}, u"a"},
                                                         {{'a', 0, 'b'}, u"a"},
                                                         {{'a'}, u""},
                                                         {{}, u""}};
  for (const auto& [bytes, text] : cases) {
    const testkit::TScopedApi query(
        Api().RegQueryValueExW,
        [&b = bytes](HKEY, LPCWSTR, DWORD*, DWORD* type, BYTE* data, DWORD* size) -> LSTATUS {
          if (type) *type = REG_SZ;
          if (data) std::copy(b.begin(), b.end(), data);
          *size = static_cast<DWORD>(b.size());
          return ERROR_SUCCESS;
        });
    EXPECT_EQ(registry.ReadString(u"x"), text);
  }
}

TEST_F(RegistryTest, GrowingDataAndLongNamesAreFollowed) {
  int asked = 0;
  {
    // The value has one byte more each time that its size was asked for.
    const testkit::TScopedApi query(
        Api().RegQueryValueExW,
        [&](HKEY, LPCWSTR, DWORD*, DWORD*, BYTE* data, DWORD* size) -> LSTATUS {
          const DWORD now = asked < 4 ? DWORD(++asked) : 4;
          const bool fits = data && *size >= now;
          if (fits) std::fill_n(data, now, BYTE{7});
          *size = now;
          return data && !fits ? ERROR_MORE_DATA : ERROR_SUCCESS;
        });
    EXPECT_EQ(registry.ReadBinaryData(u"x"), std::vector<BYTE>(4, 7));
  }
  const TString name(2000, u'n');
  registry.WriteInteger(name, 1);
  TStringList names;
  registry.GetValueNames(names);
  EXPECT_EQ(names.ToArray(), TStringArray{name});
}

TEST_F(RegistryTest, FailuresNameKeyAndValue) {
  registry.WriteString(u"text", u"1");
  registry.WriteInteger(u"number", 1);
  const std::pair<std::function<void()>, TString> cases[] = {
      {[&] { registry.ReadInteger(u"text"); }, u"\"text\""},
      {[&] { registry.ReadInt64(u"number"); }, u"\"number\""},
      {[&] { registry.ReadString(u"number"); }, u"is not a text"},
      {[&] { registry.ReadBinaryData(u"gone"); }, u"\"gone\""},
  };
  for (const auto& [call, text] : cases) {
    try {
      call();
      ADD_FAILURE() << ToUtf8(text);
    } catch (const ERegistryException& error) {
      EXPECT_TRUE(Contains(error.GetMessage(), text)) << error.what();
      EXPECT_TRUE(Contains(error.GetMessage(), u"HKEY_CURRENT_USER\\" + kRoot)) << error.what();
    }
  }
  TRegistry reader(KEY_READ);
  EXPECT_THROW(reader.ReadInteger(u"x"), ERegistryException);  // no key is open
  ASSERT_TRUE(reader.OpenKey(kRoot, false));
  EXPECT_THROW(reader.WriteInteger(u"number", 2), ERegistryException);
  EXPECT_FALSE(reader.DeleteValue(u"number"));
  EXPECT_EQ(registry.ReadInteger(u"number"), 1);
}

TEST_F(RegistryTest, EveryRefusalIsToldOrAnswered) {
  const int failures = testkit::SweepFaults([&] {
    TRegistry other;
    try {
      if (!other.OpenKey(kRoot, true)) return;
      other.WriteString(u"a", u"text");
      TStringList names;
      other.GetValueNames(names);
      EXPECT_EQ(other.ReadString(u"a"), u"text");
      other.CreateKey(u"b\\c");
      other.DeleteKey(u"b");
    } catch (const ERegistryException& error) {
      EXPECT_EQ(error.GetErrorCode(), DWORD{ERROR_GEN_FAILURE});
    }
  });
  EXPECT_GT(failures, 8);
}

}  // namespace
}  // namespace oak::tests
