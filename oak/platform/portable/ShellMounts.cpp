#include "oak/platform/portable/ShellMounts.h"

#include <algorithm>
#include <atomic>
#include <mutex>

#include "oak/base/Guid.h"
#include "oak/base/LogicalOrder.h"
#include "oak/platform/portable/PortableConfig.h"
#include "oak/platform/portable/PortableKnownFolders.h"

namespace oak {

namespace {

constexpr BYTE kMountVersion = 1;
constexpr BYTE kByClass = 1;
constexpr BYTE kByName = 2;
constexpr HRESULT kMountMissing = HRESULT_FROM_WIN32(2);  // ERROR_FILE_NOT_FOUND

struct TMountTable {
  std::mutex Lock;
  std::vector<TMountEntryPtr> Entries;  // newest last
  std::atomic<std::uint64_t> Generation{1};
  std::atomic<std::size_t> Inner{0};  // of them, those in other folders than the desktop
  TMountHandle LastHandle = 0;
};

// Never freed: objects of the shell may be used while the program ends.
TMountTable& Table() {
  static TMountTable* table = new TMountTable;
  return *table;
}

TStringView ParsingNameOf(const TFolderMount& mount) {
  return mount.ParsingName.empty() ? TStringView(mount.Name) : TStringView(mount.ParsingName);
}

TString DisplayNameOf(const TFolderMount& mount) {
  return mount.Name.empty() ? PortableConfig()->UserName : mount.Name;
}

TString PathOf(const TFolderMount& mount) {
  if (mount.KnownFolder == GUID_NULL) return mount.FileSystemPath;
  const TKnownFolder* folder = FindKnownFolder(mount.KnownFolder);
  return folder ? KnownFolderPath(*folder) : TString();
}

bool SameObject(const TFolderMount& a, const TFolderMount& b) {
  if (!(a.ClassId == b.ClassId)) return false;
  return !(a.ClassId == GUID_NULL) || SameText(ParsingNameOf(a), ParsingNameOf(b));
}

bool IsAvailable(const TFolderMount& mount) {
  return mount.SinceMajorVersion == 0 || PortableConfig()->MajorVersion >= mount.SinceMajorVersion;
}

// Those of one place that no newer one hides, in the order of showing.
std::vector<TMountEntryPtr> MountsAt(const TString& place) {
  std::vector<TMountEntryPtr> found;
  {
    TMountTable& table = Table();
    const std::lock_guard lock(table.Lock);
    for (auto entry = table.Entries.rbegin(); entry != table.Entries.rend(); ++entry) {
      if ((*entry)->Place != place) continue;
      const auto hides = [&](const TMountEntryPtr& other) {
        return SameObject(other->Mount, (*entry)->Mount);
      };
      if (std::none_of(found.begin(), found.end(), hides)) found.push_back(*entry);
    }
  }
  std::erase_if(found, [](const TMountEntryPtr& entry) { return !IsAvailable(entry->Mount); });
  std::sort(found.begin(), found.end(), [](const TMountEntryPtr& a, const TMountEntryPtr& b) {
    return a->Mount.Order != b->Mount.Order ? a->Mount.Order < b->Mount.Order
                                            : a->Handle < b->Handle;
  });
  return found;
}

TPidl ElementOf(const TFolderMount& mount) {
  std::vector<BYTE> payload;
  if (!(mount.ClassId == GUID_NULL)) {
    payload.resize(1 + sizeof(GUID), kByClass);
    std::memcpy(payload.data() + 1, &mount.ClassId, sizeof(GUID));
  } else {
    const TStringView name = ParsingNameOf(mount);
    payload.resize(1 + name.size() * sizeof(char16_t), kByName);
    std::memcpy(payload.data() + 1, name.data(), payload.size() - 1);
  }
  return MakeElement(ekMount, kMountVersion, payload);
}

bool IsElementOf(const TFolderMount& mount, std::span<const BYTE> payload) {
  if (payload[0] == kByClass)
    return payload.size() == 1 + sizeof(GUID) && !(mount.ClassId == GUID_NULL) &&
           std::memcmp(payload.data() + 1, &mount.ClassId, sizeof(GUID)) == 0;
  if (payload[0] != kByName || !(mount.ClassId == GUID_NULL)) return false;
  const std::size_t bytes = payload.size() - 1;
  TString name(bytes / sizeof(char16_t), u'\0');
  std::memcpy(name.data(), payload.data() + 1, name.size() * sizeof(char16_t));
  return bytes % sizeof(char16_t) == 0 && SameText(name, ParsingNameOf(mount));
}

// A parsing name that needs no parent in front: a drive or a server.
bool IsAbsoluteName(TStringView name) {
  return (name.size() <= 3 && name.size() >= 2 && name[1] == u':') || StartsWith(name, u"\\\\");
}

class TMountSource : public TFolderSource {
 public:
  explicit TMountSource(TString place) : fPlace(std::move(place)) {}

  HRESULT Enumerate(DWORD flags, Ref<IFolderCursor>& cursor) override {
    std::vector<TPidl> elements;
    for (const TMountEntryPtr& entry : MountsAt(fPlace))
      if (entry->Mount.Enumerated && PassesEnumeration(flags, entry->Mount.Attributes))
        elements.push_back(ElementOf(entry->Mount));
    cursor = MakeListCursor(std::move(elements));
    return S_OK;
  }

  HRESULT ParseName(TStringView name, const TParseOptions&, TPidl& element) override {
    TStringView bare = name;  // "X:" finds "X:\"
    if (EndsWith(bare, u"\\")) bare.remove_suffix(1);
    for (const TMountEntryPtr& entry : MountsAt(fPlace)) {
      const TFolderMount& mount = entry->Mount;
      TStringView parsing = ParsingNameOf(mount);
      const TString classText = u"::" + GuidToString(mount.ClassId);
      if (EndsWith(parsing, u"\\")) parsing.remove_suffix(1);
      const bool hit =
          mount.ClassId == GUID_NULL ? SameText(bare, parsing) : SameText(bare, classText);
      if (!hit && !SameText(name, DisplayNameOf(mount))) continue;
      element = ElementOf(mount);
      return S_OK;
    }
    return kMountMissing;
  }

  HRESULT GetName(PCUITEMID_CHILD element, TNameForm form, TString& name) override {
    const TMountEntryPtr entry = Find(element);
    if (!entry) return kMountMissing;
    const TFolderMount& mount = entry->Mount;
    const bool hasClass = !(mount.ClassId == GUID_NULL);
    switch (form) {
      case TNameForm::Parsing:
        name = hasClass ? u"::" + GuidToString(mount.ClassId) : TString(ParsingNameOf(mount));
        return S_OK;
      case TNameForm::AbsoluteParsing:
      case TNameForm::AbsoluteEditing:
        name = PathOf(mount);
        if (name.empty() && !hasClass && IsAbsoluteName(ParsingNameOf(mount)))
          name = ParsingNameOf(mount);
        return name.empty() ? S_FALSE : S_OK;
      case TNameForm::FileSystemPath:
        name = PathOf(mount);
        return name.empty() ? S_FALSE : S_OK;
      default:
        name = DisplayNameOf(mount);
        return S_OK;
    }
  }

  HRESULT GetAttributes(PCUITEMID_CHILD element, DWORD, DWORD& attributes) override {
    const TMountEntryPtr entry = Find(element);
    if (!entry) return kMountMissing;
    attributes = entry->Mount.Attributes;
    return S_OK;
  }

  HRESULT Open(PCUITEMID_CHILD element, Ref<IFolderSource>& child) override {
    const TMountEntryPtr entry = Find(element);
    if (!entry) return kMountMissing;
    child = entry->Mount.Source;
    return child ? S_OK : E_NOTIMPL;
  }

  HRESULT Compare(LPARAM what, PCUITEMID_CHILD a, PCUITEMID_CHILD b, int& order) override {
    const TMountEntryPtr entryA = Find(a), entryB = Find(b);
    if (!entryA || !entryB) return TFolderSource::Compare(what, a, b, order);
    order = entryA == entryB ? 0 : entryA->Mount.Order - entryB->Mount.Order;
    if (order == 0 && entryA != entryB)
      order = CompareLogical(entryA->Mount.Name, entryB->Mount.Name);
    if (order == 0 && entryA != entryB) return TFolderSource::Compare(what, a, b, order);
    return S_OK;
  }

  HRESULT GetTypeName(PCUITEMID_CHILD element, TString& name) override {
    const TMountEntryPtr entry = Find(element);
    if (!entry) return kMountMissing;
    name = entry->Mount.TypeName;
    return S_OK;
  }

  HRESULT GetInfoTip(PCUITEMID_CHILD element, TString& tip) override {
    const TMountEntryPtr entry = Find(element);
    if (!entry) return kMountMissing;
    tip = entry->Mount.InfoTip;
    return S_OK;
  }

  HRESULT GetOverlayIndex(PCUITEMID_CHILD element, int& index) override {
    const TMountEntryPtr entry = Find(element);
    if (!entry) return kMountMissing;
    index = entry->Mount.OverlayIndex;
    return index < 0 ? S_FALSE : S_OK;
  }

  HRESULT GetIconIndex(PCUITEMID_CHILD element, bool, int& index) override {
    const TMountEntryPtr entry = Find(element);
    if (!entry) return kMountMissing;
    index = entry->Mount.IconIndex;
    return index < 0 ? S_FALSE : S_OK;
  }

 private:
  TMountEntryPtr Find(PCUITEMID_CHILD element) const {
    const std::span<const BYTE> payload = ElementPayload(element, ekMount, kMountVersion);
    if (payload.empty()) return nullptr;
    TMountTable& table = Table();
    TMountEntryPtr found;
    {
      const std::lock_guard lock(table.Lock);
      const auto hit = std::find_if(
          table.Entries.rbegin(), table.Entries.rend(), [&](const TMountEntryPtr& entry) {
            return entry->Place == fPlace && IsElementOf(entry->Mount, payload);
          });
      if (hit != table.Entries.rend()) found = *hit;
    }
    return found && IsAvailable(found->Mount) ? found : nullptr;
  }

  const TString fPlace;
};

}  // namespace

TString MountPlace(TStringView parsingName) {
  TStringView bare = parsingName;
  while (EndsWith(bare, u"\\")) bare.remove_suffix(1);
  return UpperCase(bare);
}

std::uint64_t MountGeneration() noexcept {
  return Table().Generation.load(std::memory_order_acquire);
}

bool HasInnerMounts() noexcept { return Table().Inner.load(std::memory_order_acquire) != 0; }

Ref<IFolderSource> MakeMountSource(TString place) {
  return MakeRef<TMountSource>(std::move(place));
}

TMountHandle MountFolder(TFolderMount mount) {
  auto entry = std::make_shared<TMountEntry>();
  entry->Place = MountPlace(mount.Parent);
  entry->Mount = std::move(mount);
  TMountTable& table = Table();
  const std::lock_guard lock(table.Lock);
  entry->Handle = ++table.LastHandle;
  table.Entries.push_back(entry);
  if (!entry->Place.empty()) table.Inner.fetch_add(1, std::memory_order_acq_rel);
  table.Generation.fetch_add(1, std::memory_order_acq_rel);
  return entry->Handle;
}

bool UnmountFolder(TMountHandle handle) {
  TMountEntryPtr gone;  // its source is released without the lock
  TMountTable& table = Table();
  const std::lock_guard lock(table.Lock);
  const auto hit =
      std::find_if(table.Entries.begin(), table.Entries.end(),
                   [&](const TMountEntryPtr& entry) { return entry->Handle == handle; });
  if (hit == table.Entries.end()) return false;
  gone = *hit;
  table.Entries.erase(hit);
  if (!gone->Place.empty()) table.Inner.fetch_sub(1, std::memory_order_acq_rel);
  table.Generation.fetch_add(1, std::memory_order_acq_rel);
  return true;
}

}  // namespace oak
