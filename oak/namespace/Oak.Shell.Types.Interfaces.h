// The interfaces that the whole library shares. Included through
// Oak.Shell.Types.h.
#pragma once

#include <functional>
#include <span>
#include <vector>

#include "oak/base/InterfacedObject.h"
#include "oak/base/Pidl.h"
#include "oak/namespace/Oak.Shell.Types.Enums.h"

struct IDataObject;
struct IShellItem;
struct IShellItemArray;

namespace oak {

class TObject;
class TStrings;
class TShellCommand;
class TShellColumnId;
class TShellPropertyValue;

/// An object on which a command can be carried out.
struct ICommandInvokable : IUnknown {
  static constexpr GUID Iid{
      0xF5E12043, 0x9E60, 0x4F69, {0x81, 0xCF, 0x85, 0x7C, 0xAA, 0x11, 0xA9, 0x76}};
  /// True if the command was carried out.
  virtual bool InvokeCommand(const TShellCommand& pCommand) = 0;
};

/// An object on which a command can be carried out with user interface.
struct IUICommandInvokable : IUnknown {
  static constexpr GUID Iid{
      0xDA8D76D1, 0x6AA7, 0x4C35, {0x88, 0x1A, 0x6B, 0x6A, 0x0C, 0xC4, 0x32, 0x25}};
  virtual bool InvokeUICommand(const TShellCommand& pCommand) = 0;
};

/// A file that is deleted with the last reference.
struct ITemporaryFile : IUnknown {
  static constexpr GUID Iid{
      0x98337730, 0x4656, 0x4E36, {0xAA, 0x68, 0x53, 0x56, 0xB2, 0x18, 0x09, 0x6D}};
  virtual TString GetFilePath() = 0;
};

/// Values of an object by column.
struct IMetaDataFormatter : IUnknown {
  static constexpr GUID Iid{
      0x28A34D5C, 0xC06F, 0x4545, {0xAE, 0xF8, 0x46, 0x45, 0xBE, 0x57, 0x0B, 0x9A}};
  /// As the user reads it; empty without a value.
  virtual TString GetFormattedString(const TShellColumnId& pShellColumnId) = 0;
  /// As a whole number; 0 without a value.
  virtual std::int64_t GetPlainValue(const TShellColumnId& pShellColumnId) = 0;
};

/// Values of an object as variants.
struct IVariantMetaDataProvider : IUnknown {
  static constexpr GUID Iid{
      0xB50A43C2, 0xF0C0, 0x437D, {0x9B, 0x37, 0xAD, 0xCD, 0x7E, 0xFC, 0xB7, 0xFB}};
  virtual TShellPropertyValue GetVariantValue(const TShellColumnId& pShellColumnId) = 0;
};

/// One object of the shell namespace: an absolute item identifier list, a path
/// and, where allowed, a cached shell item, each found when first needed.
///
/// Reference counted; may be held and read by any thread. Reading operations do
/// not raise: they give empty, false or nil. Changing ones say what they raise.
/// Reload and Rename change what all holders of the item see.
struct IItemIdList : ICommandInvokable {
  static constexpr GUID Iid{
      0xA2D3665D, 0x67FB, 0x4EF0, {0xBD, 0x8E, 0xBB, 0x58, 0x15, 0x04, 0x87, 0xDF}};

  /// This list followed by another; nil gives the item itself.
  virtual Ref<IItemIdList> Concat(const Ref<IItemIdList>& pItemIdList2) = 0;
  /// The first elements as a list of their own: 0 gives the root, Depth or more
  /// the whole list. Raises EInvalidArgument for a negative count.
  virtual Ref<IItemIdList> GetStartItemIdList(int pFragments) = 0;
  /// The list without its last element. Raises EFolderTrekError for an invalid
  /// item and for the root.
  virtual Ref<IItemIdList> GetParent() = 0;
  /// The last element alone, relative to the parent.
  virtual Ref<IItemIdList> GetLastPart() = 0;
  /// Whether both are the same place (ilcDisplay: two paths decide alone) or the
  /// same object (ilcExact).
  virtual bool Equals(const Ref<IItemIdList>& pItemIdList2, TItemIdListComparison pComparison) = 0;
  /// 0 for equal; any other value only says "different", in no order to rely on.
  virtual int CompareTo(const Ref<IItemIdList>& pItemIdList2,
                        TItemIdListComparison pComparison) = 0;
  /// The pidl, resolved if needed, nil for an invalid item. Owned by the item;
  /// valid until Reload, Rename or the last reference.
  virtual PItemIdList WindowsPointer() = 0;
  /// The file-system path or the text that the item was made from, or empty.
  virtual TString Path() = 0;
  /// Number of elements; 0 for the root and for an invalid item.
  virtual int Depth() = 0;
  /// Whether there is no such object. Resolves the item.
  virtual bool IsInvalid() = 0;
  virtual TOakShellFolder SpecialFolder() = 0;
  virtual bool IsSpecialFolder(TOakShellFolder pSpecialFolderToCheck) = 0;
  virtual TString DisplayName(TItemIdListDisplayNameFormat pDisplayFormat) = 0;
  /// File name of the object.
  virtual TString Name() = 0;
  /// DisplayName(dnfPreferPhysical), or the text that could not be resolved.
  virtual TString DisplayPath() = 0;
  /// What a link points to; the item itself if it is no link or leads nowhere.
  virtual Ref<IItemIdList> LinkTarget() = 0;
  /// The platform's item, nil if invalid. Cached on the main thread only.
  virtual Ref<IShellItem> ShellItem() = 0;
  virtual bool IsParentOf(const Ref<IItemIdList>& pChildItemIdList, bool pAcceptsEquals,
                          TItemIdListComparison pComparisonType) = 0;
  virtual bool IsFolder() = 0;
  /// False for a single element that is no known folder: such a list is relative.
  virtual bool IsAbsolute() = 0;
  /// Whether the item is to be kept away from the main thread.
  virtual bool IsSlow() = 0;
  /// Whether resolving was tried. Does not resolve.
  virtual bool IsResolved() = 0;
  /// Whether at least one of the SFGAO_ bits is set.
  virtual bool HasAttributes(DWORD pAttributes) = 0;
  /// Asks the shell again for the item; true if it could be refreshed.
  virtual bool Reload() = 0;
  virtual TShellPropertyValue GetPropertyValue(const TShellColumnId& pShellColumnId) = 0;
  /// Display texts of the columns: the first non-empty one, or all, one a line.
  virtual TString GetShellInformation(std::span<const TShellColumnId> pSHColumns,
                                      bool pFirstOnly) = 0;
  /// Writes a property to the object. Raises EFolderTrekError.
  virtual void SetPropertyValue(const TShellColumnId& pKey, const TShellPropertyValue& pValue) = 0;
  /// Makes a folder in this one; a taken name gets " (1)", " (2)", ... Raises
  /// EFolderTrekError.
  virtual Ref<IItemIdList> CreateNewFolder(TStringView pNewFolderName) = 0;
  /// Renames the object; with a window the shell may ask the user. Raises
  /// EFolderTrekError.
  virtual void Rename(TStringView pNewName, HWND pWindowHandle, bool pUpdatePidl) = 0;
};

template <>
struct TInterfaceAncestors<IItemIdList> {
  using Types = TInterfaceList<ICommandInvokable>;
};

/// Several items treated as one selection: absolute, or relative to the collection's folder.
/// One thread at a time. Commands are carried out on the thread of the shell's user interface.
struct IItemIdListCollection : ICommandInvokable {
  static constexpr GUID Iid{
      0xA326E410, 0x66A9, 0x4670, {0xB4, 0x8C, 0x5A, 0x4A, 0x9D, 0x86, 0xA2, 0xA3}};
  /// An absolute path, or a name relative to the collection's folder.
  virtual void Add(TStringView pPath) = 0;
  virtual void Add(const Ref<IItemIdList>& pItemIdList) = 0;
  virtual void Add(const Ref<IItemIdListCollection>& pList) = 0;
  /// A path or name each.
  virtual void AddStrings(const TStrings& pStrings) = 0;
  virtual void Clear() = 0;
  virtual int Count() = 0;
  /// Nil outside 0..Count-1.
  virtual Ref<IItemIdList> GetItem(int pIndex) = 0;
  /// Appends the items to another collection, made absolute.
  virtual void CopyTo(const Ref<IItemIdListCollection>& pList) = 0;
  /// Gives the formats of the items' data object to another one. Raises EFolderTrekError.
  virtual void CopyTo(IDataObject* pTarget) = 0;
  /// Whether the items lie in one folder; true for fewer than two. Raises EFolderTrekError for
  /// items without a parent.
  virtual bool HaveSameParent() = 0;
  /// Whether there is more than one file extension, in any case of letters. A folder has none.
  virtual bool HasMultipleFileTypes() = 0;
  /// The deepest item that all others lie in; the root of the namespace if they share no more, nil
  /// for an empty collection. Of a single item it is the parent.
  virtual Ref<IItemIdList> GetLongestCommonAncestor() = 0;
  /// The valid items as the platform's array, nil without any. Raises EOleSysError.
  virtual Ref<IShellItemArray> GetShellItemArray() = 0;
  /// An object of the shell for all items; those of several folders have a data object and a
  /// context menu. Raises EFolderTrekError.
  virtual Ref<IUnknown> GetUIObject(REFIID pInterfaceID) = 0;
  /// The pidls of the valid items as they are, owned by the items.
  virtual std::vector<PItemIdList> ToPItemIdListArray() = 0;
  /// The paths, one a line.
  virtual TString ToString() = 0;
};

template <>
struct TInterfaceAncestors<IItemIdListCollection> {
  using Types = TInterfaceList<ICommandInvokable>;
};

using TItemIdListEvent = std::function<void(TObject* Sender, const Ref<IItemIdList>& pItemIdList)>;

}  // namespace oak
