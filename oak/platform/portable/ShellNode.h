// One folder of the portable namespace: its absolute list and its contents.
#pragma once

#include <atomic>
#include <mutex>

#include "oak/platform/portable/PortableShell.h"
#include "oak/platform/portable/ShellIcons.h"

namespace oak {

/// A folder, bound. Immutable and counted; any thread. What it is asked about is
/// one of its objects ("child"), given by the first element of a list.
class TFolderNode {
 public:
  /// The root of the namespace, made with everything that is always mounted.
  static Ref<TFolderNode> Desktop();
  /// The folder that the first `bytes` bytes of a list lead to. Recently used
  /// ones are found without asking anybody.
  static HRESULT FromPidl(PCUIDLIST_ABSOLUTE pidl, std::size_t bytes, Ref<TFolderNode>& node);
  /// The folder of the whole list. Any bytes are answered.
  static HRESULT FromPidl(PCUIDLIST_ABSOLUTE pidl, Ref<TFolderNode>& node);

  ULONG AddRef() noexcept { return fRefCount.fetch_add(1, std::memory_order_relaxed) + 1; }
  ULONG Release() noexcept;

  bool IsDesktop() const noexcept { return !fParent; }
  /// Nil for the desktop.
  TFolderNode* Parent() const noexcept { return fParent.Get(); }
  /// The folder's own element in its parent; nil for the desktop.
  PCUITEMID_CHILD Element() const noexcept { return fElement; }
  PCIDLIST_ABSOLUTE Pidl() const noexcept { return fPidl.Get(); }
  /// Size of the list without its terminator.
  std::size_t PidlBytes() const noexcept { return fBytes; }
  /// Absolute list of a child.
  TPidl PidlOf(PCUITEMID_CHILD child) const;
  GUID ClassId() const { return fSource->GetClassId(); }
  IFolderSource& Contents() const noexcept { return *fSource; }
  /// Who answers for a child: the folder's own source, or that of its mounts.
  IFolderSource& SourceOf(PCUIDLIST_RELATIVE child) const;
  /// False if no folders can be mounted here: then Mounts need not be asked.
  bool MayHaveMounts() const noexcept;
  /// The mounted folders shown here.
  IFolderSource& Mounts() const;

  HRESULT Open(PCUITEMID_CHILD child, Ref<TFolderNode>& node) const;
  /// All forms, the absolute ones put together where the source leaves that open.
  /// E_INVALIDARG for a file-system path of what has none.
  HRESULT GetName(PCUITEMID_CHILD child, TNameForm form, TString& name) const;
  /// A name of the folder itself.
  HRESULT GetFolderName(TNameForm form, TString& name) const;
  HRESULT GetAttributes(PCUITEMID_CHILD child, DWORD mask, DWORD& attributes) const;
  HRESULT GetFolderAttributes(DWORD mask, DWORD& attributes) const;
  /// Order of two children, see IFolderSource::Compare. Mounts come first.
  HRESULT Compare(LPARAM what, PCUITEMID_CHILD a, PCUITEMID_CHILD b, int& order) const;
  /// Order of two lists relative to this folder, element by element.
  HRESULT CompareLists(LPARAM what, PCUIDLIST_RELATIVE a, PCUIDLIST_RELATIVE b, int& order) const;
  /// The child for one component of a path; mounts are found first.
  HRESULT ParseName(TStringView name, const TParseOptions& options, TPidl& child) const;
  HRESULT GetTypeName(PCUITEMID_CHILD child, TString& name) const;
  /// Position in the system's image lists, TShellIcon. That of a shortcut is its target's, which
  /// is read. (ShellIcons.cpp)
  int GetIconIndex(PCUITEMID_CHILD child, bool open) const;
  /// Of the source, else what the shell itself can tell (names, kind, attributes).
  HRESULT GetProperty(PCUITEMID_CHILD child, REFPROPERTYKEY key, PROPVARIANT* value) const;

 private:
  TFolderNode(Ref<TFolderNode> parent, TPidl pidl, std::size_t elementAt,
              Ref<IFolderSource> source);
  static TFolderNode* MakeDesktop();
  HRESULT GetDesktopName(TNameForm form, TString& name) const;
  HRESULT JoinName(PCUITEMID_CHILD child, TNameForm absolute, TNameForm relative,
                   TString& name) const;

  std::atomic<ULONG> fRefCount{1};
  const Ref<TFolderNode> fParent;
  const TPidl fPidl;
  std::size_t fBytes = 0;
  PCUITEMID_CHILD fElement = nullptr;
  const Ref<IFolderSource> fSource;
  mutable std::once_flag fMountsOnce;
  mutable Ref<IFolderSource> fMounts;
};

/// Contents of the desktop and the mounts that are always there (ShellRoots.cpp).
Ref<IFolderSource> MakeDesktopSource();
void MountStandardFolders();
/// Windows path of the user's desktop directory; empty without one.
TString DesktopDirectory();
/// The path as a URL of the file scheme.
TString UrlFromPath(TStringView path);

}  // namespace oak
