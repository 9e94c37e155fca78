// Any text as a path: judged, rewritten and parsed.
#include <cstdlib>

#include "FuzzInput.h"
#include "oak/namespace/FolderTrek.h"
#include "oak/namespace/Oak.Shell.PathUtils.h"
#include "oak/namespace/OakItemIdList.h"
#include "oak/namespace/Shell_Win32.h"

using namespace oak;

namespace {

void Judge(const TString& text) {
  TPathUtils::IsURL(text);
  TPathUtils::IsValidIP(text);
  TPathUtils::IsRooted(text);
  TPathUtils::GetUnicodeAPICallPath(text, false, true);
  IsProtocolPath(text);
  IsSearchFolderPath(text);
  HasFileExtension(text, u"txt");
  if (!SamePath(text, text)) std::abort();
  const TString extension = ExtractFileExt(text);
  if (!ExtractFileName(text).ends_with(extension)) std::abort();
  if (ExtractFilePath(text) + ExtractFileName(text) != text) std::abort();
}

void Rewrite(const TString& base, const TString& text) {
  TPathUtils::MakeCanonic(text);
  TPathUtils::RemoveRelativeParts(text, u'\\');
  if (!base.empty() || !text.empty()) TPathUtils::Combine(base, text);
  OakExpandEnvironmentStrings(text);
  ExpandSpecialFolderPath(NormalizeSpecialFolderPath(text));
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  fuzz::UseSmallDrive();
  const auto [text, base] = fuzz::ToTwoTexts(data, size);
  Judge(text);
  Rewrite(base, text);
  const Ref<IItemIdList> item = TOakItemIdList::Parse(text, nullptr, size % 2 == 1);
  item->DisplayPath();
  item->DisplayName(dnfForExplorer);
  TOakItemIdList::CreateSimpleIdList(text)->Path();
  return 0;
}
