#include "oak/namespace/Oak.Shell.Types.ColumnInfo.h"

#include "oak/base/Pidl.h"
#include "oak/base/Ref.h"
#include "oak/namespace/Oak.Shell.ControlHelper.h"
#include "oak/platform/Api.h"

namespace oak {
namespace {

TAlignment AlignmentOfViewFlags(PROPDESC_VIEW_FLAGS pFlags) {
  if ((pFlags & PDVF_RIGHTALIGN) != 0) return taRightJustify;
  return (pFlags & PDVF_CENTERALIGN) != 0 ? taCenter : taLeftJustify;
}

}  // namespace

int TColumnInfo::ScaledWidth() const { return TShellControlHelper::ScaledPixels(fWidth); }

std::uint8_t TColumnInfo::GetDisplayType() const {
  if (fDisplayType > 254) fDisplayType = static_cast<std::uint8_t>(fShellColumn.GetDisplayType());
  return fDisplayType;
}

TAlignment AlignmentOfFormat(int pFormat) {
  switch (pFormat & LVCFMT_JUSTIFYMASK) {
    case LVCFMT_RIGHT:
      return taRightJustify;
    case LVCFMT_CENTER:
      return taCenter;
    default:
      return taLeftJustify;
  }
}

bool IsColumnShownAtFirst(DWORD pState) {
  return (pState & SHCOLSTATE_ONBYDEFAULT) != 0 && (pState & SHCOLSTATE_HIDDEN) == 0;
}

TColumnInfo GetColumnInfoFromPropertySystem(const TShellColumnId& pColumn) {
  TColumnInfo info(-1, pColumn);
  Ref<IPropertyDescription> description;
  if (!Api().PSGetPropertyDescription ||
      FAILED(Api().PSGetPropertyDescription(*AsPropertyKey(&pColumn), IidOf<IPropertyDescription>(),
                                            description.PutVoid())) ||
      !description)
    return info;
  TTaskMemory<WCHAR> caption;
  if (SUCCEEDED(description->GetDisplayName(caption.Put()))) info.fTitle = FromW(caption.Get());
  UINT characters = 0;
  if (SUCCEEDED(description->GetDefaultColumnWidth(&characters)) && characters > 0)
    info.fWidth = WidthOfCharacters(static_cast<int>(characters));
  PROPDESC_VIEW_FLAGS flags = PDVF_DEFAULT;
  if (SUCCEEDED(description->GetViewFlags(&flags))) info.fAlignment = AlignmentOfViewFlags(flags);
  SHCOLSTATEF state = 0;
  if (SUCCEEDED(description->GetColumnState(&state))) {
    info.fFlags = state;
    info.fVisibleByDefault = IsColumnShownAtFirst(state);
  }
  return info;
}

}  // namespace oak
