// Searching: conditions, the parser of query text and search folders.
//
// Not every SDK declares the query parser, so this header declares it for all systems whose
// headers lack it.
#pragma once

#if defined(_WIN32)
#include "oak/platform/windows/WindowsHeaders.h"
#else
#include "oak/platform/shell_api_enums.h"
#include "oak/platform/shell_api_guids.h"
#include "oak/platform/shell_api_ole.h"
#endif
#include "oak/platform/shell_api_guidof.h"

#if !defined(_MSC_VER)
#pragma GCC diagnostic push
#pragma GCC diagnostic ignored "-Wnon-virtual-dtor"
#endif

#if !defined(_WIN32)
struct SORTCOLUMN {
  PROPERTYKEY propkey;
  SORTDIRECTION direction;
};

struct IRichChunk : IUnknown {
  virtual HRESULT GetData(ULONG* pFirstPos, ULONG* pLength, LPWSTR* ppsz, PROPVARIANT* pValue) = 0;
};

struct ICondition : IPersistStream {
  virtual HRESULT GetConditionType(CONDITION_TYPE* pNodeType) = 0;
  virtual HRESULT GetSubConditions(REFIID riid, void** ppv) = 0;
  virtual HRESULT GetComparisonInfo(LPWSTR* ppszPropertyName, CONDITION_OPERATION* pcop,
                                    PROPVARIANT* ppropvar) = 0;
  virtual HRESULT GetValueType(LPWSTR* ppszValueTypeName) = 0;
  virtual HRESULT GetValueNormalization(LPWSTR* ppszNormalization) = 0;
  virtual HRESULT GetInputTerms(IRichChunk** ppPropertyTerm, IRichChunk** ppOperationTerm,
                                IRichChunk** ppValueTerm) = 0;
  virtual HRESULT Clone(ICondition** ppc) = 0;
};

struct IShellItemArray;
struct ISearchFolderItemFactory : IUnknown {
  virtual HRESULT SetDisplayName(LPCWSTR pszDisplayName) = 0;
  virtual HRESULT SetFolderTypeID(FOLDERTYPEID ftid) = 0;
  virtual HRESULT SetFolderLogicalViewMode(FOLDERLOGICALVIEWMODE flvm) = 0;
  virtual HRESULT SetIconSize(int iIconSize) = 0;
  virtual HRESULT SetVisibleColumns(UINT cVisibleColumns, PROPERTYKEY* rgKey) = 0;
  virtual HRESULT SetSortColumns(UINT cSortColumns, SORTCOLUMN* rgSortColumns) = 0;
  virtual HRESULT SetGroupColumn(REFPROPERTYKEY keyGroup) = 0;
  virtual HRESULT SetStacks(UINT cStackKeys, PROPERTYKEY* rgStackKeys) = 0;
  virtual HRESULT SetScope(IShellItemArray* psiaScope) = 0;
  virtual HRESULT SetCondition(ICondition* pCondition) = 0;
  virtual HRESULT GetShellItem(REFIID riid, void** ppv) = 0;
  virtual HRESULT GetIDList(PIDLIST_ABSOLUTE* ppidl) = 0;
};
#endif

#if !defined(_MSC_VER)
struct IEntity;
struct ISchemaProvider;
struct ITokenCollection;

enum STRUCTURED_QUERY_RESOLVE_OPTION : int {
  SQRO_DEFAULT = 0,
  SQRO_DONT_RESOLVE_DATETIME = 0x1,
  SQRO_ALWAYS_ONE_INTERVAL = 0x2,
  SQRO_DONT_SIMPLIFY_CONDITION_TREES = 0x4,
  SQRO_DONT_MAP_RELATIONS = 0x8,
  SQRO_DONT_RESOLVE_RANGES = 0x10,
  SQRO_DONT_REMOVE_UNRESTRICTED_KEYWORDS = 0x20,
  SQRO_DONT_SPLIT_WORDS = 0x40,
  SQRO_IGNORE_PHRASE_ORDER = 0x80,
  SQRO_ADD_VALUE_TYPE_FOR_PLAIN_VALUES = 0x100,
  SQRO_ADD_ROBUST_ITEM_NAME = 0x200
};
constexpr STRUCTURED_QUERY_RESOLVE_OPTION operator|(STRUCTURED_QUERY_RESOLVE_OPTION a,
                                                    STRUCTURED_QUERY_RESOLVE_OPTION b) {
  return static_cast<STRUCTURED_QUERY_RESOLVE_OPTION>(static_cast<int>(a) | static_cast<int>(b));
}
enum STRUCTURED_QUERY_SINGLE_OPTION : int {
  SQSO_SCHEMA = 0,
  SQSO_LOCALE_WORD_BREAKING = 1,
  SQSO_WORD_BREAKER = 2,
  SQSO_NATURAL_SYNTAX = 3,
  SQSO_AUTOMATIC_WILDCARD = 4,
  SQSO_TRACE_LEVEL = 5,
  SQSO_LANGUAGE_KEYWORDS = 6,
  SQSO_SYNTAX = 7,
  SQSO_TIME_ZONE = 8,
  SQSO_IMPLICIT_CONNECTOR = 9,
  SQSO_CONNECTOR_CASE = 10
};
enum STRUCTURED_QUERY_MULTIOPTION : int {
  SQMO_VIRTUAL_PROPERTY = 0,
  SQMO_DEFAULT_PROPERTY = 1,
  SQMO_GENERATOR_FOR_TYPE = 2,
  SQMO_MAP_PROPERTY = 3
};
enum QUERY_PARSER_MANAGER_OPTION : int {
  QPMO_SCHEMA_BINARY_NAME = 0,
  QPMO_PRELOCALIZED_SCHEMA_BINARY_PATH = 1,
  QPMO_UNLOCALIZED_SCHEMA_BINARY_PATH = 2,
  QPMO_LOCALIZED_SCHEMA_BINARY_PATH = 3,
  QPMO_APPEND_LCID_TO_LOCALIZED_PATH = 4,
  QPMO_LOCALIZER_SUPPORT = 5
};

struct IConditionFactory : IUnknown {
  virtual HRESULT STDMETHODCALLTYPE MakeNot(ICondition* pcSub, BOOL fSimplify,
                                            ICondition** ppcResult) = 0;
  virtual HRESULT STDMETHODCALLTYPE MakeAndOr(CONDITION_TYPE ct, IEnumUnknown* peuSubs,
                                              BOOL fSimplify, ICondition** ppcResult) = 0;
  virtual HRESULT STDMETHODCALLTYPE MakeLeaf(LPCWSTR pszPropertyName, CONDITION_OPERATION cop,
                                             LPCWSTR pszValueType, const PROPVARIANT* ppropvar,
                                             IRichChunk* pPropertyNameTerm,
                                             IRichChunk* pOperationTerm, IRichChunk* pValueTerm,
                                             BOOL fExpand, ICondition** ppcResult) = 0;
  virtual HRESULT STDMETHODCALLTYPE Resolve(ICondition* pc, STRUCTURED_QUERY_RESOLVE_OPTION sqro,
                                            const SYSTEMTIME* pstReferenceTime,
                                            ICondition** ppcResolved) = 0;
};

struct IQuerySolution : IConditionFactory {
  virtual HRESULT STDMETHODCALLTYPE GetQuery(ICondition** ppQueryNode, IEntity** ppMainType) = 0;
  virtual HRESULT STDMETHODCALLTYPE GetErrors(REFIID riid, void** ppParseErrors) = 0;
  virtual HRESULT STDMETHODCALLTYPE GetLexicalData(LPWSTR* ppszInputString,
                                                   ITokenCollection** ppTokens, LCID* plcid,
                                                   IUnknown** ppWordBreaker) = 0;
};

struct IQueryParser : IUnknown {
  virtual HRESULT STDMETHODCALLTYPE Parse(LPCWSTR pszInputString, IEnumUnknown* pCustomProperties,
                                          IQuerySolution** ppSolution) = 0;
  virtual HRESULT STDMETHODCALLTYPE SetOption(STRUCTURED_QUERY_SINGLE_OPTION option,
                                              const PROPVARIANT* pOptionValue) = 0;
  virtual HRESULT STDMETHODCALLTYPE GetOption(STRUCTURED_QUERY_SINGLE_OPTION option,
                                              PROPVARIANT* pOptionValue) = 0;
  virtual HRESULT STDMETHODCALLTYPE SetMultiOption(STRUCTURED_QUERY_MULTIOPTION option,
                                                   LPCWSTR pszOptionKey,
                                                   const PROPVARIANT* pOptionValue) = 0;
  virtual HRESULT STDMETHODCALLTYPE GetSchemaProvider(ISchemaProvider** ppSchemaProvider) = 0;
  virtual HRESULT STDMETHODCALLTYPE RestateToString(ICondition* pCondition, BOOL fUseEnglish,
                                                    LPWSTR* ppszQueryString) = 0;
  virtual HRESULT STDMETHODCALLTYPE ParsePropertyValue(LPCWSTR pszPropertyName,
                                                       LPCWSTR pszInputString,
                                                       IQuerySolution** ppSolution) = 0;
  virtual HRESULT STDMETHODCALLTYPE RestatePropertyValueToString(ICondition* pCondition,
                                                                 BOOL fUseEnglish,
                                                                 LPWSTR* ppszPropertyName,
                                                                 LPWSTR* ppszQueryString) = 0;
};

struct IQueryParserManager : IUnknown {
  virtual HRESULT STDMETHODCALLTYPE CreateLoadedParser(LPCWSTR pszCatalog, LANGID langidForKeywords,
                                                       REFIID riid, void** ppQueryParser) = 0;
  virtual HRESULT STDMETHODCALLTYPE InitializeOptions(BOOL fUnderstandNQS, BOOL fAutoWildCard,
                                                      IQueryParser* pQueryParser) = 0;
  virtual HRESULT STDMETHODCALLTYPE SetOption(QUERY_PARSER_MANAGER_OPTION option,
                                              const PROPVARIANT* pOptionValue) = 0;
};

inline constexpr GUID IID_IConditionFactory =
    oak::detail::GuidOf("A5EFE073-B16F-474F-9F3E-9F8B497A3E08");
inline constexpr GUID IID_IQuerySolution =
    oak::detail::GuidOf("D6EBC66B-8921-4193-AFDD-A1789FB7FF57");
inline constexpr GUID IID_IQueryParser =
    oak::detail::GuidOf("2EBDEE67-3505-43F8-9946-EA44ABC8E5B0");
inline constexpr GUID IID_IQueryParserManager =
    oak::detail::GuidOf("A879E3C4-AF77-44FB-8F37-EBD1487CF920");
inline constexpr GUID CLSID_QueryParserManager =
    oak::detail::GuidOf("5088B39A-29B4-4D9D-8245-4EE289222F66");
inline constexpr GUID CLSID_QueryParser =
    oak::detail::GuidOf("B72F8FD8-0FAB-4DD9-BDBF-245A6CE1485B");
inline constexpr GUID CLSID_ConditionFactory =
    oak::detail::GuidOf("E03E85B0-7BE3-4000-BA98-6C13DE9FA486");

#pragma GCC diagnostic pop
#endif
