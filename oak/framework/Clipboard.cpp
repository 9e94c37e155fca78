#include "oak/base/Exceptions.h"
#include "oak/framework/Forms.h"
#include "oak/framework/WidgetSet.h"
#include "oak/platform/shell_api.h"

namespace oak {

TClipboard& Clipboard() {
  static TClipboard clipboard;
  return clipboard;
}

TString TClipboard::GetAsText() const {
  TString text;
  return WidgetSet().GetClipboardText(&text) ? text : TString();
}

void TClipboard::SetAsText(const TString& value) {
  if (!WidgetSet().SetClipboardText(value))
    throw EOSError(ERROR_ACCESS_DENIED, ErrorText(ERROR_ACCESS_DENIED));
}

bool TClipboard::HasText() const {
  TString text;
  return WidgetSet().GetClipboardText(&text);
}

}  // namespace oak
