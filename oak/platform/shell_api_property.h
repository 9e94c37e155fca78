// Property stores and descriptions of properties.
#pragma once

#if defined(_WIN32)
#include "oak/platform/windows/WindowsHeaders.h"
#else

#include "oak/platform/shell_api_enums.h"
#include "oak/platform/shell_api_ole.h"
#include "oak/platform/shell_api_types.h"

#pragma GCC diagnostic push
#pragma GCC diagnostic ignored "-Wnon-virtual-dtor"

struct IPropertyStore : IUnknown {
  virtual HRESULT GetCount(DWORD* cProps) = 0;
  virtual HRESULT GetAt(DWORD iProp, PROPERTYKEY* pkey) = 0;
  virtual HRESULT GetValue(REFPROPERTYKEY key, PROPVARIANT* pv) = 0;
  virtual HRESULT SetValue(REFPROPERTYKEY key, REFPROPVARIANT propvar) = 0;
  virtual HRESULT Commit() = 0;
};

struct IPropertyStoreCapabilities : IUnknown {
  virtual HRESULT IsPropertyWritable(REFPROPERTYKEY key) = 0;
};

struct IPropertyEnumType : IUnknown {
  virtual HRESULT GetEnumType(PROPENUMTYPE* penumtype) = 0;
  virtual HRESULT GetValue(PROPVARIANT* ppropvar) = 0;
  virtual HRESULT GetRangeMinValue(PROPVARIANT* ppropvarMin) = 0;
  virtual HRESULT GetRangeSetValue(PROPVARIANT* ppropvarSet) = 0;
  virtual HRESULT GetDisplayText(LPWSTR* ppszDisplay) = 0;
};

struct IPropertyEnumTypeList : IUnknown {
  virtual HRESULT GetCount(UINT* pctypes) = 0;
  virtual HRESULT GetAt(UINT itype, REFIID riid, void** ppv) = 0;
  virtual HRESULT GetConditionAt(UINT nIndex, REFIID riid, void** ppv) = 0;
  virtual HRESULT FindMatchingIndex(REFPROPVARIANT propvarCmp, UINT* pnIndex) = 0;
};

struct IPropertyDescription : IUnknown {
  virtual HRESULT GetPropertyKey(PROPERTYKEY* pkey) = 0;
  virtual HRESULT GetCanonicalName(LPWSTR* ppszName) = 0;
  virtual HRESULT GetPropertyType(VARTYPE* pvartype) = 0;
  virtual HRESULT GetDisplayName(LPWSTR* ppszName) = 0;
  virtual HRESULT GetEditInvitation(LPWSTR* ppszInvite) = 0;
  virtual HRESULT GetTypeFlags(PROPDESC_TYPE_FLAGS mask, PROPDESC_TYPE_FLAGS* ppdtFlags) = 0;
  virtual HRESULT GetViewFlags(PROPDESC_VIEW_FLAGS* ppdvFlags) = 0;
  virtual HRESULT GetDefaultColumnWidth(UINT* pcxChars) = 0;
  virtual HRESULT GetDisplayType(PROPDESC_DISPLAYTYPE* pdisplaytype) = 0;
  virtual HRESULT GetColumnState(SHCOLSTATEF* pcsFlags) = 0;
  virtual HRESULT GetGroupingRange(PROPDESC_GROUPING_RANGE* pgr) = 0;
  virtual HRESULT GetRelativeDescriptionType(PROPDESC_RELATIVEDESCRIPTION_TYPE* prdt) = 0;
  virtual HRESULT GetRelativeDescription(REFPROPVARIANT propvar1, REFPROPVARIANT propvar2,
                                         LPWSTR* ppszDesc1, LPWSTR* ppszDesc2) = 0;
  virtual HRESULT GetSortDescription(PROPDESC_SORTDESCRIPTION* psd) = 0;
  virtual HRESULT GetSortDescriptionLabel(BOOL fDescending, LPWSTR* ppszDescription) = 0;
  virtual HRESULT GetAggregationType(PROPDESC_AGGREGATION_TYPE* paggtype) = 0;
  virtual HRESULT GetConditionType(PROPDESC_CONDITION_TYPE* pcontype,
                                   CONDITION_OPERATION* popDefault) = 0;
  virtual HRESULT GetEnumTypeList(REFIID riid, void** ppv) = 0;
  virtual HRESULT CoerceToCanonicalValue(PROPVARIANT* ppropvar) = 0;
  virtual HRESULT FormatForDisplay(REFPROPVARIANT propvar, PROPDESC_FORMAT_FLAGS pdfFlags,
                                   LPWSTR* ppszDisplay) = 0;
  virtual HRESULT IsValueCanonical(REFPROPVARIANT propvar) = 0;
};

struct IPropertyDescription2 : IPropertyDescription {
  virtual HRESULT GetImageReferenceForValue(REFPROPVARIANT propvar, LPWSTR* ppszImageRes) = 0;
};

struct IPropertyDescriptionList : IUnknown {
  virtual HRESULT GetCount(UINT* pcElem) = 0;
  virtual HRESULT GetAt(UINT iElem, REFIID riid, void** ppv) = 0;
};

struct IPropertySystem : IUnknown {
  virtual HRESULT GetPropertyDescription(REFPROPERTYKEY propkey, REFIID riid, void** ppv) = 0;
  virtual HRESULT GetPropertyDescriptionByName(LPCWSTR pszCanonicalName, REFIID riid,
                                               void** ppv) = 0;
  virtual HRESULT GetPropertyDescriptionListFromString(LPCWSTR pszPropList, REFIID riid,
                                                       void** ppv) = 0;
  virtual HRESULT EnumeratePropertyDescriptions(PROPDESC_ENUMFILTER filterOn, REFIID riid,
                                                void** ppv) = 0;
  virtual HRESULT FormatForDisplay(REFPROPERTYKEY key, REFPROPVARIANT propvar,
                                   PROPDESC_FORMAT_FLAGS pdff, LPWSTR pszText, DWORD cchText) = 0;
  virtual HRESULT FormatForDisplayAlloc(REFPROPERTYKEY key, REFPROPVARIANT propvar,
                                        PROPDESC_FORMAT_FLAGS pdff, LPWSTR* ppszDisplay) = 0;
  virtual HRESULT RegisterPropertySchema(LPCWSTR pszPath) = 0;
  virtual HRESULT UnregisterPropertySchema(LPCWSTR pszPath) = 0;
  virtual HRESULT RefreshPropertySchema() = 0;
};

struct IInitializeWithFile : IUnknown {
  virtual HRESULT Initialize(LPCWSTR pszFilePath, DWORD grfMode) = 0;
};

struct IInitializeWithStream : IUnknown {
  virtual HRESULT Initialize(IStream* pstream, DWORD grfMode) = 0;
};

struct IShellItem;
struct IInitializeWithItem : IUnknown {
  virtual HRESULT Initialize(IShellItem* psi, DWORD grfMode) = 0;
};

struct IPropertyChangeArray;

#pragma GCC diagnostic pop

#endif
