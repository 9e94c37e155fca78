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

/// The whole engine in one object: parser and its manager, solution, condition and factory. It
/// writes down what it is asked, and fails at the step that the test chooses (none: 0).
class TFakeEngine final
    : public TInterfacedObject<IQueryParserManager, IQueryParser, IQuerySolution, ICondition,
                               ISearchFolderItemFactory> {
 public:
  std::vector<std::string> Steps;
  std::size_t FailingStep = 0;

  // Manager of parsers.
  HRESULT STDMETHODCALLTYPE CreateLoadedParser(LPCWSTR catalog, LANGID language, REFIID iid,
                                               void** parser) override {
    *parser = nullptr;
    const HRESULT result =
        Add("CreateLoadedParser " + ToUtf8(FromW(catalog)) + " " + std::to_string(language));
    return FAILED(result) ? result : QueryInterface(iid, parser);
  }
  HRESULT STDMETHODCALLTYPE InitializeOptions(BOOL natural, BOOL wildcard, IQueryParser*) override {
    return Add("InitializeOptions " + std::to_string(natural) + std::to_string(wildcard));
  }
  HRESULT STDMETHODCALLTYPE SetOption(QUERY_PARSER_MANAGER_OPTION, const PROPVARIANT*) override {
    return E_NOTIMPL;
  }

  // Parser.
  HRESULT STDMETHODCALLTYPE Parse(LPCWSTR text, IEnumUnknown*, IQuerySolution** solution) override {
    return Give("Parse " + ToUtf8(FromW(text)), solution);
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

  // Solution.
  HRESULT STDMETHODCALLTYPE Resolve(ICondition*, STRUCTURED_QUERY_RESOLVE_OPTION option,
                                    const SYSTEMTIME* now, ICondition** resolved) override {
    EXPECT_GE(now->wYear, 2000);
    return Give("Resolve " + std::to_string(option), resolved);
  }
  HRESULT STDMETHODCALLTYPE GetQuery(ICondition** condition, IEntity**) override {
    return Give("GetQuery", condition);
  }
  HRESULT STDMETHODCALLTYPE MakeNot(ICondition*, BOOL, ICondition**) override { return E_NOTIMPL; }
  HRESULT STDMETHODCALLTYPE MakeAndOr(CONDITION_TYPE, IEnumUnknown*, BOOL, ICondition**) override {
    return E_NOTIMPL;
  }
  HRESULT STDMETHODCALLTYPE MakeLeaf(LPCWSTR, CONDITION_OPERATION, LPCWSTR, const PROPVARIANT*,
                                     IRichChunk*, IRichChunk*, IRichChunk*, BOOL,
                                     ICondition**) override {
    return E_NOTIMPL;
  }
  HRESULT STDMETHODCALLTYPE GetErrors(REFIID, void**) override { return E_NOTIMPL; }
  HRESULT STDMETHODCALLTYPE GetLexicalData(LPWSTR*, ITokenCollection**, LCID*,
                                           IUnknown**) override {
    return E_NOTIMPL;
  }

  // Condition.
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

  // Factory of search folders.
  HRESULT STDMETHODCALLTYPE SetDisplayName(LPCWSTR name) override {
    return Add("SetDisplayName " + ToUtf8(FromW(name)));
  }
  HRESULT STDMETHODCALLTYPE SetScope(IShellItemArray* scope) override {
    DWORD count = 0;
    EXPECT_EQ(scope->GetCount(&count), S_OK);
    return Add("SetScope " + std::to_string(count));
  }
  HRESULT STDMETHODCALLTYPE SetCondition(ICondition* condition) override {
    EXPECT_NE(condition, nullptr);
    return Add("SetCondition");
  }
  HRESULT STDMETHODCALLTYPE GetIDList(PIDLIST_ABSOLUTE* pidl) override {
    const HRESULT result = Add("GetIDList");
    *pidl = SUCCEEDED(result) ? TestPidl({1, 2}).Detach() : nullptr;
    return result;
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
  HRESULT STDMETHODCALLTYPE GetShellItem(REFIID, void**) override { return E_NOTIMPL; }

 private:
  HRESULT Add(std::string step) {
    Steps.push_back(std::move(step));
    return Steps.size() == FailingStep ? E_ACCESSDENIED : S_OK;
  }
  template <class T>
  HRESULT Give(std::string step, T** out) {
    const HRESULT result = Add(std::move(step));
    *out = SUCCEEDED(result) ? Ref<T>::Share(this).Detach() : nullptr;
    return result;
  }
};

class OakItemIdListSearch : public ::testing::Test {
 protected:
  Ref<TFakeEngine> fEngine = MakeRef<TFakeEngine>();
  TTestFolder fFolder;
  Ref<IItemIdList> fScope = TItem::Create(fFolder.Path());

 private:
  TScopedApi<decltype(TApi::CoCreateInstance)> fCreate{
      Api().CoCreateInstance, [this](REFCLSID classId, IUnknown*, DWORD, REFIID iid, void** out) {
        *out = nullptr;
        return classId == CLSID_QueryParserManager || classId == CLSID_SearchFolderItemFactory
                   ? fEngine->QueryInterface(iid, out)
                   : REGDB_E_CLASSNOTREG;
      }};
};

TEST_F(OakItemIdListSearch, TheEngineIsAskedInOrder) {
  const auto item = TOakSearchFolder::Create(u" oak ", fScope);
  EXPECT_EQ(fEngine->Steps,
            (std::vector<std::string>{"CreateLoadedParser SystemIndex 1024", "InitializeOptions 01",
                                      "SetDisplayName oak", "SetScope 1",
                                      "Parse System.Generic.String:oak", "GetQuery", "Resolve 64",
                                      "SetCondition", "GetIDList"}));
  EXPECT_EQ(item->Depth(), 2);
  EXPECT_EQ(item->GetSearchScope(), fScope);
  EXPECT_TRUE(static_cast<IItemIdList&>(*item.Get()).IsSlow());
  fEngine->Steps.clear();
  (void)TItem::CreateSearchFolder(u"size:>1", fScope);
  EXPECT_EQ(fEngine->Steps[4], "Parse size:>1");
}

TEST_F(OakItemIdListSearch, EveryFailedStepRaises) {
  for (fEngine->FailingStep = 1; fEngine->FailingStep <= 9; ++fEngine->FailingStep) {
    fEngine->Steps.clear();
    try {
      (void)TOakSearchFolder::Create(u"oak", fScope);
      ADD_FAILURE() << "nothing was raised at step " << fEngine->FailingStep;
    } catch (const EOleSysError& error) {
      EXPECT_EQ(error.GetErrorCode(), E_ACCESSDENIED);
      EXPECT_EQ(fEngine->Steps.size(), fEngine->FailingStep);
    }
  }
}

}  // namespace
}  // namespace oak::tests
