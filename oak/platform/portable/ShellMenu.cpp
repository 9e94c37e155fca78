#include "oak/platform/portable/ShellMenu.h"

#include <algorithm>
#include <cstring>

#include "oak/platform/Api.h"
#include "oak/platform/MenuTable.h"
#include "oak/platform/portable/PortableCall.h"

namespace oak {
namespace {

constexpr HRESULT InvalidMenu = static_cast<HRESULT>(0x80070579);  // ERROR_INVALID_MENU_HANDLE

// Verbs are asked for by name whether or not a menu showed them.
constexpr UINT AllVerbs = CMF_EXPLORE | CMF_CANRENAME | CMF_EXTENDEDVERBS;

// No sum of identifiers wraps around, and their number fits into the result.
constexpr UINT HighestCommand = 0x7FFFFFFF;
constexpr UINT MostCommands = 0xFFFF;

constexpr std::size_t ShortInfo = sizeof(CMINVOKECOMMANDINFO);

const CMINVOKECOMMANDINFOEX* ExtendedInfo(const CMINVOKECOMMANDINFO& info) {
  const bool wide = (info.fMask & CMIC_MASK_UNICODE) != 0;
  return wide && info.cbSize >= sizeof(CMINVOKECOMMANDINFOEX)
             ? reinterpret_cast<const CMINVOKECOMMANDINFOEX*>(&info)
             : nullptr;
}

// A verb field holds either a text or, in its low word, an offset.
bool IsOffset(const void* verb) { return reinterpret_cast<std::uintptr_t>(verb) <= 0xFFFF; }

bool OffsetOf(const CMINVOKECOMMANDINFO& info, UINT& offset) {
  if (!IsOffset(info.lpVerb)) return false;
  const auto* extended = ExtendedInfo(info);
  if (extended && !IsOffset(extended->lpVerbW)) return false;
  offset = static_cast<UINT>(reinterpret_cast<std::uintptr_t>(info.lpVerb));
  return true;
}

TString VerbTextOf(const CMINVOKECOMMANDINFO& info) {
  const auto* extended = ExtendedInfo(info);
  if (extended && !IsOffset(extended->lpVerbW)) return FromW(extended->lpVerbW);
  return IsOffset(info.lpVerb) ? TString() : FromUtf8(info.lpVerb);
}

HRESULT AnswerWide(const TString& text, CHAR* name, UINT capacity) {
  auto* wide = reinterpret_cast<LPWSTR>(name);
  if (!wide || capacity == 0) return E_INVALIDARG;
  const std::size_t count = std::min<std::size_t>(text.size(), capacity - 1);
  std::copy_n(text.data(), count, wide);
  wide[count] = 0;
  return count == text.size() ? S_OK : HRESULT_FROM_WIN32(ERROR_INSUFFICIENT_BUFFER);
}

HRESULT AnswerNarrow(const TString& text, CHAR* name, UINT capacity) {
  if (!name || capacity == 0) return E_INVALIDARG;
  const std::string bytes = ToUtf8(text);
  const std::size_t count = std::min<std::size_t>(bytes.size(), capacity - 1);
  std::copy_n(bytes.data(), count, name);
  name[count] = 0;
  return count == bytes.size() ? S_OK : HRESULT_FROM_WIN32(ERROR_INSUFFICIENT_BUFFER);
}

const TMenuVerb* FindVerb(const std::vector<TMenuVerb>& verbs, TStringView name) {
  for (const TMenuVerb& verb : verbs) {
    if (!verb.Verb.empty() && verb.Run && SameText(verb.Verb, name)) return &verb;
    if (const TMenuVerb* inner = FindVerb(verb.SubVerbs, name)) return inner;
  }
  return nullptr;
}

const TMenuVerb* FindDefault(const std::vector<TMenuVerb>& verbs) {
  for (const TMenuVerb& verb : verbs)
    if (verb.Default) return &verb;
  return nullptr;
}

TMenuEntry EntryOf(const TMenuVerb& verb, UINT command) {
  TMenuEntry entry;
  entry.Command = command;
  entry.Text = verb.Text;
  entry.IsEnabled = verb.Enabled;
  entry.IsRadio = verb.Radio;
  return entry;
}

HRESULT InvokeHandler(IContextMenu& menu, const CMINVOKECOMMANDINFO& info, UINT offset) {
  CMINVOKECOMMANDINFOEX copy{};
  const auto* extended = ExtendedInfo(info);
  std::memcpy(&copy, &info, extended ? sizeof copy : ShortInfo);
  copy.cbSize = extended ? sizeof copy : ShortInfo;
  copy.lpVerb = reinterpret_cast<LPCSTR>(static_cast<std::uintptr_t>(offset));
  copy.lpVerbW = reinterpret_cast<LPCWSTR>(static_cast<std::uintptr_t>(offset));
  return menu.InvokeCommand(reinterpret_cast<CMINVOKECOMMANDINFO*>(&copy));
}

}  // namespace

/// Where entries go, and the identifiers that are left for them.
struct TVerbMenu::TPlace {
  HMENU Menu = nullptr;
  int Index = 0;
  UINT Last = 0;  // highest identifier
  UINT Flags = 0;
  bool PendingSeparator = false;
  bool Any = false;  // something stands before
};

// --- building --------------------------------------------------------------------------

HRESULT TVerbMenu::QueryContextMenu(HMENU menu, UINT index, UINT idCmdFirst, UINT idCmdLast,
                                    UINT flags) {
  return PortableCall("IContextMenu::QueryContextMenu", [&]() -> HRESULT {
    const int count = TMenuTable::Instance().GetCount(menu);
    if (count < 0) return InvalidMenu;
    if (idCmdFirst > idCmdLast || idCmdFirst > HighestCommand) return E_INVALIDARG;
    fCommands.clear();
    fLate.clear();
    for (THandler& handler : fHandlers) handler.Count = 0;
    fFirst = idCmdFirst;
    TPlace place;
    place.Menu = menu;
    place.Index = index < static_cast<UINT>(count) ? static_cast<int>(index) : count;
    place.Last = std::min({idCmdLast, HighestCommand, idCmdFirst + MostCommands - 1});
    place.Flags = flags;
    std::vector<TMenuVerb> verbs = MakeVerbs(flags);
    if (flags & CMF_DEFAULTONLY)
      std::erase_if(verbs, [](const TMenuVerb& verb) { return !verb.Default; });
    Insert(place, verbs);
    return MAKE_HRESULT(0, 0, static_cast<USHORT>(fCommands.size()));
  });
}

// False when there are no identifiers left.
bool TVerbMenu::Insert(TPlace& place, std::vector<TMenuVerb>& verbs) {
  for (TMenuVerb& verb : verbs) {
    if (verb.Kind == TMenuVerb::TKind::Separator) {
      place.PendingSeparator = place.Any;
    } else if (verb.Kind == TMenuVerb::TKind::Extensions) {
      InsertHandlers(place);
    } else if (!InsertOne(place, verb)) {
      return false;
    }
  }
  return true;
}

bool TVerbMenu::InsertOne(TPlace& place, TMenuVerb& verb) {
  TMenuTable& table = TMenuTable::Instance();
  const bool isSubMenu = verb.Kind == TMenuVerb::TKind::SubMenu;
  const std::size_t needed = isSubMenu ? verb.SubVerbs.size() : 1;
  const auto command = static_cast<UINT>(fFirst + fCommands.size());
  if (needed > 0 && (command > place.Last || needed - 1 > place.Last - command)) return false;
  if (std::exchange(place.PendingSeparator, false)) {
    TMenuEntry separator;
    separator.IsSeparator = true;
    table.Insert(place.Menu, place.Index++, std::move(separator));
  }
  TMenuEntry entry = EntryOf(verb, isSubMenu ? 0 : command);
  if (isSubMenu) {
    entry.SubMenu = table.Create();
    fLate.push_back({entry.SubMenu, {}, static_cast<UINT>(fCommands.size()), false});
    for (TMenuVerb& inner : verb.SubVerbs) Number(inner);
    fLate.back().Verbs = std::move(verb.SubVerbs);
  } else {
    entry.IsDefault = verb.Default && !(place.Flags & CMF_NODEFAULT);
    Number(verb);
  }
  table.Insert(place.Menu, place.Index++, std::move(entry));
  place.Any = true;
  return true;
}

void TVerbMenu::Number(TMenuVerb& verb) {
  TMenuVerb command = verb;
  command.SubVerbs.clear();
  fCommands.push_back(std::move(command));
}

void TVerbMenu::EnsureHandlers() {
  if (std::exchange(fHandlersLoaded, true)) return;
  for (Ref<IContextMenu>& menu : LoadHandlers()) fHandlers.push_back({std::move(menu), 0, 0});
}

void TVerbMenu::InsertHandlers(TPlace& place) {
  EnsureHandlers();
  TMenuTable& table = TMenuTable::Instance();
  for (THandler& handler : fHandlers) {
    const auto first = static_cast<UINT>(fFirst + fCommands.size());
    if (first > place.Last) return;
    const int before = table.GetCount(place.Menu);
    const HRESULT result = handler.Menu->QueryContextMenu(
        place.Menu, static_cast<UINT>(place.Index), first, place.Last, place.Flags);
    const int added = std::max(table.GetCount(place.Menu) - before, 0);
    place.Index += added;
    if (added > 0) place.Any = true;
    if (FAILED(result)) continue;
    handler.FirstOffset = static_cast<UINT>(fCommands.size());
    handler.Count = std::min<UINT>(HRESULT_CODE(result), place.Last - first + 1);
    fCommands.resize(fCommands.size() + handler.Count);
  }
}

void TVerbMenu::FillLate(TLateMenu& late) {
  if (std::exchange(late.Filled, true)) return;
  UINT offset = late.FirstOffset;
  for (const TMenuVerb& verb : late.Verbs) {
    TMenuEntry entry = EntryOf(verb, fFirst + offset++);
    entry.IsSeparator = verb.Kind == TMenuVerb::TKind::Separator;
    TMenuTable::Instance().Insert(late.Menu, -1, std::move(entry));
  }
}

HRESULT TVerbMenu::HandleMenuMsg(UINT message, WPARAM wParam, LPARAM lParam) {
  return HandleMenuMsg2(message, wParam, lParam, nullptr);
}

HRESULT TVerbMenu::HandleMenuMsg2(UINT message, WPARAM wParam, LPARAM lParam, LRESULT* result) {
  return PortableCall("IContextMenu3::HandleMenuMsg2", [&]() -> HRESULT {
    if (result) *result = 0;
    if (message == WM_INITMENUPOPUP) {
      for (TLateMenu& late : fLate)
        if (late.Menu == reinterpret_cast<HMENU>(wParam)) return FillLate(late), S_OK;
    }
    HRESULT answer = E_NOTIMPL;
    for (const THandler& handler : fHandlers) {
      if (const auto third = handler.Menu.As<IContextMenu3>())
        answer = third->HandleMenuMsg2(message, wParam, lParam, result);
      else if (const auto second = handler.Menu.As<IContextMenu2>())
        answer = second->HandleMenuMsg(message, wParam, lParam);
      if (SUCCEEDED(answer)) return answer;
    }
    return message == WM_INITMENUPOPUP ? S_OK : answer;
  });
}

// --- invoking ----------------------------------------------------------------------------

HRESULT TVerbMenu::InvokeCommand(CMINVOKECOMMANDINFO* info) {
  return PortableCall("IContextMenu::InvokeCommand", [&]() -> HRESULT {
    if (!info || info->cbSize < ShortInfo) return E_INVALIDARG;
    const auto self = Ref<IContextMenu3>::Share(this);  // a command may release its menu
    TVerbCall call;
    call.Window = info->hwnd;
    call.Mask = info->fMask;
    call.Show = info->nShow;
    UINT offset = 0;
    if (OffsetOf(*info, offset)) return InvokeOffset(offset, *info, call);
    return InvokeVerb(*info, call);
  });
}

TVerbMenu::THandler* TVerbMenu::HandlerOf(UINT_PTR offset) {
  for (THandler& handler : fHandlers)
    if (offset >= handler.FirstOffset && offset - handler.FirstOffset < handler.Count)
      return &handler;
  return nullptr;
}

HRESULT TVerbMenu::InvokeOffset(UINT offset, const CMINVOKECOMMANDINFO& info,
                                const TVerbCall& call) {
  if (const THandler* handler = HandlerOf(offset))
    return InvokeHandler(*handler->Menu, info, offset - handler->FirstOffset);
  // Nothing was shown: the offset 0 stands for the default command.
  std::vector<TMenuVerb> verbs;
  const TMenuVerb* verb = nullptr;
  if (offset < fCommands.size()) {
    verb = &fCommands[offset];
  } else if (offset == 0) {
    verbs = MakeVerbs(CMF_NORMAL);
    verb = FindDefault(verbs);
  }
  if (!verb || !verb->Run) return E_INVALIDARG;
  const auto run = verb->Run;  // the command may build the menu anew
  TVerbCall named = call;
  named.Verb = verb->Verb;
  return run(named);
}

HRESULT TVerbMenu::InvokeVerb(const CMINVOKECOMMANDINFO& info, const TVerbCall& call) {
  const TString name = VerbTextOf(info);
  if (name.empty()) return E_INVALIDARG;
  const std::vector<TMenuVerb> verbs = MakeVerbs(AllVerbs);
  const TMenuVerb* verb = FindVerb(verbs, name);
  if (!verb) return InvokeHandlerVerb(info, name);
  TVerbCall named = call;
  named.Verb = verb->Verb;
  return verb->Run(named);
}

// Extensions tell their verbs only when they have filled a menu.
HRESULT TVerbMenu::InvokeHandlerVerb(const CMINVOKECOMMANDINFO& info, const TString& verb) {
  EnsureHandlers();
  const HMENU scratch = fHandlers.empty() ? nullptr : TMenuTable::Instance().Create();
  HRESULT result = E_INVALIDARG;
  bool found = false;
  for (std::size_t i = 0; i < fHandlers.size() && !found; ++i) {
    const Ref<IContextMenu> menu = fHandlers[i].Menu;
    UINT count = fHandlers[i].Count;
    if (count == 0) {
      const HRESULT queried = menu->QueryContextMenu(scratch, 0, 1, 0x7FFF, CMF_NORMAL);
      count = SUCCEEDED(queried) ? HRESULT_CODE(queried) : 0;
    }
    for (UINT offset = 0; offset < count && !found; ++offset) {
      TString name(260, u'\0');
      const HRESULT told = menu->GetCommandString(offset, GCS_VERBW, nullptr,
                                                  reinterpret_cast<CHAR*>(WBuffer(name)), 260);
      found = told == S_OK && SameText(FromW(W(name)), verb);
      if (found) result = InvokeHandler(*menu, info, offset);
    }
  }
  if (scratch) TMenuTable::Instance().Destroy(scratch);
  return result;
}

HRESULT TVerbMenu::GetCommandString(UINT_PTR id, UINT type, UINT* reserved, CHAR* name,
                                    UINT capacity) {
  return PortableCall("IContextMenu::GetCommandString", [&]() -> HRESULT {
    if (const THandler* handler = HandlerOf(id))
      return handler->Menu->GetCommandString(id - handler->FirstOffset, type, reserved, name,
                                             capacity);
    const bool known = id < fCommands.size() && fCommands[id].Run;
    if (type == GCS_VALIDATEA || type == GCS_VALIDATEW) return known ? S_OK : S_FALSE;
    if (!known) return E_INVALIDARG;
    const TMenuVerb& verb = fCommands[id];
    switch (type) {
      case GCS_VERBW:
        return verb.Verb.empty() ? E_NOTIMPL : AnswerWide(verb.Verb, name, capacity);
      case GCS_VERBA:
        return verb.Verb.empty() ? E_NOTIMPL : AnswerNarrow(verb.Verb, name, capacity);
      case GCS_HELPTEXTW:
        return AnswerWide(verb.Help, name, capacity);
      case GCS_HELPTEXTA:
        return AnswerNarrow(verb.Help, name, capacity);
      default:
        return E_INVALIDARG;
    }
  });
}

}  // namespace oak
