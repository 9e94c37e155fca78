// Objects of the shell that are dragged over a control, and out of it.
#pragma once

#include "oak/base/InterfacedObject.h"
#include "oak/framework/WinControl.h"
#include "oak/namespace/Oak.Shell.Types.Interfaces.h"
#include "oak/platform/shell_api.h"

/// A control that shows objects which take others.
class IDropPlaces {
 public:
  /// Shows the user where he is and gives what the control shows there; nil is the background.
  virtual oak::Ref<oak::IItemIdList> MarkPlace(oak::TPoint screen) = 0;
  /// Who takes what is dropped there; nil if nobody does. May raise.
  virtual oak::Ref<IDropTarget> TargetOf(const oak::Ref<oak::IItemIdList>& place) = 0;
  /// The drag is over, or elsewhere; takes the mark away.
  virtual void EndDrag(bool dropped) = 0;

 protected:
  ~IDropPlaces() = default;
};

/// The drop target of such a control: passes all on to the object under the pointer, which knows
/// what it takes and what is done with it.
class TObjectDrop : public oak::TInterfacedObject<IDropTarget> {
 public:
  explicit TObjectDrop(IDropPlaces& places) : fPlaces(&places) {}
  /// The control ends; a drag may not know it yet.
  void Forget() { fPlaces = nullptr; }

  HRESULT STDMETHODCALLTYPE DragEnter(IDataObject* data, DWORD keys, POINTL point,
                                      DWORD* effect) override;
  HRESULT STDMETHODCALLTYPE DragOver(DWORD keys, POINTL point, DWORD* effect) override;
  HRESULT STDMETHODCALLTYPE DragLeave() override;
  HRESULT STDMETHODCALLTYPE Drop(IDataObject* data, DWORD keys, POINTL point,
                                 DWORD* effect) override;

 private:
  HRESULT Track(DWORD keys, POINTL point, DWORD* effect);
  void Leave();

  IDropPlaces* fPlaces;
  oak::Ref<IDataObject> fData;
  oak::Ref<oak::IItemIdList> fPlace;
  oak::Ref<IDropTarget> fTarget;
  bool fHasPlace = false;
};

/// What takes objects for a whole folder.
oak::Ref<IDropTarget> DropTargetOfFolder(const oak::Ref<IShellFolder>& folder);
/// Drags objects out of a control until the user drops or cancels; `data` may be nil. The control
/// may be destroyed meanwhile.
void DragOut(oak::TWinControl& control, const oak::Ref<IUnknown>& data);
