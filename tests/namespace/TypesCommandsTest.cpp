#include <gtest/gtest.h>

#include "oak/namespace/Oak.Shell.Types.Commands.h"
#include "tests/MessageOf.h"

namespace oak {
namespace {

using tests::MessageOf;

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
  EXPECT_TRUE(copy == TString(u"copy"));
  EXPECT_FALSE(TShellCommand(saDelete) == TShellCommand(saDeleteNoUndo));
  EXPECT_TRUE(unknown.In({saUnknown, saCopy}));
  // Both sides unknown actions; only the right one says anything by its verb.
  EXPECT_THROW((void)(TShellCommand(saUnknown) == unknown), EInvalidOperation);
  EXPECT_THROW(TShellCommand(saUnknown).ToCommand(), EInvalidOperation);

  const TString verb = copyCaption;
  const TShellAction action = copyCaption;
  EXPECT_EQ(verb, u"&Copy");
  EXPECT_EQ(action, saCopy);
}

}  // namespace
}  // namespace oak
