// The shell's pictures of what is dragged. Apart from shell_api.h: few need them.
#pragma once

#include "oak/platform/shell_api_ids.h"

#if !defined(_WIN32)

#include "oak/platform/shell_api_types.h"

struct SHDRAGIMAGE {
  SIZE sizeDragImage;
  POINT ptOffset;
  HBITMAP hbmpDragImage;
  COLORREF crColorKey;
};

#pragma GCC diagnostic push
#pragma GCC diagnostic ignored "-Wnon-virtual-dtor"

struct IDropTargetHelper : IUnknown {
  virtual HRESULT DragEnter(HWND hwndTarget, IDataObject* pDataObject, POINT* ppt,
                            DWORD dwEffect) = 0;
  virtual HRESULT DragLeave() = 0;
  virtual HRESULT DragOver(POINT* ppt, DWORD dwEffect) = 0;
  virtual HRESULT Drop(IDataObject* pDataObject, POINT* ppt, DWORD dwEffect) = 0;
  virtual HRESULT Show(BOOL fShow) = 0;
};

struct IDragSourceHelper : IUnknown {
  virtual HRESULT InitializeFromBitmap(SHDRAGIMAGE* pshdi, IDataObject* pDataObject) = 0;
  virtual HRESULT InitializeFromWindow(HWND hwnd, POINT* ppt, IDataObject* pDataObject) = 0;
};

#pragma GCC diagnostic pop

OAK_GUID(IID_IDropTargetHelper, "4657278B-411B-11D2-839A-00C04FD918D0");
OAK_GUID(IID_IDragSourceHelper, "DE5BF786-477A-11D2-839D-00C04FD918D0");

#endif

namespace oak {

#define OAK_INTERFACE(Name)                         \
  template <>                                       \
  struct TInterfaceId<Name> {                       \
    static const GUID& Get() { return IID_##Name; } \
  };                                                \
  template <>                                       \
  struct TInterfaceAncestors<Name> {                \
    using Types = TInterfaceList<IUnknown>;         \
  };
OAK_INTERFACE(IDropTargetHelper)
OAK_INTERFACE(IDragSourceHelper)
#undef OAK_INTERFACE

}  // namespace oak
