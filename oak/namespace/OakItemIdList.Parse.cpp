// From a text to an object.
#include <atomic>

#include "oak/namespace/ErrorMode.h"
#include "oak/namespace/FolderTrek.h"
#include "oak/namespace/Oak.Shell.PathUtils.h"
#include "oak/namespace/OakItemIdList.Special.h"
#include "oak/namespace/OakItemIdList.State.h"
#include "oak/namespace/Shell_Win32.BindData.h"
#include "oak/namespace/Shell_Win32.h"
#include "oak/platform/MainThread.h"

namespace oak {
namespace {

constexpr TStringView kVolumeStart = u"\\\\?\\volume{";

TPidl ParseByFolder(IShellFolder* folder, TString text, HWND window) {
  ULONG eaten = 0;
  TPidl pidl;
  if (FAILED(folder->ParseDisplayName(window, nullptr, WBuffer(text), &eaten, pidl.Put(), nullptr)))
    return {};
  return pidl;
}

TPidl ParseByShell(const TString& text, IBindCtx* context) {
  SFGAOF attributes = 0;
  TPidl pidl;
  if (FAILED(Api().SHParseDisplayName(W(text), context, pidl.Put(), 0, &attributes))) return {};
  return pidl;
}

/// A volume by its unique name: an object of the computer, and what lies in it.
TPidl ParseVolume(const TString& text, HWND window) {
  const std::size_t close = text.find(u'}');
  if (close == TString::npos) return {};
  const auto computer = TOakItemIdList::CreateForSpecialFolder(SF_DRIVES, true);
  const Ref<IShellFolder> drives = computer.As<IShellFolder>();
  if (!drives) return {};
  const TPidl volume = ParseByFolder(drives.Get(), text.substr(0, close + 1) + PathDelim, window);
  if (!volume) return {};
  TPidl pidl = TPidl::Adopt(Api().ILCombine(computer->WindowsPointer(), volume.Get()));
  TString rest = text.substr(close + 1);
  if (!rest.empty() && rest.front() == PathDelim) rest.erase(0, 1);
  if (rest.empty() || !pidl) return pidl;
  const Ref<IShellFolder> root =
      TOakItemIdList::Create(pidl.Get(), iloCopyMemory).As<IShellFolder>();
  const TPidl below = root ? ParseByFolder(root.Get(), rest, window) : TPidl();
  return below ? TPidl::Adopt(Api().ILCombine(pidl.Get(), below.Get())) : TPidl();
}

/// Lets the shell believe what a file look-up found, for names that its parser
/// refuses.
TPidl ParseByFindData(const TString& text) {
  WIN32_FIND_DATAW data{};
  const HANDLE find = Api().FindFirstFileW(W(text), &data);
  if (find == INVALID_HANDLE_VALUE) return {};
  Api().FindClose(find);
  return Fenced(TPidl(), [&] {
    const Ref<IBindCtx> context = TFileSystemBindData::CreateBindContext(data);
    return ParseByShell(text, context.Get());
  });
}

TPidl FindByText(IShellFolder* folder, const TString& text, HWND window) {
  TPidl pidl;
  if (!folder && !window) {
    pidl = TPidl::Adopt(Api().ILCreateFromPathW(W(text)));
    if (!pidl) pidl = ParseByShell(text, nullptr);
  } else {
    const Ref<IShellFolder> start = folder ? Ref<IShellFolder>::Share(folder) : Desktop();
    pidl = ParseByFolder(start.Get(), text, window);
  }
  if (!pidl && StartsText(kVolumeStart, text)) pidl = ParseVolume(text, window);
  if (!pidl && Contains(text, u"\\")) pidl = ParseByFindData(text);
  return pidl;
}

// The parent of the last object that was found by walking. The main thread alone
// reads and fills it; the exchange keeps a change of the main thread harmless.
std::atomic<IItemIdList*> fLastParsedFolderIdList{nullptr};

void ExchangeLastParsed(Ref<IItemIdList> folder) {
  (void)Ref<IItemIdList>::Adopt(fLastParsedFolderIdList.exchange(folder.Detach()));
}

/// What stands before the last "\", without delimiter at its end.
TString TextOfParent(TStringView path) {
  const std::size_t end = path.rfind(PathDelim);
  return end == TStringView::npos ? TString() : ExcludeTrailingPathDelimiter(path.substr(0, end));
}

struct TSplitText {
  TStringView first;
  TStringView rest;
};

TSplitText SplitAtDelimiter(TStringView text) {
  const std::size_t from = StartsWith(text, TPathUtils::LongPathPrefix) ? 4 : 0;
  const std::size_t at = text.find_first_of(u"\\/", from);
  if (at == TStringView::npos) return {text, {}};
  return {text.substr(0, at), text.substr(at + 1)};
}

}  // namespace

TPidl GetIdListFromPath(IShellFolder* pShellFolder, TStringView pPath, HWND pWindowHandle) {
  TPidl pidl;
  if (pPath.empty()) {
    if (FAILED(Api().SHGetSpecialFolderLocation(nullptr, CSIDL_DRIVES, pidl.Put()))) return {};
    return pidl;
  }
  // To the shell the text would end there: another object's name.
  if (Contains(pPath, TStringView(u"\0", 1))) return {};
  TString text(pPath);
  if (text.size() == 2 && text[1] == u':') text += PathDelim;
  const TErrorMode silent;
  const TWow64RedirectionOff trueDirectories;
  return FindByText(pShellFolder, text, pWindowHandle);
}

/// One call of Parse.
class TItemParser {
 public:
  TItemParser(HWND window, bool completeScan) : fWindow(window), fCompleteScan(completeScan) {}

  Ref<IItemIdList> Parse(TStringView text);

 private:
  Ref<IItemIdList> FindSlowly(TStringView text);
  Ref<IItemIdList> FindByNames(TStringView text);
  Ref<IItemIdList> WalkPath(Ref<IItemIdList> folder, TStringView text);
  Ref<IItemIdList> FindInFolder(const Ref<IItemIdList>& folder, TStringView name);
  Ref<IItemIdList> FindChild(TFolderTrek& cursor, TStringView name);
  static Ref<IItemIdList> ResolveUsingCache(TStringView path);
  static Ref<IItemIdList> AskCachedFolder(const Ref<IItemIdList>& folder, TStringView path);
  static void CacheLastFolderIdList(const Ref<IItemIdList>& item, TStringView path);

  HWND fWindow;
  bool fCompleteScan;
};

Ref<IItemIdList> TItemParser::Parse(TStringView text) {
  if (text.empty()) return NullItemIdList();
  if (text.size() >= 2 && text.front() == u'"' && text.back() == u'"')
    text = text.substr(1, text.size() - 2);
  if (text == TPathUtils::NetworkRoot)
    return TOakItemIdList::CreateForSpecialFolder(SF_NETWORK, true);
  if (text.size() > 3 && text.back() == PathDelim) text.remove_suffix(1);
  Ref<IItemIdList> result = TOakItemIdList::Create(text, nullptr, fWindow);
  // The file system drops such blanks, names of the shell may have them.
  if (!IsUNCPath(text) && (EndsWith(text, u" ") || Contains(text, u" \\")))
    fCompleteScan = true;
  else if (IsAbsolutePath(text))
    return result;
  if (result->IsInvalid()) result = FindSlowly(text);
  return IsInvalid(result) ? TOakItemIdList::CreateInvalidWithPath(text) : result;
}

Ref<IItemIdList> TItemParser::FindSlowly(TStringView text) {
  Ref<IItemIdList> result = ResolveUsingCache(text);
  if (!result->IsInvalid()) return result;
  result = FindByNames(text);
  CacheLastFolderIdList(result, text);
  return result;
}

Ref<IItemIdList> TItemParser::FindByNames(TStringView text) {
  const auto [first, rest] = SplitAtDelimiter(text);
  if (first.empty()) return NullItemIdList();
  const Ref<IItemIdList> folder = TOakItemIdList::CreateForSpecialFolder(first);
  if (!IsInvalid(folder)) return rest.empty() ? folder : WalkPath(folder, rest);
  if (!fCompleteScan) return {};
  for (const TOakShellFolder start : {SF_DRIVES, SF_DESKTOP})
    if (auto found = WalkPath(TOakItemIdList::CreateForSpecialFolder(start, true), text))
      return found;
  return {};
}

Ref<IItemIdList> TItemParser::WalkPath(Ref<IItemIdList> folder, TStringView text) {
  // A loop: a folder that holds itself must not cost stack for each component.
  while (folder) {
    const auto [start, rest] = SplitAtDelimiter(text);
    if (start.empty()) return {};  // An object without a name is none that was meant.
    TString first(start);
    if (first.size() == 2 && first[1] == u':') first += PathDelim;
    folder = FindInFolder(folder, first);
    if (rest.empty()) break;
    text = rest;
  }
  return folder;
}

Ref<IItemIdList> TItemParser::FindInFolder(const Ref<IItemIdList>& folder, TStringView name) {
  return Fenced(Ref<IItemIdList>(), [&] {
    TFolderTrek cursor;
    cursor.SetShowErrorMessages(fWindow != nullptr);
    cursor.SetShellfolder(TOakItemIdList::FolderOf(folder));
    // A folder that does not tell where it lies has no absolute children.
    return cursor.GetFolderIdList() ? FindChild(cursor, name) : Ref<IItemIdList>();
  });
}

Ref<IItemIdList> TItemParser::FindChild(TFolderTrek& cursor, TStringView name) {
  while (cursor.Next()) {
    if (SameText(name, cursor.GetShellObjectName(true)) || SameText(name, cursor.GetObjectName()) ||
        SameText(name, cursor.GetShellObjectName(false)))
      return cursor.GetAbsoluteItemIdList();
    const Ref<IItemIdList> item = cursor.GetAbsoluteItemIdList();
    for (const auto form : {dnfRelativeForAddressBar, dnfRelativeParsing, dnfAbsoluteParsing})
      if (SameText(name, item->DisplayName(form))) return item;
  }
  return {};
}

// --- the cache ---------------------------------------------------------------

Ref<IItemIdList> TItemParser::ResolveUsingCache(TStringView path) {
  if (!IsMainThread()) return NullItemIdList();
  const auto folder = Ref<IItemIdList>::Share(fLastParsedFolderIdList.load());
  if (!folder) return NullItemIdList();
  const TString known(TOakItemIdList::From(folder)->PathField());
  // The item was handed out, and its holder may have asked it for its real path.
  if (known.empty()) return NullItemIdList();
  if (SamePath(known, path)) return folder;
  const std::size_t end = path.rfind(PathDelim);
  if (end == TStringView::npos || !SamePath(known, path.substr(0, end))) return NullItemIdList();
  return Fenced(NullItemIdList(), [&] { return AskCachedFolder(folder, path); });
}

Ref<IItemIdList> TItemParser::AskCachedFolder(const Ref<IItemIdList>& folder, TStringView path) {
  const Ref<IShellFolder> shellFolder = TOakItemIdList::FolderOf(folder);
  if (!shellFolder) return NullItemIdList();
  const auto child = TOakItemIdList::Create(ExtractFileName(path), shellFolder.Get(), nullptr);
  if (child->IsInvalid()) return NullItemIdList();
  Ref<IItemIdList> item = folder->Concat(child);
  return item->DisplayName(dnfInFolder).empty() ? NullItemIdList() : item;
}

void TItemParser::CacheLastFolderIdList(const Ref<IItemIdList>& item, TStringView path) {
  if (!IsMainThread() || IsInvalid(item) || item->Depth() <= 1) return;
  const TString text = TextOfParent(path);
  // Walking also splits at "/": the parent of "b/c" is not what stands before "\".
  if (text.empty() || Contains(path.substr(text.size()), u"/")) return;
  Ref<IItemIdList> parent = item->GetParent();
  TOakItemIdList::From(parent)->SetPathField(text);
  ExchangeLastParsed(std::move(parent));
}

Ref<IItemIdList> TOakItemIdList::Parse(TStringView pPath, HWND pWindowHandleForLogonDialog,
                                       bool pCompleteScan) {
  try {
    return TItemParser(pWindowHandleForLogonDialog, pCompleteScan).Parse(pPath);
  } catch (const Exception&) {
    return CreateInvalidWithPath(pPath);
  }
}

void TOakItemIdList::ClearCaches() {
  ExchangeLastParsed({});
  ClearSpecialFolders();
}

}  // namespace oak
