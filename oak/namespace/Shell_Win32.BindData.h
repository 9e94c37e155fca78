// TFileSystemBindData: parsing a name without touching the disk.
#pragma once

#include "oak/base/InterfacedObject.h"
#include "oak/base/Text.h"
#include "oak/platform/shell_api.h"

namespace oak {

/// Hands the find data of a file to the shell's parser, which then believes it
/// instead of looking. One thread at a time.
class TFileSystemBindData final : public TInterfacedObject<IFileSystemBindData2> {
 public:
  /// Name of the object in a bind context.
  static constexpr TStringView ParameterName = u"File System Bind Data";

  TFileSystemBindData() = default;
  explicit TFileSystemBindData(const WIN32_FIND_DATAW& pFindData) : fFindData(pFindData) {}

  /// A bind context that carries the data. Raises EOleSysError.
  static Ref<IBindCtx> CreateBindContext(const WIN32_FIND_DATAW& pFindData);

  HRESULT STDMETHODCALLTYPE SetFindData(const WIN32_FIND_DATAW* pFindData) override;
  HRESULT STDMETHODCALLTYPE GetFindData(WIN32_FIND_DATAW* pFindData) override;
  HRESULT STDMETHODCALLTYPE SetFileID(LARGE_INTEGER pFileId) override;
  HRESULT STDMETHODCALLTYPE GetFileID(LARGE_INTEGER* pFileId) override;
  HRESULT STDMETHODCALLTYPE SetJunctionCLSID(REFCLSID pClassId) override;
  HRESULT STDMETHODCALLTYPE GetJunctionCLSID(CLSID* pClassId) override;

 private:
  WIN32_FIND_DATAW fFindData{};
  LARGE_INTEGER fFileId{};
  CLSID fJunctionClassId{};
};

}  // namespace oak
