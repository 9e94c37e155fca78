// Search folders over a search engine that writes down what it is asked.
#include <gtest/gtest.h>

#include <vector>

#include "oak/namespace/OakItemIdList.h"
#include "testkit/ScopedApi.h"
#include "tests/namespace/FakeShellItem.h"
#include "tests/namespace/TestFolder.h"

namespace oak::tests {
namespace {

using testkit::TScopedApi;

using TItem = TOakItemIdList;

/// What the engine was asked, and which step is to fail (none: 0).
struct TEngineLog {
  std::vector<std::string> Steps;
  std::size_t FailingStep = 0;

  HRESULT Add(std::string step) {
    Steps.push_back(std::move(step));
    return Steps.size() == FailingStep ? E_ACCESSDENIED : S_OK;
  }
};

class TFakeCondition final : public TInterfacedObject<ICondition> {
 public:
  HRESULT STDMETHODCALLTYPE GetClassID(CLSID*) override { return E_NOTIMPL; }
  HRESULT STDMETHODCALLTYPE IsDirty() override { return E_NOTIMPL; }
  HRESULT STDMETHODCALLTYPE Load(IStream*) override { return E_NOTIMPL; }
  HRESULT STDMETHODCALLTYPE Save(IStream*, BOOL) override { return E_NOTIMPL; }
  HRESULT STDMETHODCALLTYPE GetSizeMax(ULARGE_INTEGER*) override { return E_NOTIMPL; }
  HRESULT STDMETHODCALLTYPE GetConditionType(CONDITION_TYPE*) override { return E_NOTIMPL; }
  HRESULT STDMETHODCALLTYPE GetSubConditions(REFIID, void**) override { return E_NOTIMPL; }
  HRESULT STDMETHODCALLTYPE GetComparisonInfo(LPWSTR*, CONDITION_OPERATION*,
                                              PROPVARIANT*) override {
    return E_NOTIMPL;
  }
  HRESULT STDMETHODCALLTYPE GetValueType(LPWSTR*) override { return E_NOTIMPL; }
  HRESULT STDMETHODCALLTYPE GetValueNormalization(LPWSTR*) override { return E_NOTIMPL; }
  HRESULT STDMETHODCALLTYPE GetInputTerms(IRichChunk**, IRichChunk**, IRichChunk**) override {
    return E_NOTIMPL;
  }
  HRESULT STDMETHODCALLTYPE Clone(ICondition**) override { return E_NOTIMPL; }
};

HRESULT GiveCondition(HRESULT result, ICondition** condition) {
  *condition = SUCCEEDED(result) ? Ref<ICondition>(MakeRef<TFakeCondition>()).Detach() : nullptr;
  return result;
}

class TFakeSolution final : public TInterfacedObject<IQuerySolution> {
 public:
  explicit TFakeSolution(TEngineLog& log) : fLog(log) {}
  HRESULT STDMETHODCALLTYPE MakeNot(ICondition*, BOOL, ICondition**) override { return E_NOTIMPL; }
  HRESULT STDMETHODCALLTYPE MakeAndOr(CONDITION_TYPE, IEnumUnknown*, BOOL, ICondition**) override {
    return E_NOTIMPL;
  }
  HRESULT STDMETHODCALLTYPE MakeLeaf(LPCWSTR, CONDITION_OPERATION, LPCWSTR, const PROPVARIANT*,
                                     IRichChunk*, IRichChunk*, IRichChunk*, BOOL,
                                     ICondition**) override {
    return E_NOTIMPL;
  }
  HRESULT STDMETHODCALLTYPE Resolve(ICondition*, STRUCTURED_QUERY_RESOLVE_OPTION option,
                                    const SYSTEMTIME* now, ICondition** resolved) override {
    EXPECT_GE(now->wYear, 2000);
    return GiveCondition(fLog.Add("Resolve " + std::to_string(option)), resolved);
  }
  HRESULT STDMETHODCALLTYPE GetQuery(ICondition** condition, IEntity**) override {
    return GiveCondition(fLog.Add("GetQuery"), condition);
  }
  HRESULT STDMETHODCALLTYPE GetErrors(REFIID, void**) override { return E_NOTIMPL; }
  HRESULT STDMETHODCALLTYPE GetLexicalData(LPWSTR*, ITokenCollection**, LCID*,
                                           IUnknown**) override {
    return E_NOTIMPL;
  }

 private:
  TEngineLog& fLog;
};

class TFakeParser final : public TInterfacedObject<IQueryParser> {
 public:
  explicit TFakeParser(TEngineLog& log) : fLog(log) {}
  HRESULT STDMETHODCALLTYPE Parse(LPCWSTR text, IEnumUnknown*, IQuerySolution** solution) override {
    const HRESULT result = fLog.Add("Parse " + ToUtf8(FromW(text)));
    *solution =
        SUCCEEDED(result) ? Ref<IQuerySolution>(MakeRef<TFakeSolution>(fLog)).Detach() : nullptr;
    return result;
  }
  HRESULT STDMETHODCALLTYPE SetOption(STRUCTURED_QUERY_SINGLE_OPTION, const PROPVARIANT*) override {
    return E_NOTIMPL;
  }
  HRESULT STDMETHODCALLTYPE GetOption(STRUCTURED_QUERY_SINGLE_OPTION, PROPVARIANT*) override {
    return E_NOTIMPL;
  }
  HRESULT STDMETHODCALLTYPE SetMultiOption(STRUCTURED_QUERY_MULTIOPTION, LPCWSTR,
                                           const PROPVARIANT*) override {
    return E_NOTIMPL;
  }
  HRESULT STDMETHODCALLTYPE GetSchemaProvider(ISchemaProvider**) override { return E_NOTIMPL; }
  HRESULT STDMETHODCALLTYPE RestateToString(ICondition*, BOOL, LPWSTR*) override {
    return E_NOTIMPL;
  }
  HRESULT STDMETHODCALLTYPE ParsePropertyValue(LPCWSTR, LPCWSTR, IQuerySolution**) override {
    return E_NOTIMPL;
  }
  HRESULT STDMETHODCALLTYPE RestatePropertyValueToString(ICondition*, BOOL, LPWSTR*,
                                                         LPWSTR*) override {
    return E_NOTIMPL;
  }

 private:
  TEngineLog& fLog;
};

class TFakeParserManager final : public TInterfacedObject<IQueryParserManager> {
 public:
  explicit TFakeParserManager(TEngineLog& log) : fLog(log) {}
  HRESULT STDMETHODCALLTYPE CreateLoadedParser(LPCWSTR catalog, LANGID language, REFIID iid,
                                               void** parser) override {
    *parser = nullptr;
    const HRESULT result =
        fLog.Add("CreateLoadedParser " + ToUtf8(FromW(catalog)) + " " + std::to_string(language));
    return FAILED(result) ? result : MakeRef<TFakeParser>(fLog)->QueryInterface(iid, parser);
  }
  HRESULT STDMETHODCALLTYPE InitializeOptions(BOOL natural, BOOL wildcard, IQueryParser*) override {
    return fLog.Add("InitializeOptions " + std::to_string(natural) + std::to_string(wildcard));
  }
  HRESULT STDMETHODCALLTYPE SetOption(QUERY_PARSER_MANAGER_OPTION, const PROPVARIANT*) override {
    return E_NOTIMPL;
  }

 private:
  TEngineLog& fLog;
};

class TFakeSearchFactory final : public TInterfacedObject<ISearchFolderItemFactory> {
 public:
  explicit TFakeSearchFactory(TEngineLog& log) : fLog(log) {}
  HRESULT STDMETHODCALLTYPE SetDisplayName(LPCWSTR name) override {
    return fLog.Add("SetDisplayName " + ToUtf8(FromW(name)));
  }
  HRESULT STDMETHODCALLTYPE SetFolderTypeID(FOLDERTYPEID) override { return E_NOTIMPL; }
  HRESULT STDMETHODCALLTYPE SetFolderLogicalViewMode(FOLDERLOGICALVIEWMODE) override {
    return E_NOTIMPL;
  }
  HRESULT STDMETHODCALLTYPE SetIconSize(int) override { return E_NOTIMPL; }
  HRESULT STDMETHODCALLTYPE SetVisibleColumns(UINT, PROPERTYKEY*) override { return E_NOTIMPL; }
  HRESULT STDMETHODCALLTYPE SetSortColumns(UINT, SORTCOLUMN*) override { return E_NOTIMPL; }
  HRESULT STDMETHODCALLTYPE SetGroupColumn(REFPROPERTYKEY) override { return E_NOTIMPL; }
  HRESULT STDMETHODCALLTYPE SetStacks(UINT, PROPERTYKEY*) override { return E_NOTIMPL; }
  HRESULT STDMETHODCALLTYPE SetScope(IShellItemArray* scope) override {
    DWORD count = 0;
    EXPECT_EQ(scope->GetCount(&count), S_OK);
    return fLog.Add("SetScope " + std::to_string(count));
  }
  HRESULT STDMETHODCALLTYPE SetCondition(ICondition* condition) override {
    EXPECT_NE(condition, nullptr);
    return fLog.Add("SetCondition");
  }
  HRESULT STDMETHODCALLTYPE GetShellItem(REFIID, void**) override { return E_NOTIMPL; }
  HRESULT STDMETHODCALLTYPE GetIDList(PIDLIST_ABSOLUTE* pidl) override {
    const HRESULT result = fLog.Add("GetIDList");
    *pidl = SUCCEEDED(result) ? TestPidl({1, 2}).Detach() : nullptr;
    return result;
  }

 private:
  TEngineLog& fLog;
};

class OakItemIdListSearch : public ::testing::Test {
 protected:
  TEngineLog fLog;
  TTestFolder fFolder;
  Ref<IItemIdList> fScope = TItem::Create(fFolder.Path());

 private:
  TScopedApi<decltype(TApi::CoCreateInstance)> fCreate{
      Api().CoCreateInstance, [this](REFCLSID classId, IUnknown*, DWORD, REFIID iid, void** out) {
        *out = nullptr;
        if (classId == CLSID_QueryParserManager)
          return MakeRef<TFakeParserManager>(fLog)->QueryInterface(iid, out);
        if (classId == CLSID_SearchFolderItemFactory)
          return MakeRef<TFakeSearchFactory>(fLog)->QueryInterface(iid, out);
        return REGDB_E_CLASSNOTREG;
      }};
};

TEST_F(OakItemIdListSearch, WithoutQueryOrScopeThereIsNothing) {
  for (const TStringView query : {u"", u"  \t "})
    EXPECT_TRUE(TItem::CreateSearchFolder(query, fScope)->IsInvalid());
  EXPECT_TRUE(TItem::CreateSearchFolder(u"x", nullptr)->IsInvalid());
  const auto item = TOakSearchFolder::Create(u"x", NullItemIdList());
  EXPECT_TRUE(item->IsInvalid());
  EXPECT_EQ(item->GetSearchScope(), nullptr);
  EXPECT_TRUE(item->IsSlow());
  EXPECT_TRUE(fLog.Steps.empty());
}

TEST_F(OakItemIdListSearch, TheEngineIsAskedInOrder) {
  const auto item = TOakSearchFolder::Create(u" oak ", fScope);
  EXPECT_EQ(fLog.Steps, (std::vector<std::string>{
                            "CreateLoadedParser SystemIndex 1024", "InitializeOptions 01",
                            "SetDisplayName oak", "SetScope 1", "Parse System.Generic.String:oak",
                            "GetQuery", "Resolve 64", "SetCondition", "GetIDList"}));
  EXPECT_EQ(item->Depth(), 2);
  EXPECT_EQ(item->GetSearchScope(), fScope);
  EXPECT_TRUE(static_cast<IItemIdList&>(*item.Get()).IsSlow());
  fLog.Steps.clear();
  (void)TItem::CreateSearchFolder(u"size:>1", fScope);
  EXPECT_EQ(fLog.Steps[4], "Parse size:>1");
}

TEST_F(OakItemIdListSearch, EveryFailedStepRaises) {
  for (fLog.FailingStep = 1; fLog.FailingStep <= 9; ++fLog.FailingStep) {
    fLog.Steps.clear();
    try {
      (void)TOakSearchFolder::Create(u"oak", fScope);
      ADD_FAILURE() << "nothing was raised at step " << fLog.FailingStep;
    } catch (const EOleSysError& error) {
      EXPECT_EQ(error.GetErrorCode(), E_ACCESSDENIED);
      EXPECT_EQ(fLog.Steps.size(), fLog.FailingStep);
    }
  }
}

TEST(OakItemIdListNoSearch, ASystemThatCanNotSearchRaises) {
  const TScopedApi none(Api().CoCreateInstance,
                        [](REFCLSID, IUnknown*, DWORD, REFIID, void** out) -> HRESULT {
                          *out = nullptr;
                          return REGDB_E_CLASSNOTREG;
                        });
  const auto scope = TItem::CreateForSpecialFolder(SF_DESKTOP, true);
  EXPECT_THROW((void)TItem::CreateSearchFolder(u"oak", scope), EOleSysError);
}

}  // namespace
}  // namespace oak::tests
