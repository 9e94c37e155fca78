#include "oak/platform/portable/ShellIcons.h"

#include "oak/platform/portable/FileKinds.h"
#include "oak/platform/portable/ShellNode.h"
#include "oak/platform/portable/ShellParse.h"
#include "oak/platform/portable/ShellPidl.h"

namespace oak {
namespace {

bool HoldsNothing(IFolderSource& folder) {
  Ref<IFolderCursor> cursor;
  PCUITEMID_CHILD first = nullptr;
  return SUCCEEDED(folder.Enumerate(SHCONTF_FOLDERS | SHCONTF_NONFOLDERS | SHCONTF_INCLUDEHIDDEN,
                                    cursor)) &&
         cursor->Next(&first) == S_FALSE;
}

bool IsBin(const TFolderNode& node, PCUITEMID_CHILD child, Ref<TFolderNode>& bin) {
  return ElementKind(child) == ekMount && SUCCEEDED(node.Open(child, bin)) &&
         bin->ClassId() == RecycleBinClassId;
}

// What is known without following a shortcut.
int IconByKind(const TFolderNode& node, PCUITEMID_CHILD child, bool open) {
  IFolderSource& source = node.SourceOf(child);
  int index = 0;
  if (source.GetIconIndex(child, open, index) == S_OK) return index;
  Ref<TFolderNode> bin;
  if (IsBin(node, child, bin)) return HoldsNothing(bin->Contents()) ? iconTrash : iconTrashFull;
  DWORD attributes = 0;
  if (FAILED(source.GetAttributes(child, SFGAO_FOLDER | SFGAO_STREAM, attributes)))
    return iconUnknown;
  // An archive is both, and looks like a file.
  if ((attributes & SFGAO_FOLDER) && !(attributes & SFGAO_STREAM))
    return open ? iconFolderOpen : iconFolder;
  TString name;
  return SUCCEEDED(source.GetName(child, TNameForm::Parsing, name)) ? IconOfFileName(name)
                                                                    : iconUnknown;
}

}  // namespace

TShellIcon IconOfFileName(TStringView name) {
  const TFileKind kind = FileKindOf(name, false);
  switch (kind.Perceived) {
    case PERCEIVED_TYPE_IMAGE:
      return iconImage;
    case PERCEIVED_TYPE_AUDIO:
      return iconAudio;
    case PERCEIVED_TYPE_VIDEO:
      return iconVideo;
    case PERCEIVED_TYPE_DOCUMENT:
      return iconDocument;
    case PERCEIVED_TYPE_TEXT:
      return iconText;
    case PERCEIVED_TYPE_APPLICATION:
      return iconProgram;
    case PERCEIVED_TYPE_COMPRESSED:
      return iconArchive;
    case PERCEIVED_TYPE_SYSTEM:
      return iconSystemFile;
    case PERCEIVED_TYPE_CONTACTS:
      return iconContact;
    default:
      break;
  }
  const TStringView text = kind.Kind;
  if (text == u"email") return iconMail;
  if (text == u"calendar") return iconCalendar;
  return text == u"link" ? iconLink : iconUnknown;
}

int TFolderNode::GetIconIndex(PCUITEMID_CHILD child, bool open) const {
  const int index = IconByKind(*this, child, open);
  if (index != iconLink) return index;
  TPidl target;
  if (FAILED(SourceOf(child).GetLinkTarget(child, target)) || !target) return index;
  if (IsEmptyPidl(target.Get())) return iconDesktop;
  // A shortcut to a shortcut shows the second one as a file: they may lead in a circle.
  Ref<TFolderNode> folder;
  PCUITEMID_CHILD last = nullptr;
  if (FAILED(BindParent(Desktop(), target.Get(), folder, last))) return index;
  // The list in the shortcut may be old, or made from nothing but a path.
  TPidl fresh;
  if (folder->SourceOf(last).Refresh(last, fresh) == S_OK && fresh) last = fresh.Get();
  return IconByKind(*folder, last, open);
}

}  // namespace oak
