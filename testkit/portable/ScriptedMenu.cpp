#include "testkit/portable/ScriptedMenu.h"

#include <atomic>
#include <cstring>

#include "oak/base/Guid.h"
#include "oak/base/InterfacedObject.h"
#include "oak/platform/Api.h"
#include "oak/platform/portable/PortableClasses.h"
#include "oak/platform/portable/PortableRegistry.h"
#include "oak/platform/portable/ShellData.h"

namespace oak::testkit {
namespace {

class TExtension final : public TInterfacedObject<IContextMenu3, IShellExtInit> {
 public:
  explicit TExtension(std::shared_ptr<TScriptedMenu::TState> state) : fState(std::move(state)) {}

  HRESULT Initialize(PCIDLIST_ABSOLUTE, IDataObject* data, HKEY) override {
    fPaths = data ? PathsOf(*data) : TStringArray();
    return fState->InitializeResult;
  }
  HRESULT QueryContextMenu(HMENU menu, UINT index, UINT first, UINT last, UINT) override {
    if (FAILED(fState->QueryResult)) return fState->QueryResult;
    UINT count = 0;
    for (const TScriptedVerb& verb : fState->Verbs) {
      if (first + count > last) break;
      Api().InsertMenuW(menu, index + count, MF_BYPOSITION, first + count, W(verb.Text));
      ++count;
    }
    return MAKE_HRESULT(0, 0, static_cast<USHORT>(count));
  }
  HRESULT InvokeCommand(CMINVOKECOMMANDINFO* info) override {
    const auto offset = reinterpret_cast<std::uintptr_t>(info->lpVerb);
    if (offset >= fState->Verbs.size()) return E_INVALIDARG;
    TString line = fState->Verbs[offset].Verb;
    for (const TString& path : fPaths) line += u' ' + path;
    fState->Invoked.push_back(std::move(line));
    return fState->InvokeResult;
  }
  HRESULT GetCommandString(UINT_PTR id, UINT type, UINT*, CHAR* name, UINT capacity) override {
    if (id >= fState->Verbs.size() || type != GCS_VERBW) return E_INVALIDARG;
    const TString& verb = fState->Verbs[id].Verb;
    if (verb.size() >= capacity) return E_INVALIDARG;
    std::memcpy(name, verb.c_str(), (verb.size() + 1) * sizeof(WCHAR));
    return S_OK;
  }
  HRESULT HandleMenuMsg(UINT message, WPARAM wParam, LPARAM lParam) override {
    return HandleMenuMsg2(message, wParam, lParam, nullptr);
  }
  HRESULT HandleMenuMsg2(UINT message, WPARAM, LPARAM, LRESULT* result) override {
    fState->Messages.push_back(message);
    if (result) *result = 1;
    return S_OK;
  }

 private:
  const std::shared_ptr<TScriptedMenu::TState> fState;
  TStringArray fPaths;
};

GUID NextClassId() {
  static std::atomic<DWORD> last{0};
  return {0x8C1D0000u + ++last, 0x3E5A, 0x4F60, {0x9B, 0x11, 0x2A, 0x70, 0xD4, 0x0C, 0x58, 0xE3}};
}

}  // namespace

TScriptedMenu::TScriptedMenu(TString className, std::vector<TScriptedVerb> verbs)
    : fClassId(NextClassId()), fState(std::make_shared<TState>()) {
  fState->Verbs = std::move(verbs);
  const TString id = GuidToString(fClassId);
  fKey = className + u"\\shellex\\ContextMenuHandlers\\" + id;
  SetRegistryText(HKEY_CLASSES_ROOT, fKey, {}, id);
  RegisterPortableClass(fClassId, [state = fState](REFIID iid, void** object) -> HRESULT {
    return MakeRef<TExtension>(state)->QueryInterface(iid, object);
  });
}

TScriptedMenu::~TScriptedMenu() {
  DeleteRegistryKey(HKEY_CLASSES_ROOT, fKey);
  RegisterPortableClass(fClassId, nullptr);
}

}  // namespace oak::testkit
