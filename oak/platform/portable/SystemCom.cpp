// Component objects: apartments, classes, thread references, variants.
#include <atomic>

#include "oak/base/Variant.h"
#include "oak/platform/portable/PortableClasses.h"
#include "oak/platform/portable/SystemBindContext.h"
#include "oak/platform/portable/SystemBinding.h"
#include "oak/platform/portable/SystemLocale.h"

namespace oak {
namespace {

// --- apartments --------------------------------------------------------------
// No call is ever marshalled here; the counts only tell a program what it would
// be told on the platform.

struct TApartment {
  int Count = 0;
  bool SingleThreaded = false;
};
thread_local TApartment tApartment;

HRESULT Enter(bool singleThreaded) {
  if (tApartment.Count > 0 && tApartment.SingleThreaded != singleThreaded)
    return RPC_E_CHANGED_MODE;
  tApartment.SingleThreaded = singleThreaded;
  return tApartment.Count++ == 0 ? S_OK : S_FALSE;
}

HRESULT STDAPICALLTYPE CoInitializeEx(LPVOID reserved, DWORD mode) {
  if (reserved) return E_INVALIDARG;
  return Enter((mode & COINIT_APARTMENTTHREADED) != 0);
}

void STDAPICALLTYPE CoUninitialize() {
  if (tApartment.Count > 0) --tApartment.Count;
}

HRESULT STDAPICALLTYPE OleInitialize(LPVOID reserved) {
  return reserved ? E_INVALIDARG : Enter(true);
}

void STDAPICALLTYPE OleUninitialize() { CoUninitialize(); }

// --- objects -----------------------------------------------------------------

HRESULT STDAPICALLTYPE CoCreateInstance(REFCLSID clsid, IUnknown* outer, DWORD, REFIID iid,
                                        void** out) {
  if (!out) return E_POINTER;
  *out = nullptr;
  if (outer) return CLASS_E_NOAGGREGATION;
  return SystemCall<HRESULT>(E_OUTOFMEMORY, [&] {
    const TPortableFactory factory = FindPortableClass(clsid);
    return factory ? factory(iid, out) : REGDB_E_CLASSNOTREG;
  });
}

HRESULT STDAPICALLTYPE CreateBindCtx(DWORD reserved, IBindCtx** context) {
  if (!context) return E_POINTER;
  *context = nullptr;
  if (reserved) return E_INVALIDARG;
  return SystemCall<HRESULT>(E_OUTOFMEMORY, [&] {
    *context = MakePortableBindContext().Detach();
    return S_OK;
  });
}

HRESULT STDAPICALLTYPE IStream_Size(IStream* stream, ULARGE_INTEGER* size) {
  if (!stream || !size) return E_INVALIDARG;
  size->QuadPart = 0;
  STATSTG info{};
  const HRESULT result = stream->Stat(&info, STATFLAG_NONAME);
  if (SUCCEEDED(result)) *size = info.cbSize;
  return result;
}

// --- thread references -------------------------------------------------------

// Counts in a variable of the thread that made it, so that this thread sees when
// the last of its helpers is through.
class TThreadReference final : public IUnknown {
 public:
  explicit TThreadReference(LONG* count) : fShown(count) { *fShown = 1; }
  virtual ~TThreadReference() = default;
  HRESULT QueryInterface(REFIID iid, void** out) override {
    if (!out) return E_POINTER;
    *out = iid == IID_IUnknown ? this : nullptr;
    if (!*out) return E_NOINTERFACE;
    AddRef();
    return S_OK;
  }
  ULONG AddRef() override {
    ++std::atomic_ref<LONG>(*fShown);
    return ++fCount;
  }
  ULONG Release() override {
    // The variable is gone once its thread has seen 0, this object before that.
    LONG* const shown = fShown;
    const ULONG left = --fCount;
    if (left == 0) delete this;
    --std::atomic_ref<LONG>(*shown);
    return left;
  }

 private:
  LONG* fShown;
  std::atomic<ULONG> fCount{1};
};

thread_local IUnknown* tThreadReference = nullptr;  // not counted: the setter keeps it alive

HRESULT STDAPICALLTYPE SHCreateThreadRef(LONG* count, IUnknown** object) {
  if (!object) return E_INVALIDARG;
  *object = nullptr;
  if (!count) return E_INVALIDARG;
  return SystemCall<HRESULT>(E_OUTOFMEMORY, [&] {
    *object = new TThreadReference(count);
    return S_OK;
  });
}

HRESULT STDAPICALLTYPE SHSetThreadRef(IUnknown* object) {
  tThreadReference = object;
  return S_OK;
}

HRESULT STDAPICALLTYPE SHReleaseThreadRef() {
  IUnknown* object = std::exchange(tThreadReference, nullptr);
  if (!object) return S_FALSE;
  object->Release();
  return S_OK;
}

// --- variants ----------------------------------------------------------------

HRESULT ChangeVariant(const VARIANT& source, VARTYPE type, TVariant& changed) {
  if (source.vt == VT_DATE && type == VT_BSTR) {
    changed = TVariant::From(DateTimeText(source.date));
    return S_OK;
  }
  TPropVariant from, to;
  HRESULT result = VariantToPropVariantValue(source, *from.Put());
  if (SUCCEEDED(result)) result = ChangeType(from, type, *to.Put());
  return FAILED(result) ? result : PropVariantToVariantValue(to, *changed.Put());
}

HRESULT STDAPICALLTYPE VariantChangeType(VARIANT* target, const VARIANT* source, USHORT,
                                         VARTYPE type) {
  if (!target || !source) return E_INVALIDARG;
  return SystemCall<HRESULT>(E_OUTOFMEMORY, [&] {
    TVariant changed;
    const HRESULT result = ChangeVariant(*source, type, changed);
    if (FAILED(result)) return result;
    VariantClear(target);  // it may be the source
    *target = changed.Detach();
    return S_OK;
  });
}

}  // namespace

#define BIND(Name) api.Name.SetFunction(&Name)
void BindSystemCom(TApi& api) {
  BIND(CoInitializeEx);
  BIND(CoUninitialize);
  BIND(OleInitialize);
  BIND(OleUninitialize);
  BIND(CoCreateInstance);
  BIND(CreateBindCtx);
  BIND(IStream_Size);
  BIND(SHCreateThreadRef);
  BIND(SHSetThreadRef);
  BIND(SHReleaseThreadRef);
  BIND(VariantChangeType);
}
#undef BIND

}  // namespace oak
