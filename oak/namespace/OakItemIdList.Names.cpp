// Paths and names of items.
#include <algorithm>
#include <iterator>

#include "oak/namespace/FolderTrek.Paths.h"
#include "oak/namespace/Oak.Shell.Types.h"
#include "oak/namespace/OakItemIdList.State.h"
#include "oak/namespace/Shell_Win32.h"

namespace oak {
namespace {

// Longest path of the system in characters, without and with its end.
constexpr DWORD kMaxPath = 32767;
constexpr int kWholePath = 0;  // no 8.3 names, no UNC printers

bool IsPlainPath(TStringView path) {
  return path != UnknownPath && Contains(path, u"\\") && !Contains(path, u"::") &&
         !StartsText(u"file:", path);
}

TString PathFromSystem(PItemIdList pidl) {
  // On the stack and not cleared: this runs for every object of a listing.
  WCHAR buffer[kMaxPath + 1];
  buffer[0] = 0;
  if (Api().SHGetPathFromIDListEx &&
      Api().SHGetPathFromIDListEx(pidl, buffer, kMaxPath, kWholePath))
    return FromW(buffer);
  buffer[0] = 0;
  return Api().SHGetPathFromIDListW(pidl, buffer) ? FromW(buffer) : TString();
}

TString NameOf(IShellItem* item, SIGDN form) {
  TTaskMemory<WCHAR> name;
  if (!item || FAILED(item->GetDisplayName(form, name.Put())) || !name) return {};
  return TakeText(name);
}

SIGDN FormOf(TItemIdListDisplayNameFormat format) {
  switch (format) {
    case dnfInFolder:
      return SIGDN_PARENTRELATIVE;
    case dnfPath:
      return SIGDN_DESKTOPABSOLUTEEDITING;
    case dnfPhysicalPath:
      return SIGDN_FILESYSPATH;
    case dnfRelativeForAddressBar:
      return SIGDN_PARENTRELATIVEFORADDRESSBAR;
    case dnfRelativeParsing:
      return SIGDN_PARENTRELATIVEPARSING;
    case dnfAbsoluteParsing:
      return SIGDN_DESKTOPABSOLUTEPARSING;
    default:
      return SIGDN_NORMALDISPLAY;
  }
}

}  // namespace

TString TOakItemIdList::Path() {
  const TItemText* seen = fPath.load(std::memory_order_acquire);
  const TStringView path = TItemText::ViewOf(seen);
  if (path.empty() || IsPlainPath(path)) return TString(path);
  return ComputePath(seen);
}

TString TOakItemIdList::ComputePath(const TItemText* pSeen) {
  const TStringView seen = TItemText::ViewOf(pSeen);
  PItemIdList pidl = WindowsPointer();
  TString path;
  if (pidl)
    path = Fenced(TString(), [&] { return PathOfPidl(pidl); });
  else if (seen != UnknownPath)
    path = seen;
  if (path == seen) return path;
  auto retired = std::make_unique<TRetiredState>();
  const TItemText* text = TItemText::Make(path);
  if (!fPath.compare_exchange_strong(pSeen, text, std::memory_order_acq_rel)) {
    TItemText::Free(text);  // Another thread was first.
    return path;
  }
  if (pSeen != TItemText::Unknown()) retired->fText = pSeen;
  Retire(std::move(retired));
  // The path of a list that was replaced meanwhile must not stay.
  if (WindowsPointer() != pidl) SetPathField(UnknownPath);
  return path;
}

TString TOakItemIdList::PathOfPidl(PItemIdList pPidl) {
  TString path = PathFromSystem(pPidl);
  if (!path.empty() || PidlDepth(pPidl) < 2) return path;
  path = GetDefaultSavePathFromLibrary(pPidl);
  if (!path.empty()) return path;
  // A server has a name of its own, though nothing of it is a directory.
  path = NameOf(ShellItem().Get(), SIGDN_DESKTOPABSOLUTEEDITING);
  return IsUncServer(path) ? path : TString();
}

TString TOakItemIdList::Name() {
  TString name = NameOf(ShellItem().Get(), SIGDN_FILESYSPATH);
  if (name.empty()) name = Path();
  return !name.empty() && IsDrive(name) ? name : ExtractFileName(name);
}

TString TOakItemIdList::DisplayName(TItemIdListDisplayNameFormat pDisplayFormat) {
  if (pDisplayFormat == dnfPreferPhysical) {
    TString path = Path();
    return path.empty() ? DisplayName(dnfPath) : path;
  }
  if (pDisplayFormat == dnfForExplorer) return NameForExplorer();
  TString name = NameOf(ShellItem().Get(), FormOf(pDisplayFormat));
  // The root of a URL, "scheme://host/".
  if (!name.empty() && name.back() == u'/' && std::count(name.begin(), name.end(), u'/') == 3)
    name.pop_back();
  if (name.empty()) name = pDisplayFormat == dnfPath ? Path() : Name();
  if (pDisplayFormat == dnfPhysicalPath && !name.empty() && name.front() == u'{')
    return DisplayName(dnfPath);
  return name;
}

TString TOakItemIdList::NameForExplorer() {
  TStringArray names;
  const int depth = Depth();
  for (int i = 1; i <= depth; ++i) {
    const Ref<IItemIdList> prefix = GetStartItemIdList(i);
    TString name = prefix->DisplayName(dnfRelativeParsing);
    if (!IsFolderClassId(name) && !IsUSBDevicePath(name)) name = prefix->DisplayName(dnfInFolder);
    names.push_back(std::move(name));
  }
  return Join(names, u"\\");
}

TString TOakItemIdList::DisplayPath() {
  TString path = DisplayName(dnfPreferPhysical);
  if (path.empty() && PathField().size() > 1) path = PathField();
  return path;
}

TString TOakItemIdList::GetInfo(TItemIdListInfoLevel pLevel) {
  const PItemIdList state = fItemIdList.load(std::memory_order_acquire);
  const bool isValid = reinterpret_cast<std::uintptr_t>(state) > kFailed;
  TString text = u"FPath: ";
  text.append(PathField());
  text.append(u", fSpecialFolder: ");
  text.append(TOakShellFolderHelper::ToIdentifier(fSpecialFolder.load(std::memory_order_relaxed)));
  text.append(u", ");
  text.append(isValid ? u"Valid" : state ? u"Invalid" : u"Not Resolved yet");
  if (pLevel != TItemIdListInfoLevel::Verbose || !isValid) return text;
  const int depth = Depth();
  text.append(u", Depth: ").append(IntToStr(depth)).append(u", ");
  for (int i = 0; i <= depth; ++i) {
    if (i > 0) text.append(u"\\");
    text.append(GetStartItemIdList(i)->DisplayName(dnfInFolder));
  }
  return text;
}

}  // namespace oak
