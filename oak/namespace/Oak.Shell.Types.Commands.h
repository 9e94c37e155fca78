// Commands on shell objects: TShellActionHelper and TShellCommand.
#pragma once

#include <concepts>

#include "oak/namespace/Oak.Shell.Types.Enums.h"

namespace oak {

/// Operations on TShellAction values. Any thread.
struct TShellActionHelper {
  /// The verb of the shell, such as "COPY". Raises EInvalidOperation for saUnknown.
  static TString ToCommand(TShellAction pAction);
  /// The caption, "&" before the access key unless unwanted. Raises
  /// EInvalidOperation for saUnknown.
  static TString ToString(TShellAction pAction, bool pWithAccelerators = true);
  /// The first action with this caption (with "&") or verb, ignoring case.
  /// Raises EInvalidCast for any other text.
  static TShellAction FromString(TStringView pString);
  /// Whether the text names the action. Raises EInvalidCast as FromString does.
  static bool Equals(TShellAction pAction, TStringView pCommandString);
  static bool Equals(TShellAction pAction, TShellAction pCommand);
};

class TShellCommand;

/// Texts that a command may be made of and compared with.
template <class T>
concept CCommandText = std::convertible_to<const T&, TStringView> &&
    !std::same_as<std::remove_cvref_t<T>, TShellCommand>;

/// A command on shell objects: one of the known actions, or any verb that a
/// shell extension brings (action saUnknown). A value; one thread at a time.
class TShellCommand {
 public:
  TShellCommand() = default;
  /// Keeps the text as verb. The action is the one that the text names, or saUnknown.
  template <CCommandText T>
  TShellCommand(const T& pCommand) : TShellCommand(TStringView(pCommand), FromTextTag{}) {}
  /// The action's verb; saDeleteNoUndo clears soAllowUndo in the options.
  TShellCommand(TShellAction pCommand, TStringView pDestination = {});

  TShellAction GetCommand() const noexcept { return fCommand; }
  /// The text it was made from, or the action's verb. Raises EInvalidOperation
  /// for saUnknown without a text.
  TString GetVerb() const;
  TString ToCommand() const { return GetVerb(); }
  operator TString() const { return GetVerb(); }
  operator TShellAction() const noexcept { return fCommand; }
  /// The caption. Without a known action it is the verb with blanks for "_", and
  /// "&" in front if wanted.
  TString ToString(bool pWithAccelerators = true) const;
  /// Whether the verb is that text, ignoring case.
  bool Equals(TStringView pCommand) const;
  bool In(TShellActions pActions) const noexcept { return pActions.Contains(fCommand); }

  /// The left side decides: an unknown action compares verbs, any other actions.
  friend bool operator==(const TShellCommand& left, const TShellCommand& right) {
    return left.EqualsCommand(right);
  }
  template <CCommandText T>
  friend bool operator==(const TShellCommand& left, const T& right) {
    return left.Equals(TStringView(right));
  }
  friend bool operator==(const TShellCommand& left, TShellAction right) noexcept {
    return left.fCommand == right;
  }

 private:
  struct FromTextTag {};
  TShellCommand(TStringView pCommand, FromTextTag);
  bool EqualsCommand(const TShellCommand& other) const;

  TShellAction fCommand = saDefault;
  TString fVerb;

 public:
  /// Folder that the command works in or on, or name of a new folder.
  TString Destination;
  TOperationOptions OperationOptions{soAllowUndo, soNoConfirmMkDir, soAsync};
};

}  // namespace oak
