// The pictures of the example.
#pragma once

#include "oak/framework/ImageList.h"

enum TPicture : int { pcFolder, pcFile, pcDrive, pcPlace };

/// Draws them, so that the example needs no files beside it. Sizes follow `pixels`.
void FillPictures(oak::TImageList& images, int pixels);
