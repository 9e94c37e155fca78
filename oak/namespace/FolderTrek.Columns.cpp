// The columns of the active folder, by number and by identifier.
#include <optional>

#include "oak/base/Pidl.h"
#include "oak/base/Variant.h"
#include "oak/namespace/ErrorMode.h"
#include "oak/namespace/FolderTrek.h"
#include "oak/namespace/Oak.Shell.ControlHelper.h"
#include "oak/namespace/Oak.Shell.ShellColumns.h"
#include "oak/namespace/Oak.Shell.Types.ColumnInfo.h"
#include "oak/namespace/Oak.Shell.Types.PropertyValue.h"
#include "oak/namespace/OakItemIdList.h"
#include "oak/namespace/Shell_Win32.Properties.h"
#include "oak/platform/Api.h"

namespace oak {
namespace {

/// Number of a column that no folder has, and the end of the search over numbers.
constexpr int DriveListColumn = 256;
constexpr int EndOfColumns = 320;

/// The name column is wider than its characters.
constexpr int ExtraNameWidth = 100;
constexpr int UnknownColumnWidth = 120;

/// The text of a STRRET, whose memory is freed, also if the system can't read it.
TString TextOf(STRRET& pText, PCUITEMID_CHILD pPidl) {
  TTaskMemory<WCHAR> text;
  if (SUCCEEDED(Api().StrRetToStrW(&pText, pPidl, text.Put()))) return FromW(text.Get());
  if (pText.uType == STRRET_WSTR) CoTaskMemFree(pText.pOleStr);
  return {};
}

/// Frees the text of details that nobody reads.
void Drop(SHELLDETAILS& pDetails) { TextOf(pDetails.str, nullptr); }

bool IsUtcDate(const TShellColumnId& pColumn) {
  return pColumn == TShellColumns::WriteTime() || pColumn == TShellColumns::CreateTime() ||
         pColumn == TShellColumns::AccessTime();
}

/// A column of unknown state is shown.
bool IsShown(std::optional<DWORD> pState) { return !pState || IsColumnShownAtFirst(*pState); }

}  // namespace

bool TFolderTrek::GetIShellDetails() {
  if (!BindQuietly()) return false;
  if (!fShellFolder2 && !FTriedIshd) {
    FTriedIshd = true;
    fShellFolder2 = FShellFolder.As<IShellFolder2>();
  }
  return true;
}

TShellColumnId TFolderTrek::GetShColumnIdFromColumnNumber(int pColumnNumber) {
  if (!GetIShellDetails() || pColumnNumber < 0) return TShellColumns::Invalid();
  if (pColumnNumber == DriveListColumn) return TShellColumns::OakDriveListFreePercentage();
  PROPERTYKEY key{};
  if (!fShellFolder2 ||
      FAILED(fShellFolder2->MapColumnToSCID(static_cast<UINT>(pColumnNumber), &key)))
    return TShellColumns::Invalid();
  return key;
}

int TFolderTrek::GetIndexOfShColumnId(const TShellColumnId& pColumnID) {
  if (pColumnID == TShellColumns::Invalid()) return -1;
  if (pColumnID == TShellColumns::OakDriveListFreePercentage()) return DriveListColumn;
  if (!GetIShellDetails()) return -1;  // A dead folder is bound in vain once and not 320 times.
  for (int number = 0; number < EndOfColumns; ++number) {
    if (GetShColumnIdFromColumnNumber(number) == pColumnID) return number;
  }
  return -1;
}

// --- texts and values ---------------------------------------------------------------------------

// The folder's own text for a column by number; nullopt if it has none to give.
std::optional<TString> TFolderTrek::DetailsText(int pColumnIndex, bool pHeader) {
  SHELLDETAILS details{};
  const PCUITEMID_CHILD pidl = pHeader ? nullptr : FItemIDList->WindowsPointer();
  if (!fShellFolder2 ||
      FAILED(fShellFolder2->GetDetailsOf(pidl, static_cast<UINT>(pColumnIndex), &details)))
    return std::nullopt;
  return TextOf(details.str, pidl);
}

TString TFolderTrek::GetColumnText(int pColumnIndex, bool pHeader) {
  if (pColumnIndex == 0 && !pHeader) return HasObject() ? GetShellObjectName(true) : TString();
  if (pColumnIndex < 0 || !GetIShellDetails() || (!pHeader && !HasObject())) return {};
  const TErrorMode quiet(SEM_FAILCRITICALERRORS | SEM_NOOPENFILEERRORBOX);
  if (std::optional<TString> text = DetailsText(pColumnIndex, pHeader)) return *std::move(text);
  const TShellColumnId column = GetShColumnIdFromColumnNumber(pColumnIndex);
  // The number of one column is looked for only where this can be it: it takes many calls.
  if (!column.IsValid() ||
      (column == TShellColumns::ElementType() && pColumnIndex == GetIndexOfShColumnId(column)))
    return {};
  // A header by identifier asks by number again, which has just failed, but for our own column.
  return pHeader && pColumnIndex != DriveListColumn ? TString() : GetColumnText(column, pHeader);
}

TString TFolderTrek::GetColumnText(const TShellColumnId& pColumnID, bool pHeader) {
  TVariant ignored;
  return GetColumnText(pColumnID, pHeader, ignored);
}

TString TFolderTrek::GetColumnText(const TShellColumnId& pColumnID, bool pHeader,
                                   TVariant& pColumnVariant) {
  if (pHeader) return GetColumnHeader(pColumnID);
  pColumnVariant = TVariant();
  if (!HasObject()) return {};
  if (GetSpecialFolder() == SF_QUICKACCESS) {
    // What is pinned there has the data of the pin; those of the target are wanted.
    const Ref<IItemIdList> target = GetAbsoluteItemIdList();
    TString text = target->GetShellInformation({&pColumnID, 1}, true);
    pColumnVariant = TVariant::From(text);
    return text;
  }
  const TShellColumnId column = SubstituteMetaData(pColumnID);
  pColumnVariant = GetColumnValue(column);
  return TShellControlHelper::VariantToString(pColumnVariant, column);
}

TString TFolderTrek::GetColumnHeader(const TShellColumnId& pColumnID) {
  if (pColumnID == TShellColumns::OakDriveListFreePercentage())
    return u"% " + GetColumnHeader(TShellColumns::FreeSize());
  const int number = GetIndexOfShColumnId(pColumnID);
  return number < 0 ? TString() : GetColumnText(number, true);
}

TVariant TFolderTrek::GetColumnValue(const TShellColumnId& pColumnID) {
  if (!HasObject()) return {};
  if (pColumnID == TShellColumns::ItemDate()) {
    // A cursor on a bare IShellFolder may not know where it stands.
    const Ref<IItemIdList> item = GetAbsoluteItemIdList();
    return item ? item->GetPropertyValue(pColumnID).ToVariant() : TVariant();
  }
  if (!GetIShellDetails() || !fShellFolder2) return {};
  const PROPERTYKEY key = pColumnID;
  TVariant value;
  if (FAILED(fShellFolder2->GetDetailsEx(FItemIDList->WindowsPointer(), &key, value.Put())))
    return {};
  if (value.GetType() == VT_DATE && IsUtcDate(pColumnID))
    return TVariant::FromDate(UtcToLocalDateTime(value.Get().date));
  return value;
}

double TFolderTrek::GetLastChangeDate() {
  const TVariant value = GetColumnValue(TShellColumns::WriteTime());
  return value.GetType() == VT_DATE ? value.Get().date : 0;
}

// --- looks of columns ---------------------------------------------------------------------------

// nullopt if the folder doesn't tell.
std::optional<DWORD> TFolderTrek::ColumnState(int pColumnIndex) {
  SHCOLSTATEF state = 0;
  if (pColumnIndex < 0 || !GetIShellDetails() || !fShellFolder2 ||
      FAILED(fShellFolder2->GetDefaultColumnState(static_cast<UINT>(pColumnIndex), &state)))
    return std::nullopt;
  return state;
}

DWORD TFolderTrek::GetDefaultColumnState(int pColumnIndex) {
  return ColumnState(pColumnIndex).value_or(0);
}

TAlignment TFolderTrek::GetColumnInfo(int pColumnIndex, int& pWidth) {
  pWidth = UnknownColumnWidth;
  SHELLDETAILS details{};
  if (pColumnIndex < 0 || !GetIShellDetails() || !fShellFolder2 ||
      FAILED(fShellFolder2->GetDetailsOf(nullptr, static_cast<UINT>(pColumnIndex), &details)))
    return taLeftJustify;
  Drop(details);
  pWidth = TShellControlHelper::ScaledPixels(WidthOfCharacters(details.cxChar));
  if (pColumnIndex == 0) pWidth += ExtraNameWidth;
  if (!IsShown(ColumnState(pColumnIndex))) pWidth = 0;
  return AlignmentOfFormat(details.fmt);
}

void TFolderTrek::GetColumnInfo(int pColumnIndex, TColumnInfo& pColumnInfo) {
  if (!CheckIfValid(true))
    throw EInvalidOperation(u"GetColumnInfo() can only be called if a valid folder was set.");
  pColumnInfo = TColumnInfo(pColumnIndex, GetShColumnIdFromColumnNumber(pColumnIndex));
  SHELLDETAILS details{};
  if (pColumnIndex < 0 || !GetIShellDetails() || !fShellFolder2 ||
      FAILED(fShellFolder2->GetDetailsOf(nullptr, static_cast<UINT>(pColumnIndex), &details)))
    return;
  pColumnInfo.fAlignment = static_cast<TAlignment>(details.fmt);
  pColumnInfo.fWidth = WidthOfCharacters(details.cxChar);
  if (pColumnIndex == 0) pColumnInfo.fWidth += ExtraNameWidth;
  pColumnInfo.fTitle = TextOf(details.str, nullptr);
  const std::optional<DWORD> state = ColumnState(pColumnIndex);
  pColumnInfo.fVisibleByDefault = IsShown(state);
  pColumnInfo.fFlags = state.value_or(0);
}

void TFolderTrek::GetColumnInfo(const TShellColumnId& pShellColumn, TColumnInfo& pColumnInfo) {
  pColumnInfo = GetColumnInfoFromPropertySystem(pShellColumn);
}

}  // namespace oak
