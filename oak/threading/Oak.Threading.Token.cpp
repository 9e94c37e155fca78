#include "oak/threading/Oak.Threading.Token.h"

#include <cassert>

namespace oak {
namespace {

// An address has at most 57 significant bits and ends in four zeros; the upper
// eleven bits of the word are left for the count of readers.
constexpr int TokenBits = 53;
constexpr int TokenAlignmentBits = 4;
constexpr std::uint64_t OneReader = std::uint64_t{1} << TokenBits;

TCancellationToken* TokenOf(std::uint64_t pWord) noexcept {
  return reinterpret_cast<TCancellationToken*>(
      static_cast<std::uintptr_t>((pWord & (OneReader - 1)) << TokenAlignmentBits));
}

std::uint64_t WordOf(TCancellationToken* pToken) noexcept {
  const auto address = static_cast<std::uint64_t>(reinterpret_cast<std::uintptr_t>(pToken));
  assert((address >> TokenAlignmentBits) < OneReader && address % (1u << TokenAlignmentBits) == 0);
  return address >> TokenAlignmentBits;
}

}  // namespace

Ref<ICancellationToken> TCustomCancellationToken::Construct() {
  return MakeRef<TCustomCancellationToken>();
}

CancellationToken::CancellationToken(const CancellationToken& other) noexcept
    : fCancellationToken(WordOf(other.Load().Detach())) {}

CancellationToken& CancellationToken::operator=(const CancellationToken& other) noexcept {
  Exchange(other.Load().Detach());
  return *this;
}

CancellationToken::~CancellationToken() { Exchange(nullptr); }

void CancellationToken::Cancel() noexcept {
  if (const Ref<TCancellationToken> token = Load()) token->Cancel();
}

void CancellationToken::Reset() noexcept {
  if (const Ref<TCancellationToken> token = Exchange(nullptr)) token->Cancel();
}

Ref<ICancellationToken> CancellationToken::GetToken() const {
  Ref<TCancellationToken> made;
  for (;;) {
    if (Ref<TCancellationToken> token = Load()) return token;
    if (!made) made = MakeRef<TCancellationToken>();
    if (PutIfEmpty(made.Get())) return made;
  }
}

Ref<TCancellationToken> CancellationToken::Load() const noexcept {
  TWord word = fCancellationToken.load(std::memory_order_acquire);
  do {
    if (word == 0) return nullptr;
  } while (
      !fCancellationToken.compare_exchange_weak(word, word + OneReader, std::memory_order_acq_rel));
  TCancellationToken* const token = TokenOf(word);
  Ref<TCancellationToken> result = Ref<TCancellationToken>::Share(token);

  // Leave the count of readers. If the token has left the field meanwhile, whoever
  // took it has added a reference for this reader instead.
  word = fCancellationToken.load(std::memory_order_relaxed);
  while (TokenOf(word) == token && word >= OneReader)
    if (fCancellationToken.compare_exchange_weak(word, word - OneReader, std::memory_order_acq_rel))
      return result;
  token->Release();
  return result;
}

Ref<TCancellationToken> CancellationToken::Exchange(TCancellationToken* pToken) const noexcept {
  const TWord before = fCancellationToken.exchange(WordOf(pToken), std::memory_order_acq_rel);
  Ref<TCancellationToken> token = Ref<TCancellationToken>::Adopt(TokenOf(before));
  for (TWord readers = before / OneReader; readers > 0; --readers) token->AddRef();
  return token;
}

bool CancellationToken::PutIfEmpty(TCancellationToken* pToken) const noexcept {
  TWord empty = 0;
  pToken->AddRef();  // The field's own, before another thread can take it out.
  if (fCancellationToken.compare_exchange_strong(empty, WordOf(pToken), std::memory_order_acq_rel))
    return true;
  pToken->Release();
  return false;
}

}  // namespace oak
