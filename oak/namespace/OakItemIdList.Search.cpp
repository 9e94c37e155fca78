// TOakSearchFolder: an item that stands for a query.
#include "oak/base/HResult.h"
#include "oak/namespace/FolderTrek.h"
#include "oak/namespace/Oak.Shell.ItemIdListCollection.h"
#include "oak/namespace/OakItemIdList.State.h"

namespace oak {
namespace {

constexpr LANGID kKeywordLanguage = 1024;  // the user's default

template <class T>
Ref<T> MakeObject(REFCLSID classId) {
  Ref<T> object;
  OleCheck(
      Api().CoCreateInstance(classId, nullptr, CLSCTX_INPROC_SERVER, IidOf<T>(), object.PutVoid()));
  if (!object) OleCheck(E_NOINTERFACE);
  return object;
}

/// What is asked for may come back nil without a failure.
template <class T>
const Ref<T>& Checked(HRESULT result, const Ref<T>& object) {
  OleCheck(result);
  if (!object) OleCheck(E_NOINTERFACE);
  return object;
}

Ref<IQueryParser> MakeParser() {
  const auto manager = MakeObject<IQueryParserManager>(CLSID_QueryParserManager);
  Ref<IQueryParser> parser;
  const HRESULT result = manager->CreateLoadedParser(W(u"SystemIndex"), kKeywordLanguage,
                                                     IidOf<IQueryParser>(), parser.PutVoid());
  Checked(result, parser);
  OleCheck(manager->InitializeOptions(FALSE, TRUE, parser.Get()));
  return parser;
}

/// The drives of the computer without those of the network.
Ref<IShellItemArray> LocalDrives(const Ref<IItemIdList>& computer) {
  const Ref<TItemIdListCollection> drives = MakeRef<TItemIdListCollection>();
  TFolderTrek cursor;
  cursor.SetFolderIdList(computer);
  while (cursor.Next()) {
    const Ref<IItemIdList> drive = cursor.GetAbsoluteItemIdList();
    if (!IsNetworkPath(drive->Path())) drives->Add(drive);
  }
  return drives->GetShellItemArray();
}

Ref<IShellItemArray> MakeScope(const Ref<IItemIdList>& scope) {
  if (scope->IsSpecialFolder(SF_DRIVES)) return LocalDrives(scope);
  const Ref<IShellItem> item = scope->ShellItem();
  if (!Api().SHCreateShellItemArrayFromShellItem || !item) OleCheck(E_NOTIMPL);
  Ref<IShellItemArray> array;
  const HRESULT result = Api().SHCreateShellItemArrayFromShellItem(
      item.Get(), IidOf<IShellItemArray>(), array.PutVoid());
  return Checked(result, array);
}

Ref<ICondition> MakeCondition(IQueryParser& parser, const TString& query) {
  const TString text = Contains(query, u":") ? query : u"System.Generic.String:" + query;
  Ref<IQuerySolution> solution;
  HRESULT result = parser.Parse(W(text), nullptr, solution.Put());
  Checked(result, solution);
  Ref<ICondition> condition;
  result = solution->GetQuery(condition.Put(), nullptr);
  Checked(result, condition);
  SYSTEMTIME now{};
  Api().GetLocalTime(&now);
  Ref<ICondition> resolved;
  result = solution->Resolve(condition.Get(), SQRO_DONT_SPLIT_WORDS, &now, resolved.Put());
  return Checked(result, resolved);
}

}  // namespace

Ref<TOakSearchFolder> TOakSearchFolder::Create(TStringView pQuery,
                                               const Ref<IItemIdList>& pSearchScope) {
  auto item = Ref<TOakSearchFolder>::Adopt(new TOakSearchFolder);
  const TString query = Trim(pQuery);
  if (query.empty() || oak::IsInvalid(pSearchScope)) return item;
  item->FSearchScope = pSearchScope;
  const Ref<IQueryParser> parser = MakeParser();
  const Ref<IShellItemArray> scope = MakeScope(pSearchScope);
  const auto factory = MakeObject<ISearchFolderItemFactory>(CLSID_SearchFolderItemFactory);
  OleCheck(factory->SetDisplayName(W(query)));
  OleCheck(factory->SetScope(scope.Get()));
  OleCheck(factory->SetCondition(MakeCondition(*parser.Get(), query).Get()));
  TPidl pidl;
  OleCheck(factory->GetIDList(pidl.Put()));
  item->SetPidl(std::move(pidl));
  return item;
}

}  // namespace oak
