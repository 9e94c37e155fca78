// Texts of properties, and property values.
#include <gtest/gtest.h>

#include "oak/namespace/Oak.Shell.Types.h"
#include "oak/namespace/Shell_Win32.Keys.h"
#include "oak/namespace/Shell_Win32.Properties.h"
#include "testkit/ScopedApi.h"
#include "tests/namespace/FakePropertySystem.h"

namespace oak {
namespace {

using testkit::TScopedApi;

TEST(PropertyText, TakesTheFormOfThePropertyOrThePlainText) {
  const test::TScopedPropertySystem scoped;
  scoped.System->FormattedText = u"12 KB";
  const TPropVariant value = TPropVariant::From(u"12000");
  EXPECT_EQ(PropVariantAsDisplayString(value, TShellColumns::Size()), u"12 KB");
  EXPECT_EQ(scoped.System->FormatFlags, 8196);
  EXPECT_EQ(PropVariantAsDisplayString(value, TShellColumns::StorageProviderUIStatus()), u"12 KB");
  EXPECT_EQ(scoped.System->FormatFlags, 8192);
  EXPECT_EQ(TShellColumnId(scoped.System->FormattedKey), TShellColumns::StorageProviderState());
  EXPECT_EQ(VariantToStringViaPropertySystem(TVariant::From(u"x"), TShellColumns::Name()),
            u"12 KB");

  scoped.System->FormattedText.clear();
  EXPECT_EQ(PropVariantAsDisplayString(value, TShellColumns::Size()), u"12000");
  const TScopedApi missing(Api().PSGetPropertyDescription, nullptr);
  scoped.System->FormattedText = u"not asked";
  EXPECT_EQ(PropVariantAsDisplayString(value, TShellColumns::Size()), u"12000");
}

/// Answers for its state.
class TTalking final : public TInterfacedObject<IHasDebugInfo> {
 public:
  TString GetInfo(TItemIdListInfoLevel level) override {
    return level == TItemIdListInfoLevel::Normal ? u"state" : u"too much";
  }
};

TEST(ExceptionHelper, AddsWhatTheObjectTells) {
  Exception error(u"Failed.");
  TOakExceptionHelper::AddMessageInfo(error, nullptr);
  TOakExceptionHelper::AddMessageInfo(error, MakeRef<test::TFakePropertySystem>().Get());
  EXPECT_EQ(error.GetMessage(), u"Failed.");
  TOakExceptionHelper::AddMessageInfo(error, MakeRef<TTalking>().Get());
  EXPECT_EQ(error.GetMessage(), u"Failed. Internal data: state");
  EXPECT_STREQ(error.what(), "Failed. Internal data: state");
}

// --- values ----------------------------------------------------------------

/// Two hours east of UTC, always.
class TZoneOfValues {
  TScopedApi<decltype(TApi::GetTimeZoneInformation)> fZone{Api().GetTimeZoneInformation,
                                                           [](TIME_ZONE_INFORMATION* zone) {
                                                             *zone = {};
                                                             zone->Bias = -120;
                                                             return DWORD{TIME_ZONE_ID_UNKNOWN};
                                                           }};
};

TEST(ShellPropertyValue, DatesAreShiftedByTheirKind) {
  const TZoneOfValues zone;
  const TDateTime noon = EncodeDate(2024, 7, 1) + 0.5;
  constexpr double hour = 1.0 / 24;
  const struct {
    TShellPropertyValue Value;
    TDateTime Date, Local, File;
  } rows[] = {
      {TPropVariant::From(DateTimeToFileTime(noon)), noon + 2 * hour, noon + 4 * hour,
       noon + 2 * hour},
      {TPropVariant::FromDate(noon), noon, noon, noon - 2 * hour},
      {TPropVariant::From(noon), noon, noon, noon},
      {TPropVariant::From(45000), 45000, 45000, 45000},
      {TPropVariant::From(u"1.5"), 1.5, 1.5, 1.5},
      {TPropVariant::From(u"soon"), 0, 0, 0},
      {TShellPropertyValue(), 0, 0, 0},
      {TShellPropertyValue::CreateNull(), 0, 0, 0},
  };
  constexpr double millisecond = hour / 3'600'000;
  for (const auto& row : rows) {
    EXPECT_NEAR(row.Value.ToDateTime(), row.Date, millisecond) << row.Value.GetType();
    EXPECT_NEAR(row.Value.ToLocalDateTime(), row.Local, millisecond) << row.Value.GetType();
    EXPECT_NEAR(row.Value.ToFileDateTime(), row.File, millisecond) << row.Value.GetType();
  }

  const TScopedApi noZone(Api().GetTimeZoneInformation,
                          [](TIME_ZONE_INFORMATION*) { return DWORD{TIME_ZONE_ID_INVALID}; });
  EXPECT_NEAR(rows[0].Value.ToDateTime(), noon, millisecond);
}

TEST(ShellPropertyValue, NumbersAreWholeOrNothing) {
  const std::int64_t big = std::int64_t{1} << 53;
  const struct {
    TShellPropertyValue Value;
    std::int64_t Expected;
  } rows[] = {
      {TPropVariant::From(big + 1), big + 1},
      {TPropVariant::From(2.6), 3},
      {TPropVariant::From(u"42"), 42},
      {TPropVariant::From(u"x"), 0},
      {TPropVariant::FromDate(45000.7), 45001},
      {TPropVariant::From(1e300), 0},
      {TPropVariant::From(-1e300), 0},
      {TShellPropertyValue::CreateNull(), 0},
      {TPropVariant::From(~std::uint64_t{0}), 0},
  };
  for (const auto& row : rows) EXPECT_EQ(row.Value.ToInt64(), row.Expected) << row.Value.GetType();
}

TEST(ShellPropertyValue, FailedConversionsAreNullAndMissingOnesOurs) {
  {
    const TScopedApi toVariant(Api().PropVariantToVariant,
                               [](const PROPVARIANT*, VARIANT*) { return E_FAIL; });
    const TScopedApi toValue(Api().VariantToPropVariant,
                             [](const VARIANT*, PROPVARIANT*) { return E_FAIL; });
    EXPECT_TRUE(TShellPropertyValue(TPropVariant::From(7)).ToVariant().IsNull());
    EXPECT_TRUE(TShellPropertyValue().ToVariant().IsEmpty());
    EXPECT_TRUE(TShellPropertyValue(TVariant::From(7)).IsNull());
    EXPECT_EQ(VariantToStringViaPropertySystem(TVariant::From(7), TShellColumns::Size()), u"");
  }
  const TScopedApi noToVariant(Api().PropVariantToVariant, nullptr);
  const TScopedApi noToValue(Api().VariantToPropVariant, nullptr);
  const TScopedApi noCompare(Api().PropVariantCompareEx, nullptr);
  const TScopedApi noChange(Api().PropVariantChangeType, nullptr);
  const TShellPropertyValue seven = TPropVariant::From(7);
  EXPECT_EQ(TShellPropertyValue(seven.ToVariant()).ToString(), u"7");
  EXPECT_GT(seven.CompareTo(TPropVariant::From(6)), 0);
}

}  // namespace
}  // namespace oak
