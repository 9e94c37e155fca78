// Opening of objects and folders by the desktop.
#include "oak/platform/Api.h"
#include "oak/platform/portable/PortableCall.h"
#include "oak/platform/portable/ShellPidl.h"
#include "oak/platform/portable/ShellVerbs.h"

namespace oak {

HRESULT Execute(SHELLEXECUTEINFOW& info) {
  info.cbSize = sizeof info;
  info.fMask |= SEE_MASK_FLAG_NO_UI;
  if (Api().ShellExecuteExW(&info)) return S_OK;
  const DWORD error = Api().GetLastError();
  return error == 0 ? E_FAIL : HRESULT_FROM_WIN32(error);
}

HRESULT ExecuteShell(const TString& path, PCIDLIST_ABSOLUTE pidl, const TVerbCall& call) {
  SHELLEXECUTEINFOW info{};
  info.hwnd = call.Window;
  info.lpVerb = SameText(call.Verb, u"explore") ? u"explore" : u"open";
  info.nShow = call.Show;
  if (path.empty()) {
    info.fMask |= SEE_MASK_IDLIST;
    info.lpIDList = const_cast<ITEMIDLIST*>(pidl);
  } else {
    info.lpFile = W(path);
  }
  return Execute(info);
}

namespace {

// What is opened of an object: a path, or a list for what has none.
struct TOpened {
  TString Path;
  TPidl List;
};

HRESULT FindOpened(const TShellObject& object, TOpened& opened) {
  opened = {object.Path(), object.Pidl()};
  if (!object.Attributes(SFGAO_LINK)) return S_OK;
  // The shell's links mean nothing to the desktop.
  const PCUITEMID_CHILD child = object.Child.Get();
  std::vector<TPidl> place(1);
  const HRESULT result = object.Folder->SourceOf(child).GetLinkTarget(child, place[0]);
  if (FAILED(result)) return result;
  const TShellObjects target = ObjectsOf(place);
  opened = {target.empty() ? TString() : target[0].Path(), std::move(place[0])};
  return S_OK;
}

HRESULT OpenEach(const TShellObjects& objects, const TVerbCall& call,
                 const std::function<HRESULT(const TOpened& opened)>& open) {
  TVerbRun run(call);
  for (const TShellObject& object : objects) {
    TOpened opened;
    HRESULT result = FindOpened(object, opened);
    if (SUCCEEDED(result)) result = open(opened);
    if (FAILED(result)) run.Fail(result, object.Name(TNameForm::AbsoluteEditing));
  }
  return run.Finish();
}

}  // namespace

HRESULT OpenObjects(const TShellObjects& objects, const TVerbCall& call) {
  return OpenEach(objects, call, [&](const TOpened& opened) {
    return ExecuteShell(opened.Path, opened.List.Get(), call);
  });
}

HRESULT OpenObjectsWith(const TShellObjects& objects, const TVerbCall& call) {
  const auto hooks = ShellHooks();
  bool isCancelled = false;
  const HRESULT result = OpenEach(objects, call, [&](const TOpened& opened) -> HRESULT {
    if (opened.Path.empty()) return HRESULT_FROM_WIN32(ERROR_NO_ASSOCIATION);
    if (hooks->OnOpenWith) {
      isCancelled = !hooks->OnOpenWith(opened.Path, call.Window);
      return S_OK;
    }
    SHELLEXECUTEINFOW info{};
    info.hwnd = call.Window;
    info.lpVerb = u"openas";
    info.lpFile = W(opened.Path);
    info.nShow = call.Show;
    return Execute(info);
  });
  return isCancelled ? HRESULT_FROM_WIN32(ERROR_CANCELLED) : result;
}

HRESULT OpenPrompt(const TString& directory, const TVerbCall& call) {
  SHELLEXECUTEINFOW info{};
  info.hwnd = call.Window;
  info.lpFile = u"CMD.EXE";
  info.lpDirectory = W(directory);
  info.nShow = call.Show;
  TVerbRun run(call);
  const HRESULT result = Execute(info);
  if (FAILED(result)) run.Fail(result, directory);
  return run.Finish();
}

namespace {

// The desktop's opener selects nothing; the folder with the object is shown.
HRESULT STDAPICALLTYPE SHOpenFolderAndSelectItems(PCIDLIST_ABSOLUTE folder, UINT count,
                                                  PCUITEMID_CHILD_ARRAY pidls, DWORD) {
  return PortableCall("SHOpenFolderAndSelectItems", [&]() -> HRESULT {
    TPidlSplit split;
    if (!SplitPidl(folder, split) || (count && !pidls)) return E_INVALIDARG;
    std::size_t bytes = split.ParentBytes;  // without items the list is that of the one item
    if (count > 0 && split.Last) bytes += ElementSize(split.Last);
    Ref<TFolderNode> node;
    const HRESULT result = TFolderNode::FromPidl(folder, bytes, node);
    if (FAILED(result)) return result;
    TString path;
    static_cast<void>(node->GetFolderName(TNameForm::FileSystemPath, path));
    TVerbCall call;
    call.Verb = u"open";
    return ExecuteShell(path, node->Pidl(), call);
  });
}

}  // namespace

void BindShellOpen(TApi& api) {
  api.SHOpenFolderAndSelectItems.SetFunction(&SHOpenFolderAndSelectItems);
}

}  // namespace oak
