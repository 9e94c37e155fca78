#include "oak/platform/portable/FileKinds.h"

#include <unordered_map>

#include "oak/platform/portable/FileProperties.h"

namespace oak {
namespace {

constexpr TFileKind kFolder{u"folder", u"Folder", PERCEIVED_TYPE_FOLDER};
constexpr TFileKind kLink{u"link", u"Link", PERCEIVED_TYPE_UNSPECIFIED};

struct TGroup {
  TFileKind Kind;
  TStringView Extensions;  // upper case, each between blanks
};
constexpr TGroup kGroups[] = {
    {{u"picture", u"Picture", PERCEIVED_TYPE_IMAGE},
     u"BMP CUR DIB GIF HEIC ICO JFIF JPE JPEG JPG PBM PGM PNG PNM PPM SVG TGA TIF TIFF WEBP XPM"},
    {{u"music", u"Music", PERCEIVED_TYPE_AUDIO},
     u"AAC AIF AIFF FLAC M4A MID MIDI MP3 OGA OGG OPUS WAV WMA"},
    {{u"video", u"Video", PERCEIVED_TYPE_VIDEO},
     u"3GP AVI FLV M4V MKV MOV MP4 MPEG MPG OGV WEBM WMV"},
    {{u"document", u"Document", PERCEIVED_TYPE_DOCUMENT},
     u"DOC DOCX EPUB HTM HTML ODP ODS ODT PDF PPT PPTX PS RTF TEX XLS XLSX"},
    {{u"document", u"Document", PERCEIVED_TYPE_TEXT},
     u"C CC CFG CONF CPP CSS CSV H HPP INI JS JSON LOG MD PY RS TOML TXT XML YAML YML"},
    {{u"program", u"Program", PERCEIVED_TYPE_APPLICATION},
     u"APPIMAGE BAT CMD COM EXE JAR MSI RUN SH"},
    {{u"", u"", PERCEIVED_TYPE_COMPRESSED}, u"7Z BZ2 CAB DEB GZ RAR RPM TAR TGZ XZ ZIP ZST"},
    {{u"", u"", PERCEIVED_TYPE_SYSTEM}, u"DLL DRV SO SYS"},
    {{u"email", u"E-mail", PERCEIVED_TYPE_UNSPECIFIED}, u"EML MBOX MSG"},
    {{u"contact", u"Contact", PERCEIVED_TYPE_CONTACTS}, u"CONTACT VCF"},
    {{u"calendar", u"Calendar", PERCEIVED_TYPE_UNSPECIFIED}, u"ICS"},
    {kLink, u"DESKTOP LNK URL"},
};

using TKinds = std::unordered_map<TStringView, const TFileKind*>;
TKinds MakeKinds() {
  TKinds kinds;
  for (const TGroup& group : kGroups) {
    TStringView rest = group.Extensions;
    while (!rest.empty()) {
      const std::size_t end = std::min(rest.find(u' '), rest.size());
      kinds.emplace(rest.substr(0, end), &group.Kind);
      rest.remove_prefix(std::min(end + 1, rest.size()));
    }
  }
  return kinds;
}

// The extension in upper case, without its dot. What holds a blank is none: "Mr. Smith".
TString ExtensionOf(TStringView name) {
  const TString extension = ExtractFileExt(name);
  const bool isNone = extension.empty() || extension.find(u' ') != TString::npos;
  return isNone ? TString() : UpperCase(TStringView(extension).substr(1));
}

}  // namespace

TFileKind FileKindOf(TStringView name, bool isFolder) {
  if (isFolder) return kFolder;
  static const auto* kinds = new TKinds(MakeKinds());
  const auto found = kinds->find(ExtensionOf(name));
  return found == kinds->end() ? TFileKind() : *found->second;
}

TString FileTypeName(TStringView name, bool isFolder) {
  if (isFolder) return u"File folder";
  const TString extension = ExtensionOf(name);
  if (extension.empty()) return u"File";
  if (extension == u"LNK") return u"Shortcut";
  return extension + u" File";
}

}  // namespace oak
