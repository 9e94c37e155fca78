// Identifiers of the shell's interfaces, and what an object of ours answers for them.
#include <gtest/gtest.h>

#include <set>
#include <string>

#include "oak/base/InterfacedObject.h"
#include "oak/platform/shell_api.h"

namespace oak {
namespace {

struct TCondition final : TInterfacedObject<IQuerySolution, IObjectWithSite> {
  HRESULT STDMETHODCALLTYPE MakeNot(ICondition*, BOOL, ICondition**) override { return E_NOTIMPL; }
  HRESULT STDMETHODCALLTYPE MakeAndOr(CONDITION_TYPE, IEnumUnknown*, BOOL, ICondition**) override {
    return E_NOTIMPL;
  }
  HRESULT STDMETHODCALLTYPE MakeLeaf(LPCWSTR, CONDITION_OPERATION, LPCWSTR, const PROPVARIANT*,
                                     IRichChunk*, IRichChunk*, IRichChunk*, BOOL,
                                     ICondition**) override {
    return E_NOTIMPL;
  }
  HRESULT STDMETHODCALLTYPE Resolve(ICondition*, STRUCTURED_QUERY_RESOLVE_OPTION, const SYSTEMTIME*,
                                    ICondition**) override {
    return E_NOTIMPL;
  }
  HRESULT STDMETHODCALLTYPE GetQuery(ICondition**, IEntity**) override { return E_NOTIMPL; }
  HRESULT STDMETHODCALLTYPE GetErrors(REFIID, void**) override { return E_NOTIMPL; }
  HRESULT STDMETHODCALLTYPE GetLexicalData(LPWSTR*, ITokenCollection**, LCID*,
                                           IUnknown**) override {
    return E_NOTIMPL;
  }
  HRESULT STDMETHODCALLTYPE SetSite(IUnknown*) override { return E_NOTIMPL; }
  HRESULT STDMETHODCALLTYPE GetSite(REFIID, void**) override { return E_NOTIMPL; }
};

TEST(Interfaces, ObjectAnswersForAncestorsAndKeepsOneIdentity) {
  const Ref<IQuerySolution> solution = MakeRef<TCondition>();
  const Ref<IConditionFactory> factory = solution.As<IConditionFactory>();
  const Ref<IObjectWithSite> site = solution.As<IObjectWithSite>();
  ASSERT_TRUE(factory && site);
  EXPECT_EQ(factory.Get(), solution.Get());
  EXPECT_EQ(site.As<IUnknown>(), factory.As<IUnknown>());
  EXPECT_FALSE(solution.As<IQueryParser>());
  EXPECT_EQ(site.As<IQuerySolution>(), solution);
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
