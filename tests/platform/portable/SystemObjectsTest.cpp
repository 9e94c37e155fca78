// Registry, memory with handles, bind contexts, classes, variants.
#include <atomic>
#include <cstring>
#include <thread>

#include "oak/base/InterfacedObject.h"
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
  HKEY key = nullptr;
  ASSERT_EQ(Api().RegOpenKeyExW(HKEY_CLASSES_ROOT, u"OAK\\shell\\Open", 0, KEY_READ, &key), 0);
  DWORD type = 0, size = 13;
  TString text(7, u'\0');
  auto* bytes = reinterpret_cast<BYTE*>(text.data());
  EXPECT_EQ(Api().RegQueryValueExW(key, u"", nullptr, &type, bytes, &size),
            LSTATUS{ERROR_MORE_DATA});
  EXPECT_EQ(type, REG_SZ);
  EXPECT_EQ(size, 14u);  // with the end
  EXPECT_EQ(Api().RegQueryValueExW(key, nullptr, nullptr, nullptr, bytes, &size), 0);
  EXPECT_EQ(FromW(W(text)), u"run %1");
  EXPECT_EQ(GetRegistryNumber(HKEY_CLASSES_ROOT, u"Oak\\shell\\open", u"count"), 7u);
  EXPECT_EQ(GetRegistryText(HKEY_CLASSES_ROOT, u"Oak\\shell\\open", u"count"), std::nullopt);

  // An open key outlives its place in the tree.
  EXPECT_TRUE(DeleteRegistryKey(HKEY_CLASSES_ROOT, u"oak\\shell"));
  const auto query = [&] {
    return Api().RegQueryValueExW(key, u"Count", nullptr, &type, nullptr, nullptr);
  };
  EXPECT_EQ(query(), 0);
  EXPECT_EQ(Api().RegCloseKey(key), 0);
  EXPECT_EQ(Api().RegCloseKey(key), LSTATUS{ERROR_INVALID_HANDLE});
  EXPECT_EQ(query(), LSTATUS{ERROR_INVALID_HANDLE});
  EXPECT_EQ(Api().RegOpenKeyExW(HKEY_CLASSES_ROOT, u"Oak\\Shell", 0, KEY_READ, &key),
            LSTATUS{ERROR_FILE_NOT_FOUND});
  EXPECT_EQ(key, nullptr);
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
  const auto names = [&](const auto& next) {
    TStringArray found;
    WCHAR name[8];
    for (DWORD i = 0, size = 8; next(key, i, name, &size, nullptr, nullptr, nullptr, nullptr) == 0;
         ++i, size = 8)
      found.push_back(TString(name, size));
    return found;
  };
  const TStringArray sorted{u"Alpha", u"beta", u"gamma"};
  EXPECT_EQ(names(Api().RegEnumKeyExW), sorted);
  EXPECT_EQ(names(Api().RegEnumValueW), sorted);
  WCHAR name[8];
  DWORD size = 5;
  EXPECT_EQ(Api().RegEnumKeyExW(key, 0, name, &size, nullptr, nullptr, nullptr, nullptr),
            LSTATUS{ERROR_MORE_DATA});
  Api().RegCloseKey(key);
  ResetRegistry();
  EXPECT_EQ(GetRegistryNumber(HKEY_CURRENT_USER, u"Enum", u"beta"), std::nullopt);
}

// --- memory ------------------------------------------------------------------

TEST(SystemMemory, Blocks) {
  STGMEDIUM medium{};
  medium.tymed = TYMED_HGLOBAL;
  const HGLOBAL block = medium.hGlobal = PortableGlobalCopy("abc", 3);
  EXPECT_EQ(Api().GlobalSize(block), 3u);
  EXPECT_EQ(std::memcmp(Api().GlobalLock(block), "abc", 3), 0);
  Api().ReleaseStgMedium(&medium);
  EXPECT_EQ(Api().GlobalLock(block), nullptr);
  EXPECT_EQ(Api().GlobalSize(block), 0u);
  int wild = 0;
  EXPECT_EQ(Api().GlobalLock(&wild), nullptr);
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
}

// --- component objects ---------------------------------------------------------

struct TCounted : TInterfacedObject<IUnknown> {
  TCounted() { ++Alive; }
  ~TCounted() override { --Alive; }
  static inline std::atomic<int> Alive = 0;
};

TEST(SystemCom, BindContexts) {
  Ref<IBindCtx> context;
  ASSERT_EQ(Api().CreateBindCtx(0, context.Put()), S_OK);
  TString key = u"File System Bind Data", other = u"file system bind data";
  {
    const auto object = MakeRef<TCounted>();
    for (LPOLESTR name :
         {WBuffer(key), static_cast<LPOLESTR>(nullptr), WBuffer(key)})  // in its place
      EXPECT_EQ(context->RegisterObjectParam(name, object.Get()), S_OK);
    EXPECT_EQ(context->RegisterObjectBound(object.Get()), S_OK);
  }
  Ref<IUnknown> found;
  EXPECT_TRUE(FAILED(context->GetObjectParam(WBuffer(other), found.Put())));
  EXPECT_EQ(context->GetObjectParam(WBuffer(key), found.Put()), S_OK);
  found.Reset();
  Ref<IEnumString> names;
  ASSERT_EQ(context->EnumObjectParam(names.Put()), S_OK);
  LPOLESTR texts[3] = {};
  ULONG count = 0;
  EXPECT_EQ(names->Next(3, texts, &count), S_FALSE);
  ASSERT_EQ(count, 2u);
  EXPECT_EQ(FromW(texts[0]), key);
  for (LPOLESTR text : texts) CoTaskMemFree(text);
  EXPECT_EQ(context->RevokeObjectParam(WBuffer(key)), S_OK);
  EXPECT_EQ(context->RevokeObjectParam(WBuffer(key)), S_FALSE);
  EXPECT_EQ(context->ReleaseBoundObjects(), S_OK);
  EXPECT_EQ(TCounted::Alive, 1);
  // Options are taken and given as far as the caller's structure reaches.
  BIND_OPTS options{8, 9, 9, 9};
  EXPECT_EQ(context->GetBindOptions(&options), S_OK);
  EXPECT_EQ(options.grfMode, 9u);
  options.cbStruct = 0;
  EXPECT_EQ(context->GetBindOptions(&options), E_INVALIDARG);
  context.Reset();
  EXPECT_EQ(TCounted::Alive, 0);
}

TEST(SystemCom, Classes) {
  constexpr CLSID clsid{0x11223344, 1, 2, {1, 2, 3, 4, 5, 6, 7, 8}};
  Ref<IUnknown> object;
  const auto create = [&](REFIID iid, void** out) {
    return Api().CoCreateInstance(clsid, nullptr, CLSCTX_ALL, iid, out);
  };
  EXPECT_EQ(create(IID_IUnknown, object.PutVoid()), REGDB_E_CLASSNOTREG);
  RegisterPortableClass<TCounted>(clsid);
  EXPECT_EQ(create(IID_IUnknown, object.PutVoid()), S_OK);
  void* none = &object;
  EXPECT_EQ(create(IID_IBindCtx, &none), E_NOINTERFACE);
  EXPECT_EQ(none, nullptr);
  EXPECT_EQ(Api().CoCreateInstance(clsid, object.Get(), CLSCTX_ALL, IID_IUnknown, &none),
            CLASS_E_NOAGGREGATION);
  object.Reset();
  EXPECT_EQ(TCounted::Alive, 0);
  RegisterPortableClass(clsid, {});
  EXPECT_EQ(create(IID_IUnknown, &none), REGDB_E_CLASSNOTREG);
}

TEST(SystemCom, ThreadReferencesShowTheirCount) {
  LONG count = 0;
  IUnknown* object = nullptr;
  ASSERT_EQ(Api().SHCreateThreadRef(&count, &object), S_OK);
  EXPECT_EQ(count, 1);
  std::vector<std::thread> helpers;
  for (int i = 0; i < 4; ++i)
    helpers.emplace_back([object] {
      for (int n = 0; n < 1000; ++n) {
        object->AddRef();
        object->Release();
      }
    });
  for (std::thread& helper : helpers) helper.join();
  EXPECT_EQ(count, 1);
  EXPECT_EQ(Api().SHSetThreadRef(object), S_OK);
  EXPECT_EQ(Api().SHReleaseThreadRef(), S_OK);
  EXPECT_EQ(count, 0);
  EXPECT_EQ(Api().SHReleaseThreadRef(), S_FALSE);
}

}  // namespace
}  // namespace oak::test
