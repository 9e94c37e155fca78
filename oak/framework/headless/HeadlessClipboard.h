// The clipboard that a shell fills, beside the text of the headless desktop.
#pragma once

#include "oak/base/Ref.h"
#include "oak/base/Text.h"
#include "oak/platform/shell_api.h"

namespace oak {

/// What lies on the clipboard of the process, where it has one of its own: the portable shell's.
/// Nil on Windows, where it would be that of the user, and a test the slave of what he copied last.
Ref<IDataObject> ProcessClipboard();

/// The text that data carries; false if it has none.
bool TextOfData(IDataObject& data, TString* text);

}  // namespace oak
