#include "oak/framework/headless/HeadlessMenu.h"

#include <algorithm>

#include "oak/base/Exceptions.h"
#include "oak/framework/Menus.h"
#include "oak/framework/WinControl.h"
#include "oak/framework/headless/HeadlessDesktop.h"
#include "oak/framework/headless/HeadlessForm.h"
#include "oak/framework/headless/HeadlessMenuLevel.h"

namespace oak {
namespace {

/// The letter behind the mark, in lower case; 0 without one.
char16_t MenuMnemonic(TStringView text) {
  for (std::size_t i = 0; i + 1 < text.size(); ++i) {
    if (text[i] != u'&') continue;
    if (text[i + 1] != u'&') return LowerCase(text.substr(i + 1, 1)).front();
    ++i;
  }
  return 0;
}

std::pair<TStringView, TStringView> CutPath(TStringView path) {
  const std::size_t bar = path.find(u'|');
  if (bar == TStringView::npos) return {path, {}};
  return {path.substr(0, bar), path.substr(bar + 1)};
}

void FillMenu(HMENU menu, const TMenuItem& root) {
  TMenuTable& table = TMenuTable::Instance();
  for (int i = 0; i < root.GetCount(); ++i) {
    const TMenuItem& item = *root.GetItem(i);
    if (!item.GetVisible()) continue;
    TMenuEntry entry;
    entry.Command = item.GetCommand();
    entry.IsSeparator = item.IsLine();
    entry.Text = item.GetCaption();
    if (item.GetShortCut() != 0) (entry.Text += u'\t') += ShortCutToText(item.GetShortCut());
    entry.IsEnabled = item.GetEnabled();
    entry.IsChecked = item.GetChecked();
    entry.IsRadio = item.GetRadioItem();
    entry.IsDefault = item.GetDefault();
    entry.IsOwnerDrawn = item.OnMeasureItem && item.OnDrawItem;
    if (item.GetCount() > 0 || item.OnPopup) {
      entry.SubMenu = table.Create();
      FillMenu(entry.SubMenu, item);
    }
    table.Insert(menu, -1, std::move(entry));
  }
}

/// Lets an entry of the program fill its submenu, which is about to open.
void FillLate(const TMenuEntry& entry) {
  TMenuTable& table = TMenuTable::Instance();
  TMenuItem* const item = FindMenuItem(entry.Command);
  if (!item || !item->OnPopup) return;
  item->DoPopup();
  if (FindMenuItem(entry.Command) != item || !table.IsMenu(entry.SubMenu)) return;
  while (table.Delete(entry.SubMenu, 0)) {
  }
  FillMenu(entry.SubMenu, *item);
}

}  // namespace

// --- the session -------------------------------------------------------------

THeadlessMenuSession::THeadlessMenuSession(THeadlessDesktop& desktop, HMENU menu, TPoint screen,
                                           TWinControl* owner, HWND ownerWindow)
    : fDesktop(desktop),
      fMenu(menu),
      fOwner(owner && owner->GetPeer() ? owner->GetPeer()->GetHandle() : ownerWindow),
      fFormerFilter(desktop.SetInputFilter(this)),
      fFormerSession(desktop.GetMenuSession()) {
  desktop.SetMenuSession(this);
  Open(menu, 0, screen);
}

THeadlessMenuSession::~THeadlessMenuSession() {
  CloseBelow(0);
  fDesktop.SetMenuSession(fFormerSession);
  fDesktop.SetInputFilter(fFormerFilter);
}

void THeadlessMenuSession::Open(HMENU menu, int index, TPoint screen) {
  // The owner may be gone, and what it does may be anything.
  if (THeadlessWindow* const owner = fDesktop.FindWindow(fOwner))
    owner->Send(WM_INITMENUPOPUP, reinterpret_cast<WPARAM>(menu), index);
  if (!fFinished)
    fLevels.push_back(std::make_unique<THeadlessMenuLevel>(fDesktop, menu, screen, fOwner));
}

void THeadlessMenuSession::CloseBelow(std::size_t levels) {
  while (fLevels.size() > levels) fLevels.pop_back();
}

void THeadlessMenuSession::OpenSub(int index) {
  THeadlessMenuLevel& level = *fLevels.back();
  TMenuEntry entry;
  if (!TMenuTable::Instance().Get(level.Menu, index, &entry)) return;
  level.SetHot(index);
  if (!entry.SubMenu || !entry.IsEnabled) return;
  const TRect rect = level.EntryRect(index);
  const TPoint corner = level.ClientToScreen({rect.Right, rect.Top});
  FillLate(entry);
  if (!fFinished) Open(entry.SubMenu, index, corner);
}

std::vector<HMENU> THeadlessMenuSession::GetOpenMenus() const {
  std::vector<HMENU> menus;
  for (const auto& level : fLevels) menus.push_back(level->Menu);
  return menus;
}

int THeadlessMenuSession::IndexOf(HMENU menu, TStringView caption) const {
  const std::vector<TMenuEntry> entries = TMenuTable::Instance().GetEntries(menu);
  const TString wanted = MenuCaption(caption);
  const auto found = std::find_if(entries.begin(), entries.end(), [&](const TMenuEntry& entry) {
    return !entry.IsSeparator && SameText(MenuCaption(entry.Text), wanted);
  });
  return found == entries.end() ? -1 : static_cast<int>(found - entries.begin());
}

/// Opens the submenus of a path, each in its own window; gives the innermost.
bool THeadlessMenuSession::OpenPath(TStringView path, HMENU* menu) {
  CloseBelow(1);
  while (!path.empty() && !fFinished && !fLevels.empty()) {
    const auto [caption, rest] = CutPath(path);
    const std::size_t levels = fLevels.size();
    OpenSub(IndexOf(fLevels.back()->Menu, caption));
    if (fLevels.size() == levels) return false;
    path = rest;
  }
  if (fFinished || fLevels.empty()) return false;
  *menu = fLevels.back()->Menu;
  return true;
}

std::vector<TMenuEntry> THeadlessMenuSession::GetEntries(TStringView path) {
  HMENU menu = nullptr;
  return OpenPath(path, &menu) ? TMenuTable::Instance().GetEntries(menu)
                               : std::vector<TMenuEntry>();
}

std::vector<TString> THeadlessMenuSession::GetCaptions(TStringView path) {
  std::vector<TString> captions;
  for (const TMenuEntry& entry : GetEntries(path))
    captions.push_back(entry.IsSeparator ? TString(u"-")
                                         : MenuCaption(entry.Text) + (entry.SubMenu ? u" >" : u""));
  return captions;
}

bool THeadlessMenuSession::Find(TStringView path, TMenuEntry* entry) {
  const std::size_t bar = path.rfind(u'|');
  const TStringView folder = bar == TStringView::npos ? TStringView() : path.substr(0, bar);
  HMENU menu = nullptr;
  if (!OpenPath(folder, &menu)) return false;
  const TStringView caption = bar == TStringView::npos ? path : path.substr(bar + 1);
  return TMenuTable::Instance().Get(menu, IndexOf(menu, caption), entry);
}

bool THeadlessMenuSession::Choose(TStringView path) {
  TMenuEntry entry;
  if (!Find(path, &entry) || entry.SubMenu || !entry.IsEnabled) return false;
  Finish(entry.Command);
  return true;
}

bool THeadlessMenuSession::ChooseCommand(UINT command) {
  std::vector<HMENU> menus{fMenu};
  while (!menus.empty()) {
    const HMENU menu = menus.back();
    menus.pop_back();
    for (const TMenuEntry& entry : TMenuTable::Instance().GetEntries(menu)) {
      if (entry.SubMenu) menus.push_back(entry.SubMenu);
      if (entry.SubMenu || entry.IsSeparator || !entry.IsEnabled || entry.Command != command)
        continue;
      Finish(command);
      return true;
    }
  }
  return false;
}

void THeadlessMenuSession::Finish(UINT result) {
  if (fFinished) return;
  fFinished = true;
  fResult = result;
}

// --- the user ----------------------------------------------------------------

void THeadlessMenuSession::Activate(int index) {
  TMenuEntry entry;
  if (!TMenuTable::Instance().Get(fLevels.back()->Menu, index, &entry) || entry.IsSeparator ||
      !entry.IsEnabled)
    return;
  if (!entry.SubMenu) return Finish(entry.Command);
  OpenSub(index);
  MoveHot(1);
}

void THeadlessMenuSession::MoveHot(int step) {
  if (fLevels.empty()) return;
  THeadlessMenuLevel& level = *fLevels.back();
  const std::vector<TMenuEntry> entries = TMenuTable::Instance().GetEntries(level.Menu);
  const int count = static_cast<int>(entries.size());
  int index = level.Hot < 0 && step < 0 ? 0 : level.Hot;
  for (int tries = 0; tries < count; ++tries) {
    index = (index + step + count) % count;
    if (entries[static_cast<std::size_t>(index)].IsSeparator) continue;
    level.SetHot(index);
    return;
  }
}

void THeadlessMenuSession::Letter(char16_t character) {
  const char16_t wanted = LowerCase(TStringView(&character, 1)).front();
  const std::vector<TMenuEntry> entries = TMenuTable::Instance().GetEntries(fLevels.back()->Menu);
  const auto byMark = [&](const TMenuEntry& entry) { return MenuMnemonic(entry.Text) == wanted; };
  const auto byStart = [&](const TMenuEntry& entry) {
    const TString caption = LowerCase(MenuCaption(entry.Text));
    return !caption.empty() && caption.front() == wanted;
  };
  auto found = std::find_if(entries.begin(), entries.end(), byMark);
  if (found == entries.end()) found = std::find_if(entries.begin(), entries.end(), byStart);
  if (found != entries.end())
    Activate(static_cast<int>(found - entries.begin()));
  else
    AskForLetter(character);
}

/// A menu that draws its own entries knows their letters.
void THeadlessMenuSession::AskForLetter(char16_t character) {
  const HMENU menu = fLevels.back()->Menu;
  THeadlessWindow* const owner = fDesktop.FindWindow(fOwner);
  if (!owner) return;
  const auto answer = static_cast<DWORD>(owner->Send(
      WM_MENUCHAR, character | (WPARAM{MF_POPUP} << 16), reinterpret_cast<LPARAM>(menu)));
  if (fFinished || fLevels.empty() || fLevels.back()->Menu != menu) return;
  const int index = static_cast<int>(answer & 0xFFFF);
  if ((answer >> 16) == DWORD{MNC_EXECUTE}) Activate(index);
  if ((answer >> 16) == DWORD{MNC_SELECT}) fLevels.back()->SetHot(index);
}

void THeadlessMenuSession::Key(const THeadlessInput& input) {
  if (fFinished || fLevels.empty() || input.Key == TKeyAction::Up) return;
  if (input.Key == TKeyAction::Char) return Letter(input.Char);
  const int hot = fLevels.back()->Hot;
  TMenuEntry entry;
  const bool any = TMenuTable::Instance().Get(fLevels.back()->Menu, hot, &entry);
  switch (input.VirtualKey) {
    case vkUp:
      return MoveHot(-1);
    case vkDown:
      return MoveHot(1);
    case vkReturn:
      return Activate(hot);
    case vkRight:
      if (any && entry.SubMenu) Activate(hot);
      return;
    case vkLeft:
    case vkEscape:
      if (fLevels.size() > 1)
        CloseBelow(fLevels.size() - 1);
      else if (input.VirtualKey == vkEscape)
        Finish(0);
      return;
    case vkMenu:
    case vkF10:
      return Finish(0);
    default:
      break;
  }
  const char16_t character = CharOfKey(input.VirtualKey, {});
  if (character > u' ') Letter(character);
}

void THeadlessMenuSession::Mouse(const THeadlessInput& input) {
  if (fFinished || fLevels.empty()) return;
  const TPoint point = fDesktop.GetCursorPos();
  std::size_t at = fLevels.size();
  while (at > 0 && !fLevels[at - 1]->GetScreenRect().Contains(point)) --at;
  if (at == 0) {
    if (input.Mouse == TMouseAction::Down) Finish(0);
    return;
  }
  const int index = fLevels[at - 1]->EntryAt(point);
  if (input.Mouse == TMouseAction::Move) {
    if (fLevels[at - 1]->Hot == index) return;
    CloseBelow(at);
    OpenSub(index);
  } else if (input.Mouse == TMouseAction::Up && input.Button != mbMiddle) {
    if (at == fLevels.size()) Activate(index);
  }
}

UINT THeadlessMenuSession::Run() {
  if (!fFinished && fDesktop.OnMenu) fDesktop.OnMenu(*this);
  TString path;
  if (!fFinished && fDesktop.TakeMenuChoice(&path) && !Choose(path)) {
    if (!path.empty())
      fDesktop.Complain(u"The menu has no entry \"" + path + u"\" that can be chosen.");
    Cancel();
  }
  try {
    fDesktop.RunLoop([this] { return fFinished; }, u"The menu");
  } catch (const EInvalidOperation&) {
    Cancel();  // the complaint tells why
  }
  return fResult;
}

// --- the widget set ----------------------------------------------------------

bool THeadlessDesktop::TakeMenuChoice(TString* path) {
  if (fMenuChoices.empty()) return false;
  *path = std::move(fMenuChoices.front());
  fMenuChoices.pop_front();
  return true;
}

HMENU THeadlessDesktop::CreateMenu(const TMenuItem& root) {
  const HMENU menu = TMenuTable::Instance().Create();
  FillMenu(menu, root);
  return menu;
}

void THeadlessDesktop::DestroyMenu(HMENU menu) { TMenuTable::Instance().Destroy(menu); }

UINT THeadlessDesktop::TrackMenu(HMENU menu, TPoint screen, TWinControl* owner, HWND ownerWindow) {
  if (!TMenuTable::Instance().IsMenu(menu)) return 0;
  StopHint();
  EndCapture();
  THeadlessMenuSession session(*this, menu, screen, owner, ownerWindow);
  return session.Run();
}

UINT TrackMenuBar(THeadlessForm& form, int entry, TPoint screen) {
  if (!form.GetMenu()) return 0;
  THeadlessDesktop& desktop = form.GetDesktop();
  const TMenuItem* const item = form.GetMenu()->Items().GetItem(entry);
  const HMENU menu = form.GetMenu()->GetHandle();
  for (const TMenuEntry& found : TMenuTable::Instance().GetEntries(menu)) {
    if (found.Command != item->GetCommand() || found.IsSeparator) continue;
    if (!found.SubMenu) return found.Command;
    const TLifeGuard guard = form.Guard();
    FillLate(found);
    if (!guard.IsAlive()) return 0;
    return desktop.TrackMenu(found.SubMenu, screen, &form.GetForm(), form.GetHandle());
  }
  return 0;
}

}  // namespace oak
