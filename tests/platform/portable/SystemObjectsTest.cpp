// Registry, memory with handles, bind contexts, classes, variants.
#include <atomic>
#include <cstring>
#include <thread>

#include "oak/base/InterfacedObject.h"
#include "oak/base/Variant.h"
#include "oak/platform/portable/PortableClasses.h"
#include "oak/platform/portable/PortableMemory.h"
#include "oak/platform/portable/PortableRegistry.h"
#include "tests/platform/portable/SystemTest.h"

namespace oak::test {
namespace {

TEST(SystemRegistry, ValuesAndKeys) {
  ResetRegistry();
  SetRegistryText(HKEY_CLASSES_ROOT, u"Oak\\Shell\\Open", u"", u"run %1");
  SetRegistryNumber(HKEY_CLASSES_ROOT, u"oak\\SHELL\\open", u"Count", 7);
  SetRegistryBinary(HKEY_CLASSES_ROOT, u"Oak\\Bytes", u"b", {});
  HKEY key = nullptr;
  ASSERT_EQ(Api().RegOpenKeyExW(HKEY_CLASSES_ROOT, u"OAK\\shell\\Open", 0, KEY_READ, &key), 0);
  DWORD type = 0, size = 0;
  EXPECT_EQ(Api().RegQueryValueExW(key, nullptr, nullptr, &type, nullptr, &size), 0);
  EXPECT_EQ(type, REG_SZ);
  EXPECT_EQ(size, 14u);  // with the end
  TString text(7, u'\0');
  auto* bytes = reinterpret_cast<BYTE*>(text.data());
  size = 13;
  EXPECT_EQ(Api().RegQueryValueExW(key, u"", nullptr, nullptr, bytes, &size),
            LSTATUS{ERROR_MORE_DATA});
  EXPECT_EQ(size, 14u);
  EXPECT_EQ(Api().RegQueryValueExW(key, u"", nullptr, nullptr, bytes, &size), 0);
  EXPECT_EQ(FromW(W(text)), u"run %1");
  EXPECT_EQ(Api().RegQueryValueExW(key, u"none", nullptr, nullptr, nullptr, nullptr),
            LSTATUS{ERROR_FILE_NOT_FOUND});
  EXPECT_EQ(GetRegistryNumber(HKEY_CLASSES_ROOT, u"Oak\\shell\\open", u"count"), 7u);
  EXPECT_EQ(GetRegistryText(HKEY_CLASSES_ROOT, u"Oak\\shell\\open", u"count"), std::nullopt);

  // An open key outlives its place in the tree.
  EXPECT_TRUE(DeleteRegistryKey(HKEY_CLASSES_ROOT, u"oak\\shell"));
  EXPECT_FALSE(DeleteRegistryKey(HKEY_CLASSES_ROOT, u"oak\\shell"));
  EXPECT_EQ(Api().RegQueryValueExW(key, u"Count", nullptr, &type, nullptr, nullptr), 0);
  EXPECT_EQ(Api().RegCloseKey(key), 0);
  EXPECT_EQ(Api().RegCloseKey(key), LSTATUS{ERROR_INVALID_HANDLE});
  EXPECT_EQ(Api().RegQueryValueExW(key, u"Count", nullptr, &type, nullptr, nullptr),
            LSTATUS{ERROR_INVALID_HANDLE});
  EXPECT_EQ(Api().RegOpenKeyExW(HKEY_CLASSES_ROOT, u"Oak\\Shell", 0, KEY_READ, &key),
            LSTATUS{ERROR_FILE_NOT_FOUND});
  EXPECT_EQ(key, nullptr);
  EXPECT_EQ(Api().RegOpenKeyExW(HKEY_CLASSES_ROOT, u"Oak", 0, KEY_READ, nullptr),
            LSTATUS{ERROR_INVALID_PARAMETER});
  ResetRegistry();
}

TEST(SystemRegistry, RightsOfAHandleAndTheEndOfAKey) {
  ResetRegistry();
  HKEY writer = nullptr;
  HKEY reader = nullptr;
  DWORD disposition = 0;
  const auto create = [&] {
    return Api().RegCreateKeyExW(HKEY_CURRENT_USER, u"a\\b", 0, nullptr, 0, KEY_ALL_ACCESS, nullptr,
                                 &writer, &disposition);
  };
  ASSERT_EQ(create(), 0);
  EXPECT_EQ(disposition, REG_CREATED_NEW_KEY);
  Api().RegCloseKey(writer);
  ASSERT_EQ(create(), 0);
  EXPECT_EQ(disposition, REG_OPENED_EXISTING_KEY);
  ASSERT_EQ(Api().RegOpenKeyExW(HKEY_CURRENT_USER, u"A\\B", 0, KEY_READ, &reader), 0);
  const BYTE data[] = {1, 2};
  EXPECT_EQ(Api().RegSetValueExW(writer, u"v", 0, REG_BINARY, data, 2), 0);
  EXPECT_EQ(Api().RegSetValueExW(reader, u"v", 0, REG_BINARY, data, 2),
            LSTATUS{ERROR_ACCESS_DENIED});
  EXPECT_EQ(Api().RegDeleteValueW(reader, u"v"), LSTATUS{ERROR_ACCESS_DENIED});
  EXPECT_EQ(Api().RegDeleteValueW(writer, u"V"), 0);
  EXPECT_EQ(Api().RegDeleteValueW(writer, u"v"), LSTATUS{ERROR_FILE_NOT_FOUND});
  EXPECT_EQ(Api().RegDeleteKeyExW(HKEY_CURRENT_USER, u"a", 0, 0), LSTATUS{ERROR_ACCESS_DENIED});
  EXPECT_EQ(Api().RegDeleteKeyExW(HKEY_CURRENT_USER, u"A\\b", 0, 0), 0);
  EXPECT_EQ(Api().RegSetValueExW(writer, u"v", 0, REG_BINARY, data, 2), LSTATUS{ERROR_KEY_DELETED});
  EXPECT_EQ(Api().RegDeleteKeyExW(HKEY_CURRENT_USER, u"a", 0, 0), 0);
  EXPECT_EQ(Api().RegDeleteKeyExW(HKEY_CURRENT_USER, u"a", 0, 0), LSTATUS{ERROR_FILE_NOT_FOUND});
  Api().RegCloseKey(writer);
  Api().RegCloseKey(reader);
  ResetRegistry();
}

TEST(SystemRegistry, Enumeration) {
  ResetRegistry();
  for (const char16_t* name : {u"beta", u"Alpha", u"gamma"}) {
    SetRegistryText(HKEY_CURRENT_USER, u"Enum\\" + TString(name), u"", u"");
    SetRegistryNumber(HKEY_CURRENT_USER, u"Enum", name, 1);
  }
  HKEY key = nullptr;
  ASSERT_EQ(Api().RegOpenKeyExW(HKEY_CURRENT_USER, u"Enum", 0, KEY_READ, &key), 0);
  TStringArray keys, values;
  WCHAR name[8];
  for (DWORD i = 0, size = 8;
       Api().RegEnumKeyExW(key, i, name, &size, nullptr, nullptr, nullptr, nullptr) == 0;
       ++i, size = 8)
    keys.push_back(TString(name, size));
  for (DWORD i = 0, size = 8;
       Api().RegEnumValueW(key, i, name, &size, nullptr, nullptr, nullptr, nullptr) == 0;
       ++i, size = 8)
    values.push_back(TString(name, size));
  EXPECT_EQ(keys, (TStringArray{u"Alpha", u"beta", u"gamma"}));
  EXPECT_EQ(values, keys);
  DWORD size = 5;
  EXPECT_EQ(Api().RegEnumKeyExW(key, 0, name, &size, nullptr, nullptr, nullptr, nullptr),
            LSTATUS{ERROR_MORE_DATA});
  EXPECT_EQ(Api().RegEnumKeyExW(key, 3, name, &size, nullptr, nullptr, nullptr, nullptr),
            LSTATUS{ERROR_NO_MORE_ITEMS});
  Api().RegCloseKey(key);
  ResetRegistry();
  EXPECT_EQ(GetRegistryNumber(HKEY_CURRENT_USER, u"Enum", u"beta"), std::nullopt);
}

TEST(SystemRegistry, ExplorerOptionsAreStored) {
  ResetRegistry();
  SHELLSTATEW state{};
  constexpr DWORD mask = SSF_SHOWEXTENSIONS | SSF_SHOWALLOBJECTS;
  Api().SHGetSetSettings(&state, mask, FALSE);
  EXPECT_TRUE(state.fShowExtensions);
  EXPECT_FALSE(state.fShowAllObjects);
  state.fShowExtensions = 0;
  state.fShowAllObjects = -1;
  Api().SHGetSetSettings(&state, SSF_SHOWEXTENSIONS, TRUE);
  SHELLSTATEW again{};
  Api().SHGetSetSettings(&again, mask, FALSE);
  EXPECT_FALSE(again.fShowExtensions);
  EXPECT_FALSE(again.fShowAllObjects);  // not asked to be set
  Api().SHGetSetSettings(nullptr, mask, FALSE);
  ResetRegistry();
}

// --- memory ------------------------------------------------------------------

TEST(SystemMemory, Blocks) {
  const HGLOBAL block = PortableGlobalCopy("abc", 3);
  EXPECT_EQ(Api().GlobalSize(block), 3u);
  EXPECT_EQ(std::memcmp(Api().GlobalLock(block), "abc", 3), 0);
  Api().GlobalUnlock(block);
  STGMEDIUM medium{};
  medium.tymed = TYMED_HGLOBAL;
  medium.hGlobal = block;
  Api().ReleaseStgMedium(&medium);
  EXPECT_EQ(Api().GlobalLock(block), nullptr);
  EXPECT_EQ(Api().GlobalSize(block), 0u);
  int wild = 0;
  EXPECT_EQ(Api().GlobalLock(&wild), nullptr);
  Api().ReleaseStgMedium(nullptr);
  PortableGlobalFree(&wild);
}

TEST(SystemMemory, DroppedFiles) {
  const auto query = [](HGLOBAL block) {
    const auto drop = static_cast<HDROP>(block);
    TStringArray names(Api().DragQueryFileW(drop, 0xFFFFFFFFu, nullptr, 0));
    for (UINT i = 0; i < names.size(); ++i) {
      names[i].resize(Api().DragQueryFileW(drop, i, nullptr, 0) + 1u);
      names[i].resize(
          Api().DragQueryFileW(drop, i, WBuffer(names[i]), static_cast<UINT>(names[i].size())));
    }
    PortableGlobalFree(block);
    return names;
  };
  const TStringArray paths = {u"C:\\a", u"C:\\" + TString(500, u'b')};
  EXPECT_EQ(query(PortableDropFiles(paths)), paths);
  EXPECT_EQ(query(PortableDropFiles({})), TStringArray{});

  DROPFILES header{};
  header.pFiles = sizeof header;
  std::string bytes(reinterpret_cast<const char*>(&header), sizeof header);
  EXPECT_EQ(
      query(PortableGlobalCopy((bytes + std::string("x\0y\0\0z\0", 7)).data(), sizeof header + 7)),
      (TStringArray{u"x", u"y"}));
  EXPECT_EQ(query(PortableGlobalCopy((bytes + "cut").data(), sizeof header + 3)), TStringArray{});
  EXPECT_EQ(query(PortableGlobalCopy(bytes.data(), 5)), TStringArray{});
  header.pFiles = 0xFFFFFFFF;
  header.fWide = TRUE;
  EXPECT_EQ(query(PortableGlobalCopy(&header, sizeof header)), TStringArray{});
  EXPECT_EQ(query(nullptr), TStringArray{});

  const HGLOBAL block = PortableDropFiles(paths);
  WCHAR small[3];
  EXPECT_EQ(Api().DragQueryFileW(static_cast<HDROP>(block), 0, small, 3), 2u);
  EXPECT_EQ(FromW(small), u"C:");
  EXPECT_EQ(Api().DragQueryFileW(static_cast<HDROP>(block), 2, small, 3), 0u);
  PortableGlobalFree(block);
}

TEST(SystemMemory, ClipboardFormats) {
  const UINT format = Api().RegisterClipboardFormatW(u"FileGroupDescriptorW");
  EXPECT_GE(format, 0xC000u);
  EXPECT_EQ(Api().RegisterClipboardFormatW(u"FILEGROUPDESCRIPTORW"), format);
  EXPECT_NE(Api().RegisterClipboardFormatW(u"FileGroupDescriptor"), format);
  EXPECT_EQ(PortableClipboardFormatName(format), u"FileGroupDescriptorW");
  EXPECT_EQ(Api().RegisterClipboardFormatW(nullptr), 0u);
  EXPECT_FALSE(Api().IsClipboardFormatAvailable(15));
  IDataObject* data = nullptr;
  EXPECT_TRUE(FAILED(Api().OleGetClipboard(&data)));
  EXPECT_EQ(data, nullptr);
}

// --- component objects ---------------------------------------------------------

struct TCounted : TInterfacedObject<IUnknown> {
  TCounted() { ++Alive; }
  ~TCounted() override { --Alive; }
  static inline std::atomic<int> Alive = 0;
};

TEST(SystemCom, BindContexts) {
  Ref<IBindCtx> context;
  EXPECT_EQ(Api().CreateBindCtx(1, context.Put()), E_INVALIDARG);
  ASSERT_EQ(Api().CreateBindCtx(0, context.Put()), S_OK);
  TString key = u"File System Bind Data", other = u"file system bind data";
  {
    const auto object = MakeRef<TCounted>();
    EXPECT_EQ(context->RegisterObjectParam(WBuffer(key), object.Get()), S_OK);
    EXPECT_EQ(context->RegisterObjectParam(nullptr, object.Get()), S_OK);
    EXPECT_EQ(context->RegisterObjectParam(WBuffer(key), object.Get()), S_OK);  // in its place
    EXPECT_EQ(context->RegisterObjectBound(object.Get()), S_OK);
  }
  Ref<IUnknown> found;
  EXPECT_EQ(context->GetObjectParam(WBuffer(key), found.Put()), S_OK);
  EXPECT_TRUE(found);
  found.Reset();
  EXPECT_TRUE(FAILED(context->GetObjectParam(WBuffer(other), found.Put())));
  Ref<IEnumString> names;
  ASSERT_EQ(context->EnumObjectParam(names.Put()), S_OK);
  LPOLESTR texts[3] = {};
  ULONG count = 0;
  EXPECT_EQ(names->Next(3, texts, &count), S_FALSE);
  ASSERT_EQ(count, 2u);
  EXPECT_EQ(FromW(texts[0]), key);
  CoTaskMemFree(texts[0]);
  CoTaskMemFree(texts[1]);
  EXPECT_EQ(context->RevokeObjectParam(WBuffer(key)), S_OK);
  EXPECT_EQ(context->RevokeObjectParam(WBuffer(key)), S_FALSE);
  EXPECT_EQ(context->ReleaseBoundObjects(), S_OK);
  EXPECT_EQ(TCounted::Alive, 1);
  context.Reset();
  EXPECT_EQ(TCounted::Alive, 0);
}

TEST(SystemCom, BindOptionsOfAnySize) {
  Ref<IBindCtx> context;
  ASSERT_EQ(Api().CreateBindCtx(0, context.Put()), S_OK);
  struct {
    BIND_OPTS Options;
    DWORD Further[4];
  } large{{sizeof large, 0, STGM_SHARE_DENY_NONE, 5}, {1, 2, 3, 4}};
  EXPECT_EQ(context->SetBindOptions(&large.Options), S_OK);
  BIND_OPTS options{sizeof options, 9, 9, 9};
  EXPECT_EQ(context->GetBindOptions(&options), S_OK);
  EXPECT_EQ(options.grfMode, STGM_SHARE_DENY_NONE);
  EXPECT_EQ(options.dwTickCountDeadline, 5u);
  options = {8, 9, 9, 9};
  EXPECT_EQ(context->GetBindOptions(&options), S_OK);
  EXPECT_EQ(options.cbStruct, 8u);
  EXPECT_EQ(options.grfMode, 9u);
  options.cbStruct = 0;
  EXPECT_EQ(context->GetBindOptions(&options), E_INVALIDARG);
  EXPECT_EQ(context->SetBindOptions(nullptr), E_POINTER);
}

TEST(SystemCom, Classes) {
  constexpr CLSID clsid{0x11223344, 1, 2, {1, 2, 3, 4, 5, 6, 7, 8}};
  constexpr IID unknown{0x99, 1, 2, {1, 2, 3, 4, 5, 6, 7, 8}};
  Ref<IUnknown> object;
  EXPECT_EQ(Api().CoCreateInstance(clsid, nullptr, CLSCTX_ALL, IID_IUnknown, object.PutVoid()),
            REGDB_E_CLASSNOTREG);
  RegisterPortableClass<TCounted>(clsid);
  EXPECT_EQ(Api().CoCreateInstance(clsid, nullptr, CLSCTX_ALL, IID_IUnknown, object.PutVoid()),
            S_OK);
  EXPECT_EQ(TCounted::Alive, 1);
  void* none = &object;
  EXPECT_EQ(Api().CoCreateInstance(clsid, nullptr, CLSCTX_ALL, unknown, &none), E_NOINTERFACE);
  EXPECT_EQ(none, nullptr);
  EXPECT_EQ(Api().CoCreateInstance(clsid, object.Get(), CLSCTX_ALL, IID_IUnknown, &none),
            CLASS_E_NOAGGREGATION);
  EXPECT_EQ(Api().CoCreateInstance(clsid, nullptr, CLSCTX_ALL, IID_IUnknown, nullptr), E_POINTER);
  object.Reset();
  EXPECT_EQ(TCounted::Alive, 0);
  RegisterPortableClass(clsid, {});
  EXPECT_EQ(Api().CoCreateInstance(clsid, nullptr, CLSCTX_ALL, IID_IUnknown, &none),
            REGDB_E_CLASSNOTREG);
}

TEST(SystemCom, ApartmentsBelongToTheirThread) {
  std::thread([] {
    EXPECT_EQ(Api().CoInitializeEx(nullptr, COINIT_MULTITHREADED), S_OK);
    EXPECT_EQ(Api().OleInitialize(nullptr), RPC_E_CHANGED_MODE);
    EXPECT_EQ(Api().CoInitializeEx(nullptr, COINIT_MULTITHREADED), S_FALSE);
    Api().CoUninitialize();
    Api().CoUninitialize();
    EXPECT_EQ(Api().OleInitialize(nullptr), S_OK);
    Api().OleUninitialize();
    Api().OleUninitialize();  // one too many
    EXPECT_EQ(Api().CoInitializeEx(nullptr, COINIT_MULTITHREADED), S_OK);
  }).join();
}

TEST(SystemCom, ThreadReferencesShowTheirCount) {
  LONG count = 0;
  IUnknown* object = nullptr;
  ASSERT_EQ(Api().SHCreateThreadRef(&count, &object), S_OK);
  EXPECT_EQ(count, 1);
  std::vector<std::thread> helpers;
  for (int i = 0; i < 4; ++i) {
    object->AddRef();
    helpers.emplace_back([object] {
      for (int n = 0; n < 1000; ++n) {
        object->AddRef();
        object->Release();
      }
      object->Release();
    });
  }
  for (std::thread& helper : helpers) helper.join();
  EXPECT_EQ(count, 1);
  EXPECT_EQ(Api().SHSetThreadRef(object), S_OK);
  EXPECT_EQ(Api().SHReleaseThreadRef(), S_OK);
  EXPECT_EQ(count, 0);
  EXPECT_EQ(Api().SHReleaseThreadRef(), S_FALSE);
  EXPECT_EQ(Api().SHCreateThreadRef(nullptr, &object), E_INVALIDARG);
}

TEST(SystemCom, VariantsChangeInPlace) {
  TVariant value = TVariant::From(42);
  VARIANT raw = value.Detach();
  EXPECT_EQ(Api().VariantChangeType(&raw, &raw, 0, VT_BSTR), S_OK);
  EXPECT_EQ(FromW(raw.bstrVal), u"42");
  EXPECT_TRUE(FAILED(Api().VariantChangeType(&raw, &raw, 0, VT_UNKNOWN)));
  EXPECT_EQ(raw.vt, VT_BSTR);  // as it was
  VariantClear(&raw);
  EXPECT_EQ(Api().VariantChangeType(nullptr, &raw, 0, VT_I4), E_INVALIDARG);
}

TEST(SystemProcess, VersionFollowsTheConfiguration) {
  TPortableConfig config = PortableConfigFromEnvironment();
  config.MajorVersion = 6;
  config.MinorVersion = 1;
  config.BuildNumber = 7601;
  config.IsAdmin = true;
  SetPortableConfig(config);
  OSVERSIONINFOEXW version{};
  version.dwOSVersionInfoSize = sizeof version;
  EXPECT_EQ(Api().RtlGetVersion(reinterpret_cast<OSVERSIONINFOW*>(&version)), 0);
  EXPECT_EQ(version.dwBuildNumber, 7601u);
  EXPECT_EQ(version.wProductType, 1);
  EXPECT_TRUE(Api().IsUserAnAdmin());
  EXPECT_NE(Api().RtlGetVersion(nullptr), 0);
  SetPortableConfig(std::shared_ptr<const TPortableConfig>());
}

}  // namespace
}  // namespace oak::test
