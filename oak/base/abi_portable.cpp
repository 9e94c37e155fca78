// Memory that crosses an interface, for systems without the platform's own.
#include "oak/base/abi.h"

#if !defined(_WIN32)

#include <cstdlib>

namespace {

// A BSTR is preceded by its length in bytes; eight bytes keep the text aligned as the heap gives
// it.
constexpr std::size_t BstrHeader = 8;

std::uint32_t* BstrLength(BSTR text) { return reinterpret_cast<std::uint32_t*>(text) - 1; }

std::size_t TextLength(const OLECHAR* text) {
  std::size_t length = 0;
  while (text[length]) ++length;
  return length;
}

void* CopyBlock(const void* source, std::size_t bytes) {
  void* copy = CoTaskMemAlloc(bytes);
  if (copy && bytes) std::memcpy(copy, source, bytes);
  return copy;
}

LPWSTR CopyWide(LPCWSTR text) {
  return static_cast<LPWSTR>(CopyBlock(text, (TextLength(text) + 1) * sizeof(WCHAR)));
}

BSTR CopyBstr(BSTR text) { return SysAllocStringLen(text, SysStringLen(text)); }

// Bytes of one element of a vector, 0 for a type that no vector has here.
std::size_t ElementSize(unsigned type) {
  switch (type) {
    case VT_I1:
    case VT_UI1:
      return 1;
    case VT_I2:
    case VT_UI2:
    case VT_BOOL:
      return 2;
    case VT_I4:
    case VT_UI4:
    case VT_R4:
    case VT_ERROR:
      return 4;
    case VT_I8:
    case VT_UI8:
    case VT_R8:
    case VT_CY:
    case VT_DATE:
    case VT_FILETIME:
    case VT_BSTR:
    case VT_LPSTR:
    case VT_LPWSTR:
      return 8;
    case VT_CLSID:
      return sizeof(CLSID);
    case VT_VARIANT:
      return sizeof(PROPVARIANT);
    default:
      return 0;
  }
}

// Values that are all there is: copying and clearing them needs nothing more.
bool IsPlain(unsigned type) {
  return type <= VT_DATE || type == VT_ERROR || type == VT_BOOL ||
         (type >= VT_I1 && type <= VT_UINT) || type == VT_FILETIME;
}

void FreeElement(unsigned type, void* element) {
  if (type == VT_BSTR)
    SysFreeString(*static_cast<BSTR*>(element));
  else if (type == VT_LPSTR || type == VT_LPWSTR)
    CoTaskMemFree(*static_cast<void**>(element));
  else if (type == VT_VARIANT)
    PropVariantClear(static_cast<PROPVARIANT*>(element));
}

HRESULT CopyElement(unsigned type, void* element, const void* source, std::size_t size) {
  const auto pointer = [&] { return *static_cast<void* const*>(source); };
  if (type == VT_VARIANT)
    return PropVariantCopy(static_cast<PROPVARIANT*>(element),
                           static_cast<const PROPVARIANT*>(source));
  if (type != VT_BSTR && type != VT_LPSTR && type != VT_LPWSTR) {
    std::memcpy(element, source, size);
    return S_OK;
  }
  void* copy = nullptr;
  if (pointer()) {
    if (type == VT_BSTR)
      copy = CopyBstr(static_cast<BSTR>(pointer()));
    else if (type == VT_LPWSTR)
      copy = CopyWide(static_cast<LPCWSTR>(pointer()));
    else
      copy = CopyBlock(pointer(), std::strlen(static_cast<LPCSTR>(pointer())) + 1);
    if (!copy) return E_OUTOFMEMORY;
  }
  *static_cast<void**>(element) = copy;
  return S_OK;
}

void FreeVector(unsigned type, CAUB& vector) {
  const std::size_t size = ElementSize(type);
  for (ULONG i = 0; vector.pElems && i < vector.cElems; ++i)
    FreeElement(type, vector.pElems + i * size);
  CoTaskMemFree(vector.pElems);
}

// `target` is empty on entry and after a failure.
HRESULT CopyVector(unsigned type, CAUB& target, const CAUB& source) {
  if (source.cElems == 0 || !source.pElems) return S_OK;
  const std::size_t size = ElementSize(type);
  auto* block = static_cast<BYTE*>(CoTaskMemAlloc(source.cElems * size));
  if (!block) return E_OUTOFMEMORY;
  CAUB copy{0, block};
  for (; copy.cElems < source.cElems; ++copy.cElems) {
    const std::size_t at = copy.cElems * size;
    const HRESULT result = CopyElement(type, block + at, source.pElems + at, size);
    if (FAILED(result)) {
      FreeVector(type, copy);
      return result;
    }
  }
  target = copy;
  return S_OK;
}

// Replaces a pointer that was copied as it stands by a copy of what it points to.
HRESULT CopyTarget(PROPVARIANT& value) {
  bool missing = false;
  const auto keep = [&](auto& pointer, auto* copy) {
    missing = pointer && !copy;
    pointer = copy;
  };
  switch (value.vt) {
    case VT_BSTR:
      keep(value.bstrVal, value.bstrVal ? CopyBstr(value.bstrVal) : nullptr);
      break;
    case VT_LPSTR:
      keep(value.pszVal,
           value.pszVal ? static_cast<LPSTR>(CopyBlock(value.pszVal, std::strlen(value.pszVal) + 1))
                        : nullptr);
      break;
    case VT_LPWSTR:
      keep(value.pwszVal, value.pwszVal ? CopyWide(value.pwszVal) : nullptr);
      break;
    case VT_CLSID:
      keep(value.puuid,
           value.puuid ? static_cast<CLSID*>(CopyBlock(value.puuid, sizeof(CLSID))) : nullptr);
      break;
    case VT_BLOB:
      keep(value.blob.pBlobData,
           value.blob.pBlobData
               ? static_cast<BYTE*>(CopyBlock(value.blob.pBlobData, value.blob.cbSize))
               : nullptr);
      break;
    case VT_UNKNOWN:
    case VT_DISPATCH:
    case VT_STREAM:
      if (value.punkVal) value.punkVal->AddRef();
      break;
    default:
      return STG_E_INVALIDPARAMETER;
  }
  return missing ? E_OUTOFMEMORY : S_OK;
}

}  // namespace

void* CoTaskMemAlloc(SIZE_T bytes) { return std::malloc(bytes ? bytes : 1); }

void* CoTaskMemRealloc(void* block, SIZE_T bytes) {
  if (block && bytes == 0) {
    std::free(block);
    return nullptr;
  }
  return std::realloc(block, bytes ? bytes : 1);
}

void CoTaskMemFree(void* block) { std::free(block); }

BSTR SysAllocString(const OLECHAR* text) {
  return text ? SysAllocStringLen(text, static_cast<UINT>(TextLength(text))) : nullptr;
}

BSTR SysAllocStringLen(const OLECHAR* text, UINT length) {
  if (length > 0x7FFFFFF0u / sizeof(OLECHAR)) return nullptr;
  const std::size_t bytes = length * sizeof(OLECHAR);
  auto* block = static_cast<BYTE*>(std::malloc(BstrHeader + bytes + sizeof(OLECHAR)));
  if (!block) return nullptr;
  BSTR result = reinterpret_cast<BSTR>(block + BstrHeader);
  *BstrLength(result) = static_cast<std::uint32_t>(bytes);
  if (text && bytes) std::memcpy(result, text, bytes);
  if (!text) std::memset(result, 0, bytes);
  result[length] = 0;
  return result;
}

void SysFreeString(BSTR text) {
  if (text) std::free(reinterpret_cast<BYTE*>(text) - BstrHeader);
}

UINT SysStringLen(BSTR text) {
  return text ? static_cast<UINT>(*BstrLength(text) / sizeof(OLECHAR)) : 0;
}

HRESULT PropVariantClear(PROPVARIANT* value) {
  if (!value) return S_OK;
  PROPVARIANT old = *value;
  PropVariantInit(value);
  if (IsPlain(old.vt)) return S_OK;
  if (old.vt & VT_VECTOR) {
    const unsigned type = old.vt & ~unsigned{VT_VECTOR};
    if (ElementSize(type) == 0) return STG_E_INVALIDPARAMETER;
    FreeVector(type, old.caub);
    return S_OK;
  }
  switch (old.vt) {
    case VT_BSTR:
      SysFreeString(old.bstrVal);
      return S_OK;
    case VT_LPSTR:
    case VT_LPWSTR:
    case VT_CLSID:
      CoTaskMemFree(old.pszVal);
      return S_OK;
    case VT_BLOB:
      CoTaskMemFree(old.blob.pBlobData);
      return S_OK;
    case VT_UNKNOWN:
    case VT_DISPATCH:
    case VT_STREAM:
      if (old.punkVal) old.punkVal->Release();
      return S_OK;
    default:
      return STG_E_INVALIDPARAMETER;
  }
}

HRESULT PropVariantCopy(PROPVARIANT* to, const PROPVARIANT* from) {
  if (!to || !from) return E_POINTER;
  PROPVARIANT copy = *from;
  HRESULT result = S_OK;
  if (from->vt & VT_VECTOR) {
    const unsigned type = from->vt & ~unsigned{VT_VECTOR};
    copy.caub = CAUB{};
    result = ElementSize(type) ? CopyVector(type, copy.caub, from->caub) : STG_E_INVALIDPARAMETER;
  } else if (!IsPlain(from->vt)) {
    result = CopyTarget(copy);
  }
  if (FAILED(result)) PropVariantInit(&copy);
  *to = copy;
  return result;
}

HRESULT VariantClear(VARIANT* value) {
  if (!value) return E_INVALIDARG;
  const VARIANT old = *value;
  if (old.vt & VT_ARRAY && !(old.vt & VT_BYREF)) return DISP_E_BADVARTYPE;
  VariantInit(value);
  if (old.vt & VT_BYREF) return S_OK;
  if (old.vt == VT_BSTR)
    SysFreeString(old.bstrVal);
  else if ((old.vt == VT_UNKNOWN || old.vt == VT_DISPATCH) && old.punkVal)
    old.punkVal->Release();
  return S_OK;
}

HRESULT VariantCopy(VARIANT* to, const VARIANT* from) {
  if (!to || !from) return E_INVALIDARG;
  if (to == from) return S_OK;
  if (from->vt & VT_ARRAY && !(from->vt & VT_BYREF)) return DISP_E_BADVARTYPE;
  const HRESULT cleared = VariantClear(to);
  if (FAILED(cleared)) return cleared;
  VARIANT copy = *from;
  if (from->vt == VT_BSTR && from->bstrVal) {
    copy.bstrVal = CopyBstr(from->bstrVal);
    if (!copy.bstrVal) return E_OUTOFMEMORY;
  } else if ((from->vt == VT_UNKNOWN || from->vt == VT_DISPATCH) && from->punkVal) {
    from->punkVal->AddRef();
  }
  *to = copy;
  return S_OK;
}

#endif
