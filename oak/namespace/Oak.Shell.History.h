// Back and forward: the places that were visited.
#pragma once

#include <vector>

#include "oak/base/InterfacedObject.h"
#include "oak/namespace/Oak.Shell.Types.Interfaces.h"

namespace oak {

/// The places of a navigation and the one among them where it stands. Main thread.
struct IOakShellHistory : IUnknown {
  static constexpr GUID Iid{
      0x7C1E9A54, 0x3D0B, 0x4E82, {0x96, 0x2F, 0xB1, 0x58, 0x04, 0xCD, 0x73, 0x6E}};
  /// The entry at the position; nil if there is none.
  virtual Ref<IItemIdList> GetCurrentFolderItemIDList() = 0;
  virtual int GetCount() = 0;
  /// -1 for an empty history.
  virtual int GetPosition() = 0;
  /// Not held within the entries; none is current outside of them.
  virtual void SetPosition(int pPosition) = 0;
  /// Cuts what lies ahead of the position and appends the item there. The present place is not
  /// added twice; nil and invalid items are ignored.
  virtual void Add(const Ref<IItemIdList>& pItemIdList) = 0;
  virtual void Clear() = 0;
  /// Whether so many steps forward exist, or for a negative number that many less one back.
  virtual bool IsMovePossible(int pDelta) = 0;
  /// At most so many steps, to the first or last entry.
  virtual void MoveBack(std::uint8_t pSteps) = 0;
  virtual void MoveForward(std::uint8_t pSteps) = 0;
};
using IPidlHistory = IOakShellHistory;
using IItemIdListHistory = IOakShellHistory;

/// The history in memory. Main thread.
class TPidlHistory : public TInterfacedObject<IOakShellHistory> {
 public:
  Ref<IItemIdList> GetCurrentFolderItemIDList() override { return GetItem(GetPosition()); }
  int GetCount() override { return static_cast<int>(fItems.size()); }
  int GetPosition() override { return fItems.empty() ? -1 : fPosition; }
  void SetPosition(int pPosition) override { fPosition = pPosition; }
  void Add(const Ref<IItemIdList>& pItemIdList) override;
  void Clear() override;
  bool IsMovePossible(int pDelta) override;
  void MoveBack(std::uint8_t pSteps) override;
  void MoveForward(std::uint8_t pSteps) override;

  /// Nil outside 0..Count-1.
  Ref<IItemIdList> GetItem(int pIndex) const;
  /// Path of an entry, or the name that it is known by; empty outside 0..Count-1.
  TString GetPaths(int pIndex) const;

 private:
  std::vector<Ref<IItemIdList>> fItems;
  int fPosition = -1;
};

}  // namespace oak
