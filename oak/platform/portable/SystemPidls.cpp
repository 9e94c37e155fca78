// Item identifier lists as memory. A list ends at the first element that claims
// fewer bytes than its own size field takes. What asks whether two lists lead to
// one object belongs to the namespace.
#include <cstring>

#include "oak/platform/portable/SystemBinding.h"

namespace oak {
namespace {

constexpr std::size_t SizeField = sizeof(USHORT);

const BYTE* Bytes(LPCITEMIDLIST pidl) { return reinterpret_cast<const BYTE*>(pidl); }
LPCITEMIDLIST List(const BYTE* bytes) { return reinterpret_cast<LPCITEMIDLIST>(bytes); }
LPITEMIDLIST Mutable(LPCITEMIDLIST pidl) { return const_cast<LPITEMIDLIST>(pidl); }

// Size of the element at `at`, 0 at the end of the list. Lists lie unaligned.
std::size_t ElementSize(const BYTE* at) {
  USHORT size = 0;
  std::memcpy(&size, at, SizeField);
  return size < SizeField ? 0 : size;
}

// Bytes of all elements, without the end.
std::size_t Length(LPCITEMIDLIST pidl) {
  std::size_t length = 0;
  if (!pidl) return 0;
  while (const std::size_t size = ElementSize(Bytes(pidl) + length)) length += size;
  return length;
}

LPITEMIDLIST Make(LPCITEMIDLIST first, std::size_t firstLength, LPCITEMIDLIST second,
                  std::size_t secondLength) {
  auto* made = static_cast<BYTE*>(CoTaskMemAlloc(firstLength + secondLength + SizeField));
  if (!made) return nullptr;
  if (firstLength) std::memcpy(made, first, firstLength);
  if (secondLength) std::memcpy(made + firstLength, second, secondLength);
  std::memset(made + firstLength + secondLength, 0, SizeField);
  return reinterpret_cast<LPITEMIDLIST>(made);
}

UINT STDAPICALLTYPE ILGetSize(LPCITEMIDLIST pidl) {
  return pidl ? static_cast<UINT>(Length(pidl) + SizeField) : 0;
}

LPITEMIDLIST STDAPICALLTYPE ILClone(LPCITEMIDLIST pidl) {
  return pidl ? Make(pidl, Length(pidl), nullptr, 0) : nullptr;
}

LPITEMIDLIST STDAPICALLTYPE ILCloneFirst(LPCITEMIDLIST pidl) {
  return pidl ? Make(pidl, ElementSize(Bytes(pidl)), nullptr, 0) : nullptr;
}

LPITEMIDLIST STDAPICALLTYPE ILCombine(LPCITEMIDLIST first, LPCITEMIDLIST second) {
  return first || second ? Make(first, Length(first), second, Length(second)) : nullptr;
}

void STDAPICALLTYPE ILFree(LPITEMIDLIST pidl) { CoTaskMemFree(pidl); }

LPITEMIDLIST STDAPICALLTYPE ILGetNext(LPCITEMIDLIST pidl) {
  const std::size_t size = pidl ? ElementSize(Bytes(pidl)) : 0;
  return size ? Mutable(List(Bytes(pidl) + size)) : nullptr;
}

LPITEMIDLIST STDAPICALLTYPE ILFindLastID(LPCITEMIDLIST pidl) {
  LPCITEMIDLIST last = pidl;
  for (LPCITEMIDLIST next = ILGetNext(pidl); next; next = ILGetNext(next))
    if (ElementSize(Bytes(next))) last = next;
  return Mutable(last);
}

BOOL STDAPICALLTYPE ILRemoveLastID(LPITEMIDLIST pidl) {
  LPITEMIDLIST last = ILFindLastID(pidl);
  if (!last || ElementSize(Bytes(last)) == 0) return FALSE;
  std::memset(last, 0, SizeField);
  return TRUE;
}

}  // namespace

#define BIND(Name) api.Name.SetFunction(&Name)
void BindSystemPidls(TApi& api) {
  BIND(ILGetSize);
  BIND(ILClone);
  BIND(ILCloneFirst);
  BIND(ILCombine);
  BIND(ILFree);
  BIND(ILGetNext);
  BIND(ILFindLastID);
  BIND(ILRemoveLastID);
}
#undef BIND

}  // namespace oak
