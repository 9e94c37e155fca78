// Tells Ref<T> and TInterfacedObject the identifiers and ancestors of the shell's interfaces.
#pragma once

#include "oak/base/InterfacedObject.h"
#include "oak/platform/shell_api_folder.h"
#include "oak/platform/shell_api_guids.h"
#include "oak/platform/shell_api_item.h"
#include "oak/platform/shell_api_ole.h"
#include "oak/platform/shell_api_property.h"
#include "oak/platform/shell_api_search.h"
#include "oak/platform/shell_api_view.h"

// OAK_INTERFACE(interface, ancestor): ancestor is what it inherits from, IUnknown if nothing else.
#define OAK_SHELL_INTERFACES                                 \
  OAK_INTERFACE(ISequentialStream, IUnknown)                 \
  OAK_INTERFACE(IStream, ISequentialStream)                  \
  OAK_INTERFACE(IEnumString, IUnknown)                       \
  OAK_INTERFACE(IEnumUnknown, IUnknown)                      \
  OAK_INTERFACE(IStorage, IUnknown)                          \
  OAK_INTERFACE(IEnumSTATSTG, IUnknown)                      \
  OAK_INTERFACE(IBindCtx, IUnknown)                          \
  OAK_INTERFACE(IPersist, IUnknown)                          \
  OAK_INTERFACE(IPersistFile, IPersist)                      \
  OAK_INTERFACE(IPersistStream, IPersist)                    \
  OAK_INTERFACE(IClassFactory, IUnknown)                     \
  OAK_INTERFACE(IServiceProvider, IUnknown)                  \
  OAK_INTERFACE(IObjectWithSite, IUnknown)                   \
  OAK_INTERFACE(IOleWindow, IUnknown)                        \
  OAK_INTERFACE(IPropertyBag, IUnknown)                      \
  OAK_INTERFACE(IEnumFORMATETC, IUnknown)                    \
  OAK_INTERFACE(IDataObject, IUnknown)                       \
  OAK_INTERFACE(IDropTarget, IUnknown)                       \
  OAK_INTERFACE(IDropSource, IUnknown)                       \
  OAK_INTERFACE(IPersistFolder, IPersist)                    \
  OAK_INTERFACE(IPersistFolder2, IPersistFolder)             \
  OAK_INTERFACE(IPersistIDList, IPersist)                    \
  OAK_INTERFACE(IParentAndItem, IUnknown)                    \
  OAK_INTERFACE(IEnumIDList, IUnknown)                       \
  OAK_INTERFACE(IEnumExtraSearch, IUnknown)                  \
  OAK_INTERFACE(IShellFolder, IUnknown)                      \
  OAK_INTERFACE(IShellFolder2, IShellFolder)                 \
  OAK_INTERFACE(IShellIcon, IUnknown)                        \
  OAK_INTERFACE(IShellIconOverlay, IUnknown)                 \
  OAK_INTERFACE(IQueryInfo, IUnknown)                        \
  OAK_INTERFACE(IExtractIconW, IUnknown)                     \
  OAK_INTERFACE(IContextMenu, IUnknown)                      \
  OAK_INTERFACE(IContextMenu2, IContextMenu)                 \
  OAK_INTERFACE(IContextMenu3, IContextMenu2)                \
  OAK_INTERFACE(IShellView, IOleWindow)                      \
  OAK_INTERFACE(IShellExtInit, IUnknown)                     \
  OAK_INTERFACE(IShellLinkW, IUnknown)                       \
  OAK_INTERFACE(IKnownFolder, IUnknown)                      \
  OAK_INTERFACE(IKnownFolderManager, IUnknown)               \
  OAK_INTERFACE(IFileSystemBindData, IUnknown)               \
  OAK_INTERFACE(IFileSystemBindData2, IFileSystemBindData)   \
  OAK_INTERFACE(IShellItem, IUnknown)                        \
  OAK_INTERFACE(IShellItem2, IShellItem)                     \
  OAK_INTERFACE(IShellItemArray, IUnknown)                   \
  OAK_INTERFACE(IEnumShellItems, IUnknown)                   \
  OAK_INTERFACE(IShellLibrary, IUnknown)                     \
  OAK_INTERFACE(IPropertyStore, IUnknown)                    \
  OAK_INTERFACE(IPropertyStoreCapabilities, IUnknown)        \
  OAK_INTERFACE(IPropertyEnumType, IUnknown)                 \
  OAK_INTERFACE(IPropertyEnumTypeList, IUnknown)             \
  OAK_INTERFACE(IPropertyDescription, IUnknown)              \
  OAK_INTERFACE(IPropertyDescription2, IPropertyDescription) \
  OAK_INTERFACE(IPropertyDescriptionList, IUnknown)          \
  OAK_INTERFACE(IPropertySystem, IUnknown)                   \
  OAK_INTERFACE(IInitializeWithFile, IUnknown)               \
  OAK_INTERFACE(IInitializeWithItem, IUnknown)               \
  OAK_INTERFACE(IInitializeWithStream, IUnknown)             \
  OAK_INTERFACE(IRichChunk, IUnknown)                        \
  OAK_INTERFACE(ICondition, IPersistStream)                  \
  OAK_INTERFACE(ISearchFolderItemFactory, IUnknown)          \
  OAK_INTERFACE(IConditionFactory, IUnknown)                 \
  OAK_INTERFACE(IQuerySolution, IConditionFactory)           \
  OAK_INTERFACE(IQueryParser, IUnknown)                      \
  OAK_INTERFACE(IQueryParserManager, IUnknown)

namespace oak {

#define OAK_INTERFACE(Name, Ancestor)               \
  template <>                                       \
  struct TInterfaceId<Name> {                       \
    static const GUID& Get() { return IID_##Name; } \
  };                                                \
  template <>                                       \
  struct TInterfaceAncestors<Name> {                \
    using Types = TInterfaceList<Ancestor>;         \
  };
OAK_SHELL_INTERFACES
#undef OAK_INTERFACE

}  // namespace oak
