// Identifiers of the shell's interfaces, and what an object of ours answers for them.
#include <gtest/gtest.h>

#include <set>
#include <string>

#include "oak/base/InterfacedObject.h"
#include "oak/platform/shell_api.h"

namespace oak {
namespace {

struct TPlace final : TInterfacedObject<IPersistFolder2, IObjectWithSite> {
  HRESULT STDMETHODCALLTYPE GetClassID(CLSID*) override { return E_NOTIMPL; }
  HRESULT STDMETHODCALLTYPE Initialize(PCIDLIST_ABSOLUTE) override { return E_NOTIMPL; }
  HRESULT STDMETHODCALLTYPE GetCurFolder(PIDLIST_ABSOLUTE*) override { return E_NOTIMPL; }
  HRESULT STDMETHODCALLTYPE SetSite(IUnknown*) override { return E_NOTIMPL; }
  HRESULT STDMETHODCALLTYPE GetSite(REFIID, void**) override { return E_NOTIMPL; }
};

TEST(Interfaces, ObjectAnswersForAncestorsAndKeepsOneIdentity) {
  const Ref<IPersistFolder2> place = MakeRef<TPlace>();
  const Ref<IPersist> ancestor = place.As<IPersist>();
  const Ref<IObjectWithSite> site = place.As<IObjectWithSite>();
  ASSERT_TRUE(ancestor && site);
  EXPECT_EQ(ancestor.Get(), place.Get());
  EXPECT_EQ(site.As<IUnknown>(), ancestor.As<IUnknown>());
  EXPECT_FALSE(place.As<IPersistFile>());
  EXPECT_EQ(site.As<IPersistFolder2>(), place);
}

std::string TextOf(const GUID& id) {
  char text[40];
  std::snprintf(text, sizeof text, "%08X-%04X-%04X-%02X%02X-%02X%02X%02X%02X%02X%02X",
                static_cast<unsigned>(id.Data1), id.Data2, id.Data3, id.Data4[0], id.Data4[1],
                id.Data4[2], id.Data4[3], id.Data4[4], id.Data4[5], id.Data4[6], id.Data4[7]);
  return text;
}

TEST(Interfaces, EveryInterfaceHasAnIdentifierOfItsOwn) {
  std::set<std::string> seen;
  int count = 0;
#define OAK_INTERFACE(Name, Ancestor)                              \
  ++count;                                                         \
  EXPECT_TRUE(seen.insert(TextOf(IidOf<Name>())).second) << #Name; \
  static_assert(std::is_base_of_v<Ancestor, Name>);
  OAK_SHELL_INTERFACES
#undef OAK_INTERFACE
  EXPECT_EQ(static_cast<int>(seen.size()), count);
}

TEST(Interfaces, IdentifiersReadFromTextKeepTheOrderOfBytes) {
  EXPECT_EQ(TextOf(detail::GuidOf("000214E6-0001-0203-c0a1-0123456789ab")),
            "000214E6-0001-0203-C0A1-0123456789AB");
  EXPECT_EQ(TextOf(IID_IShellFolder), "000214E6-0000-0000-C000-000000000046");
  EXPECT_EQ(TextOf(FOLDERID_Documents), "FDD39AD0-238F-46AF-ADB4-6C85480369C7");
}

}  // namespace
}  // namespace oak
