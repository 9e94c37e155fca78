// Column identifiers and property values.
#include <gtest/gtest.h>

#include "oak/namespace/Oak.Shell.Types.h"
#include "oak/namespace/Shell_Win32.Keys.h"
#include "oak/namespace/Shell_Win32.Properties.h"
#include "testkit/ScopedApi.h"
#include "tests/namespace/FakePropertySystem.h"

namespace oak {
namespace {

using testkit::TScopedApi;

HRESULT NotFound() {
  return HRESULT_FROM_WIN32(1168);  // ERROR_NOT_FOUND
}

// A system that has no property descriptions at all, or is older than they are.
class TNoPropertySystem {
 public:
  TNoPropertySystem() { ForgetColumnLabels(); }
  ~TNoPropertySystem() { ForgetColumnLabels(); }

 private:
  TScopedApi<decltype(TApi::PSGetPropertySystem)> fSystem{Api().PSGetPropertySystem, nullptr};
  TScopedApi<decltype(TApi::PSGetPropertyDescription)> fDescription{Api().PSGetPropertyDescription,
                                                                    nullptr};
  TScopedApi<decltype(TApi::PSGetPropertyKeyFromName)> fKey{Api().PSGetPropertyKeyFromName,
                                                            nullptr};
  TScopedApi<decltype(TApi::PSGetNameFromPropertyKey)> fName{Api().PSGetNameFromPropertyKey,
                                                             nullptr};
};

TEST(ShellColumnId, IsAPropertyKey) {
  const PROPERTYKEY key = TShellColumns::Size();
  EXPECT_EQ(key.pid, 12u);
  EXPECT_EQ(TShellColumnId(key), ShellColumnSize);
  EXPECT_EQ(AsPropertyKey(&ShellColumnSize)->pid, 12u);
  EXPECT_FALSE(TShellColumns::Size() == TShellColumns::Name());
  EXPECT_FALSE(TShellColumns::FreeSize() == TShellColumnId(FMTID_Storage, 2));
  EXPECT_FALSE(TShellColumns::Invalid().IsValid());
  EXPECT_FALSE(TShellColumnId(GUID{}, 5).IsValid());
  EXPECT_TRUE(TShellColumnId(FMTID_Storage, 0).IsValid());
  EXPECT_TRUE(TShellColumns::IsCustomColumnId(TShellColumns::CreateCustomId(7)));
  EXPECT_FALSE(TShellColumns::IsEqualShellColumnId(TShellColumns::CreateCustomId(7),
                                                   TShellColumns::CreateCustomId(8)));
  EXPECT_EQ(SubstituteMetaData(TShellColumns::StorageProviderUIStatus()),
            TShellColumns::StorageProviderState());
  EXPECT_EQ(SubstituteMetaData(TShellColumns::Size()), TShellColumns::Size());
}

TEST(ShellColumnId, WithoutAPropertySystemNothingIsKnown) {
  const TNoPropertySystem none;
  EXPECT_EQ(TShellColumns::Size().ToString(), u"");
  EXPECT_EQ(TShellColumns::Size().DisplayName(), u"");
  EXPECT_EQ(TShellColumns::Size().GetDisplayType(), -1);
  EXPECT_EQ(TShellColumnId::FromString(u"System.Size"), TShellColumns::Invalid());
  EXPECT_EQ(PropVariantAsDisplayString(TPropVariant::From(u"text"), TShellColumns::Name()),
            u"text");
}

TEST(ShellColumnId, AsksForTheCanonicalNameFirst) {
  const TScopedApi names(Api().PSGetPropertyKeyFromName, [](LPCWSTR name, PROPERTYKEY* key) {
    if (FromW(name) != u"System.Size") return NotFound();
    *key = TShellColumns::Size();
    return HRESULT{S_OK};
  });
  const TScopedApi noLabels(Api().PSGetPropertySystem, [](REFIID, void**) { return E_NOTIMPL; });
  ForgetColumnLabels();
  EXPECT_EQ(TShellColumnId::FromString(u"System.Size"), TShellColumns::Size());
  EXPECT_EQ(TShellColumnId::FromString(u"none"), TShellColumns::Invalid());
}

TEST(ShellColumnId, FindsLabelsInAnyCaseTheLastOneFirst) {
  const test::TScopedPropertySystem scoped;
  ForgetColumnLabels();
  scoped.System->Add(TShellColumns::Name(), u"Größe");
  scoped.System->Add(TShellColumns::Size(), u"größe");
  scoped.System->Add(TShellColumns::WriteTime(), u"Date modified");
  scoped.System->Add(TShellColumns::Path(), u"");
  EXPECT_EQ(TShellColumnId::FromString(u"GRÖßE"), TShellColumns::Size());
  EXPECT_EQ(TShellColumnId::FromString(u"date MODIFIED"), TShellColumns::WriteTime());
  EXPECT_EQ(TShellColumnId::FromString(u""), TShellColumns::Invalid());
  EXPECT_EQ(TShellColumnId::FromString(u"Date"), TShellColumns::Invalid());
  EXPECT_EQ(scoped.System->Enumerations, 1);

  EXPECT_EQ(TShellColumns::WriteTime().DisplayName(), u"Date modified");
  EXPECT_EQ(TShellColumns::WriteTime().GetDisplayType(), PDDT_DATETIME);
  EXPECT_EQ(TShellColumns::Path().DisplayName(), u"");
  EXPECT_EQ(TShellColumns::FreeSize().GetDisplayType(), -1);
  EXPECT_EQ(TShellColumns::Invalid().GetDisplayType(), -1);
  ForgetColumnLabels();
}

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
  TOakExceptionHelper::AddMessageInfo(
      error, MakeRef<test::TFakeDescription>(PROPERTYKEY{}, TString()).Get());
  EXPECT_EQ(error.GetMessage(), u"Failed.");
  TOakExceptionHelper::AddMessageInfo(error, MakeRef<TTalking>().Get());
  EXPECT_EQ(error.GetMessage(), u"Failed. Internal data: state");
  EXPECT_STREQ(error.what(), "Failed. Internal data: state");
}

TEST(ShellFolderHelper, NamesFoldersAndValues) {
  EXPECT_EQ(TOakShellFolderHelper::ToIdentifier(SF_FILESYSTEMFOLDER), u"SF_FILESYSTEMFOLDER");
  EXPECT_EQ(TOakShellFolderHelper::ToIdentifier(SF_PROGRAM_FILES_COMMONX86),
            u"SF_PROGRAM_FILES_COMMONX86");
  EXPECT_EQ(TOakShellFolderHelper::ToIdentifier(SF_INVALID), u"SF_INVALID");
  EXPECT_EQ(TOakShellFolderHelper::ToIdentifier(static_cast<TOakShellFolder>(58)), u"");
  EXPECT_NE(TOakShellFolderHelper::ToString(SF_DRIVES), u"");
  EXPECT_EQ(TOakShellFolderHelper::ToString(SF_INVALID), u"");
  EXPECT_EQ(TOakShellFolderHelper::ToPath(SF_INVALID), u"");
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

TEST(ShellPropertyValue, OwnsItsValueThroughCopiesAndVariants) {
  TShellPropertyValue text = TPropVariant::From(u"text");
  TShellPropertyValue copy = text;
  text = TPropVariant::From(7);
  EXPECT_EQ(copy.ToString(), u"text");
  EXPECT_TRUE(copy == TShellPropertyValue(TPropVariant::From(u"text")));
  EXPECT_FALSE(copy == text);
  EXPECT_LT(TShellPropertyValue(TPropVariant::From(7)).CompareTo(TPropVariant::From(8)), 0);

  const TVariant variant = copy.ToVariant();
  EXPECT_EQ(variant.GetType(), VT_BSTR);
  EXPECT_EQ(TShellPropertyValue(variant).ToString(), u"text");
  EXPECT_TRUE(TShellPropertyValue().ToVariant().IsEmpty());
  EXPECT_TRUE(TShellPropertyValue::CreateNull().ToVariant().IsNull());
  EXPECT_TRUE(TShellPropertyValue(TVariant()).IsEmpty());
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
