#include "oak/platform/MenuTable.h"

#include <utility>

namespace oak {

TMenuTable& TMenuTable::Instance() {
  static auto& table = *new TMenuTable;  // menus may be destroyed at any late time
  return table;
}

HMENU TMenuTable::Create() {
  const std::lock_guard lock(fLock);
  const HMENU menu = reinterpret_cast<HMENU>(++fLast);
  fMenus[menu];
  return menu;
}

bool TMenuTable::Destroy(HMENU menu) {
  const std::lock_guard lock(fLock);
  return DestroyLocked(menu);
}

bool TMenuTable::DestroyLocked(HMENU menu) {
  const auto found = fMenus.find(menu);
  if (found == fMenus.end()) return false;
  const TEntries entries = std::move(found->second);
  fMenus.erase(found);  // first: a menu that is in itself by mistake comes to an end
  for (const TMenuEntry& entry : entries)
    if (entry.SubMenu) DestroyLocked(entry.SubMenu);
  return true;
}

bool TMenuTable::IsMenu(HMENU menu) const { return GetCount(menu) >= 0; }

int TMenuTable::GetCount(HMENU menu) const {
  const std::lock_guard lock(fLock);
  const auto found = fMenus.find(menu);
  return found == fMenus.end() ? -1 : static_cast<int>(found->second.size());
}

bool TMenuTable::Insert(HMENU menu, int index, TMenuEntry entry) {
  const std::lock_guard lock(fLock);
  const auto found = fMenus.find(menu);
  if (found == fMenus.end()) return false;
  TEntries& entries = found->second;
  const bool inside = index >= 0 && static_cast<std::size_t>(index) < entries.size();
  entries.insert(inside ? entries.begin() + index : entries.end(), std::move(entry));
  return true;
}

bool TMenuTable::Delete(HMENU menu, int index) {
  const std::lock_guard lock(fLock);
  const auto found = fMenus.find(menu);
  if (found == fMenus.end() || index < 0 || static_cast<std::size_t>(index) >= found->second.size())
    return false;
  const HMENU subMenu = found->second[static_cast<std::size_t>(index)].SubMenu;
  found->second.erase(found->second.begin() + index);
  if (subMenu) DestroyLocked(subMenu);
  return true;
}

bool TMenuTable::Get(HMENU menu, int index, TMenuEntry* entry) const {
  const std::lock_guard lock(fLock);
  const auto found = fMenus.find(menu);
  if (found == fMenus.end() || index < 0 || static_cast<std::size_t>(index) >= found->second.size())
    return false;
  if (entry) *entry = found->second[static_cast<std::size_t>(index)];
  return true;
}

bool TMenuTable::Set(HMENU menu, int index, TMenuEntry entry) {
  const std::lock_guard lock(fLock);
  const auto found = fMenus.find(menu);
  if (found == fMenus.end() || index < 0 || static_cast<std::size_t>(index) >= found->second.size())
    return false;
  found->second[static_cast<std::size_t>(index)] = std::move(entry);
  return true;
}

std::vector<TMenuEntry> TMenuTable::GetEntries(HMENU menu) const {
  const std::lock_guard lock(fLock);
  const auto found = fMenus.find(menu);
  return found == fMenus.end() ? TEntries() : found->second;
}

std::size_t TMenuTable::GetMenuCount() const {
  const std::lock_guard lock(fLock);
  return fMenus.size();
}

}  // namespace oak
