#include "oak/platform/portable/ShellChanges.h"

#include <unistd.h>

#include <algorithm>
#include <map>
#include <memory>
#include <mutex>

#include "oak/platform/Api.h"
#include "oak/platform/WindowPost.h"
#include "oak/platform/portable/FileSystemSource.h"
#include "oak/platform/portable/ShellFunctions.h"
#include "oak/platform/portable/ShellKnownFolders.h"
#include "oak/platform/portable/ShellNode.h"
#include "oak/platform/portable/ShellParse.h"
#include "oak/platform/portable/ShellPidl.h"

namespace oak {
namespace {

/// An object of the namespace as events see it: by its list, and by its path if it has one, since
/// one directory may be reached by several lists.
struct TChangePlace {
  TPidl Pidl;
  TString Path;  ///< without trailing delimiter; empty without one
};

struct TChangeWatch {
  TChangePlace Place;
  bool Recursive = false;
};

struct TChangeRegistration {
  ULONG Id = 0;
  HWND Window = nullptr;
  LONG Events = 0;
  UINT Message = 0;
  std::vector<TChangeWatch> Watches;
};
using TRegistrationPtr = std::shared_ptr<const TChangeRegistration>;

/// What a posted message stands for, until the receiver has taken it.
struct TChangePacket {
  ULONG Registration = 0;
  LONG Event = 0;
  TPidl First, Second;
  PIDLIST_ABSOLUTE Lists[2] = {};
  bool Locked = false;
};

struct TChangeState {
  std::mutex Lock;
  std::vector<TRegistrationPtr> Registrations;
  std::map<std::uintptr_t, TChangePacket> Packets;
  ULONG LastId = 0;
  std::uintptr_t LastPacket = 0x43000000;
};

TChangeState& ChangeState() {
  static auto* state = new TChangeState;  // threads may announce at any late time
  return *state;
}

// --- which events concern a watch --------------------------------------------------

TString FilePathOf(PCIDLIST_ABSOLUTE pidl) {
  TString path;
  const Ref<TFolderNode> desktop = TFolderNode::Desktop();
  if (IsEmptyPidl(pidl))
    return SUCCEEDED(desktop->GetFolderName(TNameForm::FileSystemPath, path)) ? path : TString();
  Ref<TFolderNode> parent;
  PCUITEMID_CHILD child = nullptr;
  if (FAILED(BindParent(desktop, pidl, parent, child)) || !ElementKind(child)) return {};
  if (FAILED(parent->GetName(child, TNameForm::FileSystemPath, path))) {
    DWORD attributes = 0;  // it may show a directory all the same
    Ref<TFolderNode> folder;
    if (FAILED(parent->GetAttributes(child, SFGAO_FILESYSANCESTOR, attributes)) ||
        !(attributes & SFGAO_FILESYSANCESTOR) || FAILED(parent->Open(child, folder)))
      return {};
    path = ShownDirectory(*folder);
  }
  return ExcludeTrailingPathDelimiter(path);
}

TChangePlace PlaceOf(PCIDLIST_ABSOLUTE pidl) {
  TChangePlace place;
  if (!pidl) return place;
  place.Pidl = TPidl::Copy(pidl);
  place.Path = FilePathOf(pidl);
  return place;
}

// How many levels `path` lies below `folder`; -1 if it does not.
int LevelsBelow(TStringView folder, TStringView path) {
  if (folder.empty() || path.size() < folder.size() || !StartsText(folder, path)) return -1;
  const TStringView rest = path.substr(folder.size());
  if (rest.empty()) return 0;
  return rest.front() == u'\\' ? static_cast<int>(std::count(rest.begin(), rest.end(), u'\\')) : -1;
}

// The last elements of a list, or nil if they are not all of the file system.
PCUIDLIST_RELATIVE TailOf(PCIDLIST_ABSOLUTE pidl, int count) {
  PCUIDLIST_RELATIVE tail = pidl;
  for (int skip = PidlDepth(pidl) - count; skip > 0; --skip) tail = NextElement(tail);
  for (PCUIDLIST_RELATIVE at = tail; !IsEmptyPidl(at); at = NextElement(at))
    if (ElementKind(at) != ekFileSystem) return nullptr;
  return tail;
}

// Whether the watch sees the place; `seen` is then its list, spelled from the watched folder on if
// it was reached by its path alone.
bool Sees(const TChangeWatch& watch, const TChangePlace& place, TPidl& seen) {
  if (!place.Pidl) return false;
  const PCIDLIST_ABSOLUTE top = watch.Place.Pidl.Get(), pidl = place.Pidl.Get();
  const bool below = Api().ILIsParent(top, pidl, FALSE);
  if (below || Api().ILIsEqual(top, pidl)) {
    // The desktop holds everything, and what lies in its directory once more, nearer.
    if (watch.Recursive || PidlDepth(pidl) - PidlDepth(top) <= 1) {
      seen = TPidl::Copy(pidl);
      return true;
    }
  }
  const int levels = LevelsBelow(watch.Place.Path, place.Path);
  if (levels < 0 || (!watch.Recursive && levels > 1)) return false;
  const PCUIDLIST_RELATIVE tail = TailOf(pidl, levels);
  seen = tail && PidlDepth(pidl) >= levels ? ConcatLists(TPidl::Copy(top), TPidl::Copy(tail))
                                           : TPidl::Copy(pidl);
  return true;
}

bool Concerns(const TChangeRegistration& registration, LONG event, const TChangePlace& first,
              const TChangePlace& second, TPidl& seenFirst, TPidl& seenSecond) {
  if (event & SHCNE_GLOBALEVENTS) {
    seenFirst = TPidl::Copy(first.Pidl.Get());
    seenSecond = TPidl::Copy(second.Pidl.Get());
    return true;
  }
  for (const TChangeWatch& watch : registration.Watches) {
    const bool one = Sees(watch, first, seenFirst), two = Sees(watch, second, seenSecond);
    if (!one && !two) continue;
    if (!one) seenFirst = TPidl::Copy(first.Pidl.Get());
    if (!two) seenSecond = TPidl::Copy(second.Pidl.Get());
    return true;
  }
  return false;
}

// --- delivery -------------------------------------------------------------------------

void Deliver(const TChangeRegistration& registration, TChangePacket packet) {
  TChangeState& state = ChangeState();
  std::uintptr_t handle = 0;
  {
    const std::lock_guard lock(state.Lock);
    const bool registered =
        std::any_of(state.Registrations.begin(), state.Registrations.end(),
                    [&](const auto& other) { return other->Id == registration.Id; });
    if (!registered) return;
    handle = ++state.LastPacket;
    TChangePacket& kept = state.Packets[handle] = std::move(packet);
    kept.Lists[0] = kept.First.Get();
    kept.Lists[1] = kept.Second.Get();
  }
  if (PostToWindow(registration.Window, registration.Message, handle,
                   static_cast<LPARAM>(::getpid())))
    return;
  const std::lock_guard lock(state.Lock);
  state.Packets.erase(handle);
}

void Announce(LONG event, const TChangePlace& first, const TChangePlace& second) {
  std::vector<TRegistrationPtr> registrations;
  {
    TChangeState& state = ChangeState();
    const std::lock_guard lock(state.Lock);
    registrations = state.Registrations;
  }
  for (const TRegistrationPtr& registration : registrations) {
    if (!(registration->Events & event)) continue;
    TChangePacket packet;
    packet.Registration = registration->Id;
    packet.Event = event;
    if (Concerns(*registration, event, first, second, packet.First, packet.Second))
      Deliver(*registration, std::move(packet));
  }
}

bool AnyRegistered() {
  TChangeState& state = ChangeState();
  const std::lock_guard lock(state.Lock);
  return !state.Registrations.empty();
}

LONG EventOfFolder(LONG event) {
  switch (event) {
    case SHCNE_CREATE:
      return SHCNE_MKDIR;
    case SHCNE_DELETE:
      return SHCNE_RMDIR;
    case SHCNE_RENAMEITEM:
      return SHCNE_RENAMEFOLDER;
    default:
      return event;
  }
}

// --- the shell's functions -----------------------------------------------------------

ULONG STDAPICALLTYPE SHChangeNotifyRegister(HWND window, int sources, LONG events, UINT message,
                                            int count, const SHChangeNotifyEntry* entries) {
  return ShellCall<ULONG>(0, [&]() -> ULONG {
    // Without the new delivery nobody would tell when the receiver has done with the lists.
    if (!window || count <= 0 || !entries || !(sources & SHCNRF_NewDelivery)) return 0;
    auto made = std::make_shared<TChangeRegistration>();
    made->Window = window;
    made->Events = events;
    made->Message = message;
    for (int i = 0; i < count; ++i) {
      SHChangeNotifyEntry entry = entries[i];
      const TPidl root = CopyElement(nullptr);
      made->Watches.push_back(
          {PlaceOf(entry.pidl ? entry.pidl : root.Get()), entry.fRecursive != FALSE});
    }
    TChangeState& state = ChangeState();
    const std::lock_guard lock(state.Lock);
    if (++state.LastId == 0) ++state.LastId;
    made->Id = state.LastId;
    state.Registrations.push_back(std::move(made));
    return state.LastId;
  });
}

BOOL STDAPICALLTYPE SHChangeNotifyDeregister(ULONG id) {
  return ShellCall<BOOL>(FALSE, [&]() -> BOOL {
    TChangeState& state = ChangeState();
    const std::lock_guard lock(state.Lock);
    if (!std::erase_if(state.Registrations, [&](const auto& entry) { return entry->Id == id; }))
      return FALSE;
    std::erase_if(state.Packets, [&](const auto& entry) {
      return entry.second.Registration == id && !entry.second.Locked;
    });
    return TRUE;
  });
}

HANDLE STDAPICALLTYPE SHChangeNotification_Lock(HANDLE change, DWORD process,
                                                PIDLIST_ABSOLUTE** pidls, LONG* event) {
  TChangeState& state = ChangeState();
  const std::lock_guard lock(state.Lock);
  const auto found = state.Packets.find(reinterpret_cast<std::uintptr_t>(change));
  if (found == state.Packets.end() || process != static_cast<DWORD>(::getpid())) return nullptr;
  found->second.Locked = true;
  if (pidls) *pidls = found->second.Lists;
  if (event) *event = found->second.Event;
  return change;
}

BOOL STDAPICALLTYPE SHChangeNotification_Unlock(HANDLE handle) {
  TChangeState& state = ChangeState();
  const std::lock_guard lock(state.Lock);
  const auto found = state.Packets.find(reinterpret_cast<std::uintptr_t>(handle));
  if (found == state.Packets.end() || !found->second.Locked) return FALSE;
  state.Packets.erase(found);
  return TRUE;
}

// Numbers travel as an element that no namespace knows.
TPidl ListOfNumbers(LPCVOID first, LPCVOID second) {
#pragma pack(push, 1)
  struct {
    USHORT Size;
    DWORD First, Second;
  } const numbers{10, static_cast<DWORD>(reinterpret_cast<std::uintptr_t>(first)),
                  static_cast<DWORD>(reinterpret_cast<std::uintptr_t>(second))};
#pragma pack(pop)
  return CopyElement(reinterpret_cast<PCUIDLIST_RELATIVE>(&numbers));
}

TPidl ListOfItem(LONG event, UINT type, LPCVOID item) {
  if (!item) return {};
  if (type == SHCNF_IDLIST) {
    const auto pidl = static_cast<PCIDLIST_ABSOLUTE>(item);
    TPidlSplit split;
    return SplitPidl(pidl, split) ? TPidl::Copy(pidl) : TPidl();
  }
  const TString path =
      type == SHCNF_PATHW ? FromW(static_cast<LPCWSTR>(item)) : FromUtf8(static_cast<LPCSTR>(item));
  TPidl list;
  if (path.empty() || SUCCEEDED(ParseAbsolute(path, {}, list))) return list;
  constexpr LONG folders = SHCNE_MKDIR | SHCNE_RMDIR | SHCNE_UPDATEDIR | SHCNE_RENAMEFOLDER;
  return ListOfPath(path, (event & folders) != 0);
}

void STDAPICALLTYPE SHChangeNotify(LONG event, UINT flags, LPCVOID item1, LPCVOID item2) {
  ShellCall<int>(0, [&] {
    if (!AnyRegistered()) return 0;
    const UINT type = flags & SHCNF_TYPE;
    if (type == SHCNF_DWORD) {
      Announce(event, {ListOfNumbers(item1, item2), {}}, {});
    } else if (type == SHCNF_IDLIST || type == SHCNF_PATHA || type == SHCNF_PATHW) {
      const TPidl first = ListOfItem(event, type, item1), second = ListOfItem(event, type, item2);
      Announce(event, PlaceOf(first.Get()), PlaceOf(second.Get()));
    }
    return 0;  // what is posted is delivered: nothing to flush
  });
}

}  // namespace

TPidl ListOfPath(TStringView path, bool folder) {
  WIN32_FIND_DATAW data{};
  data.dwFileAttributes = folder ? FILE_ATTRIBUTE_DIRECTORY : FILE_ATTRIBUTE_NORMAL;
  TParseOptions options;
  options.FindData = &data;
  TPidl list;
  if (path.empty() || FAILED(ParseAbsolute(path, options, list))) return {};
  return list;
}

void AnnounceChange(LONG event, PCIDLIST_ABSOLUTE first, PCIDLIST_ABSOLUTE second) noexcept {
  ShellCall<int>(0, [&] {
    if (AnyRegistered()) Announce(event, PlaceOf(first), PlaceOf(second));
    return 0;
  });
}

void AnnouncePath(LONG event, bool folder, TStringView first, TStringView second) noexcept {
  ShellCall<int>(0, [&] {
    if (!AnyRegistered()) return 0;
    const TPidl one = ListOfPath(first, folder), two = ListOfPath(second, folder);
    Announce(folder ? EventOfFolder(event) : event, {TPidl::Copy(one.Get()), TString(first)},
             {TPidl::Copy(two.Get()), TString(second)});
    return 0;
  });
}

bool IsFolderElement(const TFolderNode& folder, PCUITEMID_CHILD child) {
  DWORD attributes = 0;
  return SUCCEEDED(folder.GetAttributes(child, SFGAO_FOLDER, attributes)) &&
         (attributes & SFGAO_FOLDER);
}

void AnnounceRename(const TFolderNode& folder, PCUITEMID_CHILD child,
                    PCUITEMID_CHILD renamed) noexcept {
  ShellCall<int>(0, [&] {
    int order = 1;
    if (SUCCEEDED(folder.Compare(SHCIDS_CANONICALONLY, child, renamed, order)) && order == 0)
      return 0;
    AnnounceChange(IsFolderElement(folder, renamed) ? SHCNE_RENAMEFOLDER : SHCNE_RENAMEITEM,
                   folder.PidlOf(child).Get(), folder.PidlOf(renamed).Get());
    return 0;
  });
}

std::size_t ChangeRegistrations() noexcept {
  const std::lock_guard lock(ChangeState().Lock);
  return ChangeState().Registrations.size();
}

std::size_t PendingChanges() noexcept {
  const std::lock_guard lock(ChangeState().Lock);
  return ChangeState().Packets.size();
}

#define BIND(Name) api.Name.SetFunction(&(Name))
void BindShellChanges(TApi& api) {
  BIND(SHChangeNotify);
  BIND(SHChangeNotifyRegister);
  BIND(SHChangeNotifyDeregister);
  BIND(SHChangeNotification_Lock);
  BIND(SHChangeNotification_Unlock);
}
#undef BIND

}  // namespace oak
