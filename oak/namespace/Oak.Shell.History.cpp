#include "oak/namespace/Oak.Shell.History.h"

#include <algorithm>
#include <cstdlib>

#include "oak/namespace/OakItemIdList.h"

namespace oak {

void TPidlHistory::Add(const Ref<IItemIdList>& pItemIdList) {
  if (IsInvalid(pItemIdList)) return;
  // The caller's reference may be to an entry that goes.
  const Ref<IItemIdList> item = pItemIdList;
  const Ref<IItemIdList> current = GetCurrentFolderItemIDList();
  const bool isElsewhere =
      !current || (item->CompareTo(current, ilcDisplay) != 0 && !current->IsInvalid());
  const std::int64_t kept = std::int64_t{GetPosition()} + (isElsewhere ? 1 : 0);
  fItems.resize(static_cast<std::size_t>(std::clamp<std::int64_t>(kept, 0, GetCount())));
  fItems.push_back(item);
  fPosition = GetCount() - 1;
}

void TPidlHistory::Clear() {
  fItems.clear();
  fPosition = -1;
}

bool TPidlHistory::IsMovePossible(int pDelta) {
  if (fItems.empty()) return false;
  if (pDelta > 0) return pDelta <= std::int64_t{GetCount()} - (std::int64_t{fPosition} + 1);
  return fPosition >= -std::int64_t{pDelta} - 1;
}

void TPidlHistory::MoveBack(std::uint8_t pSteps) {
  if (GetPosition() > 0) fPosition -= std::min<int>(pSteps, fPosition);
}

void TPidlHistory::MoveForward(std::uint8_t pSteps) {
  const std::int64_t ahead = std::int64_t{GetCount()} - 1 - fPosition;
  if (ahead > 0) fPosition += static_cast<int>(std::min<std::int64_t>(pSteps, ahead));
}

Ref<IItemIdList> TPidlHistory::GetItem(int pIndex) const {
  if (pIndex < 0 || pIndex >= static_cast<int>(fItems.size())) return nullptr;
  return fItems[static_cast<std::size_t>(pIndex)];
}

TString TPidlHistory::GetPaths(int pIndex) const {
  const Ref<IItemIdList> item = GetItem(pIndex);
  return item ? item->DisplayName(dnfPreferPhysical) : TString();
}

}  // namespace oak
