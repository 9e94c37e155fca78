// Names of objects in controls, and what a rename makes of them.
#include "oak/base/Exceptions.h"
#include "oak/framework/Component.h"
#include "oak/namespace/Oak.Shell.ControlHelper.h"
#include "oak/namespace/OakItemIdList.h"

namespace oak {
namespace {

TString WithoutExtension(const TString& pName) {
  TString bare = ChangeFileExt(pName, {});
  // A name that is nothing but an extension, as ".profile", has nothing to hide.
  return bare.empty() ? pName : bare;
}

}  // namespace

TString TShellControlHelper::GetDisplayName(const Ref<IItemIdList>& pItemIdList,
                                            TOakFileNameFormat pFormat, bool pUseShellNames) {
  if (!pItemIdList || (pUseShellNames && pItemIdList->IsInvalid()))
    throw EArgumentException(u"pItemIdList is nil or invalid");
  if (!pUseShellNames) {
    TString name = pItemIdList->Name();
    return name.empty() ? pItemIdList->DisplayName(dnfInFolder) : name;
  }
  const bool isPlainFolder = pFormat != TOakFileNameFormat::Auto && pItemIdList->IsFolder() &&
                             !TItemIdListHelper::IsFileAndFolder(pItemIdList);
  if (pFormat == TOakFileNameFormat::Auto || isPlainFolder)
    return pItemIdList->DisplayName(dnfInFolder);
  TString name = pItemIdList->DisplayName(dnfRelativeForAddressBar);
  return pFormat == TOakFileNameFormat::ExcludeExtensions ? WithoutExtension(name) : name;
}

TString TShellControlHelper::PrepareForRename(TStringView pOldName, TStringView pNewName,
                                              const TComponent* pControl) {
  const TString oldExtension = ExtractFileExt(pOldName);
  TString result(pNewName);
  if (oldExtension.empty()) return result;
  if (ExtractFileExt(result).empty() && !ControlShowsExtensions(pControl)) result += oldExtension;
  // By the result, not by what was typed: the ending comes once.
  if (SameText(oldExtension, u".lnk") && !SameText(ExtractFileExt(result), u".lnk"))
    result += oldExtension;
  return result;
}

bool TShellControlHelper::ControlShowsExtensions(const TComponent* pControl) {
  const auto* owner = dynamic_cast<const IOakFileNameFormatOwner*>(pControl);
  const TOakFileNameFormat format = owner ? owner->GetFileNameFormat() : TOakFileNameFormat::Auto;
  if (format == TOakFileNameFormat::Auto) return GetShellShowExtensions();
  return format == TOakFileNameFormat::IncludeExtensions;
}

}  // namespace oak
