// What an item's fields point to, and the fence around its reading operations.
// For the sources of OakItemIdList only.
#pragma once

#include <cstdint>
#include <memory>
#include <utility>

#include "oak/base/Exceptions.h"
#include "oak/namespace/OakItemIdList.h"
#include "oak/platform/Api.h"

namespace oak {

/// An immutable text in one block of memory. Items publish pointers to it, so
/// that a reader needs no lock; the empty text is nil.
class TItemText {
 public:
  static const TItemText* Make(TStringView text);
  static void Free(const TItemText* text) noexcept;
  /// "-": the path was not computed yet.
  static const TItemText* Unknown() noexcept;
  static TStringView ViewOf(const TItemText* text) noexcept {
    return text ? TStringView(text->fText, text->fLength) : TStringView();
  }

 private:
  constexpr TItemText(const char16_t* text, std::size_t length) noexcept
      : fText(text), fLength(length) {}
  const char16_t* fText;
  std::size_t fLength;
};

inline constexpr TStringView UnknownPath = u"-";

/// State that an item has replaced and another thread may still be reading.
struct TRetiredState {
  TRetiredState() = default;
  TRetiredState(const TRetiredState&) = delete;
  TRetiredState& operator=(const TRetiredState&) = delete;
  ~TRetiredState();
  bool IsEmpty() const noexcept { return !fPidl && !fText && !fShellItem; }

  TPidl fPidl;
  const TItemText* fText = nullptr;  ///< Owned.
  Ref<IShellItem> fShellItem;
  ULONGLONG fSince = 0;  ///< In ticks.
  TRetiredState* fNext = nullptr;
};

/// The text of a task memory string.
inline TString TakeText(const TTaskMemory<WCHAR>& text) { return FromW(text.Get()); }

/// Runs a reading operation: our own exceptions end as the fallback. Lack of
/// memory passes.
template <class R, class TBody>
R Fenced(R fallback, TBody&& body) {
  try {
    return body();
  } catch (const Exception&) {
    return fallback;
  }
}

}  // namespace oak
