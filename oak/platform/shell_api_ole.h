// Streams, storages, binding and data transfer.
#pragma once

#if defined(_WIN32)
#include "oak/platform/windows/WindowsHeaders.h"
#else

#include "oak/platform/shell_api_types.h"

#pragma GCC diagnostic push
#pragma GCC diagnostic ignored "-Wnon-virtual-dtor"

struct IRunningObjectTable;
struct IAdviseSink;
struct IEnumSTATDATA;
struct IErrorLog;
struct IEnumSTATSTG;

struct ISequentialStream : IUnknown {
  virtual HRESULT Read(void* pv, ULONG cb, ULONG* pcbRead) = 0;
  virtual HRESULT Write(const void* pv, ULONG cb, ULONG* pcbWritten) = 0;
};

struct IStream : ISequentialStream {
  virtual HRESULT Seek(LARGE_INTEGER dlibMove, DWORD dwOrigin, ULARGE_INTEGER* plibNewPosition) = 0;
  virtual HRESULT SetSize(ULARGE_INTEGER libNewSize) = 0;
  virtual HRESULT CopyTo(IStream* pstm, ULARGE_INTEGER cb, ULARGE_INTEGER* pcbRead,
                         ULARGE_INTEGER* pcbWritten) = 0;
  virtual HRESULT Commit(DWORD grfCommitFlags) = 0;
  virtual HRESULT Revert() = 0;
  virtual HRESULT LockRegion(ULARGE_INTEGER libOffset, ULARGE_INTEGER cb, DWORD dwLockType) = 0;
  virtual HRESULT UnlockRegion(ULARGE_INTEGER libOffset, ULARGE_INTEGER cb, DWORD dwLockType) = 0;
  virtual HRESULT Stat(STATSTG* pstatstg, DWORD grfStatFlag) = 0;
  virtual HRESULT Clone(IStream** ppstm) = 0;
};

struct IEnumString : IUnknown {
  virtual HRESULT Next(ULONG celt, LPOLESTR* rgelt, ULONG* pceltFetched) = 0;
  virtual HRESULT Skip(ULONG celt) = 0;
  virtual HRESULT Reset() = 0;
  virtual HRESULT Clone(IEnumString** ppenum) = 0;
};

struct IEnumUnknown : IUnknown {
  virtual HRESULT Next(ULONG celt, IUnknown** rgelt, ULONG* pceltFetched) = 0;
  virtual HRESULT Skip(ULONG celt) = 0;
  virtual HRESULT Reset() = 0;
  virtual HRESULT Clone(IEnumUnknown** ppenum) = 0;
};

struct IStorage : IUnknown {
  virtual HRESULT CreateStream(const OLECHAR* pwcsName, DWORD grfMode, DWORD reserved1,
                               DWORD reserved2, IStream** ppstm) = 0;
  virtual HRESULT OpenStream(const OLECHAR* pwcsName, void* reserved1, DWORD grfMode,
                             DWORD reserved2, IStream** ppstm) = 0;
  virtual HRESULT CreateStorage(const OLECHAR* pwcsName, DWORD grfMode, DWORD reserved1,
                                DWORD reserved2, IStorage** ppstg) = 0;
  virtual HRESULT OpenStorage(const OLECHAR* pwcsName, IStorage* pstgPriority, DWORD grfMode,
                              SNB snbExclude, DWORD reserved, IStorage** ppstg) = 0;
  virtual HRESULT CopyTo(DWORD ciidExclude, const IID* rgiidExclude, SNB snbExclude,
                         IStorage* pstgDest) = 0;
  virtual HRESULT MoveElementTo(const OLECHAR* pwcsName, IStorage* pstgDest,
                                const OLECHAR* pwcsNewName, DWORD grfFlags) = 0;
  virtual HRESULT Commit(DWORD grfCommitFlags) = 0;
  virtual HRESULT Revert() = 0;
  virtual HRESULT EnumElements(DWORD reserved1, void* reserved2, DWORD reserved3,
                               IEnumSTATSTG** ppenum) = 0;
  virtual HRESULT DestroyElement(const OLECHAR* pwcsName) = 0;
  virtual HRESULT RenameElement(const OLECHAR* pwcsOldName, const OLECHAR* pwcsNewName) = 0;
  virtual HRESULT SetElementTimes(const OLECHAR* pwcsName, const FILETIME* pctime,
                                  const FILETIME* patime, const FILETIME* pmtime) = 0;
  virtual HRESULT SetClass(REFCLSID clsid) = 0;
  virtual HRESULT SetStateBits(DWORD grfStateBits, DWORD grfMask) = 0;
  virtual HRESULT Stat(STATSTG* pstatstg, DWORD grfStatFlag) = 0;
};

struct IEnumSTATSTG : IUnknown {
  virtual HRESULT Next(ULONG celt, STATSTG* rgelt, ULONG* pceltFetched) = 0;
  virtual HRESULT Skip(ULONG celt) = 0;
  virtual HRESULT Reset() = 0;
  virtual HRESULT Clone(IEnumSTATSTG** ppenum) = 0;
};

struct IBindCtx : IUnknown {
  virtual HRESULT RegisterObjectBound(IUnknown* punk) = 0;
  virtual HRESULT RevokeObjectBound(IUnknown* punk) = 0;
  virtual HRESULT ReleaseBoundObjects() = 0;
  virtual HRESULT SetBindOptions(BIND_OPTS* pbindopts) = 0;
  virtual HRESULT GetBindOptions(BIND_OPTS* pbindopts) = 0;
  virtual HRESULT GetRunningObjectTable(IRunningObjectTable** pprot) = 0;
  virtual HRESULT RegisterObjectParam(LPOLESTR pszKey, IUnknown* punk) = 0;
  virtual HRESULT GetObjectParam(LPOLESTR pszKey, IUnknown** ppunk) = 0;
  virtual HRESULT EnumObjectParam(IEnumString** ppenum) = 0;
  virtual HRESULT RevokeObjectParam(LPOLESTR pszKey) = 0;
};

struct IPersist : IUnknown {
  virtual HRESULT GetClassID(CLSID* pClassID) = 0;
};

struct IPersistFile : IPersist {
  virtual HRESULT IsDirty() = 0;
  virtual HRESULT Load(LPCOLESTR pszFileName, DWORD dwMode) = 0;
  virtual HRESULT Save(LPCOLESTR pszFileName, BOOL fRemember) = 0;
  virtual HRESULT SaveCompleted(LPCOLESTR pszFileName) = 0;
  virtual HRESULT GetCurFile(LPOLESTR* ppszFileName) = 0;
};

struct IPersistStream : IPersist {
  virtual HRESULT IsDirty() = 0;
  virtual HRESULT Load(IStream* pStm) = 0;
  virtual HRESULT Save(IStream* pStm, BOOL fClearDirty) = 0;
  virtual HRESULT GetSizeMax(ULARGE_INTEGER* pcbSize) = 0;
};

struct IClassFactory : IUnknown {
  virtual HRESULT CreateInstance(IUnknown* pUnkOuter, REFIID riid, void** ppvObject) = 0;
  virtual HRESULT LockServer(BOOL fLock) = 0;
};

struct IServiceProvider : IUnknown {
  virtual HRESULT QueryService(REFGUID guidService, REFIID riid, void** ppvObject) = 0;
};

struct IObjectWithSite : IUnknown {
  virtual HRESULT SetSite(IUnknown* pUnkSite) = 0;
  virtual HRESULT GetSite(REFIID riid, void** ppvSite) = 0;
};

struct IOleWindow : IUnknown {
  virtual HRESULT GetWindow(HWND* phwnd) = 0;
  virtual HRESULT ContextSensitiveHelp(BOOL fEnterMode) = 0;
};

struct IPropertyBag : IUnknown {
  virtual HRESULT Read(LPCOLESTR pszPropName, VARIANT* pVar, IErrorLog* pErrorLog) = 0;
  virtual HRESULT Write(LPCOLESTR pszPropName, VARIANT* pVar) = 0;
};

// --- data transfer -------------------------------------------------------------

struct IEnumFORMATETC : IUnknown {
  virtual HRESULT Next(ULONG celt, FORMATETC* rgelt, ULONG* pceltFetched) = 0;
  virtual HRESULT Skip(ULONG celt) = 0;
  virtual HRESULT Reset() = 0;
  virtual HRESULT Clone(IEnumFORMATETC** ppenum) = 0;
};

struct IDataObject : IUnknown {
  virtual HRESULT GetData(FORMATETC* pformatetcIn, STGMEDIUM* pmedium) = 0;
  virtual HRESULT GetDataHere(FORMATETC* pformatetc, STGMEDIUM* pmedium) = 0;
  virtual HRESULT QueryGetData(FORMATETC* pformatetc) = 0;
  virtual HRESULT GetCanonicalFormatEtc(FORMATETC* pformatectIn, FORMATETC* pformatetcOut) = 0;
  virtual HRESULT SetData(FORMATETC* pformatetc, STGMEDIUM* pmedium, BOOL fRelease) = 0;
  virtual HRESULT EnumFormatEtc(DWORD dwDirection, IEnumFORMATETC** ppenumFormatEtc) = 0;
  virtual HRESULT DAdvise(FORMATETC* pformatetc, DWORD advf, IAdviseSink* pAdvSink,
                          DWORD* pdwConnection) = 0;
  virtual HRESULT DUnadvise(DWORD dwConnection) = 0;
  virtual HRESULT EnumDAdvise(IEnumSTATDATA** ppenumAdvise) = 0;
};

struct IDropTarget : IUnknown {
  virtual HRESULT DragEnter(IDataObject* pDataObj, DWORD grfKeyState, POINTL pt,
                            DWORD* pdwEffect) = 0;
  virtual HRESULT DragOver(DWORD grfKeyState, POINTL pt, DWORD* pdwEffect) = 0;
  virtual HRESULT DragLeave() = 0;
  virtual HRESULT Drop(IDataObject* pDataObj, DWORD grfKeyState, POINTL pt, DWORD* pdwEffect) = 0;
};

struct IDropSource : IUnknown {
  virtual HRESULT QueryContinueDrag(BOOL fEscapePressed, DWORD grfKeyState) = 0;
  virtual HRESULT GiveFeedback(DWORD dwEffect) = 0;
};

#pragma GCC diagnostic pop

#endif
