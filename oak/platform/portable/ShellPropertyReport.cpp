// Properties of objects as a text.
#include <fcntl.h>
#include <sys/stat.h>

#include <cerrno>

#include "oak/base/Variant.h"
#include "oak/platform/Api.h"
#include "oak/platform/portable/FileEntries.h"
#include "oak/platform/portable/FileSystemSource.h"
#include "oak/platform/portable/PortableCall.h"
#include "oak/platform/portable/PropertyTable.h"
#include "oak/platform/portable/ShellData.h"
#include "oak/platform/portable/ShellPidl.h"
#include "oak/platform/portable/ShellProperties.h"
#include "oak/platform/portable/ShellVerbs.h"
#include "oak/platform/portable/SystemDescriptor.h"
#include "oak/platform/portable/SystemLocale.h"
#include "oak/platform/portable/TrashCan.h"

namespace oak {
namespace {

/// What lies below some objects.
struct TContents {
  std::uint64_t Bytes = 0;
  std::uint64_t Files = 0;
  std::uint64_t Folders = 0;
};

void CountTree(int directory, const std::string& name, bool isFolder, TContents& contents) {
  struct stat info;
  if (!isFolder) {
    ++contents.Files;
    if (::fstatat(directory, name.c_str(), &info, AT_SYMLINK_NOFOLLOW) == 0 &&
        S_ISREG(info.st_mode))
      contents.Bytes += static_cast<std::uint64_t>(info.st_size);
    return;
  }
  ++contents.Folders;
  const TDescriptor open(
      ::openat(directory, name.c_str(), O_RDONLY | O_DIRECTORY | O_NOFOLLOW | O_CLOEXEC));
  std::vector<TFileEntry> entries;
  if (open.Get() < 0 || ListEntries(open.Get(), entries) != 0) return;
  for (const TFileEntry& entry : entries)
    CountTree(open.Get(), entry.Name, entry.IsFolder, contents);
}

TContents ContentsOf(const TShellObjects& objects) {
  TContents contents;
  for (const TShellObject& object : objects) {
    const std::string native = object.Native();
    struct stat info;
    const bool present = !native.empty() && ::lstat(native.c_str(), &info) == 0;
    const bool isFolder = present ? S_ISDIR(info.st_mode) : object.Attributes(SFGAO_FOLDER) != 0;
    if (present)
      CountTree(AT_FDCWD, native, isFolder, contents);
    else
      ++(isFolder ? contents.Folders : contents.Files);
  }
  return contents;
}

TString SizeText(std::uint64_t bytes) {
  return ByteSizeText(bytes) + u" (" + IntToStr(static_cast<std::int64_t>(bytes)) + u" bytes)";
}

TString CountText(const TContents& contents) {
  return IntToStr(static_cast<std::int64_t>(contents.Files)) + u" Files, " +
         IntToStr(static_cast<std::int64_t>(contents.Folders)) + u" Folders";
}

void AddReportLine(TString& report, TStringView label, const TString& value) {
  if (!value.empty()) ((((report += label) += u": ") += value) += u"\r\n");
}

TString PropertyText(const TShellObject& object, REFPROPERTYKEY key) {
  TPropVariant value;
  if (FAILED(object.Folder->GetProperty(object.Child.Get(), key, value.Put())) || value.IsEmpty())
    return {};
  LPWSTR text = nullptr;
  if (FAILED(Api().PSFormatForDisplayAlloc(key, value, PDFF_DEFAULT, &text))) return {};
  const auto owner = TTaskMemory<WCHAR>::Adopt(text);
  return FromW(owner.Get());
}

// What all have in common, else `various`.
template <class TGet>
TString Common(const TShellObjects& objects, TStringView various, TGet get) {
  const TString first = get(objects[0]);
  for (const TShellObject& object : objects)
    if (get(object) != first) return TString(various);
  return first;
}

TString ReportOf(const TShellObjects& objects) {
  TString report;
  const bool single = objects.size() == 1;
  const TContents contents = ContentsOf(objects);
  if (single) AddReportLine(report, u"Name", objects[0].Name(TNameForm::Display));
  AddReportLine(report, u"Type", Common(objects, u"Multiple Types", [](const TShellObject& object) {
                  TString type;
                  static_cast<void>(object.Folder->GetTypeName(object.Child.Get(), type));
                  return type;
                }));
  AddReportLine(
      report, u"Location", Common(objects, u"Various Folders", [](const TShellObject& object) {
        TString place;
        static_cast<void>(object.Folder->GetFolderName(TNameForm::AbsoluteEditing, place));
        return place;
      }));
  if (!objects[0].Path().empty()) AddReportLine(report, u"Size", SizeText(contents.Bytes));
  if (!single || contents.Folders > 0) {
    TContents inside = contents;
    if (single) --inside.Folders;  // without the folder itself
    AddReportLine(report, u"Contains", CountText(inside));
  }
  if (!single) return report;
  AddReportLine(report, u"Created", PropertyText(objects[0], PKEY_DateCreated));
  AddReportLine(report, u"Modified", PropertyText(objects[0], PKEY_DateModified));
  AddReportLine(report, u"Accessed", PropertyText(objects[0], PKEY_DateAccessed));
  AddReportLine(report, u"Attributes", PropertyText(objects[0], PKEY_FileAttributes));
  for (const PROPERTYKEY& key : {PKEY_Image_Dimensions, PKEY_Image_BitDepth,
                                 PKEY_Image_HorizontalResolution, PKEY_Image_VerticalResolution})
    AddReportLine(report, FindProperty(key)->Label, PropertyText(objects[0], key));
  return report;
}

// There is one bin for all drives: `root` makes no difference.
HRESULT STDAPICALLTYPE SHQueryRecycleBinW(LPCWSTR, SHQUERYRBINFO* info) {
  return PortableCall("SHQueryRecycleBinW", [&]() -> HRESULT {
    if (!info || info->cbSize < sizeof *info) return E_INVALIDARG;
    info->i64Size = info->i64NumItems = 0;
    const TDescriptor bin(
        ::open(TrashFilesDirectory().c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC));
    std::vector<TFileEntry> entries;
    if (bin.Get() < 0) return errno == ENOENT ? S_OK : ResultFromErrno(errno);
    if (const int error = ListEntries(bin.Get(), entries)) return ResultFromErrno(error);
    TContents contents;
    for (const TFileEntry& entry : entries)
      CountTree(bin.Get(), entry.Name, entry.IsFolder, contents);
    info->i64Size = static_cast<INT64>(contents.Bytes);
    info->i64NumItems = static_cast<INT64>(entries.size());
    return S_OK;
  });
}

HRESULT STDAPICALLTYPE SHMultiFileProperties(IDataObject* data, DWORD) {
  return PortableCall("SHMultiFileProperties", [&]() -> HRESULT {
    if (!data) return E_INVALIDARG;
    return ShowObjectProperties(ObjectsOf(ListsOf(*data)));
  });
}

}  // namespace

HRESULT ShowObjectProperties(const TShellObjects& objects) {
  if (objects.empty()) return E_INVALIDARG;
  TString title = objects[0].Name(TNameForm::Display);
  if (objects.size() > 1) title += u", ...";
  ShowProperties(title + u" Properties", ReportOf(objects));
  return S_OK;
}

HRESULT ShowFolderProperties(const TFolderNode& folder) {
  if (folder.IsDesktop()) {
    ShowProperties(u"Desktop Properties", u"Name: Desktop\r\n");
    return S_OK;
  }
  TShellObjects objects;
  objects.push_back({Ref<TFolderNode>::Share(folder.Parent()), CopyElement(folder.Element())});
  return ShowObjectProperties(objects);
}

void BindShellProperties(TApi& api) {
  api.SHMultiFileProperties.SetFunction(&SHMultiFileProperties);
  api.SHQueryRecycleBinW.SetFunction(&SHQueryRecycleBinW);
}

}  // namespace oak
