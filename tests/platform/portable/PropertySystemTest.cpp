// Descriptions of properties and texts of values.
#include <gtest/gtest.h>

#include <set>

#include "oak/base/DateTime.h"
#include "oak/base/Guid.h"
#include "oak/base/Pidl.h"
#include "oak/base/Variant.h"
#include "oak/platform/Api.h"
#include "oak/platform/portable/PropertySystem.h"

namespace oak::tests {
namespace {

TString Format(REFPROPERTYKEY key, const TPropVariant& value, int flags = 0) {
  TTaskMemory<WCHAR> text;
  EXPECT_EQ(Api().PSFormatForDisplayAlloc(key, value, static_cast<PROPDESC_FORMAT_FLAGS>(flags),
                                          text.Put()),
            S_OK);
  return FromW(text.Get());
}

// Names are looked up by programs, labels by people: neither may be ambiguous.
TEST(PropertySystem, TableIsConsistent) {
  std::set<std::string> names, labels;
  for (const TPropertyInfo& info : PropertyTable()) {
    if (HasFlag(info.Flags, TPropertyFlags::Alias)) continue;
    EXPECT_EQ(FindProperty(info.Key), &info) << ToUtf8(info.Name);
    EXPECT_TRUE(names.insert(ToUtf8(UpperCase(info.Name))).second) << ToUtf8(info.Name);
    EXPECT_TRUE(labels.insert(ToUtf8(UpperCase(info.Label))).second) << ToUtf8(info.Label);
    PROPERTYKEY key{};
    EXPECT_EQ(Api().PSGetPropertyKeyFromName(info.Name, &key), S_OK);
    EXPECT_TRUE(TPropertyKeyEqual{}(key, info.Key));
  }
}

TEST(PropertySystem, EnumeratesAndReadsLists) {
  Ref<IPropertySystem> system;
  ASSERT_EQ(Api().PSGetPropertySystem(IidOf<IPropertySystem>(), system.PutVoid()), S_OK);
  const auto count = [&](PROPDESC_ENUMFILTER filter) {
    Ref<IPropertyDescriptionList> list;
    UINT result = 0;
    EXPECT_EQ(system->EnumeratePropertyDescriptions(filter, IidOf<IPropertyDescriptionList>(),
                                                    list.PutVoid()),
              S_OK);
    EXPECT_EQ(list->GetCount(&result), S_OK);
    return result;
  };
  EXPECT_GT(count(PDEF_ALL), count(PDEF_VIEWABLE));  // groups are not viewable
  EXPECT_EQ(count(PDEF_NONSYSTEM), 0u);
  Ref<IPropertyDescriptionList> list;
  ASSERT_EQ(system->GetPropertyDescriptionListFromString(
                u"prop:System.Size; *System.Title;;~System.DateModified",
                IidOf<IPropertyDescriptionList>(), list.PutVoid()),
            S_OK);
  UINT items = 0;
  list->GetCount(&items);
  EXPECT_EQ(items, 3u);
  Ref<IPropertyDescription> item;
  EXPECT_EQ(list->GetAt(3, IidOf<IPropertyDescription>(), item.PutVoid()), E_INVALIDARG);
  EXPECT_EQ(system->GetPropertyDescriptionListFromString(
                u"prop:System.Size;nonsense", IidOf<IPropertyDescriptionList>(), list.PutVoid()),
            TYPE_E_ELEMENTNOTFOUND);
}

TEST(PropertySystem, Texts) {
  const std::uint64_t huge = ~std::uint64_t{0};
  const struct {
    const PROPERTYKEY& Key;
    TPropVariant Value;
    int Flags;
    TStringView Expected;
  } cases[] = {
      {PKEY_Size, TPropVariant::From(std::uint64_t{0}), 0, u"0 bytes"},
      {PKEY_Size, TPropVariant::From(std::uint64_t{1234}), PDFF_NOAUTOREADINGORDER, u"1.20 KB"},
      {PKEY_Size, TPropVariant::From(std::uint64_t{1234567}), PDFF_ALWAYSKB, u"1,206 KB"},
      {PKEY_Capacity, TPropVariant::From(std::uint64_t{1} << 40), PDFF_ALWAYSKB, u"1.00 TB"},
      {PKEY_Size, TPropVariant::From(huge), 0, u"15.9 EB"},
      {PKEY_Size, TPropVariant::From(huge), PDFF_ALWAYSKB, u"18,014,398,509,481,984 KB"},
      {PKEY_Size, TPropVariant::From(-5), 0, u"-5"},
      {PKEY_FileCount, TPropVariant::From(huge), 0, u"18,446,744,073,709,551,615"},
      {PKEY_PerceivedType, TPropVariant::From(-1234567), 0, u"-1,234,567"},
      {PKEY_FileAttributes, TPropVariant::From(DWORD{0x23}), 0, u"RHA"},
      {PKEY_IsFolder, TPropVariant::From(true), 0, u"Yes"},
      {PKEY_PercentFull, TPropVariant::From(42u), 0, u"42%"},
      {PKEY_PercentFull, TPropVariant::From(TStringArray()), 0, u""},
      {PKEY_FileCount, TPropVariant::From(2.8), 0, u"2.8"},
      {PKEY_Media_Duration, TPropVariant::From(std::uint64_t{36'610'000'000}), 0, u"01:01:01"},
      {PKEY_Media_Year, TPropVariant::From(2001u), 0, u"2001"},
      {PKEY_Title, TPropVariant::From(u"text"), PDFF_PREFIXNAME, u"Title: text"},
      {PKEY_Keywords, TPropVariant::From(TStringArray{u"a", u"b"}), 0, u"a; b"},
      {PKEY_Size, TPropVariant::From(u"no number"), 0, u"no number"},
      {PKEY_DateModified, TPropVariant::From(u"no date"), 0, u""},
      {PKEY_DateModified, TPropVariant::From(FILETIME{}), 0, u""},
      {PKEY_DateModified, TPropVariant::FromDate(-200000), 0, u""},  // before 1601
      {PKEY_Size, TPropVariant(), PDFF_PREFIXNAME, u""},
      {PKEY_Title, TPropVariant::Null(), 0, u""}};
  for (const auto& test : cases) EXPECT_EQ(Format(test.Key, test.Value, test.Flags), test.Expected);
  TTaskMemory<WCHAR> text;
  EXPECT_EQ(Api().PSFormatForDisplayAlloc(PROPERTYKEY{GUID_NULL, 7}, TPropVariant::From(1),
                                          PDFF_DEFAULT, text.Put()),
            TYPE_E_ELEMENTNOTFOUND);
}

// A date has no zone, a file time is UTC and is shown in local time.
TEST(PropertySystem, DatesAreShownInLocalTime) {
  const TDateTime noon = EncodeDateTime({2020, 6, 15}, {12, 30, 0, 0});
  const TString local = Format(PKEY_DateModified, TPropVariant::FromDate(noon));
  EXPECT_TRUE(Contains(local, u"30")) << ToUtf8(local);
  SYSTEMTIME wall{}, utc{};
  FILETIME time{};
  ASSERT_TRUE(DateTimeToSystem(noon, wall));
  ASSERT_TRUE(Api().TzSpecificLocalTimeToSystemTime(nullptr, &wall, &utc));
  ASSERT_TRUE(SystemToFileTime(utc, time));
  EXPECT_EQ(Format(PKEY_DateModified, TPropVariant::From(time)), local);
  const TString date = Format(PKEY_DateModified, TPropVariant::FromDate(noon), PDFF_HIDETIME);
  const TString clock = Format(PKEY_DateModified, TPropVariant::FromDate(noon), PDFF_HIDEDATE);
  EXPECT_EQ(date + u" " + clock, local);
}

TEST(PropertySystem, Compares) {
  const auto time = [](int hour, int minute) {
    return TPropVariant::From(
        DateTimeToFileTime(EncodeDateTime({2020, 6, 15}, {hour, minute, 0, 0})));
  };
  const struct {
    TPropVariant A, B;
    PROPVAR_COMPARE_UNIT Unit;
    PROPVAR_COMPARE_FLAGS Flags;
    int Expected;
  } cases[] = {
      {TPropVariant::From(2), TPropVariant::From(std::uint64_t{10}), PVCU_DEFAULT, PVCF_DEFAULT,
       -1},
      {TPropVariant(), TPropVariant::From(0), PVCU_DEFAULT, PVCF_DEFAULT, -1},
      {TPropVariant(), TPropVariant::From(0), PVCU_DEFAULT, PVCF_TREATEMPTYASGREATERTHAN, 1},
      {TPropVariant(), TPropVariant::Null(), PVCU_DEFAULT, PVCF_TREATEMPTYASGREATERTHAN, 0},
      {TPropVariant::From(u"a10"), TPropVariant::From(u"a9"), PVCU_DEFAULT, PVCF_DEFAULT, 1},
      {TPropVariant::From(u"a10"), TPropVariant::From(u"a9"), PVCU_DEFAULT, PVCF_USESTRCMPC, -1},
      {TPropVariant::From(u"Ä"), TPropVariant::From(u"ä"), PVCU_DEFAULT, PVCF_USESTRCMPI, 0},
      {TPropVariant::From(u"Ä"), TPropVariant::From(u"ä"), PVCU_DEFAULT, PVCF_USESTRCMP, -1},
      {time(10, 0), time(10, 59), PVCU_HOUR, PVCF_DEFAULT, 0},
      {time(10, 0), time(10, 59), PVCU_MINUTE, PVCF_DEFAULT, -1},
      {time(10, 0), time(23, 0), PVCU_DAY, PVCF_DEFAULT, 0}};
  for (const auto& test : cases)
    EXPECT_EQ(Api().PropVariantCompareEx(test.A, test.B, test.Unit, test.Flags), test.Expected)
        << ToUtf8(PropVariantToText(test.A)) << " / " << ToUtf8(PropVariantToText(test.B));
}

TEST(PropertySystem, Converts) {
  TPropVariant value = TPropVariant::From(true);
  PROPVARIANT text{};
  ASSERT_EQ(Api().PropVariantChangeType(&text, value, PVCHF_ALPHABOOL, VT_LPWSTR), S_OK);
  EXPECT_EQ(FromW(Api().PropVariantToStringWithDefault(text, u"none")), u"True");
  EXPECT_EQ(FromW(Api().PropVariantToStringWithDefault(value, u"none")), u"none");
  PropVariantClear(&text);
  ASSERT_EQ(
      Api().PropVariantChangeType(&text, TPropVariant::From(u"nonsense"), PVCHF_DEFAULT, VT_I4),
      DISP_E_TYPEMISMATCH);
  EXPECT_EQ(text.vt, VT_EMPTY);
}

}  // namespace
}  // namespace oak::tests
