// The makers of the peers: each kind stands in a file of its own.
#pragma once

#include <memory>

#include "oak/framework/WidgetSet.h"

namespace oak::win32 {

std::unique_ptr<IFormPeer> MakeFormPeer(TCustomForm& form);
std::unique_ptr<IListViewPeer> MakeListPeer(TCustomListView& view);
std::unique_ptr<ITreeViewPeer> MakeTreePeer(TCustomTreeView& view);
std::unique_ptr<IEditPeer> MakeEditPeer(TCustomEdit& edit);
std::unique_ptr<IComboPeer> MakeComboPeer(TCustomComboBoxEx& combo);

/// One message of the thread's queue; false if none waits.
bool RunMessage();
void WaitForMessage();

}  // namespace oak::win32
