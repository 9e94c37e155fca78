// Cancellation tokens. No lock anywhere: they are asked in inner loops.
#pragma once

#include <atomic>
#include <cstdint>

#include "oak/threading/Oak.Threading.Types.h"

namespace oak {

/// A token that is cancelled once and stays so.
class TCustomCancellationToken : public TInterfacedObject<ICancellationToken> {
 public:
  static Ref<ICancellationToken> Construct();

  bool IsCancellationRequested() override {
    return fCancellationRequested.load(std::memory_order_acquire);
  }
  void Cancel() override { fCancellationRequested.store(true, std::memory_order_release); }

 private:
  std::atomic<bool> fCancellationRequested{false};
};

/// The token that CancellationToken makes. Aligned, since the lowest bits of its
/// address hold a count there.
class alignas(16) TCancellationToken final : public TCustomCancellationToken {};

/// The owner's end of a token: a member of a control, say. Makes a token when one is
/// first asked for; Reset cancels that one, and the next use makes a new one. Any
/// thread, all operations at once; only assignment and destruction belong to the
/// owner. A copy shares the token that the original has at that moment.
class CancellationToken {
 public:
  CancellationToken() noexcept = default;
  CancellationToken(const CancellationToken& other) noexcept;
  CancellationToken& operator=(const CancellationToken& other) noexcept;
  ~CancellationToken();

  /// Cancels the work that holds the present token. Without one, nothing happens.
  void Cancel() noexcept;
  /// Cancels, and forgets the token: work that is made later is not concerned.
  void Reset() noexcept;

  /// The token, made on demand; never empty.
  Ref<ICancellationToken> GetToken() const;
  operator Ref<ICancellationToken>() const { return GetToken(); }
  operator Ref<ICancellationIndicator>() const { return GetToken(); }

 private:
  // The token's address, and the number of readers that have seen it but don't yet
  // hold a reference of their own. Whoever takes the token out of the field gives
  // each of these one.
  using TWord = std::uint64_t;

  Ref<TCancellationToken> Load() const noexcept;
  Ref<TCancellationToken> Exchange(TCancellationToken* pToken) const noexcept;
  bool PutIfEmpty(TCancellationToken* pToken) const noexcept;

  mutable std::atomic<TWord> fCancellationToken{0};
};

}  // namespace oak
