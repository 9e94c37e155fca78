#include "oak/platform/portable/ShellNode.h"

#include <array>

#include "oak/platform/portable/PortableConfig.h"
#include "oak/platform/portable/ShellMounts.h"
#include "oak/platform/portable/ShellPidl.h"

namespace oak {

namespace {

// The folders that this thread bound last. Saves the walk from the desktop for
// every object of a listing without a lock.
struct TNodeCache {
  std::uint64_t Mounts = 0;  // generations that the nodes belong to
  std::uint64_t Config = 0;
  std::array<Ref<TFolderNode>, 8> Nodes;
  unsigned Next = 0;
};
thread_local TNodeCache tCache;

TNodeCache& Cache() {
  const std::uint64_t mounts = MountGeneration(), config = PortableConfigGeneration();
  if (tCache.Mounts != mounts || tCache.Config != config) {
    tCache = {};
    tCache.Mounts = mounts;
    tCache.Config = config;
  }
  return tCache;
}

bool StartsWithNode(const void* pidl, std::size_t bytes, const Ref<TFolderNode>& node) noexcept {
  return node && node->PidlBytes() <= bytes &&
         std::memcmp(pidl, node->Pidl(), node->PidlBytes()) == 0;
}

void AddBackslash(TString& text) {
  if (!text.empty() && text.back() != u'\\') text += u'\\';
}

}  // namespace

TFolderNode::TFolderNode(Ref<TFolderNode> parent, TPidl pidl, std::size_t elementAt,
                         Ref<IFolderSource> source)
    : fParent(std::move(parent)),
      fPidl(std::move(pidl)),
      fBytes(elementAt),
      fSource(std::move(source)) {
  if (!fParent) return;
  fElement =
      reinterpret_cast<PCUITEMID_CHILD>(reinterpret_cast<const BYTE*>(fPidl.Get()) + elementAt);
  fBytes += ElementSize(fElement);
}

ULONG TFolderNode::Release() noexcept {
  const ULONG left = fRefCount.fetch_sub(1, std::memory_order_acq_rel) - 1;
  if (left == 0) delete this;
  return left;
}

TFolderNode* TFolderNode::MakeDesktop() {
  MountStandardFolders();
  return new TFolderNode(nullptr, CopyElement(nullptr), 0, MakeDesktopSource());
}

Ref<TFolderNode> TFolderNode::Desktop() {
  // Lives as long as the process: the shell may be used until its very end.
  static TFolderNode* desktop = MakeDesktop();
  return Ref<TFolderNode>::Share(desktop);
}

HRESULT TFolderNode::FromPidl(PCUIDLIST_ABSOLUTE pidl, std::size_t bytes, Ref<TFolderNode>& node) {
  Ref<TFolderNode> at = Desktop();
  TNodeCache& cache = Cache();
  for (const Ref<TFolderNode>& known : cache.Nodes)
    if (StartsWithNode(pidl, bytes, known) && known->PidlBytes() > at->PidlBytes()) at = known;
  const bool isKnown = at->PidlBytes() == bytes;
  while (at->PidlBytes() < bytes) {
    const BYTE* next = reinterpret_cast<const BYTE*>(pidl) + at->PidlBytes();
    if (ElementSize(next) <= sizeof(USHORT)) return E_INVALIDARG;
    Ref<TFolderNode> child;
    const HRESULT result = at->Open(reinterpret_cast<PCUITEMID_CHILD>(next), child);
    if (FAILED(result)) return result;
    at = std::move(child);
  }
  // Opening may have run foreign code that mounted folders: ask for the cache anew.
  if (!isKnown) {
    TNodeCache& fresh = Cache();
    fresh.Nodes[fresh.Next++ % fresh.Nodes.size()] = at;
  }
  node = std::move(at);
  return S_OK;
}

HRESULT TFolderNode::FromPidl(PCUIDLIST_ABSOLUTE pidl, Ref<TFolderNode>& node) {
  TPidlSplit split;
  if (!SplitPidl(pidl, split)) return E_INVALIDARG;
  return FromPidl(pidl, split.Last ? split.ParentBytes + ElementSize(split.Last) : 0, node);
}

TPidl TFolderNode::PidlOf(PCUITEMID_CHILD child) const {
  return JoinElement(fPidl.Get(), fBytes, child);
}

bool TFolderNode::MayHaveMounts() const noexcept { return IsDesktop() || HasInnerMounts(); }

IFolderSource& TFolderNode::Mounts() const {
  std::call_once(fMountsOnce, [this] {
    TString place;
    if (!IsDesktop() && FAILED(GetFolderName(TNameForm::AbsoluteParsing, place))) place = u"?";
    fMounts = MakeMountSource(MountPlace(place));
  });
  return *fMounts;
}

IFolderSource& TFolderNode::SourceOf(PCUIDLIST_RELATIVE child) const {
  return ElementKind(child) == ekMount ? Mounts() : *fSource;
}

HRESULT TFolderNode::Open(PCUITEMID_CHILD child, Ref<TFolderNode>& node) const {
  if (!ElementKind(child)) return E_INVALIDARG;
  Ref<IFolderSource> source;
  const HRESULT result = SourceOf(child).Open(child, source);
  if (FAILED(result)) return result;
  if (!source) return E_FAIL;
  const Ref<TFolderNode> self = Ref<TFolderNode>::Share(const_cast<TFolderNode*>(this));
  node = Ref<TFolderNode>::Adopt(new TFolderNode(self, PidlOf(child), fBytes, std::move(source)));
  return S_OK;
}

// --- names -------------------------------------------------------------------

HRESULT TFolderNode::GetDesktopName(TNameForm form, TString& name) const {
  switch (form) {
    case TNameForm::Parsing:
    case TNameForm::AbsoluteParsing:
      name = DesktopDirectory();
      if (name.empty()) name = u"::{00021400-0000-0000-C000-000000000046}";
      return S_OK;
    case TNameForm::FileSystemPath:
      name = DesktopDirectory();
      return name.empty() ? E_INVALIDARG : S_OK;
    default:
      name = u"Desktop";
      return S_OK;
  }
}

HRESULT TFolderNode::GetFolderName(TNameForm form, TString& name) const {
  return IsDesktop() ? GetDesktopName(form, name) : fParent->GetName(fElement, form, name);
}

HRESULT TFolderNode::JoinName(PCUITEMID_CHILD child, TNameForm absolute, TNameForm relative,
                              TString& name) const {
  if (IsDesktop() && absolute != TNameForm::FileSystemPath)
    return SourceOf(child).GetName(child, relative, name);
  TString own;
  HRESULT result = SourceOf(child).GetName(child, relative, own);
  if (SUCCEEDED(result)) result = GetFolderName(absolute, name);
  if (FAILED(result)) return result;
  AddBackslash(name);
  name += own;
  return S_OK;
}

HRESULT TFolderNode::GetName(PCUITEMID_CHILD child, TNameForm form, TString& name) const {
  if (!ElementKind(child)) return E_INVALIDARG;
  const HRESULT result = SourceOf(child).GetName(child, form, name);
  if (result != S_FALSE) return result;
  switch (form) {
    case TNameForm::AbsoluteParsing:
      return JoinName(child, form, TNameForm::Parsing, name);
    case TNameForm::AbsoluteEditing:
      return JoinName(child, form, TNameForm::Display, name);
    case TNameForm::FileSystemPath: {
      DWORD attributes = 0;
      const HRESULT known = GetAttributes(child, SFGAO_FILESYSTEM, attributes);
      if (FAILED(known)) return known;
      if (!(attributes & SFGAO_FILESYSTEM)) return E_INVALIDARG;
      return JoinName(child, form, TNameForm::Parsing, name);
    }
    case TNameForm::Display:
      return E_INVALIDARG;
    default:
      return SourceOf(child).GetName(child, TNameForm::Display, name);
  }
}

// --- attributes and order ------------------------------------------------------

HRESULT TFolderNode::GetAttributes(PCUITEMID_CHILD child, DWORD mask, DWORD& attributes) const {
  if (!ElementKind(child)) return E_INVALIDARG;
  return SourceOf(child).GetAttributes(child, mask, attributes);
}

HRESULT TFolderNode::GetFolderAttributes(DWORD mask, DWORD& attributes) const {
  if (!IsDesktop()) return fParent->GetAttributes(fElement, mask, attributes);
  attributes = SFGAO_FOLDER | SFGAO_HASSUBFOLDER | SFGAO_FILESYSANCESTOR | SFGAO_STORAGEANCESTOR |
               SFGAO_STORAGE | SFGAO_HASPROPSHEET | SFGAO_CANLINK;
  if (!DesktopDirectory().empty()) attributes |= SFGAO_FILESYSTEM;
  return S_OK;
}

HRESULT TFolderNode::Compare(LPARAM what, PCUITEMID_CHILD a, PCUITEMID_CHILD b, int& order) const {
  const BYTE kindA = ElementKind(a), kindB = ElementKind(b);
  if (!kindA || !kindB) return E_INVALIDARG;
  order = 0;
  if (ElementSize(a) == ElementSize(b) && std::memcmp(a, b, ElementSize(a)) == 0) return S_OK;
  if ((kindA == ekMount) == (kindB == ekMount)) return SourceOf(a).Compare(what, a, b, order);
  order = kindA == ekMount ? -1 : 1;
  return S_OK;
}

HRESULT TFolderNode::CompareLists(LPARAM what, PCUIDLIST_RELATIVE a, PCUIDLIST_RELATIVE b,
                                  int& order) const {
  if (!a || !b) return E_INVALIDARG;
  Ref<TFolderNode> at = Ref<TFolderNode>::Share(const_cast<TFolderNode*>(this));
  for (;;) {
    const bool endA = IsEmptyPidl(a), endB = IsEmptyPidl(b);
    order = static_cast<int>(endB) - static_cast<int>(endA);
    if (endA || endB) return S_OK;
    const HRESULT result = at->Compare(what, a, b, order);
    if (FAILED(result) || order != 0) return result;
    const PCUITEMID_CHILD element = a;
    a = NextElement(a);
    b = NextElement(b);
    if (IsEmptyPidl(a) || IsEmptyPidl(b)) continue;
    Ref<TFolderNode> child;
    const HRESULT opened = at->Open(element, child);
    if (FAILED(opened)) return opened;
    at = std::move(child);
  }
}

HRESULT TFolderNode::ParseName(TStringView name, const TParseOptions& options, TPidl& child) const {
  if (name.empty()) return E_INVALIDARG;
  if (MayHaveMounts() && SUCCEEDED(Mounts().ParseName(name, options, child))) return S_OK;
  return fSource->ParseName(name, options, child);
}

// --- description -----------------------------------------------------------------

HRESULT TFolderNode::GetTypeName(PCUITEMID_CHILD child, TString& name) const {
  if (!ElementKind(child)) return E_INVALIDARG;
  return SourceOf(child).GetTypeName(child, name);
}

}  // namespace oak
