// Exceptions, HRESULT checks and GUID text.
#include <gtest/gtest.h>

#include "oak/base/Exceptions.h"
#include "oak/base/Guid.h"
#include "oak/base/HResult.h"
#include "oak/base/InterfacedObject.h"

namespace oak {
namespace {

class TTalker : public TInterfacedObject<IHasDebugInfo> {
 public:
  TString GetInfo(TItemIdListInfoLevel level) override {
    return level == TItemIdListInfoLevel::Normal ? u"state 7" : u"too much";
  }
};

struct TSilent : IUnknown {
  static constexpr GUID Iid{0x1, 2, 3, {4}};
};
class TSilentObject : public TInterfacedObject<TSilent> {};

/// Puts a system's texts in place for one test.
class TErrorTexts {
 public:
  TErrorTexts() {
    SetErrorTextProvider(
        [](std::uint32_t code) { return code == 5 ? TString(u"Denied") : TString(); });
  }
  ~TErrorTexts() { SetErrorTextProvider(nullptr); }
};

TEST(Errors, MessagesOfFolderTrekError) {
  const TErrorTexts texts;
  const auto talker = MakeRef<TTalker>();
  const auto silent = MakeRef<TSilentObject>();
  IUnknown* const nobody = nullptr;
  EXPECT_EQ(EFolderTrekError(5u, u"").GetMessage(), u"Denied");
  EXPECT_EQ(EFolderTrekError(5u, u"C:\\x").GetMessage(), u"Denied C:\\x");
  EXPECT_EQ(EFolderTrekError(u"Lost", talker.Get()).GetMessage(), u"Lost Internal data: state 7");
  EXPECT_EQ(EFolderTrekError(u"Lost", silent.Get()).GetMessage(), u"Lost");
  EXPECT_EQ(EFolderTrekError(u"Lost", nobody).GetMessage(), u"Lost");
  EXPECT_EQ(EFolderTrekError(u"Lost", nobody).GetErrorCode(), 0u);
  EXPECT_EQ(EFolderTrekError(5u, talker.Get()).GetMessage(), u"Denied  Internal data: state 7");
  EXPECT_EQ(EFolderTrekError(5u, nobody).GetMessage(), u"Denied");
}

TEST(Errors, CheckForErrorPicksTheCode) {
  const std::pair<std::uint32_t, std::uint32_t> cases[] = {
      {0x80070002u, 2},           {0x80070001u, 0x80070001u}, {0x80072F8Fu, 12175},
      {0x80072F90u, 0x80072F90u}, {0x80004005u, 0x80004005u}, {0x80040111u, 273},
  };
  for (const auto& [value, code] : cases) {
    try {
      THResultHelper::CheckForError(static_cast<HRESULT>(value), u"there");
      ADD_FAILURE() << std::hex << value << " did not raise";
    } catch (const EFolderTrekError& error) {
      EXPECT_EQ(error.GetErrorCode(), code) << std::hex << value;
      EXPECT_TRUE(EndsWith(error.GetMessage(), u" there"));
    }
  }
  EXPECT_NO_THROW(THResultHelper::CheckForError(S_FALSE));
  EXPECT_EQ(THResultHelper::ToString(E_FAIL), u"80004005");
  EXPECT_THROW(OleCheck(E_FAIL), EOleSysError);
  EXPECT_NO_THROW(OleCheck(S_FALSE));
}

TEST(Guid, TextBothWays) {
  constexpr GUID kGuid{
      0x68F5A3CD, 0xB8FE, 0x4400, {0xB3, 0x12, 0xDC, 0x23, 0x34, 0xAF, 0x73, 0x0E}};
  EXPECT_EQ(GuidToString(kGuid), u"{68F5A3CD-B8FE-4400-B312-DC2334AF730E}");
  for (const TStringView text :
       {u"{68F5A3CD-B8FE-4400-B312-DC2334AF730E}", u"68f5a3cd-b8fe-4400-b312-dc2334af730e"}) {
    GUID read{};
    EXPECT_TRUE(TryParseGuid(text, read));
    EXPECT_TRUE(IsEqualGUID(read, kGuid));
  }
  for (const TStringView text :
       {u"", u"{68F5A3CD-B8FE-4400-B312-DC2334AF730E", u"{68F5A3CD-B8FE-4400-B312-DC2334AF730E)",
        u"{68F5A3CD-B8FE-4400-B312DC2334AF730E-}", u"68F5A3CDXB8FE-4400-B312-DC2334AF730E",
        u"68F5A3CG-B8FE-4400-B312-DC2334AF730E", u"-8F5A3CD-B8FE-4400-B312-DC2334AF730E",
        u"68F5A3CD-B8FE-4400-B312-DC2334AF730E0"}) {
    GUID read = kGuid;
    EXPECT_FALSE(TryParseGuid(text, read)) << ToUtf8(text);
    EXPECT_TRUE(IsEqualGUID(read, kGuid));
  }
}

}  // namespace
}  // namespace oak
