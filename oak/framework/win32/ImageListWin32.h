// Image lists of the common controls.
#pragma once

#include <memory>

#include "oak/framework/GraphicsSystem.h"

namespace oak {

class IImageSource;
class TImageList;

/// The functions for image lists, all of one version of the common controls: version 6 where
/// windows get that. A list of one version means nothing to the functions of another, and those
/// that a program links may be older than the shell's lists and our windows.
struct TImageListCalls {
  decltype(&::ImageList_Create) Create;
  decltype(&::ImageList_Destroy) Destroy;
  decltype(&::ImageList_Add) Add;
  decltype(&::ImageList_Replace) Replace;
  decltype(&::ImageList_Remove) Remove;
  decltype(&::ImageList_GetImageCount) GetImageCount;
  decltype(&::ImageList_GetIconSize) GetIconSize;
  decltype(&::ImageList_SetIconSize) SetIconSize;
  decltype(&::ImageList_SetOverlayImage) SetOverlayImage;
  decltype(&::ImageList_SetBkColor) SetBkColor;
  decltype(&::ImageList_GetIcon) GetIcon;
  decltype(&::ImageList_DrawIndirect) DrawIndirect;
  /// Null in old versions.
  HRESULT(WINAPI* QueryInterface)(HIMAGELIST list, REFIID iid, void** object);
};
const TImageListCalls& ImageListCalls();

/// The images of a system list; without `share` it is destroyed at the end. Nil for a null handle.
std::shared_ptr<const IImageSource> MakeImageSource(HIMAGELIST handle, bool share);

/// An empty list of the system; nil if it makes none.
std::unique_ptr<TNativeImageList> MakeNativeImageList(int width, int height, int bits);

/// To be called before a control draws with the handle that it has: images that came to the list's
/// source since are added in place. Cheap if there are none; nil and lists without a handle are
/// left alone.
void AddLateImages(const TImageList* images);

}  // namespace oak
