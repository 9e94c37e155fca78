// What the portable shell's namespace is made of: the contents of a folder, as
// one interface, and the way to mount further folders.
//
// The shell (IShellFolder, IShellItem, the free functions) is one machinery over
// this interface. File system, drives, network, recycle bin, libraries, scripted
// folders of tests, archives and searches are sources.
//
// Threads: a source may be called by several threads at the same time and guards
// what it changes itself. A cursor is used by one thread at a time. Calls are
// made with no lock of the shell held, so a source may take its time, call the
// shell and mount folders.
//
// Failures: an HRESULT, as the shell is to report it. Throwing is allowed.
#pragma once

#include <cstdint>
#include <span>
#include <vector>

#include "oak/base/InterfacedObject.h"
#include "oak/base/Pidl.h"
#include "oak/base/Text.h"
#include "oak/platform/shell_api.h"

namespace oak {

// --- elements --------------------------------------------------------------
// One element of an item identifier list. It starts with this header, so that
// foreign bytes are told from ours; the rest belongs to the source that made it.
// It has to hold all that is needed to tell name and kind of the object without
// asking the system. An element may be stored and come back in a later process,
// or never have been ours: a source checks every byte before it uses it. Where one
// element is passed, more may follow it in memory; only the first one is meant.
#pragma pack(push, 1)
struct TElementHeader {
  USHORT Size;   // of the whole element, this field included
  USHORT Magic;  // ElementMagic
  BYTE Kind;     // TElementKind, or from ekFirstFree on a kind of the source's own
  BYTE Version;  // layout of the rest, chosen by the source
};
#pragma pack(pop)

inline constexpr USHORT ElementMagic = 0x6B4F;

enum TElementKind : BYTE {
  ekMount = 1,  ///< A mounted folder, by class identifier or by name.
  ekDrive = 2,
  ekServer = 3,
  ekShare = 4,
  ekCategory = 5,  ///< Control panel category.
  ekPinned = 6,    ///< Entry of quick access.
  ekFileSystem = 10,
  ekTrash = 11,
  ekLibrary = 12,
  ekArchive = 13,
  ekSearch = 14,
  ekFirstFree = 64  ///< Kinds of scripted folders and of users.
};

/// The bytes after the header if `element` is a well-formed element of this kind
/// and version, else an empty span with nil data.
std::span<const BYTE> ElementPayload(PCUITEMID_CHILD element, BYTE kind, BYTE version) noexcept;
/// Kind of the first element of a list, 0 if it is none of ours.
BYTE ElementKind(PCUIDLIST_RELATIVE element) noexcept;
/// A list of the one element. Throws EInvalidArgument if it would exceed 64 KB.
TPidl MakeElement(BYTE kind, BYTE version, std::span<const BYTE> payload);
/// For the common case of an element that holds flags and a name, unaligned
/// 16-bit units without a terminator: 4 bytes of flags, then the name.
TPidl MakeNameElement(BYTE kind, BYTE version, DWORD flags, TStringView name);
/// Reads what MakeNameElement wrote; false for anything else.
bool ReadNameElement(PCUITEMID_CHILD element, BYTE kind, BYTE version, DWORD& flags, TString& name);

// --- contents of a folder ---------------------------------------------------

/// Which name of an element is wanted.
enum class TNameForm : std::uint8_t {
  Display,          ///< As shown in its folder.
  Normal,           ///< As shown elsewhere; by default the same.
  Editing,          ///< What a rename starts with.
  Parsing,          ///< Unique in the folder, understood by ParseName.
  AddressBar,       ///< By default Display.
  AbsoluteParsing,  ///< The absolute ones may be left to the shell (S_FALSE):
  AbsoluteEditing,  ///< it joins the parent's and the relative one by "\".
  FileSystemPath
};

/// How a component of a path is parsed.
struct TParseOptions {
  /// Do not look for the object, make an element from this. Its file name counts
  /// only if it is not empty. Nil: the object has to exist.
  const WIN32_FIND_DATAW* FindData = nullptr;
  /// Another component follows.
  bool HasRest = false;
};

/// A column that the folder shows.
struct TFolderColumn {
  PROPERTYKEY Key;
  TString Title;
  UINT Width = 20;           ///< In characters.
  int Format = 0;            ///< LVCFMT_
  DWORD State = 0x1 | 0x10;  ///< SHCOLSTATE_: a text, shown by default.
};

/// The objects of a folder, one after the other, as the system delivers them.
struct IFolderCursor : IUnknown {
  static constexpr GUID Iid{
      0x0C1A3B5E, 0x5C2D, 0x4B0C, {0x9E, 0x42, 0x7D, 0x11, 0x60, 0x3B, 0x52, 0xA1}};
  /// S_OK and a list of one element, valid until the next call; S_FALSE at the end.
  virtual HRESULT Next(PCUITEMID_CHILD* element) = 0;
};

/// The contents of one folder. Implement it through TFolderSource, which answers
/// all but the first group.
struct IFolderSource : IUnknown {
  static constexpr GUID Iid{
      0x4E0D5A11, 0x2A68, 0x4C52, {0x8F, 0x0B, 0x34, 0xA9, 0x7C, 0xE2, 0x15, 0xD6}};

  /// A walk over the objects that pass the SHCONTF_ flags. No result is made
  /// before it is asked for; no look at each object beyond what listing tells.
  virtual HRESULT Enumerate(DWORD flags, Ref<IFolderCursor>& cursor) = 0;
  /// Assigns a name. Display, Editing and Parsing ask no system.
  virtual HRESULT GetName(PCUITEMID_CHILD element, TNameForm form, TString& name) = 0;
  /// The SFGAO_ bits that the object has, at least those of the mask (more do no
  /// harm). With SFGAO_VALIDATE a lost object is a failure. Only bits that need
  /// it may ask the system: SFGAO_HASSUBFOLDER, SFGAO_READONLY, SFGAO_VALIDATE ...
  virtual HRESULT GetAttributes(PCUITEMID_CHILD element, DWORD mask, DWORD& attributes) = 0;
  /// The element for one component of a path: any of the names, case ignored.
  virtual HRESULT ParseName(TStringView name, const TParseOptions& options, TPidl& element) = 0;
  /// The contents of a child. Does not look whether it exists.
  virtual HRESULT Open(PCUITEMID_CHILD element, Ref<IFolderSource>& child) = 0;

  /// Class identifier of the folder object (IPersist).
  virtual GUID GetClassId() = 0;
  /// Order: negative, 0 or positive. The low word of `what` is the column, its
  /// high word holds SHCIDS_ flags. Canonical: same object or not, cheapest
  /// order, exact. Column 0 otherwise: logical order of display names.
  virtual HRESULT Compare(LPARAM what, PCUITEMID_CHILD a, PCUITEMID_CHILD b, int& order) = 0;
  /// Makes an object. A taken name: STG_E_FILEALREADYEXISTS, unless `replace`.
  virtual HRESULT Create(TStringView name, bool folder, bool replace, TPidl& element) = 0;
  /// Renames. `form` is Display (a hidden extension is kept) or Parsing (the name
  /// is whole).
  virtual HRESULT Rename(PCUITEMID_CHILD element, TStringView name, TNameForm form,
                         TPidl& renamed) = 0;
  /// Removes the object for good, a folder with its contents.
  virtual HRESULT Destroy(PCUITEMID_CHILD element) = 0;
  /// Contents of the object as a stream, counted. `mode` is STGM_.
  virtual HRESULT OpenStream(PCUITEMID_CHILD element, DWORD mode, IStream** stream) = 0;
  /// HRESULT_FROM_WIN32(ERROR_NOT_FOUND) for a property that the object lacks:
  /// the shell then answers names, kind and attributes itself.
  virtual HRESULT GetProperty(PCUITEMID_CHILD element, REFPROPERTYKEY key, PROPVARIANT* value) = 0;
  virtual HRESULT SetProperty(PCUITEMID_CHILD element, REFPROPERTYKEY key,
                              REFPROPVARIANT value) = 0;
  /// Keys that GetProperty answers for the object.
  virtual std::vector<PROPERTYKEY> GetPropertyKeys(PCUITEMID_CHILD element) = 0;
  virtual HRESULT GetTypeName(PCUITEMID_CHILD element, TString& name) = 0;
  virtual HRESULT GetInfoTip(PCUITEMID_CHILD element, TString& tip) = 0;
  /// Position in the system's overlay list; S_FALSE without one.
  virtual HRESULT GetOverlayIndex(PCUITEMID_CHILD element, int& index) = 0;
  /// Position in the system's icon list; S_FALSE lets the shell choose by kind.
  virtual HRESULT GetIconIndex(PCUITEMID_CHILD element, bool open, int& index) = 0;
  /// An object of the shell for the elements: IShellLinkW for a link, IContextMenu,
  /// IDataObject ... Counted. E_NOINTERFACE: the shell may have one.
  virtual HRESULT GetUIObject(std::span<const PCUITEMID_CHILD> elements, REFIID iid,
                              void** object) = 0;
  /// What a link element points to, absolute.
  virtual HRESULT GetLinkTarget(PCUITEMID_CHILD element, TPidl& target) = 0;
  /// The element as it is now (sizes, times, flags); S_FALSE if nothing changed.
  virtual HRESULT Refresh(PCUITEMID_CHILD element, TPidl& fresh) = 0;
  virtual std::span<const TFolderColumn> GetColumns() = 0;
};

/// Base of all sources.
class TFolderSource : public TInterfacedObject<IFolderSource> {
 public:
  /// The class of the generic shell folder.
  GUID GetClassId() override;
  /// By the display or parsing names.
  HRESULT Compare(LPARAM what, PCUITEMID_CHILD a, PCUITEMID_CHILD b, int& order) override;
  /// Walks over the objects and compares their names.
  HRESULT ParseName(TStringView name, const TParseOptions& options, TPidl& element) override;
  /// STG_E_ACCESSDENIED for what changes something, E_NOTIMPL for the rest.
  HRESULT Create(TStringView name, bool folder, bool replace, TPidl& element) override;
  HRESULT Rename(PCUITEMID_CHILD element, TStringView name, TNameForm form,
                 TPidl& renamed) override;
  HRESULT Destroy(PCUITEMID_CHILD element) override;
  HRESULT OpenStream(PCUITEMID_CHILD element, DWORD mode, IStream** stream) override;
  HRESULT Open(PCUITEMID_CHILD element, Ref<IFolderSource>& child) override;
  /// None of its own.
  HRESULT GetProperty(PCUITEMID_CHILD element, REFPROPERTYKEY key, PROPVARIANT* value) override;
  HRESULT SetProperty(PCUITEMID_CHILD element, REFPROPERTYKEY key, REFPROPVARIANT value) override;
  std::vector<PROPERTYKEY> GetPropertyKeys(PCUITEMID_CHILD element) override;
  HRESULT GetTypeName(PCUITEMID_CHILD element, TString& name) override;
  HRESULT GetInfoTip(PCUITEMID_CHILD element, TString& tip) override;
  HRESULT GetOverlayIndex(PCUITEMID_CHILD element, int& index) override;
  HRESULT GetIconIndex(PCUITEMID_CHILD element, bool open, int& index) override;
  HRESULT GetUIObject(std::span<const PCUITEMID_CHILD> elements, REFIID iid,
                      void** object) override;
  HRESULT GetLinkTarget(PCUITEMID_CHILD element, TPidl& target) override;
  HRESULT Refresh(PCUITEMID_CHILD element, TPidl& fresh) override;
  /// The name alone.
  std::span<const TFolderColumn> GetColumns() override;
};

/// A cursor over elements that are at hand.
Ref<IFolderCursor> MakeListCursor(std::vector<TPidl> elements);
/// Whether an object with these SFGAO_ bits passes the SHCONTF_ flags.
bool PassesEnumeration(DWORD flags, DWORD attributes) noexcept;

// --- mounting ----------------------------------------------------------------

/// A folder that is shown in another one.
struct TFolderMount {
  /// Parsing name of the folder to show it in: empty for the desktop,
  /// "::{20D04FE0-3AEA-1069-A2D8-08002B30309D}" for the computer, "C:\dir", ...
  TString Parent;
  /// Display name; empty: the name of the user.
  TString Name;
  /// With one, the parsing name is "::{...}"; without one it is ParsingName or Name.
  GUID ClassId = GUID_NULL;
  /// "X:\" in the computer folder makes it a drive: paths below are parsed there.
  TString ParsingName;
  /// Path of the folder if it stands for one of the file system, or the identifier
  /// of a known folder whose path is asked for when it is needed.
  TString FileSystemPath;
  GUID KnownFolder = GUID_NULL;
  /// SFGAO_ bits of the folder in its parent.
  DWORD Attributes = SFGAO_FOLDER | SFGAO_HASSUBFOLDER | SFGAO_CANLINK;
  TString TypeName = u"System Folder";
  TString InfoTip;
  int IconIndex = -1;
  int OverlayIndex = -1;
  /// Place in the parent: smaller comes first, all before the parent's own objects.
  int Order = 1000;
  /// False: only found by name.
  bool Enumerated = true;
  /// Does not exist in versions of the system before this one.
  DWORD SinceMajorVersion = 0;
  Ref<IFolderSource> Source;
};

using TMountHandle = std::uint64_t;

/// Shows a folder from now on. A mount of the same parent with the same class
/// identifier or parsing name is hidden by the newer one. Any thread.
TMountHandle MountFolder(TFolderMount mount);
/// Takes it away. Objects that are in use keep working. False if there is none.
bool UnmountFolder(TMountHandle handle);

/// Mounts for the life of the object.
class TScopedMount {
 public:
  explicit TScopedMount(TFolderMount mount) : fHandle(MountFolder(std::move(mount))) {}
  ~TScopedMount() { UnmountFolder(fHandle); }
  TScopedMount(const TScopedMount&) = delete;
  TScopedMount& operator=(const TScopedMount&) = delete;

 private:
  TMountHandle fHandle;
};

// --- what other files of the portable shell provide ---------------------------

/// Contents of a directory, given in Windows form with or without a trailing
/// delimiter: "C:\", "C:\dir", "\\server\share". Does not look whether it exists.
/// (FileSystemSource.cpp)
Ref<IFolderSource> MakeFileSystemFolder(TStringView path);
/// Mount the recycle bin and the libraries; called once, when the namespace is made,
/// and not to call the shell then. (TrashFolder.cpp, LibrariesFolder.cpp)
void MountRecycleBin();
void MountLibraries();

// --- published class identifiers ------------------------------------------------
inline constexpr GUID ComputerClassId{
    0x20D04FE0, 0x3AEA, 0x1069, {0xA2, 0xD8, 0x08, 0x00, 0x2B, 0x30, 0x30, 0x9D}};
inline constexpr GUID NetworkClassId{
    0xF02C1A0D, 0xBE21, 0x4350, {0x88, 0xB0, 0x73, 0x67, 0xFC, 0x96, 0xEF, 0x3C}};
inline constexpr GUID RecycleBinClassId{
    0x645FF040, 0x5081, 0x101B, {0x9F, 0x08, 0x00, 0xAA, 0x00, 0x2F, 0x95, 0x4E}};
inline constexpr GUID LibrariesClassId{
    0x031E4825, 0x7B94, 0x4DC3, {0xB1, 0x31, 0xE9, 0x46, 0xB4, 0x4C, 0x8D, 0xD5}};
inline constexpr GUID ControlPanelClassId{
    0x26EE0668, 0xA00A, 0x44D7, {0x93, 0x71, 0xBE, 0xB0, 0x64, 0xC9, 0x86, 0x83}};
inline constexpr GUID QuickAccessClassId{
    0x679F85CB, 0x0220, 0x4080, {0xB2, 0x9B, 0x55, 0x40, 0xCC, 0x05, 0xAA, 0xB6}};
inline constexpr GUID ProfileClassId{
    0x59031A47, 0x3F72, 0x44A7, {0x89, 0xC5, 0x55, 0x95, 0xFE, 0x6B, 0x30, 0xEE}};
inline constexpr GUID DesktopClassId{
    0x00021400, 0x0000, 0x0000, {0xC0, 0x00, 0x00, 0x00, 0x00, 0x00, 0x00, 0x46}};
inline constexpr GUID FileSystemFolderClassId{
    0xF3364BA0, 0x65B9, 0x11CE, {0xA9, 0xBA, 0x00, 0xAA, 0x00, 0x4A, 0xE8, 0x37}};

}  // namespace oak
