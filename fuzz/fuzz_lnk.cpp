// Any bytes as a shortcut file. What was read has to come back the same after it
// was written.
#include <cstdlib>

#include "oak/platform/portable/LinkFile.h"

using namespace oak;

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  TLinkFile link;
  if (FAILED(ReadLinkFile({data, size}, link))) return 0;
  const std::vector<BYTE> written = WriteLinkFile(link);
  TLinkFile again;
  if (FAILED(ReadLinkFile(written, again))) std::abort();
  if (again.LocalPath != link.LocalPath || again.Arguments != link.Arguments ||
      again.OtherBlocks != link.OtherBlocks)
    std::abort();
  if (WriteLinkFile(again) != written) std::abort();
  return 0;
}
