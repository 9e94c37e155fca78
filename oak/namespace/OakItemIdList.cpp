#include "oak/namespace/OakItemIdList.h"

#include <bit>
#include <condition_variable>
#include <cstring>
#include <mutex>
#include <new>

#include "oak/namespace/FolderTrek.Paths.h"
#include "oak/namespace/NamespaceHooks.h"
#include "oak/namespace/Oak.Shell.PathUtils.h"
#include "oak/namespace/Oak.Shell.Types.h"
#include "oak/namespace/OakItemIdList.State.h"
#include "oak/platform/MainThread.h"

namespace oak {
namespace {

// Replaced states are kept for readers on other threads: this many, and all of the
// last minute. A reader uses a pointer for the length of one shell call; an item
// that is reloaded all the time must not grow for ever.
constexpr int kRetiredStates = 16;
constexpr ULONGLONG kRetiredMilliseconds = 60000;

// Guards replacing and retiring, which are rare.
std::mutex& ReplaceLock() {
  static std::mutex lock;
  return lock;
}

PItemIdList FailedPidl() noexcept { return reinterpret_cast<PItemIdList>(std::uintptr_t{1}); }

bool IsRealPidl(PItemIdList pidl) noexcept { return pidl != nullptr && pidl != FailedPidl(); }

void DeleteAll(TRetiredState* first) noexcept {
  while (first) delete std::exchange(first, first->fNext);
}

/// "C:\" keeps its delimiter, every other path loses it.
TStringView WithoutDelimiter(TStringView path) {
  if (path.size() < 4 && TPathUtils::StartsWithDriveLetter(path)) return path;
  return !path.empty() && path.back() == PathDelim ? path.substr(0, path.size() - 1) : path;
}

}  // namespace

// --- small parts -------------------------------------------------------------

// A lock has no room for what its waiters sleep on; locks that are waited for share places by their
// address. (The waiting of std::atomic loses wake-ups in MinGW's library, where no system call
// stands behind it.)
class TReentrantLock::TPlace {
 public:
  static TPlace& Of(const TReentrantLock& lock) noexcept {
    static TPlace* const places = new TPlace[Count];  // used by threads that outlive static objects
    return places[std::bit_cast<std::uintptr_t>(&lock) / sizeof(TReentrantLock) % Count];
  }
  /// Until `ready` is true. It is asked again after each Wake.
  template <class TReady>
  void Wait(const TReady& ready) {
    fWaiting.fetch_add(1);
    std::unique_lock guard(fLock);
    fChanged.wait(guard, ready);
    fWaiting.fetch_sub(1);
  }
  // Whoever waits counts himself before he looks, and this looks after the change.
  void Wake() {
    if (fWaiting.load() == 0) return;
    const std::lock_guard guard(fLock);
    fChanged.notify_all();
  }

 private:
  static constexpr std::size_t Count = 16;

  std::atomic<int> fWaiting{0};
  std::mutex fLock;
  std::condition_variable fChanged;
};

void TReentrantLock::Enter() noexcept {
  const DWORD self = CurrentThreadId();
  if (fOwner.load(std::memory_order_relaxed) != self) {
    const auto take = [&] {
      DWORD nobody = 0;
      return fOwner.compare_exchange_strong(nobody, self);
    };
    if (!take()) TPlace::Of(*this).Wait(take);
  }
  ++fDepth;
}

void TReentrantLock::Leave() noexcept {
  if (--fDepth > 0) return;
  fOwner.store(0);
  TPlace::Of(*this).Wake();
}

const TItemText* TItemText::Unknown() noexcept {
  static constexpr TItemText text(UnknownPath.data(), UnknownPath.size());
  return &text;
}

const TItemText* TItemText::Make(TStringView text) {
  if (text.empty()) return nullptr;
  if (text == UnknownPath) return Unknown();
  void* block = ::operator new(sizeof(TItemText) + text.size() * sizeof(char16_t));
  auto* characters = reinterpret_cast<char16_t*>(static_cast<char*>(block) + sizeof(TItemText));
  std::memcpy(characters, text.data(), text.size() * sizeof(char16_t));
  return new (block) TItemText(characters, text.size());
}

void TItemText::Free(const TItemText* text) noexcept {
  if (text && text != Unknown()) ::operator delete(const_cast<TItemText*>(text));
}

TRetiredState::~TRetiredState() { TItemText::Free(fText); }

TNamespaceHooks& NamespaceHooks() {
  static TNamespaceHooks hooks;
  return hooks;
}

const Ref<IItemIdList>& NullItemIdList() {
  // Never destroyed: items in static objects of others may outlive any order.
  static const auto* item =
      new Ref<IItemIdList>(Ref<IItemIdList>::Adopt(new TOakItemIdList(nullptr, iloForeignOwned)));
  return *item;
}

// --- life --------------------------------------------------------------------

TOakItemIdList::TOakItemIdList(PItemIdList pItemIdList, TItemIdListOwnership pOwnsPointer) noexcept
    : fItemIdList(pItemIdList),
      fOwnsPointer(pOwnsPointer),
      fSpecialFolder(SF_INVALID),
      fHasPIDLLock(true),
      fPath(TItemText::Unknown()) {}

TOakItemIdList::TOakItemIdList(TBare) noexcept {}

TOakItemIdList::~TOakItemIdList() {
  PItemIdList pidl = fItemIdList.load(std::memory_order_relaxed);
  if (IsRealPidl(pidl) && fOwnsPointer.load(std::memory_order_relaxed) != iloForeignOwned)
    CoTaskMemFree(pidl);
  if (IShellItem* item = fShellItem.load(std::memory_order_relaxed)) item->Release();
  TItemText::Free(fPath.load(std::memory_order_relaxed));
  DeleteAll(fRetired);
}

Ref<IItemIdList> TOakItemIdList::Create(PCItemIdList pItemIdList,
                                        TItemIdListOwnership pOwnsPointer) {
  auto* pidl = const_cast<PItemIdList>(pItemIdList);
  if (pOwnsPointer == iloForeignOwned)
    return Ref<IItemIdList>::Adopt(new TOakItemIdList(pidl, pOwnsPointer));
  TPidl owned = TPidl::Adopt(pOwnsPointer == iloCopyMemory && pidl ? Api().ILClone(pidl) : pidl);
  auto item = Ref<TOakItemIdList>::Adopt(new TOakItemIdList(nullptr, pOwnsPointer));
  item->AdoptPidl(std::move(owned));
  return item;
}

Ref<IItemIdList> TOakItemIdList::Create(TPidl pItemIdList) {
  auto item = Ref<TOakItemIdList>::Adopt(new TOakItemIdList(nullptr, iloOwnsMemory));
  item->AdoptPidl(std::move(pItemIdList));
  return item;
}

Ref<IItemIdList> TOakItemIdList::Create(TStringView pPath) {
  return Create(pPath, nullptr, nullptr);
}

Ref<IItemIdList> TOakItemIdList::Create(TStringView pPath, IShellFolder* pShellFolder,
                                        HWND pWindowHandleForLogonDialog) {
  auto item = Ref<TOakItemIdList>::Adopt(new TOakItemIdList(nullptr, iloOwnsMemory));
  const bool isNetwork = pPath == TPathUtils::NetworkRoot;
  if (pPath.empty() || isNetwork) {
    const auto folder = CreateForSpecialFolder(isNetwork ? SF_NETWORK : SF_DRIVES, true);
    if (PItemIdList pidl = folder->WindowsPointer())
      item->AdoptPidl(TPidl::Adopt(Api().ILClone(pidl)));
  } else if (pShellFolder || pWindowHandleForLogonDialog) {
    item->AdoptPidl(Fenced(TPidl(), [&] {
      return GetIdListFromPath(pShellFolder, pPath, pWindowHandleForLogonDialog);
    }));
  }
  if (pPath.empty())
    item->InitPath({});
  else if (!pShellFolder)
    item->InitPath(WithoutDelimiter(pPath));
  return item;
}

Ref<IItemIdList> TOakItemIdList::Create(IShellFolder* pShellFolder, PCItemIdList pRelativeIdList) {
  TPidl folder;
  if (!pShellFolder || FAILED(Api().SHGetIDListFromObject(pShellFolder, folder.Put())) || !folder) {
    auto failed = Ref<TOakItemIdList>::Adopt(new TOakItemIdList(TBare{}));
    failed->fItemIdList.store(FailedPidl(), std::memory_order_relaxed);
    return failed;
  }
  return Create(TPidl::Adopt(Api().ILCombine(folder.Get(), pRelativeIdList)));
}

Ref<IItemIdList> TOakItemIdList::Create(IShellItem* pShellItem) {
  auto item = Ref<TOakItemIdList>::Adopt(new TOakItemIdList(TBare{}));
  item->SetShellItem(pShellItem);
  (void)item->IsInvalid();
  return item;
}

Ref<IItemIdList> TOakItemIdList::CreateSimpleIdList(TStringView pPath) {
  auto item = Ref<TOakItemIdList>::Adopt(new TOakItemIdList(nullptr, iloOwnsMemory));
  item->InitPath(WithoutDelimiter(pPath));
  item->AdoptPidl(TPidl::Adopt(Api().SHSimpleIDListFromPath(W(TString(pPath)))));
  return item;
}

Ref<IItemIdList> TOakItemIdList::CreateInvalidWithPath(TStringView pPath) {
  auto item = Ref<TOakItemIdList>::Adopt(new TOakItemIdList(FailedPidl(), iloForeignOwned));
  item->InitPath(pPath);
  return item;
}

Ref<IItemIdList> TOakItemIdList::CreateSearchFolder(TStringView pQuery,
                                                    const Ref<IItemIdList>& pSearchScope) {
  return TOakSearchFolder::Create(pQuery, pSearchScope);
}

void TOakItemIdList::AdoptPidl(TPidl pPidl) noexcept {
  fItemIdList.store(pPidl.Detach(), std::memory_order_release);
}

void TOakItemIdList::InitPath(TStringView pText) {
  fPath.store(TItemText::Make(pText), std::memory_order_release);
}

// --- resolving ---------------------------------------------------------------

PItemIdList TOakItemIdList::WindowsPointer() {
  PItemIdList pidl = fItemIdList.load(std::memory_order_acquire);
  if (!pidl) [[unlikely]]
    pidl = Resolve();
  return pidl == FailedPidl() ? nullptr : pidl;
}

PItemIdList TOakItemIdList::Resolve() {
  TPidl found = Fenced(TPidl(), [this] { return FindPidl(); });
  // While there is no list there is nothing that the mark could be wrong about.
  if (found) fOwnsPointer.store(iloOwnsMemory, std::memory_order_relaxed);
  PItemIdList current = nullptr;
  PItemIdList next = found ? found.Get() : FailedPidl();
  if (!fItemIdList.compare_exchange_strong(current, next, std::memory_order_acq_rel,
                                           std::memory_order_acquire))
    return current;  // Another thread was first; what was found here is dropped.
  (void)found.Detach();
  return next;
}

TPidl TOakItemIdList::FindPidl() {
  const TStringView path = PathField();
  if (!path.empty() && path != UnknownPath) return GetIdListFromPath(nullptr, path, nullptr);
  const auto item = Ref<IShellItem>::Share(fShellItem.load(std::memory_order_acquire));
  if (!item) return {};
  TPidl pidl;
  if (SUCCEEDED(Api().SHGetIDListFromObject(item.Get(), pidl.Put())) && pidl) return pidl;
  TTaskMemory<WCHAR> name;
  if (FAILED(item->GetDisplayName(SIGDN_DESKTOPABSOLUTEPARSING, name.Put())) || !name) return {};
  return GetIdListFromPath(nullptr, TakeText(name), nullptr);
}

bool TOakItemIdList::IsResolved() { return fItemIdList.load(std::memory_order_acquire) != nullptr; }

bool TOakItemIdList::IsInvalid() { return WindowsPointer() == nullptr; }

// --- replacing ---------------------------------------------------------------

void TOakItemIdList::Retire(std::unique_ptr<TRetiredState> pState) noexcept {
  if (pState->IsEmpty()) return;
  const ULONGLONG now = Api().GetTickCount64();
  pState->fSince = now;
  TRetiredState* tooOld = nullptr;
  {
    const std::lock_guard lock(ReplaceLock());
    pState->fNext = fRetired;
    fRetired = pState.release();
    TRetiredState* last = fRetired;
    for (int i = 1; last->fNext; ++i, last = last->fNext)
      if (i >= kRetiredStates && now - last->fNext->fSince >= kRetiredMilliseconds) {
        tooOld = std::exchange(last->fNext, nullptr);
        break;
      }
  }
  DeleteAll(tooOld);
}

void TOakItemIdList::ReplacePidl(TPidl pPidl) {
  auto retired = std::make_unique<TRetiredState>();
  {
    const std::lock_guard lock(ReplaceLock());
    const bool owned = fOwnsPointer.exchange(iloOwnsMemory) != iloForeignOwned;
    PItemIdList old = fItemIdList.exchange(pPidl.Detach(), std::memory_order_acq_rel);
    if (owned && IsRealPidl(old)) retired->fPidl = TPidl::Adopt(old);
  }
  Retire(std::move(retired));
}

void TOakItemIdList::ReplaceRenamed(TPidl pPidl) {
  ReplacePidl(std::move(pPidl));
  fSpecialFolder.store(SF_INVALID, std::memory_order_release);
  SetShellItem(nullptr);
}

void TOakItemIdList::SetPidl(TPidl pPidl) { ReplaceRenamed(std::move(pPidl)); }

void TOakItemIdList::SetShellItem(IShellItem* pShellItem) {
  auto retired = std::make_unique<TRetiredState>();
  if (pShellItem) pShellItem->AddRef();
  retired->fShellItem =
      Ref<IShellItem>::Adopt(fShellItem.exchange(pShellItem, std::memory_order_acq_rel));
  Retire(std::move(retired));
  SetPathField(UnknownPath);
}

TStringView TOakItemIdList::PathField() const noexcept {
  return TItemText::ViewOf(fPath.load(std::memory_order_acquire));
}

void TOakItemIdList::SetPathField(TStringView pText) {
  auto retired = std::make_unique<TRetiredState>();
  const TItemText* old = fPath.exchange(TItemText::Make(pText), std::memory_order_acq_rel);
  if (old != TItemText::Unknown()) retired->fText = old;
  Retire(std::move(retired));
}

// --- queries and commands ----------------------------------------------------

TOakItemIdList* TOakItemIdList::From(const Ref<IItemIdList>& pItemIdList) noexcept {
  return dynamic_cast<TOakItemIdList*>(pItemIdList.Get());
}

HRESULT TOakItemIdList::QueryDelegated(REFIID iid, void** out) {
  try {
    if (iid == IidOf<IShellFolder>())
      *out = GetShellFolder().Detach();
    else if (iid == IidOf<ISequentialStream>())
      *out = GetSequentialStream().Detach();
    else if (iid == IidOf<IStream>())
      *out = GetStream().Detach();
    return *out ? S_OK : E_NOINTERFACE;
  } catch (const EOSError& error) {
    // The code is a Win32 error or a whole HRESULT; 0 has to stay a failure.
    const auto code = HRESULT_FROM_WIN32(error.GetErrorCode());
    return FAILED(code) ? code : E_FAIL;
  } catch (const std::bad_alloc&) {
    return E_OUTOFMEMORY;
  } catch (...) {
    return E_UNEXPECTED;
  }
}

}  // namespace oak
