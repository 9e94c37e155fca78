// The network folder: servers, and their shares.
#include <algorithm>

#include "oak/platform/portable/PortableConfig.h"
#include "oak/platform/portable/ShellNode.h"
#include "oak/platform/portable/ShellRoots.h"

namespace oak {

namespace {

constexpr BYTE kNetworkVersion = 1;
constexpr DWORD kServer = SFGAO_FOLDER | SFGAO_FILESYSANCESTOR | SFGAO_HASSUBFOLDER |
                          SFGAO_STORAGEANCESTOR | SFGAO_CANLINK | SFGAO_HASPROPSHEET;
constexpr DWORD kShare =
    kServer | SFGAO_FILESYSTEM | SFGAO_STORAGE | SFGAO_CANCOPY | SFGAO_DROPTARGET;

// A name as an element has to hold it, or false.
bool NameOf(PCUITEMID_CHILD element, BYTE kind, TString& name) {
  DWORD flags = 0;
  return ReadNameElement(element, kind, kNetworkVersion, flags, name) && !name.empty() &&
         name.find(u'\\') == TString::npos;
}

class TServerSource : public TFolderSource {
 public:
  explicit TServerSource(TString server) : fServer(std::move(server)) {}
  GUID GetClassId() override { return CLSID_NetworkServer; }

  HRESULT Enumerate(DWORD flags, Ref<IFolderCursor>& cursor) override {
    const auto config = PortableConfig();
    std::vector<TPidl> elements;
    bool known = false;
    for (const TPortableShare& share : config->Shares) {
      if (!SameText(share.Server, fServer)) continue;
      known = true;
      if (flags & SHCONTF_FOLDERS)
        elements.push_back(MakeNameElement(ekShare, kNetworkVersion, 0, share.Share));
    }
    if (!known) return HRESULT_FROM_WIN32(53);  // ERROR_BAD_NETPATH
    cursor = MakeListCursor(std::move(elements));
    return S_OK;
  }

  HRESULT GetName(PCUITEMID_CHILD element, TNameForm form, TString& name) override {
    TString share;
    if (!NameOf(element, ekShare, share)) return E_INVALIDARG;
    switch (form) {
      case TNameForm::Parsing:
      case TNameForm::AbsoluteParsing:
      case TNameForm::AbsoluteEditing:
      case TNameForm::FileSystemPath:
        name = u"\\\\" + fServer + u"\\" + share;
        return S_OK;
      case TNameForm::Normal:
        name = share + u" (\\\\" + fServer + u")";
        return S_OK;
      default:
        name = std::move(share);
        return S_OK;
    }
  }

  HRESULT GetAttributes(PCUITEMID_CHILD element, DWORD mask, DWORD& attributes) override {
    TString share;
    if (!NameOf(element, ekShare, share)) return E_INVALIDARG;
    if ((mask & SFGAO_VALIDATE) && !PortableConfig()->FindShare(fServer, share))
      return HRESULT_FROM_WIN32(67);  // ERROR_BAD_NET_NAME
    attributes = kShare;
    return S_OK;
  }

  HRESULT ParseName(TStringView name, const TParseOptions& options, TPidl& element) override {
    const TString prefix = u"\\\\" + fServer + u"\\";
    if (StartsText(prefix, name)) name.remove_prefix(prefix.size());
    const auto config = PortableConfig();
    const TPortableShare* share = config->FindShare(fServer, name);
    if (!share && !options.FindData) return HRESULT_FROM_WIN32(67);
    element =
        MakeNameElement(ekShare, kNetworkVersion, 0, share ? TStringView(share->Share) : name);
    return S_OK;
  }

  HRESULT Open(PCUITEMID_CHILD element, Ref<IFolderSource>& child) override {
    TString share;
    if (!NameOf(element, ekShare, share)) return E_INVALIDARG;
    child = MakeFileSystemFolder(u"\\\\" + fServer + u"\\" + share);
    return S_OK;
  }

  HRESULT GetTypeName(PCUITEMID_CHILD, TString& name) override {
    name = u"Network Share";
    return S_OK;
  }
  HRESULT GetIconIndex(PCUITEMID_CHILD, bool, int& index) override {
    index = iconNetDrive;
    return S_OK;
  }

 private:
  const TString fServer;
};

class TNetworkSource : public TFolderSource {
 public:
  GUID GetClassId() override { return NetworkClassId; }

  HRESULT Enumerate(DWORD flags, Ref<IFolderCursor>& cursor) override {
    const auto config = PortableConfig();
    std::vector<TString> servers;
    for (const TPortableShare& share : config->Shares) {
      const auto same = [&](const TString& other) { return SameText(other, share.Server); };
      if (std::none_of(servers.begin(), servers.end(), same)) servers.push_back(share.Server);
    }
    std::vector<TPidl> elements;
    if (flags & SHCONTF_FOLDERS)
      for (const TString& server : servers)
        elements.push_back(MakeNameElement(ekServer, kNetworkVersion, 0, server));
    cursor = MakeListCursor(std::move(elements));
    return S_OK;
  }

  HRESULT GetName(PCUITEMID_CHILD element, TNameForm form, TString& name) override {
    TString server;
    if (!NameOf(element, ekServer, server)) return E_INVALIDARG;
    switch (form) {
      case TNameForm::Parsing:
      case TNameForm::AbsoluteParsing:
      case TNameForm::AbsoluteEditing:
        name = u"\\\\" + server;
        return S_OK;
      case TNameForm::FileSystemPath:
        return E_INVALIDARG;
      default:
        name = std::move(server);
        return S_OK;
    }
  }

  HRESULT GetAttributes(PCUITEMID_CHILD element, DWORD mask, DWORD& attributes) override {
    TString server;
    if (!NameOf(element, ekServer, server)) return E_INVALIDARG;
    if ((mask & SFGAO_VALIDATE) && KnownName(server).empty()) return HRESULT_FROM_WIN32(53);
    attributes = kServer;
    return S_OK;
  }

  HRESULT ParseName(TStringView name, const TParseOptions& options, TPidl& element) override {
    if (StartsWith(name, u"\\\\")) name.remove_prefix(2);
    const TString known = KnownName(name);
    if (known.empty() && !options.FindData) return HRESULT_FROM_WIN32(53);
    element =
        MakeNameElement(ekServer, kNetworkVersion, 0, known.empty() ? name : TStringView(known));
    return S_OK;
  }

  HRESULT Open(PCUITEMID_CHILD element, Ref<IFolderSource>& child) override {
    TString server;
    if (!NameOf(element, ekServer, server)) return E_INVALIDARG;
    child = MakeRef<TServerSource>(std::move(server));
    return S_OK;
  }

  HRESULT GetTypeName(PCUITEMID_CHILD, TString& name) override {
    name = u"Computer";
    return S_OK;
  }
  HRESULT GetIconIndex(PCUITEMID_CHILD, bool, int& index) override {
    index = iconServer;
    return S_OK;
  }

 private:
  // The server as the configuration spells it, or empty.
  static TString KnownName(TStringView name) {
    const auto config = PortableConfig();
    for (const TPortableShare& share : config->Shares)
      if (SameText(share.Server, name)) return share.Server;
    return {};
  }
};

}  // namespace

Ref<IFolderSource> MakeNetworkSource() { return MakeRef<TNetworkSource>(); }

}  // namespace oak
