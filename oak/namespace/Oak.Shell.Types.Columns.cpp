#include "oak/namespace/Oak.Shell.Types.Columns.h"

#include <memory>
#include <mutex>
#include <unordered_map>

#include "oak/base/Pidl.h"
#include "oak/base/Ref.h"
#include "oak/namespace/Oak.Shell.ShellColumns.h"
#include "oak/platform/Api.h"

namespace oak {
namespace {

/// Upper-cased label to column.
using TLabels = std::unordered_map<TString, TShellColumnId>;

std::mutex gLabelsLock;
std::shared_ptr<const TLabels> gLabels;  // guarded by gLabelsLock

void AddLabel(IPropertyDescription& pDescription, TLabels& pLabels) {
  TTaskMemory<WCHAR> label;
  PROPERTYKEY key{};
  if (FAILED(pDescription.GetDisplayName(label.Put())) || FAILED(pDescription.GetPropertyKey(&key)))
    return;
  const TString text = FromW(label.Get());
  if (!text.empty()) pLabels.insert_or_assign(UpperCase(text), TShellColumnId(key));
}

/// Nil without a property system.
std::shared_ptr<const TLabels> ReadLabels() {
  Ref<IPropertySystem> system;
  Ref<IPropertyDescriptionList> list;
  UINT count = 0;
  if (!Api().PSGetPropertySystem ||
      FAILED(Api().PSGetPropertySystem(IidOf<IPropertySystem>(), system.PutVoid())) || !system ||
      FAILED(system->EnumeratePropertyDescriptions(PDEF_ALL, IidOf<IPropertyDescriptionList>(),
                                                   list.PutVoid())) ||
      !list || FAILED(list->GetCount(&count)))
    return nullptr;
  auto labels = std::make_shared<TLabels>();
  for (UINT i = 0; i < count; ++i) {
    Ref<IPropertyDescription> description;
    if (SUCCEEDED(list->GetAt(i, IidOf<IPropertyDescription>(), description.PutVoid())) &&
        description)
      AddLabel(*description, *labels);
  }
  return labels;
}

/// The system is asked outside the lock; threads that come first together read
/// the same labels twice.
std::shared_ptr<const TLabels> Labels() {
  {
    const std::lock_guard guard(gLabelsLock);
    if (gLabels) return gLabels;
  }
  std::shared_ptr<const TLabels> labels = ReadLabels();
  const std::lock_guard guard(gLabelsLock);
  if (!gLabels) gLabels = labels;
  return labels;
}

TShellColumnId FromLabel(TStringView pText) {
  const std::shared_ptr<const TLabels> labels = Labels();
  if (!labels) return TShellColumns::Invalid();
  const auto found = labels->find(UpperCase(pText));
  return found == labels->end() ? TShellColumns::Invalid() : found->second;
}

Ref<IPropertyDescription> Description(const TShellColumnId& pColumn) {
  Ref<IPropertyDescription> description;
  if (!Api().PSGetPropertyDescription ||
      FAILED(Api().PSGetPropertyDescription(pColumn, IidOf<IPropertyDescription>(),
                                            description.PutVoid())))
    return nullptr;
  return description;
}

}  // namespace

bool TShellColumnId::IsValid() const noexcept { return !IsEqualGUID(FormatId, GUID{}); }

TString TShellColumnId::ToString() const {
  TTaskMemory<WCHAR> name;
  if (!Api().PSGetNameFromPropertyKey || FAILED(Api().PSGetNameFromPropertyKey(*this, name.Put())))
    return {};
  return FromW(name.Get());
}

TShellColumnId TShellColumnId::FromString(TStringView pText) {
  const TString text(pText);
  PROPERTYKEY key{};
  if (Api().PSGetPropertyKeyFromName && SUCCEEDED(Api().PSGetPropertyKeyFromName(W(text), &key)))
    return key;
  return FromLabel(text);
}

TString TShellColumnId::DisplayName() const {
  const Ref<IPropertyDescription> description = Description(*this);
  TTaskMemory<WCHAR> name;
  if (!description || FAILED(description->GetDisplayName(name.Put()))) return {};
  return FromW(name.Get());
}

int TShellColumnId::GetDisplayType() const {
  if (!IsValid()) return -1;
  const Ref<IPropertyDescription> description = Description(*this);
  PROPDESC_DISPLAYTYPE type{};
  return description && SUCCEEDED(description->GetDisplayType(&type)) ? static_cast<int>(type) : -1;
}

}  // namespace oak
