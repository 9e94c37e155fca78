// Values that are computed in the background.
#pragma once

#include <functional>
#include <mutex>
#include <string_view>
#include <typeinfo>
#include <utility>

#include "oak/platform/Api.h"
#include "oak/threading/Oak.Threading.Pool.h"
#include "oak/threading/Oak.Threading.WorkItem.h"

namespace oak {

/// A value that is being computed. Any thread.
template <class T>
struct IFuture : IUnknown {
  /// Waits for the end; looks every millisecond. A default T if the computation was
  /// cancelled before it had one. Waits for ever if nobody queues the item.
  virtual T Value() = 0;
  /// Waits at most so many milliseconds (looks every 40) and returns Completed,
  /// Canceled, or Running when the time has passed. pValue counts only with Completed.
  /// With 0 it returns Running without looking.
  virtual TTaskStatus TryGetValue(T& pValue, std::uint64_t pTimeoutMs) = 0;
};

namespace detail {
/// An identifier for each type of value, the same in the whole program.
constexpr GUID FutureIid(std::string_view typeName) {
  std::uint64_t hash = 0xCBF29CE484222325u;  // FNV-1a
  for (const char c : typeName) hash = (hash ^ static_cast<unsigned char>(c)) * 0x100000001B3u;
  GUID iid{0x47D2A95C, 0xE318, 0x4B06, {}};
  for (unsigned char& byte : iid.Data4) {
    byte = static_cast<unsigned char>(hash & 0xFF);
    hash >>= 8;
  }
  return iid;
}
}  // namespace detail

template <class T>
struct TInterfaceId<IFuture<T>> {
  static const GUID& Get() {
    static const GUID iid = detail::FutureIid(typeid(T).name());
    return iid;
  }
};

/// A work item with a value. T can be made without arguments and be copied.
template <class T>
class TFuture : public TBasicWorkItem, public IFuture<T> {
 public:
  using TFunction = std::function<T()>;

  /// A future that is not queued: hand it to a pool as IWorkItem.
  static Ref<IFuture<T>> Construct(TFunction pFunction,
                                   Ref<ICancellationIndicator> pCancellationIndicator = nullptr);
  /// The same, handed to the global pool.
  static Ref<IFuture<T>> CreateAndQueue(
      TFunction pFunction, Ref<ICancellationIndicator> pCancellationIndicator = nullptr);

  T Value() override {
    Wait();
    return GetResult();
  }
  TTaskStatus TryGetValue(T& pValue, std::uint64_t pTimeoutMs) override;

  HRESULT STDMETHODCALLTYPE QueryInterface(REFIID iid, void** out) override {
    return TBasicWorkItem::QueryInterface(iid, out);
  }
  ULONG STDMETHODCALLTYPE AddRef() override { return TBasicWorkItem::AddRef(); }
  ULONG STDMETHODCALLTYPE Release() override { return TBasicWorkItem::Release(); }

 protected:
  explicit TFuture(Ref<ICancellationIndicator> pCancellationIndicator)
      : TBasicWorkItem(std::move(pCancellationIndicator)) {}

  virtual T GetResult() {
    const std::lock_guard guard(fResultLock);
    return fResult;
  }
  void SetResult(T pResult) {
    const std::lock_guard guard(fResultLock);
    fResult = std::move(pResult);
  }
  HRESULT QueryDelegated(REFIID iid, void** out) override {
    if (iid != IidOf<IFuture<T>>()) return TBasicWorkItem::QueryDelegated(iid, out);
    AddRef();
    *out = static_cast<IFuture<T>*>(this);
    return S_OK;
  }

 private:
  std::mutex fResultLock;  // A caller whose time is over reads what is there.
  T fResult{};
};

/// A future whose value a function yields.
template <class T>
class TAnonymousFuture final : public TFuture<T> {
 public:
  TAnonymousFuture(typename TFuture<T>::TFunction pFunction,
                   Ref<ICancellationIndicator> pCancellationIndicator)
      : TFuture<T>(std::move(pCancellationIndicator)), fFunction(std::move(pFunction)) {}

  void DoWork() override { this->SetResult(fFunction()); }

 private:
  typename TFuture<T>::TFunction fFunction;
};

template <class T>
Ref<IFuture<T>> TFuture<T>::Construct(TFunction pFunction,
                                      Ref<ICancellationIndicator> pCancellationIndicator) {
  return MakeRef<TAnonymousFuture<T>>(std::move(pFunction), std::move(pCancellationIndicator));
}

template <class T>
Ref<IFuture<T>> TFuture<T>::CreateAndQueue(TFunction pFunction,
                                           Ref<ICancellationIndicator> pCancellationIndicator) {
  const auto future =
      MakeRef<TAnonymousFuture<T>>(std::move(pFunction), std::move(pCancellationIndicator));
  TWorkerPool::GlobalInstance()->AddWorkItem(future, TPriority::Normal);
  return future;
}

template <class T>
TTaskStatus TFuture<T>::TryGetValue(T& pValue, std::uint64_t pTimeoutMs) {
  constexpr DWORD sliceMs = 40;
  const std::uint64_t start = Api().GetTickCount64();
  while (Api().GetTickCount64() - start < pTimeoutMs) {
    if (const TTaskStatus status = GetStatus(); status >= TTaskStatus::Completed) {
      pValue = GetResult();
      return status;
    }
    Api().Sleep(sliceMs);
  }
  pValue = GetResult();
  return TTaskStatus::Running;
}

}  // namespace oak
