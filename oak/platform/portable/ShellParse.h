// Text to item identifier lists: every form in which a place can be written.
#pragma once

#include "oak/platform/portable/ShellNode.h"

namespace oak {

/// Parses relative to a folder and appends what it finds. The desktop takes every
/// form: drive and UNC paths, "\\?\" forms, "::{...}", "shell:", "file:", names.
/// The result is relative to `folder`. Any text is answered.
HRESULT ParseRelative(const Ref<TFolderNode>& folder, TStringView text,
                      const TParseOptions& options, TPidl& list);
/// The same from the desktop.
HRESULT ParseAbsolute(TStringView text, const TParseOptions& options, TPidl& list);

/// The find data that a bind context carries; false without any.
bool FindDataOf(IBindCtx* context, WIN32_FIND_DATAW& data);

/// Attributes of the object that a list relative to `folder` leads to.
HRESULT AttributesOfList(const Ref<TFolderNode>& folder, PCUIDLIST_RELATIVE list, DWORD mask,
                         DWORD& attributes);
/// Binds the folder that holds the last object of a relative list.
HRESULT BindParent(const Ref<TFolderNode>& folder, PCUIDLIST_RELATIVE list,
                   Ref<TFolderNode>& parent, PCUITEMID_CHILD& last);
/// Binds the folder that a relative list leads to; the empty list gives `folder`.
HRESULT BindList(const Ref<TFolderNode>& folder, PCUIDLIST_RELATIVE list, Ref<TFolderNode>& node);

}  // namespace oak
