// The menu functions over menus that are data: see MenuTable.h.
#include <algorithm>

#include "oak/platform/MenuTable.h"
#include "oak/platform/portable/SystemBinding.h"
#include "oak/platform/portable/SystemHandles.h"

namespace oak {
namespace {

constexpr DWORD ErrorInvalidMenuHandle = 1401;
constexpr DWORD ErrorMenuItemNotFound = 1456;
constexpr UINT NoItem = static_cast<UINT>(-1);

/// A menu and a place in it.
struct TMenuPlace {
  HMENU Menu = nullptr;
  int Index = -1;
};

/// The place that a position or an identifier, which is looked for in submenus too, names.
TMenuPlace FindPlace(HMENU menu, UINT item, bool byPosition) {
  const std::vector<TMenuEntry> entries = TMenuTable::Instance().GetEntries(menu);
  if (byPosition)
    return item < entries.size() ? TMenuPlace{menu, static_cast<int>(item)} : TMenuPlace{};
  int index = 0;
  for (const TMenuEntry& entry : entries) {
    if (entry.SubMenu) {
      const TMenuPlace place = FindPlace(entry.SubMenu, item, false);
      if (place.Menu) return place;
    } else if (!entry.IsSeparator && entry.Command == item) {
      return {menu, index};
    }
    ++index;
  }
  return {};
}

bool GetAt(const TMenuPlace& place, TMenuEntry* entry) {
  return place.Menu && TMenuTable::Instance().Get(place.Menu, place.Index, entry);
}

HMENU STDAPICALLTYPE CreatePopupMenu() {
  return SystemCall<HMENU>(nullptr, [] { return TMenuTable::Instance().Create(); });
}

BOOL STDAPICALLTYPE DestroyMenu(HMENU menu) {
  return SystemCall<BOOL>(FALSE, [&] {
    return TMenuTable::Instance().Destroy(menu) ? TRUE : FailWith(ErrorInvalidMenuHandle, FALSE);
  });
}

BOOL STDAPICALLTYPE InsertMenuW(HMENU menu, UINT position, UINT flags, UINT_PTR item,
                                LPCWSTR text) {
  return SystemCall<BOOL>(FALSE, [&] {
    TMenuTable& table = TMenuTable::Instance();
    if (!table.IsMenu(menu)) return FailWith(ErrorInvalidMenuHandle, FALSE);
    TMenuPlace place{menu, -1};  // at the end
    if (position != NoItem) {
      const TMenuPlace found = FindPlace(menu, position, (flags & MF_BYPOSITION) != 0);
      if (found.Menu) place = found;
    }
    TMenuEntry entry;
    entry.IsSeparator = (flags & MF_SEPARATOR) != 0;
    entry.IsEnabled = (flags & (MF_GRAYED | MF_DISABLED)) == 0;
    entry.IsChecked = (flags & MF_CHECKED) != 0;
    entry.IsOwnerDrawn = (flags & MF_OWNERDRAW) != 0;
    if ((flags & MF_POPUP) != 0)
      entry.SubMenu = reinterpret_cast<HMENU>(item);
    else
      entry.Command = static_cast<UINT>(item);
    if (entry.IsOwnerDrawn)
      entry.Data = reinterpret_cast<std::uintptr_t>(text);
    else if (text && !entry.IsSeparator)
      entry.Text = TString(ViewOf(text));
    return table.Insert(place.Menu, place.Index, std::move(entry)) ? TRUE : FALSE;
  });
}

BOOL STDAPICALLTYPE DeleteMenu(HMENU menu, UINT position, UINT flags) {
  return SystemCall<BOOL>(FALSE, [&] {
    const TMenuPlace place = FindPlace(menu, position, (flags & MF_BYPOSITION) != 0);
    const bool done = place.Menu && TMenuTable::Instance().Delete(place.Menu, place.Index);
    return done ? TRUE : FailWith(ErrorMenuItemNotFound, FALSE);
  });
}

int STDAPICALLTYPE GetMenuItemCount(HMENU menu) {
  return SystemCall<int>(-1, [&] {
    const int count = TMenuTable::Instance().GetCount(menu);
    return count >= 0 ? count : FailWith(ErrorInvalidMenuHandle, -1);
  });
}

UINT STDAPICALLTYPE GetMenuItemID(HMENU menu, int position) {
  return SystemCall<UINT>(NoItem, [&] {
    TMenuEntry entry;
    const bool found = TMenuTable::Instance().Get(menu, position, &entry);
    return found && !entry.SubMenu ? entry.Command : NoItem;
  });
}

int STDAPICALLTYPE GetMenuStringW(HMENU menu, UINT item, LPWSTR text, int size, UINT flags) {
  return SystemCall<int>(0, [&] {
    TMenuEntry entry;
    if (!GetAt(FindPlace(menu, item, (flags & MF_BYPOSITION) != 0), &entry))
      return FailWith(ErrorMenuItemNotFound, 0);
    if (!text || size <= 0) return static_cast<int>(entry.Text.size());
    const std::size_t length = std::min(entry.Text.size(), static_cast<std::size_t>(size) - 1);
    CopyText(TStringView(entry.Text).substr(0, length), text, static_cast<std::size_t>(size));
    return static_cast<int>(length);
  });
}

UINT STDAPICALLTYPE GetMenuDefaultItem(HMENU menu, UINT byPosition, UINT) {
  return SystemCall<UINT>(NoItem, [&]() -> UINT {
    UINT index = 0;
    for (const TMenuEntry& entry : TMenuTable::Instance().GetEntries(menu)) {
      if (entry.IsDefault) return byPosition ? index : entry.Command;
      ++index;
    }
    return FailWith(ErrorMenuItemNotFound, NoItem);
  });
}

BOOL STDAPICALLTYPE SetMenuDefaultItem(HMENU menu, UINT item, UINT byPosition) {
  return SystemCall<BOOL>(FALSE, [&] {
    TMenuTable& table = TMenuTable::Instance();
    const TMenuPlace place = item == NoItem ? TMenuPlace{} : FindPlace(menu, item, byPosition != 0);
    if (item != NoItem && place.Menu != menu) return FailWith(ErrorMenuItemNotFound, FALSE);
    int index = 0;
    for (TMenuEntry& entry : table.GetEntries(menu)) {
      entry.IsDefault = index == place.Index;
      table.Set(menu, index++, std::move(entry));
    }
    return TRUE;
  });
}

HMENU STDAPICALLTYPE GetSubMenu(HMENU menu, int position) {
  return SystemCall<HMENU>(nullptr, [&]() -> HMENU {
    TMenuEntry entry;
    return TMenuTable::Instance().Get(menu, position, &entry) ? entry.SubMenu : nullptr;
  });
}

}  // namespace

#define BIND(Name) api.Name.SetFunction(&Name)
void BindSystemMenus(TApi& api) {
  BIND(CreatePopupMenu);
  BIND(DestroyMenu);
  BIND(InsertMenuW);
  BIND(DeleteMenu);
  BIND(GetMenuItemCount);
  BIND(GetMenuItemID);
  BIND(GetMenuStringW);
  BIND(GetMenuDefaultItem);
  BIND(SetMenuDefaultItem);
  BIND(GetSubMenu);
}
#undef BIND

}  // namespace oak
