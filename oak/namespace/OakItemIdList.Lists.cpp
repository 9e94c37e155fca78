// Taking lists apart and together, and comparing them.
#include <cstring>

#include "oak/namespace/FolderTrek.Paths.h"
#include "oak/namespace/OakItemIdList.State.h"
#include "oak/namespace/Shell_Win32.h"

namespace oak {
namespace {

/// Both lists' order by the desktop, as the raw result of the shell.
int CompareByDesktop(LPARAM hint, PItemIdList pidl1, PItemIdList pidl2) {
  // Not every desktop survives a nil list.
  if (!pidl1 || !pidl2) return E_INVALIDARG;
  return Fenced<int>(E_FAIL, [&] { return Desktop()->CompareIDs(hint, pidl1, pidl2); });
}

}  // namespace

PCItemIdList TOakItemIdList::GetElementNo(PCItemIdList pIdList, int pElementsToSkip) {
  if (pElementsToSkip < 0)
    throw EInvalidArgument(
        u"TOakItemIdList.GetStartItemIdList: The paramter pFragments must be greater or equal 0.");
  const auto* element = reinterpret_cast<const BYTE*>(pIdList);
  for (; element && pElementsToSkip > 0; --pElementsToSkip) {
    USHORT size;
    std::memcpy(&size, element, sizeof(size));
    if (size < sizeof(size)) break;
    element += size;
  }
  return reinterpret_cast<PCItemIdList>(element);
}

Ref<IItemIdList> TOakItemIdList::Concat(const Ref<IItemIdList>& pItemIdList2) {
  if (!pItemIdList2) return Self();
  return Create(TPidl::Adopt(Api().ILCombine(WindowsPointer(), pItemIdList2->WindowsPointer())));
}

Ref<IItemIdList> TOakItemIdList::GetStartItemIdList(int pFragments) {
  PItemIdList pidl = WindowsPointer();
  const auto* rest = GetElementNo(pidl, pFragments);
  if (!pidl) return Create(TPidl());
  // Only the prefix is copied: names of all prefixes of a long list stay linear.
  const auto length =
      static_cast<std::size_t>(reinterpret_cast<const BYTE*>(rest) - reinterpret_cast<BYTE*>(pidl));
  auto* start = static_cast<BYTE*>(CoTaskMemAlloc(length + sizeof(USHORT)));
  if (!start) throw std::bad_alloc();
  std::memcpy(start, pidl, length);
  std::memset(start + length, 0, sizeof(USHORT));
  return Create(TPidl::Adopt(reinterpret_cast<PItemIdList>(start)));
}

Ref<IItemIdList> TOakItemIdList::GetParent() {
  PItemIdList pidl = WindowsPointer();
  IUnknown* self = static_cast<IItemIdList*>(this);
  if (!pidl)
    throw EFolderTrekError(u"Could not get the parent ItemIdList for invalid ItemIdList: ", self);
  TPidl parent = TPidl::Adopt(Api().ILClone(pidl));
  if (!parent || !Api().ILRemoveLastID(parent.Get()))
    throw EFolderTrekError(u"Could not get the parent ItemIdList for: ", self);
  return Create(std::move(parent));
}

Ref<IItemIdList> TOakItemIdList::GetLastPart() {
  PItemIdList pidl = WindowsPointer();
  return Create(pidl ? Api().ILFindLastID(pidl) : nullptr, iloCopyMemory);
}

int TOakItemIdList::Depth() { return PidlDepth(WindowsPointer()); }

bool TOakItemIdList::IsAbsolute() {
  if (Depth() != 1) return true;
  const TOakShellFolder folder = SpecialFolder();
  return folder != SF_FILESYSTEMFOLDER && folder != SF_UNKNOWN;
}

// --- identity ----------------------------------------------------------------

bool TOakItemIdList::SamePathDecides(const Ref<IItemIdList>& pOther, bool& pSame) {
  if (IsSpecialFolder(SF_DESKTOP) || pOther->IsSpecialFolder(SF_DESKTOP)) return false;
  const TString path = Path();
  if (path.empty()) return false;
  const TString other = pOther->Path();
  if (other.empty()) return false;
  pSame = SamePath(path, other);
  return true;
}

bool TOakItemIdList::Equals(const Ref<IItemIdList>& pItemIdList2,
                            TItemIdListComparison pComparison) {
  if (!pItemIdList2) return false;
  if (pItemIdList2.Get() == this) return true;
  bool isSame = false;
  if (pComparison == ilcDisplay && SamePathDecides(pItemIdList2, isSame)) return isSame;
  if (pComparison == ilcExact && Depth() != pItemIdList2->Depth()) return false;
  return CompareTo(pItemIdList2, pComparison) == 0;
}

bool TOakItemIdList::AreBothInQuickAccess(const Ref<IItemIdList>& pOther) {
  return Fenced(false, [&] {
    return Depth() == 2 && pOther->Depth() == 2 && GetParent()->IsSpecialFolder(SF_QUICKACCESS) &&
           pOther->GetParent()->IsSpecialFolder(SF_QUICKACCESS);
  });
}

int TOakItemIdList::CompareTo(const Ref<IItemIdList>& pItemIdList2,
                              TItemIdListComparison pComparison) {
  if (!pItemIdList2) return -1;
  bool isSame = false;
  if (pComparison == ilcDisplay && SamePathDecides(pItemIdList2, isSame) && isSame) return 0;
  // Entries of Quick Access with one display name are still different objects.
  const bool isCanonical = pComparison == ilcExact || AreBothInQuickAccess(pItemIdList2);
  const SICHINTF hint = isCanonical ? SICHINT_CANONICAL : SICHINT_DISPLAY;
  const Ref<IShellItem> item = ShellItem();
  const Ref<IShellItem> other = item ? pItemIdList2->ShellItem() : nullptr;
  int order = 0;
  if (item && other && SUCCEEDED(item->Compare(other.Get(), hint, &order))) return order;
  return CompareByDesktop(static_cast<LPARAM>(hint), WindowsPointer(),
                          pItemIdList2->WindowsPointer());
}

bool TOakItemIdList::IsParentOf(const Ref<IItemIdList>& pChildItemIdList, bool pAcceptsEquals,
                                TItemIdListComparison pComparisonType) {
  if (!pChildItemIdList) return false;
  PItemIdList pidl = WindowsPointer();
  PItemIdList child = pChildItemIdList->WindowsPointer();
  if (pidl && child)
    if (PCItemIdList rest = Api().ILFindChild(pidl, child))
      return pAcceptsEquals || PidlDepth(rest) >= 1;
  if (pComparisonType == ilcExact) return false;
  const TString path = Path();
  if (path.empty()) return false;
  const TString childPath = pChildItemIdList->Path();
  return IsSubPathOf(path, childPath) || (pAcceptsEquals && SamePath(path, childPath));
}

}  // namespace oak
