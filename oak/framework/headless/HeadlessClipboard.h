// The clipboard of the headless desktop.
#pragma once

#include "oak/base/Ref.h"
#include "oak/base/Text.h"
#include "oak/platform/shell_api.h"

namespace oak {

/// Whether the process has a clipboard of its own, which the desktop then uses: that of the
/// portable shell. Not on Windows, where it would be the user's, and a test the slave of what he
/// copied last.
bool HasProcessClipboard();
/// What lies on it; nil if nothing does.
Ref<IDataObject> ProcessClipboard();
/// Puts a text there and gives the object that carries it; nil if that failed.
Ref<IDataObject> SetProcessClipboardText(const TString& text);
/// Empties it if the object still lies there.
void ClearProcessClipboard(const Ref<IDataObject>& data);

/// The text that data carries; false if it has none.
bool TextOfData(IDataObject& data, TString* text);

}  // namespace oak
