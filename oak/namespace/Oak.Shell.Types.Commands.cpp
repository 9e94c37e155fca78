#include "oak/namespace/Oak.Shell.Types.Commands.h"

#include <algorithm>

#include "oak/base/Exceptions.h"
#include "oak/namespace/Shell_Win32.Strings.h"

namespace oak {
namespace {

struct TActionTexts {
  TStringView Verb;
  TStringView Caption;
};

/// In the order of TShellAction, without saUnknown.
constexpr TActionTexts ActionTexts[] = {
    {u"DEFAULT", u"&Open / Execute"},
    {u"OPEN", u"&Open"},
    {u"EXPLORE", u"&Open in File Explorer"},
    {u"COPY", u"&Copy"},
    {u"CUT", u"Cu&t"},
    {u"PASTE", u"&Paste"},
    {u"DELETE", u"&Delete"},
    {u"RENAME", u"&Rename"},
    {u"PROPERTIES", u"P&roperties"},
    {u"copypath", u"Cop&y as Path"},
    {u"PINTOHOME", u"Pin to &Quick Access"},
    {u"NewFolder", sNewFolder},
    {u"cmd", u"Open &command prompt"},
    {u"DELETE", u"&Delete"},
    {u"unlock-bde", u"&Unlock drive"},
    {u"openas", u"Open wit&h..."},
    {u"GOUP", u"Go &Up"},
};
static_assert(std::size(ActionTexts) == saUnknown);

}  // namespace

TString TShellActionHelper::ToCommand(TShellAction pAction) {
  if (pAction >= saUnknown)
    throw EInvalidOperation(u"It is not possible to deliver a string verb for saUnknown.");
  return TString(ActionTexts[pAction].Verb);
}

TString TShellActionHelper::ToString(TShellAction pAction, bool pWithAccelerators) {
  if (pAction >= saUnknown)
    throw EInvalidOperation(u"No string for TShellAction " + IntToStr(pAction));
  TString caption(ActionTexts[pAction].Caption);
  if (!pWithAccelerators) std::erase(caption, u'&');
  return caption;
}

TShellAction TShellActionHelper::FromString(TStringView pString) {
  for (std::size_t i = 0; i < std::size(ActionTexts); ++i)
    if (SameText(ActionTexts[i].Caption, pString) || SameText(ActionTexts[i].Verb, pString))
      return static_cast<TShellAction>(i);
  throw EInvalidCast(u"No TShellAction member could be found for: " + TString(pString));
}

bool TShellActionHelper::Equals(TShellAction pAction, TStringView pCommandString) {
  return pAction == FromString(pCommandString);
}

bool TShellActionHelper::Equals(TShellAction pAction, TShellAction pCommand) {
  return pAction == pCommand;
}

TShellCommand::TShellCommand(TStringView pCommand, FromTextTag) : fVerb(pCommand) {
  try {
    fCommand = TShellActionHelper::FromString(pCommand);
  } catch (const EInvalidCast&) {
    fCommand = saUnknown;  // a verb of a shell extension
  }
}

TShellCommand::TShellCommand(TShellAction pCommand, TStringView pDestination)
    : fCommand(pCommand), Destination(pDestination) {
  if (pCommand != saUnknown) fVerb = TShellActionHelper::ToCommand(pCommand);
  if (pCommand == saDeleteNoUndo) OperationOptions.Exclude(soAllowUndo);
}

TString TShellCommand::GetVerb() const {
  return fVerb.empty() ? TShellActionHelper::ToCommand(fCommand) : fVerb;
}

TString TShellCommand::ToString(bool pWithAccelerators) const {
  if (fCommand != saUnknown) return TShellActionHelper::ToString(fCommand, pWithAccelerators);
  TString caption = GetVerb();
  if (pWithAccelerators) caption.insert(0, 1, u'&');
  std::replace(caption.begin(), caption.end(), u'_', u' ');
  return caption;
}

bool TShellCommand::Equals(TStringView pCommand) const { return SameText(GetVerb(), pCommand); }

bool TShellCommand::EqualsCommand(const TShellCommand& other) const {
  return fCommand == saUnknown ? SameText(GetVerb(), other.GetVerb()) : fCommand == other.fCommand;
}

}  // namespace oak
