#include <gtest/gtest.h>

#include "oak/base/Exceptions.h"
#include "oak/base/InterfacedObject.h"
#include "oak/namespace/Oak.Shell.Types.InvokeCommand.h"
#include "testkit/ScopedApi.h"

namespace oak {
namespace {

using testkit::TScopedApi;

template <class TError, class TBody>
TString MessageOf(TBody body) {
  try {
    body();
  } catch (const TError& error) {
    return error.GetMessage();
  }
  return u"(nothing raised)";
}

TEST(ShellAction, TextsLeadBackToTheFirstActionThatHasThem) {
  for (int i = saDefault; i < saUnknown; ++i) {
    const auto action = static_cast<TShellAction>(i);
    // Deleting for good has the texts of deleting, which comes first.
    const TShellAction expected = action == saDeleteNoUndo ? saDelete : action;
    const TString verb = TShellActionHelper::ToCommand(action);
    const TString caption = TShellActionHelper::ToString(action);
    EXPECT_EQ(TShellActionHelper::FromString(verb), expected) << ToUtf8(verb);
    EXPECT_EQ(TShellActionHelper::FromString(LowerCase(verb)), expected) << ToUtf8(verb);
    EXPECT_EQ(TShellActionHelper::FromString(UpperCase(caption)), expected) << ToUtf8(caption);
    EXPECT_EQ(TShellActionHelper::ToString(action, false), ReplaceAll(caption, u"&", u""));
    EXPECT_TRUE(TShellActionHelper::Equals(expected, caption));
  }
  // Without its access key a caption is no name, unless a verb reads the same.
  EXPECT_EQ(TShellActionHelper::FromString(u"open"), saOpen);
  EXPECT_THROW(TShellActionHelper::FromString(u"Copy as Path"), EInvalidCast);
}

TEST(ShellAction, WhatHasNoTextRaises) {
  EXPECT_EQ(MessageOf<EInvalidOperation>([] { TShellActionHelper::ToCommand(saUnknown); }),
            u"It is not possible to deliver a string verb for saUnknown.");
  EXPECT_EQ(MessageOf<EInvalidOperation>([] { TShellActionHelper::ToString(saUnknown); }),
            u"No string for TShellAction 17");
  EXPECT_EQ(MessageOf<EInvalidCast>([] { TShellActionHelper::FromString(u"dance"); }),
            u"No TShellAction member could be found for: dance");
  EXPECT_THROW(TShellActionHelper::Equals(saCopy, u"dance"), EInvalidCast);
}

TEST(ShellCommand, IsMadeOfAnyTextOrAction) {
  const TOperationOptions usual{soAllowUndo, soNoConfirmMkDir, soAsync};
  struct {
    TShellCommand Command;
    TShellAction Action;
    TString Verb;
    TString Caption;
    TOperationOptions Options;
  } const rows[] = {
      {u"Windows.ModernShare", saUnknown, u"Windows.ModernShare", u"&Windows.ModernShare", usual},
      {u"burn_to_disc", saUnknown, u"burn_to_disc", u"&burn to disc", usual},
      {u"DELETE", saDelete, u"DELETE", u"&Delete", usual},
      {u"&Copy", saCopy, u"&Copy", u"&Copy", usual},
      {saDelete, saDelete, u"DELETE", u"&Delete", usual},
      {saDeleteNoUndo, saDeleteNoUndo, u"DELETE", u"&Delete", usual - soAllowUndo},
      {saCreateNewFolder, saCreateNewFolder, u"NewFolder", u"New Folder", usual},
  };
  for (const auto& row : rows) {
    EXPECT_EQ(row.Command.GetCommand(), row.Action) << ToUtf8(row.Verb);
    EXPECT_EQ(row.Command.GetVerb(), row.Verb);
    EXPECT_EQ(row.Command.ToString(true), row.Caption);
    EXPECT_EQ(row.Command.ToString(false), ReplaceAll(row.Caption, u"&", u""));
    EXPECT_EQ(row.Command.OperationOptions, row.Options) << ToUtf8(row.Verb);
  }
  EXPECT_EQ(TShellCommand(saOpen, u"C:\\dir").Destination, u"C:\\dir");
}

TEST(ShellCommand, TheLeftSideDecidesEquality) {
  const TShellCommand unknown(u"Share");
  const TShellCommand copy(saCopy);
  const TShellCommand copyCaption(u"&Copy");
  EXPECT_TRUE(copy == copyCaption);  // the actions are the same, the verbs are not
  EXPECT_FALSE(copyCaption == u"COPY");
  EXPECT_TRUE(copyCaption == saCopy);
  EXPECT_TRUE(unknown == TShellCommand(u"SHARE"));
  EXPECT_FALSE(unknown == TShellCommand(u"other"));
  EXPECT_TRUE(copy == TString(u"copy"));
  EXPECT_TRUE(copy.Equals(u"copy"));
  EXPECT_FALSE(TShellCommand(saDelete) == TShellCommand(saDeleteNoUndo));
  EXPECT_TRUE(unknown.In({saUnknown, saCopy}));
  EXPECT_FALSE(unknown.In(saCopy));
  // Both sides unknown actions; only the right one says anything by its verb.
  EXPECT_THROW((void)(TShellCommand(saUnknown) == unknown), EInvalidOperation);
  EXPECT_THROW(TShellCommand(saUnknown).ToCommand(), EInvalidOperation);

  const TString verb = copyCaption;
  const TShellAction action = copyCaption;
  EXPECT_EQ(verb, u"&Copy");
  EXPECT_EQ(action, saCopy);
}

/// Remembers what it was told to do.
class TRecordingMenu final : public TInterfacedObject<IContextMenu> {
 public:
  HRESULT STDMETHODCALLTYPE QueryContextMenu(HMENU menu, UINT index, UINT first, UINT last,
                                             UINT flags) override {
    Queries.push_back({menu, index, first, last, flags});
    return QueryResult;
  }
  HRESULT STDMETHODCALLTYPE InvokeCommand(CMINVOKECOMMANDINFO* info) override {
    Info = *reinterpret_cast<CMINVOKECOMMANDINFOEX*>(info);
    Verb = Info.lpVerb;
    VerbW = FromW(Info.lpVerbW);
    Directory = FromW(Info.lpDirectoryW);
    return InvokeResult;
  }
  HRESULT STDMETHODCALLTYPE GetCommandString(UINT_PTR, UINT, UINT*, LPSTR, UINT) override {
    return E_NOTIMPL;
  }

  struct TQuery {
    HMENU Menu;
    UINT Index, First, Last, Flags;
  };
  std::vector<TQuery> Queries;
  HRESULT QueryResult = S_OK;
  HRESULT InvokeResult = S_OK;
  CMINVOKECOMMANDINFOEX Info{};
  std::string Verb;
  TString VerbW, Directory;
};

class InvokeCommand : public testing::Test {
 protected:
  HMENU Menu = reinterpret_cast<HMENU>(std::uintptr_t{0x77});
  std::vector<HMENU> Destroyed;
  TScopedApi<decltype(TApi::CreatePopupMenu)> Create{Api().CreatePopupMenu,
                                                     [this] { return Menu; }};
  TScopedApi<decltype(TApi::DestroyMenu)> Destroy{Api().DestroyMenu, [this](HMENU menu) {
                                                    Destroyed.push_back(menu);
                                                    return BOOL{1};
                                                  }};
  Ref<TRecordingMenu> Target = MakeRef<TRecordingMenu>();
  TCMInvokeCommandInfoExHelper Helper;
};

TEST_F(InvokeCommand, FillsMenuAndStructureForEveryCommand) {
  TShellCommand silentDelete(saDelete);
  silentDelete.OperationOptions = soSilent;
  const DWORD plain = CMIC_MASK_UNICODE | CMIC_MASK_ASYNCOK;
  struct {
    TShellCommand Command;
    DWORD Mask;
    TString Directory;
  } const rows[] = {
      {TShellCommand(saOpen, u"C:\\dir"), plain, u"C:\\dir"},
      {TShellCommand(saDefault, u"C:\\dir"), plain, u"C:\\dir"},
      {TShellCommand(saCopy, u"C:\\dir"), plain, u""},
      {TShellCommand(saDelete), plain, u""},
      {silentDelete, plain | CMIC_MASK_SHIFT_DOWN | CMIC_MASK_FLAG_NO_UI, u""},
      {TShellCommand(saDeleteNoUndo), plain, u""},
  };
  for (const auto& row : rows) {
    Helper.Invoke(Target.Get(), row.Command);
    EXPECT_EQ(Target->Info.fMask, row.Mask) << Target->Verb;
    EXPECT_EQ(Target->VerbW, row.Command.GetVerb());
    EXPECT_EQ(FromUtf8(Target->Verb), row.Command.GetVerb());
    EXPECT_EQ(Target->Directory, row.Directory) << Target->Verb;
    EXPECT_EQ(Target->Info.cbSize, sizeof(CMINVOKECOMMANDINFOEX));
    EXPECT_EQ(Target->Info.nShow, int{SW_SHOWNORMAL});
    EXPECT_EQ(Target->Info.hwnd, nullptr);
    const auto& query = Target->Queries.back();
    EXPECT_EQ(query.Menu, Menu);
    EXPECT_EQ(query.First, 1u);
    EXPECT_EQ(query.Last, 32767u);
    EXPECT_EQ(query.Flags, UINT{CMF_OPTIMIZEFORINVOKE});
  }
  EXPECT_EQ(Destroyed, std::vector<HMENU>(std::size(rows), Menu));
}

TEST_F(InvokeCommand, FailuresRaiseAndTheMenuGoes) {
  Target->QueryResult = HRESULT_FROM_WIN32(5);
  EXPECT_THROW(Helper.Invoke(Target.Get(), saCopy), EFolderTrekError);
  EXPECT_TRUE(Target->VerbW.empty());
  Target->QueryResult = S_OK;
  Target->InvokeResult = E_ABORT;
  EXPECT_THROW(Helper.Invoke(Target.Get(), saCopy), EFolderTrekError);
  EXPECT_THROW(Helper.Invoke(Target.Get(), TShellCommand(saUnknown)), EInvalidOperation);
  EXPECT_EQ(Destroyed.size(), 3u);
}

TEST_F(InvokeCommand, VerbsGoByNumberToo) {
  Helper.Prepare();
  EXPECT_STREQ(Helper.Info().lpVerb, "DEFAULT");
  Helper.SetVerbById(42);
  EXPECT_EQ(reinterpret_cast<std::uintptr_t>(Helper.Info().lpVerb), 42u);
  EXPECT_EQ(reinterpret_cast<std::uintptr_t>(Helper.Info().lpVerbW), 42u);
}

}  // namespace
}  // namespace oak
