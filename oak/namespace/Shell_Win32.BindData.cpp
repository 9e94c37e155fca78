#include "oak/namespace/Shell_Win32.BindData.h"

#include "oak/base/HResult.h"
#include "oak/platform/Api.h"

namespace oak {

Ref<IBindCtx> TFileSystemBindData::CreateBindContext(const WIN32_FIND_DATAW& pFindData) {
  Ref<IBindCtx> context;
  OleCheck(Api().CreateBindCtx(0, context.Put()));
  BIND_OPTS options{};
  options.cbStruct = sizeof(options);
  options.grfMode = STGM_CREATE;
  OleCheck(context->SetBindOptions(&options));
  const auto data = MakeRef<TFileSystemBindData>(pFindData);
  TString name(ParameterName);
  OleCheck(context->RegisterObjectParam(WBuffer(name), data.Get()));
  return context;
}

HRESULT STDMETHODCALLTYPE TFileSystemBindData::SetFindData(const WIN32_FIND_DATAW* pFindData) {
  if (!pFindData) return E_POINTER;
  fFindData = *pFindData;
  return S_OK;
}

HRESULT STDMETHODCALLTYPE TFileSystemBindData::GetFindData(WIN32_FIND_DATAW* pFindData) {
  if (!pFindData) return E_POINTER;
  *pFindData = fFindData;
  return S_OK;
}

HRESULT STDMETHODCALLTYPE TFileSystemBindData::SetFileID(LARGE_INTEGER pFileId) {
  fFileId = pFileId;
  return S_OK;
}

HRESULT STDMETHODCALLTYPE TFileSystemBindData::GetFileID(LARGE_INTEGER* pFileId) {
  if (!pFileId) return E_POINTER;
  *pFileId = fFileId;
  return S_OK;
}

HRESULT STDMETHODCALLTYPE TFileSystemBindData::SetJunctionCLSID(REFCLSID pClassId) {
  fJunctionClassId = pClassId;
  return S_OK;
}

HRESULT STDMETHODCALLTYPE TFileSystemBindData::GetJunctionCLSID(CLSID* pClassId) {
  if (!pClassId) return E_POINTER;
  *pClassId = fJunctionClassId;
  return S_OK;
}

}  // namespace oak
