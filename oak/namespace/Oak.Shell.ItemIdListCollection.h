// TItemIdListCollection: several items that are treated as one selection.
#pragma once

#include "oak/base/InterfacedObject.h"
#include "oak/namespace/Oak.Shell.Types.Interfaces.h"
#include "oak/platform/shell_api.h"

namespace oak {

/// Items that are absolute or relative to the collection's folder. One thread at
/// a time.
class TItemIdListCollection : public TInterfacedObject<IItemIdListCollection> {
 public:
  /// The folder may be nil: names are then taken as paths, and there is no UI object.
  explicit TItemIdListCollection(Ref<IShellFolder> pShellFolder = nullptr);

  bool InvokeCommand(const TShellCommand& pCommand) override;
  void Add(TStringView pPath) override;
  void Add(const Ref<IItemIdList>& pItemIdList) override;
  void Add(const Ref<IItemIdListCollection>& pList) override;
  void Clear() override { fItems.clear(); }
  int Count() override { return static_cast<int>(fItems.size()); }
  Ref<IItemIdList> GetItem(int pIndex) override;
  Ref<IShellItemArray> GetShellItemArray() override;
  Ref<IUnknown> GetUIObject(REFIID pInterfaceID) override;
  std::vector<PItemIdList> ToPItemIdListArray() override;

 private:
  Ref<IItemIdList> MakeAbsolute(const Ref<IItemIdList>& pItemIdList) const;

  Ref<IShellFolder> fShellFolder;
  Ref<IItemIdList> fFolderIdList;  ///< Of fShellFolder; nil without one.
  std::vector<Ref<IItemIdList>> fItems;
};

}  // namespace oak
