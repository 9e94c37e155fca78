#include "ObjectDrop.h"

#include "oak/framework/WidgetSet.h"

using namespace oak;

namespace {

// What a folder raises is no reason to end a drag.
template <class TBody>
HRESULT Fenced(DWORD* effect, TBody body) noexcept {
  try {
    return body();
  } catch (...) {
    if (effect) *effect = DROPEFFECT_NONE;
    return S_OK;
  }
}

}  // namespace

void TObjectDrop::Leave() {
  fHasPlace = false;
  fPlace.Reset();
  if (const Ref<IDropTarget> left = std::exchange(fTarget, nullptr))
    static_cast<void>(left->DragLeave());
}

HRESULT TObjectDrop::Track(DWORD keys, POINTL point, DWORD* effect) {
  const DWORD allowed = std::exchange(*effect, DROPEFFECT_NONE);
  if (!fPlaces) return S_OK;
  const Ref<IItemIdList> place = fPlaces->MarkPlace({point.x, point.y});
  const bool isNew = !fHasPlace || place.Get() != fPlace.Get();
  if (isNew) {
    Leave();
    fPlace = place;
    fHasPlace = true;
    fTarget = fPlaces->TargetOf(place);
  }
  if (!fTarget) return S_OK;
  *effect = allowed;
  const HRESULT result = isNew ? fTarget->DragEnter(fData.Get(), keys, point, effect)
                               : fTarget->DragOver(keys, point, effect);
  if (SUCCEEDED(result)) return S_OK;
  fTarget.Reset();
  *effect = DROPEFFECT_NONE;
  return S_OK;
}

HRESULT TObjectDrop::DragEnter(IDataObject* data, DWORD keys, POINTL point, DWORD* effect) {
  return Fenced(effect, [&] {
    Leave();
    fData = Ref<IDataObject>::Share(data);
    return Track(keys, point, effect);
  });
}

HRESULT TObjectDrop::DragOver(DWORD keys, POINTL point, DWORD* effect) {
  return Fenced(effect, [&] { return Track(keys, point, effect); });
}

HRESULT TObjectDrop::DragLeave() {
  return Fenced(nullptr, [&]() -> HRESULT {
    Leave();
    fData.Reset();
    if (fPlaces) fPlaces->EndDrag(false);
    return S_OK;
  });
}

HRESULT TObjectDrop::Drop(IDataObject* data, DWORD keys, POINTL point, DWORD* effect) {
  return Fenced(effect, [&]() -> HRESULT {
    const auto self = Ref<IDropTarget>::Share(this);  // the control may end meanwhile
    const Ref<IDropTarget> target = std::exchange(fTarget, nullptr);
    fData.Reset();
    HRESULT result = S_OK;
    if (target)
      result = target->Drop(data, keys, point, effect);
    else
      *effect = DROPEFFECT_NONE;
    Leave();
    if (fPlaces) fPlaces->EndDrag(true);
    return result;
  });
}

Ref<IDropTarget> DropTargetOfFolder(const Ref<IShellFolder>& folder) {
  Ref<IDropTarget> target;
  if (folder) folder->CreateViewObject(nullptr, IidOf<IDropTarget>(), target.PutVoid());
  return target;
}

void DragOut(TWinControl& control, const Ref<IUnknown>& data) {
  const auto object = data ? data.As<IDataObject>() : nullptr;
  DWORD effect = DROPEFFECT_NONE;
  if (object)
    WidgetSet().DoDragDrop(control, object.Get(), nullptr,
                           DROPEFFECT_COPY | DROPEFFECT_MOVE | DROPEFFECT_LINK, &effect);
}
