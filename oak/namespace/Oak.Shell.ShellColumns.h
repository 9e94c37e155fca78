// TShellColumns: the columns that the system names.
#pragma once

#include "oak/namespace/Oak.Shell.Types.Columns.h"

namespace oak {

/// The catalogue of columns: published property keys, and one of our own.
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

  static constexpr TShellColumnId ItemDate() noexcept { return {ItemDateFormat, 100}; }

  static constexpr TShellColumnId FullCapacity() noexcept { return {Volume, 3}; }
  static constexpr TShellColumnId FreeSize() noexcept { return {Volume, 2}; }
  static constexpr TShellColumnId FileSystem() noexcept { return {Volume, 4}; }
  static constexpr TShellColumnId Volume_FreeSpace() noexcept { return {Volume, 2}; }
  static constexpr TShellColumnId Volume_TotalSpace() noexcept { return {Volume, 3}; }

  /// The bar of used space in a list of drives; no folder has it.
  static constexpr TShellColumnId OakDriveListFreePercentage() noexcept { return {DriveList, 2}; }

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
  static constexpr GUID ItemDateFormat{
      0xF7DB74B4, 0x4287, 0x4103, {0xAF, 0xBA, 0xF1, 0xB1, 0x3D, 0xCD, 0x75, 0xCF}};
  static constexpr GUID Volume{
      0x9B174B35, 0x40FF, 0x11D2, {0xA2, 0x7E, 0x00, 0xC0, 0x4F, 0xC3, 0x08, 0x71}};
  static constexpr GUID DriveList{
      0xF00DFA49, 0xBAE7, 0x47EA, {0x8A, 0x4A, 0x72, 0x2D, 0x0E, 0x70, 0x39, 0x62}};
  static constexpr GUID Custom{
      0x4D91EDC5, 0xE746, 0x417F, {0x80, 0x05, 0x10, 0x2A, 0x96, 0xA2, 0x66, 0xC2}};
};

}  // namespace oak
