// Bind contexts.
#include "oak/platform/portable/SystemBindContext.h"

#include <algorithm>
#include <cstring>
#include <mutex>
#include <vector>

#include "oak/base/InterfacedObject.h"
#include "oak/base/Text.h"
#include "oak/platform/portable/PortableCall.h"

namespace oak {
namespace {

constexpr HRESULT NotBound = static_cast<HRESULT>(0x800401E9u);  // MK_E_NOTBOUND

LPOLESTR TaskText(TStringView text) {
  auto* copy = static_cast<LPOLESTR>(CoTaskMemAlloc((text.size() + 1) * sizeof(OLECHAR)));
  if (!copy) throw std::bad_alloc();
  std::copy(text.begin(), text.end(), copy);
  copy[text.size()] = 0;
  return copy;
}

class TNames : public TInterfacedObject<IEnumString> {
 public:
  explicit TNames(TStringArray names, std::size_t next = 0)
      : fNames(std::move(names)), fNext(next) {}

  HRESULT Next(ULONG count, LPOLESTR* names, ULONG* fetched) override {
    return PortableCall("IEnumString::Next", [&]() -> HRESULT {
      if (fetched) *fetched = 0;
      if (!names || (!fetched && count != 1)) return E_INVALIDARG;
      ULONG done = 0;
      for (; done < count && fNext < fNames.size(); ++done) names[done] = TaskText(fNames[fNext++]);
      if (fetched) *fetched = done;
      return done == count ? S_OK : S_FALSE;
    });
  }
  HRESULT Skip(ULONG count) override {
    const std::size_t step = std::min<std::size_t>(count, fNames.size() - fNext);
    fNext += step;
    return step == count ? S_OK : S_FALSE;
  }
  HRESULT Reset() override {
    fNext = 0;
    return S_OK;
  }
  HRESULT Clone(IEnumString** copy) override {
    return PortableCall("IEnumString::Clone", [&]() -> HRESULT {
      if (!copy) return E_POINTER;
      *copy = new TNames(fNames, fNext);
      return S_OK;
    });
  }

 private:
  TStringArray fNames;
  std::size_t fNext;
};

// Any thread. Objects are released outside the lock, since that may call back.
class TBindContext : public TInterfacedObject<IBindCtx> {
 public:
  HRESULT RegisterObjectBound(IUnknown* object) override {
    return PortableCall("IBindCtx::RegisterObjectBound", [&]() -> HRESULT {
      if (!object) return E_INVALIDARG;
      const std::lock_guard lock(fLock);
      fBound.push_back(Ref<IUnknown>::Share(object));
      return S_OK;
    });
  }
  HRESULT RevokeObjectBound(IUnknown* object) override {
    return PortableCall("IBindCtx::RevokeObjectBound", [&]() -> HRESULT {
      if (!object) return E_INVALIDARG;
      Ref<IUnknown> revoked;
      const std::lock_guard lock(fLock);
      const auto found = std::find_if(fBound.begin(), fBound.end(),
                                      [&](const auto& bound) { return bound.Get() == object; });
      if (found == fBound.end()) return NotBound;
      revoked.Swap(*found);
      fBound.erase(found);
      return S_OK;
    });
  }
  HRESULT ReleaseBoundObjects() override {
    return PortableCall("IBindCtx::ReleaseBoundObjects", [&]() -> HRESULT {
      std::vector<Ref<IUnknown>> released;
      const std::lock_guard lock(fLock);
      released.swap(fBound);
      return S_OK;
    });
  }

  HRESULT SetBindOptions(BIND_OPTS* options) override {
    return PortableCall("IBindCtx::SetBindOptions", [&]() -> HRESULT {
      if (!options) return E_POINTER;
      if (options->cbStruct < sizeof options->cbStruct) return E_INVALIDARG;
      const std::lock_guard lock(fLock);
      std::memcpy(&fOptions, options, std::min<std::size_t>(options->cbStruct, sizeof fOptions));
      fOptions.cbStruct = sizeof fOptions;
      return S_OK;
    });
  }
  // Later versions of the structure are larger; their further fields stay as
  // they are.
  HRESULT GetBindOptions(BIND_OPTS* options) override {
    return PortableCall("IBindCtx::GetBindOptions", [&]() -> HRESULT {
      if (!options) return E_POINTER;
      const DWORD size = options->cbStruct;
      if (size < sizeof options->cbStruct) return E_INVALIDARG;
      const std::lock_guard lock(fLock);
      std::memcpy(options, &fOptions, std::min<std::size_t>(size, sizeof fOptions));
      options->cbStruct = size;
      return S_OK;
    });
  }
  HRESULT GetRunningObjectTable(IRunningObjectTable** table) override {
    if (table) *table = nullptr;
    return E_NOTIMPL;  // one process has no use for it
  }

  HRESULT RegisterObjectParam(LPOLESTR key, IUnknown* object) override {
    return PortableCall("IBindCtx::RegisterObjectParam", [&]() -> HRESULT {
      if (!object) return E_INVALIDARG;
      Ref<IUnknown> entry = Ref<IUnknown>::Share(object);
      const std::lock_guard lock(fLock);
      const auto found = Find(key);
      if (found != fParams.end())
        found->Object.Swap(entry);
      else
        fParams.push_back({KeyText(key), std::move(entry)});
      return S_OK;
    });
  }
  HRESULT GetObjectParam(LPOLESTR key, IUnknown** object) override {
    return PortableCall("IBindCtx::GetObjectParam", [&]() -> HRESULT {
      if (!object) return E_POINTER;
      *object = nullptr;
      const std::lock_guard lock(fLock);
      const auto found = Find(key);
      if (found == fParams.end()) return E_FAIL;
      *object = Ref<IUnknown>(found->Object).Detach();
      return S_OK;
    });
  }
  HRESULT EnumObjectParam(IEnumString** names) override {
    return PortableCall("IBindCtx::EnumObjectParam", [&]() -> HRESULT {
      if (!names) return E_POINTER;
      TStringArray keys;
      const std::lock_guard lock(fLock);
      for (const TParam& param : fParams) keys.push_back(param.Key);
      *names = new TNames(std::move(keys));
      return S_OK;
    });
  }
  HRESULT RevokeObjectParam(LPOLESTR key) override {
    return PortableCall("IBindCtx::RevokeObjectParam", [&]() -> HRESULT {
      Ref<IUnknown> revoked;
      const std::lock_guard lock(fLock);
      const auto found = Find(key);
      if (found == fParams.end()) return S_FALSE;
      revoked.Swap(found->Object);
      fParams.erase(found);
      return S_OK;
    });
  }

 private:
  struct TParam {
    TString Key;
    Ref<IUnknown> Object;
  };
  static TString KeyText(LPCOLESTR key) { return key ? TString(key) : TString(); }
  std::vector<TParam>::iterator Find(LPCOLESTR key) {
    return std::find_if(
        fParams.begin(), fParams.end(),
        [wanted = KeyText(key)](const TParam& param) { return param.Key == wanted; });
  }

  std::mutex fLock;
  BIND_OPTS fOptions{sizeof(BIND_OPTS), 0, STGM_READWRITE, 0};
  std::vector<Ref<IUnknown>> fBound;
  std::vector<TParam> fParams;
};

}  // namespace

Ref<IBindCtx> MakePortableBindContext() { return MakeRef<TBindContext>(); }

}  // namespace oak
