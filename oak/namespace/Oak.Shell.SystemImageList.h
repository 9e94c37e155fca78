// TOakSystemImageList: the icons of the shell as an image list.
#pragma once

#include <memory>

#include "oak/framework/ImageList.h"
#include "oak/namespace/Oak.Shell.Types.Interfaces.h"

namespace oak {

/// The image lists that the system keeps, in its numbering, and one of any size.
enum TOakImageListSize : std::uint8_t {
  si_Large,
  si_Small,
  si_ExtraLarge,
  si_SysSmall,   ///< As small as the icons of title bars.
  si_Jumbo,      ///< 256 pixels.
  si_FreeScaled  ///< Of any size, scaled from the extra large icons.
};

/// Main thread, but for ToInt.
struct TOakImageListSizeHelper {
  /// The system's number of the list (SHIL_); si_FreeScaled has that of si_ExtraLarge.
  static int ToInt(TOakImageListSize pSize) noexcept;
  /// Width and height of the icons in pixels, as the system says.
  static int GetSize(TOakImageListSize pSize);
  /// The height where the system has no such list.
  static int GetDefaultHeight(TOakImageListSize pSize);
};

/// Shows the system's icons instead of images of its own. An icon's number is the same in all sizes
/// and comes from the index functions here, which ask the system; -1 stands for none.
///
/// A list has the size that the system gives it, which follows the density of the primary monitor;
/// for another density, or any size, it scales icons when they are asked for and keeps the result.
///
/// The lists belong to the main thread. Index functions and GetFileType may be called by any thread
/// that has entered an apartment.
class TOakSystemImageList : public TCustomImageList {
 public:
  /// The system's list of a size. Raises EInvalidOperation for si_FreeScaled.
  explicit TOakSystemImageList(TComponent* AOwner = nullptr, TOakImageListSize pSize = si_Small);
  /// The same for a monitor of that density. A system's list that fits is shown as it is.
  TOakSystemImageList(TComponent* AOwner, TOakImageListSize pSize, int pPixelsPerInch);
  /// A free-scaled list. 1 to 1024 pixels.
  TOakSystemImageList(TComponent* AOwner, int pPixels);

  /// The one list of this size that all share, made at first use; it lives as long as the process.
  /// si_FreeScaled gives the list for icons of 16 pixels at the density of the screen.
  static TOakSystemImageList& GetInstance(TOakImageListSize pSize);
  /// The shared list that fits best.
  static TOakSystemImageList& GetInstance(int pPixels);
  /// The smallest of the common sizes that has at least so many pixels; the jumbo one only if they
  /// reach its own.
  static TOakImageListSize PixelsToSize(int pPixels);

  /// Default si_Small. Setting raises EInvalidOperation for si_FreeScaled.
  TOakImageListSize GetSize() const noexcept { return fSize; }
  void SetSize(TOakImageListSize pValue);
  using TCustomImageList::SetSize;
  TString GetVersion() const;

  // --- numbers of icons --------------------------------------------------------
  /// Asks the system each time: it has a cache of its own. -1 for nil and for an invalid item.
  static int GetIndexFromItemIdList(const Ref<IItemIdList>& pItemIdList, TOakImageListSize pSize,
                                    bool pOpenState);
  /// The icon of an existing file or folder.
  static int GetIndexFromPath(TStringView pPath, TOakImageListSize pSize = si_Small,
                              bool pOpenState = false);
  /// The icon by the extension of the path, which is not touched: what a type's files show in
  /// common.
  /// A path that ends in "\" is a folder.
  static int GetIndexFromPathByExt(TStringView pPath, TOakImageListSize pSize = si_Small,
                                   bool pOpenState = false);
  /// The icon of a type of files, by its extension with or without the dot. One call of the system
  /// for each extension, none from the second request on; a failure is asked again.
  static int GetIndexFromExtension(TStringView pExtension, TOakImageListSize pSize = si_Small,
                                   bool pOpenState = false);
  /// Name of a type of files, remembered likewise. Empty if the system tells none.
  static TString GetFileType(TStringView pExtension);
  /// The icon of any folder; asked once.
  static int GetFolderIconNumber(bool pOpenState = false);
  static int GetSpecialFolderIcon(TOakShellFolder pFolder, TOakImageListSize pSize = si_Small,
                                  bool pOpenState = false);
  /// The icon of files of a type that nobody knows; asked once.
  static int GetUnknownFileIconNumber();
  /// Lets a type have the icon of that file from now on; empty: what the system says. See
  /// TShellControlHelper::AssociateIconWithExtension.
  static void SetIconFile(TStringView pExtension, TStringView pIconFile);
  /// Drops what is remembered of extensions, types, folder and unknown file: their icons were
  /// changed in the system. Icons that SetIconFile chose stay chosen.
  static void ForgetIcons();

  // --- copies --------------------------------------------------------------------
  /// The icon in the middle of a picture of this size, made smaller if it does not fit, never
  /// larger. clNone as background leaves the rest transparent; a frame colour other than clNone
  /// draws a line around the picture. Empty for an index outside the list or without size.
  TBitmap GetAsBitmap(int pIndex, int pWidth, int pHeight, TColor pBackgroundColor = clNone,
                      TColor pFrameColor = clNone) const;
  /// A copy of a system bitmap, which stays the caller's. Empty for null.
  static TBitmap BitmapFromHBitmap(HBITMAP pBitmap) { return TBitmap::FromHandle(pBitmap); }
  /// Appends the icon to another list, in that one's size. Its index there, -1 if there is no such
  /// icon. Raises EInvalidOperation if the other is a list of the system too.
  int CopySystemImageTo(int pIndex, TCustomImageList& pImageList) const;
  /// Gives a list 32 bits of colour with alpha; its images stay.
  static void ConvertTo32BitImageList(TCustomImageList& pImageList);

  // --- density ---------------------------------------------------------------------
  /// Scales one icon anew: the system shows another picture at its number. Nothing in lists that
  /// are not scaled.
  void Scale(int pIndex);
  /// Scales all icons anew.
  void ScaleAll();
  /// The density became M/D of what it was: a list that was made for a density, or in pixels,
  /// changes its size; that of the system follows the system.
  void ChangeScale(int M, int D);

 private:
  class TScaledIcons;

  TOakSystemImageList(TComponent* AOwner, TOakImageListSize pSize, int pPixels, bool pFollows);
  void ShowIcons();

  TOakImageListSize fSize;
  int fPixels;    ///< 0: those of the system's list.
  bool fFollows;  ///< ChangeScale changes the pixels.
  std::shared_ptr<const TScaledIcons> fScaled;
};

}  // namespace oak
