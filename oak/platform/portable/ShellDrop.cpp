// What folders take when it is dropped on them.
#include <sys/stat.h>

#include <algorithm>

#include "oak/platform/portable/PortableCall.h"
#include "oak/platform/portable/PortableFiles.h"
#include "oak/platform/portable/ShellData.h"
#include "oak/platform/portable/ShellPidl.h"
#include "oak/platform/portable/ShellVerbs.h"
#include "oak/platform/portable/TrashCan.h"

namespace oak {
namespace {

constexpr DWORD AltKey = 0x20;  // MK_ALT
constexpr DWORD MouseButtons = MK_LBUTTON | MK_RBUTTON | MK_MBUTTON;
constexpr DWORD AllEffects = DROPEFFECT_COPY | DROPEFFECT_MOVE | DROPEFFECT_LINK;
static_assert(AllEffects == (SFGAO_CANCOPY | SFGAO_CANMOVE | SFGAO_CANLINK));

/// What a folder and some data can do together, before the source and the keys have their say.
struct TDropOffer {
  DWORD Possible = DROPEFFECT_NONE;
  DWORD Usual = DROPEFFECT_COPY;  ///< without keys
  bool KeysCount = true;
};

DWORD FirstOf(DWORD effects, std::initializer_list<DWORD> order) {
  for (const DWORD effect : order)
    if (effects & effect) return effect;
  return DROPEFFECT_NONE;
}

// --- the offer --------------------------------------------------------------------------

TDropOffer OfferOfTrash(IDataObject& data, const TShellObjects& objects) {
  TDropOffer offer;
  offer.Usual = DROPEFFECT_MOVE;
  offer.KeysCount = false;
  const bool allThere = std::all_of(objects.begin(), objects.end(), [](const TShellObject& object) {
    return IsTrashEntry(object.Native());
  });
  if (!allThere && HasFormat(data, CF_HDROP) && CommonOf(objects, SFGAO_CANDELETE))
    offer.Possible = DROPEFFECT_MOVE;
  return offer;
}

/// How files lie to the directory that they come to.
struct TNeighbourhood {
  bool OneVolume = true;
  bool IntoItself = false;  ///< one of them is or holds the directory
};

TNeighbourhood LookAround(const TStringArray& paths, const std::string& directory) {
  TNeighbourhood found;
  struct stat target;
  if (::stat(directory.c_str(), &target) != 0) return found;
  const TString drive = ExtractFileDrive(WindowsPath(directory));
  for (const TString& path : paths) {
    const std::string native = NativePath(path).value_or(std::string());
    struct stat info;
    if (native.empty() || ::lstat(native.c_str(), &info) != 0) continue;  // the drop tells
    if (IsInside(directory, native)) found.IntoItself = true;
    if (info.st_dev != target.st_dev || !SameText(ExtractFileDrive(WindowsPath(native)), drive))
      found.OneVolume = false;
  }
  return found;
}

TDropOffer OfferOf(IDataObject& data, const TFolderNode& folder) {
  const bool files = HasFormat(data, CF_HDROP);
  const bool lists = files || HasFormat(data, FormatOf(TShellFormat::IdList));
  const bool streams = HasFormat(data, FormatOf(TShellFormat::FileDescriptor));
  const TShellObjects objects = lists ? ObjectsOf(ListsOf(data)) : TShellObjects();
  if (IsTrash(folder)) return OfferOfTrash(data, objects);
  TDropOffer offer;
  const std::string directory = NativeOf(folder);
  if (!TakesObjects(directory)) return offer;
  const TNeighbourhood around = LookAround(PathsOf(data), directory);
  if (around.IntoItself) return offer;
  // Of streams the source would have to be told that they were moved.
  if (files || streams) offer.Possible |= DROPEFFECT_COPY;
  if (files) offer.Possible |= DROPEFFECT_MOVE;
  if (lists && !objects.empty()) offer.Possible |= DROPEFFECT_LINK;
  offer.Possible &= CommonOf(objects, AllEffects);
  if (files && around.OneVolume) offer.Usual = DROPEFFECT_MOVE;
  const DWORD preferred = ReadEffect(data, TShellFormat::PreferredEffect, 0) & AllEffects;
  if (preferred && !(preferred & offer.Usual))
    offer.Usual = FirstOf(preferred, {DROPEFFECT_COPY, DROPEFFECT_MOVE, DROPEFFECT_LINK});
  return offer;
}

// One effect, or none. What the keys ask for is done or nothing is.
DWORD EffectFor(const TDropOffer& offer, DWORD keys, DWORD allowed) {
  const DWORD possible = offer.Possible & allowed;
  const bool shift = (keys & MK_SHIFT) != 0, control = (keys & MK_CONTROL) != 0;
  if (offer.KeysCount && ((keys & AltKey) || (shift && control))) return possible & DROPEFFECT_LINK;
  if (offer.KeysCount && control) return possible & DROPEFFECT_COPY;
  if (offer.KeysCount && shift) return possible & DROPEFFECT_MOVE;
  return FirstOf(possible, {offer.Usual, DROPEFFECT_COPY, DROPEFFECT_MOVE, DROPEFFECT_LINK});
}

// --- the target --------------------------------------------------------------------------

class TFolderDropTarget final : public TInterfacedObject<IDropTarget> {
 public:
  explicit TFolderDropTarget(Ref<TFolderNode> folder) : fFolder(std::move(folder)) {}

  HRESULT DragEnter(IDataObject* data, DWORD keys, POINTL, DWORD* effect) override {
    return PortableCall("IDropTarget::DragEnter", [&]() -> HRESULT {
      if (!effect || !data) return E_INVALIDARG;
      fOffer = {};
      fOffer = OfferOf(*data, *fFolder);
      NoteButton(keys);
      *effect = EffectFor(fOffer, keys, *effect);
      return S_OK;
    });
  }
  HRESULT DragOver(DWORD keys, POINTL, DWORD* effect) override {
    return PortableCall("IDropTarget::DragOver", [&]() -> HRESULT {
      if (!effect) return E_INVALIDARG;
      NoteButton(keys);
      *effect = EffectFor(fOffer, keys, *effect);
      return S_OK;
    });
  }
  HRESULT DragLeave() override {
    fOffer = {};
    return S_OK;
  }
  HRESULT Drop(IDataObject* data, DWORD keys, POINTL point, DWORD* effect) override {
    return PortableCall("IDropTarget::Drop", [&]() -> HRESULT {
      if (!effect || !data) return E_INVALIDARG;
      const DWORD allowed = std::exchange(*effect, DROPEFFECT_NONE);
      const auto self = Ref<IDropTarget>::Share(this);  // hooks may release the target and the data
      const auto held = Ref<IDataObject>::Share(data);
      fOffer = {};
      const TDropOffer offer = OfferOf(*data, *fFolder);  // files may have gone since
      DWORD chosen = EffectFor(offer, keys, allowed);
      const auto hooks = ShellHooks();
      if (chosen && fByRightButton && hooks->OnDropMenu) {
        const DWORD effects = offer.Possible & allowed;
        chosen = FirstOf(hooks->OnDropMenu(effects, chosen, point) & effects,
                         {DROPEFFECT_COPY, DROPEFFECT_MOVE, DROPEFFECT_LINK});
      }
      if (!chosen) return S_OK;
      TVerbCall call;
      call.Verb = u"drop";
      const HRESULT result = TransferData(*data, *fFolder, chosen, call);
      // Of a move nothing is left for the source to do.
      if (result == S_OK && chosen != DROPEFFECT_MOVE) *effect = chosen;
      return result;
    });
  }

 private:
  // When the drop comes the button is up again.
  void NoteButton(DWORD keys) {
    if (keys & MouseButtons) fByRightButton = (keys & MK_RBUTTON) != 0;
  }

  const Ref<TFolderNode> fFolder;
  TDropOffer fOffer;
  bool fByRightButton = false;
};

}  // namespace

HRESULT MakeDropTarget(const Ref<TFolderNode>& folder, REFIID iid, void** target) {
  *target = nullptr;
  DWORD attributes = 0;
  if (NativeOf(*folder).empty() && !IsTrash(*folder) &&
      (FAILED(folder->GetFolderAttributes(SFGAO_DROPTARGET, attributes)) ||
       !(attributes & SFGAO_DROPTARGET)))
    return E_NOINTERFACE;
  return MakeRef<TFolderDropTarget>(folder)->QueryInterface(iid, target);
}

HRESULT MakeDropTarget(const TShellObject& object, REFIID iid, void** target) {
  *target = nullptr;
  if (IsTrash(*object.Folder)) return E_NOINTERFACE;  // a deleted folder
  const PCUITEMID_CHILD child = object.Child.Get();
  const DWORD attributes = object.Attributes(SFGAO_FOLDER | SFGAO_LINK);
  Ref<TFolderNode> folder;
  if (attributes & SFGAO_FOLDER) {
    const HRESULT result = object.Folder->Open(child, folder);
    return SUCCEEDED(result) ? MakeDropTarget(folder, iid, target) : result;
  }
  std::vector<TPidl> place(1);
  if (!(attributes & SFGAO_LINK) ||
      FAILED(object.Folder->SourceOf(child).GetLinkTarget(child, place[0])))
    return E_NOINTERFACE;
  const TShellObjects leadsTo = ObjectsOf(place);
  if (leadsTo.empty() || !leadsTo[0].Attributes(SFGAO_FOLDER)) return E_NOINTERFACE;
  return MakeDropTarget(leadsTo[0], iid, target);
}

}  // namespace oak
