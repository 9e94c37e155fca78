#include "oak/platform/portable/ShellParse.h"

#include <algorithm>

#include "oak/base/Guid.h"
#include "oak/platform/portable/PortableFiles.h"
#include "oak/platform/portable/PortableKnownFolders.h"
#include "oak/platform/portable/ShellKnownFolders.h"
#include "oak/platform/portable/ShellPidl.h"

namespace oak {

namespace {

constexpr HRESULT kObjectMissing = HRESULT_FROM_WIN32(2);  // ERROR_FILE_NOT_FOUND

bool IsLetter(char16_t c) { return (c >= u'A' && c <= u'Z') || (c >= u'a' && c <= u'z'); }

// "X:" or "X:\..."
bool IsDrivePath(TStringView text) {
  return text.size() >= 2 && IsLetter(text[0]) && text[1] == u':' &&
         (text.size() == 2 || text[2] == u'\\');
}

TStringView TakeComponent(TStringView& rest) {
  while (!rest.empty() && rest.front() == u'\\') rest.remove_prefix(1);
  const TStringView component = rest.substr(0, rest.find(u'\\'));
  rest.remove_prefix(component.size());
  while (!rest.empty() && rest.front() == u'\\') rest.remove_prefix(1);
  return component;
}

// What stands for a folder on the way when nothing is looked up.
const WIN32_FIND_DATAW& PassedFolder() {
  static const WIN32_FIND_DATAW data = [] {
    WIN32_FIND_DATAW folder{};
    folder.dwFileAttributes = 0x10;  // FILE_ATTRIBUTE_DIRECTORY
    return folder;
  }();
  return data;
}

// A place that is being walked to: the folder reached and the list so far.
class TWalk {
 public:
  explicit TWalk(const Ref<TFolderNode>& start) : fNode(start), fList(CopyElement(nullptr)) {}

  HRESULT Go(TStringView name, bool hasRest, const TParseOptions& options) {
    if (fUnopened) {
      const HRESULT opened = OpenLast();
      if (FAILED(opened)) return opened;
    }
    if (name == u"." || name == u"..") return E_INVALIDARG;
    TParseOptions step = options;
    step.HasRest = hasRest;
    if (hasRest && options.FindData) step.FindData = &PassedFolder();
    TPidl element;
    const HRESULT result = fNode->ParseName(name, step, element);
    if (FAILED(result)) return result;
    if (!ElementKind(Child(element))) return E_UNEXPECTED;
    fList = JoinElement(fList.Get(), fBytes, Child(element));
    fLastAt = fBytes;
    fBytes += ElementSize(element.Get());
    fUnopened = true;
    return S_OK;
  }

  HRESULT GoAll(TStringView text, const TParseOptions& options) {
    while (!text.empty()) {
      const TStringView name = TakeComponent(text);
      if (name.empty()) break;
      const HRESULT result = Go(name, !text.empty(), options);
      if (FAILED(result)) return result;
    }
    return S_OK;
  }

  TPidl Take() { return std::move(fList); }

 private:
  static PCUITEMID_CHILD Child(const TPidl& pidl) { return pidl.Get(); }
  HRESULT OpenLast() {
    const BYTE* last = reinterpret_cast<const BYTE*>(fList.Get()) + fLastAt;
    Ref<TFolderNode> child;
    const HRESULT result = fNode->Open(reinterpret_cast<PCUITEMID_CHILD>(last), child);
    if (FAILED(result)) return result;
    fNode = std::move(child);
    fUnopened = false;
    return S_OK;
  }

  Ref<TFolderNode> fNode;
  TPidl fList;
  std::size_t fBytes = 0;
  std::size_t fLastAt = 0;
  bool fUnopened = false;
};

TString ClassText(REFGUID classId) { return u"::" + GuidToString(classId); }

HRESULT WalkText(const Ref<TFolderNode>& start, TStringView text, const TParseOptions& options,
                 TPidl& list) {
  TWalk walk(start);
  const HRESULT result = walk.GoAll(text, options);
  if (SUCCEEDED(result)) list = walk.Take();
  return result;
}

// Below one of the desktop's own folders.
HRESULT WalkBelow(REFGUID classId, TStringView text, const TParseOptions& options, TPidl& list) {
  TWalk walk(TFolderNode::Desktop());
  HRESULT result = walk.Go(ClassText(classId), !text.empty(), {});
  if (SUCCEEDED(result)) result = walk.GoAll(text, options);
  if (SUCCEEDED(result)) list = walk.Take();
  return result;
}

HRESULT WalkBelowKnownFolder(const TKnownFolder& folder, TStringView rest,
                             const TParseOptions& options, TPidl& list) {
  HRESULT result = KnownFolderList(folder, options.FindData ? KnownFolderUnverified : 0, list);
  if (FAILED(result) || rest.empty()) return result;
  Ref<TFolderNode> node;
  result = TFolderNode::FromPidl(list.Get(), node);
  TPidl tail;
  if (SUCCEEDED(result)) result = WalkText(node, rest, options, tail);
  if (SUCCEEDED(result)) list = ConcatLists(list, tail);
  return result;
}

// "::{...}\...": a folder of the desktop, or a known folder that lies elsewhere.
HRESULT ParseClass(TStringView text, const TParseOptions& options, TPidl& list) {
  const HRESULT result = WalkText(TFolderNode::Desktop(), text, options, list);
  if (SUCCEEDED(result)) return result;
  TStringView rest = text;
  const TStringView first = TakeComponent(rest);
  GUID classId;
  if (!TryParseGuid(first.substr(2), classId)) return E_INVALIDARG;
  if (classId == DesktopClassId) return WalkText(TFolderNode::Desktop(), rest, options, list);
  if (classId == CLSID_NetworkPlaces) return WalkBelow(NetworkClassId, rest, options, list);
  if (classId == CLSID_ControlPanel) return WalkBelow(ControlPanelClassId, rest, options, list);
  const TKnownFolder* folder = FindKnownFolderByClassId(classId);
  if (!folder || folder->Kind == TKnownFolderKind::Virtual) return result;
  return WalkBelowKnownFolder(*folder, rest, options, list);
}

// What follows "shell:".
HRESULT ParseShellName(TStringView text, const TParseOptions& options, TPidl& list) {
  if (StartsWith(text, u"::")) return ParseClass(text, options, list);
  TStringView rest = text;
  const TStringView name = TakeComponent(rest);
  const TKnownFolder* folder = name.empty() ? nullptr : FindKnownFolderByName(name);
  return folder ? WalkBelowKnownFolder(*folder, rest, options, list) : kObjectMissing;
}

// What follows "\\?\".
HRESULT ParseDevicePath(TStringView text, const TParseOptions& options, TPidl& list) {
  if (IsDrivePath(text)) return WalkBelow(ComputerClassId, text, options, list);
  if (StartsText(u"UNC\\", text)) return WalkBelow(NetworkClassId, text.substr(4), options, list);
  if (!StartsText(u"Volume{", text)) return E_INVALIDARG;
  TStringView rest = text;
  const TString volume = u"\\\\?\\" + TString(TakeComponent(rest));
  const char16_t letter = DriveOfVolumeName(volume);
  if (!letter) return kObjectMissing;
  return WalkBelow(ComputerClassId, TString{letter, u':', u'\\'} + TString(rest), options, list);
}

int HexValue(char16_t c) {
  if (c >= u'0' && c <= u'9') return c - u'0';
  const char16_t low = LowCase(c);
  return low >= u'a' && low <= u'f' ? low - u'a' + 10 : -1;
}

// "%41" to its byte; the bytes are UTF-8. "/" becomes "\".
TString DecodeUrl(TStringView text) {
  std::string bytes;
  for (std::size_t i = 0; i < text.size(); ++i) {
    const char16_t c = text[i];
    const int high = c == u'%' && i + 2 < text.size() ? HexValue(text[i + 1]) : -1;
    const int low = high >= 0 ? HexValue(text[i + 2]) : -1;
    if (low >= 0) {
      bytes += static_cast<char>(high * 16 + low);
      i += 2;
    } else if (c < 0x80) {
      bytes += c == u'/' ? '\\' : static_cast<char>(c);
    } else {
      const std::size_t units = c >= 0xD800 && c < 0xDC00 && i + 1 < text.size() ? 2 : 1;
      bytes += ToUtf8(text.substr(i, units));
      i += units - 1;
    }
  }
  return FromUtf8(bytes);
}

// What follows "file:": "///C:/dir", "//server/share", "C:\dir", with escapes.
HRESULT ParseFileUrl(TStringView url, const TParseOptions& options, TPidl& list) {
  TString text = DecodeUrl(url);
  if (StartsText(u"\\\\localhost\\", text)) text.erase(0, 11);
  std::size_t slashes = std::min(text.find_first_not_of(u'\\'), text.size());
  if (text.size() > slashes + 1 && text[slashes + 1] == u'|') text[slashes + 1] = u':';
  const TStringView bare = TStringView(text).substr(slashes);
  if (IsDrivePath(bare)) return WalkBelow(ComputerClassId, bare, options, list);
  return slashes == 2 && !bare.empty() ? WalkBelow(NetworkClassId, bare, options, list)
                                       : E_INVALIDARG;
}

HRESULT ParseFromDesktop(TStringView text, const TParseOptions& options, TPidl& list) {
  if (text.empty()) return WalkBelow(ComputerClassId, {}, options, list);
  if (IsDrivePath(text)) return WalkBelow(ComputerClassId, text, options, list);
  if (StartsWith(text, u"::")) return ParseClass(text, options, list);
  if (StartsText(u"shell:", text)) return ParseShellName(text.substr(6), options, list);
  if (StartsText(u"file:", text)) return ParseFileUrl(text.substr(5), options, list);
  if (StartsWith(text, u"\\\\?\\")) return ParseDevicePath(text.substr(4), options, list);
  if (StartsWith(text, u"\\\\")) {
    const TStringView bare = text.substr(2);
    if (bare.empty() || bare.front() == u'\\' || bare.front() == u'.') return E_INVALIDARG;
    return WalkBelow(NetworkClassId, bare, options, list);
  }
  if (text.front() == u'\\') return E_INVALIDARG;
  return WalkText(TFolderNode::Desktop(), text, options, list);
}

}  // namespace

HRESULT ParseRelative(const Ref<TFolderNode>& folder, TStringView text,
                      const TParseOptions& options, TPidl& list) {
  if (text.find(u'\0') != TStringView::npos) return E_INVALIDARG;
  if (folder->IsDesktop()) return ParseFromDesktop(text, options, list);
  if (text.empty()) return E_INVALIDARG;
  TString full(text);
  const GUID classId = folder->ClassId();
  const bool isDevice = StartsWith(text, u"\\\\?\\");
  if (isDevice && classId == ComputerClassId) {
    TPidl absolute;  // "\\?\Volume{...}" asked of the computer
    const HRESULT result = ParseDevicePath(text.substr(4), options, absolute);
    if (FAILED(result) || ElementKind(absolute.Get()) != ekMount)
      return FAILED(result) ? result : E_INVALIDARG;
    list = TPidl::Copy(NextElement(absolute.Get()));
    return S_OK;
  }
  if (classId == NetworkClassId && StartsWith(text, u"\\\\") && !isDevice) full.erase(0, 2);
  if (full.empty() || full.front() == u'\\') return E_INVALIDARG;
  return WalkText(folder, full, options, list);
}

HRESULT ParseAbsolute(TStringView text, const TParseOptions& options, TPidl& list) {
  return ParseRelative(TFolderNode::Desktop(), text, options, list);
}

bool FindDataOf(IBindCtx* context, WIN32_FIND_DATAW& data) {
  if (!context) return false;
  TString key = u"File System Bind Data";
  Ref<IUnknown> parameter;
  if (FAILED(context->GetObjectParam(WBuffer(key), parameter.Put())) || !parameter) return false;
  const Ref<IFileSystemBindData> bindData = parameter.As<IFileSystemBindData>();
  data = {};
  return bindData && bindData->GetFindData(&data) == S_OK;
}

HRESULT BindList(const Ref<TFolderNode>& folder, PCUIDLIST_RELATIVE list, Ref<TFolderNode>& node) {
  TPidlSplit split;
  if (!SplitPidl(list, split)) return E_INVALIDARG;
  if (folder->IsDesktop()) return TFolderNode::FromPidl(list, node);
  Ref<TFolderNode> at = folder;
  for (; !IsEmptyPidl(list); list = NextElement(list)) {
    Ref<TFolderNode> child;
    const HRESULT result = at->Open(list, child);
    if (FAILED(result)) return result;
    at = std::move(child);
  }
  node = std::move(at);
  return S_OK;
}

HRESULT BindParent(const Ref<TFolderNode>& folder, PCUIDLIST_RELATIVE list,
                   Ref<TFolderNode>& parent, PCUITEMID_CHILD& last) {
  TPidlSplit split;
  if (!SplitPidl(list, split) || !split.Last) return E_INVALIDARG;
  last = split.Last;
  if (split.ParentBytes == 0) {
    parent = folder;
    return S_OK;
  }
  if (folder->IsDesktop()) return TFolderNode::FromPidl(list, split.ParentBytes, parent);
  Ref<TFolderNode> at = folder;
  while (static_cast<const void*>(list) != static_cast<const void*>(last)) {
    Ref<TFolderNode> child;
    const HRESULT result = at->Open(list, child);
    if (FAILED(result)) return result;
    at = std::move(child);
    list = NextElement(list);
  }
  parent = std::move(at);
  return S_OK;
}

HRESULT AttributesOfList(const Ref<TFolderNode>& folder, PCUIDLIST_RELATIVE list, DWORD mask,
                         DWORD& attributes) {
  HRESULT result = S_OK;
  if (list && IsEmptyPidl(list)) {
    result = folder->GetFolderAttributes(mask, attributes);
  } else {
    Ref<TFolderNode> parent;
    PCUITEMID_CHILD last = nullptr;
    result = BindParent(folder, list, parent, last);
    if (SUCCEEDED(result)) result = parent->GetAttributes(last, mask, attributes);
  }
  attributes &= mask;
  return result;
}

TString UrlFromPath(TStringView path) {
  constexpr TStringView kUnsafe = u" %#<>\"{}|^`";
  TString url = StartsWith(path, u"\\\\") ? u"file:" : u"file:///";
  for (char16_t c : path) {
    if (c == u'\\')
      url += u'/';
    else if (c < 0x20 || kUnsafe.find(c) != TStringView::npos)
      url += u'%' + IntToHex(c, 2);
    else
      url += c;
  }
  return url;
}

}  // namespace oak
