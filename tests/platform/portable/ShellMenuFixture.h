// Menus and commands over the machine of a test.
#pragma once

#include <initializer_list>
#include <optional>

#include "ShellFixture.h"
#include "oak/platform/MenuTable.h"
#include "oak/platform/portable/PortableMemory.h"
#include "oak/platform/portable/ShellHooks.h"
#include "testkit/ScopedApi.h"

namespace oak {

class TShellMenuTest : public TShellTest {
 protected:
  void SetUp() override;
  void TearDown() override;

  /// The menu of objects of one folder, by their paths.
  static Ref<IContextMenu> Menu(std::initializer_list<TStringView> paths);
  static Ref<IContextMenu> Menu(const TStringArray& paths);
  static Ref<IContextMenu> Background(TStringView path);
  static Ref<IDataObject> Data(const TStringArray& paths);

  /// What a menu shows: its verbs, "|" for separators, "Text>" for submenus; "*" before the default
  /// and "-" before what is disabled.
  static TString Shown(IContextMenu* menu, UINT flags = CMF_NORMAL, HRESULT* result = nullptr);
  static TString Verb(IContextMenu* menu, UINT offset);

  static HRESULT Invoke(const Ref<IContextMenu>& menu, TStringView verb, DWORD mask = 0);
  HRESULT InvokeOn(std::initializer_list<TStringView> paths, TStringView verb, DWORD mask = 0) {
    return Invoke(Menu(paths), verb, mask);
  }
  static HRESULT PasteTo(TStringView folder) { return Invoke(Background(folder), u"paste"); }

  /// Names in a directory below drive C:, sorted, native.
  std::string Names(const std::string& directory) const;
  std::string Contents(const std::string& path) const;
  std::string Native(const std::string& path) const { return (fRoot / "c" / path).string(); }

  /// What was to be started: "verb file|parameters|directory".
  TStringArray fExecuted;
  BOOL fExecuteResult = TRUE;
  /// Failures that were reported.
  std::vector<TShellFailure> fFailures;

 private:
  std::optional<testkit::TScopedApi<decltype(TApi::ShellExecuteExW)>> fExecute;
};

}  // namespace oak
