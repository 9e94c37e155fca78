// Variants that cross an interface.
#include <gtest/gtest.h>

#include <cstring>

#include "oak/base/InterfacedObject.h"
#include "oak/base/Text.h"
#include "oak/platform/shell_api.h"

namespace oak {
namespace {

struct TCounted final : TInterfacedObject<IUnknown> {
  ULONG Count() {
    AddRef();
    return Release();
  }
};

TEST(Memory, CopiesOfEveryPointerAreTheirOwn) {
  GUID id = FOLDERID_Desktop;
  BYTE bytes[] = {1, 2, 3};
  TString text = u"text";
  PROPVARIANT values[5]{};
  values[0].vt = VT_LPWSTR;
  values[0].pwszVal = WBuffer(text);
  values[1].vt = VT_CLSID;
  values[1].puuid = &id;
  values[2].vt = VT_BLOB;
  values[2].blob = {3, bytes};
  values[3].vt = VT_VECTOR | VT_UI1;
  values[3].caub = {3, bytes};
  values[4].vt = VT_FILETIME;
  values[4].filetime = {5, 6};
  PROPVARIANT copies[5]{};
  for (int i = 0; i < 5; ++i) ASSERT_EQ(PropVariantCopy(&copies[i], &values[i]), S_OK) << i;
  EXPECT_NE(copies[0].pwszVal, values[0].pwszVal);
  EXPECT_EQ(FromW(copies[0].pwszVal), text);
  EXPECT_NE(copies[1].puuid, &id);
  EXPECT_EQ(*copies[1].puuid, id);
  EXPECT_NE(copies[2].blob.pBlobData, bytes);
  EXPECT_EQ(std::memcmp(copies[2].blob.pBlobData, bytes, 3), 0);
  EXPECT_NE(copies[3].caub.pElems, bytes);
  EXPECT_EQ(std::memcmp(copies[3].caub.pElems, bytes, 3), 0);
  EXPECT_EQ(copies[4].filetime.dwHighDateTime, 6u);
  for (PROPVARIANT& copy : copies) EXPECT_EQ(PropVariantClear(&copy), S_OK);
}

TEST(Memory, ObjectsInVariantsAreCounted) {
  const Ref<TCounted> object = MakeRef<TCounted>();
  object->AddRef();
  PROPVARIANT value{};
  value.vt = VT_UNKNOWN;
  value.punkVal = object.Get();
  PROPVARIANT copy{};
  ASSERT_EQ(PropVariantCopy(&copy, &value), S_OK);
  EXPECT_EQ(object->Count(), 3u);
  PropVariantClear(&value);
  PropVariantClear(&copy);
  EXPECT_EQ(object->Count(), 1u);

  object->AddRef();
  VARIANT variant{};
  variant.vt = VT_UNKNOWN;
  variant.punkVal = object.Get();
  VARIANT target{};
  target.vt = VT_BSTR;
  target.bstrVal = SysAllocString(W(u"old"));
  ASSERT_EQ(VariantCopy(&target, &variant), S_OK);  // frees what was there
  EXPECT_EQ(VariantCopy(&target, &target), S_OK);
  EXPECT_EQ(object->Count(), 3u);
  VariantClear(&variant);
  VariantClear(&target);
  EXPECT_EQ(object->Count(), 1u);
}

TEST(Memory, TypesThatNobodyKnowsAreRefusedWithoutHarm) {
  PROPVARIANT strange{};
  strange.vt = 0x1FF;
  PROPVARIANT copy{};
  copy.vt = VT_I4;
  EXPECT_TRUE(FAILED(PropVariantCopy(&copy, &strange)));
  EXPECT_TRUE(FAILED(PropVariantClear(&strange)));
}

}  // namespace
}  // namespace oak
