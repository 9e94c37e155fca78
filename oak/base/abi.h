// The binary vocabulary that the library shares with the Windows platform:
// scalar types, GUID, HRESULT, FILETIME, PROPVARIANT and IUnknown.
//
// On Windows these are the system's own declarations. Elsewhere they are ours,
// with the same names, sizes and layouts, so that the COM interfaces above are
// real COM interfaces everywhere. This is the one header of oak/base that asks
// which system it is compiled for.
#pragma once

#if defined(_WIN32)

#ifndef WIN32_LEAN_AND_MEAN
#define WIN32_LEAN_AND_MEAN
#endif
#ifndef NOMINMAX
#define NOMINMAX
#endif
#ifndef UNICODE
#define UNICODE
#endif
#include <windows.h>
// clang-format off
#include <objbase.h>
#include <oleauto.h>
#include <propidl.h>
#include <shtypes.h>
// clang-format on

// Macros that would rename members of ours in headers that include only this one.
#undef GetMessage
#undef MessageBox

#else

#include <cstddef>
#include <cstdint>
#include <cstring>

// Calling conventions and annotations mean nothing here.
#define STDMETHODCALLTYPE
#define STDAPICALLTYPE
#define WINAPI
#define CALLBACK
#define STDMETHOD(name) virtual HRESULT name
#define STDMETHOD_(type, name) virtual type name
#define STDMETHODIMP HRESULT
#define STDMETHODIMP_(type) type
#define PURE = 0

// --- scalars -------------------------------------------------------------
using BYTE = std::uint8_t;
using CHAR = char;
using WCHAR = char16_t;
using WORD = std::uint16_t;
using SHORT = std::int16_t;
using USHORT = std::uint16_t;
using INT = std::int32_t;
using UINT = std::uint32_t;
using LONG = std::int32_t;
using ULONG = std::uint32_t;
using DWORD = std::uint32_t;
using LONGLONG = std::int64_t;
using ULONGLONG = std::uint64_t;
using DWORDLONG = std::uint64_t;
using DOUBLE = double;
using FLOAT = float;
using DATE = double;
using BOOL = std::int32_t;
using BOOLEAN = std::uint8_t;
using VARIANT_BOOL = std::int16_t;
using SCODE = std::int32_t;
using HRESULT = std::int32_t;
using LCID = std::uint32_t;
using SIZE_T = std::size_t;
using INT_PTR = std::intptr_t;
using UINT_PTR = std::uintptr_t;
using LONG_PTR = std::intptr_t;
using ULONG_PTR = std::uintptr_t;
using DWORD_PTR = std::uintptr_t;
using WPARAM = UINT_PTR;
using LPARAM = LONG_PTR;
using LRESULT = LONG_PTR;
using LPVOID = void*;
using LPCVOID = const void*;
using LPDWORD = DWORD*;
using LPSTR = CHAR*;
using PSTR = CHAR*;
using LPCSTR = const CHAR*;
using PCSTR = const CHAR*;
using LPWSTR = WCHAR*;
using PWSTR = WCHAR*;
using LPCWSTR = const WCHAR*;
using PCWSTR = const WCHAR*;
using OLECHAR = WCHAR;
using LPOLESTR = OLECHAR*;
using LPCOLESTR = const OLECHAR*;
using BSTR = OLECHAR*;

using HANDLE = void*;
struct HWND__;
struct HMENU__;
struct HICON__;
struct HBITMAP__;
struct HINSTANCE__;
struct HKEY__;
struct HDC__;
using HWND = HWND__*;
using HMENU = HMENU__*;
using HICON = HICON__*;
using HBITMAP = HBITMAP__*;
using HINSTANCE = HINSTANCE__*;
using HMODULE = HINSTANCE;
using HKEY = HKEY__*;
using HDC = HDC__*;
using HGLOBAL = HANDLE;

#define TRUE 1
#define FALSE 0
#define VARIANT_TRUE (static_cast<VARIANT_BOOL>(-1))
#define VARIANT_FALSE (static_cast<VARIANT_BOOL>(0))
#define INVALID_HANDLE_VALUE (reinterpret_cast<HANDLE>(static_cast<LONG_PTR>(-1)))
#define MAX_PATH 260

// --- HRESULT -------------------------------------------------------------
#define SUCCEEDED(hr) (static_cast<HRESULT>(hr) >= 0)
#define FAILED(hr) (static_cast<HRESULT>(hr) < 0)
#define HRESULT_CODE(hr) ((hr)&0xFFFF)
#define HRESULT_FACILITY(hr) (((hr) >> 16) & 0x1FFF)
#define FACILITY_WIN32 7
#define MAKE_HRESULT(sev, fac, code)                              \
  (static_cast<HRESULT>((static_cast<std::uint32_t>(sev) << 31) | \
                        (static_cast<std::uint32_t>(fac) << 16) | \
                        static_cast<std::uint32_t>(code)))
constexpr HRESULT HRESULT_FROM_WIN32(std::uint32_t code) {
  return static_cast<HRESULT>(code) <= 0 ? static_cast<HRESULT>(code)
                                         : static_cast<HRESULT>((code & 0xFFFFu) | 0x80070000u);
}

#define OAK_HRESULT(name, value) constexpr HRESULT name = static_cast<HRESULT>(value)
OAK_HRESULT(S_OK, 0u);
OAK_HRESULT(S_FALSE, 1u);
OAK_HRESULT(E_NOTIMPL, 0x80004001u);
OAK_HRESULT(E_NOINTERFACE, 0x80004002u);
OAK_HRESULT(E_POINTER, 0x80004003u);
OAK_HRESULT(E_ABORT, 0x80004004u);
OAK_HRESULT(E_FAIL, 0x80004005u);
OAK_HRESULT(E_PENDING, 0x8000000Au);
OAK_HRESULT(E_BOUNDS, 0x8000000Bu);
OAK_HRESULT(E_UNEXPECTED, 0x8000FFFFu);
OAK_HRESULT(E_ACCESSDENIED, 0x80070005u);
OAK_HRESULT(E_HANDLE, 0x80070006u);
OAK_HRESULT(E_OUTOFMEMORY, 0x8007000Eu);
OAK_HRESULT(E_INVALIDARG, 0x80070057u);
OAK_HRESULT(CLASS_E_NOAGGREGATION, 0x80040110u);
OAK_HRESULT(CLASS_E_CLASSNOTAVAILABLE, 0x80040111u);
OAK_HRESULT(REGDB_E_CLASSNOTREG, 0x80040154u);
OAK_HRESULT(DISP_E_TYPEMISMATCH, 0x80020005u);
OAK_HRESULT(DISP_E_BADVARTYPE, 0x80020008u);
OAK_HRESULT(DISP_E_OVERFLOW, 0x8002000Au);
OAK_HRESULT(TYPE_E_ELEMENTNOTFOUND, 0x8002802Bu);
OAK_HRESULT(STG_E_INVALIDFUNCTION, 0x80030001u);
OAK_HRESULT(STG_E_FILENOTFOUND, 0x80030002u);
OAK_HRESULT(STG_E_PATHNOTFOUND, 0x80030003u);
OAK_HRESULT(STG_E_ACCESSDENIED, 0x80030005u);
OAK_HRESULT(STG_E_INVALIDPOINTER, 0x80030009u);
OAK_HRESULT(STG_E_NOMOREFILES, 0x80030012u);
OAK_HRESULT(STG_E_WRITEFAULT, 0x8003001Du);
OAK_HRESULT(STG_E_READFAULT, 0x8003001Eu);
OAK_HRESULT(STG_E_FILEALREADYEXISTS, 0x80030050u);
OAK_HRESULT(STG_E_INVALIDPARAMETER, 0x80030057u);
OAK_HRESULT(STG_E_MEDIUMFULL, 0x80030070u);
OAK_HRESULT(STG_E_INVALIDNAME, 0x800300FCu);

// --- GUID ----------------------------------------------------------------
struct GUID {
  std::uint32_t Data1;
  std::uint16_t Data2;
  std::uint16_t Data3;
  std::uint8_t Data4[8];
  friend constexpr bool operator==(const GUID& a, const GUID& b) {
    if (a.Data1 != b.Data1 || a.Data2 != b.Data2 || a.Data3 != b.Data3) return false;
    for (int i = 0; i < 8; ++i)
      if (a.Data4[i] != b.Data4[i]) return false;
    return true;
  }
};
using IID = GUID;
using CLSID = GUID;
using FMTID = GUID;
using REFGUID = const GUID&;
using REFIID = const IID&;
using REFCLSID = const CLSID&;
using REFFMTID = const FMTID&;
inline constexpr GUID GUID_NULL{0, 0, 0, {0, 0, 0, 0, 0, 0, 0, 0}};
inline constexpr GUID IID_NULL = GUID_NULL;
inline constexpr GUID CLSID_NULL = GUID_NULL;
inline bool IsEqualGUID(const GUID& a, const GUID& b) { return a == b; }
inline bool IsEqualIID(const GUID& a, const GUID& b) { return a == b; }
inline bool IsEqualCLSID(const GUID& a, const GUID& b) { return a == b; }

struct PROPERTYKEY {
  GUID fmtid;
  DWORD pid;
};
using REFPROPERTYKEY = const PROPERTYKEY&;

// --- time and numbers ----------------------------------------------------
struct FILETIME {
  DWORD dwLowDateTime;
  DWORD dwHighDateTime;
};
struct SYSTEMTIME {
  WORD wYear, wMonth, wDayOfWeek, wDay, wHour, wMinute, wSecond, wMilliseconds;
};
struct TIME_ZONE_INFORMATION {
  LONG Bias;
  WCHAR StandardName[32];
  SYSTEMTIME StandardDate;
  LONG StandardBias;
  WCHAR DaylightName[32];
  SYSTEMTIME DaylightDate;
  LONG DaylightBias;
};
#pragma GCC diagnostic push
#pragma GCC diagnostic ignored "-Wpedantic"
union LARGE_INTEGER {
  struct {
    DWORD LowPart;
    LONG HighPart;
  };
  LONGLONG QuadPart;
};
union ULARGE_INTEGER {
  struct {
    DWORD LowPart;
    DWORD HighPart;
  };
  ULONGLONG QuadPart;
};
union CY {
  LONGLONG int64;
};

// --- IUnknown ------------------------------------------------------------
#pragma GCC diagnostic ignored "-Wnon-virtual-dtor"
struct IUnknown {
  virtual HRESULT QueryInterface(REFIID iid, void** out) = 0;
  virtual ULONG AddRef() = 0;
  virtual ULONG Release() = 0;
};
inline constexpr GUID IID_IUnknown{0, 0, 0, {0xC0, 0, 0, 0, 0, 0, 0, 0x46}};
struct IDispatch;
struct IStream;
struct IStorage;

// --- item identifier lists -----------------------------------------------
#pragma pack(push, 1)
struct SHITEMID {
  USHORT cb;     // size of this element in bytes, these two included; 0 ends a list
  BYTE abID[1];  // cb - 2 bytes that only the folder understands
};
struct ITEMIDLIST {
  SHITEMID mkid;
};
#pragma pack(pop)
using ITEMIDLIST_RELATIVE = ITEMIDLIST;
using ITEMID_CHILD = ITEMIDLIST;
using ITEMIDLIST_ABSOLUTE = ITEMIDLIST;
using LPITEMIDLIST = ITEMIDLIST*;
using LPCITEMIDLIST = const ITEMIDLIST*;
using PIDLIST_ABSOLUTE = ITEMIDLIST*;
using PCIDLIST_ABSOLUTE = const ITEMIDLIST*;
using PCUIDLIST_ABSOLUTE = const ITEMIDLIST*;
using PIDLIST_RELATIVE = ITEMIDLIST*;
using PUIDLIST_RELATIVE = ITEMIDLIST*;
using PCIDLIST_RELATIVE = const ITEMIDLIST*;
using PCUIDLIST_RELATIVE = const ITEMIDLIST*;
using PITEMID_CHILD = ITEMIDLIST*;
using PCITEMID_CHILD = const ITEMIDLIST*;
using PCUITEMID_CHILD = const ITEMIDLIST*;
using PCUITEMID_CHILD_ARRAY = const ITEMIDLIST* const*;
using PCUIDLIST_RELATIVE_ARRAY = const ITEMIDLIST* const*;
using PCIDLIST_ABSOLUTE_ARRAY = const ITEMIDLIST* const*;

// --- variants ------------------------------------------------------------
using VARTYPE = WORD;
enum VARENUM : WORD {
  VT_EMPTY = 0,
  VT_NULL = 1,
  VT_I2 = 2,
  VT_I4 = 3,
  VT_R4 = 4,
  VT_R8 = 5,
  VT_CY = 6,
  VT_DATE = 7,
  VT_BSTR = 8,
  VT_DISPATCH = 9,
  VT_ERROR = 10,
  VT_BOOL = 11,
  VT_VARIANT = 12,
  VT_UNKNOWN = 13,
  VT_DECIMAL = 14,
  VT_I1 = 16,
  VT_UI1 = 17,
  VT_UI2 = 18,
  VT_UI4 = 19,
  VT_I8 = 20,
  VT_UI8 = 21,
  VT_INT = 22,
  VT_UINT = 23,
  VT_LPSTR = 30,
  VT_LPWSTR = 31,
  VT_FILETIME = 64,
  VT_BLOB = 65,
  VT_STREAM = 66,
  VT_CLSID = 72,
  VT_VECTOR = 0x1000,
  VT_ARRAY = 0x2000,
  VT_BYREF = 0x4000
};
struct BLOB {
  ULONG cbSize;
  BYTE* pBlobData;
};
struct CAUB {
  ULONG cElems;
  BYTE* pElems;
};
struct CAL {
  ULONG cElems;
  LONG* pElems;
};
struct CAUL {
  ULONG cElems;
  ULONG* pElems;
};
struct CALPWSTR {
  ULONG cElems;
  LPWSTR* pElems;
};
struct PROPVARIANT {
  VARTYPE vt;
  WORD wReserved1;
  WORD wReserved2;
  WORD wReserved3;
  union {
    CHAR cVal;
    BYTE bVal;
    SHORT iVal;
    USHORT uiVal;
    LONG lVal;
    ULONG ulVal;
    INT intVal;
    UINT uintVal;
    LARGE_INTEGER hVal;
    ULARGE_INTEGER uhVal;
    FLOAT fltVal;
    DOUBLE dblVal;
    VARIANT_BOOL boolVal;
    SCODE scode;
    CY cyVal;
    DATE date;
    FILETIME filetime;
    CLSID* puuid;
    BLOB blob;
    BSTR bstrVal;
    LPSTR pszVal;
    LPWSTR pwszVal;
    IUnknown* punkVal;
    IStream* pStream;
    CAUB caub;
    CAL cal;
    CAUL caul;
    CALPWSTR calpwstr;
  };
};
struct VARIANT {
  VARTYPE vt;
  WORD wReserved1;
  WORD wReserved2;
  WORD wReserved3;
  union {
    CHAR cVal;
    BYTE bVal;
    SHORT iVal;
    USHORT uiVal;
    LONG lVal;
    ULONG ulVal;
    INT intVal;
    UINT uintVal;
    LONGLONG llVal;
    ULONGLONG ullVal;
    FLOAT fltVal;
    DOUBLE dblVal;
    VARIANT_BOOL boolVal;
    SCODE scode;
    CY cyVal;
    DATE date;
    BSTR bstrVal;
    IUnknown* punkVal;
    IDispatch* pdispVal;
    struct {
      void* pvRecord;
      void* pRecInfo;
    };
  };
};
#pragma GCC diagnostic pop
using REFPROPVARIANT = const PROPVARIANT&;
using REFVARIANT = const VARIANT&;
static_assert(sizeof(GUID) == 16 && sizeof(PROPERTYKEY) == 20);
static_assert(sizeof(PROPVARIANT) == 24 && sizeof(VARIANT) == 24);

// --- memory that crosses an interface (abi_portable.cpp) ------------------
// Blocks from CoTaskMemAlloc are freed with CoTaskMemFree by whoever ends up
// owning them, strings of VT_BSTR with SysFreeString. Any thread.
void* CoTaskMemAlloc(SIZE_T bytes);
void* CoTaskMemRealloc(void* block, SIZE_T bytes);
void CoTaskMemFree(void* block);
BSTR SysAllocString(const OLECHAR* text);
BSTR SysAllocStringLen(const OLECHAR* text, UINT length);
void SysFreeString(BSTR text);
UINT SysStringLen(BSTR text);
HRESULT PropVariantClear(PROPVARIANT* value);
HRESULT PropVariantCopy(PROPVARIANT* to, const PROPVARIANT* from);
HRESULT VariantClear(VARIANT* value);
HRESULT VariantCopy(VARIANT* to, const VARIANT* from);
inline void PropVariantInit(PROPVARIANT* value) { *value = PROPVARIANT{}; }
inline void VariantInit(VARIANT* value) { *value = VARIANT{}; }

#endif
