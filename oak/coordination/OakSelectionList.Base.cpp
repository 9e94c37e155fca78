// TOakBaseSelectionList: entries, events and the ini file.
#include "oak/coordination/OakSelectionList.h"
#include "oak/framework/Events.h"
#include "oak/framework/IniFile.h"

namespace oak {
namespace {

/// The text of a key that was written with an empty value: all before the last "=" of its line.
/// TIniFile itself ends a key at the first one, and paths may have some.
TString EntryOfLine(TStringView pLine) {
  const TString line = Trim(pLine);
  if (line.ends_with(u'=')) return Trim(TStringView(line).substr(0, line.size() - 1));
  const std::size_t separator = line.find(u'=');
  return separator == TString::npos ? TString() : Trim(TStringView(line).substr(0, separator));
}

bool IsSectionLine(TStringView pLine, TString& pName) {
  const TString line = Trim(pLine);
  if (!line.starts_with(u'[') || !line.ends_with(u']')) return false;
  pName = Trim(TStringView(line).substr(1, line.size() - 2));
  return true;
}

void ReadEntries(const TIniFile& pFile, TStringView pSection, TStringList& pEntries) {
  TStringList lines;
  lines.SetText(pFile.GetText());
  const TString wanted = Trim(pSection);
  bool isInside = false;
  TString name;
  for (const TString& line : lines) {
    if (IsSectionLine(line, name)) {
      isInside = SameText(name, wanted);
    } else if (isInside && !TrimLeft(line).starts_with(u';')) {
      const TString entry = EntryOfLine(line);
      if (!entry.empty()) pEntries.Add(entry);
    }
  }
}

}  // namespace

TOakBaseSelectionList::TOakBaseSelectionList(TComponent* AOwner) : TOakBaseComponent(AOwner) {}

TOakBaseSelectionList::~TOakBaseSelectionList() { fLife.reset(); }

void TOakBaseSelectionList::SetParent(TComponent* pParent) {
  if (fParent) RemoveFreeNotification(fParent);
  fParent = pParent;
  if (fParent) FreeNotification(fParent);
}

void TOakBaseSelectionList::Notification(TComponent* pComponent, TOperation pOperation) {
  TOakBaseComponent::Notification(pComponent, pOperation);
  if (pOperation == opRemove && pComponent == fParent) fParent = nullptr;
}

// --- changes -------------------------------------------------------------------

void TOakBaseSelectionList::Modify(const std::function<void()>& pBody) {
  bool isOutermost = false;
  {
    const TLock lock(fChangeLock);
    struct TDepth {
      int& Depth;
      explicit TDepth(int& depth) : Depth(depth) { ++Depth; }
      ~TDepth() { --Depth; }
    };
    const TDepth depth(fChangeDepth);
    pBody();
    isOutermost = fChangeDepth == 1;
    if (isOutermost && fUpdateCount == 0) BeforeUpdateEnds();
  }
  if (isOutermost) FireNoted();
}

void TOakBaseSelectionList::FireNoted() {
  bool isChanged = false;
  bool isCompleted = false;
  TStringArray invalidPaths;
  {
    const TLock lock(fChangeLock);
    invalidPaths.swap(fInvalidPaths);
    isCompleted = std::exchange(fIsCompleted, false);
    if (fUpdateCount == 0) isChanged = std::exchange(fIsChanged, false);
  }
  const TLifeGuard guard{fLife};
  AfterChange();
  if (!guard.IsAlive()) return;
  for (const TString& path : invalidPaths) {
    FireEvent(OnInvalidPath, this, TStringView(path));
    if (!guard.IsAlive()) return;
  }
  if (isCompleted) DoCompletedCalculateFiles();
  if (guard.IsAlive() && isChanged) FireEvent(OnChange, this);
}

void TOakBaseSelectionList::BeginUpdate() {
  const TLock lock(fChangeLock);
  ++fUpdateCount;
}

void TOakBaseSelectionList::EndUpdate() {
  Modify([this] {
    if (fUpdateCount > 0) --fUpdateCount;
  });
}

void TOakBaseSelectionList::NoteInvalidPath(TStringView pPath) {
  fInvalidPaths.emplace_back(pPath);
}

bool TOakBaseSelectionList::AddEntry(TStringView pEntry) {
  const TLock lock(fLockObj);
  if (!fEntries.Add(pEntry)) return false;
  fIsListValid = false;
  Changed();
  return true;
}

bool TOakBaseSelectionList::RemoveEntry(TStringView pEntry) {
  const TLock lock(fLockObj);
  if (!fEntries.Remove(pEntry)) return false;
  fIsListValid = false;
  Changed();
  return true;
}

bool TOakBaseSelectionList::RenameEntries(TStringView pOldPath, TStringView pNewPath) {
  const TLock lock(fLockObj);
  if (!fEntries.Rename(pOldPath, pNewPath)) return false;
  fIsListValid = false;
  Changed();
  return true;
}

void TOakBaseSelectionList::ClearEntries() {
  const TLock lock(fLockObj);
  if (fEntries.IsEmpty()) return;
  fEntries.Clear();
  fIsListValid = false;
  Changed();
}

void TOakBaseSelectionList::ClearTotals() noexcept {
  FSize = 0;
  FFileCount = 0;
  FFolderCount = 0;
}

void TOakBaseSelectionList::Clear() {
  Modify([this] {
    ClearEntries();
    ClearTotals();
  });
}

void TOakBaseSelectionList::Assign(const TPersistent* pSelectionList) {
  const auto* other = dynamic_cast<const TOakBaseSelectionList*>(pSelectionList);
  if (!other) return TOakBaseComponent::Assign(pSelectionList);
  if (other == this) return;
  const TStringArray entries =
      other->Ask([](const TSelectionEntries& theirs) { return theirs.ToArray(); });
  Modify([&] {
    ClearEntries();
    for (const TString& entry : entries) AddEntry(entry);
    FSize = other->FSize;
    FFileCount = other->FFileCount;
    FFolderCount = other->FFolderCount;
  });
}

// --- reading -----------------------------------------------------------------------

bool TOakBaseSelectionList::IsEmpty() const {
  return Ask([](const TSelectionEntries& entries) { return entries.IsEmpty(); });
}

int TOakBaseSelectionList::GetCount() const {
  return Ask([](const TSelectionEntries& entries) { return entries.GetCount(); });
}

TString TOakBaseSelectionList::GetListItem(int index) const {
  const TOakPathList& paths = GetPaths();
  return index >= 0 && index < paths.GetCount() ? paths[index] : TString();
}

const TOakPathList& TOakBaseSelectionList::GetPaths() const {
  const TLock lock(fLockObj);
  if (!fIsListValid) {
    fList.Clear();
    fList.AddStrings(fEntries.ToArray());
    fIsListValid = true;
  }
  return fList;
}

void TOakBaseSelectionList::SetPaths(const TStrings& pPaths) {
  const TStringArray paths = pPaths.ToArray();
  Modify([&] {
    Clear();
    for (const TString& path : paths) AddPathToSelection(path);
  });
}

// --- ini file ------------------------------------------------------------------------

void TOakBaseSelectionList::SaveToIniFile(const TString& sFileName, TStringView section) {
  const TStringArray paths =
      Ask([](const TSelectionEntries& entries) { return entries.ToArray(); });
  TIniFile file(sFileName);
  file.EraseSection(section);
  // A path may be the start of another one up to a "=" in that: appended, none replaces the other.
  for (const TString& path : paths) file.AppendKey(section, path);
  file.UpdateFile();
}

void TOakBaseSelectionList::LoadFromIniFile(const TString& sFileName, TStringView section) {
  TStringList entries;
  ReadEntries(TIniFile(sFileName), section, entries);
  SetPaths(entries);
}

}  // namespace oak
