// TShellColumns and TShellColumnGroups: the columns and groups of columns that have names.
#pragma once

#include "oak/namespace/Oak.Shell.Types.Columns.h"

namespace oak {

/// The catalogue of columns: published property keys, and one of our own. Some columns have two
/// names, that of a folder's column and that of the property. Values; any thread.
struct TShellColumns {
  /// No column: the null GUID with property identifier 0.
  static constexpr TShellColumnId Invalid() noexcept { return {}; }

  static constexpr TShellColumnId Name() noexcept { return {Storage, 10}; }
  static constexpr TShellColumnId Size() noexcept { return {Storage, 12}; }
  static constexpr TShellColumnId StorageType() noexcept { return {Storage, 4}; }
  static constexpr TShellColumnId WriteTime() noexcept { return {Storage, 14}; }
  static constexpr TShellColumnId CreateTime() noexcept { return {Storage, 15}; }
  static constexpr TShellColumnId AccessTime() noexcept { return {Storage, 16}; }
  static constexpr TShellColumnId Attributes() noexcept { return {Storage, 13}; }

  static constexpr TShellColumnId Path() noexcept { return {ShellDetails, 30}; }
  static constexpr TShellColumnId ElementType() noexcept { return {ShellDetails, 11}; }
  static constexpr TShellColumnId NetworkLocation() noexcept { return {ShellDetails, 4}; }

  static constexpr TShellColumnId StorageProviderState() noexcept { return {StorageProvider, 3}; }
  static constexpr TShellColumnId StorageProviderUIStatus() noexcept {
    return {StorageProvider, 2};
  }

  static constexpr TShellColumnId Store() noexcept { return {Message, 15}; }
  static constexpr TShellColumnId DateReceived() noexcept { return {Message, 20}; }
  static constexpr TShellColumnId DateSend() noexcept { return {Message, 19}; }
  static constexpr TShellColumnId AttachmentNames() noexcept { return {Message, 21}; }
  static constexpr TShellColumnId BCcAddress() noexcept { return {Message, 2}; }
  static constexpr TShellColumnId BccName() noexcept { return {Message, 3}; }
  static constexpr TShellColumnId CcAddress() noexcept { return {Message, 4}; }
  static constexpr TShellColumnId CcName() noexcept { return {Message, 5}; }
  static constexpr TShellColumnId ToAddresses() noexcept { return {Message, 16}; }
  static constexpr TShellColumnId ToName() noexcept { return {Message, 17}; }
  static constexpr TShellColumnId ParentFolder() noexcept { return {Message, 6}; }
  static constexpr TShellColumnId FromAddress() noexcept { return {Message, 13}; }
  static constexpr TShellColumnId FromName() noexcept { return {Message, 14}; }

  static constexpr TShellColumnId Subject() noexcept { return {Summary, 3}; }
  static constexpr TShellColumnId Author() noexcept { return {Summary, 4}; }
  static constexpr TShellColumnId SaveTime() noexcept { return {Summary, 13}; }
  static constexpr TShellColumnId ContentCreated() noexcept { return {Summary, 12}; }
  static constexpr TShellColumnId LastSavedBy() noexcept { return {Summary, 8}; }
  static constexpr TShellColumnId LastPrinted() noexcept { return {Summary, 11}; }
  static constexpr TShellColumnId Comment() noexcept { return {Summary, 6}; }
  static constexpr TShellColumnId Title() noexcept { return {Summary, 2}; }
  static constexpr TShellColumnId Keywords() noexcept { return {Summary, 5}; }

  static constexpr TShellColumnId ItemDate() noexcept { return {ItemDateFormat, 100}; }

  static constexpr TShellColumnId FileDescription() noexcept { return {Version, 3}; }
  static constexpr TShellColumnId FileVersion() noexcept { return {Version, 4}; }
  static constexpr TShellColumnId ProductName() noexcept { return {Version, 7}; }
  static constexpr TShellColumnId ProductVersion() noexcept { return {Version, 8}; }
  static constexpr TShellColumnId InternalName() noexcept { return {Version, 5}; }

  static constexpr TShellColumnId FileExtension() noexcept { return {ExtensionFormat, 100}; }

  static constexpr TShellColumnId Owner() noexcept { return {OwnerFormat, 4}; }

  static constexpr TShellColumnId ConversationID() noexcept { return {Conversation, 100}; }

  static constexpr TShellColumnId ShortcutTarget() noexcept { return {Link, 2}; }

  static constexpr TShellColumnId Volume_FreeSpace() noexcept { return {Volume, 2}; }
  static constexpr TShellColumnId Volume_TotalSpace() noexcept { return {Volume, 3}; }
  static constexpr TShellColumnId FullCapacity() noexcept { return {Volume, 3}; }
  static constexpr TShellColumnId FreeSize() noexcept { return {Volume, 2}; }
  static constexpr TShellColumnId FileSystem() noexcept { return {Volume, 4}; }

  static constexpr TShellColumnId HasAttachments() noexcept { return {Attachments, 8}; }

  /// The bar of used space in a list of drives; no folder has it.
  static constexpr TShellColumnId OakDriveListFreePercentage() noexcept { return {DriveList, 2}; }

  static constexpr TShellColumnId Media_Copyright() noexcept { return {MediaSummary, 11}; }
  static constexpr TShellColumnId Media_Rating() noexcept { return {MediaSummary, 9}; }
  static constexpr TShellColumnId Media_Publisher() noexcept { return {MediaSummary, 30}; }
  static constexpr TShellColumnId Media_Composer() noexcept { return {MediaSummary, 19}; }

  static constexpr TShellColumnId Image_BitDepth() noexcept { return {ImageSummary, 7}; }
  static constexpr TShellColumnId Image_Dimensions() noexcept { return {ImageSummary, 13}; }
  static constexpr TShellColumnId Image_HorizontalResolution() noexcept {
    return {ImageSummary, 5};
  }
  static constexpr TShellColumnId Image_HorizontalSize() noexcept { return {ImageSummary, 3}; }
  static constexpr TShellColumnId Image_VerticalResolution() noexcept { return {ImageSummary, 6}; }
  static constexpr TShellColumnId Image_VerticalSize() noexcept { return {ImageSummary, 4}; }

  static constexpr TShellColumnId Photo_DateTaken() noexcept { return {Photo, 36867}; }
  static constexpr TShellColumnId Photo_CameraModel() noexcept { return {Photo, 272}; }
  static constexpr TShellColumnId Photo_CameraManufacturer() noexcept { return {Photo, 271}; }
  static constexpr TShellColumnId Photo_Aperture() noexcept { return {Photo, 37378}; }
  static constexpr TShellColumnId Photo_Event() noexcept { return {Photo, 18248}; }
  static constexpr TShellColumnId Photo_ExposureTime() noexcept { return {Photo, 33434}; }
  static constexpr TShellColumnId Photo_ExposureProgram() noexcept { return {Photo, 34850}; }
  static constexpr TShellColumnId Photo_FNumber() noexcept { return {Photo, 33437}; }
  static constexpr TShellColumnId Photo_Flash() noexcept { return {Photo, 37385}; }
  static constexpr TShellColumnId Photo_FocalLength() noexcept { return {Photo, 37386}; }
  static constexpr TShellColumnId Photo_ISOSpeed() noexcept { return {Photo, 34855}; }
  static constexpr TShellColumnId Photo_Orientation() noexcept { return {Photo, 274}; }
  static constexpr TShellColumnId Photo_ShutterSpeed() noexcept { return {Photo, 37377}; }

  static constexpr TShellColumnId Photo_OrientationText() noexcept {
    return {OrientationFormat, 100};
  }

  static constexpr TShellColumnId Photo_ExifVersion() noexcept { return {ExifFormat, 100}; }

  static constexpr TShellColumnId Audio_EncodingBitrate() noexcept { return {AudioSummary, 4}; }
  static constexpr TShellColumnId Audio_SampleRate() noexcept { return {AudioSummary, 5}; }
  static constexpr TShellColumnId Media_Duration() noexcept { return {AudioSummary, 3}; }

  static constexpr TShellColumnId Music_Media_Year() noexcept { return {MusicSummary, 5}; }
  static constexpr TShellColumnId Music_AlbumArtist() noexcept { return {MusicSummary, 13}; }
  static constexpr TShellColumnId Music_AlbumTitle() noexcept { return {MusicSummary, 4}; }
  static constexpr TShellColumnId Music_Artist() noexcept { return {MusicSummary, 2}; }
  static constexpr TShellColumnId Music_BeatsPerMinute() noexcept { return {MusicSummary, 35}; }
  static constexpr TShellColumnId Music_Genre() noexcept { return {MusicSummary, 11}; }
  static constexpr TShellColumnId Music_Lyrics() noexcept { return {MusicSummary, 12}; }
  static constexpr TShellColumnId Music_Mood() noexcept { return {MusicSummary, 39}; }
  static constexpr TShellColumnId Music_TrackNumber() noexcept { return {MusicSummary, 7}; }

  /// How an image file is compressed; asked of the system by name, Invalid where it knows none.
  static TShellColumnId Image_Compression() {
    return TShellColumnId::FromString(u"System.Image.Compression");
  }

  /// A column that the application fills itself.
  static constexpr TShellColumnId CreateCustomId(DWORD pId) noexcept { return {Custom, pId}; }
  /// Whether CreateCustomId made it.
  static bool IsCustomColumnId(const TShellColumnId& pColumn) noexcept {
    return IsEqualGUID(pColumn.FormatId, Custom) != 0;
  }
  static bool IsEqualShellColumnId(const TShellColumnId& a, const TShellColumnId& b) noexcept {
    return a == b;
  }

 private:
  static constexpr GUID Storage{
      0xB725F130, 0x47EF, 0x101A, {0xA5, 0xF1, 0x02, 0x60, 0x8C, 0x9E, 0xEB, 0xAC}};
  static constexpr GUID ShellDetails{
      0x28636AA6, 0x953D, 0x11D2, {0xB5, 0xD6, 0x00, 0xC0, 0x4F, 0xD9, 0x18, 0xD0}};
  static constexpr GUID StorageProvider{
      0xE77E90DF, 0x6271, 0x4F5B, {0x83, 0x4F, 0x2D, 0xD1, 0xF2, 0x45, 0xDD, 0xA4}};
  static constexpr GUID Message{
      0xE3E0584C, 0xB788, 0x4A5A, {0xBB, 0x20, 0x7F, 0x5A, 0x44, 0xC9, 0xAC, 0xDD}};
  static constexpr GUID Summary{
      0xF29F85E0, 0x4FF9, 0x1068, {0xAB, 0x91, 0x08, 0x00, 0x2B, 0x27, 0xB3, 0xD9}};
  static constexpr GUID ItemDateFormat{
      0xF7DB74B4, 0x4287, 0x4103, {0xAF, 0xBA, 0xF1, 0xB1, 0x3D, 0xCD, 0x75, 0xCF}};
  static constexpr GUID Version{
      0x0CEF7D53, 0xFA64, 0x11D1, {0xA2, 0x03, 0x00, 0x00, 0xF8, 0x1F, 0xED, 0xEE}};
  static constexpr GUID ExtensionFormat{
      0xE4F10A3C, 0x49E6, 0x405D, {0x82, 0x88, 0xA2, 0x3B, 0xD4, 0xEE, 0xAA, 0x6C}};
  static constexpr GUID OwnerFormat{
      0x9B174B33, 0x40FF, 0x11D2, {0xA2, 0x7E, 0x00, 0xC0, 0x4F, 0xC3, 0x08, 0x71}};
  static constexpr GUID Conversation{
      0xDC8F80BD, 0xAF1E, 0x4289, {0x85, 0xB6, 0x3D, 0xFC, 0x1B, 0x49, 0x39, 0x92}};
  static constexpr GUID Link{
      0xB9B4B3FC, 0x2B51, 0x4A42, {0xB5, 0xD8, 0x32, 0x41, 0x46, 0xAF, 0xCF, 0x25}};
  static constexpr GUID Volume{
      0x9B174B35, 0x40FF, 0x11D2, {0xA2, 0x7E, 0x00, 0xC0, 0x4F, 0xC3, 0x08, 0x71}};
  static constexpr GUID Attachments{
      0x9C1FCF74, 0x2D97, 0x41BA, {0xB4, 0xAE, 0xCB, 0x2E, 0x36, 0x61, 0xA6, 0xE4}};
  static constexpr GUID DriveList{
      0xF00DFA49, 0xBAE7, 0x47EA, {0x8A, 0x4A, 0x72, 0x2D, 0x0E, 0x70, 0x39, 0x62}};
  static constexpr GUID MediaSummary{
      0x64440492, 0x4C8B, 0x11D1, {0x8B, 0x70, 0x08, 0x00, 0x36, 0xB1, 0x1A, 0x03}};
  static constexpr GUID ImageSummary{
      0x6444048F, 0x4C8B, 0x11D1, {0x8B, 0x70, 0x08, 0x00, 0x36, 0xB1, 0x1A, 0x03}};
  static constexpr GUID Photo{
      0x14B81DA1, 0x0135, 0x4D31, {0x96, 0xD9, 0x6C, 0xBF, 0xC9, 0x67, 0x1A, 0x99}};
  static constexpr GUID OrientationFormat{
      0xA9EA193C, 0xC511, 0x498A, {0xA0, 0x6B, 0x58, 0xE2, 0x77, 0x6D, 0xCC, 0x28}};
  static constexpr GUID ExifFormat{
      0xD35F743A, 0xEB2E, 0x47F2, {0xA2, 0x86, 0x84, 0x41, 0x32, 0xCB, 0x14, 0x27}};
  static constexpr GUID AudioSummary{
      0x64440490, 0x4C8B, 0x11D1, {0x8B, 0x70, 0x08, 0x00, 0x36, 0xB1, 0x1A, 0x03}};
  static constexpr GUID MusicSummary{
      0x56A3372E, 0xCE9C, 0x11D2, {0x9F, 0x0E, 0x00, 0x60, 0x97, 0xC6, 0x86, 0xF6}};
  static constexpr GUID Custom{
      0x4D91EDC5, 0xE746, 0x417F, {0x80, 0x05, 0x10, 0x2A, 0x96, 0xA2, 0x66, 0xC2}};
};

/// The groups that the details of an object are arranged in.
struct TShellColumnGroups {
  static constexpr TShellColumnId Audio() noexcept {
    return {{0x2804D469, 0x788F, 0x48AA, {0x85, 0x70, 0x71, 0xB9, 0xC1, 0x87, 0xE1, 0x38}}, 100};
  }
  static constexpr TShellColumnId Calendar() noexcept {
    return {{0x9973D2B5, 0xBFD8, 0x438A, {0xBA, 0x94, 0x53, 0x49, 0xB2, 0x93, 0x18, 0x1A}}, 100};
  }
  static constexpr TShellColumnId Camera() noexcept {
    return {{0xDE00DE32, 0x547E, 0x4981, {0xAD, 0x4B, 0x54, 0x2F, 0x2E, 0x90, 0x07, 0xD8}}, 100};
  }
  static constexpr TShellColumnId Contact() noexcept {
    return {{0xDF975FD3, 0x250A, 0x4004, {0x85, 0x8F, 0x34, 0xE2, 0x9A, 0x3E, 0x37, 0xAA}}, 100};
  }
  static constexpr TShellColumnId Content() noexcept {
    return {{0xD0DAB0BA, 0x368A, 0x4050, {0xA8, 0x82, 0x6C, 0x01, 0x0F, 0xD1, 0x9A, 0x4F}}, 100};
  }
  static constexpr TShellColumnId Description() noexcept {
    return {{0x8969B275, 0x9475, 0x4E00, {0xA8, 0x87, 0xFF, 0x93, 0xB8, 0xB4, 0x1E, 0x44}}, 100};
  }
  static constexpr TShellColumnId Filesystem() noexcept {
    return {{0xE3A7D2C1, 0x80FC, 0x4B40, {0x8F, 0x34, 0x30, 0xEA, 0x11, 0x1B, 0xDC, 0x2E}}, 100};
  }
  static constexpr TShellColumnId General() noexcept {
    return {{0xCC301630, 0xB192, 0x4C22, {0xB3, 0x72, 0x9F, 0x4C, 0x6D, 0x33, 0x8E, 0x07}}, 100};
  }
  static constexpr TShellColumnId GPS() noexcept {
    return {{0xF3713ADA, 0x90E3, 0x4E11, {0xAA, 0xE5, 0xFD, 0xC1, 0x76, 0x85, 0xB9, 0xBE}}, 100};
  }
  static constexpr TShellColumnId Image() noexcept {
    return {{0xE3690A87, 0x0FA8, 0x4A2A, {0x9A, 0x9F, 0xFC, 0xE8, 0x82, 0x70, 0x55, 0xAC}}, 100};
  }
  static constexpr TShellColumnId Media() noexcept {
    return {{0x61872CF7, 0x6B5E, 0x4B4B, {0xAC, 0x2D, 0x59, 0xDA, 0x84, 0x45, 0x92, 0x48}}, 100};
  }
  static constexpr TShellColumnId MediaAdvanced() noexcept {
    return {{0x8859A284, 0xDE7E, 0x4642, {0x99, 0xBA, 0xD4, 0x31, 0xD0, 0x44, 0xB1, 0xEC}}, 100};
  }
  static constexpr TShellColumnId Messages() noexcept {
    return {{0x7FD7259D, 0x16B4, 0x4135, {0x9F, 0x97, 0x7C, 0x96, 0xEC, 0xD2, 0xFA, 0x9E}}, 100};
  }
  static constexpr TShellColumnId Music() noexcept {
    return {{0x68DD6094, 0x7216, 0x40F1, {0xA0, 0x29, 0x43, 0xFE, 0x71, 0x27, 0x04, 0x3F}}, 100};
  }
  static constexpr TShellColumnId Origin() noexcept {
    return {{0x2598D2FB, 0x5569, 0x4367, {0x95, 0xDF, 0x5C, 0xD3, 0xA1, 0x77, 0xE1, 0xA5}}, 100};
  }
  static constexpr TShellColumnId PhotoAdvanced() noexcept {
    return {{0x0CB2BF5A, 0x9EE7, 0x4A86, {0x82, 0x22, 0xF0, 0x1E, 0x07, 0xFD, 0xAD, 0xAF}}, 100};
  }
  static constexpr TShellColumnId RecordedTV() noexcept {
    return {{0xE7B33238, 0x6584, 0x4170, {0xA5, 0xC0, 0xAC, 0x25, 0xEF, 0xD9, 0xDA, 0x56}}, 100};
  }
  static constexpr TShellColumnId Video() noexcept {
    return {{0xBEBE0920, 0x7671, 0x4C54, {0xA3, 0xEB, 0x49, 0xFD, 0xDF, 0xC1, 0x91, 0xEE}}, 100};
  }
};

}  // namespace oak
