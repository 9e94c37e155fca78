// Sizes and offsets that the shell's binary interface fixes. The same table is compiled against the
// system's own headers on Windows.
#include <gtest/gtest.h>

#include <cstddef>

#include "oak/platform/shell_api.h"
#include "oak/platform/shell_api_drag.h"
#include "oak/platform/shell_api_images.h"

#define SIZE_OF(type, bytes) static_assert(sizeof(type) == (bytes))
#define OFFSET_OF(type, member, bytes) static_assert(offsetof(type, member) == (bytes))

SIZE_OF(WIN32_FIND_DATAW, 592);
OFFSET_OF(WIN32_FIND_DATAW, nFileSizeHigh, 28);
OFFSET_OF(WIN32_FIND_DATAW, cFileName, 44);
OFFSET_OF(WIN32_FIND_DATAW, cAlternateFileName, 564);
SIZE_OF(WIN32_FILE_ATTRIBUTE_DATA, 36);
SIZE_OF(BY_HANDLE_FILE_INFORMATION, 52);
SIZE_OF(OSVERSIONINFOW, 276);
SIZE_OF(OSVERSIONINFOEXW, 284);
SIZE_OF(MSG, 48);
SIZE_OF(SYSTEMTIME, 16);
SIZE_OF(TIME_ZONE_INFORMATION, 172);

SIZE_OF(STRRET, 272);
OFFSET_OF(STRRET, pOleStr, 8);
SIZE_OF(SHELLDETAILS, 280);
OFFSET_OF(SHELLDETAILS, str, 8);
SIZE_OF(EXTRASEARCH, 4344);
SIZE_OF(SHFILEINFOW, 696);
OFFSET_OF(SHFILEINFOW, szDisplayName, 16);
OFFSET_OF(SHFILEINFOW, szTypeName, 536);
SIZE_OF(KNOWNFOLDER_DEFINITION, 112);
OFFSET_OF(KNOWNFOLDER_DEFINITION, fidParent, 24);
OFFSET_OF(KNOWNFOLDER_DEFINITION, ftidType, 96);
SIZE_OF(SHITEMID, 3);
SIZE_OF(ITEMIDLIST, 3);

SIZE_OF(STATSTG, 80);
OFFSET_OF(STATSTG, mtime, 24);
OFFSET_OF(STATSTG, clsid, 56);
SIZE_OF(BIND_OPTS, 16);
SIZE_OF(FORMATETC, 32);
OFFSET_OF(FORMATETC, tymed, 24);
SIZE_OF(STGMEDIUM, 24);
SIZE_OF(DROPFILES, 20);
OFFSET_OF(DROPFILES, fWide, 16);
SIZE_OF(FILEDESCRIPTORA, 332);
SIZE_OF(FILEDESCRIPTORW, 592);
OFFSET_OF(FILEDESCRIPTORW, cFileName, 72);
OFFSET_OF(FILEGROUPDESCRIPTORW, fgd, 4);
SIZE_OF(CIDA, 8);
SIZE_OF(IMAGEINFO, 40);
SIZE_OF(IMAGELISTDRAWPARAMS, 88);
OFFSET_OF(IMAGELISTDRAWPARAMS, crEffect, 80);
SIZE_OF(SHDRAGIMAGE, 32);

SIZE_OF(CMINVOKECOMMANDINFO, 56);
SIZE_OF(CMINVOKECOMMANDINFOEX, 104);
OFFSET_OF(CMINVOKECOMMANDINFOEX, lpVerbW, 64);
OFFSET_OF(CMINVOKECOMMANDINFOEX, ptInvoke, 96);
SIZE_OF(SHELLEXECUTEINFOW, 112);
OFFSET_OF(SHELLEXECUTEINFOW, lpIDList, 64);
OFFSET_OF(SHELLEXECUTEINFOW, hProcess, 104);
SIZE_OF(SHQUERYRBINFO, 24);
SIZE_OF(SHELLSTATEW, 32);
SIZE_OF(SHChangeNotifyEntry, 12);
SIZE_OF(SORTCOLUMN, 24);
SIZE_OF(PROPVARIANT, 24);
SIZE_OF(VARIANT, 24);

namespace {

// The place of a virtual method in its table, as the compilers in use here keep it in a pointer to
// a member.
template <class TMethod>
std::ptrdiff_t SlotOf(TMethod method) {
  std::ptrdiff_t words[sizeof(TMethod) / sizeof(std::ptrdiff_t)];
  static_assert(sizeof words == sizeof method);
  __builtin_memcpy(words, &method, sizeof method);
  return (words[0] - 1) / static_cast<std::ptrdiff_t>(sizeof(void*));
}

struct TSlot {
  const char* name;
  std::ptrdiff_t actual;
  std::ptrdiff_t published;
};

#define SLOT(Interface, Method, place) \
  { #Interface "::" #Method, SlotOf(&Interface::Method), place }

// For each interface a method in the middle and the last one.
const TSlot Slots[] = {
    SLOT(ISequentialStream, Write, 4),
    SLOT(IStream, CopyTo, 7),
    SLOT(IStream, Clone, 13),
    SLOT(IStorage, EnumElements, 11),
    SLOT(IStorage, RenameElement, 13),
    SLOT(IStorage, Stat, 17),
    SLOT(IBindCtx, RegisterObjectParam, 9),
    SLOT(IBindCtx, GetObjectParam, 10),
    SLOT(IBindCtx, RevokeObjectParam, 12),
    SLOT(IPersistFile, Load, 5),
    SLOT(IPersistFile, GetCurFile, 8),
    SLOT(IPropertyBag, Write, 4),
    SLOT(IDataObject, SetData, 7),
    SLOT(IDataObject, EnumDAdvise, 11),
    SLOT(IDropTarget, Drop, 6),
    SLOT(IPersistFolder2, GetCurFolder, 5),
    SLOT(IEnumIDList, Clone, 6),
    SLOT(IShellFolder, BindToObject, 5),
    SLOT(IShellFolder, CompareIDs, 7),
    SLOT(IShellFolder, GetDisplayNameOf, 11),
    SLOT(IShellFolder, SetNameOf, 12),
    SLOT(IShellView, Refresh, 8),
    SLOT(IShellView, GetItemObject, 15),
    SLOT(IShellFolder2, GetDetailsEx, 17),
    SLOT(IShellFolder2, MapColumnToSCID, 19),
    SLOT(IShellIconOverlay, GetOverlayIconIndex, 4),
    SLOT(IQueryInfo, GetInfoTip, 3),
    SLOT(IContextMenu, GetCommandString, 5),
    SLOT(IContextMenu3, HandleMenuMsg2, 7),
    SLOT(IShellLinkW, GetIDList, 4),
    SLOT(IShellLinkW, SetPath, 20),
    SLOT(IKnownFolder, GetIDList, 8),
    SLOT(IKnownFolder, GetFolderDefinition, 11),
    SLOT(IKnownFolderManager, GetFolder, 6),
    SLOT(IKnownFolderManager, FindFolderFromIDList, 11),
    SLOT(IKnownFolderManager, Redirect, 12),
    SLOT(IFileSystemBindData, GetFindData, 4),
    SLOT(IShellItem, GetDisplayName, 5),
    SLOT(IShellItem, Compare, 7),
    SLOT(IShellItem2, GetProperty, 13),
    SLOT(IShellItem2, GetBool, 20),
    SLOT(IShellItemArray, GetItemAt, 8),
    SLOT(IShellItemArray, EnumItems, 9),
    SLOT(IShellLibrary, GetDefaultSaveFolder, 9),
    SLOT(IShellLibrary, SaveInKnownFolder, 19),
    SLOT(IPropertyStore, GetValue, 5),
    SLOT(IPropertyStore, Commit, 7),
    SLOT(IPropertyDescription, GetDisplayName, 6),
    SLOT(IPropertyDescription, GetDisplayType, 11),
    SLOT(IPropertyDescription, FormatForDisplay, 22),
    SLOT(IPropertyDescription, IsValueCanonical, 23),
    SLOT(IPropertySystem, EnumeratePropertyDescriptions, 6),
    SLOT(IPropertySystem, RefreshPropertySchema, 11),
    SLOT(ICondition, GetConditionType, 8),
    SLOT(ICondition, Clone, 14),
    SLOT(ISearchFolderItemFactory, SetScope, 11),
    SLOT(ISearchFolderItemFactory, GetIDList, 14),
    SLOT(IConditionFactory, Resolve, 6),
    SLOT(IQuerySolution, GetQuery, 7),
    SLOT(IQueryParser, RestatePropertyValueToString, 10),
    SLOT(IQueryParserManager, SetOption, 5),
    SLOT(IImageList, GetIcon, 10),
    SLOT(IImageList, GetIconSize, 16),
    SLOT(IImageList, GetOverlayImage, 31),
    SLOT(IDropTargetHelper, Show, 7),
    SLOT(IDragSourceHelper, InitializeFromWindow, 4),
};

TEST(Layout, MethodsStandAtTheirPublishedPlaces) {
  for (const TSlot& slot : Slots) EXPECT_EQ(slot.actual, slot.published) << slot.name;
}

}  // namespace
