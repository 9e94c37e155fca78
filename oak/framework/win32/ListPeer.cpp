#include "oak/base/Exceptions.h"
#include "oak/framework/win32/Peers.h"

namespace oak::win32 {

std::unique_ptr<IListViewPeer> MakeListPeer(TCustomListView&) {
  throw EInvalidOperation(u"This view has no window here yet.");
}

}  // namespace oak::win32
