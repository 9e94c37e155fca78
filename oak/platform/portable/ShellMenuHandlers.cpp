#include "oak/platform/portable/ShellMenuHandlers.h"

#include <algorithm>

#include "oak/base/Guid.h"
#include "oak/platform/Api.h"
#include "oak/platform/portable/ShellMenu.h"

namespace oak {
namespace {

constexpr LSTATUS NoError = 0;

Ref<IContextMenu> LoadHandler(const CLSID& clsid, PCIDLIST_ABSOLUTE folder, IDataObject* data,
                              HKEY key) {
  Ref<IContextMenu> menu;
  if (FAILED(Api().CoCreateInstance(clsid, nullptr, CLSCTX_INPROC_SERVER, IidOf<IContextMenu>(),
                                    menu.PutVoid())))
    return nullptr;
  const auto start = menu.As<IShellExtInit>();
  // One that refuses these objects has nothing to add.
  if (start && FAILED(start->Initialize(folder, data, key))) return nullptr;
  return menu;
}

// The program of a command, with or without quotes, and what follows it.
void SplitCommand(const TString& command, TString& program, TString& parameters) {
  const TString text = Trim(command);
  const bool quoted = text.starts_with(u'"');
  const std::size_t end = text.find(quoted ? u'"' : u' ', quoted ? 1 : 0);
  program = text.substr(quoted ? 1 : 0, end == TString::npos ? end : end - (quoted ? 1 : 0));
  parameters = end == TString::npos ? TString() : Trim(text.substr(end + 1));
}

// In one go: what is put in may look like a mark itself.
TString FillIn(const TString& parameters, const TString& path) {
  TString filled;
  for (std::size_t i = 0; i < parameters.size(); ++i) {
    const bool mark = parameters[i] == u'%' && i + 1 < parameters.size() &&
                      TStringView(u"1LlVv").find(parameters[i + 1]) != TStringView::npos;
    if (mark) {
      filled += path;
      ++i;
    } else {
      filled += parameters[i];
    }
  }
  return filled;
}

HRESULT RunCommand(const TString& command, const TString& path, const TVerbCall& call) {
  TString program, parameters;
  SplitCommand(command, program, parameters);
  parameters = FillIn(parameters, path);
  SHELLEXECUTEINFOW info{};
  info.hwnd = call.Window;
  info.lpFile = W(program);
  info.lpParameters = W(parameters);
  info.nShow = call.Show;
  return Execute(info);
}

HRESULT RunForAll(const TString& command, const TStringArray& paths, const TVerbCall& call) {
  TVerbRun run(call);
  for (const TString& path : paths) {
    const HRESULT result = RunCommand(command, path, call);
    if (FAILED(result)) run.Fail(result, path);
  }
  return run.Finish();
}

void AddKey(std::vector<TRegistryKey>& keys, const TString& name) {
  TRegistryKey key(HKEY_CLASSES_ROOT, name);
  if (key) keys.push_back(std::move(key));
}

}  // namespace

// --- the registry ---------------------------------------------------------------------

TRegistryKey::TRegistryKey(HKEY parent, const TString& name) {
  if (Api().RegOpenKeyExW(parent, W(name), 0, KEY_READ, &fKey) != NoError) fKey = nullptr;
}

TRegistryKey::~TRegistryKey() {
  if (fKey) Api().RegCloseKey(fKey);
}

TStringArray TRegistryKey::SubKeys() const {
  TStringArray names;
  for (DWORD index = 0; fKey; ++index) {
    TString name(256, u'\0');
    auto size = static_cast<DWORD>(name.size());
    if (Api().RegEnumKeyExW(fKey, index, WBuffer(name), &size, nullptr, nullptr, nullptr,
                            nullptr) != NoError)
      break;
    names.push_back(name.substr(0, size));
  }
  return names;
}

TString TRegistryKey::Text() const {
  DWORD size = 0, type = 0;
  if (!fKey || Api().RegQueryValueExW(fKey, nullptr, nullptr, &type, nullptr, &size) != NoError ||
      (type != REG_SZ && type != REG_EXPAND_SZ))
    return {};
  TString text(size / sizeof(WCHAR) + 1, u'\0');
  if (Api().RegQueryValueExW(fKey, nullptr, nullptr, &type, reinterpret_cast<BYTE*>(WBuffer(text)),
                             &size) != NoError)
    return {};
  return FromW(W(text));
}

std::vector<TRegistryKey> ClassKeysOf(const TShellObjects& objects) {
  std::vector<TRegistryKey> keys;
  const auto all = [&](DWORD attribute) {
    return std::all_of(objects.begin(), objects.end(), [&](const TShellObject& object) {
      return object.Attributes(attribute) != 0;
    });
  };
  const auto extensionOf = [](const TShellObject& object) {
    return object.Attributes(SFGAO_FOLDER) ? TString()
                                           : ExtractFileExt(object.Name(TNameForm::Parsing));
  };
  if (objects.empty()) return keys;
  const TString extension = extensionOf(objects[0]);
  const bool alike = std::all_of(objects.begin(), objects.end(), [&](const TShellObject& object) {
    return SameText(extensionOf(object), extension);
  });
  if (alike && extension.size() > 1) {
    AddKey(keys, extension);
    const TString program = keys.empty() ? TString() : keys.back().Text();
    if (!program.empty()) AddKey(keys, program);
  }
  if (all(SFGAO_FOLDER)) {
    AddKey(keys, u"Directory");
    AddKey(keys, u"Folder");
  } else {
    AddKey(keys, u"*");
  }
  if (all(SFGAO_FILESYSTEM)) AddKey(keys, u"AllFilesystemObjects");
  return keys;
}

std::vector<TRegistryKey> BackgroundKeys() {
  std::vector<TRegistryKey> keys;
  AddKey(keys, u"Directory\\Background");
  return keys;
}

// --- verbs of others --------------------------------------------------------------------

std::vector<Ref<IContextMenu>> LoadMenuHandlers(std::span<const HKEY> keys,
                                                PCIDLIST_ABSOLUTE folder, IDataObject* data) {
  std::vector<Ref<IContextMenu>> menus;
  std::vector<GUID> known;
  for (const HKEY parent : keys) {
    const TRegistryKey list(parent, u"shellex\\ContextMenuHandlers");
    for (const TString& name : list.SubKeys()) {
      const TRegistryKey entry(list.Get(), name);
      GUID clsid;
      if (!TryParseGuid(Trim(entry.Text()), clsid) && !TryParseGuid(name, clsid)) continue;
      if (std::find(known.begin(), known.end(), clsid) != known.end()) continue;
      known.push_back(clsid);
      if (auto menu = LoadHandler(clsid, folder, data, parent)) menus.push_back(std::move(menu));
    }
  }
  return menus;
}

std::vector<TMenuVerb> StaticVerbs(std::span<const HKEY> keys, const TShellObjects& objects) {
  std::vector<TMenuVerb> verbs;
  TStringArray paths;
  for (const TShellObject& object : objects) {
    paths.push_back(object.Path());
    if (paths.back().empty()) return verbs;  // nothing that a command could be told
  }
  for (const HKEY parent : keys) {
    const TRegistryKey list(parent, u"shell");
    for (const TString& name : list.SubKeys()) {
      const TRegistryKey entry(list.Get(), name);
      const TString command = TRegistryKey(entry.Get(), u"command").Text();
      const bool taken = std::any_of(verbs.begin(), verbs.end(), [&](const TMenuVerb& other) {
        return SameText(other.Verb, name);
      });
      // How a type is opened is the desktop's matter.
      if (command.empty() || taken || SameText(name, u"open")) continue;
      TMenuVerb verb;
      verb.Verb = name;
      verb.Text = entry.Text().empty() ? name : entry.Text();
      verb.Help = verb.Text;
      verb.Run = [command, paths](const TVerbCall& call) {
        return RunForAll(command, paths, call);
      };
      verbs.push_back(std::move(verb));
    }
  }
  return verbs;
}

}  // namespace oak
