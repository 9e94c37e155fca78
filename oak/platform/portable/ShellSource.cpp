// What a folder answers unless its source knows better.
#include "oak/base/LogicalOrder.h"
#include "oak/base/Variant.h"
#include "oak/platform/portable/PortableShell.h"
#include "oak/platform/portable/ShellProperties.h"

namespace oak {

namespace {

HRESULT NameOf(IFolderSource& source, PCUITEMID_CHILD element, TNameForm form, TString& name) {
  const HRESULT result = source.GetName(element, form, name);
  return result == S_FALSE ? E_INVALIDARG : result;
}

// Same object or not: parsing names, those that differ in case alone kept apart.
HRESULT CompareCanonical(IFolderSource& source, PCUITEMID_CHILD a, PCUITEMID_CHILD b, int& order) {
  TString nameA, nameB;
  HRESULT result = NameOf(source, a, TNameForm::Parsing, nameA);
  if (SUCCEEDED(result)) result = NameOf(source, b, TNameForm::Parsing, nameB);
  if (FAILED(result)) return result;
  order = CompareText(nameA, nameB);
  if (order == 0) order = nameA.compare(nameB);
  return S_OK;
}

HRESULT CompareDisplayed(IFolderSource& source, PCUITEMID_CHILD a, PCUITEMID_CHILD b, int& order) {
  TString nameA, nameB;
  HRESULT result = NameOf(source, a, TNameForm::Display, nameA);
  if (SUCCEEDED(result)) result = NameOf(source, b, TNameForm::Display, nameB);
  if (FAILED(result)) return result;
  order = CompareLogical(nameA, nameB);
  return S_OK;
}

// Folders stand before everything else; 0 for two of a kind.
HRESULT CompareKinds(IFolderSource& source, PCUITEMID_CHILD a, PCUITEMID_CHILD b, int& order) {
  DWORD attributesA = 0, attributesB = 0;
  HRESULT result = source.GetAttributes(a, SFGAO_FOLDER, attributesA);
  if (SUCCEEDED(result)) result = source.GetAttributes(b, SFGAO_FOLDER, attributesB);
  if (FAILED(result)) return result;
  order = ((attributesA & SFGAO_FOLDER) ? 0 : 1) - ((attributesB & SFGAO_FOLDER) ? 0 : 1);
  return S_OK;
}

void CompareColumn(IFolderSource& source, UINT column, PCUITEMID_CHILD a, PCUITEMID_CHILD b,
                   int& order) {
  const std::span<const TFolderColumn> columns = source.GetColumns();
  if (column == 0 || column >= columns.size()) return;
  TPropVariant valueA, valueB;
  (void)source.GetProperty(a, columns[column].Key, valueA.Put());
  (void)source.GetProperty(b, columns[column].Key, valueB.Put());
  order = ComparePropVariants(valueA, valueB);
}

bool IsNamed(IFolderSource& source, PCUITEMID_CHILD element, TStringView name) {
  TString text;
  for (TNameForm form : {TNameForm::Parsing, TNameForm::Display, TNameForm::Editing})
    if (source.GetName(element, form, text) == S_OK && SameText(text, name)) return true;
  return false;
}

}  // namespace

GUID TFolderSource::GetClassId() { return FileSystemFolderClassId; }

HRESULT TFolderSource::Compare(LPARAM what, PCUITEMID_CHILD a, PCUITEMID_CHILD b, int& order) {
  order = 0;
  if (static_cast<DWORD>(what) & 0xF0000000u) return CompareCanonical(*this, a, b, order);
  HRESULT result = CompareKinds(*this, a, b, order);
  if (FAILED(result) || order != 0) return result;
  CompareColumn(*this, static_cast<UINT>(what & 0xFFFF), a, b, order);
  return order != 0 ? S_OK : CompareDisplayed(*this, a, b, order);
}

HRESULT TFolderSource::ParseName(TStringView name, const TParseOptions&, TPidl& element) {
  Ref<IFolderCursor> cursor;
  HRESULT result = Enumerate(
      SHCONTF_FOLDERS | SHCONTF_NONFOLDERS | SHCONTF_INCLUDEHIDDEN | SHCONTF_INCLUDESUPERHIDDEN,
      cursor);
  if (FAILED(result)) return result;
  PCUITEMID_CHILD found = nullptr;
  while ((result = cursor->Next(&found)) == S_OK) {
    if (!IsNamed(*this, found, name)) continue;
    element = TPidl::Copy(found);
    return S_OK;
  }
  return FAILED(result) ? result : HRESULT_FROM_WIN32(2);  // ERROR_FILE_NOT_FOUND
}

HRESULT TFolderSource::Create(TStringView, bool, bool, TPidl&) { return STG_E_ACCESSDENIED; }
HRESULT TFolderSource::Rename(PCUITEMID_CHILD, TStringView, TNameForm, TPidl&) {
  return STG_E_ACCESSDENIED;
}
HRESULT TFolderSource::Destroy(PCUITEMID_CHILD) { return STG_E_ACCESSDENIED; }
HRESULT TFolderSource::OpenStream(PCUITEMID_CHILD, DWORD, IStream**) { return E_NOTIMPL; }
HRESULT TFolderSource::Open(PCUITEMID_CHILD, Ref<IFolderSource>&) { return E_NOTIMPL; }

HRESULT TFolderSource::GetProperty(PCUITEMID_CHILD, REFPROPERTYKEY, PROPVARIANT*) {
  return PropertyNotFound;
}
HRESULT TFolderSource::SetProperty(PCUITEMID_CHILD, REFPROPERTYKEY, REFPROPVARIANT) {
  return STG_E_ACCESSDENIED;
}
std::vector<PROPERTYKEY> TFolderSource::GetPropertyKeys(PCUITEMID_CHILD) { return {}; }

HRESULT TFolderSource::GetTypeName(PCUITEMID_CHILD element, TString& name) {
  DWORD attributes = 0;
  const HRESULT result = GetAttributes(element, SFGAO_FOLDER, attributes);
  name = (attributes & SFGAO_FOLDER) ? u"Folder" : u"Object";
  return result;
}

HRESULT TFolderSource::GetInfoTip(PCUITEMID_CHILD element, TString& tip) {
  return GetTypeName(element, tip);
}
HRESULT TFolderSource::GetOverlayIndex(PCUITEMID_CHILD, int&) { return S_FALSE; }
HRESULT TFolderSource::GetIconIndex(PCUITEMID_CHILD, bool, int&) { return S_FALSE; }
HRESULT TFolderSource::GetUIObject(std::span<const PCUITEMID_CHILD>, REFIID, void** object) {
  *object = nullptr;
  return E_NOINTERFACE;
}
HRESULT TFolderSource::GetLinkTarget(PCUITEMID_CHILD, TPidl&) { return E_NOTIMPL; }
HRESULT TFolderSource::Refresh(PCUITEMID_CHILD element, TPidl&) {
  DWORD attributes = 0;
  const HRESULT result = GetAttributes(element, SFGAO_VALIDATE, attributes);
  return FAILED(result) ? result : S_FALSE;
}

std::span<const TFolderColumn> TFolderSource::GetColumns() {
  static const TFolderColumn kName[] = {{PKEY_ItemNameDisplay, u"Name", 30}};
  return kName;
}

}  // namespace oak
