#include "oak/base/Variant.h"

#include <gtest/gtest.h>

#include <cmath>

#include "oak/base/Guid.h"

namespace oak {
namespace {

constexpr GUID kGuid{0x68F5A3CD, 0xB8FE, 0x4400, {0xB3, 0x12, 0xDC, 0x23, 0x34, 0xAF, 0x73, 0x1E}};
const FILETIME kTime = DateTimeToFileTime(EncodeDateTime({2006, 9, 16}, {20, 13, 15, 1}));

/// The value as another type, or empty.
TPropVariant As(const TPropVariant& value, VARTYPE type) {
  TPropVariant result;
  const bool failed = FAILED(ChangeType(value, type, *result.Put()));
  EXPECT_TRUE(!failed || result.IsEmpty());
  return result;
}
TString TextAs(const TPropVariant& value, VARTYPE type) {
  return PropVariantToText(As(value, type));
}

TEST(Variant, CopiesOwnTheirTexts) {
  TPropVariant first = TPropVariant::From(u"text");
  const TPropVariant copy = first;
  EXPECT_NE(copy.Get().pwszVal, first.Get().pwszVal);
  first = TPropVariant::From(1);
  EXPECT_EQ(PropVariantToText(copy), u"text");
  EXPECT_EQ(PropVariantToText(first), u"1");

  PROPVARIANT raw = TPropVariant(copy).Detach();
  const TPropVariant adopted = TPropVariant::Adopt(raw);
  EXPECT_EQ(raw.vt, VT_EMPTY);
  EXPECT_EQ(PropVariantToText(adopted), u"text");

  const TVariant variant = TVariant::From(TStringView(u"a\0b", 3));
  EXPECT_EQ(VariantToText(TVariant(variant)), TStringView(u"a\0b", 3));
  const TPropVariant list = TPropVariant::From(TStringArray{u"x", u"", u"y"});
  EXPECT_EQ(PropVariantToText(TPropVariant(list)), u"x; ; y");
}

TEST(Variant, ChangeTypeOfNumbersAndTexts) {
  const struct {
    TPropVariant from;
    VARTYPE type;
    TStringView text;  // of the result; empty: there is none
  } cases[] = {
      {TPropVariant::From(u" 10 "), VT_I4, u"10"},
      {TPropVariant::From(0.1), VT_LPWSTR, u"0.1"},
      {TPropVariant::From(true), VT_BSTR, u"-1"},
      {TPropVariant::From(u"+7"), VT_UI1, u"7"},
      {TPropVariant::From(u"2.5"), VT_I4, u"2"},  // halves to even
      {TPropVariant::From(u"18446744073709551615"), VT_UI8, u"18446744073709551615"},
      {TPropVariant::From(u"18446744073709551615"), VT_I8, u""},
      {TPropVariant::From(u"+-3"), VT_I4, u""},
      {TPropVariant::From(u""), VT_I4, u""},
      {TPropVariant::From(u"inf"), VT_R8, u""},
      {TPropVariant::From(u"٣"), VT_I4, u""},
      {TPropVariant::From(-1), VT_UI8, u""},
      {TPropVariant::From(-128), VT_I1, u"-128"},
      {TPropVariant::From(1e19), VT_I8, u""},
      {TPropVariant::From(std::nan("")), VT_I4, u""},
      {TPropVariant::From(u"True"), VT_BOOL, u"-1"},
      {TPropVariant::From(5), VT_BOOL, u"-1"},
      {TPropVariant::From(true), VT_I2, u"-1"},
      {TPropVariant::From(u"2006/09/16:20:13:15.001"), VT_FILETIME, u"2006/09/16:20:13:15.001"},
      {TPropVariant::From(u"2006-09-16"), VT_DATE, u"2006/09/16:00:00:00.000"},
      {TPropVariant::From(u"2006/02/30"), VT_DATE, u""},
      {TPropVariant::From(u"2006/1/1/1/1/1/1/1"), VT_DATE, u""},
      {TPropVariant::From(u"99999999999/1/1"), VT_DATE, u""},
      {TPropVariant::From(kTime), VT_DATE, u"2006/09/16:20:13:15.001"},
      {TPropVariant::From(40000), VT_DATE, u""},
      {TPropVariant(), VT_I4, u""},
      {TPropVariant::From(u"68f5a3cd-b8fe-4400-b312-dc2334af731e"), VT_CLSID,
       u"{68F5A3CD-B8FE-4400-B312-DC2334AF731E}"},
      {TPropVariant::From(u"a"), VT_VECTOR | VT_LPWSTR, u"a"},
  };
  for (const auto& c : cases)
    EXPECT_EQ(TextAs(c.from, c.type), c.text) << ToUtf8(PropVariantToText(c.from)) << " " << c.type;
}

TEST(Variant, BetweenTheStructures) {
  const struct {
    TPropVariant from;
    VARTYPE type;
  } cases[] = {
      {TPropVariant(), VT_EMPTY},
      {TPropVariant::Null(), VT_NULL},
      {TPropVariant::From(-5), VT_I4},
      {TPropVariant::From(UINT64_MAX), VT_UI8},
      {TPropVariant::From(true), VT_BOOL},
      {TPropVariant::FromDate(1.5), VT_DATE},
      {TPropVariant::From(kTime), VT_DATE},
      {TPropVariant::From(u"text"), VT_BSTR},
      {TPropVariant::From(TStringArray{u"a", u"b"}), VT_BSTR},
  };
  for (const auto& c : cases) {
    TVariant variant;
    TPropVariant back;
    ASSERT_EQ(PropVariantToVariantValue(c.from, *variant.Put()), S_OK);
    EXPECT_EQ(variant.GetType(), c.type);
    EXPECT_EQ(VariantToText(variant), PropVariantToText(c.from));
    ASSERT_EQ(VariantToPropVariantValue(variant, *back.Put()), S_OK);
    EXPECT_EQ(back.GetType(), c.type);
    EXPECT_EQ(PropVariantToText(back), PropVariantToText(c.from));
  }
}

TEST(Variant, OrderOfValues) {
  // Each row stands before the next one; values of one row are equal.
  const std::vector<std::vector<TPropVariant>> numbers = {
      {TPropVariant(), TPropVariant::Null(), TPropVariant::From(TStringArray{})},
      {TPropVariant::From(std::nan(""))},
      {TPropVariant::From(INT64_MIN), TPropVariant::From(-0x1p63)},
      {TPropVariant::From(-1), TPropVariant::From(-1.0), TPropVariant::From(u"-1")},
      {TPropVariant::From(0.5)},
      {TPropVariant::From(1), TPropVariant::From(1u), TPropVariant::From(std::uint64_t{1})},
      {TPropVariant::From((std::int64_t{1} << 53))},
      {TPropVariant::From((std::int64_t{1} << 53) + 1)},
      {TPropVariant::From(INT64_MAX)},
      {TPropVariant::From(0x1p63), TPropVariant::From(std::uint64_t{1} << 63)},
      {TPropVariant::From(UINT64_MAX)},
      {TPropVariant::From(HUGE_VAL)},
  };
  const std::vector<std::vector<TPropVariant>> texts = {
      {TPropVariant::Null()},
      {TPropVariant::From(u"")},
      {TPropVariant::From(u"File 2"), TPropVariant::From(u"FILE 2")},
      {TPropVariant::From(u"file 10")},
  };
  const std::vector<std::vector<TPropVariant>> times = {
      {TPropVariant()},
      {TPropVariant::From(FILETIME{})},
      {TPropVariant::From(kTime), TPropVariant::FromDate(FileTimeToDateTime(kTime)),
       TPropVariant::From(u"2006/09/16:20:13:15.001")},
      {TPropVariant::From(u"2006/09/16:20:13:15.002")},
  };
  for (const auto* rows : {&numbers, &texts, &times})
    for (std::size_t i = 0; i < rows->size(); ++i)
      for (std::size_t j = 0; j < rows->size(); ++j)
        for (const TPropVariant& a : (*rows)[i])
          for (const TPropVariant& b : (*rows)[j]) {
            if (a.GetType() == VT_LPWSTR && b.GetType() != VT_LPWSTR && !b.IsEmpty() && !b.IsNull())
              continue;  // compared as texts
            EXPECT_EQ(ComparePropVariants(a, b), i < j   ? -1
                                                 : i > j ? 1
                                                         : 0)
                << i << " " << j << " " << a.GetType() << " " << b.GetType();
          }
}

TEST(Variant, DifferentTypesAreComparedAsTheFirst) {
  EXPECT_EQ(ComparePropVariants(TPropVariant::From(9), TPropVariant::From(u"10")), -1);
  EXPECT_EQ(ComparePropVariants(TPropVariant::From(u"9x"), TPropVariant::From(10)), -1);
  EXPECT_EQ(ComparePropVariants(TPropVariant::From(true), TPropVariant::From(5)), 0);
  // No common type: by type number, both ways round.
  EXPECT_EQ(ComparePropVariants(TPropVariant::From(40000), TPropVariant::From(kTime)), -1);
  EXPECT_EQ(ComparePropVariants(TPropVariant::From(kTime), TPropVariant::From(40000)), 1);
  EXPECT_EQ(CompareVariants(TVariant::From(u"a2"), TVariant::From(u"A10")), -1);
  EXPECT_EQ(CompareVariants(TVariant(), TVariant::From(0)), -1);
}

}  // namespace
}  // namespace oak
