// Sizes, names, messages, dates as text; environment and string resources.
#include <cstdlib>
#include <set>

#include "oak/base/Variant.h"
#include "oak/platform/portable/PortableStrings.h"
#include "tests/platform/portable/SystemTest.h"

namespace oak::test {
namespace {

TEST(SystemText, ByteSizes) {
  struct {
    LONGLONG Size;
    TStringView Bytes, Kilobytes;
  } const cases[] = {
      {1, u"1 bytes", u"1 KB"},
      {1023, u"1,023 bytes", u"1 KB"},
      {23506, u"22.9 KB", u"23 KB"},
      {1023999, u"999 KB", u"1,000 KB"},
      {1024000, u"0.97 MB", u"1,000 KB"},
      {INT64_MAX, u"7.99 EB", u"9,007,199,254,740,992 KB"},
      {INT64_MIN, u"-8.00 EB", u"-9,007,199,254,740,992 KB"},
  };
  WCHAR buffer[64];
  for (const auto& c : cases) {
    EXPECT_EQ(Show(FromW(Api().StrFormatByteSizeW(c.Size, buffer, 64))), Show(c.Bytes)) << c.Size;
    EXPECT_EQ(Show(FromW(Api().StrFormatKBSizeW(c.Size, buffer, 64))), Show(c.Kilobytes)) << c.Size;
  }
  EXPECT_EQ(FromW(Api().StrFormatByteSizeW(1340, buffer, 4)), u"1.3");
  EXPECT_EQ(Api().StrFormatByteSizeEx(1023990, 1, buffer, 64), S_OK);
  EXPECT_EQ(FromW(buffer), u"1,000 KB");
  EXPECT_EQ(Api().StrFormatByteSizeEx(1, 7, buffer, 64), E_INVALIDARG);
}

TEST(SystemText, StrRet) {
  const BYTE pidl[] = {5, 0, 'a', 'b', 'c', 0, 0};
  const auto convert = [&](const STRRET& what, HRESULT expected = S_OK) {
    STRRET value = what;
    TTaskMemory<WCHAR> text;
    EXPECT_EQ(Api().StrRetToStrW(&value, reinterpret_cast<LPCITEMIDLIST>(pidl), text.Put()),
              expected);
    return FromW(text.Get());
  };
  STRRET value{};
  value.uType = STRRET_CSTR;
  std::fill_n(value.cStr, sizeof value.cStr, 'x');  // without an end
  EXPECT_EQ(convert(value), TString(MAX_PATH, u'x'));
  value.uType = STRRET_OFFSET;
  value.uOffset = 3;
  EXPECT_EQ(convert(value), u"bc");
  value.uOffset = 7;
  EXPECT_EQ(convert(value, E_INVALIDARG), u"");
  value.uType = 9;
  EXPECT_EQ(convert(value, E_FAIL), u"");
  value.uType = STRRET_WSTR;
  value.pOleStr = static_cast<LPWSTR>(CoTaskMemAlloc(6));
  std::copy_n(u"ab", 3, value.pOleStr);
  EXPECT_EQ(convert(value), u"ab");
}

TEST(SystemText, NarrowText) {
  const auto widen = [](UINT page, DWORD flags, std::string_view text) {
    WCHAR buffer[16];
    const int length = Api().MultiByteToWideChar(page, flags, text.data(),
                                                 static_cast<int>(text.size()), buffer, 16);
    return TString(buffer, static_cast<std::size_t>(length));
  };
  EXPECT_EQ(widen(65001, 0, "a\xFF"), u"a\xFFFD");
  EXPECT_EQ(widen(65001, 8, "a\xFF"), u"");
  EXPECT_EQ(widen(28591, 8, "a\xFF"), u"aÿ");
  EXPECT_EQ(widen(12345, 0, "a"), u"");
  WCHAR small[3];
  EXPECT_EQ(ErrorAfter([&] { Api().MultiByteToWideChar(0, 0, "abc", -1, small, 3); }),
            ERROR_INSUFFICIENT_BUFFER);

  const auto narrow = [](UINT page, TStringView text, BOOL* used = nullptr) {
    char buffer[6];
    const int length = Api().WideCharToMultiByte(
        page, 0, text.data(), static_cast<int>(text.size()), buffer, 6, nullptr, used);
    return std::string(buffer, static_cast<std::size_t>(length));
  };
  BOOL used = FALSE;
  EXPECT_EQ(narrow(Api().GetACP(), u"ä€", &used), "\xC3\xA4\xE2\x82\xAC");
  EXPECT_FALSE(used);
  EXPECT_EQ(narrow(28591, u"ä€", &used), "\xE4?");
  EXPECT_TRUE(used);
  EXPECT_EQ(ErrorAfter([&] { narrow(0, u"äbcdefg"); }), ERROR_INSUFFICIENT_BUFFER);
  EXPECT_EQ(Api().WideCharToMultiByte(0, 0, u"äb", -1, nullptr, 0, nullptr, nullptr), 4);
}

TString Message(DWORD flags, LPCVOID source, DWORD code, va_list* arguments = nullptr) {
  TString buffer(512, u'\0');
  const DWORD length =
      Api().FormatMessageW(flags, source, code, 0, WBuffer(buffer), 512, arguments);
  return buffer.substr(0, length);
}

TEST(SystemText, Messages) {
  constexpr DWORD plain = FORMAT_MESSAGE_FROM_SYSTEM | FORMAT_MESSAGE_IGNORE_INSERTS;
  const TString notFound = Message(plain, nullptr, ERROR_FILE_NOT_FOUND);
  EXPECT_TRUE(EndsWith(notFound, u".\r\n"));
  EXPECT_EQ(Message(plain, nullptr, 0x80070002u), notFound);
  EXPECT_EQ(Message(plain | FORMAT_MESSAGE_MAX_WIDTH_MASK, nullptr, 2) + u"\r\n", notFound);
  std::set<TString> different;
  for (const DWORD code : {3u, 5u, 18u, 21u, 87u, 183u, 267u, 1223u, 1326u, 0x80004005u})
    different.insert(Message(plain, nullptr, code));
  EXPECT_EQ(different.size(), 10u);
  EXPECT_FALSE(different.contains(u""));
  EXPECT_EQ(Message(FORMAT_MESSAGE_FROM_HMODULE, Api().LoadLibraryW(u"wininet.dll"), 12007), u"");

  LPWSTR allocated = nullptr;
  const DWORD length = Api().FormatMessageW(plain | FORMAT_MESSAGE_ALLOCATE_BUFFER, nullptr, 2, 0,
                                            reinterpret_cast<LPWSTR>(&allocated), 0, nullptr);
  EXPECT_EQ(TString(allocated, length), notFound);
  EXPECT_EQ(Api().LocalFree(allocated), nullptr);
  WCHAR tiny[4];
  EXPECT_EQ(ErrorAfter([&] { Api().FormatMessageW(plain, nullptr, 2, 0, tiny, 4, nullptr); }),
            ERROR_INSUFFICIENT_BUFFER);

  const DWORD_PTR inserts[] = {reinterpret_cast<DWORD_PTR>(u"one"),
                               reinterpret_cast<DWORD_PTR>(u"two")};
  auto* list = reinterpret_cast<va_list*>(const_cast<DWORD_PTR*>(inserts));
  EXPECT_EQ(Message(FORMAT_MESSAGE_FROM_STRING | FORMAT_MESSAGE_ARGUMENT_ARRAY,
                    u"%2!s! and %1%n100%%%0 never", 0, list),
            u"two and one\r\n100%");
  EXPECT_EQ(Message(FORMAT_MESSAGE_FROM_STRING, u"<%1>", 0), u"<>");
}

TString Date(const SYSTEMTIME& date, DWORD flags, LPCWSTR picture = nullptr) {
  WCHAR buffer[80] = {};
  return Api().GetDateFormatW(0x400, flags, &date, picture, buffer, 80) ? FromW(buffer)
                                                                        : u"(failed)";
}
TString Time(const SYSTEMTIME& time, DWORD flags, LPCWSTR picture = nullptr) {
  WCHAR buffer[80] = {};
  return Api().GetTimeFormatW(0x400, flags, &time, picture, buffer, 80) ? FromW(buffer)
                                                                        : u"(failed)";
}

TEST(SystemText, DatesFollowTheLanguage) {
  const SYSTEMTIME noon{2024, 2, 0, 29, 12, 5, 9, 0};
  const SYSTEMTIME night{2024, 2, 0, 29, 0, 5, 9, 0};
  TPortableConfig config = PortableConfigFromEnvironment();
  constexpr DWORD noMinutes = 1;  // TIME_NOMINUTESORSECONDS
  const struct {
    TStringView Language;
    const char *Date, *Time, *Hour, *Variant, *Size;
  } cases[] = {{u"en-US", "2/29/2024", "12:05 AM", "12 AM", "2/29/2024 12:05:09 AM", "1,270 KB"},
               {u"de-AT", "29.02.2024", "00:05", "00", "29.02.2024 00:05:09", "1.270 KB"},
               {u"de-ch", "29.02.2024", "00:05", "00", "29.02.2024 00:05:09", "1’270 KB"},
               {u"fi-FI", "29.2.2024", "0.05", "0", "29.2.2024 0.05.09", "1 270 KB"},
               {u"xx", "2024-02-29", "00:05", "00", "2024-02-29 00:05:09", "1,270 KB"}};
  for (const auto& c : cases) {
    config.Language = c.Language;
    SetPortableConfig(config);
    EXPECT_EQ(Show(Date(noon, DATE_SHORTDATE)), c.Date);
    EXPECT_EQ(Show(Time(night, TIME_NOSECONDS)), c.Time);
    EXPECT_EQ(Show(Time(night, noMinutes)), c.Hour);
    TVariant text;
    EXPECT_EQ(Api().VariantChangeType(
                  text.Put(), &TVariant::FromDate(45351.0 + 308.6 / 86400).Get(), 0, VT_BSTR),
              S_OK);
    EXPECT_EQ(Show(VariantToText(text)), c.Variant);
    WCHAR buffer[64];
    EXPECT_EQ(Show(FromW(Api().StrFormatKBSizeW(1300000, buffer, 64))), c.Size);
  }
  config.Language = u"en-US";
  SetPortableConfig(config);
  EXPECT_EQ(Show(Date(noon, DATE_LONGDATE)), "Thursday, February 29, 2024");
  EXPECT_EQ(Show(Date(noon, 0, u"ddd d.MM.yy 'it''s' yyyy")), "Thu 29.02.24 it's 2024");
  EXPECT_EQ(Show(Time(noon, 0, u"hh'h' H:m:ss t")), "12h 12:5:09 P");
  EXPECT_EQ(Date({2023, 2, 0, 29, 0, 0, 0, 0}, 0), u"(failed)");
  WCHAR small[4];
  EXPECT_EQ(Api().GetDateFormatW(0, 0, &noon, nullptr, nullptr, 0), 10);
  EXPECT_EQ(ErrorAfter([&] { Api().GetDateFormatW(0, 0, &noon, nullptr, small, 4); }),
            ERROR_INSUFFICIENT_BUFFER);
  SetPortableConfig(std::shared_ptr<const TPortableConfig>());
}

TEST(SystemText, TheLocaleIsThatOfTheEnvironment) {
  const char* const variables[] = {"LC_ALL", "LC_TIME", "LANG"};
  std::string before[3];
  for (std::size_t i = 0; i < 3; ++i)
    if (const char* value = getenv(variables[i])) before[i] = value;
  const struct {
    const char* Values[3];
    TStringView Language;
  } cases[] = {{{"", "", ""}, u"en-US"},
               {{"", "", "C.UTF-8"}, u"en-US"},
               {{"", "POSIX", "de_DE"}, u"en-US"},
               {{"", "de_CH.UTF-8@euro", "fr_FR"}, u"de-CH"},
               {{"sv", "de_CH.UTF-8", "fr_FR"}, u"sv"}};
  for (const auto& c : cases) {
    for (std::size_t i = 0; i < 3; ++i) setenv(variables[i], c.Values[i], 1);
    EXPECT_EQ(PortableConfigFromEnvironment().Language, c.Language);
  }
  for (std::size_t i = 0; i < 3; ++i) setenv(variables[i], before[i].c_str(), 1);
}

using SystemEnvironment = TSystemTest;

TString Expand(LPCWSTR text) {
  TString buffer(300, u'\0');
  const DWORD length = Api().ExpandEnvironmentStringsW(text, WBuffer(buffer), 300);
  return buffer.substr(0, length ? length - 1 : 0);
}

TEST_F(SystemEnvironment, Expansion) {
  TPortableConfig config = *PortableConfig();
  config.Home = Native("home/me");
  config.Temp = "/not/mapped";
  SetPortableConfig(config);
  setenv("OAK_TEST_VALUE", "wörth", 1);
  setenv("TEMP", "native", 1);
  struct {
    LPCWSTR Text;
    TStringView Expanded;
  } const cases[] = {
      {u"%USERPROFILE%\\x", u"T:\\home\\me\\x"},
      {u"%SystemDrive%", u"T:"},
      {u"%OAK_TEST_VALUE%", u"wörth"},
      {u"%OAK_NO_SUCH_VALUE%", u"%OAK_NO_SUCH_VALUE%"},
      {u"100% %NOPE%OAK_TEST_VALUE%", u"100% %NOPEwörth"},
      {u"%=C:%", u"%=C:%"},
  };
  for (const auto& c : cases) EXPECT_EQ(Show(Expand(c.Text)), Show(c.Expanded)) << Show(c.Text);
  WCHAR small[4] = {};
  EXPECT_EQ(Api().ExpandEnvironmentStringsW(u"%SystemDrive%\\x", small, 4), 5u);
  EXPECT_EQ(Api().GetEnvironmentVariableW(u"OAK_TEST_VALUE", nullptr, 0), 6u);
  EXPECT_EQ(ErrorAfter([] { Api().GetEnvironmentVariableW(u"OAK_NO_SUCH_VALUE", nullptr, 0); }),
            ERROR_ENVVAR_NOT_FOUND);
  unsetenv("OAK_TEST_VALUE");
  unsetenv("TEMP");
}

TEST(SystemModules, StringsByLibraryAndNumber) {
  const HMODULE shell = Api().LoadLibraryW(u"C:\\Windows\\System32\\SHELL32");
  ASSERT_NE(shell, nullptr);
  EXPECT_EQ(shell, Api().GetModuleHandleW(u"shell32.dll"));
  WCHAR text[64] = {};
  EXPECT_EQ(Api().LoadStringW(shell, 4161, text, 64), 13);
  EXPECT_EQ(FromW(text), u"Control Panel");
  EXPECT_EQ(Api().LoadStringW(shell, 4161, text, 8), 7);
  EXPECT_EQ(FromW(text), u"Control");
  EXPECT_EQ(Api().LoadStringW(shell, 1, text, 64), 0);
  EXPECT_EQ(Api().LoadStringW(reinterpret_cast<HINSTANCE>(text), 4161, text, 64), 0);
  EXPECT_EQ(ErrorAfter([] { Api().LoadLibraryW(u"nothing.dll"); }), ERROR_MOD_NOT_FOUND);
  EXPECT_TRUE(Api().FreeLibrary(shell));
  EXPECT_FALSE(Api().FreeLibrary(nullptr));
  EXPECT_EQ(PortableIndirectString(u"@%SystemRoot%\\system32\\shell32.dll,-4161;a comment"),
            u"Control Panel");
  EXPECT_EQ(PortableIndirectString(u"plain"), u"plain");
  for (TStringView broken : {u"@shell32.dll", u"@shell32.dll,-", u"@shell32.dll,-99999999999"})
    EXPECT_EQ(PortableIndirectString(broken), std::nullopt) << Show(broken);
}

}  // namespace
}  // namespace oak::test
