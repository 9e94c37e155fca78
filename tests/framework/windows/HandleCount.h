// How many handles this process has.
#pragma once

#include "oak/platform/windows/WindowsHeaders.h"

namespace oak::tests {

/// GDI objects; 0 where nobody counts them.
inline int CountGdiHandles() {
  if (const DWORD count = ::GetGuiResources(::GetCurrentProcess(), GR_GDIOBJECTS))
    return static_cast<int>(count);
  // Wine answers nothing there, but keeps the table of handles that every process can see. The type
  // of an entry is 0 when it is free.
  constexpr std::size_t PebInTeb = 0x60;
  constexpr std::size_t TableInPeb = 0xF8;
  constexpr std::size_t EntrySize = 24;
  constexpr std::size_t TypeInEntry = 14;
  constexpr std::size_t Entries = 16384;
  const auto* peb = *reinterpret_cast<const char* const*>(
      reinterpret_cast<const char*>(::NtCurrentTeb()) + PebInTeb);
  const auto* table = *reinterpret_cast<const char* const*>(peb + TableInPeb);
  int count = 0;
  for (std::size_t i = 0; table && i < Entries; ++i)
    if (table[i * EntrySize + TypeInEntry]) ++count;
  return count;
}

}  // namespace oak::tests
